// Correctly rounded sin, cos, atan2, exp and log (see crmath.h).
//
// Each function works in two steps (Ziv's strategy):
//
// 1. A fast estimate in double-double arithmetic: table-driven argument
//    reduction, a short polynomial whose leading terms are formed exactly
//    (error-free sums and products), and a bound on the estimate's error,
//    2^-66 to 2^-73 of the result. When the interval [estimate - bound,
//    estimate + bound] rounds to a single double, that is the correctly
//    rounded result. The bound covers the argument reduction, the table
//    entries (2^-106), the polynomial's truncation and every rounding of the
//    evaluation; each function's budget is worked out beside its code, with
//    a margin of 4 to 16 over the sum, and the tests hold it against MPFR.
//
// 2. Otherwise (an input whose value lies within the bound of a rounding
//    boundary: about one in ten thousand), the same function in multi-word
//    floating point with 256-bit mantissas: exact argument reduction (the
//    full product of the input with 2/pi for sin and cos), series evaluated
//    to about 2^-240, then one rounding. The hardest inputs known for these
//    functions (searches cover exp and log completely, sin, cos and atan
//    over wide ranges) lie about 2^-120 from a rounding boundary, far
//    outside this step's error; it rounds what it computed.
//
// Only IEEE double operations rounded to nearest (sums, products, quotients)
// and integer arithmetic are used, in the same order on every build: no
// platform maths call, no fused multiply-add, no extended precision.
#include "core/crmath.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "core/crmath_tables.h"

namespace effects::crmath {

namespace {

using namespace tables;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// ---------------------------------------------------------------------------
// Double-double building blocks (exact when nothing overflows or underflows).

struct DD {
  double hi, lo;
};

// a + b = s + e exactly.
inline DD twoSum(double a, double b) {
  const double s = a + b;
  const double bb = s - a;
  return {s, (a - (s - bb)) + (b - bb)};
}

// a + b = s + e exactly, for |a| >= |b| (or a = 0).
inline DD fastTwoSum(double a, double b) {
  const double s = a + b;
  return {s, b - (s - a)};
}

// a = hi + lo with hi holding the upper 26 bits (Veltkamp's split).
inline void split(double a, double* hi, double* lo) {
  const double c = 134217729.0 * a;  // 2^27 + 1
  *hi = c - (c - a);
  *lo = a - *hi;
}

// a * b = p + e exactly (Dekker), for |a|, |b| below 2^995.
inline DD twoProd(double a, double b) {
  const double p = a * b;
  double ah, al, bh, bl;
  split(a, &ah, &al);
  split(b, &bh, &bl);
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

inline double absolute(double x) { return std::bit_cast<double>(std::bit_cast<uint64_t>(x) & ~(uint64_t{1} << 63)); }
inline bool signBit(double x) { return (std::bit_cast<uint64_t>(x) >> 63) != 0; }

// 2^k for -1022 <= k <= 1023.
inline double pow2(int k) { return std::bit_cast<double>(static_cast<uint64_t>(k + 1023) << 52); }

// v * 2^k, exact whenever the result is representable (-1100 < k < 2046).
inline double scaled(double v, int k) {
  if (k > 1023) return v * pow2(1023) * pow2(k - 1023);
  if (k < -1022) return v * pow2(k + 600) * pow2(-600);
  return v * pow2(k);
}

// Rounds to nearest integer (ties to even) for |v| < 2^51.
inline double nearestInteger(double v) {
  constexpr double kShift = 0x1.8p52;
  return (v + kShift) - kShift;
}

// The rounding test. e.hi + e.lo approximates the value within e.error, with
// |e.lo| at most an ulp of e.hi and e.hi normal. When the two ends of the
// interval round to the same double, the value rounds to it too (rounding is
// monotonic). The additions' own roundings (at most 2^-105 |hi|) are covered
// by the margins of every bound below.
inline bool roundOnce(const detail::Estimate& e, double* out) {
  const double a = e.hi + (e.lo - e.error);
  const double b = e.hi + (e.lo + e.error);
  if (a != b) return false;
  *out = a;
  return true;
}

inline detail::Estimate estimate(DD v, double relativeError) {
  const DD n = fastTwoSum(v.hi, v.lo);
  return {n.hi, n.lo, relativeError * absolute(n.hi), true};
}

// ---------------------------------------------------------------------------
// Multi-word floating point for the slow step: sign * 0.w[0]w[1]... * 2^e,
// 32-bit words, normalised (w[0] >= 2^31) unless the sign is 0. Every
// operation truncates to kWords words: a relative error below 2^-254 each.

constexpr int kWords = 8;

struct Mp {
  int sign = 0;
  int32_t e = 0;
  uint32_t w[kWords] = {};
};

// Builds a normalised number from `n` words (most significant first) of
// value 0.words * 2^e.
Mp normalised(const uint32_t* words, int n, int sign, int32_t e) {
  Mp r;
  int first = 0;
  while (first < n && words[first] == 0) ++first;
  if (first == n) return r;
  const int shift = std::countl_zero(words[first]);
  for (int i = 0; i < kWords; ++i) {
    const int j = first + i;
    const uint32_t hi = j < n ? words[j] : 0;
    const uint32_t lo = j + 1 < n ? words[j + 1] : 0;
    r.w[i] = shift == 0 ? hi : (hi << shift) | (lo >> (32 - shift));
  }
  r.sign = sign;
  r.e = e - 32 * first - shift;
  return r;
}

Mp fromDouble(double d) {
  const uint64_t bits = std::bit_cast<uint64_t>(d);
  const int field = static_cast<int>((bits >> 52) & 0x7ff);
  uint64_t m = bits & ((uint64_t{1} << 52) - 1);
  int32_t e = -1074;  // d = m * 2^e
  if (field != 0) {
    m |= uint64_t{1} << 52;
    e = field - 1075;
  }
  if (m == 0) return {};
  const uint32_t words[2] = {static_cast<uint32_t>(m >> 32), static_cast<uint32_t>(m)};
  return normalised(words, 2, signBit(d) ? -1 : 1, e + 64);
}

Mp fromWords(const Words& c) { return normalised(c.w, kWords, 1, c.e); }

Mp negated(Mp a) {
  a.sign = -a.sign;
  return a;
}

Mp timesPow2(Mp a, int32_t k) {
  a.e += k;
  return a;
}

int compareMagnitude(const Mp& a, const Mp& b) {
  if (a.e != b.e) return a.e < b.e ? -1 : 1;
  for (int i = 0; i < kWords; ++i)
    if (a.w[i] != b.w[i]) return a.w[i] < b.w[i] ? -1 : 1;
  return 0;
}

Mp add(Mp a, Mp b) {
  if (a.sign == 0) return b;
  if (b.sign == 0) return a;
  if (compareMagnitude(a, b) < 0) std::swap(a, b);
  // Two guard words keep a one-word cancellation exact enough.
  constexpr int n = kWords + 2;
  uint32_t x[n] = {}, y[n] = {};
  std::memcpy(x, a.w, sizeof a.w);
  const int64_t shift = int64_t{a.e} - b.e;
  if (shift >= 32 * n) return a;
  const int ws = static_cast<int>(shift / 32), bs = static_cast<int>(shift % 32);
  for (int i = 0; i < kWords && i + ws < n; ++i) {
    y[i + ws] |= bs == 0 ? b.w[i] : b.w[i] >> bs;
    if (bs != 0 && i + ws + 1 < n) y[i + ws + 1] |= b.w[i] << (32 - bs);
  }
  uint32_t out[n + 1];
  if (a.sign == b.sign) {
    uint64_t carry = 0;
    for (int i = n - 1; i >= 0; --i) {
      const uint64_t t = uint64_t{x[i]} + y[i] + carry;
      out[i + 1] = static_cast<uint32_t>(t);
      carry = t >> 32;
    }
    out[0] = static_cast<uint32_t>(carry);
  } else {
    int64_t borrow = 0;
    for (int i = n - 1; i >= 0; --i) {
      int64_t t = int64_t{x[i]} - y[i] - borrow;
      borrow = t < 0 ? 1 : 0;
      if (t < 0) t += int64_t{1} << 32;
      out[i + 1] = static_cast<uint32_t>(t);
    }
    out[0] = 0;
  }
  return normalised(out, n + 1, a.sign, a.e + 32);
}

Mp subtract(const Mp& a, const Mp& b) { return add(a, negated(b)); }

Mp multiply(const Mp& a, const Mp& b) {
  if (a.sign == 0 || b.sign == 0) return {};
  uint32_t p[2 * kWords] = {};
  for (int i = kWords - 1; i >= 0; --i) {
    uint64_t carry = 0;
    for (int j = kWords - 1; j >= 0; --j) {
      const uint64_t t = uint64_t{a.w[i]} * b.w[j] + p[i + j + 1] + carry;
      p[i + j + 1] = static_cast<uint32_t>(t);
      carry = t >> 32;
    }
    p[i] = static_cast<uint32_t>(carry);
  }
  return normalised(p, 2 * kWords, a.sign * b.sign, a.e + b.e);
}

Mp multiplySmall(const Mp& a, uint32_t k) {
  if (a.sign == 0 || k == 0) return {};
  uint32_t p[kWords + 1];
  uint64_t carry = 0;
  for (int i = kWords - 1; i >= 0; --i) {
    const uint64_t t = uint64_t{a.w[i]} * k + carry;
    p[i + 1] = static_cast<uint32_t>(t);
    carry = t >> 32;
  }
  p[0] = static_cast<uint32_t>(carry);
  return normalised(p, kWords + 1, a.sign, a.e + 32);
}

Mp divideSmall(const Mp& a, uint32_t k) {
  if (a.sign == 0) return {};
  uint32_t q[kWords + 1];
  uint64_t rest = 0;
  for (int i = 0; i <= kWords; ++i) {
    const uint64_t cur = (rest << 32) | (i < kWords ? a.w[i] : 0);
    q[i] = static_cast<uint32_t>(cur / k);
    rest = cur % k;
  }
  return normalised(q, kWords + 1, a.sign, a.e);
}

// a / b: b's reciprocal by Newton's iteration y += y (1 - b y) from a double
// (53 -> 106 -> 212 -> 424 bits), then one product.
Mp divide(const Mp& a, const Mp& b) {
  if (a.sign == 0) return {};
  const double mantissa = b.w[0] * 0x1p-32 + b.w[1] * 0x1p-64;
  Mp y = timesPow2(fromDouble(1 / mantissa), -b.e);
  y.sign = b.sign;
  const Mp one = fromDouble(1);
  for (int i = 0; i < 3; ++i) y = add(y, multiply(y, subtract(one, multiply(b, y))));
  return multiply(a, y);
}

inline int bitAt(const Mp& a, int k) {  // bit k of the mantissa, k = 1 is the leading one
  if (k < 1) return 0;
  const int i = (k - 1) / 32;
  return (a.w[i] >> (31 - (k - 1) % 32)) & 1;
}

// Rounds to the nearest double (ties cannot occur for these functions),
// subnormal and overflowing results included.
double toDouble(const Mp& v) {
  if (v.sign == 0) return 0;
  const int32_t lead = v.e - 1;  // v in [2^lead, 2^(lead + 1))
  if (lead > 1023) return v.sign * kInfinity;
  const int32_t p = lead >= -1022 ? 53 : lead + 1075;  // bits kept
  if (p < 0) return v.sign * 0.0;
  const uint64_t top = (uint64_t{v.w[0]} << 32) | v.w[1];
  uint64_t kept = p == 0 ? 0 : top >> (64 - p);
  kept += static_cast<uint64_t>(bitAt(v, p + 1));
  return v.sign * scaled(static_cast<double>(kept), lead - p + 1);
}

// ---------------------------------------------------------------------------
// sin and cos.

// Reduction x = k pi/2 + r with |r| <= pi/4 (a hair more), r = rh + rl.
struct Reduction {
  double rh = 0, rl = 0;
  int quadrant = 0;  // k mod 4
  bool ok = false;
};

// |x| < 2^20, Cody and Waite's reduction with pi/2 = P1 + P2 + P3 + tail
// (33 + 33 + 53 bits, |tail| < 2^-119). For k != 0: k P1 and k P2 are exact
// (|k| < 2^20); x - k P1 is exact (both multiples of 2^-53, difference below
// 1); the twoSum with k P2 is exact; k P3 is rounded (2^-101) and so is the
// low sum (2^-101); |k tail| < 2^-99. So |r - (rh + rl)| < 2^-98, which is
// below 2^-72 |sin r| when |r| >= 2^-25 (smaller r go to the slow step).
inline Reduction reduceMedium(double x) {
  const double k = nearestInteger(x * kTwoOverPi);
  if (k == 0) return {x, 0, 0, true};
  const double a = x - k * kHalfPi1;
  const DD s = twoSum(a, -(k * kHalfPi2));
  const DD r = twoSum(s.hi, s.lo - k * kHalfPi3);
  return {r.hi, r.lo, static_cast<int32_t>(k) & 3, absolute(r.hi) >= 0x1p-25};
}

// Payne and Hanek's reduction: the bits of |x| * 2/pi from two above the
// binary point down, using L words of 2/pi. |x| = M 2^E with M < 2^53. The
// words of 2/pi before i0 only add multiples of 4, so the product starts at
// word i0 and has s bits after the point. `fraction` receives the L words
// of the fractional part's magnitude (after moving to the nearest integer:
// below 1/2), `negative` whether it is below that integer, `quadrant` that
// integer mod 4, all for |x|. The truncated tail of 2/pi leaves an error
// below 2^(86 - 32 L) in the fraction.
template <int L>
void reduceBits(double ax, uint32_t* fraction, bool* negative, int* quadrant) {
  const uint64_t bits = std::bit_cast<uint64_t>(ax);
  const uint64_t m = (bits & ((uint64_t{1} << 52) - 1)) | (uint64_t{1} << 52);
  const int e = static_cast<int>(bits >> 52) - 1075;  // ax is normal here
  const int i0 = e >= 2 ? (e - 2) / 32 : 0;
  const int s = 32 * (i0 + L) - e;
  // p = M * (words i0 .. i0 + L - 1 of 2/pi), least significant word first.
  constexpr int n = L + 2;
  uint32_t p[n] = {};
  const uint32_t mw[2] = {static_cast<uint32_t>(m), static_cast<uint32_t>(m >> 32)};
  for (int h = 0; h < 2; ++h) {
    uint64_t carry = 0;
    for (int j = 0; j < L; ++j) {
      const uint64_t t = uint64_t{kTwoOverPiBits[i0 + L - 1 - j]} * mw[h] + p[j + h] + carry;
      p[j + h] = static_cast<uint32_t>(t);
      carry = t >> 32;
    }
    for (int j = L + h; j < n && carry != 0; ++j) {
      const uint64_t t = uint64_t{p[j]} + carry;
      p[j] = static_cast<uint32_t>(t);
      carry = t >> 32;
    }
  }
  // 32 bits of p from bit `pos` up (bits below 0 read as 0).
  auto bitsAt = [&p](int pos) -> uint32_t {
    if (pos <= -32) return 0;
    if (pos < 0) return p[0] << (-pos);
    const int i = pos / 32, b = pos % 32;
    const uint32_t lo = i < n ? p[i] : 0, hi = i + 1 < n ? p[i + 1] : 0;
    return b == 0 ? lo : (lo >> b) | (hi << (32 - b));
  };
  int q = static_cast<int>(bitsAt(s) & 3);
  for (int j = 0; j < L; ++j) fraction[j] = bitsAt(s - 32 * (j + 1));
  *negative = (fraction[0] >> 31) != 0;
  if (*negative) {  // 1 - fraction, to the next integer up
    q = (q + 1) & 3;
    uint64_t borrow = 0;
    for (int j = L - 1; j >= 0; --j) {
      const uint64_t t = (uint64_t{1} << 32) - fraction[j] - borrow;
      fraction[j] = static_cast<uint32_t>(t);
      borrow = (t >> 32) == 0 ? 1 : 0;
    }
  }
  *quadrant = q;
}

// |x| >= 2^20 for the fast step: 8 words, so the fraction is known to
// 2^-170; with at most 64 leading zero bits (the closest double to a
// multiple of pi/2 leaves about 2^-61) it has 105 correct bits, taken as a
// double-double and multiplied by pi/2: |error| < 2^-100 |r|.
inline Reduction reduceLarge(double x) {
  constexpr int L = 8;
  uint32_t f[L];
  bool negative;
  int q;
  reduceBits<L>(absolute(x), f, &negative, &q);
  int z = 0;
  while (z < 3 && f[z] == 0) ++z;
  const int shift = std::countl_zero(f[z]);
  const int lead = 32 * z + shift;  // leading zero bits of the fraction
  if (lead > 64) return {};
  auto word = [&f](int i) -> uint64_t { return i < L ? f[i] : 0; };
  // 128 bits from the leading one.
  const uint64_t w0 = (word(z) << 32) | word(z + 1), w1 = (word(z + 2) << 32) | word(z + 3);
  const uint64_t w2 = word(z + 4) << 32;
  const uint64_t a = shift == 0 ? w0 : (w0 << shift) | (w1 >> (64 - shift));
  const uint64_t b = shift == 0 ? w1 : (w1 << shift) | (w2 >> (64 - shift));
  const double fh = static_cast<double>(a >> 11) * scaled(1, -lead - 53);
  const double fl = static_cast<double>(((a & 0x7ff) << 42) | (b >> 22)) * scaled(1, -lead - 106);
  const DD p = twoProd(fh, kHalfPiPair[0]);
  const DD r = fastTwoSum(p.hi, p.lo + (fh * kHalfPiPair[1] + fl * kHalfPiPair[0]));
  double rh = negative ? -r.hi : r.hi, rl = negative ? -r.lo : r.lo;
  if (signBit(x)) {  // sin is odd, cos even: x = -(k pi/2 + r)
    rh = -rh;
    rl = -rl;
    q = (4 - q) & 3;
  }
  return {rh, rl, q, absolute(rh) >= 0x1p-25};
}

// sin r and cos r for |r| <= pi/4 + 2^-30, r = rh + rl, |rl| <= 2^-53 |rh|:
// |r| = a + d with a = i/256 and |d| <= 2^-9, d = dh + al (dh exact), then
//   sin r = S (1 + cm) + C (d + ds),  cos r = C (1 + cm) - S (d + ds)
// with S, C = sin a, cos a from the table (2^-106), ds = sin d - d through
// d^7 (truncation below 2^-99) and cm = cos d - 1 through d^6 (below 2^-87),
// both from dh in double (cm's -al dh keeps the low part's first-order
// effect). The leading products C dh and S dh are exact; the remaining
// terms are below 2^-19 |S| or 2^-29 |C d|, each with a few roundings of
// 2^-53: at most 2^-70.5 of the result (sin r >= S/2 when i >= 1; cos r >=
// 0.7). With the reduction's 2^-72, the fast step's bound is 2^-66 (a
// margin of about 8 for the rounding test's own additions and slack).
constexpr double kSinCosError = 0x1p-66;

template <bool wantSin, bool wantCos>
inline void sinCosKernel(double rh, double rl, DD* sr, DD* cr) {
  const bool negative = rh < 0;
  const double ar = negative ? -rh : rh, al = negative ? -rl : rl;
  const int i = static_cast<int>(ar * 256 + 0.5);
  const double dh = ar - i * 0x1p-8;  // exact
  const double* S = kSinCos[i][0];
  const double* C = kSinCos[i][1];
  const double z = dh * dh;
  const double ds = dh * z * (-0x1.5555555555555p-3 + z * (0x1.1111111111111p-7 - z * 0x1.a01a01a01a01ap-13));
  const double cm = -(al * dh) + z * (-0.5 + z * (0x1.5555555555555p-5 - z * 0x1.6c16c16c16c17p-10));
  if (wantSin) {
    const DD p = twoProd(C[0], dh);
    const DD t = fastTwoSum(S[0], p.hi);
    const double low = (C[0] * ds + S[0] * cm) + ((C[0] * al + C[1] * dh + p.lo) + (t.lo + S[1]));
    const DD v = fastTwoSum(t.hi, low);
    *sr = negative ? DD{-v.hi, -v.lo} : v;
  }
  if (wantCos) {
    const DD p = twoProd(S[0], dh);
    const DD t = fastTwoSum(C[0], -p.hi);
    const double low = (C[0] * cm - S[0] * ds) + ((-(S[0] * al) - S[1] * dh - p.lo) + (t.lo + C[1]));
    *cr = fastTwoSum(t.hi, low);
  }
}

inline Reduction reduce(double x) { return absolute(x) < 0x1p20 ? reduceMedium(x) : reduceLarge(x); }

inline DD negatedIf(bool n, DD v) { return n ? DD{-v.hi, -v.lo} : v; }

// sin x and cos x from sin r and cos r by the quadrant.
template <bool wantSin, bool wantCos>
inline void sinCosEstimates(double x, detail::Estimate* s, detail::Estimate* c) {
  const Reduction red = reduce(x);
  if (!red.ok) return;
  const int q = red.quadrant;
  // sin x is +-sin r (even q) or +-cos r (odd q); cos x the other one.
  const bool even = (q & 1) == 0;
  const bool needSinR = even ? wantSin : wantCos, needCosR = even ? wantCos : wantSin;
  DD sr{}, cr{};
  if (needSinR && needCosR)
    sinCosKernel<true, true>(red.rh, red.rl, &sr, &cr);
  else if (needSinR)
    sinCosKernel<true, false>(red.rh, red.rl, &sr, &cr);
  else
    sinCosKernel<false, true>(red.rh, red.rl, &sr, &cr);
  if (wantSin) *s = estimate(negatedIf(q >= 2, (q & 1) == 0 ? sr : cr), kSinCosError);
  if (wantCos) *c = estimate(negatedIf(q == 1 || q == 2, (q & 1) == 0 ? cr : sr), kSinCosError);
}

// The slow step's reduction: r exactly for |x| < 0.78 (below pi/4), else
// from 16 words of 2/pi (error 2^-426 in the fraction, at most 2^-298 of r
// with up to 128 leading zero bits), times pi/2.
Mp reducedMp(double x, int* quadrant) {
  *quadrant = 0;
  if (absolute(x) < 0.78) return fromDouble(x);
  constexpr int L = 16;
  uint32_t f[L];
  bool negative;
  int q;
  reduceBits<L>(absolute(x), f, &negative, &q);
  Mp r = multiply(normalised(f, L, 1, 0), fromWords(kHalfPiWords));
  if (negative != signBit(x)) r = negated(r);
  *quadrant = signBit(x) ? (4 - q) & 3 : q;
  return r;
}

inline bool negligible(const Mp& term, const Mp& sum) { return term.sign == 0 || term.e < sum.e - 32 * kWords - 4; }

// sin r (odd) or cos r (even) by their Taylor series, |r| <= pi/4: terms
// until below 2^-260 of the sum (at most about 30).
Mp sinCosSeries(const Mp& r, bool odd) {
  const Mp r2 = multiply(r, r);
  Mp term = odd ? r : fromDouble(1);
  Mp sum = term;
  for (uint32_t n = odd ? 2 : 1; n < 200; n += 2) {
    term = divideSmall(multiply(term, r2), n * (n + 1));
    if (negligible(term, sum)) break;
    sum = ((n / 2) % 2 == (odd ? 1u : 0u)) ? subtract(sum, term) : add(sum, term);
  }
  return sum;
}

// sin x (cosine = false) or cos x in the slow step.
double sinCosSlow(double x, bool cosine) {
  int q;
  const Mp r = reducedMp(x, &q);
  if (cosine) q = (q + 1) & 3;  // cos x = sin(x + pi/2)
  const Mp v = sinCosSeries(r, (q & 1) == 0);
  return toDouble(q >= 2 ? negated(v) : v);
}

// sin x rounds to x below 2^-26 (x^3/6 is under a quarter of x's ulp) and
// cos x to 1 below 2^-27 (x^2/2 < 2^-55).
constexpr double kSinTiny = 0x1p-26, kCosTiny = 0x1p-27;

// ---------------------------------------------------------------------------
// exp.

// Beyond these exp(x) rounds to +inf, or is below 2^-1075 and rounds to +0.
constexpr double kExpOverflow = 0x1.62e42fefa39efp+9, kExpUnderflow = -0x1.74910d52d3051p+9;

// x = (128 m + j) ln2/128 + r, |r| <= ln2/256 (a hair more), exp x =
// 2^m 2^(j/128) exp(r). ln2/128 = L1 + L2 + L3 + tail (35 + 35 + 53 bits,
// |tail| < 2^-130); |n| < 2^18, so n L1 and n L2 are exact, x - n L1 is
// exact (multiples of 2^-61 below 2^-8) and r is known to 2^-110.
// exp(r) - 1 = r + r^2/2 + r^3 P(r) through r^7 (truncation 2^-83): r^2/2
// from rh's 26-bit halves (the leading square exact, the rest to 2^-80),
// the cubic part (below 2^-28) in double (2^-79). Times T = 2^(j/128)
// (2^-106) with the leading product exact; the low sums are below 2^-27:
// 2^-78. In all under 2^-76 of the result: the bound is 2^-73.
constexpr double kExpError = 0x1p-73;

}  // namespace

namespace detail {

void sinCosEstimate(double x, Estimate* s, Estimate* c) {
  *s = *c = {};
  if (absolute(x) < kInfinity) sinCosEstimates<true, true>(x, s, c);
}

Estimate expEstimate(double x) {
  if (!(absolute(x) < 746)) return {};
  const double nd = nearestInteger(x * k128OverLn2);
  const int32_t n = static_cast<int32_t>(nd);
  const int32_t j = n & 127, m = (n - j) / 128;
  if (m < -1021) return {};  // subnormal (or nearly) results: the slow step
  const double a = x - nd * kLn2Over128_1;
  const DD s = twoSum(a, -(nd * kLn2Over128_2));
  const DD r = twoSum(s.hi, s.lo - nd * kLn2Over128_3);
  const double rh = r.hi, rl = r.lo;
  const double r2 = rh * rh;
  const double cubic = rh * r2 *
                       (0x1.5555555555555p-3 +
                        rh * (0x1.5555555555555p-5 +
                              rh * (0x1.1111111111111p-7 + rh * (0x1.6c16c16c16c17p-10 + rh * 0x1.a01a01a01a01ap-13))));
  // r^2/2 = r26^2/2 (exact: 26-bit halves) + r26 rr + rr^2/2 + rh rl.
  double r26, rr;
  split(rh, &r26, &rr);
  const DD e = fastTwoSum(rh, r26 * r26 * 0.5);
  const double el = e.lo + (((r26 * rr + 0.5 * (rr * rr)) + rl + rh * rl) + cubic);
  const double* T = kExp2[j];
  const DD p = twoProd(T[0], e.hi);
  const DD v = fastTwoSum(T[0], p.hi);
  const double low = v.lo + (p.lo + T[0] * el + T[1] + T[1] * e.hi);
  Estimate out = estimate({v.hi, low}, kExpError);
  out.exponent = m;
  return out;
}

}  // namespace detail

namespace {

// ---------------------------------------------------------------------------
// log.

// x = 2^E u, u in [sqrt(2)/2, sqrt(2)); i = round(512 (u - 1)); c, 1/(1 +
// i/512) to 26 bits, from the table and z = c u - 1 exactly as a
// double-double, |z| <= 2^-9.5. log x = E ln2 - log c + log1p(z), with
// log1p(z) = z - z^2/2 + z^3 P(z) through z^8 (truncation 2^-79 |z|): z^2/2
// from zh's 26-bit halves (the leading square exact, the rest to 2^-88
// |z|), the cubic part (below 2^-20.6 |z|) in double, under 2^-71.5 |z| with the low
// sums. E ln2 uses ln2 = L1 + L2 (42 + 53 bits; E L1 exact, the rest
// 2^-84); -log c is in the table (2^-106). No cancellation: for E != 0 the
// result is above 0.34, and for i != 0, log u is at least half of -log c.
// So the error is below 2^-70.5 of the result; the bound is 2^-68.
constexpr double kLogError = 0x1p-68;

// x as 2^E u with u in [sqrt(2)/2, sqrt(2)), for finite x > 0.
inline double logSplit(double x, int32_t* exponent) {
  int32_t bias = 0;
  if (x < 0x1p-1022) {
    x *= 0x1p54;
    bias = -54;
  }
  const uint64_t bits = std::bit_cast<uint64_t>(x);
  int32_t e = static_cast<int32_t>(bits >> 52) - 1023;
  double u = std::bit_cast<double>((bits & ((uint64_t{1} << 52) - 1)) | (uint64_t{1023} << 52));
  if (u >= 0x1.6a09e667f3bcdp+0) {
    u *= 0.5;
    ++e;
  }
  *exponent = e + bias;
  return u;
}

// ---------------------------------------------------------------------------
// atan2.

// atan(u) for 0 <= u <= 1, u = uh + ul: c = j/256 nearest, v = (u - c) /
// (1 + u c) as a double-double (2^-104 relative, or 2^-106 absolute when u
// is near c), |v| <= 2^-9; atan u = atan c + v + v^3 P(v^2) through v^7
// (truncation 2^-75 |v|), the cubic part (below 2^-19.6 |v|) in double:
// 2^-71.5 |v|. For j >= 1 the result is at least atan(1/256) and twice
// |atan v|. Then pi/2 - t and pi - t (the value is at least pi/4 and the
// subtrahend at most pi/2 of it: no cancellation). Under 2^-70 of the
// result in all; the bound is 2^-68.
constexpr double kAtanError = 0x1p-68;

inline DD atanKernel(double uh, double ul) {
  const int j = static_cast<int>(uh * 256 + 0.5);
  double vh = uh, vl = ul;
  if (j != 0) {
    const double c = j * 0x1p-8;
    const double nh = uh - c;  // exact
    const DD p = twoProd(uh, c);
    const DD d = fastTwoSum(1, p.hi);
    const double dl = d.lo + (p.lo + ul * c);
    vh = nh / d.hi;
    const DD t = twoProd(vh, d.hi);
    vl = (((nh - t.hi) - t.lo) + ul - vh * dl) / d.hi;
  }
  const double v2 = vh * vh;
  const double cubic = vh * v2 * (-0x1.5555555555555p-2 + v2 * (0x1.999999999999ap-3 - v2 * 0x1.2492492492492p-3));
  const double* A = kAtan[j];
  const DD t = fastTwoSum(A[0], vh);
  return {t.hi, t.lo + (A[1] + ((vl - v2 * vl) + cubic))};
}

inline DD minus(const double* constant, DD t) {
  const DD d = twoSum(constant[0], -t.hi);
  return {d.hi, d.lo + (constant[1] - t.lo)};
}

// The C library's special values: zeros, infinities and NaN. Returns false
// for two finite nonzero operands.
inline bool atan2Special(double y, double x, double* out) {
  const double ay = absolute(y), ax = absolute(x);
  const bool negY = signBit(y), negX = signBit(x);
  double r;
  if (y != y || x != x) {
    *out = y + x;
    return true;
  }
  if (ay == 0)
    r = negX ? kPiPair[0] : 0;
  else if (ax == 0)
    r = kHalfPiPair[0];
  else if (ay == kInfinity)
    r = ax == kInfinity ? (negX ? kThreeQuarterPi : kQuarterPi) : kHalfPiPair[0];
  else if (ax == kInfinity)
    r = negX ? kPiPair[0] : 0;
  else
    return false;
  *out = negY ? -r : r;
  return true;
}

}  // namespace

namespace detail {

Estimate logEstimate(double x) {
  if (!(x > 0 && x < kInfinity)) return {};
  int32_t exponent;
  const double u = logSplit(x, &exponent);
  const int i = static_cast<int>(nearestInteger((u - 1) * 512));
  const LogEntry& entry = kLog[i + 150];
  // c has 26 bits, so c u = ph + pl exactly with u's halves alone.
  double uh, ul;
  split(u, &uh, &ul);
  const double ph = entry.c * u;
  const double pl = (entry.c * uh - ph) + entry.c * ul;
  const DD z = twoSum(ph - 1, pl);  // ph - 1 exact: ph is within 2^-8 of 1
  const double zh = z.hi, zl = z.lo;
  const double cubic =
      zh * zh * zh *
      (0x1.5555555555555p-2 +
       zh * (-0.25 + zh * (0x1.999999999999ap-3 + zh * (-0x1.5555555555555p-3 + zh * (0x1.2492492492492p-3 - zh * 0.125)))));
  // -z^2/2 = -z26^2/2 (exact: 26-bit halves) - z26 (zr + zl) - (zr + zl)^2/2.
  double z26, zr;
  split(zh, &z26, &zr);
  const DD a = fastTwoSum(zh, z26 * z26 * -0.5);
  const double al = a.lo + (((zl - z26 * (zr + zl)) - 0.5 * (zr * zr)) + cubic);
  const double ed = exponent;
  const DD b = twoSum(ed * kLn2_1, entry.minusLog[0]);
  const double bl = b.lo + (ed * kLn2_2 + entry.minusLog[1]);
  const DD c = twoSum(b.hi, a.hi);
  return estimate({c.hi, c.lo + (bl + al)}, kLogError);
}

Estimate atan2Estimate(double y, double x) {
  const double ay = absolute(y), ax = absolute(x);
  const bool swap = ay > ax;
  double n = swap ? ax : ay, d = swap ? ay : ax;
  if (!(n > 0 && d < kInfinity)) return {};  // zeros, infinities and NaN: atan2Special
  auto field = [](double v) { return static_cast<int>(std::bit_cast<uint64_t>(v) >> 52); };
  if (field(d) == 0) {  // both subnormal
    n *= 0x1p600;
    d *= 0x1p600;
  }
  if (field(d) - field(n) > 500) return {};  // a quotient below 2^-500: the slow step
  if (field(d) == 2046) {
    n *= 0.5;
    d *= 0.5;
  }
  // d into [1, 2) and n with it, exactly (n stays above 2^-560).
  const double scale = pow2(1023 - field(d));
  n *= scale;
  d *= scale;
  const double uh = n / d;
  const DD t = twoProd(uh, d);
  const double ul = ((n - t.hi) - t.lo) / d;  // the remainder is exact
  DD r = atanKernel(uh, ul);
  if (swap) r = minus(kHalfPiPair, r);
  if (signBit(x)) r = minus(kPiPair, r);
  if (signBit(y)) r = {-r.hi, -r.lo};
  return estimate(r, kAtanError);
}

}  // namespace detail

namespace {

// exp in the slow step: x = k ln2 + r (k ln2 to 2^-245), exp(r) =
// exp(r/256)^256 with the series to 2^-260 and eight squarings (each
// doubles the relative error: 2^-240 at the end).
double expMp(double x) {
  const double kd = nearestInteger(x * 0x1.71547652b82fep+0);
  const int32_t k = static_cast<int32_t>(kd);
  Mp kln2 = multiplySmall(fromWords(kLn2Words), static_cast<uint32_t>(k < 0 ? -k : k));
  if (k < 0) kln2 = negated(kln2);
  const Mp r = timesPow2(subtract(fromDouble(x), kln2), -8);
  Mp sum = add(fromDouble(1), r), term = r;
  for (uint32_t n = 2; n < 100; ++n) {
    term = divideSmall(multiply(term, r), n);
    if (negligible(term, sum)) break;
    sum = add(sum, term);
  }
  for (int i = 0; i < 8; ++i) sum = multiply(sum, sum);
  return toDouble(timesPow2(sum, k));
}

// log in the slow step: log u = 2 atanh(z), z = (u - 1)/(u + 1), |z| <=
// 0.172, series to 2^-260 (about 50 terms), plus E ln2.
double logMp(double x) {
  int32_t exponent;
  const Mp u = fromDouble(logSplit(x, &exponent));
  const Mp one = fromDouble(1);
  const Mp z = divide(subtract(u, one), add(u, one));
  const Mp z2 = multiply(z, z);
  Mp sum = z, power = z;
  for (uint32_t n = 3; n < 400; n += 2) {
    power = multiply(power, z2);
    const Mp term = divideSmall(power, n);
    if (negligible(term, sum)) break;
    sum = add(sum, term);
  }
  Mp eln2 = multiplySmall(fromWords(kLn2Words), static_cast<uint32_t>(exponent < 0 ? -exponent : exponent));
  if (exponent < 0) eln2 = negated(eln2);
  return toDouble(add(eln2, timesPow2(sum, 1)));
}

// atan2 in the slow step for finite nonzero operands: u = min/max of the
// magnitudes, c = j/16 nearest, v = (u - c)/(1 + u c) (|v| <= 1/32),
// atan u = atan c + the series of atan v (about 26 terms), then the
// quadrant.
double atan2Mp(double y, double x) {
  const double ay = absolute(y), ax = absolute(x);
  const bool swap = ay > ax;
  const Mp u = divide(fromDouble(swap ? ax : ay), fromDouble(swap ? ay : ax));
  int j = 0;
  if (u.e >= -4) j = static_cast<int>((u.w[0] * 0x1p-32) * pow2(u.e) * 16 + 0.5);
  Mp v = u;
  if (j != 0) {
    const Mp c = fromDouble(j / 16.0);
    v = divide(subtract(u, c), add(fromDouble(1), multiply(u, c)));
  }
  const Mp v2 = multiply(v, v);
  Mp sum = v, power = v;
  for (uint32_t n = 3; n < 400; n += 2) {
    power = multiply(power, v2);
    const Mp term = divideSmall(power, n);
    if (negligible(term, sum)) break;
    sum = (n % 4 == 3) ? subtract(sum, term) : add(sum, term);
  }
  Mp t = j != 0 ? add(fromWords(kAtanWords[j - 1]), sum) : sum;
  const Mp halfPi = fromWords(kHalfPiWords);
  if (swap) t = subtract(halfPi, t);
  if (signBit(x)) t = subtract(timesPow2(halfPi, 1), t);
  return toDouble(signBit(y) ? negated(t) : t);
}

}  // namespace

namespace detail {

double sinSlow(double x) {
  if (absolute(x) < kSinTiny) return x;
  if (!(absolute(x) < kInfinity)) return x - x;
  return sinCosSlow(x, false);
}

double cosSlow(double x) {
  if (absolute(x) < kCosTiny) return 1;
  if (!(absolute(x) < kInfinity)) return x - x;
  return sinCosSlow(x, true);
}

double expSlow(double x) {
  if (x != x) return x + x;
  if (x > kExpOverflow) return kInfinity;
  if (x < kExpUnderflow) return 0;
  return expMp(x);
}

double logSlow(double x) {
  if (!(x > 0) || x == kInfinity) return log(x);
  return logMp(x);
}

double atan2Slow(double y, double x) {
  double out;
  if (atan2Special(y, x, &out)) return out;
  return atan2Mp(y, x);
}

}  // namespace detail

double sin(double x) {
  const double ax = absolute(x);
  if (ax < kSinTiny) return x;
  if (!(ax < kInfinity)) return x - x;
  detail::Estimate s;
  sinCosEstimates<true, false>(x, &s, nullptr);
  double out;
  if (s.ok && roundOnce(s, &out)) return out;
  return sinCosSlow(x, false);
}

double cos(double x) {
  const double ax = absolute(x);
  if (ax < kCosTiny) return 1;
  if (!(ax < kInfinity)) return x - x;
  detail::Estimate c;
  sinCosEstimates<false, true>(x, nullptr, &c);
  double out;
  if (c.ok && roundOnce(c, &out)) return out;
  return sinCosSlow(x, true);
}

void sinCos(double x, double* s, double* c) {
  const double ax = absolute(x);
  if (ax < kCosTiny) {
    *s = x;
    *c = 1;
    return;
  }
  if (!(ax < kInfinity)) {
    *s = *c = x - x;
    return;
  }
  detail::Estimate es, ec;
  sinCosEstimates<true, true>(x, &es, &ec);
  if (!(es.ok && roundOnce(es, s))) *s = sinCosSlow(x, false);
  if (!(ec.ok && roundOnce(ec, c))) *c = sinCosSlow(x, true);
}

double exp(double x) {
  if (x != x) return x + x;
  if (x > kExpOverflow) return kInfinity;
  if (x < kExpUnderflow) return 0;
  if (absolute(x) < 0x1p-54) return 1;  // exp x is within 2^-54 of 1
  const detail::Estimate e = detail::expEstimate(x);
  double out;
  if (e.ok && roundOnce(e, &out)) return scaled(out, e.exponent);
  return expMp(x);
}

double log(double x) {
  if (!(x > 0)) return x == 0 ? -kInfinity : (x - x) / (x - x);  // NaN for x < 0 and NaN
  if (x == kInfinity) return x;
  const detail::Estimate e = detail::logEstimate(x);
  double out;
  if (e.ok && roundOnce(e, &out)) return out;
  return logMp(x);
}

double atan2(double y, double x) {
  double out;
  if (atan2Special(y, x, &out)) return out;
  const detail::Estimate e = detail::atan2Estimate(y, x);
  if (e.ok && roundOnce(e, &out)) return out;
  return atan2Mp(y, x);
}

}  // namespace effects::crmath
