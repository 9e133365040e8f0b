#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/random.h"
#include "support/random_draws.h"

using effects::platform::RandomDraws;
using namespace effects::test;

TEST(RandomDraws, FollowTheSequenceOfTheirSeed) {
  seedDraws(1);
  RandomDraws draws;
  for (int32_t want : {41, 18467, 6334, 26500, 19169}) EXPECT_EQ(draws.next(), want);  // the well-known opening
  for (uint32_t seed : {0u, 0x80000000u, 0xFFFFFFFFu, seedForDraw(3, 32767)}) {
    seedDraws(seed);
    Lcg lcg{seed};
    for (int i = 0; i < 50; ++i) ASSERT_EQ(RandomDraws().next(), lcg.next()) << seed << ", draw " << i;
  }
  EXPECT_EQ(32767 * 3.051850947599719e-05, 1.0);  // the largest draw scales to exactly 1
}

TEST(RandomDraws, EachThreadHasItsOwnSequence) {
  seedDraws(1234);
  const int32_t first = RandomDraws().next();
  int32_t other = 0;
  std::thread t([&other] {  // starts from seed 1; its reseeding stays its own
    other = RandomDraws().next();
    seedDraws(99);
    for (int i = 0; i < 1000; ++i) RandomDraws().next();
  });
  t.join();
  Lcg lcg{1234};
  EXPECT_EQ(other, 41);
  EXPECT_EQ(first, lcg.next());
  EXPECT_EQ(RandomDraws().next(), lcg.next());
}
