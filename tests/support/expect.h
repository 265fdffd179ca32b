// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/vectors.h"

#include "ul/buffer.h"
#include "ul/error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace ul {

/// Prints text in quotes, as UTF-8 if it is Unicode.
inline void PrintTo(const String& text, std::ostream* out) {
    try {
        const std::string utf8 = text.toUTF8();
        *out << '"' << utf8 << '"';
    } catch (const std::exception&) {
        *out << '"' << text.toLatin1() << "\" (not Unicode)";
    }
}

} // namespace ul

namespace sarn_test {

using Buffer = ul::TBuffer<unsigned char>;

inline Bytes toBytes(const ul::TBuffer<unsigned char>& buffer) {
    return Bytes(buffer.getData(), buffer.getData() + buffer.getUsed());
}

inline Bytes toBytes(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

inline Bytes toUTF8Bytes(const ul::String& text) {
    return toBytes(text.toUTF8());
}

inline std::string toText(const Bytes& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

inline std::string makeText(int size) {
    return toText(makePattern(size));
}

inline Bytes join(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The first `size` bytes, or those before the last `-size`.
inline Bytes cut(const Bytes& bytes, int size) {
    return Bytes(bytes.begin(), (size < 0 ? bytes.end() : bytes.begin()) + size);
}

/// Fills `buffer` of this class or a derived one.
inline void fill(ul::TBuffer<unsigned char>& buffer, const Bytes& bytes) {
    buffer.init(bytes.data(), static_cast<int>(bytes.size()));
}

/// A buffer of this class or a derived one with this content.
template <class AnyBuffer = Buffer>
AnyBuffer makeBuffer(const Bytes& bytes) {
    AnyBuffer buffer;
    fill(buffer, bytes);
    return buffer;
}

/// The base of the rows of a table in which each row is a test.
struct Row {
    std::string name;
};

inline std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.name;
}

template <class Case>
std::string getRowName(const testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

/// The value of a property, which the error must have.
inline std::string getProp(const ul::CError& error, const char* name) {
    ul::String value;
    EXPECT_TRUE(error.getProps().tryGet(name, value)) << name;
    return value.toUTF8();
}

/// Expects `action` to raise an error whose class is `Error`, and returns a copy of it.
template <class Error, class Action>
ul::P<ul::CError> catchError(Action action) {
    try {
        action();
    } catch (ul::CError& error) {
        EXPECT_EQ(typeid(error), typeid(Error)) << error.what();
        return error.clone();
    }
    ADD_FAILURE() << "no error was raised";
    return nullptr;
}

/// Expects an error with this message, no second text, code -1, no cause, and the properties: name, value, name, value
/// and so on.
template <class Error = ul::CError, class Action>
void expectError(const char* message, const std::vector<std::string>& props, Action action) {
    const ul::P<ul::CError> error = catchError<Error>(action);
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), message);
    EXPECT_EQ(error->getMessage(), message);
    EXPECT_EQ(error->getText(), "");
    EXPECT_EQ(error->getCode(), -1);
    EXPECT_EQ(error->getCause(), nullptr);
    std::vector<std::string> actual;
    for (int i = 0; i < error->getProps().getCount(); ++i) {
        actual.push_back(error->getProps().getName(i).toUTF8());
        actual.push_back(error->getProps().getValue(i).toUTF8());
    }
    EXPECT_EQ(actual, props);
}

template <class Action>
void expectError(const char* message, Action action) {
    expectError(message, {}, action);
}

/// Expects an argument error without properties.
template <class Action>
void expectInvalidArg(const std::string& where, const char* message, Action action) {
    expectError<ul::CInvalidArgError>(message, {}, [&] {
        try {
            action();
        } catch (const ul::CInvalidArgError& error) {
            EXPECT_EQ(error.getWhere().toUTF8(), where);
            throw;
        }
    });
}

template <class Error, class Action>
void expectErrorOf(const char* message, Action action) {
    const ul::P<ul::CError> error = catchError<Error>(action);
    ASSERT_TRUE(error);
    EXPECT_STREQ(error->what(), message);
}

} // namespace sarn_test
