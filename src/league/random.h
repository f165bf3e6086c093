#pragma once

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>

#if defined(__x86_64__) && defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tallyrink {

// The 64-bit Mersenne Twister, the same sequence as std::mt19937_64 for the
// same seed. The engine draws a few hundred numbers a step, so the refill of
// the state is written to let the compiler work on two words at a time, and
// the refill turns the whole block of outputs into the fractions the game
// draws at once the same way: a draw is then a read of the next one.
class Twister64 {
public:
    explicit Twister64(std::uint64_t seed) {
        mt_[0] = seed;
        for (std::size_t i = 1; i < kN; ++i) mt_[i] = 6364136223846793005ULL * (mt_[i - 1] ^ (mt_[i - 1] >> 62)) + i;
        next_ = kN;
    }

    std::uint64_t operator()() {
        if (next_ >= kN) [[unlikely]]
            refill();
        return temper(mt_[next_++]);
    }

    // The next output's top 53 bits as a fraction, 0 <= x < 1: the same
    // number as `(*this)() >> 11` scaled by 2^-53, from the same place in
    // the stream. The refill works these out for the whole block at once,
    // so a draw is a read.
    double unit() {
        if (next_ >= kN) [[unlikely]]
            refill();
        return unit_[next_++];
    }

private:
    static constexpr std::size_t kN = 312;
    static constexpr std::size_t kM = 156;
    static constexpr std::uint64_t kUpper = ~0ULL << 31;
    static constexpr std::uint64_t kLower = ~kUpper;
    static constexpr std::uint64_t kMatrix = 0xB5026F5AA96619E9ULL;

    static std::uint64_t twist(std::uint64_t hi, std::uint64_t lo, std::uint64_t far) {
        std::uint64_t y = (hi & kUpper) | (lo & kLower);
        return far ^ (y >> 1) ^ ((0 - (y & 1)) & kMatrix);
    }

    static std::uint64_t temper(std::uint64_t y) {
        y ^= (y >> 29) & 0x5555555555555555ULL;
        y ^= (y << 17) & 0x71D67FFFEDA60000ULL;
        y ^= (y << 37) & 0xFFF7EEE000000000ULL;
        return y ^ (y >> 43);
    }

    // The fraction unit() gives for a word of the state (random.cpp).
    static double fraction(std::uint64_t word);

    // Once every kN draws, out of line so each draw stays small where it is
    // inlined (random.cpp).
    void refill();

    std::array<std::uint64_t, kN> mt_{};
    std::array<double, kN> unit_{};  // the outputs of the state as refilled, as unit()s
    std::size_t next_ = kN;
};

// A seedable stream of draws. Each game, generator or tool that needs chance
// owns one; nothing shares a global stream, so one seed replays one run on
// any machine (the engine's output depends only on the 64-bit Mersenne
// Twister, whose sequence the standard fixes, not on a library distribution).
class Random {
public:
    explicit Random(std::uint64_t seed) : gen_(seed) {}

    // 0 <= x < 1, with 53 random bits.
    double rnd() { return gen_.unit(); }

    // A whole number from 1 to n: Int(rnd * n + 1). n <= 0 gives 1.
    int rand(int n) { return n <= 0 ? 1 : static_cast<int>(rnd() * n) + 1; }

    // Tests of a value against a draw, `(lo + span * rnd()) * scale` or
    // `lo + rand(n)`, that draw only when the draw can change the answer. A
    // value beyond either end of the draw's range has its answer already and
    // takes nothing from the stream; each answer keeps its chance. Rounding
    // is monotonic, so the value for any draw lies between the values
    // worked out for the ends of the range.

    // x > (lo + span * rnd()) * scale
    bool over(double x, double lo, double span, double scale = 1) {
        const double a = lo * scale, b = (lo + span) * scale;
        if (x > (a > b ? a : b)) return true;
        if (x <= (a < b ? a : b)) return false;
        return x > (lo + span * rnd()) * scale;
    }
    // x < (lo + span * rnd()) * scale
    bool under(double x, double lo, double span, double scale = 1) {
        const double a = lo * scale, b = (lo + span) * scale;
        if (x < (a < b ? a : b)) return true;
        if (x >= (a > b ? a : b)) return false;
        return x < (lo + span * rnd()) * scale;
    }
    // x > lo + rand(n)
    bool overRand(double x, double lo, int n) {
        if (n <= 1) return x > lo + 1;
        if (x > lo + n) return true;
        if (x <= lo + 1) return false;
        return x > lo + rand(n);
    }
    // x < lo + rand(n)
    bool underRand(double x, double lo, int n) {
        if (n <= 1) return x < lo + 1;
        if (x < lo + 1) return true;
        if (x >= lo + n) return false;
        return x < lo + rand(n);
    }
    // rand(n) <= x
    bool randAtMost(int n, double x) {
        if (n <= 1) return 1 <= x;
        if (x < 1) return false;
        if (x >= n) return true;
        return rand(n) <= x;
    }

    // True with chance p, drawing only when p leaves the answer open. With
    // the chances below, several tests of independent draws that all have
    // to pass take one draw of the product of their chances, which has the
    // same law.
    bool chance(double p) {
        if (p >= 1) return true;
        if (p <= 0) return false;
        return rnd() < p;
    }
    // The chances that over, under and randAtMost hold, as fractions of the
    // draw's range; 0 or 1 where they take no draw.
    static double chanceOver(double x, double lo, double span, double scale = 1) {
        const double a = lo * scale, b = (lo + span) * scale;
        const double top = a > b ? a : b, bottom = a < b ? a : b;
        if (x > top) return 1;
        if (x <= bottom) return 0;
        return (x - bottom) / (top - bottom);
    }
    static double chanceUnder(double x, double lo, double span, double scale = 1) {
        const double a = lo * scale, b = (lo + span) * scale;
        const double top = a > b ? a : b, bottom = a < b ? a : b;
        if (x < bottom) return 1;
        if (x >= top) return 0;
        return (top - x) / (top - bottom);
    }
    static double chanceAtMost(int n, double x) {
        if (n <= 1) return 1 <= x ? 1 : 0;
        if (x < 1) return 0;
        if (x >= n) return 1;
        return std::floor(x) / n;
    }

    // A seed from the clock and the system's entropy, for runs with no seed given.
    static std::uint64_t freshSeed() {
        std::random_device rd;
        return (std::uint64_t{rd()} << 32) ^ rd() ^
               static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }

private:
    Twister64 gen_;
};

// Rounds halves to the even neighbour, as every rounded chance does. Adding
// and taking away 2^52 leaves the nearest whole number, a half going to the
// even one, in the default rounding mode that the program never changes;
// from 2^52 up every double is whole already. It is exact, and far cheaper
// than a call into the maths library in the inner loops of a step.
inline double roundHalfEven(double x) {
    constexpr double kTwo52 = 4503599627370496.0;
    const double a = std::fabs(x);
    if (!(a < kTwo52)) return x;
    return std::copysign((a + kTwo52) - kTwo52, x);
}

// roundHalfEven converted to an int, as the chances and weights take it:
// the processor's own conversion rounds the same way in the default mode,
// in one instruction where the sum above takes several. Where the rounded
// value doesn't fit an int, both give the processor's one answer for that.
inline int roundToInt(double x) {
#if defined(__x86_64__) && defined(__SSE2__)
    return _mm_cvtsd_si32(_mm_set_sd(x));
#else
    return static_cast<int>(roundHalfEven(x));
#endif
}

// Rounds halves away from zero, as std::lround does, without the call into
// the maths library: below 2^52 the fraction left by truncation is exact, so
// the test of it against a half is too. Beyond that (and for NaN) the
// library answers.
inline long roundHalfAway(double x) {
    constexpr double kTwo52 = 4503599627370496.0;
    if (!(std::fabs(x) < kTwo52)) return std::lround(x);
    auto whole = static_cast<long>(x);
    const double fraction = x - static_cast<double>(whole);
    if (fraction >= .5) ++whole;
    if (fraction <= -.5) --whole;
    return whole;
}

}  // namespace tallyrink
