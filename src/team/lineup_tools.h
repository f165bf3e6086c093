#pragma once

// Taking players from the line tables to the ice: who is fit to play, which
// five skaters and which goalie stand on the ice in a manpower situation,
// the extra attacker, and the check of a lineup before play goes on.
//
// The lines chosen by the coach logic come first; where a line is missing
// (a situation the team has no line of its own for, a player hurt or out
// today, a roster too short for the line) the places are filled from the
// line the situation stands in for, then from the depth chart, then from
// anyone fit on the bench, so that a team with enough fit skaters always
// gets a full unit and a team with no goalie puts a skater in goal.

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "league/random.h"
#include "team/lines.h"
#include "team/positions.h"

namespace tallyrink {

inline constexpr int kNoSlot = -1;

// OnIce positions: left wing, center, right wing, left defense, right
// defense, and the goalie or the extra attacker.
enum class IcePos : std::size_t { LeftWing = 0, Center, RightWing, LeftDefense, RightDefense, GoalieOrExtra };
inline constexpr std::size_t kIcePositions = 6;

struct OnIce {
    std::array<int, kIcePositions> slot{kNoSlot, kNoSlot, kNoSlot, kNoSlot, kNoSlot, kNoSlot};

    int& operator[](IcePos p) { return slot[static_cast<std::size_t>(p)]; }
    int operator[](IcePos p) const { return slot[static_cast<std::size_t>(p)]; }
    // Inline: the clock asks it of every roster slot at every step.
    [[nodiscard]] bool holds(int s) const {
        if (s == kNoSlot) return false;
        for (int x : slot)
            if (x == s) return true;
        return false;
    }
};

// Position names as a lineup fault gives them: "Left Wing", "Center",
// "Right Wing", "Left Defenseman", "Right Defenseman".
std::string positionName(IcePos p);

// The slots fit to play (LineMark): on the team, not hurt, not suspended,
// dressed today (neither out by DressedToday nor inactive), and, in a game
// where energy is known, with at least 80 points of it.
BySlot<bool> BuildFitList(const BySlot<PlayerRecord>& roster, int teamId, const BySlot<std::int16_t>& dressedToday,
                          const BySlot<int>* energy = nullptr);

// The positions a side of so many skaters fills: 5 all five; 4 the wings
// and both defensemen; 3 the wings and the left defenseman in formation 1,
// otherwise the center and both defensemen.
// A fixed list, since lines go on the ice many times a game.
struct PositionList {
    std::array<IcePos, 5> pos{};
    std::size_t count = 0;
    [[nodiscard]] const IcePos* begin() const { return pos.data(); }
    [[nodiscard]] const IcePos* end() const { return pos.data() + count; }
    [[nodiscard]] std::size_t size() const { return count; }
    [[nodiscard]] bool contains(IcePos p) const { return std::find(begin(), end(), p) != end(); }
};
PositionList requiredPositions(int skaters, int threeSkaterFormation);

struct IceRequest {
    int own = 5;           // skaters of the side, not counting an extra attacker
    int opponent = 5;      // skaters of the other side
    int unit = 1;          // forward line (or special-teams unit) of the situation, from 1
    int pair = 0;          // defense pair at even strength, from 1; 0: the pair of the same number
    int goalie = kNoSlot;  // the side's goalie; kNoSlot: the first choice of the goalie chart who is fit
    bool goaliePulled = false;
    int threeSkaterFormation = 2;
};

// Where a player on the ice came from.
enum class IceSource : std::uint8_t {
    Empty,            // nobody fit was left
    Line,             // his role on the situation line asked for
    StandInLine,      // his role on the line the situation stands in for (5-3 plays the power-play units, ...)
    DepthChart,       // the best of the depth chart for the place who was fit and free
    Bench,            // anyone fit: a player of another position
    Goalie,           // the goalie asked for, or the first choice of the chart
    EmergencyGoalie,  // a skater in goal: the team has no fit goalie
    ExtraAttacker,
};

struct IcePlacement {
    OnIce onIce;
    std::array<IceSource, kIcePositions> source{};
    int goalie = kNoSlot;  // the side's goalie, in net or pulled
    int forwardLine = 0;   // the line the forwards came from (the one asked for, or its stand-in); 0 none
    int pairLine = 0;      // the line the defensemen came from
};

// Fills the ice for a situation from the line tables (`team.candidate` is
// the fit list). `rng` is drawn from only for the extra attacker.
IcePlacement PutLinesOnIce(const LineupTeam& team, const IceRequest& request, Random* rng = nullptr);

// The fit goalie highest on the goalie chart whom `passOver(slot)` doesn't
// leave out; kNoSlot when there is none.
template <class PassOver>
int topGoalie(const LineupTeam& team, PassOver passOver) {
    int best = kNoSlot;
    int bestDepth = -1;
    for (int s = 0; s < kRosterSlots; ++s) {
        if (!team.candidate[static_cast<std::size_t>(s)] || !isGoalie(team.player(s)) || passOver(s)) continue;
        if (team.player(s).DepthGoalie > bestDepth) {
            best = s;
            bestDepth = team.player(s).DepthGoalie;
        }
    }
    return best;
}

// The goalie of a side: `wanted` when fit, else the highest of the goalie
// chart who is fit, else any fit goalie; with none, the fit skater of the
// fewest minutes goes in goal (`emergency` is then set). kNoSlot when
// nobody at all is fit.
int chooseGoalie(const LineupTeam& team, int wanted, bool* emergency = nullptr);

// Empties position 6 and puts the best fit skater who isn't on the ice
// there, by the extra-attacker chart; a forward's score gets Rand(10) when
// `rng` is given. A player marked never to be the extra attacker isn't
// taken. With nobody ranked, the fit skater of the highest offense goes.
// Returns the slot, kNoSlot when nobody is left. (Tired players are kept
// off by the fit list, which leaves out anyone under 80 points of energy.)
int FindExtraAttacker(const LineupTeam& team, OnIce& onIce, int goalie, Random* rng = nullptr);

// CheckLineup for the side with the puck: `skaters` is its manpower.
struct LineupCheck {
    bool LineupValid = true;
    std::string fault;  // the first fault, as the message shows it
};
LineupCheck CheckLineup(const OnIce& onIce, int skaters, bool goaliePulled, int threeSkaterFormation = 2,
                        bool shownOnScreen = true);

// The message box of a bad lineup of a human team: its title and text.
struct LineupMessage {
    std::string title;
    std::string text;
};
LineupMessage lineupInvalidMessage(const std::string& city, const std::string& fault);

}  // namespace tallyrink
