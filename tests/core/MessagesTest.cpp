#include "core/DebugPrint.h"
#include "core/ErrorMessage.h"
#include "core/MemorySystem.h"
#include "core/TarqToolkit.h"
#include "core/ToolkitStrings.h"
#include "core/UserMessage.h"
#include "core/appiApplication.h"
#include "support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class ErrorMessages : public ToolkitCycle {
protected:
    void SetUp() override { TarqToolkit::registerSelf(); }
};

TEST_F(ErrorMessages, EveryConstructorFormatsItsTextAndKeepsItsFields) {
    int object = 0;
    const ErrorMessage messages[] = {
        ErrorMessage(SEVERITY_WARNING),
        ErrorMessage(SEVERITY_NOTE, MESSAGE_OBJECT_NONE, &object, 12, "line %d: %s", 12, "bad"),
        ErrorMessage(SEVERITY_FATAL, MESSAGE_OBJECT_NONE, &object, 3, IDS_CANTOPEN, "a.tim"),
        ErrorMessage(SEVERITY_WARNING, "%s=%d", "width", 8),
        ErrorMessage(SEVERITY_WARNING, IDS_CANTREAD, "b.tim"),
        ErrorMessage("plain %c", 'x'),
        ErrorMessage(IDS_CANTCREATE, "c.tim"),
    };
    const std::pair<MessageSeverity, const char*> expected[] = {
        {SEVERITY_WARNING, ""},
        {SEVERITY_NOTE, "line 12: bad"},
        {SEVERITY_FATAL, "Cannot open file 'a.tim'"},
        {SEVERITY_WARNING, "width=8"},
        {SEVERITY_WARNING, "Cannot read file 'b.tim'"},
        {SEVERITY_ERROR, "plain x"},
        {SEVERITY_ERROR, "Cannot create file 'c.tim'"},
    };
    for (std::size_t i = 0; i < std::size(messages); ++i) {
        EXPECT_EQ(messages[i].severity(), expected[i].first) << i;
        EXPECT_STREQ(messages[i].message(), expected[i].second);
        EXPECT_EQ(messages[i].userWord(), 0);
    }
    EXPECT_EQ(messages[1].object(), &object);
    EXPECT_EQ(messages[1].number(), 12);
    EXPECT_EQ(messages[2].number(), 3);
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

TEST_F(ErrorMessages, CopiesOwnTheirTextAndSetMessageReplacesIt) {
    ErrorMessage original(SEVERITY_WARNING, "first");
    ErrorMessage copy(original);
    original.setMessage(IDS_CANTFIND, "gone.tim");
    EXPECT_STREQ(copy.message(), "first");
    EXPECT_STREQ(original.message(), "File gone.tim cannot be found or does not exist.");
    copy = original;
    EXPECT_STREQ(copy.message(), original.message());
    EXPECT_NE(copy.message(), original.message());
}

TEST_F(ErrorMessages, DuplicateExistsComparesTextAndOptionallySeverity) {
    ErrorMessage warning(SEVERITY_WARNING, "same");
    OC_<ErrorMessage> list;
    list.add(&warning);
    EXPECT_TRUE(ErrorMessage(SEVERITY_ERROR, "same").duplicateExists(list, false));
    EXPECT_FALSE(ErrorMessage(SEVERITY_ERROR, "same").duplicateExists(list, true));
    EXPECT_TRUE(ErrorMessage(SEVERITY_WARNING, "same").duplicateExists(list, true));
    EXPECT_FALSE(ErrorMessage("new").duplicateExists(list, false));
}

struct NotifierCall {
    std::string text;
    std::string title;
    int icon = -1;
};
NotifierCall lastCall;
int nextAnswer = NOTIFIER_OK;

int recordingNotifier(const char* text, const char* title, NotifierIcon icon) {
    lastCall = {text, title, icon};
    return nextAnswer;
}

class UserMessages : public ::testing::Test {
protected:
    void SetUp() override {
        m_previousNotifier = setUserMessageNotifier(&recordingNotifier);
        m_previousApplication = appiApplication::current();
    }
    void TearDown() override {
        setUserMessageNotifier(m_previousNotifier);
        appiApplication::setCurrent(m_previousApplication);
    }
    UserMessageNotifier m_previousNotifier = nullptr;
    appiApplication* m_previousApplication = nullptr;
};

// Without an application, without a running window system or with windows hidden, nothing
// is asked: the message goes to standard error and the result is true.
TEST_F(UserMessages, WithoutAGuiTheMessageGoesToStandardError) {
    const struct {
        bool withApplication;
        char windowSystemRunning, windowsShown;
        const char* title;
        bool isError;
        const char* expected;
    } cases[] = {
        {true, 0, 1, "Title", true, "Title: text\n"}, {true, 0, 1, nullptr, true, "ERROR: text\n"},
        {true, 0, 1, nullptr, false, "text\n"},       {true, 1, 0, nullptr, false, "text\n"},
        {false, 1, 1, "T", false, "T: text\n"},
    };
    for (const auto& c : cases) {
        appiApplication application;
        application.setWindowSystemRunning(c.windowSystemRunning);
        application.setAreWindowsShown(c.windowsShown);
        appiApplication::setCurrent(c.withApplication ? &application : nullptr);
        lastCall = {};
        bool answer = false;
        testing::internal::CaptureStderr();
        EXPECT_TRUE(showUserMessage("text", c.title, c.isError, false, true, answer));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.expected);
        EXPECT_FALSE(answer);
        EXPECT_EQ(lastCall.icon, -1) << "no dialog";
    }
}

TEST_F(UserMessages, WithAGuiTheDialogChoosesIconTitleAndAnswer) {
    appiApplication application;
    application.setWindowSystemRunning(1);
    const struct {
        const char* title;
        bool isError, isWarning, isQuestion;
        int answer;
        int icon;
        const char* shownTitle;
        bool result;
        bool answerFlag;
    } cases[] = {
        {nullptr, true, false, false, NOTIFIER_OK, NOTIFIER_ICON_INFORMATION, "Error", true, false},
        {nullptr, false, true, false, NOTIFIER_OK, NOTIFIER_ICON_WARNING, "Note", true, false},
        {"Save", false, true, true, NOTIFIER_YES, NOTIFIER_ICON_QUESTION, "Save", true, false},
        {"Save", false, false, true, NOTIFIER_NO, NOTIFIER_ICON_QUESTION, "Save", false, true},
        {"Save", false, false, true, NOTIFIER_CANCEL, NOTIFIER_ICON_QUESTION, "Save", false, false},
        {"T", false, false, false, NOTIFIER_CANCEL, NOTIFIER_ICON_INFORMATION, "T", false, false},
    };
    for (const auto& c : cases) {
        bool answerFlag = false;
        nextAnswer = c.answer;
        EXPECT_EQ(
            showUserMessage("body", c.title, c.isError, c.isWarning, c.isQuestion, answerFlag),
            c.result)
            << c.shownTitle << " answer " << c.answer;
        EXPECT_EQ(answerFlag, c.answerFlag);
        EXPECT_EQ(lastCall.icon, c.icon);
        EXPECT_EQ(lastCall.title, c.shownTitle);
        EXPECT_EQ(lastCall.text, "body");
    }
}

// Collects the debug print for the test's lifetime, at level 0 (silent) to start with.
class DebugPrintTest : public ::testing::Test {
protected:
    void SetUp() override {
        captured.clear();
        setDebugPrintLevel(0);
    }
    void TearDown() override {
        setDebugPrintLevel(m_level);
        setDebugPrintSink(m_sink);
    }
    static inline std::string captured;
    const int m_level = debugPrintLevel();
    const DebugPrintSink m_sink = setDebugPrintSink([](const char* text) { captured += text; });
};

TEST_F(DebugPrintTest, PrintsOnlyAtOrBelowTheCurrentLevel) {
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
}

TEST_F(DebugPrintTest, MemorySystemReportsHeapFiguresAtTheInfoLevel) {
    setDebugPrintLevel(DBG_INFO);
    { MemorySystem scope; }
    MemorySystem::displayMemStats("after start-up");
    EXPECT_EQ(captured.rfind("MemorySystem: heap in use changed by ", 0), 0u) << captured;
    EXPECT_NE(captured.find("after start-up: "), std::string::npos) << captured;
}

} // namespace
