#include "wsi/TqAction.h"

#include <QAction>

TqAction::TqAction(int id, const char* text, QObject* parent)
    : m_id(id), m_text(text ? text : ""),
      m_action(new QAction(QString::fromUtf8(m_text.c_str()), parent)) {}

TqAction::~TqAction() {
    delete m_action.data();
}

bool TqAction::isEnabled() const {
    return m_action && m_action->isEnabled();
}

void TqAction::setEnabled(bool enabled) {
    if (m_action)
        m_action->setEnabled(enabled);
}

void TqAction::setText(const char* text) {
    m_text = text ? text : "";
    if (m_action)
        m_action->setText(QString::fromUtf8(m_text.c_str()));
}

TqAction* TqActionTable::add(int id, const char* text, QObject* parent) {
    auto [position, added] = m_actions.try_emplace(id);
    if (!added)
        return nullptr;
    position->second = std::make_unique<TqAction>(id, text, parent);
    return position->second.get();
}

TqAction* TqActionTable::find(int id) const {
    auto found = m_actions.find(id);
    return found == m_actions.end() ? nullptr : found->second.get();
}

bool TqActionTable::enable(int id, bool enabled) {
    TqAction* action = find(id);
    if (action)
        action->setEnabled(enabled);
    return action != nullptr;
}

bool TqActionTable::setText(int id, const char* text) {
    TqAction* action = find(id);
    if (action)
        action->setText(text);
    return action != nullptr;
}

bool TqActionTable::isEnabled(int id) const {
    const TqAction* action = find(id);
    return action && action->isEnabled();
}
