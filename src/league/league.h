#pragma once

// The open league in memory: the team table, the game plan table and the
// player table of one league folder, with the counts derived from them.
// Everything is read from the folder by the operations below and replaced by
// the next load; the folder stays the truth.

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "league/records.h"

namespace tallyrink {

namespace fs = std::filesystem;

// The player table has room for this many rows and never grows past it.
inline constexpr std::size_t kPlayerTableRows = 300000;

inline constexpr std::size_t kPlayerSlot = 1500;
inline constexpr std::size_t kTeamSlot = 1500;
inline constexpr std::size_t kGamePlanSlot = 32000;
inline constexpr std::size_t kOldGamePlanSlot = 15000;

// Per-row figures of the database views, for one stat line.
struct RowRates {
    double Per60Factor{};   // 3,600 / Toi, 0 without ice time
    double FaceoffShare{};  // won / (won + lost), 0 without faceoffs
};

// One row of the player table.
struct PlayerRow {
    PlayerRecord player;
    // Record number in the file the row was read from (HKPLAYER, or the
    // working copy HKPLAYER-Leaders after a database load).
    std::int32_t recordNumber{};

    // Filled by LoadDataBase only:
    std::string label;  // first 12 characters of ShortName, a blank, the team's code
    RowRates real;
    RowRates replay;
    bool RealQualified{};
    bool ReplayQualified{};
};

// Number of teams of the real league in the season of `year`.
int expectedTeamCount(int year);

// Converts a game plan file of the old form (slots of 15,000 bytes) to slots
// of 32,000: the form is recognised by its length against the highest active
// team number. Returns true when the file was converted. Throws FileError.
bool convertOldGamePlanFile(const fs::path& leagueDir, int highestActiveTeam);

class League {
public:
    League();
    explicit League(fs::path dir);

    [[nodiscard]] const fs::path& dir() const { return dir_; }
    void setDir(fs::path dir) { dir_ = std::move(dir); }

    // TeamTable(t) and GamePlanTable(t), t from 1 to 288. A game plan row is
    // filled when its team is loaded for play.
    [[nodiscard]] TeamRecord& team(int t) { return teams_.at(static_cast<std::size_t>(t - 1)); }
    [[nodiscard]] const TeamRecord& team(int t) const { return teams_.at(static_cast<std::size_t>(t - 1)); }
    [[nodiscard]] GamePlanRecord& gamePlan(int t) { return gamePlans_.at(static_cast<std::size_t>(t - 1)); }
    [[nodiscard]] const GamePlanRecord& gamePlan(int t) const { return gamePlans_.at(static_cast<std::size_t>(t - 1)); }

    // PlayerTable: rows 1 to PlayerCount are elements 0 to PlayerCount - 1.
    [[nodiscard]] std::vector<PlayerRow>& PlayerTable() { return rows_; }
    [[nodiscard]] const std::vector<PlayerRow>& PlayerTable() const { return rows_; }
    [[nodiscard]] int PlayerCount() const { return static_cast<int>(rows_.size()); }

    [[nodiscard]] int ActiveTeamCount() const { return activeTeamCount_; }
    [[nodiscard]] int ExpectedTeamCount() const { return expectedTeamCount_; }
    // Division of team t: Int(t / 12 + 0.999).
    [[nodiscard]] static int DivisionOfTeam(int t) { return divisionOfTeam(t); }
    // True for a division (1 to 24) that holds an active team.
    [[nodiscard]] bool DivisionUsed(int division) const;
    [[nodiscard]] bool isActive(int t) const { return isTeamNumber(t) && team(t).TeamActive == 1; }
    // Highest active team number, 0 without any.
    [[nodiscard]] int highestActiveTeam() const;
    // Games played by team t: wins, losses, ties and overtime losses.
    [[nodiscard]] int gamesPlayed(int t) const;

    // The game plan conversion of an old league, then the team table.
    void LoadTeams();
    // Reads HKTEAMS into the team table and works out the counts.
    void readTeamTable();
    // The player table as the main menu shows it: each HKPLAYER record with
    // a team (1 to 288) or a free agent (999) as the next row, so row r need
    // not be player r.
    void loadActivePlayers();

    // Empties the player table.
    void clearPlayers() { rows_.clear(); }
    // Empties every table.
    void clear();

private:
    void countTeams();

    fs::path dir_;
    std::vector<TeamRecord> teams_;
    std::vector<GamePlanRecord> gamePlans_;
    std::vector<PlayerRow> rows_;
    int activeTeamCount_ = 0;
    int expectedTeamCount_ = 6;
    std::array<bool, kDivisions + 1> divisionUsed_{};
};

// Reads every record of a player file (row r = record r), at most the table's room.
std::vector<PlayerRow> readPlayerRows(const fs::path& file);

}  // namespace tallyrink
