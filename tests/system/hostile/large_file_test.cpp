// SPDX-License-Identifier: Apache-2.0
// Large files: a signed file is read in pieces, and a signature file is not read.
#include "support/expect.h"
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/signature.h"

#include <sys/resource.h>

namespace sarn_test {

namespace {

/// Returns by how many KiB the largest memory of the process has grown during the second of two runs of `action`. The
/// first run loads code, which an emulator also translates.
template <class Action>
int measureGrowth(Action action) {
    const auto getPeak = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return static_cast<int>(usage.ru_maxrss);
    };
    action();
    const int before = getPeak();
    action();
    const int growth = getPeak() - before;
    testing::Test::RecordProperty("peakGrowthKiB", growth);
    return growth;
}

} // namespace

TEST(LargeFileSignature, OfAGigabyte_TakesLessThan4MiBOfMemory) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "");
    std::uintmax_t size = 0;
    const int growth = measureGrowth([&] {
        std::filesystem::resize_file(folder.getNative("f"), std::exchange(size, std::uintmax_t{1} << 30));
        Buffer signature;
        sarn::createFileSignature_RSA_SHA1(path, readKey("rsa2048"), signature);
        EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), signature));
    });
    EXPECT_LT(growth, 4096);
}

TEST(LargeFileSignature, SignatureFileWithAHole_IsRefusedWithoutMemoryForIt) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "");
    folder.write("f.sig", "");
    const std::string message =
        "Cannot read file '" + folder.getPath("f.sig").getString().toUTF8() + "': it is larger than 65536 bytes.";
    const int growth = measureGrowth([&] {
        constexpr std::uintmax_t limit = std::uintmax_t{1} << 31;
        for (const std::uintmax_t size : {std::uintmax_t{65537}, std::uintmax_t{500} << 20, limit - 1, limit, limit + 1,
                                          2 * limit, 2 * limit + 65536, std::uintmax_t{1} << 40}) {
            std::filesystem::resize_file(folder.getNative("f.sig"), size);
            expectErrorOf<ul::CFileError>(message.c_str(), [&] {
                sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), folder.getPath("f.sig"));
            });
        }
    });
    EXPECT_LT(growth, 4096);
}

} // namespace sarn_test
