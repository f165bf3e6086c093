#include "operations/season_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "league/files.h"
#include "league/records.h"
#include "operations/season_import.h"

namespace tallyrink {

namespace {

// Sums of real stat lines.
struct Tally {
    long long goals = 0, assists = 0, pim = 0, ppg = 0, sog = 0, gp = 0, gwg = 0, goalsAllowed = 0;

    void add(const StatLine& r) {
        goals += r.Goals, assists += r.Assists, pim += r.Pim, ppg += r.PPG, sog += r.Sog;
        gp += r.GP, gwg += r.GWG, goalsAllowed += r.GoalsAllowed;
    }
};

// A team's games as the schedule and the results file have them.
struct Standing {
    int scheduled = 0, goalsFor = 0, goalsAgainst = 0, wins = 0, losses = 0, overtimeLosses = 0;
};

// What the league folder holds.
struct Written {
    std::vector<TeamRecord> teams;
    std::map<int, std::string> codeOf;  // team number of each active team
    std::size_t players = 0, games = 0, results = 0;
    int offRoster = 0;  // records not on the roster of their team
    Tally all;
    std::map<std::string, Tally> byTeam;
    std::map<std::string, Standing> standing;
    long long resultGoals = 0;
};

// What the season's files say.
struct Expected {
    Tally all;
    std::map<std::string, Tally> byTeam;
    long long emptyNetAgainst = 0;
    int shootouts = 0;
    std::size_t stints = 0;
};

std::vector<RealResult> readResults(const fs::path& path) {
    std::vector<RealResult> out;
    auto lines = readLines(path);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        std::vector<std::string> cells(1);
        for (char c : lines[i]) {
            if (c == ',')
                cells.emplace_back();
            else
                cells.back().push_back(c);
        }
        if (cells.size() < 8) throw FileError(fmt::format("{}, line {}: not a result", path.string(), i + 1));
        RealResult r;
        r.visitor = cells[1];
        r.home = cells[2];
        try {
            r.visitorGoals = std::stoi(cells[5]);
            r.homeGoals = std::stoi(cells[6]);
        } catch (const std::exception&) {
            throw FileError(fmt::format("{}, line {}: not a result", path.string(), i + 1));
        }
        r.decidedIn = cells[7];
        out.push_back(r);
    }
    return out;
}

Written readWritten(const fs::path& dir) {
    Written w;
    RandomFile playerFile(findFile(dir, kPlayerFile), codec::slotWidth<PlayerRecord>());
    auto players = readRecords<PlayerRecord>(playerFile, playerFile.count(kPlayerRounding));
    w.teams = readRecords<TeamRecord>(RandomFile(findFile(dir, kTeamFile), codec::slotWidth<TeamRecord>()), kMaxTeams);
    RandomFile skedFile(findFile(dir, kDefaultScheduleFile), codec::slotWidth<GameRecord>());
    auto schedule = readRecords<GameRecord>(skedFile, skedFile.count(kScheduleRounding));
    auto results = readResults(findFile(dir, kRealResultsFile));
    w.players = players.size(), w.games = schedule.size(), w.results = results.size();

    for (int t = 1; t <= kMaxTeams; ++t) {
        const TeamRecord& team = w.teams[static_cast<std::size_t>(t - 1)];
        if (team.TeamActive == 1) w.codeOf[t] = team.Abbrev.str();
    }
    for (const auto& p : players) {
        auto it = w.codeOf.find(p.TeamId);
        const auto* roster = it == w.codeOf.end() ? nullptr : &w.teams[static_cast<std::size_t>(p.TeamId - 1)].Roster;
        if (!roster || std::find(roster->begin(), roster->end(), p.PlayerId) == roster->end()) ++w.offRoster;
        if (it == w.codeOf.end()) continue;
        w.all.add(statLine(p, StatLineIndex::Real));
        w.byTeam[it->second].add(statLine(p, StatLineIndex::Real));
    }
    for (const auto& g : schedule) {
        if (w.codeOf.contains(g.VisitorTeam)) ++w.standing[w.codeOf[g.VisitorTeam]].scheduled;
        if (w.codeOf.contains(g.HomeTeam)) ++w.standing[w.codeOf[g.HomeTeam]].scheduled;
    }
    for (const auto& r : results) {
        auto& v = w.standing[r.visitor];
        auto& h = w.standing[r.home];
        v.goalsFor += r.visitorGoals, v.goalsAgainst += r.homeGoals;
        h.goalsFor += r.homeGoals, h.goalsAgainst += r.visitorGoals;
        w.resultGoals += r.visitorGoals + r.homeGoals;
        bool visitorWon = r.visitorGoals > r.homeGoals;
        ++(visitorWon ? v : h).wins;
        auto& loser = visitorWon ? h : v;
        ++(r.decidedIn == "REG" ? loser.losses : loser.overtimeLosses);
    }
    return w;
}

Expected expectedTotals(const SeasonData& data) {
    Expected e;
    for (const auto& s : data.scoring) {
        auto& t = e.byTeam[s.team];
        for (Tally* x : {&e.all, &t}) {
            x->goals += s.goals, x->assists += s.assists, x->pim += s.pim, x->ppg += s.ppg, x->sog += s.sog;
            x->gwg += s.gwg;
            if (s.bio.position != 'G') x->gp += s.gp;
        }
    }
    for (const auto& g : data.goalies) {
        e.all.gp += g.gp;
        e.all.goalsAllowed += g.goalsAgainst;
        e.emptyNetAgainst += g.emptyNetAgainst;
    }
    for (const auto& g : data.games) e.shootouts += g.decidedIn == "SO";
    e.stints = data.scoring.size();
    for (const auto& g : data.goalies)
        e.stints += std::none_of(data.scoring.begin(), data.scoring.end(),
                                 [&](const ScoringStint& s) { return s.playerId == g.playerId && s.team == g.team; });
    return e;
}

class Checker {
public:
    Checker(const SeasonData& data, const Written& written, const Expected& expected)
        : data_(data), w_(written), e_(expected) {}

    std::vector<SeasonCheck> run() {
        teams();
        games();
        records();
        goals();
        scores();
        assists();
        penaltyMinutes();
        powerPlayGoals();
        shots();
        gamesPlayed();
        teamRecords();
        goalsAgainst();
        gameWinningGoals();
        return std::move(checks_);
    }

private:
    void add(std::string name, bool ok, std::string detail) {
        checks_.push_back({std::move(name), std::move(detail), ok});
    }

    // The teams for which `differs` has something to say, as one line.
    template <class F>
    std::optional<std::string> teamsWhere(F differs) const {
        std::vector<std::string> bad;
        for (const auto& t : data_.teams)
            if (auto what = differs(t)) bad.push_back(*what);
        if (bad.empty()) return std::nullopt;
        std::string out;
        for (std::size_t i = 0; i < bad.size() && i < 5; ++i) out += (i ? "; " : "") + bad[i];
        if (bad.size() > 5) out += fmt::format("; {} more", bad.size() - 5);
        return out;
    }

    const Tally& held(const std::string& code) const {
        static const Tally none;
        auto it = w_.byTeam.find(code);
        return it == w_.byTeam.end() ? none : it->second;
    }
    const Standing& standing(const std::string& code) const {
        static const Standing none;
        auto it = w_.standing.find(code);
        return it == w_.standing.end() ? none : it->second;
    }

    void teams() {
        add("teams", w_.codeOf.size() == data_.teams.size(),
            fmt::format("{} teams written, {} in the data", w_.codeOf.size(), data_.teams.size()));
    }

    void games() {
        std::set<int> perTeam;
        auto bad = teamsWhere([&](const TeamFacts& t) -> std::optional<std::string> {
            int n = standing(t.code).scheduled;
            perTeam.insert(n);
            if (n == t.gp) return std::nullopt;
            return fmt::format("{} {} scheduled, GP {}", t.code, n, t.gp);
        });
        bool ok = !bad && w_.games == data_.games.size();
        std::string spread = perTeam.size() == 1 ? fmt::format("{} per team", *perTeam.begin()) : "as each team's GP";
        add("games", ok,
            bad ? *bad
                : fmt::format("{} games written, {} in the data, {}", thousands(static_cast<long long>(w_.games)),
                              thousands(static_cast<long long>(data_.games.size())), spread));
    }

    void records() {
        add("player records", w_.offRoster == 0 && w_.players == e_.stints,
            fmt::format("{} records for {} stints, {} not on their team's roster",
                        thousands(static_cast<long long>(w_.players)), thousands(static_cast<long long>(e_.stints)),
                        w_.offRoster));
    }

    void goals() {
        long long teamGoals = 0;
        for (const auto& t : data_.teams) teamGoals += t.goalsFor;
        auto bad = teamsWhere([&](const TeamFacts& t) -> std::optional<std::string> {
            long long players = held(t.code).goals;
            if (players + t.shootoutWins == t.goalsFor) return std::nullopt;
            return fmt::format("{} players {} + shootout wins {} = {}, GF {}", t.code, players, t.shootoutWins,
                               players + t.shootoutWins, t.goalsFor);
        });
        add("goals", !bad && w_.all.goals == e_.all.goals,
            bad ? *bad
                : fmt::format("players {} + shootout wins {} = team GF {}", thousands(w_.all.goals),
                              thousands(teamGoals - w_.all.goals), thousands(teamGoals)));
    }

    void scores() {
        auto bad = teamsWhere([&](const TeamFacts& t) -> std::optional<std::string> {
            const Standing& s = standing(t.code);
            if (s.goalsFor == t.goalsFor && s.goalsAgainst == t.goalsAgainst) return std::nullopt;
            return fmt::format("{} results {}-{}, GF-GA {}-{}", t.code, s.goalsFor, s.goalsAgainst, t.goalsFor,
                               t.goalsAgainst);
        });
        add("scores", !bad && w_.results == w_.games,
            bad ? *bad
                : fmt::format("{} results with {} goals, each team's GF and GA",
                              thousands(static_cast<long long>(w_.results)), thousands(w_.resultGoals)));
    }

    void assists() {
        add("assists", w_.all.assists == e_.all.assists,
            fmt::format("{} written, {} in the data", thousands(w_.all.assists), thousands(e_.all.assists)));
    }

    void penaltyMinutes() {
        long long bench = 0, team = 0;
        for (const auto& t : data_.teams) bench += t.benchMinutes, team += t.pim;
        auto bad = teamsWhere([&](const TeamFacts& t) -> std::optional<std::string> {
            long long players = held(t.code).pim;
            if (players + t.benchMinutes == t.pim) return std::nullopt;
            return fmt::format("{} players {} + bench {} = {}, team {}", t.code, players, t.benchMinutes,
                               players + t.benchMinutes, t.pim);
        });
        add("penalty minutes", !bad && w_.all.pim == e_.all.pim,
            bad ? *bad
                : fmt::format("players {} + bench {} = team PIM {}", thousands(w_.all.pim), thousands(bench),
                              thousands(team)));
    }

    void powerPlayGoals() {
        auto bad = teamsWhere([&](const TeamFacts& t) -> std::optional<std::string> {
            if (held(t.code).ppg == t.ppg) return std::nullopt;
            return fmt::format("{} players {}, team {}", t.code, held(t.code).ppg, t.ppg);
        });
        add("power-play goals", !bad && w_.all.ppg == e_.all.ppg,
            bad ? *bad : fmt::format("{} = the teams' PPG", thousands(w_.all.ppg)));
    }

    // The teams' shots come from the per-game lines of another source and
    // differ by a shot or two; they are shown, not compared.
    void shots() {
        long long teamShots = 0;
        long long widest = 0;
        for (const auto& t : data_.teams) {
            teamShots += t.shotsFor;
            widest = std::max(widest, std::abs(t.shotsFor - held(t.code).sog));
        }
        add("shots", w_.all.sog == e_.all.sog,
            fmt::format("{} written, {} in the data; the teams' game lines count {} (at most {} apart for a team)",
                        thousands(w_.all.sog), thousands(e_.all.sog), thousands(teamShots), widest));
    }

    void gamesPlayed() {
        add("games played", w_.all.gp == e_.all.gp,
            fmt::format("{} player games written, {} in the data", thousands(w_.all.gp), thousands(e_.all.gp)));
    }

    void teamRecords() {
        auto bad = teamsWhere([&](const TeamFacts& t) -> std::optional<std::string> {
            int number = 0;
            for (const auto& [n, code] : w_.codeOf)
                if (code == t.code) number = n;
            if (number == 0) return fmt::format("{} not written", t.code);
            const TeamRecord& r = w_.teams[static_cast<std::size_t>(number - 1)];
            const Standing& s = standing(t.code);
            auto data = std::make_tuple(t.wins, t.losses, t.overtimeLosses);
            if (std::make_tuple(int{r.RealWins}, int{r.RealLosses}, int{r.RealOvertimeLosses}) == data &&
                std::make_tuple(s.wins, s.losses, s.overtimeLosses) == data &&
                t.wins + t.losses + t.overtimeLosses == t.gp)
                return std::nullopt;
            return fmt::format("{} written {}-{}-{}, results {}-{}-{}, data {}-{}-{} in {} games", t.code, r.RealWins,
                               r.RealLosses, r.RealOvertimeLosses, s.wins, s.losses, s.overtimeLosses, t.wins, t.losses,
                               t.overtimeLosses, t.gp);
        });
        add("team records", !bad, bad ? *bad : "each team's W-L-OTL as in the data and the results");
    }

    void goalsAgainst() {
        long long total = w_.all.goalsAllowed + e_.emptyNetAgainst;
        add("goals against", w_.all.goalsAllowed == e_.all.goalsAllowed && total == e_.all.goals,
            fmt::format("goalies {} + empty-net {} = {}, player goals {}", thousands(w_.all.goalsAllowed),
                        thousands(e_.emptyNetAgainst), thousands(total), thousands(e_.all.goals)));
    }

    void gameWinningGoals() {
        auto games = static_cast<long long>(data_.games.size());
        add("game-winning goals", w_.all.gwg == e_.all.gwg && w_.all.gwg == games - e_.shootouts,
            fmt::format("{} = {} games - {} shootouts", thousands(w_.all.gwg), thousands(games), e_.shootouts));
    }

    const SeasonData& data_;
    const Written& w_;
    const Expected& e_;
    std::vector<SeasonCheck> checks_;
};

}  // namespace

std::string thousands(long long n) {
    std::string digits = std::to_string(n < 0 ? -n : n);
    std::string out;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
        out += digits[i];
    }
    return n < 0 ? "-" + out : out;
}

std::vector<SeasonCheck> checkLeague(const fs::path& dir, const SeasonData& data) {
    Written written = readWritten(dir);
    Expected expected = expectedTotals(data);
    return Checker(data, written, expected).run();
}

}  // namespace tallyrink
