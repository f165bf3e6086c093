#pragma once

// The unit ratings of a team during a game: how strong its roster is as a
// whole, and how strong the men on the ice are right now. They are worked
// out afresh at each line change and at the start of each play, so they
// allocate nothing and read only the records and flags handed in.

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "league/era.h"
#include "league/records.h"

namespace tallyrink {

// One player of a team as the unit ratings see him.
struct UnitPlayer {
    const PlayerRecord* record = nullptr;  // nobody at this place
    double averageMinutes = 0;             // real minutes per game
    int fatigueCount = 0;                  // penalties of fatigue in this game
    bool fatigued = false;                 // tired on the ice right now
    bool brokenStick = false;
    int usageBand = 0;  // 1 to 3 when he has played more than his real share, else 0
    // His indiscipline() when the caller has it at hand (it holds while his
    // real figures do); below 0 to have it worked out.
    double indiscipline = -1;
};

// Penalty minutes per 60 against the era's, on a scale where 5 is the era's
// average, for a man of `averageMinutes` real minutes a game.
double indiscipline(const PlayerRecord& p, double averageMinutes, const EraTable& era);

// A man's indiscipline as kept for the game (`kept`, 0 or more), or worked
// out now when none was kept.
inline double indisciplineOr(double kept, const PlayerRecord& p, double averageMinutes, const EraTable& era) {
    return kept >= 0 ? kept : indiscipline(p, averageMinutes, era);
}

// The discipline of a unit from its men's indiscipline, summed: 8 for men
// who never take a penalty, lower the more they do.
inline double unitDiscipline(double indisciplineSum, int skaters) {
    return (10 - (skaters > 0 ? indisciplineSum / skaters : 0)) * 0.8;
}

// Where the team stands at the moment of the call.
struct UnitSituation {
    int skaters = 5;             // this team's skaters
    int opponentSkaters = 5;     // the other team's
    bool extraAttacker = false;  // on-ice place 6 holds an extra attacker, not a goalie
    bool insideDefense = false;  // the zone asks for defense close to the net
};

// Defense close to the net counts in the attacking zone states, and in the
// puck team's own end for the team chasing the puck there.
bool usesInsideDefense(std::string_view playZone, bool hasPuck);

// The overuse band of a player (0 none, 1 to 3) by the league's bands in
// per cent of real use; a band of 0 is not used.
int usageBand(const std::array<std::uint8_t, 3>& bands, int replayGames, int realGames);

// A player's defense near the net and away from it, in the 0 to 10 scale,
// from how his blocks, takeaways, hits, skating and penalty killing lean.
struct AdjustedDefense {
    double inside = 0;
    double outside = 0;
};
AdjustedDefense adjustedDefense(const PlayerRecord& p);

struct UnitRatings {
    double teamOffense = 0;  // the roster, weighted by minutes
    double teamDefense = 0;
    double onIceOffense = 0;  // the men on the ice, about 0 to 10
    double onIceDefense = 0;
    double onIcePassing = 0;
    double onIceInside = 0;
    double onIceOutside = 0;
    double discipline = 0;
};

// Offense and defense of the whole roster (goalies and players without
// minutes left out), filling teamOffense and teamDefense.
void rosterRatings(std::span<const UnitPlayer> roster, const UnitSituation& situation, UnitRatings& out);

// The figures of the men on the ice, places 1 left wing, 2 center, 3 right
// wing, 4 and 5 defense, 6 goalie or extra attacker (array index 0 to 5).
void onIceRatings(const std::array<UnitPlayer, 6>& onIce, const UnitSituation& situation, const EraTable& era,
                  UnitRatings& out);

// Both at once.
UnitRatings HkSetTeamRatings(std::span<const UnitPlayer> roster, const std::array<UnitPlayer, 6>& onIce,
                             const UnitSituation& situation, const EraTable& era);

}  // namespace tallyrink
