// SPDX-License-Identifier: Apache-2.0
// The manual page and the completion for bash, from the description of the commands.
#include "command.h"

#include <sarn/version.h>

#include <functional>

namespace tool {

namespace {

/// Text for man. None of its lines starts with a dot or an apostrophe, which would make it an order to man.
std::string escape(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '\\')
            escaped += "\\e";
        else if (character == '-')
            escaped += "\\-";
        else
            escaped += character;
    }
    return escaped;
}

std::string describeOption(const CLI::Option& option) {
    const std::string name = option.get_positional() ? option.get_name(true, false) : option.get_name(false, true);
    return ".TP\n\\fB" + escape(name) + "\\fR " + escape(option.get_option_text()) + "\n" +
           escape(option.get_description()) + "\n";
}

/// The text before the example, and the example as it is.
std::string describeFooter(const std::string& footer) {
    const std::string mark = "\n\nExample:\n";
    const std::size_t end = footer.find(mark);
    std::string text = ".PP\n" + escape(footer.substr(0, end)) + "\n";
    if (end != std::string::npos)
        text += ".PP\n.EX\n" + escape(footer.substr(end + mark.size())) + "\n.EE\n";
    return text;
}

/// Calls `use` with each command below `app` that does something, and with its full name.
void forEachCommand(const CLI::App& app, const std::string& name,
                    const std::function<void(const CLI::App&, const std::string&)>& use) {
    const auto commands = app.get_subcommands(std::function<bool(const CLI::App*)>());
    for (const CLI::App* command : commands)
        forEachCommand(*command, name + " " + command->get_name(), use);
    if (commands.empty())
        use(app, name);
}

std::string listCommands(const CLI::App& app) {
    std::string words;
    for (const CLI::App* command : app.get_subcommands(std::function<bool(const CLI::App*)>()))
        words += (words.empty() ? "" : " ") + command->get_name();
    return words;
}

/// The words among which the value of an option must be, which CLI11 shows as {one,two}.
std::string listChoices(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t start = type.find('{');
    std::string words = start == std::string::npos ? "" : type.substr(start + 1, type.find('}') - start - 1);
    for (char& character : words)
        character = character == ',' ? ' ' : character;
    return words;
}

/// The case of a command in the completion: its options, the words for its first argument, those for options.
std::string describeCase(const CLI::App& command, const std::string& words) {
    std::string options, first, values;
    for (const CLI::Option* option : command.get_options()) {
        const std::string choices = listChoices(*option);
        if (option->get_positional()) {
            first += choices;
            continue;
        }
        const std::string name = "--" + option->get_lnames().at(0);
        options += (options.empty() ? "" : " ") + name;
        if (!choices.empty())
            values.append("            [[ $previous == ")
                .append(name)
                .append(" ]] && choices='")
                .append(choices + "'\n");
    }
    return "        " + words + "\n            options='" + options + "' first='" + first + "'\n" + values +
           "            ;;\n";
}

} // namespace

std::string makeManual(const CLI::App& app) {
    std::string page = std::string(".TH SARN 1 \"\" \"sarn ") + sarn::getVersionText() + "\" \"User commands\"\n" +
                       ".SH NAME\nsarn \\- digests, encryption and signatures of the library sarn\n" +
                       ".SH SYNOPSIS\n.B sarn\n.I COMMAND\n[\\fIOPTION\\fR...] [\\fIARGUMENT\\fR...]\n" +
                       ".SH DESCRIPTION\n" + escape(app.get_description()) + "\n.PP\n" + escape(app.get_footer()) +
                       "\n.SH COMMANDS\n";
    forEachCommand(app, "sarn", [&](const CLI::App& command, const std::string& name) {
        page += ".SS " + name + "\n" + escape(command.get_description()) + ".\n";
        for (const CLI::Option* option : command.get_options())
            page += describeOption(*option);
        page += describeFooter(command.get_footer());
    });
    return page;
}

std::string makeCompletion(const CLI::App& app) {
    std::string cases;
    forEachCommand(app, "", [&](const CLI::App& command, const std::string& name) {
        cases += describeCase(command, "'" + name.substr(1) + " '*)");
    });
    for (const CLI::App* group : app.get_subcommands(std::function<bool(const CLI::App*)>()))
        if (const std::string words = listCommands(*group); !words.empty())
            cases += "        '" + group->get_name() + " '*) first='" + words + "' ;;\n";
    return "# Completion of sarn for bash.\n"
           "_sarn() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}\n"
           "    local before=\"${COMP_WORDS[*]:1:COMP_CWORD - 1} \" options='' first='' choices=''\n"
           "    case $before in\n" +
           cases + "        ' ') first='" + listCommands(app) +
           "' options='--help --version' ;;\n"
           "    esac\n"
           "    if [[ -z $choices && $word == -* ]]; then\n"
           "        choices=$options\n"
           "    elif [[ -z $choices && $COMP_CWORD -le 2 ]]; then\n"
           "        choices=$first\n"
           "    fi\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$choices\" -- \"$word\")\n"
           "}\n"
           "complete -o default -F _sarn sarn\n";
}

} // namespace tool
