#include "league/random.h"

#include <bit>

namespace tallyrink {

// The top 53 bits of the tempered word made a double without the processor's
// conversion, which has no form working on several words at once here: the
// low 32 bits laid into the fraction of 2^52 and the high 21 into that of
// 2^84, then the two powers taken away. Each step is exact, as the sum is
// below 2^53.
double Twister64::fraction(std::uint64_t word) {
    const std::uint64_t v = temper(word) >> 11;
    const double lo = std::bit_cast<double>((v & 0xFFFFFFFFULL) | 0x4330000000000000ULL);
    const double hi = std::bit_cast<double>((v >> 32) | 0x4530000000000000ULL);
    return ((hi - (0x1.0p84 + 0x1.0p52)) + lo) * 0x1.0p-53;
}

// The loops work word by word with no word depending on one written before
// it in the same loop, so the compiler runs them several words at a time;
// where the processor has the wider registers, a second copy uses them. The
// words come out the same either way. (GCC makes the copies; clang wants
// them declared where the function first is.)
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
[[gnu::target_clones("avx2", "default")]]
#endif
void Twister64::refill() {
    // Each new word is turned into its fraction as it is made, while it is
    // still at hand.
    for (std::size_t i = 0; i < kN - kM; ++i) {
        mt_[i] = twist(mt_[i], mt_[i + 1], mt_[i + kM]);
        unit_[i] = fraction(mt_[i]);
    }
    for (std::size_t i = kN - kM; i < kN - 1; ++i) {
        mt_[i] = twist(mt_[i], mt_[i + 1], mt_[i + kM - kN]);
        unit_[i] = fraction(mt_[i]);
    }
    mt_[kN - 1] = twist(mt_[kN - 1], mt_[0], mt_[kM - 1]);
    unit_[kN - 1] = fraction(mt_[kN - 1]);
    next_ = 0;
}

}  // namespace tallyrink
