// A game that opens on a penalty shot, played to the end and posted: the
// shot is told once, the game goes on from center ice, and the box score
// carries the attempt and, on a goal, its own goal type.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/game.h"
#include "league/schedule.h"
#include "operations/blank_league.h"
#include "postgame/box_file.h"
#include "postgame/game_summary.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using test::shippedEra;
using testing::TempDir;

class ShortLines final : public NullPresenter {
public:
    std::vector<std::string> lines;
    void ShowPlayLines(const Game&, const std::vector<std::string>& shown) override {
        lines.insert(lines.end(), shown.begin(), shown.end());
    }
};

int countHolding(const std::vector<std::string>& lines, const std::string& words) {
    int n = 0;
    for (const auto& l : lines) n += l.find(words) != std::string::npos ? 1 : 0;
    return n;
}

struct Outcome {
    bool goal = false;
};

Outcome openOnPenaltyShot(std::uint64_t seed) {
    TempDir dir;
    test::WrittenLeague league = test::writeMadeUpLeague(dir.path(), 2, 12);
    int visitor = league.teams[0], home = league.teams[1];
    saveNewSchedule(dir.path(), {newGameRecord(visitor, home, 11, 4, 2017)}, league.active);
    Schedule schedule = Schedule::load(dir.path());
    // A shootout's attempts count as penalty shots too: with none, every
    // attempt counted is one of the game's own.
    RulesRecord rules = test::madeUpRules();
    rules.ShootOutList = 0;
    GameSession session({dir.path(), rules, &shippedEra(), &schedule});
    session.GameActive = true;
    Random draws(seed);
    session.loadGame(visitor, home, 11, 4, draws);
    clearGameEntries(session);

    ShortLines told;
    GameOptions options;
    options.seed = seed;
    options.noDisplay = false;
    options.shortPlayByPlay = true;
    Game game(session, options, &told);
    game.InitGame();
    // A sure hand at it, so that some go in.
    const int shooter = game.state().onIce[kVisitor].slot[0];
    session.side(kVisitor).player(shooter).RatingPenaltyShot = 10;
    GameState& e = game.editState();
    e.PlayZone = Zone::PenaltyShot;
    e.PuckTeam = kVisitor;
    e.find.Carrier = shooter;
    game.SetPlayBox();
    EXPECT_TRUE(game.state().GameOverFlag);

    const StatLine& line = statLine(session.side(kVisitor).player(shooter), StatLineIndex::Game);
    EXPECT_EQ(line.PenaltyShotAttempts, 1);
    const bool goal = line.PenaltyShotGoals == 1;
    // Now and then the game has a penalty shot of its own: every one is
    // told once, as a goal or a stop.
    int attempts = 0, scored = 0;
    for (int side : {kVisitor, kHome})
        for (const PlayerRecord& p : session.side(side).GameRoster) {
            attempts += statLine(p, StatLineIndex::Game).PenaltyShotAttempts;
            scored += statLine(p, StatLineIndex::Game).PenaltyShotGoals;
        }
    EXPECT_EQ(countHolding(told.lines, "SCORES on a penalty shot"), scored);
    EXPECT_EQ(countHolding(told.lines, "misses penalty shot"), attempts - scored);
    // The game went on past the shot: more shots than the one, both ways.
    EXPECT_GT(game.state().Shots[kVisitor], 1);
    EXPECT_GT(game.state().Shots[kHome], 0);

    auto box = test::postAndReadBox(session, game, dir.path());
    const std::size_t at = BoxFile::at(kVisitor, shooter);
    EXPECT_EQ(box->r1.BoxPenaltyShots[at], 1);
    EXPECT_EQ(box->r1.BoxLines[at].PenaltyShotAttempts, 1);
    EXPECT_EQ(box->r1.BoxLines[at].PenaltyShotGoals, goal ? 1 : 0);
    int visitorGoals = 0;
    for (const PlayerRecord& p : session.side(kVisitor).GameRoster)
        visitorGoals += statLine(p, StatLineIndex::Game).PenaltyShotGoals;
    EXPECT_EQ(box->r1.BoxGoalTypes[10], visitorGoals);  // the visitors' penalty-shot goals
    // The shot opened the game: the home starter faced it.
    const int goalie = box->r1.BoxStarterGoalie[kHome] - 1;
    EXPECT_EQ(box->r1.BoxLines[BoxFile::at(kHome, goalie)].GoaliePenaltyShotsFaced, 1);
    return {goal};
}

TEST(PenaltyShotGame, IsToldOncePlaysOnAndReachesTheBoxScore) {
    int goals = 0, stops = 0;
    for (std::uint64_t seed = 1; seed <= 12 && (goals == 0 || stops == 0); ++seed) {
        SCOPED_TRACE(seed);
        (openOnPenaltyShot(seed).goal ? goals : stops) += 1;
    }
    EXPECT_GT(goals, 0);
    EXPECT_GT(stops, 0);
}

}  // namespace
}  // namespace tallyrink
