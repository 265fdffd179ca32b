// SPDX-License-Identifier: Apache-2.0
// Two shared libraries and a program use the library together. Each can use, catch and release the objects of the
// others.
#include "support/expect.h"
#include "system/modules/loaded_module.h"

#include "ul/random.h"

namespace sarn_test {

namespace {

// The modules are never unloaded, because objects of their classes may outlive every test.

const Module& getFirst() {
    static const auto* const library = new LoadedModule(SARN_FIRST_MODULE);
    return library->get();
}

const Module& getSecond() {
    static const auto* const library = new LoadedModule(SARN_SECOND_MODULE);
    return library->get();
}

TEST(ModuleBoundary, Modules_AreTwo_AndEveryFamilyWorksInBoth) {
    EXPECT_NE(&getFirst(), &getSecond());
    EXPECT_NE(getFirst().raise, getSecond().raise);
    EXPECT_TRUE(getFirst().useEveryFamily() && getSecond().useEveryFamily());
}

TEST(ModuleBoundary, GlobalInstances_AreTheSameInEveryModule) {
    const GlobalObjects objects = getFirst().getGlobalObjects();
    EXPECT_EQ(objects, getSecond().getGlobalObjects());
    EXPECT_EQ(objects[0], sarn::COpenSSLInit::get().get());
    EXPECT_EQ(objects[3], sarn::CCipherManager::get().get());
    EXPECT_EQ(objects[5], ul::CMTRand::getGlobal().get());
    for (const void* const object : objects)
        EXPECT_NE(object, nullptr);
}

TEST(ModuleBoundary, ErrorOfOneModule_IsCaughtByItsClassInTheOther) {
    for (int i = 0; i <= static_cast<int>(ErrorKind::none); ++i) {
        const auto kind = static_cast<ErrorKind>(i);
        EXPECT_EQ(getFirst().classify(getSecond().raise, kind), kind) << i;
        EXPECT_EQ(getSecond().classify(getFirst().raise, kind), kind) << i;
    }
}

TEST(ModuleBoundary, ErrorOfAModule_IsCaughtInTheProgramWithItsText) {
    expectError("Unknown cipher id 'unknown'.", [] { getFirst().raise(ErrorKind::error); });
    expectInvalidArg("COpenSSLCipher::encrypt", "invalid key size",
                     [] { getSecond().raise(ErrorKind::invalidArgument); });
    EXPECT_THROW(getFirst().raise(ErrorKind::configSignature), std::exception);
}

TEST(ModuleBoundary, ErrorClonedInOneModule_IsReleasedInTheProgram) {
    ul::P<ul::CError> copy;
    try {
        getFirst().raise(ErrorKind::badPath);
    } catch (ul::CError& error) {
        copy = error.clone();
    }
    ASSERT_TRUE(copy);
    EXPECT_THROW(copy->throwClone(), ul::CBadPathError);
}

TEST(ModuleBoundary, ObjectMadeInOneModule_IsUsedAndReleasedInTheOther) {
    // The first byte of the SHA-1 digest of "abc".
    EXPECT_EQ(getSecond().finishAndRelease(getFirst().createDigest("sha1")), 0xA9);
    EXPECT_EQ(getFirst().finishAndRelease(getSecond().createDigest("sha1")), 0xA9);
    EXPECT_EQ(getFirst().finishAndRelease(sarn::CDigestManager::get()->getType("sha1")->createDigest()), 0xA9);
}

TEST(ModuleBoundary, BufferOfTheProgram_GrowsInBothModulesAndIsFreedInTheProgram) {
    const auto key = makeBuffer<ul::TCryptBuffer<unsigned char>>(makePattern(32));
    ul::TBuffer<unsigned char> out;
    for (int i = 0; i < 100; ++i) {
        getFirst().encrypt(key, "text of fifteen", out);
        getSecond().encrypt(key, "text of fifteen", out);
    }
    EXPECT_EQ(out.getUsed(), 200 * 32);
}

TEST(ModuleBoundary, CipherRegisteredByOneModule_IsFoundByTheOthers) {
    getFirst().registerCipher("of the first");
    getSecond().registerCipher("of the second");
    const ul::P<sarn::ICipher> cipher = sarn::CCipherManager::get()->getCipher("of the first");
    EXPECT_EQ(cipher->getID(), "of the first");
    EXPECT_NE(dynamic_cast<sarn::CCipher_Null*>(cipher.get()), nullptr);
    EXPECT_TRUE(sarn::CCipherManager::get()->findCipher("of the second"));
}

} // namespace

} // namespace sarn_test
