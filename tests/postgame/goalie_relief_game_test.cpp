// A whole game in which a computer coach takes his goalie out after goals
// against, played and posted: both goalies are in the box score with their
// own minutes, shots and saves, the starter alone is credited with the start,
// both with a game played, and the side's one decision goes to the goalie in
// net when the last goal went in.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "engine/game.h"
#include "league/schedule.h"
#include "operations/blank_league.h"
#include "postgame/box_file.h"
#include "postgame/box_text.h"
#include "postgame/game_summary.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using test::shippedEra;
using testing::TempDir;

struct Goalies {
    int starter = kNoSlot;
    int reliever = kNoSlot;
};

// Which goalies of a side that changed took its decision.
struct Relieved {
    bool game = false;      // the game was decided in regulation with a change in goal
    bool starter = false;   // a relieved starter took the decision
    bool reliever = false;  // his reliever did
};

// Plays a seeded game of two made-up teams whose goalies all go out after
// two goals against; if it is decided in regulation with a change in goal,
// posts it and checks what the posting made of both goalies.
Relieved playAndPostARelief(std::uint64_t seed) {
    TempDir dir;
    test::WrittenLeague league = test::writeMadeUpLeague(dir.path(), 2, 12);
    const int visitor = league.teams[0], home = league.teams[1];
    saveNewSchedule(dir.path(), {newGameRecord(visitor, home, 11, 4, 2017)}, league.active);
    Schedule schedule = Schedule::load(dir.path());
    GameSession session({dir.path(), test::madeUpRules(), &shippedEra(), &schedule});
    session.GameActive = true;
    Random draws(seed);
    session.loadGame(visitor, home, 11, 4, draws);
    clearGameEntries(session);
    std::array<BySlot<int>, 2> gamesBefore{};
    for (int side : {kVisitor, kHome}) {
        SideTables& t = session.side(side);
        // Nobody leaves the net for an extra attacker, so the goalies'
        // minutes make up the whole game.
        t.plan.PullTrailingByOne = 1;
        t.plan.PullTrailingByTwo = 1;
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            PlayerRecord& p = t.player(slot);
            if (isGoalie(p)) p.GoaliePullAfterGoalsAllowed = 2;
            gamesBefore[std::size_t(side)][std::size_t(slot)] = statLine(p, StatLineIndex::Replay).GP;
        }
    }

    Game game(session, GameOptions{.seed = seed});
    game.playToEnd();
    const GameState& s = game.state();
    const bool relieved = s.relief.relieved[kVisitor] != 0 || s.relief.relieved[kHome] != 0;
    Relieved out;
    if (!relieved || s.endedBy != GameEnd::Regulation) return out;
    out.game = true;
    const int winner = s.Score[kVisitor] > s.Score[kHome] ? kVisitor : kHome;

    auto box = test::postAndReadBox(session, game, dir.path());
    std::vector<std::string> text = boxScoreText(*box, boxNamesFromLeague(*box, dir.path()));

    for (int side : {kVisitor, kHome}) {
        SCOPED_TRACE(side);
        const SideTables& t = session.side(side);
        Goalies g{s.relief.starter[std::size_t(side)], kNoSlot};
        int played = 0, toi = 0, faced = 0, decisions = 0;
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const BoxLine& line = box->r1.BoxLines[BoxFile::at(side, slot)];
            if (!isGoalie(t.player(slot)) || line.Toi <= 0) continue;
            ++played;
            if (slot != g.starter) g.reliever = slot;
            toi += line.Toi;
            faced += line.Saves + line.GoalsAllowed;
            decisions += line.GoalieWins + line.GoalieLosses + line.GoalieOvertimeLosses;
            // A game played for each, posted to his season.
            EXPECT_EQ(statLine(t.player(slot), StatLineIndex::Replay).GP,
                      gamesBefore[std::size_t(side)][std::size_t(slot)] + 1);
            // Listed among the box score's goaltenders.
            const std::string name = boxPlayerName(t.player(slot));
            EXPECT_TRUE(std::any_of(text.begin(), text.end(), [&](const std::string& l) {
                return l.starts_with(name);
            })) << name;
        }
        // Minutes that add up to the game's, and every shot against the side
        // faced by one of them.
        EXPECT_EQ(toi, game.periods() * game.periodSeconds());
        EXPECT_EQ(faced, box->r1.BoxShots[std::size_t(1 - side)]);
        EXPECT_EQ(decisions, 1);
        EXPECT_EQ(box->r1.BoxStarterGoalie[std::size_t(side)], g.starter + 1);
        EXPECT_EQ(box->r1.BoxLines[BoxFile::at(side, g.starter)].GS, 1);
        const int decided = s.goals.back().goalies[std::size_t(side)];
        const BoxLine& ofRecord = box->r1.BoxLines[BoxFile::at(side, decided)];
        EXPECT_EQ(side == winner ? ofRecord.GoalieWins : ofRecord.GoalieLosses, 1);

        if (s.relief.relieved[std::size_t(side)] == 0) {
            EXPECT_EQ(played, 1);
            continue;
        }
        // Taken out right after the second goal against him.
        EXPECT_EQ(played, 2);
        EXPECT_EQ(s.relief.relieved[std::size_t(side)], std::uint64_t{1} << g.starter);
        EXPECT_EQ(box->r1.BoxLines[BoxFile::at(side, g.starter)].GoalsAllowed, 2);
        EXPECT_EQ(box->r1.BoxLines[BoxFile::at(side, g.reliever)].GS, 0);
        (decided == g.starter ? out.starter : out.reliever) = true;
    }
    return out;
}

TEST(GoalieReliefGame, BothGoaliesArePostedWithTheirOwnShareAndOneDecision) {
    // Games enough that both the relieved starter and his reliever have
    // taken a side's decision.
    Relieved seen;
    for (std::uint64_t seed = 1; seed <= 60 && !(seen.starter && seen.reliever); ++seed) {
        SCOPED_TRACE(seed);
        Relieved r = playAndPostARelief(seed);
        seen.starter |= r.starter;
        seen.reliever |= r.reliever;
    }
    EXPECT_TRUE(seen.starter);
    EXPECT_TRUE(seen.reliever);
}

}  // namespace
}  // namespace tallyrink
