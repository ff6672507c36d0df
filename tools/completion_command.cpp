// tavell completion: scripts for shells, made of the program's own options.
#include "command_line.h"
#include "command_shape.h"

namespace
{

std::string joined(const std::vector<std::string>& words, const std::string& between)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

/// A text between single quotes of a shell; escape stands for a quote in it.
std::string quoted(const std::string& text, const std::string& escape)
{
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'')
            result += escape;
        else
            result += c;
    }
    return result + '\'';
}

std::vector<std::string> commandNames(const CLI::App& program)
{
    std::vector<std::string> names;
    for (const CLI::App* command : shownCommands(program))
        names.push_back(command->get_name());
    return names;
}

bool isFile(const OptionShape& shape)
{
    return shape.value == "FILE" ||
           (shape.isArgument && shape.names[0] != "NAME" && shape.names[0] != "SHELL");
}

/// The words that may follow an option or argument.
std::vector<std::string> allNames(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const OptionShape& shape : shapesOf(command)) {
        if (!shape.isArgument) names.insert(names.end(), shape.names.begin(), shape.names.end());
    }
    return names;
}

/// Words that begin with what was typed.
std::string bashWords(const std::vector<std::string>& words)
{
    return "COMPREPLY=($(compgen -W '" + joined(words, " ") + "' -- \"$word\"));;\n";
}

/// Where the script has nothing to offer, the shell completes names of files.
std::string bashScript(const CLI::App& program)
{
    std::string values;
    std::string options;
    for (const CLI::App* command : shownCommands(program)) {
        const std::string& name = command->get_name();
        options += "        '" + name + " -'*) " + bashWords(allNames(*command));
        for (const OptionShape& shape : shapesOf(*command)) {
            if (shape.choices.empty()) continue;
            if (shape.isArgument) options += "        '" + name + " '*) " + bashWords(shape.choices);
            for (const std::string& option : shape.names)
                values.append("        '")
                    .append(name)
                    .append(" ")
                    .append(option)
                    .append("') ")
                    .append(bashWords(shape.choices));
        }
    }
    std::vector<std::string> first = commandNames(program);
    first.insert(first.end(), {"--help", "--version"});
    return "# bash completion of tavell\n"
           "_tavell() {\n"
           "    local word=\"${COMP_WORDS[COMP_CWORD]}\" before=\"${COMP_WORDS[COMP_CWORD-1]}\" "
           "command=\"${COMP_WORDS[1]}\"\n"
           "    COMPREPLY=()\n"
           "    # The shell splits --option=value at the sign.\n"
           "    [[ $word == '=' ]] && word=''\n"
           "    [[ $before == '=' ]] && before=\"${COMP_WORDS[COMP_CWORD-2]}\"\n"
           "    [[ $COMP_CWORD -eq 1 ]] && command=''\n"
           "    case \"$command $before\" in\n" +
           values + "        ' '*) " + bashWords(first) +
           "    esac\n"
           "    [[ ${#COMPREPLY[@]} -eq 0 ]] || return 0\n"
           "    case \"$command $word\" in\n" +
           options +
           "    esac\n"
           "    return 0\n"
           "}\n"
           "complete -o default -F _tavell tavell\n";
}

/// The meaning of an option in an argument of _arguments, where brackets and colons have a meaning.
std::string zshMeaning(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') result += '\\';
        result += c;
    }
    return result;
}

std::string zshAction(const OptionShape& shape)
{
    if (!shape.choices.empty()) return "(" + joined(shape.choices, " ") + ')';
    return isFile(shape) ? "_files" : "";
}

std::string zshArguments(const CLI::App& command)
{
    std::string text;
    for (const OptionShape& shape : shapesOf(command)) {
        if (shape.isArgument) {
            text += " \\\n                " + quoted(':' + shape.names[0] + ':' + zshAction(shape), "'\\''");
            continue;
        }
        for (const std::string& name : shape.names) {
            // "--option=" takes its value behind the sign as well as in the next word.
            const bool isLong = name.compare(0, 2, "--") == 0;
            std::string form =
                name + (isLong && !shape.value.empty() ? "=" : "") + '[' + zshMeaning(shape.meaning) + ']';
            if (!shape.value.empty()) form += ":value:" + zshAction(shape);
            text += " \\\n                " + quoted(form, "'\\''");
        }
    }
    return text;
}

std::string zshScript(const CLI::App& program)
{
    std::string commands;
    std::string cases;
    for (const CLI::App* command : shownCommands(program)) {
        commands += "        " +
                    quoted(command->get_name() + ':' + zshMeaning(command->get_description()), "'\\''") +
                    '\n';
        cases +=
            "        " + command->get_name() + ")\n            _arguments" + zshArguments(*command) + ";;\n";
    }
    return "#compdef tavell\n"
           "# zsh completion of tavell\n"
           "_tavell() {\n"
           "    local -a commands\n"
           "    commands=(\n" +
           commands +
           "    )\n"
           "    if (( CURRENT == 2 )); then\n"
           "        _describe 'command' commands\n"
           "        return\n"
           "    fi\n"
           "    local command=$words[2]\n"
           "    shift words\n"
           "    (( CURRENT-- ))\n"
           "    case $command in\n" +
           cases +
           "    esac\n"
           "}\n"
           "if [ \"$funcstack[1]\" = _tavell ]; then _tavell \"$@\"; else compdef _tavell tavell; fi\n";
}

std::string fishScript(const CLI::App& program)
{
    static const std::string kEscape = "\\'";
    std::string text = "# fish completion of tavell\n";
    for (const CLI::App* command : shownCommands(program)) {
        const std::string& name = command->get_name();
        text += "complete -c tavell -f -n __fish_use_subcommand -a " + name + " -d " +
                quoted(command->get_description(), kEscape) + '\n';
        for (const OptionShape& shape : shapesOf(*command)) {
            const std::string start = "complete -c tavell -n '__fish_seen_subcommand_from " + name + "'";
            if (shape.isArgument) {
                if (!shape.choices.empty())
                    text += start + " -f -a '" + joined(shape.choices, " ") + "'\n";
                else if (!isFile(shape))
                    text += start + " -f\n";
                continue;
            }
            text += start;
            for (const std::string& option : shape.names)
                text += option[1] == '-' ? " -l " + option.substr(2) : " -s " + option.substr(1);
            if (!shape.value.empty()) text += isFile(shape) ? " -r -F" : " -x";
            if (!shape.choices.empty()) text += " -a '" + joined(shape.choices, " ") + "'";
            text += " -d " + quoted(shape.meaning, kEscape) + '\n';
        }
    }
    return text;
}

}  // namespace

Command addCompletionCommand(CLI::App& program)
{
    const auto shell = std::make_shared<std::string>();
    CLI::App* command =
        program.add_subcommand("completion", "Print a script that completes this command in a shell");
    addChoice(*command, "SHELL", *shell, {"bash", "zsh", "fish"}, "the shell")->required();
    setExamples(*command, {"tavell completion bash > tavell.bash", "tavell completion fish > tavell.fish"},
                "0 printed, 2 bad usage, 3 internal error.");
    return {command, [shell, &program] {
                const std::string script = *shell == "bash"  ? bashScript(program)
                                           : *shell == "zsh" ? zshScript(program)
                                                             : fishScript(program);
                return deliver(script, std::nullopt);
            }};
}
