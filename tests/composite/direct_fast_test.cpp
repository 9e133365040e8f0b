// The vector forms of the device-free transfers against their plain
// per-pixel steps (composite/direct_simd.h), through the exports: the
// regional merge on every 8-bit (canvas, source) pair under every mask and
// on 16-bit words over their whole range, and the mask painter on every
// (region mask, canvas mask) pair at opacities that carry the result out of
// the byte and 16-bit ranges. Odd lengths leave tails to the plain step.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "composite/direct_simd.h"
#include "support/fast_paths.h"

using namespace effects;
using namespace effects::test;
namespace direct = effects::composite::direct;

namespace {

template <class P>
std::vector<P> regionalPlain(const std::vector<P>& src, std::vector<P> dst, size_t from = 0) {
  for (size_t i = from; i < dst.size(); ++i) direct::regionalPixel(src[i], dst[i]);
  return dst;
}

// The export (the widest form this processor runs) and the SSE2 form, each
// finished by the plain step, against the plain step alone.
template <class P, class Export>
void expectRegionalForms(const std::vector<P>& src, const std::vector<P>& dst, Export exportFn) {
  const auto want = regionalPlain(src, dst);
  auto got = dst;
  EXPECT_EQ(exportFn(static_cast<int32_t>(src.size() * 4), src.data(), got.data()), 1);
  ASSERT_EQ(got, want);
#if defined(__SSE2__)
  got = dst;
  const size_t done = direct::regionalSse2(src.data(), got.data(), got.size());
  ASSERT_EQ(regionalPlain(src, got, done), want);
#endif
}

TEST(DirectFast, RegionalMergeEveryBytePairAndMask) {
  // Pixel i pairs canvas value i % 256 with source value i / 256 in blue,
  // shifted pairs in green and red; one picture per mask value, plus one
  // element so the tail runs too.
  const size_t n = 256 * 256 + 1;
  for (int m = 0; m < 256; ++m) {
    std::vector<Pixel32> src(n), dst(n);
    for (size_t i = 0; i < n; ++i) {
      const auto d = static_cast<uint8_t>(i), s = static_cast<uint8_t>(i >> 8);
      dst[i] = {d, static_cast<uint8_t>(d + 85), static_cast<uint8_t>(s + 170), static_cast<uint8_t>(i * 7)};
      src[i] = {s, static_cast<uint8_t>(s ^ 0x5A), static_cast<uint8_t>(d), static_cast<uint8_t>(m)};
    }
    SCOPED_TRACE(testing::Message() << "mask " << m);
    expectRegionalForms(src, dst, Vexo32DirectDrawRegional);
    if (HasFatalFailure()) return;
  }
}

TEST(DirectFast, RegionalMergeSixteenBitWords) {
  // Whole 16-bit range (results above 32767 become 32768, as the plain step
  // gives), masks of 0 and at the ends, and an odd count.
  auto src = varied<Pixel64>(200001, 3), dst = varied<Pixel64>(200001, 4);
  for (size_t i = 0; i < src.size(); i += 7) src[i].mask = i % 2 ? 0 : 65535;
  for (size_t i = 3; i < src.size(); i += 11) src[i].mask = 32767;
  expectRegionalForms(src, dst, Vexo64DirectDrawRegional);
}

TEST(DirectFast, MaskPainterEveryMaskPairAndOpacity) {
  // Region mask i / 256 over canvas mask i % 256, in one row of 65,537
  // pixels (a tail of one).
  const int32_t n = 256 * 256 + 1;
  std::vector<Pixel32> region(n), canvas(n);
  for (int32_t i = 0; i < n; ++i) {
    region[i] = {static_cast<uint8_t>(i * 3), 9, 1, static_cast<uint8_t>(i >> 8)};
    canvas[i] = {static_cast<uint8_t>(i * 5), 200, static_cast<uint8_t>(i), static_cast<uint8_t>(i)};
  }
  for (int32_t opacity : {1, 37, 100, 255, 256, 5000, 100000, INT32_MAX, -1, -300, INT32_MIN}) {
    const float k = static_cast<float>(opacity) * 3.92156862e-5f;
    auto want = canvas, got = canvas;
    for (int32_t i = 0; i < n; ++i) direct::maskToward(region[i], want[i], k);
    EXPECT_EQ(Vexo32DirectMaskDIB(0, 0, n, 1, region.data(), got.data(), n, 1, opacity, 0), 1);
    ASSERT_EQ(got, want) << "opacity " << opacity;
  }
}

TEST(DirectFast, BlockCopiesOfOverlappingSpansKeepPixelOrder) {
  // A region that is the canvas itself shifted by one pixel: the copy runs
  // pixel by pixel, so the first pixel spreads along the row.
  std::vector<Pixel32> canvas = pattern<Pixel32>(9, 5);
  auto want = canvas;
  for (int i = 1; i < 9; ++i) direct::copyPixel(want[i], want[i - 1], false);
  EXPECT_EQ(Vexo32DirectBitBltDIB(0, 0, 8, 1, canvas.data(), canvas.data() + 1, 8, 1), 1);
  EXPECT_EQ(canvas, want);
}

}  // namespace
