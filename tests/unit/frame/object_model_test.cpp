// SPDX-License-Identifier: Apache-2.0
// What every class shares: copy and move operations, one reference count, instances reached through get().
#include "support/cipher_test_data.h"

#include "sarn/openssl_init.h"

#include <type_traits>

namespace sarn_test {

namespace {

template <class T>
constexpr bool isCopyable = std::is_copy_constructible_v<T>&& std::is_copy_assignable_v<T>&&
    std::is_move_constructible_v<T>&& std::is_move_assignable_v<T>;
template <class T>
constexpr bool isNeither = !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T> &&
                           !std::is_move_constructible_v<T> && !std::is_move_assignable_v<T>;

static_assert(isCopyable<sarn::COpenSSLCipher> && isCopyable<sarn::CCipher_AES256CBC> &&
              isCopyable<sarn::CCipher_AES128CBC> && isCopyable<sarn::CCipher_BlowFishCBC> &&
              isCopyable<sarn::CCipher_Cast128CBC> && isCopyable<sarn::CCipher_IDEACBC> &&
              isCopyable<sarn::CCipher_Null> && isCopyable<sarn::COpenSSLInit> &&
              isCopyable<sarn::COpenSSLInit::CCleaner> && isCopyable<sarn::COpenSSLInit::CThreadStuff>);
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

/// What becomes of part of a block, which needs the zero block.
Bytes encryptSample(sarn::ICipher& cipher) {
    const Bytes iv(8);
    Buffer out;
    cipher.encryptWithoutPadding(TestKey(16), "sample", 6, out, false, iv.data());
    EXPECT_EQ(out.getUsed(), 8);
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
    const ul::P<sarn::COpenSSLCipher> copy = ul::make<sarn::CCipher_BlowFishCBC>(*source);
    const auto assigned = ul::make<sarn::COpenSSLCipher>(sarn::CCipher_AES256CBC());
    *assigned = *source;
    source = nullptr;
    for (const ul::P<sarn::COpenSSLCipher>& cipher : {copy, assigned}) {
        EXPECT_EQ(encryptSample(*cipher), expected);
        EXPECT_EQ(cipher->getID(), "bfcbc");
        EXPECT_EQ(cipher->getBlockSize(), 8);
    }
}

TEST(ObjectModel, MovedCipher_EncryptsAsItsSourceDid_WhichKeepsWhatItEncryptsWith) {
    sarn::CCipher_Cast128CBC source;
    const Bytes expected = encryptSample(source);
    sarn::CCipher_Cast128CBC target(std::move(source));
    EXPECT_EQ(encryptSample(target), expected);
    EXPECT_EQ(target.getID(), "cast128cbc");
    EXPECT_EQ(encryptSample(source), expected);
    source = std::move(target);
    EXPECT_EQ(encryptSample(target), expected);
    EXPECT_EQ(encryptSample(source), expected);
    EXPECT_EQ(source.getID(), "cast128cbc");
}

TEST(ObjectModel, ErrorHeldByPointer_ThrowsItsOwnTypeAgain) {
    Buffer out;
    const ul::P<ul::CError> held = catchError<ul::CInvalidArgError>(
        [&] { getAnyCipher("aes256cbc")->encrypt(TestKey(1), nullptr, 0, out, false, nullptr); });
    ASSERT_TRUE(held);
    EXPECT_THROW(held->throwClone(), ul::CInvalidArgError);
    EXPECT_THROW(held->throwClone(), std::exception);
    EXPECT_THROW(held->throwClone(), ul::IBase);
}

} // namespace sarn_test
