// SPDX-License-Identifier: Apache-2.0
// Shows an error to the user, who needs the message, and to the log, which needs everything.
#include <sarn/host.h>

#include <iostream>

void runJob(const ul::String& name) try {
    sarn::encrypt("aes256cbc", ul::makeRandomBytes(32), ul::readSecretFile(ul::path("no such file")));
} catch (const ul::CError& cause) {
    throw ul::CError("The job '" + name + "' failed.", "", -1, ul::CProps().add("job", name), &cause);
}

int main() try { runJob(ul::text("données")); } catch (const ul::CError& error) {
    std::cout << error.what() << "\n";           // the user
    std::cerr << ul::formatError(error) << "\n"; // the log
    for (const auto& [name, value] : error.getProps())
        std::cerr << "  " << name.toUTF8() << ": " << value.toUTF8() << "\n";
}
