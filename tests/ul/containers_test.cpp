// SPDX-License-Identifier: Apache-2.0
#include "ul/array.h"
#include "ul/list.h"
#include "ul/map.h"
#include "ul/pointer.h"
#include "ul/string.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

/// Counts its living objects.
struct Counted : ul::CBase {
    Counted() { ++living; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() override { --living; }
    static inline int living = 0;
};

} // namespace

TEST(TArray, Append_KeepsTheOrder) {
    ul::TArray<ul::String> array;
    EXPECT_TRUE(array.isEmpty());
    array.append("a");
    array.append("b");
    array[0] += "c";
    EXPECT_EQ(array.getSize(), 2);
    EXPECT_TRUE(array[0] == "ac" && array[1] == "b");
    array.resize(3);
    EXPECT_TRUE(array[2].isEmpty());
    array.clear();
    EXPECT_EQ(array.getSize(), 0);
}

TEST(TArray, Range_VisitsEveryElement) {
    ul::TArray<int> array;
    for (int i = 1; i <= 100; ++i)
        array.append(i);
    EXPECT_EQ(std::accumulate(array.begin(), array.end(), 0), 5050);
}

TEST(TMap, Set_ReplacesWhatIsThereAndReleasesIt) {
    ul::TMap<ul::String, ul::P<Counted>> map;
    map.set("a", ul::make<Counted>());
    map.set("a", ul::make<Counted>());
    EXPECT_EQ(map.getSize(), 1);
    EXPECT_EQ(Counted::living, 1);
    map.clear();
    EXPECT_EQ(Counted::living, 0);
    EXPECT_EQ(map.find("a"), nullptr);
}

TEST(TMap, Find_TellsAbsentFromNull) {
    ul::TMap<ul::String, ul::P<Counted>> map;
    map.set("none", nullptr);
    ASSERT_NE(map.find("none"), nullptr);
    EXPECT_EQ(*map.find("none"), nullptr);
    EXPECT_EQ(map.find("other"), nullptr);
}

TEST(TMap, FindOrInsert_StoresADefaultValueFirst) {
    ul::TMap<int, int> map;
    ++map.findOrInsert(7);
    ++map.findOrInsert(7);
    EXPECT_EQ(*map.find(7), 2);
}

TEST(TMap, Range_IsInTheOrderOfTheKeys) {
    ul::TMap<ul::String, int> map;
    map.set("b", 2);
    map.set("B", 1);
    map.set("a", 0);
    std::wstring keys;
    for (const auto& [key, value] : map)
        keys += key.toStdWString();
    EXPECT_EQ(keys, L"Bab");
}

TEST(TList, Ends_GrowAndShrink) {
    ul::TList<ul::String> list;
    list.append("a");
    list.append("b");
    EXPECT_TRUE(list.getLast() == "b");
    list.removeLast();
    EXPECT_EQ(list.getSize(), 1);
    EXPECT_TRUE(*list.begin() == "a");
    list.clear();
    EXPECT_TRUE(list.isEmpty());
}
