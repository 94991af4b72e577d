#include "core/Model.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Log = std::vector<std::string>;

// A dependent that logs which overload each update reached. On a Model update it may remove
// a dependent from the model, or destroy one outright.
class Recorder : public Dependent {
public:
    Recorder(std::string name, Log& log) : m_name(std::move(name)), m_log(log) {}

    void update(Model& model, Aspect a) override {
        record("Model", a);
        if (m_removeFromModel)
            model.removeDependent(*m_removeFromModel);
        m_destroy.reset();
    }
    void update(ScrollBar&, Aspect a) override { record("ScrollBar", a); }
    bool isImageFor(const TqObject& object) const override { return &object == m_shown; }

    const TqObject* m_shown = nullptr;
    Dependent* m_removeFromModel = nullptr;
    std::unique_ptr<Dependent> m_destroy;

private:
    void record(const char* overload, Aspect a) {
        m_log.push_back(m_name + ":" + overload + ":" + std::to_string(a));
    }

    std::string m_name;
    Log& m_log;
};

class ModelTest : public ::testing::Test {
protected:
    Log log;
};

TEST_F(ModelTest, LinksAreTwoSidedAndListsExistOnlyWhileLinked) {
    Model model, other;
    model.changed(aspectValue);
    EXPECT_EQ(model.dependents(), nullptr) << "no list, and nothing sent, without dependents";
    Recorder d("d", log);
    model.addDependent(d);
    model.addDependent(d);
    ASSERT_TRUE(model.hasDependents());
    EXPECT_EQ(model.dependents()->size(), 1) << "adding twice has no effect";
    EXPECT_EQ(d.models()->size(), 1);
    model.removeDependent(d);
    EXPECT_FALSE(model.hasDependents());
    EXPECT_FALSE(d.isDependent());
    model.removeDependent(d);

    {
        Recorder leaving("leaving", log);
        model.addDependent(leaving);
        other.addDependent(leaving);
    }
    EXPECT_FALSE(model.hasDependents()) << "a destroyed dependent leaves every model";
    EXPECT_FALSE(other.hasDependents());
    {
        Model leaving;
        leaving.addDependent(d);
        other.addDependent(d);
    }
    EXPECT_EQ(d.models()->size(), 1) << "a destroyed model leaves its dependents";
    d.removeAllDependencies();
    EXPECT_FALSE(d.isDependent());
    EXPECT_FALSE(other.hasDependents());
    EXPECT_TRUE(log.empty());
}

// More dependents than the snapshot held on the stack, added in an order unlike their names.
TEST_F(ModelTest, ChangedReachesEveryDependentInOrderAdded) {
    Model model;
    std::vector<std::unique_ptr<Recorder>> many;
    Log expected;
    for (int i = 0; i < 40; ++i) {
        const std::string name = std::to_string((i * 7) % 40);
        many.push_back(std::make_unique<Recorder>(name, log));
        model.addDependent(*many.back());
        expected.push_back(name + ":Model:4");
    }
    model.changed(aspectContents);
    EXPECT_EQ(log, expected);
}

struct LeavingCase {
    const char* what;
    int updater;   // the dependent whose update does it
    int removed;   // the dependent it removes from the model, or -1
    int destroyed; // the dependent it destroys, or -1
    Log expected;
};

class ModelChanged : public ModelTest, public ::testing::WithParamInterface<LeavingCase> {};

// One removed during the round is skipped, whether removed or destroyed; one that was told
// already, or that removes itself, is not told twice.
TEST_P(ModelChanged, SurvivesDependentsLeavingDuringTheirUpdate) {
    const LeavingCase& c = GetParam();
    Model model;
    std::vector<std::unique_ptr<Recorder>> owned;
    std::vector<Recorder*> all;
    for (int i = 0; i < 4; ++i) {
        owned.push_back(std::make_unique<Recorder>(std::to_string(i), log));
        all.push_back(owned.back().get());
        model.addDependent(*all.back());
    }
    if (c.removed >= 0)
        all[c.updater]->m_removeFromModel = all[c.removed];
    if (c.destroyed >= 0)
        all[c.updater]->m_destroy = std::move(owned[c.destroyed]);
    model.changed(aspectValue);
    EXPECT_EQ(log, c.expected);
    if (c.removed >= 0) {
        EXPECT_FALSE(model.dependents()->contains(all[c.removed]));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ModelChanged,
    ::testing::ValuesIn(std::vector<LeavingCase>{
        {"itself", 1, 1, -1, {"0:Model:1", "1:Model:1", "2:Model:1", "3:Model:1"}},
        {"later", 1, 2, -1, {"0:Model:1", "1:Model:1", "3:Model:1"}},
        {"earlier", 2, 0, -1, {"0:Model:1", "1:Model:1", "2:Model:1", "3:Model:1"}},
        {"destroyed", 0, -1, 3, {"0:Model:1", "1:Model:1", "2:Model:1"}},
    }),
    [](const auto& info) { return std::string(info.param.what); });

TEST_F(ModelTest, UpdatesReachTheOverloadOfTheModelsClassOrTheOneItForwardsTo) {
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
    Model relayer;
    VerticalScrollBar source;
    relayer.addDependent(d);
    relayer.relay(source, aspectVisibleArea);
    EXPECT_EQ(log, (Log{"d:ScrollBar:1", "d:ScrollBar:1", "d:ScrollBar:1", "d:Model:1", "d:Model:1",
                        "d:Model:1", "d:Model:1", "d:ScrollBar:3"}))
        << "relay tells the relayer's dependents as if they depended on the source";
}

TEST_F(ModelTest, DependentsChainAndImageForFindsTheOneShowingAnObject) {
    Model model, shown, other;
    Recorder a("a", log), b("b", log);
    model.addDependent(a);
    a.addDependent(b);
    EXPECT_TRUE(a.isDependent() && a.hasDependents());
    EXPECT_TRUE(b.models()->contains(&a));

    EXPECT_EQ(model.imageFor(shown), nullptr);
    b.m_shown = &shown;
    model.addDependent(b);
    EXPECT_EQ(model.imageFor(shown), &b);
    EXPECT_EQ(model.imageFor(other), nullptr);
}

} // namespace
