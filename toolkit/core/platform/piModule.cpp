#include "core/platform/piModule.h"

#include <dlfcn.h>

namespace {
bool describe(const void* address, Dl_info& info) {
    return address && dladdr(address, &info) != 0;
}
} // namespace

HINSTANCE piModule::containing(const void* address) {
    Dl_info info{};
    return describe(address, info) ? info.dli_fbase : nullptr;
}

HINSTANCE piModule::toolkit() {
    return containing(reinterpret_cast<const void*>(&piModule::toolkit));
}

std::string piModule::fileContaining(const void* address) {
    Dl_info info{};
    return describe(address, info) && info.dli_fname ? info.dli_fname : "";
}
