// The angle functions of the path blurs. The zoom and radial blurs truncate
// positions computed from atan2, cos and sin, so the last bit of each result
// can move a sample; the platforms' own functions differ in that bit on a
// few inputs in ten thousand. Every call goes through here so that one
// correctly rounded implementation can serve every build.
#pragma once

#include <cmath>

namespace effects::filters {

inline double arcTangent2(double y, double x) { return std::atan2(y, x); }
inline double cosine(double x) { return std::cos(x); }
inline double sine(double x) { return std::sin(x); }

}  // namespace effects::filters
