#pragma once

// Shared by every subcommand of the command line: the options all commands
// take, and the way a command reaches the league it works on.

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "league/session.h"
#include "league/team_directory.h"

namespace tallyrink::cli {

// A line of `tallyrink info`: a caption and its value.
using InfoLine = std::pair<std::string, std::string>;
// Adds an area's lines to `tallyrink info` (rules, next date, ...).
using InfoSource = std::function<std::vector<InfoLine>(const Session&)>;

struct GlobalOptions {
    std::string programDir;  // --program-dir, else TALLYRINK_PROGRAM_DIR, else the shipped data folder
    std::string dataRoot;    // --data-root, else TALLYRINK_DATA_ROOT, else the user's home
    std::string league;      // --league, else the league opened last

    // How a session reaches the other areas' loaders; filled before parsing.
    SessionHooks hooks;
    // Lines other areas add to `tallyrink info`, printed after its own.
    std::vector<InfoSource> infoSources;
};

// What a session is started with: the places from the options and the
// environment, and the league of --league for this run only.
SessionOptions sessionOptions(const GlobalOptions& options);

// A session after start-up, on the league a command works on. Throws
// CommandError when --league names a folder that can't be entered.
std::unique_ptr<Session> startSession(const GlobalOptions& options);

// The league folder a command works on: --league, else the league opened last.
std::filesystem::path leagueDir(const GlobalOptions& options);

// The team a user names by code, name or number; throws CommandError with
// what went wrong when no team or more than one fits.
int findTeam(const TeamDirectory& teams, const std::string& text);

// Works out and saves the stored ratings of every player of the league in
// `folder`, from the program's era table, and writes its ratings file.
// Returns the number of players rated.
std::size_t rateWholeLeague(const GlobalOptions& options, const std::filesystem::path& folder);

// A user-facing failure: main prints the message on one line to stderr and
// exits non-zero.
struct CommandError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Each area of the program adds its subcommands here (one file per area).
void addLeagueCommands(CLI::App& app, GlobalOptions& options);
void addRulesCommands(CLI::App& app, GlobalOptions& options);
void addImportSeasonCommands(CLI::App& app, GlobalOptions& options);
void addScheduleCommands(CLI::App& app, GlobalOptions& options);
void addNewLeagueCommands(CLI::App& app, GlobalOptions& options);
void addPhrasesCommands(CLI::App& app, GlobalOptions& options);
void addRatingsCommands(CLI::App& app, GlobalOptions& options);
void addRosterCommands(CLI::App& app, GlobalOptions& options);
void addPlayCommands(CLI::App& app, GlobalOptions& options);
void addReportCommands(CLI::App& app, GlobalOptions& options);
void addBenchCommands(CLI::App& app, GlobalOptions& options);
void addAutoplayCommands(CLI::App& app, GlobalOptions& options);
void addBoxCommands(CLI::App& app, GlobalOptions& options);
void addSimulateCommands(CLI::App& app, GlobalOptions& options);
void addProbeCommands(CLI::App& app, GlobalOptions& options);

}  // namespace tallyrink::cli
