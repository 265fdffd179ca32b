// SPDX-License-Identifier: Apache-2.0
// Every allocation, and every call of libcrypto and of the system's files that every scenario makes, fails: once, and
// from there on. What comes of it is the right result or a documented error, and the next use works.
#include "failures/imported_calls.h"
#include "failures/injection.h"
#include "failures/scenarios.h"
#include "support/log_capture.h"

#include "ul/error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <set>

namespace sarn_test {

namespace {

using Duration = Injection::Duration;

/// The call to fail after `index`. Newer versions of libcrypto allocate thousands of times to read a key, and
/// sanitizers take their time: of many calls only some fail there, unless all are asked for.
int getNext(int index) {
#ifdef SARN_FEWER_INJECTIONS
    if (index >= 100 && !std::getenv("SARN_EACH_INJECTION"))
        return index + index / 20;
#endif
    return index + 1;
}

/// What came of a run: its result, or the message of the error that it ended in.
struct Outcome {
    std::optional<Bytes> result;
    std::string error;
};

Outcome observe(const Run& run) {
    try {
        return {run(), ""};
    } catch (const ul::CFileError& error) {
        return {std::nullopt, std::string("Cannot: ") + error.what()};
    } catch (const ul::CError& error) {
        return {std::nullopt, error.what()};
    } catch (const std::bad_alloc&) {
        return {std::nullopt, "no memory"};
    }
}

bool isDocumented(const Scenario& scenario, const std::string& message, bool ofAllocations) {
    if (message.compare(0, 6, "Cannot") == 0)
        return true;
    if (ofAllocations && (message == "no memory" || message == scenario.errorWithoutMemory))
        return true;
    return std::find(scenario.messages.begin(), scenario.messages.end(), message) != scenario.messages.end();
}

std::string getScenarioName(const testing::TestParamInfo<Scenario>& info) {
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

class Injections : public testing::TestWithParam<Scenario> {
protected:
    void SetUp() override {
        m_run = GetParam().prepare();
        // What is created once in a process is created here; that it can fail has a test of its own.
        m_expected = m_run();
    }

    /// Lets one call after the other fail, until the scenario makes no more. Returns how many failed.
    int injectAll(bool ofAllocations, Duration duration) {
        int injected = 0;
        for (int index = 0;; index = getNext(index)) {
            Outcome outcome;
            std::string failed;
            bool mustBeNoticed = false;
            {
                Injection injection(ofAllocations, index, duration);
                outcome = observe(m_run);
                if (!injection.hasHappened())
                    return injected;
                ++injected;
                failed = injection.getFirst().name;
                mustBeNoticed = injection.mustBeNoticed();
            }
            SCOPED_TRACE("call " + std::to_string(index) + ", " + failed);
            if (outcome.result && ofAllocations && *outcome.result == GetParam().withoutMemory) {
                // Nobody takes it for a match.
            } else if (outcome.result) {
                EXPECT_EQ(toHex(*outcome.result), toHex(m_expected)) << "a wrong result was handed out";
                EXPECT_TRUE(!mustBeNoticed || ofAllocations) << "nobody was told";
            } else {
                EXPECT_TRUE(isDocumented(GetParam(), outcome.error, ofAllocations)) << outcome.error;
            }
            EXPECT_EQ(toHex(m_run()), toHex(m_expected)) << "what is used afterwards is damaged";
            if (HasFailure())
                return injected;
        }
    }

    void injectAll(bool ofAllocations) {
        const LogCapture log;
        const int once = injectAll(ofAllocations, Duration::Once);
        const bool onlyOnce = GetParam().failsOnlyOnce && !ofAllocations;
        const int fromThenOn = onlyOnce ? 0 : injectAll(ofAllocations, Duration::FromThenOn);
        RecordProperty("injections", once + fromThenOn);
    }

private:
    sarn_test::Run m_run;
    Bytes m_expected;
};

} // namespace

TEST_P(Injections, EachAllocationThatFails_IsToldAndDoesNoHarm) {
    injectAll(true);
}

TEST_P(Injections, EachCallOfADependencyThatFails_IsToldAndDoesNoHarm) {
    injectAll(false);
}

INSTANTIATE_TEST_SUITE_P(All, Injections, testing::ValuesIn(getScenarios()), getScenarioName);

TEST(InjectionsTable, EveryImportedFunctionOfLibcryptoZlibAndFiles_IsAmongThoseThatFail) {
    std::set<std::string> known;
    for (const ImportedCall& call : getImportedCalls())
        known.insert(call.name);
    for (const std::string& name : installReplacements())
        EXPECT_TRUE(known.count(name) > 0 || cannotFail(name) || isNoDependency(name)) << name;
}

TEST(InjectionsTable, FilesInSmallPieces_InterruptedBySignals_AreReadAndWrittenWhole) {
    int count = 0;
    for (const Scenario& scenario : getScenarios()) {
        const sarn_test::Run run = scenario.prepare();
        const Bytes expected = run();
        const SmallPieces pieces;
        EXPECT_EQ(toHex(run()), toHex(expected)) << scenario.name;
        count += pieces.getCallCount() > 0;
    }
    EXPECT_GT(count, 8) << "too few scenarios use files";
}

TEST(InjectionsTable, Scenarios_AreAtLeast60) {
    EXPECT_GE(getScenarios().size(), 60u);
}

} // namespace sarn_test
