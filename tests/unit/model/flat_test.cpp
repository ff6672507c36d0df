// Flat functions that the tests of the exported surface do not need.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tavell/TavellFlat.h"

namespace
{

using System = std::unique_ptr<vcITavell, decltype(&vcITavellRelease)>;

TEST(Flat, suitability_follows_the_validity)
{
    const System system(vcCreateTavell(), &vcITavellRelease);
    vcICircuit* const circuit = vcITavellCreateCircuit(system.get());
    EXPECT_EQ(vcICircuitIsSuitableForAnalysis(circuit), 0) << "a circuit without elements";
    vcINode* nodes[4] = {};
    for (int i = 0; i < 4; ++i) {
        nodes[i] = vcICircuitCreateNode(circuit);
        vcINodeSetLocation(nodes[i], i, 0.0, 0.0);
        if (i > 0)
            vcICircuitCreateElement(circuit, nodes[i - 1], nodes[i], 0.1, 0.00785, 0.0, TAVELL_ENERGY_FLUX,
                                    0.0);
    }
    vcINodeSetType(nodes[0], TAVELL_NODE_INLET);
    vcINodeSetType(nodes[3], TAVELL_NODE_OUTLET);
    for (vcINode* node : {nodes[0], nodes[3]})
        vcINodeSetConstraint(node, TAVELL_CONSTRAINT_PRESSURE, 1e5);
    EXPECT_EQ(vcICircuitIsSuitableForAnalysis(circuit), 1);
}

TEST(Flat, solve_log_is_accepted_and_not_written)
{
    const System system(vcCreateTavell(), &vcITavellRelease);
    vcICircuit* const circuit = vcITavellCreateCircuit(system.get());
    const std::filesystem::path log = std::filesystem::temp_directory_path() / "tavell_flat_solve.log";
    std::filesystem::remove(log);
    vcICircuitSetSolveLogFile(circuit, log.c_str());
    vcICircuitSolve(circuit, 0, nullptr);
    EXPECT_FALSE(std::filesystem::exists(log));
}

}  // namespace
