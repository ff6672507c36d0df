// connectivity_test.cpp: the reachability walk and the elements that it does not reach.
#include "analysis/connectivity.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <vector>

#include "circuits.h"

using namespace AnalysisTest;

namespace
{

/// What GetDisconnectedElements finds, as positions of the elements in their circuit.
std::vector<std::size_t> disconnected(Circuit& circuit)
{
    int count = -1;
    std::vector<IElement*> out(circuit.GetNoElements());
    EXPECT_TRUE(circuit.GetDisconnectedElements(out.data(), static_cast<int>(out.size()), &count));
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
        for (std::size_t position = 0; position < circuit.GetNoElements(); ++position)
            if (circuit.GetElement(position) == out[i]) positions.push_back(position);
    EXPECT_EQ(positions.size(), static_cast<std::size_t>(count));
    return positions;
}

using Positions = std::vector<std::size_t>;

/// The walk by scans of all elements and nodes, with the public operations alone.
class ScanningWalk
{
public:
    explicit ScanningWalk(Circuit& circuit) : m_circuit(circuit)
    {
        for (std::size_t i = 0; i < circuit.GetNoNodes(); ++i)
            m_reached[circuit.GetNode(i)->GetId()] = false;
        if (circuit.GetNoNodes() == 0) return;
        std::vector<IElement*> work = joinedTo(circuit.GetNode(0));
        while (!work.empty()) {
            IElement* element = work.back();
            work.pop_back();
            for (const int id : {element->GetStartNodeId(), element->GetEndNodeId()}) {
                INode* node = circuit.GetNodeById(id);
                if (node == nullptr || m_reached[id]) continue;
                m_reached[id] = true;
                const std::vector<IElement*> joined = joinedTo(node);
                work.insert(work.end(), joined.begin(), joined.end());
            }
        }
    }

    bool connected() const
    {
        return !m_reached.empty() &&
               std::all_of(m_reached.begin(), m_reached.end(), [](const auto& mark) { return mark.second; });
    }

    std::vector<IElement*> outOfReach() const
    {
        std::vector<IElement*> found;
        for (const auto& [id, reached] : m_reached) {
            if (reached) continue;
            for (IElement* element : joinedTo(m_circuit.GetNodeById(id)))
                if (std::find(found.begin(), found.end(), element) == found.end()) found.push_back(element);
        }
        return found;
    }

private:
    std::vector<IElement*> joinedTo(INode* node) const
    {
        std::vector<IElement*> joined;
        for (std::size_t i = 0; i < m_circuit.GetNoElements(); ++i) {
            IElement* element = m_circuit.GetElement(i);
            if (m_circuit.GetElementNode(element, 0) == node || m_circuit.GetElementNode(element, 1) == node)
                joined.push_back(element);
        }
        return joined;
    }

    Circuit& m_circuit;
    std::map<int, bool> m_reached;
};

class Connectivity : public ::testing::Test
{
protected:
    PlainEnvironment environment;
    ObjectRegistry registry;
    Circuit circuit{registry};
};

}  // namespace

TEST_F(Connectivity, a_line_is_connected)
{
    makeLine(circuit, 5);
    EXPECT_TRUE(isConnected(circuit));
    EXPECT_EQ(disconnected(circuit), Positions{});
}

TEST_F(Connectivity, direction_plays_no_part)
{
    addNodes(circuit, 4);
    addElement(circuit, 2, 1);
    addElement(circuit, 2, 3);
    addElement(circuit, 4, 3);
    EXPECT_TRUE(isConnected(circuit));
}

TEST_F(Connectivity, a_circuit_without_nodes_is_not_connected)
{
    EXPECT_FALSE(isConnected(circuit));
    addElement(circuit, 1, 2);
    EXPECT_FALSE(isConnected(circuit));
    EXPECT_EQ(disconnected(circuit), Positions{});
}

TEST_F(Connectivity, a_node_without_elements_is_not_reached)
{
    makeLine(circuit, 3);
    addNodes(circuit, 1);
    EXPECT_FALSE(isConnected(circuit));
    EXPECT_EQ(disconnected(circuit), Positions{});
}

TEST_F(Connectivity, a_single_node_is_reached_only_as_an_end_of_an_element)
{
    addNodes(circuit, 1);
    EXPECT_FALSE(isConnected(circuit));
    addElement(circuit, 1, 1);
    EXPECT_TRUE(isConnected(circuit));
}

TEST_F(Connectivity, nothing_is_reached_from_a_first_node_without_elements)
{
    addNodes(circuit, 3);
    addElement(circuit, 2, 3);
    EXPECT_FALSE(isConnected(circuit));
    EXPECT_EQ(disconnected(circuit), Positions{0});
}

TEST_F(Connectivity, the_part_without_the_first_node_is_out_of_reach)
{
    addNodes(circuit, 5);
    addElement(circuit, 4, 5);
    addElement(circuit, 1, 2);
    addElement(circuit, 5, 3);
    EXPECT_FALSE(isConnected(circuit));
    // Node 3 comes first and has the element at 2; node 4 the one at 0; node 5 both again.
    EXPECT_EQ(disconnected(circuit), (Positions{2, 0}));
}

TEST_F(Connectivity, elements_are_listed_by_ascending_node_id_and_not_by_age_of_the_nodes)
{
    addNodes(circuit, 5);
    circuit.GetNode(2)->GetEntity()->SetProperty(TAVELL_NODE_ID, 30.0);
    circuit.GetNode(4)->GetEntity()->SetProperty(TAVELL_NODE_ID, -7.0);
    addElement(circuit, 1, 2);
    addElement(circuit, 30, 4);
    addElement(circuit, -7, 4);
    addElement(circuit, 4, 30);
    addElement(circuit, 4, -7);
    // Ids -7, 4, 30: the elements at 2 and 4, then at 1 and 3.
    EXPECT_EQ(disconnected(circuit), (Positions{2, 4, 1, 3}));
}

TEST_F(Connectivity, an_element_between_two_nodes_is_listed_once)
{
    addNodes(circuit, 4);
    addElement(circuit, 1, 2);
    addElement(circuit, 3, 4);
    addElement(circuit, 3, 3);
    addElement(circuit, 4, 3);
    EXPECT_EQ(disconnected(circuit), (Positions{1, 2, 3}));
}

TEST_F(Connectivity, ends_that_name_no_node_join_nothing)
{
    addNodes(circuit, 3);
    addElement(circuit, 1, 99);
    addElement(circuit, 99, 2);
    addElement(circuit, 2, 3);
    circuit.CreateEmptyElement();
    EXPECT_FALSE(isConnected(circuit));
    EXPECT_EQ(disconnected(circuit), (Positions{1, 2}));
}

TEST_F(Connectivity, elements_at_no_node_at_all_are_not_listed)
{
    makeLine(circuit, 3);
    addElement(circuit, 98, 99);
    EXPECT_TRUE(isConnected(circuit));
    addNodes(circuit, 1);
    EXPECT_FALSE(isConnected(circuit));
    EXPECT_EQ(disconnected(circuit), Positions{});
}

TEST_F(Connectivity, nodes_that_share_an_id_are_reached_together)
{
    addNodes(circuit, 3);
    addElement(circuit, 1, 2);
    circuit.GetNode(2)->GetEntity()->SetProperty(TAVELL_NODE_ID, 2.0);
    EXPECT_TRUE(isConnected(circuit));
    circuit.GetNode(2)->GetEntity()->SetProperty(TAVELL_NODE_ID, 1.0);
    EXPECT_TRUE(isConnected(circuit));
}

TEST_F(Connectivity, absent_ids_are_the_id_0)
{
    addNodes(circuit, 2);
    circuit.GetNode(0)->GetEntity()->RemoveProperty(TAVELL_NODE_ID);
    IElement* element = circuit.CreateEmptyElement();
    EXPECT_FALSE(isConnected(circuit));
    element->GetEntity()->SetProperty(TAVELL_ELEMENT_END, 2.0);
    EXPECT_TRUE(isConnected(circuit));
}

TEST_F(Connectivity, ids_changed_without_notice_are_seen)
{
    makeLine(circuit, 3);
    ASSERT_TRUE(isConnected(circuit));
    setText(circuit.GetElement(1)->GetEntity(), "element_start", "77");
    EXPECT_FALSE(isConnected(circuit));
    setText(circuit.GetNode(1)->GetEntity(), "node_id", "77");
    setText(circuit.GetElement(0)->GetEntity(), "element_end", "77.9");
    EXPECT_TRUE(isConnected(circuit));
}

TEST_F(Connectivity, the_environment_switches_the_check_off_whatever_the_value)
{
    addNodes(circuit, 2);
    addElement(circuit, 2, 2);
    for (const char* value : {"", "0", "no", "1"}) {
        const ScopedVariable off(kDontCheckConnectivity, value);
        EXPECT_TRUE(isConnected(circuit)) << '"' << value << '"';
        int count = -1;
        EXPECT_TRUE(circuit.GetDisconnectedElements(nullptr, 0, &count));
        EXPECT_EQ(count, 0);
    }
    EXPECT_FALSE(isConnected(circuit));
}

TEST_F(Connectivity, a_connected_circuit_answers_0_and_true_whatever_the_capacity)
{
    makeLine(circuit, 3);
    for (const int capacity : {-1, 0, 5}) {
        int count = -1;
        EXPECT_TRUE(circuit.GetDisconnectedElements(nullptr, capacity, &count)) << capacity;
        EXPECT_EQ(count, 0);
    }
}

TEST_F(Connectivity, too_small_a_capacity_copies_nothing_and_tells_the_number)
{
    addNodes(circuit, 4);
    addElement(circuit, 2, 3);
    addElement(circuit, 3, 4);
    IElement* out[3] = {nullptr, nullptr, nullptr};
    int count = -1;
    EXPECT_FALSE(circuit.GetDisconnectedElements(nullptr, 0, &count));
    EXPECT_EQ(count, 2);
    count = -1;
    EXPECT_FALSE(circuit.GetDisconnectedElements(out, 1, &count));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(out[0], nullptr);
    EXPECT_TRUE(circuit.GetDisconnectedElements(out, 2, &count));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(out[0], circuit.GetElement(0));
    EXPECT_EQ(out[1], circuit.GetElement(1));
    EXPECT_TRUE(circuit.GetDisconnectedElements(out, 3, &count));
    EXPECT_EQ(out[2], nullptr);
}

TEST_F(Connectivity, asking_changes_no_results)
{
    makeLine(circuit, 3);
    circuit.setHasResults(true);
    isConnected(circuit);
    disconnected(circuit);
    EXPECT_TRUE(circuit.hasResults());
}

TEST_F(Connectivity, a_text_that_is_no_number_reaches_the_caller)
{
    makeLine(circuit, 3);
    setText(circuit.GetElement(1)->GetEntity(), "element_start", "abc");
    int count = -1;
    EXPECT_THROW(circuit.GetDisconnectedElements(nullptr, 0, &count), std::invalid_argument);
    EXPECT_EQ(count, -1);
}

TEST_F(Connectivity, random_circuits_agree_with_a_walk_by_scans)
{
    // Few ids for many nodes and ends, so that shared, missing and unnamed ids are common. The seed is arbitrary.
    std::mt19937 random(20240117);
    int disconnectedCircuits = 0;
    for (int round = 0; round < 300; ++round) {
        Circuit sample(registry);
        const int nodes = static_cast<int>(random() % 9);
        addNodes(sample, nodes);
        for (std::size_t i = 0; i < static_cast<std::size_t>(nodes); ++i)
            if (random() % 4 == 0)
                sample.GetNode(i)->GetEntity()->SetProperty(TAVELL_NODE_ID,
                                                            static_cast<int>(random() % 12) - 1);
        const int elements = static_cast<int>(random() % 12);
        for (int i = 0; i < elements; ++i)
            addElement(sample, static_cast<int>(random() % 11) - 1, static_cast<int>(random() % 11) - 1);

        const ScanningWalk walk(sample);
        EXPECT_EQ(isConnected(sample), walk.connected()) << "round " << round;
        const std::vector<IElement*> expected =
            walk.connected() ? std::vector<IElement*>{} : walk.outOfReach();
        std::vector<IElement*> found(sample.GetNoElements());
        int count = -1;
        EXPECT_TRUE(sample.GetDisconnectedElements(found.data(), static_cast<int>(found.size()), &count));
        found.resize(static_cast<std::size_t>(count));
        EXPECT_EQ(found, expected) << "round " << round;
        disconnectedCircuits += walk.connected() ? 0 : 1;
    }
    EXPECT_GT(disconnectedCircuits, 50);
    EXPECT_LT(disconnectedCircuits, 300);
}
