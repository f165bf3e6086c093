// Commands that make a league folder: an empty one, or a made-up league of
// invented teams and players drawn to look like a season of a chosen year.

#include <fmt/core.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/cli.h"
#include "league/places.h"
#include "league/random.h"
#include "league/rules.h"
#include "operations/blank_league.h"
#include "operations/era_figures.h"
#include "operations/made_up_league.h"
#include "operations/new_league.h"
#include "operations/schedule_generator.h"

namespace tallyrink::cli {

namespace {

namespace fs = std::filesystem;

std::string recordText(const TeamRecord& t, int year) {
    DecisionShares shares = decisionShares(year);
    if (shares.ties > 0 && shares.overtimeLosses > 0)
        return fmt::format("{}-{}-{}-{}", t.RealWins, t.RealLosses, t.RealTies, t.RealOvertimeLosses);
    if (shares.ties > 0) return fmt::format("{}-{}-{}", t.RealWins, t.RealLosses, t.RealTies);
    return fmt::format("{}-{}-{}", t.RealWins, t.RealLosses, t.RealOvertimeLosses);
}

std::string recordHeading(int year) {
    DecisionShares shares = decisionShares(year);
    if (shares.ties > 0 && shares.overtimeLosses > 0) return "W-L-T-OTL";
    return shares.ties > 0 ? "W-L-T" : "W-L-OTL";
}

void printTeams(const GeneratedLeague& league) {
    std::size_t conferenceSplit = (league.teamsPerDivision.size() + 1) / 2;  // first half of the divisions
    int first = 1;
    for (std::size_t d = 0; d < league.teamsPerDivision.size(); ++d) {
        if (!league.conferenceNames.empty() && (d == 0 || d == conferenceSplit))
            fmt::print("\n{} Conference\n", league.conferenceNames[d == 0 ? 0 : 1]);
        fmt::print("  {} Division ({})\n", league.divisionNames[d], recordHeading(league.year));
        for (int k = 0; k < league.teamsPerDivision[d]; ++k) {
            const TeamRecord& t = league.files.teams[std::size_t(first + k - 1)];
            std::string name = t.City.str() + " " + t.Nickname.str();
            fmt::print("    {:>3} {}  {:<36} {}\n", first + k, t.Abbrev.str(), name, recordText(t, league.year));
        }
        first += kTeamsPerDivision;
    }
}

void printFigures(const GeneratedLeague& league) {
    LeagueFigures f = measureLeague(league);
    const EraTargets& m = f.measured;
    const EraTargets& e = league.era;
    fmt::print("\nPlayers: {} ({} goalies)\n\n", f.players, f.goalies);
    fmt::print("{:<28}{:>9}{:>9}\n", "Per team-game", "League", "Era");
    fmt::print("{:<28}{:>9}{:>9}\n", "Games per team", m.games, e.games);
    fmt::print("{:<28}{:>9.3f}{:>9.3f}\n", "Goals", m.goalsPerTeamGame, e.goalsPerTeamGame);
    fmt::print("{:<28}{:>9.3f}{:>9.3f}\n", "Assists per goal", m.assistsPerGoal, e.assistsPerGoal);
    fmt::print("{:<28}{:>9.2f}{:>9.2f}\n", "Shots", m.shotsPerTeamGame, e.shotsPerTeamGame);
    fmt::print("{:<28}{:>9.2f}{:>9.2f}\n", "Save %", m.savePct, e.savePct);
    fmt::print("{:<28}{:>9.2f}{:>9.2f}\n", "Penalty minutes", m.pimPerTeamGame, e.pimPerTeamGame);
    fmt::print("{:<28}{:>9.2f}{:>9.2f}\n", "Power-play %", m.powerPlayPct, e.powerPlayPct);
    fmt::print("{:<28}{:>9.3f}{:>9.3f}\n", "Fighting majors a game", m.fightsPerGame, e.fightsPerGame);
}

void addBlankLeague(CLI::App& app) {
    struct Args {
        std::string folder;
        int divisions = 4;
        int teamsPerDivision = 6;
        int year = 2017;
        bool overwrite = false;
    };
    auto args = std::make_shared<Args>();
    auto* cmd = app.add_subcommand("blank-league", "Make an empty league folder with numbered teams");
    cmd->add_option("folder", args->folder, "Folder of the new league")->required();
    cmd->add_option("--divisions", args->divisions, "Divisions, 0 (none) to 8")->check(CLI::Range(0, 8));
    cmd->add_option("--teams-per-division", args->teamsPerDivision, "Teams in each division, 0 (none) to 10")
        ->check(CLI::Range(0, 10));
    cmd->add_option("--year", args->year, "Season year of the teams")->check(CLI::Range(1920, 2050));
    cmd->add_flag("--overwrite", args->overwrite, "Overwrite the teams and players of an existing league folder");
    cmd->callback([args] {
        std::vector<int> layout;
        if (args->divisions > 0 && args->teamsPerDivision > 0)
            layout.assign(std::size_t(args->divisions), args->teamsPerDivision);
        try {
            LeagueFiles files = createBlankLeague({args->folder, layout, args->year, args->overwrite});
            int teams = 0;
            for (const auto& t : files.teams) teams += t.TeamActive == 1 ? 1 : 0;
            fmt::print("New League Folder Created! {}: {} teams of {}.\n", args->folder, teams, args->year);
        } catch (const LeagueFolderExists& e) {
            throw CommandError(std::string(e.what()) + " Give --overwrite to replace them.");
        } catch (const ToolRefused& e) {
            throw CommandError(e.what());
        }
    });
}

void addNewLeague(CLI::App& app, GlobalOptions& options) {
    struct Args {
        std::string folder;
        NewLeagueOptions league;
        std::optional<std::uint64_t> seed;
        bool overwrite = false;
    };
    auto args = std::make_shared<Args>();
    auto* cmd = app.add_subcommand("new-league", "Make a league of invented teams and players for a season's era");
    cmd->add_option("folder", args->folder, "Folder of the new league")->required();
    cmd->add_option("--teams", args->league.teams, "Number of teams, 2 to 288")
        ->check(CLI::Range(kMinNewLeagueTeams, kMaxTeams));
    cmd->add_option("--year", args->league.year, "Season whose era the league plays in")->check(CLI::Range(1917, 2050));
    cmd->add_option("--seed", args->seed, "Seed of the draw: the same seed makes the same league");
    cmd->add_option("--divisions", args->league.divisions, "Divisions, 1 to 24 (default: by the number of teams)")
        ->check(CLI::Range(1, kDivisions));
    cmd->add_option("--name", args->league.leagueName, "Name of the league")->check([](const std::string& s) {
        return s.size() <= 30 ? std::string() : std::string("a league name has at most 30 characters");
    });
    cmd->add_flag("--overwrite", args->overwrite, "Overwrite the teams and players of an existing league folder");
    cmd->callback([args, &options] {
        NewLeagueOptions opts = args->league;
        opts.seed = args->seed.value_or(Random::freshSeed());
        try {
            checkNewLeagueFolder(args->folder, args->overwrite);
            const auto programDir = resolvePlaces(sessionOptions(options).places).ProgramDir;
            const auto history = readHistoricalRatings(programDir);
            MadeUpLeagueFolder made = makeMadeUpLeague(args->folder, opts, LoadEra(programDir), &history);
            const GeneratedLeague& league = made.league;
            const ScheduleOutcome& schedule = made.schedule;
            std::size_t rated = made.rated;
            fmt::print("Made \"{}\" in {}: {} teams in the era of {}, seed {}.\n", league.leagueName, args->folder,
                       opts.teams, opts.year, opts.seed);
            printTeams(league);
            printFigures(league);
            fmt::print("\nRatings: {} players rated from their lines.\n", rated);
            if (schedule.ok)
                fmt::print("\nSchedule: {} games from {}-10-05.\n", schedule.games, league.year);
            else
                fmt::print("\nNo schedule was made: {}\n", fmt::join(schedule.messages, " "));
        } catch (const LeagueFolderExists& e) {
            throw CommandError(std::string(e.what()) + " Give --overwrite to replace them.");
        } catch (const ToolRefused& e) {
            throw CommandError(e.what());
        }
    });
}

}  // namespace

void addNewLeagueCommands(CLI::App& app, GlobalOptions& options) {
    addBlankLeague(app);
    addNewLeague(app, options);
}

}  // namespace tallyrink::cli
