// SPDX-License-Identifier: Apache-2.0
// Encodes bytes as Base64, decodes them again, and shows the error of a text that is not Base64.
#include <sarn/host.h>

#include <iostream>

int main() try {
    const std::string text = sarn::base64("hello");
    std::cout << text << " is " << ul::CBytes(sarn::fromBase64(text)).asText() << "\n";
    sarn::fromBase64("aGVs bG8="); // refused: spaces belong to lines, and this line has no end
} catch (const ul::CError& error) {
    std::cout << ul::formatError(error) << "\n";
}
