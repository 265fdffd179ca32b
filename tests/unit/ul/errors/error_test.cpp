// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/error.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace sarn_test {

namespace {

const ul::CProps noProps;

/// Throws what `error` clones to, and checks its type.
template <class Error>
void expectKeepsItsType(Error error) {
    const ul::P<ul::CError> copy = error.clone();
    const ul::CError& base = *copy;
    EXPECT_EQ(typeid(base), typeid(Error));
    try {
        base.throwClone();
    } catch (const Error& thrown) {
        EXPECT_EQ(typeid(thrown), typeid(Error));
        EXPECT_NE(&thrown, &base);
        EXPECT_STREQ(thrown.what(), error.what());
    }
}

template <class Caught>
bool isCaughtAs() {
    try {
        throw ul::CError("m", "", -1, noProps, nullptr);
    } catch (const Caught&) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

TEST(CError, Constructor_KeepsEveryPart) {
    const ul::CError error("Message.", "second", 42, ul::CProps().add("size", "3"), nullptr);
    EXPECT_TRUE(error.getMessage() == "Message." && error.getText() == "second");
    EXPECT_EQ(error.getCode(), 42);
    EXPECT_EQ(error.getProps().getCount(), 1);
    EXPECT_EQ(error.getCause(), nullptr);
}

TEST(CError, What_IsUTF8AndNeverThrows) {
    EXPECT_STREQ(ul::CError(L"donn\u00E9es", "", -1, noProps, nullptr).what(), "donn\xC3\xA9"
                                                                               "es");
    EXPECT_STREQ(ul::CError(L"a\xD800z", "", -1, noProps, nullptr).what(), "a?z");
}

TEST(CError, EveryClass_IsCaughtAsStandardExceptionObjectAndInterface) {
    EXPECT_TRUE(isCaughtAs<std::exception>());
    EXPECT_TRUE(isCaughtAs<ul::CBase>());
    EXPECT_TRUE(isCaughtAs<ul::IBase>());
    EXPECT_TRUE(isCaughtAs<ul::CError>());
    EXPECT_FALSE(isCaughtAs<ul::CBadStateError>());
}

TEST(CError, CloneAndThrowClone_KeepTheType) {
    expectKeepsItsType(ul::CError("m", "t", 7, noProps, nullptr));
    expectKeepsItsType(ul::CInvalidArgError("where", "m", noProps));
    expectKeepsItsType(ul::CBadStateError("m"));
    expectKeepsItsType(ul::CBadPathError("p"));
    expectKeepsItsType(ul::CFileError("open file", "p", "reason", 2));
}

TEST(CError, OfAClassWithAMessageOfItsOwn_HasNoSecondText) {
    EXPECT_TRUE(ul::CInvalidArgError("where", "m", noProps).getText().isEmpty());
    EXPECT_TRUE(ul::CBadStateError("m").getText().isEmpty());
    EXPECT_TRUE(ul::CBadPathError("p").getText().isEmpty());
    EXPECT_TRUE(ul::CFileError("open file", "p", "reason", 2).getText().isEmpty());
}

TEST(CError, Cause_IsACopyOfItsTypeThatOutlivesTheOriginal) {
    ul::P<ul::CError> error;
    {
        const ul::CInvalidArgError inner("where", "inner", ul::CProps().add("n", "1"));
        const ul::CError middle("middle", "", -1, noProps, &inner);
        error = ul::CError("outer", "", -1, noProps, &middle).clone();
    }
    ASSERT_NE(error->getCause(), nullptr);
    EXPECT_STREQ(error->getCause()->what(), "middle");
    const auto* const inner = dynamic_cast<const ul::CInvalidArgError*>(error->getCause()->getCause());
    ASSERT_NE(inner, nullptr);
    EXPECT_TRUE(inner->getWhere() == "where");
}

TEST(CError, CauseOfSeveralCopies_LivesAsLongAsOneOfThem) {
    const ul::CError inner("inner", "", -1, noProps, nullptr);
    const ul::CError middle("middle", "", -1, noProps, &inner);
    ul::P<ul::CError> first = ul::make<ul::CError>("outer", "", -1, noProps, &middle);
    const ul::CError second(*first);
    first = nullptr;
    EXPECT_STREQ(second.getCause()->what(), "middle");
    EXPECT_STREQ(second.getCause()->getCause()->what(), "inner");
}

TEST(CError, CopyAndAssignment_TakeEveryPart) {
    const ul::CError cause("cause", "", -1, noProps, nullptr);
    ul::CError first("first", "text", 1, ul::CProps().add("a", "b"), &cause);
    const ul::CError second("second", "", 2, noProps, nullptr);
    const ul::CError copy(first);
    first = second;
    EXPECT_STREQ(first.what(), "second");
    EXPECT_EQ(first.getCause(), nullptr);
    EXPECT_STREQ(copy.what(), "first");
    EXPECT_STREQ(copy.getCause()->what(), "cause");
    EXPECT_EQ(copy.getProps().getCount(), 1);
}

TEST(CBadPathError, Message_NamesTheText) {
    EXPECT_STREQ(ul::CBadPathError("C:\\..").what(), "Invalid path: C:\\..");
}

TEST(CFileError, Message_SaysWhatWasTriedWithWhatAndWhy) {
    const ul::CFileError error("open file", "Z:\\a", "No such file", 2);
    EXPECT_STREQ(error.what(), "Cannot open file 'Z:\\a': No such file.");
    EXPECT_EQ(error.getCode(), 2);
    ul::String value;
    EXPECT_TRUE(error.getProps().tryGet("path", value) && value == "Z:\\a");
    EXPECT_TRUE(error.getProps().tryGet("reason", value) && value == "No such file");
}

TEST(CProps, Add_ChainsAndKeepsTheOrder) {
    const ul::CProps props = ul::CProps().add("b", "1").add("a", "2").add("b", "3");
    EXPECT_EQ(props.getCount(), 3);
    EXPECT_TRUE(props.getName(0) == "b" && props.getName(1) == "a" && props.getValue(2) == "3");
}

TEST(CProps, TryGet_GivesTheFirstOfAName) {
    const ul::CProps props = ul::CProps().add("b", "1").add("b", "3");
    ul::String value("old");
    EXPECT_FALSE(props.tryGet("a", value));
    EXPECT_TRUE(value == "old");
    EXPECT_TRUE(props.tryGet("b", value));
    EXPECT_TRUE(value == "1");
}

} // namespace sarn_test
