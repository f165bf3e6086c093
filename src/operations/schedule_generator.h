#pragma once

// The computer's season schedule: from the games each team plays and the games
// against each division rival, a table of games in day slots spread over the
// calendar from a first date. Every game is unplayed and computer-coached.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "league/files.h"
#include "league/random.h"
#include "league/records.h"
#include "league/schedule.h"

namespace tallyrink {

struct ScheduleRequest {
    int gamesPerTeam = 82;  // even, 10 to 98
    int divisionGames = 0;  // against each division rival: 0 or even, up to 20
    int startMonth = 10;    // calendar month of the first date
    int startDay = 1;       // cut to the month's length
    int seasonYear = 0;     // the year the season starts in; 0 takes the teams' year
};

// One game in its day slot (slots count from 1, one day apart by the step).
struct SlotGame {
    int slot = 0;
    int home = 0;
    int visitor = 0;
};

struct GeneratedSchedule {
    std::vector<SlotGame> games;      // in order of placement
    std::vector<GameRecord> records;  // the same games as schedule rows
    std::vector<std::string> report;  // what to tell the user, one message a line
    int missingGames = 0;
    bool divisionalGamesAdded = false;
    bool unbalancedLeague = false;
    int slots = 0;                   // day slots in use
    bool runsPastSeasonEnd = false;  // the last slot falls after August
};

// Days between two day slots: 3 in a short season (under 50 games), else 2.
int slotStep(int gamesPerTeam);
// Calendar month and day of each slot 1..count ([0] unused), February taken
// as 28 days.
std::vector<std::pair<int, int>> slotDates(const ScheduleRequest& request, int count);

// Empty when a schedule can be made for these active teams (ascending team
// numbers); otherwise the message that refuses the request.
std::string checkScheduleRequest(const std::vector<int>& teams, const ScheduleRequest& request);

// Makes the schedule. The request must have passed checkScheduleRequest.
GeneratedSchedule generateSchedule(const std::vector<int>& teams, const ScheduleRequest& request, Random& random);

struct ScheduleOutcome {
    bool ok = false;  // false: nothing was written, `messages` says why
    std::vector<std::string> messages;
    std::size_t games = 0;
};

// Makes a schedule for the active teams of the league in `leagueDir` (read
// from HKTEAMS) and writes it as the league's schedule file, replacing it.
ScheduleOutcome makeComputerSchedule(const fs::path& leagueDir, const ScheduleRequest& request,
                                     std::string_view scheduleFile = kDefaultScheduleFile,
                                     std::uint64_t seed = Random::freshSeed());

// The same from plain numbers: games per team, games against each division
// rival and the first date of the season as a calendar date.
ScheduleOutcome makeComputerSchedule(const fs::path& leagueDir, int gamesPerTeam, int divisionGames, int startYear,
                                     int startMonth, int startDay, std::uint64_t seed = Random::freshSeed());

}  // namespace tallyrink
