// The mappings of the distortions: for a destination pixel (x, y) of a
// width x height picture, the source position that the warp walk
// (geometry/warp.h) clamps and copies from. They depend on the size only, so
// the device-context forms run them over 24-bit rows unchanged.
//
// Common ground: the centre is (width / 2, height / 2) with truncating
// division, so for even sizes it is the pixel just right of and below the
// middle; distances and angles are in double precision with the standard
// correctly rounded maths functions of core/crmath.h (so every build maps
// every pixel alike); every coordinate is truncated toward zero through
// truncToInt32, so NaN and huge values become the most negative integer and
// clamp to the first column or row. A pixel that a warp leaves alone maps to
// itself, which copies back exactly what it holds.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/crmath.h"
#include "core/numeric.h"
#include "geometry/warp.h"

namespace effects::geometry {

// Degrees to radians, as the waves use it.
inline constexpr double kDegree = 0.017453292519943295;

// sqrt(dx^2 + dy^2) of integer steps, formed in double so that no size
// overflows.
inline double distance(int32_t dx, int32_t dy) {
  const double a = dx, b = dy;
  return std::sqrt(a * a + b * b);
}

// Swirl: within the circle of radius sqrt(width^2 + height^2) / 2 the
// source is turned by atan2 + r / twist about the centre. The vector runs
// from the pixel to the centre while the column adds and the row
// subtracts, so a nearly untwisted disc shows the picture mirrored left to
// right. twist is limited to -255..255; twist 0 divides by zero, which makes
// every pixel in the disc take the first pixel.
class Swirl {
 public:
  Swirl(int32_t width, int32_t height, int32_t twist)
      : cx_(width / 2), cy_(height / 2), radius_(distance(width, height) * 0.5),
        twist_(clampTo(twist, -255, 255)) {}

  Source operator()(int32_t x, int32_t y) const {
    const int32_t dx = cx_ - x, dy = cy_ - y;
    const double r = distance(dx, dy);
    if (!(r < radius_)) return {x, y};
    const double theta = crmath::atan2(static_cast<double>(dy), static_cast<double>(dx)) + r / twist_;
    double s, c;
    crmath::sinCos(theta, &s, &c);
    return {truncToInt32(cx_ + r * c), truncToInt32(cy_ - r * s)};
  }

 private:
  int32_t cx_, cy_;
  double radius_, twist_;
};

// Twirl with two twists in steps of pi / 8: the angle added at distance r
// blends from innerTwist at the centre toward outerTwist at the diagonal's
// length, by rho = r x (1 / diagonal).
class TwirlEx {
 public:
  TwirlEx(int32_t width, int32_t height, int32_t outerTwist, int32_t innerTwist)
      : cx_(width / 2), cy_(height / 2), outer_(outerTwist * 0.39269908169872414),
        inner_(innerTwist * 0.39269908169872414), inverse_(1 / distance(width, height)) {}

  Source operator()(int32_t x, int32_t y) const {
    const int32_t dx = x - cx_, dy = y - cy_;
    const double r = distance(dx, dy);
    const double rho = r * inverse_;
    if (!(rho <= 1)) return {x, y};
    const double theta = rho * outer_ + (1 - rho) * inner_ +
                         crmath::atan2(static_cast<double>(dy), static_cast<double>(dx));
    double s, c;
    crmath::sinCos(theta, &s, &c);
    return {truncToInt32(cx_ + r * c), truncToInt32(cy_ + r * s)};
  }

 private:
  int32_t cx_, cy_;
  double outer_, inner_, inverse_;
};

// Pinch (amount < 0) and bulge (amount > 0) inside the inscribed disc of
// radius Rd = min(width, height) / 2; the radial maps meet the identity at
// Rd. The caller handles amount 0. The offsets are truncated before the
// centre is added.
class Pinch {
 public:
  Pinch(int32_t width, int32_t height, double amount)
      : cx_(width / 2), cy_(height / 2), k_(amount * 0.001), disc_(std::min(width, height) / 2),
        scale_(disc_ / crmath::log(1 + std::fabs(k_) * disc_)) {}

  Source operator()(int32_t x, int32_t y) const {
    const int32_t dx = x - cx_, dy = y - cy_;
    const double r = distance(dx, dy);
    if (r > disc_) return {x, y};
    const double phi = crmath::atan2(static_cast<double>(dy), static_cast<double>(dx));
    const double from = k_ > 0 ? (crmath::exp(r / scale_) - 1) / k_ : scale_ * crmath::log(1 + std::fabs(k_) * r);
    double s, c;
    crmath::sinCos(phi, &s, &c);
    return {int64_t{truncToInt32(from * c)} + cx_, int64_t{truncToInt32(from * s)} + cy_};
  }

 private:
  int32_t cx_, cy_;
  double k_;
  int32_t disc_;
  double scale_;
};

// Circular waves: each pixel is displaced by amplitude pixels in the
// direction of the angle r x frequency degrees (sine to the column, cosine
// to the row), r its distance from the centre. Negative values act as 0.
class CircularWaves {
 public:
  CircularWaves(int32_t width, int32_t height, int32_t amplitude, int32_t frequency)
      : cx_(width / 2), cy_(height / 2), amplitude_(std::max(amplitude, 0)), frequency_(std::max(frequency, 0)) {}

  Source operator()(int32_t x, int32_t y) const {
    const double a = distance(x - cx_, y - cy_) * frequency_ * kDegree;
    double s, c;
    crmath::sinCos(a, &s, &c);
    return {truncToInt32(x + amplitude_ * s), truncToInt32(y + amplitude_ * c)};
  }

 private:
  int32_t cx_, cy_, amplitude_, frequency_;
};

// Circular waves whose amplitude grows with the distance: the local
// amplitude trunc(amplitude x r x (1 / diagonal)) is an integer, 0 near the
// centre and about half of `amplitude` at the corners.
class CircularWavesEx {
 public:
  CircularWavesEx(int32_t width, int32_t height, int32_t amplitude, int32_t frequency)
      : cx_(width / 2), cy_(height / 2), amplitude_(std::max(amplitude, 0)), frequency_(std::max(frequency, 0)),
        inverse_(1 / distance(width, height)) {}

  Source operator()(int32_t x, int32_t y) const {
    const double r = distance(x - cx_, y - cy_);
    const int32_t local = truncToInt32(amplitude_ * r * inverse_);
    const double a = r * frequency_ * kDegree;
    double s, c;
    crmath::sinCos(a, &s, &c);
    return {truncToInt32(x + local * s), truncToInt32(y + local * c)};
  }

 private:
  int32_t cx_, cy_, amplitude_, frequency_;
  double inverse_;
};

// Block waves: the column moves by a sine of the column alone and the row by
// a cosine of the row alone. An even style measures the phase from the
// centre, an odd one (by its signed remainder, so -1 is odd) from the first
// pixel; the integer phase products wrap in 32 bits.
class BlockWaves {
 public:
  static constexpr bool separable = true;

  BlockWaves(int32_t width, int32_t height, int32_t amplitude, int32_t frequency, int32_t style)
      : cx_(width / 2), cy_(height / 2), amplitude_(std::max(amplitude, 0)), frequency_(std::max(frequency, 0)),
        odd_(style % 2 != 0) {}

  int64_t column(int32_t x) const {
    const int32_t phase = wrapMul(odd_ ? x : cx_ - x, frequency_);
    return truncToInt32(x + amplitude_ * crmath::sin(phase * kDegree));
  }
  int64_t row(int32_t y) const {
    const int32_t phase = wrapMul(odd_ ? y : cy_ - y, frequency_);
    return truncToInt32(y + amplitude_ * crmath::cos(phase * kDegree));
  }
  Source operator()(int32_t x, int32_t y) const { return {column(x), row(y)}; }

 private:
  int32_t cx_, cy_, amplitude_, frequency_;
  bool odd_;
};

}  // namespace effects::geometry
