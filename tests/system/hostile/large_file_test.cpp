// SPDX-License-Identifier: Apache-2.0
// A file of 1 GiB is signed and verified in pieces.
#include "support/key_files.h"
#include "support/temp_folder.h"

#include "sarn/signature.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace sarn_test {

TEST(LargeFileSignature, OfAGigabyte_TakesLessThan4MiBOfMemory) {
    const TempFolder folder;
    const ul::CWindowsPath path = folder.write("f", "");
    std::filesystem::resize_file(folder.getNative("f"), 1 << 30);
    const auto getPeakKiB = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    const long before = getPeakKiB();
    ul::TBuffer<unsigned char> signature;
    sarn::createFileSignature_RSA_SHA1(path, readKey("rsa2048"), signature);
    EXPECT_TRUE(sarn::verifyFileSignature_RSA_SHA1(path, readPublicKey("rsa2048"), signature));
    const long growth = getPeakKiB() - before;
    RecordProperty("peakGrowthKiB", static_cast<int>(growth));
    EXPECT_LT(growth, 4096);
}

} // namespace sarn_test
