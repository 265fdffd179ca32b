// SPDX-License-Identifier: Apache-2.0
#include "file_fixture.h"

namespace sarn_test {

namespace fs = std::filesystem;

namespace {

/// Reads a stream as signing does, with a query for its end before each read.
std::string readInChunks(ul::CWindowsFileInStream& stream, int chunkSize) {
    std::string content;
    std::string chunk(static_cast<std::size_t>(chunkSize), '\0');
    while (!stream.isEndOfStream())
        content.append(chunk, 0, static_cast<std::size_t>(stream.readLax(chunk.data(), chunkSize)));
    return content;
}

} // namespace

TEST_F(CWindowsFileInStream, ChunksOfEverySize_GiveTheWholeFile) {
    for (const int size : {0, 1, 8191, 8192, 8193, 16384, 100000}) {
        const std::string content = makeText(size);
        write(content);
        for (const int chunkSize : {1, 63, 8192, 200000}) {
            ul::CWindowsFileInStream stream(path);
            EXPECT_EQ(stream.getLength(), size);
            EXPECT_EQ(readInChunks(stream, chunkSize), content) << size << " in " << chunkSize;
            EXPECT_TRUE(stream.isEndOfStream());
            EXPECT_EQ(stream.readLax(nullptr, 0), 0);
            char more[8];
            EXPECT_EQ(stream.readLax(more, 8), 0);
        }
    }
}

TEST_F(CWindowsFileInStream, Read_IsExactOrAnError) {
    write("abcde");
    ul::CWindowsFileInStream stream(path);
    char data[8];
    stream.read(data, 3);
    stream.read(data, 0);
    EXPECT_EQ(std::string(data, 3), "abc");
    expectError("Unexpected end of stream.", {"size", "8", "available", "2", "path", path.getString().toUTF8()},
                [&] { stream.read(data, 8); });
    expectInvalidArg("CWindowsFileInStream::read", "invalid size", [&] { stream.read(data, -1); });
    expectInvalidArg("CWindowsFileInStream::read", "invalid size", [&] { stream.readLax(data, INT_MIN); });
}

TEST_F(CWindowsFileInStream, PathThatIsNotAFile_IsAFileError) {
    const ul::CWindowsPath paths[] = {path, TempFolder::toPath(folder.getNative()), ul::CWindowsPath("Q:\\no\\such"),
                                      ul::CWindowsPath("\\\\no-such-server\\share\\a"),
                                      ul::CWindowsPath("\\\\?\\Q:\\a")};
    for (const ul::CWindowsPath& other : paths)
        expectOpenError(other);
}

TEST_F(CWindowsFileInStream, FileThatGrowsMeanwhile_IsReadToItsNewEnd) {
    ul::CWindowsFileInStream stream(write("abc"));
    EXPECT_EQ(readInChunks(stream, 2), "abc");
    EXPECT_TRUE(stream.isEndOfStream());
    write("abcdef");
    EXPECT_FALSE(stream.isEndOfStream());
    EXPECT_FALSE(stream.isEndOfStream());
    EXPECT_EQ(stream.getLength(), 6);
    EXPECT_EQ(readInChunks(stream, 8), "def") << "the query for the end lost no byte";
}

TEST_F(CWindowsFileInStream, FileThatShrinksMeanwhile_EndsThere) {
    write(makeText(50000));
    ul::CWindowsFileInStream stream(path);
    std::string chunk(8192, '\0');
    EXPECT_EQ(stream.readLax(chunk.data(), 8192), 8192);
    fs::resize_file(folder.getNative("f"), 10000);
    EXPECT_EQ(readInChunks(stream, 8192).size(), 10000U - 8192U);
    EXPECT_TRUE(stream.isEndOfStream());
}

TEST_F(CWindowsFileInStream, FileThatIsEmptiedBeforeTheFirstRead_EndsThere) {
    write("abc");
    ul::CWindowsFileInStream stream(path);
    fs::resize_file(folder.getNative("f"), 0);
    char data[3];
    EXPECT_FALSE(stream.isEndOfStream()) << "the stream has not read yet";
    EXPECT_EQ(stream.readLax(data, 3), 0);
    EXPECT_TRUE(stream.isEndOfStream());
}

TEST_F(CWindowsFileInStream, SecondStream_HasItsOwnPosition) {
    write("abc");
    const ul::P<ul::IInStream> first = ul::make<ul::CWindowsFileInStream>(path);
    ul::CWindowsFileInStream second(path);
    char data[3];
    first->read(data, 3);
    EXPECT_FALSE(second.isEndOfStream());
    EXPECT_TRUE(first->isEndOfStream());
}

TEST_F(CWindowsFileInStream, PathLongerThan260Characters_IsOpened) {
    fs::path deep = folder.getNative();
    for (int i = 0; i < 5; ++i)
        deep /= std::string(80, static_cast<char>('a' + i));
    const ul::CWindowsPath deepPath = TempFolder::toPath(deep / "f.txt");
    ASSERT_GT(deepPath.getString().getLength(), 400);
#ifdef _WIN32
    deep = fs::path(L"\\\\?\\" + deepPath.getString().toStdWString()).parent_path();
#endif
    fs::create_directories(deep);
    ul::writeUTF8TextFile(deepPath, "deep");
    EXPECT_EQ(ul::readUTF8TextFile(deepPath), "deep");
}

TEST_F(CWindowsFileInStream, RelativePath_IsBelowTheWorkingDirectory) {
    const WorkFolder workFolder;
    ul::writeUTF8TextFile(ul::CWindowsPath("a.txt"), "here");
    EXPECT_TRUE(fs::exists("a.txt"));
    EXPECT_EQ(ul::readUTF8TextFile(ul::CWindowsPath(".\\none\\..\\a.txt")), "here");
}

TEST_F(ReadUTF8TextFile, LeavesLineEndsAndDropsTheByteOrderMark) {
    EXPECT_EQ(ul::readUTF8TextFile(write("\xEF\xBB\xBF"
                                         "a\r\nb\n")),
              "a\r\nb\n");
    EXPECT_TRUE(ul::readUTF8TextFile(write("")).isEmpty());
    EXPECT_TRUE(ul::readUTF8TextFile(write("\xEF\xBB\xBF")).isEmpty());
    EXPECT_THROW(ul::readUTF8TextFile(write("\xEF\xBB")), ul::CError) << "part of a mark is not text";
}

TEST_F(ReadUTF8TextFile, InvalidUTF8_NamesThePositionAndTheFile) {
    write("abc\xFF");
    expectError("Invalid UTF-8 text.", {"position", "3", "path", path.getString().toUTF8()},
                [&] { ul::readUTF8TextFile(path); });
}

TEST_F(ReadUTF8TextFile, OfAnySizeUpToALimit_IsReadWhole_ButNoLargerOne) {
    for (const int size : {0, 1, 4096, 4097, 65536, 3 * 65536 + 17}) {
        const std::string content(static_cast<std::size_t>(size), 'x');
        write(content);
        EXPECT_EQ(ul::readUTF8TextFile(path, size).toUTF8(), content);
        EXPECT_EQ(ul::readUTF8TextFile(path, INT_MAX).toUTF8(), content);
        EXPECT_EQ(ul::readUTF8TextFile(path).toUTF8(), content);
        if (size == 0)
            continue;
        const std::string reason = "it is larger than " + std::to_string(size - 1) + " bytes";
        expectFileError("read file", path, -1, reason, [&] { ul::readUTF8TextFile(path, size - 1); });
    }
    expectInvalidArg("readUTF8TextFile", "invalid size", [&] { ul::readUTF8TextFile(path, -1); });
}

TEST_F(WriteUTF8TextFile, NewFile_HoldsTheTextWithoutByteOrderMarkOrNewLineChanges) {
    ul::writeUTF8TextFile(path, L"donn\u00E9-s\n\r\n");
    expectOnly("donn\xC3\xA9-s\n\r\n");
}

TEST_F(WriteUTF8TextFile, ExistingFile_IsReplacedAsAWhole) {
    write(std::string(100000, 'x'));
    ul::writeUTF8TextFile(path, "new");
    expectOnly("new");
    ul::writeUTF8TextFile(path, "");
    expectOnly("");
}

TEST_F(WriteUTF8TextFile, TextThatCannotBeEncoded_LeavesTheOldFile) {
    write("old");
    expectError("Text cannot be encoded as UTF-8.", {"position", "1"},
                [&] { ul::writeUTF8TextFile(path, L"a\xD800"); });
    expectOnly("old");
}

TEST_F(WriteUTF8TextFile, OverAFolder_IsAFileErrorAndLeavesNoOtherFile) {
    fs::create_directory(folder.getNative("f"));
    expectWriteError(path);
    EXPECT_EQ(folder.list(), std::vector<std::string>{"f"});
    EXPECT_TRUE(fs::is_directory(folder.getNative("f")));
}

} // namespace sarn_test
