// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/array.h"
#include "ul/list.h"
#include "ul/map.h"
#include "ul/pointer.h"
#include "ul/string.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <unordered_set>
#include <utility>

namespace {

/// Counts its living objects.
struct Counted : ul::CBase {
    Counted() { ++living; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() override { --living; }
    static inline int living = 0;
};

/// Runs `atEnd` in its destructor.
struct Farewell : ul::CBase {
    explicit Farewell(std::function<void()> action) : atEnd(std::move(action)) {}
    Farewell(const Farewell&) = delete;
    Farewell& operator=(const Farewell&) = delete;
    ~Farewell() override { atEnd(); }
    std::function<void()> atEnd;
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

TEST(TArray, ResizeToANegativeSize_IsRefused) {
    ul::TArray<int> array;
    array.append(1);
    sarn_test::expectInvalidArg("TArray::resize", "invalid size", [&] { array.resize(-1); });
    EXPECT_EQ(array.getSize(), 1);
}

TEST(TMap, ValuesWhoseDestructorsUseTheMap_SeeItWhole) {
    using Map = ul::TMap<int, ul::P<Farewell>>;
    Map map;
    std::vector<int> seen;
    const auto add = [&](int key) { map.set(key, ul::make<Farewell>([&] { seen.push_back(map.getSize()); })); };
    for (int key = 0; key < 3; ++key)
        add(key);
    map.set(0, ul::make<Farewell>([&] {
                map.find(1);
                seen.push_back(map.getSize());
            }));
    EXPECT_EQ(seen, std::vector<int>{3}) << "replaced";
    EXPECT_TRUE(map.erase(0));
    EXPECT_FALSE(map.erase(0));
    EXPECT_EQ(seen, (std::vector<int>{3, 2})) << "erased";
    map.clear();
    EXPECT_EQ(seen, (std::vector<int>{3, 2, 0, 0})) << "cleared";
    add(0);
    map = Map();
    EXPECT_EQ(seen.size(), 5U) << "assigned";
    EXPECT_EQ(seen.back(), 0);
}

TEST(TMap, ValueThatStoresAnotherAtItsEnd_LeavesThatOneBehind) {
    ul::TMap<int, ul::P<Farewell>> map;
    map.set(1, ul::make<Farewell>([&] { map.set(2, ul::make<Farewell>([] {})); }));
    map.clear();
    EXPECT_EQ(map.getSize(), 1);
    EXPECT_NE(map.find(2), nullptr);
}

TEST(TMap, DestroyedWithValuesThatUseIt_ShowsThemAnEmptyMap) {
    int seen = -1;
    {
        ul::TMap<int, ul::P<Farewell>> map;
        map.set(1, ul::make<Farewell>([&] { seen = map.find(1) ? 1 : map.getSize(); }));
    }
    EXPECT_EQ(seen, 0);
}

TEST(TArrayAndTList, ElementsWhoseDestructorsUseThem_FindThemEmpty) {
    std::vector<int> seen;
    ul::TArray<ul::P<Farewell>> array;
    array.append(ul::make<Farewell>([&] { seen.push_back(array.getSize()); }));
    array.clear();
    ul::TList<ul::P<Farewell>> list;
    list.append(ul::make<Farewell>([&] { seen.push_back(list.getSize()); }));
    list.clear();
    EXPECT_EQ(seen, (std::vector<int>{0, 0}));
}

TEST(P, IsAKeyOfOrderedAndUnorderedContainers) {
    const ul::P<Counted> first = ul::make<Counted>();
    const ul::P<Counted> second = ul::make<Counted>();
    ul::TMap<ul::P<Counted>, int> map;
    map.set(first, 1);
    map.set(second, 2);
    map.set(nullptr, 0);
    EXPECT_EQ(map.begin()->second, 0) << "null comes first";
    EXPECT_EQ(*map.find(second), 2);
    EXPECT_EQ(std::unordered_set<ul::P<Counted>>({first, second, first}).size(), 2U);
}
