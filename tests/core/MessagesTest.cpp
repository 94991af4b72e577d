#include "core/DebugPrint.h"
#include "core/ErrorMessage.h"
#include "core/MemorySystem.h"
#include "core/TarqToolkit.h"
#include "core/ToolkitStrings.h"
#include "core/UserMessage.h"
#include "core/appiApplication.h"
#include "support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <tuple>

namespace {

class ErrorMessages : public ToolkitCycle {
protected:
    void SetUp() override { TarqToolkit::registerSelf(); }
};

TEST_F(ErrorMessages, EveryConstructorFormatsItsTextAndKeepsItsFields) {
    int object = 0;
    const std::tuple<ErrorMessage, MessageSeverity, const char*> cases[] = {
        {ErrorMessage(SEVERITY_WARNING), SEVERITY_WARNING, ""},
        {ErrorMessage(SEVERITY_NOTE, MESSAGE_OBJECT_NONE, &object, 12, "line %d: %s", 12, "bad"),
         SEVERITY_NOTE, "line 12: bad"},
        {ErrorMessage(SEVERITY_FATAL, MESSAGE_OBJECT_NONE, &object, 3, IDS_CANTOPEN, "a.tim"),
         SEVERITY_FATAL, "Cannot open file 'a.tim'"},
        {ErrorMessage(SEVERITY_WARNING, "%s=%d", "width", 8), SEVERITY_WARNING, "width=8"},
        {ErrorMessage(SEVERITY_WARNING, IDS_CANTREAD, "b.tim"), SEVERITY_WARNING,
         "Cannot read file 'b.tim'"},
        {ErrorMessage("plain %c", 'x'), SEVERITY_ERROR, "plain x"},
        {ErrorMessage(IDS_CANTCREATE, "c.tim"), SEVERITY_ERROR, "Cannot create file 'c.tim'"},
    };
    for (const auto& [message, severity, text] : cases) {
        EXPECT_EQ(message.severity(), severity) << text;
        EXPECT_STREQ(message.message(), text);
        EXPECT_EQ(message.userWord(), 0);
    }
    EXPECT_EQ(std::get<0>(cases[1]).object(), &object);
    EXPECT_EQ(std::get<0>(cases[1]).number(), 12);
    EXPECT_EQ(std::get<0>(cases[2]).number(), 3);
}

TEST_F(ErrorMessages, SeverityStringsErrorTestAndTheFormatAreaLimit) {
    const char* expected[] = {"ERROR", "FATAL ERROR", "ERROR", "WARNING", "NOTE", "ERROR"};
    for (int severity = -1; severity <= 4; ++severity)
        EXPECT_STREQ(ErrorMessage::severityString(severity), expected[severity + 1]);
    EXPECT_TRUE(ErrorMessage(SEVERITY_FATAL).isError());
    EXPECT_TRUE(ErrorMessage("x").isError());
    EXPECT_FALSE(ErrorMessage(SEVERITY_WARNING).isError());
    EXPECT_STREQ(ErrorMessage(SEVERITY_NOTE, "done").asString(), "NOTE: done");
    const std::string longText(3000, 'm');
    EXPECT_EQ(std::string(ErrorMessage("%s", longText.c_str()).message()),
              longText.substr(0, 1023));
}

TEST_F(ErrorMessages, CopiesOwnTheirTextAndDuplicatesCompareTextAndOptionallySeverity) {
    ErrorMessage original(SEVERITY_WARNING, "same");
    ErrorMessage copy(original);
    OC_<ErrorMessage> list;
    list.add(&copy);
    EXPECT_TRUE(ErrorMessage(SEVERITY_ERROR, "same").duplicateExists(list, false));
    EXPECT_FALSE(ErrorMessage(SEVERITY_ERROR, "same").duplicateExists(list, true));
    EXPECT_TRUE(original.duplicateExists(list, true));
    original.setMessage(IDS_CANTFIND, "gone.tim");
    EXPECT_STREQ(copy.message(), "same");
    EXPECT_STREQ(original.message(), "File gone.tim cannot be found or does not exist.");
    EXPECT_FALSE(original.duplicateExists(list, false));
    copy = original;
    EXPECT_STREQ(copy.message(), original.message());
    EXPECT_NE(copy.message(), original.message());
}

// What the user saw: "[icon] title: text\n" from the dialog, then anything on standard error.
std::string seen;
int nextAnswer = NOTIFIER_OK;

int recordingNotifier(const char* text, const char* title, NotifierIcon icon) {
    char line[256];
    std::snprintf(line, sizeof line, "[%d] %s: %s\n", icon, title, text);
    seen += line;
    return nextAnswer;
}

// Only with an application whose window system runs and whose windows are shown is the user
// asked; otherwise the message goes to standard error, and the result is true.
TEST(UserMessages, ChooseDialogOrStandardErrorAndReportTheAnswer) {
    const struct {
        bool withApplication;
        char windowSystemRunning, windowsShown;
        const char* title;
        bool isError, isWarning, isQuestion;
        int answer;
        const char* seen;
        bool result, answerFlag;
    } cases[] = {
        // clang-format off
        {true, 0, 1, "Title", true, false, true, NOTIFIER_NO, "Title: text\n", true, false},
        {true, 0, 1, nullptr, true, false, true, NOTIFIER_NO, "ERROR: text\n", true, false},
        {true, 0, 1, nullptr, false, false, true, NOTIFIER_NO, "text\n", true, false},
        {true, 1, 0, nullptr, false, false, true, NOTIFIER_NO, "text\n", true, false},
        {false, 1, 1, "T", false, false, true, NOTIFIER_NO, "T: text\n", true, false},
        {true, 1, 1, nullptr, true, false, false, NOTIFIER_OK, "[0] Error: text\n", true, false},
        {true, 1, 1, nullptr, false, true, false, NOTIFIER_OK, "[1] Note: text\n", true, false},
        {true, 1, 1, "Save", false, true, true, NOTIFIER_YES, "[4] Save: text\n", true, false},
        {true, 1, 1, "Save", false, false, true, NOTIFIER_NO, "[4] Save: text\n", false, true},
        {true, 1, 1, "Save", false, false, true, NOTIFIER_CANCEL, "[4] Save: text\n", false, false},
        {true, 1, 1, "T", false, false, false, NOTIFIER_CANCEL, "[0] T: text\n", false, false},
        // clang-format on
    };
    const UserMessageNotifier previous = setUserMessageNotifier(&recordingNotifier);
    for (const auto& c : cases) {
        appiApplication application;
        application.setWindowSystemRunning(c.windowSystemRunning);
        application.setAreWindowsShown(c.windowsShown);
        appiApplication::setCurrent(c.withApplication ? &application : nullptr);
        seen.clear();
        nextAnswer = c.answer;
        bool answerFlag = false;
        testing::internal::CaptureStderr();
        EXPECT_EQ(
            showUserMessage("text", c.title, c.isError, c.isWarning, c.isQuestion, answerFlag),
            c.result)
            << c.seen;
        seen += testing::internal::GetCapturedStderr();
        EXPECT_EQ(seen, c.seen);
        EXPECT_EQ(answerFlag, c.answerFlag) << c.seen;
    }
    setUserMessageNotifier(previous);
}

TEST(DebugPrint, PrintsOnlyAtOrBelowTheCurrentLevel) {
    static std::string captured;
    const DebugPrintSink previousSink =
        setDebugPrintSink([](const char* text) { captured += text; });
    const int previousLevel = debugPrintLevel();
    setDebugPrintLevel(0);
    Printf(DBG_ERRORS, "silent\n");
    dumpBuff(DBG_ERRORS, "abc", 3);
    EXPECT_EQ(captured, "");
    setDebugPrintLevel(DBG_INFO);
    Printf(DBG_INFO, "n=%d\n", 5);
    Printf(DBG_TRACE, "too detailed\n");
    dumpBuff(DBG_INFO, "0123456789abcdefXY\x01", 19);
    DebugMessage::display("value %d", 3);
    EXPECT_EQ(captured,
              "n=5\n"
              "00000000: 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
              "00000010: 58 59 01                                         XY.\n"
              "DEBUG: value 3\n");
    EXPECT_STREQ(DebugMessage("a%sc", "b").text(), "abc");

    captured.clear();
    { MemorySystem scope; }
    MemorySystem::displayMemStats("after start-up");
    EXPECT_EQ(captured.rfind("MemorySystem: heap in use changed by ", 0), 0u) << captured;
    EXPECT_NE(captured.find("after start-up: "), std::string::npos) << captured;
    setDebugPrintLevel(previousLevel);
    setDebugPrintSink(previousSink);
}

} // namespace
