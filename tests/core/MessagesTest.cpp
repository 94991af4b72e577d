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
    const ErrorMessage severityOnly(SEVERITY_WARNING);
    const ErrorMessage located(SEVERITY_NOTE, MESSAGE_OBJECT_NONE, &object, 12, "line %d: %s", 12,
                               "bad");
    const ErrorMessage locatedFromTable(SEVERITY_FATAL, MESSAGE_OBJECT_NONE, &object, 3,
                                        IDS_CANTOPEN, "a.tim");
    const ErrorMessage withSeverity(SEVERITY_WARNING, "%s=%d", "width", 8);
    const ErrorMessage withSeverityFromTable(SEVERITY_WARNING, IDS_CANTREAD, "b.tim");
    const ErrorMessage plain("plain %c", 'x');
    const ErrorMessage plainFromTable(IDS_CANTCREATE, "c.tim");

    const struct {
        const ErrorMessage& message;
        MessageSeverity severity;
        const char* text;
    } cases[] = {
        {severityOnly, SEVERITY_WARNING, ""},
        {located, SEVERITY_NOTE, "line 12: bad"},
        {locatedFromTable, SEVERITY_FATAL, "Cannot open file 'a.tim'"},
        {withSeverity, SEVERITY_WARNING, "width=8"},
        {withSeverityFromTable, SEVERITY_WARNING, "Cannot read file 'b.tim'"},
        {plain, SEVERITY_ERROR, "plain x"},
        {plainFromTable, SEVERITY_ERROR, "Cannot create file 'c.tim'"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.message.severity(), c.severity) << c.text;
        EXPECT_STREQ(c.message.message(), c.text);
        EXPECT_EQ(c.message.userWord(), 0);
    }
    EXPECT_EQ(located.object(), &object);
    EXPECT_EQ(located.number(), 12);
    EXPECT_EQ(locatedFromTable.number(), 3);
}

TEST_F(ErrorMessages, SeverityStringsAndErrorTest) {
    const char* expected[] = {"FATAL ERROR", "ERROR", "WARNING", "NOTE", "ERROR"};
    for (int severity = 0; severity <= 4; ++severity)
        EXPECT_STREQ(ErrorMessage::severityString(severity), expected[severity]);
    EXPECT_STREQ(ErrorMessage::severityString(-1), "ERROR");
    EXPECT_TRUE(ErrorMessage(SEVERITY_FATAL).isError());
    EXPECT_TRUE(ErrorMessage("x").isError());
    EXPECT_FALSE(ErrorMessage(SEVERITY_WARNING).isError());
    EXPECT_STREQ(ErrorMessage(SEVERITY_NOTE, "done").asString(), "NOTE: done");
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
    EXPECT_EQ(copy.severity(), SEVERITY_WARNING);
}

TEST_F(ErrorMessages, TextsBeyondTheFormatAreaAreCut) {
    const std::string longText(3000, 'm');
    EXPECT_EQ(std::string(ErrorMessage("%s", longText.c_str()).message()),
              longText.substr(0, 1023));
}

TEST_F(ErrorMessages, DuplicateExistsComparesTextAndOptionallySeverity) {
    ErrorMessage warning(SEVERITY_WARNING, "same");
    ErrorMessage other(SEVERITY_NOTE, "other");
    OC_<ErrorMessage> list;
    list.add(&warning);
    list.add(&other);
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

TEST_F(UserMessages, WithoutAGuiTheMessageGoesToStandardError) {
    const struct {
        const char* title;
        bool isError;
        const char* expected;
    } cases[] = {
        {"Title", true, "Title: text\n"},
        {nullptr, true, "ERROR: text\n"},
        {nullptr, false, "text\n"},
    };
    appiApplication application; // windows shown, but no window system running
    for (const auto& c : cases) {
        bool answer = false;
        testing::internal::CaptureStderr();
        EXPECT_TRUE(showUserMessage("text", c.title, c.isError, false, true, answer));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.expected);
        EXPECT_FALSE(answer);
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

    application.setAreWindowsShown(0);
    lastCall = {};
    bool answerFlag = false;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(showUserMessage("hidden", nullptr, false, false, false, answerFlag));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "hidden\n");
    EXPECT_EQ(lastCall.icon, -1) << "no dialog while windows are not shown";
}

// Collects the debug print at the given level for its lifetime.
struct DebugCapture {
    explicit DebugCapture(int level) { setDebugPrintLevel(level); }
    ~DebugCapture() {
        setDebugPrintLevel(m_level);
        setDebugPrintSink(m_sink);
    }
    static inline std::string text;
    const int m_level = debugPrintLevel();
    const DebugPrintSink m_sink = setDebugPrintSink([](const char* piece) { text += piece; });
};

TEST(DebugPrint, PrintsOnlyAtOrBelowTheCurrentLevel) {
    DebugCapture capture(0);
    std::string& captured = DebugCapture::text;
    captured.clear();
    Printf(DBG_ERRORS, "silent\n");
    dumpBuff(DBG_ERRORS, "abc", 3);
    EXPECT_EQ(captured, "") << "silent by default";

    setDebugPrintLevel(DBG_INFO);
    Printf(DBG_INFO, "n=%d\n", 5);
    Printf(DBG_TRACE, "too detailed\n");
    EXPECT_EQ(captured, "n=5\n");

    captured.clear();
    dumpBuff(DBG_INFO, "0123456789abcdefXY\x01", 19);
    EXPECT_EQ(captured,
              "00000000: 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
              "00000010: 58 59 01                                         XY.\n");

    captured.clear();
    DebugMessage::display("value %d", 3);
    EXPECT_EQ(captured, "DEBUG: value 3\n");
    EXPECT_STREQ(DebugMessage("a%sc", "b").text(), "abc");
}

TEST(MemorySystem, ReportsHeapFiguresThroughTheDebugPrint) {
    DebugCapture capture(DBG_INFO);
    const std::string& captured = DebugCapture::text;
    DebugCapture::text.clear();
    {
        MemorySystem scope;
        MemorySystem::displayMemStats("after start-up");
    }
    for (const char* piece :
         {"after start-up: ", " bytes in use, ", "MemorySystem: heap in use changed by "})
        EXPECT_NE(captured.find(piece), std::string::npos) << captured;
}

} // namespace
