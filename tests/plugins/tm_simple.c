/* A working tone mapper for hosts to try: ToneMapping128to32(source Pixel128
 * buffer, destination Pixel32 buffer, width, height, exposure in hundredths).
 * Each colour value x (times the exposure) becomes x / (1 + x), then 8 bits;
 * the mask is copied. TMOptionsUsed reports through its argument (an int32_t
 * pointer) that the fifth argument is used. */
#include "plugin.h"

static uint8_t toByte(float x) {
  if (!(x > 0.0f)) return 0;
  if (x >= 1.0f) return 255;
  return (uint8_t)(x * 255.0f + 0.5f);
}

PLUGIN_EXPORT int32_t EFFECTS_CALL ToneMapping128to32(intptr_t source, intptr_t destination, intptr_t width, intptr_t height, intptr_t exposure) {
  const Pixel128* s = (const Pixel128*)source;
  Pixel32* d = (Pixel32*)destination;
  const float k = (float)exposure / 100.0f;
  if (width < 1 || height < 1) return 0;
  for (intptr_t i = 0; i < width * height; ++i) {
    const float b = s[i].blue * k, g = s[i].green * k, r = s[i].red * k;
    d[i].blue = toByte(b / (1.0f + b));
    d[i].green = toByte(g / (1.0f + g));
    d[i].red = toByte(r / (1.0f + r));
    d[i].mask = toByte(s[i].mask);
  }
  return 1;
}

PLUGIN_EXPORT int32_t EFFECTS_CALL TMOptionsUsed(intptr_t options) {
  *(int32_t*)options = 1;
  return 1;
}
