// Random circuits solved twice: by the library and by Newton's method on the full set of equations, which shares
// nothing with it but the formulas.
#include <gtest/gtest.h>

#include <cmath>

#include "property/reference/circuits.h"
#include "property/reference/full_newton.h"
#include "support/networks.h"

using namespace reference;
using support::Built;
using support::Description;

namespace
{

/// The library's criterion. FullNewton::allowance turns it into a distance from the solution, to first order. Over
/// 12,000 circuits the largest distance was 0.99 of that.
constexpr double kCriterion = 1e-6;
constexpr double kFirstOrder = 1.5;

struct Count {
    int both = 0;
    int libraryAlone = 0;
    int referenceAlone = 0;  // of circuits within reach
    int outOfReach = 0;      // solved by the reference alone, and not to be expected of the library
    int neither = 0;
};

void expectSame(const Description& d, const Built& built, const FullNewton& reference)
{
    const std::vector<double> pressures = built.results(TAVELL_RESULT_PRESSURE);
    const std::vector<double> flows = built.results(TAVELL_RESULT_MASS_FLOW);
    const State& expected = reference.state();
    const State allowed = reference.allowance(kCriterion);
    const std::vector<bool> hasPressure = reference.hasPressure();
    ASSERT_EQ(pressures.size(), expected.pressures.size());
    ASSERT_EQ(flows.size(), expected.flows.size());
    for (std::size_t n = 0; n < pressures.size(); ++n) {
        if (!hasPressure[n]) continue;
        EXPECT_NEAR(pressures[n], expected.pressures[n], kFirstOrder * allowed.pressures[n]) << "node " << n;
    }
    for (std::size_t e = 0; e < flows.size(); ++e)
        EXPECT_NEAR(flows[e], expected.flows[e], kFirstOrder * allowed.flows[e])
            << "element " << e << " of type " << d.elements[e].type;
}

/// Solves count random circuits both ways, compares them where both have an answer, and tells how often that was.
Count compare(unsigned seed, int count, const Choice& choice)
{
    Count result;
    std::mt19937 random(seed);
    for (int i = 0; i < count; ++i) {
        SCOPED_TRACE("circuit " + std::to_string(i));
        const Description d = randomCircuit(random, choice);
        const Built built(d);
        FullNewton reference(d);
        const bool library = built.solve();
        const bool newton = reference.solve();
        if (library && newton) {
            ++result.both;
            expectSame(d, built, reference);
        } else if (library) {
            ++result.libraryAlone;
        } else if (newton) {
            ++(reference.isWithinReach() ? result.referenceAlone : result.outOfReach);
        } else {
            ++result.neither;
        }
    }
    testing::Test::RecordProperty("both", result.both);
    testing::Test::RecordProperty("libraryAlone", result.libraryAlone);
    testing::Test::RecordProperty("referenceAlone", result.referenceAlone);
    testing::Test::RecordProperty("outOfReach", result.outOfReach);
    testing::Test::RecordProperty("neither", result.neither);
    return result;
}

Choice passiveAnd(const std::vector<int>& more)
{
    Choice choice;
    choice.kinds = passiveKinds();
    choice.kinds.insert(choice.kinds.end(), more.begin(), more.end());
    return choice;
}

}  // namespace

TEST(Differential, pipes_of_every_friction_method_agree_with_a_full_newton_solution)
{
    const Count count = compare(101, 1200, Choice());
    EXPECT_EQ(count.libraryAlone + count.neither, 0);
    EXPECT_EQ(count.referenceAlone, 0);
    EXPECT_GE(count.both, 1190);
}

TEST(Differential, mixed_elements_agree_with_a_full_newton_solution)
{
    const Count count = compare(102, 1200, passiveAnd({}));
    EXPECT_EQ(count.libraryAlone + count.neither, 0);
    EXPECT_LE(count.referenceAlone, 3);
    EXPECT_GE(count.both, 1175);
}

TEST(Differential, circuits_with_pumps_agree_with_a_full_newton_solution)
{
    const Count count = compare(103, 700, passiveAnd({TAVELL_PUMP}));
    EXPECT_EQ(count.libraryAlone + count.neither, 0);
    EXPECT_LE(count.referenceAlone, 2);
    EXPECT_GE(count.both, 690);
}

TEST(Differential, control_valves_and_non_return_elements_end_in_the_state_of_a_full_newton_solution)
{
    const Count count = compare(104, 600, passiveAnd({TAVELL_CONTROL_VALVE, TAVELL_NON_RETURN}));
    EXPECT_EQ(count.libraryAlone, 0);
    EXPECT_LE(count.referenceAlone, 3);
    EXPECT_GE(count.both, 560);
}

namespace
{

/// Sources and sinks of given pressure or flow that meet at node 0, each through a pipe and a limiting element that
/// points along the usual flow.
class Meeting
{
public:
    Meeting()
    {
        m_description.gravity = {0.0, 0.0, 0.0};
        m_description.nodes.emplace_back();
    }

    void supply(double pressure, int kind, double limit = 0.0)
    {
        branch(TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, pressure, kind, limit);
    }
    void discharge(double pressure, int kind, double limit = 0.0)
    {
        branch(TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, pressure, kind, limit);
    }
    void demand(double flow)
    {
        branch(TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, flow, TAVELL_PIPE, 0.0);
    }

    const Description& description() const { return m_description; }

    /// Expects the flows [kg/s] of the branches in their order, along the usual direction of each.
    void expectFlows(const std::vector<double>& expected) const
    {
        const Built built(m_description);
        ASSERT_TRUE(built.solve()) << built.feedback();
        const std::vector<double> flows = built.results(TAVELL_RESULT_MASS_FLOW);
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_NEAR(flows[2 * i], expected[i], 1e-4) << "branch " << i;
    }

private:
    void branch(int type, int constraint, double value, int kind, double limit)
    {
        const int inner = static_cast<int>(m_description.nodes.size());
        for (int place = 1; place <= 2; ++place) {
            support::NodeData node;
            node.at = {10.0 * place, 10.0 * inner, 0.0};
            m_description.nodes.push_back(node);
        }
        support::NodeData& outer = m_description.nodes.back();
        outer.type = type;
        outer.constraint = constraint;
        outer.value = value;
        add(inner, inner + 1, TAVELL_PIPE, type);
        add(0, inner, kind, type);
        if (limit > 0.0)
            m_description.elements.back().properties = {
                {static_cast<double>(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW), limit}};
    }

    void add(int near, int far, int kind, int type)
    {
        support::ElementData element;
        element.start = type == TAVELL_NODE_INLET ? far : near;
        element.end = type == TAVELL_NODE_INLET ? near : far;
        element.type = kind;
        element.diameter = 0.15;
        m_description.elements.push_back(element);
    }

    Description m_description;
};

}  // namespace

TEST(Differential, a_standby_supply_behind_a_non_return_element_makes_up_for_a_limited_main_supply)
{
    // without the limit the main supply alone would meet the demand and shut the non-return element
    Meeting meeting;
    meeting.supply(3.0e5, TAVELL_CONTROL_VALVE, 10.0);
    meeting.supply(2.9e5, TAVELL_NON_RETURN);
    meeting.demand(18.0);
    meeting.expectFlows({10.0, 8.0, 18.0});
}

TEST(Differential, of_two_limited_supplies_of_a_limited_discharge_the_weaker_one_carries_less)
{
    Meeting meeting;
    meeting.supply(6.0e5, TAVELL_CONTROL_VALVE, 15.0);
    meeting.supply(5.5e5, TAVELL_CONTROL_VALVE, 6.0);
    meeting.discharge(1.0e5, TAVELL_CONTROL_VALVE, 20.0);
    meeting.expectFlows({15.0, 5.0, 20.0});
}

TEST(Differential, limited_supplies_and_discharges_that_meet_end_in_the_state_of_a_full_newton_solution)
{
    std::mt19937 random(105);
    // limits drawn from a continuum never balance by chance, so that every pressure is determined
    for (int i = 0; i < 500; ++i) {
        SCOPED_TRACE(i);
        Meeting meeting;
        meeting.supply(6e5, TAVELL_CONTROL_VALVE, uniform(random, 5.0, 20.0));
        meeting.supply(uniform(random, 1e5, 6e5), TAVELL_CONTROL_VALVE, uniform(random, 3.0, 20.0));
        meeting.discharge(1e5, TAVELL_CONTROL_VALVE, uniform(random, 5.0, 30.0));
        const Built built(meeting.description());
        FullNewton reference(meeting.description());
        ASSERT_TRUE(built.solve()) << built.feedback();
        ASSERT_TRUE(reference.solve());
        expectSame(meeting.description(), built, reference);
    }
}
