#include "core/UserMessage.h"

#include "core/appiApplication.h"

#include <QMessageBox>
#include <QString>

#include <cstdio>

namespace {
int qtNotifier(const char* text, const char* title, NotifierIcon icon) {
    const QString caption = QString::fromUtf8(title);
    const QString body = QString::fromUtf8(text);
    switch (icon) {
    case NOTIFIER_ICON_QUESTION: {
        const auto button = QMessageBox::question(
            nullptr, caption, body, QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        return button == QMessageBox::Yes  ? NOTIFIER_YES
               : button == QMessageBox::No ? NOTIFIER_NO
                                           : NOTIFIER_CANCEL;
    }
    case NOTIFIER_ICON_WARNING:
        QMessageBox::warning(nullptr, caption, body);
        return NOTIFIER_OK;
    default:
        QMessageBox::information(nullptr, caption, body);
        return NOTIFIER_OK;
    }
}

UserMessageNotifier notifier = &qtNotifier;
} // namespace

UserMessageNotifier setUserMessageNotifier(UserMessageNotifier replacement) {
    const UserMessageNotifier previous = notifier;
    notifier = replacement ? replacement : &qtNotifier;
    return previous;
}

bool showUserMessage(const char* text, const char* title, bool isError, bool isWarning,
                     bool isQuestion, bool& answerFlag) {
    const appiApplication* application = appiApplication::current();
    if (!text)
        text = "";
    if (application && application->isWindowSystemRunning() && application->areWindowsShown()) {
        const NotifierIcon icon = isQuestion  ? NOTIFIER_ICON_QUESTION
                                  : isWarning ? NOTIFIER_ICON_WARNING
                                              : NOTIFIER_ICON_INFORMATION;
        const char* caption = title ? title : isError ? "Error" : "Note";
        const int answer = notifier(text, caption, icon);
        if (isQuestion) {
            if (answer == NOTIFIER_NO)
                answerFlag = true;
            return answer == NOTIFIER_YES;
        }
        return answer == NOTIFIER_OK;
    }
    if (title)
        std::fprintf(stderr, "%s: ", title);
    else if (isError)
        std::fputs("ERROR: ", stderr);
    std::fprintf(stderr, "%s\n", text);
    return true;
}
