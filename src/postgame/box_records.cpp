#include "postgame/box_records.h"

namespace tallyrink::codec {

template <>
struct FieldTable<BoxLine> {
    static constexpr auto fields = std::tuple{
        Field{"GP", 0, &BoxLine::GP},
        Field{"GS", 1, &BoxLine::GS},
        Field{"Goals", 2, &BoxLine::Goals},
        Field{"Assists", 3, &BoxLine::Assists},
        Field{"PlusMinus", 4, &BoxLine::PlusMinus},
        Field{"Pim", 5, &BoxLine::Pim},
        Field{"Toi", 6, &BoxLine::Toi},
        Field{"ToiPP", 8, &BoxLine::ToiPP},
        Field{"ToiSH", 10, &BoxLine::ToiSH},
        Field{"Reserved12", 12, &BoxLine::Reserved12},
        Field{"Sog", 13, &BoxLine::Sog},
        Field{"PPG", 14, &BoxLine::PPG},
        Field{"PPA", 15, &BoxLine::PPA},
        Field{"SHG", 16, &BoxLine::SHG},
        Field{"SHA", 17, &BoxLine::SHA},
        Field{"FaceoffsWon", 18, &BoxLine::FaceoffsWon},
        Field{"FaceoffsLost", 19, &BoxLine::FaceoffsLost},
        Field{"GWG", 20, &BoxLine::GWG},
        Field{"MissedShots", 21, &BoxLine::MissedShots},
        Field{"PenaltyShotAttempts", 22, &BoxLine::PenaltyShotAttempts},
        Field{"PenaltyShotGoals", 23, &BoxLine::PenaltyShotGoals},
        Field{"Giveaways", 24, &BoxLine::Giveaways},
        Field{"EmptyNetGoals", 25, &BoxLine::EmptyNetGoals},
        Field{"Hits", 26, &BoxLine::Hits},
        Field{"Blocks", 27, &BoxLine::Blocks},
        Field{"Takeaways", 28, &BoxLine::Takeaways},
        Field{"GoalsAllowed", 29, &BoxLine::GoalsAllowed},
        Field{"GoaliePenaltyShotsFaced", 30, &BoxLine::GoaliePenaltyShotsFaced},
        Field{"GoaliePenaltyShotGoals", 31, &BoxLine::GoaliePenaltyShotGoals},
        Field{"GoalieWins", 32, &BoxLine::GoalieWins},
        Field{"GoalieLosses", 33, &BoxLine::GoalieLosses},
        Field{"GoalieTies", 34, &BoxLine::GoalieTies},
        Field{"Saves", 35, &BoxLine::Saves},
        Field{"Shutouts", 36, &BoxLine::Shutouts},
        Field{"GoalieOvertimeLosses", 37, &BoxLine::GoalieOvertimeLosses},
    };
};

template <>
struct FieldTable<BoxRecord1> {
    using R = BoxRecord1;
    static constexpr auto fields = std::tuple{
        Field{"BoxTeam", 0, &R::BoxTeam},
        Field{"BoxScore", 2, &R::BoxScore},
        Field{"BoxPeriodGoals", 4, &R::BoxPeriodGoals},
        Field{"BoxPeriod", 24, &R::BoxPeriod},
        Field{"BoxClock", 25, &R::BoxClock},
        Field{"BoxZone", 29, &R::BoxZone},
        Field{"BoxIsScheduled", 49, &R::BoxIsScheduled},
        Field{"ScheduleRow", 50, &R::ScheduleRow},
        Field{"BoxGameType", 52, &R::BoxGameType},
        Field{"BoxPuckTeam", 53, &R::BoxPuckTeam},
        Field{"BoxCarrier", 56, &R::BoxCarrier},
        Field{"BoxPlayResult", 57, &R::BoxPlayResult},
        Field{"BoxLastPlayResult", 77, &R::BoxLastPlayResult},
        Field{"BoxToi", 97, &R::BoxToi},
        Field{"BoxToiSH", 497, &R::BoxToiSH},
        Field{"BoxToiPP", 897, &R::BoxToiPP},
        Field{"BoxEnergy", 1297, &R::BoxEnergy},
        Field{"BoxShiftSeconds", 1397, &R::BoxShiftSeconds},
        Field{"BoxOnIce", 1797, &R::BoxOnIce},
        Field{"BoxWinner", 1809, &R::BoxWinner},
        Field{"BoxLoser", 1810, &R::BoxLoser},
        Field{"BoxDay", 1811, &R::BoxDay},
        Field{"BoxMonth", 1812, &R::BoxMonth},
        Field{"BoxYear", 1813, &R::BoxYear},
        Field{"BoxPlayoffFlag", 1815, &R::BoxPlayoffFlag},
        Field{"BoxRink", 1816, &R::BoxRink},
        Field{"BoxTeamCode", 1836, &R::BoxTeamCode},
        Field{"BoxPlayerId", 1852, &R::BoxPlayerId},
        Field{"BoxLines", 2052, &R::BoxLines},
        Field{"BoxSlotFlag", 5852, &R::BoxSlotFlag},
        Field{"BoxStamp1", 5952, &R::BoxStamp1},
        Field{"BoxTimeouts", 5953, &R::BoxTimeouts},
        Field{"BoxHomeFlag", 5955, &R::BoxHomeFlag},
        Field{"BoxPenaltyState", 5956, &R::BoxPenaltyState},
        Field{"BoxInjuryType", 5960, &R::BoxInjuryType},
        Field{"BoxInjuryDetail", 6060, &R::BoxInjuryDetail},
        Field{"BoxDressedToday", 6160, &R::BoxDressedToday},
        Field{"BoxAbsentText", 6260, &R::BoxAbsentText},
        Field{"BoxNoteA", 6320, &R::BoxNoteA},
        Field{"BoxNoteB", 6380, &R::BoxNoteB},
        Field{"BoxPenaltyBox", 6440, &R::BoxPenaltyBox},
        Field{"BoxPenaltyTime", 6640, &R::BoxPenaltyTime},
        Field{"BoxAssists", 6940, &R::BoxAssists},
        Field{"BoxShots", 6942, &R::BoxShots},
        Field{"BoxFaceoffsWon", 6944, &R::BoxFaceoffsWon},
        Field{"BoxHits", 6946, &R::BoxHits},
        Field{"BoxPowerPlays", 6948, &R::BoxPowerPlays},
        Field{"BoxPowerPlayGoals", 6950, &R::BoxPowerPlayGoals},
        Field{"BoxTimeOfAttack", 6952, &R::BoxTimeOfAttack},
        Field{"BoxBlocks", 6956, &R::BoxBlocks},
        Field{"BoxMissedShots", 6958, &R::BoxMissedShots},
        Field{"BoxShootoutState", 6960, &R::BoxShootoutState},
        Field{"BoxShootoutRounds", 6961, &R::BoxShootoutRounds},
        Field{"BoxShootoutGoals", 6962, &R::BoxShootoutGoals},
        Field{"BoxShootoutText", 7062, &R::BoxShootoutText},
        Field{"Reserved7862", 7862, &R::Reserved7862},
        Field{"BoxShootoutScore", 7912, &R::BoxShootoutScore},
        Field{"BoxShootoutResult", 7914, &R::BoxShootoutResult},
        Field{"Reserved8014", 8014, &R::Reserved8014},
        Field{"BoxGoalieFlag", 8114, &R::BoxGoalieFlag},
        Field{"BoxPenaltyCounts", 8116, &R::BoxPenaltyCounts},
        Field{"BoxWinningGoalie", 8416, &R::BoxWinningGoalie},
        Field{"BoxLosingGoalie", 8417, &R::BoxLosingGoalie},
        Field{"BoxThirdGoalie", 8418, &R::BoxThirdGoalie},
        Field{"Reserved8419", 8419, &R::Reserved8419},
        Field{"BoxShotsBySpot", 8420, &R::BoxShotsBySpot},
        Field{"BoxText", 8460, &R::BoxText},
        Field{"BoxTextCount", 25710, &R::BoxTextCount},
        Field{"BoxLine1", 25712, &R::BoxLine1},
        Field{"BoxPassScore", 25717, &R::BoxPassScore},
        Field{"BoxSpots", 25723, &R::BoxSpots},
        Field{"BoxPlayTable", 25729, &R::BoxPlayTable},
        Field{"BoxPlayRating", 25747, &R::BoxPlayRating},
        Field{"BoxMomentum", 25755, &R::BoxMomentum},
        Field{"BoxGameSeconds", 25763, &R::BoxGameSeconds},
        Field{"BoxStatusText", 25767, &R::BoxStatusText},
        Field{"BoxSuspendedInGame", 25827, &R::BoxSuspendedInGame},
        Field{"Reserved26027", 26027, &R::Reserved26027},
        Field{"BoxForm", 26029, &R::BoxForm},
        Field{"BoxLineTime", 26329, &R::BoxLineTime},
        Field{"BoxPenaltyClockA", 26529, &R::BoxPenaltyClockA},
        Field{"BoxPenaltyClockB", 26729, &R::BoxPenaltyClockB},
        Field{"BoxFatigueFlag", 27129, &R::BoxFatigueFlag},
        Field{"Reserved27229", 27229, &R::Reserved27229},
        Field{"BoxStars", 27331, &R::BoxStars},
        Field{"BoxOvertimePlayed", 27431, &R::BoxOvertimePlayed},
        Field{"BoxLineNow", 27432, &R::BoxLineNow},
        Field{"BoxMajorGame", 27438, &R::BoxMajorGame},
        Field{"BoxLineFlag", 27538, &R::BoxLineFlag},
        Field{"BoxStrategy", 27638, &R::BoxStrategy},
        Field{"BoxGameWinningScorer", 27654, &R::BoxGameWinningScorer},
        Field{"BoxPlayLines", 27655, &R::BoxPlayLines},
        Field{"BoxExtra", 27713, &R::BoxExtra},
        Field{"BoxMinutesFlag", 27715, &R::BoxMinutesFlag},
        Field{"BoxGoalieOfShutout", 27815, &R::BoxGoalieOfShutout},
        Field{"BoxStampA", 27817, &R::BoxStampA},
        Field{"BoxInjuredInGame", 27818, &R::BoxInjuredInGame},
        Field{"BoxVersion", 27918, &R::BoxVersion},
        Field{"BoxSkaters", 27920, &R::BoxSkaters},
        Field{"BoxNextFaceoff", 27922, &R::BoxNextFaceoff},
        Field{"BoxChances", 27923, &R::BoxChances},
        Field{"Reserved27925", 27925, &R::Reserved27925},
        Field{"BoxDressed", 27931, &R::BoxDressed},
        Field{"BoxInactiveDates", 27933, &R::BoxInactiveDates},
        Field{"Reserved28533", 28533, &R::Reserved28533},
        Field{"BoxPenaltyShots", 29133, &R::BoxPenaltyShots},
        Field{"BoxCarrierPos", 29233, &R::BoxCarrierPos},
        Field{"BoxLastShot", 29234, &R::BoxLastShot},
        Field{"BoxGoalTypes", 29235, &R::BoxGoalTypes},
        Field{"BoxShadows", 29257, &R::BoxShadows},
        Field{"BoxShootoutGoalsOf", 29277, &R::BoxShootoutGoalsOf},
        Field{"BoxChancesOf", 29377, &R::BoxChancesOf},
        Field{"BoxTopScorer", 29477, &R::BoxTopScorer},
        Field{"BoxLeagueStamp", 29479, &R::BoxLeagueStamp},
        Field{"BoxGoaliePulled", 29481, &R::BoxGoaliePulled},
        Field{"BoxExtraForm", 29483, &R::BoxExtraForm},
        Field{"BoxFlagsA", 29583, &R::BoxFlagsA},
        Field{"BoxFlagsB", 29584, &R::BoxFlagsB},
        Field{"Reserved29585", 29585, &R::Reserved29585},
        Field{"BoxEnd1", 29685, &R::BoxEnd1},
        Field{"BoxEnd2", 29687, &R::BoxEnd2},
        Field{"BoxStarterGoalie", 29689, &R::BoxStarterGoalie},
        Field{"BoxReserved", 29691, &R::BoxReserved},
    };
};

template <>
struct FieldTable<BoxRecord2> {
    using R = BoxRecord2;
    static constexpr auto fields = std::tuple{
        Field{"ScoringCount", 0, &R::ScoringCount},       Field{"ScoringText", 1, &R::ScoringText},
        Field{"PenaltyCount", 2101, &R::PenaltyCount},    Field{"PenaltyText", 2102, &R::PenaltyText},
        Field{"EventCount", 5602, &R::EventCount},        Field{"EventPeriod", 5604, &R::EventPeriod},
        Field{"EventTime", 5904, &R::EventTime},          Field{"EventTeam", 7404, &R::EventTeam},
        Field{"EventStrength", 8304, &R::EventStrength},  Field{"EventKind", 8904, &R::EventKind},
        Field{"EventText", 11904, &R::EventText},         Field{"PeriodTable", 29304, &R::PeriodTable},
        Field{"BoxPlayerFlag", 29384, &R::BoxPlayerFlag}, Field{"BoxStampB", 29484, &R::BoxStampB},
        Field{"BoxSpeedStamp", 29485, &R::BoxSpeedStamp}, Field{"BoxReserved2", 29487, &R::BoxReserved2},
    };
};

template <>
struct FieldTable<BoxPlayRecord> {
    using R = BoxPlayRecord;
    static constexpr auto fields = std::tuple{
        Field{"PlayLineCount", 0, &R::PlayLineCount},       Field{"PlayLines", 2, &R::PlayLines},
        Field{"BoxStampC", 28082, &R::BoxStampC},           Field{"BoxLineRoles", 28083, &R::BoxLineRoles},
        Field{"BoxEnergyStart", 28483, &R::BoxEnergyStart}, Field{"BoxReserved3", 28533, &R::BoxReserved3},
    };
};

template <>
struct FieldTable<LeaderEntry> {
    static constexpr auto fields = std::tuple{
        Field{"Name", 0, &LeaderEntry::Name},
        Field{"Team", 25, &LeaderEntry::Team},
        Field{"Value", 28, &LeaderEntry::Value},
        Field{"PlayerNumber", 30, &LeaderEntry::PlayerNumber},
    };
};

template <>
struct FieldTable<LeadersRecord> {
    static constexpr auto fields = std::tuple{
        Field{"LeadersStamp", 0, &LeadersRecord::LeadersStamp},
        Field{"Leaders", 1, &LeadersRecord::Leaders},
        Field{"Reserved", 1 + 32 * kLeaderRanks* kLeaderCategories, &LeadersRecord::Reserved},
    };
};

template <>
struct FieldTable<Top40Entry> {
    static constexpr auto fields = std::tuple{
        Field{"Value", 0, &Top40Entry::Value},
        Field{"Name", 4, &Top40Entry::Name},
        Field{"Text", 19, &Top40Entry::Text},
        Field{"BoxFile", 39, &Top40Entry::BoxFile},
    };
};

template <>
struct FieldTable<Top40Record> {
    static constexpr auto fields = std::tuple{
        Field{"Top40Stamp", 0, &Top40Record::Top40Stamp},
        Field{"Top", 1, &Top40Record::Top},
        Field{"Reserved", 1 + 59 * kTop40Ranks* kTop40Categories, &Top40Record::Reserved},
    };
};

template <>
struct FieldTable<TickerRecord> {
    static constexpr auto fields = std::tuple{
        Field{"LeagueStamp", 0, &TickerRecord::LeagueStamp},
        Field{"Month", 2, &TickerRecord::Month},
        Field{"Day", 3, &TickerRecord::Day},
        Field{"Period", 4, &TickerRecord::Period},
        Field{"Clock", 5, &TickerRecord::Clock},
        Field{"Final", 7, &TickerRecord::Final},
        Field{"Teams", 8, &TickerRecord::Teams},
        Field{"Scores", 12, &TickerRecord::Scores},
        Field{"Text", 14, &TickerRecord::Text},
        Field{"Reserved64", 64, &TickerRecord::Reserved64},
    };
};

static_assert(tilesExactly<BoxLine>());
static_assert(tilesExactly<BoxRecord1>());
static_assert(tilesExactly<BoxRecord2>());
static_assert(tilesExactly<BoxPlayRecord>());
static_assert(tilesExactly<LeaderEntry>());
static_assert(tilesExactly<LeadersRecord>());
static_assert(tilesExactly<Top40Entry>());
static_assert(tilesExactly<Top40Record>());
static_assert(tilesExactly<TickerRecord>());

TALLYRINK_INSTANTIATE_RECORD_CODEC(BoxLine)
TALLYRINK_INSTANTIATE_RECORD_CODEC(BoxRecord1)
TALLYRINK_INSTANTIATE_RECORD_CODEC(BoxRecord2)
TALLYRINK_INSTANTIATE_RECORD_CODEC(BoxPlayRecord)
template void encodeOutside<BoxRecord1>(const BoxRecord1&, std::uint8_t*,
                                        std::span<const std::pair<std::size_t, std::size_t>>);
template void encodeOutside<BoxRecord2>(const BoxRecord2&, std::uint8_t*,
                                        std::span<const std::pair<std::size_t, std::size_t>>);
template void encodeOutside<BoxPlayRecord>(const BoxPlayRecord&, std::uint8_t*,
                                           std::span<const std::pair<std::size_t, std::size_t>>);
TALLYRINK_INSTANTIATE_RECORD_CODEC(LeaderEntry)
TALLYRINK_INSTANTIATE_RECORD_CODEC(LeadersRecord)
TALLYRINK_INSTANTIATE_RECORD_CODEC(Top40Entry)
TALLYRINK_INSTANTIATE_RECORD_CODEC(Top40Record)
TALLYRINK_INSTANTIATE_RECORD_CODEC(TickerRecord)

}  // namespace tallyrink::codec
