// Turning a run-time value into a compile-time constant, so that a per-call
// choice (a blend mode, a filter, a sector, a level) is made once and each
// case gets its own loop.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

namespace effects {

namespace detail {
template <int32_t First, class F, int32_t... I>
inline bool withValueIn(int32_t value, F& f, std::integer_sequence<int32_t, I...>) {
  return ((value == First + I ? (f(std::integral_constant<int32_t, First + I>{}), true) : false) || ...);
}
}  // namespace detail

// Calls f(std::integral_constant<int32_t, value>{}) when First <= value <=
// Last and returns true; for any other value calls nothing and returns false.
template <int32_t First, int32_t Last, class F>
inline bool withValue(int32_t value, F&& f) {
  static_assert(First <= Last);
  return detail::withValueIn<First>(value, f, std::make_integer_sequence<int32_t, Last - First + 1>{});
}

}  // namespace effects
