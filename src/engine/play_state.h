#pragma once

// The play state as enums: the zone the puck is in (named from the puck
// team's view), the call of the team with the puck and the result drawn for
// it. Each has its literal, for the play log, the saved game and the wire;
// the game itself compares enums only.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tallyrink {

enum class Zone : std::uint8_t {
    FaceoffCenter1,
    FaceoffCenter2,
    FaceoffDefense11,  // draw in the visitor's end, the visitor's turn
    FaceoffDefense12,
    FaceoffDefense21,  // draw in the home team's end
    FaceoffDefense22,
    FaceoffNeutral11,  // draw outside the visitor's blue line
    FaceoffNeutral12,
    FaceoffNeutral21,
    FaceoffNeutral22,
    DefenseZone,
    NeutralZone,
    OffenseZone,
    OffenseShooter,
    Rush,
    DefenseZoneRetreat,
    NeutralZoneRetreat,
    PenaltyShot,
    Shootout,
    ContinueBox,
};
inline constexpr std::size_t kZoneCount = 20;

enum class Call : std::uint8_t {
    None,
    Balanced,
    Safe,
    Aggressive,
    Clear,
    DumpChase,
    SkatePass,
    Shoot,
    Advance,
    PlayShoot,
    PlayTo,
    Pass,
    PassSafe,
    Retreat,
    Penetrate,
    Rush,
    DrawForward,
    DrawBack,
    Computer,
    EndPeriod,
};
inline constexpr std::size_t kCallCount = 20;

enum class Result : std::uint8_t {
    None,
    Penalty,
    OffenseZone,
    OffenseShooter,
    Pass,
    Goal,
    Save,
    Block,
    Miss,
    Clear,
    Offsides,
    To,
    ToDefense,
    ToNeutral,
    ToRush,
    MoveUp,
    NoPlay,
    Delay,
    ClearGoal,
    ClearSave,
    PenaltyShot,
    ShootoutGoal,
    ShootoutMiss,
    Retreat,
    End,
};
inline constexpr std::size_t kResultCount = 25;

// The literals ("FACEOFF-CENTER-1", "PLAY-SHOOT", "TO-RUSH", ...); a call or
// result of None is "".
std::string_view text(Zone z);
std::string_view text(Call c);
std::string_view text(Result r);
// The enum of a literal; nothing for a text that isn't one.
std::optional<Zone> zoneFromText(std::string_view s);
std::optional<Call> callFromText(std::string_view s);
std::optional<Result> resultFromText(std::string_view s);

// ---- Stops of a game run ahead -----------------------------------------------

// Where a game shown on a screen, run ahead by the computer, stops again:
// "NONE", "End 1st Period", "2nd Period - 5 Minutes", ...
enum class AutoStop : std::uint8_t {
    None,
    End1st,
    End2nd,
    End3rd,
    First2,
    First5,
    First10,
    Second2,
    Second5,
    Second10,
    Third1,
    Third2,
    Third5,
    Third10,
};
inline constexpr std::size_t kAutoStopCount = 14;
std::string_view text(AutoStop a);
std::optional<AutoStop> autoStopFromText(std::string_view s);
// The period a stop is in, and the minutes left at it (0: the period's end).
struct AutoStopPoint {
    int period = 0;
    int minutes = 0;
};
AutoStopPoint pointOf(AutoStop a);

// ---- Faceoff states ---------------------------------------------------------

enum class FaceoffSpot : std::uint8_t { Center, Defense, Neutral };

// Inline, as the two below: every step asks them many times over.
[[nodiscard]] inline bool isFaceoff(Zone z) { return static_cast<int>(z) <= static_cast<int>(Zone::FaceoffNeutral22); }
// 1 while the visitor confirms, 2 while the home team does; 0 outside a faceoff.
[[nodiscard]] inline int faceoffStage(Zone z) {
    if (!isFaceoff(z)) return 0;
    return static_cast<int>(z) % 2 == 0 ? 1 : 2;
}
[[nodiscard]] FaceoffSpot faceoffSpot(Zone z);
// The side (0 visitor, 1 home) in whose end or before whose blue line the
// draw is; -1 at centre ice.
[[nodiscard]] int faceoffEndSide(Zone z);
// The faceoff state of a spot, end side (ignored at centre) and stage.
[[nodiscard]] Zone faceoffZone(FaceoffSpot spot, int endSide, int stage);

// The puck team is pressing: "OFFENSE-ZONE", "OFFENSE-SHOOTER", "RUSH".
[[nodiscard]] inline bool isOffenseState(Zone z) {
    return z == Zone::OffenseZone || z == Zone::OffenseShooter || z == Zone::Rush;
}
[[nodiscard]] inline bool isShotResult(Result r) {
    return r == Result::Goal || r == Result::Save || r == Result::Block || r == Result::Miss;
}

}  // namespace tallyrink
