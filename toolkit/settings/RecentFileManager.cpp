#include "settings/RecentFileManager.h"

#include "settings/IniSettings.h"
#include "wsi/Menu.h"
#include "wsi/WsdTopWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

std::unique_ptr<char[]> copyOf(const char* text) {
    const std::size_t size = std::strlen(text) + 1;
    auto copy = std::make_unique<char[]>(size);
    std::memcpy(copy.get(), text, size);
    return copy;
}

// The form in which names are kept: absolute and clean, with '/' separators.
QByteArray pathForm(const char* name) {
    const QString path = QDir::fromNativeSeparators(QString::fromUtf8(name));
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath()).toUtf8();
}

} // namespace

RecentFileManager::RecentFileManager(const char* group, unsigned short maxFiles)
    : m_files(std::make_unique<std::unique_ptr<char[]>[]>(maxFiles)),
      m_group(copyOf(group ? group : "")), m_maxFiles(maxFiles) {}

RecentFileManager::~RecentFileManager() = default;

void RecentFileManager::cleanup() {
    for (int i = 0; i < m_maxFiles; ++i)
        m_files[i].reset();
}

void RecentFileManager::addFileName(const char* name) {
    if (!name || !*name || m_maxFiles == 0)
        return;
    const QByteArray path = pathForm(name);
    const int index = indexOfFileName(path.constData());
    if (index >= 0) {
        moveToTop(index);
        return;
    }
    for (int i = m_maxFiles - 1; i > 0; --i)
        m_files[i] = std::move(m_files[i - 1]);
    m_files[0] = copyOf(path.constData());
}

const char* RecentFileManager::fileName(int index) const {
    return index >= 0 && index < m_maxFiles ? m_files[index].get() : nullptr;
}

int RecentFileManager::numberOfFiles() const {
    int count = 0;
    for (int i = 0; i < m_maxFiles; ++i)
        count += m_files[i] != nullptr;
    return count;
}

int RecentFileManager::indexOfFileName(const char* name) const {
    for (int i = 0; i < m_maxFiles; ++i)
        if (m_files[i] && name && std::strcmp(m_files[i].get(), name) == 0)
            return i;
    return -1;
}

void RecentFileManager::moveToTop(int index) {
    if (index <= 0 || index >= m_maxFiles)
        return;
    std::unique_ptr<char[]> name = std::move(m_files[index]);
    for (int i = index; i > 0; --i)
        m_files[i] = std::move(m_files[i - 1]);
    m_files[0] = std::move(name);
}

QString RecentFileManager::keyOf(int index) {
    char key[32];
    std::snprintf(key, sizeof key, index < 9 ? "File0%d" : "File%d", index);
    return QString::fromLatin1(key);
}

bool RecentFileManager::readConfig(const QString& settingsFile) {
    cleanup();
    const std::unique_ptr<QSettings> settings = IniSettings::open(settingsFile);
    settings->beginGroup(QString::fromUtf8(m_group.get()));
    int next = 0;
    for (int i = 0; i < m_maxFiles; ++i) {
        const QString value = IniSettings::textOf(settings->value(keyOf(i)));
        if (!value.isEmpty())
            m_files[next++] = copyOf(value.toUtf8().constData());
    }
    settings->endGroup();
    return true;
}

bool RecentFileManager::writeConfig(QSettings* settings) const {
    if (!settings)
        return false;
    settings->beginGroup(QString::fromUtf8(m_group.get()));
    for (int i = 0; i < m_maxFiles; ++i)
        settings->setValue(keyOf(i), QString::fromUtf8(m_files[i] ? m_files[i].get() : ""));
    settings->endGroup();
    return true;
}

void RecentFileManager::appendRecentFileItems(Menu& menu, const char* anchorText) const {
    if (TqAction* anchor = menu.addItem(anchorItem, anchorText))
        anchor->setEnabled(false);
    for (int i = 0; i < m_maxFiles; ++i)
        if (TqAction* item = menu.addItem(firstFileItem + i, ""))
            item->setEnabled(false);
}

void RecentFileManager::initRecentFileMenu(WsdTopWindow* window, int previousCount) const {
    if (window)
        initMenuItems(window->actions(), previousCount);
}

void RecentFileManager::initRecentFileMenu(Menu& menu, int previousCount) const {
    initMenuItems(menu.items(), previousCount);
}

void RecentFileManager::clearRecentFileMenu(WsdTopWindow* window) const {
    if (window)
        clearMenuItems(window->actions());
}

void RecentFileManager::clearRecentFileMenu(Menu& menu) const {
    clearMenuItems(menu.items());
}

void RecentFileManager::initMenuItems(TqActionTable& items, int previousCount) const {
    const int count = numberOfFiles();
    if (count == previousCount)
        return;
    if (count > 0 && previousCount <= 0)
        items.enable(anchorItem, true);
    else if (count == 0)
        items.enable(anchorItem, false);
    for (int i = 0; i < m_maxFiles; ++i) {
        const int id = firstFileItem + i;
        items.enable(id, m_files[i] != nullptr);
        if (m_files[i]) {
            std::string text("&");
            text.append(std::to_string(i + 1)).append(" ").append(m_files[i].get());
            items.setText(id, text.c_str());
        }
    }
}

void RecentFileManager::clearMenuItems(TqActionTable& items) const {
    items.enable(anchorItem, false);
    for (int i = 0; i < m_maxFiles; ++i) {
        items.enable(firstFileItem + i, false);
        items.setText(firstFileItem + i, "");
    }
}
