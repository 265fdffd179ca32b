// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/temp_folder.h"
#include "support/work_folder.h"

#include "ul/file.h"
#include "ul/pointer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

namespace sarn_test {

namespace fs = std::filesystem;

namespace {

/// Reads a stream as signing does: the end is asked for before every read.
std::string readInChunks(ul::CWindowsFileInStream& stream, int chunkSize) {
    std::string content;
    std::string chunk(static_cast<std::size_t>(chunkSize), '\0');
    while (!stream.isEndOfStream())
        content.append(chunk, 0, static_cast<std::size_t>(stream.readLax(chunk.data(), chunkSize)));
    return content;
}

std::string makeContent(int size) {
    const Bytes bytes = [size] {
        Bytes result;
        for (int i = 0; i < size; ++i)
            result.push_back(static_cast<unsigned char>(i * 7 + i / 251));
        return result;
    }();
    return std::string(bytes.begin(), bytes.end());
}

template <class Action>
void expectFileError(const std::string& operation, const ul::CWindowsPath& path, Action action) {
    const ul::P<ul::CError> error = catchError<ul::CFileError>(action);
    ASSERT_TRUE(error);
    EXPECT_EQ(std::string(error->what()).find("Cannot " + operation + " '" + path.getString().toUTF8() + "': "), 0U)
        << error->what();
    ul::String value;
    EXPECT_TRUE(error->getProps().tryGet("path", value) && value == path.getString());
    EXPECT_TRUE(error->getProps().tryGet("reason", value) && !value.isEmpty());
}

} // namespace

TEST(CWindowsFileInStream, ChunksOfEverySize_GiveTheWholeFile) {
    const TempFolder folder;
    for (const int size : {0, 1, 8191, 8192, 8193, 16384, 100000}) {
        const std::string content = makeContent(size);
        const ul::CWindowsPath path = folder.write("f", content);
        for (const int chunkSize : {1, 63, 8192, 200000}) {
            ul::CWindowsFileInStream stream(path);
            EXPECT_EQ(stream.getLength(), size);
            EXPECT_EQ(readInChunks(stream, chunkSize), content) << size << " in " << chunkSize;
            EXPECT_TRUE(stream.isEndOfStream());
            EXPECT_EQ(stream.readLax(nullptr, 0), 0);
        }
    }
}

TEST(CWindowsFileInStream, ReadLax_GivesWhatIsLeftAndThenZero) {
    const TempFolder folder;
    ul::CWindowsFileInStream stream(folder.write("f", "abcde"));
    char data[8];
    EXPECT_EQ(stream.readLax(data, 2), 2);
    EXPECT_EQ(stream.readLax(data, 8), 3);
    EXPECT_EQ(std::string(data, 3), "cde");
    EXPECT_EQ(stream.readLax(data, 8), 0);
    EXPECT_EQ(stream.readLax(data, 8), 0);
}

TEST(CWindowsFileInStream, Read_IsExactOrAnError) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abcde");
    ul::CWindowsFileInStream stream(path);
    char data[8];
    stream.read(data, 3);
    stream.read(data, 0);
    EXPECT_EQ(std::string(data, 3), "abc");
    expectError("Unexpected end of stream.", {"size", "8", "available", "2", "path", path.getString().toUTF8().c_str()},
                [&] { stream.read(data, 8); });
}

TEST(CWindowsFileInStream, NegativeSizes_AreRefused) {
    const TempFolder folder;
    ul::CWindowsFileInStream stream(folder.write("f", "abc"));
    char data[1];
    expectInvalidArg("CWindowsFileInStream::read", "invalid size", [&] { stream.read(data, -1); });
    expectInvalidArg("CWindowsFileInStream::read", "invalid size", [&] { stream.readLax(data, INT_MIN); });
}

TEST(CWindowsFileInStream, MissingFile_IsAFileError) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.getPath("none");
    expectFileError("open file", path, [&] { ul::CWindowsFileInStream stream(path); });
}

TEST(CWindowsFileInStream, Folder_IsAFileError) {
    const TempFolder folder;
    const ul::CWindowsPath path = TempFolder::toPath(folder.getNative());
    expectFileError("open file", path, [&] { ul::CWindowsFileInStream stream(path); });
}

TEST(CWindowsFileInStream, UnknownDriveAndShare_AreFileErrors) {
    for (const char* const text : {"Q:\\no\\such", "\\\\no-such-server\\share\\a", "\\\\?\\Q:\\a"}) {
        const ul::CWindowsPath path(text);
        expectFileError("open file", path, [&] { ul::CWindowsFileInStream stream(path); });
    }
}

TEST(CWindowsFileInStream, FileThatGrowsMeanwhile_IsReadToItsNewEnd) {
    const TempFolder folder;
    ul::CWindowsFileInStream stream(folder.write("f", "abc"));
    EXPECT_EQ(readInChunks(stream, 2), "abc");
    EXPECT_TRUE(stream.isEndOfStream());
    folder.write("f", "abcdef");
    EXPECT_FALSE(stream.isEndOfStream());
    EXPECT_FALSE(stream.isEndOfStream());
    EXPECT_EQ(stream.getLength(), 6);
    EXPECT_EQ(readInChunks(stream, 8), "def") << "the look at the end lost no byte";
}

TEST(CWindowsFileInStream, FileThatShrinksMeanwhile_EndsThere) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", makeContent(50000));
    ul::CWindowsFileInStream stream(path);
    std::string chunk(8192, '\0');
    EXPECT_EQ(stream.readLax(chunk.data(), 8192), 8192);
    fs::resize_file(folder.getNative("f"), 10000);
    EXPECT_EQ(readInChunks(stream, 8192).size(), 10000U - 8192U);
    EXPECT_TRUE(stream.isEndOfStream());
}

TEST(CWindowsFileInStream, FileThatIsEmptiedBeforeTheFirstRead_EndsThere) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc");
    ul::CWindowsFileInStream stream(path);
    fs::resize_file(folder.getNative("f"), 0);
    char data[3];
    EXPECT_FALSE(stream.isEndOfStream()) << "fewer bytes were read than it had: nobody has looked yet";
    EXPECT_EQ(stream.readLax(data, 3), 0);
    EXPECT_TRUE(stream.isEndOfStream());
}

TEST(CWindowsFileInStream, SecondStream_HasAPositionOfItsOwn) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc");
    const ul::P<ul::IInStream> first = ul::make<ul::CWindowsFileInStream>(path);
    ul::CWindowsFileInStream second(path);
    char data[3];
    first->read(data, 3);
    EXPECT_FALSE(second.isEndOfStream());
    EXPECT_TRUE(first->isEndOfStream());
}

TEST(CWindowsFileInStream, NamesOfAnyText_AreOpened) {
    const TempFolder folder;
    for (const char* const name : {"donn\xC3\xA9"
                                   "es",
                                   "\xF0\x9F\x98\x80.ini", "a b", "nul.txt.d"}) {
        ul::writeUTF8TextFile(folder.getPath(name), "content");
        EXPECT_TRUE(ul::readUTF8TextFile(folder.getPath(name)) == "content");
        const std::vector<std::string> names = folder.list();
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << "it is a file of that name";
    }
}

TEST(CWindowsFileInStream, PathLongerThan260Characters_IsOpened) {
    const TempFolder folder;
    fs::path deep = folder.getNative();
    for (int i = 0; i < 5; ++i)
        deep /= std::string(80, static_cast<char>('a' + i));
    const ul::CWindowsPath path = TempFolder::toPath(deep / "f.txt");
    ASSERT_GT(path.getString().getLength(), 400);
#ifdef _WIN32
    deep = fs::path(L"\\\\?\\" + path.getString().toStdWString()).parent_path();
#endif
    fs::create_directories(deep);
    ul::writeUTF8TextFile(path, "deep");
    EXPECT_TRUE(ul::readUTF8TextFile(path) == "deep");
}

TEST(CWindowsFileInStream, RelativePath_IsBelowTheWorkingDirectory) {
    const WorkFolder folder;
    ul::writeUTF8TextFile(ul::CWindowsPath("a.txt"), "here");
    EXPECT_TRUE(fs::exists("a.txt"));
    EXPECT_TRUE(ul::readUTF8TextFile(ul::CWindowsPath(".\\none\\..\\a.txt")) == "here");
}

TEST(ReadUTF8TextFile, LeavesLineEndsAndDropsTheByteOrderMark) {
    const TempFolder folder;
    EXPECT_TRUE(ul::readUTF8TextFile(folder.write("f", "\xEF\xBB\xBF"
                                                       "a\r\nb\n")) == "a\r\nb\n");
    EXPECT_TRUE(ul::readUTF8TextFile(folder.write("f", "")).isEmpty());
    EXPECT_TRUE(ul::readUTF8TextFile(folder.write("f", "\xEF\xBB\xBF")).isEmpty());
    EXPECT_THROW(ul::readUTF8TextFile(folder.write("f", "\xEF\xBB")), ul::CError) << "a mark cut off is no text";
}

TEST(ReadUTF8TextFile, InvalidUTF8_NamesThePositionAndTheFile) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "abc\xFF");
    expectError("Invalid UTF-8 text.", {"position", "3", "path", path.getString().toUTF8().c_str()},
                [&] { ul::readUTF8TextFile(path); });
}

TEST(ReadUTF8TextFile, LargeFile_IsReadWhole) {
    const TempFolder folder;
    const std::string content(3 * 65536 + 17, 'x');
    EXPECT_EQ(ul::readUTF8TextFile(folder.write("f", content)).toUTF8(), content);
}

TEST(ReadUTF8TextFile, UpToALimit_ReadsNoLargerFile) {
    const TempFolder folder;
    for (const int size : {0, 1, 4096, 4097, 65536, 70000}) {
        const std::string content(static_cast<std::size_t>(size), 'x');
        const ul::CWindowsPath path = folder.write("f", content);
        EXPECT_EQ(ul::readUTF8TextFile(path, size).toUTF8(), content);
        EXPECT_EQ(ul::readUTF8TextFile(path, INT_MAX).toUTF8(), content);
        if (size == 0)
            continue;
        expectErrorOf<ul::CFileError>(("Cannot read file '" + path.getString().toUTF8() + "': it is larger than " +
                                       std::to_string(size - 1) + " bytes.")
                                          .c_str(),
                                      [&] { ul::readUTF8TextFile(path, size - 1); });
    }
    expectInvalidArg("readUTF8TextFile", "invalid size", [&] { ul::readUTF8TextFile(folder.getPath("f"), -1); });
}

TEST(WriteUTF8TextFile, NewFile_HoldsTheTextWithoutByteOrderMarkOrNewLineChanges) {
    const TempFolder folder;
    ul::writeUTF8TextFile(folder.getPath("f"), L"donn\u00E9es\n\r\n");
    EXPECT_EQ(folder.read("f"), "donn\xC3\xA9"
                                "es\n\r\n");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
}

TEST(WriteUTF8TextFile, ExistingFile_IsReplacedAsAWhole) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", std::string(100000, 'x'));
    ul::writeUTF8TextFile(path, "new");
    EXPECT_EQ(folder.read("f"), "new");
    ul::writeUTF8TextFile(path, "");
    EXPECT_EQ(folder.read("f"), "");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
}

TEST(WriteUTF8TextFile, TextThatCannotBeEncoded_LeavesTheOldFile) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "old");
    expectError("Text cannot be encoded as UTF-8.", {"position", "1"},
                [&] { ul::writeUTF8TextFile(path, L"a\xD800"); });
    EXPECT_EQ(folder.read("f"), "old");
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
}

TEST(WriteUTF8TextFile, InAMissingFolder_IsAFileError) {
    const TempFolder folder;
    const ul::P<ul::CError> error =
        catchError<ul::CFileError>([&] { ul::writeUTF8TextFile(folder.getPath("none/f"), "x"); });
    ASSERT_TRUE(error);
    EXPECT_EQ(std::string(error->what()).find("Cannot write file '"), 0U);
}

TEST(WriteUTF8TextFile, OverAFolder_IsAFileErrorThatLeavesNothingBehind) {
    const TempFolder folder;
    fs::create_directory(folder.getNative("f"));
    expectFileError("write file", folder.getPath("f"), [&] { ul::writeUTF8TextFile(folder.getPath("f"), "x"); });
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
    EXPECT_TRUE(fs::is_directory(folder.getNative("f")));
}

} // namespace sarn_test
