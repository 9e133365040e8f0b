// What the processor can do beyond the SSE2 baseline, asked once.
//
// The wider forms (AVX2, AVX-512 for the float power, and AVX-512 with the
// byte permutes for the 8-bit tables) are compiled per function
// (__attribute__((target(...)))) and chosen at run time; they give the same
// bytes as the SSE2 and plain forms. They are
// left out of the Windows builds: the mingw-w64 compilers assume a 16-byte
// aligned stack there and spill 32- and 64-byte registers with aligned moves,
// which can fault.
#pragma once

#if (defined(__x86_64__) || defined(__i386__)) && defined(__SSE2__) && !defined(_WIN32) && \
    (defined(__GNUC__) || defined(__clang__))
#define EFFECTS_WIDE 1
#define EFFECTS_TARGET_AVX2 __attribute__((target("avx2")))
#define EFFECTS_TARGET_VBMI __attribute__((target("avx512f,avx512bw,avx512vbmi")))
#define EFFECTS_TARGET_AVX512 __attribute__((target("avx512f,avx512vl")))
#include <immintrin.h>
#else
#define EFFECTS_WIDE 0
#endif

namespace effects::cpu {

// Whether the AVX2 forms may run: the processor has AVX2 and the system
// saves its registers.
inline bool avx2() {
#if EFFECTS_WIDE
  static const bool has = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
  }();
  return has;
#else
  return false;
#endif
}

// Whether the AVX-512 byte permutes (VBMI, with BW) may run.
inline bool vbmi() {
#if EFFECTS_WIDE
  static const bool has = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vbmi") != 0;
  }();
  return has;
#else
  return false;
#endif
}

// Whether the AVX-512 foundation forms (with the 128- and 256-bit
// encodings) may run.
inline bool avx512() {
#if EFFECTS_WIDE
  static const bool has = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512vl") != 0;
  }();
  return has;
#else
  return false;
#endif
}

}  // namespace effects::cpu
