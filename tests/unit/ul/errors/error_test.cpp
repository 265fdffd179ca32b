// SPDX-License-Identifier: Apache-2.0
#include "support/expect.h"

#include "ul/error.h"

#include <typeinfo>

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

} // namespace sarn_test
