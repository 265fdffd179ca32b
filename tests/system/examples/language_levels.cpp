// SPDX-License-Identifier: Apache-2.0
// Compiled at each language level: the library accepts the types of later levels too.
#include <sarn/host.h>

#include <array>
#include <iostream>

#if __cplusplus >= 202002L
#include <span>
#endif

int main() {
    const std::array<unsigned char, 3> bytes = {1, 2, 3};
    std::cout << ul::toHex(bytes) << "\n";
#if __cplusplus >= 202002L
    std::array<std::byte, 3> others{};
    const std::span<std::byte> span(others);
    const std::span<const unsigned char, 3> fixed(bytes);
    const ul::CBytes view = fixed;
    const std::span<const unsigned char> back(view);
    std::cout << ul::toHex(span) << ul::toHex(back) << ul::toHex(u8"ab") << ul::text(u8"ab").toUTF8() << "\n";
#endif
}
