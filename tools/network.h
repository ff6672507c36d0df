// network.h: a network as its file describes it, checked and with names resolved; SI units.
#ifndef TAVELL_TOOLS_NETWORK_H
#define TAVELL_TOOLS_NETWORK_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What an inlet or an outlet imposes on its node.
struct Boundary {
    /// Which flow is given, if any.
    enum class Flow { none, mass, reynolds, velocity };

    bool isInlet = false;
    std::optional<double> pressure;  // [Pa], static
    Flow flowKind = Flow::none;
    double flow = 0.0;  // [kg/s], [-] or [m/s]; > 0 into the network at an inlet, out of it at an outlet
};

struct Node {
    std::string name;
    std::array<double, 3> at{};  // [m]
    std::optional<Boundary> boundary;
};

/// A flow cross-section; round ones have a diameter, others a wetted perimeter.
struct Section {
    double diameter = 0.0;         // [m], 0 when not round
    double wettedPerimeter = 0.0;  // [m], 0 when round
    double area = 0.0;             // [m2]
};

struct CurvePoint {
    double volumeFlow = 0.0;  // [m3/s]
    double pressure = 0.0;    // [Pa], a rise of a pump, a drop of a loss
};

struct ElementKind;

struct Element {
    std::string name;
    const ElementKind* kind = nullptr;
    std::size_t from = 0;                            // position of the start node
    std::size_t to = 0;                              // position of the end node
    std::optional<Section> section;                  // elements without a curve
    std::vector<CurvePoint> curve;                   // pumps and losses
    std::optional<double> referenceDensity;          // [kg/m3], of the curve
    std::vector<std::pair<int, double>> properties;  // further values, by TavellProperty
};

struct FluidData {
    std::optional<std::string> name;
    std::vector<std::pair<int, double>> properties;  // by TavellProperty
};

struct Network {
    std::string title;
    std::string source;
    std::string answer;  // text of the expected answer
    FluidData fluid;
    std::array<double, 3> gravity{0.0, 0.0, -1.0};  // [-], length 1 is 9.80665 m/s2
    int minorLoss = 0;                              // TAVELL_CIRCUIT_MINOR_LOSS
    int frictionMethod = 0;                         // TavellFrictionMethod
    std::vector<Node> nodes;
    std::vector<Element> elements;
};

#endif
