// A client built against the installed library: registers the toolkit and looks a string up.
#include "core/PdToolkit.h"
#include "core/TarqToolkit.h"
#include "core/ToolkitStrings.h"
#include "core/TqObject.h"

#include <cstdio>

int main() {
    TqObject::startUp();
    TarqToolkit::registerSelf();
    std::printf(PdToolkit::loadString(IDS_CANTOPEN), "x");
    std::printf("\nlibrary %s\n", tqVersionString());
    TarqToolkit::shutDownApp();
    return 0;
}
