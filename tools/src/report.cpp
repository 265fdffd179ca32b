// SPDX-License-Identifier: Apache-2.0
#include "report.h"

#include "output.h"
#include "system.h"

#include <algorithm>

namespace tool {

namespace {

/// Pairs of a character and its letter after a backslash.
constexpr std::string_view escapes[] = {"\\\\", "\nn", "\rr"};

std::string quote(const std::string& text) {
    std::string quoted = "\"";
    for (const char character : toText(text).toUTF8()) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F)
            quoted += "\\u00" + ul::toHex({&character, 1});
        else if (character == '"' || character == '\\')
            quoted += {'\\', character};
        else
            quoted += character;
    }
    return quoted + "\"";
}

} // namespace

void print(const std::string& text) {
    writeTo(1, text, "standard output");
}

void warn(const std::string& command, const std::string& message) {
    const std::string line = command + ": " + toShownText(message) + "\n";
    writeSome(2, line.data(), static_cast<int>(line.size()));
}

ul::String toText(const std::string& text) {
    try {
        return ul::text(text);
    } catch (const ul::CError&) {
        return {text.data(), text.size()};
    }
}

std::string toShownText(const std::string& text) {
    std::wstring shown = toText(text);
    std::replace_if(shown.begin(), shown.end(), ul::isControl, L'?');
    return ul::String(std::move(shown)).toUTF8();
}

std::string escapeName(const std::string& name, bool& isChanged) {
    std::string escaped;
    for (const char character : name) {
        const auto* const escape = std::find_if(std::begin(escapes), std::end(escapes),
                                                [&](std::string_view pair) { return pair[0] == character; });
        isChanged |= escape != std::end(escapes);
        if (escape == std::end(escapes))
            escaped += character;
        else
            escaped += {'\\', (*escape)[1]};
    }
    return escaped;
}

std::string unescapeName(std::string_view name) {
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto* const escape = std::find_if(std::begin(escapes), std::end(escapes), [&](std::string_view pair) {
            return name[i] == '\\' && i + 1 < name.size() && pair[1] == name[i + 1];
        });
        text += escape == std::end(escapes) ? name[i] : (*escape)[0];
        i += escape == std::end(escapes) ? 0 : 1;
    }
    return text;
}

Record& Record::add(const std::string& name, const std::string& value) {
    m_fields.push_back({name, toShownText(value), quote(value)});
    return *this;
}

Record& Record::add(const std::string& name, std::int64_t value) {
    m_fields.push_back({name, std::to_string(value), std::to_string(value)});
    return *this;
}

Record& Record::add(const std::string& name, bool value) {
    m_fields.push_back({name, value ? "yes" : "no", value ? "true" : "false"});
    return *this;
}

std::string Record::toLines() const {
    std::size_t width = 0;
    for (const Field& field : m_fields)
        width = std::max(width, field.name.size());
    std::string lines;
    for (const Field& field : m_fields)
        lines += field.name + std::string(width + 2 - field.name.size(), ' ') + field.shown + "\n";
    return lines;
}

std::string Record::toJson() const {
    std::string json = "{";
    for (const Field& field : m_fields)
        json += (json.size() > 1 ? ", " : "") + quote(field.name) + ": " + field.json;
    return json + "}";
}

std::string toJson(const std::vector<Record>& records) {
    std::string json = "[";
    for (const Record& record : records)
        json += (json.size() > 1 ? ",\n " : "") + record.toJson();
    return json + "]\n";
}

} // namespace tool
