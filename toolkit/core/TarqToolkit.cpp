#include "core/TarqToolkit.h"

#include "core/PdToolkit.h"
#include "core/SToolkitClient.h"
#include "core/ToolkitStrings_p.h"
#include "core/TqObject.h"
#include "core/TqVersion.h"
#include "core/appiApplication.h"

#include <array>
#include <cassert>
#include <vector>

namespace {
// The application client's callbacks, taken at its registration.
struct ApplicationCallbacks {
    appiApplication* (*create)() = nullptr;
    void (*destroy)() = nullptr;
    int (*start)(int, char**, int, int) = nullptr;
    const char* (*licenseFeatures)() = nullptr;
    void (*protectionLog)(const char*) = nullptr;
    long (*executeCommand)(const char*) = nullptr;
};

struct ToolkitState {
    bool applicationRegistered = false;
    ApplicationCallbacks callbacks;
    std::vector<void (*)()> shutDownHooks;
    std::vector<appiApplication**> applicationSlots;
    bool selfRegistered = false;
    appiApplication* application = nullptr;
    std::array<void (*)(), static_cast<std::size_t>(TqShutDownStep::Count)> shutDownSteps{};
    TqObject* librarySingleton = nullptr;
    bool licenseManagerSuppressed = false;
};

ToolkitState state;

// Set by a dynamic initialiser, so it reads true only once the loader has run this
// library's static constructors.
bool markStaticInitialization() {
    return true;
}
const bool staticInitializationFlag = markStaticInitialization();

void runStep(TqShutDownStep step) {
    if (void (*shutDown)() = state.shutDownSteps[static_cast<std::size_t>(step)])
        shutDown();
}
} // namespace

void TarqToolkit::registerToolkitClient(SToolkitClient* client) {
    registerSelf();
    PdToolkit::registerToolkitClient(client);
    if (client->isApplication) {
        state.applicationRegistered = true;
        state.callbacks = {client->createApplicationFunc, client->deleteApplicationFunc,
                           client->startApplicationFunc,  client->licenseFeaturesFunc,
                           client->protectionLogFunc,     client->executeCommandFunc};
    } else if (client->appSlot) {
        state.applicationSlots.push_back(client->appSlot);
    }
    if (client->shutDownFunc)
        state.shutDownHooks.push_back(client->shutDownFunc);
}

void TarqToolkit::registerSelf() {
    if (state.selfRegistered)
        return;
    state.selfRegistered = true;
    SToolkitClient self{};
    self.shutDownFunc = &TarqToolkit::toolkitShutDownApp;
    self.firstStringId = 1;
    self.stringTable = toolkitStringTable;
    registerToolkitClient(&self);
}

void TarqToolkit::initApplication() {
    assert(state.callbacks.create && "initApplication: no application client has registered");
    appiApplication* application = state.callbacks.create();
    appiApplication::setCurrent(application);
    state.application = application;
    for (appiApplication** slot : state.applicationSlots)
        *slot = application;
}

int TarqToolkit::startApplication(int argc, char** argv, int a, int b) {
    assert(state.callbacks.start && "startApplication: no application client has registered");
    return state.callbacks.start(argc, argv, a, b);
}

int TarqToolkit::runApplication(SToolkitClient* client, int argc, char** argv) {
    assert(client->isApplication && "runApplication: the client must be the application");
    registerToolkitClient(client);
    initApplication();
    const int result = startApplication(argc, argv, 0, 0);
    shutDownApp();
    return result;
}

long TarqToolkit::executeCommand(const char* command) {
    assert(state.callbacks.executeCommand &&
           "executeCommand: no application client has registered");
    return state.callbacks.executeCommand(command);
}

void TarqToolkit::shutDownApp() {
    // The hooks registered when shutdown starts are the ones that run; the toolkit's own hook
    // empties the registration for a later start-up cycle, so the list is copied first.
    const std::vector<void (*)()> hooks = state.shutDownHooks;
    for (void (*hook)() : hooks)
        hook();
}

void TarqToolkit::deleteApplication() {
    if (state.callbacks.destroy)
        state.callbacks.destroy();
    appiApplication::setCurrent(nullptr);
    state.application = nullptr;
}

appiApplication* TarqToolkit::getAppiApp() {
    return state.application;
}

bool TarqToolkit::staticInitializationDone() {
    return staticInitializationFlag;
}

const char* TarqToolkit::licenseFeatures() {
    return state.callbacks.licenseFeatures ? state.callbacks.licenseFeatures() : nullptr;
}

void TarqToolkit::writeProtectionLog(const char* feature) {
    if (state.callbacks.protectionLog)
        state.callbacks.protectionLog(feature);
}

bool TarqToolkit::isLicenseManagerSuppressed() {
    return state.licenseManagerSuppressed;
}

void TarqToolkit::setLicenseManagerSuppressed(bool suppressed) {
    state.licenseManagerSuppressed = suppressed;
}

void TarqToolkit::setShutDownStep(TqShutDownStep step, void (*shutDown)()) {
    assert(step < TqShutDownStep::Count && "setShutDownStep: not a shutdown step");
    state.shutDownSteps[static_cast<std::size_t>(step)] = shutDown;
}

void TarqToolkit::setLibrarySingleton(TqObject* singleton) {
    state.librarySingleton = singleton;
}

void TarqToolkit::toolkitShutDownApp() {
    const appiApplication* application = appiApplication::current();
    if (application && application->isWindowSystemRunning()) {
        for (auto step = TqShutDownStep::FontMetricCache; step < TqShutDownStep::Scanner;
             step = static_cast<TqShutDownStep>(static_cast<int>(step) + 1))
            runStep(step);
    }
    for (auto step = TqShutDownStep::Scanner; step < TqShutDownStep::Count;
         step = static_cast<TqShutDownStep>(static_cast<int>(step) + 1))
        runStep(step);
    PdToolkit::shutDown();
    TqObject::shutDown();

    // The final clean-up: the registration is emptied so that the process can run another
    // start-up cycle. The services register their steps again when they are next used.
    const bool windowsShown = application && application->areWindowsShown();
    state.shutDownHooks.clear();
    state.applicationSlots.clear();
    state.shutDownSteps = {};
    state.selfRegistered = false;

    if (!windowsShown && state.librarySingleton) {
        delete state.librarySingleton;
    }
    state.librarySingleton = nullptr;

    deleteApplication();
    state.applicationRegistered = false;
    state.callbacks = {};
    // POSIX holds no message hook, no dynamically loaded library and no per-module state for
    // the application's handle, so the last step of the original shutdown has nothing to do.
}

const char* tqVersionString() {
    return TQ_VERSION_STRING;
}
