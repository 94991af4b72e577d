#include "core/Model.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

// A dependent that records, in a shared log, which overload each update reached.
class Recorder : public Dependent {
public:
    Recorder(std::string name, std::vector<std::string>& log)
        : m_name(std::move(name)), m_log(log) {}

    void update(Model&, Aspect a) override { record("Model", a); }
    void update(ScrollBar&, Aspect a) override { record("ScrollBar", a); }
    bool isImageFor(const TqObject& object) const override { return &object == m_shown; }

    const TqObject* m_shown = nullptr;

protected:
    void record(const char* overload, Aspect a) {
        m_log.push_back(m_name + ":" + overload + ":" + std::to_string(a));
    }

private:
    std::string m_name;
    std::vector<std::string>& m_log;
};

class ModelTest : public ::testing::Test {
protected:
    std::vector<std::string> log;
};

TEST_F(ModelTest, DependentLists_ExistOnlyWhileADependentIsAddedAndHoldItOnce) {
    Model model;
    model.changed(aspectValue); // no dependents: nothing is sent
    EXPECT_FALSE(model.hasDependents());
    EXPECT_EQ(model.dependents(), nullptr);
    Recorder d("d", log);
    model.addDependent(d);
    model.addDependent(d);
    ASSERT_TRUE(model.hasDependents());
    EXPECT_EQ(model.dependents()->size(), 1);
    EXPECT_EQ(d.models()->size(), 1);
    model.removeDependent(d);
    EXPECT_FALSE(model.hasDependents());
    EXPECT_FALSE(d.isDependent());
    model.removeDependent(d); // not a dependent any more: nothing happens
    EXPECT_TRUE(log.empty());
}

// More dependents than the inline snapshot holds, added in an order unlike their names.
TEST_F(ModelTest, Changed_ReachesEveryDependentInOrderAdded) {
    Model model;
    std::vector<std::unique_ptr<Recorder>> many;
    std::vector<std::string> expected;
    for (int i = 0; i < 40; ++i) {
        const std::string name = std::to_string((i * 7) % 40);
        many.push_back(std::make_unique<Recorder>(name, log));
        model.addDependent(*many.back());
        expected.push_back(name + ":Model:4");
    }
    model.changed(aspectContents);
    EXPECT_EQ(log, expected);
}

TEST_F(ModelTest, DestroyingEitherSide_UnlinksTheOther) {
    Model first, second;
    {
        Recorder d("d", log);
        first.addDependent(d);
        second.addDependent(d);
    }
    EXPECT_FALSE(first.hasDependents());
    EXPECT_FALSE(second.hasDependents());

    Recorder d("d", log);
    {
        Model model;
        model.addDependent(d);
        first.addDependent(d);
        EXPECT_EQ(d.models()->size(), 2);
    }
    EXPECT_EQ(d.models()->size(), 1);
    d.removeAllDependencies();
    EXPECT_FALSE(d.isDependent());
    EXPECT_FALSE(first.hasDependents());
}

// A dependent that, on update, removes a target (itself or another) from the model, or
// destroys another dependent outright.
class Remover : public Recorder {
public:
    using Recorder::Recorder;
    void update(Model& model, Aspect a) override {
        record("Model", a);
        if (m_removeFromModel)
            model.removeDependent(*m_removeFromModel);
        m_destroy.reset();
    }
    Dependent* m_removeFromModel = nullptr;
    std::unique_ptr<Dependent> m_destroy;
};

TEST_F(ModelTest, Changed_SurvivesDependentsLeavingDuringTheirUpdate) {
    struct Case {
        const char* what;
        int remover;   // index of the Remover among the four dependents
        int target;    // index it removes from the model, or -1
        int destroyed; // index it destroys, or -1
        std::vector<std::string> expected;
    };
    const std::vector<Case> cases = {
        {"removes itself", 1, 1, -1, {"0:Model:1", "1:Model:1", "2:Model:1", "3:Model:1"}},
        {"removes a later one", 1, 2, -1, {"0:Model:1", "1:Model:1", "3:Model:1"}},
        {"removes an earlier one", 2, 0, -1, {"0:Model:1", "1:Model:1", "2:Model:1", "3:Model:1"}},
        {"destroys a later one", 0, -1, 3, {"0:Model:1", "1:Model:1", "2:Model:1"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        log.clear();
        Model model;
        std::vector<std::unique_ptr<Dependent>> owned;
        std::vector<Dependent*> all;
        for (int i = 0; i < 4; ++i) {
            if (i == c.remover)
                owned.push_back(std::make_unique<Remover>(std::to_string(i), log));
            else
                owned.push_back(std::make_unique<Recorder>(std::to_string(i), log));
            all.push_back(owned.back().get());
            model.addDependent(*all.back());
        }
        auto& remover = static_cast<Remover&>(*all[c.remover]);
        if (c.target >= 0)
            remover.m_removeFromModel = all[c.target];
        if (c.destroyed >= 0)
            remover.m_destroy = std::move(owned[c.destroyed]);
        model.changed(aspectValue);
        EXPECT_EQ(log, c.expected);
        if (c.target >= 0) {
            EXPECT_FALSE(model.dependents()->contains(all[c.target]));
        }
    }
}

TEST_F(ModelTest, ForwardingOverloads_ReachTheGeneralOverload) {
    Recorder d("d", log);
    VerticalScrollBar vertical;
    HorizontalScrollBar horizontal;
    ScrollBar plain;
    TreeNode node;
    ColumnControl column;
    ViewedFile file;
    DebuggerData data;
    for (iModel* m :
         std::vector<iModel*>{&vertical, &horizontal, &plain, &node, &column, &file, &data}) {
        m->addDependent(d);
        m->changed(aspectValue);
    }
    EXPECT_EQ(log, (std::vector<std::string>{"d:ScrollBar:1", "d:ScrollBar:1", "d:ScrollBar:1",
                                             "d:Model:1", "d:Model:1", "d:Model:1", "d:Model:1"}));
}

TEST_F(ModelTest, Relay_TellsOwnDependentsAsIfTheyDependedOnTheSource) {
    Model relayer;
    VerticalScrollBar source;
    Recorder d("d", log);
    relayer.addDependent(d);
    relayer.relay(source, aspectVisibleArea);
    EXPECT_EQ(log, (std::vector<std::string>{"d:ScrollBar:3"}));
    EXPECT_FALSE(source.hasDependents());
}

TEST_F(ModelTest, DependentAsModel_ChainsNotification) {
    Model model;
    Recorder middle("m", log), last("l", log);
    model.addDependent(middle);
    middle.addDependent(last);
    EXPECT_TRUE(middle.isDependent());
    EXPECT_TRUE(middle.hasDependents());
    EXPECT_TRUE(last.models()->contains(&middle));
}

TEST_F(ModelTest, ImageFor_FindsTheDependentShowingTheObject) {
    Model model, shown, other;
    Recorder a("a", log), b("b", log);
    b.m_shown = &shown;
    EXPECT_EQ(model.imageFor(shown), nullptr);
    model.addDependent(a);
    model.addDependent(b);
    EXPECT_EQ(model.imageFor(shown), &b);
    EXPECT_EQ(model.imageFor(other), nullptr);
}

} // namespace
