// model_fixture.h: a system with one circuit, and what the tests of the model ask again and again.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <locale>
#include <string>

#include "model/Tavell.h"
#include "tavell/Constants.h"

namespace ModelTest
{

using namespace Velcor::Tavell;

/// Commas for points and points between thousands, as a locale of the host may ask for.
class CommaPunctuation final : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class Model : public ::testing::Test
{
protected:
    Circuit& newCircuit() { return *static_cast<Circuit*>(system.CreateCircuit()); }

    static Node& newNode(Circuit& circuit, double x, double y = 0.0, double z = 0.0)
    {
        INode* node = circuit.CreateNode();
        node->SetLocation(x, y, z);
        return *static_cast<Node*>(node);
    }

    /// A round pipe, 0.1 m wide.
    static Element* newPipe(Circuit& circuit, INode& start, INode& end)
    {
        return static_cast<Element*>(circuit.CreateElement(&start, &end, 0.1, 0.01, 0.0, 2, 0.0));
    }

    /// The same between two new nodes on the x axis.
    static Element* newPipe(Circuit& circuit, double startX, double endX)
    {
        Node& start = newNode(circuit, startX);
        Node& end = newNode(circuit, endX);
        return newPipe(circuit, start, end);
    }

    /// The same from a node to a new one on the x axis.
    static Element* newPipe(Circuit& circuit, INode& start, double endX)
    {
        return newPipe(circuit, start, newNode(circuit, endX));
    }

    /// Stands for a solve that converged.
    static void pretendResults(Circuit& circuit)
    {
        circuit.results().emplace(TAVELL_RESULT_PRESSURE, ResultsSet(true));
        circuit.setHasResults(true);
    }

    static void storeText(Entity& entity, const char* name, const char* text)
    {
        ASSERT_TRUE(entity.GetProperties()->SetStringPropertyByName(name, text));
    }

    static std::string storedText(Entity& entity, int id)
    {
        IPropertySet* set = entity.GetProperties();
        const int position = set->GetIndex(id);
        return position < 0 ? "absent" : set->GetStringValue(static_cast<std::size_t>(position));
    }

    Tavell system;
    Circuit& circuit = newCircuit();
};

/// Whether results were dropped; puts new ones in their place.
inline bool tookResults(Circuit& circuit)
{
    const bool dropped = !circuit.hasResults() && circuit.results().empty();
    circuit.results().emplace(TAVELL_RESULT_PRESSURE, ResultsSet(true));
    circuit.setHasResults(true);
    return dropped;
}

}  // namespace ModelTest
