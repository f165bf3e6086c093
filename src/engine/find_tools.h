#pragma once

// Who is who in the coming play: the puck carrier and the men who would
// earn the assists, the spots of the attackers in the offensive zone and
// the open men a coach may play to, the defender on the carrier, and the
// picks the events need (the penalized man, the hitter, the man who takes
// the puck away or blocks a shot, the names a pass is told with).
//
// The tools are members of Game (declared there, bodies in find_tools.cpp);
// this header holds the state they leave behind, one member of GameState.
//
// Positions are 0-based as in OnIce (0 left wing ... 4 right defense, 5 the
// goalie or the extra attacker), kNoPos for none; slots are 0-based,
// kNoSlot for none. Spot values are the depths 1 "Behind", 2 "Screen",
// 3 "In", 4 "Mid", 5 "Out", and 0 for a position with no spot.

#include <array>
#include <cstdint>
#include <string_view>

#include "engine/play_state.h"
#include "team/lineup_tools.h"

namespace tallyrink {

inline constexpr int kNoPos = -1;

// Manpower of a rush: "1-0", "2-1", "3-1", "3-2".
enum class RushType : std::uint8_t { None, OneZero, TwoOne, ThreeOne, ThreeTwo };
std::string_view text(RushType r);

// Depths of the offensive zone.
enum SpotDepth : int { kSpotNone = 0, kSpotBehind = 1, kSpotScreen = 2, kSpotIn = 3, kSpotMid = 4, kSpotOut = 5 };
// "Behind", "Screen", "In", "Mid", "Out"; "" for none.
std::string_view spotText(int spot);

// One row of the open-men list of the offensive zone: a man of the puck
// team a coach may play the puck to, with the grades a screen shows.
struct OpenMan {
    int pos = kNoPos;
    int slot = kNoSlot;
    int spot = kSpotNone;
    int shotGrade = 0;  // 0 to 10: his chance to score from where he stands
    int passGrade = 0;  // 0 to 10: how well a pass to him is likely to go
    bool hasPuck = false;
};

struct FindState {
    // The puck carrier and the passers of the next goal.
    int Carrier = kNoSlot;
    int CarrierPos = kNoPos;
    int Passer1 = kNoSlot;
    int Passer1Pos = kNoPos;
    int Passer2 = kNoSlot;
    int Passer2Pos = kNoPos;
    int LastPasser = kNoSlot;    // just gave the puck: not the next carrier or passer
    int TopPlaymaker = kNoSlot;  // of the puck team's unit, as FindPassers last saw it

    // Depths of the puck team's positions in the offensive zone.
    std::array<int, kIcePositions> Spot{};

    // The open men, as the list of the offensive zone was last built.
    std::array<OpenMan, kIcePositions> openMen{};
    int openCount = 0;
    int ListCarrier = kNoSlot;  // Carrier when the list was built; kNoSlot outside the offensive zone
    // The man a "PLAY-SHOOT" or "PLAY-TO" is run to, chosen from the open
    // men by the coach; he takes the puck at his spot.
    int PlayTarget = kNoSlot;

    // The other side's man on the carrier, and the picks of the events.
    int Defender = kNoSlot;
    int DefenderPos = kNoPos;
    int Hitter = kNoSlot;
    int HitterPos = kNoPos;
    int TakeawayMan = kNoSlot;
    int TakeawayPos = kNoPos;
    int BlockerMan = kNoSlot;
    int BlockerPos = kNoPos;
    // Names of a pass told in narration (slots of the puck team, or of the
    // unit before a line change), and a man of the defending side.
    int NameFirst = kNoSlot;
    int NameSecond = kNoSlot;
    int Opponent = kNoSlot;

    // Not available at this moment of the game (hurt, ejected), and
    // without a stick, by side and slot.
    std::array<BySlot<bool>, 2> PlayerOut{};
    std::array<BySlot<bool>, 2> BrokenStick{};

    // Penalties: how many each side is to take in this step (filled by the
    // caller of FindPenalized), who has been picked, and the picks in order.
    std::array<int, 2> PenaltiesToCall{};
    std::array<std::array<bool, kIcePositions>, 2> Drawn{};
    std::array<std::array<int, 4>, 2> Penalized{};  // slots picked, kNoSlot after the last
    std::array<int, 2> penalizedCount{};
    bool PenaltyServer = false;  // a skater serves for the goalie or the bench
    // In the box or waiting for it: never picked for another penalty.
    std::array<BySlot<bool>, 2> inBox{};

    // The faceoff winner's call forces the first carrier (set by the draw).
    bool DrawForcedEntry = false;
    Call drawCall = Call::None;

    // The mood of the coming shot, 1 to 9 (5 neutral), and the flag that
    // asks for a new one at the start of each play. The carrier's record
    // adds its lift then; the rest of the mood stands apart from the play
    // and is drawn when a table first asks for it (moodDrawn), as most
    // steps never shoot.
    int ShooterMood = 5;
    int moodLift = 0;
    bool moodDrawn = true;
    bool newPlay = true;
    // A puck loose near the net: a carrier at spot 1 shoots as from inside.
    bool LooseInClose = false;
    // Live forecheck of each side, 0 to 3.
    std::array<int, 2> ForecheckLevel{1, 1};
    // Manpower of the rush on, set where the rush is built.
    RushType rush = RushType::None;
    // The carrier is chosen anew before this step's table.
    bool PickCarrier = false;

    // The shot model: a goalie's form of the day in tenths of his rating,
    // drawn at the opening faceoff, and the season calibration of the
    // table's rates (1 where there is nothing to calibrate against).
    std::array<BySlot<int>, 2> GoalieForm{};
    double ShotsCalibration = 1;
    double PenaltyCalibration = 1;
    double FightCalibration = 1;
    double ShootingCalibration = 1;
    double PowerPlayCalibration = 1;
    // Worked out at the head of each step from the goalies' eras.
    double EraPenaltyFactor = 1;
    double EraShotsPerGame = 0;
};

// The first passer's weight is multiplied by 5 for each of five tests that
// pass: his assists over 2.5 + 1.5 rnd; over (1.6 + .6 rnd) times his goals;
// over 2.5 + rnd and over (1.6 + .6 rnd) times his goals; his shots over
// 7 + 4 rnd and assists over 2 + 1.5 rnd; his shots over 8 + 4 rnd and
// assists over 3 + rnd. The tests draw on their own, so how many pass has
// a law of its own, fixed by his figures for the game: `below` holds the
// chances of at most 0 to 4 passing, and a count his figures settle takes
// no draw (`certain`, `sure`).
struct PasserFives {
    std::array<double, 5> below{1, 1, 1, 1, 1};
    bool certain = true;
    int sure = 0;
};
PasserFives passerFives(double assists, double goals, double shots);
// How many pass for a draw u.
inline int fivesFor(double u, const PasserFives& f) {
    int passed = 0;
    for (double b : f.below) passed += u >= b ? 1 : 0;
    return passed;
}

}  // namespace tallyrink
