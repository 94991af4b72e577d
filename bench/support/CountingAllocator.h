// A replaced global operator new that counts every heap allocation of the program it is
// linked into, so that a benchmark can show that an operation allocates nothing.
#pragma once

// The number of allocations since the program started.
long allocationCount();
