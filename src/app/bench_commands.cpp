// tallyrink bench: the engine's speed and its functional signature. A fixed
// made-up league is written to a scratch folder and a fixed set of seeded
// games is played on one thread; the checksum of all results changes when,
// and only when, the engine plays a game differently.

#include <fmt/core.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <random>

#include "app/cli.h"
#include "engine/game.h"
#include "league/file_images.h"
#include "league/folder_names.h"
#include "league/places.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "operations/made_up_league.h"

namespace tallyrink::cli {

namespace {

namespace fs = std::filesystem;

struct BenchOptions {
    int games = 2000;
    int teams = 8;
    bool keep = false;
};

// FNV-1a, fed one whole number at a time.
struct Checksum {
    std::uint64_t value = 1469598103934665603ULL;
    void add(std::int64_t v) {
        auto u = static_cast<std::uint64_t>(v);
        for (int i = 0; i < 8; ++i) {
            value ^= (u >> (8 * i)) & 0xFF;
            value *= 1099511628211ULL;
        }
    }
};

void addGame(Checksum& sum, const Game& game) {
    const GameState& s = game.state();
    auto score = game.finalScore();
    sum.add(score[0]);
    sum.add(score[1]);
    sum.add(s.Shots[0]);
    sum.add(s.Shots[1]);
    sum.add(static_cast<int>(s.endedBy));
    sum.add(s.steps);
    for (const GoalNote& g : s.goals) {
        sum.add(g.period * 10000 + g.clock);
        sum.add(g.side);
    }
}

void bench(const GlobalOptions& options, const BenchOptions& o) {
    const fs::path programDir = resolvePlaces(sessionOptions(options).places).ProgramDir;
    const EraTable era = LoadEra(programDir);
    fs::path dir = fs::temp_directory_path() / fmt::format("tallyrink-bench-{}", std::random_device{}());
    fs::create_directories(dir);
    NewLeagueOptions league;
    league.teams = o.teams;
    league.year = 2017;
    league.seed = 20171004;
    makeMadeUpLeague(dir, league, era, nullptr);

    RulesRecord rules = HkRulesLoad(dir, 2017);
    Schedule schedule = Schedule::load(dir);
    if (schedule.size() == 0) throw CommandError("The bench league has no schedule");

    using Clock = std::chrono::steady_clock;
    const LeaguePlayerIndex index = LeaguePlayerIndex::read(dir);
    Checksum sum;
    int goals = 0;
    auto started = Clock::now();
    // Games are set up as a run of the schedule sets them up: one session
    // over the folder's names, listed once, and its files, read once.
    FolderNames names(dir);
    FileImages images;
    GameSession session({dir, rules, &era, &schedule, &index, &names, &images});
    for (int i = 0; i < o.games; ++i) {
        const GameRecord& row = schedule.row(static_cast<std::size_t>(i) % schedule.size() + 1);
        Random loadDraws(static_cast<std::uint64_t>(i) + 1);
        session.loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, loadDraws);
        GameOptions gameOptions;
        gameOptions.seed = static_cast<std::uint64_t>(i) + 1;
        Game game(session, gameOptions);
        game.playToEnd();
        addGame(sum, game);
        goals += game.state().Score[0] + game.state().Score[1];
    }
    double seconds = std::chrono::duration<double>(Clock::now() - started).count();

    fmt::print("Games:       {} ({} teams, schedule of {} games, one thread)\n", o.games, o.teams, schedule.size());
    fmt::print("Time:        {:.3f} s\n", seconds);
    fmt::print("Speed:       {:.0f} games/s\n", seconds > 0 ? o.games / seconds : 0);
    fmt::print("Goals/game:  {:.2f}\n", o.games > 0 ? double(goals) / o.games : 0);
    fmt::print("Checksum:    {:016x}\n", sum.value);
    if (o.keep) {
        fmt::print("League:      {}\n", dir.string());
    } else {
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
}

}  // namespace

void addBenchCommands(CLI::App& app, GlobalOptions& options) {
    auto o = std::make_shared<BenchOptions>();
    auto* cmd = app.add_subcommand(
        "bench", "Play a fixed set of seeded games of a made-up league: games per second and a checksum of results");
    cmd->add_option("--games", o->games, "Games to play")->check(CLI::Range(1, 1000000));
    cmd->add_option("--teams", o->teams, "Teams of the bench league")->check(CLI::Range(2, 40));
    cmd->add_flag("--keep", o->keep, "Keep the bench league's folder and say where it is");
    cmd->callback([&options, o] { bench(options, *o); });
}

}  // namespace tallyrink::cli
