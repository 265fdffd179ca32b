// SPDX-License-Identifier: Apache-2.0
#include <sarn/sarn.h>

#include <iostream>

int main() {
    ul::TCryptBuffer<char> password;
    password.init("password", 8);
    const ul::P<sarn::CPasswordKeyCache> keys = ul::make<sarn::CPasswordKeyCache>(password);

    // Salt and iteration count are no secrets: they are stored beside the data.
    const ul::PC<ul::TCryptBuffer<unsigned char>> key = keys->getKey(32, 258, 1000);
    std::cout << "key   " << sarn::base64Encode(key->getData(), key->getUsed(), true, false).toLatin1() << "\n";
    std::cout << "again " << (keys->getKey(32, 258, 1000) == key ? "the same buffer" : "another one") << "\n";

    ul::TBuffer<unsigned char> mac;
    sarn::calcHMAC_SHA1(mac, "what do ya want for nothing?", 28, "Jefe", 4);
    std::cout << "hmac  " << sarn::base64Encode(mac.getData(), mac.getUsed(), true, false).toLatin1() << "\n";
}
