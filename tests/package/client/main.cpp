// A client built against the installed library: registers the toolkit, looks a string up and
// says which library file it was loaded from, so the test can tell the staged install from
// the build tree.
#include "core/PdToolkit.h"
#include "core/TarqToolkit.h"
#include "core/ToolkitStrings.h"
#include "core/TqObject.h"
#include "core/TqVersion.h"
#include "core/platform/piModule.h"

#include <cstdio>
#include <cstring>

int main() {
    TqObject::startUp();
    TarqToolkit::registerSelf();
    std::printf(PdToolkit::loadString(IDS_CANTOPEN), "x");
    std::printf("\nheaders %s, library %s\n", TQ_VERSION_STRING, tqVersionString());
    std::printf("loaded from %s\n",
                piModule::fileContaining(reinterpret_cast<const void*>(&tqVersionString)).c_str());
    TarqToolkit::shutDownApp();
    return std::strcmp(TQ_VERSION_STRING, tqVersionString()) == 0 ? 0 : 1;
}
