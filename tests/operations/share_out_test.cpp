#include "operations/share_out.h"

#include <gtest/gtest.h>

#include <numeric>

namespace tallyrink {
namespace {

Count sum(const std::vector<Count>& v) { return std::accumulate(v.begin(), v.end(), Count{0}); }

TEST(ShareOut, SplitsInProportionAndAddsUpWithCapsHonoured) {
    // Plain proportions, the remainder to the largest fractions.
    EXPECT_EQ(shareOut(10, {1, 1, 1}), (std::vector<Count>{4, 3, 3}));
    EXPECT_EQ(shareOut(7, {3, 0, 1}), (std::vector<Count>{5, 0, 2}));
    // A capped share passes what it can't take to the others.
    auto capped = shareOut(100, {10, 1, 1}, {20, 100, 100});
    EXPECT_EQ(capped[0], 20);
    EXPECT_EQ(sum(capped), 100);
    EXPECT_EQ(capped[1], 40);
    // Weightless candidates take a share only once the weighted are full.
    auto spill = shareOut(12, {1, 0, 0}, {5, 4, 10});
    EXPECT_EQ(spill, (std::vector<Count>{5, 4, 3}));
    // Not enough room at all: every cap full, no more.
    EXPECT_EQ(shareOut(50, {1, 1}, {3, 4}), (std::vector<Count>{3, 4}));
    EXPECT_EQ(sum(shareOut(0, {1, 2})), 0);
}

TEST(DrawCounts, AddsUpScattersAndRepeatsWithItsSeed) {
    Random a(11), b(11), c(12);
    std::vector<double> w = {5, 3, 2, 0};
    auto x = drawCounts(a, 1000, w);
    EXPECT_EQ(sum(x), 1000);
    EXPECT_EQ(x[3], 0);
    EXPECT_NEAR(double(x[0]), 500, 60);
    EXPECT_EQ(x, drawCounts(b, 1000, w));
    EXPECT_NE(x, drawCounts(c, 1000, w));
    // Caps hold; units go on to whoever has room.
    Random r(3);
    auto capped = drawCounts(r, 30, {100, 1, 0}, {10, 50, 5});
    EXPECT_EQ(capped[0], 10);
    EXPECT_EQ(sum(capped), 30);
    EXPECT_LE(capped[2], 5);
}

}  // namespace
}  // namespace tallyrink
