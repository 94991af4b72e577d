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
#include <vector>

namespace {

std::vector<std::string> events;

// Ten entries, so that lookups past a registered table's terminator stay inside the array.
PdStringEntry firstTable[] = {
    {"", ""},         {"IDS_A1", "a1"}, {"IDS_A2", "a2"}, {nullptr, nullptr}, {"X", "beyond1"},
    {"Y", "beyond2"}, {"Z", "beyond3"}, {"", ""},         {"", ""},           {nullptr, nullptr}};
PdStringEntry secondTable[] = {{"", ""}, {"IDS_B1", "b1"}, {"IDS_B2", "b2 %d"}, {nullptr, nullptr}};

SToolkitClient tableClient(int firstId, PdStringEntry* table) {
    SToolkitClient client{};
    client.firstStringId = firstId;
    client.stringTable = table;
    return client;
}

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
        theApplication = new TestApplication;
        return theApplication;
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
    client.shutDownFunc = [] { events.push_back("application hook"); };
    return client;
}

class ToolkitRegistration : public ToolkitCycle {
protected:
    void SetUp() override { events.clear(); }
    // Shuts the toolkit down, running the hooks, and restarts the ring for the next step.
    static void shutDownAndRestart() {
        TarqToolkit::shutDownApp();
        TqObject::startUp();
    }
};

class RegisteredToolkit : public ToolkitRegistration {
protected:
    void SetUp() override {
        ToolkitRegistration::SetUp();
        TarqToolkit::registerSelf();
    }
};

TEST_F(RegisteredToolkit, ToolkitTableAnswersItsIdsAfterRegisterSelf) {
    EXPECT_STREQ(PdToolkit::loadString(IDS_CANTOPEN), "Cannot open file '%s'");
    EXPECT_STREQ(PdToolkit::loadString(IDS_SYNTAXERROR), "Syntax error: expected '");
    EXPECT_STREQ(PdToolkit::loadString(IDS_NO_PRINT_CMD_SPECIFIED),
                 "No print command specified.  See File | Printer Setup.");
    EXPECT_STREQ(PdToolkit::loadString(IDS_UNUSED_FILE), "Unused Files");
    EXPECT_STREQ(PdToolkit::getStringEntry(IDS_EDITOR_NOSHELL)->name, "IDS_EDITOR_NOSHELL");
    EXPECT_EQ(PdToolkit::loadQString(IDS_New), QString::fromLatin1("New"));
}

TEST_F(RegisteredToolkit, EveryToolkitIdHasItsOwnNamedEntry) {
    for (int id = 1; id <= 77; ++id) {
        const PdStringEntry* entry = PdToolkit::getStringEntry(id);
        ASSERT_NE(entry, nullptr) << id;
        ASSERT_NE(entry->name, nullptr) << id;
        EXPECT_EQ(std::string(entry->name).rfind("IDS_", 0), 0u) << id;
        EXPECT_NE(entry->text, nullptr) << id;
    }
    EXPECT_EQ(PdToolkit::getStringEntry(78)->name, nullptr) << "the terminator follows id 77";
}

TEST_F(RegisteredToolkit, UnknownIdsGiveEmptyTextsAndStillAdvanceTheRing) {
    char* before = TqObject::staticBuffer();
    EXPECT_STREQ(PdToolkit::loadString(0), "");
    EXPECT_EQ(PdToolkit::getStringEntry(0), nullptr);
    EXPECT_NE(TqObject::staticBuffer(), before) << "the ring advances even for an unknown id";
    EXPECT_NE(PdToolkit::loadString(-5), TqObject::staticBuffer())
        << "the empty text is a constant, not the ring buffer";
    EXPECT_TRUE(PdToolkit::loadQString(0).isEmpty());
}

TEST_F(RegisteredToolkit, LastRangeAnswersEveryIdUpToIntMax) {
    SToolkitClient client = tableClient(1000, firstTable);
    TarqToolkit::registerToolkitClient(&client);
    EXPECT_STREQ(PdToolkit::getStringEntry(1001)->text, "a2");
    const auto offset = reinterpret_cast<std::uintptr_t>(PdToolkit::getStringEntry(INT_MAX)) -
                        reinterpret_cast<std::uintptr_t>(firstTable);
    EXPECT_EQ(offset, (INT_MAX - 1000 + 1ull) * sizeof(PdStringEntry));
    // Ids between two blocks fall into the range below: entry 999 lies past the toolkit's
    // table, where only the address may be used.
    const auto between = reinterpret_cast<std::uintptr_t>(PdToolkit::getStringEntry(999)) -
                         reinterpret_cast<std::uintptr_t>(PdToolkit::getStringEntry(1));
    EXPECT_EQ(between, 998 * sizeof(PdStringEntry));
}

// A range runs from its client's first id to the next client's, whatever its table holds
// (100..105 belong to the first client although its table holds two strings); a later client
// with the same first id hides the earlier one.
TEST_F(RegisteredToolkit, ClientRangesEndAtTheNextFirstIdAndLaterClientsHideEarlierOnes) {
    SToolkitClient first = tableClient(100, firstTable), second = tableClient(106, secondTable);
    SToolkitClient earlier = tableClient(500, firstTable), later = tableClient(500, secondTable);
    for (SToolkitClient* client : {&second, &first, &earlier, &later})
        TarqToolkit::registerToolkitClient(client);
    const std::pair<int, const char*> cases[] = {{101, "a2"}, {103, "beyond1"}, {105, "beyond3"},
                                                 {106, "b1"}, {500, "b1"},      {501, "b2 %d"}};
    for (const auto& [id, text] : cases)
        EXPECT_STREQ(PdToolkit::loadString(id), text) << id;
}

TEST_F(RegisteredToolkit, RegisterSelfTwiceRegistersOneHookAndOneTable) {
    TarqToolkit::registerSelf();
    SToolkitClient counter{};
    counter.shutDownFunc = [] { events.push_back("counter hook"); };
    TarqToolkit::registerToolkitClient(&counter);
    shutDownAndRestart();
    EXPECT_EQ(events, std::vector<std::string>{"counter hook"});
    EXPECT_EQ(PdToolkit::getStringEntry(1), nullptr) << "the toolkit's hook freed the ranges";
}

TEST_F(ToolkitRegistration, ShutDownWithoutHooksDoesNothing) {
    TarqToolkit::shutDownApp();
    EXPECT_TRUE(events.empty());
}

TEST_F(ToolkitRegistration, ApplicationLifecycleRunsThroughTheClientCallbacks) {
    appiApplication* slot = nullptr;
    SToolkitClient plugin{};
    plugin.appSlot = &slot;
    plugin.shutDownFunc = [] { events.push_back("plugin hook"); };
    SToolkitClient application = applicationClient();
    TarqToolkit::registerToolkitClient(&application);
    TarqToolkit::registerToolkitClient(&plugin);

    TarqToolkit::initApplication();
    ASSERT_NE(theApplication, nullptr);
    EXPECT_EQ(TarqToolkit::getAppiApp(), theApplication);
    EXPECT_EQ(appiApplication::current(), theApplication);
    EXPECT_EQ(slot, theApplication) << "the plugin's slot receives the application";

    char* argv[] = {const_cast<char*>("prog"), nullptr};
    EXPECT_EQ(TarqToolkit::startApplication(1, argv, 3, 4), 42);
    EXPECT_EQ(TarqToolkit::executeCommand("zoom"), 7L);

    appiApplication* const created = theApplication;
    shutDownAndRestart();
    // The toolkit's own hook runs first (it registered first) and deletes the application.
    EXPECT_EQ(events, (std::vector<std::string>{"create", "start 1 3 4", "command zoom", "delete",
                                                "application destroyed", "application hook",
                                                "plugin hook"}));
    EXPECT_EQ(TarqToolkit::getAppiApp(), nullptr);
    EXPECT_EQ(appiApplication::current(), nullptr);
    EXPECT_EQ(slot, created) << "client slots are not cleared by deleteApplication";
}

TEST_F(ToolkitRegistration, ApplicationClientResetsTheModuleHandles) {
    PdToolkit::setKitHINST(reinterpret_cast<HINSTANCE>(0x1000));
    EXPECT_EQ(PdToolkit::kitHINST(), reinterpret_cast<HINSTANCE>(0x1000));
    SToolkitClient plugin{};
    TarqToolkit::registerToolkitClient(&plugin);
    EXPECT_NE(PdToolkit::kitHINST(), nullptr);
    SToolkitClient application = applicationClient();
    TarqToolkit::registerToolkitClient(&application);
    EXPECT_EQ(PdToolkit::kitHINST(), nullptr);
    EXPECT_EQ(PdToolkit::appHINST(), nullptr);
    PdToolkit::setKitHINST(piModule::toolkit());
}

TEST_F(ToolkitRegistration, ServiceStepsRunInOrderAndWindowStepsOnlyWithAWindowSystem) {
    static std::vector<std::string>* log = &events;
    TarqToolkit::registerSelf();
    TarqToolkit::setShutDownStep(TqShutDownStep::Settings, [] { log->push_back("settings"); });
    TarqToolkit::setShutDownStep(TqShutDownStep::Scanner, [] { log->push_back("scanner"); });
    TarqToolkit::setShutDownStep(TqShutDownStep::BigInt, [] { log->push_back("bigint"); });
    shutDownAndRestart();
    EXPECT_EQ(events, (std::vector<std::string>{"scanner", "bigint"}))
        << "without a running window system the window-side steps are skipped";

    events.clear();
    SToolkitClient application = applicationClient();
    TarqToolkit::registerToolkitClient(&application);
    TarqToolkit::initApplication();
    theApplication->setWindowSystemRunning(1);
    TarqToolkit::setShutDownStep(TqShutDownStep::Settings, [] { log->push_back("settings"); });
    TarqToolkit::setShutDownStep(TqShutDownStep::Scanner, [] { log->push_back("scanner"); });
    shutDownAndRestart();
    EXPECT_EQ(events, (std::vector<std::string>{"create", "settings", "scanner", "delete",
                                                "application destroyed", "application hook"}));
}

class Singleton : public TqObject {
public:
    ~Singleton() override { events.push_back("singleton deleted"); }
};

TEST_F(ToolkitRegistration, LibrarySingletonIsDeletedOnlyWhenWindowsWereNotShown) {
    SToolkitClient application = applicationClient();
    TarqToolkit::registerToolkitClient(&application);
    TarqToolkit::initApplication();
    theApplication->setAreWindowsShown(0);
    TarqToolkit::setLibrarySingleton(new Singleton);
    shutDownAndRestart();
    EXPECT_EQ(events, (std::vector<std::string>{"create", "singleton deleted", "delete",
                                                "application destroyed", "application hook"}));

    events.clear();
    Singleton kept;
    TarqToolkit::registerToolkitClient(&application);
    TarqToolkit::initApplication();
    TarqToolkit::setLibrarySingleton(&kept);
    shutDownAndRestart();
    EXPECT_EQ(events, (std::vector<std::string>{"create", "delete", "application destroyed",
                                                "application hook"}));
}

TEST(TarqToolkitStatic, StaticInitializationIsDone) {
    EXPECT_TRUE(TarqToolkit::staticInitializationDone());
}

} // namespace
