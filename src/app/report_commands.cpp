// Reports on the season so far: the standings and how the replay compares
// with the real season.

#include <fmt/core.h>

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
    ReplayReport report = buildReplayReport(league, players);
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

}  // namespace

void addReportCommands(CLI::App& app, GlobalOptions& options) {
    auto* standingsCmd = app.add_subcommand("standings", "Show the division standings of the open league");
    auto conference = std::make_shared<bool>(false);
    standingsCmd->add_flag("--conference", *conference, "Conference standings, division winners first");
    standingsCmd->callback([&options, conference] { standings(options, *conference); });

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
