// networks.h: networks for the tests, built through the public interfaces, and the laws that a solved one
// must obey.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tavell/Constants.h"
#include "tavell/CreateTavell.h"
#include "tavell/ICircuit.h"
#include "tavell/IElement.h"
#include "tavell/IEntity.h"
#include "tavell/IFeedback.h"
#include "tavell/IFeedbackCollection.h"
#include "tavell/IFluid.h"
#include "tavell/INode.h"
#include "tavell/IResultsSet.h"
#include "tavell/ITavell.h"

namespace support
{

using Velcor::Tavell::ICircuit;
using Velcor::Tavell::IElement;
using Velcor::Tavell::INode;
using Velcor::Tavell::ITavell;

/// A node of a description.
struct NodeData {
    std::array<double, 3> at{};
    int type = TAVELL_NODE_INTERNAL;
    int constraint = TAVELL_CONSTRAINT_PRESSURE;
    double value = 1.0;
};

/// An element of a description; ends are positions in the node list.
struct ElementData {
    int start = 0;
    int end = 0;
    int type = TAVELL_PIPE;
    double diameter = 0.1;                          // [m]
    double area = 0.0;                              // [m2]; 0: of a round pipe
    std::vector<std::array<double, 2>> properties;  // id, value
    std::vector<double> curveFlows;                 // [m3/s]
    std::vector<double> curvePressures;             // [Pa]
};

/// A network as plain data, so that tests can permute, reverse and scale it.
struct Description {
    std::vector<NodeData> nodes;
    std::vector<ElementData> elements;
    std::array<double, 3> gravity{0.0, 0.0, -1.0};
    double friction = 0.0;
    double minorLoss = 0.0;
    double density = 997.4000244140625;        // [kg/m3]
    double viscosity = 0.0009800000116229057;  // [Pa s]
};

/// A system with one circuit built from a description.
class Built
{
public:
    explicit Built(const Description& description);

    ICircuit& circuit() const { return *m_circuit; }
    INode* node(int position) const { return m_circuit->GetNode(static_cast<std::size_t>(position)); }
    IElement* element(int position) const
    {
        return m_circuit->GetElement(static_cast<std::size_t>(position));
    }

    bool solve() const { return m_circuit->Solve(false, nullptr); }
    bool solveWithTemperatures() const { return m_circuit->Solve(true, nullptr); }
    /// Results of a key in order of creation; empty without results.
    std::vector<double> results(int key) const;
    /// Feedback as text: "id(value, value) ...".
    std::string feedback() const;
    std::vector<int> feedbackIds() const;

private:
    struct Releaser {
        void operator()(ITavell* system) const { system->Release(); }
    };
    std::unique_ptr<ITavell, Releaser> m_system;
    ICircuit* m_circuit;
};

/// Largest relative violations of a solved circuit's laws, computed from its results and its description
/// alone.
struct LawCheck {
    double mass = 0.0;  // net inflow of a free node over the average flow
    double pressure =
        0.0;            // misses of the head-loss laws over the mean pressure, summed as the criterion does
    std::string worst;  // element with the largest miss
};
LawCheck checkLaws(const Description& description, const Built& built);

/// Head loss [Pa] from start to end at mass flow m [kg/s] by the element's law, written independently of the
/// solver.
/// A loss curve counts as the straight line from the origin through its last point.
/// For a pump minus the pressure rise of a cubic through its points (exact for points on a cubic).
double lossOf(const Description& description, const ElementData& element, double m);

/// Distance between an element's ends [m], at least 1e-6.
double lengthOf(const Description& description, const ElementData& element);

/// Random network: a spanning tree of count nodes in a cube plus extra pipes, inlet pressures on stubs,
/// demands on stubs.
/// types: element types to draw the tree's and the extra elements from.
Description randomNetwork(std::mt19937& random, int count, int extra, const std::vector<int>& types);

/// width x height grid of pipes 10 m apart, a pressure inlet at one corner, demands at others.
Description grid(int width, int height, double demand);

}  // namespace support
