#pragma once

// What a finished game leaves for the post-game, as plain values. Posting,
// the box file and the printed box score read a game only through this
// struct, so the engine's state can change shape without them noticing:
// summarizeGame is the one place that knows both sides.
//
// The players' own game lines are not copied here: they stand in the `Game`
// stat line of each roster record of the session, where play credits them.
//
// Sides are 0 (visitor) and 1 (home); slots are 0-based roster slots, and
// kNoSlot marks "nobody".

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "engine/team_load.h"
#include "team/lineup_tools.h"

namespace tallyrink {

class Game;

inline constexpr int kPeriodSlots = 10;
// The mark of a man whose injury keeps him out past this game.
inline constexpr int kHurtInGame = 99;

struct GoalSummary {
    int period = 1;
    int clock = 0;  // seconds left in the period
    int side = 0;
    int scorer = kNoSlot;
    std::array<int, 2> assists{kNoSlot, kNoSlot};
    int strengthEdge = 0;  // scorer's skaters less the other side's
    bool emptyNet = false;
    bool penaltyShot = false;
};

struct PenaltySummary {
    int period = 1;
    int clock = 0;
    int side = 0;
    int slot = kNoSlot;
    int minutes = 2;
    std::string name;  // "Tripping", ...
};

struct SideSummary {
    int team = 0;
    std::string code;  // Abbrev
    std::string city;
    std::string nickname;
    int score = 0;  // goals without the shootout
    int shootoutScore = 0;
    int shots = 0;
    int penaltyMinutes = 0;  // the bench's too
    int powerPlays = 0;
    int powerPlayGoals = 0;
    int timeOfAttack = 0;  // seconds
    int chancesFor = 0;
    std::array<int, kPeriodSlots> goalsByPeriod{};
    std::array<int, kPeriodSlots> shotsByPeriod{};
    int startingGoalie = kNoSlot;
    BySlot<int> injuredInGame{};    // above 0: hurt in this game; kHurtInGame: out beyond it
    BySlot<int> injuryGames{};      // games a man hurt in play misses after this one
    BySlot<int> shootoutGoalsOf{};  // goals in the shootout
    BySlot<bool> newSuspension{};   // suspended by this game
};

struct FinishedGame {
    std::array<SideSummary, 2> side{};
    int periods = 3;         // of the rules
    int lastPeriod = 3;      // the period the game ended in
    int clock = 0;           // seconds left when it ended
    int shootoutRounds = 0;  // 2 or more: the game went to a shootout
    bool overtimePlayed = false;
    int winningGoalie = kNoSlot;  // on the winning side, the goalie in net at the last goal
    int losingGoalie = kNoSlot;   // on the losing side
    bool neutralIce = false;
    bool playoff = false;
    bool exhibition = false;
    int calendarMonth = 0;
    int day = 0;
    int year = 0;
    std::size_t scheduleRow = 0;  // 0: not known
    std::vector<GoalSummary> goals;
    std::vector<PenaltySummary> penalties;
    std::vector<std::string> shootoutLines;
    std::vector<std::string> playLines;

    [[nodiscard]] int totalWithShootout(int s) const {
        const SideSummary& x = side[static_cast<std::size_t>(s)];
        return x.score + x.shootoutScore;
    }
    [[nodiscard]] bool wentToShootout() const { return shootoutRounds >= 2; }
    // The side with more goals, the shootout deciding a level game; -1 for a tie.
    [[nodiscard]] int winnerSide() const;
    // Goals as the schedule shows them: the shootout's winner gets one.
    [[nodiscard]] int finalScore(int s) const;
};

// The summary of a game that has ended. `scheduleRow` is the row it was
// played from (0 for none).
FinishedGame summarizeGame(const Game& game, std::size_t scheduleRow, int calendarMonth, int day, int year);

// Clears the `Game` line and the this-game entries of every player of the
// session, so play starts crediting from zero and a game is never posted
// with what an earlier one left in the records.
void clearGameEntries(GameSession& session);

}  // namespace tallyrink
