#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "league/codec.h"
#include "league/record_fields.h"
#include "league/records.h"

namespace tallyrink {
namespace {

using codec::findField;
using codec::Layout;

struct Pin {
    const char* name;
    std::size_t offset;
    std::size_t width;
};

template <class R>
void expectPins(std::initializer_list<Pin> pins) {
    for (const auto& p : pins) {
        const auto* f = findField<R>(p.name);
        ASSERT_NE(f, nullptr) << p.name;
        EXPECT_EQ(f->offset, p.offset) << p.name;
        EXPECT_EQ(f->width, p.width) << p.name;
    }
}

TEST(RecordLayout, SizesAndSlots) {
    EXPECT_EQ(Layout<StatLine>::size, 58u);
    EXPECT_EQ(Layout<TeamStatLine>::size, 56u);
    EXPECT_EQ(Layout<PlayerRecord>::size, 1500u);
    EXPECT_EQ(codec::slotWidth<PlayerRecord>(), 1500u);
    EXPECT_EQ(Layout<TeamRecord>::size, 1479u);
    EXPECT_EQ(codec::slotWidth<TeamRecord>(), 1500u);
    EXPECT_EQ(Layout<GamePlanRecord>::size, 31337u);
    EXPECT_EQ(codec::slotWidth<GamePlanRecord>(), 32000u);
    EXPECT_EQ(Layout<GameRecord>::size, 198u);
    EXPECT_EQ(codec::slotWidth<GameRecord>(), 200u);
}

// Fields that other programs' files and the exchange formats rely on, spread
// over each record so that a shifted group shows up.
TEST(RecordLayout, PinnedOffsets) {
    expectPins<StatLine>({{"GP", 0, 1},
                          {"Assists", 3, 2},
                          {"Toi", 9, 4},
                          {"Sog", 23, 2},
                          {"GWG", 33, 1},
                          {"Takeaways", 45, 2},
                          {"Saves", 54, 2},
                          {"GoalieOvertimeLosses", 57, 1}});
    expectPins<TeamStatLine>({{"Pim", 8, 2}, {"Toi", 10, 4}, {"ToiSH", 18, 4}, {"Takeaways", 54, 2}});
    expectPins<PlayerRecord>({{"TeamId", 2, 2},
                              {"ShortName", 35, 15},
                              {"Salary", 54, 4},
                              {"FormBias", 67, 2},
                              {"PositionFlags", 83, 5},
                              {"RatingDurability", 145, 1},
                              {"Stats", 146, 9 * 58},
                              {"Majors", 679, 4},
                              {"LineRoleStored", 703, 21},
                              {"DepthEven", 765, 4},
                              {"Fights", 781, 3},
                              {"PhotoFile", 829, 25},
                              {"LinePlayersA", 854, 150},
                              {"LinePlayersB", 1004, 150},
                              {"InactiveDates", 1158, 200},
                              {"ShotsBySpot", 1358, 24},
                              {"Nickname", 1401, 25},
                              {"HiddenSalary", 1496, 4}});
    expectPins<TeamRecord>({{"Abbrev", 62, 3},
                            {"TeamReserved08c", 76, 96},
                            {"Roster", 172, 100},
                            {"TeamFor", 272, 112},
                            {"TeamAgainst", 384, 112},
                            {"TeamRealLine", 510, 58},
                            {"GoalsByPeriod", 691, 40},
                            {"AkaAbbrev", 855, 9},
                            {"LastResults", 1181, 11},
                            {"UniformFile", 1280, 100},
                            {"Anthem", 1478, 1}});
    expectPins<GamePlanRecord>({{"PullTrailingByTwo", 19, 2},
                                {"DailyGoalieChoice", 74, 372},
                                {"SlotLineRole", 899, 1500},
                                {"SlotLinePlayersA", 4950, 7500},
                                {"SlotInactiveDates", 19950, 10000},
                                {"LineUsage", 31125, 4},
                                {"GamePlanText", 31137, 200}});
    expectPins<GameRecord>({{"Coach", 2, 2},
                            {"Year", 6, 2},
                            {"RecordText", 60, 20},
                            {"Status", 80, 1},
                            {"ScoreOf", 81, 4},
                            {"VisitorTeam", 114, 2},
                            {"HomeTeam", 116, 2},
                            {"StarName", 121, 75},
                            {"RowType", 196, 1}});
}

template <class R>
std::vector<std::uint8_t> randomSlot(std::mt19937& gen) {
    std::vector<std::uint8_t> bytes(codec::slotWidth<R>());
    for (auto& b : bytes) b = static_cast<std::uint8_t>(gen());
    return bytes;
}

// Every byte of a slot belongs to some field or to the tail, so any byte
// image (reserved bytes, a never-written slot's zeros, garbage) must come
// back unchanged.
template <class R>
void expectByteExactRoundTrip() {
    std::mt19937 gen(20210);
    for (int i = 0; i < 20; ++i) {
        auto in = randomSlot<R>(gen);
        auto out = codec::toSlot(codec::fromSlot<R>(in));
        ASSERT_EQ(in, out);
    }
    std::vector<std::uint8_t> zeros(codec::slotWidth<R>(), 0);
    EXPECT_EQ(codec::toSlot(codec::fromSlot<R>(zeros)), zeros);
}

TEST(RecordCodec, ByteExactRoundTrip) {
    expectByteExactRoundTrip<PlayerRecord>();
    expectByteExactRoundTrip<TeamRecord>();
    expectByteExactRoundTrip<GamePlanRecord>();
    expectByteExactRoundTrip<GameRecord>();
}

// The block copies a record is read and written with must agree with the
// value-by-value walk of its field table: a stretch merged across padding,
// or a nested record placed at the wrong element, would move bytes between
// fields while still round-tripping.
template <class R>
void expectCopiesMatchFieldWalk() {
    std::mt19937 gen(77);
    for (int i = 0; i < 5; ++i) {
        auto in = randomSlot<R>(gen);
        R copied{}, walked{};
        codec::decode(in.data(), copied);
        codec::decodeFields(in.data(), walked);
        std::vector<std::uint8_t> viaWalk(codec::Layout<R>::size), viaCopies(codec::Layout<R>::size);
        codec::encodeFields(copied, viaWalk.data());
        codec::encode(walked, viaCopies.data());
        in.resize(codec::Layout<R>::size);
        ASSERT_EQ(viaWalk, in);
        ASSERT_EQ(viaCopies, in);
    }
}

TEST(RecordCodec, BlockCopiesMatchTheFieldWalk) {
    expectCopiesMatchFieldWalk<StatLine>();
    expectCopiesMatchFieldWalk<PlayerRecord>();
    expectCopiesMatchFieldWalk<TeamRecord>();
    expectCopiesMatchFieldWalk<GamePlanRecord>();
    expectCopiesMatchFieldWalk<GameRecord>();
}

TEST(RecordCodec, AStretchCopiesItsBytesAndNoOthersWhateverItsLength) {
    std::vector<unsigned char> from(80);
    for (std::size_t i = 0; i < from.size(); ++i) from[i] = static_cast<unsigned char>(i + 1);
    for (std::size_t length = 0; length <= 70; ++length) {
        std::vector<unsigned char> to(80, 0);
        codec::copyRun(to.data() + 3, from.data() + 5, length);
        for (std::size_t i = 0; i < to.size(); ++i) {
            bool inside = i >= 3 && i < 3 + length;
            ASSERT_EQ(to[i], inside ? from[i + 2] : 0) << "length " << length << ", byte " << i;
        }
    }
}

TEST(RecordCodec, LittleEndianValuesLandAtTheirOffsets) {
    PlayerRecord p{};
    p.PlayerId = 0x0102;
    p.TeamId = -2;
    p.Salary = 0x0A0B0C0D;
    p.LastName.assign("Kowalczyk");
    statLine(p, StatLineIndex::Replay).Toi = 123456;
    p.LinePlayersA[1][3] = 7;
    p.InactiveDates[99] = 1231;
    auto b = codec::toSlot(p);
    EXPECT_EQ(b[0], 0x02);
    EXPECT_EQ(b[1], 0x01);
    EXPECT_EQ(b[2], 0xFE);
    EXPECT_EQ(b[3], 0xFF);
    EXPECT_EQ(b[54], 0x0D);
    EXPECT_EQ(b[57], 0x0A);
    EXPECT_EQ(std::string(b.begin() + 20, b.begin() + 35), "Kowalczyk      ");
    std::int32_t toi = b[204 + 9] | b[204 + 10] << 8 | b[204 + 11] << 16 | b[204 + 12] << 24;
    EXPECT_EQ(toi, 123456);
    EXPECT_EQ(b[854 + 1 * 5 + 3], 7);  // last index runs fastest
    EXPECT_EQ(b[1158 + 198] | b[1158 + 199] << 8, 1231);
}

TEST(RecordCodec, SlotTailAndShortSlot) {
    std::vector<std::uint8_t> slot(1500, 0);
    for (std::size_t i = 1479; i < 1500; ++i) slot[i] = static_cast<std::uint8_t>(i);
    auto t = codec::fromSlot<TeamRecord>(slot);
    EXPECT_EQ(t.SlotTail[0], static_cast<std::uint8_t>(1479));
    EXPECT_EQ(codec::toSlot(t), slot);

    // A short last record of a file reads with zeros for its missing bytes.
    std::vector<std::uint8_t> part(10, 0);
    part[0] = 5;
    part[2] = 9;
    auto p = codec::fromSlot<PlayerRecord>(part);
    EXPECT_EQ(p.PlayerId, 5);
    EXPECT_EQ(p.TeamId, 9);
    EXPECT_EQ(p.HiddenSalary, 0);
}

// A reader of a few members gets what the whole decode gives for them, also
// from a slot cut short in the middle of a member.
TEST(RecordCodec, SingleMembersMatchTheWholeDecode) {
    std::mt19937 gen(11);
    std::vector<std::uint8_t> slot(codec::slotWidth<PlayerRecord>());
    for (auto& b : slot) b = static_cast<std::uint8_t>(gen());
    const auto statsAt = codec::offsetOf(&PlayerRecord::Stats);
    EXPECT_EQ(statsAt, findField<PlayerRecord>("Stats")->offset);
    EXPECT_EQ(codec::offsetOf(&PlayerRecord::PlayerYear), findField<PlayerRecord>("PlayerYear")->offset);

    for (std::size_t length : {slot.size(), statsAt + 7, std::size_t{1}}) {
        std::span<const std::uint8_t> bytes(slot.data(), length);
        const auto whole = codec::fromSlot<PlayerRecord>(bytes);
        PlayerRecord some{};
        codec::decodeMember(bytes, codec::offsetOf(&PlayerRecord::PlayerId), some, &PlayerRecord::PlayerId);
        codec::decodeMember(bytes, codec::offsetOf(&PlayerRecord::PlayerYear), some, &PlayerRecord::PlayerYear);
        codec::decodeMember(bytes, statsAt, some, &PlayerRecord::Stats);
        EXPECT_EQ(some.PlayerId, whole.PlayerId) << length;
        EXPECT_EQ(some.PlayerYear, whole.PlayerYear) << length;
        EXPECT_EQ(codec::toSlot(some.Stats[1]), codec::toSlot(whole.Stats[1])) << length;
        EXPECT_EQ(codec::toSlot(some.Stats.back()), codec::toSlot(whole.Stats.back())) << length;
    }
}

TEST(FixedText, TrimsPadsAndCuts) {
    FixedText<5> t{};
    EXPECT_TRUE(t.blank());  // never written: zero bytes
    t.assign("Al");
    EXPECT_EQ(std::string(t.raw.data(), 5), "Al   ");
    EXPECT_EQ(t.str(), "Al");
    t.assign("Alexander");
    EXPECT_EQ(t.str(), "Alexa");
    t.raw = {' ', 'a', ' ', 'b', '\0'};
    EXPECT_EQ(t.str(), "a b");
    EXPECT_EQ(t.view(), "a b");
    // The copy-free view trims as the text does, whatever the padding.
    t.raw = {'\0', ' ', 'C', '\0', ' '};
    EXPECT_EQ(t.view(), "C");
    EXPECT_FALSE(t.blank());
    t.raw = {' ', '\0', ' ', '\0', ' '};
    EXPECT_EQ(t.view(), "");
    EXPECT_TRUE(t.blank());
    t.raw = {'a', 'b', 'c', 'd', 'e'};
    EXPECT_EQ(t.view(), "abcde");
}

TEST(SeasonMonths, RoundTripAndOrder) {
    EXPECT_EQ(seasonMonth(9), 1);
    EXPECT_EQ(seasonMonth(12), 4);
    EXPECT_EQ(seasonMonth(1), 5);
    EXPECT_EQ(seasonMonth(8), 12);
    for (int m = 1; m <= 12; ++m) EXPECT_EQ(calendarMonth(seasonMonth(m)), m);
    EXPECT_EQ(divisionOfTeam(1), 1);
    EXPECT_EQ(divisionOfTeam(12), 1);
    EXPECT_EQ(divisionOfTeam(13), 2);
    EXPECT_EQ(divisionOfTeam(288), 24);
}

}  // namespace
}  // namespace tallyrink
