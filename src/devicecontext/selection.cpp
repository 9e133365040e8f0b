// Selection and fill: the magic wand on a device context, the paint bucket on
// buffers and on a bitmap, the colour-range mask, the crop preview and the
// white canvas.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "core/dispatch.h"
#include "core/fpenv.h"
#include "core/layout.h"
#include "core/numeric.h"
#include "core/picture.h"
#include "devicecontext/frame.h"
#include "effects/devicecontext.h"
#include "platform/gdi.h"

namespace effects {
namespace {

using devicecontext::adjustBitmap;
using platform::DeviceContext;

// ----------------------------------------------------------------- magic wand

// The pixels one fill has painted: a bit per pixel, rows grown as the fill
// reaches them (the bitmap's size is not known from a device context).
class Painted {
 public:
  bool has(int32_t x, int32_t y) const {
    const size_t row = static_cast<size_t>(y), word = static_cast<size_t>(x) >> 6;
    return row < rows_.size() && word < rows_[row].size() && ((rows_[row][word] >> (x & 63)) & 1u) != 0;
  }
  void add(int32_t x, int32_t y) {
    const size_t row = static_cast<size_t>(y), word = static_cast<size_t>(x) >> 6;
    if (row >= rows_.size()) rows_.resize(row + 1);
    if (word >= rows_[row].size()) rows_[row].resize(word + 1);
    rows_[row][word] |= uint64_t{1} << (x & 63);
  }

 private:
  std::vector<std::vector<uint64_t>> rows_;
};

// The recursive fill
//   visit(x, y): c = GetPixel(x, y); if x < 0 return;
//     while x < limitX and y >= 0 and x < limitX2 and c matches:
//       paint (x, y) black; visit(x + 1, y); visit(x, y + 1); visit(x - 1, y);
//       y = y - 1; c = GetPixel(x, y)
// with its frames on the heap. A frame is a visit whose pixel matched and was
// painted, with the neighbour to visit next; its loop's step upward replaces
// the frame's pixel, as the loop replaces y.
class MagicWand {
 public:
  MagicWand(DeviceContext dc, int32_t limitX, int32_t limitX2, uint32_t red, uint32_t green, uint32_t blue)
      : dc_(dc), limitX_(limitX), limitX2_(limitX2), red_(red), green_(green), blue_(blue) {}

  void fill(int32_t x, int32_t y) {
    visit(x, y);
    while (!frames_.empty()) {
      Frame& f = frames_.back();
      if (f.next < 3) {
        static constexpr int32_t kSteps[3][2] = {{1, 0}, {0, 1}, {-1, 0}};
        const int32_t nx = f.x + kSteps[f.next][0], ny = f.y + kSteps[f.next][1];
        ++f.next;
        visit(nx, ny);  // may grow frames_: f is not used after this
      } else if (f.y > 0 && matches(f.x, f.y - 1)) {
        --f.y;
        f.next = 0;
        paint(f.x, f.y);
      } else {
        frames_.pop_back();
      }
    }
  }

 private:
  struct Frame {
    int32_t x, y;
    uint8_t next;  // 0 right, 1 down, 2 left, 3 up
  };

  void visit(int32_t x, int32_t y) {
    if (x < 0 || y < 0 || !matches(x, y)) return;
    paint(x, y);
    frames_.push_back(Frame{x, y, 0});
  }
  // The loop's test: inside both limits, not painted by this fill, on the
  // bitmap, and exactly the colour sought.
  bool matches(int32_t x, int32_t y) const {
    if (x >= limitX_ || x >= limitX2_ || painted_.has(x, y)) return false;
    const uint32_t c = platform::getPixel(dc_, x, y);
    if (c == platform::kInvalidColour) return false;
    return (c & 0xFFu) == red_ && ((c >> 8) & 0xFFu) == green_ && ((c >> 16) & 0xFFu) == blue_;
  }
  void paint(int32_t x, int32_t y) {
    platform::setPixelV(dc_, x, y, 0);
    painted_.add(x, y);
  }

  DeviceContext dc_;
  int32_t limitX_, limitX2_;
  uint32_t red_, green_, blue_;
  Painted painted_;
  std::vector<Frame> frames_;
};

void magicWand(DeviceContext dc, int32_t x, int32_t y, int32_t limitX, int32_t limitX2, uint32_t red, uint32_t green,
               uint32_t blue) {
  try {
    MagicWand(dc, limitX, limitX2, red, green, blue).fill(x, y);
  } catch (const std::bad_alloc&) {
    // out of memory for the pending steps: the fill stops where it is
  }
}

// ---------------------------------------------------------------------- bucket

// A colour byte in a layout's units: as it is, times 128, or times 1/255 in
// single precision.
template <class L>
typename L::Element bucketValue(int32_t byte) {
  if constexpr (!L::integer) return static_cast<float>(byte) * k255f;
  else return static_cast<typename L::Element>(byte * ((fullInt<L> + 1) / 256));
}

template <class L>
struct BucketFill {
  using E = typename L::Element;
  Channels channels;
  E red, green, blue;
  BucketFill(uint32_t colour, int32_t channel) : channels(Channels::of(channel)) {
    const PackedColour c = PackedColour::of(colour);
    red = bucketValue<L>(c.red);
    green = bucketValue<L>(c.green);
    blue = bucketValue<L>(c.blue);
  }
  template <class P>
  void operator()(P& p) const {
    if (channels.red) p.red = red;
    if (channels.green) p.green = green;
    if (channels.blue) p.blue = blue;
  }
};

template <class L>
void bucket(int32_t elementCount, typename L::Pixel* pixels, uint32_t colour, int32_t channel) {
  forEachPixel(elementCount, pixels, BucketFill<L>(colour, channel));
}

int32_t bucketBitmap(DeviceContext hdcDest, void* hbmDest, DeviceContext hdcSrc, void* hbmSrc, uint32_t colour,
                     int32_t channel) {
  const BucketFill<Layout24> fill(colour, channel);
  return adjustBitmap(hdcDest, hbmDest, hdcSrc, hbmSrc, [&fill](const Picture<Pixel24>& pic) {
    forEachPixel(pic, fill);
    return true;
  });
}

// ----------------------------------------------------------------- colour mask

// The tolerance and key colour in a layout's units: as given (integer
// layouts) or times 1/255 in double, stored single (float).
template <class L>
using KeyValue = std::conditional_t<L::integer, int32_t, float>;

template <class L>
KeyValue<L> keyValue(int32_t v) {
  if constexpr (L::integer) return v;
  else return static_cast<float>(v * k255);
}

// The mask of one pixel under modes 0..3 (anything else gives 0).
template <class L, int Mode>
typename L::Element maskOf(const typename L::Pixel& p, KeyValue<L> t, KeyValue<L> red, KeyValue<L> green,
                           KeyValue<L> blue) {
  using E = typename L::Element;
  if constexpr (!L::integer) {
    const float b = p.blue, g = p.green, r = p.red;
    // read as t >= b and so on: the same as the integer members' tests
    if constexpr (Mode == 0) return t >= b && t >= g ? 1.0f - r : 1.0f;
    else if constexpr (Mode == 1) return t >= b && t >= r ? 1.0f - g : 1.0f;
    else if constexpr (Mode == 2) return t >= g && t >= r ? 1.0f - b : 1.0f;
    else {
      auto within = [t](float c, float key) { return c >= key - t && c <= key + t; };
      if (!within(b, blue) || !within(g, green) || !within(r, red)) return 1.0f;
      return (std::fabs(red - r) + std::fabs(green - g) + std::fabs(blue - b)) * 0.33333334f;
    }
  } else {
    constexpr int32_t full = fullInt<L>;
    const int32_t b = compared<L>(p.blue), g = compared<L>(p.green), r = compared<L>(p.red);
    if constexpr (Mode == 0) return static_cast<E>(b > t || g > t ? full : full - r);
    else if constexpr (Mode == 1) return static_cast<E>(b > t || r > t ? full : full - g);
    else if constexpr (Mode == 2) return static_cast<E>(g > t || r > t ? full : full - b);
    else {
      auto within = [t](int32_t c, int32_t key) { return c >= wrapSub(key, t) && c <= wrapAdd(key, t); };
      if (!within(b, blue) || !within(g, green) || !within(r, red)) return static_cast<E>(full);
      auto distance = [](int32_t key, int32_t c) {
        const int32_t d = wrapSub(key, c);
        return d < 0 ? wrapSub(0, d) : d;
      };
      const int32_t sum = wrapAdd(wrapAdd(distance(red, r), distance(green, g)), distance(blue, b));
      return static_cast<E>(static_cast<uint32_t>(divTrunc(sum, 3)));
    }
  }
}

template <class L>
void colourMask(int32_t width, int32_t height, typename L::Pixel* pixels, int32_t mode, int32_t tolerance,
                int32_t red, int32_t green, int32_t blue) {
  using P = typename L::Pixel;
  const auto pic = packedPicture(width, height, pixels);
  const KeyValue<L> t = keyValue<L>(tolerance), r = keyValue<L>(red), g = keyValue<L>(green),
                    b = keyValue<L>(blue);
  const bool known = withValue<0, 3>(mode, [&](auto m) {
    forEachPixel(pic, [&](P& p) { p.mask = maskOf<L, decltype(m)::value>(p, t, r, g, b); });
  });
  // Another mode writes the value it wrote for the pixel before, which is
  // never set: 0 throughout.
  if (!known) forEachPixel(pic, [](P& p) { p.mask = 0; });
}

// ---------------------------------------------------------------- crop preview

void cropPreview(int32_t width, int32_t height, Pixel32* pixels, int32_t left, int32_t top, int32_t right,
                 int32_t bottom) {
  forEachXY(packedPicture(width, height, pixels), [=](Pixel32& p, int32_t x, int32_t y) {
    if (y >= top && y <= bottom && x >= left && x <= right) return;
    p.blue = static_cast<uint8_t>(p.blue >> 2);
    p.green = static_cast<uint8_t>(p.green >> 2);
    p.red = static_cast<uint8_t>(p.red >> 2);
  });
}

// ---------------------------------------------------------------- white canvas

int32_t whiteCanvas(DeviceContext hdcDest, void* hbmDest, DeviceContext hdcSrc, void* hbmSrc) {
  platform::Dib24 dib(hdcSrc, hbmSrc);
  if (!dib.described()) return -1;
  uint8_t* bits = dib.scratch(ScratchSlot::First);
  if (bits == nullptr) return -1;
  // every byte up to the last pixel of the last scan line (the padding of the
  // rows between included; the last row's padding is never read)
  const size_t used = static_cast<size_t>(dib.lines() - 1) * dib.stride() + static_cast<size_t>(dib.width()) * 3u;
  std::memset(bits, 255, used);
  dib.write(hdcDest, hbmDest, bits);
  return dib.queried();
}

}  // namespace
}  // namespace effects

using namespace effects;

extern "C" {

EFFECTS_API void EFFECTS_CALL VexoMagicWand(void* hdc, int32_t x, int32_t y, int32_t limitX, int32_t limitX2, uint32_t red, uint32_t green, uint32_t blue) { const FloatEnvironment env; magicWand(hdc, x, y, limitX, limitX2, red, green, blue); }

EFFECTS_API int32_t EFFECTS_CALL VexoBucket32(int32_t elementCount, Pixel32* pixels, uint32_t colour, int32_t channel) { const FloatEnvironment env; bucket<Layout32>(elementCount, pixels, colour, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBucket64(int32_t elementCount, Pixel64* pixels, uint32_t colour, int32_t channel) { const FloatEnvironment env; bucket<Layout64>(elementCount, pixels, colour, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBucket128(int32_t elementCount, Pixel128* pixels, uint32_t colour, int32_t channel) { const FloatEnvironment env; bucket<Layout128>(elementCount, pixels, colour, channel); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoBucket(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc, uint32_t colour, int32_t channel) { const FloatEnvironment env; return bucketBitmap(hdcDest, hbmDest, hdcSrc, hbmSrc, colour, channel); }

EFFECTS_API int32_t EFFECTS_CALL VexoColorMask32(int32_t width, int32_t height, Pixel32* pixels, int32_t mode, int32_t tolerance, int32_t red, int32_t green, int32_t blue) { const FloatEnvironment env; colourMask<Layout32>(width, height, pixels, mode, tolerance, red, green, blue); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoColorMask64(int32_t width, int32_t height, Pixel64* pixels, int32_t mode, int32_t tolerance, int32_t red, int32_t green, int32_t blue) { const FloatEnvironment env; colourMask<Layout64>(width, height, pixels, mode, tolerance, red, green, blue); return 0; }
EFFECTS_API int32_t EFFECTS_CALL VexoColorMask128(int32_t width, int32_t height, Pixel128* pixels, int32_t mode, int32_t tolerance, int32_t red, int32_t green, int32_t blue) { const FloatEnvironment env; colourMask<Layout128>(width, height, pixels, mode, tolerance, red, green, blue); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoCropPreview32(int32_t width, int32_t height, Pixel32* pixels, int32_t left, int32_t top, int32_t right, int32_t bottom) { const FloatEnvironment env; cropPreview(width, height, pixels, left, top, right, bottom); return 0; }

EFFECTS_API int32_t EFFECTS_CALL VexoWhiteCanvas(void* hdcDest, void* hbmDest, void* hdcSrc, void* hbmSrc) { const FloatEnvironment env; return whiteCanvas(hdcDest, hbmDest, hdcSrc, hbmSrc); }

}  // extern "C"
