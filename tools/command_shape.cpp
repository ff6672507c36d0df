#include "command_shape.h"

#include "command_line.h"

std::vector<OptionShape> shapesOf(const CLI::App& command)
{
    std::vector<OptionShape> shapes;
    for (const CLI::Option* option : command.get_options()) {
        OptionShape shape;
        shape.meaning = option->get_description();
        shape.isArgument =
            option->get_positional() && option->get_lnames().empty() && option->get_snames().empty();
        shape.isRequired = option->get_required();
        if (shape.isArgument) {
            shape.names.push_back(option->get_name(true));
        } else {
            for (const std::string& name : option->get_snames())
                shape.names.push_back('-' + name);
            for (const std::string& name : option->get_lnames())
                shape.names.push_back("--" + name);
        }
        const bool isFlag = option->get_items_expected_max() == 0;
        if (!isFlag) shape.value = option->get_type_name();
        shape.choices = choicesOf(*option);
        shapes.push_back(std::move(shape));
    }
    return shapes;
}
