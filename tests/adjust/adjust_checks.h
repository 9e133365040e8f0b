// Worked examples for the adjustment tests: one pixel in, the exact pixel
// out (floats bit for bit).
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>

#include "effects/effects.h"
#include "support/pictures.h"

namespace effects::test {

template <class P>
struct Example {
  const char* what;
  void (*run)(P*);
  P in, out;
};

template <class P>
void expectExamples(std::initializer_list<Example<P>> examples) {
  for (const auto& e : examples) {
    P p = e.in;
    e.run(&p);
    EXPECT_EQ(p, e.out) << e.what;
  }
}

#define ONE(call) [](auto* p) { call; }

}  // namespace effects::test
