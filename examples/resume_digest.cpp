// SPDX-License-Identifier: Apache-2.0
#include <sarn/sarn.h>

#include <ul/hex.h>

#include <iostream>

int main() {
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType("sha1");

    const ul::P<sarn::IDigest> first = type->createDigest();
    first->update("only ", 5);
    ul::TBuffer<unsigned char> state; // goes to disk, or to another machine
    ul::CBufferStream buffer(&state, 2.0);
    ul::CDataOutStream out(buffer);
    first->storeState(out);

    const ul::P<sarn::IDigest> second = type->createDigest();
    ul::CBufferInStream bytes(state);
    ul::CDataInStream in(bytes);
    second->loadState(in);
    second->update("copy", 4);
    second->finish();

    std::cout << state.getUsed() << " bytes of state, digest "
              << ul::toHex({second->getDigestData(), second->getDigestSize()}) << "\n";
}
