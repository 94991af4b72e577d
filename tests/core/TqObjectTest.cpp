#include "core/TqObject.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

namespace {

class Printed : public TqObject {
public:
    explicit Printed(std::string text) : m_text(std::move(text)) {}
    std::ostream& printOn(std::ostream& out) const override { return out << m_text; }

private:
    std::string m_text;
};

class CountsDeletes : public TqObject {
public:
    explicit CountsDeletes(int& deletes) : m_deletes(deletes) {}
    ~CountsDeletes() override { ++m_deletes; }

private:
    int& m_deletes;
};

TEST(StaticBufferRing, NinthAdvanceReturnsTheFirstBufferAgain) {
    char* first = TqObject::nextStaticBuffer();
    for (int i = 0; i < 7; ++i)
        EXPECT_NE(TqObject::nextStaticBuffer(), first);
    EXPECT_EQ(TqObject::nextStaticBuffer(), first);
    EXPECT_EQ(TqObject::staticBuffer(), first);
}

TEST(StaticBufferRing, FitOnlyGrowsAndKeepsTheOldContents) {
    TqObject::startUp();
    char* buffer = TqObject::nextStaticBuffer();
    EXPECT_EQ(TqObject::staticBufferLength(), 4096);
    EXPECT_EQ(TqObject::fitStaticBuffer(100), buffer);
    EXPECT_EQ(TqObject::staticBufferLength(), 4096);

    std::memset(buffer, 'q', 4096);
    char* grown = TqObject::fitStaticBuffer(5000);
    EXPECT_EQ(TqObject::staticBufferLength(), 5000);
    EXPECT_EQ(std::string(grown, 4096), std::string(4096, 'q'));

    EXPECT_EQ(TqObject::fitStaticBuffer(4500), grown) << "a grown buffer never shrinks";
    EXPECT_EQ(TqObject::staticBufferLength(), 5000);
    for (int i = 0; i < 8; ++i)
        TqObject::nextStaticBuffer();
    EXPECT_EQ(TqObject::staticBufferLength(), 5000) << "the buffer keeps its grown size";
}

TEST(StaticBufferRing, CopyToNextStaticBufferGrowsForLongText) {
    const std::string longText(10000, 'x');
    const char* copy = TqObject::copyToNextStaticBuffer(longText);
    EXPECT_EQ(copy, longText);
    EXPECT_GE(TqObject::staticBufferLength(), 10001);
}

TEST(TqObjectBase, PrintsObjectWithLeadingBlankAndStoresThePrintedForm) {
    TqObject object;
    EXPECT_STREQ(object.asString(), " Object");
    std::ostringstream stored;
    Criteria criteria;
    object.storeOn(stored, criteria);
    EXPECT_EQ(stored.str(), " Object");
}

TEST(TqObjectBase, AsStringTakesTheNextRingBufferAndGrowsForLongForms) {
    Printed shortForm("abc");
    const char* text = shortForm.asString();
    EXPECT_EQ(text, TqObject::staticBuffer());
    EXPECT_STREQ(text, "abc");

    Printed longForm(std::string(6000, 'z'));
    EXPECT_EQ(std::strlen(longForm.asString()), 6000u);
}

TEST(TqObjectBase, ComparisonsAreByAddressAndEqualityIsIdentity) {
    TqObject pair[2];
    EXPECT_TRUE(pair[0] < pair[1]);
    EXPECT_TRUE(pair[1] > pair[0]);
    EXPECT_FALSE(pair[0] > pair[1]);
    EXPECT_TRUE(pair[0] == pair[0]);
    EXPECT_FALSE(pair[0] == pair[1]);
    EXPECT_TRUE(pair[0] != pair[1]);

    TqObject copy = pair[0];
    EXPECT_FALSE(copy == pair[0]) << "a copy is another object";
}

TEST(TqObjectBase, MaybeDeleteDeletesThroughTheVirtualDestructor) {
    int deletes = 0;
    TqObject* object = new CountsDeletes(deletes);
    EXPECT_TRUE(object->maybeDelete());
    EXPECT_EQ(deletes, 1);
}

} // namespace
