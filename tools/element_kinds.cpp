#include "element_kinds.h"

#include <tavell/Constants.h>

namespace
{

// clang-format off
const NumberKey kRoughness{"roughness", TAVELL_ELEMENT_ROUGHNESS, Range::notNegative, Need::optional, "the absolute roughness in m"};
const NumberKey kMinorLoss{"k", TAVELL_ELEMENT_K_SPECIFIED, Range::notNegative, Need::optional, "the minor loss coefficient K"};
const NumberKey kFixedFlow{"fixed_mass_flow", TAVELL_ELEMENT_FIXED_MASS_FLOW, Range::notZero, Need::optional, "the fixed flow in kg/s, or leave the key out"};

const std::vector<ElementKind> kElementKinds{
    {"pipe", TAVELL_PIPE, false, true, {kRoughness, kMinorLoss}},
    {"pump", TAVELL_PUMP, true, false, {kFixedFlow}},
    {"loss", TAVELL_LOSS, true, false, {kFixedFlow}},
    {"hazen_williams_pipe", TAVELL_HAZEN_WILLIAMS_PIPE, false, true,
     {{"coefficient", TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, Range::positive, Need::required, "the Hazen-Williams coefficient C"},
      kMinorLoss}},
    {"orifice", TAVELL_ORIFICE, false, false,
     {{"bore_diameter", TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, Range::positive, Need::required, "the bore diameter in m"}}},
    {"general_loss", TAVELL_GENERAL_LOSS, false, false,
     {{"ck", TAVELL_ELEMENT_GENERAL_LOSS_CK, Range::positive, Need::required, "ck of dp = rho^a ck L^b / D^c Q^d"},
      {"a", TAVELL_ELEMENT_GENERAL_LOSS_A, Range::any, Need::required, "a of dp = rho^a ck L^b / D^c Q^d"},
      {"b", TAVELL_ELEMENT_GENERAL_LOSS_B, Range::any, Need::required, "b of dp = rho^a ck L^b / D^c Q^d"},
      {"c", TAVELL_ELEMENT_GENERAL_LOSS_C, Range::any, Need::required, "c of dp = rho^a ck L^b / D^c Q^d"},
      {"d", TAVELL_ELEMENT_GENERAL_LOSS_D, Range::positive, Need::required, "d of dp = rho^a ck L^b / D^c Q^d"},
      kMinorLoss}},
    {"kv_valve", TAVELL_KV_VALVE, false, false,
     {{"kv", TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, Range::positive, Need::required, "Kv in m3/h at 1 bar"}}},
    {"cv_valve", TAVELL_CV_VALVE, false, false,
     {{"cv", TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, Range::positive, Need::required, "Cv in US gal/min at 1 psi"}}},
    {"control_valve", TAVELL_CONTROL_VALVE, false, true,
     {{"mass_flow_limit", TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, Range::positive, Need::required, "the greatest flow in kg/s"},
      kRoughness, kMinorLoss}},
    {"non_return", TAVELL_NON_RETURN, false, true, {kRoughness, kMinorLoss}},
};
// clang-format on

}  // namespace

const ElementKind* findElementKind(const std::string& name)
{
    for (const ElementKind& kind : kElementKinds) {
        if (name == kind.name) return &kind;
    }
    return nullptr;
}

std::vector<std::string> elementKindNames()
{
    std::vector<std::string> names;
    names.reserve(kElementKinds.size());
    for (const ElementKind& kind : kElementKinds)
        names.emplace_back(kind.name);
    return names;
}
