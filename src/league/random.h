#pragma once

#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>

namespace tallyrink {

// A seedable stream of draws. Each game, generator or tool that needs chance
// owns one; nothing shares a global stream, so one seed replays one run on
// any machine (the engine's output depends only on the 64-bit Mersenne
// Twister, whose sequence the standard fixes, not on a library distribution).
class Random {
public:
    explicit Random(std::uint64_t seed) : gen_(seed) {}

    // 0 <= x < 1, with 53 random bits.
    double rnd() { return static_cast<double>(gen_() >> 11) * 0x1.0p-53; }

    // A whole number from 1 to n: Int(rnd * n + 1). n <= 0 gives 1.
    int rand(int n) { return n <= 0 ? 1 : static_cast<int>(rnd() * n) + 1; }

    // A seed from the clock and the system's entropy, for runs with no seed given.
    static std::uint64_t freshSeed() {
        std::random_device rd;
        return (std::uint64_t{rd()} << 32) ^ rd() ^
               static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }

private:
    std::mt19937_64 gen_;
};

// Rounds halves to the even neighbour, as every rounded chance does.
inline double roundHalfEven(double x) {
    double r = std::round(x);
    if (std::fabs(x - std::trunc(x)) == 0.5) r = 2.0 * std::round(x / 2.0);
    return r;
}

}  // namespace tallyrink
