#include "core/Collections.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Named {
    std::string name;
    static const char* keyOf(const Named& n) { return n.name.c_str(); }
};

struct CountsDeletes {
    explicit CountsDeletes(int& deletes) : m_deletes(deletes) {}
    ~CountsDeletes() { ++m_deletes; }
    int& m_deletes;
};

TEST(OrderedCollection, KeepsOrderAndRemovesByIdentity) {
    Named a{"a"}, b{"b"}, c{"c"};
    OC_<Named> list;
    EXPECT_TRUE(list.isEmpty());
    list.add(&a);
    list.add(&c);
    list.insertAt(1, &b);
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list[0], &a);
    EXPECT_EQ(list.at(1), &b);
    EXPECT_EQ(list.indexOf(&c), 2);
    EXPECT_TRUE(list.remove(&b));
    EXPECT_FALSE(list.remove(&b));
    EXPECT_FALSE(list.contains(&b));
    EXPECT_EQ(list.removeAt(0), &a);
    std::string names;
    for (Named* n : list)
        names += n->name;
    EXPECT_EQ(names, "c");
}

TEST(OrderedCollection, DeleteContentsDeletesEveryElement) {
    int deletes = 0;
    OC_<CountsDeletes> list;
    list.add(new CountsDeletes(deletes));
    list.add(new CountsDeletes(deletes));
    list.deleteContents();
    EXPECT_EQ(deletes, 2);
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
    EXPECT_EQ(table.size(), 2);
    int visited = 0;
    table.forEach([&visited](Named&) { ++visited; });
    EXPECT_EQ(visited, 2);
    EXPECT_EQ(table.remove("DATA"), &data);
    EXPECT_EQ(table.remove("DATA"), nullptr);
    EXPECT_EQ(table.size(), 1);
}

} // namespace
