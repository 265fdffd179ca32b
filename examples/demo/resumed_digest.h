// SPDX-License-Identifier: Apache-2.0
// Digests of files, in one go and with a break in which the process ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace demo {

/// What every file is digested with.
constexpr char digestID[] = "md4-sha1-adler32";

/// The part of a digest in hexadecimal digits that is the SHA-1.
std::string getSHA1(const std::string& digest);

/// Digests the first `size` bytes of a file and saves the running state to `stateFile`.
void digestBeginning(const std::filesystem::path& file, std::int64_t size, const std::filesystem::path& stateFile);

/// Loads a state and digests the rest of the file. Returns the digest of the whole.
std::string resumeDigest(const std::filesystem::path& file, const std::filesystem::path& stateFile);

/// Runs this program twice on a file: the first run ends half way, the second resumes. Returns the digest, or an empty
/// text if a run failed.
std::string digestInTwoRuns(const std::string& program, const std::filesystem::path& file,
                            const std::filesystem::path& folder);

/// The SHA-1 that the system's own tools find; empty if it has none.
std::string askSystemForSHA1(const std::filesystem::path& file, const std::filesystem::path& folder);

} // namespace demo
