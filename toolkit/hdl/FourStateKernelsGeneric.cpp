// The four-state kernels for any processor (16 characters per step on x86-64's baseline).
#include "hdl/FourStateKernelsImpl_p.h"

FourStateKernels genericFourStateKernels() {
    return makeKernels();
}
