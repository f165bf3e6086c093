#pragma once

// The three record kinds a league is made of (players, teams, game plans)
// and the two stat lines nested in them. Field names and byte offsets are
// those of the league files; the layouts below are checked at compile time
// to tile each record exactly. Arrays are 0-based in code: a table that the
// league's own texts number from 1 (roster slot 1, position 1) is index 0.

#include <array>
#include <cstddef>
#include <cstdint>

#include "league/codec.h"
#include "league/fixed_text.h"

namespace tallyrink {

struct StatLine {
    std::uint8_t GP{};  // games played
    std::uint8_t GS{};  // games started
    std::uint8_t Goals{};
    std::int16_t Assists{};
    std::int16_t PlusMinus{};  // unbiased in the record (a box score adds 20)
    std::int16_t Pim{};        // penalty minutes
    std::int32_t Toi{};        // time on ice in seconds
    std::int32_t ToiPP{};      // time on the power play, seconds
    std::int32_t ToiSH{};      // time short-handed, seconds
    std::int16_t Shifts{};
    std::int16_t Sog{};  // shots on goal
    std::uint8_t PPG{};  // power-play goals
    std::uint8_t PPA{};  // power-play assists
    std::uint8_t SHG{};  // short-handed goals
    std::uint8_t SHA{};  // short-handed assists
    std::int16_t FaceoffsWon{};
    std::int16_t FaceoffsLost{};
    std::uint8_t GWG{};  // game-winning goals
    std::int16_t MissedShots{};
    std::uint8_t PenaltyShotAttempts{};
    std::uint8_t PenaltyShotGoals{};
    std::int16_t Giveaways{};
    std::uint8_t EmptyNetGoals{};
    std::int16_t Hits{};
    std::int16_t Blocks{};
    std::int16_t Takeaways{};
    std::int16_t GoalsAllowed{};             // goalie
    std::uint8_t GoaliePenaltyShotsFaced{};  // goalie
    std::uint8_t GoaliePenaltyShotGoals{};   // goalie
    std::uint8_t GoalieWins{};               // goalie
    std::uint8_t GoalieLosses{};             // goalie
    std::uint8_t GoalieTies{};               // goalie
    std::int16_t Saves{};                    // goalie
    std::uint8_t Shutouts{};                 // goalie
    std::uint8_t GoalieOvertimeLosses{};     // goalie
};

struct TeamStatLine {
    std::int16_t GP{};
    std::int16_t GS{};
    std::int16_t Goals{};
    std::int16_t Assists{};
    std::int16_t Pim{};
    std::int32_t Toi{};    // seconds
    std::int32_t ToiPP{};  // seconds
    std::int32_t ToiSH{};  // seconds
    std::int16_t Shifts{};
    std::int16_t Sog{};
    std::int16_t PPG{};
    std::int16_t PPA{};
    std::int16_t SHG{};
    std::int16_t SHA{};
    std::int16_t FaceoffsWon{};
    std::int16_t FaceoffsLost{};
    std::int16_t GWG{};
    std::int16_t MissedShots{};
    std::int16_t PenaltyShotAttempts{};
    std::int16_t PenaltyShotGoals{};
    std::int16_t Giveaways{};
    std::int16_t EmptyNetGoals{};
    std::int16_t Hits{};
    std::int16_t Blocks{};
    std::int16_t Takeaways{};
};

struct PlayerRecord {
    std::int16_t PlayerId{};  // record number of this player in HKPLAYER (1 to 30000); 0 in a free slot
    std::int16_t TeamId{};    // owning team: 1 to 288 a team record number; 999 free agent; 777 a Total row of a traded
                            // player (only in the working copy HKPLAYER-Leaders); 1001 to 1288 a former-team row (team
                            // number + 1000); 0 empty
    std::uint8_t InactiveFlag{};  // 0 active, 99 inactive (not dressed)
    FixedText<15> FirstName{};
    FixedText<15> LastName{};
    FixedText<15> ShortName{};  // name used in play-by-play and box scores; at load a value of two characters or fewer
                                // is replaced by LastName
    std::int16_t PlayerYear{};  // season whose era figures apply to this player; 0 or below 1900 is replaced at load by
                                // the team's TeamYear
    std::uint8_t Reserved62{};  // kept, not interpreted
    std::uint8_t Age{};         // years
    std::int32_t Salary{};      // in whole money units; a team-level rule may hide it
    FixedText<3> Reserved68{};  // kept, not interpreted
    std::uint8_t ShootoutGoals{};  // goals in shootouts this season; cleared by a replay reset
    FixedText<3> OriginalTeam{};   // team abbreviation at the start of the season; blank for a player who started as a
                                   // free agent; a release writes the team number here as text
    std::uint8_t OriginalTeamStamp{};  // 22 once OriginalTeam was filled
    std::uint8_t FormStamp{};          // 99 once FormBias was drawn
    std::int16_t FormBias{};           // personal form, -10 to 10, drawn once
    FixedText<2> UniformNumber{};
    std::uint8_t UniformStamp{};                  // 22 once the uniform number was looked up
    std::uint8_t EncyclopediaSeasons{};           // set and cleared by the encyclopedia tools
    std::uint8_t EncyclopediaFlag{};              // set and cleared by the encyclopedia tools
    std::uint8_t SportsmanshipStamp{};            // 88 once the historical sportsmanship rating was applied
    std::uint8_t Enforcer{};                      // 1 enforcer, 0 not
    std::uint8_t EnforcerStamp{};                 // 55 once Enforcer was derived from the penalty record
    std::uint8_t AlwaysActiveWhenAvailable{};     // 1 on
    FixedText<4> HandedOrClass{};                 // four characters shown in brackets on the player card
    std::uint8_t StrengthOfSchedule{};            // college players only: copy of the team's StrengthOfSchedule
    std::array<std::uint8_t, 5> PositionFlags{};  // 1 if the player can play: [0] left wing, [1] center, [2] right
                                                  // wing, [3] defense, [4] goalie
    std::uint8_t Reserved93{};                    // kept, not interpreted
    std::uint8_t AvailStartMonth{};               // roster availability start, month code (see Dates)
    std::uint8_t AvailEndMonth{};                 // roster availability end, month code
    std::uint8_t AvailStartDay{};  // day of month, capped at load to 29 in February, 30 in the 30-day months
    std::uint8_t AvailEndDay{};    // day of month, same caps
    std::array<std::uint8_t, 5> InactiveStartMonth{};  // five inactive periods
    std::array<std::uint8_t, 5> InactiveStartDay{};
    std::array<std::uint8_t, 5> InactiveStopMonth{};
    std::array<std::uint8_t, 5> InactiveStopDay{};
    std::uint8_t RatingFaceoff{};               // 0 to 10
    std::uint8_t RatingPassing{};               // 0 to 10, capped at load
    std::uint8_t RatingShotIn{};                // scoring from inside, 0 to 10, capped at load
    std::uint8_t RatingShotOut{};               // scoring from outside, 0 to 10, capped at load
    std::uint8_t RatingSkate{};                 // 0 to 10
    std::uint8_t RatingPenaltyShot{};           // 0 to 10, capped at load
    std::uint8_t RatingSportsmanship{};         // 0 to 10
    std::uint8_t RatingBlock{};                 // 0 to 10
    std::uint8_t RatingHit{};                   // 0 to 10
    std::uint8_t RatingTakeaway{};              // 0 to 10 (ForceTOtext in the editor)
    std::uint8_t Reserved0b6{};                 // kept, not interpreted
    std::uint8_t RatingPenaltyKill{};           // 0 to 3: shown as none, one, two or three stars
    std::uint8_t RatingGoalie{};                // tenths: 0 to 100 stands for 0.0 to 10.0
    std::uint8_t RatingOffense{};               // tenths: 0 to 100, capped at load
    std::uint8_t RatingDefense{};               // tenths: 0 to 100, capped at load
    std::array<std::uint8_t, 5> Reserved0bb{};  // kept, not interpreted
    std::uint8_t DurabilityStamp{};             // 222 once the one-time fields below were cleared
    std::uint8_t
        TotalRowFlag{};  // nonzero on a row that must not be merged into a Total row; cleared by a replay reset
    FixedText<5>
        TotalRowTeams{};  // on a Total row of the working copy the first letters of the teams; cleared otherwise
    std::array<std::uint8_t, 5> Reserved0cc{};  // kept, not interpreted
    std::uint8_t RatingDurability{};            // 0 to 10; recomputed at load from games played
    std::array<StatLine, 9> Stats{};            // the nine stat lines, indexed by StatLineIndex
    std::uint8_t Reserved314{};                 // cleared by resets
    std::uint8_t FirstStars{};                  // first-star selections this season
    std::uint8_t SecondStars{};
    std::uint8_t ThirdStars{};
    std::uint8_t PointStreak{};       // games in a row with a point
    std::uint8_t GoalStreak{};        // games in a row with a goal
    std::uint8_t AssistStreak{};      // games in a row with an assist
    std::uint8_t Reserved31b{};       // cleared by resets
    std::uint8_t ConsecutiveGames{};  // games in a row played; capped at 99 at load
    std::uint8_t ShutoutStreak{};  // goalie: games in a row without a goal against, counted only for games of more than
                                   // 3000 seconds on ice and 10 or more saves
    std::uint8_t SaveStreak{};     // goalie: saves in a row, kept between games
    std::array<std::int16_t, 2> Majors{};           // major penalties: replay, this game
    std::array<std::uint8_t, 2> Misconducts{};      // replay, this game
    std::array<std::uint8_t, 2> GameMisconducts{};  // replay, this game
    std::array<std::uint8_t, 2> MatchPenalties{};   // replay, this game
    std::int16_t SuspensionGamesServed{};           // replay
    std::uint8_t Reserved32c{};                     // cleared by resets
    std::uint8_t HighPointsGame{};                  // most points in one game this season
    std::uint8_t Reserved32e{};                     // kept, not interpreted
    std::uint8_t InjuryReturnMonth{};               // season month of the return; 0 healthy
    std::uint8_t InjuryReturnDay{};                 // day of the return; 0 healthy or out for this game only
    std::uint8_t GamesSinceReset{};  // raised by one at each load while no game is on, unless the player is being
                                     // rested; cleared by a replay reset, values over 99 reset to 0
    std::uint8_t Reserved332{};      // cleared by resets
    FixedText<3> SeasonStartTeam{};  // team abbreviation, or "FA", written by the league reset
    std::uint8_t Reserved339{};      // kept, not interpreted
    FixedText<1> PlayerType{};       // "C" college, "P" professional; blank is set at load from the team's TeamType
    std::array<std::uint8_t, 21>
        LineRoleStored{};  // stored copy of the live line table: role of this player on lines 1 to 21
    std::array<std::uint8_t, 9> Reserved351{};      // kept, not interpreted
    std::array<std::uint8_t, 21> LineFlagStored{};  // stored copy of the second live line table
    std::array<std::uint8_t, 9> Reserved36f{};      // kept, not interpreted
    std::uint8_t DepthExtraAttacker{};  // rank 1 to 10 on the extra-attacker chart, 0 none; shown as 11 minus the rank
    std::uint8_t DepthShootout{};       // rank on the shootout chart
    std::array<std::uint8_t, 4> DepthEven{};  // ranks on the even-strength depth charts: left wing, right wing, center,
                                              // defense in the order of the roster grid
    std::uint8_t DepthGoalie{};  // rank on the goalie chart: 10 is the first choice, down to 1, 0 no candidate
    std::array<std::uint8_t, 4> DepthPowerPlay{};    // ranks on the power-play charts
    std::array<std::uint8_t, 3> DepthPenaltyKill{};  // ranks on the penalty-kill charts
    std::uint8_t HeightFeet{};
    std::uint8_t HeightInches{};
    std::int16_t Weight{};                  // pounds
    std::array<std::uint8_t, 3> Fights{};   // real, replay, this game
    std::uint8_t RatingsAdjustStamp{};      // 99 once the usage values were set to 3
    std::uint8_t UsageSogAggressiveness{};  // 1 to 5, UsageList entry plus one: "Very Conservative", "Conservative",
                                            // "Real Life", "Aggressive", "Very Aggressive!"; default 3
    std::uint8_t ZoneStamp{};               // 99 once DepthPenaltyKill third entry was cleared for non-defensemen
    std::uint8_t Reserved390{};             // kept, not interpreted
    std::uint8_t UsageOffensiveZone{};      // 1 to 4, same list
    std::uint8_t UsageDeflect{};            // 1 to 4, same list
    std::uint8_t UsagePenetrate{};          // 1 to 4, same list
    std::array<std::uint8_t, 4> Reserved394{};  // kept, not interpreted
    std::uint8_t ExtraLinesStamp{};  // 111 once the two extra line roles below were copied from lines 20 and 21
    std::array<std::uint8_t, 2> ExtraLineRole{};  // roles on lines 22 and 23
    std::array<std::uint8_t, 2> ExtraLineFlag{};  // second table, lines 22 and 23
    FixedText<3> Reserved39d{};                   // kept, not interpreted
    std::uint8_t OnIceStamp{};                    // 99 once the on-ice counters below were cleared
    std::array<std::int16_t, 2> OnIceGoals{};     // goals for, goals against while on the ice
    std::array<std::int16_t, 2> OnIceShots{};     // shots on goal for, against while on the ice
    std::array<std::int16_t, 2> OnIceMissed{};    // missed shots for, against
    std::array<std::int16_t, 2> OnIceBlocked{};   // blocked shots for, against
    std::array<std::int16_t, 2> RosterGames{};    // games played in a row: the replay entry is raised when the player
                                                  // played and cleared otherwise; this game
    std::uint8_t GoalieRestGames{};        // goalie: games to rest between starts, from 4 to 99, computed at load
    std::array<std::int16_t, 2> Minors{};  // minor penalties: replay, this game
    FixedText<25> PhotoFile{};  // file name of the player photo (WMF, BMP or JPG); anything else is replaced at load by
                                // the team's LogoFile
    std::array<std::array<std::uint8_t, 5>, 30> LinePlayersA{};  // stored line sets
    std::array<std::array<std::uint8_t, 5>, 30> LinePlayersB{};  // stored line sets
    std::uint8_t SuspensionGamesLeft{};                          // games still to sit out, 0 to 99
    std::uint8_t OnlyActiveInEmergencies{};                      // 1 on
    std::uint8_t Reserved51e{};                                  // kept, not interpreted
    std::uint8_t HitRatingStamp{};                               // 99 once the hit rating was rescaled for its era
    std::array<std::int16_t, 100> InactiveDates{};  // dates on which the daily lineup marked the player inactive: month
                                                    // times 100 plus day; 0 empty
    std::array<std::array<std::int16_t, 6>, 2>
        ShotsBySpot{};  // shots by spot: replay row, then this-game row, six columns
    std::array<std::array<std::uint8_t, 6>, 2> GoalsBySpot{};  // goals by spot, same shape
    std::uint8_t SpotStamp{};                                  // 99 once the spot tables were cleared
    std::uint8_t PowerPlayShotStamp{};                         // 99 once PowerPlayShots was cleared
    std::array<std::int16_t, 2> PowerPlayShots{};              // replay, this game
    std::uint8_t NicknameStamp{};                              // 22 once the nickname was looked up
    FixedText<25> Nickname{};
    std::uint8_t LastGameStamp{};  // 22 once the last-game fields were cleared
    std::uint8_t LastGameGoals{};
    std::uint8_t LastGameAssists{};
    std::uint8_t LastGamePim{};
    std::uint8_t LastGameGoalsAllowed{};
    std::uint8_t LastGameSaves{};
    std::uint8_t LastGameWon{};       // 1 if a shutout win by a goalie in the last game
    FixedText<15> LastOpponent{};     // city of the last opponent, cut to 15 characters
    std::uint8_t RealPenaltyStamp{};  // 99 once the real penalty counts were cleared
    std::uint8_t RealMinors{};
    std::uint8_t RealMajors{};
    std::uint8_t RealMisconducts{};
    std::uint8_t RealGameMisconducts{};
    std::uint8_t RealMatchPenalties{};
    std::uint8_t ChancesStamp{};                      // 99 once ScoringChances was cleared
    std::array<std::int16_t, 2> ScoringChances{};     // replay, this game
    std::uint8_t PreferenceStamp{};                   // 66 once the preference block was defaulted
    std::uint8_t Reserved677{};                       // kept, not interpreted
    std::uint8_t PullWhenFatigueBelow{};              // per cent; default 80
    std::uint8_t Preference679{};                     // copied with the game plan
    std::uint8_t NeverUseOnPowerPlay{};               // 1 on
    std::uint8_t NeverUseAsExtraAttacker{};           // 1 on
    std::uint8_t Preference67c{};                     // value of a two-way list; copied with the game plan
    std::uint8_t DoubleShiftWhenBehindLate{};         // 1 on
    std::uint8_t NeverUseOnPenaltyKill{};             // 1 on
    std::uint8_t NeverUseLateInGameWithLead{};        // 1 on
    std::uint8_t Preference680{};                     // value of a two-way list; copied with the game plan
    std::uint8_t NeverUseOnFaceoffs{};                // 1 on
    std::uint8_t PreferredSide{};                     // 0 either, 1 left, 2 right
    std::uint8_t GoalieTargetStarts{};                // goalie: starts wanted this season; 0 none
    std::uint8_t GoaliePullAfterGoalsAllowed{};       // 0 never, at most 8
    std::uint8_t GoalieNeverPullInGamesStarted{};     // 1 on
    std::uint8_t GoalieStatStamp{};                   // 99 once GoalsAgainstOnIce was cleared
    std::array<std::uint8_t, 2> GoalsAgainstOnIce{};  // goalie: replay, this game
    FixedText<7> Reserved689{};                       // kept, not interpreted
    std::uint8_t PenaltyDrawnStamp{};                 // 222 once the next two fields were cleared
    std::int16_t PenaltyShotsTaken{};                 // replay
    std::uint8_t GamesStarted{};                      // goalie: starts this season
    std::uint8_t PullStamp{};                         // 11 once GoaliePullAfterGoalsAllowed was cleared
    std::uint8_t InjuryTypeStamp{};                   // 99 once InjuryType was cleared
    std::uint8_t InjuryType{};                        // index into the injury names; 0 none
    std::uint8_t InjuryDetail{};                      // used by
    std::uint8_t HatTrickStamp{};                     // 99 once HatTricks was cleared
    std::uint8_t HatTricks{};                         // games with three or more goals, season
    std::uint8_t HiddenSalaryStamp{};                 // 99 once HiddenSalary was cleared
    std::int32_t HiddenSalary{};  // shown and edited only when the league rule for hidden salaries is on
};

struct TeamRecord {
    std::int16_t TeamActive{};  // 1 the team plays in this league; any other value a free slot
    FixedText<20> City{};
    FixedText<20> Nickname{};    // blank is replaced at load by City
    FixedText<20> CoachShort{};  // old coach name; copied once into CoachName
    FixedText<3> Abbrev{};       // three letters; blank is replaced at load by the first letters of City, and an
                                 // abbreviation holding any of / \ * ! @ ? # = is replaced by the first letter of City
    std::int32_t ForeColor{};    // home text colour, an RGB value as a Long
    std::int32_t BackColor{};    // home background colour
    std::int16_t TeamYear{};     // season year of this team
    FixedText<1> TeamType{};     // "P" professional, "C" college, "D" draft pool
    std::array<std::array<std::uint8_t, 48>, 2>
        TeamReserved08c{};  // 28 bytes and a String*20, twice; kept, not interpreted
    std::array<std::int16_t, 50>
        Roster{};  // PlayerId of the 50 roster slots, 0 for an empty slot; a value over 30000 is cleared at load
    std::array<TeamStatLine, 2> TeamFor{};      // replay totals, this game
    std::array<TeamStatLine, 2> TeamAgainst{};  // totals of the opponents: replay, this game
    std::int16_t Wins{};
    std::int16_t Losses{};  // regulation losses
    std::int16_t Ties{};
    std::int16_t OvertimeLosses{};
    std::array<std::uint8_t, 2> Reserved270{};  // kept, not interpreted
    std::uint8_t HomeWins{};                    // counted on the home team only
    std::uint8_t HomeLosses{};
    std::uint8_t DivisionWins{};
    std::uint8_t DivisionLosses{};
    StatLine TeamRealLine{};  // real-life team line; only its first fields are used and they are cleared by the reset
    std::array<std::uint8_t, 2> Reserved2b8{};  // kept, not interpreted
    FixedText<30> Arena{};                      // arena name
    std::uint8_t StrengthOfSchedule{};          // college teams: SkedScroll value
    FixedText<40>
        LogoFile{};  // default: City and "1.jpg"; a name not ending in BMP or JPG is replaced by City and ".jpg"
    std::uint8_t RoadColorStamp{};  // 1 once the road colours were set
    std::int32_t RoadForeColor{};   // defaults to ForeColor
    std::int32_t RoadBackColor{};   // defaults to BackColor; equal road colours are reset to the home colours
    FixedText<40> RinkFile{};       // ice picture for the vertical display
    std::uint8_t Reserved3a0{};     // kept, not interpreted
    std::array<std::array<std::int16_t, 10>, 2> GoalsByPeriod{};  // goals for by period 1 to 10, then goals against
    std::uint8_t Reserved3ca{};                                   // kept, not interpreted
    std::int32_t ThirdColor{};                                    // third colour of the team
    std::uint8_t CreateStampA{};                                  // 37 in a league made by the blank-league tool
    std::int16_t Reserved3d2{};                                   // cleared by the reset
    std::int16_t Reserved3d4{};                                   // cleared by the reset
    std::uint8_t CreateStampB{};                                  // 44 in a created team
    std::array<TeamStatLine, 2> TeamForHome{};                    // cleared by the league reset, read by nobody
    std::uint8_t AkaStamp{};                                      // 99 once AkaAbbrev was cleared
    std::array<FixedText<3>, 3> AkaAbbrev{};  // other abbreviations of the team (AkaText), used when matching history
    FixedText<119> Reserved463{};             // kept, not interpreted
    std::uint8_t EncyclopediaTeamFlag{};      // cleared by the encyclopedia tool
    FixedText<50> CoachEmail{};               // EmailText: mail address of the human coach of this team
    std::uint8_t CoachNameStamp{};            // 99 once CoachName was copied
    FixedText<41> CoachName{};
    std::uint8_t ChancesStamp{};  // 111 once the next two fields were cleared
    std::int16_t ScoringChancesFor{};
    std::int16_t ScoringChancesAgainst{};
    std::uint8_t EmailStamp{};     // 222 once CoachEmail was cleared
    FixedText<30> Reserved60f{};   // kept, not interpreted
    std::uint8_t Reserved64b{};    // kept, not interpreted
    std::uint8_t GoalTypeStamp{};  // 99 once the goal-type block below was cleared; it is cleared again when a season
                                   // value exceeds 3000
    std::int16_t Majors{};
    std::int16_t Minors{};
    std::int16_t Reserved652{};  // cleared by the reset
    std::int16_t Misconducts{};
    std::int16_t GameMisconducts{};
    std::int16_t Reserved658{};                           // cleared by the reset
    std::array<std::uint8_t, 2> Reserved65a{};            // cleared by the reset
    std::array<std::uint8_t, 2> Reserved65c{};            // cleared by the reset
    std::array<std::int16_t, 2> GoalsFiveOnFive{};        // goals at five on five: season, this game
    std::array<std::uint8_t, 2> GoalsFiveOnFour{};        // season, this game
    std::array<std::uint8_t, 2> GoalsFiveOnThree{};       // season, this game
    std::array<std::uint8_t, 2> GoalsFourOnFour{};        // season, this game
    std::array<std::uint8_t, 2> GoalsFourOnThree{};       // season, this game
    std::array<std::uint8_t, 2> GoalsThreeOnThree{};      // season, this game
    std::array<std::uint8_t, 2> GoalsThreeOnFour{};       // season, this game
    std::array<std::uint8_t, 2> GoalsThreeOnFive{};       // season, this game
    std::array<std::uint8_t, 2> GoalsFourOnFive{};        // season, this game
    std::array<std::uint8_t, 2> GoalsEmptyNet{};          // season, this game
    std::array<std::uint8_t, 2> GoalsPenaltyShot{};       // season, this game
    std::array<std::int16_t, 2> PowerPlays{};             // chances on the power play: season, this game
    std::array<std::int16_t, 2> PowerPlayGoals{};         // season, this game
    std::array<std::int16_t, 2> PenaltyKills{};           // times short-handed: season, this game
    std::array<std::int16_t, 2> PowerPlayGoalsAgainst{};  // season, this game
    std::uint8_t ShootoutWins{};
    std::uint8_t Shutouts{};
    std::array<std::int16_t, 2>
        FightsCount{};  // season, this game; a season value over 200 that also exceeds three a game is cleared at load
    std::uint8_t LogoStamp{};           // 11 once LogoFile was defaulted
    std::uint8_t HomeTies{};            // ties at home
    std::uint8_t HomeOvertimeLosses{};  // overtime losses at home
    std::int16_t Streak{};              // positive wins in a row, negative losses in a row, 99 after a tie
    std::array<FixedText<1>, 11>
        LastResults{};  // entry 0 unused; entries 1 to 10 the last results, newest first: "W", "L", "T" or "O"
    std::uint8_t StrategyStamp{};                // 33 once the strategy form has set its defaults
    FixedText<40> GoalSoundFile{};               // sound played on a home goal
    std::uint8_t HasGoalSound{};                 // 1 if GoalSoundFile holds a file
    std::uint8_t DraftCoachStamp{};              // 77 once the draft-time coach defaults ran
    std::uint8_t StreakStamp{};                  // 99 once Streak was cleared
    std::uint8_t ColorStamp{};                   // 111 once the colours were normalised
    std::uint8_t TimeZone{};                     // TimeZoneList index
    FixedText<40> RinkFileHorizontal{};          // default: RinkFile with "-h" before the extension
    std::uint8_t RinkStamp{};                    // 99 once RinkFileHorizontal was defaulted
    std::uint8_t UniformStamp{};                 // 99 once the uniform files were defaulted
    std::array<FixedText<50>, 2> UniformFile{};  // road then home: default "Uni-Road-" or "Uni-Home-", City, ".jpg"
    std::uint8_t CoachPhotoStamp{};              // 99 once CoachPhotoFile was defaulted
    FixedText<50> CoachPhotoFile{};              // default: CoachName and ".jpg"
    FixedText<40> ArenaFile{};                   // arena picture; default "Arena.jpg"
    std::uint8_t ArenaStamp{};                   // 199
    std::uint8_t RealRecordStamp{};              // 199 once the real record below was set
    std::uint8_t RealWins{};                     // WinText, at most 120
    std::uint8_t RealLosses{};                   // LossText, at most 120
    std::uint8_t RealTies{};                     // TieText, at most 120
    std::uint8_t RealOvertimeLosses{};           // OverTimeLossText, at most 120
    std::uint8_t AnthemStamp{};                  // 199 once Anthem was defaulted
    std::uint8_t Anthem{};  // AnthemList index: 1 for the Canadian cities named in the load step, else 0
    std::array<std::uint8_t, 21> SlotTail{};  // rest of the slot, kept as found
};

struct GamePlanRecord {
    std::int16_t GamePlanTeam{};        // team number of this plan
    std::int16_t GamePlanStamp{};       // 44 once the coach-style block was set up from the default coach
    std::int16_t Forecheck{};           // ForecheckScroll
    std::int16_t PKForecheck{};         // PKForecheckScroll
    std::int16_t DzDepth{};             // dzDepthScroll
    std::int16_t PKDzDepth{};           // PKdzDepthScroll
    std::int16_t DzAggressiveness{};    // dzAggressivenessScroll
    std::int16_t PKDzAggressiveness{};  // PKdzAggressivenessScroll
    std::uint8_t
        OffenseSystem{};       // offensive system: 0 BalancedOption, 1 PointOption, 2 CycleLowOption, 3 DefensiveOption
    std::uint8_t ZoneEntry{};  // ZoneEntryScroll; 0 is replaced at load by 3
    std::uint8_t DontPullGoalie{};                  // DontPullGoalieCheck, 1 on
    std::int16_t PullTrailingByTwo{};               // PullTrailingByTwoScroll, seconds left; default 100
    std::uint8_t WaitForPossessionTrailingByTwo{};  // 1 on
    std::int16_t PullTrailingByOne{};               // PullTrailingByOneScroll, seconds left; default 80
    std::uint8_t WaitForPossessionTrailingByOne{};  // 1 on
    std::array<std::uint8_t, 11> Reserved01b{};     // reserved
    std::uint8_t BalancedMatching{};                // BalancedMatchingOption
    std::uint8_t DefVsScoring{};                    // DefVsScoringOption
    std::uint8_t StartingFWDLine{};                 // list index plus 1
    std::uint8_t StartingDEFPair{};                 // list index plus 1
    std::uint8_t
        RotateLines{};  // RotateLinesOption; 1 on; a value over 1 is reset to 1 together with FillFromDepth = 0
    std::uint8_t FillFromDepth{};  // FillFromDepthOption
    std::uint8_t Reserved02c{};    // reserved
    std::uint8_t Breakout{};       // BreakoutScroll
    std::array<std::uint8_t, 8>
        BreakoutAdj{};  // BreakoutAdj...Scroll in this order: HighPotential, LowPotential, Leading, Trailing,
                        // Overmatched, Undermatched, ForecheckLessTwo, ForecheckMoreTwo
    std::uint8_t DontUseWhenHumanCoached{};                      // DontUseWhenHumanCoachedCheck, 1 on
    std::uint8_t NeverMoreThanTwo{};                             // NeverMoreThanTwoCheck, 1 on
    std::uint8_t NeverLessThanOne{};                             // NeverLessThanOneCheck, 1 on
    std::uint8_t NeverChangeByTwo{};                             // NeverChangeByTwoCheck, 1 on
    std::array<std::uint8_t, 3> IncreaseForecheckTrailingOne{};  // IncreaseForecheckTrailingOneCheck, three check boxes
    std::array<std::uint8_t, 3> IncreaseForecheckTrailingTwo{};  // IncreaseForecheckTrailingTwoCheck
    std::array<std::uint8_t, 3> DecreaseForecheckLeadingOne{};   // DecreaseForecheckLeadingOneCheck
    std::array<std::uint8_t, 3> DecreaseForecheckLeadingTwo{};   // DecreaseForecheckLeadingTwoCheck
    std::uint8_t Reserved046{};                                  // reserved
    std::array<std::uint8_t, 3> YankGoalie{};  // YankGoalieList, three list indexes; cleared at the first load
    std::uint8_t Reserved04a{};                // reserved
    std::uint8_t YankGoalieStamp{};            // 22 once YankGoalie was cleared
    std::array<std::array<std::uint8_t, 12>, 31>
        DailyGoalieChoice{};     // by day of month and month: per-date value used by the roster screen and the computer
                                 // general manager
    std::uint8_t Reserved1c0{};  // reserved
    std::uint8_t DontUseLineSpecificSettings{};   // DontUseLineSpecificSettingsCheck, 1 on
    std::uint8_t LineStrategyStamp{};             // 99 once the next three arrays were defaulted
    std::array<std::uint8_t, 30> LineOption{};    // one value for each of the 30 line sets; default 0
    std::array<std::uint8_t, 30> LineStrategy{};  // one value for each of the 30 line sets, 1 to 7; default 4, but 0
                                                  // for sets 11 to 16; a value over 3 at the first load is set to 1
    std::array<std::int16_t, 30> LineWord{};      // cleared at the first load
    std::array<std::uint8_t, 180> Reserved23c{};  // reserved
    std::array<std::uint8_t, 50> SlotAlwaysActive{};     // export copy of AlwaysActiveWhenAvailable by roster slot
    std::array<std::uint8_t, 50> SlotOnlyEmergencies{};  // export copy of OnlyActiveInEmergencies
    std::array<std::uint8_t, 50> SlotInactiveFlag{};     // export copy of InactiveFlag
    std::array<std::array<std::uint8_t, 50>, 30> SlotLineRole{};  // export copy of the live line table: set, then slot
    std::array<std::array<std::uint8_t, 50>, 30> SlotLineFlag{};  // export copy of the second live line table
    std::array<std::uint8_t, 50> SlotDepthExtraAttacker{};        // export copy
    std::array<std::uint8_t, 50> SlotDepthShootout{};             // export copy
    std::array<std::array<std::uint8_t, 50>, 4> SlotDepthEven{};  // export copy
    std::array<std::uint8_t, 50> SlotDepthGoalie{};               // export copy
    std::array<std::array<std::uint8_t, 50>, 4> SlotDepthPowerPlay{};    // export copy
    std::array<std::array<std::uint8_t, 50>, 3> SlotDepthPenaltyKill{};  // export copy
    std::array<std::uint8_t, 50> SlotRatingsAdjustStamp{};               // export copy
    std::array<std::uint8_t, 50> SlotUsageSogAggressiveness{};           // export copy
    std::array<std::uint8_t, 100> Reserved125e{};                        // reserved
    std::array<std::uint8_t, 50> SlotUsageOffensiveZone{};               // export copy
    std::array<std::uint8_t, 50> SlotUsageDeflect{};                     // export copy
    std::array<std::uint8_t, 50> SlotUsagePenetrate{};                   // export copy
    std::uint8_t PullStamp{};  // 22 once PullTrailingByOne and PullTrailingByTwo were defaulted
    std::array<std::array<std::array<std::uint8_t, 5>, 30>, 50>
        SlotLinePlayersA{};  // export copy of LinePlayersA by slot
    std::array<std::array<std::array<std::uint8_t, 5>, 30>, 50>
        SlotLinePlayersB{};  // export copy of LinePlayersB by slot
    std::array<std::array<std::int16_t, 50>, 100>
        SlotInactiveDates{};                   // export copy of InactiveDates: date index, then slot
    std::uint8_t ActivateAdditionalPlayers{};  // 1 on; default 1
    std::uint8_t ActivateStamp{};              // 99 once ActivateAdditionalPlayers was defaulted
    std::uint8_t DefenseRosterCount{};  // DefenseRosterCountList index, 0 to 3, meaning 4 to 7 defensemen; its default
                                        // is set once at load
    std::uint8_t DefenseRosterCountStamp{};                     // 123 once DefenseRosterCount was set
    std::uint8_t FaceoffOption{};                               // 1 if the first FaceoffOption button is on
    std::uint8_t FaceoffOptionStamp{};                          // 77 once FaceoffOption was defaulted
    std::uint8_t UseDailyLines{};                               // UseDailyLinesIfAvailableCheck, 1 on
    std::uint8_t UseDailyLinesStamp{};                          // 33 once UseDailyLines was cleared
    std::uint8_t ShadowStamp{};                                 // 99 once the shadow arrays were cleared
    std::array<std::int16_t, 5> ShadowWord{};                   // shadow assignments, cleared at the first load
    std::array<std::array<std::uint8_t, 5>, 2> ShadowTarget{};  // shadowing assignments of the strategy screen
    std::array<std::array<std::uint8_t, 5>, 2> ShadowPlayer{};  // shadowing assignments of the strategy screen
    std::uint8_t Reserved752a{};                                // reserved
    std::uint8_t SlotPreferenceStamp{};  // 199 once an export wrote the slot preference arrays below
    std::array<std::uint8_t, 50> SlotPullWhenFatigueBelow{};        // export copy of the preference of that name
    std::array<std::uint8_t, 50> Reserved755e{};                    // reserved
    std::array<std::uint8_t, 50> SlotPreference679{};               // export copy
    std::array<std::uint8_t, 50> SlotNeverUseOnPowerPlay{};         // export copy
    std::array<std::uint8_t, 50> SlotNeverUseAsExtraAttacker{};     // export copy
    std::array<std::uint8_t, 50> SlotPreference67c{};               // export copy
    std::array<std::uint8_t, 50> SlotDoubleShiftWhenBehindLate{};   // export copy
    std::array<std::uint8_t, 50> SlotNeverUseOnPenaltyKill{};       // export copy
    std::array<std::uint8_t, 50> SlotNeverUseLateInGameWithLead{};  // export copy
    std::array<std::uint8_t, 50> SlotPreference680{};               // export copy
    std::array<std::uint8_t, 50> SlotNeverUseOnFaceoffs{};          // export copy
    std::array<std::uint8_t, 50> SlotPreferredSide{};               // export copy
    std::array<std::uint8_t, 152> Reserved7784{};                   // reserved
    std::uint8_t LineSetSelector{};       // read by the lineup tools when lines are filled: 0, 1 or 3
    std::uint8_t UsageStamp{};            // 222 once the usage percentages were defaulted
    std::uint8_t DailyPreferenceStamp{};  // 99 once DailyLinePreference was cleared
    std::array<std::array<std::uint8_t, 12>, 31>
        DailyLinePreference{};       // DailyLinePreferenceList value by day and month
    std::uint8_t LineCountStamp{};   // 44 once LineCountChoice was defaulted
    std::uint8_t LineCountChoice{};  // default 1, but 2 for a team of a season before 2015; list index plus 1 on the
                                     // roster and strategy screens
    std::uint8_t ZoneLineStamp{};    // 99 once the next four fields were cleared
    std::uint8_t OffZoneFWD{};       // OffZoneFWDLineList index
    std::uint8_t OffZoneDEF{};       // OffZoneDEFLineList index
    std::uint8_t DefZoneFWD{};       // DefZoneFWDLineList index
    std::uint8_t DefZoneDEF{};       // DefZoneDEFLineList index
    std::array<std::uint8_t, 4> LineUsage{};       // per cent of ice time of forward lines 1 to 4; default 13, 11, 9, 7
    std::array<std::uint8_t, 3> PairUsage{};       // per cent of defense pairs 1 to 3; default 13, 11, 9
    std::array<std::uint8_t, 2> PowerPlayUsage{};  // per cent of power-play units; default 15, 10
    std::array<std::uint8_t, 2> PenaltyKillUsage{};  // per cent of penalty-kill units; default 15, 10
    std::uint8_t GamePlanTextStamp{};                // 55 once GamePlanText was blanked
    FixedText<200> GamePlanText{};                   // reserved text
    std::array<std::uint8_t, 663> SlotTail{};        // rest of the slot, kept as found
};

// One game of a schedule or scores file.
struct GameRecord {
    std::array<std::uint8_t, 2> ReservedGame0{};  // reserved
    std::array<FixedText<1>, 2> Coach{};          // "C" computer, "H" human; visitor, home
    std::uint8_t Month{};                         // calendar month 1 to 12
    std::uint8_t Day{};
    std::int16_t Year{};             // only row 1 is meaningful: at load the year of row 1 is copied to all rows
    FixedText<12> DateText{};        // date of playing in text, from the system clock
    std::uint8_t ResultStamp{};      // 99 in a SCORES row
    FixedText<16> ReservedGame21{};  // reserved
    std::uint8_t ResultStamp2{};     // 99 in a SCORES row
    std::array<std::uint8_t, 2> ShortHandGoals{};  // the game's goals at three on four, three on five and four on five
    std::array<std::uint8_t, 2> TeamAssists{};
    std::array<std::uint8_t, 2> Shots{};
    std::array<std::uint8_t, 2> Pim{};  // at most 254
    std::array<std::uint8_t, 2> PowerPlays{};
    std::array<std::uint8_t, 2> PowerPlayGoals{};
    std::array<std::uint8_t, 2> PowerPlays2{};      // the same value
    std::array<std::uint8_t, 2> PowerPlayGoals2{};  // the same value
    std::array<std::int16_t, 2> TimeOfAttack{};     // seconds
    std::array<std::uint8_t, 2> FaceoffsWon{};
    std::array<FixedText<10>, 2>
        RecordText{};  // the team's record after the game: wins, losses, ties, overtime losses with "-" between them
    FixedText<1> Status{};                  // "U" unplayed, "N" marked to play, "P" played and posted, "D" deleted
    std::array<std::int16_t, 2> ScoreOf{};  // score, with the shootout's goal for the winner
    std::array<FixedText<7>, 2> ReservedGame85{};  // reserved
    FixedText<15> BoxFile{};                       // name of the box file
    std::int16_t VisitorTeam{};                    // team number of the visitor
    std::int16_t HomeTeam{};                       // team number of the home side
    std::uint8_t ReservedGame118{};                // reserved
    FixedText<1> RowLocked{};                      // "N"
    std::uint8_t ExtraMark{};                      // 0 none, 1 overtime, 2 shootout
    std::array<FixedText<25>, 3> StarName{};       // three stars
    FixedText<1> RowType{};                        // "L" league
    std::uint8_t ReservedGame197{};                // reserved
    std::array<std::uint8_t, 2> SlotTail{};        // rest of the slot, kept as found
};

// Which of the nine stat lines of a player record.
enum class StatLineIndex : std::size_t {
    Real = 0,
    Replay = 1,
    Game = 2,
    ReservedLine3 = 3,
    ReplayHome = 4,
    ReservedLine5 = 5,
    ReservedLine6 = 6,
    Highs = 7,
    ReservedLine8 = 8,
};

// Selects a stat line in the reports: 1 real, 2 replay, 3 game.
enum class StatMode : int { Real = 1, Replay = 2, Game = 3 };

inline StatLine& statLine(PlayerRecord& p, StatLineIndex i) { return p.Stats[static_cast<std::size_t>(i)]; }
inline const StatLine& statLine(const PlayerRecord& p, StatLineIndex i) { return p.Stats[static_cast<std::size_t>(i)]; }
inline const StatLine& statLine(const PlayerRecord& p, StatMode m) { return p.Stats[static_cast<std::size_t>(m) - 1]; }

inline constexpr int kMaxTeams = 288;
inline constexpr int kTeamsPerDivision = 12;
inline constexpr int kDivisions = 24;
inline constexpr int kRosterSlots = 50;
inline constexpr int kMaxPlayerRecords = 32000;
inline constexpr int kMaxRosterPlayerId = 30000;
inline constexpr int kLineSets = 30;

// Team-id values of a player record other than a team number.
inline constexpr int kFreeAgent = 999;
inline constexpr int kTotalRow = 777;
inline constexpr int kFormerTeamBase = 1000;

inline constexpr bool isTeamNumber(int t) { return t >= 1 && t <= kMaxTeams; }
inline constexpr bool isFormerTeamRow(int t) { return t > kFormerTeamBase && t <= kFormerTeamBase + kMaxTeams; }
inline constexpr int divisionOfTeam(int t) { return (t + 11) / 12; }

// Season month (1 September .. 12 August) of a calendar month, and back.
inline constexpr int seasonMonth(int calendarMonth) {
    return calendarMonth >= 9 ? calendarMonth - 8 : calendarMonth + 4;
}
inline constexpr int calendarMonth(int seasonMonth) { return seasonMonth <= 4 ? seasonMonth + 8 : seasonMonth - 4; }

}  // namespace tallyrink

namespace tallyrink::codec {

template <>
struct Layout<StatLine> {
    static constexpr std::size_t size = 58;
};

template <>
struct Layout<TeamStatLine> {
    static constexpr std::size_t size = 56;
};

template <>
struct Layout<PlayerRecord> {
    static constexpr std::size_t size = 1500;
};

template <>
struct Layout<TeamRecord> {
    static constexpr std::size_t size = 1479;
    static constexpr std::size_t slot = 1500;
};

template <>
struct Layout<GamePlanRecord> {
    static constexpr std::size_t size = 31337;
    static constexpr std::size_t slot = 32000;
};

template <>
struct Layout<GameRecord> {
    static constexpr std::size_t size = 198;
    static constexpr std::size_t slot = 200;
};

TALLYRINK_EXTERN_RECORD_CODEC(StatLine)
TALLYRINK_EXTERN_RECORD_CODEC(TeamStatLine)
TALLYRINK_EXTERN_RECORD_CODEC(PlayerRecord)
TALLYRINK_EXTERN_RECORD_CODEC(TeamRecord)
TALLYRINK_EXTERN_RECORD_CODEC(GamePlanRecord)
TALLYRINK_EXTERN_RECORD_CODEC(GameRecord)

}  // namespace tallyrink::codec
