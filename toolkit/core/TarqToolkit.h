#pragma once

#include "core/TqExport.h"

class appiApplication;
class TqObject;
struct SToolkitClient;

/// The services whose static state the toolkit's own shutdown hook releases, in the order it
/// releases them. The first group runs only while the window system runs. A service joins the
/// order by registering its shutdown function (TarqToolkit::setShutDownStep) when it first
/// allocates state, so the core needs no link to the subsystems above it.
enum class TqShutDownStep {
    FontMetricCache,
    PostscriptFontMetrics,
    Controls,
    PrintDevice,
    FontParser,
    TaskDescriptions,
    NativeWindows,
    Settings,
    /// From here on, whether or not the window system runs.
    Scanner,
    BigInt,
    Directory,
    Count
};

/// TarqToolkit: registration of client modules, start-up and shutdown of the application,
/// and the ordered shutdown of the toolkit's process-wide services.
class TQ_EXPORT TarqToolkit {
public:
    /// Registers a client: its string table joins the merged table, an application client's
    /// callbacks are taken, a non-application client's appSlot is kept for initApplication,
    /// and every client's shutdown hook is appended. The toolkit registers itself first.
    static void registerToolkitClient(SToolkitClient* client);
    /// Registers the toolkit's own record (shutdown hook and string ids 1..77) once per
    /// start-up cycle; later calls do nothing.
    static void registerSelf();

    /// Creates the application through the application client's factory and publishes it to
    /// every registered slot. The application client must have registered.
    static void initApplication();
    /// Runs the application client's start callback with the same arguments; returns its result.
    static int startApplication(int argc, char** argv, int, int);
    /// The whole life of a program's application client in one call: registers client (an
    /// application client, which may be a temporary), creates the application, runs its start
    /// callback with argc, argv, 0 and 0, then runs the shutdown hooks, which delete the
    /// application and free the static buffers. Returns the start callback's result. The
    /// caller has started the static buffers (TqObject::startUp) and any Qt application the
    /// start callback needs.
    static int runApplication(SToolkitClient* client, int argc, char** argv);
    /// Runs one command in the application; returns the application's result.
    static long executeCommand(const char* command);
    /// Runs the shutdown hooks in registration order. The hooks registered when it starts are
    /// the ones that run.
    static void shutDownApp();
    /// Destroys the application and clears both application pointers. Client slots filled by
    /// initApplication keep the old pointer: clients must not use them after this.
    static void deleteApplication();
    /// The application object from initApplication until deleteApplication, else null.
    static appiApplication* getAppiApp();

    /// True once the library's static initialisation has finished.
    static bool staticInitializationDone();

    // --- Licensing: the toolkit forwards to the application client's callbacks ----------------
    /// The licensed-feature descriptions, as the application's callback returns them (the text
    /// lives wherever the application keeps it); null when it registered no such callback.
    static const char* licenseFeatures();
    /// Hands one protection log line about feature to the application's callback; nothing
    /// happens when it registered none.
    static void writeProtectionLog(const char* feature);
    ///@{
    /// Whether the licence manager is to be left uncalled, as a command-line switch asks.
    static bool isLicenseManagerSuppressed();
    static void setLicenseManagerSuppressed(bool suppressed);
    ///@}

    /// Puts a service's shutdown function at its place in the toolkit's shutdown order.
    /// Registering the same step again replaces the function; null removes it.
    static void setShutDownStep(TqShutDownStep step, void (*shutDown)());
    /// The window-system layer's library-wide singleton, deleted during shutdown when windows
    /// were never shown.
    static void setLibrarySingleton(TqObject* singleton);

private:
    static void toolkitShutDownApp();
};

/// The version of the library that is loaded, as "major.minor.patch".
TQ_EXPORT const char* tqVersionString();
