#pragma once

// The printed box score, built from the records of a box file: as plain
// text (the box file's own BoxText, the "box" command) or as a web page.

#include <array>
#include <string>
#include <vector>

#include "postgame/box_file.h"

namespace tallyrink {

// What the records don't hold: the players' names and the teams' full names.
struct BoxNames {
    std::array<std::string, kBoxSlots> player;    // by side-slot entry
    std::array<std::string, 2> team;              // "Halden Hawks"
    std::array<std::string, kBoxSlots> position;  // "G", "D", "F"
};

std::vector<std::string> boxScoreText(const BoxFile& box, const BoxNames& names);
std::string boxScoreHtml(const BoxFile& box, const BoxNames& names);

// Names of a box's players from the league's player file.
BoxNames boxNamesFromLeague(const BoxFile& box, const std::filesystem::path& leagueDir);

// A player as the box score names him: "J. Smith".
std::string boxPlayerName(const PlayerRecord& p);
// The same written over `name`, which keeps its room.
void boxPlayerName(const PlayerRecord& p, std::string& name);

// "G", "D" or "F".
std::string positionCode(const PlayerRecord& p);

// The lines that name what stood out in a game: hat tricks, big nights.
std::vector<std::string> notableLines(const BoxFile& box, const BoxNames& names);

}  // namespace tallyrink
