// SPDX-License-Identifier: Apache-2.0
// Digests of files that another process resumes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace demo {

/// The type of all digests.
constexpr char digestID[] = "md4-sha1-adler32";

/// The SHA-1 in a digest, both in hexadecimal digits.
std::string getSHA1(const std::string& digest);

/// Digests the first `size` bytes of a file and saves the running state to `stateFile`.
void digestBeginning(const std::filesystem::path& file, std::int64_t size, const std::filesystem::path& stateFile);

/// Loads a state and digests the rest of the file. Returns the digest of the whole.
std::string resumeDigest(const std::filesystem::path& file, const std::filesystem::path& stateFile);

/// Runs this program twice on a file: the first run ends half way, the second resumes. Returns the digest, or an empty
/// text if a run failed.
std::string digestInTwoRuns(const std::string& program, const std::filesystem::path& file,
                            const std::filesystem::path& folder);

/// The SHA-1 of a file by a tool of the system; empty if there is no such tool.
std::string askSystemForSHA1(const std::filesystem::path& file, const std::filesystem::path& folder);

} // namespace demo
