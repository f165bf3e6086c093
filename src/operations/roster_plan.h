#pragma once

// The players of one made-up team while they are being drawn: each has a
// role on the team, personal leanings, and the parts of his season that are
// later written into his real-life line.

#include <vector>

#include "league/random.h"
#include "league/records.h"
#include "operations/era_figures.h"
#include "operations/share_out.h"

namespace tallyrink {
struct TeamSeason;
}

namespace tallyrink::newleague {

enum class Role {
    Star,
    TopSix,
    Checking,
    Grinder,
    Enforcer,
    SpareForward,
    CallUpForward,
    OffensiveDefence,
    DefensiveDefence,
    TwoWayDefence,
    SpareDefence,
    CallUpDefence,
    StartingGoalie,
    BackupGoalie,
    CallUpGoalie,
};

// Positions by their index in `PositionFlags`.
enum Position { kLeftWing = 0, kCenter = 1, kRightWing = 2, kDefence = 3, kGoalie = 4 };

bool isForward(Role r);
bool isDefence(Role r);
bool isGoalie(Role r);
bool isCallUp(Role r);

// How a role spends its time and what it does with it, per minute on the
// ice (fights and starts per game). The figures are relative: team totals
// are shared out by them.
struct RoleProfile {
    double evenMinutes;  // at even strength, a game
    double powerPlay;
    double penaltyKill;
    double goals;
    double assists;
    double shots;
    double hits;
    double blocks;
    double takeaways;
    double giveaways;
    double minors;
    double fights;
    double starts;
};
const RoleProfile& profileOf(Role r);

struct Member {
    Role role = Role::SpareForward;
    int position = kCenter;
    bool regular = false;  // in the lineup whenever healthy
    int forwardLine = -1;  // forwards: line 0 to 3 of the lineup; -1 an extra

    // Personal leanings around 1.
    double scoring = 1, playmaking = 1, shooting = 1, defending = 1, toughness = 1, discipline = 1, faceoffs = 1;
    double goalieQuality = 0;  // goalies: a normal draw, the starter's raised

    int games = 0;
    int starts = 0;  // goalies: games started
    int relief = 0;  // goalies: games entered in relief

    // Seconds at even strength, on the power play, short-handed; for a
    // goalie, his seconds in goal.
    Count even = 0, powerPlay = 0, shortHanded = 0;
    Count minors = 0, majors = 0, fights = 0, misconducts = 0, gameMisconducts = 0, matches = 0;
    StatLine line{};
};

// Roles, positions and leanings of a roster of 23 to 26 with enough
// forwards for four lines and defencemen for three pairs, and games played
// that fill the year's lineups exactly.
std::vector<Member> planRoster(Random& rng, const EraTargets& era, int year);

// Splits the team's season among the roster into each player's real line
// and penalty counts: every team total is the sum of its players' parts.
void drawLines(Random& rng, std::vector<Member>& roster, const TeamSeason& season, int year);

}  // namespace tallyrink::newleague
