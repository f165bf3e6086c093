#include <fmt/core.h>

#include <string>

#include "app/cli.h"
#include "league/places.h"
#include "league/rules.h"
#include "operations/season_checks.h"
#include "operations/season_data.h"
#include "operations/season_import.h"

namespace tallyrink::cli {

namespace {

struct ImportSeasonOptions {
    std::string dir;
    std::string from;
    bool force = false;
};

void printDivisions(const ImportedLeague& league) {
    fmt::print("Divisions and conferences:\n");
    for (std::size_t d = 0; d < league.names.divisions.size(); ++d) {
        int first = 0, last = 0;
        for (int t = static_cast<int>(d) * kTeamsPerDivision + 1; t <= static_cast<int>(d + 1) * kTeamsPerDivision;
             ++t) {
            if (league.teams[static_cast<std::size_t>(t - 1)].TeamActive != 1) continue;
            if (first == 0) first = t;
            last = t;
        }
        fmt::print("  division {} {:<14} teams {} to {}\n", d + 1, league.names.divisions[d], first, last);
    }
    for (std::size_t c = 0; c < league.names.conferences.size(); ++c)
        fmt::print("  conference {} {}\n", c + 1, league.names.conferences[c]);
}

void runImportSeason(const ImportSeasonOptions& o, const GlobalOptions& global) {
    std::filesystem::path from = o.from.empty()
                                     ? defaultSeasonFolder(resolvePlaces(sessionOptions(global).places).ProgramDir)
                                     : std::filesystem::path(o.from);
    SeasonData data = readSeasonData(from);
    ImportedLeague league = buildLeague(data);
    writeLeague(league, o.dir, o.force);
    modifyRules(o.dir, league.seasonYear, [&](RulesRecord& r) {
        r.LeagueName.assign(fmt::format("{}-{:02} Season", league.seasonYear, (league.seasonYear + 1) % 100));
        for (std::size_t d = 0; d < league.names.divisions.size() && d < r.DivisionName.size(); ++d)
            r.DivisionName[d].assign(league.names.divisions[d]);
        for (std::size_t c = 0; c < league.names.conferences.size() && c < r.ConferenceName.size(); ++c)
            r.ConferenceName[c].assign(league.names.conferences[c]);
    });

    fmt::print("Imported the {}-{:02} season from {} into {}\n", league.seasonYear, (league.seasonYear + 1) % 100,
               from.string(), o.dir);
    fmt::print("Not in the data, or estimated:\n");
    for (const auto& note : league.notes) fmt::print("  - {}\n", note);
    printDivisions(league);

    int teams = 0;
    for (const auto& t : league.teams) teams += t.TeamActive == 1;
    fmt::print("Summary: {} teams in {} divisions; {} player records for {} players ({} traded); {} games\n", teams,
               league.names.divisions.size(), thousands(static_cast<long long>(league.players.size())),
               thousands(league.distinctPlayers), league.tradedPlayers,
               thousands(static_cast<long long>(league.schedule.size())));

    auto checks = checkLeague(o.dir, data);
    int failed = 0;
    fmt::print("Checks:\n");
    for (const auto& c : checks) {
        fmt::print("  {:<4}  {}: {}\n", c.ok ? "ok" : "FAIL", c.name, c.detail);
        failed += !c.ok;
    }
    if (failed > 0)
        throw CommandError(fmt::format("{} of {} checks failed: the league was written, but doesn't match the data",
                                       failed, checks.size()));
    fmt::print("All {} checks passed.\n", checks.size());
    fmt::print("Ratings: {} players rated from their real lines.\n", rateWholeLeague(global, o.dir));
}

}  // namespace

void addImportSeasonCommands(CLI::App& app, GlobalOptions& options) {
    auto opts = std::make_shared<ImportSeasonOptions>();
    auto* cmd = app.add_subcommand("import-season", "Build a league folder from a real season's data");
    cmd->add_option("DIR", opts->dir, "League folder to write")->required();
    cmd->add_option("--from", opts->from, "Season folder of CSV files (default: the shipped 2017-18 season)");
    cmd->add_flag("--force", opts->force, "Replace the league files of a folder that already holds a league");
    cmd->callback([opts, &options] { runImportSeason(*opts, options); });
}

}  // namespace tallyrink::cli
