#pragma once

// The stored player ratings, worked out for one team from its players' real
// season lines ("Generate Default Player Data"). Each rating is a pass over
// the team, run in a fixed order because later passes read what earlier ones
// stored: defense, offense, passing, scoring, skating, sportsmanship, hits
// with blocks and takeaways, durability, penalty shots, penalty kill,
// faceoffs, goaltending.
//
// Everything here works on records in memory; the folder operations that
// read a team, rate it and write its players back are in rating_tool.h.

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "league/era.h"
#include "league/records.h"
#include "team/positions.h"

namespace tallyrink {

// The figures the tool asks for before it rates a team. They are prefilled
// from the era of the team's year and the team's own totals.
struct RatingInputs {
    double leagueShots = 30;       // LeagueShotsText: shots on goal per team per game, 1 to 60
    double teamShots = 30;         // TeamShotsText: the team's shots per game, 1 to 70
    double teamShotsAllowed = 30;  // TeamShotsAllowedText: shots against per game, 1 to 70
    double goalsPerGame = 6;       // GoalperGText: goals per game, both teams, 1 to 10
    double assistsPerGoal = 1.65;  // ASTperGoalText: 0.1 to 2
    int seasonLength = 82;         // SeasonLengthText: games of a team's season, 5 to 150
    double pimPerGame = 17;        // PIMperGText: penalty minutes per game, both teams, 1 to 99
    double savePct = 90;           // SavePctText: league save percentage, 60 to 99
};

// The message for the first figure outside its range, or nothing when all
// can be used. A refused set of figures rates nobody.
std::optional<std::string> refusalOf(const RatingInputs& inputs);

// Which ratings a run works out; a rating left out keeps its stored value.
struct RatingChecks {
    bool defense = true;
    bool offense = true;
    bool passing = true;
    bool scoring = true;
    bool skating = true;
    bool sportsmanship = true;
    bool hitsBlocksTakeaways = true;
    bool durability = true;
    bool penaltyShot = true;
    bool penaltyKill = true;
    bool faceoff = true;
    bool goalie = true;
};

// A player of the team being rated: his record, rated in place, and his
// real minutes per game as the team load works them out.
struct RatingSubject {
    PlayerRecord record;
    double averageMinutes = 0;
    // What the historical ratings file says of him (" Bk:7 Hit:5 ..."),
    // shown beside the generated values; empty when he isn't in it.
    std::string note;
};

// The season whose era figures apply to a player: his own year, or the
// team's when his is unset.
int yearOfPlayer(const PlayerRecord& p, int teamYear);

// Real minutes per game of a player, as the team load works them out: from
// his time on ice, else estimated from his points and the era's scoring.
// `college` picks the college columns of the era.
double realAverageMinutes(const PlayerRecord& p, int teamYear, const EraTable& era, bool college);

// The figures the tool works out per player when it opens.
struct PlayerFigures {
    double minutes = 0;        // real minutes of the season
    double production = 0;     // 100 x (goals + assists / assists per goal) when minutes are known
    double defenseEvents = 0;  // (hits / 2 + blocks + takeaways) per 60 minutes
};

// Sums over the team's skaters, over its defensemen and over its forwards.
struct GroupSums {
    int count = 0;
    double gp = 0;
    double minutes = 0;
    double points = 0;
    double production = 0;
    double events = 0;  // hits / 2 + blocks + takeaways
};

struct TeamFigures {
    GroupSums all;
    GroupSums defense;
    GroupSums forwards;
    bool haveDefenseEvents = false;  // the records hold real hits, blocks and takeaways
    double shortHandedMinutes = 0;   // of all skaters
    double faceoffs = 0;             // draws won and lost by all skaters
    int penaltyShotAttempts = 0;
    int goalies = 0;
};

PlayerFigures playerFiguresOf(const RatingSubject& s, double assistsPerGoal);
TeamFigures teamFiguresOf(std::span<const RatingSubject> team, double assistsPerGoal);

// Team levels of offense and defense from the team's shots for and against
// the league's (5 is the league's average).
double teamOffenseLevel(const RatingInputs& in);
double teamDefenseLevel(const RatingInputs& in);

// The inputs for a team, prefilled as the tool does: the era of the team's
// year (years before 1910 use 2009; college columns for a college team),
// then the team's own shots for and against from its players' lines when
// those add up to more than 500. Figures outside their ranges are brought
// inside so that a prefilled set is never refused.
RatingInputs prefilledInputs(std::span<const RatingSubject> team, const EraTable& era, int teamYear, bool college);

// The average goalie of the team (goalie rating weighted by games) and the
// save percentage it suggests against the inputs' figure.
struct GoalieEstimate {
    double averageGoalie = 0;  // 0.0 to 10.0
    double savePct = 0;
};
std::optional<GoalieEstimate> GetShotsFromGoalies(std::span<const RatingSubject> team, const RatingInputs& in);

// A player's offense value before the team step (10 stores as 100).
double offenseValue(const RatingSubject& s, const PlayerFigures& pf, const TeamFigures& tf, const RatingInputs& in,
                    int year);
// A skater's defense value before the short-handed and team steps.
double defenseValue(const RatingSubject& s, const PlayerFigures& pf, const TeamFigures& tf, const RatingInputs& in);
// The short-handed adjustment P of a skater.
double shortHandedAdjustment(const RatingSubject& s, const TeamFigures& tf, const RatingInputs& in);
double passingValue(const RatingSubject& s, const PlayerFigures& pf, const RatingInputs& in);
double scoringValue(const RatingSubject& s, const PlayerFigures& pf, const RatingInputs& in);
int sportsmanshipOf(double pimPer60, double eraPer60);
int sportsmanshipByMajors(double majorsPer1000);
// The era's penalty minutes per skater per 60 minutes that sportsmanship
// is measured against, for a player's year.
double sportsmanshipEraRate(const EraTable& era, int year, bool college);

// The passes of the tool, each over the whole team. They read the stored
// values of the passes before them.
struct RatingRun {
    RatingInputs inputs;
    RatingChecks checks;
    int teamYear = 0;
    bool college = false;
    const EraTable* era = nullptr;  // the program's era table
    // Names of historical enforcers ("FIRST LAST", upper case) who lose a
    // point of sportsmanship with more than 100 penalty minutes.
    std::vector<std::string> namedEnforcers;
};

void DefenseRating(std::span<RatingSubject> team, const RatingRun& run);
void OffenseRating(std::span<RatingSubject> team, const RatingRun& run);
void PassingRating(std::span<RatingSubject> team, const RatingRun& run);
void ScoringRating(std::span<RatingSubject> team, const RatingRun& run);
void SkatingRating(std::span<RatingSubject> team, const RatingRun& run);
void SportsmanshipRating(std::span<RatingSubject> team, const RatingRun& run);
void HitsBkSTkARating(std::span<RatingSubject> team, const RatingRun& run);
void DurabilityRating(std::span<RatingSubject> team, const RatingRun& run);
void PenaltyShotRating(std::span<RatingSubject> team, const RatingRun& run);
void PenaltyKillRating(std::span<RatingSubject> team, const RatingRun& run);
void FaceoffRating(std::span<RatingSubject> team, const RatingRun& run);
void GoalieRating(std::span<RatingSubject> team, const RatingRun& run);

// Whether a player is an enforcer by his real penalty record, as the team
// load decides it for a player not yet stamped.
bool isEnforcerByRecord(const PlayerRecord& p, double averageMinutes, const EraTable& era, int teamYear, bool college);

struct HistoricalRatings;

// All the ticked passes in order, then the historical file's sportsmanship
// and penalty-shot values, then the enforcer mark of players not yet
// stamped. Returns the refusal message, with nobody rated, when the
// inputs are out of range.
std::optional<std::string> GenerateData(std::span<RatingSubject> team, const RatingRun& run,
                                        const HistoricalRatings* history = nullptr);

}  // namespace tallyrink
