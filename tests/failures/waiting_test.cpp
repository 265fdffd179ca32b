// SPDX-License-Identifier: Apache-2.0
// Which thread waits for which: one stops inside a call of the library, and another calls in. docs/threads.md lists the
// calls that wait.
#include "failures/call_watch.h"
#include "support/password_keys.h"
#include "support/registries.h"
#include "support/signing.h"

#include "ul/log.h"
#include "ul/random.h"

#include <condition_variable>

namespace sarn_test {

namespace {

using Action = std::function<void()>;

class Waiting : public testing::Test {
protected:
    Waiting() {
        m_watch.before(HeldLocks::lock, [this](const Call& call) {
            if (m_locks.isHeldByAnother(call))
                signal(m_isWaiting);
        });
    }

    /// Whether `second` waits for a lock that the thread of `first` holds while that stays at stop().
    bool waits(const Action& first, const Action& second) {
        m_isInside = m_isWaiting = m_isDone = m_mayGoOn = false;
        std::thread staying(first);
        await([this] { return m_isInside; });
        std::thread calling([&] {
            second();
            signal(m_isDone);
        });
        await([this] { return m_isWaiting || m_isDone; });
        const bool isWaiting = !m_isDone;
        signal(m_mayGoOn);
        staying.join();
        calling.join();
        return isWaiting;
    }

    /// The first thread that comes here stays until the other has finished or waits.
    void stop() {
        if (m_isInside)
            return;
        signal(m_isInside);
        await([this] { return m_mayGoOn; });
    }

    void signal(bool& flag) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        flag = true;
        m_changed.notify_all();
    }

    CallWatch m_watch;

private:
    template <class Condition>
    void await(Condition condition) {
        std::unique_lock<std::mutex> guard(m_mutex);
        m_changed.wait(guard, condition);
    }

    HeldLocks m_locks{m_watch};
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isInside = false;
    bool m_isWaiting = false;
    bool m_isDone = false;
    bool m_mayGoOn = false;
};

template <class Family>
struct WaitingForRegistry : Waiting {};
TYPED_TEST_SUITE(WaitingForRegistry, Families, FamilyNames);

} // namespace

TYPED_TEST(WaitingForRegistry, LastsWhileItAsksForANameOrDestroys) {
    using Host = HostItem<TypeParam>;
    const auto registry = ul::make<typename TypeParam::Manager>();
    const auto other = ul::make<typename TypeParam::Manager>();
    const auto add = [&registry](const auto& item) { (*registry.*TypeParam::addItem)(item.get()); };
    const auto getName = [] { return "host"; };
    const auto stayAndGetName = [this] {
        this->stop();
        return "host";
    };
    const Action firsts[] = {[&] { add(ul::make<Host>(stayAndGetName)); },
                             [&] {
                                 add(ul::make<Host>(getName, [this] { this->stop(); }));
                                 add(ul::make<Host>(getName));
                             }};
    for (const Action& first : firsts) {
        EXPECT_TRUE(this->waits(first, [&] { (*registry.*TypeParam::findItem)(TypeParam::hostID); }));
        EXPECT_TRUE(this->waits(first, [&] { (*registry.*TypeParam::getItem)(TypeParam::hostID); }));
        EXPECT_TRUE(this->waits(first, [&] { add(ul::make<typename TypeParam::Base>()); }));
        EXPECT_FALSE(this->waits(first, [&] { (*other.*TypeParam::getItem)(TypeParam::hostID); }));
        EXPECT_FALSE(this->waits(first, [] {
            sarn::CCipherManager::get()->getCipher("null");
            sarn::CDigestManager::get()->getType("sha1");
        }));
    }
}

TEST_F(Waiting, ForAKeyCache_LastsWhileItDerives) {
    const auto cache = makeKeyCache();
    const auto other = makeKeyCache();
    cache->getKey(32, 0, 1);
    m_watch.before("PKCS5_PBKDF2_HMAC_SHA1", [this](const Call&) { stop(); });
    int salt = 0;
    const Action derive = [&] { cache->getKey(32, static_cast<unsigned>(++salt), 1); };
    EXPECT_TRUE(waits(derive, [&] { cache->getKey(32, 0, 1); })) << "also for a key that it has";
    EXPECT_TRUE(waits(derive, [&] { cache->getKey(16, 0, 1); }));
    EXPECT_FALSE(waits(derive, [&] { other->getKey(32, 0, 1); }));
    EXPECT_FALSE(waits(derive, [] { deriveKey("p", "s", 1, 20); }));
}

TEST(LockOfAKeyCache, IsHeldWhileAKeyGetsItsPlace) {
    const auto cache = makeKeyCache();
    CallWatch watch;
    std::vector<int> locksBefore;
    watch.before("_Znwm", [&](const Call&) { locksBefore.push_back(watch.count(HeldLocks::lock)); });
    cache->getKey(32, 0, 1);
    ASSERT_FALSE(locksBefore.empty());
    EXPECT_EQ(locksBefore[0], 1);
}

TEST_F(Waiting, ForRandomBytes_LastsWhileAnotherDrawsAnIV) {
    const Bytes data = makePattern(10);
    // Until the bytes that were drawn in advance are used up.
    m_watch.before("getrandom", [this](const Call&) { stop(); });
    bool isDrawn = false;
    const Action draw = [&] {
        for (int i = 0; i < 300; ++i)
            runAES256(encrypting, data, nullptr);
        isDrawn = true;
    };
    EXPECT_TRUE(waits(draw, [&] { runAES256(encrypting, data, nullptr); }));
    EXPECT_TRUE(isDrawn);
    const ul::IMutex* const documented = ul::CMTRand::getGlobalInstanceMutex().get();
    EXPECT_EQ(m_watch.getCalls(HeldLocks::lock).back().getPointer<ul::IMutex>(1), documented);
    EXPECT_FALSE(waits(draw, [&] { runAES256(encrypting, data); }));
    EXPECT_FALSE(waits(draw, [] {
        unsigned char bytes[16];
        ul::CMTRand::getGlobal()->randData(bytes, 16);
    }));
}

TEST_F(Waiting, ForAHandlerOfTheLog_NeverHappens) {
    const ul::LogHandler previous = ul::setLogHandler([this](const ul::String&) { stop(); });
    const Action log = [] { ul::logError("text"); };
    EXPECT_FALSE(waits(log, log));
    EXPECT_FALSE(waits(log, [] { ul::setLogHandler(ul::setLogHandler(ul::LogHandler())); }));
    ul::setLogHandler(previous);
}

TEST_F(Waiting, ForALock_IsImpossibleInAllOtherOperations) {
    const Bytes data = makePattern(100);
    const ul::P<sarn::ICipher> cipher = getAES256();
    const ul::P<sarn::IDigestType> type = sarn::CDigestManager::get()->getType("md4-sha1-adler32");
    const ul::P<sarn::ISignatureAlgo> algo = sarn::createRSA_SHA1();
    const int before = m_watch.count(HeldLocks::lock);
    EXPECT_GT(before, 0) << "the registries take locks";
    runCipher(*cipher, decrypting, runCipher(*cipher, encrypting, data, iv16.data()), iv16.data());
    runCipher(*cipher, decryptingUnpadded, runCipher(*cipher, encryptingUnpadded, data, iv16.data()), iv16.data());
    const ul::P<sarn::IDigest> digest = type->createDigest();
    feed(*digest, data);
    finish(*digest);
    Buffer out;
    EXPECT_TRUE(verify(algo, readPublicKey("rsa1024"), data, sign(algo, readKey("rsa1024"), data)));
    sarn::calcHMAC_SHA1(out, data.data(), 100, "key", 3);
    sarn::base64Decode(sarn::base64Encode(data.data(), 100, true, true), out);
    EXPECT_EQ(m_watch.count(HeldLocks::lock), before);
}

} // namespace sarn_test
