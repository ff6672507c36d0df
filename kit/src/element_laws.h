// element_laws.h: the laws of docs/theory.md as pure functions of numbers, for checking a result. They share
// nothing with the solver.
#ifndef TAVELL_KIT_ELEMENT_LAWS_H
#define TAVELL_KIT_ELEMENT_LAWS_H

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "network.h"
#include "solution.h"

namespace kit
{

/// Vogel (1921): mu = c1 exp((c2 - 273.15)/(T + c3 - 546.3)) [Pa s], T [K] between 273.15 and 373.15.
double vogelViscosity(const FluidValues& fluid, double temperature);

/// Darcy friction factor [-] of a method (TavellFrictionMethod), docs/theory.md section 5. relativeRoughness
/// is eps / D.
double darcyFriction(int method, double reynolds, double relativeRoughness);

/// Discharge coefficient [-] of an orifice plate, docs/theory.md section 8: diameters and length in m, Re on
/// the pipe.
double orificeDischarge(double bore, double diameter, double length, double reynolds);

/// The cubic that stands for a pump's curve, and where its rise ends.
class PumpFit
{
public:
    /// Least squares over the points with 6 significant digits, by orthogonal polynomials (Forsythe 1957).
    PumpFit(const std::vector<CurvePoint>& points, double referenceDensity);

    /// Rise [Pa] at a volume flow [m3/s] with a liquid of density [kg/m3]: the cubic from 0 to endFlow,
    /// outside the line through its two ends.
    double rise(double flow, double density) const;
    /// [m3/s], at which the rise falls to zero; not a number when it never does.
    double endFlow() const { return m_endFlow; }
    /// Whether a solve finds that flow: by Newton's method from no flow, then from a half, a third ... of the last
    /// point's (docs/theory.md, section 10).
    bool isEndFound() const;
    /// [m2/s2], the cubic itself at any flow.
    double cubic(double flow) const;

private:
    static constexpr std::size_t kTerms = 4;

    void fit(const std::vector<double>& flows, const std::vector<double>& rises);
    double findEndFlow() const;

    double m_scale = 1.0;  // [m3/s], largest flow of the points
    std::array<double, kTerms> m_alpha{};
    std::array<double, kTerms> m_beta{};
    std::array<double, kTerms> m_weight{};
    double m_endFlow = 0.0;
};

/// The points of a pump's curve [m3/s, Pa] as a circuit gets them: those given, and when a solve would not find
/// the end of their rise, two more on the parabola A - B Q^2 through the last two, half way to no rise and there.
std::vector<CurvePoint> pumpPoints(const std::vector<CurvePoint>& points, double referenceDensity);

/// What an element's law makes of the piezometric pressure from start to end [Pa]: friction + minor + other -
/// rise.
struct LawTerms {
    double friction = 0.0;
    double minor = 0.0;
    double other = 0.0;
    double rise = 0.0;

    double drop() const { return friction + minor + other - rise; }
};

/// The laws of one network's elements.
class ElementLaws
{
public:
    ElementLaws(const Network& network, const FluidValues& fluid);

    /// At a mass flow [kg/s], > 0 from start to end, and a temperature of the element [K]. A minor loss that
    /// the library computes from the junctions is not in it.
    LawTerms at(std::size_t element, double massFlow, double temperature) const;

    /// Pressure drop [Pa] of a loss curve itself, straight between its points: what the end of an element of
    /// given flow shows, where inner ones follow the line from the origin through the last point.
    double lossCurve(std::size_t element, double volumeFlow) const;

    /// [Pa s], at the temperature of an element [K].
    double viscosity(double temperature) const;

    /// Whether the minor loss is the given one.
    bool isMinorLossGiven(std::size_t element) const;

private:
    LawTerms pipe(const Element& element, double k, double roughness, double massFlow,
                  double temperature) const;
    double orificeDrop(const Element& element, double volumeFlow, double temperature) const;
    double generalDrop(const Element& element, double volumeFlow) const;
    double checkValveDrop(const Element& element, double massFlow, double temperature) const;
    double valveDrop(double kv, double volumeFlow) const;
    double lossDrop(std::size_t element, double volumeFlow) const;

    const Network& m_network;
    const FluidValues& m_fluid;
    std::vector<std::optional<PumpFit>> m_pumps;  // by element
};

}  // namespace kit

#endif
