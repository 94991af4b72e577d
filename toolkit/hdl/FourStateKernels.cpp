#include "hdl/FourStateKernels_p.h"

#include <cstdlib>
#include <cstring>

FourStateKernels genericFourStateKernels();
#ifdef TQ_HDL_AVX2
FourStateKernels avx2FourStateKernels();
#endif

namespace {

// TQ_HDL_KERNELS=generic forces the kernels every processor runs, so that the test suite can
// check them on a machine that would pick faster ones.
bool genericForced() {
    const char* choice = std::getenv("TQ_HDL_KERNELS");
    return choice != nullptr && std::strcmp(choice, "generic") == 0;
}

FourStateKernels choose() {
#ifdef TQ_HDL_AVX2
    if (!genericForced() && __builtin_cpu_supports("avx2"))
        return avx2FourStateKernels();
#else
    (void)genericForced;
#endif
    return genericFourStateKernels();
}

} // namespace

const FourStateKernels& FourStateKernels::get() {
    static const FourStateKernels kernels = choose();
    return kernels;
}
