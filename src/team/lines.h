#pragma once

// Lines and depth charts. A team's use of its players is kept twice: the
// depth charts rank players for each kind of job (10 the first choice down
// to 1, 0 not a candidate), and the line tables say who plays where on each
// situation line. The depth charts are built from the players' ratings and
// real-life use; the lines from the depth charts.
//
// Situation lines are numbered 1 to 30 as the coach sees them; slots are the
// 0-based roster slots of the team.

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "league/records.h"

namespace tallyrink {

template <class T>
using BySlot = std::array<T, kRosterSlots>;

// Situation lines held in the player record: 1 to 21 in LineRoleStored and
// LineFlagStored, 22 and 23 in the ExtraLine fields.
inline constexpr int kStoredLineSets = 21;
inline constexpr int kLoadedLineSets = 23;

// Roles on a line. A forward role lives in the line table, a defence role in
// the pair table; a player has at most one role on a line.
enum class ForwardRole : std::uint8_t { None = 0, LeftWing = 1, Center = 2, RightWing = 3 };
enum class PairRole : std::uint8_t { None = 0, Left = 1, Right = 2 };

// The two live tables of a team, for all 30 situation lines.
struct LineTables {
    std::array<BySlot<std::uint8_t>, kLineSets> LineRoleLive{};  // forward role by line, then slot
    std::array<BySlot<std::uint8_t>, kLineSets> LineFlagLive{};  // defence role by line, then slot

    [[nodiscard]] ForwardRole lineRole(int line, int slot) const {
        return static_cast<ForwardRole>(LineRoleLive.at(static_cast<std::size_t>(line - 1))[slot]);
    }
    [[nodiscard]] PairRole pairRole(int line, int slot) const {
        return static_cast<PairRole>(LineFlagLive.at(static_cast<std::size_t>(line - 1))[slot]);
    }
    void setLineRole(int line, int slot, ForwardRole r) {
        LineRoleLive.at(static_cast<std::size_t>(line - 1))[slot] = static_cast<std::uint8_t>(r);
    }
    void setPairRole(int line, int slot, PairRole r) {
        LineFlagLive.at(static_cast<std::size_t>(line - 1))[slot] = static_cast<std::uint8_t>(r);
    }
    // True when the slot has any role on the line.
    [[nodiscard]] bool onLine(int line, int slot) const {
        return lineRole(line, slot) != ForwardRole::None || pairRole(line, slot) != PairRole::None;
    }
    // The slot holding a forward or defence role on a line, -1 for none.
    [[nodiscard]] int holderOf(int line, ForwardRole r) const;
    [[nodiscard]] int holderOf(int line, PairRole r) const;
    // True when any slot has a role on the line.
    [[nodiscard]] bool lineUsed(int line) const;

    void clearSlot(int slot);
    void clear() { *this = LineTables{}; }
};

// Copies a player's stored roles into the live tables (lines 1 to 23); a
// role that isn't one is dropped.
void loadStoredLines(const PlayerRecord& p, int slot, LineTables& lines);
// Copies the live roles of lines 1 to 23 back into the player's record.
void storeLiveLines(const LineTables& lines, int slot, PlayerRecord& p);

// ---- Situations -------------------------------------------------------------

struct LineRange {
    int first = 0;
    int last = 0;
};

// The situation lines of a side with `own` skaters against `opponent`
// skaters: 5-5 lines 1 to 6, 5-4 and 5-3 7 to 10, 4-5 11 to 14, 3-5 and 3-4
// 15 and 16, 4-3 17 to 19, 4-4 20 and 21, 3-3 22 and 23. Other counts (a
// pulled goalie) take the lines of the nearest of these. Inline: the
// engine asks it at every line change and every coach's look at the ice.
inline LineRange situationLines(int own, int opponent) {
    own = std::clamp(own, 3, 5);
    opponent = std::clamp(opponent, 3, 5);
    if (own == 5) return opponent == 5 ? LineRange{1, 6} : LineRange{7, 10};
    if (own == 4) {
        if (opponent == 5) return {11, 14};
        if (opponent == 3) return {17, 19};
        return {20, 21};
    }
    return opponent == 3 ? LineRange{22, 23} : LineRange{15, 16};
}

// The kind of depth chart a situation fills from.
enum class DepthKind { Even, PowerPlay, PenaltyKill };
inline DepthKind depthKindOf(int own, int opponent) {
    if (own > opponent) return DepthKind::PowerPlay;
    if (own < opponent) return DepthKind::PenaltyKill;
    return DepthKind::Even;
}

// The line whose players stand in for a situation line that has none of its
// own: 5-3 and 4-3 play the power-play units, 3-5 the penalty killers, 4-4
// the even lines, 3-3 the 4-4 units; 0 for the even lines 1 to 4, which
// have nothing behind them.
int fallbackLine(int line);

// ---- What the fills read ----------------------------------------------------

// Depth fields of the record, by index.
enum class EvenDepth : std::size_t { LeftWing = 0, RightWing = 1, Center = 2, Defense = 3 };
enum class KillDepth : std::size_t { ForwardLeft = 0, ForwardRight = 1, Defense = 2 };

// The ratings a fill reads. They are the stored ratings; a player who has
// none yet (a skater with offence and defence both 0, a goalie with no
// goalie rating) gets stand-ins from his real-life line, so a team whose
// ratings were never generated still gets charts that follow its real use.
struct LineupRatings {
    double offense = 0;      // tenths, as RatingOffense
    double defense = 0;      // tenths, as RatingDefense
    double penaltyKill = 0;  // 0 to 3
    double goalie = 0;       // tenths, as RatingGoalie
    double penaltyShot = 0;  // 0 to 10
    bool standIn = false;    // some of the above aren't stored ratings
};

// `averageMinutes` is the Real AverageMinutes of the team load;
// `eraSavePct` the save percentage of the player's era, for a goalie's stand-in.
LineupRatings lineupRatings(const PlayerRecord& p, double averageMinutes, double eraSavePct);
// True when lineupRatings gives the player stand-ins (its `standIn`).
bool hasStandInRatings(const PlayerRecord& p);

// One team as the fills see it. The fills write the depth fields of the
// roster records and the live line tables.
struct LineupTeam {
    BySlot<PlayerRecord>* roster = nullptr;
    LineTables* lines = nullptr;
    BySlot<bool> candidate{};  // on the team and, in a game, fit to play
    BySlot<double> minutes{};  // AverageMinutes of the Real set
    BySlot<LineupRatings> ratings{};

    [[nodiscard]] PlayerRecord& player(int slot) const { return (*roster)[static_cast<std::size_t>(slot)]; }
};

// ---- Depth charts -----------------------------------------------------------

void FillForwardDepth(LineupTeam& team);
void FillDefenseDepth(LineupTeam& team);
void FillGoalieDepth(LineupTeam& team);
void FillPowerPlayDepth(LineupTeam& team);
void FillPenaltyKillDepth(LineupTeam& team);
// All five, in that order.
void HkAutofillDepth(LineupTeam& team);

// Clears every depth field of a record.
void clearDepth(PlayerRecord& p);
// True when no candidate holds any rank on the even, goalie charts.
bool depthChartEmpty(const LineupTeam& team);

// ---- Lines --------------------------------------------------------------------

void FillForwards(LineupTeam& team);
void FillDefense(LineupTeam& team);
void FillExtraAttacker(LineupTeam& team);
void FillShootout(LineupTeam& team);
// All four, in that order. A role already held is kept, so a lineup made
// partly by hand is completed rather than replaced.
void HkAutofillLines(LineupTeam& team);

// The lines a team plays (forward lines 1 to 4, pairs 1 to 3, the first two
// power-play and penalty-kill units) with a role the fills left empty for
// want of a player of that position: each is taken by the best candidate
// left, a player of the other position or one already on another line if
// need be. Returns a note for each role so filled, naming the line, the
// position and the player (by `nameOf`).
std::vector<std::string> completeLines(LineupTeam& team, const BySlot<std::string>& nameOf);

// Caption of a situation line: "Even line 2", "Power play unit 1", ...
std::string lineCaption(int line);

}  // namespace tallyrink
