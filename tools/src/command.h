// SPDX-License-Identifier: Apache-2.0
// The frame of all commands: how they are described, and the options that several have.
#pragma once

#include <CLI/App.hpp>

#include <functional>
#include <string>
#include <vector>

namespace tool {

/// All commands, and the one that the user chose.
struct CommandLine {
    CLI::App app;
    /// Does the work and returns the exit status. Set by parsing.
    std::function<int()> run;
};

/// Adds a command. The help shows the summary, the options, the details and the example.
/// \param example lines of a shell: a command after "$ ", and what it prints; the tests run them
CLI::App& addCommand(CommandLine& line, CLI::App& parent, const std::string& name, const std::string& summary,
                     const std::string& details, const std::string& example, std::function<int()> run);

/// Adds an option or an argument with one value, which is taken as it is written.
/// \param kind the word for the value in the help, for example "FILE"
CLI::Option& addText(CLI::App& command, const std::string& name, const std::string& kind, std::string& value,
                     const std::string& description);

/// Adds an argument of any number of names, "-" if there is none.
CLI::Option& addFiles(CLI::App& command, std::vector<std::string>& names);

/// Adds --json.
void addJson(CLI::App& command, bool& wanted);

/// Adds --force.
void addForce(CLI::App& command, bool& wanted);

/// Adds an option with a number, which is at least `least`.
CLI::Option& addNumber(CLI::App& command, const std::string& name, int& value, int least,
                       const std::string& description);

/// The words among which the value of an option must be.
void limitTo(CLI::Option& option, const std::vector<std::string>& words);

void addAlgorithms(CommandLine& line);
void addBase64(CommandLine& line);
void addConfig(CommandLine& line);
void addDecrypt(CommandLine& line);
void addDigest(CommandLine& line);
void addEncrypt(CommandLine& line);
void addHmac(CommandLine& line);
void addKey(CommandLine& line);
void addSign(CommandLine& line);
void addState(CommandLine& line);
void addVerify(CommandLine& line);

/// Describes all commands.
void describe(CommandLine& line);

/// The manual page, in the language of man.
std::string makeManual(const CLI::App& app);

/// The completion for bash.
std::string makeCompletion(const CLI::App& app);

} // namespace tool
