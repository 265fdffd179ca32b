// SPDX-License-Identifier: Apache-2.0
// The versions of the DLLs that Windows shows.
#include "sarn/version.h"

#include <gtest/gtest.h>

#include <vector>

#include <windows.h>

namespace {

/// The version in a DLL's resources as four numbers, or none.
std::vector<int> readFileVersion(const wchar_t* dll) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(GetModuleHandleW(dll), path, MAX_PATH);
    std::vector<char> resource(GetFileVersionInfoSizeW(path, nullptr));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT size = 0;
    if (resource.empty() || !GetFileVersionInfoW(path, 0, static_cast<DWORD>(resource.size()), resource.data()) ||
        !VerQueryValueW(resource.data(), L"\\", reinterpret_cast<void**>(&info), &size))
        return {};
    return {HIWORD(info->dwFileVersionMS), LOWORD(info->dwFileVersionMS), HIWORD(info->dwFileVersionLS),
            LOWORD(info->dwFileVersionLS)};
}

TEST(Version, InTheResourcesOfTheDLLs_IsTheOneOfTheHeaders) {
    const std::vector<int> expected = {UL_VERSION_MAJOR, UL_VERSION_MINOR, UL_VERSION_PATCH, 0};
    EXPECT_EQ(readFileVersion(L"sarn.dll"), expected);
    EXPECT_EQ(readFileVersion(L"ul.dll"), expected);
}

} // namespace
