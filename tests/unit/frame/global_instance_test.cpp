// SPDX-License-Identifier: Apache-2.0
// Copy and move operations of every class, interfaces over one root, and private helpers of process-wide objects.
#include "frame/global_instance.h"
#include "frame/overlap.h"
#include "support/cipher_test_data.h"

#include "sarn/digest.h"

#include <cstdlib>

namespace sarn_test {

namespace {

/// Counts its living objects. The next `failures` constructions fail.
class Instance : public ul::CBase {
public:
    Instance() {
        if (failures > 0) {
            --failures;
            throw std::runtime_error("not yet");
        }
        ++living;
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;
    ~Instance() override { --living; }

    static inline int living = 0;
    static inline int failures = 0;
};

ul::CSafeGlobalSlot slot;

template <class... T>
constexpr bool areCopyable = (... && (std::is_copy_constructible_v<T> && std::is_copy_assignable_v<T> &&
                                      std::is_move_constructible_v<T> && std::is_move_assignable_v<T>));
template <class T>
constexpr bool isNeither = !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T> &&
                           !std::is_move_constructible_v<T> && !std::is_move_assignable_v<T>;
template <class... T>
constexpr bool areInterfaces = (... && (std::is_abstract_v<T> && std::has_virtual_destructor_v<T> &&
                                        std::is_base_of_v<ul::IBase, T> && !std::is_base_of_v<ul::CBase, T>));
/// A conversion to the root is unambiguous only while ul::IBase is one shared virtual root.
template <class Interface, class... T>
constexpr bool implement = (... && (std::is_base_of_v<ul::CBase, T> && std::is_base_of_v<Interface, T> &&
                                    std::is_convertible_v<T*, ul::IBase*>));

using namespace sarn;
static_assert(areCopyable<COpenSSLCipher, CCipher_AES256CBC, CCipher_AES128CBC, CCipher_BlowFishCBC, CCipher_Cast128CBC,
                          CCipher_IDEACBC, CCipher_Null>);
static_assert(areCopyable<CDigestType_MD4, CDigestType_MD5, CDigestType_SHA1, CDigestType_SHA256, CDigestType_Adler32,
                          CDigestType_CRC32, CDigestType_MD4_SHA1, CDigestType_MD4_SHA1_Adler32>);
static_assert(areCopyable<CDigest_Adler32, CDigest_CRC32, COpenSSLInit>);
static_assert(areCopyable<COpenSSLInit::CCleaner, COpenSSLInit::CThreadStuff>);
static_assert(isNeither<CCipherManager> && isNeither<CDigestManager>);
static_assert(areInterfaces<ICipher, IDigest, IDigestType>);
static_assert(implement<ICipher, COpenSSLCipher, CCipher_Null> && implement<IDigest, CDigest_CRC32>);
static_assert(implement<ul::IBase, CCipherManager, CDigestManager>);
static_assert(std::is_base_of_v<COpenSSLCipher, CCipher_AES128CBC> &&
              sizeof(CCipher_AES128CBC) == sizeof(COpenSSLCipher));

/// The ciphertext of part of a block, which the cipher completes with its zero block.
Bytes encryptSample(sarn::ICipher& cipher) {
    const Bytes encrypted = runCipher(cipher, encryptingUnpadded, toBytes("sample"), Bytes(8).data());
    EXPECT_EQ(encrypted.size(), 8U);
    return encrypted;
}

} // namespace

TEST(GetInstance, WhoseConstructorThrows_PassesTheErrorOnAndTriesAgain) {
    Instance::failures = 2;
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW(sarn::getInstance<Instance>(slot), std::runtime_error);
    EXPECT_TRUE(sarn::getInstance<Instance>(slot));
    slot.clear();
}

TEST(GetInstance, TheSlot_OwnsOneReference_AndAnInstanceThatTheHostHoldsOutlivesIt) {
    ul::P<Instance> held = sarn::getInstance<Instance>(slot);
    EXPECT_EQ(held, sarn::getInstance<Instance>(slot));
    held = nullptr;
    EXPECT_EQ(Instance::living, 1);
    held = sarn::getInstance<Instance>(slot);
    slot.clear();
    EXPECT_EQ(Instance::living, 1);
    held = nullptr;
    EXPECT_EQ(Instance::living, 0);
}

TEST(DestroyInstance, OfNull_DoesNothing) {
    sarn::destroyInstance<Instance>(nullptr);
}

TEST(DestroyInstanceDeathTest, WhoseReleaseThrows_EndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct Throwing : ul::CBase {
        void deleteThis() override { throw std::runtime_error("cannot end"); }
    };
    EXPECT_DEATH(
        {
            try {
                sarn::destroyInstance<Throwing>(sarn::createInstance<Throwing>());
            } catch (const std::exception&) {
                std::exit(0);
            }
        },
        "");
}

TEST(Overlaps, BytesBesideTheBlock_AreOutside) {
    const ul::TBuffer<unsigned char> buffer(16, -1);
    const unsigned char* const block = buffer.getData();
    EXPECT_TRUE(sarn::overlaps(block, 1, buffer));
    EXPECT_TRUE(sarn::overlaps(block + 15, 1, buffer));
    EXPECT_TRUE(sarn::overlaps(block - 1, 2, buffer));
    EXPECT_FALSE(sarn::overlaps(block + 16, 1, buffer));
    EXPECT_FALSE(sarn::overlaps(block - 1, 1, buffer));
}

TEST(Overlaps, NoBytesOrABufferWithoutABlock_OverlapNothing) {
    const ul::TBuffer<unsigned char> buffer(16, -1);
    EXPECT_FALSE(sarn::overlaps(buffer.getData() + 8, 0, buffer));
    EXPECT_FALSE(sarn::overlaps(buffer.getData(), 1, ul::TBuffer<unsigned char>()));
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

TEST(ObjectModel, MovedCipher_EncryptsAsItsSource_WhichStaysUsable) {
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

} // namespace sarn_test
