// SPDX-License-Identifier: Apache-2.0
// The words of a command line choose a command or are a mistake with a message. A value is taken as it is written.
#include "command.h"
#include "property.h"
#include "targets.h"

#include <CLI/Error.hpp>

#include <algorithm>
#include <sstream>
#include <vector>

namespace sarn_fuzz {

namespace {

using Words = std::vector<std::string>;

/// The lines of an input.
Words split(const std::string& text) {
    std::istringstream lines(text);
    Words words;
    for (std::string word; std::getline(lines, word);)
        words.push_back(word);
    return words;
}

/// Whether the value is a word or the end of one, as in --iv=00.
bool isIn(const Words& words, const std::string& value) {
    return std::any_of(words.begin(), words.end(), [&value](const std::string& word) {
        return word.size() >= value.size() && word.compare(word.size() - value.size(), value.size(), value) == 0;
    });
}

void checkValues(const CLI::App& app, const Words& words) {
    for (const CLI::Option* const option : app.get_options()) {
        const bool isFlag = option->get_items_expected_max() == 0;
        for (const std::string& value : option->results())
            require(isFlag || isIn(words, value), "a value is taken as it is written");
    }
    for (const CLI::App* const chosen : app.get_subcommands())
        checkValues(*chosen, words);
}

} // namespace

void fuzzArguments(const std::uint8_t* data, std::size_t size) {
    const Words words = split(Input(data, size).toString());
    tool::CommandLine line;
    tool::describe(line);
    Words reversed(words.rbegin(), words.rend());
    try {
        line.app.parse(reversed);
    } catch (const CLI::ParseError& mistake) {
        require(mistake.get_exit_code() == 0 || *mistake.what() != '\0', "a mistake has a message");
        return;
    }
    require(line.run != nullptr, "what is not a mistake is a command");
    checkValues(line.app, words);
}

} // namespace sarn_fuzz
