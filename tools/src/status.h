// SPDX-License-Identifier: Apache-2.0
// How a command ends.
#pragma once

#include <stdexcept>
#include <string>

namespace tool {

/// Exit statuses of all commands. If several files have different ones, the largest counts.
enum Status { Done = 0, NotVerified = 1, Misuse = 2, Failed = 3 };

/// Ends a command. The message is for the user: it names the file and the reason, and says what to do.
class Problem : public std::runtime_error {
public:
    Problem(Status status, const std::string& message) : std::runtime_error(message), m_status(status) {}
    Status getStatus() const noexcept { return m_status; }

private:
    Status m_status;
};

/// Ends a command after Ctrl-C or a request to terminate.
struct Interrupted {};

} // namespace tool
