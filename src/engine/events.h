#pragma once

// What the events of a play leave behind: the draw, the shot and what the
// puck did after it, the clear, the turnover and the rush, and the team
// figures of the game that the box score reads. One member of GameState;
// the bodies that fill it stand in faceoffs.cpp, shots.cpp and
// zone_play.cpp.

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/play_state.h"
#include "team/lineup_tools.h"

namespace tallyrink {

// The form of a shot, for the telling only: the result is drawn before.
enum class ShotKind : std::uint8_t {
    None,
    OneTimer,
    Deflection,
    Long,
    Wrist,
    Slap,
    Weak,
    Breakaway,
    Rebound,
    ReboundShot,
};
std::string_view text(ShotKind k);  // "ONETIMER", "REBOUND-SHOT", ...

// What the puck did after a block or a miss.
enum class ShotRebound : std::uint8_t {
    None,
    OffenseZone,  // kept in by the attackers
    NeutralZone,  // kept out at the line
    ReboundShot,
    Clear,
    OutOfPlay,
    DefenseZone,  // the defenders have it
    Icing,
};
// What the puck did after a save.
enum class SaveRebound : std::uint8_t {
    None,
    GoaliePass,
    ReboundShot,
    OffenseZone,  // "REBOUND-OFFENSE-ZONE"
    NeutralZone,  // "REBOUND-NEUTRAL-ZONE"
    Clear,
    DefenseZone,
    OutOfPlay,
    Freeze,
    Dive,
};
std::string_view text(ShotRebound r);
std::string_view text(SaveRebound r);

enum class TurnoverKind : std::uint8_t { None, Lost, Takeaway, Giveaway, HitTakeaway };
std::string_view text(TurnoverKind k);

// Attackers against defenders on a rush: "1-0", "2-1", "3-1", "3-2".
enum class RushKind : std::uint8_t { OneZero, TwoOne, ThreeOne, ThreeTwo };
std::string_view text(RushKind k);

// Where a clear went.
enum class ClearTarget : std::uint8_t { None, DefenseZone, NeutralZone, Icing, Recover, Faceoff };

struct EventState {
    // The draw.
    std::array<int, 2> FaceoffMan{1, 1};  // position (0-based) of the man who takes the draw
    std::array<int, 2> DrawMan{kNoSlot, kNoSlot};
    Call DrawCall = Call::Computer;  // the attacking human's faceoff call
    int AttackingSide = -1;          // the visitor in the home end and the other way round; -1 elsewhere
    bool ForcedEntry = false;        // a quick play off the draw: the entry stage is skipped
    bool TensionFlag = false;
    bool openingTold = false;           // the teams' starters were read out
    std::array<bool, 2> goalieNoted{};  // "now in goal" told for the side's goalie
    std::array<int, 2> goalieAnnounced{kNoSlot, kNoSlot};
    bool puckToEmptyEnd = false;                          // the draw after a shot went to the empty net's end
    std::array<int, 2> lastDrawWinner{kNoSlot, kNoSlot};  // slot of each side's man who last won a draw

    int drawPossession = -1;  // the side that won the last draw, until the puck changes hands

    // The shot and the puck after it.
    ShotKind Kind = ShotKind::None;
    int ShotClass = 0;  // of the shooting model; 3 for a shot that has none
    int ShootN = 0;
    ShotRebound shotRebound = ShotRebound::None;
    SaveRebound saveRebound = SaveRebound::None;
    int ReboundDefender = kNoSlot;
    bool reboundHeld = false;  // the attackers kept a rebound: the carrier stays
    bool goaliePass = false;   // the goalie moved the puck out after a save
    bool shooterWasHit = false;
    int shooter = kNoSlot;  // the man credited with the last shot

    // The clear, the turnover and the rush.
    ClearTarget clearTarget = ClearTarget::None;
    bool IcingFlag = false;
    std::array<bool, 2> IcedBy{};
    bool offsideFlag = false;  // a pass told as offside at the defending line
    TurnoverKind turnover = TurnoverKind::None;
    bool HitDone = false;
    RushKind rushKind = RushKind::ThreeTwo;
    std::array<bool, 5> RushMember{};
    bool dumpIn = false;  // the last "PASS" of the neutral zone was a dump-in

    // Team figures of this game, by side.
    std::array<int, 2> faceoffsWon{};
    std::array<int, 2> missed{};
    std::array<int, 2> blocked{};  // shots of the side blocked by the other
    std::array<int, 2> hits{};
    std::array<int, 2> takeaways{};
    std::array<int, 2> giveaways{};
    std::vector<std::array<int, 2>> blocksByPeriod;  // [period - 1][blocking side]
    // Shots each goalie faced in this game, by side and slot.
    std::array<BySlot<int>, 2> shotsFaced{};
};

}  // namespace tallyrink
