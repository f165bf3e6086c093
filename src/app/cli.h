#pragma once

// Shared by every subcommand of the command line: the options all commands
// take, and the way a command reaches the league it works on.

#include <CLI/CLI.hpp>

#include <filesystem>
#include <optional>
#include <string>

namespace tallyrink::cli {

struct GlobalOptions {
    std::string programDir;  // --program-dir, else TALLYRINK_PROGRAM_DIR, else the shipped data folder
    std::string dataRoot;    // --data-root, else TALLYRINK_DATA_ROOT, else the user's home
    std::string league;      // --league, else the league opened last
};

// The league folder a command works on.
std::filesystem::path leagueDir(const GlobalOptions& options);

// A user-facing failure: main prints the message on one line to stderr and
// exits non-zero.
struct CommandError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Each area of the program adds its subcommands here (one file per area).
void addLeagueCommands(CLI::App& app, GlobalOptions& options);
void addNewLeagueCommands(CLI::App& app, GlobalOptions& options);

}  // namespace tallyrink::cli
