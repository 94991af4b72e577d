#include "core/TarqToolkit.h"
#include "core/PdToolkit.h"
#include "core/SToolkitClient.h"
#include "core/ToolkitStrings.h"
#include "core/TqObject.h"
#include "core/appiApplication.h"
#include "support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Events = std::vector<std::string>;
Events events;

// Ten entries, so that lookups past a registered table's terminator stay inside the array.
PdStringEntry firstTable[] = {
    {"", ""},         {"IDS_A1", "a1"}, {"IDS_A2", "a2"}, {nullptr, nullptr}, {"X", "beyond1"},
    {"Y", "beyond2"}, {"Z", "beyond3"}, {"", ""},         {"", ""},           {nullptr, nullptr}};
PdStringEntry secondTable[] = {{"", ""}, {"IDS_B1", "b1"}, {"IDS_B2", "b2 %d"}, {nullptr, nullptr}};

class TestApplication : public appiApplication {
public:
    ~TestApplication() override { events.push_back("application destroyed"); }
};
TestApplication* theApplication = nullptr;

SToolkitClient applicationClient() {
    SToolkitClient client{};
    client.isApplication = 1;
    client.createApplicationFunc = []() -> appiApplication* {
        events.push_back("create");
        return theApplication = new TestApplication;
    };
    client.deleteApplicationFunc = [] {
        events.push_back("delete");
        delete theApplication;
        theApplication = nullptr;
    };
    client.startApplicationFunc = [](int argc, char**, int a, int b) {
        events.push_back("start " + std::to_string(argc) + " " + std::to_string(a) + " " +
                         std::to_string(b));
        return 42;
    };
    client.executeCommandFunc = [](const char* command) {
        events.push_back(std::string("command ") + command);
        return 7L;
    };
    client.licenseFeaturesFunc = [] { return "EPS MIF"; };
    client.protectionLogFunc = [](const char* feature) {
        events.push_back(std::string("log ") + feature);
    };
    client.shutDownFunc = [] { events.push_back("hook"); };
    return client;
}

class ToolkitRegistration : public ToolkitCycle {
protected:
    void SetUp() override { events.clear(); }
    // Runs the hooks and restarts the ring for the next step of a test.
    void shutDownAndRestart() { ToolkitCycle::TearDown(); }
};

TEST_F(ToolkitRegistration, ToolkitTableAnswersIdsOneTo77InTheRingAndUnknownIdsWithEmptyText) {
    TarqToolkit::registerSelf();
    const char* text = PdToolkit::loadString(IDS_NO_PRINT_CMD_SPECIFIED);
    EXPECT_STREQ(text, "No print command specified.  See File | Printer Setup.");
    EXPECT_EQ(text, TqObject::staticBuffer());
    EXPECT_STREQ(PdToolkit::loadString(IDS_CANTOPEN), "Cannot open file '%s'");
    EXPECT_STREQ(PdToolkit::loadString(IDS_UNUSED_FILE), "Unused Files");
    EXPECT_EQ(PdToolkit::loadQString(IDS_New), QString::fromLatin1("New"));
    EXPECT_STREQ(PdToolkit::getStringEntry(IDS_EDITOR_NOSHELL)->name, "IDS_EDITOR_NOSHELL");
    EXPECT_EQ(PdToolkit::getStringEntry(78)->name, nullptr) << "the terminator follows id 77";

    char* before = TqObject::staticBuffer();
    EXPECT_STREQ(PdToolkit::loadString(0), "");
    EXPECT_NE(TqObject::staticBuffer(), before) << "an unknown id still advances the ring";
    EXPECT_NE(PdToolkit::loadString(-5), TqObject::staticBuffer());
    EXPECT_EQ(PdToolkit::getStringEntry(0), nullptr);
    EXPECT_TRUE(PdToolkit::loadQString(0).isEmpty());
}

// A range runs from its client's first id to the next client's first id less one, whatever
// its table holds; the last runs to INT_MAX; a later client with the same first id hides the
// earlier one, whose range becomes empty.
TEST_F(ToolkitRegistration, RangesEndOnlyWhereTheNextBegins) {
    TarqToolkit::registerSelf();
    const std::pair<int, PdStringEntry*> clients[] = {
        {106, secondTable}, {100, firstTable}, {500, firstTable}, {500, secondTable}};
    for (const auto& [first, table] : clients) {
        SToolkitClient client{}; // a temporary: the toolkit keeps what it needs
        client.firstStringId = first;
        client.stringTable = table;
        TarqToolkit::registerToolkitClient(&client);
    }
    const std::pair<int, const char*> cases[] = {{101, "a2"}, {103, "beyond1"}, {105, "beyond3"},
                                                 {106, "b1"}, {500, "b1"},      {501, "b2 %d"}};
    for (const auto& [id, text] : cases)
        EXPECT_STREQ(PdToolkit::loadString(id), text) << id;

    const auto offset = [](const PdStringEntry* entry, const PdStringEntry* base) {
        return reinterpret_cast<std::uintptr_t>(entry) - reinterpret_cast<std::uintptr_t>(base);
    };
    EXPECT_EQ(offset(PdToolkit::getStringEntry(INT_MAX), secondTable),
              (INT_MAX - 500 + 1ull) * sizeof(PdStringEntry));
    EXPECT_EQ(offset(PdToolkit::getStringEntry(99), PdToolkit::getStringEntry(1)),
              98 * sizeof(PdStringEntry))
        << "id 99 lies past the toolkit's table, where only the address may be used";
}

TEST_F(ToolkitRegistration, ApplicationLifecycleRunsThroughTheClientCallbacks) {
    TarqToolkit::shutDownApp();
    EXPECT_TRUE(events.empty()) << "without hooks, shutting down does nothing";
    EXPECT_TRUE(TarqToolkit::staticInitializationDone());

    appiApplication* slot = nullptr;
    SToolkitClient plugin{};
    plugin.shutDownFunc = [] { events.push_back("plugin hook"); };
    plugin.appSlot = &slot;
    SToolkitClient application = applicationClient();
    PdToolkit::setKitHINST(reinterpret_cast<HINSTANCE>(0x1000));
    TarqToolkit::registerToolkitClient(&plugin);
    TarqToolkit::registerSelf();
    EXPECT_EQ(PdToolkit::kitHINST(), reinterpret_cast<HINSTANCE>(0x1000));
    TarqToolkit::registerToolkitClient(&application);
    EXPECT_EQ(PdToolkit::kitHINST(), nullptr) << "an application client resets the handles";
    EXPECT_EQ(PdToolkit::appHINST(), nullptr);
    PdToolkit::setKitHINST(piModule::toolkit());

    TarqToolkit::initApplication();
    ASSERT_NE(theApplication, nullptr);
    EXPECT_EQ(TarqToolkit::getAppiApp(), theApplication);
    EXPECT_EQ(appiApplication::current(), theApplication);
    EXPECT_EQ(slot, theApplication) << "the plugin's slot receives the application";

    char* argv[] = {const_cast<char*>("prog"), nullptr};
    EXPECT_EQ(TarqToolkit::startApplication(1, argv, 3, 4), 42);
    EXPECT_EQ(TarqToolkit::executeCommand("zoom"), 7L);
    EXPECT_STREQ(TarqToolkit::licenseFeatures(), "EPS MIF");
    TarqToolkit::writeProtectionLog("EPS");

    appiApplication* const created = theApplication;
    shutDownAndRestart();
    // The toolkit registered itself, once, before the first client: its hook runs first and
    // deletes the application.
    EXPECT_EQ(events, (Events{"create", "start 1 3 4", "command zoom", "log EPS", "delete",
                              "application destroyed", "plugin hook", "hook"}));
    EXPECT_EQ(TarqToolkit::getAppiApp(), nullptr);
    EXPECT_EQ(appiApplication::current(), nullptr);
    EXPECT_EQ(PdToolkit::getStringEntry(1), nullptr) << "the toolkit's hook freed the ranges";
    EXPECT_EQ(slot, created) << "client slots are not cleared by deleteApplication";
    EXPECT_EQ(TarqToolkit::licenseFeatures(), nullptr) << "no application client any more";
    TarqToolkit::writeProtectionLog("EPS");
    EXPECT_EQ(events.size(), 8u);
    TarqToolkit::setLicenseManagerSuppressed(true);
    EXPECT_TRUE(TarqToolkit::isLicenseManagerSuppressed());
    TarqToolkit::setLicenseManagerSuppressed(false);
}

// What a program's main does in one call: the same callbacks in the same order as the steps
// one by one, with the start callback's result and the application gone afterwards.
TEST_F(ToolkitRegistration, RunApplicationRegistersStartsAndShutsDownInOneCall) {
    SToolkitClient application = applicationClient();
    char* argv[] = {const_cast<char*>("prog"), const_cast<char*>("x"), nullptr};
    EXPECT_EQ(TarqToolkit::runApplication(&application, 2, argv), 42);
    EXPECT_EQ(events, (Events{"create", "start 2 0 0", "delete", "application destroyed", "hook"}));
    EXPECT_EQ(TarqToolkit::getAppiApp(), nullptr);
    EXPECT_EQ(PdToolkit::getStringEntry(1), nullptr) << "the toolkit's own hook ran";
}

class Singleton : public TqObject {
public:
    ~Singleton() override { events.push_back("singleton deleted"); }
};

// The window-side steps run only while the window system runs; the service steps always, in
// their order; the singleton goes only when windows were never shown, before the application.
TEST_F(ToolkitRegistration, ToolkitShutDownRunsItsStepsInOrder) {
    const std::tuple<bool, char, char, Events> cases[] = {
        // clang-format off
        {false, 0, 0, {"scanner", "bigint", "singleton deleted"}},
        {true, 0, 1, {"create", "scanner", "bigint", "delete", "application destroyed", "hook"}},
        {true, 1, 0, {"create", "settings", "scanner", "bigint", "singleton deleted", "delete",
                      "application destroyed", "hook"}},
        // clang-format on
    };
    for (const auto& [withApplication, windowSystemRunning, windowsShown, expected] : cases) {
        events.clear();
        SToolkitClient application = applicationClient();
        if (withApplication) {
            TarqToolkit::registerToolkitClient(&application);
            TarqToolkit::initApplication();
            theApplication->setWindowSystemRunning(windowSystemRunning);
            theApplication->setAreWindowsShown(windowsShown);
        }
        TarqToolkit::registerSelf();
        TarqToolkit::setShutDownStep(TqShutDownStep::BigInt, [] { events.push_back("bigint"); });
        TarqToolkit::setShutDownStep(TqShutDownStep::Scanner, [] { events.push_back("scanner"); });
        TarqToolkit::setShutDownStep(TqShutDownStep::Settings,
                                     [] { events.push_back("settings"); });
        Singleton* singleton = new Singleton;
        TarqToolkit::setLibrarySingleton(singleton);
        shutDownAndRestart();
        EXPECT_EQ(events, expected);
        if (withApplication && windowsShown)
            delete singleton;
    }
}

} // namespace
