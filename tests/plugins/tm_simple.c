/* A working tone mapper for hosts to try: ToneMapping128to32(source Pixel128
 * buffer, destination Pixel32 buffer, width, height, exposure in hundredths).
 * Each colour value x (times the exposure) becomes x / (1 + x) (0 when not
 * positive), then 8 bits;
 * the mask is copied. TMOptionsUsed reports through its argument (an int32_t
 * pointer) that the fifth argument is used. */
#include "plugin.h"

static uint8_t toByte(float x) {
  if (!(x > 0.0f)) return 0;
  if (x >= 1.0f) return 255;
  return (uint8_t)(x * 255.0f + 0.5f);
}

/* x / (1 + x) for positive x; zero, negative and NaN give 0. */
static float curve(float x) { return x > 0.0f ? x / (1.0f + x) : 0.0f; }

PLUGIN_EXPORT int32_t EFFECTS_CALL ToneMapping128to32(intptr_t source, intptr_t destination, intptr_t width, intptr_t height, intptr_t exposure) {
  const Pixel128* s = (const Pixel128*)source;
  Pixel32* d = (Pixel32*)destination;
  const float k = (float)exposure / 100.0f;
  if (width < 1 || height < 1) return 0;
  for (intptr_t i = 0; i < width * height; ++i) {
    d[i].blue = toByte(curve(s[i].blue * k));
    d[i].green = toByte(curve(s[i].green * k));
    d[i].red = toByte(curve(s[i].red * k));
    d[i].mask = toByte(s[i].mask);
  }
  return 1;
}

PLUGIN_EXPORT int32_t EFFECTS_CALL TMOptionsUsed(intptr_t options) {
  *(int32_t*)options = 1;
  return 1;
}
