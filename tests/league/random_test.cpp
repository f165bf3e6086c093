#include <gtest/gtest.h>

#include "league/random.h"

#include <cmath>
#include <limits>
#include <random>

namespace tallyrink {
namespace {

TEST(Random, SameSeedSameStreamAndRanges) {
    Random a(42), b(42), c(43);
    bool differs = false;
    for (int i = 0; i < 1000; ++i) {
        double x = a.rnd();
        EXPECT_EQ(x, b.rnd());
        differs |= x != c.rnd();
        ASSERT_GE(x, 0.0);
        ASSERT_LT(x, 1.0);
    }
    EXPECT_TRUE(differs);
    Random r(7);
    int seen[7] = {};
    for (int i = 0; i < 7000; ++i) {
        int v = r.rand(6);
        ASSERT_GE(v, 1);
        ASSERT_LE(v, 6);
        ++seen[v];
    }
    for (int v = 1; v <= 6; ++v) EXPECT_GT(seen[v], 900);
    EXPECT_EQ(r.rand(0), 1);
}

TEST(Random, FixedSeedGivesAFixedFirstDraw) {
    // Guards against a change of engine or bit use that would silently alter
    // every seeded game.
    Random r(1);
    EXPECT_EQ(r.rand(1000000), 133877);
}

TEST(Random, TwisterMatchesTheStandardSequence) {
    // Every seeded game depends on this stream: it must be the standard's,
    // draw for draw, across many refills of the state and for any seed.
    for (std::uint64_t seed : {0ULL, 1ULL, 5489ULL, 20171004ULL, ~0ULL}) {
        Twister64 ours(seed);
        std::mt19937_64 theirs(seed);
        for (int i = 0; i < 5000; ++i) ASSERT_EQ(ours(), theirs()) << "seed " << seed << " draw " << i;
    }
    // The fractions the game draws are the standard's top 53 bits, exactly:
    // half of them have the top bit set, where a conversion through the
    // fraction of a single power of two would lose the lowest.
    for (std::uint64_t seed : {3ULL, 20171004ULL, ~0ULL}) {
        Twister64 ours(seed);
        std::mt19937_64 theirs(seed);
        for (int i = 0; i < 5000; ++i) {
            const double want = static_cast<double>(theirs() >> 11) * 0x1.0p-53;
            // Raw words and fractions share one place in the stream.
            if (i % 7 == 3) {
                ASSERT_EQ(static_cast<double>(ours() >> 11) * 0x1.0p-53, want) << "seed " << seed << " draw " << i;
                continue;
            }
            ASSERT_EQ(ours.unit(), want) << "seed " << seed << " draw " << i;
        }
    }
    // The standard's own check: the 10000th draw of the default seed.
    Twister64 fixed(5489);
    std::uint64_t v = 0;
    for (int i = 0; i < 10000; ++i) v = fixed();
    EXPECT_EQ(v, 9981545732273789042ULL);
    // A copy carries on where the original stood (a probe of the chances
    // saves and restores the game's stream this way).
    Random a(9);
    for (int i = 0; i < 400; ++i) a.rnd();
    Random saved = a;
    double next = a.rnd();
    EXPECT_EQ(saved.rnd(), next);
}

// The tests against a drawn threshold give the answer the draw would, and
// take a number from the stream only when the answer depends on it.
TEST(Random, ThresholdTestsDrawOnlyWhenTheAnswerIsOpen) {
    // `test` runs the shortcut on one stream; `full` the plain expression on
    // another; `open` says whether the answer may depend on the draw.
    auto check = [](auto test, auto full, bool open, const char* what) {
        for (std::uint64_t seed = 1; seed <= 300; ++seed) {
            Random quick(seed), plain(seed), untouched(seed);
            ASSERT_EQ(test(quick), full(plain)) << what << " seed " << seed;
            // The next number shows whether the shortcut drew.
            double after = quick.rnd();
            if (open)
                ASSERT_EQ(after, plain.rnd()) << what;
            else
                ASSERT_EQ(after, untouched.rnd()) << what;
        }
    };
    struct Case {
        double x, lo, span, scale;
        bool open;
    };
    // Values inside the reach of the draw, and either side of it (a value
    // right on an end is open for one test and settled for the other).
    for (Case c : {Case{5.5, 6, 3, 1, false}, Case{9.5, 6, 3, 1, false}, Case{7, 6, 3, 1, true},
                   Case{0.2, 0.25, -0.1, 1, true}, Case{0.1, 0.25, -0.1, 1, false}, Case{0.3, 0.25, -0.1, 1, false},
                   Case{4, 1.6, 0.6, 2, true}, Case{4.5, 1.6, 0.6, 2, false}, Case{3, 1.6, 0.6, 0, false},
                   Case{1.5, 1, -0.05, -2, false}, Case{-1.95, 1, -0.05, -2, true}}) {
        check([&](Random& r) { return r.over(c.x, c.lo, c.span, c.scale); },
              [&](Random& r) { return c.x > (c.lo + c.span * r.rnd()) * c.scale; }, c.open, "over");
        check([&](Random& r) { return r.under(c.x, c.lo, c.span, c.scale); },
              [&](Random& r) { return c.x < (c.lo + c.span * r.rnd()) * c.scale; }, c.open, "under");
    }
    struct RandCase {
        double x, lo;
        int n;
        bool open;
    };
    for (RandCase c :
         {RandCase{4, 2, 3, true}, RandCase{6, 2, 3, false}, RandCase{2, 2, 3, false}, RandCase{-1, 2, 3, false},
          RandCase{700, 360, 360, true}, RandCase{3.5, 2, 1, false}, RandCase{2.5, 2, 0, false}}) {
        check([&](Random& r) { return r.overRand(c.x, c.lo, c.n); },
              [&](Random& r) { return c.x > c.lo + r.rand(c.n); }, c.open && c.n > 1, "overRand");
        check([&](Random& r) { return r.underRand(c.x, c.lo, c.n); },
              [&](Random& r) { return c.x < c.lo + r.rand(c.n); }, c.open && c.n > 1, "underRand");
    }
    for (RandCase c : {RandCase{0, 0, 5, false}, RandCase{1, 0, 5, true}, RandCase{4.5, 0, 5, true},
                       RandCase{5, 0, 5, false}, RandCase{1, 0, 1, false}, RandCase{0.5, 0, 0, false}}) {
        check([&](Random& r) { return r.randAtMost(c.n, c.x); }, [&](Random& r) { return r.rand(c.n) <= c.x; }, c.open,
              "randAtMost");
    }
}

// The chances stand for the tests they replace: the share of an even
// spread of draws for which the plain expression holds, and 0 or 1 exactly
// where the test would take no draw.
TEST(Random, ChancesAreTheShareOfDrawsThatPass) {
    constexpr int kSpread = 100000;
    auto share = [](auto holds) {
        int n = 0;
        for (int k = 0; k < kSpread; ++k) n += holds((k + .5) / kSpread) ? 1 : 0;
        return static_cast<double>(n) / kSpread;
    };
    struct Case {
        double x, lo, span, scale;
    };
    for (Case c : {Case{5.5, 6, 3, 1}, Case{9.5, 6, 3, 1}, Case{7, 6, 3, 1}, Case{0.2, 0.25, -0.1, 1},
                   Case{0.1, 0.25, -0.1, 1}, Case{4, 1.6, 0.6, 2}, Case{3, 1.6, 0.6, 0}, Case{-1.95, 1, -0.05, -2},
                   Case{0.99, 1, -0.07, 1}, Case{0.97, 0.95, 0.04, 1}}) {
        const double over = Random::chanceOver(c.x, c.lo, c.span, c.scale);
        const double under = Random::chanceUnder(c.x, c.lo, c.span, c.scale);
        EXPECT_NEAR(over, share([&](double u) { return c.x > (c.lo + c.span * u) * c.scale; }), 1e-4) << c.x;
        EXPECT_NEAR(under, share([&](double u) { return c.x < (c.lo + c.span * u) * c.scale; }), 1e-4) << c.x;
        // A test that takes no draw is certain, and its chance is exactly so.
        Random tested(3), untouched(3);
        tested.over(c.x, c.lo, c.span, c.scale);
        if (tested.rnd() == untouched.rnd()) {
            EXPECT_TRUE(over == 0 || over == 1) << c.x;
        }
        Random tested2(3), untouched2(3);
        tested2.under(c.x, c.lo, c.span, c.scale);
        if (tested2.rnd() == untouched2.rnd()) {
            EXPECT_TRUE(under == 0 || under == 1) << c.x;
        }
    }
    for (int n : {1, 5, 10})
        for (double x : {-3.0, 0.5, 1.0, 4.5, 5.0, 9.9, 12.0})
            EXPECT_NEAR(Random::chanceAtMost(n, x),
                        share([&](double u) { return (n <= 0 ? 1 : static_cast<int>(u * n) + 1) <= x; }), 1e-4)
                << n << " " << x;

    // chance() draws only for an open chance.
    for (double p : {0.0, -0.5, 1.0, 1.5, 0.3}) {
        Random a(11), b(11);
        a.chance(p);
        const bool drew = a.rnd() != b.rnd();
        EXPECT_EQ(drew, p > 0 && p < 1) << p;
    }
    // Two tests that must both pass, as one draw of the product of their
    // chances, pass as often.
    Random both(5), one(5);
    int twice = 0, once = 0;
    const double p = Random::chanceOver(2.9, 2.5, 1) * Random::chanceOver(4, 1.6, .6, 2);
    for (int k = 0; k < 200000; ++k) {
        twice += both.over(2.9, 2.5, 1) && both.over(4, 1.6, .6, 2) ? 1 : 0;
        once += one.chance(p) ? 1 : 0;
    }
    EXPECT_NEAR(twice / 200000.0, p, 0.005);
    EXPECT_NEAR(once / 200000.0, p, 0.005);
}

TEST(RoundHalfEven, HalvesGoToEven) {
    EXPECT_EQ(roundHalfEven(0.5), 0.0);
    EXPECT_EQ(roundHalfEven(1.5), 2.0);
    EXPECT_EQ(roundHalfEven(2.5), 2.0);
    EXPECT_EQ(roundHalfEven(-2.5), -2.0);
    EXPECT_EQ(roundHalfEven(2.4999), 2.0);
    EXPECT_EQ(roundHalfEven(2.6), 3.0);
}

TEST(RoundHalfEven, AgreesWithRoundingByHalves) {
    // The reference: round half away from zero, then pull an exact half back
    // to the even neighbour.
    auto reference = [](double x) {
        double r = std::round(x);
        if (std::fabs(x - std::trunc(x)) == 0.5) r = 2.0 * std::round(x / 2.0);
        return r;
    };
    const double big = 4503599627370496.0;  // 2^52: from here on every double is whole
    for (double x : {0.0, -0.0, 0.49999999999999994, -0.49999999999999994, 1e-300, -3.5, 4.5, 1e15 + 0.5, big - 0.5,
                     big - 1.5, big, big + 1, 2 * big + 2, 1e300, -1e300, std::numeric_limits<double>::infinity(),
                     -std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(roundHalfEven(x), reference(x)) << x;
        EXPECT_EQ(std::signbit(roundHalfEven(x)), std::signbit(reference(x))) << x;
    }
    EXPECT_TRUE(std::isnan(roundHalfEven(std::numeric_limits<double>::quiet_NaN())));
    std::mt19937_64 gen(3);
    std::uniform_real_distribution<double> wide(-1e6, 1e6);
    for (int i = 0; i < 200000; ++i) {
        double x = wide(gen);
        double h = std::floor(x) + 0.5;  // an exact half next to it
        ASSERT_EQ(roundHalfEven(x), reference(x)) << x;
        ASSERT_EQ(roundHalfEven(h), reference(h)) << h;
        ASSERT_EQ(roundHalfEven(x / 1000), reference(x / 1000)) << x / 1000;
    }
}

// The whole-number form must give what the rounded double converts to,
// halves and all, across the range of the chances and weights it serves.
TEST(RoundHalfEven, TheIntFormAgreesWithTheDouble) {
    for (double x : {0.0, -0.0, 0.5, -0.5, 1.5, -1.5, 2.5, -2.5, 0.49999999999999994, -0.49999999999999994, 1e-300,
                     2147483646.5, 2147483647.0, -2147483647.5, -2147483648.0, 1e9 + 0.5})
        EXPECT_EQ(roundToInt(x), static_cast<int>(roundHalfEven(x))) << x;
    std::mt19937_64 gen(7);
    std::uniform_real_distribution<double> wide(-1e6, 1e6);
    for (int i = 0; i < 200000; ++i) {
        double x = wide(gen);
        double h = std::floor(x) + 0.5;
        ASSERT_EQ(roundToInt(x), static_cast<int>(roundHalfEven(x))) << x;
        ASSERT_EQ(roundToInt(h), static_cast<int>(roundHalfEven(h))) << h;
        ASSERT_EQ(roundToInt(x / 1000), static_cast<int>(roundHalfEven(x / 1000))) << x / 1000;
    }
}

TEST(RoundHalfAway, AgreesWithTheLibrary) {
    const double big = 4503599627370496.0;
    for (double x : {0.0, -0.0, 0.5, -0.5, 1.5, -2.5, 0.49999999999999994, -0.49999999999999994, 2.4999, 2.5000001,
                     big - 0.5, -(big - 0.5), big, big + 2, 1e15 + 0.5})
        EXPECT_EQ(roundHalfAway(x), std::lround(x)) << x;
    std::mt19937_64 gen(5);
    std::uniform_real_distribution<double> wide(-1e5, 1e5);
    for (int i = 0; i < 200000; ++i) {
        double x = wide(gen);
        double h = std::floor(x) + 0.5;
        ASSERT_EQ(roundHalfAway(x), std::lround(x)) << x;
        ASSERT_EQ(roundHalfAway(h), std::lround(h)) << h;
    }
}

}  // namespace
}  // namespace tallyrink
