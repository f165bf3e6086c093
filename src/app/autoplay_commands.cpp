// tallyrink autoplay: the league's games played without a screen, in date
// order, each set up, played and posted before the next, with a progress
// bar on a terminal. Ctrl-C stops after the game in hand; the next run goes
// on from there.

#include <fmt/core.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <optional>

#include "app/cli.h"
#include "engine/game.h"
#include "league/codec.h"
#include "league/files.h"
#include "league/league.h"
#include "league/team_directory.h"
#include "operations/autoplay.h"
#include "postgame/game_done.h"
#include "postgame/game_summary.h"
#include "postgame/schedule_games.h"

namespace tallyrink::cli {

namespace {

std::atomic<bool> stopAsked{false};

extern "C" void onInterrupt(int) {
    stopAsked = true;
    // A second Ctrl-C ends the program at once.
    std::signal(SIGINT, SIG_DFL);
}

struct AutoplayArgs {
    bool day = false;
    std::string through;
    bool month = false;
    bool all = false;
    std::string team;
    std::optional<std::uint64_t> seed;
    bool quiet = false;
};

// Sets up, plays and posts one schedule game with two computer coaches.
class QuietRunner final : public GameRunner {
public:
    QuietRunner(const Session& session, std::uint64_t seed)
        : games_({session.LeagueDir(), session.rules(), &session.era(), seed, todayDateText(),
                  session.places().dataRoot(), /*calibrateToSeason=*/true}) {}

    void playAndPost(Schedule& schedule, std::size_t row) override { games_.playAndPost(schedule, row); }

private:
    ScheduleGames games_;
};

std::string dateText(const LeagueDate& d) {
    return d.year > 0 ? fmt::format("{:04}-{:02}-{:02}", d.year, d.month, d.day)
                      : fmt::format("{:02}-{:02}", d.month, d.day);
}

void autoplay(const GlobalOptions& options, const AutoplayArgs& a) {
    recoverPosting(leagueDir(options));
    auto session = startSession(options);
    Schedule& schedule = session->schedule();
    auto date = schedule.leagueDate();
    if (!date) {
        fmt::print("Season Complete: every game of the schedule has been played.\n");
        return;
    }
    int marked = 0;
    if (!a.team.empty()) {
        auto match = TeamDirectory::load(session->LeagueDir()).find(a.team);
        if (match.ambiguous)
            throw CommandError(fmt::format("More than one team is called \"{}\": use its code or number", a.team));
        if (match.team == 0) throw CommandError(fmt::format("No team of this league is called \"{}\"", a.team));
        marked = markGames(schedule, MarkScope::Team, *date, match.team);
    } else if (!a.through.empty()) {
        int y = 0, m = 0, d = 0;
        if (std::sscanf(a.through.c_str(), "%d-%d-%d", &y, &m, &d) != 3 || m < 1 || m > 12 || d < 1 || d > 31)
            throw CommandError("Please give the date as YYYY-MM-DD");
        marked = markGames(schedule, MarkScope::Through, LeagueDate{m, d, seasonMonth(m), y});
    } else if (a.month) {
        marked = markGames(schedule, MarkScope::Month, *date);
    } else if (a.all) {
        marked = markGames(schedule, MarkScope::All, *date);
    } else {
        marked = markGames(schedule, MarkScope::Day, *date);
    }
    if (marked == 0) throw CommandError("No games are marked to play");

    ActiveTeams active;
    for (int t = 1; t <= kMaxTeams; ++t)
        if (session->league().isActive(t)) active.set(static_cast<std::size_t>(t));
    QuietRunner runner(*session, a.seed.value_or(Random::freshSeed()));

    bool bar = !a.quiet && isatty(STDOUT_FILENO) != 0;
    std::string lastDate;
    AutoplayHooks hooks;
    stopAsked = false;
    std::signal(SIGINT, onInterrupt);
    hooks.stopRequested = [] { return stopAsked.load(); };
    hooks.progress = [&](const AutoplayProgress& p) {
        std::string when = dateText(p.date);
        if (bar) {
            constexpr int width = 30;
            int filled = p.total > 0 ? p.done * width / p.total : width;
            fmt::print("\r[{}{}] {}/{} games  {}  {:.0f} games/s  {:.1f} s left ", std::string(filled, '#'),
                       std::string(width - filled, '.'), p.done, p.total, when, p.gamesPerSecond, p.secondsLeft);
            std::fflush(stdout);
        } else if (!a.quiet && when != lastDate) {
            fmt::print("{}: {}/{} games played\n", when, p.done, p.total);
            std::fflush(stdout);
        }
        lastDate = when;
    };
    AutoplayResult result = runAutoplay(schedule, active, runner, hooks);
    std::signal(SIGINT, SIG_DFL);
    if (bar) fmt::print("\n");
    double rate = result.seconds > 0 ? result.played / result.seconds : 0;
    switch (result.end) {
        case AutoplayEnd::Done:
            fmt::print("All requested games have been played: {} in {:.1f} s ({:.0f} games/s).\n", result.played,
                       result.seconds, rate);
            break;
        case AutoplayEnd::Stopped:
            fmt::print("Stopped after {} games; the rest are unplayed and the next run goes on from there.\n",
                       result.played);
            break;
        case AutoplayEnd::HumanGame:
            fmt::print("Game {} has a human coach: play it with `tallyrink play {} --coach both`.\n", result.humanRow,
                       result.humanRow);
            break;
        case AutoplayEnd::NothingMarked:
            fmt::print("No games are marked to play\n");
            break;
    }
    if (auto next = schedule.leagueDate())
        fmt::print("League date: {}\n", dateText(*next));
    else
        fmt::print("Season Complete\n");
}

}  // namespace

void addAutoplayCommands(CLI::App& app, GlobalOptions& options) {
    auto a = std::make_shared<AutoplayArgs>();
    auto* cmd = app.add_subcommand("autoplay", "Play and post the league's games without a screen, in date order");
    auto* day = cmd->add_flag("--day", a->day, "The games of the league date (the default)");
    auto* through = cmd->add_option("--through", a->through, "Every game on or before a date (YYYY-MM-DD)");
    auto* month = cmd->add_flag("--month", a->month, "The games of the league date's month");
    auto* all = cmd->add_flag("--all", a->all, "Every game left in the schedule");
    auto* team = cmd->add_option("--team", a->team, "Every game left of one team (number, code or city)");
    for (auto* o : {day, through, month, all, team})
        for (auto* p : {day, through, month, all, team})
            if (o != p) o->excludes(p);
    cmd->add_option("--seed", a->seed, "Seed of the run: the same seed replays the same games");
    cmd->add_flag("--quiet", a->quiet, "No progress lines");
    cmd->callback([&options, a] { autoplay(options, *a); });
}

}  // namespace tallyrink::cli
