#pragma once

// Penalties, the power play, fights and injuries during a game: the state a
// game keeps of them. The work itself is done by Game members (penalties.cpp),
// since it moves men on and off the ice.
//
// A called penalty becomes one entry of its side's box. An entry keeps the
// man charged with it apart from the man who sits for it (a bench or a
// goalie's penalty is served by a skater; a match penalty is served by a
// teammate while its man has left the game). Whether the side plays short
// while the entry runs is a flag of its own: coincidental penalties, a
// misconduct and a major under the substitution rule leave the strength as
// it is. A side is never cut below three skaters: a penalty that would do so
// waits, and its clock starts when another short-handed penalty of the side
// ends.

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "league/random.h"
#include "team/lines.h"

namespace tallyrink {

enum class PenaltyType : std::uint8_t { Minor, DoubleMinor, Major, Match, Misconduct, GameMisconduct };
// "minor", "double minor", "major", "match", "misconduct", "game misconduct".
std::string_view text(PenaltyType t);

// How a penalty draw came about: one side, both sides at once, a fight.
enum class PenaltyKind : std::uint8_t { OneSide = 0, Coincidental = 1, Fight = 2 };

// The infraction of a penalty of `type`. `offenseZone`: the offender's
// opponents had the puck in his end, where goalie interference happens.
std::string_view PickPenaltyName(PenaltyType type, bool offenseZone, Random& rng);

// Seconds of the misconduct a major or match carries under the misconduct
// rule, by its length setting; `outOfGame` is set for the game misconduct.
int misconductSeconds(int lengthSetting, bool& outOfGame);

struct BoxPenalty {
    int offender = -1;  // slot charged with it; -1 a bench penalty
    int server = -1;    // slot sitting for it; -1 nobody sits
    PenaltyType type = PenaltyType::Minor;
    std::string_view PenaltyName;
    int PenaltySeconds = 0;        // left to serve
    int NextPenaltySeconds = 0;    // misconduct time that follows
    bool nextPutsOut = false;      // that misconduct is a game misconduct
    int ReleaseOnGoal = 0;         // 1 a minor a goal ends, 2 a major that may end on a goal
    bool MayReturn = true;         // the server comes back when the time is up
    bool DoubleMinorFlag = false;  // in the first half of a double minor
    bool Coincidental = false;
    bool shortHanded = true;  // the side plays a man short while it runs
    bool running = false;     // the clock runs; a third short-handed penalty waits
    int order = 0;            // order of the call, to start waiting penalties in turn
};

struct PenaltyState {
    std::array<std::vector<BoxPenalty>, 2> box;
    PenaltyKind kind = PenaltyKind::OneSide;
    int nextOrder = 1;
    int clockedUpTo = 1;  // calls from this order on came after the clock last ran

    // Delayed penalty: the offended side plays on until it loses the puck
    // or play stops.
    int DelayedState = 0;
    int delayedSide = -1;  // the side that will be penalized
    int delayedOffender = -1;

    std::array<BySlot<bool>, 2> heldOff{};                // taken off the fit list by the box or an injury
    std::array<BySlot<std::uint8_t>, 2> InjuryKind{};     // 0 fit, 1 to 3 out for the period, above out for the game
    std::array<BySlot<std::int16_t>, 2> InjuredInGame{};  // games to miss after this one, for the posting
    std::array<BySlot<std::uint8_t>, 2> penaltiesOf{};    // calls against the man this game
    std::array<BySlot<std::uint8_t>, 2> fightsOf{};

    // The game's figures, by side.
    std::array<int, 2> PenaltyMinutes{};
    std::array<int, 2> penaltiesCalled{};
    std::array<int, 2> periodPenalties{};  // calls of the present period
    std::array<int, 2> PowerPlays{};
    std::array<int, 2> PenaltyKills{};
    std::array<int, 2> PowerPlayGoals{};
    std::array<int, 2> fights{};
    int fightCount = 0;  // fights of the game

    std::array<int, 2> lastSkaters{5, 5};  // manpower as the power-play count last saw it
    bool TensionFlag = false;
    bool rousedGame = false;  // a brawl has happened: tempers stay up
    int injuries = 0;         // men hurt in this game
    int hurtSide = -1;        // a man the last play left hurt (a fight, a hard hit)
    int hurtSlot = -1;
    bool injuredThisPlay = false;
};

}  // namespace tallyrink
