// The device-context soften, warps and rotation give the 32-bit buffer
// exports' colours for the picture as it is seen (top row first), on both
// GDIs and both kinds of bitmap.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "core/scratch.h"
#include "devicecontext/bitmaps.h"
#include "effects/effects.h"

using namespace effects::test;

namespace {

struct Form {
  const char* what;
  std::function<int32_t(void*, void*)> bitmap;
  std::function<void(int32_t, int32_t, Pixel32*)> buffer;
};

}  // namespace

TEST(DeviceContextWarps, RepeatTheBufferExports) {
  const std::vector<Form> forms = {
      {"soften", [](void* dc, void* bm) { return VexoPostBlur(dc, bm); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoPostBlur32(w, h, p); }},
      {"swirl 40", [](void* dc, void* bm) { return VexoSwirl(dc, bm, 40); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoSwirl32(w, h, p, 0, 40); }},
      {"swirl -7", [](void* dc, void* bm) { return VexoSwirl(dc, bm, -7); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoSwirl32(w, h, p, 1, -7); }},
      {"twirl 3", [](void* dc, void* bm) { return VexoTwirl(dc, bm, 3); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoTwirlEx32(w, h, p, 0, 3, 3); }},
      {"twirl 5, -2", [](void* dc, void* bm) { return VexoTwirlEx(dc, bm, 5, -2); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoTwirlEx32(w, h, p, 0, 5, -2); }},
      {"block waves, even", [](void* dc, void* bm) { return VexoBlockWaves(dc, bm, 3, 40, 2); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoBlockWaves32(w, h, p, 3, 40, 2); }},
      {"block waves, odd", [](void* dc, void* bm) { return VexoBlockWaves(dc, bm, 2, 75, -1); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoBlockWaves32(w, h, p, 2, 75, -1); }},
      {"circular waves", [](void* dc, void* bm) { return VexoCircularWavesEx(dc, bm, 9, 60); },
       [](int32_t w, int32_t h, Pixel32* p) { VexoCircularWavesEx32(w, h, p, 9, 60); }},
  };
  const int32_t sizes[][2] = {{9, 6}, {1, 5}, {5, 1}, {2, 2}, {1, 1}};
  for (auto kind : kSurfaceKinds) {
    for (const auto& size : sizes) {
      const int32_t w = size[0], h = size[1];
      const Words pic = randomWords(size_t(w * h), uint32_t(w * 16 + h));
      for (const Form& f : forms) {
        auto s = surfaceOf(w, h, pic, kind);
        EXPECT_EQ(f.bitmap(s->dc(), s->bitmap()), h) << f.what;
        auto px = pixelsOf(pic);
        f.buffer(w, h, px.data());
        EXPECT_EQ(wordsOf(*s), coloursOf(px)) << f.what << " on " << w << "x" << h;
      }
    }
  }
}

// The turned picture lands at (0, 0) of the bitmap selected into hdc,
// clipped to it; the rest of that bitmap keeps its pixels. Drawn on another
// device context, the source bitmap stays as it was.
TEST(DeviceContextWarps, Rotate2DrawsTheTargetAtTheOrigin) {
  const int32_t w = 7, h = 5;
  const Words pic = randomWords(w * h, 3);
  for (auto kind : kSurfaceKinds) {
    const struct { int32_t tw, th; float angle; } cases[] = {{7, 5, 0.0f}, {4, 3, 33.0f}, {10, 8, -90.0f}, {9, 2, 450.0f}};
    for (const auto& c : cases) {
      auto s = surfaceOf(w, h, pic, kind);
      EXPECT_EQ(VexoRotate2(s->dc(), s->bitmap(), c.tw, c.th, c.angle), h);
      auto src = pixelsOf(pic);
      std::vector<Pixel32> target(size_t(c.tw * c.th));
      VexoRotate32(w, h, src.data(), c.tw, c.th, target.data(), c.angle);
      const Words turned = coloursOf(target), after = wordsOf(*s);
      for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
          const bool drawn = x < c.tw && y < c.th;
          EXPECT_EQ(after[size_t(y * w + x)], drawn ? turned[size_t(y * c.tw + x)] : pic[size_t(y * w + x)])
              << c.angle << " at " << x << "," << y;
        }
    }
  }
  auto s = surfaceOf(w, h, pic);
  TestSurface out(3, 3, 0x5A112233u);
  EXPECT_EQ(VexoRotate2(out.dc(), s->bitmap(), 3, 3, 180.0f), h);
  EXPECT_EQ(wordsOf(*s), pic);
  EXPECT_FALSE(out.untouched());
  TestSurface none(3, 3, 0x5A112233u);
  EXPECT_EQ(VexoRotate2(none.dc(), s->bitmap(), 0, 3, 10.0f), h);
  EXPECT_TRUE(none.untouched());
}

// -1 for a bitmap GDI cannot describe; 0 and nothing written without
// scratch memory.
TEST(DeviceContextWarps, Failures) {
  const Words pic = randomWords(6 * 4, 5);
  auto s = surfaceOf(6, 4, pic);
  for (auto run : {+[](void* dc, void* bm) { return VexoSwirl(dc, bm, 10); },
                   +[](void* dc, void* bm) { return VexoPostBlur(dc, bm); },
                   +[](void* dc, void* bm) { return VexoBlockWaves(dc, bm, 2, 30, 0); },
                   +[](void* dc, void* bm) { return VexoRotate2(dc, bm, 6, 4, 30.0f); }}) {
    EXPECT_EQ(run(s->dc(), nullptr), -1);
    effects::ScratchLimit none(0);
    EXPECT_EQ(run(s->dc(), s->bitmap()), 0);
  }
  EXPECT_EQ(wordsOf(*s), pic);
}
