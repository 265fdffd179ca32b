// SPDX-License-Identifier: Apache-2.0
// What every class shares: copy and move operations, one reference count, instances reached through get().
#include "support/cipher_test_data.h"

#include "sarn/openssl_init.h"

#include <type_traits>

namespace sarn_test {

namespace {

template <class T>
constexpr bool isCopyable = std::is_copy_constructible_v<T>&& std::is_copy_assignable_v<T>;
template <class T>
constexpr bool isMovable = std::is_move_constructible_v<T>&& std::is_move_assignable_v<T>;
template <class T>
constexpr bool isNeither = !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T> &&
                           !std::is_move_constructible_v<T> && !std::is_move_assignable_v<T>;

static_assert(isCopyable<sarn::COpenSSLCipher> && isMovable<sarn::COpenSSLCipher>);
static_assert(isCopyable<sarn::CCipher_AES256CBC> && isMovable<sarn::CCipher_AES256CBC>);
static_assert(isCopyable<sarn::CCipher_AES128CBC> && isMovable<sarn::CCipher_AES128CBC>);
static_assert(isCopyable<sarn::CCipher_BlowFishCBC> && isMovable<sarn::CCipher_BlowFishCBC>);
static_assert(isCopyable<sarn::CCipher_Cast128CBC> && isMovable<sarn::CCipher_Cast128CBC>);
static_assert(isCopyable<sarn::CCipher_IDEACBC> && isMovable<sarn::CCipher_IDEACBC>);
static_assert(isCopyable<sarn::CCipher_Null> && isMovable<sarn::CCipher_Null>);
static_assert(isCopyable<sarn::COpenSSLInit> && isMovable<sarn::COpenSSLInit>);
static_assert(isCopyable<sarn::COpenSSLInit::CCleaner> && isCopyable<sarn::COpenSSLInit::CThreadStuff>);
static_assert(isNeither<sarn::CCipherManager>);

static_assert(std::is_abstract_v<sarn::ICipher> && std::has_virtual_destructor_v<sarn::ICipher>);
static_assert(std::is_base_of_v<ul::IBase, sarn::ICipher> && !std::is_base_of_v<ul::CBase, sarn::ICipher>);
static_assert(std::is_base_of_v<ul::CBase, sarn::COpenSSLCipher> &&
              std::is_base_of_v<sarn::ICipher, sarn::COpenSSLCipher>);
static_assert(std::is_base_of_v<ul::CBase, sarn::CCipher_Null> && std::is_base_of_v<sarn::ICipher, sarn::CCipher_Null>);
static_assert(std::is_base_of_v<sarn::COpenSSLCipher, sarn::CCipher_AES128CBC> &&
              sizeof(sarn::CCipher_AES128CBC) == sizeof(sarn::COpenSSLCipher));
// The conversions are unambiguous only while ul::IBase is one shared virtual root.
static_assert(std::is_convertible_v<sarn::COpenSSLCipher*, ul::IBase*>);
static_assert(std::is_convertible_v<sarn::CCipher_Null*, ul::IBase*>);
static_assert(std::is_convertible_v<sarn::CCipherManager*, ul::IBase*>);

Bytes encryptSample(sarn::ICipher& cipher) {
    const Bytes iv(16);
    ul::TBuffer<unsigned char> out;
    cipher.encrypt(TestKey(cipher.getKeySize()), "sample", 6, out, false, iv.data());
    return toBytes(out);
}

} // namespace

TEST(ObjectModel, Cipher_ReachedThroughInterfaceAndBase_HasOneReferenceCount) {
    struct Tracked : sarn::CCipher_Null {
        explicit Tracked(bool& destroyed) : isDestroyed(destroyed) {}
        Tracked(const Tracked&) = delete;
        Tracked& operator=(const Tracked&) = delete;
        ~Tracked() override { isDestroyed = true; }
        bool& isDestroyed;
    };
    bool isDestroyed = false;
    ul::P<Tracked> object = ul::make<Tracked>(isDestroyed);
    ul::P<sarn::ICipher> asInterface = object;
    ul::P<ul::IBase> asRoot = asInterface;
    ul::PC<ul::CBase> asBase = object;
    object = nullptr;
    asInterface = nullptr;
    asRoot = nullptr;
    EXPECT_FALSE(isDestroyed);
    asBase = nullptr;
    EXPECT_TRUE(isDestroyed);
}

TEST(ObjectModel, CopyOfACipher_EncryptsAsItsSource_AndOutlivesIt) {
    ul::P<sarn::CCipher_BlowFishCBC> source = ul::make<sarn::CCipher_BlowFishCBC>();
    const Bytes expected = encryptSample(*source);
    const auto copy = ul::make<sarn::CCipher_BlowFishCBC>(*source);
    const auto assigned = ul::make<sarn::COpenSSLCipher>(sarn::CCipher_AES256CBC());
    *assigned = *source;
    source = nullptr;
    EXPECT_EQ(encryptSample(*copy), expected);
    EXPECT_EQ(encryptSample(*assigned), expected);
    EXPECT_TRUE(copy->getID() == "bfcbc");
    EXPECT_TRUE(assigned->getID() == "bfcbc");
    EXPECT_EQ(assigned->getBlockSize(), 8);
}

TEST(ObjectModel, MovedCipher_EncryptsAsItsSourceDid) {
    const auto source = ul::make<sarn::CCipher_Cast128CBC>();
    const Bytes expected = encryptSample(*source);
    const auto target = ul::make<sarn::CCipher_Cast128CBC>(std::move(*source));
    EXPECT_EQ(encryptSample(*target), expected);
    EXPECT_TRUE(target->getID() == "cast128cbc");
    // A partial block needs the zero block, which a move copies.
    const Bytes iv(8);
    ul::TBuffer<unsigned char> out;
    target->encryptWithoutPadding(TestKey(16), "abc", 3, out, false, iv.data());
    EXPECT_EQ(out.getUsed(), 8);
}

TEST(ObjectModel, CipherThatWasMovedFrom_KeepsWhatItEncryptsWith) {
    // A partial block needs the zero block.
    const auto encryptPartOfABlock = [](sarn::ICipher& cipher) {
        const Bytes iv(8);
        ul::TBuffer<unsigned char> out;
        cipher.encryptWithoutPadding(TestKey(16), "abc", 3, out, false, iv.data());
        return toBytes(out);
    };
    sarn::CCipher_Cast128CBC untouched;
    sarn::CCipher_Cast128CBC source;
    sarn::CCipher_Cast128CBC target(std::move(source));
    EXPECT_EQ(encryptPartOfABlock(source), encryptPartOfABlock(untouched));
    source = std::move(target);
    EXPECT_EQ(encryptPartOfABlock(target), encryptPartOfABlock(untouched));
    EXPECT_EQ(encryptPartOfABlock(source), encryptPartOfABlock(untouched));
    EXPECT_TRUE(source.getID() == "cast128cbc");
}

TEST(ObjectModel, ErrorHeldByPointer_ThrowsItsOwnTypeAgain) {
    ul::P<ul::CError> held;
    try {
        sarn::CCipherManager::get()
            ->getCipher("aes256cbc")
            ->encrypt(TestKey(1), nullptr, 0, *ul::make<ul::TBuffer<unsigned char>>(), false, nullptr);
    } catch (ul::CError& error) {
        held = error.clone();
    }
    ASSERT_TRUE(held);
    EXPECT_THROW(held->throwClone(), ul::CInvalidArgError);
    EXPECT_THROW(held->throwClone(), std::exception);
    EXPECT_THROW(held->throwClone(), ul::IBase);
}

} // namespace sarn_test
