#include "wsi/Menu.h"

#include <QMenu>

Menu::Menu(const char* title, TqActionTable* table)
    : m_menu(std::make_unique<QMenu>(QString::fromUtf8(title ? title : ""))),
      m_ownTable(table ? nullptr : std::make_unique<TqActionTable>()),
      m_table(table ? table : m_ownTable.get()) {}

// The items' QActions are children of the QMenu and go with it; their TqActions, in a
// window's table, then answer as disabled items without a QAction.
Menu::~Menu() = default;

TqAction* Menu::addItem(int id, const char* text) {
    TqAction* action = m_table->add(id, text, m_menu.get());
    if (action)
        m_menu->addAction(action->qAction());
    return action;
}

void Menu::addSeparator() {
    m_menu->addSeparator();
}

const char* Menu::itemText(int id) const {
    const TqAction* action = m_table->find(id);
    return action ? action->text() : nullptr;
}
