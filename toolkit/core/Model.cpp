#include "core/Model.h"

#include <array>
#include <vector>

iModel::~iModel() {
    if (!m_dependents)
        return;
    const std::unique_ptr<OC_<Dependent>> dependents = std::move(m_dependents);
    for (Dependent* d : *dependents)
        d->primitiveRemoveModel(*this);
}

void iModel::addDependent(Dependent& d) {
    if (!m_dependents)
        m_dependents = std::make_unique<OC_<Dependent>>();
    if (m_dependents->contains(&d))
        return;
    m_dependents->add(&d);
    d.primitiveAddModel(*this);
}

void iModel::removeDependent(Dependent& d) {
    if (!m_dependents || !m_dependents->contains(&d))
        return;
    primitiveRemoveDependent(d);
    d.primitiveRemoveModel(*this);
}

void iModel::primitiveRemoveDependent(Dependent& d) {
    if (!m_dependents)
        return;
    if (m_dependents->remove(&d))
        ++m_removals;
    if (m_dependents->isEmpty())
        m_dependents.reset();
}

// Runs f on a snapshot of the dependents, skipping any that left the list meanwhile. Lists
// are short; a snapshot of up to 16 stays on the stack so that notifying allocates nothing.
template <class F>
void iModel::forEachDependent(F f) {
    if (!m_dependents)
        return;
    constexpr int inlineCount = 16;
    const int count = m_dependents->size();
    std::array<Dependent*, inlineCount> inlineSnapshot;
    std::vector<Dependent*> heapSnapshot;
    Dependent** snapshot = inlineSnapshot.data();
    if (count > inlineCount) {
        heapSnapshot.assign(m_dependents->begin(), m_dependents->end());
        snapshot = heapSnapshot.data();
    } else {
        std::copy(m_dependents->begin(), m_dependents->end(), snapshot);
    }
    const unsigned removals = m_removals;
    for (int i = 0; i < count; ++i) {
        if (m_removals == removals || (m_dependents && m_dependents->contains(snapshot[i])))
            f(*snapshot[i]);
    }
}

void iModel::changed(Aspect a) {
    forEachDependent([this, a](Dependent& d) { sendUpdateTo(d, a); });
}

void iModel::relay(iModel& source, Aspect a) {
    forEachDependent([&source, a](Dependent& d) { source.sendUpdateTo(d, a); });
}

void iModel::sendUpdateTo(Dependent&, Aspect) {}

Dependent* Model::imageFor(const TqObject& object) const {
    if (!dependents())
        return nullptr;
    for (Dependent* d : *dependents()) {
        if (d->isImageFor(object))
            return d;
    }
    return nullptr;
}

void Model::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}

Dependent::~Dependent() {
    removeAllDependencies();
}

void Dependent::primitiveAddModel(iModel& model) {
    if (!m_models)
        m_models = std::make_unique<OC_<iModel>>();
    if (!m_models->contains(&model))
        m_models->add(&model);
}

void Dependent::primitiveRemoveModel(iModel& model) {
    if (!m_models)
        return;
    m_models->remove(&model);
    if (m_models->isEmpty())
        m_models.reset();
}

void Dependent::removeAllDependencies() {
    if (!m_models)
        return;
    const std::unique_ptr<OC_<iModel>> models = std::move(m_models);
    for (iModel* model : *models)
        model->primitiveRemoveDependent(*this);
}

bool Dependent::isImageFor(const TqObject&) const {
    return false;
}

void Dependent::update(Model&, Aspect) {}
void Dependent::update(Unit&, Aspect) {}
void Dependent::update(ScrollBar&, Aspect) {}
void Dependent::update(VerticalScrollBar& bar, Aspect a) {
    update(static_cast<ScrollBar&>(bar), a);
}
void Dependent::update(HorizontalScrollBar& bar, Aspect a) {
    update(static_cast<ScrollBar&>(bar), a);
}
void Dependent::update(wsiDevice&, Aspect) {}
void Dependent::update(StatusBarField&, Aspect) {}
void Dependent::update(StatusBar&, Aspect) {}
void Dependent::update(ColumnControl& control, Aspect a) {
    update(static_cast<Model&>(control), a);
}
void Dependent::update(TreeNode& node, Aspect a) {
    update(static_cast<Model&>(node), a);
}
void Dependent::update(ViewedFile& file, Aspect a) {
    update(static_cast<Model&>(file), a);
}
void Dependent::update(FormalConfigParam&, Aspect) {}
void Dependent::update(FormalConfigSet&, Aspect) {}
void Dependent::update(ActualConfigParam&, Aspect) {}
void Dependent::update(ActualConfigComponentSet&, Aspect) {}
void Dependent::update(DebuggerData& data, Aspect a) {
    update(static_cast<Model&>(data), a);
}

void ScrollBar::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}
void VerticalScrollBar::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}
void HorizontalScrollBar::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}
void ColumnControl::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}
void TreeNode::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}
void ViewedFile::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}
void DebuggerData::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}
