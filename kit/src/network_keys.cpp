#include "network_keys.h"

#include <tavell/Constants.h>

namespace kit
{

namespace
{

struct ObjectRow {
    ObjectType type;
    const char* schemaName;
    ObjectReader::Keys keys;
};

const std::vector<ObjectRow>& objectRows()
{
    // clang-format off
    static const std::vector<ObjectRow> kRows{
        {ObjectType::document, "network",
         {"$schema", "tavell", "title", "source", "answer", "units", "result_units", "fluid", "gravity", "coordinates",
          "settings", "materials", "fittings", "curves", "nodes", "elements", "scenarios"}},
        {ObjectType::answer, "answer", {"text", "tolerance", "nodes", "elements"}},
        {ObjectType::answerNode, "answer_node", {"pressure", "temperature", "external_mass_flow"}},
        {ObjectType::answerElement, "answer_element",
         {"mass_flow", "volume_flow", "velocity", "reynolds", "pressure_difference"}},
        {ObjectType::fluid, "fluid",
         {"name", "temperature", "concentration", "density", "viscosity", "specific_heat", "conductivity"}},
        {ObjectType::settings, "settings",
         {"minor_loss", "friction", "temperatures", "viscosity_follows_temperature", "pressure_datum", "velocity_limit"}},
        {ObjectType::material, "material", {"roughness", "hazen_williams", "source"}},
        {ObjectType::fitting, "fitting", {"k", "source"}},
        {ObjectType::curve, "curve", {"points", "reference_density", "source"}},
        {ObjectType::node, "node", {"name", "at", "inlet", "outlet", "description"}},
        {ObjectType::boundary, "boundary",
         {"pressure", "mass_flow", "volume_flow", "reynolds", "velocity", "temperature"}},
        {ObjectType::heat, "heat", {"wall_temperature", "flux", "temperature_rise", "heat"}},
        {ObjectType::fittingUse, "fitting_use", {"fitting", "count"}},
        {ObjectType::scenario, "scenario", {"nodes", "elements", "fluid", "settings", "gravity"}},
    };
    // clang-format on
    return kRows;
}

const ObjectRow& rowOf(ObjectType type)
{
    return objectRows()[static_cast<std::size_t>(type)];
}

}  // namespace

const ObjectReader::Keys& keysOf(ObjectType type)
{
    return rowOf(type).keys;
}

const ObjectReader::Keys& quantityNames()
{
    static const ObjectReader::Keys kNames = [] {
        ObjectReader::Keys names;
        for (const Quantity quantity :
             {Quantity::length, Quantity::diameter, Quantity::area, Quantity::head, Quantity::pressure,
              Quantity::massFlow, Quantity::volumeFlow, Quantity::velocity, Quantity::temperature,
              Quantity::temperatureDifference, Quantity::density, Quantity::viscosity, Quantity::specificHeat,
              Quantity::conductivity, Quantity::heat, Quantity::heatFlux})
            names.emplace_back(quantityName(quantity));
        return names;
    }();
    return kNames;
}

std::string schemaName(ObjectType type)
{
    return rowOf(type).schemaName;
}

const std::vector<ObjectType>& objectTypes()
{
    static const std::vector<ObjectType> kTypes = [] {
        std::vector<ObjectType> types;
        for (const ObjectRow& row : objectRows())
            types.push_back(row.type);
        return types;
    }();
    return kTypes;
}

// clang-format off
const std::vector<Choice>& minorLossChoices()
{
    static const std::vector<Choice> kChoices{
        {"specified", 0},
        {"computed_unless_specified", 1},
        {"computed", 2},
    };
    return kChoices;
}

const std::vector<Choice>& frictionChoices()
{
    static const std::vector<Choice> kChoices{
        {"swamee_jain", TAVELL_FRICTION_SWAMEE_JAIN},
        {"colebrook", TAVELL_FRICTION_COLEBROOK},
        {"haaland", TAVELL_FRICTION_HAALAND},
        {"serghides", TAVELL_FRICTION_SERGHIDES},
        {"altshul", TAVELL_FRICTION_ALTSHUL},
        {"evangelides", TAVELL_FRICTION_EVANGELIDES},
    };
    return kChoices;
}

const std::vector<FluidKey>& fluidKeys()
{
    static const std::vector<FluidKey> kKeys{
        {"density", TAVELL_FLUID_DENSITY, {Quantity::density, Range::positive, "the density"}},
        {"viscosity", TAVELL_FLUID_VISCOSITY, {Quantity::viscosity, Range::positive, "the dynamic viscosity"}},
        {"specific_heat", TAVELL_FLUID_SPECIFIC_HEAT, {Quantity::specificHeat, Range::positive, "the specific heat"}},
        {"conductivity", TAVELL_FLUID_CONDUCTIVITY, {Quantity::conductivity, Range::positive, "the thermal conductivity"}},
    };
    return kKeys;
}

const std::vector<HeatKey>& heatKeys()
{
    static const std::vector<HeatKey> kKeys{
        {"wall_temperature", TAVELL_ENERGY_WALL_TEMPERATURE, {Quantity::temperature, Range::positive, "the temperature of the wall"}},
        {"flux", TAVELL_ENERGY_FLUX, {Quantity::heatFlux, Range::any, "the heat flux through the wall"}},
        {"temperature_rise", TAVELL_ENERGY_RISE, {Quantity::temperatureDifference, Range::any, "the rise of the temperature"}},
        {"heat", TAVELL_ENERGY_HEAT, {Quantity::heat, Range::any, "the heat flow"}},
    };
    return kKeys;
}

const std::vector<FlowKey>& flowKeys()
{
    static const std::vector<FlowKey> kKeys{
        {"mass_flow", Boundary::Flow::mass, {Quantity::massFlow, Range::any, "the mass flow"}},
        {"volume_flow", Boundary::Flow::volume, {Quantity::volumeFlow, Range::any, "the volume flow"}},
        {"reynolds", Boundary::Flow::reynolds, {Quantity::none, Range::any, "the Reynolds number"}},
        {"velocity", Boundary::Flow::velocity, {Quantity::velocity, Range::any, "the mean velocity"}},
    };
    return kKeys;
}

const std::vector<AnswerKey>& nodeAnswerKeys()
{
    static const std::vector<AnswerKey> kKeys{
        {"pressure", Quantity::pressure},
        {"temperature", Quantity::temperature},
        {"external_mass_flow", Quantity::massFlow},
    };
    return kKeys;
}

const std::vector<AnswerKey>& elementAnswerKeys()
{
    static const std::vector<AnswerKey> kKeys{
        {"mass_flow", Quantity::massFlow},
        {"volume_flow", Quantity::volumeFlow},
        {"velocity", Quantity::velocity},
        {"reynolds", Quantity::none},
        {"pressure_difference", Quantity::pressure},
    };
    return kKeys;
}
// clang-format on

}  // namespace kit
