// The vector power of core/pow.h against pow itself. Every lane the vectors
// claim to have proven must be pow's float exactly; the lanes they give up
// on must be rare (else the claim proves nothing); and the whole walk, with
// its fallbacks, must equal pow everywhere. The sampled sweep runs with the
// suite; the sweep over every float in [0, 1] runs on request:
//   effects_tests --gtest_also_run_disabled_tests --gtest_filter='*PowEveryFloat*'
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "core/cpu.h"
#include "core/pow.h"
#include "core/rgbe.h"
#include "support/fast_paths.h"

using namespace effects;
using namespace effects::test;

namespace {

// The exponents the exports form (1 / gamma in single precision, gamma
// itself, 1/2.2 in double), the extremes of the gamma range, and exponents
// whose results run to the ends of the float range.
const double kExponents[] = {static_cast<double>(1.0f / 2.2f), static_cast<double>(2.2f), 0.45454545454545453,
                             10.0, static_cast<double>(1.0f / 10.0f), 1.0 / 3, 0.999, 1.0001, 7.3, 0.0, 1.0,
                             static_cast<double>(1.0f / 0.013f)};

struct Tally {
  uint64_t values = 0, unsure = 0;
};

#if EFFECTS_WIDE
// The first of xs whose AVX2 result is claimed proven but differs from
// want, or xs.size().
EFFECTS_TARGET_AVX2 size_t firstWrongProvenAvx2(const std::vector<float>& xs, const std::vector<float>& want, double e) {
  const __m256d ev = _mm256_set1_pd(e);
  for (size_t i = 0; i + 4 <= xs.size(); i += 4) {
    __m128i sure;
    alignas(16) float out[4];
    alignas(16) int32_t proven[4];
    _mm_store_ps(out, fastpow::detail::powerOf(fastpow::detail::exponentOf(_mm_loadu_ps(&xs[i]), ev), sure));
    _mm_store_si128(reinterpret_cast<__m128i*>(proven), sure);
    for (size_t lane = 0; lane < 4; ++lane) {
      const float x = xs[i + lane];
      if (proven[lane] && std::isnormal(x) && x > 0 && bitsOf(out[lane]) != bitsOf(want[i + lane])) return i + lane;
    }
  }
  return xs.size();
}

// The same for the AVX-512 kernels, eight lanes a step.
EFFECTS_TARGET_AVX512 size_t firstWrongProvenAvx512(const std::vector<float>& xs, const std::vector<float>& want,
                                                   double e) {
  const __m512d ev = _mm512_set1_pd(e);
  for (size_t i = 0; i + 8 <= xs.size(); i += 8) {
    __mmask8 sure;
    alignas(32) float out[8];
    _mm256_store_ps(out, fastpow::detail::powerOf(fastpow::detail::exponentOf(_mm256_loadu_ps(&xs[i]), ev), sure));
    for (size_t lane = 0; lane < 8; ++lane) {
      const float x = xs[i + lane];
      if ((sure >> lane & 1) && std::isnormal(x) && x > 0 && bitsOf(out[lane]) != bitsOf(want[i + lane])) return i + lane;
    }
  }
  return xs.size();
}
#endif

// Checks every float from `first` (as bits) to `last` in steps of `step`, a
// pixel at a time, against pow: the proven lanes of the SSE2 and AVX2
// kernels, then the walk.
void expectPow(uint32_t first, uint32_t last, uint32_t step, double e, Tally& tally) {
  std::vector<float> xs;
  for (uint64_t b = first; b <= last; b += step) xs.push_back(std::bit_cast<float>(static_cast<uint32_t>(b)));
  while (xs.size() % 3 != 0) xs.push_back(1.0f);
  std::vector<Pixel128> px;
  std::vector<float> want;
  for (size_t i = 0; i < xs.size(); i += 3) px.push_back(Pixel128{xs[i], xs[i + 1], xs[i + 2], -7.0f});
  for (float x : xs) want.push_back(fastpow::plain(x, e));
#if defined(__SSE2__)
  const __m128d ev = _mm_set1_pd(e);
  for (size_t i = 0; i < px.size(); ++i) {
    int unsure;
    alignas(16) float out[4];
    _mm_store_ps(out, fastpow::pow4(_mm_loadu_ps(&px[i].blue), ev, unsure));
    for (int lane = 0; lane < 3; ++lane) {
      const float x = (&px[i].blue)[lane];
      const bool ordinary = std::isnormal(x) && x > 0;  // the others go through pow by design
      tally.values += ordinary;
      if ((unsure >> lane) & 1) tally.unsure += ordinary;
      else ASSERT_EQ(bitsOf(out[lane]), bitsOf(want[3 * i + lane])) << "x " << (&px[i].blue)[lane] << " e " << e;
    }
  }
#endif
#if EFFECTS_WIDE
  if (cpu::avx2()) {
    const size_t wrong = firstWrongProvenAvx2(xs, want, e);
    ASSERT_EQ(wrong, xs.size()) << "x " << xs[wrong] << " e " << e;
    auto copy = px;
    EXPECT_EQ(fastpow::powColoursAvx2(copy.data(), copy.size(), e), copy.size());
    for (size_t i = 0; i < copy.size(); ++i)
      for (int lane = 0; lane < 3; ++lane)
        ASSERT_EQ(bitsOf((&copy[i].blue)[lane]), bitsOf(want[3 * i + lane])) << "x " << (&px[i].blue)[lane];
  }
  if (cpu::avx512()) {
    const size_t wrong = firstWrongProvenAvx512(xs, want, e);
    ASSERT_EQ(wrong, xs.size()) << "x " << xs[wrong] << " e " << e;
    // blocks of 64 pixels, groups of four and a ragged end
    for (size_t n : {px.size(), px.size() > 67 ? size_t{67} : px.size()}) {
      auto copy = px;
      EXPECT_EQ(fastpow::powColoursAvx512(copy.data(), n, e), n);
      for (size_t i = 0; i < copy.size(); ++i) {
        for (int lane = 0; lane < 3; ++lane)
          ASSERT_EQ(bitsOf((&copy[i].blue)[lane]), bitsOf(i < n ? want[3 * i + lane] : (&px[i].blue)[lane]))
              << "x " << (&px[i].blue)[lane];
        ASSERT_EQ(bitsOf(copy[i].mask), bitsOf(-7.0f));
      }
    }
  }
#endif
  fastpow::powColours(px.data(), px.size(), e);
  for (size_t i = 0; i < px.size(); ++i) {
    for (int lane = 0; lane < 3; ++lane)
      ASSERT_EQ(bitsOf((&px[i].blue)[lane]), bitsOf(want[3 * i + lane])) << "x at " << i << " e " << e;
    ASSERT_EQ(px[i].mask, -7.0f);
  }
}

constexpr uint32_t kOne = 0x3F800000u, kInfinity = 0x7F800000u;

}  // namespace

// Every 4099th float from 0 to infinity (so all exponents and mantissas of
// the float range meet), NaN and negative values, for each exponent; of the
// positive normal floats, fewer than one in 2^12 may fall back to pow.
TEST(FastPow, SampledFloatsAgainstPow) {
  for (double e : kExponents) {
    SCOPED_TRACE(e);
    Tally tally;
    expectPow(0, kInfinity, 4099, e, tally);
    expectPow(0x7FC00000u, 0x7FC00010u, 1, e, tally);                 // NaN
    expectPow(0x80000000u, 0x80000000u + kInfinity, 1048573, e, tally);  // -0 and negatives
    EXPECT_LT(tally.unsure * 4096, tally.values + 4096) << tally.unsure << " of " << tally.values;
  }
}

// The ends of the float range: results near the largest float and near the
// smallest denormal, where the rounding runs between finite and infinite and
// between zero and a denormal.
TEST(FastPow, ResultsAtTheEndsOfTheFloatRange) {
  Tally tally;
  for (double e : {10.0, 0.1, 3.0}) {
    // x^e near 2^128 and 2^-150: x near 2^(128 / e) and 2^(-150 / e).
    for (double target : {128.0, -149.0, -150.0, -126.0}) {
      const float x = static_cast<float>(std::exp2(target / e));
      const uint32_t b = std::bit_cast<uint32_t>(x);
      if (b < 4096 || b >= kInfinity - 4096) continue;
      expectPow(b - 4096, b + 4096, 1, e, tally);
    }
  }
}

// The exports that raise float elements, against pow on every element.
TEST(FastPow, ExportsRaiseAsPowDoes) {
  const auto in = varied<Pixel128>(1001);
  for (float g : {2.2f, 0.45f, 10.0f, 0.0f}) {
    SCOPED_TRACE(g);
    auto got = in, want = in;
    VexoGamma128(1001, 1, got.data(), g);
    for (auto& p : want) for (float* c : {&p.blue, &p.green, &p.red}) *c = fastpow::plain(*c, 1.0f / g);
    EXPECT_EQ(got, want);
    got = in, want = in;
    VexoGammatoHDR128(7, 143, got.data(), g);
    for (auto& p : want) for (float* c : {&p.blue, &p.green, &p.red}) *c = fastpow::plain(*c, g);
    EXPECT_EQ(got, want);
  }
  // The HDR imports: float RGB, and RGBE (every exponent byte).
  std::vector<float> rgb;
  for (const auto& p : in) rgb.push_back(p.red), rgb.push_back(p.green), rgb.push_back(p.blue);
  auto got = in, want = in;
  Convert128HDRFast(77, 13, got.data(), rgb.data(), 0);
  for (size_t i = 0; i < want.size(); ++i)
    want[i].red = fastpow::plain(rgb[3 * i], 0.45454545454545453), want[i].green = fastpow::plain(rgb[3 * i + 1], 0.45454545454545453),
    want[i].blue = fastpow::plain(rgb[3 * i + 2], 0.45454545454545453);
  EXPECT_EQ(got, want);
  auto bytes = varied<Pixel32>(1024);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i].mask = static_cast<uint8_t>(i);  // every exponent byte
  std::vector<Pixel128> raw(1024), rawWant(1024);
  Convert128HDRRAWFast(32, 32, raw.data(), reinterpret_cast<const uint8_t*>(bytes.data()), 0);
  ASSERT_EQ(raw.size(), rawWant.size());
  for (size_t i = 0; i < raw.size(); ++i) {
    const auto* q = reinterpret_cast<const uint8_t*>(&bytes[i]);  // red, green, blue, exponent
    const double scale = rgbeScale(q[3]);
    rawWant[i].red = fastpow::plain(static_cast<float>(q[0] * scale), 0.45454545454545453);
    rawWant[i].green = fastpow::plain(static_cast<float>(q[1] * scale), 0.45454545454545453);
    rawWant[i].blue = static_cast<float>(std::pow(scale * q[2], 0.45454545454545453));
    rawWant[i].mask = raw[i].mask;  // left as it was (0)
  }
  EXPECT_EQ(raw, rawWant);
}

// Hundreds of millions of values: every float in [0, 1] for the gamma
// exponents. Minutes on one core, so only on request.
TEST(FastPow, DISABLED_PowEveryFloatInZeroToOne) {
  for (double e : {static_cast<double>(1.0f / 2.2f), static_cast<double>(2.2f), 0.45454545454545453, 10.0}) {
    SCOPED_TRACE(e);
    Tally tally;
    for (uint32_t b = 0; b <= kOne; b += 1u << 22)
      expectPow(b, std::min(b + (1u << 22) - 1, kOne), 1, e, tally);
    std::printf("e = %.17g: %llu values, %llu through pow\n", e, static_cast<unsigned long long>(tally.values),
                static_cast<unsigned long long>(tally.unsure));
  }
}
