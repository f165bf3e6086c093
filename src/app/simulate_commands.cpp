// Playing many games of the open league's schedule without a screen and
// without writing anything, to see what the engine makes of its era: the
// figures a team gets in a game, next to the era table's.

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string>

#include "app/cli.h"
#include "engine/game.h"
#include "engine/play_tally.h"
#include "engine/team_load.h"
#include "league/era.h"

namespace tallyrink::cli {

namespace {

struct SimulateOptions {
    int games = 100;
    std::uint64_t seed = 1;
    bool detail = false;
};

// Totals over all games, both teams together.
struct Totals {
    int games = 0;
    double goals = 0;
    double shots = 0;
    double missed = 0;
    double blocked = 0;
    double powerPlays = 0;
    double powerPlayGoals = 0;
    double pim = 0;
    double fights = 0;
    double faceoffs = 0;
    double hits = 0;
    int overtime = 0;
    int shootout = 0;
    std::array<int, 4> regulationMargin{};  // games settled in regulation by 1, 2, 3 or more goals; [0] unused
    PlayTally tally;
};

void addGame(const Game& game, Totals& t) {
    const GameState& s = game.state();
    ++t.games;
    for (int side : {kVisitor, kHome}) {
        auto i = static_cast<std::size_t>(side);
        t.goals += s.Score[i];
        t.shots += s.Shots[i];
        t.missed += s.events.missed[i];
        t.blocked += s.events.blocked[i];
        t.faceoffs += s.events.faceoffsWon[i];
        t.hits += s.events.hits[i];
        t.powerPlays += s.pen.PowerPlays[i];
        t.powerPlayGoals += s.pen.PowerPlayGoals[i];
        t.pim += s.pen.PenaltyMinutes[i];
    }
    t.fights += s.pen.fightCount;
    if (s.endedBy == GameEnd::Overtime || s.endedBy == GameEnd::Shootout) ++t.overtime;
    if (s.endedBy == GameEnd::Shootout) ++t.shootout;
    if (s.endedBy == GameEnd::Regulation)
        ++t.regulationMargin[std::min<std::size_t>(3, static_cast<std::size_t>(std::abs(s.Score[0] - s.Score[1])))];
    t.tally.add(game.tally());
}

int leagueYear(const GameSession& session) {
    int year = session.side(kHome).team.TeamYear;
    return EraTable::contains(year) ? year : 2014;
}

void printRow(const char* caption, double value, double era, const char* format = "{:>10.2f}") {
    std::string line = fmt::format("{:<24}", caption) + fmt::format(fmt::runtime(format), value);
    if (era > 0) line += fmt::format(fmt::runtime(format), era);
    fmt::print("{}\n", line);
}

// Shots of one kind per team and game: tried, the share that reached the
// net, goals, the goals on the shots on net and the table's mean goal chance
// for them, which tell a shot model that is off from a table that is off.
void printShotRow(const std::string& caption, const ShotTallyRow& r, double teamGames) {
    if (r.tried == 0) return;
    double onNet = static_cast<double>(r.onNet());
    fmt::print("{:<24}{:>8.2f}{:>8.1f}{:>8.2f}{:>8.1f}{:>8.1f}{:>8.1f}\n", caption, r.tried / teamGames,
               100 * onNet / static_cast<double>(r.tried), r.goals / teamGames, onNet > 0 ? 100 * r.goals / onNet : 0.0,
               onNet > 0 ? 100 * r.goalPctSum / onNet : 0.0, 100.0 * r.blocks / static_cast<double>(r.tried));
}

void printDetail(const Totals& t) {
    const PlayTally& tally = t.tally;
    double teamGames = 2.0 * t.games;
    long steps = 0;
    for (long n : tally.steps) steps += n;
    fmt::print("\nSteps a game {:.1f}, penalty draws a game {:.2f}\n", steps / double(t.games),
               tally.penaltyDraws / double(t.games));
    fmt::print("{:<24}{:>8}{:>8}\n", "Zone at the step", "A game", "Secs");
    fmt::print("{:<40}(results drawn, per cent of the zone's steps)\n", "");
    for (std::size_t z = 0; z < kZoneCount; ++z) {
        if (tally.steps[z] == 0) continue;
        std::string results;
        for (std::size_t r = 0; r < kResultCount; ++r) {
            double share = 100.0 * tally.results[z][r] / static_cast<double>(tally.steps[z]);
            if (share >= 0.5) results += fmt::format(" {} {:.0f}", text(static_cast<Result>(r)), share);
        }
        fmt::print("{:<24}{:>8.1f}{:>8.1f} %{}\n", text(static_cast<Zone>(z)), tally.steps[z] / double(t.games),
                   tally.seconds[z] / static_cast<double>(tally.steps[z]), results);
    }
    fmt::print("\n{:<24}{:>8}{:>8}{:>8}{:>8}{:>8}{:>8}\n", "Shots a team-game", "Tried", "Net%", "Goals", "Sh%",
               "Table%", "Blk%");
    static constexpr std::array<const char*, 7> classes{"No class", "Inside",     "Mid",    "Outside",
                                                        "Rush",     "Deflection", "Rebound"};
    ShotTallyRow all;
    for (std::size_t k = 0; k < tally.byClass.size(); ++k) {
        printShotRow(classes[k], tally.byClass[k], teamGames);
        all.add(tally.byClass[k]);
    }
    printShotRow("All", all, teamGames);
    static constexpr std::array<const char*, 3> strengths{"Even strength", "Power play", "Shorthanded"};
    for (std::size_t k = 0; k < tally.byStrength.size(); ++k)
        printShotRow(strengths[k], tally.byStrength[k], teamGames);

    fmt::print("\n{:<24}{:>8}{:>8}\n", "Penalties a team-game", "Calls", "Minutes");
    static constexpr std::array<const char*, 6> types{"Minor", "Double minor", "Major",
                                                      "Match", "Misconduct",   "Game misconduct"};
    for (std::size_t k = 0; k < types.size(); ++k)
        fmt::print("{:<24}{:>8.3f}{:>8.2f}\n", types[k], tally.calls[k] / teamGames, tally.callMinutes[k] / teamGames);
    fmt::print("{:<24}{:>8.3f}\n{:<24}{:>8.3f}\n", "of them fighting majors", tally.fightMajors / teamGames,
               "of them coincidental", tally.coincidentalCalls / teamGames);
    fmt::print("\nGames settled in regulation by 1, 2, 3 or more goals, pct: {:.1f} {:.1f} {:.1f}\n",
               100.0 * t.regulationMargin[1] / t.games, 100.0 * t.regulationMargin[2] / t.games,
               100.0 * t.regulationMargin[3] / t.games);
    fmt::print("Goalies pulled a game {:.3f}, empty-net goals {:.3f}, goals with the goalie out {:.3f}\n",
               tally.goaliePulls / double(t.games), tally.emptyNetGoals / double(t.games),
               tally.extraAttackerGoals / double(t.games));
    fmt::print("Goalies relieved after goals against, a team-game {:.3f}\n", tally.goalieReliefs / teamGames);
}

void simulate(const GlobalOptions& options, const SimulateOptions& o) {
    if (o.games < 1) throw CommandError("--games must be at least 1");
    auto session = startSession(options);
    const Schedule& schedule = session->schedule();
    std::vector<std::size_t> rows;
    for (std::size_t r = 1; r <= schedule.size(); ++r) {
        const GameRecord& row = schedule.row(r);
        if (row.VisitorTeam >= 1 && row.HomeTeam >= 1 && row.VisitorTeam != row.HomeTeam) rows.push_back(r);
    }
    if (rows.empty()) throw CommandError("The league's schedule has no games to play");

    Random draws(o.seed);
    Totals t;
    int year = 0;
    GameSession games = GameSession::forSession(*session);
    // Played as league games, the way autoplay plays them; only nothing is
    // posted. So they take the season calibration the league has earned so
    // far, which stays at 1 until its teams have played a few games.
    games.GameActive = true;
    games.GameType = 'L';
    const SeasonCalibration calibration = seasonCalibration(session->league(), session->era(), session->rules(), draws);
    for (int n = 0; n < o.games; ++n) {
        const GameRecord& row = schedule.row(rows[static_cast<std::size_t>(n) % rows.size()]);
        games.loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, draws);
        if (year == 0) year = leagueYear(games);
        GameOptions gameOptions;
        gameOptions.seed = o.seed * 1000003ULL + static_cast<std::uint64_t>(n);
        gameOptions.noDisplay = true;
        gameOptions.calibration = calibration;
        Game game(games, gameOptions);
        game.playToEnd();
        addGame(game, t);
    }

    EraFigures era = figuresOf(session->era().yearOr(year, 2014), EraLevel::Professional);
    double teamGames = 2.0 * t.games;
    double saves = t.shots - t.goals;
    fmt::print("{} games of the schedule (seed {}); per team and game, the era of {} beside\n", t.games, o.seed, year);
    const SeasonCalibration& k = calibration;
    if (k.Shots == 1 && k.Penalty == 1 && k.Fight == 1 && k.Shooting == 1 && k.PowerPlay == 1)
        fmt::print(
            "No season calibration yet (the league's teams have played too few games): these are the\n"
            "rules' own figures, which a season under way steers toward its era.\n\n");
    else
        fmt::print(
            "Season calibration of the games played so far: shots {:.3f}, penalties {:.3f},\n"
            "fights {:.3f}, shooting {:.3f}, power play {:.3f}\n\n",
            k.Shots, k.Penalty, k.Fight, k.Shooting, k.PowerPlay);
    fmt::print("{:<24}{:>10}{:>10}\n", "", "Played", "Era");
    printRow("Goals", t.goals / teamGames, era.goalsPerTeam);
    printRow("Shots on goal", t.shots / teamGames, era.shotsPerTeam());
    printRow("Missed shots", t.missed / teamGames, 0);
    printRow("Blocked shots", t.blocked / teamGames, 0);
    printRow("Power plays", t.powerPlays / teamGames, 0);
    printRow("Power-play goals", t.powerPlayGoals / teamGames, 0);
    double ppPct = t.powerPlays > 0 ? 100 * t.powerPlayGoals / t.powerPlays : 0;
    printRow("Power-play pct", ppPct, era.powerPlayPct, "{:>10.1f}");
    printRow("Penalty minutes", t.pim / teamGames, era.pimPerGame / 2);
    printRow("Fighting majors a game", 2 * t.fights / t.games, era.fightsPerGame);
    printRow("Faceoffs won", t.faceoffs / teamGames, 0);
    printRow("Hits", t.hits / teamGames, 0);
    printRow("Save pct", t.shots > 0 ? 100 * saves / t.shots : 0, era.savePct, "{:>10.1f}");
    printRow("Games to overtime, pct", 100.0 * t.overtime / t.games, 0, "{:>10.1f}");
    printRow("Games to shootout, pct", 100.0 * t.shootout / t.games, 0, "{:>10.1f}");
    if (o.detail) printDetail(t);
}

}  // namespace

void addSimulateCommands(CLI::App& app, GlobalOptions& options) {
    auto o = std::make_shared<SimulateOptions>();
    auto* cmd = app.add_subcommand(
        "simulate", "Play games of the schedule without a screen and print their figures; nothing is written");
    cmd->add_option("--games", o->games, "Games to play, through the schedule and round again")->default_val(100);
    cmd->add_option("--seed", o->seed, "Seed of the draws: the same seed plays the same games")->default_val(1);
    cmd->add_flag("--detail", o->detail,
                  "Also show the steps by zone and the shots by class and strength, with the table's goal chance");
    cmd->callback([&options, o] { simulate(options, *o); });
}

}  // namespace tallyrink::cli
