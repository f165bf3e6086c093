#pragma once

// The load-time upgrades of the three record kinds. A group of fields that
// came in after the first form of a record has a stamp byte beside it; a
// stamp that doesn't hold its value means the group has never had its
// default, so a record of an earlier edition (or one never loaded) gets it
// here. Each stamp value and what it brings is named once, below; values
// are never reused.
//
// Besides the stamps, bad values go back to what they should be. Everything
// here is idempotent: a second pass over an upgraded record changes nothing.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "league/records.h"

namespace tallyrink {

// ---- Team record ------------------------------------------------------------
inline constexpr std::uint8_t kAkaStamp = 99;           // AkaAbbrev cleared
inline constexpr std::uint8_t kTeamChancesStamp = 111;  // scoring chances cleared
inline constexpr std::uint8_t kEmailStamp = 222;        // CoachEmail cleared
inline constexpr std::uint8_t kCoachNameStamp = 99;     // CoachShort copied into CoachName
inline constexpr std::uint8_t kColorStamp = 111;        // time zone set, colours made plain RGB
inline constexpr std::uint8_t kStreakStamp = 99;        // Streak cleared
inline constexpr std::uint8_t kGoalTypeStamp = 99;      // goal-type block (Majors .. GoalsPenaltyShot) cleared
inline constexpr std::uint8_t kRoadColorStamp = 1;      // road colours set from the home colours
inline constexpr std::uint8_t kArenaStamp = 199;        // ArenaFile defaulted
inline constexpr std::uint8_t kRealRecordStamp = 199;   // real record checked
inline constexpr std::uint8_t kTeamUniformStamp = 99;   // uniform files defaulted
inline constexpr std::uint8_t kCoachPhotoStamp = 99;    // CoachPhotoFile defaulted
inline constexpr std::uint8_t kLogoStamp = 11;          // LogoFile defaulted
inline constexpr std::uint8_t kRinkStamp = 99;          // RinkFileHorizontal defaulted
inline constexpr std::uint8_t kAnthemStamp = 199;       // Anthem defaulted by city

// ---- Game plan ----------------------------------------------------------------
inline constexpr std::int16_t kGamePlanStamp = 44;             // coach style set by the default coach
inline constexpr std::uint8_t kZoneLineStamp = 99;             // zone-start line preferences cleared
inline constexpr std::uint8_t kLineCountStamp = 44;            // LineCountChoice defaulted
inline constexpr std::uint8_t kUsageStamp = 222;               // line usage shares defaulted
inline constexpr std::uint8_t kDailyPreferenceStamp = 99;      // DailyLinePreference cleared
inline constexpr std::uint8_t kShadowStamp = 99;               // shadow assignments cleared
inline constexpr std::uint8_t kUseDailyLinesStamp = 33;        // UseDailyLines cleared
inline constexpr std::uint8_t kActivateStamp = 99;             // ActivateAdditionalPlayers defaulted
inline constexpr std::uint8_t kPlanPullStamp = 22;             // goalie pull times defaulted
inline constexpr std::uint8_t kDefenseRosterCountStamp = 123;  // DefenseRosterCount set by era
inline constexpr std::uint8_t kYankGoalieStamp = 22;           // YankGoalie cleared
inline constexpr std::uint8_t kGamePlanTextStamp = 55;         // GamePlanText blanked, set 4 checked
inline constexpr std::uint8_t kLineStrategyStamp = 99;         // line strategies defaulted
inline constexpr std::uint8_t kFaceoffOptionStamp = 77;        // FaceoffOption set from the draws

// ---- Player record --------------------------------------------------------------
inline constexpr std::uint8_t kOriginalTeamStamp = 22;   // OriginalTeam filled
inline constexpr std::uint8_t kFormStamp = 99;           // FormBias drawn
inline constexpr std::uint8_t kUniformStamp = 22;        // uniform number looked up
inline constexpr std::uint8_t kSportsmanshipStamp = 88;  // historical sportsmanship applied
inline constexpr std::uint8_t kEnforcerStamp = 55;       // Enforcer derived from the penalty record
inline constexpr std::uint8_t kDurabilityStamp = 222;    // Total-row marks cleared
inline constexpr std::uint8_t kRatingsAdjustStamp = 99;  // usage settings set to "Real Life"
inline constexpr std::uint8_t kZoneStamp = 99;           // penalty-kill defense rank kept for defensemen only
inline constexpr std::uint8_t kExtraLinesStamp = 111;    // lines 22 and 23 copied from 20 and 21
inline constexpr std::uint8_t kOnIceStamp = 99;          // on-ice counters cleared
inline constexpr std::uint8_t kHitRatingStamp = 99;      // hit rating rescaled for its era
inline constexpr std::uint8_t kSpotStamp = 99;           // shot and goal spots cleared
inline constexpr std::uint8_t kPowerPlayShotStamp = 99;  // PowerPlayShots cleared
inline constexpr std::uint8_t kNicknameStamp = 22;       // nickname looked up
inline constexpr std::uint8_t kLastGameStamp = 22;       // last-game fields cleared
inline constexpr std::uint8_t kRealPenaltyStamp = 99;    // real penalty counts cleared
inline constexpr std::uint8_t kPlayerChancesStamp = 99;  // ScoringChances cleared
inline constexpr std::uint8_t kPreferenceStamp = 66;     // preference block defaulted
inline constexpr std::uint8_t kGoalieStatStamp = 99;     // GoalsAgainstOnIce cleared
inline constexpr std::uint8_t kPenaltyDrawnStamp = 222;  // PenaltyShotsTaken, GamesStarted cleared
inline constexpr std::uint8_t kPlayerPullStamp = 11;     // GoaliePullAfterGoalsAllowed cleared
inline constexpr std::uint8_t kInjuryTypeStamp = 99;     // InjuryType cleared
inline constexpr std::uint8_t kHatTrickStamp = 99;       // HatTricks cleared
inline constexpr std::uint8_t kHiddenSalaryStamp = 99;   // HiddenSalary cleared

// The team record's stamps and repairs, in the order of the load.
void upgradeTeamRecord(TeamRecord& t);

// The game plan's stamps that need nothing but the plan and the team's year.
void upgradeGamePlan(GamePlanRecord& plan, int teamYear);

// The player record's stamps that clear a group or look a value up, and the
// resets of values out of range, for a record read onto `team`'s roster.
void upgradePlayerRecord(PlayerRecord& p, const TeamRecord& team);

// The hit rating rescaled once for the seasons whose hit counts ran high or
// low, around the defense rating.
void rescaleHitRating(PlayerRecord& p);

// Caps of the stored ratings.
void capRatings(PlayerRecord& p);

// The time-zone list index of a city: 0 eastern, 1 central, 2 mountain, 3 pacific.
std::uint8_t timeZoneOfCity(const std::string& city);

// True when a file name ends with one of the extensions (case ignored),
// given without the dot.
bool endsWithExtension(std::string_view name, std::initializer_list<const char*> extensions);

}  // namespace tallyrink
