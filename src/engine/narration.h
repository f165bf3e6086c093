#pragma once

// The play-by-play of a game. Each Describe... member of Game (bodies in
// narration.cpp) turns a decision of the events into lines drawn from the
// phrase table. Every draw of the telling is made whether or not anybody
// listens, so a watched game and a headless one with the same seed are the
// same game; the text itself is only built for a game that is told.

#include <string>
#include <string_view>

#include "engine/play_lines.h"
#include "engine/team_load.h"

namespace tallyrink {

class PhraseTable;

// The built-in wordings, for a game handed no phrase table (tests, the
// bench, headless seasons).
const PhraseTable& builtInPhrases();

// What the telling keeps across plays.
struct NarrationState {
    // The name a line uses for a player: his last name, or first and last
    // name when a team mate shares the last name.
    std::array<BySlot<std::string>, 2> name{};
    NamedMan lastCarrier;                 // the man last told as having the puck
    double lastShotQuality = 0;           // of the last shot, 0 to 1
    bool badAngle = false;                // the last shot came from a bad angle
    std::string_view shotWord = " shot";  // of the short line
    bool whiff = false;                   // the weak shot missed the puck altogether
    bool greatPass = false;               // the goal is told as the passer's
    std::array<int, 2> chances{};         // scoring chances of each side in this game
    bool reboundShot = false;             // the shot now told is a rebound's
    int situationPeriod = 0;              // the period and clock of the last game-situation line
    int situationClock = 0;
    int possessionLine = -1;                    // the count of lines when a possession line was last told
    bool resuming = false;                      // the possession line after a pause is being told
    std::array<BySlot<int>, 2> goalsAllowed{};  // by each goalie in this game
};

// The name a play-by-play line uses for a player: his short name, else his
// last name; "nobody" for an empty slot.
std::string playName(const SideTables& side, int slot);

// Last names, with the first name added where two men of the team share one.
BySlot<std::string> narrationNames(const SideTables& side);

// "1st", "2nd", "3rd", "4th" ...
std::string ordinal(int n);

// Joins the parts of a sentence: a blank between two parts unless one
// brings its own or the next one is punctuation.
void appendWords(std::string& out, std::string_view part);

}  // namespace tallyrink
