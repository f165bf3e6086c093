#pragma once

// A league's season as a flat list of game records: the schedule file (games
// as planned and, once played, their results) and SCORES (one record per game
// played, in the order of playing). There is no calendar object: the league's
// date is derived from the schedule each time it is asked for.

#include <bitset>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "league/files.h"
#include "league/records.h"

namespace tallyrink {

inline constexpr std::string_view kDefaultScheduleFile = "Sked.skd";
inline constexpr std::string_view kScoresFile = "SCORES";
inline constexpr std::size_t kMaxScheduleGames = 10000;

// Team numbers 1 to 288 that play in the league (index 0 unused).
using ActiveTeams = std::bitset<kMaxTeams + 1>;

// Days in a calendar month as the schedule counts them: February always has 28.
int scheduleMonthLength(int calendarMonth);

// "January" .. "December"; empty for a number that is no month.
std::string_view monthName(int calendarMonth);

// A game's place in the season: season month (September first) x 100 + day.
// Every search for the earliest game compares this key.
inline int dateKey(int calendarMonth, int day) { return seasonMonth(calendarMonth) * 100 + day; }

// The league's date: that of the earliest game still to be played.
struct LeagueDate {
    int month = 0;  // calendar month
    int day = 0;
    int seasonMonth = 0;
    int year = 0;  // calendar year of that date; 0 when the schedule carries no year
};

// The calendar year of a date of the season that starts in `seasonYear`:
// January to August belong to the following year. 0 stays 0 (no year known).
int calendarYearOf(int seasonYear, int calendarMonth);

// A new unplayed, computer-coached league game with every text blank.
GameRecord newGameRecord(int visitor, int home, int month, int day, int year);

// Status letters of a game row.
inline constexpr char kUnplayed = 'U';
inline constexpr char kMarked = 'N';
inline constexpr char kPlayed = 'P';
inline constexpr char kDeleted = 'D';

char statusOf(const GameRecord& g);
inline bool isOpen(const GameRecord& g) { return statusOf(g) == kUnplayed || statusOf(g) == kMarked; }

// The schedule files (ending ".skd") of a league folder, sorted by name.
std::vector<std::string> scheduleFileList(const fs::path& leagueDir);

// The path of the schedule file `fileName` in the folder, found without regard
// to case. An old league keeps its games in a file "SKED": when the default
// name is asked for, is (nearly) empty and "SKED" holds games, "SKED" is
// copied to the new name first.
fs::path resolveScheduleFile(const fs::path& leagueDir, std::string_view fileName = kDefaultScheduleFile);

// What a save does with the slots behind the last row written.
enum class ScheduleTail {
    Keep,      // they keep what they held, and the next load counts them again
    Truncate,  // the file ends after the last row
};

class Schedule {
public:
    // Reads every row of the schedule file. The year of row 1 is given to all
    // rows, and a row whose team numbers are not team numbers is marked
    // deleted with both teams 0. Throws FileError for a file that cannot be
    // read or holds more games than a schedule can.
    static Schedule load(const fs::path& leagueDir, std::string_view fileName = kDefaultScheduleFile);

    // A schedule of these rows, to be saved as the league's schedule file.
    static Schedule fromRows(const fs::path& leagueDir, std::vector<GameRecord> rows,
                             std::string_view fileName = kDefaultScheduleFile);

    [[nodiscard]] const fs::path& path() const { return path_; }
    [[nodiscard]] const std::vector<GameRecord>& rows() const { return rows_; }
    [[nodiscard]] std::size_t size() const { return rows_.size(); }
    // Row r counts from 1, as the file's records do.
    [[nodiscard]] const GameRecord& row(std::size_t r) const { return rows_.at(r - 1); }
    GameRecord& row(std::size_t r) { return rows_.at(r - 1); }

    // Writes the rows, leaving out deleted rows, rows with a team number 0 and
    // rows of teams that are not active, so row numbers change at each save.
    void save(const ActiveTeams& active, ScheduleTail tail = ScheduleTail::Keep);

    // The earliest date with a game still to be played, if any.
    [[nodiscard]] std::optional<LeagueDate> leagueDate() const;
    // The season's starting year: the Year of row 1, or 0.
    [[nodiscard]] int seasonYear() const;

    // Adds an unplayed, computer-coached game at the end and returns its row
    // number; 0 (and nothing changes) without two different teams and a date.
    // `seasonYear` becomes the year of an empty schedule's first row; a
    // schedule with rows keeps the year of row 1.
    std::size_t addGame(int visitor, int home, int month, int day, int seasonYear = 0);
    // Marks a row deleted; it is dropped at the next save. False for no such row.
    bool removeGame(std::size_t r);
    // True when the team has a game (not deleted) on that date.
    [[nodiscard]] bool teamPlaysOn(int team, int month, int day) const;

    // Removes every game and empties the file at once.
    void eraseAll();
    // Sets both coaches of every game not yet played ('C' computer, 'H' human).
    void setAllCoaches(char coach);
    // Sets the coach of one team's side in each of its games not yet played.
    void setTeamCoach(int team, char coach);

private:
    Schedule(fs::path path, std::vector<GameRecord> rows) : path_(std::move(path)), rows_(std::move(rows)) {}

    fs::path path_;
    std::vector<GameRecord> rows_;
};

// Replaces the league's schedule by these games in this order: the file ends
// after the last game. Rows of teams that are not active are left out. This is
// how a whole new schedule (generated, imported or taken from a real season)
// becomes the league's.
void saveNewSchedule(const fs::path& leagueDir, std::vector<GameRecord> games, const ActiveTeams& active,
                     std::string_view fileName = kDefaultScheduleFile);

// SCORES: one record for each game played, in the order of playing.
std::vector<GameRecord> loadScores(const fs::path& leagueDir);
void saveScores(const fs::path& leagueDir, const std::vector<GameRecord>& scores);

}  // namespace tallyrink
