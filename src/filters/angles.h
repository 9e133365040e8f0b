// The angle functions of the path blurs. The zoom and radial blurs truncate
// positions computed from atan2, cos and sin, so the last bit of each result
// can move a sample; the platforms' own functions differ in that bit on a
// few inputs in ten thousand. These are the correctly rounded ones of
// core/crmath.h, the same bits on every build.
#pragma once

#include "core/crmath.h"

namespace effects::filters {

inline double arcTangent2(double y, double x) { return crmath::atan2(y, x); }

// cos(x) and sin(x), as the two correctly rounded calls give them.
struct CosSin {
  double c, s;
};
inline CosSin cosineAndSine(double x) {
  CosSin r;
  crmath::sinCos(x, &r.s, &r.c);
  return r;
}

}  // namespace effects::filters
