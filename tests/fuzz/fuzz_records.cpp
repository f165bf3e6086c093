// Any byte image of a slot, however short or strange, decodes without fault
// and encodes back to the same bytes.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

#include "league/records.h"

namespace {

template <class R>
void roundTrip(std::span<const std::uint8_t> in) {
    auto r = tallyrink::codec::fromSlot<R>(in);
    auto out = tallyrink::codec::toSlot(r);
    std::size_t n = std::min(in.size(), out.size());
    if (std::memcmp(in.data(), out.data(), n) != 0) std::abort();
    for (std::size_t i = n; i < out.size(); ++i)
        if (out[i] != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::span<const std::uint8_t> in(data + 1, size - 1);
    switch (data[0] % 3) {
        case 0:
            roundTrip<tallyrink::PlayerRecord>(in);
            break;
        case 1:
            roundTrip<tallyrink::TeamRecord>(in);
            break;
        default:
            roundTrip<tallyrink::GamePlanRecord>(in);
            break;
    }
    return 0;
}
