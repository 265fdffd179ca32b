// SPDX-License-Identifier: Apache-2.0
// Tables in which each row is a test.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace sarn_test {

/// The base of rows.
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

} // namespace sarn_test
