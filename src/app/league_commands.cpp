#include "app/cli.h"

namespace tallyrink::cli {

std::filesystem::path leagueDir(const GlobalOptions& options) {
    if (!options.league.empty()) return options.league;
    return std::filesystem::current_path();
}

void addLeagueCommands(CLI::App& /*app*/, GlobalOptions& /*options*/) {}

}  // namespace tallyrink::cli
