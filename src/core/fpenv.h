// The floating-point environment the arithmetic is written for.
//
// A host may call with its own settings: another rounding mode, flush to
// zero, denormals read as zero, unmasked exceptions, or (on 32-bit x86 and for
// extended precision) a reduced x87 precision. Every rounding step of the
// library, and every float operation, would then give other bytes, and an
// unmasked exception could trap inside a call. An export that computes in
// floating point therefore holds a FloatEnvironment for the duration of the
// call: it sets round to nearest, all exceptions masked, no flush to zero,
// and x87 64-bit precision, and puts the host's settings back (its exception
// flags included) on the way out. When the host already has these settings,
// which is nearly always, it only reads the control registers.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace effects {

class FloatEnvironment {
 public:
  FloatEnvironment() {
#if defined(__SSE2__)
    csr_ = _mm_getcsr();
    // Ignore the sticky flags (bits 0-5); everything else must be the default.
    if ((csr_ & ~0x3Fu) != kDefaultCsr) _mm_setcsr(kDefaultCsr);
#endif
#if defined(__i386__) || defined(__x86_64__)
    uint16_t cw;
    __asm__ __volatile__("fnstcw %0" : "=m"(cw));
    // Exception masks (bits 0-5), precision (8-9) and rounding (10-11).
    x87Changed_ = (cw & 0x0F3Fu) != 0x033Fu;
    if (x87Changed_) {
      __asm__ __volatile__("fnstenv %0" : "=m"(x87_));
      const uint16_t ours = static_cast<uint16_t>((cw & ~0x0F3Fu) | 0x033Fu);
      __asm__ __volatile__("fldcw %0" : : "m"(ours));
    }
#endif
  }
  ~FloatEnvironment() {
#if defined(__i386__) || defined(__x86_64__)
    if (x87Changed_) {
      // The host's control word and its status flags come back (so no
      // exception flag of ours meets an exception the host has unmasked),
      // but the register stack as it is now: on 32-bit x86 a float result
      // may already be waiting in st(0).
      unsigned char now[28];
      __asm__ __volatile__("fnstenv %0" : "=m"(now));
      uint16_t sw, hostSw;
      std::memcpy(now, x87_, 2);  // control word
      std::memcpy(&sw, now + 4, 2);
      std::memcpy(&hostSw, x87_ + 4, 2);
      sw = static_cast<uint16_t>((sw & 0x3800u) | (hostSw & ~0x3800u));  // the stack top stays
      std::memcpy(now + 4, &sw, 2);
      __asm__ __volatile__("fldenv %0" : : "m"(now));
    }
#endif
#if defined(__SSE2__)
    if ((csr_ & ~0x3Fu) != kDefaultCsr) _mm_setcsr(csr_);
#endif
  }
  FloatEnvironment(const FloatEnvironment&) = delete;
  FloatEnvironment& operator=(const FloatEnvironment&) = delete;

  // All exceptions masked, round to nearest, no flush to zero, denormals
  // read as they are.
  static constexpr uint32_t kDefaultCsr = 0x1F80u;

 private:
#if defined(__SSE2__)
  uint32_t csr_;
#endif
#if defined(__i386__) || defined(__x86_64__)
  bool x87Changed_;
  unsigned char x87_[28];  // the 32-bit protected-mode x87 environment
#endif
};

}  // namespace effects
