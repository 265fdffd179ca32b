// SPDX-License-Identifier: Apache-2.0
// Errors and the log.
#include "support/expect.h"
#include "support/log_capture.h"
#include "support/threads.h"

namespace sarn_test {

namespace {

const ul::CProps noProps;

/// Raises the clone of `error` and checks its type.
template <class Error>
void expectKeepsItsType(Error error, const char* text = "") {
    EXPECT_EQ(error.getText(), text);
    const ul::P<ul::CError> copy = error.clone();
    const ul::CError& base = *copy;
    EXPECT_EQ(typeid(base), typeid(Error));
    expectErrorOf<Error>(error.what(), [&base] { base.throwClone(); });
}

using Lines = std::vector<std::string>;

} // namespace

TEST(CError, What_IsUTF8AndNeverThrows) {
    EXPECT_STREQ(ul::CError(L"caf\u00E9", "", -1, noProps, nullptr).what(), "caf\xC3\xA9");
    EXPECT_STREQ(ul::CError(L"a\xD800z", "", -1, noProps, nullptr).what(), "a?z");
}

TEST(CError, EveryClass_IsCaughtAsStandardExceptionObjectAndInterface) {
    const auto raise = [] { throw ul::CBadStateError("m"); };
    EXPECT_THROW(raise(), std::exception);
    EXPECT_THROW(raise(), ul::CBase);
    EXPECT_THROW(raise(), ul::IBase);
    EXPECT_THROW(raise(), ul::CError);
}

TEST(CError, CloneAndThrowClone_KeepTheType_AndAClassWithAMessageOfItsOwnHasNoSecondText) {
    expectKeepsItsType(ul::CError("m", "t", 7, noProps, nullptr), "t");
    expectKeepsItsType(ul::CInvalidArgError("where", "m", noProps));
    expectKeepsItsType(ul::CBadStateError("m"));
    expectKeepsItsType(ul::CBadPathError("p"));
    expectKeepsItsType(ul::CFileError("open file", "p", "reason", 2));
    EXPECT_EQ(ul::CFileError("open file", "p", "reason", 2).getCode(), 2);
}

TEST(CError, Cause_IsACopyOfItsTypeThatLivesAsLongAsACopyOfTheError) {
    ul::P<ul::CError> error;
    {
        const ul::CInvalidArgError inner("where", "inner", ul::CProps().add("n", "1"));
        const ul::CError middle("middle", "", -1, noProps, &inner);
        const ul::P<ul::CError> outer = ul::make<ul::CError>("outer", "", -1, noProps, &middle);
        error = ul::make<ul::CError>(*outer);
    }
    ASSERT_NE(error->getCause(), nullptr);
    EXPECT_STREQ(error->getCause()->what(), "middle");
    const auto* const inner = dynamic_cast<const ul::CInvalidArgError*>(error->getCause()->getCause());
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->getWhere(), "where");
}

TEST(CError, ConstructorCopyAndAssignment_TakeEveryPart) {
    const ul::CError cause("cause", "", -1, noProps, nullptr);
    const ul::CError original("Message.", "second", 42, ul::CProps().add("size", "3"), &cause);
    const ul::CError copy(original);
    ul::CError assigned("other", "", 2, noProps, nullptr);
    assigned = original;
    for (const ul::CError& error : {original, copy, assigned}) {
        EXPECT_STREQ(error.what(), "Message.");
        EXPECT_EQ(error.getMessage(), "Message.");
        EXPECT_EQ(error.getText(), "second");
        EXPECT_EQ(error.getCode(), 42);
        EXPECT_EQ(error.getProps().getCount(), 1);
        EXPECT_STREQ(error.getCause()->what(), "cause");
    }
    assigned = ul::CError("other", "", 2, noProps, nullptr);
    EXPECT_EQ(assigned.getCause(), nullptr);
}

TEST(CProps, Add_ChainsAndKeepsTheOrder_AndTryGetGivesTheFirstOfAName) {
    const ul::CProps props = ul::CProps().add("b", "1").add("a", "2").add("b", "3");
    EXPECT_EQ(props.getCount(), 3);
    EXPECT_TRUE(props.getName(0) == "b" && props.getName(1) == "a" && props.getValue(2) == "3");
    ul::String value("old");
    EXPECT_FALSE(props.tryGet("c", value));
    EXPECT_EQ(value, "old");
    EXPECT_EQ(getProp(ul::CError("m", "", -1, props, nullptr), "b"), "1");
}

TEST(LogError, Message_ReachesTheHandlerAsOneLineWithControlCharactersEscaped) {
    const LogCapture log;
    ul::logError("disk is full");
    ul::logError(L"a\nERROR: forged\r\x1B[2J\x7F\x85\x2028z\x2029");
    EXPECT_EQ(log.getLines(),
              (Lines{"ERROR: disk is full", "ERROR: a\\nERROR: forged\\xD;\\x1B;[2J\\x7F;\\x85;\\x2028;z\\x2029;"}));
}

TEST(LogError, Exception_IsDescribedWithPropertiesAndCauses) {
    const LogCapture log;
    const ul::CError cause("inner.", "", -1, ul::CProps(), nullptr);
    const ul::CError error("outer.", "", -1, ul::CProps().add("a", "1").add("b", "2"), &cause);
    ul::logError(error, "cannot save", "state");
    ul::logError(std::runtime_error("plain"), "cannot load", "");
    EXPECT_EQ(log.getLines(),
              (Lines{"ERROR: cannot save: outer. [a=1, b=2] Caused by: inner. (state)", "ERROR: cannot load: plain"}));
}

TEST(LogError, ExceptionInDestructor_NamesTheClassAndDistinguishesBugs) {
    const LogCapture log;
    std::runtime_error error("oops");
    ul::onExceptionInDestructorIgnored("ul::CThing", error, false);
    ul::onExceptionInDestructorIgnored("ul::CThing", error, true);
    EXPECT_EQ(log.getLines(), (Lines{"ERROR: exception in the destructor of ul::CThing ignored: oops",
                                     "BUG: exception in the destructor of ul::CThing ignored: oops"}));
}

TEST(LogError, HandlerThatThrowsAnything_DoesNoHarm) {
    static_assert(noexcept(ul::logError(std::declval<const ul::String&>())));
    const LogCapture restoresTheHandler;
    std::runtime_error error("x");
    const ul::LogHandler handlers[] = {[](const ul::String&) { throw std::runtime_error("handler"); },
                                       [](const ul::String&) { throw 7; }};
    for (const ul::LogHandler& handler : handlers) {
        ul::setLogHandler(handler);
        EXPECT_NO_THROW(ul::logError("x"));
        EXPECT_NO_THROW(ul::logError(error, "y", "z"));
        EXPECT_NO_THROW(ul::onExceptionInDestructorIgnored("ul::CThing", error, true));
    }
}

TEST(LogError, HandlerThatWaitsForAThreadThatLogsAndSetsAHandler_DoesNotBlockIt) {
    const LogCapture restoresTheHandler;
    ul::setLogHandler([](const ul::String&) {
        std::thread([] {
            ul::setLogHandler([](const ul::String&) {});
            ul::logError("from within");
        }).join();
    });
    ul::logError("x");
}

TEST(LogError, RefusedArgument_IsLoggedWithItsOperation) {
    const LogCapture log;
    const ul::CInvalidArgError error("COpenSSLCipher::decrypt", "invalid key size", ul::CProps());
    ul::logError(error, "cannot restore", "");
    ul::logError(ul::CError("outer.", "", -1, ul::CProps(), &error), "cannot restore", "");
    EXPECT_EQ(log.getLines(),
              (Lines{"ERROR: cannot restore: COpenSSLCipher::decrypt: invalid key size",
                     "ERROR: cannot restore: outer. Caused by: COpenSSLCipher::decrypt: invalid key size"}));
}

TEST(LogError, ForeignException_IsReadAsUTF8OrLatin1) {
    const LogCapture log;
    ul::logError(std::runtime_error("caf\xC3\xA9"), "x", "");
    ul::logError(std::runtime_error("caf\xE9"), "x", "");
    EXPECT_EQ(log.getLines(), (Lines{"ERROR: x: caf\xC3\xA9", "ERROR: x: caf\xC3\xA9"}));
}

TEST(LogError, ChainOf200000Causes_IsLoggedAndDestroyed) {
    ul::P<ul::CError> error;
    for (int i = 0; i < 200000; ++i)
        error = ul::make<ul::CError>("e", "", -1, ul::CProps(), error.get());
    const LogCapture log;
    ul::logError(*error, "x", "");
    EXPECT_EQ(log.getLines().at(0).size(),
              std::string("ERROR: x: e").size() + 199999 * std::string(" Caused by: e").size());
}

TEST(LogError, WithoutAHandler_GoesToStandardError) {
    const LogCapture restoresTheHandler;
    ul::setLogHandler(nullptr);
    testing::internal::CaptureStderr();
    ul::logError(L"caf\u00E9");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: caf\xC3\xA9\n");
}

TEST(LogError, FromManyThreadsWhileTheHandlerChanges_LosesNoLine) {
    std::atomic<int> lines{0};
    const ul::LogHandler count = [&lines](const ul::String&) { ++lines; };
    const LogCapture restoresTheHandler;
    ul::setLogHandler(count);
    runOnThreads(5, [&](int number) {
        for (int i = 0; i < 5000; ++i) {
            if (number < 4)
                ul::logError("x");
            else
                EXPECT_TRUE(ul::setLogHandler(count));
        }
    });
    EXPECT_EQ(lines, 20000);
}

TEST(CError, AssignedFromItsOwnCause_IsACopyOfIt) {
    ul::CError error("the last one of a chain, with a text of its own", "", 7, ul::CProps().add("a", "b"), nullptr);
    for (const char* const message : {"second", "first"})
        error = ul::CError(message, "", -1, ul::CProps(), &error);
    while (error.getCause())
        error = *error.getCause();
    EXPECT_STREQ(error.what(), "the last one of a chain, with a text of its own");
    EXPECT_EQ(error.getCode(), 7);
    EXPECT_EQ(getProp(error, "a"), "b");
    const ul::CInvalidArgError inner("where a long name of an operation stands", "invalid size", ul::CProps());
    ul::CInvalidArgError refusal("outer", "", ul::CProps());
    static_cast<ul::CError&>(refusal) = ul::CError("", "", -1, ul::CProps(), &inner);
    refusal = dynamic_cast<const ul::CInvalidArgError&>(*refusal.getCause());
    EXPECT_STREQ(refusal.what(), "invalid size");
    EXPECT_EQ(refusal.getWhere().toUTF8(), "where a long name of an operation stands");
}

} // namespace sarn_test
