// Orifices that a solve starts at rest: a flow condition of nothing anywhere makes every starting flow nothing.
#include <cmath>

#include <gtest/gtest.h>
#include <tavell/TavellFlat.h>

namespace
{

constexpr double kDiameter = 0.1;  // [m]
constexpr double kArea = 0.00785398;
constexpr double kBore = 0.05;        // [m]
constexpr double kCriterion = 1e-5;   // [-], of flows: the convergence criterion is 1e-6
constexpr double kSupply = 400e3;     // [Pa]
constexpr double kDischarge = 200e3;  // [Pa]

/// A supply, orifices and a discharge, with a dead branch whose end has a given flow of nothing.
class Orifices : public testing::Test
{
protected:
    Orifices() : m_system(vcCreateTavell()), m_circuit(vcITavellCreateCircuit(m_system))
    {
        vcIEntitySetProperty(vcICircuitGetEntity(m_circuit), TAVELL_CIRCUIT_MINOR_LOSS, 0.0);
    }
    ~Orifices() override { vcITavellRelease(m_system); }

    vcINode* node(double x, double y)
    {
        vcINode* made = vcICircuitCreateNode(m_circuit);
        vcINodeSetLocation(made, x, y, 0.0);
        return made;
    }

    vcINode* boundary(double x, double y, int type, int constraint, double value)
    {
        vcINode* made = node(x, y);
        vcINodeSetType(made, type);
        vcINodeSetConstraint(made, constraint, value);
        return made;
    }

    void pipe(vcINode* from, vcINode* to)
    {
        ASSERT_NE(
            vcICircuitCreateElement(m_circuit, from, to, kDiameter, kArea, 0.0, TAVELL_ENERGY_FLUX, 0.0),
            nullptr);
    }

    void orifice(vcINode* from, vcINode* to)
    {
        vcIElement* made =
            vcICircuitCreateElement(m_circuit, from, to, kDiameter, kArea, 0.0, TAVELL_ENERGY_FLUX, 0.0);
        ASSERT_NE(made, nullptr);
        vcIElementSetType(made, TAVELL_ORIFICE);
        vcIEntitySetProperty(vcIElementGetEntity(made), TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, kBore);
    }

    double result(int key, int position)
    {
        return vcIResultsSetGetValues(vcICircuitGetResults(m_circuit, key))[position];
    }

    vcITavell* m_system;
    vcICircuit* m_circuit;
};

/// Mass flow [kg/s] of one orifice between a pipe's end and a discharge, in a network without a dead branch.
double flowWithoutBranch()
{
    vcITavell* system = vcCreateTavell();
    vcICircuit* circuit = vcITavellCreateCircuit(system);
    vcINode* nodes[3];
    for (int i = 0; i < 3; ++i) {
        nodes[i] = vcICircuitCreateNode(circuit);
        vcINodeSetLocation(nodes[i], 10.0 * i, 0.0, 0.0);
    }
    for (int i = 0; i < 2; ++i) {
        vcIElement* made = vcICircuitCreateElement(circuit, nodes[i], nodes[i + 1], kDiameter, kArea, 0.0,
                                                   TAVELL_ENERGY_FLUX, 0.0);
        vcIElementSetType(made, TAVELL_ORIFICE);
        vcIEntitySetProperty(vcIElementGetEntity(made), TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, kBore);
    }
    vcINodeSetType(nodes[0], TAVELL_NODE_INLET);
    vcINodeSetConstraint(nodes[0], TAVELL_CONSTRAINT_PRESSURE, kSupply);
    vcINodeSetType(nodes[2], TAVELL_NODE_OUTLET);
    vcINodeSetConstraint(nodes[2], TAVELL_CONSTRAINT_PRESSURE, kDischarge);
    EXPECT_TRUE(vcICircuitSolve(circuit, 0, nullptr));
    const double flow = vcIResultsSetGetValues(vcICircuitGetResults(circuit, TAVELL_RESULT_MASS_FLOW))[0];
    vcITavellRelease(system);
    return flow;
}

TEST_F(Orifices, in_series_they_flow_though_a_flow_of_nothing_is_given_elsewhere)
{
    vcINode* const supply = boundary(0.0, 0.0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, kSupply);
    vcINode* const middle = node(10.0, 0.0);
    vcINode* const discharge =
        boundary(20.0, 0.0, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, kDischarge);
    vcINode* const end = boundary(10.0, 5.0, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 0.0);
    orifice(supply, middle);
    orifice(middle, discharge);
    pipe(middle, end);
    ASSERT_TRUE(vcICircuitSolve(m_circuit, 0, nullptr));
    const double expected = flowWithoutBranch();
    ASSERT_GT(expected, 1.0);
    EXPECT_NEAR(result(TAVELL_RESULT_MASS_FLOW, 0), expected, kCriterion * expected);
    EXPECT_NEAR(result(TAVELL_RESULT_MASS_FLOW, 1), expected, kCriterion * expected);
}

TEST_F(Orifices, one_between_two_given_pressures_flows_though_a_flow_of_nothing_is_given_elsewhere)
{
    vcINode* const supply = boundary(0.0, 0.0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, kSupply);
    vcINode* const discharge =
        boundary(10.0, 0.0, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 0.5 * (kSupply + kDischarge));
    vcINode* const middle = node(0.0, 5.0);
    vcINode* const end = boundary(0.0, 10.0, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 0.0);
    orifice(supply, discharge);
    pipe(supply, middle);
    pipe(middle, end);
    ASSERT_TRUE(vcICircuitSolve(m_circuit, 0, nullptr));
    // half the pressure difference of the two in series, over one of them
    const double expected = flowWithoutBranch();
    EXPECT_NEAR(result(TAVELL_RESULT_MASS_FLOW, 0), expected, kCriterion * expected);
}

TEST_F(Orifices, a_dead_branch_behind_one_has_the_pressure_in_front_of_it)
{
    vcINode* const supply = boundary(0.0, 0.0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, kSupply);
    vcINode* const middle = node(10.0, 0.0);
    vcINode* const discharge =
        boundary(20.0, 0.0, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, kDischarge);
    vcINode* const behind = node(10.0, 5.0);
    vcINode* const end = node(10.0, 10.0);
    pipe(supply, middle);
    pipe(middle, discharge);
    orifice(middle, behind);
    pipe(behind, end);
    ASSERT_TRUE(vcICircuitSolve(m_circuit, 0, nullptr));
    const double inFront = result(TAVELL_RESULT_PRESSURE, 1);
    EXPECT_NEAR(result(TAVELL_RESULT_PRESSURE, 3), inFront, kCriterion * inFront);
    EXPECT_NEAR(result(TAVELL_RESULT_PRESSURE, 4), inFront, kCriterion * inFront);
    EXPECT_NEAR(result(TAVELL_RESULT_MASS_FLOW, 2), 0.0, kCriterion * result(TAVELL_RESULT_MASS_FLOW, 0));
}

}  // namespace
