#include "reports/replay_report.h"

#include <fmt/format.h>

#include "league/text.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "league/era.h"
#include "league/league.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

constexpr std::size_t kStats = static_cast<std::size_t>(PlayerStat::Count);

struct TeamFigures {
    int games = 0;
    double goalsFor = 0, goalsAgainst = 0, shots = 0, pim = 0, ppg = 0, hits = 0, points = 0, powerPlays = 0;
    double overtimeLosses = 0;
};

// The real season as the league holds it: the team's real line where the
// league has one, else the sum of its players' real lines.
TeamFigures realTeam(const TeamRecord& t, const std::vector<const PlayerRecord*>& roster) {
    TeamFigures f;
    const StatLine& r = t.TeamRealLine;
    if (r.GP > 0) {
        f.games = r.GP;
        // The goals byte can overflow in a long season; the goal difference
        // and goals against are words.
        f.goalsAgainst = r.GoalsAllowed;
        f.goalsFor = r.GoalsAllowed != 0 ? r.GoalsAllowed + r.PlusMinus : r.Goals;
        f.shots = r.Sog;
        f.pim = r.Pim;
        f.ppg = r.PPG;
        f.hits = r.Hits;
        f.points = 2.0 * r.GoalieWins + r.GoalieTies + r.GoalieOvertimeLosses;
        f.overtimeLosses = r.GoalieOvertimeLosses;
        return f;
    }
    for (const PlayerRecord* p : roster) {
        const StatLine& s = statLine(*p, StatLineIndex::Real);
        f.games = std::max<int>(f.games, s.GP);
        f.goalsFor += s.Goals;
        f.shots += s.Sog;
        f.pim += s.Pim;
        f.ppg += s.PPG;
        f.hits += s.Hits;
        f.goalsAgainst += s.GoalsAllowed;
        f.points += 2.0 * s.GoalieWins + s.GoalieTies + s.GoalieOvertimeLosses;
        f.overtimeLosses += s.GoalieOvertimeLosses;
    }
    return f;
}

TeamFigures replayTeam(const TeamRecord& t) {
    TeamFigures f;
    f.games = t.Wins + t.Losses + t.Ties + t.OvertimeLosses;
    f.goalsFor = t.TeamFor[0].Goals;
    f.goalsAgainst = t.TeamAgainst[0].Goals;
    f.shots = t.TeamFor[0].Sog;
    f.pim = t.TeamFor[0].Pim;
    f.ppg = t.TeamFor[0].PPG;
    f.hits = t.TeamFor[0].Hits;
    f.points = 2.0 * t.Wins + t.Ties + t.OvertimeLosses;
    f.powerPlays = t.PowerPlays[0];
    f.overtimeLosses = t.OvertimeLosses;
    return f;
}

double perGame(double total, int games) { return games > 0 ? total / games : 0; }

std::array<double, kStats> statsOf(const StatLine& s) {
    double toi = s.GP > 0 ? s.Toi / 60.0 / s.GP : 0;
    return {double(s.GP), double(s.Goals), double(s.Assists), double(s.Goals + s.Assists), double(s.Pim), double(s.Sog),
            toi};
}

std::string pct(double v) { return fmt::format("{:.1f}%", 100 * v); }

std::string ratioText(const RealReplay& v) {
    return v.real != 0 ? fmt::format("{:+.1f}%", 100 * (v.ratio() - 1)) : std::string("-");
}

// Real against replay, one dot a player, with the line of perfect agreement.
std::string scatterSvg(const ReplayReport& r, PlayerStat stat, std::string_view caption) {
    auto i = static_cast<std::size_t>(stat);
    double top = 1;
    for (const auto& p : r.players) top = std::max({top, p.stat[i].real, p.stat[i].replay});
    top = std::ceil(top / 10) * 10;
    constexpr double size = 360;
    constexpr double pad = 40;
    auto x = [&](double v) { return pad + v / top * size; };
    auto y = [&](double v) { return pad + size - v / top * size; };
    std::string svg = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{0}\" role=\"img\" "
        "aria-label=\"{1}\">\n",
        size + 2 * pad, htmlEscaped(caption));
    svg += fmt::format("<rect x=\"{0}\" y=\"{0}\" width=\"{1}\" height=\"{1}\" fill=\"#f8f9fb\" stroke=\"#889\"/>\n",
                       pad, size);
    svg += fmt::format("<line x1=\"{}\" y1=\"{}\" x2=\"{}\" y2=\"{}\" stroke=\"#c33\" stroke-dasharray=\"4 3\"/>\n",
                       x(0), y(0), x(top), y(top));
    for (int k = 0; k <= 4; ++k) {
        double v = top * k / 4;
        svg += fmt::format("<text x=\"{:.0f}\" y=\"{:.0f}\" font-size=\"10\" text-anchor=\"middle\">{:.0f}</text>\n",
                           x(v), pad + size + 14, v);
        svg += fmt::format("<text x=\"{:.0f}\" y=\"{:.0f}\" font-size=\"10\" text-anchor=\"end\">{:.0f}</text>\n",
                           pad - 4, y(v) + 3, v);
    }
    for (const auto& p : r.players)
        svg += fmt::format(
            "<circle cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"2.5\" fill=\"#2a5db0\" fill-opacity=\"0.6\"><title>{} ({}): "
            "real {:.0f}, replay {:.0f}</title></circle>\n",
            x(p.stat[i].real), y(p.stat[i].replay), htmlEscaped(p.name), htmlEscaped(p.code), p.stat[i].real,
            p.stat[i].replay);
    svg += fmt::format("<text x=\"{:.0f}\" y=\"{:.0f}\" font-size=\"12\" text-anchor=\"middle\">real {}</text>\n",
                       pad + size / 2, pad + size + 32, playerStatName(stat));
    svg += fmt::format(
        "<text x=\"12\" y=\"{:.0f}\" font-size=\"12\" text-anchor=\"middle\" transform=\"rotate(-90 12 "
        "{:.0f})\">replay "
        "{}</text>\n",
        pad + size / 2, pad + size / 2, playerStatName(stat));
    svg += "</svg>\n";
    return svg;
}

}  // namespace

std::string_view playerStatName(PlayerStat s) {
    switch (s) {
        case PlayerStat::GP:
            return "GP";
        case PlayerStat::G:
            return "G";
        case PlayerStat::A:
            return "A";
        case PlayerStat::P:
            return "P";
        case PlayerStat::PIM:
            return "PIM";
        case PlayerStat::SOG:
            return "SOG";
        case PlayerStat::TOI:
            return "TOI/GP";
        case PlayerStat::Count:
            break;
    }
    return "";
}

double pearson(const std::vector<double>& x, const std::vector<double>& y) {
    std::size_t n = std::min(x.size(), y.size());
    if (n < 2) return 0;
    double mx = 0, my = 0;
    for (std::size_t i = 0; i < n; ++i) {
        mx += x[i];
        my += y[i];
    }
    mx /= double(n);
    my /= double(n);
    double sxy = 0, sxx = 0, syy = 0;
    for (std::size_t i = 0; i < n; ++i) {
        sxy += (x[i] - mx) * (y[i] - my);
        sxx += (x[i] - mx) * (x[i] - mx);
        syy += (y[i] - my) * (y[i] - my);
    }
    return sxx > 0 && syy > 0 ? sxy / std::sqrt(sxx * syy) : 0;
}

ReplayReport buildReplayReport(const League& league, const std::vector<PlayerRecord>& players, const EraTable* era) {
    ReplayReport out;
    std::map<int, std::vector<const PlayerRecord*>> byTeam;
    for (const auto& p : players)
        if (isTeamNumber(p.TeamId) && league.isActive(p.TeamId)) byTeam[p.TeamId].push_back(&p);

    double realSaves = 0, realShotsAgainst = 0, replaySaves = 0, replayShotsAgainst = 0;
    double realGoals = 0, replayGoals = 0, realShots = 0, replayShots = 0, realPim = 0, replayPim = 0;
    double realPpg = 0, replayPpg = 0, realHits = 0, replayHits = 0, replayPowerPlays = 0;
    double realOvertimeLosses = 0, replayOvertimeLosses = 0;
    std::map<int, double> fractionOf;
    bool complete = true;
    for (int t = 1; t <= kMaxTeams; ++t) {
        if (!league.isActive(t)) continue;
        const TeamRecord& rec = league.team(t);
        TeamFigures real = realTeam(rec, byTeam[t]);
        TeamFigures replay = replayTeam(rec);
        double fraction = real.games > 0 ? std::min(1.0, double(replay.games) / real.games) : 0;
        fractionOf[t] = fraction;
        if (replay.games < real.games) complete = false;

        TeamComparison c;
        c.team = t;
        c.code = rec.Abbrev.str();
        c.gamesReal = real.games;
        c.gamesReplay = replay.games;
        c.goalsFor = {real.goalsFor * fraction, replay.goalsFor};
        c.goalsAgainst = {real.goalsAgainst * fraction, replay.goalsAgainst};
        c.points = {real.points * fraction, replay.points};
        out.teams.push_back(c);

        out.league.teamGamesReal += real.games;
        out.league.teamGamesReplay += replay.games;
        realGoals += real.goalsFor;
        replayGoals += replay.goalsFor;
        realShots += real.shots;
        replayShots += replay.shots;
        realPim += real.pim;
        replayPim += replay.pim;
        realPpg += real.ppg;
        replayPpg += replay.ppg;
        realHits += real.hits;
        replayHits += replay.hits;
        replayPowerPlays += replay.powerPlays;
        realOvertimeLosses += real.overtimeLosses;
        replayOvertimeLosses += replay.overtimeLosses;
        realShotsAgainst += real.shots;
        realSaves += real.shots - real.goalsFor;
        replayShotsAgainst += replay.shots;
        replaySaves += replay.shots - replay.goalsFor;
    }
    out.seasonComplete = complete && out.league.teamGamesReplay > 0;
    LeagueComparison& l = out.league;
    l.goals = {perGame(realGoals, l.teamGamesReal), perGame(replayGoals, l.teamGamesReplay)};
    l.shots = {perGame(realShots, l.teamGamesReal), perGame(replayShots, l.teamGamesReplay)};
    l.pim = {perGame(realPim, l.teamGamesReal), perGame(replayPim, l.teamGamesReplay)};
    l.powerPlayGoals = {perGame(realPpg, l.teamGamesReal), perGame(replayPpg, l.teamGamesReplay)};
    l.hits = {perGame(realHits, l.teamGamesReal), perGame(replayHits, l.teamGamesReplay)};
    l.savePct = {realShotsAgainst > 0 ? realSaves / realShotsAgainst : 0,
                 replayShotsAgainst > 0 ? replaySaves / replayShotsAgainst : 0};
    l.powerPlayPct.replay = replayPowerPlays > 0 ? replayPpg / replayPowerPlays : 0;
    l.powerPlays.replay = perGame(replayPowerPlays, l.teamGamesReplay);
    // The season the league plays is that of its first team, as its games
    // are calibrated to.
    if (era != nullptr) {
        int year = 0;
        for (int t = 1; t <= kMaxTeams && year == 0; ++t)
            if (league.isActive(t)) year = league.team(t).TeamYear;
        double pct = EraTable::contains(year) ? era->year(year).PowerPlayPct / 100 : 0;
        if (pct > 0 && realPpg > 0) {
            l.powerPlayPct.real = pct;
            l.powerPlays.real = perGame(realPpg / pct, l.teamGamesReal);
        }
    }
    l.pastRegulation = {perGame(2 * realOvertimeLosses, l.teamGamesReal),
                        perGame(2 * replayOvertimeLosses, l.teamGamesReplay)};

    for (const auto& [team, roster] : byTeam) {
        for (const PlayerRecord* p : roster) {
            const StatLine& real = statLine(*p, StatLineIndex::Real);
            if (isGoalie(*p) || real.GP < kReplayReportMinGames) continue;
            PlayerComparison c;
            c.name = fmt::format("{} {}", p->FirstName.str(), p->LastName.str());
            c.code = league.team(team).Abbrev.str();
            c.fraction = fractionOf[team];
            auto realStats = statsOf(real);
            auto replayStats = statsOf(statLine(*p, StatLineIndex::Replay));
            for (std::size_t i = 0; i < kStats; ++i) {
                bool rate = i == static_cast<std::size_t>(PlayerStat::TOI);
                c.stat[i] = {rate ? realStats[i] : realStats[i] * c.fraction, replayStats[i]};
            }
            out.players.push_back(std::move(c));
        }
    }
    std::sort(out.players.begin(), out.players.end(), [](const auto& a, const auto& b) {
        auto p = static_cast<std::size_t>(PlayerStat::P);
        return a.stat[p].real > b.stat[p].real;
    });

    for (std::size_t i = 0; i < kStats; ++i) {
        StatAgreement a;
        a.stat = static_cast<PlayerStat>(i);
        std::vector<double> x, y;
        for (const auto& p : out.players) {
            // A player who hasn't played yet says nothing of his ice time.
            if (a.stat == PlayerStat::TOI && p.stat[static_cast<std::size_t>(PlayerStat::GP)].replay == 0) continue;
            x.push_back(p.stat[i].real);
            y.push_back(p.stat[i].replay);
        }
        a.players = static_cast<int>(x.size());
        a.correlation = pearson(x, y);
        for (std::size_t k = 0; k < x.size(); ++k) {
            a.meanError += y[k] - x[k];
            a.meanAbsError += std::abs(y[k] - x[k]);
        }
        if (!x.empty()) {
            a.meanError /= double(x.size());
            a.meanAbsError /= double(x.size());
        }
        out.agreement.push_back(a);
    }
    return out;
}

std::string replayReportText(const ReplayReport& r) {
    const LeagueComparison& l = r.league;
    std::string out = "Replay against the real season\n";
    out += r.seasonComplete ? "The replay season is complete.\n"
                            : fmt::format("The replay has played {} of {} team-games; real figures are pro-rated.\n",
                                          l.teamGamesReplay, l.teamGamesReal);
    out += "\nLeague, per team-game        Real   Replay   Diff\n";
    auto line = [&](std::string_view name, const RealReplay& v, int decimals) {
        out +=
            fmt::format("  {:<24}{:>8.{}f}{:>9.{}f}   {}\n", name, v.real, decimals, v.replay, decimals, ratioText(v));
    };
    line("Goals", l.goals, 2);
    line("Shots on goal", l.shots, 1);
    line("Penalty minutes", l.pim, 1);
    line("Power-play goals", l.powerPlayGoals, 2);
    line("Hits", l.hits, 1);
    out += fmt::format("  {:<24}{:>8}{:>9}   {}\n", "Save percentage", pct(l.savePct.real), pct(l.savePct.replay),
                       ratioText(l.savePct));
    auto known = [](const RealReplay& v, std::string text) { return v.real > 0 ? text : std::string("-"); };
    out += fmt::format("  {:<24}{:>8}{:>9}   {}\n", "Power-play percentage",
                       known(l.powerPlayPct, pct(l.powerPlayPct.real)), pct(l.powerPlayPct.replay),
                       ratioText(l.powerPlayPct));
    out += fmt::format("  {:<24}{:>8}{:>9.2f}   {}\n", "Power plays",
                       known(l.powerPlays, fmt::format("{:.2f}", l.powerPlays.real)), l.powerPlays.replay,
                       ratioText(l.powerPlays));
    out += fmt::format("  {:<24}{:>8}{:>9}   {}\n", "Games past regulation", pct(l.pastRegulation.real),
                       pct(l.pastRegulation.replay), ratioText(l.pastRegulation));

    out += "\nTeams          GP real/replay     GF real  replay     GA real  replay    Pts real  replay\n";
    for (const auto& t : r.teams)
        out += fmt::format("  {:<4}{:>10}/{:<6}{:>13.0f}{:>8.0f}{:>12.0f}{:>8.0f}{:>12.0f}{:>8.0f}\n", t.code,
                           t.gamesReal, t.gamesReplay, t.goalsFor.real, t.goalsFor.replay, t.goalsAgainst.real,
                           t.goalsAgainst.replay, t.points.real, t.points.replay);
    std::vector<double> x, y;
    for (const auto& t : r.teams) {
        x.push_back(t.points.real);
        y.push_back(t.points.replay);
    }
    out += fmt::format("  Team points correlation: {:.3f}\n", pearson(x, y));

    out += fmt::format("\nPlayers with {} or more real games: {}\n", kReplayReportMinGames, r.players.size());
    out += "  Stat       Players  Correlation  Mean error  Mean abs error\n";
    for (const auto& a : r.agreement)
        out += fmt::format("  {:<10}{:>8}{:>13.3f}{:>12.2f}{:>16.2f}\n", playerStatName(a.stat), a.players,
                           a.correlation, a.meanError, a.meanAbsError);

    out += "\n  Player                    Team    GP        G         A         P        PIM       SOG      TOI/GP\n";
    out += "                                  real rep  real rep  real rep  real rep  real rep  real rep  real  rep\n";
    std::size_t shown = 0;
    for (const auto& p : r.players) {
        if (++shown > 40) break;
        std::string row = fmt::format("  {:<26}{:<5}", p.name.substr(0, 25), p.code);
        for (std::size_t i = 0; i + 1 < kStats; ++i)
            row += fmt::format("{:>5.0f}{:>4.0f} ", p.stat[i].real, p.stat[i].replay);
        auto toi = static_cast<std::size_t>(PlayerStat::TOI);
        row += fmt::format("{:>5.1f}{:>5.1f}", p.stat[toi].real, p.stat[toi].replay);
        out += row + "\n";
    }
    if (r.players.size() > 40)
        out += fmt::format("  ... and {} more (--csv lists every player)\n", r.players.size() - 40);
    return out;
}

std::string replayReportCsv(const ReplayReport& r) {
    std::string out = "player,team,fraction";
    for (std::size_t i = 0; i < kStats; ++i) {
        auto name = playerStatName(static_cast<PlayerStat>(i));
        out += fmt::format(",{0}_real,{0}_replay", name);
    }
    out += "\n";
    for (const auto& p : r.players) {
        std::string name = p.name;
        if (name.find_first_of(",\"") != std::string::npos) {
            std::string quoted = "\"";
            for (char c : name) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
            name = quoted + "\"";
        }
        out += fmt::format("{},{},{:.3f}", name, p.code, p.fraction);
        for (std::size_t i = 0; i < kStats; ++i) out += fmt::format(",{:.2f},{:.2f}", p.stat[i].real, p.stat[i].replay);
        out += "\n";
    }
    // The league's figures follow as a second table, so that a sheet that
    // reads the players from the first line on still finds them.
    const LeagueComparison& l = r.league;
    out += "\nleague,real,replay\n";
    auto row = [&](std::string_view name, double real, double replay, bool known = true) {
        out +=
            known ? fmt::format("{},{:.4f},{:.4f}\n", name, real, replay) : fmt::format("{},,{:.4f}\n", name, replay);
    };
    row("goals", l.goals.real, l.goals.replay);
    row("shots", l.shots.real, l.shots.replay);
    row("pim", l.pim.real, l.pim.replay);
    row("power_play_goals", l.powerPlayGoals.real, l.powerPlayGoals.replay);
    row("hits", l.hits.real, l.hits.replay);
    row("save_pct", l.savePct.real, l.savePct.replay);
    row("power_play_pct", l.powerPlayPct.real, l.powerPlayPct.replay, l.powerPlayPct.real > 0);
    row("power_plays", l.powerPlays.real, l.powerPlays.replay, l.powerPlays.real > 0);
    row("past_regulation", l.pastRegulation.real, l.pastRegulation.replay);
    return out;
}

std::string replayReportHtml(const ReplayReport& r, std::string_view leagueName) {
    const LeagueComparison& l = r.league;
    std::string title = fmt::format("{}: replay against the real season", leagueName);
    std::string out = fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>{}</title>\n"
        "<style>body{{font-family:sans-serif;margin:2em;color:#222}}table{{border-collapse:collapse;margin:1em 0}}"
        "td,th{{padding:2px 8px;border-bottom:1px solid #ddd;text-align:right}}td:first-child,th:first-child"
        "{{text-align:left}}th{{background:#eef}}.plots{{display:flex;flex-wrap:wrap;gap:2em}}</style>\n"
        "</head>\n<body>\n<h1>{}</h1>\n",
        htmlEscaped(title), htmlEscaped(title));
    out += r.seasonComplete ? "<p>The replay season is complete.</p>\n"
                            : fmt::format(
                                  "<p>The replay has played {} of {} team-games; real figures are "
                                  "pro-rated to the games played.</p>\n",
                                  l.teamGamesReplay, l.teamGamesReal);
    out += "<h2>League, per team-game</h2>\n<table><tr><th></th><th>Real</th><th>Replay</th><th>Diff</th></tr>\n";
    auto row = [&](std::string_view name, const RealReplay& v, int decimals) {
        out += fmt::format("<tr><td>{}</td><td>{:.{}f}</td><td>{:.{}f}</td><td>{}</td></tr>\n", name, v.real, decimals,
                           v.replay, decimals, ratioText(v));
    };
    row("Goals", l.goals, 2);
    row("Shots on goal", l.shots, 1);
    row("Penalty minutes", l.pim, 1);
    row("Power-play goals", l.powerPlayGoals, 2);
    row("Hits", l.hits, 1);
    out += fmt::format("<tr><td>Save percentage</td><td>{}</td><td>{}</td><td>{}</td></tr>\n", pct(l.savePct.real),
                       pct(l.savePct.replay), ratioText(l.savePct));
    const bool ppKnown = l.powerPlayPct.real > 0;
    out += fmt::format("<tr><td>Power-play percentage</td><td>{}</td><td>{}</td><td>{}</td></tr>\n",
                       ppKnown ? pct(l.powerPlayPct.real) : "-", pct(l.powerPlayPct.replay), ratioText(l.powerPlayPct));
    out += fmt::format("<tr><td>Power plays</td><td>{}</td><td>{:.2f}</td><td>{}</td></tr>\n",
                       ppKnown ? fmt::format("{:.2f}", l.powerPlays.real) : "-", l.powerPlays.replay,
                       ratioText(l.powerPlays));
    out += fmt::format("<tr><td>Games past regulation</td><td>{}</td><td>{}</td><td>{}</td></tr>\n</table>\n",
                       pct(l.pastRegulation.real), pct(l.pastRegulation.replay), ratioText(l.pastRegulation));

    out +=
        "<h2>How well the players follow their real lines</h2>\n<table><tr><th>Stat</th><th>Players</th>"
        "<th>Correlation</th><th>Mean error</th><th>Mean abs error</th></tr>\n";
    for (const auto& a : r.agreement)
        out += fmt::format("<tr><td>{}</td><td>{}</td><td>{:.3f}</td><td>{:.2f}</td><td>{:.2f}</td></tr>\n",
                           playerStatName(a.stat), a.players, a.correlation, a.meanError, a.meanAbsError);
    out += "</table>\n<div class=\"plots\">\n";
    out += "<figure>" + scatterSvg(r, PlayerStat::P, "Points, real against replay") +
           "<figcaption>Points: each dot a player, the dashed line real = replay.</figcaption></figure>\n";
    out += "<figure>" + scatterSvg(r, PlayerStat::G, "Goals, real against replay") +
           "<figcaption>Goals.</figcaption></figure>\n";
    out += "<figure>" + scatterSvg(r, PlayerStat::SOG, "Shots, real against replay") +
           "<figcaption>Shots on goal.</figcaption></figure>\n</div>\n";

    out +=
        "<h2>Teams</h2>\n<table><tr><th>Team</th><th>GP real</th><th>GP replay</th><th>GF real</th><th>GF "
        "replay</th><th>GA real</th><th>GA replay</th><th>Pts real</th><th>Pts replay</th></tr>\n";
    for (const auto& t : r.teams)
        out += fmt::format(
            "<tr><td>{}</td><td>{}</td><td>{}</td><td>{:.0f}</td><td>{:.0f}</td><td>{:.0f}</td><td>{:.0f}</td>"
            "<td>{:.0f}</td><td>{:.0f}</td></tr>\n",
            htmlEscaped(t.code), t.gamesReal, t.gamesReplay, t.goalsFor.real, t.goalsFor.replay, t.goalsAgainst.real,
            t.goalsAgainst.replay, t.points.real, t.points.replay);
    out += "</table>\n<h2>Players</h2>\n<table><tr><th>Player</th><th>Team</th>";
    for (std::size_t i = 0; i < kStats; ++i)
        out += fmt::format("<th>{0} real</th><th>{0} replay</th>", playerStatName(static_cast<PlayerStat>(i)));
    out += "</tr>\n";
    for (const auto& p : r.players) {
        out += fmt::format("<tr><td>{}</td><td>{}</td>", htmlEscaped(p.name), htmlEscaped(p.code));
        for (std::size_t i = 0; i < kStats; ++i)
            out += fmt::format("<td>{:.{}f}</td><td>{:.{}f}</td>", p.stat[i].real, i + 1 == kStats ? 1 : 0,
                               p.stat[i].replay, i + 1 == kStats ? 1 : 0);
        out += "</tr>\n";
    }
    out += "</table>\n</body>\n</html>\n";
    return out;
}

}  // namespace tallyrink
