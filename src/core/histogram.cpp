// Histograms and dynamic range: 256-bin histograms of luminance or of one
// element, and the smallest, largest, smallest non-zero value and sum of the
// measured values. The pixels are only read.
//
// The caller zeroes the histogram; these exports only add to it, so
// successive calls accumulate. The statistics are reset on entry (before the
// count is looked at), except the non-zero minimum, which only the float
// dynamic range resets: elsewhere it keeps whatever the caller left in it.
#include <cstdint>
#include <initializer_list>

#include "core/dispatch.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"

namespace effects {
namespace {

// Luminance weights, applied in this order in double precision.
template <class T>
inline double luminance(T red, T green, T blue) {
  return 0.2125 * red + 0.7154 * green + 0.0721 * blue;
}

// The running statistics, kept in locals for the pass and stored once at the
// end. The outputs are floats, and every comparison is strict.
struct Statistics {
  float* minimumOut;
  float* maximumOut;
  float* minimumNonZeroOut;  // null where the export has no non-zero minimum
  float* sumOut;
  float minimum = 1e10f, maximum = 1e-10f, minimumNonZero = 0.0f, sum = 0.0f;

  // Resets the outputs. resetNonZero says whether the non-zero minimum starts
  // afresh too; otherwise it continues from the caller's value.
  Statistics(float* mn, float* mx, float* nz, float* s, bool resetNonZero)
      : minimumOut(mn), maximumOut(mx), minimumNonZeroOut(nz), sumOut(s) {
    if (nz != nullptr) {
      if (resetNonZero) *nz = 1e10f;
      minimumNonZero = *nz;
    }
    flush();
  }

  // v is whatever the export measures: a bin number, a float element or a
  // double luminance. The sum is formed in v's precision and stored as float.
  template <class V>
  void add(V v) {
    if (v < minimum) minimum = static_cast<float>(v);
    if (v < minimumNonZero && v != 0) minimumNonZero = static_cast<float>(v);
    if (v > maximum) maximum = static_cast<float>(v);
    sum = static_cast<float>(sum + v);
  }

  void flush() const {
    *minimumOut = minimum;
    *maximumOut = maximum;
    if (minimumNonZeroOut != nullptr) *minimumNonZeroOut = minimumNonZero;
    *sumOut = sum;
  }
};

// A statistics sink for the float histogram, which measures nothing.
struct NoStatistics {
  template <class V>
  void add(V) {}
  void flush() const {}
};

// The luminance on the 0..255 scale of the bins. 8 bit: the bytes as they
// are. 16 bit: the elements read as signed, brought onto 0..255 by 1/128.
// Float: 1.0 is bin 255's white.
inline double binLuminance(const Pixel32& p) { return luminance<double>(p.red, p.green, p.blue); }
inline double binLuminance(const Pixel64& p) {
  return luminance<double>(compared<Layout64>(p.red), compared<Layout64>(p.green), compared<Layout64>(p.blue)) *
         0.0078125;
}
inline double binLuminance(const Pixel128& p) { return luminance<double>(p.red, p.green, p.blue) * 255.0; }

// ------------------------------------------------------ counted histograms

// Adds 1.0f to a float `count` times, one addition after another, as the
// per-pixel walk does: an integer value within 2^24 counts up exactly and
// then stays at 2^24 (2^24 + 1 rounds back to it), anything else is added
// one at a time until an addition no longer changes it.
inline float addOnes(float h, uint32_t count) {
  if (count == 0) return h;
  if (h != h) return h + 1.0f;
  if (h >= -16777216.0f && h <= 16777216.0f && h == static_cast<float>(static_cast<int32_t>(h))) {
    const double v = static_cast<double>(h) + count;
    return static_cast<float>(v > 16777216.0 ? 16777216.0 : v);
  }
  for (uint32_t k = 0; k < count; ++k) {
    const float y = h + 1.0f;
    if (y == h) break;
    h = y;
  }
  return h;
}

// The histograms whose measured value is a bin number (the 8- and 16-bit
// ones): every pixel's bin is counted in integers (four count arrays in turn,
// so that no increment waits on the one before), the histogram gets the
// counts at the end, and the statistics follow from which bins occurred, all
// but the sum, which is the running single-precision sum of the bins in
// pixel order, as the per-pixel walk forms it.
template <class P, class Bin>
void countBins(const P* px, size_t n, float* histogram, Statistics* stats, Bin bin) {
  uint32_t counts[4][256] = {};
  float sum = 0.0f;
  size_t i = 0;
  if (stats) {
    for (; i < n; ++i) {
      const uint32_t b = bin(px[i]);
      ++counts[i & 3][b];
      sum = sum + static_cast<float>(b);
    }
  } else {
    for (; i < n; ++i) ++counts[i & 3][bin(px[i])];
  }
  int32_t lowest = 256, highest = -1, lowestNonZero = 256;
  for (int32_t b = 0; b < 256; ++b) {
    const uint32_t c = counts[0][b] + counts[1][b] + counts[2][b] + counts[3][b];
    if (c == 0) continue;
    histogram[b] = addOnes(histogram[b], c);
    if (lowest == 256) lowest = b;
    if (b != 0 && lowestNonZero == 256) lowestNonZero = b;
    highest = b;
  }
  if (stats == nullptr || highest < 0) return;
  stats->add(lowest);
  stats->add(highest);
  if (lowestNonZero < 256) stats->add(lowestNonZero);
  stats->sum = sum;
}

// 8-bit luminance through the three weights' products, one table each,
// summed in the order of the formula.
struct LuminanceBin32 {
  double red[256], green[256], blue[256];
  LuminanceBin32() {
    for (int v = 0; v < 256; ++v) red[v] = 0.2125 * v, green[v] = 0.7154 * v, blue[v] = 0.0721 * v;
  }
  uint32_t operator()(const Pixel32& p) const { return quantize255(red[p.red] + green[p.green] + blue[p.blue]); }
};

// Luminance histograms. The 8- and 16-bit forms feed the bin number into the
// statistics; the float form deliberately computes none.
template <class L, class S>
void luminanceHistogram(int32_t elementCount, const typename L::Pixel* px, float* histogram, S& stats) {
  if constexpr (L::integer) {
    const size_t n = pixelsForCount<typename L::Pixel>(elementCount);
    if (px != nullptr && n != 0) {
      if constexpr (sizeof(typename L::Element) == 1) {
        countBins(px, n, histogram, &stats, LuminanceBin32{});
      } else {
        countBins(px, n, histogram, &stats, [](const Pixel64& p) { return uint32_t{quantize255(binLuminance(p))}; });
      }
    }
  } else {
    forEachPixel(elementCount, px, [&](const typename L::Pixel& p) {
      const uint8_t bin = quantize255(binLuminance(p));
      histogram[bin] += 1.0f;
      stats.add(static_cast<int32_t>(bin));
    });
  }
  stats.flush();
}

// The bin of one element: the byte itself, the 16-bit element (read
// unsigned here) times 1/128 through the bin quantiser.
inline uint8_t elementBin(uint8_t x) { return x; }
inline uint8_t elementBin(uint16_t x) { return quantize255(x * 0.0078125); }

// Histogram of the element a channel offset names (0 blue, 1 green, 2 red,
// 3 mask), chosen once per call; only the two low bits count, so no offset
// reaches outside the pixel. The float form raises the value to at least
// 1e-8 and feeds that value, not its bin, into the statistics.
template <class L>
void channelHistogram(int32_t elementCount, const typename L::Pixel* px, float* histogram,
                      Statistics& stats, uint8_t channelOffset) {
  withValue<0, 3>(channelOffset & 3, [&](auto which) {
    constexpr unsigned W = decltype(which)::value;
    if constexpr (L::integer) {
      const size_t n = pixelsForCount<typename L::Pixel>(elementCount);
      if (px != nullptr && n != 0)
        countBins(px, n, histogram, &stats, [](const typename L::Pixel& p) { return uint32_t{elementBin(element<W>(p))}; });
    } else {
      forEachPixel(elementCount, px, [&](const typename L::Pixel& p) {
        const float x = element<W>(p);
        const float v = x > 1e-8 ? x : static_cast<float>(1e-8);
        histogram[quantize255(v * 255.0)] += 1.0f;
        stats.add(v);
      });
    }
  });
  stats.flush();
}

// Dynamic range: the unquantised luminance on the layout's own scale (the
// 16-bit elements unsigned and unscaled). The float form floors it at 1e-8,
// so its minimum and non-zero minimum agree.
template <class L>
void dynamicRange(int32_t elementCount, const typename L::Pixel* px, Statistics& stats) {
  forEachPixel(elementCount, px, [&](const typename L::Pixel& p) {
    const double y = luminance<double>(p.red, p.green, p.blue);
    if constexpr (!L::integer) {
      stats.add(y > 1e-8 ? y : 1e-8);
    } else {
      stats.add(y);
    }
  });
  stats.flush();
}

// Every output an export writes must be there: with one missing, none is
// written, not even the reset on entry. (Null pixels are an empty picture:
// the outputs are reset and nothing is measured.)
inline bool anyMissing(std::initializer_list<const float*> outputs) {
  for (const float* o : outputs)
    if (o == nullptr) return true;
  return false;
}

// The float histogram never looks at the non-zero minimum, so that one may be
// null there.
template <class L>
int32_t histogramOf(int32_t n, const typename L::Pixel* px, float* hist, float* mn, float* mx, float* nz, float* sum) {
  if (anyMissing({hist, mn, mx, sum}) || (L::integer && nz == nullptr)) return n;
  const FloatEnvironment env;
  if constexpr (!L::integer) {
    Statistics reset(mn, mx, nullptr, sum, false);
    NoStatistics none;
    luminanceHistogram<L>(n, px, hist, none);
  } else {
    Statistics stats(mn, mx, nz, sum, false);
    luminanceHistogram<L>(n, px, hist, stats);
  }
  return n;
}

template <class L>
int32_t channelHistogramOf(int32_t n, const typename L::Pixel* px, float* hist, float* mn, float* mx, float* nz, float* sum,
                           uint8_t channelOffset) {
  if (anyMissing({hist, mn, mx, nz, sum})) return n;
  const FloatEnvironment env;
  Statistics stats(mn, mx, nz, sum, false);
  channelHistogram<L>(n, px, hist, stats, channelOffset);
  return n;
}

template <class L>
int32_t dynamicRangeOf(int32_t n, const typename L::Pixel* px, float* mn, float* mx, float* nz, float* sum) {
  if (anyMissing({mn, mx, sum}) || (!L::integer && nz == nullptr)) return n;
  const FloatEnvironment env;
  Statistics stats(mn, mx, nz, sum, nz != nullptr);
  dynamicRange<L>(n, px, stats);
  return n;
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API int32_t EFFECTS_CALL Histogram32Fast(int32_t n, const Pixel32* px, float* hist, float* mn, float* mx, float* nz, float* sum) { return histogramOf<Layout32>(n, px, hist, mn, mx, nz, sum); }
EFFECTS_API int32_t EFFECTS_CALL Histogram64Fast(int32_t n, const Pixel64* px, float* hist, float* mn, float* mx, float* nz, float* sum) { return histogramOf<Layout64>(n, px, hist, mn, mx, nz, sum); }
EFFECTS_API int32_t EFFECTS_CALL Histogram128Fast(int32_t n, const Pixel128* px, float* hist, float* mn, float* mx, float* nz, float* sum) { return histogramOf<Layout128>(n, px, hist, mn, mx, nz, sum); }

EFFECTS_API int32_t EFFECTS_CALL HistogramChannel32Fast(int32_t n, const Pixel32* px, float* hist, float* mn, float* mx, float* nz, float* sum, uint8_t channelOffset) { return channelHistogramOf<Layout32>(n, px, hist, mn, mx, nz, sum, channelOffset); }
EFFECTS_API int32_t EFFECTS_CALL HistogramChannel64Fast(int32_t n, const Pixel64* px, float* hist, float* mn, float* mx, float* nz, float* sum, uint8_t channelOffset) { return channelHistogramOf<Layout64>(n, px, hist, mn, mx, nz, sum, channelOffset); }
EFFECTS_API int32_t EFFECTS_CALL HistogramChannel128Fast(int32_t n, const Pixel128* px, float* hist, float* mn, float* mx, float* nz, float* sum, uint8_t channelOffset) { return channelHistogramOf<Layout128>(n, px, hist, mn, mx, nz, sum, channelOffset); }

// The 8- and 16-bit dynamic range has no non-zero minimum: its third output is
// reserved and left alone.
EFFECTS_API int32_t EFFECTS_CALL DynamicRange32Fast(int32_t n, const Pixel32* px, float* mn, float* mx, float* /*reserved*/, float* sum) { return dynamicRangeOf<Layout32>(n, px, mn, mx, nullptr, sum); }
EFFECTS_API int32_t EFFECTS_CALL DynamicRange64Fast(int32_t n, const Pixel64* px, float* mn, float* mx, float* /*reserved*/, float* sum) { return dynamicRangeOf<Layout64>(n, px, mn, mx, nullptr, sum); }
EFFECTS_API int32_t EFFECTS_CALL DynamicRange128Fast(int32_t n, const Pixel128* px, float* mn, float* mx, float* nz, float* sum) { return dynamicRangeOf<Layout128>(n, px, mn, mx, nz, sum); }

}  // extern "C"
