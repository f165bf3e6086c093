#pragma once

// A schedule as a comma-separated file: four items a game (month, day,
// visitor, home), one game a line. Import replaces the league's schedule
// only when every game of the file is good; export writes the same columns.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "league/files.h"
#include "league/records.h"
#include "league/schedule.h"
#include "league/team_directory.h"
#include "operations/schedule_generator.h"

namespace tallyrink {

struct CsvSchedule {
    std::vector<GameRecord> games;  // in the file's order
    std::string error;              // empty when the file is good; else where and what
};

// Reads the games of a CSV text. A month is a month's name, its first three
// letters, or its place in the season (1 September .. 12 August); teams are
// named by full name, city, nickname, code or number. `fileLabel` names the
// file in error messages, which give the line and column of the bad item.
CsvSchedule parseCsvSchedule(std::string_view text, const TeamDirectory& teams, int year, std::string_view fileLabel);

// Replaces the league's schedule by the games of `csvFile`. Nothing is
// written when the file has a bad game.
ScheduleOutcome importCsvSchedule(const fs::path& leagueDir, const fs::path& csvFile,
                                  std::string_view scheduleFile = kDefaultScheduleFile);

// The schedule's games (deleted ones left out) as CSV lines that the import
// reads back: month name, day, visitor and home by full name.
std::string csvScheduleText(const Schedule& schedule, const TeamDirectory& teams);

// Writes csvScheduleText of the league's schedule to `csvFile`; returns the
// number of games written.
std::size_t exportCsvSchedule(const fs::path& leagueDir, const fs::path& csvFile,
                              std::string_view scheduleFile = kDefaultScheduleFile);

}  // namespace tallyrink
