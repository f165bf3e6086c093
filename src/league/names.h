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

// Injury names by a player's InjuryType: 1 to 14 the everyday knocks, 51 to
// 60 what keeps a man out a week or two, 80 to 101 the long-term injuries.
// The numbers between are unused; an unnamed type reads "Undisclosed".
inline constexpr int kInjuryTypes = 101;
namespace injury_detail {
inline constexpr std::array<std::string_view, 14> kEveryday = {
    "Upper Body", "Lower Body", "Groin", "Ankle", "Knee",      "Shoulder",     "Back",
    "Hand",       "Wrist",      "Hip",   "Foot",  "Hamstring", "Bruised Ribs", "Neck"};
inline constexpr std::array<std::string_view, 10> kWeeks = {
    "Illness", "Flu", "Concussion", "Facial Cut", "Eye", "Jaw", "Elbow", "Thumb", "Abdominal Strain", "Charley Horse"};
inline constexpr std::array<std::string_view, 22> kLongTerm = {
    "Torn ACL",          "Torn MCL",           "Broken Leg",          "Broken Ankle",
    "Broken Foot",       "Broken Wrist",       "Broken Hand",         "Broken Jaw",
    "Broken Collarbone", "Separated Shoulder", "Dislocated Shoulder", "Torn Labrum",
    "Herniated Disc",    "Sports Hernia",      "Achilles Tendon",     "Fractured Vertebra",
    "Post-Concussion",   "Torn Pectoral",      "Orbital Fracture",    "Ruptured Spleen",
    "Hip Surgery",       "Knee Surgery"};
}  // namespace injury_detail

// The name of an injury type; "" for 0 (no injury).
constexpr std::string_view injuryName(int type) {
    using namespace injury_detail;
    if (type <= 0) return {};
    if (type <= 14) return kEveryday[static_cast<std::size_t>(type - 1)];
    if (type >= 51 && type <= 60) return kWeeks[static_cast<std::size_t>(type - 51)];
    if (type >= 80 && type <= kInjuryTypes) return kLongTerm[static_cast<std::size_t>(type - 80)];
    return "Undisclosed";
}

// The word for a skill level from 1 to 9; "" outside that range.
constexpr std::string_view skillWord(int level) {
    return level >= 1 && level <= 9 ? kSkillWords[static_cast<std::size_t>(9 - level)] : std::string_view();
}

}  // namespace tallyrink
