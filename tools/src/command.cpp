// SPDX-License-Identifier: Apache-2.0
#include "command.h"

#include <sarn/version.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>

#include <limits>
#include <memory>
#include <utility>

namespace tool {

namespace {

constexpr char about[] =
    "The services of the library sarn for operators: digests, encryption, signatures and signed configurations.";
constexpr char rules[] =
    R"(A file named - is standard input or standard output. A result is written to a temporary file, which
gets its name when it is complete. Nothing is overwritten without --force. After -- every word except - is a name.

Exit status: 0 done, 1 not verified, 2 wrong use, 3 failed.)";

/// The help without CLI11's notes on types, limits and exclusions.
class HelpFormatter : public CLI::Formatter {
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_option_text().empty() ? "" : " " + option->get_option_text();
    }
};

std::string indent(const std::string& text) {
    return "  " + CLI::detail::find_and_replace(text, "\n", "\n  ");
}

} // namespace

CLI::App& addCommand(CommandLine& line, CLI::App& parent, const std::string& name, const std::string& summary,
                     const std::string& details, const std::string& example, std::function<int()> run) {
    CLI::App& command = *parent.add_subcommand(name, summary);
    command.group("Commands");
    command.footer(details + "\n\nExample:\n" + indent(example));
    command.callback([&line, run = std::move(run)] { line.run = run; });
    return command;
}

CLI::Option& addText(CLI::App& command, const std::string& name, const std::string& kind, std::string& value,
                     const std::string& description) {
    // CLI11's own conversions would change some names, such as [a,b].
    const auto take = [&value](const CLI::results_t& words) {
        value = words.at(0);
        return true;
    };
    return *command.add_option(name, take, description)->option_text(kind)->type_size(1)->expected(1);
}

CLI::Option& addFiles(CLI::App& command, std::vector<std::string>& names) {
    names = {"-"};
    const auto take = [&names, &command](const CLI::results_t&) {
        names = command.get_option("FILE")->results();
        return true;
    };
    // CLI11 would take [a,b] apart if it allowed additional words, so it is told to expect this many.
    constexpr int many = CLI::detail::expected_max_vector_size;
    return *command.add_option("FILE", take, "files to read (default: -)")
                ->expected(many, many)
                ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                ->allow_extra_args(false);
}

void addJson(CLI::App& command, bool& wanted) {
    command.add_flag("--json", wanted, "print JSON");
}

void addForce(CLI::App& command, bool& wanted) {
    command.add_flag("--force", wanted, "replace an existing file");
}

CLI::Option& addNumber(CLI::App& command, const std::string& name, int& value, int least,
                       const std::string& description) {
    constexpr int most = std::numeric_limits<int>::max();
    return *command.add_option(name, value, description)->option_text("N")->check(CLI::Range(least, most));
}

void limitTo(CLI::Option& option, const std::vector<std::string>& words) {
    option.check(CLI::IsMember(words));
    option.description(option.get_description() + ": " + CLI::detail::join(words, ", "));
}

void describe(CommandLine& line) {
    line.app.name("sarn");
    line.app.description(about);
    line.app.footer(rules);
    line.app.require_subcommand(1);
    line.app.allow_windows_style_options(false); // there too, a word that starts with / is a name
    line.app.formatter(std::make_shared<HelpFormatter>());
    line.app.get_formatter()->column_width(26);
    line.app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    line.app.get_formatter()->label("Positionals", "Arguments");
    line.app.set_help_flag("-h,--help", "print this help");
    line.app.set_version_flag("--version", std::string("sarn ") + sarn::getVersionText(), "print the version");
    addDigest(line);
    addState(line);
    addEncrypt(line);
    addDecrypt(line);
    addKey(line);
    addSign(line);
    addVerify(line);
    addConfig(line);
    addHmac(line);
    addBase64(line);
    addAlgorithms(line);
}

} // namespace tool
