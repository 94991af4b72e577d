#include "settings/RecentFileManager.h"

#include "settings/IniSettings.h"
#include "wsi/Menu.h"
#include "wsi/WsdTopWindow.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QSettings>

#include <string>
#include <vector>

#include "SettingsFiles.h"

namespace {

std::vector<std::string> namesOf(const RecentFileManager& files) {
    std::vector<std::string> names;
    for (int i = 0; i < files.maxNumberOfFiles(); ++i)
        names.push_back(files.fileName(i) ? files.fileName(i) : "-");
    return names;
}

TEST(RecentFileManager, KeyNamesWidenAtTheTenthSlot) {
    const char* expected[] = {"File00", "File01", "File07", "File08", "File9", "File10", "File11"};
    const int indexes[] = {0, 1, 7, 8, 9, 10, 11};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(RecentFileManager::keyOf(indexes[i]), QString(expected[i]));
}

TEST(RecentFileManager, AddFileNameMovesToTopAndDropsTheOldest) {
    RecentFileManager files("Recent", 3);
    EXPECT_EQ(files.numberOfFiles(), 0);
    files.addFileName("/d/a.tqd");
    files.addFileName("/d/b.tqd");
    files.addFileName("/d/c.tqd");
    EXPECT_EQ(namesOf(files), (std::vector<std::string>{"/d/c.tqd", "/d/b.tqd", "/d/a.tqd"}));
    // Third in the list: to the top, the count unchanged.
    files.addFileName("/d/a.tqd");
    EXPECT_EQ(namesOf(files), (std::vector<std::string>{"/d/a.tqd", "/d/c.tqd", "/d/b.tqd"}));
    EXPECT_EQ(files.numberOfFiles(), 3);
    // New to a full list: the oldest goes. The name is kept in its clean form.
    files.addFileName("/d/x/../e.tqd");
    EXPECT_EQ(namesOf(files), (std::vector<std::string>{"/d/e.tqd", "/d/a.tqd", "/d/c.tqd"}));
    files.addFileName("");
    files.addFileName(nullptr);
    EXPECT_EQ(files.numberOfFiles(), 3);
    EXPECT_EQ(files.fileName(3), nullptr);
    EXPECT_EQ(files.fileName(-1), nullptr);
    files.cleanup();
    EXPECT_EQ(files.numberOfFiles(), 0);
}

TEST(RecentFileManager, RelativeNamesBecomeAbsolute) {
    RecentFileManager files("Recent", 2);
    files.addFileName("plain.tqd");
    EXPECT_EQ(std::string(files.fileName(0)),
              QDir::cleanPath(QDir::current().absoluteFilePath("plain.tqd")).toStdString());
}

TEST(RecentFileManager, WriteThenReadKeepsTheList) {
    QTemporaryDir dir;
    const QString path = dir.filePath("recent.ini");
    RecentFileManager files("Recent", 11);
    for (int i = 10; i >= 0; --i)
        files.addFileName(("/f/" + std::to_string(i) + ".tqd").c_str());
    {
        auto settings = IniSettings::open(path);
        EXPECT_TRUE(files.writeConfig(settings.get()));
    }
    EXPECT_FALSE(files.writeConfig(nullptr));
    const auto keys = rawKeys(path);
    EXPECT_EQ(keys.at("Recent/File00"), "/f/0.tqd");
    EXPECT_EQ(keys.at("Recent/File08"), "/f/8.tqd");
    EXPECT_EQ(keys.at("Recent/File9"), "/f/9.tqd");
    EXPECT_EQ(keys.at("Recent/File10"), "/f/10.tqd");

    RecentFileManager back("Recent", 11);
    EXPECT_TRUE(back.readConfig(path));
    EXPECT_EQ(namesOf(back), namesOf(files));

    // Fewer files: the empty slots are written empty and read back as nothing.
    RecentFileManager two("Recent", 4);
    two.addFileName("/g/1.tqd");
    {
        auto settings = IniSettings::open(path);
        EXPECT_TRUE(two.writeConfig(settings.get()));
    }
    EXPECT_EQ(rawKeys(path).at("Recent/File01"), "");
    RecentFileManager twoBack("Recent", 4);
    EXPECT_TRUE(twoBack.readConfig(path));
    EXPECT_EQ(namesOf(twoBack), (std::vector<std::string>{"/g/1.tqd", "-", "-", "-"}));
}

TEST(RecentFileManager, HandWrittenGroupsCloseTheirGaps) {
    QTemporaryDir dir;
    const QString path = dir.filePath("recent.ini");
    // clang-format off
    const struct { const char* text; int maxFiles; std::vector<std::string> expected; } rows[] = {
        {"[Recent]\nFile00=/a\nFile05=/b\n", 6, {"/a", "/b", "-", "-", "-", "-"}},
        {"[Recent]\nFile03=/c\nFile01=\n", 4, {"/c", "-", "-", "-"}},
        // The ninth and tenth keys differ in width; "File09" is not a key of the list.
        {"[Recent]\nFile09=/wrong\nFile9=/ninth\nFile10=/tenth\n", 11,
         {"/ninth", "/tenth", "-", "-", "-", "-", "-", "-", "-", "-", "-"}},
        // Keys beyond the list's length and in other groups are not read.
        {"[Recent]\nFile02=/late\n[Other]\nFile00=/other\n", 2, {"-", "-"}},
    };
    // clang-format on
    for (const auto& row : rows) {
        writeTextFile(path, row.text);
        RecentFileManager files("Recent", static_cast<unsigned short>(row.maxFiles));
        files.addFileName("/forgotten");
        EXPECT_TRUE(files.readConfig(path));
        EXPECT_EQ(namesOf(files), row.expected) << row.text;
    }
    RecentFileManager none("Recent", 2);
    EXPECT_TRUE(none.readConfig(dir.filePath("missing.ini")));
    EXPECT_EQ(none.numberOfFiles(), 0);
}

struct MenuState {
    bool anchor;
    std::vector<std::string> items; // text, or "(off)" for a disabled item
};

MenuState stateOf(const TqActionTable& items, int maxFiles) {
    MenuState state{items.isEnabled(RecentFileManager::anchorItem), {}};
    for (int i = 0; i < maxFiles; ++i) {
        const TqAction* item = items.find(RecentFileManager::firstFileItem + i);
        state.items.push_back(!item ? "(none)" : item->isEnabled() ? item->text() : "(off)");
    }
    return state;
}

void expectState(const TqActionTable& items, bool anchor, std::vector<std::string> texts) {
    const MenuState state = stateOf(items, static_cast<int>(texts.size()));
    EXPECT_EQ(state.anchor, anchor);
    EXPECT_EQ(state.items, texts);
}

TEST(RecentFileManager, WindowMenuShowsTheListWithMnemonics) {
    WsdTopWindow window;
    Menu* fileMenu = window.addMenu("&File");
    RecentFileManager files("Recent", 3);
    files.appendRecentFileItems(*fileMenu, "Recent &Files");
    expectState(window.actions(), false, {"(off)", "(off)", "(off)"});

    files.addFileName("/d/a.tqd");
    files.initRecentFileMenu(&window, 0);
    expectState(window.actions(), true, {"&1 /d/a.tqd", "(off)", "(off)"});
    EXPECT_EQ(fileMenu->qMenu()->actions().at(1)->text(), QString("&1 /d/a.tqd"));

    // An unchanged count leaves the menu as it is.
    files.addFileName("/d/b.tqd");
    files.cleanup();
    files.addFileName("/d/c.tqd");
    files.initRecentFileMenu(&window, 1);
    expectState(window.actions(), true, {"&1 /d/a.tqd", "(off)", "(off)"});

    files.addFileName("/d/b.tqd");
    files.initRecentFileMenu(&window, 1);
    expectState(window.actions(), true, {"&1 /d/b.tqd", "&2 /d/c.tqd", "(off)"});

    files.cleanup();
    files.initRecentFileMenu(&window, 2);
    expectState(window.actions(), false, {"(off)", "(off)", "(off)"});

    files.addFileName("/d/a.tqd");
    files.initRecentFileMenu(&window, -1);
    files.clearRecentFileMenu(&window);
    expectState(window.actions(), false, {"(off)", "(off)", "(off)"});
    EXPECT_STREQ(window.actions().find(RecentFileManager::firstFileItem)->text(), "");
    files.initRecentFileMenu(nullptr, 0);
    files.clearRecentFileMenu(nullptr);
}

TEST(RecentFileManager, PopupMenuShowsTheListInItsOwnItems) {
    Menu popup("Recent");
    RecentFileManager files("Recent", 10);
    files.appendRecentFileItems(popup, "Recent");
    for (int i = 9; i >= 0; --i)
        files.addFileName(("/p/" + std::to_string(i)).c_str());
    files.initRecentFileMenu(popup, 0);
    EXPECT_TRUE(popup.isItemEnabled(RecentFileManager::anchorItem));
    EXPECT_STREQ(popup.itemText(151), "&1 /p/0");
    EXPECT_STREQ(popup.itemText(160), "&10 /p/9");
    files.clearRecentFileMenu(popup);
    EXPECT_FALSE(popup.isItemEnabled(RecentFileManager::anchorItem));
    EXPECT_FALSE(popup.isItemEnabled(160));
}

} // namespace
