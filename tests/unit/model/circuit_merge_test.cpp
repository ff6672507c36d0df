// circuit_merge_test.cpp: joining circuits that meet in a node.
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

std::uint64_t hashOf(double coordinate)
{
    if (coordinate == 0.0) coordinate = 0.0;
    unsigned char bytes[8];
    std::memcpy(bytes, &coordinate, 8);
    if (coordinate == 0.0) std::memset(bytes, 0, 8);
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const unsigned char byte : bytes) {
        hash ^= byte;
        hash *= 0x100000001b3U;
    }
    return hash;
}

std::uint64_t keyOf(INode* node)
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    node->GetLocation(&x, &y, &z);
    return hashOf(x) ^ hashOf(y) ^ hashOf(z);
}

/// Replaces every property and the meta string of one object by those of another, through the public interface.
void copyEntity(IEntity* from, IEntity* to)
{
    while (to->GetProperties()->GetSize() > 0)
        to->RemoveProperty(to->GetProperties()->GetProp(0));
    IPropertySet* source = from->GetProperties();
    for (int i = 0; i < source->GetSize(); ++i) {
        const auto position = static_cast<std::size_t>(i);
        to->GetProperties()->SetStringPropertyByName(source->GetName(position),
                                                     source->GetStringValue(position));
    }
    to->SetMeta(from->GetMeta());
}

double valueOf(IEntity* entity, int id)
{
    double value = 0.0;
    entity->GetProperty(id, &value);
    return value;
}

using Pairs = std::vector<std::pair<INode*, INode*>>;  // node of the receiver, node of the absorbed circuit

Pairs meetings(ICircuit* i, ICircuit* j)
{
    std::map<std::uint64_t, INode*> byKey;
    for (std::size_t n = 0; n < i->GetNoNodes(); ++n)
        byKey[keyOf(i->GetNode(n))] = i->GetNode(n);
    Pairs pairs;
    for (std::size_t n = 0; n < j->GetNoNodes(); ++n) {
        const auto found = byKey.find(keyOf(j->GetNode(n)));
        if (found != byKey.end()) pairs.emplace_back(found->second, j->GetNode(n));
    }
    return pairs;
}

INode* standIn(ICircuit* i, INode* node, const Pairs& pairs)
{
    if (node == nullptr) return nullptr;
    INode* partner = nullptr;
    for (const auto& [mine, theirs] : pairs)
        if (theirs == node) partner = mine;
    if (partner != nullptr) return partner;
    INode* copy = i->CreateNode();
    const double id = valueOf(copy->GetEntity(), 2000);
    copyEntity(node->GetEntity(), copy->GetEntity());
    copy->GetEntity()->SetProperty(2000, id);
    return copy;
}

void absorbLiterally(ITavell& system, ICircuit* i, ICircuit* j, const Pairs& pairs)
{
    for (std::size_t n = 0; n < j->GetNoElements(); ++n) {
        IElement* element = j->GetElement(n);
        INode* start = standIn(i, j->GetElementNode(element, 0), pairs);
        INode* end = standIn(i, j->GetElementNode(element, 1), pairs);
        if (start == nullptr || end == nullptr) continue;
        const double diameter = valueOf(element->GetEntity(), 1003);
        const double area = valueOf(element->GetEntity(), 1004);
        const double perimeter = valueOf(element->GetEntity(), 1015);
        IElement* copy = i->CreateElement(start, end, diameter, area, 0.0, 0, 0.0);
        if (copy == nullptr) continue;
        IEntity* entity = copy->GetEntity();
        const double id = valueOf(entity, 1000);
        const double startId = valueOf(entity, 1001);
        const double endId = valueOf(entity, 1002);
        copyEntity(element->GetEntity(), entity);
        entity->SetProperty(1000, id);
        entity->SetProperty(1001, startId);
        entity->SetProperty(1002, endId);
        entity->SetProperty(1003, diameter);
        entity->SetProperty(1004, area);
        entity->SetProperty(1015, perimeter);
    }
    system.ReleaseCircuit(j);
}

/// The method with plain scans: circuit by circuit, all pairs of circuits compared anew after each merge.
void mergeLiterally(ITavell& system)
{
    std::size_t i = 0;
    while (i < system.GetNoCircuits()) {
        bool merged = false;
        for (std::size_t j = i + 1; j < system.GetNoCircuits() && !merged; ++j) {
            const Pairs pairs = meetings(system.GetCircuit(i), system.GetCircuit(j));
            if (pairs.empty()) continue;
            absorbLiterally(system, system.GetCircuit(i), system.GetCircuit(j), pairs);
            merged = true;
        }
        if (!merged) ++i;
    }
}

void describe(IEntity* entity, std::ostream& out)
{
    IPropertySet* set = entity->GetProperties();
    out << '"' << entity->GetMeta() << '"';
    for (int i = 0; i < set->GetSize(); ++i)
        out << ' ' << set->GetProp(static_cast<std::size_t>(i)) << '='
            << set->GetStringValue(static_cast<std::size_t>(i));
    out << '\n';
}

/// Everything that a host can list, circuit by circuit.
std::string describe(ITavell& system)
{
    std::ostringstream out;
    for (std::size_t c = 0; c < system.GetNoCircuits(); ++c) {
        ICircuit* circuit = system.GetCircuit(c);
        describe(circuit->GetEntity(), out);
        for (std::size_t n = 0; n < circuit->GetNoNodes(); ++n)
            describe(circuit->GetNode(n)->GetEntity(), out);
        for (std::size_t n = 0; n < circuit->GetNoElements(); ++n)
            describe(circuit->GetElement(n)->GetEntity(), out);
        // The counters show in the next ids.
        out << circuit->CreateEmptyElement()->GetId() << ' ' << circuit->CreateNode()->GetId() << '\n';
    }
    return out.str();
}

/// Builds a system at random: few places, so that circuits meet; shared and coinciding nodes, -0.0, pumps, elements
/// without an end, nodes that share an id, circuits without elements, checks switched off.
class RandomSystem
{
public:
    RandomSystem(ITavell& system, unsigned seed) : m_random(seed)
    {
        const unsigned circuits = 1 + below(9);
        m_places = 3 + below(25);
        for (unsigned i = 0; i < circuits; ++i)
            build(*system.CreateCircuit(), i);
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    void build(ICircuit& circuit, unsigned name)
    {
        circuit.GetEntity()->SetMeta(("circuit " + std::to_string(name)).c_str());
        circuit.SetCheckDuplicateElementAtNodes(below(3) > 0);
        circuit.SetCheckNodeIdTaken(below(3) > 0);
        const unsigned nodes = below(6);
        for (unsigned i = 0; i < nodes; ++i)
            place(*circuit.CreateNode(), name);
        if (nodes == 0) return;
        for (unsigned i = below(8); i > 0; --i)
            connect(circuit, nodes);
        if (below(4) == 0)
            circuit.GetNode(below(nodes))->GetEntity()->SetProperty(2000, 1 + below(nodes + 2));
        if (below(8) == 0) circuit.ReleaseNode(circuit.GetNode(below(nodes)));
    }

    void place(INode& node, unsigned name)
    {
        const double zero = below(2) == 0 ? 0.0 : -0.0;
        node.SetLocation(below(m_places), below(6) == 0 ? 1.0 : zero, zero);
        node.SetConstraint(static_cast<int>(below(5)), below(100) * 0.1);
        node.GetEntity()->SetMeta(("node of " + std::to_string(name)).c_str());
        if (below(5) == 0)
            node.GetEntity()->GetProperties()->SetStringPropertyByName("node_pressure", "1e5 Pa");
        if (below(9) == 0) node.GetEntity()->RemoveProperty(2002);
    }

    void connect(ICircuit& circuit, unsigned nodes)
    {
        const double flows[] = {0.0, 1.0, 2.0, 3.0};
        INode* start = circuit.GetNode(below(nodes));
        INode* end = circuit.GetNode(below(nodes));
        IElement* element = nullptr;
        switch (below(6)) {
        case 0:
            element = circuit.CreatePump(start, end, flows, flows, 4, 998.0, 2, 0.0);
            break;
        case 1:
            element = circuit.CreateEmptyElement();
            element->GetEntity()->SetProperty(1001, below(nodes + 2));
            element->GetEntity()->SetProperty(1002, below(nodes + 2));
            if (below(2) == 0) element->GetEntity()->SetProperty(1003, 0.3);
            element->GetEntity()->SetProperty(1004, 0.4);
            break;
        default:
            element = circuit.CreateElement(start, end, 0.1 + below(9), 0.2, 0.3, 1, 0.7);
        }
        if (element != nullptr) element->GetEntity()->SetMeta("an element");
    }

    std::mt19937 m_random;
    unsigned m_places = 0;
};

class Merge : public Model
{
protected:
    Circuit& second = newCircuit();
};

}  // namespace

TEST_F(Merge, random_systems_merge_as_by_plain_scans)
{
    int absorbed = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        Tavell fast;
        Tavell literal;
        RandomSystem(fast, seed);
        RandomSystem(literal, seed);
        const std::size_t before = fast.GetNoCircuits();
        fast.MergeCircuits();
        mergeLiterally(literal);
        absorbed += static_cast<int>(before - fast.GetNoCircuits());
        ASSERT_EQ(describe(fast), describe(literal)) << "seed " << seed;
    }
    EXPECT_GT(absorbed, 3000) << "the systems hardly ever merged";
}

TEST_F(Merge, circuits_that_meet_in_a_place_become_one)
{
    newNode(circuit, 1.0, 2.0, 3.0);
    Node& shared = newNode(second, 1.0, 2.0, 3.0);
    newPipe(second, shared, 5.0);
    system.MergeCircuits();
    ASSERT_EQ(system.GetNoCircuits(), 1U);
    EXPECT_EQ(system.GetCircuit(0), &circuit);
    EXPECT_EQ(circuit.GetNoNodes(), 2U);
    ASSERT_EQ(circuit.GetNoElements(), 1U);
    EXPECT_EQ(circuit.GetElement(0)->GetStartNodeId(), 1);
    EXPECT_EQ(circuit.GetElement(0)->GetEndNodeId(), 2);
}

TEST_F(Merge, minus_zero_is_the_same_place_as_zero)
{
    newNode(circuit, 0.0, 0.0, 0.0);
    newNode(second, 0.0, 0.0, -0.0);
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 1U);
}

// The key of a place is the exclusive or of its three coordinates' hashes, which does not depend on their order.
TEST_F(Merge, places_with_exchanged_coordinates_meet_too)
{
    newNode(circuit, 1.0, 2.0, 3.0);
    newNode(second, 3.0, 1.0, 2.0);
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 1U);
}

TEST_F(Merge, there_is_no_tolerance)
{
    newNode(circuit, 1.0);
    newNode(second, std::nextafter(1.0, 2.0));
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 2U);
}

TEST_F(Merge, a_circuit_without_elements_disappears_with_its_nodes_and_the_receiver_keeps_its_results)
{
    newNode(circuit, 1.0);
    newNode(second, 1.0);
    newNode(second, 2.0);
    pretendResults(circuit);
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 1U);
    EXPECT_EQ(circuit.GetNoNodes(), 1U);
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(circuit.results().size(), 1U);
}

TEST_F(Merge, only_the_two_that_touch_are_joined)
{
    Circuit& third = newCircuit();
    newNode(circuit, 1.0);
    newNode(second, 2.0);
    newPipe(third, 2.0, 3.0);
    system.MergeCircuits();
    ASSERT_EQ(system.GetNoCircuits(), 2U);
    EXPECT_EQ(system.GetCircuit(0), &circuit);
    EXPECT_EQ(system.GetCircuit(1), &second);
    EXPECT_EQ(circuit.GetNoNodes(), 1U);
    EXPECT_EQ(second.GetNoNodes(), 2U);
}

TEST_F(Merge, a_circuit_met_only_after_growing_is_absorbed_too)
{
    Circuit& third = newCircuit();
    newNode(circuit, 1.0);
    newPipe(second, 2.0, 3.0);
    newPipe(third, 1.0, 2.0);
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 1U);
    EXPECT_EQ(circuit.GetNoElements(), 2U);
}

TEST_F(Merge, moved_objects_get_new_ids_and_keep_everything_else)
{
    newPipe(circuit, 1.0, 0.0);
    Node& shared = newNode(second, 1.0);
    Node& far = newNode(second, 7.0);
    far.SetMeta("far end");
    far.SetConstraint(1, 0.25);
    storeText(far, "node_pressure", "1e5 Pa");
    Element& pipe = *newPipe(second, shared, far);
    pipe.SetMeta("riser");
    pipe.SetType(3);
    pipe.SetProperty(1016, 120.0);
    system.MergeCircuits();

    ASSERT_EQ(circuit.GetNoElements(), 2U);
    auto& moved = *static_cast<Element*>(circuit.GetElement(1));
    EXPECT_EQ(moved.GetId(), 2);
    EXPECT_EQ(moved.GetStartNodeId(), 1);
    EXPECT_EQ(moved.GetEndNodeId(), 3);
    EXPECT_STREQ(moved.GetMeta(), "riser");
    EXPECT_EQ(moved.GetType(), 3);
    EXPECT_EQ(moved.number(1016), 120.0);
    EXPECT_EQ(moved.number(1003), 0.1);
    auto& copy = *static_cast<Node*>(circuit.GetNode(2));
    EXPECT_EQ(copy.GetId(), 3);
    EXPECT_EQ(circuit.GetNodeById(3), &copy);
    EXPECT_STREQ(copy.GetMeta(), "far end");
    EXPECT_EQ(copy.GetConstraint(), 1);
    EXPECT_EQ(storedText(copy, 2006), "1e5 Pa");
    EXPECT_EQ(system.FindParentCircuitFromNode(&copy), &circuit);
    EXPECT_EQ(system.FindParentCircuitFromElement(&moved), &circuit);
}

TEST_F(Merge, a_shared_node_without_a_partner_is_copied_for_every_end)
{
    newNode(circuit, 1.0);
    Node& shared = newNode(second, 1.0);
    Node& inner = newNode(second, 2.0);
    newPipe(second, shared, inner);
    newPipe(second, inner, shared);
    system.MergeCircuits();
    ASSERT_EQ(circuit.GetNoElements(), 2U);
    EXPECT_EQ(circuit.GetNoNodes(), 3U);
    EXPECT_EQ(circuit.GetElement(0)->GetEndNodeId(), 2);
    EXPECT_EQ(circuit.GetElement(1)->GetStartNodeId(), 3);
}

TEST_F(Merge, the_youngest_of_several_nodes_at_a_place_is_the_partner)
{
    newNode(circuit, 1.0);
    newNode(circuit, 1.0);
    newPipe(second, 1.0, 2.0);
    system.MergeCircuits();
    EXPECT_EQ(circuit.GetElement(0)->GetStartNodeId(), 2);
}

TEST_F(Merge, pumps_are_lost_and_their_unmatched_nodes_stay)
{
    const double flows[] = {0.0, 1.0, 2.0, 3.0};
    newNode(circuit, 1.0);
    Node& shared = newNode(second, 1.0);
    Node& other = newNode(second, 2.0);
    ASSERT_NE(second.CreatePump(&shared, &other, flows, flows, 4, 998.0, 2, 0.0), nullptr);
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 1U);
    EXPECT_EQ(circuit.GetNoElements(), 0U);
    EXPECT_EQ(circuit.GetNoNodes(), 2U);
}

TEST_F(Merge, a_duplicate_between_two_partners_is_lost_while_the_check_is_on)
{
    newPipe(circuit, 1.0, 2.0);
    newPipe(second, 1.0, 2.0);
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 1U);
    EXPECT_EQ(circuit.GetNoElements(), 1U);
}

TEST_F(Merge, growth_drops_the_results_of_the_receiver)
{
    newNode(circuit, 1.0);
    newPipe(second, 1.0, 2.0);
    pretendResults(circuit);
    system.MergeCircuits();
    EXPECT_FALSE(circuit.hasResults());
    EXPECT_TRUE(circuit.results().empty());
}

TEST_F(Merge, a_circuit_that_brings_only_duplicates_leaves_the_receiver_its_results)
{
    newPipe(circuit, 1.0, 2.0);
    newPipe(second, 1.0, 2.0);
    pretendResults(circuit);
    system.MergeCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 1U);
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(circuit.results().size(), 1U);
}

TEST_F(Merge, an_unreadable_place_throws_before_anything_changes)
{
    Circuit& third = newCircuit();
    newNode(circuit, 1.0);
    newNode(second, 1.0);
    storeText(newNode(third, 5.0), "node_y", "high");
    EXPECT_THROW(system.MergeCircuits(), std::invalid_argument);
    EXPECT_EQ(system.GetNoCircuits(), 3U);
}

TEST_F(Merge, a_failure_in_the_middle_leaves_the_receiver_as_it_was)
{
    newNode(circuit, 1.0);
    Node& shared = newNode(second, 1.0);
    newPipe(second, shared, 2.0);
    Element& broken = *newPipe(second, shared, 3.0);
    storeText(broken, "element_area", "wide");
    pretendResults(circuit);
    EXPECT_THROW(system.MergeCircuits(), std::invalid_argument);
    EXPECT_EQ(system.GetNoCircuits(), 2U);
    EXPECT_EQ(circuit.GetNoNodes(), 1U);
    EXPECT_EQ(circuit.GetNoElements(), 0U);
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(circuit.results().size(), 1U);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 2);
    EXPECT_EQ(circuit.CreateEmptyElement()->GetId(), 1);
}
