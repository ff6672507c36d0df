#include "element_kinds.h"

#include <tavell/Constants.h>

namespace kit
{

namespace
{

using Keys = std::vector<std::string>;

// clang-format off
const NumberKey kRoughness{"roughness", TAVELL_ELEMENT_ROUGHNESS, {Quantity::diameter, Range::notNegative, "the absolute roughness"}, Need::optional};
const NumberKey kMinorLoss{"k", TAVELL_ELEMENT_K_SPECIFIED, {Quantity::none, Range::notNegative, "the minor loss coefficient K"}, Need::optional};
const NumberKey kFixedFlow{"fixed_mass_flow", TAVELL_ELEMENT_FIXED_MASS_FLOW, {Quantity::massFlow, Range::notZero, "the mass flow that the element keeps in place of its curve"}, Need::optional};
const NumberKey kCoefficient{"coefficient", TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, {Quantity::none, Range::positive, "the Hazen-Williams coefficient C"}, Need::optional};
const NumberKey kBore{"bore_diameter", TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, {Quantity::diameter, Range::positive, "the bore diameter"}, Need::required};
const NumberKey kCk{"ck", TAVELL_ELEMENT_GENERAL_LOSS_CK, {Quantity::none, Range::positive, "ck of dp = rho^a ck L^b / D^c Q^d"}, Need::required};
const NumberKey kA{"a", TAVELL_ELEMENT_GENERAL_LOSS_A, {Quantity::none, Range::any, "a of dp = rho^a ck L^b / D^c Q^d"}, Need::required};
const NumberKey kB{"b", TAVELL_ELEMENT_GENERAL_LOSS_B, {Quantity::none, Range::any, "b of dp = rho^a ck L^b / D^c Q^d"}, Need::required};
const NumberKey kC{"c", TAVELL_ELEMENT_GENERAL_LOSS_C, {Quantity::none, Range::any, "c of dp = rho^a ck L^b / D^c Q^d"}, Need::required};
const NumberKey kD{"d", TAVELL_ELEMENT_GENERAL_LOSS_D, {Quantity::none, Range::positive, "d of dp = rho^a ck L^b / D^c Q^d"}, Need::required};
const NumberKey kKv{"kv", TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, {Quantity::none, Range::positive, "Kv in m3/h at 1 bar"}, Need::required};
const NumberKey kCv{"cv", TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, {Quantity::none, Range::positive, "Cv in US gal/min at 1 psi"}, Need::required};
const NumberKey kFlowLimit{"mass_flow_limit", TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, {Quantity::massFlow, Range::positive, "the greatest mass flow"}, Need::required};
// clang-format on

/// Every key of an element of a kind, in the order in which they are written.
Keys keysOf(const ElementKind& kind)
{
    Keys keys{"name", "type", "from", "to"};
    if (kind.hasCurve)
        keys.insert(keys.end(), {"curve", "reference_density"});
    else
        keys.insert(keys.end(), {"diameter", "wetted_perimeter", "area"});
    keys.emplace_back("length");
    if (kind.material != MaterialUse::none) keys.emplace_back("material");
    for (const NumberKey& number : kind.numbers)
        keys.emplace_back(number.key);
    if (kind.takesFittings) keys.emplace_back("fittings");
    keys.emplace_back("heat");
    keys.emplace_back("closed");
    if (kind.canHaveCheckValve) keys.emplace_back("check_valve");
    keys.insert(keys.end(), {"vertices", "description"});
    return keys;
}

std::vector<ElementKind> makeKinds()
{
    const MaterialUse none = MaterialUse::none;
    const MaterialUse roughness = MaterialUse::roughness;
    const LengthUse any = LengthUse::optional;
    // clang-format off
    std::vector<ElementKind> kinds{
        {"pipe", TAVELL_PIPE, false, true, roughness, true, true, LengthUse::required, {kRoughness, kMinorLoss}, {}},
        {"pump", TAVELL_PUMP, true, false, none, false, false, any, {kFixedFlow}, {}},
        {"loss", TAVELL_LOSS, true, false, none, false, false, any, {kFixedFlow}, {}},
        {"hazen_williams_pipe", TAVELL_HAZEN_WILLIAMS_PIPE, false, true, MaterialUse::hazenWilliams, true, true, LengthUse::required, {kCoefficient, kMinorLoss}, {}},
        {"orifice", TAVELL_ORIFICE, false, false, none, false, false, any, {kBore}, {}},
        {"general_loss", TAVELL_GENERAL_LOSS, false, false, none, true, true, LengthUse::byExponent, {kCk, kA, kB, kC, kD, kMinorLoss}, {}},
        {"kv_valve", TAVELL_KV_VALVE, false, false, none, false, false, any, {kKv}, {}},
        {"cv_valve", TAVELL_CV_VALVE, false, false, none, false, false, any, {kCv}, {}},
        {"control_valve", TAVELL_CONTROL_VALVE, false, true, roughness, true, false, any, {kFlowLimit, kRoughness, kMinorLoss}, {}},
        {"non_return", TAVELL_NON_RETURN, false, true, roughness, true, false, any, {kRoughness, kMinorLoss}, {}},
    };
    // clang-format on
    for (ElementKind& kind : kinds)
        kind.keys = keysOf(kind);
    return kinds;
}

}  // namespace

const std::vector<ElementKind>& elementKinds()
{
    static const std::vector<ElementKind> kKinds = makeKinds();
    return kKinds;
}

const ElementKind* findElementKind(const std::string& name)
{
    for (const ElementKind& kind : elementKinds()) {
        if (name == kind.name) return &kind;
    }
    return nullptr;
}

const ElementKind* elementKindOf(int type)
{
    for (const ElementKind& kind : elementKinds()) {
        if (type == kind.type) return &kind;
    }
    return nullptr;
}

std::vector<std::string> elementKindNames()
{
    std::vector<std::string> names;
    for (const ElementKind& kind : elementKinds())
        names.emplace_back(kind.name);
    return names;
}

}  // namespace kit
