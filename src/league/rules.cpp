#include "league/rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <type_traits>

#include "league/files.h"
#include "league/records.h"

namespace tallyrink::codec {

template <>
struct FieldTable<RulesRecord> {
    static constexpr auto fields = std::tuple{
        Field{"DivisionName", 0, &RulesRecord::DivisionName},
        Field{"LeagueName", 540, &RulesRecord::LeagueName},
        Field{"GameEraList", 570, &RulesRecord::GameEraList},
        Field{"InjuryCheck", 572, &RulesRecord::InjuryCheck},
        Field{"Transactioncheck", 573, &RulesRecord::Transactioncheck},
        Field{"GoalieInjcheck", 574, &RulesRecord::GoalieInjcheck},
        Field{"SkaterLimitlist", 575, &RulesRecord::SkaterLimitlist},
        Field{"Dec1Limitlist", 576, &RulesRecord::Dec1Limitlist},
        Field{"GoalieLimitlist", 577, &RulesRecord::GoalieLimitlist},
        Field{"Periodslist", 578, &RulesRecord::Periodslist},
        Field{"Minuteslist", 579, &RulesRecord::Minuteslist},
        Field{"OTLengthlist", 580, &RulesRecord::OTLengthlist},
        Field{"OTTypelist", 581, &RulesRecord::OTTypelist},
        Field{"Fiveoption", 582, &RulesRecord::Fiveoption},
        Field{"Fouroption", 583, &RulesRecord::Fouroption},
        Field{"ShootOutList", 584, &RulesRecord::ShootOutList},
        Field{"playoffOTLengthlist", 585, &RulesRecord::playoffOTLengthlist},
        Field{"playoffOTTypelist", 586, &RulesRecord::playoffOTTypelist},
        Field{"playoffFiveoption", 587, &RulesRecord::playoffFiveoption},
        Field{"playofffourOption", 588, &RulesRecord::playofffourOption},
        Field{"PlayoffShootoutlist", 589, &RulesRecord::PlayoffShootoutlist},
        Field{"OnePointForOvertimeLossCheck", 590, &RulesRecord::OnePointForOvertimeLossCheck},
        Field{"Minorcheck", 591, &RulesRecord::Minorcheck},
        Field{"MinorLengthlist", 592, &RulesRecord::MinorLengthlist},
        Field{"MinorGoalcheck", 593, &RulesRecord::MinorGoalcheck},
        Field{"DoubleMinorcheck", 594, &RulesRecord::DoubleMinorcheck},
        Field{"SubMinorcheck", 595, &RulesRecord::SubMinorcheck},
        Field{"Majorcheck", 596, &RulesRecord::Majorcheck},
        Field{"MajorLengthlist", 597, &RulesRecord::MajorLengthlist},
        Field{"MajorGoalcheck", 598, &RulesRecord::MajorGoalcheck},
        Field{"MajorSubcheck", 599, &RulesRecord::MajorSubcheck},
        Field{"MatchCheck", 600, &RulesRecord::MatchCheck},
        Field{"Suspcheck", 601, &RulesRecord::Suspcheck},
        Field{"SuspLengthlist", 602, &RulesRecord::SuspLengthlist},
        Field{"MaxSportscheck", 603, &RulesRecord::MaxSportscheck},
        Field{"PShotlist", 604, &RulesRecord::PShotlist},
        Field{"PShotFouledoption", 605, &RulesRecord::PShotFouledoption},
        Field{"PShotAnyoption", 606, &RulesRecord::PShotAnyoption},
        Field{"Offsideslist", 607, &RulesRecord::Offsideslist},
        Field{"Icinglist", 608, &RulesRecord::Icinglist},
        Field{"NoDelayedcheck", 609, &RulesRecord::NoDelayedcheck},
        Field{"GoaliePenaltycheck", 610, &RulesRecord::GoaliePenaltycheck},
        Field{"VideoReviewcheck", 611, &RulesRecord::VideoReviewcheck},
        Field{"HighSchoolcheck", 612, &RulesRecord::HighSchoolcheck},
        Field{"DZonePasscheck", 613, &RulesRecord::DZonePasscheck},
        Field{"NoGoaliePasscheck", 614, &RulesRecord::NoGoaliePasscheck},
        Field{"TwoLinePasscheck", 615, &RulesRecord::TwoLinePasscheck},
        Field{"NoGoalieFreezecheck", 616, &RulesRecord::NoGoalieFreezecheck},
        Field{"SubsOnAllPenaltiesCheck", 617, &RulesRecord::SubsOnAllPenaltiesCheck},
        Field{"AllowLineChangesOnIcingCheck", 618, &RulesRecord::AllowLineChangesOnIcingCheck},
        Field{"GameEraStamp", 619, &RulesRecord::GameEraStamp},
        Field{"Misccheck", 620, &RulesRecord::Misccheck},
        Field{"MiscConductLengthList", 621, &RulesRecord::MiscConductLengthList},
        Field{"GameMisconductCheck", 622, &RulesRecord::GameMisconductCheck},
        Field{"ExhibitionRosterLimitsCheck", 623, &RulesRecord::ExhibitionRosterLimitsCheck},
        Field{"NoFightingCheck", 624, &RulesRecord::NoFightingCheck},
        Field{"ReuseShootersCheck", 625, &RulesRecord::ReuseShootersCheck},
        Field{"TVTimeoutsCheck", 626, &RulesRecord::TVTimeoutsCheck},
        Field{"TVTimeoutsStamp", 627, &RulesRecord::TVTimeoutsStamp},
        Field{"AutoLinesCheck", 628, &RulesRecord::AutoLinesCheck},
        Field{"AutoLinesStamp", 629, &RulesRecord::AutoLinesStamp},
        Field{"GoalieConsecCheck", 630, &RulesRecord::GoalieConsecCheck},
        Field{"EmptyVariants", 631, &RulesRecord::EmptyVariants},
        Field{"Reserved641", 641, &RulesRecord::Reserved641},
        Field{"NoComputerPlayCallsCheck", 642, &RulesRecord::NoComputerPlayCallsCheck},
        Field{"TimeoutsAllowedCheck", 643, &RulesRecord::TimeoutsAllowedCheck},
        Field{"TimeoutsAllowedStamp", 644, &RulesRecord::TimeoutsAllowedStamp},
        Field{"SaveGameFilmsCheck", 645, &RulesRecord::SaveGameFilmsCheck},
        Field{"SaveGameFilmsStamp", 646, &RulesRecord::SaveGameFilmsStamp},
        Field{"StandingsList", 647, &RulesRecord::StandingsList},
        Field{"MajorSubStamp", 648, &RulesRecord::MajorSubStamp},
        Field{"PlayoffShootoutStamp", 649, &RulesRecord::PlayoffShootoutStamp},
        Field{"Reserved650", 650, &RulesRecord::Reserved650},
        Field{"HighlightAllTeamsCheck", 978, &RulesRecord::HighlightAllTeamsCheck},
        Field{"HighlightAllTeamsStamp", 979, &RulesRecord::HighlightAllTeamsStamp},
        Field{"IsPlayoffFolder", 980, &RulesRecord::IsPlayoffFolder},
        Field{"HasPlayoffFolder", 981, &RulesRecord::HasPlayoffFolder},
        Field{"SeasonFolderPath", 982, &RulesRecord::SeasonFolderPath},
        Field{"AlternateRealityCheck", 1082, &RulesRecord::AlternateRealityCheck},
        Field{"AlternateRealityStamp", 1083, &RulesRecord::AlternateRealityStamp},
        Field{"ThreeFightMajorsCheck", 1084, &RulesRecord::ThreeFightMajorsCheck},
        Field{"ThreeFightMajorsStamp", 1085, &RulesRecord::ThreeFightMajorsStamp},
        Field{"AllGamesNeutralIceCheck", 1086, &RulesRecord::AllGamesNeutralIceCheck},
        Field{"AllGamesNeutralIceStamp", 1087, &RulesRecord::AllGamesNeutralIceStamp},
        Field{"Reserved1088", 1088, &RulesRecord::Reserved1088},
        Field{"FightInstigatorCheck", 1090, &RulesRecord::FightInstigatorCheck},
        Field{"FightInstigatorStamp", 1091, &RulesRecord::FightInstigatorStamp},
        Field{"AllTimeRecordCheck", 1092, &RulesRecord::AllTimeRecordCheck},
        Field{"AllTimeRecordStamp", 1093, &RulesRecord::AllTimeRecordStamp},
        Field{"AllowOffensiveZonePlayCallsCheck", 1094, &RulesRecord::AllowOffensiveZonePlayCallsCheck},
        Field{"PrivateLeaguePhotoFolderCheck", 1095, &RulesRecord::PrivateLeaguePhotoFolderCheck},
        Field{"OffensiveZonePlayCallsStamp", 1096, &RulesRecord::OffensiveZonePlayCallsStamp},
        Field{"UsageListsStamp", 1097, &RulesRecord::UsageListsStamp},
        Field{"SkaterUsageList", 1098, &RulesRecord::SkaterUsageList},
        Field{"GoalieUsageList", 1101, &RulesRecord::GoalieUsageList},
        Field{"SkaterGameUsagePenaltiesCheck", 1104, &RulesRecord::SkaterGameUsagePenaltiesCheck},
        Field{"GoalieGameUsagePenaltiesCheck", 1105, &RulesRecord::GoalieGameUsagePenaltiesCheck},
        Field{"GameUsagePenaltiesStamp", 1106, &RulesRecord::GameUsagePenaltiesStamp},
        Field{"OneGameInjuryLimitCheck", 1107, &RulesRecord::OneGameInjuryLimitCheck},
        Field{"OneGameInjuryLimitStamp", 1108, &RulesRecord::OneGameInjuryLimitStamp},
        Field{"ConferenceName", 1109, &RulesRecord::ConferenceName},
        Field{"ConferenceNameStamp", 1259, &RulesRecord::ConferenceNameStamp},
        Field{"Reserved1260", 1260, &RulesRecord::Reserved1260},
        Field{"GameScoreTickerCheck", 1261, &RulesRecord::GameScoreTickerCheck},
        Field{"GameScoreTickerStamp", 1262, &RulesRecord::GameScoreTickerStamp},
        Field{"Reserved1263", 1263, &RulesRecord::Reserved1263},
        Field{"ThreeOption", 1264, &RulesRecord::ThreeOption},
        Field{"PlayoffThreeOption", 1265, &RulesRecord::PlayoffThreeOption},
        Field{"ThreeOnThreeStamp", 1266, &RulesRecord::ThreeOnThreeStamp},
        Field{"FightFrequencyList", 1267, &RulesRecord::FightFrequencyList},
        Field{"FightFrequencyStamp", 1268, &RulesRecord::FightFrequencyStamp},
        Field{"Reserved1269", 1269, &RulesRecord::Reserved1269},
        Field{"KeyPlayPauseTimeList", 1560, &RulesRecord::KeyPlayPauseTimeList},
        Field{"BlowoutSkipPauseCheck", 1561, &RulesRecord::BlowoutSkipPauseCheck},
        Field{"endOfGameCheck", 1562, &RulesRecord::endOfGameCheck},
        Field{"PauseEndOfQuarterCheck", 1563, &RulesRecord::PauseEndOfQuarterCheck},
        Field{"Pause4thQuarterScoreList", 1564, &RulesRecord::Pause4thQuarterScoreList},
        Field{"Pause4thQuarterTimeList", 1565, &RulesRecord::Pause4thQuarterTimeList},
        Field{"PlayerReachesList", 1566, &RulesRecord::PlayerReachesList},
        Field{"PauseInjuryCheck", 1573, &RulesRecord::PauseInjuryCheck},
        Field{"EjectionCheck", 1574, &RulesRecord::EjectionCheck},
        Field{"PauseFightCheck", 1575, &RulesRecord::PauseFightCheck},
        Field{"PausePowerPlayCheck", 1576, &RulesRecord::PausePowerPlayCheck},
        Field{"GoalPauseCheck", 1577, &RulesRecord::GoalPauseCheck},
        Field{"PauseStamp", 1578, &RulesRecord::PauseStamp},
        Field{"StandingsScoringList", 1579, &RulesRecord::StandingsScoringList},
        Field{"StandingsScoringStamp", 1580, &RulesRecord::StandingsScoringStamp},
        Field{"Reserved1581", 1581, &RulesRecord::Reserved1581},
        Field{"ROWStandingsCheck", 1598, &RulesRecord::ROWStandingsCheck},
        Field{"ROWStandingsStamp", 1599, &RulesRecord::ROWStandingsStamp},
        Field{"Reserved1600", 1600, &RulesRecord::Reserved1600},
        Field{"AllowComputerGeneralManagerRosterChangesCheck", 1601,
              &RulesRecord::AllowComputerGeneralManagerRosterChangesCheck},
        Field{"GeneralManagerStamp", 1602, &RulesRecord::GeneralManagerStamp},
        Field{"SalaryValueList", 1603, &RulesRecord::SalaryValueList},
        Field{"SalaryValueStamp", 1604, &RulesRecord::SalaryValueStamp},
        Field{"LeagueLogo", 1605, &RulesRecord::LeagueLogo},
        Field{"AutolineFaceoffsCheck", 1655, &RulesRecord::AutolineFaceoffsCheck},
        Field{"LogoAndFaceoffsStamp", 1656, &RulesRecord::LogoAndFaceoffsStamp},
        Field{"Reserved1657", 1657, &RulesRecord::Reserved1657},
        Field{"ScheduleFile", 1658, &RulesRecord::ScheduleFile},
        Field{"ScheduleFileStamp", 1688, &RulesRecord::ScheduleFileStamp},
        Field{"LeagueUserName", 1689, &RulesRecord::LeagueUserName},
        Field{"LeagueUserNameStamp", 1714, &RulesRecord::LeagueUserNameStamp},
        Field{"Reserved1715", 1715, &RulesRecord::Reserved1715},
        Field{"UniversalDurabilityList", 1720, &RulesRecord::UniversalDurabilityList},
        Field{"UniversalDurabilityStamp", 1721, &RulesRecord::UniversalDurabilityStamp},
        Field{"HideRealStatsCheck", 1722, &RulesRecord::HideRealStatsCheck},
        Field{"HideRealStatsStamp", 1723, &RulesRecord::HideRealStatsStamp},
        Field{"PlayoffUsageLists", 1724, &RulesRecord::PlayoffUsageLists},
        Field{"PlayoffSkaterUsageCheck", 1730, &RulesRecord::PlayoffSkaterUsageCheck},
        Field{"PlayoffGoalieUsageCheck", 1731, &RulesRecord::PlayoffGoalieUsageCheck},
        Field{"PlayoffUsageStamp", 1732, &RulesRecord::PlayoffUsageStamp},
        Field{"Reserved1733", 1733, &RulesRecord::Reserved1733},
        Field{"DisplayComputerHomeTeamLinesAtFaceoffCheck", 1735,
              &RulesRecord::DisplayComputerHomeTeamLinesAtFaceoffCheck},
        Field{"FaceoffLinesStamp", 1736, &RulesRecord::FaceoffLinesStamp},
        Field{"Reserved1737", 1737, &RulesRecord::Reserved1737},
    };
};

static_assert(tilesExactly<RulesRecord>());

TALLYRINK_INSTANTIATE_RECORD_CODEC(RulesRecord)

}  // namespace tallyrink::codec

namespace tallyrink {

namespace {

// A league with no team 1 yet plays by the rules of the program's own day.
constexpr int kEditionYear = 2021;

int effectiveYear(int teamYear) { return teamYear > 0 ? teamYear : kEditionYear; }

// Dressed skaters by era: teams of the first decades dressed whom they had.
std::uint8_t skaterLimitOf(int year) {
    if (year >= 1982) return 18;
    if (year >= 1970) return 17;
    if (year >= 1950) return 16;
    return 0;
}

// Regular-season overtime by era: a sudden-death period in the first years,
// ten full minutes from 1928, none from the wartime season of 1942 (games
// could end tied), five sudden-death minutes from 1983.
void giveOvertimeOf(RulesRecord& r, int year) {
    if (year >= 1983) {
        r.OTLengthlist = 1;
        r.OTTypelist = 0;
    } else if (year >= 1942) {
        r.OTLengthlist = 0;
        r.OTTypelist = 0;
    } else if (year >= 1928) {
        r.OTLengthlist = 2;
        r.OTTypelist = 2;
    } else {
        r.OTLengthlist = 4;
        r.OTTypelist = 0;
    }
}

// The fields of the record's first form: they have no stamp, so only a
// record never written gets them.
void giveFirstFormDefaults(RulesRecord& r, int year) {
    r.InjuryCheck = 1;
    r.Transactioncheck = 1;
    r.GoalieInjcheck = 1;
    r.SkaterLimitlist = skaterLimitOf(year);
    r.Dec1Limitlist = 0;
    r.GoalieLimitlist = year >= 1965 ? 2 : 1;
    r.Periodslist = 2;   // three periods
    r.Minuteslist = 19;  // of twenty minutes
    giveOvertimeOf(r, year);
    r.Fiveoption = 0;
    r.Fouroption = 1;
    r.ShootOutList = year >= 2005 ? 1 : 0;
    r.playoffOTLengthlist = 4;  // twenty-minute periods until a goal
    r.playoffOTTypelist = 1;
    r.playoffFiveoption = 1;
    r.playofffourOption = 0;
    r.PlayoffShootoutlist = 0;
    r.OnePointForOvertimeLossCheck = year >= 1999;
    r.Minorcheck = 1;
    r.MinorLengthlist = 1;  // two minutes
    r.MinorGoalcheck = year >= 1956;
    r.DoubleMinorcheck = 1;
    r.SubMinorcheck = 0;
    r.Majorcheck = 1;
    r.MajorLengthlist = 3;  // five minutes
    r.MajorGoalcheck = 0;
    r.MajorSubcheck = year > 1965;
    r.MatchCheck = 1;
    r.Suspcheck = 1;
    r.SuspLengthlist = 0;
    r.MaxSportscheck = 0;
    r.PShotlist = year >= 1934;
    r.PShotFouledoption = 1;
    r.PShotAnyoption = 0;
    r.Offsideslist = 1;
    r.Icinglist = year >= 1937 ? 0 : 2;
    r.NoDelayedcheck = 0;
    r.GoaliePenaltycheck = 0;
    r.VideoReviewcheck = year >= 1991;
    r.HighSchoolcheck = 0;
    r.DZonePasscheck = 0;
    r.NoGoaliePasscheck = 0;
    r.TwoLinePasscheck = year >= 2005;
    r.NoGoalieFreezecheck = 0;
    r.SubsOnAllPenaltiesCheck = 0;
    r.AllowLineChangesOnIcingCheck = year < 2005;
    r.Misccheck = 1;
    r.MiscConductLengthList = 2;  // ten minutes
    r.GameMisconductCheck = 0;
}

// One group of fields that came in after the first form of the record: when
// its stamp doesn't hold `value`, the stamp is set and `give` runs.
// Append-only: a value is never reused or reordered; a group whose defaults
// change gets a new value.
struct StampGroup {
    std::uint8_t RulesRecord::*stamp;
    std::uint8_t value;
    void (*give)(RulesRecord&, int year);
};

const StampGroup kStampGroups[] = {
    // 22: TV timeouts, which came in with the 1980 season.
    {&RulesRecord::TVTimeoutsStamp, 22, [](RulesRecord& r, int y) { r.TVTimeoutsCheck = y >= 1980; }},
    // 33: the computer changes lines for a human coach.
    {&RulesRecord::AutoLinesStamp, 33, [](RulesRecord& r, int) { r.AutoLinesCheck = 1; }},
    // 44: coaches may call a timeout.
    {&RulesRecord::TimeoutsAllowedStamp, 44, [](RulesRecord& r, int) { r.TimeoutsAllowedCheck = 1; }},
    // 55: game films are saved.
    {&RulesRecord::SaveGameFilmsStamp, 55, [](RulesRecord& r, int) { r.SaveGameFilmsCheck = 1; }},
    // 66: a man with a major may be replaced on the ice, from 1966.
    {&RulesRecord::MajorSubStamp, 66, [](RulesRecord& r, int y) { r.MajorSubcheck = y > 1965; }},
    // 77: a league with no playoff shootout set gets one of three rounds,
    // reached only when its playoff overtime can end tied.
    {&RulesRecord::PlayoffShootoutStamp, 77,
     [](RulesRecord& r, int) {
         if (r.PlayoffShootoutlist == 0 && r.OTTypelist <= 2) r.PlayoffShootoutlist = 1;
     }},
    // 77: highlights of the user's teams only.
    {&RulesRecord::HighlightAllTeamsStamp, 77, [](RulesRecord& r, int) { r.HighlightAllTeamsCheck = 0; }},
    // 88: the replay is steered toward the real season.
    {&RulesRecord::AlternateRealityStamp, 88, [](RulesRecord& r, int) { r.AlternateRealityCheck = 0; }},
    // 99: a third fight ejects.
    {&RulesRecord::ThreeFightMajorsStamp, 99, [](RulesRecord& r, int) { r.ThreeFightMajorsCheck = 1; }},
    // 111: home ice counts.
    {&RulesRecord::AllGamesNeutralIceStamp, 111, [](RulesRecord& r, int) { r.AllGamesNeutralIceCheck = 0; }},
    // 123: the instigator of a fight takes a minor, from 1992.
    {&RulesRecord::FightInstigatorStamp, 123, [](RulesRecord& r, int y) { r.FightInstigatorCheck = y > 1991; }},
    // 199: records are also kept across leagues.
    {&RulesRecord::AllTimeRecordStamp, 199, [](RulesRecord& r, int) { r.AllTimeRecordCheck = 1; }},
    // 222: coaches may call plays in the offensive zone.
    {&RulesRecord::OffensiveZonePlayCallsStamp, 222,
     [](RulesRecord& r, int) { r.AllowOffensiveZonePlayCallsCheck = 1; }},
    // 22: usage penalties at 104, 114 and 124 per cent of real use.
    {&RulesRecord::UsageListsStamp, 22,
     [](RulesRecord& r, int) {
         r.SkaterUsageList = {104, 114, 124};
         r.GoalieUsageList = {104, 114, 124};
     }},
    // 33: no usage penalties within a game.
    {&RulesRecord::GameUsagePenaltiesStamp, 33,
     [](RulesRecord& r, int) {
         r.SkaterGameUsagePenaltiesCheck = 0;
         r.GoalieGameUsagePenaltiesCheck = 0;
     }},
    // 44: injuries may last beyond one game.
    {&RulesRecord::OneGameInjuryLimitStamp, 44, [](RulesRecord& r, int) { r.OneGameInjuryLimitCheck = 0; }},
    // 55: conference names "1 Conference" to "10 Conference".
    {&RulesRecord::ConferenceNameStamp, 55,
     [](RulesRecord& r, int) {
         for (std::size_t i = 0; i < r.ConferenceName.size(); ++i)
             r.ConferenceName[i].assign(defaultConferenceName(static_cast<int>(i) + 1));
     }},
    // 66: scores are shown as games are played.
    {&RulesRecord::GameScoreTickerStamp, 66, [](RulesRecord& r, int) { r.GameScoreTickerCheck = 0; }},
    // 77: three-on-three overtime from 2015, in place of four or five a side.
    {&RulesRecord::ThreeOnThreeStamp, 77,
     [](RulesRecord& r, int y) {
         r.ThreeOption = y >= 2015;
         r.PlayoffThreeOption = y >= 2015;
         if (y >= 2015) {
             r.Fouroption = 0;
             r.playofffourOption = 0;
             r.Fiveoption = 0;
             r.playoffFiveoption = 0;
         }
     }},
    // 88: fights as often as in the real season.
    {&RulesRecord::FightFrequencyStamp, 88, [](RulesRecord& r, int) { r.FightFrequencyList = 3; }},
    // 99: a blowout skips the pauses; a tied game pauses at its end.
    {&RulesRecord::PauseStamp, 99,
     [](RulesRecord& r, int) {
         r.BlowoutSkipPauseCheck = 1;
         r.endOfGameCheck = 1;
     }},
    // 111: two points for a win, one for a tie.
    {&RulesRecord::StandingsScoringStamp, 111, [](RulesRecord& r, int) { r.StandingsScoringList = 0; }},
    // 123: the standings show regulation and overtime wins from 2011.
    {&RulesRecord::ROWStandingsStamp, 123, [](RulesRecord& r, int y) { r.ROWStandingsCheck = y >= 2011; }},
    // 199: the computer general manager may change rosters.
    {&RulesRecord::GeneralManagerStamp, 199,
     [](RulesRecord& r, int) { r.AllowComputerGeneralManagerRosterChangesCheck = 1; }},
    // 222: salaries as entered.
    {&RulesRecord::SalaryValueStamp, 222, [](RulesRecord& r, int) { r.SalaryValueList = 0; }},
    // 22: the league logo "LeagueLogo.jpg"; the computer lines up for faceoffs.
    {&RulesRecord::LogoAndFaceoffsStamp, 22,
     [](RulesRecord& r, int) {
         r.LeagueLogo.assign("LeagueLogo.jpg");
         r.AutolineFaceoffsCheck = 1;
     }},
    // 33: the schedule file "Sked.skd".
    {&RulesRecord::ScheduleFileStamp, 33, [](RulesRecord& r, int) { r.ScheduleFile.assign("Sked.skd"); }},
    // 44: the user's name "MyName".
    {&RulesRecord::LeagueUserNameStamp, 44, [](RulesRecord& r, int) { r.LeagueUserName.assign("MyName"); }},
    // 55: durability from each player's own rating.
    {&RulesRecord::UniversalDurabilityStamp, 55, [](RulesRecord& r, int) { r.UniversalDurabilityList = 0; }},
    // 66: real statistics are shown.
    {&RulesRecord::HideRealStatsStamp, 66, [](RulesRecord& r, int) { r.HideRealStatsCheck = 0; }},
    // 77: playoff usage penalties at 34, 44 and 54 per cent.
    {&RulesRecord::PlayoffUsageStamp, 77, [](RulesRecord& r, int) { r.PlayoffUsageLists = {34, 44, 54, 34, 44, 54}; }},
    // 88: the computer home team's lines stay hidden at faceoffs.
    {&RulesRecord::FaceoffLinesStamp, 88,
     [](RulesRecord& r, int) { r.DisplayComputerHomeTeamLinesAtFaceoffCheck = 0; }},
};

// GameEraList is cleared once: its stamp sits beside the first-form fields.
constexpr std::uint8_t kGameEraStampValue = 98;

void resetAbove(std::uint8_t& v, int highest, std::uint8_t fallback) {
    if (v > highest) v = fallback;
}

void resetUnlessFlag(std::uint8_t& v) {
    if (v > 1) v = 0;
}

// Values outside their lists go back to the defaults of the league's year.
void resetOutOfRange(RulesRecord& r, const RulesRecord& d) {
    resetAbove(r.OTTypelist, 2, 0);
    resetAbove(r.playoffOTTypelist, 2, 0);
    resetAbove(r.StandingsList, 1, 0);
    resetUnlessFlag(r.ExhibitionRosterLimitsCheck);
    resetUnlessFlag(r.NoFightingCheck);
    resetUnlessFlag(r.ReuseShootersCheck);
    resetUnlessFlag(r.GoalieConsecCheck);
    resetUnlessFlag(r.NoComputerPlayCallsCheck);

    resetAbove(r.InjuryCheck, 2, d.InjuryCheck);
    resetAbove(r.Periodslist, 4, d.Periodslist);
    resetAbove(r.Minuteslist, 59, d.Minuteslist);
    resetAbove(r.OTLengthlist, 4, d.OTLengthlist);
    resetAbove(r.playoffOTLengthlist, 4, d.playoffOTLengthlist);
    resetAbove(r.ShootOutList, 4, d.ShootOutList);
    resetAbove(r.PlayoffShootoutlist, 4, d.PlayoffShootoutlist);
    resetAbove(r.MinorLengthlist, 4, d.MinorLengthlist);
    resetAbove(r.MajorLengthlist, 8, d.MajorLengthlist);
    resetAbove(r.MiscConductLengthList, 3, d.MiscConductLengthList);
    resetAbove(r.Offsideslist, 2, d.Offsideslist);
    resetAbove(r.Icinglist, 2, d.Icinglist);
    resetAbove(r.FightFrequencyList, 10, d.FightFrequencyList);
    resetAbove(r.UniversalDurabilityList, 10, d.UniversalDurabilityList);
    resetAbove(r.StandingsScoringList, 1, d.StandingsScoringList);
    if (r.GameEraList < 0 || r.GameEraList > kGameEraMaxIndex) r.GameEraList = 0;
    r.EmptyVariants.fill(0);
}

template <std::size_t N>
bool blankOrIndented(const FixedText<N>& t) {
    return t.raw[0] == ' ' || t.raw[0] == '\0';
}

void nameDivisionsAndConferences(RulesRecord& r) {
    for (std::size_t i = 0; i < r.DivisionName.size(); ++i)
        if (blankOrIndented(r.DivisionName[i])) r.DivisionName[i].assign(defaultDivisionName(static_cast<int>(i) + 1));
    for (std::size_t i = 0; i < r.ConferenceName.size(); ++i)
        if (r.ConferenceName[i].blank()) r.ConferenceName[i].assign(defaultConferenceName(static_cast<int>(i) + 1));
}

// Every default of the year, stamps set: the record of a league never written.
RulesRecord freshRules(int year) {
    RulesRecord r{};
    giveFirstFormDefaults(r, year);
    for (const auto& g : kStampGroups) {
        r.*g.stamp = g.value;
        g.give(r, year);
    }
    return r;
}

bool allZero(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b == 0; });
}

}  // namespace

std::string defaultDivisionName(int n) { return fmt::format("{} Division", n); }
std::string defaultConferenceName(int n) { return fmt::format("{} Conference", n); }

std::string gameEraCaption(int value) {
    if (value == 0) return "Blended Off/Def Era";
    if (value == 1) return "Average Historical Era";
    return std::to_string(value + 1948);
}

std::string fightFrequencyCaption(int value) {
    static const std::array<const char*, 11> captions = {" 0  None", " 1", " 2 Fewer", " 3 Realistic", " 4 More",  " 5",
                                                         " 6",       " 7", " 8",       " 9",           "10 Brutal"};
    if (value < 0 || value > 10) return std::to_string(value);
    return captions[static_cast<std::size_t>(value)];
}

std::string universalDurabilityCaption(int value) {
    if (value == 0) return "Use Player Ratings";
    if (value == 1) return "All Players Rated 1 (Low)";
    if (value == 10) return "All Players Rated 10 (High)";
    return fmt::format("All Players Rated {}", value);
}

std::string minutesCaption(int minutes) { return minutes == 1 ? "1 Minute" : fmt::format("{} Minutes", minutes); }

std::string usageStepCaption(int percent) {
    if (percent == 0) return "-----------------------------------";
    return fmt::format("{}% Of Real Life Usage", percent);
}

std::string standingsListCaption(int value) { return value == 1 ? "Conference" : "Division"; }

std::string standingsScoringCaption(int value) {
    return value == 1 ? "3-2-1-0 (3 for a regulation win)" : "Standard 2-1-0";
}

std::string overtimeTypeCaption(int value) {
    switch (value) {
        case 0:
            return "sudden death, one period";
        case 1:
            return "sudden death until a goal";
        case 2:
            return "one full period";
        default:
            return fmt::format("type {}", value);
    }
}

RulesRecord defaultRules(int teamYear) {
    RulesRecord r = freshRules(effectiveYear(teamYear));
    upgradeRules(r, teamYear);
    return r;
}

bool upgradeRules(RulesRecord& rules, int teamYear) {
    const int year = effectiveYear(teamYear);
    const auto before = codec::toSlot(rules);

    for (const auto& g : kStampGroups) {
        if (rules.*g.stamp == g.value) continue;
        rules.*g.stamp = g.value;
        g.give(rules, year);
    }
    resetOutOfRange(rules, freshRules(year));
    nameDivisionsAndConferences(rules);
    if (rules.GameEraStamp != kGameEraStampValue) {
        rules.GameEraStamp = kGameEraStampValue;
        rules.GameEraList = 0;
    }
    return codec::toSlot(rules) != before;
}

RulesRecord HkRulesLoad(const fs::path& leagueDir, int teamYear) {
    const fs::path path = findFile(leagueDir, kRulesFileName);
    const auto bytes = readBytes(path);
    if (bytes.empty()) return defaultRules(teamYear);
    if (bytes.size() < kRulesRecordSize)
        throw FileError(fmt::format("{} is cut short: the rules record is {} bytes long, the file has {}",
                                    path.string(), kRulesRecordSize, bytes.size()));
    const auto record = std::span(bytes).first(kRulesRecordSize);
    // A slot never written holds zero bytes: nothing in it to keep.
    if (allZero(record)) return defaultRules(teamYear);
    auto rules = codec::fromSlot<RulesRecord>(record);
    upgradeRules(rules, teamYear);
    return rules;
}

void HkRulesSave(const fs::path& leagueDir, const RulesRecord& rules) {
    const fs::path path = findFile(leagueDir, kRulesFileName);
    RulesRecord out = rules;
    out.EmptyVariants.fill(0);
    auto bytes = codec::toSlot(out);
    const auto old = readBytes(path);
    if (old.size() > kRulesRecordSize)
        bytes.insert(bytes.end(), old.begin() + static_cast<std::ptrdiff_t>(kRulesRecordSize), old.end());
    writeFileAtomic(path, bytes);
}

namespace {

std::string valueText(std::uint8_t v) { return std::to_string(v); }
std::string valueText(std::int16_t v) { return std::to_string(v); }

template <std::size_t N>
std::string valueText(const FixedText<N>& t) {
    if (std::all_of(t.raw.begin(), t.raw.end(), [](char c) { return c == 0; })) return "(never written)";
    return fmt::format("\"{}\"", t.str());
}

template <class T, std::size_t N>
std::string valueText(const std::array<T, N>& a) {
    if constexpr (std::is_same_v<T, std::uint8_t>) {
        if (N > 10 && std::all_of(a.begin(), a.end(), [](std::uint8_t b) { return b == 0; }))
            return fmt::format("({} zero bytes)", N);
    }
    std::string out;
    for (const auto& v : a) {
        if (!out.empty()) out += ", ";
        out += valueText(v);
    }
    return out;
}

}  // namespace

std::vector<RuleFieldValue> ruleFieldValues(const RulesRecord& rules) {
    std::vector<RuleFieldValue> out;
    std::apply(
        [&](const auto&... f) {
            (out.push_back({std::string(f.name), f.offset, valueText(rules.*(f.member))}), ...);
        },
        codec::FieldTable<RulesRecord>::fields);
    return out;
}

RulesRecord modifyRules(const fs::path& leagueDir, int teamYear, const std::function<void(RulesRecord&)>& change) {
    auto rules = HkRulesLoad(leagueDir, teamYear);
    change(rules);
    HkRulesSave(leagueDir, rules);
    return rules;
}

int leagueYear(const fs::path& leagueDir) {
    const RandomFile teams(findFile(leagueDir, "HKTEAMS"), codec::slotWidth<TeamRecord>());
    if (teams.length() == 0) return 0;
    return readRecord<TeamRecord>(teams, 1).TeamYear;
}

}  // namespace tallyrink
