// hello_client: the smallest complete application client. It registers with its own string
// table, creates and starts the application, runs a command through the toolkit, prints
// strings from its table and the toolkit's, and shuts down through the hooks.
#include "core/PdToolkit.h"
#include "core/SToolkitClient.h"
#include "core/TarqToolkit.h"
#include "core/ToolkitStrings.h"
#include "core/TqObject.h"
#include "core/appiApplication.h"

#include <cstdio>
#include <cstring>

namespace {

// The client's string ids start at 1000, well clear of the toolkit's block (1 to 77).
enum HelloStringId { IDS_HELLO_GREETING = 1000, IDS_HELLO_COMMAND };

PdStringEntry helloStrings[] = {
    {"", ""},
    {"IDS_HELLO_GREETING", "Hello from %s"},
    {"IDS_HELLO_COMMAND", "The application ran the command '%s'"},
    {nullptr, nullptr},
};

class HelloApplication : public appiApplication {
public:
    HelloApplication() {
        setIniFile("hello.ini");
        setSaveAsEnabled(0);
        setClipboardEnabled(0);
    }
};

HelloApplication* application = nullptr;

appiApplication* createApplication() {
    std::puts("  [client] creating the application object");
    application = new HelloApplication;
    return application;
}

void deleteApplication() {
    std::puts("  [client] deleting the application object");
    delete application;
    application = nullptr;
}

int startApplication(int argc, char** argv, int, int) {
    std::printf("  [client] started with %d argument(s), program %s\n", argc,
                argc > 0 ? argv[0] : "?");
    return 0;
}

long executeCommand(const char* command) {
    std::printf("  [client] ");
    std::printf(PdToolkit::loadString(IDS_HELLO_COMMAND), command);
    std::printf("\n");
    return static_cast<long>(std::strlen(command));
}

void clientShutDown() {
    std::puts("  [client] shutdown hook ran");
}

} // namespace

int main(int argc, char** argv) {
    std::puts("1. Starting the static buffers");
    TqObject::startUp();

    std::puts("2. Registering as the application client (string ids from 1000)");
    SToolkitClient client{};
    client.isApplication = 1;
    client.shutDownFunc = &clientShutDown;
    client.createApplicationFunc = &createApplication;
    client.deleteApplicationFunc = &deleteApplication;
    client.startApplicationFunc = &startApplication;
    client.executeCommandFunc = &executeCommand;
    client.firstStringId = IDS_HELLO_GREETING;
    client.stringTable = helloStrings;
    TarqToolkit::registerToolkitClient(&client);

    std::puts("3. Creating the application");
    TarqToolkit::initApplication();
    std::printf("   ini path: %s\n", TarqToolkit::getAppiApp()->iniPath().toUtf8().constData());

    std::puts("4. Starting the application");
    const int started = TarqToolkit::startApplication(argc, argv, 0, 0);

    std::puts("5. Running a command through the toolkit");
    const long result = TarqToolkit::executeCommand("zoom fit");
    std::printf("   the command returned %ld\n", result);

    std::puts("6. Looking strings up");
    std::printf("   own table (1000): ");
    std::printf(PdToolkit::loadString(IDS_HELLO_GREETING), "hello_client");
    std::printf("\n   toolkit table (%d): %s\n", IDS_SYNTAXERROR,
                PdToolkit::loadString(IDS_SYNTAXERROR));
    std::printf("   toolkit table (%d): %s\n", IDS_EXITING_APP,
                PdToolkit::loadString(IDS_EXITING_APP));

    std::puts("7. Shutting down through the hooks");
    TarqToolkit::shutDownApp();
    std::puts("Done.");
    return started;
}
