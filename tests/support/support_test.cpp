// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/threads.h"

#include <sstream>

namespace sarn_test {

namespace {

std::vector<Vector> parse(const std::string& text) {
    std::istringstream stream(text);
    return parseVectors(stream, "a.vec", {"key", "data"});
}

/// The message of the error that refuses `text`, or an empty text.
std::string getRefusal(const std::string& text) {
    try {
        parse(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(Vectors, OfTwoSections_AreReadWithTheirFields) {
    const std::vector<Vector> vectors = parse("# comment\n[a]\nkey = 00ff\ndata =\n\nkey = 01\n[b]\nkey = 02\r\n");
    ASSERT_EQ(vectors.size(), 3u);
    EXPECT_EQ(vectors[0].getBytes("key"), (Bytes{0x00, 0xFF}));
    EXPECT_EQ(vectors[0].getText("data"), "");
    EXPECT_FALSE(vectors[1].has("data"));
    EXPECT_EQ(vectors[2].describe(), "[b] line 8");
    EXPECT_EQ(vectors[2].getText("key"), "02");
    EXPECT_THROW(vectors[2].getText("data"), std::runtime_error);
}

TEST(Vectors, WithAMistake_AreRefusedWithItsLine) {
    EXPECT_EQ(getRefusal("[a]\nkey = 00\nkye = 00\n"), "a.vec, line 3: unknown field");
    EXPECT_EQ(getRefusal("[a]\nkey: 00\n"), "a.vec, line 2: unknown field");
    EXPECT_EQ(getRefusal("[a\nkey = 00\n"), "a.vec, line 1: the section has no end");
    EXPECT_EQ(getRefusal("[a]\nkey = 00\nkey = 01\n"), "a.vec, line 3: the vector has that field already");
    EXPECT_EQ(getRefusal("[a]\n# nothing\n"), "a.vec: no vectors");
}

TEST(Vectors, MalformedBytesAndNumbers_AreRefused) {
    EXPECT_EQ(fromHex("00aF"), (Bytes{0x00, 0xAF}));
    for (const char* const text : {"0", "0x", "+1", " 1", "1 ", "g0", "0g", "-1"})
        EXPECT_THROW(fromHex(text), std::runtime_error) << text;
    EXPECT_EQ(parse("[a]\nkey = -12\n").front().getInt("key"), -12);
    EXPECT_THROW(parse("[a]\nkey = 12a\n").front().getInt("key"), std::runtime_error);
}

TEST(PrintTo, OfText_PrintsItsCharacters) {
    EXPECT_EQ(testing::PrintToString(ul::String(L"caf\xE9")), "\"caf\xC3\xA9\"");
    EXPECT_EQ(testing::PrintToString(ul::String(std::wstring(1, wchar_t(0xD800)))), "\"?\" (not Unicode)");
}

TEST(RunOnThreads, EachNumber_IsGivenOnce) {
    std::atomic<int> sum{0};
    runOnThreads(8, [&](int number) { sum += 1 << number; });
    EXPECT_EQ(sum, 255);
}

TEST(RunOnThreads, Threads_ExistAllAtOnce) {
    // No thread could go on if another had to end first.
    std::atomic<int> waiting{4};
    runOnThreads(4, [&](int) {
        for (--waiting; waiting > 0;)
            std::this_thread::yield();
    });
    EXPECT_EQ(waiting, 0);
}

TEST(RunOnThreads, ErrorOfOne_ReachesTheCaller) {
    std::atomic<int> ended{0};
    EXPECT_THROW(runOnThreads(4,
                              [&](int number) {
                                  ++ended;
                                  if (number == 2)
                                      throw std::runtime_error("wrong");
                              }),
                 std::runtime_error);
    EXPECT_EQ(ended, 4);
}

} // namespace sarn_test
