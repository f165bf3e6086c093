// Playing one game of the schedule from the command line, coached by the
// computer or by the user, the result printed and posted to the league
// (unless --dry-run). A seed given twice gives the same game.
//
// A game the user coaches may be stopped at any call with "s": it is saved
// in the league folder (".HAL") and `resume` goes on with it exactly where it
// stood; `saved` lists those games. Ctrl-C saves it as "s" does. "q" and
// the end of input hand the rest of the game to the computer instead, as
// they always have.

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
#include "postgame/box_text.h"
#include "postgame/game_done.h"
#include "postgame/game_summary.h"
#include "postgame/saved_game.h"
#include "presentation/call_menu.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <csignal>
#include <filesystem>
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

void postGame(GameSession& session, const Game& game, std::size_t row, const Session& league, std::uint64_t seed) {
    PostingResult result =
        postScheduleGame(session, game, league.schedule(), row, seed, todayDateText(), league.places().dataRoot());
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

const GameRecord& openRow(const Schedule& schedule, std::size_t game) {
    if (game < 1 || game > schedule.size())
        throw CommandError(fmt::format("There is no game {} in the schedule (it has {} games)", game, schedule.size()));
    const GameRecord& row = schedule.row(game);
    if (row.VisitorTeam < 1 || row.HomeTeam < 1 || row.VisitorTeam == row.HomeTeam)
        throw CommandError(fmt::format("Game {} of the schedule has been deleted", game));
    if (statusOf(row) == kPlayed)
        throw CommandError(fmt::format("Game {} of the schedule has already been played", game));
    return row;
}

std::array<std::string, 2> sideTexts(const GameSession& session, bool city) {
    std::array<std::string, 2> out;
    for (int side : {kVisitor, kHome}) {
        const TeamRecord& t = session.side(side).team;
        out[static_cast<std::size_t>(side)] = city ? t.City.str() : t.Abbrev.str();
    }
    return out;
}

// What is left after the last whistle of a game played or resumed here.
void finishGame(const Session& session, GameSession& played, const Game& game, const SavedGameStart& start,
                bool iceTime, bool dryRun) {
    std::cout.flush();
    if (!start.noDisplay) fmt::print("\n");
    printSummary(game, sideTexts(played, false), sideTexts(played, true));
    if (iceTime) printIceTime(played, sideTexts(played, false));
    if (dryRun) return;
    try {
        postGame(played, game, start.scheduleRow, session, start.seed);
    } catch (const AlreadyPosted& e) {
        throw CommandError(e.what());
    }
}

// Coaches the game in the terminal; when the user asks, saves it in the
// league folder and says how to go on with it.
std::atomic<bool> interruptAsked{false};

extern "C" void onCoachInterrupt(int) {
    interruptAsked = true;
    // A second Ctrl-C ends the program at once.
    std::signal(SIGINT, SIG_DFL);
}

// While a person coaches a game that may be saved, Ctrl-C saves it at the
// next call rather than lose it. The handler doesn't restart the read, so a
// wait for the user's answer ends at once.
class SaveOnInterrupt {
public:
    explicit SaveOnInterrupt(bool on) : on_(on) {
        if (!on_) return;
        interruptAsked = false;
        struct sigaction sa {};
        sa.sa_handler = onCoachInterrupt;
        sigemptyset(&sa.sa_mask);
        sa.sa_flags = 0;
        sigaction(SIGINT, &sa, &old_);
    }
    ~SaveOnInterrupt() {
        if (on_) sigaction(SIGINT, &old_, nullptr);
    }
    SaveOnInterrupt(const SaveOnInterrupt&) = delete;
    SaveOnInterrupt& operator=(const SaveOnInterrupt&) = delete;

private:
    bool on_;
    struct sigaction old_ {};
};

// Returns the saved file, or an empty path when the game was played out.
std::filesystem::path coachOrSave(RecordedGame& recorded, TerminalPresenter& presenter, const SavedGameStart& start,
                                  const std::filesystem::path& leagueFolder, bool mayStop) {
    CoachingEnd end = CoachingEnd::GameOver;
    {
        SaveOnInterrupt interrupt(mayStop);
        end =
            coachRecordedGame(recorded, presenter, std::cin, std::cout, mayStop, [] { return interruptAsked.load(); });
    }
    if (end != CoachingEnd::SaveAsked) return {};
    std::filesystem::path file = HkSaveGame(leagueFolder, recorded, start, todayDateText());
    fmt::print("\nSaved as \"{}\"\nGo on with: tallyrink resume \"{}\"\n", file.filename().string(),
               file.filename().string());
    return file;
}

void playGame(const GlobalOptions& options, const PlayOptions& o) {
    // A posting that a failure cut short is finished before anything is read.
    if (!o.dryRun) recoverPosting(leagueDir(options));
    auto session = startSession(options);
    const Schedule& schedule = session->schedule();
    const GameRecord& row = openRow(schedule, o.game);

    SavedGameStart start;
    start.seed = o.seed.value_or(Random::freshSeed());
    start.scheduleRow = o.game;
    start.visitor = row.VisitorTeam;
    start.home = row.HomeTeam;
    start.calendarMonth = row.Month;
    start.day = row.Day;
    GameSession session2 = GameSession::forSession(*session);
    Random loadDraws = loadGameForPlay(session2, start);
    start.year = calendarYearOf(schedule.seasonYear(), row.Month);
    start.playoff = session2.PlayoffGame;

    auto name = sideTexts(session2, true);
    fmt::print("Game {}: {} at {}, {}/{} (seed {})\n", o.game, name[0], name[1], int{row.Month}, int{row.Day},
               start.seed);

    bool interactive = isatty(STDOUT_FILENO) != 0;
    TerminalOptions terminal;
    terminal.pace = o.pace.value_or(interactive ? 0.8 : 0.0);
    TerminalPresenter presenter(std::cout, terminal);
    start.noDisplay = o.fast && o.coach.empty();
    if (o.coach == "visitor" || o.coach == "both") start.coach[kVisitor] = CoachKind::Human;
    if (o.coach == "home" || o.coach == "both") start.coach[kHome] = CoachKind::Human;
    if (o.fast) terminal.pace = 0;
    if (!session2.PlayoffGame)
        start.calibration = seasonCalibration(session->league(), session->era(), session->rules(), loadDraws);
    start.teamsFingerprint = teamsFingerprint(session2);
    // The user's wordings; a missing or broken phrase file tells the game
    // in the built-in ones.
    PhraseLoad phrases =
        loadPhraseFile(activePhraseFile(session->places().ProgramDir, session->setup().PlayByPlayFile.str()));
    GameOptions gameOptions = start.gameOptions();
    gameOptions.phrases = &phrases.table;
    gameOptions.shortPlayByPlay = o.shortTelling;
    Game game(session2, gameOptions, start.noDisplay ? nullptr : &presenter);
    RecordedGame recorded(game);
    recorded.start();
    // A game of a person's may stop to be saved; a dry run leaves nothing behind.
    bool mayStop = !o.coach.empty() && !o.dryRun;
    if (!coachOrSave(recorded, presenter, start, leagueDir(options), mayStop).empty()) return;
    finishGame(*session, session2, game, start, o.iceTime, o.dryRun);
}

// ---- Saved games ---------------------------------------------------------------

struct ResumeOptions {
    std::string name;
    bool fast = false;
    std::optional<double> pace;
    std::string coach;  // "visitor", "home", "both", "none" or empty: as saved
    bool iceTime = false;
};

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
    return s;
}

// A saved game by its number in the list, its file name, or a part of the
// name that only one file holds.
std::filesystem::path findSavedGame(const std::filesystem::path& folder, const std::string& name) {
    auto files = savedGames(folder);
    if (files.empty()) throw CommandError("There are no saved games in this league");
    if (!name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c); })) {
        std::size_t n = std::stoul(name);
        if (n >= 1 && n <= files.size()) return files[n - 1];
    }
    std::vector<std::filesystem::path> hits;
    for (const auto& f : files) {
        std::string file = lower(f.filename().string());
        if (file == lower(name) || file == lower(name + kSavedGameExtension)) return f;
        if (file.find(lower(name)) != std::string::npos) hits.push_back(f);
    }
    if (hits.size() == 1) return hits.front();
    if (hits.empty()) throw CommandError(fmt::format("No saved game is named \"{}\" (see tallyrink saved)", name));
    throw CommandError(
        fmt::format("\"{}\" names {} saved games; give more of the name or its number", name, hits.size()));
}

struct SavedOptions {
    bool clear = false;
    bool yes = false;
    std::string remove;  // one game to delete
    std::string show;    // one game's box score so far
};

void listSaved(const GlobalOptions& options, const SavedOptions& o) {
    std::filesystem::path folder = leagueDir(options);
    if (!o.show.empty()) {
        SavedGame g = readSavedGame(findSavedGame(folder, o.show));
        for (const auto& line : boxScoreText(*g.box, boxNamesFromLeague(*g.box, folder))) fmt::print("{}\n", line);
        return;
    }
    if (!o.remove.empty()) {
        std::filesystem::path file = findSavedGame(folder, o.remove);
        std::filesystem::remove(file);
        fmt::print("Delete {}\n", file.filename().string());
        return;
    }
    bool clear = o.clear, yes = o.yes;
    auto files = savedGames(folder);
    if (clear) {
        if (files.empty()) {
            fmt::print("There are no saved games to clear\n");
            return;
        }
        if (!yes) {
            if (isatty(STDIN_FILENO) == 0)
                throw CommandError(fmt::format("This deletes all {} saved games; add --yes to go ahead", files.size()));
            fmt::print("Clear All Saved Games? ({} of them) [y/N] ", files.size());
            std::string answer;
            if (!std::getline(std::cin, answer) || (answer != "y" && answer != "Y")) {
                fmt::print("Nothing deleted\n");
                return;
            }
        }
        for (const auto& f : files) {
            std::filesystem::remove(f);
            fmt::print("Delete {}\n", f.filename().string());
        }
        return;
    }
    if (files.empty()) {
        fmt::print("No saved games\n");
        return;
    }
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::string what;
        try {
            SavedGame g = readSavedGame(files[i]);
            what = g.start.scheduleRow > 0 ? fmt::format("game {} of the schedule", g.start.scheduleRow)
                                           : std::string("exhibition");
        } catch (const FileError&) {
            what = "can't be read";
        }
        fmt::print("{:>3}  {}   ({})\n", i + 1, files[i].filename().string(), what);
    }
}

void resumeGame(const GlobalOptions& options, const ResumeOptions& o) {
    std::filesystem::path folder = leagueDir(options);
    recoverPosting(folder);
    std::filesystem::path file = findSavedGame(folder, o.name);
    SavedGame saved = readSavedGame(file);
    const SavedGameStart& start = saved.start;
    auto session = startSession(options);
    if (start.scheduleRow == 0) throw CommandError("An exhibition game can't be resumed from the command line");
    const GameRecord& row = openRow(session->schedule(), start.scheduleRow);
    if (row.VisitorTeam != start.visitor || row.HomeTeam != start.home)
        throw CommandError(
            fmt::format("Game {} of the schedule is no longer the game that was saved", start.scheduleRow));

    GameSession session2 = GameSession::forSession(*session);
    loadGameForPlay(session2, start);
    bool interactive = isatty(STDOUT_FILENO) != 0;
    TerminalOptions terminal;
    terminal.pace = o.fast ? 0.0 : o.pace.value_or(interactive ? 0.8 : 0.0);
    TerminalPresenter presenter(std::cout, terminal);
    // The game goes on in the wordings it was told in, so its draws match.
    PhraseLoad phrases =
        loadPhraseFile(activePhraseFile(session->places().ProgramDir, session->setup().PlayByPlayFile.str()));
    GameOptions gameOptions = start.gameOptions();
    gameOptions.phrases = &phrases.table;
    Game game(session2, gameOptions, start.noDisplay ? nullptr : &presenter);
    RecordedGame recorded(game);
    presenter.setQuiet(true);
    try {
        ResumeGame(recorded, saved, session2);
    } catch (const ResumeMismatch& e) {
        throw CommandError(fmt::format("{}; tallyrink saved --delete removes it", e.what()));
    }
    presenter.setQuiet(o.fast);
    auto name = sideTexts(session2, true);
    fmt::print("Game {}: {} at {}, resumed from \"{}\"\n  {}\n", start.scheduleRow, name[0], name[1],
               file.filename().string(), TerminalPresenter::scoreboard(game));
    std::string coach = o.fast ? std::string("none") : o.coach;
    if (!coach.empty()) {
        // A change of coaches is an input like any other: a later save keeps it.
        recorded.setCoach(kVisitor, coach == "visitor" || coach == "both" ? CoachKind::Human : CoachKind::Computer);
        recorded.setCoach(kHome, coach == "home" || coach == "both" ? CoachKind::Human : CoachKind::Computer);
        // A question left to a side the computer now coaches is answered the
        // way "q" answers it.
        auto pending = presenter.takePending();
        if (pending.ask != TerminalPresenter::Ask::None && game.coach(pending.side) == CoachKind::Computer) {
            if (callChoices(game, pending.side).empty())
                recorded.proceed();
            else
                recorded.drive();
        } else if (pending.ask == TerminalPresenter::Ask::LineChange) {
            presenter.AskLineChange(game, pending.side);
        } else if (pending.ask == TerminalPresenter::Ask::PlayCall) {
            presenter.AskPlayCall(game, pending.side);
        }
    }
    std::filesystem::path savedAgain = coachOrSave(recorded, presenter, start, folder, true);
    // The newer save takes the old file's place (it may have the same name);
    // a game played out leaves it once it is posted.
    if (!savedAgain.empty()) {
        std::error_code same;
        if (!std::filesystem::equivalent(savedAgain, file, same)) std::filesystem::remove(file);
        return;
    }
    finishGame(*session, session2, game, start, o.iceTime, false);
    std::filesystem::remove(file);
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
    cmd->add_option("--coach", o->coach,
                    "Call the plays yourself for one side or both; \"s\" at a call saves the game to go on later")
        ->check(CLI::IsMember({"visitor", "home", "both"}));
    cmd->add_flag("--ice-time", o->iceTime, "Each player's time on the ice, power play, short-handed and shifts");
    cmd->add_flag("--short", o->shortTelling, "Short play-by-play: one line a stoppage, shot or penalty");
    cmd->add_flag("--dry-run", o->dryRun, "Play the game but write nothing to the league");
    cmd->add_option("--seed", o->seed, "Seed of the game's draws: the same seed plays the same game");
    cmd->callback([&options, o] { playGame(options, *o); });

    auto so = std::make_shared<SavedOptions>();
    auto* saved = app.add_subcommand("saved", "List the games saved in mid-play, or delete them");
    auto* clearAll = saved->add_flag("--clear", so->clear, "Delete every saved game of the league");
    saved->add_flag("--yes", so->yes, "With --clear: don't ask first");
    saved->add_option("--delete", so->remove, "Delete one saved game: its number, its name or a part of it")
        ->excludes(clearAll);
    saved->add_option("--show", so->show, "The box score of a saved game as it stood")->excludes(clearAll);
    saved->callback([&options, so] { listSaved(options, *so); });

    auto r = std::make_shared<ResumeOptions>();
    auto* resume = app.add_subcommand("resume", "Go on with a saved game where it stopped, and post it at the end");
    resume->add_option("name", r->name, "Its number in `tallyrink saved`, its file name or a part of it")->required();
    resume->add_flag("--fast", r->fast, "The computer plays the rest at once: only the result");
    resume->add_option("--pace", r->pace, "Seconds each play line stays before the next (default 0.8 on a terminal)")
        ->check(CLI::Range(0.0, 10.0));
    resume->add_option("--coach", r->coach, "Who calls the plays from here on (default: as when it was saved)")
        ->check(CLI::IsMember({"visitor", "home", "both", "none"}));
    resume->add_flag("--ice-time", r->iceTime, "Each player's time on the ice, power play, short-handed and shifts");
    resume->callback([&options, r] { resumeGame(options, *r); });
}

}  // namespace tallyrink::cli
