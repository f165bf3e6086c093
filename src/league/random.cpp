#include "league/random.h"

namespace tallyrink {

// The loops work word by word with no word depending on one written before
// it in the same loop, so the compiler runs them several words at a time;
// where the processor has the wider registers, a second copy uses them. The
// words come out the same either way. (GCC makes the copies; clang wants
// them declared where the function first is.)
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
[[gnu::target_clones("avx2", "default")]]
#endif
void Twister64::refill() {
    for (std::size_t i = 0; i < kN - kM; ++i) mt_[i] = twist(mt_[i], mt_[i + 1], mt_[i + kM]);
    for (std::size_t i = kN - kM; i < kN - 1; ++i) mt_[i] = twist(mt_[i], mt_[i + 1], mt_[i + kM - kN]);
    mt_[kN - 1] = twist(mt_[kN - 1], mt_[0], mt_[kM - 1]);
    for (std::size_t i = 0; i < kN; ++i) {
        std::uint64_t y = mt_[i];
        y ^= (y >> 29) & 0x5555555555555555ULL;
        y ^= (y << 17) & 0x71D67FFFEDA60000ULL;
        y ^= (y << 37) & 0xFFF7EEE000000000ULL;
        y ^= y >> 43;
        out_[i] = y;
    }
    next_ = 0;
}

}  // namespace tallyrink
