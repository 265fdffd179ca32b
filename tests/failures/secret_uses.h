// SPDX-License-Identifier: Apache-2.0
// What secrets are used for.
#pragma once

#include "failures/memory_search.h"
#include "failures/table.h"

#include "ul/string.h"

#include <functional>
#include <vector>

namespace sarn_test {

/// A secret and the first key that is derived from it.
const std::vector<Canary>& getSecrets();

/// A piece of each line but the last of a private key's text, as bytes and as wide characters.
const std::vector<Canary>& getKeyCanaries();

/// The private key's text as a host reads it from its file, wiped in the end.
struct KeyText {
    KeyText();
    KeyText(const KeyText&) = delete;
    KeyText& operator=(const KeyText&) = delete;
    ~KeyText() { ul::wipe(text); }

    ul::String text;
};

struct SecretUse : Row {
    std::function<void()> run;
    /// Whether libcrypto, when it has no memory, leaves the secret in the part of the stack that it used.
    bool mayStayOnTheStack = false;
    /// What must be gone afterwards.
    decltype(&getSecrets) secrets = getSecrets;
};

const std::vector<SecretUse>& getSecretUses();

} // namespace sarn_test
