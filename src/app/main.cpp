#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

#include "app/cli.h"

int main(int argc, char** argv) {
    using namespace tallyrink::cli;
    CLI::App app{"Tallyrink: ice-hockey league simulation"};
    app.require_subcommand(1);
    GlobalOptions options;
    app.add_option("--program-dir", options.programDir, "Folder of the program's own files")
        ->envname("TALLYRINK_PROGRAM_DIR");
    app.add_option("--data-root", options.dataRoot, "Folder below which the shared league data lives")
        ->envname("TALLYRINK_DATA_ROOT");
    app.add_option("--league", options.league, "League folder to work on (default: the league opened last)");

    addLeagueCommands(app, options);
    addRulesCommands(app, options);
    addImportSeasonCommands(app, options);
    addScheduleCommands(app, options);
    addNewLeagueCommands(app, options);
    addPhrasesCommands(app, options);
    addRatingsCommands(app, options);
    addRosterCommands(app, options);
    addPlayCommands(app, options);
    addReportCommands(app, options);
    addBenchCommands(app, options);
    addAutoplayCommands(app, options);
    addBoxCommands(app, options);
    addSimulateCommands(app, options);
    addProbeCommands(app, options);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    } catch (const std::exception& e) {
        fmt::print(stderr, "tallyrink: {}\n", e.what());
        return 1;
    }
    return 0;
}
