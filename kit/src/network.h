// network.h: a network as an engineer describes it: named, in SI units, checked. What a file is read into, what an
// import makes, and what a circuit is built from.
#ifndef TAVELL_KIT_NETWORK_H
#define TAVELL_KIT_NETWORK_H

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kit
{

/// What an inlet or an outlet imposes on its node. Any node may have one: at a node inside the network a given flow is
/// brought there by a short element of its own that results do not show.
struct Boundary {
    /// Which flow is given, if any.
    enum class Flow { none, mass, volume, reynolds, velocity };

    bool isInlet = false;
    std::optional<double> pressure;  // [Pa], static
    Flow flowKind = Flow::none;
    double flow =
        0.0;  // [kg/s], [m3/s], [-] or [m/s]; > 0 into the network at an inlet, out of it at an outlet
    std::optional<double> temperature;  // [K], of the fluid that enters
};

struct Node {
    std::string name;
    std::array<double, 3>
        at{};  // [m]; with schematic coordinates x and y place the drawing, the third is the height
    std::optional<Boundary> boundary;
    std::string description;
    std::size_t line = 0;  // of the file that it was read from; 0 when there is none
};

/// A flow cross-section; round ones have a diameter, others a wetted perimeter.
struct Section {
    double diameter = 0.0;         // [m], 0 when not round
    double wettedPerimeter = 0.0;  // [m], 0 when round
    double area = 0.0;             // [m2]

    /// [m], 4 area / wetted perimeter, or the diameter.
    double hydraulicDiameter() const { return diameter > 0.0 ? diameter : 4.0 * area / wettedPerimeter; }
};

struct CurvePoint {
    double volumeFlow = 0.0;  // [m3/s]
    double pressure = 0.0;    // [Pa], a rise of a pump, a drop of a loss
};

/// A curve that elements may share by its name.
struct Curve {
    std::vector<CurvePoint> points;
    std::optional<double> referenceDensity;  // [kg/m3], at which it was measured
    std::string source;
};

/// Heat that enters the fluid in an element (TavellEnergyType).
struct Heat {
    int type = 2;        // TavellEnergyType
    double value = 0.0;  // [K] wall temperature or rise, [W/m2] flux, [W] heat
};

/// Properties that elements take by the name of their material.
struct Material {
    std::optional<double> roughness;      // [m]
    std::optional<double> hazenWilliams;  // C, SI
    std::string source;
};

/// A fitting that elements count by its name.
struct Fitting {
    double k = 0.0;  // [-]
    std::string source;
};

struct FittingUse {
    std::string name;
    int count = 1;
};

struct ElementKind;

/// What is read and set for many elements at once comes first, and never lies across two cache lines.
struct alignas(32) Element {
    std::optional<Section> section;  // elements without a curve
    /// [m], when it differs from the distance between the nodes; required for pipes of schematic networks.
    std::optional<double> length;
    const ElementKind* kind = nullptr;
    std::size_t from = 0;  // position of the start node
    std::size_t to = 0;    // position of the end node
    std::string name;
    std::string material;  // name in Network::materials or of a known material; "" for none
    std::vector<FittingUse>
        fittings;           // names in Network::fittings or of known fittings; their K adds to that given
    std::string curveName;  // name in Network::curves; "" when the curve is the element's own
    std::vector<CurvePoint> curve;                   // pumps and losses with a curve of their own
    std::optional<double> referenceDensity;          // [kg/m3], of the curve
    std::vector<std::pair<int, double>> properties;  // further values, by TavellProperty
    std::optional<Heat> heat;
    bool isClosed = false;  // carries no flow and takes no part in a solve
    bool hasCheckValve =
        false;  // lets no flow back; Darcy-Weisbach and Hazen-Williams pipes and general losses
    std::vector<std::array<double, 3>> vertices;  // between the nodes, of the drawing only
    std::string description;
    std::size_t line = 0;  // of the file that it was read from; 0 when there is none

    /// The value stored for a TavellProperty; nothing when there is none.
    std::optional<double> property(int id) const;
    void setProperty(int id, double value);
};

/// The liquid. A name of the table of fluids brings its properties at the given temperature; values that are given
/// here win over those of the table.
struct FluidChoice {
    std::string name;                     // "" for the library's own water at 21 degC
    std::optional<double> temperature;    // [K], of the case
    std::optional<double> concentration;  // [-], mass fraction of the solute: glycols, salt of seawater
    std::vector<std::pair<int, double>> properties;  // given values, by TavellProperty (TAVELL_FLUID_...)
};

/// How coordinates are meant.
enum class Coordinates {
    geometry,  // they are the geometry: an element without a length has the distance between its nodes
    schematic  // x and y are a drawing, the third is the height: lengths are given
};

/// What a solve is asked for.
struct Settings {
    int minorLoss = 0;       // TAVELL_CIRCUIT_MINOR_LOSS
    int frictionMethod = 0;  // TavellFrictionMethod
    bool solvesTemperatures = false;
    bool viscosityFollowsTemperature = false;
    /// [Pa], added to every given pressure for the solve and taken off its results: the measure of convergence is
    /// relative to the mean pressure, which is hard to meet when pressures are close to zero.
    double pressureDatum = 0.0;
    std::optional<double> velocityLimit;  // [m/s], above which the doctor speaks; nothing takes its default
};

struct ExpectedValue {
    std::string object;    // a node's or element's name
    std::string quantity;  // "pressure", "mass_flow" ...
    double value = 0.0;    // SI
};

/// The expected answer of an example.
struct Answer {
    std::string text;
    double tolerance = 0.01;  // [-], relative to each value
    std::vector<ExpectedValue> nodes;
    std::vector<ExpectedValue> elements;
};

struct Network {
    std::string title;
    std::string source;
    std::optional<Answer> answer;
    FluidChoice fluid;
    std::array<double, 3> gravity{0.0, 0.0, -1.0};  // [-], length 1 is 9.80665 m/s2
    Coordinates coordinates = Coordinates::geometry;
    Settings settings;
    std::map<std::string, std::string>
        resultUnits;  // quantity ("pressure") to unit ("bar") of printed results
    std::map<std::string, Material> materials;
    std::map<std::string, Fitting> fittings;
    std::map<std::string, Curve> curves;
    std::vector<Node> nodes;
    std::vector<Element> elements;
    /// Scenarios by name: patches of the network file's object by names of nodes and elements, in SI units, as
    /// JSON texts.
    std::map<std::string, std::string> scenarios;
    std::string file;  // it was read from; "" when it was not
};

}  // namespace kit

#endif
