/// TqAction and TqActionTable: a command of a window (a menu item or toolbar button) known
/// by its integer identifier, and the table of them that a window or a menu keeps.
#pragma once

#include "core/TqExport.h"

#include <QPointer>
#include <QString>

#include <map>
#include <memory>
#include <string>

class QAction;
class QObject;

/// One command: its identifier, text and enabled state, shown through a QAction that every
/// menu and toolbar holding the command shares.
class TQ_EXPORT TqAction {
public:
    /// A command with the text (UTF-8, "&" marks the mnemonic), enabled; its QAction is a
    /// child of parent, which deletes it.
    TqAction(int id, const char* text, QObject* parent);
    ~TqAction();
    TqAction(const TqAction&) = delete;
    TqAction& operator=(const TqAction&) = delete;

    /// The identifier the command was made with.
    int id() const { return m_id; }
    /// The QAction, or null once its parent has deleted it.
    QAction* qAction() const { return m_action; }

    ///@{
    /// Whether the command can be chosen; disabled, its menu item and buttons are greyed.
    bool isEnabled() const;
    void setEnabled(bool enabled);
    ///@}
    /// The text as it was set, in a buffer the action owns until the next setText().
    const char* text() const { return m_text.c_str(); }
    /// Replaces the text (UTF-8, "&" marks the mnemonic; null is empty).
    void setText(const char* text);

private:
    int m_id;
    std::string m_text;
    QPointer<QAction> m_action;
};

/// The commands of a window or menu by identifier. The table owns its TqActions.
class TQ_EXPORT TqActionTable {
public:
    /// Makes a command under id with its QAction a child of parent. Null, and nothing
    /// changes, when the identifier is already in use.
    TqAction* add(int id, const char* text, QObject* parent);
    /// The command under id, or null.
    TqAction* find(int id) const;
    /// Whether a command has the identifier.
    bool contains(int id) const { return find(id) != nullptr; }
    /// The number of commands.
    int size() const { return static_cast<int>(m_actions.size()); }

    ///@{
    /// Each returns false, changing nothing, when no command has the identifier.
    bool enable(int id, bool enabled);
    bool setText(int id, const char* text);
    ///@}
    /// Whether the command exists and is enabled.
    bool isEnabled(int id) const;

private:
    std::map<int, std::unique_ptr<TqAction>> m_actions;
};
