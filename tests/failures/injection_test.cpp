// SPDX-License-Identifier: Apache-2.0
// Every allocation of every scenario, and every call of libcrypto and of the system's file functions, fails: once, and
// together with all later calls. The result is right or a documented error is raised, and the next use works.
#include "failures/injection.h"
#include "failures/scenarios.h"
#include "support/log_capture.h"

#include <openssl/err.h>

#include <cstdlib>
#include <new>

namespace sarn_test {

namespace {

using Duration = Injection::Duration;

/// The call that fails after `index`. Newer versions of libcrypto allocate thousands of times to read a key, and
/// sanitizers are slow. There, only some of many calls fail unless SARN_EACH_INJECTION is set.
int getNext(int index) {
#ifdef SARN_FEWER_INJECTIONS
    if (index >= 100 && !std::getenv("SARN_EACH_INJECTION"))
        return index + index / 20;
#endif
    return index + 1;
}

// The errors of failed calls of dependencies. Another test expects the right one for each call.
// clang-format off
const std::set<std::string> documentedErrors = {
    "Error initializing OpenSSL digest.", "Error updating OpenSSL digest.", "Error finalizing OpenSSL digest.",
    "OpenSSL encrypt init error.", "OpenSSL encrypt error.", "OpenSSL decrypt error.", "Error computing HMAC digest.",
    "Error deriving cryptographic key from password.", "Internal error: error during base64 encode.",
    "Internal error: error during base64 decode.", "invalid base64 data", "OpenSSL sign init error.",
    "OpenSSL key corrupted.", "OpenSSL sign error.", "OpenSSL verify init error.", "OpenSSL verify update error.",
    "OpenSSL verify error.", "Random bytes are not available.", "Unexpected end of stream.", "a file error",
};
// clang-format on

constexpr char noMemory[] = "no memory";
constexpr char noMatch[] = "Invalid signature for config file.";

/// The result of a run, or the message of its error.
struct Outcome {
    Bytes result;
    std::string error;
};

Outcome observe(const Run& run) {
    try {
        return {run(), ""};
    } catch (const ul::CFileError&) {
        return {{}, "a file error"};
    } catch (const ul::CError& error) {
        return {{}, error.what()};
    } catch (const std::bad_alloc&) {
        return {{}, noMemory};
    }
}

Scenarios makeScenarios() {
    Scenarios all;
    for (const auto make :
         {makeCipherScenarios, makeDigestScenarios, makeKeyScenarios, makeSignatureScenarios, makeFileScenarios}) {
        const Scenarios scenarios = make();
        all.insert(all.end(), scenarios.begin(), scenarios.end());
    }
    return all;
}

class Injections : public testing::TestWithParam<Scenario> {
protected:
    // The first run creates the process-wide objects. Another test makes that fail.
    void SetUp() override { m_expected = GetParam().run(); }

    void injectAll(bool ofAllocations) {
        const LogCapture log;
        int count = 0;
        for (const Duration duration : {Duration::Once, Duration::FromThenOn}) {
            if (duration == Duration::FromThenOn && GetParam().failsOnlyOnce && !ofAllocations)
                continue;
            for (int index = 0; !HasFailure() && inject(ofAllocations, index, duration); index = getNext(index))
                ++count;
        }
        RecordProperty("injections", count);
    }

private:
    /// Makes one call fail. Returns false if there are fewer calls.
    bool inject(bool ofAllocations, int index, Duration duration) {
        Outcome outcome;
        std::string failed;
        bool mustBeNoticed = false;
        {
            const CallWatch watch;
            const Injection injection(ofAllocations, index, duration);
            outcome = observe(GetParam().run);
            if (!injection.hasHappened())
                return false;
            failed = injection.getFirst().name;
            mustBeNoticed = injection.mustBeNoticed() && !ofAllocations;
            EXPECT_EQ(watch.countLeft("EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_free"), 0) << failed;
        }
        SCOPED_TRACE("call " + std::to_string(index) + ", " + failed);
        const bool isMismatch = ofAllocations && GetParam().verifies && outcome.result == asBytes(false);
        EXPECT_TRUE(ofAllocations || mustBeNoticed || outcome.error.empty()) << "a failure without harm was reported";
        if (outcome.error.empty() && !isMismatch) {
            EXPECT_EQ(toHex(outcome.result), toHex(m_expected)) << "a wrong result was returned";
            EXPECT_FALSE(mustBeNoticed) << "the failure was not reported";
        }
        EXPECT_TRUE(outcome.error.empty() || isExpectedError(outcome.error, ofAllocations)) << outcome.error;
        EXPECT_EQ(ERR_peek_error(), 0U) << "an error of libcrypto is left in its queue";
        EXPECT_EQ(toHex(GetParam().run()), toHex(m_expected)) << "the next use gives a wrong result";
        return true;
    }

    static bool isExpectedError(const std::string& error, bool ofAllocations) {
        if (ofAllocations && (error == noMemory || (GetParam().verifies && error == noMatch)))
            return true;
        return documentedErrors.count(error) > 0;
    }

    Bytes m_expected;
};

} // namespace

TEST_P(Injections, EachAllocationThatFails_IsReportedAndDoesNoHarm) {
    injectAll(true);
}

TEST_P(Injections, EachCallOfADependencyThatFails_IsReportedAndDoesNoHarm) {
    injectAll(false);
}

INSTANTIATE_TEST_SUITE_P(All, Injections, testing::ValuesIn(makeScenarios()), getRowName<Scenario>);

TEST(InjectionsTable, EveryImportedFunctionOfLibcryptoZlibAndFiles_IsAmongThoseThatFail) {
    std::set<std::string> known;
    for (const ImportedCall& call : getImportedCalls())
        known.insert(call.name);
    for (const std::string& name : installReplacements())
        EXPECT_TRUE(known.count(name) > 0 || cannotFail(name)) << name;
}

TEST(InjectionsTable, FilesInSmallPieces_InterruptedBySignals_AreReadAndWrittenWhole) {
    int count = 0;
    for (const Scenario& scenario : makeScenarios()) {
        const Bytes expected = scenario.run();
        const SmallPieces pieces;
        EXPECT_EQ(toHex(scenario.run()), toHex(expected)) << scenario.name;
        count += pieces.getCallCount() > 0;
    }
    EXPECT_GT(count, 8) << "too few scenarios use files";
}

TEST(InjectionsTable, Scenarios_AreAtLeast60) {
    EXPECT_GE(makeScenarios().size(), 60u);
}

} // namespace sarn_test
