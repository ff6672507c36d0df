// CircuitIndex_test.cpp: look-ups answer as a walk over the circuit would, whatever a host does to identifiers.
#include "model/CircuitIndex.h"

#include <functional>
#include <random>
#include <stdexcept>
#include <string>

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

class CircuitIndexTest : public Model
{
};

INode* nodeByWalk(Circuit& circuit, int id)
{
    for (std::size_t i = 0; i < circuit.GetNoNodes(); ++i)
        if (circuit.GetNode(i)->GetId() == id) return circuit.GetNode(i);
    return nullptr;
}

bool hasElementByWalk(Circuit& circuit, int start, int end)
{
    for (std::size_t i = 0; i < circuit.GetNoElements(); ++i) {
        IElement* element = circuit.GetElement(i);
        if (element->GetStartNodeId() == start && element->GetEndNodeId() == end) return true;
    }
    return false;
}

/// Address of the answer as text, or the message of what is thrown.
std::string outcome(const std::function<const void*()>& lookUp)
{
    try {
        return std::to_string(reinterpret_cast<std::uintptr_t>(lookUp()));
    } catch (const std::exception& error) {
        return error.what();
    }
}

/// A host that edits identifiers in all the ways there are. Few different values, so that they often clash.
class Vandal
{
public:
    Vandal(Circuit& circuit, unsigned seed) : m_circuit(circuit), m_random(seed) {}

    void act()
    {
        const unsigned what = below(20);
        if (what == 0) m_circuit.CreateEmptyElement();
        if (what == 1) release();
        if (what == 2) createNode();
        if (what > 2 && what < 10) edit(randomNode()->GetEntity(), TAVELL_NODE_ID, "node_id");
        if (what >= 10 && what < 15)
            edit(randomElement()->GetEntity(), TAVELL_ELEMENT_START, "element_start");
        if (what >= 15) edit(randomElement()->GetEntity(), TAVELL_ELEMENT_END, "Element_End");
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }
    INode* randomNode() { return m_circuit.GetNode(m_random() % m_circuit.GetNoNodes()); }
    IElement* randomElement() { return m_circuit.GetElement(m_random() % m_circuit.GetNoElements()); }

    void createNode()
    {
        const bool check = m_circuit.GetCheckNodeIdTaken();
        m_circuit.SetCheckNodeIdTaken(false);
        m_circuit.CreateNode();
        m_circuit.SetCheckNodeIdTaken(check);
    }

    void release()
    {
        if (m_circuit.GetNoNodes() > 4) m_circuit.ReleaseNode(randomNode());
        if (m_circuit.GetNoElements() > 4) m_circuit.ReleaseElement(randomElement());
    }

    void edit(IEntity* entity, int id, const char* name)
    {
        const int value = static_cast<int>(below(6));
        const char* texts[] = {"3", " 2.9", "abc", "1e999", "", "0x4"};
        // Unreadable texts are rare, or nearly every walk would end at one.
        const unsigned how = below(12);
        if (how < 7)
            entity->SetProperty(id, value + 0.25 * below(2));
        else if (how < 9)
            entity->RemoveProperty(id);
        else
            entity->GetProperties()->SetStringPropertyByName(name, texts[below(how == 11 ? 6 : 2)]);
    }

    Circuit& m_circuit;
    std::mt19937 m_random;
};

}  // namespace

TEST_F(CircuitIndexTest, random_edits_leave_every_answer_that_of_a_walk)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        Circuit& edited = newCircuit();
        for (int i = 0; i < 6; ++i) {
            newNode(edited, i);
            edited.CreateEmptyElement();
        }
        Vandal vandal(edited, seed);
        for (int step = 0; step < 150; ++step) {
            vandal.act();
            for (int id = -1; id < 8; ++id) {
                ASSERT_EQ(outcome([&] { return static_cast<const void*>(edited.GetNodeById(id)); }),
                          outcome([&] { return static_cast<const void*>(nodeByWalk(edited, id)); }));
            }
        }
    }
}

// Whether a pipe is refused as a duplicate, or its refusal throws, is seen on pipes between nodes of ids of their own.
TEST_F(CircuitIndexTest, random_edits_leave_the_duplicate_check_that_of_a_walk)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        Circuit& edited = newCircuit();
        for (int i = 0; i < 6; ++i) {
            newNode(edited, i);
            edited.CreateEmptyElement();
        }
        edited.SetCheckNodeIdTaken(false);
        Vandal vandal(edited, seed);
        for (int step = 0; step < 150; ++step) {
            vandal.act();
            // Two fresh nodes whose ids are the pair to be asked for.
            Node& a = newNode(edited, 100.0);
            Node& b = newNode(edited, 200.0);
            for (int start = 0; start < 6; ++start) {
                const int end = (start + step) % 6;
                if (start == end) continue;
                a.SetProperty(2000, start);
                b.SetProperty(2000, end);
                const std::size_t before = edited.GetNoElements();
                const std::string expected = outcome([&] {
                    return hasElementByWalk(edited, start, end) ? nullptr : static_cast<const void*>(&edited);
                });
                IElement* created = nullptr;
                const std::string answer = outcome([&] {
                    created = newPipe(edited, a, b);
                    return created == nullptr ? nullptr : static_cast<const void*>(&edited);
                });
                ASSERT_EQ(answer, expected);
                if (created != nullptr) {
                    ASSERT_TRUE(edited.ReleaseElement(created));
                }
                ASSERT_EQ(edited.GetNoElements(), before);
            }
            edited.ReleaseNode(&a);
            edited.ReleaseNode(&b);
        }
    }
}

TEST_F(CircuitIndexTest, the_oldest_of_several_nodes_with_an_id_is_found)
{
    Node& a = newNode(circuit, 0.0);
    Node& b = newNode(circuit, 1.0);
    Node& c = newNode(circuit, 2.0);
    b.SetProperty(2000, 1.0);
    c.SetProperty(2000, 1.0);
    EXPECT_EQ(circuit.GetNodeById(1), &a);
    a.SetProperty(2000, 9.0);
    EXPECT_EQ(circuit.GetNodeById(1), &b);
    circuit.ReleaseNode(&b);
    EXPECT_EQ(circuit.GetNodeById(1), &c);
}

TEST_F(CircuitIndexTest, an_id_changed_without_notice_is_found_at_once)
{
    Node& node = newNode(circuit, 0.0);
    storeText(node, "node_id", "42 and more");
    EXPECT_EQ(circuit.GetNodeById(42), &node);
    EXPECT_EQ(circuit.GetNodeById(1), nullptr);
    node.RemoveProperty(2000);
    EXPECT_EQ(circuit.GetNodeById(0), &node) << "an absent id reads 0";
}

TEST_F(CircuitIndexTest, a_look_up_throws_only_when_it_meets_an_unreadable_id_first)
{
    Node& a = newNode(circuit, 0.0);
    Node& b = newNode(circuit, 1.0);
    Node& c = newNode(circuit, 2.0);
    storeText(b, "node_id", "abc");
    EXPECT_EQ(circuit.GetNodeById(1), &a);
    EXPECT_THROW(circuit.GetNodeById(3), std::invalid_argument);
    EXPECT_THROW(circuit.GetNodeById(99), std::invalid_argument);
    storeText(b, "node_id", "1e999");
    EXPECT_THROW(circuit.GetNodeById(3), std::out_of_range);
    storeText(b, "node_id", "7");
    EXPECT_EQ(circuit.GetNodeById(3), &c);
}
