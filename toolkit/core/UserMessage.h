/// \file
/// showUserMessage: tells the user something, in a modal notifier dialog while the window
/// system runs and windows are shown, otherwise on standard error.
#pragma once

#include "core/TqExport.h"

/// The answer codes of the notifier dialog.
enum NotifierAnswer {
    NOTIFIER_OK = 0,
    NOTIFIER_CANCEL = 2,
    NOTIFIER_NO = 7,
    NOTIFIER_YES = 11,
};

/// The icon kinds of the notifier dialog.
enum NotifierIcon {
    NOTIFIER_ICON_INFORMATION = 0,
    NOTIFIER_ICON_WARNING = 1,
    NOTIFIER_ICON_QUESTION = 4,
};

/// Shows a modal dialog and returns its NotifierAnswer. A question offers Yes, No and Cancel;
/// any other message offers OK.
using UserMessageNotifier = int (*)(const char* text, const char* title, NotifierIcon icon);

/// Shows text under title (null: "Error" for an error, else "Note"). Without a GUI it writes
/// "<title>: " (or "ERROR: " for an untitled error), the text and a newline to standard error
/// and returns true. With a GUI, a question returns true for Yes and sets answerFlag for No
/// (Cancel leaves it alone); any other message returns true when acknowledged.
TQ_EXPORT bool showUserMessage(const char* text, const char* title, bool isError, bool isWarning,
                               bool isQuestion, bool& answerFlag);

/// Replaces the dialog (null restores the Qt message box); returns the previous notifier.
TQ_EXPORT UserMessageNotifier setUserMessageNotifier(UserMessageNotifier notifier);
