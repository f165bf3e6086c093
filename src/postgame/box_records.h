#pragma once

// The records of the post-game files: the four records of a box file, the
// league leaders, the 40 best single games and the ticker. Byte layouts are
// stated in box_records.cpp and checked at compile time to tile each record.
//
// Side-slot tables hold 100 entries: the visitor's 50 slots, then the home
// side's. Byte fields cut larger in-game values to 8 bits.

#include <array>
#include <cstddef>
#include <cstdint>

#include "league/codec.h"
#include "league/fixed_text.h"

namespace tallyrink {

inline constexpr int kBoxSlots = 100;  // both sides' roster slots
inline constexpr std::int16_t kBoxVersion = 2011;
inline constexpr std::uint8_t kBoxStamp = 99;
inline constexpr int kPlusMinusBias = 20;
inline constexpr int kBoxTextLines = 115;
inline constexpr int kScoringLines = 30;
inline constexpr int kPenaltyLines = 50;
inline constexpr int kBoxEvents = 300;
inline constexpr int kBoxEventTexts = 290;
inline constexpr int kPlayLinesPerRecord = 351;

template <class T>
using BySideSlot = std::array<T, kBoxSlots>;

// A player's game line in a box: one byte a value but the times.
struct BoxLine {
    std::uint8_t GP{};
    std::uint8_t GS{};
    std::uint8_t Goals{};
    std::uint8_t Assists{};
    std::uint8_t PlusMinus{};  // + 20, so the byte stays positive
    std::uint8_t Pim{};
    std::int16_t Toi{};  // seconds
    std::int16_t ToiPP{};
    std::int16_t ToiSH{};
    std::uint8_t Reserved12{};
    std::uint8_t Sog{};
    std::uint8_t PPG{};
    std::uint8_t PPA{};
    std::uint8_t SHG{};
    std::uint8_t SHA{};
    std::uint8_t FaceoffsWon{};
    std::uint8_t FaceoffsLost{};
    std::uint8_t GWG{};
    std::uint8_t MissedShots{};
    std::uint8_t PenaltyShotAttempts{};
    std::uint8_t PenaltyShotGoals{};
    std::uint8_t Giveaways{};
    std::uint8_t EmptyNetGoals{};
    std::uint8_t Hits{};
    std::uint8_t Blocks{};
    std::uint8_t Takeaways{};
    std::uint8_t GoalsAllowed{};
    std::uint8_t GoaliePenaltyShotsFaced{};
    std::uint8_t GoaliePenaltyShotGoals{};
    std::uint8_t GoalieWins{};
    std::uint8_t GoalieLosses{};
    std::uint8_t GoalieTies{};
    std::uint8_t Saves{};
    std::uint8_t Shutouts{};
    std::uint8_t GoalieOvertimeLosses{};
};

// Record 1: the game state and the players' lines.
struct BoxRecord1 {
    std::array<std::uint8_t, 2> BoxTeam{};
    std::array<std::uint8_t, 2> BoxScore{};
    std::array<std::array<std::uint8_t, 10>, 2> BoxPeriodGoals{};
    std::uint8_t BoxPeriod{};
    std::int32_t BoxClock{};
    FixedText<20> BoxZone{};
    FixedText<1> BoxIsScheduled{};
    std::int16_t ScheduleRow{};  // 0 = unscheduled
    FixedText<1> BoxGameType{};  // "L", "E"
    std::array<std::uint8_t, 3> BoxPuckTeam{};
    std::uint8_t BoxCarrier{};
    FixedText<20> BoxPlayResult{};
    FixedText<20> BoxLastPlayResult{};
    BySideSlot<std::int32_t> BoxToi{};
    BySideSlot<std::int32_t> BoxToiSH{};
    BySideSlot<std::int32_t> BoxToiPP{};
    BySideSlot<std::uint8_t> BoxEnergy{};
    BySideSlot<std::int32_t> BoxShiftSeconds{};
    std::array<std::array<std::uint8_t, 6>, 2> BoxOnIce{};
    std::uint8_t BoxWinner{};  // sides 1 and 2; 0 after a tie
    std::uint8_t BoxLoser{};
    std::uint8_t BoxDay{};
    std::uint8_t BoxMonth{};  // season month
    std::int16_t BoxYear{};
    std::uint8_t BoxPlayoffFlag{};
    FixedText<20> BoxRink{};
    std::array<FixedText<8>, 2> BoxTeamCode{};
    BySideSlot<std::int16_t> BoxPlayerId{};
    BySideSlot<BoxLine> BoxLines{};
    BySideSlot<std::uint8_t> BoxSlotFlag{};
    std::uint8_t BoxStamp1{};
    std::array<std::uint8_t, 2> BoxTimeouts{};
    FixedText<1> BoxHomeFlag{};
    std::array<std::uint8_t, 4> BoxPenaltyState{};
    BySideSlot<std::uint8_t> BoxInjuryType{};
    BySideSlot<std::uint8_t> BoxInjuryDetail{};
    BySideSlot<std::uint8_t> BoxDressedToday{};
    FixedText<60> BoxAbsentText{};
    FixedText<60> BoxNoteA{};
    FixedText<60> BoxNoteB{};
    std::array<BySideSlot<std::uint8_t>, 2> BoxPenaltyBox{};
    std::array<std::array<std::uint8_t, 150>, 2> BoxPenaltyTime{};
    std::array<std::uint8_t, 2> BoxAssists{};
    std::array<std::uint8_t, 2> BoxShots{};
    std::array<std::uint8_t, 2> BoxFaceoffsWon{};
    std::array<std::uint8_t, 2> BoxHits{};
    std::array<std::uint8_t, 2> BoxPowerPlays{};
    std::array<std::uint8_t, 2> BoxPowerPlayGoals{};
    std::array<std::int16_t, 2> BoxTimeOfAttack{};
    std::array<std::uint8_t, 2> BoxBlocks{};
    std::array<std::uint8_t, 2> BoxMissedShots{};
    std::uint8_t BoxShootoutState{};
    std::uint8_t BoxShootoutRounds{};
    BySideSlot<std::uint8_t> BoxShootoutGoals{};
    std::array<FixedText<40>, 20> BoxShootoutText{};
    std::array<std::uint8_t, 50> Reserved7862{};
    std::array<std::uint8_t, 2> BoxShootoutScore{};
    std::array<FixedText<1>, 100> BoxShootoutResult{};
    std::array<std::uint8_t, 100> Reserved8014{};
    std::array<std::uint8_t, 2> BoxGoalieFlag{};
    std::array<BySideSlot<std::uint8_t>, 3> BoxPenaltyCounts{};  // minors, majors, misconducts
    std::uint8_t BoxWinningGoalie{};                             // side-slot index + 1; 0 none
    std::uint8_t BoxLosingGoalie{};
    std::uint8_t BoxThirdGoalie{};
    std::uint8_t Reserved8419{};
    std::array<std::array<std::uint8_t, 20>, 2> BoxShotsBySpot{};
    std::array<FixedText<150>, kBoxTextLines> BoxText{};
    std::int16_t BoxTextCount{};
    std::array<std::uint8_t, 5> BoxLine1{};
    std::array<std::uint8_t, 6> BoxPassScore{};
    std::array<std::uint8_t, 6> BoxSpots{};
    std::array<std::uint8_t, 18> BoxPlayTable{};
    double BoxPlayRating{};
    double BoxMomentum{};
    std::int32_t BoxGameSeconds{};
    FixedText<60> BoxStatusText{};
    std::array<BySideSlot<std::uint8_t>, 2> BoxSuspendedInGame{};
    std::array<std::uint8_t, 2> Reserved26027{};
    std::array<BySideSlot<std::uint8_t>, 3> BoxForm{};
    BySideSlot<std::int16_t> BoxLineTime{};  // here: each player's shifts of the game
    std::array<BySideSlot<std::uint8_t>, 2> BoxPenaltyClockA{};
    std::array<BySideSlot<std::int16_t>, 2> BoxPenaltyClockB{};
    BySideSlot<std::uint8_t> BoxFatigueFlag{};
    std::array<std::uint8_t, 102> Reserved27229{};
    BySideSlot<std::uint8_t> BoxStars{};  // 1 to 3 for the game's stars
    std::uint8_t BoxOvertimePlayed{};
    std::array<std::uint8_t, 6> BoxLineNow{};
    BySideSlot<std::uint8_t> BoxMajorGame{};
    BySideSlot<std::uint8_t> BoxLineFlag{};
    std::array<std::array<std::uint8_t, 2>, 8> BoxStrategy{};
    std::uint8_t BoxGameWinningScorer{};          // side-slot index + 1; 0 none
    std::array<std::uint8_t, 58> BoxPlayLines{};  // two strings, each a 2-byte length and its text
    std::array<std::uint8_t, 2> BoxExtra{};
    BySideSlot<std::uint8_t> BoxMinutesFlag{};
    std::array<std::uint8_t, 2> BoxGoalieOfShutout{};  // slot + 1; 0 none
    std::uint8_t BoxStampA{};
    BySideSlot<std::uint8_t> BoxInjuredInGame{};
    std::int16_t BoxVersion{};
    std::array<std::uint8_t, 2> BoxSkaters{};
    std::uint8_t BoxNextFaceoff{};
    std::array<std::uint8_t, 2> BoxChances{};
    std::array<std::uint8_t, 6> Reserved27925{};
    std::array<std::uint8_t, 2> BoxDressed{};
    std::array<std::array<std::array<std::uint8_t, 2>, 100>, 3> BoxInactiveDates{};
    std::array<std::uint8_t, 600> Reserved28533{};
    BySideSlot<std::uint8_t> BoxPenaltyShots{};
    std::uint8_t BoxCarrierPos{};
    std::uint8_t BoxLastShot{};
    std::array<std::uint8_t, 22> BoxGoalTypes{};  // 11 goal types of the visitor, then of the home side
    std::array<std::array<std::uint8_t, 5>, 4> BoxShadows{};
    BySideSlot<std::uint8_t> BoxShootoutGoalsOf{};
    BySideSlot<std::uint8_t> BoxChancesOf{};
    std::array<std::uint8_t, 2> BoxTopScorer{};
    std::int16_t BoxLeagueStamp{};
    std::array<std::uint8_t, 2> BoxGoaliePulled{};
    BySideSlot<std::uint8_t> BoxExtraForm{};
    std::uint8_t BoxFlagsA{};
    std::uint8_t BoxFlagsB{};
    std::array<std::uint8_t, 100> Reserved29585{};
    std::array<std::uint8_t, 2> BoxEnd1{};
    std::array<std::uint8_t, 2> BoxEnd2{};
    std::array<std::uint8_t, 2> BoxStarterGoalie{};  // slot + 1
    FixedText<200> BoxReserved{};
    std::array<std::uint8_t, 109> SlotTail{};  // rest of the slot, kept as found
};

// Record 2: the scoring and penalty summaries and the game's events.
struct BoxRecord2 {
    std::uint8_t ScoringCount{};
    std::array<FixedText<70>, kScoringLines> ScoringText{};
    std::uint8_t PenaltyCount{};
    std::array<FixedText<70>, kPenaltyLines> PenaltyText{};
    std::int16_t EventCount{};
    std::array<std::uint8_t, kBoxEvents> EventPeriod{};
    std::array<FixedText<5>, kBoxEvents> EventTime{};
    std::array<FixedText<3>, kBoxEvents> EventTeam{};
    std::array<FixedText<2>, kBoxEvents> EventStrength{};
    std::array<FixedText<10>, kBoxEvents> EventKind{};
    std::array<FixedText<60>, kBoxEventTexts> EventText{};
    std::array<std::array<std::uint8_t, 20>, 4> PeriodTable{};  // shots, goals, PIM, power plays: side x period
    BySideSlot<std::uint8_t> BoxPlayerFlag{};
    std::uint8_t BoxStampB{};
    std::int16_t BoxSpeedStamp{};
    FixedText<200> BoxReserved2{};
    std::array<std::uint8_t, 313> SlotTail{};
};

// Records 3 and 4: the play-by-play, 351 lines each.
struct BoxPlayRecord {
    std::int16_t PlayLineCount{};  // lines in use of both records, kept in record 3
    std::array<FixedText<80>, kPlayLinesPerRecord> PlayLines{};
    std::uint8_t BoxStampC{};
    std::array<BySideSlot<std::uint8_t>, 4> BoxLineRoles{};
    std::array<std::uint8_t, 50> BoxEnergyStart{};
    FixedText<1000> BoxReserved3{};
    std::array<std::uint8_t, 467> SlotTail{};
};

// One entry of the leaders' table.
struct LeaderEntry {
    FixedText<25> Name{};
    FixedText<3> Team{};
    std::int16_t Value{};
    std::int16_t PlayerNumber{};
};

inline constexpr int kLeaderCategories = 31;
inline constexpr int kLeaderRanks = 11;
inline constexpr std::uint8_t kLeadersStamp = 99;

struct LeadersRecord {
    std::uint8_t LeadersStamp{};
    std::array<std::array<LeaderEntry, kLeaderRanks>, kLeaderCategories> Leaders{};  // category, then rank
    std::array<std::uint8_t, 30000 - 1 - 32 * kLeaderRanks * kLeaderCategories> Reserved{};
};

struct Top40Entry {
    std::int32_t Value{};
    FixedText<15> Name{};
    FixedText<20> Text{};     // month, year, team "vs" opponent
    FixedText<20> BoxFile{};  // so a report can open the game
};

inline constexpr int kTop40Ranks = 40;
inline constexpr int kTop40Categories = 12;
inline constexpr std::uint8_t kTop40Stamp = 22;

struct Top40Record {
    std::uint8_t Top40Stamp{};
    std::array<std::array<Top40Entry, kTop40Categories>, kTop40Ranks> Top{};  // rank, then category
    std::array<std::uint8_t, 30000 - 1 - 59 * kTop40Ranks * kTop40Categories> Reserved{};
};

// One finished game on the ticker.
struct TickerRecord {
    std::int16_t LeagueStamp{};
    std::uint8_t Month{};  // season month
    std::uint8_t Day{};
    std::uint8_t Period{};
    std::int16_t Clock{};
    FixedText<1> Final{};  // "Y"
    std::array<std::int16_t, 2> Teams{};
    std::array<std::uint8_t, 2> Scores{};
    FixedText<50> Text{};
    std::uint8_t Reserved64{};
    std::array<std::uint8_t, 5> SlotTail{};
};

inline constexpr std::size_t kBoxSlot = 30000;
inline constexpr std::size_t kTickerSlot = 70;

}  // namespace tallyrink

namespace tallyrink::codec {

template <>
struct Layout<BoxLine> {
    static constexpr std::size_t size = 38;
};
template <>
struct Layout<BoxRecord1> {
    static constexpr std::size_t size = 29891;
    static constexpr std::size_t slot = kBoxSlot;
};
template <>
struct Layout<BoxRecord2> {
    static constexpr std::size_t size = 29687;
    static constexpr std::size_t slot = kBoxSlot;
};
template <>
struct Layout<BoxPlayRecord> {
    static constexpr std::size_t size = 29533;
    static constexpr std::size_t slot = kBoxSlot;
};
template <>
struct Layout<LeaderEntry> {
    static constexpr std::size_t size = 32;
};
template <>
struct Layout<LeadersRecord> {
    static constexpr std::size_t size = 30000;
};
template <>
struct Layout<Top40Entry> {
    static constexpr std::size_t size = 59;
};
template <>
struct Layout<Top40Record> {
    static constexpr std::size_t size = 30000;
};
template <>
struct Layout<TickerRecord> {
    static constexpr std::size_t size = 65;
    static constexpr std::size_t slot = kTickerSlot;
};

TALLYRINK_EXTERN_RECORD_CODEC(BoxLine)
TALLYRINK_EXTERN_RECORD_CODEC(BoxRecord1)
TALLYRINK_EXTERN_RECORD_CODEC(BoxRecord2)
TALLYRINK_EXTERN_RECORD_CODEC(BoxPlayRecord)
extern template void encodeOutside<BoxRecord1>(const BoxRecord1&, std::uint8_t*,
                                               std::span<const std::pair<std::size_t, std::size_t>>);
extern template void encodeOutside<BoxRecord2>(const BoxRecord2&, std::uint8_t*,
                                               std::span<const std::pair<std::size_t, std::size_t>>);
extern template void encodeOutside<BoxPlayRecord>(const BoxPlayRecord&, std::uint8_t*,
                                                  std::span<const std::pair<std::size_t, std::size_t>>);
TALLYRINK_EXTERN_RECORD_CODEC(LeaderEntry)
TALLYRINK_EXTERN_RECORD_CODEC(LeadersRecord)
TALLYRINK_EXTERN_RECORD_CODEC(Top40Entry)
TALLYRINK_EXTERN_RECORD_CODEC(Top40Record)
TALLYRINK_EXTERN_RECORD_CODEC(TickerRecord)

}  // namespace tallyrink::codec
