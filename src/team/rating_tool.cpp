#include "team/rating_tool.h"

#include <fmt/core.h>

#include <algorithm>

#include "league/files.h"
#include "league/league.h"

namespace tallyrink {

namespace {

bool isCollegeTeam(const TeamRecord& t) { return t.TeamType.str() == "C"; }

RandomFile playerFile(const fs::path& leagueDir) { return RandomFile(findFile(leagueDir, kPlayerFile), kPlayerSlot); }

TeamRecord readTeam(const fs::path& leagueDir, int team) {
    RandomFile teams(findFile(leagueDir, kTeamFile), codec::slotWidth<TeamRecord>());
    return readRecord<TeamRecord>(teams, static_cast<std::size_t>(team));
}

RatingRun runFor(const TeamRecord& t, const RatingInputs& inputs, const RatingChecks& checks, const EraTable& era) {
    RatingRun run;
    run.inputs = inputs;
    run.checks = checks;
    run.teamYear = t.TeamYear;
    run.college = isCollegeTeam(t);
    run.era = &era;
    return run;
}

}  // namespace

RatingInputs rateRecords(std::span<PlayerRecord> players, const EraTable& era, int teamYear, bool college,
                         const HistoricalRatings* history) {
    std::vector<RatingSubject> subjects;
    subjects.reserve(players.size());
    for (const auto& p : players) subjects.push_back({p, realAverageMinutes(p, teamYear, era, college), {}});
    RatingRun run;
    run.inputs = prefilledInputs(subjects, era, teamYear, college);
    run.teamYear = teamYear;
    run.college = college;
    run.era = &era;
    GenerateData(subjects, run, history);
    for (std::size_t i = 0; i < players.size(); ++i) players[i] = subjects[i].record;
    return run.inputs;
}

bool needsRatings(const PlayerRecord& p) {
    const StatLine& real = statLine(p, StatLineIndex::Real);
    if (real.GP == 0) return false;
    if (isGoalie(p)) return real.Saves > 0 && p.RatingGoalie == 0;
    return p.RatingOffense == 0 && p.RatingDefense == 0;
}

int rateUnratedPlayers(std::span<PlayerRecord> players, const EraTable& era, int teamYear, bool college) {
    if (std::none_of(players.begin(), players.end(), needsRatings)) return 0;
    std::vector<PlayerRecord> rated(players.begin(), players.end());
    rateRecords(rated, era, teamYear, college);
    int count = 0;
    for (std::size_t i = 0; i < players.size(); ++i) {
        if (!needsRatings(players[i])) continue;
        players[i] = rated[i];
        ++count;
    }
    return count;
}

TeamRating readTeamForRating(const fs::path& leagueDir, int team, const EraTable& era) {
    TeamRating out;
    out.team = team;
    if (!isTeamNumber(team)) return out;
    const TeamRecord t = readTeam(leagueDir, team);
    out.city = t.City.str();
    const RandomFile players = playerFile(leagueDir);
    const std::uint64_t length = players.length();
    for (std::int16_t id : t.Roster) {
        if (id <= 0 || id > kMaxRosterPlayerId) continue;
        // Only whole records are rated, so a short file is never lengthened.
        if (std::uint64_t(id) * kPlayerSlot > length) continue;
        PlayerRecord p = readRecord<PlayerRecord>(players, static_cast<std::size_t>(id));
        if (p.PlayerId == 0 || p.TeamId != team) continue;
        double minutes = realAverageMinutes(p, t.TeamYear, era, isCollegeTeam(t));
        out.players.push_back({std::move(p), minutes, {}});
        out.recordNumbers.push_back(id);
    }
    return out;
}

TeamRating rateTeam(const fs::path& leagueDir, int team, const EraTable& era, const HistoricalRatings* history,
                    const RatingChecks& checks, const std::optional<RatingInputs>& inputs) {
    TeamRating out = readTeamForRating(leagueDir, team, era);
    if (out.players.empty()) return out;
    const TeamRecord t = readTeam(leagueDir, team);
    out.inputs = inputs ? *inputs : prefilledInputs(out.players, era, t.TeamYear, isCollegeTeam(t));
    out.refusal = GenerateData(out.players, runFor(t, out.inputs, checks, era), history);
    return out;
}

void saveTeamRatings(const fs::path& leagueDir, const TeamRating& rated) {
    if (rated.refusal) return;
    const RandomFile players = playerFile(leagueDir);
    for (std::size_t i = 0; i < rated.players.size() && i < rated.recordNumbers.size(); ++i)
        writeRecord(players, static_cast<std::size_t>(rated.recordNumbers[i]), rated.players[i].record);
}

std::vector<TeamRating> rateLeague(const fs::path& leagueDir, const EraTable& era, const HistoricalRatings* history) {
    std::vector<TeamRating> out;
    RandomFile teams(findFile(leagueDir, kTeamFile), codec::slotWidth<TeamRecord>());
    const auto records = readRecords<TeamRecord>(teams, kMaxTeams);
    for (int t = 1; t <= kMaxTeams; ++t) {
        if (records[std::size_t(t - 1)].TeamActive != 1) continue;
        TeamRating rated = rateTeam(leagueDir, t, era, history);
        saveTeamRatings(leagueDir, rated);
        out.push_back(std::move(rated));
    }
    writeLeagueRatingsCsv(leagueDir);
    return out;
}

void writeLeagueRatingsCsv(const fs::path& leagueDir) {
    RandomFile teams(findFile(leagueDir, kTeamFile), codec::slotWidth<TeamRecord>());
    const auto teamRecords = readRecords<TeamRecord>(teams, kMaxTeams);
    const auto rows = readPlayerRows(findFile(leagueDir, kPlayerFile));
    auto byNumber = [&](int id) -> const PlayerRecord* {
        if (id <= 0 || std::size_t(id) > rows.size()) return nullptr;
        return &rows[std::size_t(id - 1)].player;
    };
    std::vector<PlayerRecord> listed;
    for (int t = 1; t <= kMaxTeams; ++t) {
        const TeamRecord& team = teamRecords[std::size_t(t - 1)];
        if (team.TeamActive != 1) continue;
        for (std::int16_t id : team.Roster)
            if (const PlayerRecord* p = byNumber(id); p && p->PlayerId != 0 && p->TeamId == t) listed.push_back(*p);
    }
    for (const auto& row : rows)
        if (row.player.PlayerId != 0 && row.player.TeamId == kFreeAgent) listed.push_back(row.player);
    writeRatingsCsv(leagueDir, listed);
}

}  // namespace tallyrink
