// SPDX-License-Identifier: Apache-2.0
/// \file
/// Values of a signed configuration, with defaults. Header-only. Text is UTF-8.
#pragma once

#include "sarn/signed_config.h"

#include "ul/text.h"

#include <charconv>
#include <optional>
#include <string>
#include <system_error>
#include <type_traits>

namespace sarn {

/// The value of a key, or nothing: CSignedConfig::getValue().
inline std::optional<ul::String> findValue(const CSignedConfig& config, const ul::CText& key) {
    ul::String value;
    if (!config.getValue(key.get(), value))
        return std::nullopt;
    return value;
}

/// The value of a key, or a default.
inline ul::String valueOr(const CSignedConfig& config, const ul::CText& key, const ul::CText& defaultValue) {
    return findValue(config, key).value_or(defaultValue.get());
}

/// The value of a key as a decimal number, or a default. The type of the default is the type of the number.
/// \throws ul::CError "Config value '<key>' is not a number that fits." with the property "value" if the value does not
///         fit or contains anything but digits, after a "-" if it is negative.
template <class Number, class = std::enable_if_t<std::is_integral_v<Number> && !std::is_same_v<Number, bool>>>
Number valueOr(const CSignedConfig& config, const ul::CText& key, Number defaultValue) {
    const std::optional<ul::String> value = findValue(config, key);
    if (!value)
        return defaultValue;
    const std::string digits = value->toLatin1();
    const char* const end = digits.data() + digits.size();
    Number number{};
    const std::from_chars_result result = std::from_chars(digits.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end)
        throw ul::CError("Config value '" + key.get() + "' is not a number that fits.", "", -1,
                         ul::CProps().add("value", *value), nullptr);
    return number;
}

/// The keys that start with `prefix`, for range-based loops: CSignedConfig::getValueNamesWithPrefix().
inline ul::TArray<ul::String> getKeys(const CSignedConfig& config, const ul::CText& prefix = "/") {
    ul::TArray<ul::String> keys;
    config.getValueNamesWithPrefix(keys, prefix.get());
    return keys;
}

} // namespace sarn
