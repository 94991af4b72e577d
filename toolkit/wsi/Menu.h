/// Menu: a pull-down or pop-up menu of commands known by identifier, over a QMenu.
#pragma once

#include "core/TqExport.h"
#include "wsi/TqAction.h"

#include <memory>

class QMenu;

/// Menu: a menu of commands (TqAction) over a QMenu, its items kept by identifier.
class TQ_EXPORT Menu {
public:
    /// A menu with the title (UTF-8, "&" marks the mnemonic) whose items join table, usually
    /// a window's actions, so that the window finds them by identifier; with a null table the
    /// menu keeps a table of its own.
    explicit Menu(const char* title, TqActionTable* table = nullptr);
    ~Menu();
    Menu(const Menu&) = delete;
    Menu& operator=(const Menu&) = delete;

    /// The Qt menu, owned by this Menu, to put in a menu bar or pop up.
    QMenu* qMenu() const { return m_menu.get(); }
    ///@{
    /// The table the items live in.
    TqActionTable& items() { return *m_table; }
    const TqActionTable& items() const { return *m_table; }
    ///@}

    /// Appends a command, enabled. Null, and nothing is appended, when the identifier is
    /// already in use in the table.
    TqAction* addItem(int id, const char* text);
    /// Appends a separator line.
    void addSeparator();

    ///@{
    /// Each returns false, changing nothing, when the menu's table has no such item.
    bool enableItem(int id, bool enabled) { return m_table->enable(id, enabled); }
    bool setItemText(int id, const char* text) { return m_table->setText(id, text); }
    bool isItemEnabled(int id) const { return m_table->isEnabled(id); }
    ///@}
    /// The item's text, owned by the item; null when there is no such item.
    const char* itemText(int id) const;

private:
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<TqActionTable> m_ownTable;
    TqActionTable* m_table;
};
