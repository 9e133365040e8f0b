// Correctly rounded sine, cosine, arc tangent, exponential and logarithm in
// double precision: each result is the exact mathematical value rounded once
// to nearest, ties to even. The platforms' own maths libraries are faithful
// but not correctly rounded, and they disagree in the last bit on a few
// inputs in ten thousand; a coordinate truncated from such a result then
// moves a pixel on one build only. These functions give the same bits on
// every build because they are the mathematically right bits.
//
// Every double input is handled, with the C library's results for the
// special ones: sin(+-0) = +-0, cos(+-0) = 1, sin/cos(+-inf) = NaN,
// exp(-inf) = +0, exp(+inf) = +inf, log(+-0) = -inf, log(x < 0) = NaN,
// log(+inf) = +inf, and atan2's signed zeros and infinities as in C
// (atan2(+-0, -0) = +-pi, atan2(+-inf, -inf) = +-3pi/4, ...). NaN in gives NaN
// out. No floating-point exception flags or errno are promised.
//
// Assumption: the floating-point rounding mode is the default (to nearest),
// as it is for every host that calls the library; the code is plain double
// arithmetic with SSE2 code generation, no fused multiply-add and no x87.
#pragma once

namespace effects::crmath {

double sin(double x);
double cos(double x);
// sin(x) and cos(x) with one argument reduction; the same bits as the two
// calls.
void sinCos(double x, double* s, double* c);
double atan2(double y, double x);
double exp(double x);
double log(double x);

namespace detail {

// The first, fast step of each function: the value as (hi + lo) *
// 2^exponent (only exp scales), |lo| at most an ulp of hi, and a bound on
// the absolute error of hi + lo. `ok` is false when the step declines the
// input: special values, and the rare inputs it leaves to the slow step
// (sin/cos whose reduced argument is below 2^-25, exp with subnormal
// results, atan2 with quotients below 2^-500). Exposed for the tests, which
// hold the bounds against the exact values.
struct Estimate {
  double hi = 0, lo = 0, error = 0;
  bool ok = false;
  int exponent = 0;
};
void sinCosEstimate(double x, Estimate* s, Estimate* c);
Estimate atan2Estimate(double y, double x);
Estimate expEstimate(double x);
Estimate logEstimate(double x);

// The slow step on its own: several hundred bits of working precision, then
// one rounding. The public functions use it when the fast step's estimate
// and error bound straddle a rounding boundary.
double sinSlow(double x);
double cosSlow(double x);
double atan2Slow(double y, double x);
double expSlow(double x);
double logSlow(double x);

}  // namespace detail

}  // namespace effects::crmath
