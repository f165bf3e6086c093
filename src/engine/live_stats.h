#pragma once

// Statistics raised while a game is played. Every count goes to two stat
// lines of the player at hand: the Game line (this game, read by the box
// score and the posting) and the Replay line (the season so far, which the
// next step's rates already read). Team figures of the game stand in the
// game state; the goal types of a team go to the game entries of its record.
//
// Each function credits one kind of event, so the penalty, fight and
// posting code can raise the same lines the same way.

#include <array>
#include <string_view>

#include "league/records.h"
#include "team/lineup_tools.h"

namespace tallyrink {

class GameSession;

// Adds `add` to a player's Game and Replay lines.
template <class Add>
void creditBoth(PlayerRecord& p, Add add) {
    add(statLine(p, StatLineIndex::Game));
    add(statLine(p, StatLineIndex::Replay));
}

// A new game: the Game lines of all rows and the game entries of the team
// record's goal types start from nothing.
void clearGameLines(BySlot<PlayerRecord>& roster, TeamRecord& team);

void creditShotOnGoal(PlayerRecord& shooter);
void creditSave(PlayerRecord& goalie);
void creditMissedShot(PlayerRecord& shooter);
void creditBlock(PlayerRecord& blocker);
void creditFaceoff(PlayerRecord& winner, PlayerRecord& loser);
void creditHit(PlayerRecord& hitter);
void creditTakeaway(PlayerRecord& p);
void creditGiveaway(PlayerRecord& p);

// Manpower at a goal, from the scoring side's view.
enum class GoalStrength : std::uint8_t { Even, PowerPlay, ShortHanded };

// The goal types a team counts, in the order of its record's fields.
enum class GoalType : std::uint8_t {
    FiveOnFive,
    FiveOnFour,
    FiveOnThree,
    FourOnFour,
    FourOnThree,
    ThreeOnThree,
    ThreeOnFour,
    ThreeOnFive,
    FourOnFive,
    EmptyNet,
    PenaltyShot,
};
// Its key in the play log: "5-4", "EMPTY", "PENALTY-SHOT" ...
std::string_view goalTypeKey(GoalType t);
// The type of a goal by the skaters of both sides (extra attackers not
// counted); an empty net or a penalty shot takes precedence.
GoalType goalTypeOf(int scorerSkaters, int otherSkaters, bool emptyNet, bool penaltyShot);
// The game entry of the type in the team record.
void creditGoalType(TeamRecord& team, GoalType t);

// Everything a goal credits, named by slots of the two sides' rosters
// (kNoSlot for nobody).
struct GoalCredit {
    int scorer = kNoSlot;
    int passer1 = kNoSlot;
    int passer2 = kNoSlot;
    int goalie = kNoSlot;              // the goalie scored on; kNoSlot with his net empty
    std::array<OnIce, 2> ice{};        // [0] the scoring side, [1] the other
    std::array<int, 2> skaters{5, 5};  // the same order, extra attackers not counted
    bool emptyNet = false;
    bool penaltyShot = false;
};

// Who gets the assists: a passer who is the scorer, a second passer who is
// the first, and a second passer without a first are dropped.
void cleanAssists(GoalCredit& g);

[[nodiscard]] GoalStrength strengthOf(const GoalCredit& g);

// Goals, assists and shot on goal, power-play and short-handed credit,
// empty-net goal, the goalie's goal allowed and plus/minus for everyone on
// the ice (not for power-play goals). The assists are cleaned first.
void creditGoal(GoalCredit g, BySlot<PlayerRecord>& scoring, BySlot<PlayerRecord>& other);

}  // namespace tallyrink
