#include "catalogue.h"

#include <algorithm>
#include <tavell/Constants.h>

namespace kit
{

namespace
{

// Roughness: F. M. White, Fluid Mechanics, 7th edition, McGraw-Hill 2011, table 6.1, new surfaces unless the
// name says otherwise; the values are those of L. F. Moody, Friction factors for pipe flow, Trans. ASME 66,
// 1944, where Moody has the surface. Hazen-Williams C: L. A. Rossman and others, EPANET 2.2 User Manual, US
// EPA 2020, table 3.2, the lower end of its ranges. K: B. R. Munson and others, Fundamentals of Fluid
// Mechanics, 7th edition, Wiley 2013, table 8.2; entrances and exit by its figures 8.22 and 8.25.
const char* const kWhite = "roughness: White, Fluid Mechanics, 7th ed., McGraw-Hill 2011, table 6.1";
const char* const kMoody = "roughness: Moody, Trans. ASME 66, 1944, drawn tubing";
const char* const kWhiteAndEpanet = "roughness: White, Fluid Mechanics, 7th ed., McGraw-Hill 2011, table "
                                    "6.1; C: Rossman and others, EPANET 2.2 "
                                    "User Manual, US EPA 2020, table 3.2";
const char* const kEpanet = "C: Rossman and others, EPANET 2.2 User Manual, US EPA 2020, table 3.2";
const char* const kMunson =
    "Munson and others, Fundamentals of Fluid Mechanics, 7th ed., Wiley 2013, table 8.2";
const char* const kMunsonEntrance =
    "Munson and others, Fundamentals of Fluid Mechanics, 7th ed., Wiley 2013, figure 8.22";
const char* const kMunsonExit =
    "Munson and others, Fundamentals of Fluid Mechanics, 7th ed., Wiley 2013, figure 8.25";

template <class Entry>
const Entry* findEntry(const std::map<std::string, Entry>& own, const std::map<std::string, Entry>& known,
                       const std::string& name)
{
    const auto found = own.find(name);
    if (found != own.end()) return &found->second;
    const auto inCatalogue = known.find(name);
    return inCatalogue == known.end() ? nullptr : &inCatalogue->second;
}

/// How many of a network's own names a message chooses from: every finding goes through all of them.
constexpr std::size_t kMostOwnNames = 200;

template <class Entry>
std::vector<std::string> namesOf(const std::map<std::string, Entry>& own,
                                 const std::map<std::string, Entry>& known)
{
    std::vector<std::string> names;
    names.reserve(std::min(own.size(), kMostOwnNames) + known.size());
    for (const auto& entry : own) {
        if (names.size() == kMostOwnNames) break;
        names.push_back(entry.first);
    }
    for (const auto& entry : known) {
        if (own.count(entry.first) == 0) names.push_back(entry.first);
    }
    return names;
}

}  // namespace

const std::map<std::string, Material>& knownMaterials()
{
    // clang-format off
    static const std::map<std::string, Material> kMaterials{
        {"steel", {4.6e-5, 140.0, kWhiteAndEpanet}},
        {"stainless steel", {2e-6, std::nullopt, kWhite}},
        {"riveted steel", {3e-3, std::nullopt, kWhite}},
        {"rusted steel", {2e-3, std::nullopt, kWhite}},
        {"cast iron", {2.6e-4, 130.0, kWhiteAndEpanet}},
        {"asphalted cast iron", {1.2e-4, std::nullopt, kWhite}},
        {"wrought iron", {4.6e-5, std::nullopt, kWhite}},
        {"galvanised iron", {1.5e-4, 120.0, kWhiteAndEpanet}},
        {"brass", {2e-6, std::nullopt, kWhite}},
        {"copper", {1.5e-6, std::nullopt, kMoody}},
        {"plastic", {1.5e-6, 140.0, kWhiteAndEpanet}},
        {"rubber", {1e-5, std::nullopt, kWhite}},
        {"smoothed concrete", {4e-5, 120.0, kWhiteAndEpanet}},
        {"rough concrete", {2e-3, std::nullopt, kWhite}},
        {"wood stave", {5e-4, std::nullopt, kWhite}},
        {"vitrified clay", {std::nullopt, 110.0, kEpanet}},
    };
    // clang-format on
    return kMaterials;
}

const std::map<std::string, Fitting>& knownFittings()
{
    // clang-format off
    static const std::map<std::string, Fitting> kFittings{
        {"elbow 90 threaded", {1.5, kMunson}},
        {"elbow 90 flanged", {0.3, kMunson}},
        {"long elbow 90 threaded", {0.7, kMunson}},
        {"long elbow 90 flanged", {0.2, kMunson}},
        {"elbow 45 threaded", {0.4, kMunson}},
        {"long elbow 45 flanged", {0.2, kMunson}},
        {"return bend threaded", {1.5, kMunson}},
        {"return bend flanged", {0.2, kMunson}},
        {"tee through threaded", {0.9, kMunson}},
        {"tee through flanged", {0.2, kMunson}},
        {"tee branch threaded", {2.0, kMunson}},
        {"tee branch flanged", {1.0, kMunson}},
        {"union threaded", {0.08, kMunson}},
        {"globe valve", {10.0, kMunson}},
        {"angle valve", {2.0, kMunson}},
        {"gate valve", {0.15, kMunson}},
        {"gate valve half closed", {2.1, kMunson}},
        {"swing check valve", {2.0, kMunson}},
        {"ball valve", {0.05, kMunson}},
        {"entrance sharp", {0.5, kMunsonEntrance}},
        {"entrance rounded", {0.04, kMunsonEntrance}},
        {"entrance projecting", {0.8, kMunsonEntrance}},
        {"exit", {1.0, kMunsonExit}},
    };
    // clang-format on
    return kFittings;
}

const Material* findMaterial(const Network& network, const std::string& name)
{
    return findEntry(network.materials, knownMaterials(), name);
}

const Fitting* findFitting(const Network& network, const std::string& name)
{
    return findEntry(network.fittings, knownFittings(), name);
}

const Curve* findCurve(const Network& network, const std::string& name)
{
    const auto found = network.curves.find(name);
    return found == network.curves.end() ? nullptr : &found->second;
}

std::vector<std::string> materialNames(const Network& network)
{
    return namesOf(network.materials, knownMaterials());
}

std::vector<std::string> fittingNames(const Network& network)
{
    return namesOf(network.fittings, knownFittings());
}

std::vector<std::string> curveNames(const Network& network)
{
    return namesOf(network.curves, {});
}

std::optional<double> roughnessOf(const Network& network, const Element& element)
{
    if (const auto own = element.property(TAVELL_ELEMENT_ROUGHNESS)) return own;
    const Material* material = element.material.empty() ? nullptr : findMaterial(network, element.material);
    return material == nullptr ? std::nullopt : material->roughness;
}

std::optional<double> hazenWilliamsOf(const Network& network, const Element& element)
{
    if (const auto own = element.property(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT)) return own;
    const Material* material = element.material.empty() ? nullptr : findMaterial(network, element.material);
    return material == nullptr ? std::nullopt : material->hazenWilliams;
}

double minorLossOf(const Network& network, const Element& element)
{
    double k = element.property(TAVELL_ELEMENT_K_SPECIFIED).value_or(0.0);
    for (const FittingUse& use : element.fittings) {
        if (const Fitting* fitting = findFitting(network, use.name)) k += use.count * fitting->k;
    }
    return k;
}

const std::vector<CurvePoint>* curveOf(const Network& network, const Element& element)
{
    if (element.curveName.empty()) return &element.curve;
    const Curve* curve = findCurve(network, element.curveName);
    return curve == nullptr ? nullptr : &curve->points;
}

std::optional<double> referenceDensityOf(const Network& network, const Element& element)
{
    if (element.referenceDensity || element.curveName.empty()) return element.referenceDensity;
    const Curve* curve = findCurve(network, element.curveName);
    return curve == nullptr ? std::nullopt : curve->referenceDensity;
}

}  // namespace kit
