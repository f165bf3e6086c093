#include "operations/blank_league.h"

#include <fmt/core.h>

#include <algorithm>
#include <string>

#include "league/files.h"
#include "team/default_coach.h"

namespace tallyrink {

std::vector<int> placeTeams(const std::vector<int>& teamsPerDivision) {
    if (teamsPerDivision.size() > std::size_t(kDivisions))
        throw ToolRefused(fmt::format("A league has at most {} divisions!", kDivisions));
    std::vector<bool> taken(kMaxTeams + 1, false);
    std::vector<int> made;
    for (std::size_t d = 0; d < teamsPerDivision.size(); ++d) {
        int first = int(d) * kTeamsPerDivision + 1;
        for (int k = 0; k < teamsPerDivision[d]; ++k) {
            int t = first;
            while (t < first + kTeamsPerDivision && taken[t]) ++t;
            if (t == first + kTeamsPerDivision)
                throw ToolRefused(fmt::format("Division {} has room for only {} teams!", d + 1, kTeamsPerDivision));
            taken[t] = true;
            made.push_back(t);
        }
    }
    return made;
}

LeagueFiles blankLeague(const std::vector<int>& teamsPerDivision, int teamYear) {
    LeagueFiles files;
    files.teams.resize(kMaxTeams);
    std::vector<int> made = placeTeams(teamsPerDivision);
    int top = 0;
    for (std::size_t n = 0; n < made.size(); ++n) {
        TeamRecord& team = files.teams[made[n] - 1];
        std::string city = fmt::format("Team {}", n + 1);
        team.TeamActive = 1;
        team.City.assign(city);
        team.Abbrev.assign(city.substr(0, 3));
        team.TeamYear = static_cast<std::int16_t>(teamYear);
        team.CreateStampA = kCreateStampA;
        team.CreateStampB = kCreateStampB;
        top = std::max(top, made[n]);
    }
    files.plans.resize(top);
    for (int t : made) {
        GamePlanRecord& plan = files.plans[t - 1];
        plan.GamePlanTeam = static_cast<std::int16_t>(t);
        applyDefaultCoach(plan, teamYear);
        // The plan has been through a team load, which sets the usage shares
        // once before the default coach overrides them.
        plan.UsageStamp = 222;
    }
    return files;
}

void checkNewLeagueFolder(const fs::path& folder, bool overwrite) {
    fs::path named = folder.lexically_normal();
    if (!named.has_filename()) named = named.parent_path();  // "Leagues/New/" names "New"
    if (named.filename().string().find_first_not_of(' ') == std::string::npos)
        throw ToolRefused("You Must Specify A Folder Name!");
    std::error_code ec;
    if (!fs::exists(folder, ec)) return;
    if (!fs::is_directory(folder, ec)) throw ToolRefused(fmt::format("{} Already Exists!", folder.string()));
    if (fs::directory_iterator(folder, ec) == fs::directory_iterator()) return;
    if (!overwrite)
        throw LeagueFolderExists(fmt::format("{} Already Exists! Overwrite Teams And Players?", folder.string()));
}

void writeLeagueFolder(const fs::path& folder, const LeagueFiles& files) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) throw FileError(fmt::format("{}: cannot make the folder: {}", folder.string(), ec.message()));
    rewriteRecords(RandomFile(findFile(folder, "HKPLAYER"), codec::slotWidth<PlayerRecord>()), files.players);
    rewriteRecords(RandomFile(findFile(folder, "HKTEAMS"), codec::slotWidth<TeamRecord>()), files.teams);
    rewriteRecords(RandomFile(findFile(folder, "HKgameplan"), codec::slotWidth<GamePlanRecord>()), files.plans);
    writeFileAtomic(findFile(folder, "HKRULES"), std::string_view{});
    writeFileAtomic(findFile(folder, "SCORES"), std::string_view{});
}

LeagueFiles createBlankLeague(const BlankLeagueRequest& request) {
    checkNewLeagueFolder(request.folder, request.overwrite);
    LeagueFiles files = blankLeague(request.teamsPerDivision, request.teamYear);
    writeLeagueFolder(request.folder, files);
    return files;
}

}  // namespace tallyrink
