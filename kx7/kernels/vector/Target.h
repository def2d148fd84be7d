// kx7text - what kernels are compiled for (internal).
#ifndef KX7_KERNELS_VECTOR_TARGET_H
#define KX7_KERNELS_VECTOR_TARGET_H

// KX7_WITHOUT_VECTORS: built as for a machine that nothing is known of.
#if (defined __x86_64__ || defined __i386__) && !defined KX7_WITHOUT_VECTORS
#define KX7_X86_KERNELS
#endif

// Reads whole aligned blocks, of which a part may lie beside the object: no page that is not there, but more than a
// sanitizer allows.
#define KX7_READS_BEYOND __attribute__((no_sanitize("address"), no_sanitize("thread")))

#ifdef KX7_X86_KERNELS
// By function and not by file: an inline function of a header must not be compiled for a machine that is not there.
#define KX7_SSE2 __attribute__((target("sse2")))
#define KX7_AVX2 __attribute__((target("avx2,popcnt")))
#define KX7_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))
#endif

#endif
