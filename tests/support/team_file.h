#pragma once

// A league folder's HKTEAMS written record by record, for tests that need
// teams and nothing else of a league.

#include <filesystem>
#include <string>
#include <vector>

#include "league/files.h"
#include "league/records.h"

namespace tallyrink::testing {

struct TeamRow {
    int number = 0;
    std::string city;
    std::string nickname;
    std::string abbrev;
    int year = 2017;
    bool active = true;
};

inline void writeTeams(const std::filesystem::path& leagueDir, const std::vector<TeamRow>& teams) {
    RandomFile file(leagueDir / "HKTEAMS", codec::slotWidth<TeamRecord>());
    for (const auto& row : teams) {
        TeamRecord r;
        r.TeamActive = row.active ? 1 : 0;
        r.City.assign(row.city);
        r.Nickname.assign(row.nickname);
        r.Abbrev.assign(row.abbrev);
        r.TeamYear = static_cast<std::int16_t>(row.year);
        writeRecord(file, static_cast<std::size_t>(row.number), r);
    }
}

// Active teams with plain names ("City 5", "Club 5") and codes of three
// letters ("AAE" for team 5) at these numbers.
inline void writeNumberedTeams(const std::filesystem::path& leagueDir, const std::vector<int>& numbers) {
    std::vector<TeamRow> rows;
    for (int t : numbers) {
        auto n = std::to_string(t);
        std::string code{static_cast<char>('A' + t / 676 % 26), static_cast<char>('A' + t / 26 % 26),
                         static_cast<char>('A' + t % 26)};
        rows.push_back({t, "City " + n, "Club " + n, code});
    }
    writeTeams(leagueDir, rows);
}

}  // namespace tallyrink::testing
