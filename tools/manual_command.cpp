// tavell manual: the manual pages (man 7 man-pages), made of the texts of the help.
#include <sstream>

#include "command_line.h"
#include "command_shape.h"

namespace
{

/// A text in which nothing has a meaning to troff.
std::string plain(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
    }
    if (!result.empty() && (result[0] == '.' || result[0] == '\'')) result.insert(0, "\\&");
    return result;
}

std::string upper(std::string text)
{
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

std::string pageName(const CLI::App* command)
{
    return command == nullptr ? "tavell" : "tavell-" + command->get_name();
}

std::string heading(const CLI::App* command, const std::string& description)
{
    return ".TH " + upper(plain(pageName(command))) + " 1 \"\" \"tavell " + plain(tavell::version()) +
           "\" \"User Commands\"\n.SH NAME\n" + plain(pageName(command)) + " \\- " + plain(description) +
           '\n';
}

/// Examples in the form of the help, the rest as running text.
std::string footerText(const std::string& footer)
{
    std::istringstream stream(footer);
    std::string text;
    std::string line;
    bool isExample = false;
    while (std::getline(stream, line)) {
        if (line.rfind("Example", 0) == 0) {
            text += ".SH EXAMPLES\n.nf\n";
            isExample = true;
        } else if (line.empty()) {
            if (isExample) text += ".fi\n";
            isExample = false;
        } else if (line.rfind("Exit status: ", 0) == 0) {
            text += ".SH EXIT STATUS\n" + plain(line.substr(13)) + '\n';
        } else {
            text += plain(isExample ? line.substr(2) : line) + '\n';
        }
    }
    return isExample ? text + ".fi\n" : text;
}

std::string optionText(const OptionShape& shape)
{
    std::string text = ".TP\n";
    for (std::size_t i = 0; i < shape.names.size(); ++i)
        text += (i == 0 ? "\\fB" : ", \\fB") + plain(shape.names[i]) + "\\fR";
    if (!shape.isArgument && !shape.value.empty()) text += " \\fI" + plain(shape.value) + "\\fR";
    return text + '\n' + plain(shape.meaning) + '\n';
}

std::string synopsis(const CLI::App& command)
{
    std::string text = ".SH SYNOPSIS\n\\fBtavell " + plain(command.get_name()) + "\\fR [\\fIoptions\\fR]";
    for (const OptionShape& shape : shapesOf(command)) {
        if (!shape.isArgument) continue;
        const std::string name = "\\fI" + plain(shape.names[0]) + "\\fR";
        text += shape.isRequired ? ' ' + name : " [" + name + ']';
    }
    return text + '\n';
}

std::string commandPage(const CLI::App& command)
{
    std::string text = heading(&command, command.get_description()) + synopsis(command) + ".SH OPTIONS\n";
    for (const OptionShape& shape : shapesOf(command))
        text += optionText(shape);
    return text + footerText(command.get_footer()) + ".SH SEE ALSO\n\\fBtavell\\fR(1)\n";
}

std::string programPage(const CLI::App& program)
{
    std::string text = heading(nullptr, program.get_description()) +
                       ".SH SYNOPSIS\n\\fBtavell\\fR \\fIcommand\\fR [\\fIoptions\\fR] ...\n.SH COMMANDS\n";
    for (const CLI::App* command : shownCommands(program))
        text +=
            ".TP\n\\fB" + plain(command->get_name()) + "\\fR\n" + plain(command->get_description()) + '\n';
    text += ".SH OPTIONS\n";
    for (const OptionShape& shape : shapesOf(program))
        text += optionText(shape);
    text += footerText(program.get_footer()) + ".SH SEE ALSO\n";
    std::string pages;
    for (const CLI::App* command : shownCommands(program))
        pages += (pages.empty() ? "\\fB" : ",\n\\fB") + plain(pageName(command)) + "\\fR(1)";
    return text + pages + '\n';
}

int run(const CLI::App& program, const std::string& name)
{
    if (name.empty()) return deliver(programPage(program), std::nullopt);
    for (const CLI::App* command : shownCommands(program)) {
        if (command->get_name() == name) return deliver(commandPage(*command), std::nullopt);
    }
    say("tavell: there is no command \"" + name + "\"; \"tavell --help\" lists them");
    return kBadInput;
}

}  // namespace

Command addManualCommand(CLI::App& program)
{
    const auto name = std::make_shared<std::string>();
    CLI::App* command = program.add_subcommand("manual", "Print a manual page in troff");
    command->group("");
    command->add_option("COMMAND", *name, "the subcommand; the program otherwise")->type_name("");
    return {command, [name, &program] { return run(program, *name); }};
}
