// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/array.h"
#include "ul/list.h"
#include "ul/map.h"

#include <unordered_set>

namespace {

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
    array.resize(3);
    EXPECT_EQ(std::vector<ul::String>(array.begin(), array.end()), (std::vector<ul::String>{"ac", "b", ""}));
    sarn_test::expectInvalidArg("TArray::resize", "invalid size", [&] { array.resize(-1); });
    EXPECT_EQ(array.getSize(), 3);
    array.resize(0);
    EXPECT_TRUE(array.isEmpty());
    array.append("d");
    array.clear();
    EXPECT_EQ(array.getSize(), 0);
}

TEST(TMap, Values_AreReplacedOrInsertedAndFoundInTheOrderOfTheirKeys) {
    ul::TMap<ul::String, int> map;
    map.set("b", 2);
    map.set("B", 1);
    map.set("b", 3);
    ++map.findOrInsert("a");
    ++map.findOrInsert("a");
    std::wstring content;
    for (const auto& [key, value] : map)
        content += key.toStdWString() + std::to_wstring(value);
    EXPECT_EQ(content, L"B1a2b3");
    EXPECT_EQ(*map.find("b"), 3);
    map.clear();
    EXPECT_EQ(map.find("b"), nullptr);
}

TEST(TMap, Find_DistinguishesAbsentFromNull) {
    ul::TMap<ul::String, ul::P<Farewell>> map;
    map.set("none", nullptr);
    ASSERT_NE(map.find("none"), nullptr);
    EXPECT_EQ(*map.find("none"), nullptr);
    EXPECT_EQ(map.find("other"), nullptr);
}

TEST(TList, Ends_GrowAndShrink) {
    ul::TList<ul::String> list;
    list.append("a");
    list.append("b");
    EXPECT_EQ(list.getLast(), "b");
    list.removeLast();
    EXPECT_EQ(list.getSize(), 1);
    EXPECT_EQ(*list.begin(), "a");
    list.clear();
    EXPECT_TRUE(list.isEmpty());
}

TEST(TMap, ValuesWhoseDestructorsUseTheMap_SeeAConsistentMap) {
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

TEST(TMap, ValueWhoseDestructorStoresAnother_LeavesThatOneInTheMap) {
    ul::TMap<int, ul::P<Farewell>> map;
    map.set(1, ul::make<Farewell>([&] { map.set(2, nullptr); }));
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
    using Object = ul::P<ul::CBase>;
    const Object first = ul::make<ul::CBase>();
    const Object second = ul::make<ul::CBase>();
    ul::TMap<Object, int> map;
    map.set(first, 1);
    map.set(second, 2);
    map.set(nullptr, 0);
    EXPECT_EQ(map.begin()->second, 0) << "null comes first";
    EXPECT_EQ(*map.find(second), 2);
    EXPECT_EQ(std::unordered_set<Object>({first, second, first}).size(), 2U);
}
