#include "core/Model.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Log = std::vector<std::string>;

// A dependent that logs which overload each update reached. On a Model update it may remove
// a dependent from the model, or destroy one outright.
class Recorder : public Dependent {
public:
    Recorder(std::string name, Log& log) : m_name(std::move(name)), m_log(log) {}

    void update(Model& model, Aspect a) override {
        m_log.push_back(m_name + ":Model:" + std::to_string(a));
        if (m_removeFromModel)
            model.removeDependent(*m_removeFromModel);
        m_destroy.reset();
    }
    void update(ScrollBar&, Aspect a) override {
        m_log.push_back(m_name + ":ScrollBar:" + std::to_string(a));
    }
    bool isImageFor(const TqObject& object) const override { return &object == m_shown; }

    const TqObject* m_shown = nullptr;
    Dependent* m_removeFromModel = nullptr;
    std::unique_ptr<Dependent> m_destroy;

private:
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

struct LeavingCase {
    const char* what;
    int updater;   // the dependent whose update does it, or -1
    int removed;   // the dependent it removes from the model, or -1
    int destroyed; // the dependent it destroys, or -1
    int skipped;   // the dependent not told, or -1
};

// Dependents are told in the order added (allocated last-first, so not in address order),
// with few and with more than the snapshot held on the stack. One removed during the round is
// skipped, whether removed or destroyed; one told already, or that removes itself, is not told
// twice.
class ModelChanged : public ModelTest,
                     public ::testing::WithParamInterface<std::tuple<LeavingCase, int>> {};

TEST_P(ModelChanged, TellsEveryDependentOnceInOrderAddedWhileSomeLeave) {
    const auto& [c, count] = GetParam();
    Model model;
    std::vector<std::unique_ptr<Recorder>> owned(count);
    for (int i = count - 1; i >= 0; --i)
        owned[i] = std::make_unique<Recorder>(std::to_string(i), log);
    std::vector<Recorder*> all;
    Log expected;
    for (int i = 0; i < count; ++i) {
        all.push_back(owned[i].get());
        model.addDependent(*all.back());
        if (i != c.skipped)
            expected.push_back(std::to_string(i) + ":Model:1");
    }
    if (c.removed >= 0)
        all[c.updater]->m_removeFromModel = all[c.removed];
    if (c.destroyed >= 0)
        all[c.updater]->m_destroy = std::move(owned[c.destroyed]);
    model.changed(aspectValue);
    EXPECT_EQ(log, expected);
    if (c.removed >= 0) {
        EXPECT_FALSE(model.dependents()->contains(all[c.removed]));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ModelChanged,
    ::testing::Combine(::testing::Values(LeavingCase{"none", -1, -1, -1, -1},
                                         LeavingCase{"itself", 1, 1, -1, -1},
                                         LeavingCase{"later", 1, 2, -1, 2},
                                         LeavingCase{"earlier", 2, 0, -1, -1},
                                         LeavingCase{"destroyed", 0, -1, 3, 3}),
                       ::testing::Values(4, 40)),
    [](const auto& info) {
        return std::get<0>(info.param).what + std::to_string(std::get<1>(info.param));
    });

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
