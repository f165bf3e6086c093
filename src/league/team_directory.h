#pragma once

// Who plays in a league, by number and by the names people use for a team:
// what schedules, imports and the command line need to turn "Toronto", "tor"
// or "17" into a team number and back into something readable.

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "league/files.h"
#include "league/records.h"
#include "league/schedule.h"

namespace tallyrink {

struct TeamName {
    bool active = false;
    std::string city;
    std::string nickname;  // the city when the record has none
    std::string abbrev;    // the first letters of the city when the record has none
    int year = 0;          // TeamYear
};

class TeamDirectory {
public:
    // Reads HKTEAMS of the league folder; a missing or short file leaves the
    // missing slots empty.
    static TeamDirectory load(const fs::path& leagueDir);
    // From records 1 to 288 in order (fewer leave the rest empty).
    static TeamDirectory fromRecords(const std::vector<TeamRecord>& records);

    [[nodiscard]] const TeamName& team(int t) const { return teams_.at(static_cast<std::size_t>(t)); }
    [[nodiscard]] bool active(int t) const { return isTeamNumber(t) && team(t).active; }
    [[nodiscard]] ActiveTeams activeTeams() const;
    [[nodiscard]] std::vector<int> activeNumbers() const;

    // City and nickname, or the city alone when the nickname repeats it.
    [[nodiscard]] std::string fullName(int t) const;
    // The city, with the code added when another active team shares the city.
    [[nodiscard]] std::string displayName(int t) const;

    struct Match {
        int team = 0;  // 0 when nothing or more than one team matched
        bool ambiguous = false;
    };
    // An active team by number, code, city, nickname or full name, without
    // regard to case or surrounding blanks.
    [[nodiscard]] Match find(std::string_view text) const;

private:
    std::array<TeamName, kMaxTeams + 1> teams_{};
};

}  // namespace tallyrink
