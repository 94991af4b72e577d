/// RecentFileManager: the list of recently used files, most recent first, kept in a group of
/// the settings file and shown as numbered entries of a window's menu.
#pragma once

#include "core/TqExport.h"

#include <QString>

#include <memory>

class Menu;
class QSettings;
class TqActionTable;
class WsdTopWindow;

/// In the settings file, slot i (from 0) of the list is the key "File" followed by a "0"
/// when i is below 9 and then i in decimal: "File00" to "File08", then "File9", "File10" and
/// on, as existing settings files hold them. In a menu, the anchor item (such as "Recent
/// Files") has the identifier 150 and slot i is the item 151 + i.
class TQ_EXPORT RecentFileManager {
public:
    /// A list of at most maxFiles names kept under the settings group (copied; null is the
    /// top level).
    RecentFileManager(const char* group, unsigned short maxFiles);
    ~RecentFileManager();
    RecentFileManager(const RecentFileManager&) = delete;
    RecentFileManager& operator=(const RecentFileManager&) = delete;

    /// Empties the list.
    void cleanup();
    /// Puts name at the top. The name is made absolute and clean with '/' separators first;
    /// if the list holds it already it moves to the top, else the oldest entry of a full list
    /// is dropped. A null or empty name is ignored.
    void addFileName(const char* name);
    /// The name in slot index (0 is the most recent), owned by the list until it changes; null
    /// for an empty or missing slot.
    const char* fileName(int index) const;
    /// The number of slots that hold a name.
    int numberOfFiles() const;
    /// The number of slots given at construction.
    unsigned short maxNumberOfFiles() const { return m_maxFiles; }
    /// The settings group, owned by the list; "" for the top level.
    const char* group() const { return m_group.get(); }

    /// Empties the list and fills it from the group of the settings file at settingsFile (in
    /// the IniSettings form): every slot key that exists with a non-empty value goes into the
    /// next free slot, so gaps close up. True (a missing file reads as an empty list).
    bool readConfig(const QString& settingsFile);
    /// Writes every slot key into the group of settings, an empty value for an empty slot.
    /// False when settings is null.
    bool writeConfig(QSettings* settings) const;
    /// The key of slot index: "File00" ... "File08", "File9", "File10" ...; by value.
    static QString keyOf(int index);

    /// Appends the anchor item (150, with anchorText) and one item per slot (151 on) to menu,
    /// all disabled until initRecentFileMenu() shows the list.
    void appendRecentFileItems(Menu& menu, const char* anchorText) const;
    ///@{
    /// Shows the list in the window's (or menu's) items when the number of files differs from
    /// previousCount (pass -1 to show it in any case): the anchor is enabled when files
    /// appeared where there were none and disabled when none are left; each slot's item is
    /// enabled with the text "&<slot from 1> <name>" when the slot holds a file, else
    /// disabled.
    void initRecentFileMenu(WsdTopWindow* window, int previousCount) const;
    void initRecentFileMenu(Menu& menu, int previousCount) const;
    ///@}
    ///@{
    /// Disables the anchor and every slot's item and empties the items' texts.
    void clearRecentFileMenu(WsdTopWindow* window) const;
    void clearRecentFileMenu(Menu& menu) const;
    ///@}

    ///@{
    /// The menu identifiers: the anchor item, and the first slot's item (slot k has
    /// firstFileItem + k).
    static constexpr int anchorItem = 150;
    static constexpr int firstFileItem = 151;
    ///@}

protected:
    /// The slot that holds exactly name, or -1.
    int indexOfFileName(const char* name) const;
    /// Moves the name in slot index to slot 0; those above it shift down one slot.
    void moveToTop(int index);

private:
    void initMenuItems(TqActionTable& items, int previousCount) const;
    void clearMenuItems(TqActionTable& items) const;

    std::unique_ptr<std::unique_ptr<char[]>[]> m_files;
    std::unique_ptr<char[]> m_group;
    unsigned short m_maxFiles;
};
