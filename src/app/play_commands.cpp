// Playing one game of the schedule from the command line: both teams coached
// by the computer, the result printed and posted to the league (unless
// --dry-run). A seed given twice gives the same game.

#include <fmt/core.h>

#include <ctime>
#include <memory>
#include <optional>

#include "app/cli.h"
#include "app/terminal_presenter.h"
#include "engine/game.h"
#include "engine/team_load.h"
#include "team/positions.h"

#include <unistd.h>

#include <iostream>
#include "postgame/game_done.h"
#include "postgame/game_summary.h"
#include "presentation/phrases.h"

namespace tallyrink::cli {

namespace {

struct PlayOptions {
    std::size_t game = 0;
    bool fast = false;
    std::optional<double> pace;
    std::string coach;  // "visitor", "home", "both" or empty
    bool iceTime = false;
    bool dryRun = false;
    std::optional<std::uint64_t> seed;
    bool shortTelling = false;
};

void postGame(GameSession& session, const Game& game, std::size_t row, const Schedule& schedule, std::uint64_t seed) {
    PostingResult result = postScheduleGame(session, game, schedule, row, seed, todayDateText());
    fmt::print("\nPosted");
    if (result.scoresRow > 0)
        fmt::print(" as SCORES row {} (box score: tallyrink box {})", result.scoresRow, result.scoresRow);
    fmt::print("\n");
    for (std::size_t k = 0; k < result.stars.size(); ++k)
        if (!result.stars[k].empty()) fmt::print("  Star {}: {}\n", k + 1, result.stars[k]);
    for (const auto& line : result.highlights) fmt::print("  {}\n", line);
    for (const auto& line : result.injuries) fmt::print("  Injury: {}\n", line);
}

void printSummary(const Game& game, const std::array<std::string, 2>& code, const std::array<std::string, 2>& name) {
    const GameState& s = game.state();
    std::array<int, 2> score = game.finalScore();
    std::string how(gameEndText(s.endedBy));
    fmt::print("Final: {} {}, {} {} ({})\n", name[0], score[0], name[1], score[1], how);

    std::size_t periods = s.shotsByPeriod.size();
    std::string header = fmt::format("{:<8}", "");
    for (std::size_t p = 0; p < periods; ++p)
        header += fmt::format("{:>5}", periodName(static_cast<int>(p) + 1, game.periods()));
    bool shootout = s.endedBy == GameEnd::Shootout;
    if (shootout) header += fmt::format("{:>5}", "SO");
    header += fmt::format("{:>7}", "Total");

    fmt::print("\nGoals\n{}\n", header);
    for (int side : {kVisitor, kHome}) {
        std::vector<int> byPeriod(periods, 0);
        for (const GoalNote& g : s.goals)
            if (g.side == side) ++byPeriod[static_cast<std::size_t>(g.period - 1)];
        std::string row = fmt::format("{:<8}", code[static_cast<std::size_t>(side)]);
        for (int n : byPeriod) row += fmt::format("{:>5}", n);
        if (shootout) row += fmt::format("{:>5}", s.ShootoutGoals[static_cast<std::size_t>(side)]);
        row += fmt::format("{:>7}", score[static_cast<std::size_t>(side)]);
        fmt::print("{}\n", row);
    }

    fmt::print("\nShots\n{}\n", header);
    for (int side : {kVisitor, kHome}) {
        std::string row = fmt::format("{:<8}", code[static_cast<std::size_t>(side)]);
        for (const auto& p : s.shotsByPeriod) row += fmt::format("{:>5}", p[static_cast<std::size_t>(side)]);
        if (shootout) row += fmt::format("{:>5}", "");
        row += fmt::format("{:>7}", s.Shots[static_cast<std::size_t>(side)]);
        fmt::print("{}\n", row);
    }

    fmt::print("\nScoring\n");
    for (const GoalNote& g : s.goals) {
        std::string strength = g.strengthEdge > 0 ? " (PP)" : g.strengthEdge < 0 ? " (SH)" : "";
        if (g.emptyNet) strength += " (EN)";
        fmt::print("  {:>4} {:>5}  {}{}\n", periodName(g.period, game.periods()), clockText(g.clock),
                   code[static_cast<std::size_t>(g.side)], strength);
    }
    if (s.goals.empty()) fmt::print("  none\n");
}

// Each player's time on the ice, by team: the skaters by their forward line
// or defense pair, then the goalies.
void printIceTime(const GameSession& session, const std::array<std::string, 2>& code) {
    fmt::print("\nIce time{:<22}{:>7}{:>7}{:>7}{:>7}\n", "", "TOI", "PP", "SH", "Shifts");
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = session.side(side);
        for (int group = 1; group <= 8; ++group) {
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                const PlayerRecord& p = t.player(slot);
                const StatLine& g = statLine(p, StatLineIndex::Game);
                if (!t.onTeam(slot) || g.Toi == 0) continue;
                int lineOf = 8;  // goalies and men on no even line last
                for (int line = 4; line >= 1; --line) {
                    if (t.lines.lineRole(line, slot) != ForwardRole::None) lineOf = line;
                    if (line <= 3 && t.lines.pairRole(line, slot) != PairRole::None) lineOf = line + 4;
                }
                if (isGoalie(p)) lineOf = 8;
                if (lineOf != group) continue;
                std::string label = group <= 4    ? fmt::format("F{}", group)
                                    : group <= 7  ? fmt::format("D{}", group - 4)
                                    : isGoalie(p) ? "G"
                                                  : "-";
                fmt::print("  {:<4}{:<3} {:<20}{:>7}{:>7}{:>7}{:>7}\n", code[static_cast<std::size_t>(side)], label,
                           t.DisplayName[static_cast<std::size_t>(slot)].empty()
                               ? p.LastName.str()
                               : t.DisplayName[static_cast<std::size_t>(slot)],
                           clockText(g.Toi), clockText(g.ToiPP), clockText(g.ToiSH), g.Shifts);
            }
        }
    }
}

void playGame(const GlobalOptions& options, const PlayOptions& o) {
    // A posting that a failure cut short is finished before anything is read.
    if (!o.dryRun) recoverPosting(leagueDir(options));
    auto session = startSession(options);
    const Schedule& schedule = session->schedule();
    if (o.game < 1 || o.game > schedule.size())
        throw CommandError(
            fmt::format("There is no game {} in the schedule (it has {} games)", o.game, schedule.size()));
    const GameRecord& row = schedule.row(o.game);
    if (row.VisitorTeam < 1 || row.HomeTeam < 1 || row.VisitorTeam == row.HomeTeam)
        throw CommandError(fmt::format("Game {} of the schedule has been deleted", o.game));
    if (statusOf(row) == kPlayed)
        throw CommandError(fmt::format("Game {} of the schedule has already been played", o.game));

    std::uint64_t seed = o.seed.value_or(Random::freshSeed());
    GameSession session2 = GameSession::forSession(*session);
    Random loadDraws(seed);
    session2.GameActive = true;
    session2.GameType = 'L';
    session2.loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, loadDraws);

    std::array<std::string, 2> code;
    std::array<std::string, 2> name;
    for (int side : {kVisitor, kHome}) {
        const TeamRecord& t = session2.side(side).team;
        code[static_cast<std::size_t>(side)] = t.Abbrev.str();
        name[static_cast<std::size_t>(side)] = t.City.str();
    }
    fmt::print("Game {}: {} at {}, {}/{} (seed {})\n", o.game, name[0], name[1], int{row.Month}, int{row.Day}, seed);

    bool interactive = isatty(STDOUT_FILENO) != 0;
    TerminalOptions terminal;
    terminal.pace = o.pace.value_or(interactive ? 0.8 : 0.0);
    TerminalPresenter presenter(std::cout, terminal);
    GameOptions gameOptions;
    gameOptions.seed = seed;
    gameOptions.noDisplay = o.fast && o.coach.empty();
    if (o.coach == "visitor" || o.coach == "both") gameOptions.coach[kVisitor] = CoachKind::Human;
    if (o.coach == "home" || o.coach == "both") gameOptions.coach[kHome] = CoachKind::Human;
    if (o.fast) terminal.pace = 0;
    if (!session2.PlayoffGame)
        gameOptions.calibration = seasonCalibration(session->league(), session->era(), session->rules(), loadDraws);
    // The user's wordings; a missing or broken phrase file tells the game
    // in the built-in ones.
    PhraseLoad phrases =
        loadPhraseFile(activePhraseFile(session->places().ProgramDir, session->setup().PlayByPlayFile.str()));
    gameOptions.phrases = &phrases.table;
    gameOptions.shortPlayByPlay = o.shortTelling;
    clearGameEntries(session2);
    Game game(session2, gameOptions, gameOptions.noDisplay ? nullptr : &presenter);
    coachGame(game, presenter, std::cin, std::cout);
    std::cout.flush();
    if (!gameOptions.noDisplay) fmt::print("\n");
    printSummary(game, code, name);
    if (o.iceTime) printIceTime(session2, code);
    if (!o.dryRun) {
        try {
            postGame(session2, game, o.game, schedule, seed);
        } catch (const AlreadyPosted& e) {
            throw CommandError(e.what());
        }
    }
}

}  // namespace

void addPlayCommands(CLI::App& app, GlobalOptions& options) {
    auto o = std::make_shared<PlayOptions>();
    auto* cmd =
        app.add_subcommand("play", "Play a game of the schedule with two computer coaches and post it to the league");
    cmd->add_option("game", o->game, "Row of the schedule, from 1")->required();
    cmd->add_flag("--fast", o->fast, "No play-by-play and no pause: only the result");
    cmd->add_option("--pace", o->pace, "Seconds each play line stays before the next (default 0.8 on a terminal)")
        ->check(CLI::Range(0.0, 10.0));
    cmd->add_option("--coach", o->coach, "Call the plays yourself for one side or both")
        ->check(CLI::IsMember({"visitor", "home", "both"}));
    cmd->add_flag("--ice-time", o->iceTime, "Each player's time on the ice, power play, short-handed and shifts");
    cmd->add_flag("--short", o->shortTelling, "Short play-by-play: one line a stoppage, shot or penalty");
    cmd->add_flag("--dry-run", o->dryRun, "Play the game but write nothing to the league");
    cmd->add_option("--seed", o->seed, "Seed of the game's draws: the same seed plays the same game");
    cmd->callback([&options, o] { playGame(options, *o); });
}

}  // namespace tallyrink::cli
