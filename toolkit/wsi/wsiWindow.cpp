#include "wsi/wsiWindow.h"

#include "core/appiApplication.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

wsiWindow::~wsiWindow() = default;

void wsiWindow::setWindowTitle(const char* title) {
    m_title = title ? title : "";
    updateWindowTitle();
}

void wsiWindow::setTitleDetail(const char* detail) {
    m_titleDetail = detail ? detail : "";
    updateWindowTitle();
}

void wsiWindow::updateWindowTitle() {
    primitiveSetWindowTitle(windowTitleText().c_str());
}

std::string wsiWindow::windowTitleText() const {
    if (m_titleDetail.empty())
        return m_title;
    std::string text = m_title;
    return text.append(" - ").append(m_titleDetail);
}

void wsiWindow::setPointer(WsiCursor cursor) {
    m_pointer = cursor;
    if (!isHourglassUp())
        primitiveSetPointer(cursor);
}

void wsiWindow::setHourglass(bool on) {
    if (on) {
        if (m_hourglassCount++ == 0)
            primitiveSetPointer(wsiWaitCursor);
    } else if (m_hourglassCount > 0 && --m_hourglassCount == 0) {
        primitiveSetPointer(m_pointer);
    }
}

bool wsiWindow::help() {
    const appiApplication* application = appiApplication::current();
    if (!application || !application->helpFile())
        return false;
    QString path = QString::fromUtf8(application->helpFile());
    if (QFileInfo(path).isRelative())
        path.prepend(QString::fromUtf8(application->helpDirectory(false)));
    return QFileInfo::exists(path) && QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}
