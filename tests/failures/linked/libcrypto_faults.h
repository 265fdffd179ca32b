// SPDX-License-Identifier: Apache-2.0
// Calls from the library's objects into libcrypto, counted and made to fail on request.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace sarn_test {

/// While it lives, counts the wrapped calls, and lets one of them fail.
class LibcryptoFaults {
public:
    LibcryptoFaults();
    LibcryptoFaults(const LibcryptoFaults&) = delete;
    LibcryptoFaults& operator=(const LibcryptoFaults&) = delete;
    ~LibcryptoFaults();

    /// Lets the `index`th call of `name` from now on fail, counted from 0, and queue an error as libcrypto does.
    void failCall(const std::string& name, int index = 0);
    /// Lets each call of `name` report `count` bytes less than it wrote.
    void shortenOutput(const std::string& name, int count);

    /// What a failing call of `name` returns, where its replacement asks for that.
    void setResult(const std::string& name, int result);

    int getCallCount(std::string_view name) const;
    /// The names of all calls, in order.
    std::vector<std::string> getCalls() const { return {m_calls.begin(), m_calls.begin() + m_callCount}; }

    /// For the replacements: notes a call and tells whether it must fail.
    static bool mustFail(const char* name);
    /// For the replacements: the number of bytes to hide.
    static int getShortening(const char* name);
    /// For the replacements: what to return on failure, 0 unless it was set.
    static int getResult(const char* name);

private:
    // Noting a call takes no memory, of which there may be none.
    std::array<const char*, 65536> m_calls;
    int m_callCount = 0;
    std::map<std::string, int, std::less<>> m_failing;
    std::map<std::string, int, std::less<>> m_shortening;
    std::map<std::string, int, std::less<>> m_results;
};

} // namespace sarn_test
