#include "core/Collections.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Named {
    std::string name;
    static inline int deletes = 0;
    ~Named() { ++deletes; }
    static const char* keyOf(const Named& n) { return n.name.c_str(); }
};

TEST(OrderedCollection, KeepsOrderRemovesByIdentityAndDeletesOnlyWhenTold) {
    Named a{"a"}, b{"b"}, c{"c"};
    OC_<Named> list;
    list.add(&a);
    list.add(&c);
    list.insertAt(1, &b);
    EXPECT_EQ(list.indexOf(&c), 2);
    EXPECT_TRUE(list.remove(&b));
    EXPECT_FALSE(list.remove(&b));
    EXPECT_EQ(list.removeAt(0), &a);
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list[0], &c);

    const int deletes = Named::deletes;
    list.clear();
    list.add(new Named{"x"});
    list.add(new Named{"y"});
    list.deleteContents();
    EXPECT_EQ(Named::deletes, deletes + 2);
    EXPECT_TRUE(list.isEmpty());
}

TEST(HashedCollection, FindsByExactKeyAndRefusesDuplicates) {
    Named clk{"CLK"}, other{"CLK"}, data{"DATA"};
    HC_<Named> table(&Named::keyOf);
    EXPECT_TRUE(table.add(&clk));
    EXPECT_FALSE(table.add(&other)) << "a taken key is refused";
    EXPECT_TRUE(table.add(&data));
    EXPECT_EQ(table.find("CLK"), &clk);
    EXPECT_EQ(table.find("clk"), nullptr) << "keys are case-sensitive";
    EXPECT_EQ(table.find(nullptr), nullptr);
    int visited = 0;
    table.forEach([&visited](Named&) { ++visited; });
    EXPECT_EQ(visited, 2);
    EXPECT_EQ(table.remove("DATA"), &data);
    EXPECT_EQ(table.remove("DATA"), nullptr);
    EXPECT_EQ(table.size(), 1);
}

} // namespace
