#include "core/TqObject.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <sstream>
#include <string>

namespace {

// Prints a text of its own, and counts how many were deleted.
class Printed : public TqObject {
public:
    explicit Printed(std::string text) : m_text(std::move(text)) {}
    ~Printed() override { ++deletes; }
    std::ostream& printOn(std::ostream& out) const override { return out << m_text; }
    static inline int deletes = 0;

private:
    std::string m_text;
};

TEST(StaticBufferRing, AdvancesModuloEightAndFitsOnlyByGrowing) {
    TqObject::startUp();
    char* first = TqObject::nextStaticBuffer();
    EXPECT_EQ(TqObject::staticBufferLength(), 4096);
    EXPECT_EQ(TqObject::fitStaticBuffer(100), first);
    EXPECT_EQ(TqObject::staticBufferLength(), 4096);

    std::memset(first, 'q', 4096);
    char* grown = TqObject::fitStaticBuffer(5000);
    EXPECT_EQ(TqObject::staticBufferLength(), 5000);
    EXPECT_EQ(std::string(grown, 4096), std::string(4096, 'q'));
    EXPECT_EQ(TqObject::fitStaticBuffer(4500), grown) << "a grown buffer never shrinks";

    std::set<char*> others;
    for (int i = 0; i < 7; ++i)
        others.insert(TqObject::nextStaticBuffer());
    EXPECT_EQ(others.size(), 7u);
    EXPECT_EQ(others.count(grown), 0u);
    EXPECT_EQ(TqObject::nextStaticBuffer(), grown) << "the ninth advance returns the first";
    EXPECT_EQ(TqObject::staticBuffer(), grown);
    EXPECT_EQ(TqObject::staticBufferLength(), 5000) << "the buffer keeps its grown size";
}

TEST(TqObjectBase, PrintsIntoTheRingComparesByAddressAndDeletesThroughTheDestructor) {
    TqObject pair[2];
    const char* text = pair[0].asString();
    EXPECT_STREQ(text, " Object");
    EXPECT_EQ(text, TqObject::staticBuffer());
    std::ostringstream stored;
    Criteria criteria;
    pair[0].storeOn(stored, criteria);
    EXPECT_EQ(stored.str(), " Object");
    EXPECT_EQ(std::strlen(Printed(std::string(6000, 'z')).asString()), 6000u) << "grown to fit";

    EXPECT_TRUE(pair[0] < pair[1]);
    EXPECT_TRUE(pair[1] > pair[0]);
    EXPECT_FALSE(pair[0] > pair[1]);
    EXPECT_TRUE(pair[0] == pair[0]);
    EXPECT_TRUE(pair[0] != pair[1]);
    TqObject copy = pair[0];
    EXPECT_FALSE(copy == pair[0]) << "a copy is another object";

    const int deletes = Printed::deletes;
    EXPECT_TRUE((new Printed(""))->maybeDelete());
    EXPECT_EQ(Printed::deletes, deletes + 1) << "deleted through the virtual destructor";
}

} // namespace
