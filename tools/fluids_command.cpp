// tavell fluids: the table of known fluids, and the properties of one.
#include <array>
#include <charconv>
#include <limits>

#include "command_line.h"

namespace
{

struct FluidArguments {
    std::string name;
    std::string temperature = "20 degC";
    std::optional<double> concentration;
    std::string format = "text";
    std::string units;
};

/// The shortest text that reads back as the same number, to 6 significant digits.
std::string numberText(double value)
{
    std::array<char, 32> digits{};
    const auto written =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
    return {digits.data(), written.ptr};
}

std::string textOf(const FluidArguments& arguments, double temperature, const tavell::Fluid& fluid)
{
    if (arguments.format == "json") {
        nlohmann::ordered_json object{{"name", arguments.name},
                                      {"temperature", temperature},
                                      {"density", fluid.density},
                                      {"viscosity", fluid.viscosity},
                                      {"specific_heat", fluid.specificHeat},
                                      {"conductivity", fluid.conductivity}};
        if (arguments.concentration) object["concentration"] = *arguments.concentration;
        return object.dump(2) + '\n';
    }
    return arguments.name + " at " + numberText(temperature) + " K\n" + "  density        " +
           numberText(fluid.density) + " kg/m3\n" + "  viscosity      " + numberText(fluid.viscosity) +
           " Pa s\n" + "  specific heat  " + numberText(fluid.specificHeat) + " J/(kg K)\n" +
           "  conductivity   " + numberText(fluid.conductivity) + " W/(m K)\n";
}

int run(const FluidArguments& arguments)
{
    if (arguments.name.empty()) {
        const auto table = tavell::fluids(arguments.format, arguments.units);
        say(table.findings());
        return table ? deliver(*table, std::nullopt) : exitStatusOf(table.status());
    }
    const auto temperature = tavell::parseQuantity(arguments.temperature, "temperature");
    say(temperature.findings());
    if (!temperature) return exitStatusOf(temperature.status());
    const double concentration = arguments.concentration.value_or(std::numeric_limits<double>::quiet_NaN());
    const auto fluid = tavell::fluid(arguments.name, *temperature, concentration);
    say(fluid.findings());
    if (!fluid) return exitStatusOf(fluid.status());
    return deliver(textOf(arguments, *temperature, *fluid), std::nullopt);
}

}  // namespace

Command addFluidsCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<FluidArguments>();
    CLI::App* command = program.add_subcommand("fluids", "List the known fluids, or the properties of one");
    CLI::Option* name = command->add_option("NAME", arguments->name, "fluid; the whole table otherwise");
    name->type_name("");
    command->add_option("--temperature", arguments->temperature, "temperature of the fluid")
        ->type_name("TEMPERATURE")
        ->needs(name)
        ->capture_default_str();
    command->add_option("--concentration", arguments->concentration, "mass fraction of a mixture, 0 to 1")
        ->type_name("FRACTION")
        ->needs(name);
    addChoice(*command, "--format", arguments->format, {"text", "json"}, "form of the answer");
    addUnits(*command, arguments->units)->excludes(name);  // one fluid is told in SI units
    setExamples(*command,
                {"tavell fluids --units metric", "tavell fluids water --temperature \"60 degC\"",
                 "tavell fluids \"ethylene glycol\" --concentration 0.3 --temperature \"5 degC\""},
                "0 done, 2 unknown fluid or a value out of its range, 3 internal error.");
    return {command, [arguments] { return run(*arguments); }};
}
