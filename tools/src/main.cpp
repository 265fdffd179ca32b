// SPDX-License-Identifier: Apache-2.0
#include "command.h"
#include "report.h"
#include "status.h"
#include "system.h"

#include <sarn/signed_config.h>

#include <CLI/Error.hpp>

#include <algorithm>
#include <exception>
#include <new>
#include <sstream>

namespace tool {

namespace {

/// The command that the words chose, or the group in which they chose none.
const CLI::App& getChosen(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return chosen.empty() ? app : getChosen(*chosen.front());
}

/// For example "sarn config get".
std::string getName(const CLI::App& app) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    return app.get_name() + (chosen.empty() ? "" : " " + getName(*chosen.front()));
}

std::string describeMistake(const CLI::App& app, const CLI::ParseError& reason) {
    const CLI::App& chosen = getChosen(app);
    if (chosen.get_require_subcommand_min() == 0)
        return reason.what();
    const std::vector<std::string> words = chosen.remaining();
    return words.empty() ? "a command is missing" : "there is no command '" + words.front() + "'";
}

/// Prints the help, the version or the mistake. Returns the exit status.
int answer(const CLI::App& app, const CLI::ParseError& reason) {
    std::ostringstream help, ignored;
    if (app.exit(reason, help, ignored) == 0) {
        print(help.str());
        return Done;
    }
    const std::string name = getName(app);
    warn(name, describeMistake(app, reason) + ". Try: " + name + " --help");
    return Misuse;
}

int run(const std::vector<std::string>& words) {
    CommandLine line;
    describe(line);
    try {
        if (words == std::vector<std::string>{"--print-manual"} ||
            words == std::vector<std::string>{"--print-completion"}) {
            print(words[0] == "--print-manual" ? makeManual(line.app) : makeCompletion(line.app));
            return Done;
        }
        std::vector<std::string> reversed(words.rbegin(), words.rend()); // as CLI11 wants them
        line.app.parse(reversed);
        return line.run();
    } catch (const CLI::ParseError& reason) {
        return answer(line.app, reason);
    } catch (const Problem& problem) {
        warn(getName(line.app), problem.what());
        return problem.getStatus();
    } catch (const sarn::CSignedConfigSignatureError& error) {
        warn(getName(line.app), error.what());
        return NotVerified;
    } catch (const std::bad_alloc&) {
        warn(getName(line.app), "The memory is exhausted.");
    } catch (const std::exception& error) {
        warn(getName(line.app), error.what());
    }
    return Failed;
}

int runProgram(const std::vector<std::string>& words) {
    try {
        prepareProcess();
        return run(words);
    } catch (const Interrupted&) {
        return endByInterrupt();
    } catch (const std::exception& error) {
        warn("sarn", error.what());
        return Failed;
    }
}

} // namespace

} // namespace tool

#ifdef _WIN32
int wmain(int count, wchar_t** words) {
    std::vector<std::string> utf8;
    try {
        for (int i = 1; i < count; ++i)
            utf8.push_back(ul::String(words[i]).toUTF8());
    } catch (const std::exception& error) {
        tool::warn("sarn", error.what());
        return tool::Misuse;
    }
    return tool::runProgram(utf8);
}
#else
int main(int count, char** words) {
    return tool::runProgram(std::vector<std::string>(words + 1, words + count));
}
#endif
