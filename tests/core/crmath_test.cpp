// The correctly rounded functions. Every build checks the special values,
// the fast step against the independent slow step, and the reference table
// tests/data/crmath.txt (inputs near rounding boundaries, where the platform
// libraries went wrong, near multiples of pi/2, huge, tiny and subnormal),
// whose expected bits MPFR computed. Where MPFR is linked (native Linux)
// millions of random inputs are compared with it, the fast step's error is
// held to its bound, and the slow step is compared on its own. EFFECTS_CRMATH_SCALE=N multiplies the random counts;
// EFFECTS_RECORD_CRMATH=path writes a fresh reference table.
#include "core/crmath.h"

#include <gtest/gtest.h>

#include <bit>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "core/crmath_tables.h"

#if defined(EFFECTS_HAVE_MPFR)
#include <algorithm>
#include <mpfr.h>
#endif

namespace cr = effects::crmath;

namespace {

const double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

enum class Fn { Sin, Cos, Exp, Log, Atan2 };
const char* const kNames[] = {"sin", "cos", "exp", "log", "atan2"};

double call(Fn f, double a, double b) {
  switch (f) {
    case Fn::Sin: return cr::sin(a);
    case Fn::Cos: return cr::cos(a);
    case Fn::Exp: return cr::exp(a);
    case Fn::Log: return cr::log(a);
    case Fn::Atan2: return cr::atan2(a, b);
  }
  return 0;
}

double callSlow(Fn f, double a, double b) {
  switch (f) {
    case Fn::Sin: return cr::detail::sinSlow(a);
    case Fn::Cos: return cr::detail::cosSlow(a);
    case Fn::Exp: return cr::detail::expSlow(a);
    case Fn::Log: return cr::detail::logSlow(a);
    case Fn::Atan2: return cr::detail::atan2Slow(a, b);
  }
  return 0;
}

uint64_t bits(double d) { return std::bit_cast<uint64_t>(d); }

// Bit-for-bit equality; any NaN matches any NaN.
bool same(double a, double b) { return bits(a) == bits(b) || (a != a && b != b); }

std::string show(double d) {
  char buf[48];
  std::snprintf(buf, sizeof buf, "%a", d);
  return buf;
}

// A small deterministic generator (the same inputs on every build).
struct Draws {
  uint64_t s;
  uint64_t next() {
    s += 0x9e3779b97f4a7c15u;
    uint64_t z = s;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }
  double uniform(double lo, double hi) { return lo + (hi - lo) * static_cast<double>(next() >> 11) * 0x1p-53; }
  // Any finite double with an exponent drawn uniformly, either sign.
  double anyFinite() {
    const double d = std::bit_cast<double>(next() % 0x7ff0000000000000u);
    return (next() & 1) ? -d : d;
  }
};

// The inputs of each function's random draws: the ranges the library uses
// and every exponent.
void draw(Fn f, Draws& g, int i, double* a, double* b) {
  *b = 0;
  switch (f) {
    case Fn::Sin:
    case Fn::Cos:
      *a = i % 4 == 0 ? g.anyFinite() : i % 4 == 1 ? g.uniform(-1e6, 1e6) : i % 4 == 2 ? g.uniform(-8, 8)
                                                                                         : g.uniform(-0x1p-10, 0x1p-10);
      return;
    case Fn::Exp:
      *a = i % 3 == 0 ? g.uniform(-745.2, 709.8) : i % 3 == 1 ? g.uniform(-20, 20) : g.uniform(-0x1p-8, 0x1p-8);
      return;
    case Fn::Log:
      *a = i % 3 == 0 ? std::fabs(g.anyFinite()) : i % 3 == 1 ? g.uniform(0.5, 2) : g.uniform(0, 2000);
      return;
    case Fn::Atan2:
      if (i % 3 == 0) {
        *a = g.anyFinite();
        *b = g.anyFinite();
      } else if (i % 3 == 1) {  // integer steps, as the blurs and warps pass them
        *a = static_cast<double>(static_cast<int64_t>(g.next() % 4001) - 2000);
        *b = static_cast<double>(static_cast<int64_t>(g.next() % 4001) - 2000);
      } else {
        *a = g.uniform(-1000, 1000);
        *b = g.uniform(-1000, 1000);
      }
      return;
  }
}

}  // namespace

// The C library's results where they are exact or defined by IEEE 754.
TEST(CrMath, SpecialValues) {
  const double pi = 0x1.921fb54442d18p+1, halfPi = 0x1.921fb54442d18p+0;
  const double minSub = std::numeric_limits<double>::denorm_min();
  struct Case { Fn f; double a, b, want; };
  const Case cases[] = {
      {Fn::Sin, 0.0, 0, 0.0},          {Fn::Sin, -0.0, 0, -0.0},       {Fn::Sin, minSub, 0, minSub},
      {Fn::Sin, -0x1p-30, 0, -0x1p-30}, {Fn::Sin, kInf, 0, kNaN},        {Fn::Sin, -kInf, 0, kNaN},
      {Fn::Sin, kNaN, 0, kNaN},        {Fn::Cos, 0.0, 0, 1.0},         {Fn::Cos, -0.0, 0, 1.0},
      {Fn::Cos, minSub, 0, 1.0},       {Fn::Cos, -kInf, 0, kNaN},       {Fn::Cos, kNaN, 0, kNaN},
      {Fn::Exp, 0.0, 0, 1.0},          {Fn::Exp, -0.0, 0, 1.0},        {Fn::Exp, kInf, 0, kInf},
      {Fn::Exp, -kInf, 0, 0.0},        {Fn::Exp, kNaN, 0, kNaN},        {Fn::Exp, 710, 0, kInf},
      {Fn::Exp, -746, 0, 0.0},         {Fn::Exp, 0x1.62e42fefa39efp+9, 0, 0x1.fffffffffff2ap+1023},
      {Fn::Exp, 0x1.62e42fefa39f0p+9, 0, kInf},                          {Fn::Exp, -0x1.74910d52d3052p+9, 0, 0.0},
      {Fn::Exp, -0x1.74910d52d3051p+9, 0, minSub},                       {Fn::Log, 1.0, 0, 0.0},
      {Fn::Log, 0.0, 0, -kInf},        {Fn::Log, -0.0, 0, -kInf},      {Fn::Log, -1.0, 0, kNaN},
      {Fn::Log, -kInf, 0, kNaN},       {Fn::Log, kInf, 0, kInf},        {Fn::Log, kNaN, 0, kNaN},
      {Fn::Log, minSub, 0, -0x1.74385446d71c3p+9},
      {Fn::Atan2, 0.0, 0.0, 0.0},      {Fn::Atan2, -0.0, 0.0, -0.0},   {Fn::Atan2, 0.0, -0.0, pi},
      {Fn::Atan2, -0.0, -0.0, -pi},    {Fn::Atan2, 0.0, -5, pi},        {Fn::Atan2, -0.0, 5, -0.0},
      {Fn::Atan2, 3, 0.0, halfPi},     {Fn::Atan2, -3, -0.0, -halfPi}, {Fn::Atan2, kInf, kInf, 0x1.921fb54442d18p-1},
      {Fn::Atan2, -kInf, -kInf, -0x1.2d97c7f3321d2p+1},                  {Fn::Atan2, kInf, -7, halfPi},
      {Fn::Atan2, 7, -kInf, pi},       {Fn::Atan2, -7, kInf, -0.0},     {Fn::Atan2, kNaN, 1, kNaN},
      {Fn::Atan2, 1, kNaN, kNaN},      {Fn::Atan2, minSub, 0x1p1023, 0.0},
      {Fn::Atan2, -0x1p-1000, 0x1p70, -0x1p-1070},                       {Fn::Atan2, 0x1p1023, minSub, halfPi},
  };
  for (const Case& c : cases) {
    const double got = call(c.f, c.a, c.b);
    EXPECT_TRUE(same(got, c.want)) << kNames[static_cast<int>(c.f)] << "(" << show(c.a) << ", " << show(c.b)
                                    << ") = " << show(got) << ", want " << show(c.want);
    const double slow = callSlow(c.f, c.a, c.b);
    EXPECT_TRUE(same(slow, c.want)) << "slow step " << kNames[static_cast<int>(c.f)] << "(" << show(c.a) << ", "
                                     << show(c.b) << ") = " << show(slow);
  }
}

// The fast step and the slow step are separate computations (double-double
// tables and polynomials; multi-word series); on random inputs they give
// the same bits on every build, and sinCos gives the bits of sin and cos.
TEST(CrMath, FastAndSlowStepsAgree) {
  Draws g{42};
  for (Fn f : {Fn::Sin, Fn::Cos, Fn::Exp, Fn::Log, Fn::Atan2}) {
    int failures = 0;
    for (int i = 0; i < 1500 && failures < 5; ++i) {
      double a = 0, b = 0;
      draw(f, g, i, &a, &b);
      const double fast = call(f, a, b), slow = callSlow(f, a, b);
      if (!same(fast, slow)) {
        ++failures;
        ADD_FAILURE() << kNames[static_cast<int>(f)] << "(" << show(a) << ", " << show(b) << "): fast " << show(fast)
                      << ", slow " << show(slow);
      }
      if (f == Fn::Sin) {
        double s, c;
        cr::sinCos(a, &s, &c);
        EXPECT_TRUE(same(s, cr::sin(a)) && same(c, cr::cos(a))) << show(a);
      }
    }
  }
}

namespace {

struct Reference {
  Fn f;
  double a, b, want;
  int line;
};

std::vector<Reference> referenceTable() {
  std::ifstream in(std::string(EFFECTS_TEST_DATA_DIR) + "/crmath.txt");
  std::vector<Reference> rows;
  int line = 0;
  for (std::string s; std::getline(in, s);) {
    ++line;
    if (s.empty() || s[0] == '#') continue;
    std::istringstream fields(s);
    std::string name, a, b, want;
    fields >> name >> a;
    Reference r{Fn::Sin, 0, 0, 0, line};
    for (int k = 0; k < 5; ++k)
      if (name == kNames[k]) r.f = static_cast<Fn>(k);
    if (r.f == Fn::Atan2) fields >> b;
    fields >> want;
    auto parse = [](const std::string& hex) { return std::bit_cast<double>(std::strtoull(hex.c_str(), nullptr, 16)); };
    r.a = parse(a);
    r.b = r.f == Fn::Atan2 ? parse(b) : 0;
    r.want = parse(want);
    rows.push_back(r);
  }
  return rows;
}

}  // namespace

// The checked-in expected bits (MPFR's, rounded once) hold on every build,
// for the public functions and for the slow step alone.
TEST(CrMath, ReferenceTable) {
  const auto rows = referenceTable();
  ASSERT_GT(rows.size(), 1000u) << "tests/data/crmath.txt missing or short";
  int failures = 0;
  for (const Reference& r : rows) {
    const double got = call(r.f, r.a, r.b), slow = callSlow(r.f, r.a, r.b);
    if ((!same(got, r.want) || !same(slow, r.want)) && ++failures <= 20)
      ADD_FAILURE() << "crmath.txt line " << r.line << ": " << kNames[static_cast<int>(r.f)] << "(" << show(r.a)
                    << ", " << show(r.b) << ") = " << show(got) << " (slow step " << show(slow) << "), want "
                    << show(r.want);
  }
  EXPECT_EQ(failures, 0);
}

#if defined(EFFECTS_HAVE_MPFR)

namespace {

// Random counts: EFFECTS_CRMATH_SCALE times `n`, a twentieth of it in
// unoptimised or sanitised builds.
int64_t samples(int64_t n) {
  const char* scale = std::getenv("EFFECTS_CRMATH_SCALE");
  if (scale != nullptr && std::atoll(scale) > 0) n *= std::atoll(scale);
#if !defined(NDEBUG) || defined(__SANITIZE_ADDRESS__)
  n /= 20;
#endif
  return n;
}

struct Mpfr {
  mpfr_t v;
  explicit Mpfr(mpfr_prec_t p) { mpfr_init2(v, p); }
  ~Mpfr() { mpfr_clear(v); }
  Mpfr(const Mpfr&) = delete;
  Mpfr& operator=(const Mpfr&) = delete;
};

// f(a) or atan2(a, b) into out, rounded to out's precision; returns MPFR's
// ternary value.
int evaluate(Fn f, double a, double b, mpfr_t out) {
  Mpfr x(53), y(53);
  mpfr_set_d(x.v, a, MPFR_RNDN);
  mpfr_set_d(y.v, b, MPFR_RNDN);
  switch (f) {
    case Fn::Sin: return mpfr_sin(out, x.v, MPFR_RNDN);
    case Fn::Cos: return mpfr_cos(out, x.v, MPFR_RNDN);
    case Fn::Exp: return mpfr_exp(out, x.v, MPFR_RNDN);
    case Fn::Log: return mpfr_log(out, x.v, MPFR_RNDN);
    case Fn::Atan2: return mpfr_atan2(out, x.v, y.v, MPFR_RNDN);
  }
  return 0;
}

// The correctly rounded double, subnormals rounded once at their own
// precision (in double's exponent range, for this call only).
double reference(Fn f, double a, double b = 0) {
  const mpfr_exp_t emin = mpfr_get_emin(), emax = mpfr_get_emax();
  mpfr_set_emin(-1073);
  mpfr_set_emax(1024);
  Mpfr r(53);
  const int t = mpfr_check_range(r.v, evaluate(f, a, b, r.v), MPFR_RNDN);
  mpfr_subnormalize(r.v, t, MPFR_RNDN);
  const double d = mpfr_get_d(r.v, MPFR_RNDN);
  mpfr_set_emin(emin);
  mpfr_set_emax(emax);
  return d;
}

// |estimate - exact| / bound for the fast step's estimate (0 when declined).
double errorRatio(Fn f, double a, double b) {
  cr::detail::Estimate e, unused;
  switch (f) {
    case Fn::Sin: cr::detail::sinCosEstimate(a, &e, &unused); break;
    case Fn::Cos: cr::detail::sinCosEstimate(a, &unused, &e); break;
    case Fn::Exp: e = cr::detail::expEstimate(a); break;
    case Fn::Log: e = cr::detail::logEstimate(a); break;
    case Fn::Atan2: e = cr::detail::atan2Estimate(a, b); break;
  }
  if (!e.ok) return 0;
  Mpfr exact(320), diff(320);
  evaluate(f, a, b, exact.v);
  mpfr_mul_2si(exact.v, exact.v, -e.exponent, MPFR_RNDN);
  mpfr_set_d(diff.v, e.hi, MPFR_RNDN);
  mpfr_add_d(diff.v, diff.v, e.lo, MPFR_RNDN);
  mpfr_sub(diff.v, diff.v, exact.v, MPFR_RNDN);
  return mpfr_zero_p(diff.v) ? 0 : std::fabs(mpfr_get_d(diff.v, MPFR_RNDN)) / e.error;
}

// Inputs whose sin or cos sit nearest a multiple of pi/2: the nearest
// doubles to k pi/4 and their neighbours, and the double closest to a
// multiple of pi/2 (6381956970095103 * 2^797).
std::vector<double> nearQuarterTurns() {
  std::vector<double> xs{0x1.6ac5b262ca1ffp+849};
  Mpfr t(200);
  for (int64_t k = 1; k < 200000; k = k < 64 ? k + 1 : k * 9 / 8 + 1) {
    mpfr_const_pi(t.v, MPFR_RNDN);
    mpfr_mul_si(t.v, t.v, static_cast<long>(k), MPFR_RNDN);
    mpfr_div_2ui(t.v, t.v, 2, MPFR_RNDN);
    const double x = mpfr_get_d(t.v, MPFR_RNDN);
    for (double d : {std::nextafter(x, 0.0), x, std::nextafter(x, kInf)}) {
      xs.push_back(d);
      xs.push_back(-d);
    }
  }
  for (int e = 21; e < 1024; e += 7) {  // large multiples: reduced arguments far below 1
    mpfr_const_pi(t.v, MPFR_RNDN);
    mpfr_mul_2si(t.v, t.v, e, MPFR_RNDN);
    xs.push_back(mpfr_get_d(t.v, MPFR_RNDN));
  }
  return xs;
}

}  // namespace

// Random inputs of every function against MPFR, the fast step's error held
// to its bound on each (and the largest ratio reported), the slow step
// alone on a share of them.
TEST(CrMathMpfr, RandomInputs) {
  const int64_t n = samples(1000000);
  for (Fn f : {Fn::Sin, Fn::Cos, Fn::Exp, Fn::Log, Fn::Atan2}) {
    Draws g{1000 + static_cast<uint64_t>(f)};
    int failures = 0;
    double worst = 0;
    for (int64_t i = 0; i < n && failures < 10; ++i) {
      double a = 0, b = 0;
      draw(f, g, static_cast<int>(i % 12), &a, &b);
      const double want = reference(f, a, b);
      const double got = call(f, a, b);
      const bool slowChecked = i % 200 == 0;
      const double slow = slowChecked ? callSlow(f, a, b) : want;
      if (!same(got, want) || !same(slow, want)) {
        ++failures;
        ADD_FAILURE() << kNames[static_cast<int>(f)] << "(" << show(a) << ", " << show(b) << ") = " << show(got)
                      << " (slow step " << show(slow) << "), want " << show(want);
      }
      if (i % 10 == 0) worst = std::max(worst, errorRatio(f, a, b));
    }
    EXPECT_LT(worst, 1.0) << kNames[static_cast<int>(f)] << ": the fast step's error exceeds its bound";
    std::printf("[ crmath   ] %s: %" PRId64 " inputs, largest fast-step error %.3g of its bound\n",
                kNames[static_cast<int>(f)], n, worst);
  }
}

// sin and cos where the reduced argument is smallest, tiny arguments, and
// exp, log and atan2 at the ends of their ranges.
TEST(CrMathMpfr, Boundaries) {
  std::vector<std::pair<Fn, double>> cases;
  for (double x : nearQuarterTurns()) {
    cases.emplace_back(Fn::Sin, x);
    cases.emplace_back(Fn::Cos, x);
  }
  for (double x = 0x1p-40; x < 0x1p-20; x *= 1.0625) {
    for (double d : {x, -x, std::nextafter(x, 0.0)}) {
      cases.emplace_back(Fn::Sin, d);
      cases.emplace_back(Fn::Cos, d);
      cases.emplace_back(Fn::Exp, d);
      cases.emplace_back(Fn::Log, 1 + d);
    }
  }
  Draws g{7};
  for (int i = 0; i < 2000; ++i) {
    cases.emplace_back(Fn::Exp, g.uniform(-745.14, -708.3));  // subnormal results
    cases.emplace_back(Fn::Exp, g.uniform(709.0, 709.79));
    cases.emplace_back(Fn::Log, std::bit_cast<double>(g.next() % (uint64_t{1} << 52) | 1));  // subnormal inputs
    cases.emplace_back(Fn::Log, 1 + static_cast<double>(static_cast<int64_t>(g.next() % 2001) - 1000) * 0x1p-52);
  }
  for (const auto& [f, x] : cases) {
    const double want = reference(f, x);
    EXPECT_TRUE(same(call(f, x, 0), want)) << kNames[static_cast<int>(f)] << "(" << show(x) << ") = "
                                            << show(call(f, x, 0)) << ", want " << show(want);
    EXPECT_LT(errorRatio(f, x, 0), 1.0) << kNames[static_cast<int>(f)] << "(" << show(x) << ")";
  }
  for (int i = 0; i < 4000; ++i) {  // quotients below 2^-500 and above 2^500, subnormal operands
    const double y = std::ldexp(g.uniform(-1, 1), static_cast<int>(g.next() % 2200) - 1100);
    const double x = std::ldexp(g.uniform(-1, 1), static_cast<int>(g.next() % 2200) - 1100);
    EXPECT_TRUE(same(cr::atan2(y, x), reference(Fn::Atan2, y, x))) << show(y) << ", " << show(x);
  }
}

// The reductions multiply these pieces by integers and rely on the products
// being exact: each piece has at most the bits its comment gives, and the
// pieces add up to pi/2 and ln2/128 within the tails the error budgets use.
// (A wrong table entry shows in the random comparisons.)
TEST(CrMathMpfr, SplitConstants) {
  namespace t = effects::crmath::tables;
  auto width = [](double d) { return 53 - std::countr_zero(bits(d) | (uint64_t{1} << 52)); };
  EXPECT_LE(width(t::kHalfPi1), 33);
  EXPECT_LE(width(t::kHalfPi2), 33);
  EXPECT_LE(width(t::kLn2Over128_1), 35);
  EXPECT_LE(width(t::kLn2Over128_2), 35);
  EXPECT_LE(width(t::kLn2_1), 42);
  Mpfr v(400);
  mpfr_const_pi(v.v, MPFR_RNDN);
  mpfr_div_2ui(v.v, v.v, 1, MPFR_RNDN);
  for (double piece : {t::kHalfPi1, t::kHalfPi2, t::kHalfPi3}) mpfr_sub_d(v.v, v.v, piece, MPFR_RNDN);
  EXPECT_LT(std::fabs(mpfr_get_d(v.v, MPFR_RNDN)), 0x1p-119);
  mpfr_const_log2(v.v, MPFR_RNDN);
  mpfr_div_2ui(v.v, v.v, 7, MPFR_RNDN);
  for (double piece : {t::kLn2Over128_1, t::kLn2Over128_2, t::kLn2Over128_3}) mpfr_sub_d(v.v, v.v, piece, MPFR_RNDN);
  EXPECT_LT(std::fabs(mpfr_get_d(v.v, MPFR_RNDN)), 0x1p-130);
  mpfr_const_log2(v.v, MPFR_RNDN);
  for (double piece : {t::kLn2_1, t::kLn2_2}) mpfr_sub_d(v.v, v.v, piece, MPFR_RNDN);
  EXPECT_LT(std::fabs(mpfr_get_d(v.v, MPFR_RNDN)), 0x1p-95);
}

namespace {

// How near f's value lies to a rounding boundary, in ulps of the result
// (0 is a midpoint, 0.5 a double).
double hardness(Fn f, double a, double b) {
  Mpfr exact(200), r(200);
  evaluate(f, a, b, exact.v);
  const double d = mpfr_get_d(exact.v, MPFR_RNDN);
  if (d == 0 || !std::isfinite(d) || std::fabs(d) < 0x1p-1022) return 0.5;
  mpfr_sub_d(r.v, exact.v, d, MPFR_RNDN);
  const double ulp = std::nextafter(std::fabs(d), kInf) - std::fabs(d);
  return 0.5 - std::fabs(mpfr_get_d(r.v, MPFR_RNDN)) / ulp;
}

double platform(Fn f, double a, double b) {
  switch (f) {
    case Fn::Sin: return std::sin(a);
    case Fn::Cos: return std::cos(a);
    case Fn::Exp: return std::exp(a);
    case Fn::Log: return std::log(a);
    case Fn::Atan2: return std::atan2(a, b);
  }
  return 0;
}

}  // namespace

// The checked-in reference table agrees with MPFR. With
// EFFECTS_RECORD_CRMATH=path, a fresh one is written there: for each
// function the inputs nearest a rounding boundary among 400000 draws (the
// slow step's cases), inputs where this platform's library is not correctly
// rounded, boundary inputs and plain draws.
TEST(CrMathMpfr, ReferenceTableMatchesMpfr) {
  for (const Reference& r : referenceTable())
    EXPECT_TRUE(same(reference(r.f, r.a, r.b), r.want)) << "crmath.txt line " << r.line;
  const char* record = std::getenv("EFFECTS_RECORD_CRMATH");
  if (record == nullptr) return;
  std::ofstream out(record);
  out << "# Correctly rounded results (MPFR) held on every build by tests/core/crmath_test.cpp.\n"
         "# <function> <argument bits> [<second argument bits>] <result bits>  (IEEE double, hex)\n";
  auto write = [&out](Fn f, double a, double b) {
    char buf[160];
    const double want = reference(f, a, b);
    if (f == Fn::Atan2)
      std::snprintf(buf, sizeof buf, "atan2 %016" PRIx64 " %016" PRIx64 " %016" PRIx64 "  # (%a, %a)", bits(a), bits(b),
                    bits(want), a, b);
    else
      std::snprintf(buf, sizeof buf, "%s %016" PRIx64 " %016" PRIx64 "  # %a", kNames[static_cast<int>(f)], bits(a),
                    bits(want), a);
    out << buf << '\n';
  };
  for (Fn f : {Fn::Sin, Fn::Cos, Fn::Exp, Fn::Log, Fn::Atan2}) {
    Draws g{500 + static_cast<uint64_t>(f)};
    struct Input { double hard, a, b; };
    std::vector<Input> hard, wrong, plain;
    for (int i = 0; i < 400000; ++i) {
      double a = 0, b = 0;
      draw(f, g, i % 12, &a, &b);
      const Input in{hardness(f, a, b), a, b};
      hard.push_back(in);
      if (wrong.size() < 120 && !same(platform(f, a, b), reference(f, a, b))) wrong.push_back(in);
      if (i % 4000 == 0) plain.push_back(in);
    }
    std::partial_sort(hard.begin(), hard.begin() + 120, hard.end(),
                      [](const Input& x, const Input& y) { return x.hard < y.hard; });
    hard.resize(120);
    out << "# " << kNames[static_cast<int>(f)] << ": nearest a rounding boundary, then not correctly rounded by "
        << "the platform library, then plain draws\n";
    for (const auto* list : {&hard, &wrong, &plain})
      for (const Input& in : *list) write(f, in.a, in.b);
  }
  out << "# sin and cos nearest multiples of pi/4\n";
  const auto turns = nearQuarterTurns();
  for (size_t i = 0; i < turns.size(); i += 3) {
    write(Fn::Sin, turns[i], 0);
    write(Fn::Cos, turns[i], 0);
  }
}

#endif  // EFFECTS_HAVE_MPFR
