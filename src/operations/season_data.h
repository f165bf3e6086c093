#pragma once

// The facts of one real season as they come from the season folder: teams,
// per-team player stints, goalie stints, the schedule with its results, and
// the season totals of the tracking and per-player total files. Reading
// checks the columns, the numbers and that every team named is a team of
// the season; what the facts mean for a league is decided in season_import.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tallyrink {

struct CalendarDate {
    int year{};
    int month{};
    int day{};

    // Days since 1970-01-01, for stepping and counting.
    [[nodiscard]] long serial() const;
    static CalendarDate fromSerial(long serial);
    auto operator<=>(const CalendarDate&) const = default;
};

struct TeamFacts {
    std::string code;  // three letters, the key of the other files
    std::string name;  // full name, e.g. "Anaheim Ducks"
    std::string city;
    std::string nickname;
    std::string conference;  // code as in the file, e.g. "EC"
    std::string division;    // code as in the file, e.g. "AT"
    int gp{}, wins{}, losses{}, overtimeLosses{}, shootoutWins{};
    int goalsFor{}, goalsAgainst{}, pim{}, benchMinutes{}, ppg{}, shgFor{};
    int shotsFor{}, hits{}, giveaways{}, takeaways{};
};

struct PlayerBio {
    std::string firstName;
    std::string lastName;
    char position{};     // C, L, R, D or G
    std::string shoots;  // L or R
    int heightInches{}, weightPounds{}, age{};
};

// One row of the official scoring file: a player's games for one team.
struct ScoringStint {
    std::string playerId;
    int stint{};
    std::string team;
    PlayerBio bio;
    int gp{}, goals{}, assists{}, pim{}, plusMinus{};
    int ppg{}, ppa{}, shg{}, sha{}, gwg{}, sog{};
};

struct GoalieStint {
    std::string playerId;
    int stint{};
    std::string team;
    PlayerBio bio;
    int gp{}, minutes{}, wins{}, losses{}, overtimeLosses{};
    int emptyNetAgainst{}, shutouts{}, goalsAgainst{}, shotsAgainst{}, saves{};
};

struct GameFacts {
    std::string id;
    CalendarDate date;  // local date of the game
    std::string start;  // start time as written, orders the games of a day
    std::string visitor;
    std::string home;
    int visitorGoals{}, homeGoals{};  // the shootout winner's goal counted
    std::string decidedIn;            // "REG", "OT" or "SO"
    std::string venue;
};

struct GoalieGame {
    std::string gameId;
    CalendarDate date;
    std::string playerId;
    std::string team;
    int toiSeconds{};
};

// Season totals of a skater from the tracking file, whatever his teams.
struct TrackingTotals {
    int toiSeconds{}, shifts{}, missedShots{}, takeaways{}, giveaways{};
    int penalties{}, pim{};
    int hits{}, blocks{}, faceoffsWon{}, faceoffsLost{};
    int powerPlaySeconds{};    // the 5-on-4 situation
    int shortHandedSeconds{};  // the 4-on-5 situation
};

// Official-style season totals of a skater from the per-player totals file.
struct OfficialTotals {
    int toiMinutes{}, blocks{}, hits{}, faceoffsWon{}, faceoffsLost{};
};

struct SeasonData {
    std::filesystem::path folder;
    std::vector<TeamFacts> teams;       // in the order of the file
    std::vector<ScoringStint> scoring;  // skaters and goalies
    std::vector<GoalieStint> goalies;
    std::vector<GameFacts> games;  // in the order of the file
    std::vector<GoalieGame> goalieGames;
    std::map<std::string, TrackingTotals> tracking;  // by player id
    std::map<std::string, OfficialTotals> totals;    // by player id
    std::map<std::string, std::string> coaches;      // head coach of a team's last game
    bool teamNamesFile = false;                      // city and nickname came from team_names.csv

    [[nodiscard]] const TeamFacts* team(const std::string& code) const;
};

// Reads the season folder. Throws FileError for a missing file or column, a
// bad number or date, or a team that isn't in teams.csv; the message names
// the file and, where it applies, the line and the column.
SeasonData readSeasonData(const std::filesystem::path& folder);

}  // namespace tallyrink
