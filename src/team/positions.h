#pragma once

// What a player can play, read from his position flags. Every
// choice of players (depth charts, lines, the ice) asks these questions in
// the same way: a goalie is a goalie whatever else he is flagged for, and a
// player flagged for defence counts as a defenceman even when he can also
// play up front.

#include <cstddef>
#include <string>

#include "league/records.h"

namespace tallyrink {

// Index into PositionFlags.
enum class Flag : std::size_t { LeftWing = 0, Center = 1, RightWing = 2, Defense = 3, Goalie = 4 };

inline bool hasFlag(const PlayerRecord& p, Flag f) { return p.PositionFlags[static_cast<std::size_t>(f)] != 0; }
inline bool isGoalie(const PlayerRecord& p) { return hasFlag(p, Flag::Goalie); }
inline bool isDefenseman(const PlayerRecord& p) { return !isGoalie(p) && hasFlag(p, Flag::Defense); }
inline bool hasForwardFlag(const PlayerRecord& p) {
    return hasFlag(p, Flag::LeftWing) || hasFlag(p, Flag::Center) || hasFlag(p, Flag::RightWing);
}
// A skater who isn't a defenceman; a skater with no flag at all counts here.
inline bool isForward(const PlayerRecord& p) { return !isGoalie(p) && !isDefenseman(p); }
// The stricter test of the team figures the ratings are measured against: a
// skater with no flag at all is left out of the forwards' totals.
inline bool isFlaggedForward(const PlayerRecord& p) { return isForward(p) && hasForwardFlag(p); }
inline bool isCenter(const PlayerRecord& p) { return hasFlag(p, Flag::Center); }

// Short position text for listings: "C", "LW", "RW", "D", "G", with the
// other forward flags after a slash ("C/LW").
inline std::string positionText(const PlayerRecord& p) {
    if (isGoalie(p)) return "G";
    std::string text = isDefenseman(p) ? "D" : "";
    auto add = [&text](const char* code) { text += (text.empty() ? "" : "/") + std::string(code); };
    if (hasFlag(p, Flag::Center)) add("C");
    if (hasFlag(p, Flag::LeftWing)) add("LW");
    if (hasFlag(p, Flag::RightWing)) add("RW");
    return text.empty() ? "F" : text;
}

}  // namespace tallyrink
