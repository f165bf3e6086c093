#pragma once

// The league's rules: one 2,000-byte record in the file HKRULES of the league
// folder. It holds the shape of a game (periods, overtime, shootout), the
// penalty system, roster limits, standings rules, the pause options of the
// game screen and the era the league plays in.
//
// The record has no version number. Fields that came in after the first form
// of the record sit in bytes that were reserved before, each group with a
// stamp byte beside it; a stamp that doesn't hold its value means the group
// has never been given its defaults, so a record written before the group
// existed upgrades itself at its first load. The fields of the first form
// (names, the game shape and the penalty rules at 572 to 618) have no stamp:
// an old record keeps them as they are, and only a record never written gets
// their defaults.
//
// Most settings are small integers that index a list on the rules screen;
// the helpers below the record turn them into what they stand for.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "league/codec.h"
#include "league/fixed_text.h"

namespace tallyrink {

struct RulesRecord {
    std::array<FixedText<15>, 36>
        DivisionName{};  // a blank name, or one beginning with a blank, becomes "<n> Division"
    FixedText<30> LeagueName{};
    std::int16_t GameEraList{};  // 0 "Blended Off/Def Era", 1 "Average Historical Era", n >= 2 the year n + 1948
    std::uint8_t InjuryCheck{};  // 0 no injuries, 1 at the rate of the real season, 2 also sit out by real games missed
    std::uint8_t Transactioncheck{};  // player availability dates bind in league games
    std::uint8_t GoalieInjcheck{};    // goalies can be hurt
    std::uint8_t SkaterLimitlist{};   // skaters dressed (list index + 9); 0 no limit
    std::uint8_t Dec1Limitlist{};     // roster limit from December 1 (list index + 9); 0 none
    std::uint8_t GoalieLimitlist{};   // goalies dressed; 0 no limit
    std::uint8_t Periodslist{};       // periods: list index + 1
    std::uint8_t Minuteslist{};       // minutes of a period: list index + 1
    std::uint8_t OTLengthlist{};      // overtime length in units of 5 minutes; 0 none
    std::uint8_t OTTypelist{};    // 0 one sudden-death period, 1 sudden-death periods until a goal, 2 one full period
    std::uint8_t Fiveoption{};    // overtime five on five
    std::uint8_t Fouroption{};    // overtime four on four
    std::uint8_t ShootOutList{};  // 0 no shootout; 1 to 4 a shootout of value + 2 rounds
    std::uint8_t playoffOTLengthlist{};  // as above, playoffs
    std::uint8_t playoffOTTypelist{};
    std::uint8_t playoffFiveoption{};
    std::uint8_t playofffourOption{};
    std::uint8_t PlayoffShootoutlist{};
    std::uint8_t OnePointForOvertimeLossCheck{};  // an overtime loss earns a point
    std::uint8_t Minorcheck{};                    // minor penalties on
    std::uint8_t MinorLengthlist{};               // minutes - 1
    std::uint8_t MinorGoalcheck{};                // a goal ends a minor
    std::uint8_t DoubleMinorcheck{};
    std::uint8_t SubMinorcheck{};    // a substitute serves a minor
    std::uint8_t Majorcheck{};       // major penalties on
    std::uint8_t MajorLengthlist{};  // minutes - 2
    std::uint8_t MajorGoalcheck{};   // a goal ends a major
    std::uint8_t MajorSubcheck{};    // the man with a major (not for fighting) may be replaced on the ice
    std::uint8_t MatchCheck{};
    std::uint8_t Suspcheck{};  // suspensions on
    std::uint8_t SuspLengthlist{};
    std::uint8_t MaxSportscheck{};
    std::uint8_t PShotlist{};           // penalty shots
    std::uint8_t PShotFouledoption{};   // taken by the fouled shooter
    std::uint8_t PShotAnyoption{};      // taken by any team member
    std::uint8_t Offsideslist{};        // 0 no offsides
    std::uint8_t Icinglist{};           // 2 no icing
    std::uint8_t NoDelayedcheck{};      // no delayed penalties
    std::uint8_t GoaliePenaltycheck{};  // a goalie serves his own penalties
    std::uint8_t VideoReviewcheck{};
    std::uint8_t HighSchoolcheck{};
    std::uint8_t DZonePasscheck{};
    std::uint8_t NoGoaliePasscheck{};
    std::uint8_t TwoLinePasscheck{};  // passes across two lines are allowed
    std::uint8_t NoGoalieFreezecheck{};
    std::uint8_t SubsOnAllPenaltiesCheck{};
    std::uint8_t AllowLineChangesOnIcingCheck{};
    std::uint8_t GameEraStamp{};                 // 98 once GameEraList was cleared
    std::uint8_t Misccheck{};                    // misconducts on
    std::uint8_t MiscConductLengthList{};        // 0 ten minutes and out of the game, 1 five, 2 ten, 3 twenty minutes
    std::uint8_t GameMisconductCheck{};          // a major or match carries a misconduct
    std::uint8_t ExhibitionRosterLimitsCheck{};  // 0 or 1
    std::uint8_t NoFightingCheck{};              // 0 or 1
    std::uint8_t ReuseShootersCheck{};           // 0 or 1
    std::uint8_t TVTimeoutsCheck{};
    std::uint8_t TVTimeoutsStamp{};  // 22 once TVTimeoutsCheck was defaulted
    std::uint8_t AutoLinesCheck{};
    std::uint8_t AutoLinesStamp{};                 // 33 once AutoLinesCheck was defaulted
    std::uint8_t GoalieConsecCheck{};              // 0 or 1
    std::array<std::uint8_t, 10> EmptyVariants{};  // five variant slots, always empty: two zero bytes each
    std::uint8_t Reserved641{};                    // kept, not interpreted
    std::uint8_t NoComputerPlayCallsCheck{};       // 0 or 1
    std::uint8_t TimeoutsAllowedCheck{};
    std::uint8_t TimeoutsAllowedStamp{};  // 44 once TimeoutsAllowedCheck was defaulted
    std::uint8_t SaveGameFilmsCheck{};
    std::uint8_t SaveGameFilmsStamp{};            // 55 once SaveGameFilmsCheck was defaulted
    std::uint8_t StandingsList{};                 // 0 "Division", 1 "Conference"
    std::uint8_t MajorSubStamp{};                 // 66 once MajorSubcheck was defaulted by the league's year
    std::uint8_t PlayoffShootoutStamp{};          // 77 once an unset PlayoffShootoutlist was given 1
    std::array<std::uint8_t, 328> Reserved650{};  // kept, not interpreted
    std::uint8_t HighlightAllTeamsCheck{};
    std::uint8_t HighlightAllTeamsStamp{};  // 77 once HighlightAllTeamsCheck was defaulted
    std::uint8_t IsPlayoffFolder{};         // this folder is a playoff module
    std::uint8_t HasPlayoffFolder{};        // this season folder has a playoff module
    FixedText<100> SeasonFolderPath{};      // the season folder, with its trailing separator; set in a playoff module
    std::uint8_t AlternateRealityCheck{};   // no steering of the replay toward the real season
    std::uint8_t AlternateRealityStamp{};   // 88 once AlternateRealityCheck was defaulted
    std::uint8_t ThreeFightMajorsCheck{};   // a third fight ejects
    std::uint8_t ThreeFightMajorsStamp{};   // 99 once ThreeFightMajorsCheck was defaulted
    std::uint8_t AllGamesNeutralIceCheck{};
    std::uint8_t AllGamesNeutralIceStamp{};      // 111 once AllGamesNeutralIceCheck was defaulted
    std::array<std::uint8_t, 2> Reserved1088{};  // kept, not interpreted
    std::uint8_t FightInstigatorCheck{};         // the side that started a fight adds a minor
    std::uint8_t FightInstigatorStamp{};         // 123 once FightInstigatorCheck was defaulted by the league's year
    std::uint8_t AllTimeRecordCheck{};           // records are also kept across leagues
    std::uint8_t AllTimeRecordStamp{};           // 199 once AllTimeRecordCheck was defaulted
    std::uint8_t AllowOffensiveZonePlayCallsCheck{};
    std::uint8_t PrivateLeaguePhotoFolderCheck{};   // the league has its own photo folder
    std::uint8_t OffensiveZonePlayCallsStamp{};     // 222 once AllowOffensiveZonePlayCallsCheck was defaulted
    std::uint8_t UsageListsStamp{};                 // 22 once the two usage lists were defaulted
    std::array<std::uint8_t, 3> SkaterUsageList{};  // steps of the usage penalty, per cent of real use; 0 off
    std::array<std::uint8_t, 3> GoalieUsageList{};
    std::uint8_t SkaterGameUsagePenaltiesCheck{};
    std::uint8_t GoalieGameUsagePenaltiesCheck{};
    std::uint8_t GameUsagePenaltiesStamp{};  // 33 once the two game usage checks were defaulted
    std::uint8_t OneGameInjuryLimitCheck{};
    std::uint8_t OneGameInjuryLimitStamp{};          // 44 once OneGameInjuryLimitCheck was defaulted
    std::array<FixedText<15>, 10> ConferenceName{};  // default "<n> Conference"
    std::uint8_t ConferenceNameStamp{};              // 55 once the conference names were defaulted
    std::uint8_t Reserved1260{};                     // kept, not interpreted
    std::uint8_t GameScoreTickerCheck{};             // scores of games in progress are hidden behind a ticker
    std::uint8_t GameScoreTickerStamp{};             // 66 once GameScoreTickerCheck was defaulted
    std::uint8_t Reserved1263{};                     // kept, not interpreted
    std::uint8_t ThreeOption{};                      // overtime three on three
    std::uint8_t PlayoffThreeOption{};
    std::uint8_t ThreeOnThreeStamp{};    // 77 once the three-on-three options were defaulted by the league's year
    std::uint8_t FightFrequencyList{};   // 0 to 10, 3 realistic
    std::uint8_t FightFrequencyStamp{};  // 88 once FightFrequencyList was defaulted
    std::array<std::uint8_t, 291> Reserved1269{};  // kept, not interpreted
    std::uint8_t KeyPlayPauseTimeList{};           // seconds a key-play pause lasts; 0 until clicked
    std::uint8_t BlowoutSkipPauseCheck{};
    std::uint8_t endOfGameCheck{};
    std::uint8_t PauseEndOfQuarterCheck{};
    std::uint8_t Pause4thQuarterScoreList{};
    std::uint8_t Pause4thQuarterTimeList{};
    std::array<std::uint8_t, 7> PlayerReachesList{};  // pause when a player reaches a total
    std::uint8_t PauseInjuryCheck{};
    std::uint8_t EjectionCheck{};
    std::uint8_t PauseFightCheck{};
    std::uint8_t PausePowerPlayCheck{};
    std::uint8_t GoalPauseCheck{};
    std::uint8_t PauseStamp{};                    // 99 once the pause options were defaulted
    std::uint8_t StandingsScoringList{};          // 0 "Standard 2-1-0", 1 three points for a regulation win
    std::uint8_t StandingsScoringStamp{};         // 111 once StandingsScoringList was defaulted
    std::array<std::uint8_t, 17> Reserved1581{};  // kept, not interpreted
    std::uint8_t ROWStandingsCheck{};             // the standings show regulation and overtime wins
    std::uint8_t ROWStandingsStamp{};             // 123 once ROWStandingsCheck was defaulted by the league's year
    std::uint8_t Reserved1600{};                  // kept, not interpreted
    std::uint8_t AllowComputerGeneralManagerRosterChangesCheck{};
    std::uint8_t GeneralManagerStamp{};  // 199 once the general manager check was defaulted
    std::uint8_t SalaryValueList{};
    std::uint8_t SalaryValueStamp{};  // 222 once SalaryValueList was defaulted
    FixedText<50> LeagueLogo{};
    std::uint8_t AutolineFaceoffsCheck{};
    std::uint8_t LogoAndFaceoffsStamp{};  // 22 once LeagueLogo and AutolineFaceoffsCheck were defaulted
    std::uint8_t Reserved1657{};          // kept, not interpreted
    FixedText<30> ScheduleFile{};         // name of the schedule file in the league folder
    std::uint8_t ScheduleFileStamp{};     // 33 once ScheduleFile was defaulted
    FixedText<25> LeagueUserName{};
    std::uint8_t LeagueUserNameStamp{};          // 44 once LeagueUserName was defaulted
    std::array<std::uint8_t, 5> Reserved1715{};  // kept, not interpreted
    std::uint8_t UniversalDurabilityList{};      // 0 each player's own rating, 1 to 10 everybody rated that
    std::uint8_t UniversalDurabilityStamp{};     // 55 once UniversalDurabilityList was defaulted
    std::uint8_t HideRealStatsCheck{};
    std::uint8_t HideRealStatsStamp{};                // 66 once HideRealStatsCheck was defaulted
    std::array<std::uint8_t, 6> PlayoffUsageLists{};  // skater then goalie usage steps of a playoff module
    std::uint8_t PlayoffSkaterUsageCheck{};
    std::uint8_t PlayoffGoalieUsageCheck{};
    std::uint8_t PlayoffUsageStamp{};            // 77 once the playoff usage lists were defaulted
    std::array<std::uint8_t, 2> Reserved1733{};  // kept, not interpreted
    std::uint8_t DisplayComputerHomeTeamLinesAtFaceoffCheck{};
    std::uint8_t FaceoffLinesStamp{};              // 88 once DisplayComputerHomeTeamLinesAtFaceoffCheck was defaulted
    std::array<std::uint8_t, 263> Reserved1737{};  // kept, not interpreted
};

inline constexpr std::size_t kRulesRecordSize = 2000;
inline constexpr const char* kRulesFileName = "HKRULES";

// ---- What the list settings stand for -------------------------------------

inline int periodsPerGame(const RulesRecord& r) { return r.Periodslist + 1; }
inline int periodMinutes(const RulesRecord& r) { return r.Minuteslist + 1; }
// Overtime of a regular-season or playoff game, in minutes; 0 none.
inline int overtimeMinutes(const RulesRecord& r, bool playoff) {
    return 5 * (playoff ? r.playoffOTLengthlist : r.OTLengthlist);
}
inline int overtimeType(const RulesRecord& r, bool playoff) { return playoff ? r.playoffOTTypelist : r.OTTypelist; }
// Scheduled shootout rounds; 0 when a tie after overtime stands.
inline int shootoutRounds(const RulesRecord& r, bool playoff) {
    int v = playoff ? r.PlayoffShootoutlist : r.ShootOutList;
    return v >= 1 && v <= 4 ? v + 2 : 0;
}
inline int minorMinutes(const RulesRecord& r) { return r.MinorLengthlist + 1; }
inline int majorMinutes(const RulesRecord& r) { return r.MajorLengthlist + 2; }
// The year whose era figures every game is played in; 0 for the two blended
// choices (each player's own year, or the historical average).
inline int gameEraYear(const RulesRecord& r) { return r.GameEraList >= 2 ? r.GameEraList + 1948 : 0; }

inline constexpr int kGameEraFirstYear = 1950;
inline constexpr int kGameEraLastYear = 2050;
inline constexpr int kGameEraMaxIndex = kGameEraLastYear - 1948;

// Captions of the lists of the rules screen, by stored value.
std::string gameEraCaption(int value);
std::string fightFrequencyCaption(int value);
std::string universalDurabilityCaption(int value);
std::string minutesCaption(int minutes);
std::string usageStepCaption(int percent);
std::string standingsListCaption(int value);
std::string standingsScoringCaption(int value);
std::string overtimeTypeCaption(int value);

// The default name of division n (1-based), and of conference n.
std::string defaultDivisionName(int n);
std::string defaultConferenceName(int n);

// ---- Defaults, load and save ----------------------------------------------

// The rules of a league never written before: every default for a league
// whose team 1 plays in `teamYear`.
RulesRecord defaultRules(int teamYear);

// The load-time pass over a record read from a file: stamp groups that
// don't hold their value get their defaults, values out of range go back to
// theirs, blank division and conference names are named. Returns whether
// anything changed, so a caller knows the record is worth saving.
bool upgradeRules(RulesRecord& rules, int teamYear);

// Reads HKRULES of the league folder. A missing or empty file gives every
// default; a file shorter than one record throws FileError and is left alone.
// `teamYear` is the TeamYear of team 1, which decides the defaults that
// depend on the era.
RulesRecord HkRulesLoad(const std::filesystem::path& leagueDir, int teamYear);

// Writes the record whole, replacing the file through a temporary file.
// Bytes beyond the first record of an existing file are kept.
void HkRulesSave(const std::filesystem::path& leagueDir, const RulesRecord& rules);

// Load, change and save in one step, for tools that set a few rules (the
// season import names the divisions and conferences this way).
RulesRecord modifyRules(const std::filesystem::path& leagueDir, int teamYear,
                        const std::function<void(RulesRecord&)>& change);

// Every field of the record with its offset and its value as text, in file
// order: numbers as numbers, text trimmed in quotes, byte lists with commas.
struct RuleFieldValue {
    std::string name;
    std::size_t offset;
    std::string value;
};
std::vector<RuleFieldValue> ruleFieldValues(const RulesRecord& rules);

// TeamYear of team 1 in the league's HKTEAMS; 0 when there is none.
int leagueYear(const std::filesystem::path& leagueDir);

}  // namespace tallyrink

namespace tallyrink::codec {

template <>
struct Layout<RulesRecord> {
    static constexpr std::size_t size = kRulesRecordSize;
};

TALLYRINK_EXTERN_RECORD_CODEC(RulesRecord)

}  // namespace tallyrink::codec
