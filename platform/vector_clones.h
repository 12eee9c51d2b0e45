#pragma once

// Marks a function whose loops are worth wider vectors: it is compiled twice, and the
// processor it runs on decides which is called. Only for loops whose iterations don't depend
// on one another, so that the numbers are the same to the bit with either.
//
// Left out where the compiler or the loader can't choose, and under sanitizers, which aren't
// ready yet when the loader chooses.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define OCPAN_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define OCPAN_VECTOR_CLONES
#endif
