// Reports on the season so far: the standings and how the replay compares
// with the real season.

#include <fmt/core.h>

#include <algorithm>

#include "app/cli.h"
#include "league/files.h"
#include "league/league.h"
#include "league/schedule.h"
#include "reports/replay_report.h"
#include "reports/standings.h"

namespace tallyrink::cli {

namespace {

struct ReplayReportOptions {
    bool csv = false;
    bool html = false;
    std::string output;
};

void standings(const GlobalOptions& options, bool conference) {
    auto session = startSession(options);
    const League& league = session->league();
    if (league.ActiveTeamCount() == 0) throw CommandError("The league has no active team.");
    auto rows = buildStandings(league, session->rules(), loadScores(session->LeagueDir()));
    bool byConference = conference || session->rules().StandingsList == 1;
    fmt::print("{}", byConference ? DisplayStandingsConference(rows, session->rules())
                                  : DisplayStandingsDivision(rows, session->rules()));
}

void replayReport(const GlobalOptions& options, const ReplayReportOptions& opts) {
    auto session = startSession(options);
    const League& league = session->league();
    if (league.ActiveTeamCount() == 0) throw CommandError("The league has no active team.");
    std::vector<PlayerRecord> players;
    for (auto& row : readPlayerRows(findFile(session->LeagueDir(), kPlayerFile))) players.push_back(row.player);
    ReplayReport report = buildReplayReport(league, players, &session->era());
    if (opts.csv) {
        std::string text = replayReportCsv(report);
        if (opts.output.empty()) {
            fmt::print("{}", text);
        } else {
            writeFileAtomic(opts.output, text);
            fmt::print("Wrote {}\n", opts.output);
        }
        return;
    }
    if (opts.html) {
        std::string name = session->rules().LeagueName.str();
        if (name.empty()) name = session->LeagueDir().filename().string();
        std::filesystem::path file =
            opts.output.empty() ? session->LeagueDir() / "Replay Report.html" : std::filesystem::path(opts.output);
        writeFileAtomic(file, replayReportHtml(report, name));
        fmt::print("Wrote {}\n", file.string());
        return;
    }
    fmt::print("{}", replayReportText(report));
}

void leaders(const GlobalOptions& options, int top) {
    auto session = startSession(options);
    const League& league = session->league();
    struct Line {
        std::string name, team;
        int gp, goals, assists;
    };
    std::vector<Line> lines;
    for (auto& row : readPlayerRows(findFile(session->LeagueDir(), kPlayerFile))) {
        const PlayerRecord& p = row.player;
        if (!isTeamNumber(p.TeamId) || !league.isActive(p.TeamId)) continue;
        const StatLine& s = statLine(p, StatLineIndex::Replay);
        if (s.GP == 0) continue;
        lines.push_back({fmt::format("{} {}", p.FirstName.str(), p.LastName.str()), league.team(p.TeamId).Abbrev.str(),
                         s.GP, s.Goals, s.Assists});
    }
    std::stable_sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) {
        if (a.goals + a.assists != b.goals + b.assists) return a.goals + a.assists > b.goals + b.assists;
        return a.goals > b.goals;
    });
    if (lines.empty()) {
        fmt::print("No games have been posted yet.\n");
        return;
    }
    fmt::print("Scoring leaders\n  {:<4}{:<28}{:<5}{:>4}{:>5}{:>5}{:>5}\n", "", "Player", "Team", "GP", "G", "A", "P");
    for (int k = 0; k < top && k < static_cast<int>(lines.size()); ++k) {
        const Line& l = lines[static_cast<std::size_t>(k)];
        fmt::print("  {:<4}{:<28}{:<5}{:>4}{:>5}{:>5}{:>5}\n", k + 1, l.name.substr(0, 27), l.team, l.gp, l.goals,
                   l.assists, l.goals + l.assists);
    }
}

}  // namespace

void addReportCommands(CLI::App& app, GlobalOptions& options) {
    auto* standingsCmd = app.add_subcommand("standings", "Show the division standings of the open league");
    auto conference = std::make_shared<bool>(false);
    standingsCmd->add_flag("--conference", *conference, "Conference standings, division winners first");
    standingsCmd->callback([&options, conference] { standings(options, *conference); });

    auto* leadersCmd = app.add_subcommand("leaders", "The season's top scorers");
    auto top = std::make_shared<int>(10);
    leadersCmd->add_option("--top", *top, "How many players")->check(CLI::Range(1, 1000));
    leadersCmd->callback([&options, top] { leaders(options, *top); });

    auto* replayCmd =
        app.add_subcommand("replay-report", "Compare the replay with the real season: league, teams and players");
    auto opts = std::make_shared<ReplayReportOptions>();
    auto* csv = replayCmd->add_flag("--csv", opts->csv, "Every compared player as CSV");
    auto* html = replayCmd->add_flag("--html", opts->html,
                                     "Write an HTML page with plots (default: \"Replay Report.html\" in the league)");
    csv->excludes(html);
    replayCmd->add_option("-o,--output", opts->output, "File to write instead of the default");
    replayCmd->callback([&options, opts] { replayReport(options, *opts); });
}

}  // namespace tallyrink::cli
