#pragma once

// A new, empty league folder: every league file a season needs, 288 team
// slots of which the chosen ones are live, and a default game plan for each
// live team. Players come later, by hand, by import or from the made-up
// league generator.

#include <filesystem>
#include <stdexcept>
#include <vector>

#include "league/records.h"

namespace tallyrink {

namespace fs = std::filesystem;

// A league tool that refuses to go on; the message is the user's.
class ToolRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The new league's folder already holds files, and leave to overwrite them
// wasn't given.
class LeagueFolderExists : public ToolRefused {
public:
    using ToolRefused::ToolRefused;
};

inline constexpr std::uint8_t kCreateStampA = 37;  // the team slot was made by the blank-league tool
inline constexpr std::uint8_t kCreateStampB = 44;  // the team was created rather than imported

// The records a new league folder starts with.
struct LeagueFiles {
    std::vector<TeamRecord> teams;      // all 288 slots, team t at index t - 1
    std::vector<GamePlanRecord> plans;  // slots 1 to the highest live team
    std::vector<PlayerRecord> players;  // player r at index r - 1
};

// Team numbers made for so many teams in each division (division 1 first):
// each takes the first free slot of its division's twelve.
std::vector<int> placeTeams(const std::vector<int>& teamsPerDivision);

// The records of a blank league: live teams named "Team 1", "Team 2", ... of
// `teamYear`, each with the default game plan.
LeagueFiles blankLeague(const std::vector<int>& teamsPerDivision, int teamYear);

// Refuses a folder that can't take a new league: no name, or one that
// already holds files when the user hasn't agreed to overwrite them.
void checkNewLeagueFolder(const fs::path& folder, bool overwrite);

// Makes the folder when needed and replaces its player, team, game plan,
// rules and scores files. The rules file is left empty, so the league
// starts with every rule at its default.
void writeLeagueFolder(const fs::path& folder, const LeagueFiles& files);

// The blank-league tool as a whole: check, make, write.
struct BlankLeagueRequest {
    fs::path folder;
    std::vector<int> teamsPerDivision;
    int teamYear = 1920;
    bool overwrite = false;
};
LeagueFiles createBlankLeague(const BlankLeagueRequest& request);

}  // namespace tallyrink
