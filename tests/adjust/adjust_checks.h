// Checks shared by the adjustment tests: exact pixel comparisons (floats bit
// for bit) and one-pixel worked examples.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <vector>

#include "effects/effects.h"
#include "support/pictures.h"

namespace effects::test {

template <class P>
void expectPixels(const std::vector<P>& got, const std::vector<P>& want) {
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < got.size(); ++i) {
    const P& p = got[i];
    EXPECT_EQ(std::memcmp(&p, &want[i], sizeof(P)), 0)
        << "pixel " << i << ": got " << +p.blue << ' ' << +p.green << ' ' << +p.red << ' ' << +p.mask;
  }
}

// A worked example: one pixel in, the exact pixel out.
template <class P>
struct Example {
  const char* what;
  void (*run)(P*);
  P in, out;
};

template <class P>
void expectExamples(std::initializer_list<Example<P>> examples) {
  for (const auto& e : examples) {
    SCOPED_TRACE(e.what);
    std::vector<P> px{e.in};
    e.run(px.data());
    expectPixels(px, {e.out});
  }
}

#define ONE(call) [](auto* p) { call; }

}  // namespace effects::test
