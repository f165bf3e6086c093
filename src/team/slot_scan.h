#pragma once

// Whole-roster questions about one-byte slot tables, asked eight slots at a
// time: the engine and the lineup ask them many times a game, and a slot at
// a time they cost more than the work they decide on.

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "team/lines.h"

namespace tallyrink {

// The bytes of slots first to first + 7 (fewer at the end of the roster,
// the rest zero) as one word: zero when none of them holds anything.
template <typename T>
[[nodiscard]] std::uint64_t slotWord(const BySlot<T>& table, std::size_t first) {
    static_assert(sizeof(T) == 1 && std::is_trivially_copyable_v<T>);
    static_assert(std::endian::native == std::endian::little);
    static_assert(std::tuple_size_v<BySlot<T>> >= 8);
    std::uint64_t word = 0;
    if (first + 8 <= table.size()) {
        std::memcpy(&word, table.data() + first, 8);
        return word;
    }
    if (first >= table.size()) return 0;
    // The short block at the end: the table's last eight bytes, with those
    // before `first` shifted out (a copy of a length known only here would
    // be a call).
    std::memcpy(&word, table.data() + table.size() - 8, 8);
    return word >> (8 * (first + 8 - table.size()));
}

// A one in the low bit of each byte of `word` that isn't zero, nothing
// elsewhere: a table of levels read as a table of marks.
[[nodiscard]] inline std::uint64_t nonzeroBytes(std::uint64_t word) {
    constexpr std::uint64_t kLow = 0x0101010101010101ULL;
    constexpr std::uint64_t kSeven = 0x7F7F7F7F7F7F7F7FULL;
    // The low seven bits of a byte plus 127 reach its top bit, without a
    // carry into the next byte, when any of them is set.
    return ((((word & kSeven) + kSeven) | word) >> 7) & kLow;
}

// The marks of a word whose bytes are each 0 or 1 (as nonzeroBytes leaves
// them) as eight bits, the first byte lowest: the product gathers them in
// its top byte, with no carry between the partial sums below it.
[[nodiscard]] inline std::uint64_t byteMarks(std::uint64_t marks) { return (marks * 0x0102040810204080ULL) >> 56; }

// The men marked in a table of marks, a bit a slot.
[[nodiscard]] inline std::uint64_t fitBits(const BySlot<bool>& fit) {
    static_assert(kRosterSlots <= 64, "a side's slots fit one word of bits");
    std::uint64_t bits = 0;
    for (std::size_t first = 0; first < kRosterSlots; first += 8) bits |= byteMarks(slotWord(fit, first)) << first;
    return bits;
}

// The slots marked true.
[[nodiscard]] inline int slotsSet(const BySlot<bool>& table) {
    int count = 0;
    std::size_t i = 0;
    for (; i + 8 <= table.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, table.data() + i, 8);
        // Each byte is 0 or 1, so the top byte of the product is their sum.
        count += static_cast<int>((word * 0x0101010101010101ULL) >> 56);
    }
    for (; i < table.size(); ++i) count += table[i] ? 1 : 0;
    return count;
}

}  // namespace tallyrink
