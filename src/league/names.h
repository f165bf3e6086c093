#pragma once

// Name lists every screen and report shares. Index 0 is the first entry;
// where the league's files number an entry from 1 (a position, a skill
// level), that number minus one is its index.

#include <array>
#include <string_view>

namespace tallyrink {

// Spots on the ice a shot is taken from, nearest the net first.
inline constexpr std::array<std::string_view, 5> kSpotNames = {"Behind", "Screen", "In", "Mid", "Out"};

// Skill words for the levels 9 down to 1: kSkillWords[9 - level].
inline constexpr std::array<std::string_view, 9> kSkillWords = {
    "Excellent", "Very Good", "Good", "Above Average", "Average", "Below Average", "Fair", "Poor", "Very Poor"};

// Positions 1 to 6: left wing, center, right wing, left and right defense, goalie.
inline constexpr std::array<std::string_view, 6> kPositionCodes = {"LW", "C", "RW", "LD", "RD", "G"};

// Position names of the player's position flags 1 to 5 (wing before center).
inline constexpr std::array<std::string_view, 5> kPositionNames = {"Left Wing", "Center", "Right Wing", "Defense",
                                                                   "Goalie"};

// The word for a skill level from 1 to 9; "" outside that range.
constexpr std::string_view skillWord(int level) {
    return level >= 1 && level <= 9 ? kSkillWords[static_cast<std::size_t>(9 - level)] : std::string_view();
}

}  // namespace tallyrink
