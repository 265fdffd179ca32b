// SPDX-License-Identifier: Apache-2.0
// Tables of cases, each of which is a test of its own.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace sarn_test {

/// The beginning of a row: the name of its test.
struct Row {
    std::string name;
};

inline std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.name;
}

/// Names a test after its row.
template <class Case>
std::string getRowName(const testing::TestParamInfo<Case>& info) {
    return info.param.name;
}

} // namespace sarn_test
