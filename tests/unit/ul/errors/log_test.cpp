// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"
#include "support/log_capture.h"
#include "support/threads.h"

#include "ul/log.h"

#include <atomic>
#include <stdexcept>
#include <utility>

namespace sarn_test {

using Lines = std::vector<std::string>;

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
        for (int i = 0; i < 500; ++i) {
            if (number < 4)
                ul::logError("x");
            else
                EXPECT_TRUE(ul::setLogHandler(count));
        }
    });
    EXPECT_EQ(lines, 2000);
}

} // namespace sarn_test
