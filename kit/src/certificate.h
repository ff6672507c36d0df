// certificate.h: a check of a result from its own numbers, without the solver.
#ifndef TAVELL_KIT_CERTIFICATE_H
#define TAVELL_KIT_CERTIFICATE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "network.h"
#include "solution.h"

namespace kit
{

/// [-], limits of a good certificate (docs/certificate.md).
constexpr double kGoodMassImbalance = 1e-5;
constexpr double kGoodLawMismatch = 1e-4;
constexpr double kGoodEnergyImbalance = 1e-5;
constexpr double kGoodColumnMismatch = 1e-6;

/// What the check found.
struct Certificate {
    double massImbalance = 0.0;          // [kg/s], of the worst node
    double relativeMassImbalance = 0.0;  // [-], over the mean flow of an element
    std::string worstNode;               // its name; "" when all balance exactly
    double lawMismatch = 0.0;            // [Pa], of the worst element
    /// [-], sum over the elements of the mismatch over the mean of the two end pressures, as a solve has it.
    double relativeLawMismatch = 0.0;
    std::string worstElement;                       // its name; "" when all fit exactly
    std::optional<double> energyImbalance;          // [W], of the worst node or element
    std::optional<double> relativeEnergyImbalance;  // [-], over the mean heat that a flow carries
    double columnMismatch = 0.0;  // [-], worst contradiction between a column and those that it follows from
    std::size_t elementsChecked = 0;
    std::size_t elementsNotChecked = 0;
    std::string notCheckedWhy;  // "3 have a computed junction loss; 1 has a fixed flow"
    std::string modelHash;
    std::string version;
    bool isGood = false;
};

/// Checks a solution; one without results gives a certificate that is not good.
Certificate certify(const Network& network, const Solution& solution);

/// By node [kg/s]: what flows in, from outside and through the elements, less what flows out; 0 without
/// results.
std::vector<double> massResiduals(const Network& network, const Solution& solution);

/// By element [Pa]: pressure drop between the nodes less that of the law; not a number where nothing is
/// checked.
std::vector<double> lawMismatches(const Network& network, const Solution& solution);

/// What makes up the pressure between the ends of an element [Pa], in the direction from start to end:
/// p(start) - p(end) = friction + minor + other + height - pump.
struct LossParts {
    double friction = 0.0;
    double minor = 0.0;   // K of the element, with its fittings, or of its junctions
    double height = 0.0;  // weight of the liquid, > 0 upwards
    double pump = 0.0;    // rise
    double other = 0.0;   // valves, orifices, general losses, loss curves, and what a limit holds back
};

/// By element; not numbers where the pressures are none. Closed elements have the height alone, the rest is
/// other.
std::vector<LossParts> lossParts(const Network& network, const Solution& solution);

/// The certificate in two lines for people, each with a line end.
std::string certificateText(const Certificate& certificate);

}  // namespace kit

#endif
