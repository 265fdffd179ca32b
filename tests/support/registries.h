// SPDX-License-Identifier: Apache-2.0
// The registries of ciphers and of digest types, for tests that run with both.
#pragma once

#include "support/cipher_test_data.h"
#include "support/digest_test_data.h"

namespace sarn_test {

/// The registry of ciphers. A host may replace the item `hostID` by an object of `Base`.
struct Ciphers : sarn::CCipherManager {
    using Manager = sarn::CCipherManager;
    using Item = sarn::ICipher;
    using Base = sarn::CCipher_Null;
    static constexpr const char* hostID = "null";
    static constexpr const char* builtIn[] = {"aes256cbc", "aes128cbc", "bfcbc", "cast128cbc", "null"};
    static constexpr const char* unknown[] = {"ideacbc", "AES256CBC", "", "aes256cbc ", "aes256"};
    static constexpr const char* unknownText = "Unknown cipher id '";
    static constexpr const char* nullRefusal[] = {"CCipherManager::addCipher", "cipher cannot be NULL"};
    static constexpr auto addItem = &Manager::addCipher;
    static constexpr auto findItem = &Manager::findCipher;
    static constexpr auto getItem = &Manager::getCipher;
    using Manager::dispose;
    using Manager::disposeGlobalInstance;
};

struct DigestTypes : sarn::CDigestManager {
    using Manager = sarn::CDigestManager;
    using Item = sarn::IDigestType;
    using Base = sarn::CDigestType_SHA1;
    static constexpr const char* hostID = "sha1";
    static constexpr auto& builtIn = digestIDs;
    static constexpr const char* unknown[] = {"MD5", "SHA1", "", "sha512", "md4-", "sha1-md4"};
    static constexpr const char* unknownText = "Unknown digest type id '";
    static constexpr const char* nullRefusal[] = {"CDigestManager::addType", "type cannot be NULL"};
    static constexpr auto addItem = &Manager::addType;
    static constexpr auto findItem = &Manager::findType;
    static constexpr auto getItem = &Manager::getType;
    using Manager::dispose;
    using Manager::disposeGlobalInstance;
};

/// An item of a host, with actions for its name and its end.
template <class Family>
struct HostItem : Family::Base {
    explicit HostItem(
        std::function<ul::String()> name, std::function<void()> end = [] {})
        : getName(std::move(name)), atEnd(std::move(end)) {}
    HostItem(const HostItem&) = delete;
    HostItem& operator=(const HostItem&) = delete;
    ~HostItem() override { atEnd(); }
    ul::String getID() override { return getName(); }

    std::function<ul::String()> getName;
    std::function<void()> atEnd;
};

struct FamilyNames {
    template <class Family>
    static std::string GetName(int) {
        return std::is_same_v<Family, Ciphers> ? "Ciphers" : "DigestTypes";
    }
};
using Families = testing::Types<Ciphers, DigestTypes>;

} // namespace sarn_test
