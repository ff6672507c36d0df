// flat_allocation_test.cpp: each flat function that allocates, its allocations failing one after the other.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "failing_allocations.h"
#include "flat_world.h"

using namespace faults;

namespace
{

constexpr const char* kLongText = "a text that is longer than what a string keeps within itself";
constexpr std::array<double, 6> kFlows{0.0, 0.0005, 0.001, 0.0015, 0.002, 0.0025};       // [m3/s]
constexpr std::array<double, 6> kRises{9000.0, 8500.0, 8000.0, 7000.0, 5000.0, 1000.0};  // [Pa]

/// A row that is solved and exported, so that there are results and texts to lose.
void solvedRow(const World& world)
{
    vcICircuit* const circuit = addRow(world, 0.0, 0.0);
    ASSERT_EQ(vcICircuitSolve(circuit, 0, nullptr), 1);
    vcICircuitExportResults(circuit);
}

vcIEntity* nodeEntity(const World& world, int position)
{
    return vcINodeGetEntity(world.node(position));
}
vcIEntity* elementEntity(const World& world, int position)
{
    return vcIElementGetEntity(world.element(position));
}
vcIEntity* circuitEntity(const World& world)
{
    return vcICircuitGetEntity(world.circuit());
}
vcIEntity* fluidEntity(const World& world)
{
    return vcIFluidGetEntity(vcICircuitGetFluid(world.circuit()));
}

void setText(vcIEntity* entity, const char* name, const char* text)
{
    vcIPropertySetSetStringPropertyByName(vcIEntityGetProperties(entity), name, text);
}

}  // namespace

/// First of all and in a process of its own, the table of names is not built yet.
TEST(FlatAllocations, the_first_name_that_is_looked_up_may_find_no_memory)
{
    const World world;
    vcITavellCreateCircuit(world.system());
    for (const Mode mode : kModes) {
        bool isHit = true;
        for (std::size_t nth = 1; isHit; ++nth)
            isHit = attempt(nth, mode, [&] {
                        return vcIEntitySetPropertyByName(circuitEntity(world), "Circuit_Minor_Loss", 0.0);
                    }).isHit;
        double value = -1.0;
        EXPECT_EQ(vcIEntityGetProperty(circuitEntity(world), TAVELL_CIRCUIT_MINOR_LOSS, &value), 1);
        EXPECT_EQ(value, 0.0);
    }
}

TEST(FlatAllocations, creating_a_system_fails_without_a_trace)
{
    for (const Mode mode : kModes) {
        const std::size_t live = liveBlocks();
        bool isHit = true;
        for (std::size_t nth = 1; isHit; ++nth) {
            vcITavell* system = nullptr;
            const Attempt made = attempt(nth, mode, [&] {
                system = vcCreateTavell();
                return 1L;
            });
            isHit = made.isHit;
            EXPECT_EQ(made.isOut, made.isHit);
            if (system != nullptr) vcITavellRelease(system);
            EXPECT_EQ(liveBlocks(), live);
        }
    }
}

namespace
{

/// Adds one object after the other, each first without memory at each of its allocations; those that fail leave no
/// object. count(world) -> number of objects.
template <class Add, class Count>
void growWithShortages(const World& world, int wanted, Mode mode, Add&& add, Count&& count)
{
    for (int i = 0; i < wanted && !testing::Test::HasFailure(); ++i) {
        const std::size_t before = count(world);
        Attempt made;
        for (std::size_t nth = 1; made.answer == 0; ++nth) {
            made = attempt(nth, mode, [&] { return add(world, i) != nullptr ? 1L : 0L; });
            if (made.answer == 0) {
                ASSERT_TRUE(made.isOut);
                ASSERT_EQ(count(world), before)
                    << "object " << i << ", allocation " << nth << ", " << nameOf(mode);
            }
        }
        ASSERT_EQ(count(world), before + 1);
    }
}

/// What a world looks like that was grown with shortages, and what it looks like without.
template <class SetUp, class Add, class Count>
void compareGrown(int wanted, SetUp&& setUp, Add&& add, Count&& count)
{
    std::string expected;
    {
        const World world;
        setUp(world);
        for (int i = 0; i < wanted; ++i)
            add(world, i);
        expected = observed(world);
    }
    for (const Mode mode : kModes) {
        const std::size_t live = liveBlocks();
        {
            const World world;
            setUp(world);
            growWithShortages(world, wanted, mode, add, count);
            EXPECT_EQ(firstDifference(observed(world), expected), "");
        }
        EXPECT_EQ(liveBlocks(), live);
    }
}

void nothing(const World& /*world*/) {}

/// A row of nodes without elements.
void nodesInARow(const World& world)
{
    vcICircuit* const circuit = vcITavellCreateCircuit(world.system());
    for (int i = 0; i < 121; ++i)
        vcINodeSetLocation(vcICircuitCreateNode(circuit), 1.0 * i, 0.0, 0.0);
}

std::size_t elementCount(const World& world)
{
    return vcICircuitGetNoElements(world.circuit());
}

}  // namespace

TEST(FlatAllocations, circuits_are_added_whole_or_not_at_all)
{
    compareGrown(
        40, nothing, [](const World& world, int) { return vcITavellCreateCircuit(world.system()); },
        [](const World& world) { return vcITavellGetNoCircuits(world.system()); });
}

TEST(FlatAllocations, circuit_that_could_not_be_added_is_unknown_and_the_others_can_be_released)
{
    for (const Mode mode : kModes) {
        const World world;
        growWithShortages(
            world, 40, mode, [](const World& w, int) { return vcITavellCreateCircuit(w.system()); },
            [](const World& w) { return vcITavellGetNoCircuits(w.system()); });
        while (vcITavellGetNoCircuits(world.system()) > 0)
            ASSERT_EQ(vcITavellReleaseCircuit(world.system(), world.circuit()), 1);
    }
}

TEST(FlatAllocations, nodes_are_added_whole_or_not_at_all)
{
    compareGrown(
        300, [](const World& world) { vcITavellCreateCircuit(world.system()); },
        [](const World& world, int) { return vcICircuitCreateNode(world.circuit()); },
        [](const World& world) { return vcICircuitGetNoNodes(world.circuit()); });
}

TEST(FlatAllocations, nodes_are_added_whole_or_not_at_all_behind_one_that_was_released)
{
    compareGrown(
        60,
        [](const World& world) {
            nodesInARow(world);
            vcICircuitReleaseNode(world.circuit(), world.node(3));
            vcICircuitGetNode(world.circuit(), 5);
        },
        [](const World& world, int) { return vcICircuitCreateNode(world.circuit()); },
        [](const World& world) { return vcICircuitGetNoNodes(world.circuit()); });
}

TEST(FlatAllocations, pipes_are_added_whole_or_not_at_all)
{
    compareGrown(
        120, nodesInARow,
        [](const World& world, int i) {
            vcINode* const start = world.node(i);
            vcINode* const end = world.node(i + 1);
            if (i % 2 == 0)
                return vcICircuitCreateElement(world.circuit(), start, end, 0.1, 0.008, 0.0,
                                               TAVELL_ENERGY_FLUX, 0.0);
            return vcICircuitCreateNonRoundElement(world.circuit(), start, end, 0.4, 0.01, 0.0,
                                                   TAVELL_ENERGY_FLUX, 0.0);
        },
        elementCount);
}

TEST(FlatAllocations, empty_elements_are_added_whole_or_not_at_all)
{
    compareGrown(
        120, nodesInARow,
        [](const World& world, int) { return vcICircuitCreateEmptyElement(world.circuit()); }, elementCount);
}

TEST(FlatAllocations, pumps_and_losses_are_added_whole_or_not_at_all)
{
    compareGrown(
        40, nodesInARow,
        [](const World& world, int i) {
            vcINode* const start = world.node(i);
            vcINode* const end = world.node(i + 1);
            const auto create = i % 2 == 0 ? vcICircuitCreatePump : vcICircuitCreateLoss;
            return create(world.circuit(), start, end, kFlows.data(), kRises.data(), 6, 998.0,
                          TAVELL_ENERGY_FLUX, 0.0);
        },
        elementCount);
}

TEST(FlatAllocations, property_of_any_id_is_set_whole_or_not_at_all)
{
    for (int id = 1000; id <= 1026; ++id)
        failAtEveryAllocation({"element " + std::to_string(id), solvedRow, [id](const World& world) {
                                   return long{vcIEntitySetProperty(elementEntity(world, 1), id, 3.0)};
                               }});
    for (int id = 2000; id <= 2011; ++id)
        failAtEveryAllocation({"node " + std::to_string(id), solvedRow, [id](const World& world) {
                                   return long{vcIEntitySetProperty(nodeEntity(world, 1), id, 77.0)};
                               }});
    for (int id = 3000; id <= 3005; ++id)
        failAtEveryAllocation({"circuit " + std::to_string(id), solvedRow, [id](const World& world) {
                                   return long{vcIEntitySetProperty(circuitEntity(world), id, 2.0)};
                               }});
    for (const int id : {-1, 0, 1007, 4000, 4003, 4007, 5000})
        failAtEveryAllocation({"fluid " + std::to_string(id), solvedRow, [id](const World& world) {
                                   return long{vcIEntitySetProperty(fluidEntity(world), id, 2.0)};
                               }});
}

TEST(FlatAllocations, property_is_set_whole_or_not_at_all_where_there_was_none)
{
    // so many that the room for numbers has to grow, at each of the last ones
    for (int last = 1016; last <= 1026; ++last)
        failAtEveryAllocation({"up to " + std::to_string(last),
                               [last](const World& world) {
                                   solvedRow(world);
                                   for (int id = 1016; id < last; ++id)
                                       vcIEntitySetProperty(elementEntity(world, 1), id, 3.0);
                               },
                               [last](const World& world) {
                                   return long{vcIEntitySetProperty(elementEntity(world, 1), last, 3.0)};
                               }});
}

TEST(FlatAllocations, id_of_a_node_is_set_whole_or_not_at_all)
{
    // a number in the list of ids, far beyond it, one that another node has, the one that other nodes have too
    for (const double id : {9.0, 25.0, 1e6, -5.0, 1.0, 3.5, 0.0})
        failAtEveryAllocation({"id " + std::to_string(id), solvedRow, [id](const World& world) {
                                   return long{
                                       vcIEntitySetProperty(nodeEntity(world, 1), TAVELL_NODE_ID, id)};
                               }});
    failAtEveryAllocation({"of the oldest of several",
                           [](const World& world) {
                               solvedRow(world);
                               for (const int i : {0, 1, 2})
                                   vcIEntitySetProperty(nodeEntity(world, i), TAVELL_NODE_ID, 1e6);
                           },
                           [](const World& world) {
                               return long{vcIEntitySetProperty(nodeEntity(world, 0), TAVELL_NODE_ID, 2e6)};
                           }});
}

TEST(FlatAllocations, end_of_an_element_is_set_whole_or_not_at_all)
{
    for (const int end : {TAVELL_ELEMENT_START, TAVELL_ELEMENT_END})
        for (const double id : {4.0, 1e6, 3.0, 2.0, 0.0})
            failAtEveryAllocation({"end " + std::to_string(id), solvedRow, [end, id](const World& world) {
                                       return long{vcIEntitySetProperty(elementEntity(world, 0), end, id)};
                                   }});
}

TEST(FlatAllocations, text_of_any_property_is_stored_whole_or_not_at_all)
{
    for (const char* const text : {"12", "", "no number", kLongText}) {
        for (const char* const name : {"node_id", "node_pressure", "node_reynolds"})
            failAtEveryAllocation({std::string(name) + ' ' + text, solvedRow, [=](const World& world) {
                                       setText(nodeEntity(world, 1), name, text);
                                       return 1L;
                                   }});
        for (const char* const name : {"element_start", "element_end", "element_area", "__element_flow_rate"})
            failAtEveryAllocation({std::string(name) + ' ' + text, solvedRow, [=](const World& world) {
                                       setText(elementEntity(world, 0), name, text);
                                       return 1L;
                                   }});
        // of an id that numbers have no place for
        failAtEveryAllocation({std::string("foreign ") + text, solvedRow, [=](const World& world) {
                                   setText(fluidEntity(world), "node_id", text);
                                   return 1L;
                               }});
    }
}

TEST(FlatAllocations, number_replaces_a_text_whole_or_not_at_all)
{
    const auto withTexts = [](const World& world) {
        solvedRow(world);
        setText(nodeEntity(world, 1), "node_id", "no number");
        setText(nodeEntity(world, 1), "node_pressure", kLongText);
        setText(elementEntity(world, 0), "element_start", kLongText);
        setText(circuitEntity(world), "circuit_gravity_x", "0.5 and more");
        setText(circuitEntity(world), "circuit_gravity_z", "0.5 and more");
    };
    failAtEveryAllocation({"id", withTexts, [](const World& world) {
                               return long{vcIEntitySetProperty(nodeEntity(world, 1), TAVELL_NODE_ID, 50.0)};
                           }});
    failAtEveryAllocation(
        {"pressure", withTexts, [](const World& world) {
             return long{vcIEntitySetProperty(nodeEntity(world, 1), TAVELL_NODE_PRESSURE, 1.0 / 3.0)};
         }});
    failAtEveryAllocation({"start", withTexts, [](const World& world) {
                               return long{
                                   vcIEntitySetProperty(elementEntity(world, 0), TAVELL_ELEMENT_START, 50.0)};
                           }});
    failAtEveryAllocation({"gravity", withTexts, [](const World& world) {
                               vcICircuitSetGravity(world.circuit(), 1.0 / 3.0, 2.0 / 3.0, 1.0 / 7.0);
                               return 1L;
                           }});
}

TEST(FlatAllocations, property_is_removed_without_memory)
{
    failAtEveryAllocation({"id", solvedRow, [](const World& world) {
                               return long{vcIEntityRemoveProperty(nodeEntity(world, 1), TAVELL_NODE_ID)};
                           }});
    failAtEveryAllocation({"start", solvedRow, [](const World& world) {
                               return long{
                                   vcIEntityRemoveProperty(elementEntity(world, 1), TAVELL_ELEMENT_START)};
                           }});
    failAtEveryAllocation({"area", solvedRow, [](const World& world) {
                               return long{
                                   vcIEntityRemoveProperty(elementEntity(world, 1), TAVELL_ELEMENT_AREA)};
                           }});
}

TEST(FlatAllocations, location_and_constraint_are_set_whole_or_not_at_all)
{
    const auto withoutPlace = [](const World& world) {
        solvedRow(world);
        // its room is full of other values
        for (const int id : {TAVELL_NODE_X, TAVELL_NODE_Y, TAVELL_NODE_Z})
            vcIEntityRemoveProperty(nodeEntity(world, 1), id);
        for (const int id : {TAVELL_NODE_REYNOLDS, TAVELL_NODE_VELOCITY, TAVELL_NODE_FLUID_TEMPERATURE})
            vcIEntitySetProperty(nodeEntity(world, 1), id, 1.0);
    };
    const auto withTexts = [](const World& world) {
        solvedRow(world);
        for (const char* const name :
             {"node_x", "node_y", "node_z", "node_constraint", "node_mass_flow_rate"})
            setText(nodeEntity(world, 1), name, kLongText);
    };
    for (const auto& setUp :
         {std::function<void(const World&)>(solvedRow), std::function<void(const World&)>(withoutPlace),
          std::function<void(const World&)>(withTexts)}) {
        failAtEveryAllocation({"location", setUp, [](const World& world) {
                                   vcINodeSetLocation(world.node(1), 1.0 / 3.0, 2.0 / 3.0, 4.0 / 3.0);
                                   return 1L;
                               }});
        for (int constraint = 0; constraint <= 5; ++constraint)
            failAtEveryAllocation(
                {"constraint " + std::to_string(constraint), setUp, [constraint](const World& world) {
                     vcINodeSetConstraint(world.node(1), constraint, 1.0 / 3.0);
                     return 1L;
                 }});
        failAtEveryAllocation({"type", setUp, [](const World& world) {
                                   vcINodeSetType(world.node(1), TAVELL_NODE_OUTLET);
                                   return 1L;
                               }});
    }
}

TEST(FlatAllocations, curve_is_replaced_whole_or_not_at_all)
{
    for (const int element : {1, 3})  // a pipe, a pump
        failAtEveryAllocation(
            {"element " + std::to_string(element), solvedRow, [element](const World& world) {
                 return long{vcIElementUpdateCurveData(world.element(element), TAVELL_LOSS, kFlows.data(),
                                                       kRises.data(), 6, 990.5)};
             }});
    failAtEveryAllocation({"read", solvedRow, [](const World& world) {
                               std::array<double, 6> flows{};
                               std::array<double, 6> rises{};
                               double density = 0.0;
                               int count = 0;
                               return long{vcIElementGetCurveData(world.element(3), &density, flows.data(),
                                                                  rises.data(), 6, &count)} +
                                      count + static_cast<long>(density + rises[2]);
                           }});
}

TEST(FlatAllocations, ends_are_exchanged_whole_or_not_at_all)
{
    failAtEveryAllocation({"pipe", solvedRow, [](const World& world) {
                               vcIElementSwapNodes(world.element(0));
                               return 1L;
                           }});
    failAtEveryAllocation({"element without ends",
                           [](const World& world) {
                               solvedRow(world);
                               vcICircuitCreateEmptyElement(world.circuit());
                               // ids 1016 to 1026 fill the room that the ends would take
                               for (int id = 1016; id <= 1023; ++id)
                                   vcIEntitySetProperty(elementEntity(world, 4), id, 1.0);
                           },
                           [](const World& world) {
                               vcIElementSwapNodes(world.element(4));
                               return 1L;
                           }});
}

TEST(FlatAllocations, names_are_set_whole_or_not_at_all)
{
    failAtEveryAllocation({"node", solvedRow, [](const World& world) {
                               vcIEntitySetMeta(nodeEntity(world, 1), kLongText);
                               return 1L;
                           }});
    failAtEveryAllocation({"element", solvedRow, [](const World& world) {
                               vcIEntitySetMeta(elementEntity(world, 1), kLongText);
                               return 1L;
                           }});
    failAtEveryAllocation({"circuit", solvedRow, [](const World& world) {
                               vcIEntitySetMeta(circuitEntity(world), kLongText);
                               return 1L;
                           }});
    failAtEveryAllocation({"fluid", solvedRow, [](const World& world) {
                               vcIEntitySetMeta(fluidEntity(world), kLongText);
                               return 1L;
                           }});
    failAtEveryAllocation({"display name", solvedRow, [](const World& world) {
                               vcIFluidSetUIName(vcICircuitGetFluid(world.circuit()), kLongText);
                               return 1L;
                           }});
}

TEST(FlatAllocations, export_settings_are_set_whole_or_not_at_all)
{
    const auto options = [](const World& world) {
        return vcICircuitGetResultsExporterOptions(world.circuit());
    };
    failAtEveryAllocation({"node label", solvedRow, [=](const World& world) {
                               vcIResultsExporterOptionsSetNodeLabel(options(world), kLongText);
                               return 1L;
                           }});
    failAtEveryAllocation({"element label", solvedRow, [=](const World& world) {
                               vcIResultsExporterOptionsSetElementLabel(options(world), kLongText);
                               return 1L;
                           }});
    for (const char* const label : {"p", kLongText})
        failAtEveryAllocation({"result label", solvedRow, [=](const World& world) {
                                   vcIResultsExporterOptionsSetResultLabel(options(world), 7, label);
                                   return 1L;
                               }});
    failAtEveryAllocation({"unit", solvedRow, [=](const World& world) {
                               vcIResultsExporterOptionsSetL10n(options(world), 7, 0.001, 5.0);
                               return 1L;
                           }});
}

TEST(FlatAllocations, questions_change_nothing_when_memory_runs_out)
{
    failAtEveryAllocation({"text", solvedRow, [](const World& world) {
                               vcIPropertySet* const set = vcIEntityGetProperties(nodeEntity(world, 1));
                               return static_cast<long>(
                                   std::char_traits<char>::length(vcIPropertySetGetStringValue(set, 1)));
                           }});
    failAtEveryAllocation({"display values", solvedRow, [](const World& world) {
                               vcIResultsSet* const set =
                                   vcICircuitGetResults(world.circuit(), TAVELL_RESULT_PRESSURE);
                               return static_cast<long>(vcIResultsSetGetL10NValues(set, 0.001, 1.0)[0]);
                           }});
    failAtEveryAllocation({"export", solvedRow, [](const World& world) {
                               return static_cast<long>(
                                   std::char_traits<char>::length(vcICircuitExportResults(world.circuit())));
                           }});
    const auto withHoles = [](const World& world) {
        solvedRow(world);
        vcICircuitReleaseElement(world.circuit(), world.element(1));
        vcICircuitReleaseNode(world.circuit(), world.node(0));
    };
    failAtEveryAllocation(
        {"disconnected", withHoles, [](const World& world) {
             std::array<vcIElement*, 8> found{};
             int count = 0;
             return 10L * vcICircuitGetDisconnectedElements(world.circuit(), found.data(), 8, &count) + count;
         }});
    failAtEveryAllocation({"node by position", withHoles, [](const World& world) {
                               return long{vcINodeGetId(vcICircuitGetNode(world.circuit(), 2))};
                           }});
    failAtEveryAllocation({"element by position", withHoles, [](const World& world) {
                               return long{vcIElementGetId(vcICircuitGetElement(world.circuit(), 2))};
                           }});
    failAtEveryAllocation(
        {"validity", withHoles, [](const World& world) { return long{vcICircuitIsValid(world.circuit())}; }});
}

TEST(FlatAllocations, objects_are_released_without_memory)
{
    const std::size_t live = liveBlocks();
    vcITavell* const system = vcCreateTavell();
    for (int c = 0; c < 20; ++c) {
        vcICircuit* const circuit = vcITavellCreateCircuit(system);
        for (int i = 0; i < 200; ++i)
            vcINodeSetLocation(vcICircuitCreateNode(circuit), 1.0 * i, 0.0, 0.0);
        for (int i = 0; i + 1 < 200; ++i)
            vcICircuitCreateElement(circuit, vcICircuitGetNode(circuit, i), vcICircuitGetNode(circuit, i + 1),
                                    0.1, 0.01, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    }
    vcICircuit* const circuit = vcITavellGetCircuit(system, 3);
    // asked for beforehand: a position may be searched for in a tree that is built then
    std::vector<vcINode*> nodes;
    std::vector<vcIElement*> elements;
    std::vector<vcICircuit*> circuits;
    for (int i = 0; i < 199; ++i) {
        nodes.push_back(vcICircuitGetNode(circuit, i));
        elements.push_back(vcICircuitGetElement(circuit, i));
    }
    for (int c = 0; c < 19; ++c)
        circuits.push_back(vcITavellGetCircuit(system, c));
    const Attempt made = attempt(1, Mode::kForGood, [&] {
        long released = 0;
        for (std::size_t i = 0; i < nodes.size(); i += 2)
            released +=
                vcICircuitReleaseNode(circuit, nodes[i]) + vcICircuitReleaseElement(circuit, elements[i]);
        for (const std::size_t c : {std::size_t{0}, std::size_t{3}, std::size_t{18}, std::size_t{7}})
            released += vcITavellReleaseCircuit(system, circuits[c]);
        vcITavellReleaseAllCircuits(system);
        vcITavellRelease(system);
        return released;
    });
    EXPECT_FALSE(made.isHit);
    EXPECT_EQ(made.answer, 100 + 100 + 4);
    EXPECT_EQ(liveBlocks(), live + 3) << "beside the three lists of this test";
}

TEST(FlatAllocations, circuits_are_merged_whole_or_not_at_all)
{
    const auto merge = [](const World& world) {
        vcITavellMergeCircuits(world.system());
        return static_cast<long>(vcITavellGetNoCircuits(world.system()));
    };
    failAtEveryAllocation({"two that meet",
                           [](const World& world) {
                               solvedRow(world);
                               vcICircuitSolve(addRow(world, 6.0, 0.0), 0, nullptr);
                           },
                           merge});
    failAtEveryAllocation({"a receiver with holes",
                           [](const World& world) {
                               solvedRow(world);
                               vcICircuitReleaseNode(world.circuit(), world.node(1));
                               vcICircuitReleaseElement(world.circuit(), world.element(1));
                               addRow(world, 6.0, 0.0);
                           },
                           merge});
    failAtEveryAllocation({"two that do not meet",
                           [](const World& world) {
                               solvedRow(world);
                               addRow(world, 100.0, 50.0);
                           },
                           merge});
    failAtEveryAllocation({"names and texts move over",
                           [](const World& world) {
                               solvedRow(world);
                               addRow(world, 6.0, 0.0);
                               vcIEntitySetMeta(vcIElementGetEntity(world.element(0, 1)), kLongText);
                               setText(vcIElementGetEntity(world.element(1, 1)), "element_roughness",
                                       kLongText);
                               vcIEntitySetProperty(vcIElementGetEntity(world.element(2, 1)), 1026, 4.0);
                               vcIEntitySetProperty(vcIElementGetEntity(world.element(2, 1)), 1025, 4.0);
                               vcIEntitySetProperty(vcIElementGetEntity(world.element(2, 1)), 1024, 4.0);
                           },
                           merge});
}

/// Several circuits are joined one after the other: those that were joined before memory ran out stay joined, no
/// circuit is left in pieces, and a second call completes the work.
TEST(FlatAllocations, merge_of_several_circuits_ends_between_two_of_them_and_is_completed_by_a_second_call)
{
    const auto setUp = [](const World& world) {
        for (int i = 0; i < 4; ++i)
            addRow(world, 6.0 * i, 0.0);
    };
    std::vector<std::string> whole;  // by number of circuits that are left, from 4 down to 1
    std::string merged;
    {
        const World world;
        setUp(world);
        vcITavellMergeCircuits(world.system());
        ASSERT_EQ(vcITavellGetNoCircuits(world.system()), 1U);
        merged = observed(world);
    }
    for (int joined = 1; joined <= 4; ++joined) {
        const World world;
        for (int i = 0; i < joined; ++i)
            addRow(world, 6.0 * i, 0.0);
        vcITavellMergeCircuits(world.system());
        for (int i = joined; i < 4; ++i)
            addRow(world, 6.0 * i, 0.0);
        whole.push_back(observed(world));
    }
    for (const Mode mode : kModes) {
        bool isHit = true;
        for (std::size_t nth = 1; isHit && !testing::Test::HasFailure(); ++nth) {
            const std::size_t live = liveBlocks();
            {
                const World world;
                setUp(world);
                const Attempt made = attempt(nth, mode, [&] {
                    vcITavellMergeCircuits(world.system());
                    return 1L;
                });
                isHit = made.isHit;
                EXPECT_EQ(made.isOut, made.isHit);
                const std::size_t left = vcITavellGetNoCircuits(world.system());
                EXPECT_EQ(firstDifference(observed(world), whole.at(4 - left)), "")
                    << "allocation " << nth << ", " << nameOf(mode);
                vcITavellMergeCircuits(world.system());
                EXPECT_EQ(firstDifference(observed(world), merged), "")
                    << "allocation " << nth << ", " << nameOf(mode);
            }
            EXPECT_EQ(liveBlocks(), live) << "allocation " << nth << ", " << nameOf(mode);
        }
    }
}

namespace
{

/// Ids that are absent, twice there, no number and no whole number: all that Validate mends.
void untidy(const World& world)
{
    addRow(world, 0.0, 0.0);
    vcIEntityRemoveProperty(nodeEntity(world, 1), TAVELL_NODE_ID);
    vcIEntitySetProperty(nodeEntity(world, 2), TAVELL_NODE_ID, 1.0);
    setText(nodeEntity(world, 3), "node_id", kLongText);
    vcIEntitySetProperty(elementEntity(world, 0), TAVELL_ELEMENT_END, 0.0);
    vcIEntitySetProperty(elementEntity(world, 1), TAVELL_ELEMENT_START, 1.25);
    vcIEntityRemoveProperty(elementEntity(world, 1), TAVELL_ELEMENT_ID);
    vcIEntitySetProperty(elementEntity(world, 2), TAVELL_ELEMENT_ID, 1.0);
    setText(elementEntity(world, 3), "element_id", "first");
}

}  // namespace

TEST(FlatAllocations, ids_are_mended_whole_or_not_at_all)
{
    failAtEveryAllocation({"one circuit", untidy,
                           [](const World& world) { return long{vcICircuitValidate(world.circuit())}; }});
    failAtEveryAllocation({"with holes",
                           [](const World& world) {
                               untidy(world);
                               vcICircuitReleaseNode(world.circuit(), world.node(0));
                           },
                           [](const World& world) { return long{vcICircuitValidate(world.circuit())}; }});
    failAtEveryAllocation({"all circuits", untidy, [](const World& world) {
                               vcITavellValidateCircuits(world.system());
                               return 1L;
                           }});
}
