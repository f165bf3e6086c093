#pragma once

// The working copy of the database that the whole-database views read: every
// player record, plus one combined row (team id 777) for each player who
// played for more than one team this season, with per-row rates and the
// qualification flags of the leader boards.

#include <functional>

#include "league/league.h"

namespace tallyrink {

// Games a team played in a real season of the given year, from the era table.
using EraGames = std::function<int(int year)>;
inline constexpr int kDefaultEraGames = 82;

// Sums `add` into `total` field by field; a sum past a field's range stops at its end.
void addStatLine(StatLine& total, const StatLine& add);

// Appends the combined rows to a player table in which row r is player r.
// Returns the number of rows appended.
int ComboPlayerScan(League& league);

// Builds the working copy: all of HKPLAYER with the combined rows, written to
// HKPLAYER-Leaders, and the player table refilled from it with the rows of
// a team (1 to 288), a combined row (777) or a free agent (999), each with
// its label, rates and qualification. The team table is read again. An
// unset `eraGames` counts 82 games in every season.
void LoadDataBase(League& league, const EraGames& eraGames = {});

}  // namespace tallyrink
