#include "operations/autoplay.h"

#include <gtest/gtest.h>

#include <random>

#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

struct Game {
    int visitor, home, month, day;
    char coach = 'C';
};

Schedule scheduleOf(const TempDir& dir, const std::vector<Game>& games) {
    std::vector<GameRecord> rows;
    for (const auto& g : games) {
        GameRecord r = newGameRecord(g.visitor, g.home, g.month, g.day, 2017);
        r.Coach[1].raw[0] = g.coach;
        rows.push_back(r);
    }
    return Schedule::fromRows(dir.path(), std::move(rows));
}

ActiveTeams teams() {
    ActiveTeams a;
    for (int t = 1; t <= 6; ++t) a.set(static_cast<std::size_t>(t));
    return a;
}

// Plays by marking the row played, and keeps the order it was asked in.
struct RecordingRunner : GameRunner {
    std::vector<std::size_t> order;
    void playAndPost(Schedule& schedule, std::size_t row) override {
        order.push_back(row);
        schedule.row(row).Status.raw[0] = kPlayed;
    }
};

TEST(AutoplayChoice, ComputerGamesOfADateGoFirstAndEarlierDatesBeforeLater) {
    TempDir dir;
    Schedule s = scheduleOf(dir, {{1, 2, 10, 5, 'H'}, {3, 4, 10, 5}, {5, 6, 10, 6}, {1, 3, 10, 4, 'H'}, {2, 4, 10, 4}});
    markGames(s, MarkScope::All, {});
    // 10-4 holds a human game (row 4) and a computer one (row 5): the computer game first.
    EXPECT_EQ(PlayCommandChosen(s), 5u);
    s.row(5).Status.raw[0] = kPlayed;
    // Then the human game of that date, before any computer game of a later date.
    EXPECT_EQ(PlayCommandChosen(s), 4u);
    s.row(4).Status.raw[0] = kPlayed;
    EXPECT_EQ(PlayCommandChosen(s), 2u);
}

TEST(AutoplayChoice, EqualDatesGoByRowAndNothingMarkedIsNone) {
    TempDir dir;
    Schedule s = scheduleOf(dir, {{1, 2, 11, 1}, {3, 4, 11, 1}});
    EXPECT_FALSE(PlayCommandChosen(s));
    markGames(s, MarkScope::All, {});
    EXPECT_EQ(PlayCommandChosen(s), 1u);
}

// The choice told step by step: the computer games of the earliest day
// that has any human game or of an earlier one, the first of the earliest
// of them; unless a game of an earlier date waits, which goes first.
std::optional<std::size_t> chosenStepByStep(const Schedule& s) {
    auto marked = [&](std::size_t r) { return statusOf(s.row(r)) == kMarked; };
    auto computer = [&](std::size_t r) { return s.row(r).Coach[0].raw[0] == 'C' && s.row(r).Coach[1].raw[0] == 'C'; };
    auto key = [&](std::size_t r) { return dateKey(s.row(r).Month, s.row(r).Day); };
    auto first = [&](auto wanted) {
        std::optional<std::size_t> best;
        for (std::size_t r = 1; r <= s.size(); ++r)
            if (marked(r) && wanted(r) && (!best || key(r) < key(*best))) best = r;
        return best;
    };
    auto human = first([&](std::size_t r) { return !computer(r); });
    auto chosen = first([&](std::size_t r) { return computer(r) && (!human || key(r) <= key(*human)); });
    auto any = first([](std::size_t) { return true; });
    if (chosen && key(*any) == key(*chosen)) return chosen;
    return any;
}

TEST(AutoplayChoice, EveryMixOfDatesCoachesAndMarksChoosesAsToldStepByStep) {
    TempDir dir;
    std::mt19937 draws(11);
    for (int round = 0; round < 300; ++round) {
        std::vector<Game> games;
        int n = 1 + static_cast<int>(draws() % 8);
        for (int k = 0; k < n; ++k)
            games.push_back({1 + k % 3, 4 + k % 3, draws() % 2 ? 10 : 1, 1 + static_cast<int>(draws() % 3),
                             draws() % 3 == 0 ? 'H' : 'C'});
        Schedule s = scheduleOf(dir, games);
        markGames(s, MarkScope::All, {});
        for (std::size_t r = 1; r <= s.size(); ++r)
            if (draws() % 4 == 0) s.row(r).Status.raw[0] = kPlayed;
        ASSERT_EQ(PlayCommandChosen(s), chosenStepByStep(s)) << "round " << round;
    }
}

// A run keeps the order of its marked rows: every game it plays, and the
// human game it halts at, is the one a fresh look at the schedule chooses.
TEST(AutoplayRun, EveryGameOfARunIsTheOneAFreshLookChooses) {
    struct CheckingRunner : GameRunner {
        std::optional<std::size_t> fresh;  // chosen afresh before the game
        int played = 0;
        void playAndPost(Schedule& schedule, std::size_t row) override {
            EXPECT_EQ(std::optional(row), fresh) << "game " << played;
            schedule.row(row).Status.raw[0] = kPlayed;
            ++played;
        }
    };
    TempDir dir;
    std::mt19937 draws(5);
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE(round);
        std::vector<Game> games;
        int n = 1 + static_cast<int>(draws() % 12);
        for (int k = 0; k < n; ++k)
            games.push_back({1 + k % 3, 4 + k % 3, draws() % 2 ? 10 : 1, 1 + static_cast<int>(draws() % 3),
                             draws() % 5 == 0 ? 'H' : 'C'});
        Schedule s = scheduleOf(dir, games);
        markGames(s, MarkScope::All, {});
        for (std::size_t r = 1; r <= s.size(); ++r)
            if (draws() % 4 == 0) s.row(r).Status.raw[0] = kPlayed;
        CheckingRunner runner;
        AutoplayHooks hooks;
        hooks.stopRequested = [&] {
            runner.fresh = PlayCommandChosen(s);
            return false;
        };
        AutoplayResult result = runAutoplay(s, teams(), runner, hooks);
        EXPECT_EQ(result.played, runner.played);
        if (result.end == AutoplayEnd::HumanGame) {
            EXPECT_EQ(std::optional(result.humanRow), runner.fresh);
        }
    }
}

TEST(AutoplayMarking, ScopesMeasureFromTheDateAndAugustOpensTheSeason) {
    TempDir dir;
    std::vector<Game> games = {{1, 2, 8, 30}, {1, 2, 10, 14}, {1, 2, 10, 15}, {1, 2, 10, 16},
                               {3, 4, 11, 1}, {5, 6, 1, 3},   {3, 5, 10, 15}};
    LeagueDate oct15{10, 15, seasonMonth(10), 2017};
    Schedule day = scheduleOf(dir, games);
    EXPECT_EQ(markGames(day, MarkScope::Day, oct15), 2);
    Schedule through = scheduleOf(dir, games);
    EXPECT_EQ(markGames(through, MarkScope::Through, oct15), 4);  // August counts before October
    Schedule month = scheduleOf(dir, games);
    EXPECT_EQ(markGames(month, MarkScope::Month, oct15), 4);
    Schedule team = scheduleOf(dir, games);
    EXPECT_EQ(markGames(team, MarkScope::Team, oct15, 5), 2);
    // A played game is never marked again.
    team.row(1).Status.raw[0] = kPlayed;
    EXPECT_EQ(markGames(team, MarkScope::All, oct15), 4);

    LeagueDate jan5{1, 5, seasonMonth(1), 2018};
    EXPECT_TRUE(onOrBefore(12, 31, jan5));
    EXPECT_TRUE(onOrBefore(8, 1, jan5));
    EXPECT_FALSE(onOrBefore(2, 1, jan5));
}

TEST(AutoplayRun, PlaysEveryMarkedGameInDateOrderAndSaves) {
    TempDir dir;
    Schedule s = scheduleOf(dir, {{1, 2, 10, 6}, {3, 4, 10, 5}, {5, 6, 10, 7}});
    markGames(s, MarkScope::All, {});
    RecordingRunner runner;
    int reported = 0;
    AutoplayHooks hooks;
    hooks.progress = [&](const AutoplayProgress& p) {
        ++reported;
        EXPECT_EQ(p.total, 3);
    };
    AutoplayResult r = runAutoplay(s, teams(), runner, hooks);
    EXPECT_EQ(r.end, AutoplayEnd::Done);
    EXPECT_EQ(r.played, 3);
    EXPECT_EQ(reported, 3);
    EXPECT_EQ(runner.order, (std::vector<std::size_t>{2, 1, 3}));
}

TEST(AutoplayRun, AStopUnmarksWhatIsLeftAndTheNextRunGoesOn) {
    TempDir dir;
    Schedule s = scheduleOf(dir, {{1, 2, 10, 5}, {3, 4, 10, 6}, {5, 6, 10, 7}});
    markGames(s, MarkScope::All, {});
    RecordingRunner runner;
    AutoplayHooks hooks;
    hooks.stopRequested = [&] { return runner.order.size() == 1; };
    AutoplayResult r = runAutoplay(s, teams(), runner, hooks);
    EXPECT_EQ(r.end, AutoplayEnd::Stopped);
    EXPECT_EQ(r.played, 1);
    // The file holds the state the next run starts from: one played, two open.
    Schedule reread = Schedule::load(dir.path());
    EXPECT_EQ(statusOf(reread.row(1)), kPlayed);
    EXPECT_EQ(statusOf(reread.row(2)), kUnplayed);
    EXPECT_EQ(statusOf(reread.row(3)), kUnplayed);

    markGames(reread, MarkScope::All, {});
    RecordingRunner again;
    EXPECT_EQ(runAutoplay(reread, teams(), again).played, 2);
}

TEST(AutoplayRun, HaltsAtAHumanGameAndNothingMarkedSaysSo) {
    TempDir dir;
    Schedule s = scheduleOf(dir, {{1, 2, 10, 5}, {3, 4, 10, 6, 'H'}, {5, 6, 10, 7}});
    RecordingRunner runner;
    EXPECT_EQ(runAutoplay(s, teams(), runner).end, AutoplayEnd::NothingMarked);
    markGames(s, MarkScope::All, {});
    AutoplayResult r = runAutoplay(s, teams(), runner);
    EXPECT_EQ(r.end, AutoplayEnd::HumanGame);
    EXPECT_EQ(r.humanRow, 2u);
    EXPECT_EQ(r.played, 1);
    EXPECT_EQ(statusOf(s.row(3)), kUnplayed);
}

}  // namespace
}  // namespace tallyrink
