// SPDX-License-Identifier: Apache-2.0
// A host that uses the library only through a module, which it loads and unloads many times. Another thread than the
// first ends the process.
#include "system/modules/loaded_module.h"

#include <cstdlib>
#include <iostream>
#include <thread>

int main(int count, char** words) {
    if (count != 3) {
        std::cerr << "usage: load_and_unload MODULE TIMES\n";
        return 2;
    }
    const std::string path = words[1];
    for (int times = std::stoi(words[2]); times > 0; --times) {
        if (!sarn_test::LoadedModule(path).get().useEveryFamily()) {
            std::cerr << "wrong result\n";
            return 1;
        }
    }
    std::thread last([&] {
        const sarn_test::LoadedModule module(path);
        std::exit(module.get().useEveryFamily() ? 0 : 1);
    });
    last.join();
    return 1;
}
