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

TEST(Model, WithoutDependents_HasNoListAndChangedSendsNothing) {
    Model model;
    model.changed(aspectValue);
    EXPECT_FALSE(model.hasDependents());
    EXPECT_EQ(model.dependents(), nullptr);
}

TEST(Model, AddingTwice_LeavesOneEntryAndRemovingDropsBothLists) {
    std::vector<std::string> log;
    Model model;
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
}

TEST(Model, Changed_ReachesEveryDependentInOrderAdded) {
    std::vector<std::string> log;
    Model model;
    Recorder a("a", log), b("b", log), c("c", log);
    model.addDependent(b);
    model.addDependent(a);
    model.addDependent(c);
    model.changed(aspectContents);
    EXPECT_EQ(log, (std::vector<std::string>{"b:Model:4", "a:Model:4", "c:Model:4"}));
}

TEST(Model, DestroyingEitherSide_UnlinksTheOther) {
    std::vector<std::string> log;
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

TEST(Model, Changed_SurvivesDependentsLeavingDuringTheirUpdate) {
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
        std::vector<std::string> log;
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

TEST(Model, Changed_WithMoreDependentsThanTheInlineSnapshot) {
    std::vector<std::string> log;
    Model model;
    std::vector<std::unique_ptr<Recorder>> many;
    for (int i = 0; i < 40; ++i) {
        many.push_back(std::make_unique<Recorder>("r", log));
        model.addDependent(*many.back());
    }
    model.changed(aspectAll);
    EXPECT_EQ(log.size(), 40u);
}

TEST(Model, ForwardingOverloads_ReachTheGeneralOverload) {
    std::vector<std::string> log;
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

TEST(Model, Relay_TellsOwnDependentsAsIfTheyDependedOnTheSource) {
    std::vector<std::string> log;
    Model relayer;
    VerticalScrollBar source;
    Recorder d("d", log);
    relayer.addDependent(d);
    relayer.relay(source, aspectVisibleArea);
    EXPECT_EQ(log, (std::vector<std::string>{"d:ScrollBar:3"}));
    EXPECT_FALSE(source.hasDependents());
}

TEST(Model, DependentAsModel_ChainsNotification) {
    std::vector<std::string> log;
    Model model;
    Recorder middle("m", log), last("l", log);
    model.addDependent(middle);
    middle.addDependent(last);
    EXPECT_TRUE(middle.isDependent());
    EXPECT_TRUE(middle.hasDependents());
    EXPECT_TRUE(last.models()->contains(&middle));
}

TEST(Model, ImageFor_FindsTheDependentShowingTheObject) {
    std::vector<std::string> log;
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
