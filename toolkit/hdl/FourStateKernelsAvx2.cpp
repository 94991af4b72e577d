// The four-state kernels compiled for AVX2 (32 characters per step); used only where the
// processor has it.
#include "hdl/FourStateKernelsImpl_p.h"

FourStateKernels avx2FourStateKernels() {
    return makeKernels();
}
