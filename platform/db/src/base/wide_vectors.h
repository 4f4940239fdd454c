// Loops over arrays that fill wider registers where the processor has them.
#pragma once

// Before a function: it is there for such processors, too, and the one that fits is taken when the library is
// loaded. A sanitizer's run-time is not ready for that by then.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define ORVANE_WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define ORVANE_WIDE_VECTORS
#endif
