#include "operations/new_league.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "operations/name_lists.h"
#include "operations/new_league_parts.h"

namespace tallyrink {

namespace {

using newleague::TeamIdentity;

int suitedDivisions(int teams) {
    int d = teams <= 7 ? 1 : teams <= 15 ? 2 : teams <= 32 ? 4 : teams <= 48 ? 6 : teams <= 64 ? 8 : (teams + 7) / 8;
    d = std::max(d, (teams + kTeamsPerDivision - 1) / kTeamsPerDivision);
    return std::min(d, kDivisions);
}

void setIdentity(TeamRecord& team, const TeamIdentity& id) {
    team.City.assign(id.city);
    team.Nickname.assign(id.nickname);
    team.Abbrev.assign(id.abbrev);
    team.TeamType.assign("P");
    team.ForeColor = id.foreColor;
    team.BackColor = id.backColor;
    team.ThirdColor = id.thirdColor;
    // On the road: white sweaters lettered in the home colour, or in the
    // home lettering when the home colour is too light to read on white.
    team.RoadBackColor = newleague::kWhite;
    team.RoadForeColor = id.foreColor == newleague::rgb(17, 17, 17) ? id.foreColor : id.backColor;
    team.RoadColorStamp = 1;
    team.Arena.assign(id.arena);
    team.ArenaFile.assign("Arena.jpg");
    team.ArenaStamp = 199;
}

void setRealRecord(TeamRecord& team, const TeamSeason& season) {
    team.RealWins = std::uint8_t(season.wins);
    team.RealLosses = std::uint8_t(season.losses);
    team.RealTies = std::uint8_t(season.ties);
    team.RealOvertimeLosses = std::uint8_t(season.overtimeLosses);
    team.RealRecordStamp = 199;
}

}  // namespace

std::vector<int> divisionLayout(int teams, int divisions) {
    if (teams < kMinNewLeagueTeams || teams > kMaxTeams)
        throw ToolRefused(fmt::format("A league has {} to {} teams!", kMinNewLeagueTeams, kMaxTeams));
    if (divisions == 0) divisions = suitedDivisions(teams);
    if (divisions < 1 || divisions > kDivisions || divisions > teams || teams > divisions * kTeamsPerDivision)
        throw ToolRefused(
            fmt::format("{} teams don't fit in {} divisions of at most {}!", teams, divisions, kTeamsPerDivision));
    std::vector<int> layout(std::size_t(divisions), teams / divisions);
    for (int d = 0; d < teams % divisions; ++d) ++layout[std::size_t(d)];
    return layout;
}

double targetShotsPerTeamGame(const EraTargets& era) {
    if (era.shotsPerTeamGame > 0) return era.shotsPerTeamGame;
    // Empty-net goals beat no goalie: the rest of the goals came off the shots
    // the goalies faced.
    return era.goalsPerTeamGame * (1.0 - 0.035) / (1.0 - era.savePct / 100.0);
}

GeneratedLeague generateLeague(const NewLeagueOptions& options, const EraTargets& era) {
    GeneratedLeague league;
    league.year = options.year;
    league.era = sanitizedEra(era, options.year);
    league.era.shotsPerTeamGame = targetShotsPerTeamGame(league.era);
    league.leagueName = options.leagueName.empty() ? "Tallyrink League" : options.leagueName;
    league.teamsPerDivision = divisionLayout(options.teams, options.divisions);
    auto divisionNames = names::divisionNames();
    for (std::size_t d = 0; d < league.teamsPerDivision.size(); ++d)
        league.divisionNames.emplace_back(divisionNames[d % divisionNames.size()]);
    if (league.teamsPerDivision.size() >= 2)
        for (auto name : names::conferenceNames()) league.conferenceNames.emplace_back(name);

    Random rng(options.seed);
    league.files = blankLeague(league.teamsPerDivision, options.year);
    std::vector<int> numbers = placeTeams(league.teamsPerDivision);
    std::vector<TeamIdentity> identities = newleague::drawTeamIdentities(rng, int(numbers.size()));
    league.seasons = newleague::drawTeamSeasons(rng, numbers, league.era, options.year);
    newleague::NameBook names;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        TeamRecord& team = league.files.teams[std::size_t(numbers[i] - 1)];
        setIdentity(team, identities[i]);
        setRealRecord(team, league.seasons[i]);
        auto players =
            newleague::drawTeamPlayers(rng, league.seasons[i], identities[i], league.era, options.year, names);
        for (std::size_t slot = 0; slot < players.size() && slot < team.Roster.size(); ++slot) {
            PlayerRecord& p = players[slot];
            p.PlayerId = std::int16_t(league.files.players.size() + 1);
            team.Roster[slot] = p.PlayerId;
            league.files.players.push_back(p);
        }
        // Left unset, the first load of the team runs the default coach
        // again and fills its lines and depth charts from the new roster.
        league.files.plans[std::size_t(numbers[i] - 1)].GamePlanStamp = 0;
    }
    return league;
}

LeagueFigures measureLeague(const GeneratedLeague& league) {
    LeagueFigures f;
    f.teams = int(league.seasons.size());
    long teamGames = 0;
    for (const auto& t : league.files.teams)
        if (t.TeamActive == 1) teamGames += t.RealWins + t.RealLosses + t.RealTies + t.RealOvertimeLosses;
    long goals = 0, assists = 0, pim = 0, ppGoals = 0, shots = 0, fights = 0, saves = 0, against = 0;
    for (const auto& p : league.files.players) {
        if (p.PlayerId == 0) continue;
        ++f.players;
        const StatLine& real = statLine(p, StatLineIndex::Real);
        if (p.PositionFlags[4] == 1) {
            ++f.goalies;
            saves += real.Saves;
            against += real.GoalsAllowed;
        }
        goals += real.Goals;
        assists += real.Assists;
        pim += real.Pim;
        ppGoals += real.PPG;
        shots += real.Sog;
        fights += p.Fights[0];
    }
    long powerPlays = 0;
    for (const auto& s : league.seasons) powerPlays += s.powerPlays;
    auto per = [](long part, long whole) { return whole > 0 ? double(part) / double(whole) : 0.0; };
    EraTargets& m = f.measured;
    m.games = f.teams > 0 ? int(std::lround(per(teamGames, f.teams))) : 0;
    m.goalsPerTeamGame = per(goals, teamGames);
    m.assistsPerGoal = per(assists, goals);
    m.pimPerTeamGame = per(pim, teamGames);
    m.powerPlayPct = 100.0 * per(ppGoals, powerPlays);
    m.savePct = 100.0 * per(saves, saves + against);
    m.shotsPerTeamGame = per(shots, teamGames);
    // Each team counts the fights it took part in; the era counts the
    // fighting majors of both teams in a game.
    m.fightsPerGame = 2 * per(fights, teamGames);
    return f;
}

}  // namespace tallyrink
