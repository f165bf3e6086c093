#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>

#include "engine/game.h"
#include "league/era.h"
#include "postgame/game_done.h"
#include "postgame/game_summary.h"
#include "postgame/schedule_games.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace {

using namespace tallyrink;
namespace fs = std::filesystem;

constexpr int kTeams = 8;
constexpr std::size_t kGames = 240;  // a season's worth for eight teams of 60 games

// A copy of a made-up league with a schedule of kGames unplayed games, four
// a day from 5 October, each team once a day.
struct PostingLeague {
    testing::TempDir dir;
    std::unique_ptr<Schedule> schedule;

    PostingLeague() {
        const auto& source = test::madeUpLeague(kTeams, 7);
        for (const auto& e : fs::directory_iterator(source.dir.path()))
            fs::copy_file(e.path(), dir.path() / e.path().filename());
        const auto& teams = source.teams;
        std::vector<GameRecord> rows;
        int month = 10, day = 5;
        for (std::size_t g = 0; g < kGames; ++g) {
            // Round-robin pairs: team 0 stays, the others turn one place a day.
            std::size_t round = g / 4, k = g % 4;
            auto seat = [&](std::size_t i) { return i == 0 ? 0 : 1 + (i - 1 + round) % (kTeams - 1); };
            int a = teams.at(seat(k)), b = teams.at(seat(kTeams - 1 - k));
            rows.push_back(newGameRecord(round % 2 ? a : b, round % 2 ? b : a, month, day, 2017));
            if (k == 3 && ++day > scheduleMonthLength(month)) {
                day = 1;
                month = month % 12 + 1;
            }
        }
        ActiveTeams active;
        for (int t : teams) active.set(static_cast<std::size_t>(t));
        saveNewSchedule(dir.path(), rows, active);
        schedule = std::make_unique<Schedule>(Schedule::load(dir.path()));
    }
};

ScheduleGamesOptions optionsFor(const PostingLeague& league) {
    return {league.dir.path(), defaultRules(2017), &test::shippedEra(), 11, "10/10/2017", {}};
}

// A game of an autoplay run: both teams loaded, the game played, the
// posting written, with the run's names and images kept between games.
void BM_PostedGameInRun(benchmark::State& state) {
    auto league = std::make_unique<PostingLeague>();
    auto games = std::make_unique<ScheduleGames>(optionsFor(*league));
    std::size_t row = 0;
    for (auto _ : state) {
        if (row == kGames) {
            // A new season, so every game posts into a league as full as the last.
            state.PauseTiming();
            games.reset();
            league = std::make_unique<PostingLeague>();
            games = std::make_unique<ScheduleGames>(optionsFor(*league));
            row = 0;
            state.ResumeTiming();
        }
        PostingResult r = games->playAndPost(*league->schedule, ++row);
        benchmark::DoNotOptimize(r.scoresRow);
    }
}
BENCHMARK(BM_PostedGameInRun)->Unit(benchmark::kMillisecond);

// The same game played on its own (the play command): every file read
// from the disk and the schedule loaded for the posting.
void BM_PostedGameAlone(benchmark::State& state) {
    auto league = std::make_unique<PostingLeague>();
    std::size_t row = 0;
    for (auto _ : state) {
        if (row == kGames) {
            state.PauseTiming();
            league = std::make_unique<PostingLeague>();
            row = 0;
            state.ResumeTiming();
        }
        ++row;
        const Schedule& schedule = *league->schedule;
        const GameRecord& g = schedule.row(row);
        GameSession session({league->dir.path(), defaultRules(2017), &test::shippedEra(), &schedule});
        Random draws(row);
        session.loadGame(g.VisitorTeam, g.HomeTeam, g.Month, g.Day, draws);
        clearGameEntries(session);
        Game game(session, GameOptions{.seed = row});
        game.playToEnd();
        PostingResult r = postScheduleGame(session, game, schedule, row, row, "10/10/2017");
        benchmark::DoNotOptimize(r.scoresRow);
    }
}
BENCHMARK(BM_PostedGameAlone)->Unit(benchmark::kMillisecond);

}  // namespace
