#include "team/slot_scan.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace tallyrink {
namespace {

// Each slot alone, the last two (past the whole words) above all, and every
// slot at once: a scan that skipped, doubled or misplaced a slot would miss
// one here.
TEST(SlotScan, SeesEverySlotOnceAndOnlyThat) {
    BySlot<bool> marks{};
    EXPECT_EQ(slotsSet(marks), 0);
    for (std::size_t first = 0; first < marks.size(); first += 8) EXPECT_EQ(slotWord(marks, first), 0u);
    for (std::size_t slot = 0; slot < marks.size(); ++slot) {
        SCOPED_TRACE(slot);
        BySlot<bool> one{};
        one[slot] = true;
        EXPECT_EQ(slotsSet(one), 1);
        EXPECT_EQ(fitBits(one), std::uint64_t{1} << slot);
        BySlot<std::uint8_t> level{};
        level[slot] = 200;
        // Only the word of the slot's own eight sees him.
        for (std::size_t first = 0; first < marks.size(); first += 8) {
            bool his = slot >= first && slot < first + 8;
            EXPECT_EQ(slotWord(one, first) != 0, his) << first;
            EXPECT_EQ(slotWord(level, first) != 0, his) << first;
        }
    }
    marks.fill(true);
    EXPECT_EQ(slotsSet(marks), kRosterSlots);
    EXPECT_EQ(fitBits(marks), (std::uint64_t{1} << kRosterSlots) - 1);
    int expected = 0;
    std::uint64_t bits = 0;
    for (std::size_t slot = 0; slot < marks.size(); ++slot) {
        marks[slot] = slot % 3 == 0 || slot + 2 >= marks.size();
        expected += marks[slot] ? 1 : 0;
        bits |= std::uint64_t{marks[slot]} << slot;
    }
    EXPECT_EQ(slotsSet(marks), expected);
    EXPECT_EQ(fitBits(marks), bits);
}

// Every byte value alone in every place, then all places at once: a byte
// that carried into its neighbour, or a top bit lost, shows here.
TEST(SlotScan, MarksEveryNonzeroByteAndNoOther) {
    for (unsigned place = 0; place < 8; ++place) {
        for (unsigned value = 0; value < 256; ++value) {
            const std::uint64_t word = std::uint64_t{value} << (8 * place);
            const std::uint64_t mark = value != 0 ? std::uint64_t{1} << (8 * place) : 0;
            ASSERT_EQ(nonzeroBytes(word), mark) << place << " " << value;
        }
    }
    EXPECT_EQ(nonzeroBytes(0xFF00807F0100FF01ULL), 0x0100010101000101ULL);
}

}  // namespace
}  // namespace tallyrink
