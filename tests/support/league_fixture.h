#pragma once

// A small league folder for tests. Build it in memory, change what a test
// needs in the records, then write it into a TempDir:
//
//     auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 5});
//     lg.player(3).Stats[1].GP = 10;              // any record field
//     int old = lg.addTradedRow(3, 2, 4);         // player 3 also played 4 games for team 2
//     lg.write(dir.path());
//
// Teams 1 to `teams` are active, each with its players on its roster in
// player-number order: team 1 has players 1 to playersPerTeam, team 2 the
// next ones, and so on; free agents (team id 999) come after them. Team t's
// city and code start with a letter of its own (team 1 "Halden"/"HAL", team 2
// "Brisk"/"BRI", ...), so team letters of combined rows are easy to read.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "league/records.h"

namespace tallyrink::testing {

struct LeagueFixtureOptions {
    int teams = 4;            // active teams, numbered from 1
    int playersPerTeam = 20;  // the first two are goalies, the next six defensemen, the rest forwards
    int freeAgents = 0;       // players of team id 999 after the rostered ones
    std::int16_t teamYear = 2018;
    // Games each team has played (wins, then losses) and each rostered
    // player's Replay.GP; free agents have none.
    int gamesPlayed = 0;
    bool withGamePlans = true;  // write HKgameplan with one 32,000-byte plan a team
};

struct LeagueFixture {
    std::vector<TeamRecord> teams;      // all 288 slots; teams[t - 1] is team t
    std::vector<PlayerRecord> players;  // players[r - 1] is player r
    bool withGamePlans = true;

    static LeagueFixture make(const LeagueFixtureOptions& options = {});

    TeamRecord& team(int t) { return teams.at(static_cast<std::size_t>(t - 1)); }
    PlayerRecord& player(int r) { return players.at(static_cast<std::size_t>(r - 1)); }
    [[nodiscard]] int playerCount() const { return static_cast<int>(players.size()); }

    // Adds a player record (PlayerId is its number) with team id `teamId`;
    // a player of an active team goes on the first free roster slot. Returns
    // the player number.
    int addPlayer(int teamId, const std::string& first, const std::string& last, bool goalie = false);

    // Adds a row of an earlier team of player `playerNumber`: a copy of his
    // record with team id 1000 + formerTeam, `replayGames` games in its
    // Replay line and not on any roster. Returns the new row's number.
    int addTradedRow(int playerNumber, int formerTeam, int replayGames);

    // Writes HKTEAMS (288 slots), HKPLAYER and, if wanted, HKgameplan into `dir`.
    void write(const std::filesystem::path& dir) const;
};

}  // namespace tallyrink::testing
