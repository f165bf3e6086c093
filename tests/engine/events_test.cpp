// The events of a play: the credits of a goal at every strength, the odds
// and the counts of a draw, what the puck may do after shots and saves,
// icing and the recovered clear, and whole games whose statistics add up.

#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "engine/faceoffs.h"
#include "engine/game.h"
#include "engine/live_stats.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

// ---- Goal credits ------------------------------------------------------------

struct Rosters {
    BySlot<PlayerRecord> scoring{};
    BySlot<PlayerRecord> other{};
    const StatLine& game(int slot) const { return statLine(scoring[std::size_t(slot)], StatLineIndex::Game); }
    const StatLine& replay(int slot) const { return statLine(scoring[std::size_t(slot)], StatLineIndex::Replay); }
    const StatLine& otherGame(int slot) const { return statLine(other[std::size_t(slot)], StatLineIndex::Game); }
};

// Slots 0 to 5 of each side on the ice, 5 the goalie.
GoalCredit goalAt(int scorerSkaters, int otherSkaters) {
    GoalCredit g;
    g.scorer = 1;
    g.passer1 = 0;
    g.passer2 = 3;
    g.goalie = 5;
    for (std::size_t pos = 0; pos < kIcePositions; ++pos) {
        g.ice[0].slot[pos] = static_cast<int>(pos);
        g.ice[1].slot[pos] = static_cast<int>(pos);
    }
    // The short side's missing men are off the ice.
    if (scorerSkaters < 5) g.ice[0].slot[2] = kNoSlot;
    if (otherSkaters < 5) g.ice[1].slot[2] = kNoSlot;
    g.skaters = {scorerSkaters, otherSkaters};
    return g;
}

TEST(GoalCredits, AssistsNeverGoToTheScorerAndASecondNeedsAFirst) {
    GoalCredit g;
    g.scorer = 4;
    g.passer1 = 4;
    g.passer2 = 7;
    cleanAssists(g);
    EXPECT_EQ(g.passer1, kNoSlot);
    EXPECT_EQ(g.passer2, kNoSlot);  // no first assist, no second

    g = {};
    g.scorer = 4;
    g.passer1 = 2;
    g.passer2 = 4;
    cleanAssists(g);
    EXPECT_EQ(g.passer1, 2);
    EXPECT_EQ(g.passer2, kNoSlot);

    g.passer2 = 2;
    cleanAssists(g);
    EXPECT_EQ(g.passer2, kNoSlot);

    // Through the whole credit: the scorer's line shows a goal and no assist.
    Rosters r;
    GoalCredit own = goalAt(5, 5);
    own.passer1 = own.scorer;
    own.passer2 = own.scorer;
    creditGoal(own, r.scoring, r.other);
    EXPECT_EQ(r.game(1).Goals, 1);
    EXPECT_EQ(r.game(1).Assists, 0);
    int assists = 0;
    for (const PlayerRecord& p : r.scoring) assists += statLine(p, StatLineIndex::Game).Assists;
    EXPECT_EQ(assists, 0);
}

TEST(GoalCredits, AGoalIsCreditedToTheGameAndTheReplayLines) {
    Rosters r;
    statLine(r.scoring[1], StatLineIndex::Replay).Goals = 10;
    statLine(r.scoring[1], StatLineIndex::Replay).Sog = 80;
    creditGoal(goalAt(5, 5), r.scoring, r.other);
    EXPECT_EQ(r.game(1).Goals, 1);
    EXPECT_EQ(r.game(1).Sog, 1);
    EXPECT_EQ(r.replay(1).Goals, 11);
    EXPECT_EQ(r.replay(1).Sog, 81);
    EXPECT_EQ(r.game(0).Assists, 1);
    EXPECT_EQ(r.replay(0).Assists, 1);
    EXPECT_EQ(r.game(3).Assists, 1);
    EXPECT_EQ(r.otherGame(5).GoalsAllowed, 1);
    EXPECT_EQ(statLine(r.other[5], StatLineIndex::Replay).GoalsAllowed, 1);
    // Nothing else moves: no power-play or short-handed credit, no empty net.
    EXPECT_EQ(r.game(1).PPG + r.game(1).SHG + r.game(1).EmptyNetGoals, 0);
    EXPECT_EQ(r.game(0).PPA + r.game(0).SHA, 0);
    EXPECT_EQ(statLine(r.scoring[1], StatLineIndex::Real).Goals, 0);
}

TEST(GoalCredits, PlusMinusAtEveryStrength) {
    struct Case {
        int own, opp;
        bool emptyNet;
        int plus;  // what each man of the scoring side on the ice gets
        bool pp, sh;
    };
    for (Case c :
         {Case{5, 5, false, 1, false, false}, Case{4, 4, false, 1, false, false}, Case{5, 4, false, 0, true, false},
          Case{5, 3, false, 0, true, false}, Case{4, 5, false, 1, false, true}, Case{3, 5, false, 1, false, true},
          Case{5, 5, true, 1, false, false}, Case{4, 5, true, 1, false, true}}) {
        SCOPED_TRACE(::testing::Message() << c.own << " on " << c.opp << (c.emptyNet ? " empty net" : ""));
        Rosters r;
        GoalCredit g = goalAt(c.own, c.opp);
        g.emptyNet = c.emptyNet;
        if (c.emptyNet) g.goalie = kNoSlot;
        creditGoal(g, r.scoring, r.other);
        for (std::size_t pos = 0; pos < kIcePositions; ++pos) {
            int own = g.ice[0].slot[pos];
            int opp = g.ice[1].slot[pos];
            if (own != kNoSlot) {
                EXPECT_EQ(r.game(own).PlusMinus, c.plus) << pos;
            }
            if (own != kNoSlot) {
                EXPECT_EQ(r.replay(own).PlusMinus, c.plus) << pos;
            }
            if (opp != kNoSlot) {
                EXPECT_EQ(r.otherGame(opp).PlusMinus, -c.plus) << pos;
            }
        }
        // The man off the ice is untouched.
        if (c.own < 5) {
            EXPECT_EQ(r.game(2).PlusMinus, 0);
        }
        EXPECT_EQ(r.game(1).PPG, c.pp ? 1 : 0);
        EXPECT_EQ(r.game(0).PPA, c.pp ? 1 : 0);
        EXPECT_EQ(r.game(1).SHG, c.sh ? 1 : 0);
        EXPECT_EQ(r.game(3).SHA, c.sh ? 1 : 0);
        EXPECT_EQ(r.game(1).EmptyNetGoals, c.emptyNet ? 1 : 0);
        EXPECT_EQ(r.otherGame(5).GoalsAllowed, c.emptyNet ? 0 : 1);
    }
}

TEST(GoalCredits, GoalTypesByManpower) {
    EXPECT_EQ(goalTypeKey(goalTypeOf(5, 5, false, false)), "5-5");
    EXPECT_EQ(goalTypeKey(goalTypeOf(5, 4, false, false)), "5-4");
    EXPECT_EQ(goalTypeKey(goalTypeOf(3, 5, false, false)), "3-5");
    EXPECT_EQ(goalTypeKey(goalTypeOf(4, 5, false, false)), "4-5");
    EXPECT_EQ(goalTypeKey(goalTypeOf(5, 4, true, false)), "EMPTY");
    EXPECT_EQ(goalTypeKey(goalTypeOf(5, 5, true, true)), "PENALTY-SHOT");
    TeamRecord team{};
    team.GoalsFiveOnFour = {7, 0};
    creditGoalType(team, GoalType::FiveOnFour);
    EXPECT_EQ(team.GoalsFiveOnFour[1], 1);
    EXPECT_EQ(team.GoalsFiveOnFour[0], 7);  // the season entry is the posting's
    BySlot<PlayerRecord> roster{};
    statLine(roster[3], StatLineIndex::Game).Hits = 4;
    clearGameLines(roster, team);
    EXPECT_EQ(team.GoalsFiveOnFour[1], 0);
    EXPECT_EQ(statLine(roster[3], StatLineIndex::Game).Hits, 0);
}

// ---- Faceoff odds ---------------------------------------------------------------

TEST(FaceoffOdds, RatingsManpowerAndAHumanBendTheChances) {
    auto even = faceoffChances({5, 5, false}, {5, 5, false});
    EXPECT_DOUBLE_EQ(even[0], 50);
    EXPECT_DOUBLE_EQ(even[1], 50);
    auto gap = faceoffChances({10, 5, false}, {5, 5, false});
    EXPECT_DOUBLE_EQ(gap[0], 63.5);
    EXPECT_DOUBLE_EQ(gap[1], 36.5);
    auto pp = faceoffChances({5, 5, false}, {5, 4, false});
    EXPECT_DOUBLE_EQ(pp[0], 52.5);
    EXPECT_DOUBLE_EQ(pp[1], (50 + 50 - 52.5) * .95);
    auto human = faceoffChances({5, 5, true}, {5, 5, false});
    EXPECT_DOUBLE_EQ(human[0], 55);
    auto both = faceoffChances({5, 5, true}, {5, 5, true});
    EXPECT_DOUBLE_EQ(both[0], 50);

    Random rng(5);
    int visitor = 0;
    for (int i = 0; i < 20000; ++i) visitor += faceoffWinner(even, rng) == 0 ? 1 : 0;
    EXPECT_NEAR(visitor / 20000.0, .5, .02);
    int strong = 0;
    for (int i = 0; i < 20000; ++i) strong += faceoffWinner(gap, rng) == 0 ? 1 : 0;
    EXPECT_NEAR(strong / 20000.0, .635, .02);
    for (int i = 0; i < 200; ++i) EXPECT_EQ(faceoffWinner({100, 0}, rng), 0);
}

// ---- Games on a made-up league ------------------------------------------------------

const test::MadeUpLeague& madeUp() { return test::madeUpLeague(4, 17); }

RulesRecord rules2017() {
    RulesRecord r = defaultRules(2017);
    r.AllowOffensiveZonePlayCallsCheck = 1;
    return r;
}

std::unique_ptr<GameSession> loaded(const RulesRecord& rules, std::uint64_t seed = 1) {
    return test::loadedGame(madeUp(), rules, seed);
}

template <class Field>
int sumGameField(const GameSession& session, int side, Field field) {
    int total = 0;
    for (const PlayerRecord& p : session.side(side).GameRoster) total += field(statLine(p, StatLineIndex::Game));
    return total;
}

TEST(EventGames, StatisticsOfWholeGamesAddUp) {
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        auto session = loaded(rules2017(), seed);
        std::array<BySlot<StatLine>, 2> replayBefore{};
        for (int side : {kVisitor, kHome})
            for (std::size_t slot = 0; slot < kRosterSlots; ++slot)
                replayBefore[std::size_t(side)][slot] =
                    statLine(session->side(side).GameRoster[slot], StatLineIndex::Replay);
        GameOptions o;
        o.seed = seed;
        Game game(*session, o);
        game.playToEnd();
        const GameState& s = game.state();
        ASSERT_TRUE(s.GameEndedFlag);
        for (int side : {kVisitor, kHome}) {
            auto i = std::size_t(side);
            int other = 1 - side;
            EXPECT_EQ(sumGameField(*session, side, [](const StatLine& l) { return int{l.Goals}; }), s.Score[i]);
            // Every shot on goal of a side is a save or a goal of the other's goalies.
            int sog = sumGameField(*session, side, [](const StatLine& l) { return int{l.Sog}; });
            int saves = sumGameField(*session, other, [](const StatLine& l) { return int{l.Saves}; });
            int allowed = sumGameField(*session, other, [](const StatLine& l) { return int{l.GoalsAllowed}; });
            int emptyNet = sumGameField(*session, side, [](const StatLine& l) { return int{l.EmptyNetGoals}; });
            EXPECT_EQ(sog, s.Shots[i]);
            EXPECT_EQ(saves + allowed + emptyNet, s.Shots[i]);
            EXPECT_EQ(sumGameField(*session, side, [](const StatLine& l) { return int{l.FaceoffsWon}; }),
                      s.events.faceoffsWon[i]);
            EXPECT_EQ(sumGameField(*session, side, [](const StatLine& l) { return int{l.FaceoffsLost}; }),
                      s.events.faceoffsWon[std::size_t(other)]);
            EXPECT_EQ(sumGameField(*session, side, [](const StatLine& l) { return int{l.MissedShots}; }),
                      s.events.missed[i]);
            EXPECT_EQ(sumGameField(*session, other, [](const StatLine& l) { return int{l.Blocks}; }),
                      s.events.blocked[i]);
            EXPECT_EQ(sumGameField(*session, side, [](const StatLine& l) { return int{l.Hits}; }), s.events.hits[i]);
            // Every minute charged is in the penalty summary, named.
            int noted = 0;
            for (const PenaltyNote& p : s.penalties) {
                if (p.side != side) continue;
                noted += p.minutes;
                EXPECT_FALSE(p.name.empty());
            }
            EXPECT_EQ(noted, s.pen.PenaltyMinutes[i]);
            // The replay lines rose by the game lines.
            for (std::size_t slot = 0; slot < kRosterSlots; ++slot) {
                const PlayerRecord& p = session->side(side).GameRoster[slot];
                const StatLine& g = statLine(p, StatLineIndex::Game);
                const StatLine& r = statLine(p, StatLineIndex::Replay);
                const StatLine& b = replayBefore[i][slot];
                EXPECT_EQ(r.Goals, b.Goals + g.Goals);
                EXPECT_EQ(r.Assists, b.Assists + g.Assists);
                EXPECT_EQ(r.PlusMinus, b.PlusMinus + g.PlusMinus);
                EXPECT_EQ(r.Saves, b.Saves + g.Saves);
            }
        }
        for (const GoalNote& g : s.goals) {
            EXPECT_NE(g.scorer, kNoSlot);
            EXPECT_NE(g.assists[0], g.scorer);
            EXPECT_NE(g.assists[1], g.scorer);
            if (g.assists[0] == kNoSlot) {
                EXPECT_EQ(g.assists[1], kNoSlot);
            }
            if (g.assists[1] != kNoSlot) {
                EXPECT_NE(g.assists[0], g.assists[1]);
            }
        }
        int assists = 0;
        for (int side : {kVisitor, kHome})
            assists += sumGameField(*session, side, [](const StatLine& l) { return int{l.Assists}; });
        EXPECT_LE(assists, 2 * (s.Score[0] + s.Score[1]));
    }
}

// A hand-set state in mid-period, a carrier on the puck team, and the
// result to apply.
class Puck : public ::testing::Test {
protected:
    RulesRecord rules = rules2017();
    std::unique_ptr<GameSession> session;
    std::unique_ptr<Game> game;
    void start() {
        session = loaded(rules);
        game = std::make_unique<Game>(*session, GameOptions{});
        game->InitGame();
    }
    void SetUp() override { start(); }
    // The mean chance of the rebound shots that follow saves made from the same
    // state, again and again (a game left to run on would bring other shooters,
    // scores and tired men), with the forwards at `spot`; `counts` picks the
    // rebounds to take.
    double meanReboundChance(int spot, bool (*counts)(const GameState&)) {
        GameState fresh = game->state();
        fresh.find.ListCarrier = kNoSlot;
        for (int pos = 0; pos < 3; ++pos) fresh.find.Spot[std::size_t(pos)] = spot;
        long sum = 0;
        int n = 0;
        for (int i = 0; i < 400000 && n < 1500; ++i) {
            game->editState() = fresh;
            const GameState& s = apply(Zone::OffenseZone, kVisitor, Result::Save);
            if (s.events.Kind != ShotKind::ReboundShot || s.GameOverFlag || !counts(s)) continue;
            sum += s.events.ShootN;
            ++n;
        }
        EXPECT_GE(n, 100);
        return n > 0 ? double(sum) / n : 0.0;
    }
    const GameState& apply(Zone zone, int puck, Result result, std::array<int, 2> skaters = {5, 5}) {
        GameState& s = game->editState();
        s.PlayZone = zone;
        s.PuckTeam = puck;
        s.PlayResult = result;
        s.PlayCall = Call::Balanced;
        s.LastPlayCall = Call::Balanced;
        s.Clock = 600;
        s.Skaters = skaters;
        s.periodEnds = false;
        s.find.CarrierPos = 1;
        s.find.Carrier = s.onIce[std::size_t(puck)].slot[1];
        s.find.ForecheckLevel = {2, 2};
        game->ApplyPlay();
        return game->state();
    }
};

TEST_F(Puck, AShortHandedSideNeverKeepsAReboundInNorIcesThePuck) {
    std::set<ShotRebound> shotKinds;
    std::set<SaveRebound> saveKinds;
    for (int i = 0; i < 1500; ++i) {
        shotKinds.insert(apply(Zone::OffenseZone, kVisitor, Result::Miss, {4, 5}).events.shotRebound);
        saveKinds.insert(apply(Zone::OffenseZone, kVisitor, Result::Save, {4, 5}).events.saveRebound);
        EXPECT_NE(apply(Zone::DefenseZone, kVisitor, Result::Clear, {4, 5}).events.clearTarget, ClearTarget::Icing);
    }
    EXPECT_FALSE(shotKinds.count(ShotRebound::OffenseZone));
    EXPECT_FALSE(shotKinds.count(ShotRebound::NeutralZone));
    EXPECT_FALSE(saveKinds.count(SaveRebound::OffenseZone));
    EXPECT_FALSE(saveKinds.count(SaveRebound::NeutralZone));
    EXPECT_TRUE(shotKinds.count(ShotRebound::Clear));
    EXPECT_TRUE(saveKinds.count(SaveRebound::Freeze));

    // At full strength the same plays do keep pucks in and ice them.
    std::set<ClearTarget> clears;
    shotKinds.clear();
    for (int i = 0; i < 1500; ++i) {
        shotKinds.insert(apply(Zone::OffenseZone, kVisitor, Result::Block, {5, 4}).events.shotRebound);
        clears.insert(apply(Zone::DefenseZone, kHome, Result::Clear).events.clearTarget);
    }
    EXPECT_TRUE(shotKinds.count(ShotRebound::OffenseZone));
    EXPECT_TRUE(clears.count(ClearTarget::Icing));
    EXPECT_TRUE(clears.count(ClearTarget::NeutralZone));
    EXPECT_TRUE(clears.count(ClearTarget::DefenseZone));
}

// A power-play goal is kept out while the killers sit out both the last
// half minute of a coincidental minor and a minor the goal would end.
TEST_F(Puck, APowerPlayGoalIsKeptOutAtTheEndOfACoincidentalCall) {
    auto skater = [&](int side, std::size_t pos) { return game->state().onIce[std::size_t(side)].slot[pos]; };
    game->assessPenalty(kVisitor, skater(kVisitor, 0), PenaltyType::Minor, PenaltyKind::Coincidental);
    game->assessPenalty(kHome, skater(kHome, 0), PenaltyType::Minor, PenaltyKind::Coincidental);
    game->runPenaltyClock(12, true);  // the play of the call
    game->runPenaltyClock(95);        // 25 seconds left
    game->assessPenalty(kHome, skater(kHome, 1), PenaltyType::Minor);
    ASSERT_EQ(game->state().Skaters, (std::array<int, 2>{5, 4}));
    EXPECT_EQ(apply(Zone::OffenseZone, kVisitor, Result::Goal, {5, 4}).PlayResult, Result::Save);
    EXPECT_EQ(game->state().Score[kVisitor], 0);
    // With the coincidental calls over, the goal counts and ends the minor.
    game->runPenaltyClock(30);
    EXPECT_EQ(apply(Zone::OffenseZone, kVisitor, Result::Goal, {5, 4}).Score[kVisitor], 1);
    EXPECT_EQ(game->state().Skaters, (std::array<int, 2>{5, 5}));
}

// The rush a turnover starts is played by its manpower: the step that
// plays it reads the same kind the narration tells.
TEST_F(Puck, ARushIsPlayedAsTheRushItWasBuiltAs) {
    std::set<RushType> seen;
    for (int i = 0; i < 400 && seen.size() < 4; ++i) {
        game->editState().find.rush = RushType::None;
        const GameState& s = apply(Zone::NeutralZone, kVisitor, Result::ToRush);
        if (s.PlayZone != Zone::Rush) continue;
        ASSERT_NE(s.find.rush, RushType::None);
        EXPECT_EQ(text(s.find.rush), text(s.events.rushKind));
        seen.insert(s.find.rush);
    }
    EXPECT_TRUE(seen.count(RushType::OneZero));
    EXPECT_TRUE(seen.count(RushType::ThreeTwo));
}

// Hits on a turnover are steered by the hitting team's hits a game in the
// replay against its real season: a team far ahead of its real pace hits
// about half as often as one on it, one far behind about half again more.
TEST_F(Puck, ATeamsHitsAreSteeredTowardItsRealPace) {
    auto hitsWith = [&](int replayHits) {
        TeamRecord& home = session->side(kHome).team;
        home.TeamRealLine.GP = 10;
        home.TeamRealLine.Hits = 200;
        home.TeamFor[0].GP = 10;
        home.TeamFor[0].Hits = static_cast<std::int16_t>(replayHits);
        int hits = 0;
        for (int i = 0; i < 3000; ++i) {
            game->editState().pen.DelayedState = 0;
            hits += apply(Zone::NeutralZone, kVisitor, Result::ToNeutral).events.HitDone ? 1 : 0;
        }
        return hits / 3000.0;
    };
    const double onPace = hitsWith(200), ahead = hitsWith(400), behind = hitsWith(80);
    EXPECT_NEAR(onPace, .72, .05);
    EXPECT_NEAR(ahead / onPace, .5, .08);
    EXPECT_NEAR(behind, std::min(1.0, 1.75 * .715), .05);
}

// An iced clear is told as a clear going down the ice, then the whistle.
TEST_F(Puck, AnIcedClearIsToldAsTheClearAndThenTheWhistle) {
    for (int i = 0; i < 20; ++i) {
        const int before = game->playTelling().count();
        const GameState& s = apply(Zone::DefenseZone, kHome, Result::Clear);
        if (s.events.clearTarget != ClearTarget::Icing) continue;
        EXPECT_EQ(game->playTelling().count() - before, 2);
        return;
    }
    FAIL() << "no icing in 20 clears";
}

TEST_F(Puck, AnIcingBringsTheDrawBackToTheIcingEnd) {
    for (int i = 0; i < 400; ++i) {
        const GameState& s = apply(Zone::DefenseZone, kHome, Result::Clear);
        if (s.events.clearTarget != ClearTarget::Icing) continue;
        EXPECT_EQ(text(s.PlayZone), "FACEOFF-DEFENSE-2-1");
        EXPECT_TRUE(s.events.IcingFlag);
        EXPECT_TRUE(s.events.IcedBy[kHome]);
        return;
    }
    FAIL() << "no icing in 400 clears";
}

TEST_F(Puck, WithoutIcingInTheRulesNoClearIsIced) {
    rules.Icinglist = 2;
    start();
    for (int i = 0; i < 2000; ++i) {
        EXPECT_NE(apply(Zone::DefenseZone, kVisitor, Result::Clear).events.clearTarget, ClearTarget::Icing);
        EXPECT_NE(apply(Zone::NeutralZone, kVisitor, Result::Clear).events.clearTarget, ClearTarget::Icing);
        EXPECT_NE(apply(Zone::NeutralZone, kVisitor, Result::Miss).events.shotRebound, ShotRebound::Icing);
    }
}

// A long miss is an icing only from beyond the red line; from the own end
// the defenders take the puck. Where no icing can be called, the miss plays
// on as any other: the defenders clear it or it leaves the ice.
TEST_F(Puck, AnOwnHalfMissIsIcedOnlyFromTheNeutralZoneAndOtherwisePlaysOn) {
    std::set<ShotRebound> ownEnd, neutral, shortHanded;
    for (int i = 0; i < 1500; ++i) {
        ownEnd.insert(apply(Zone::DefenseZone, kVisitor, Result::Miss).events.shotRebound);
        neutral.insert(apply(Zone::NeutralZone, kVisitor, Result::Miss).events.shotRebound);
        shortHanded.insert(apply(Zone::DefenseZone, kVisitor, Result::Miss, {4, 5}).events.shotRebound);
    }
    EXPECT_EQ(ownEnd, std::set<ShotRebound>{ShotRebound::DefenseZone});
    EXPECT_EQ(neutral, std::set<ShotRebound>{ShotRebound::Icing});
    EXPECT_FALSE(shortHanded.count(ShotRebound::Icing));
    EXPECT_TRUE(shortHanded.count(ShotRebound::Clear));
    EXPECT_TRUE(shortHanded.count(ShotRebound::OutOfPlay));

    rules.Icinglist = 2;
    start();
    std::set<ShotRebound> noIcing;
    for (int i = 0; i < 1500; ++i) noIcing.insert(apply(Zone::DefenseZone, kVisitor, Result::Miss).events.shotRebound);
    EXPECT_FALSE(noIcing.count(ShotRebound::Icing));
    EXPECT_TRUE(noIcing.count(ShotRebound::Clear));
}

// A rebound at even strength is contested on the defenseman's rating in
// tenths, on which a 3.0 and a 9.0 defender are both past the mark: the
// attackers keep the puck in as often against either.
TEST_F(Puck, ReboundsAreKeptInAsOftenAgainstAnyDressedDefenseman) {
    auto keptShare = [&](int rating) {
        start();
        for (int pos : {3, 4})
            session->side(kHome).player(game->state().onIce[kHome].slot[std::size_t(pos)]).RatingDefense =
                static_cast<std::uint8_t>(rating);
        int kept = 0, n = 20000;
        for (int i = 0; i < n; ++i) {
            game->editState().find.BrokenStick = {};  // a shot may break a stick, which no change here mends
            ShotRebound r = apply(Zone::OffenseZone, kVisitor, Result::Miss).events.shotRebound;
            kept += r == ShotRebound::OffenseZone || r == ShotRebound::NeutralZone;
        }
        return double(kept) / n;
    };
    double poor = keptShare(30);
    double good = keptShare(90);
    EXPECT_GT(poor, 0.01);
    EXPECT_NEAR(poor / good, 1, 0.15) << poor << " against " << good;
}

TEST_F(Puck, NoGoaliePassUnderTheRuleAndNoRecoveryWithoutAForecheck) {
    rules.NoGoaliePasscheck = 1;
    start();
    std::set<ClearTarget> clears;
    for (int i = 0; i < 2000; ++i) {
        EXPECT_NE(apply(Zone::OffenseZone, kHome, Result::Save).events.saveRebound, SaveRebound::GoaliePass);
        clears.insert(apply(Zone::OffenseZone, kHome, Result::Clear).events.clearTarget);
    }
    EXPECT_TRUE(clears.count(ClearTarget::Recover));
    for (int i = 0; i < 2000; ++i) {
        game->editState().find.ForecheckLevel = {0, 0};
        GameState& s = game->editState();
        s.PlayZone = Zone::OffenseZone;
        s.PuckTeam = kHome;
        s.PlayResult = Result::Clear;
        s.Skaters = {4, 5};  // even an edge of one man recovers nothing at level 0
        s.Clock = 600;
        game->ApplyPlay();
        EXPECT_NE(game->state().events.clearTarget, ClearTarget::Recover);
    }
}

// A rebound shot is a shot like any other: its chance comes from the shot
// model, so the goalie it is aimed at counts, not only the shooter's record.
TEST_F(Puck, AReboundsChanceComesFromTheShotModel) {
    auto meanChance = [&](int rating) {
        start();
        int goalie = game->state().goalie[kHome];
        session->side(kHome).player(goalie).RatingGoalie = static_cast<std::uint8_t>(rating);
        game->editState().find.GoalieForm[kHome][std::size_t(goalie)] = 0;
        // In close, where the goalie's part isn't held back by the limits of
        // an outside shot. After a save the chance in per cent is the
        // model's plus 20.
        return meanReboundChance(kSpotIn, [](const GameState& s) {
            EXPECT_GE(s.events.ShootN, 20);
            return true;
        });
    };
    double weak = meanChance(40);
    double strong = meanChance(95);
    EXPECT_GT(weak, strong + 3) << weak << " against " << strong;
}

// The rebound shooter's chance is the model's for the spot he stands on: a
// man at the point puts fewer rebounds in than one at the edge of the crease.
TEST_F(Puck, AReboundShootersSpotSetsHisChance) {
    auto meanChance = [&](int spot) {
        start();
        // A defenseman stands at the point anyway.
        return meanReboundChance(spot, [](const GameState& s) { return s.find.CarrierPos <= 2; });
    };
    double in = meanChance(kSpotIn);
    double out = meanChance(kSpotOut);
    EXPECT_GT(in, out + 3) << in << " against " << out;
}

// A clear that the goalie has to stop is no shot on goal, but the puck
// comes off him as off any save: he passes it out, it drops to his
// defensemen, or he covers it.
TEST_F(Puck, AClearTheGoalieStopsIsNoShotButPlaysOnAsASave) {
    std::set<SaveRebound> kinds;
    for (int i = 0; i < 1000; ++i) {
        const int shots = game->state().Shots[kVisitor];
        const GameState& s = apply(Zone::DefenseZone, kVisitor, Result::ClearSave);
        kinds.insert(s.events.saveRebound);
        if (s.events.Kind != ShotKind::ReboundShot) {
            EXPECT_EQ(s.Shots[kVisitor], shots);
        }
    }
    EXPECT_TRUE(kinds.count(SaveRebound::Freeze));
    EXPECT_TRUE(kinds.count(SaveRebound::GoaliePass));
    EXPECT_TRUE(kinds.count(SaveRebound::DefenseZone));
}

TEST_F(Puck, AnEmptyNetTakesNoReboundAndChargesNoGoalie) {
    // With the net empty a rebound isn't played: the puck goes back.
    GameState& s = game->editState();
    s.GoaliePulled[kHome] = true;
    for (int i = 0; i < 500; ++i) {
        ShotRebound r = apply(Zone::OffenseZone, kVisitor, Result::Miss).events.shotRebound;
        EXPECT_NE(r, ShotRebound::ReboundShot);
        EXPECT_NE(r, ShotRebound::Clear);
    }
    // A goal into the empty net credits no goalie and counts as empty net.
    int before = s.Score[kVisitor];
    apply(Zone::OffenseShooter, kVisitor, Result::Goal);
    EXPECT_EQ(s.Score[kVisitor], before + 1);
    EXPECT_TRUE(s.goals.back().emptyNet);
    EXPECT_EQ(s.goals.back().type, GoalType::EmptyNet);
    EXPECT_EQ(session->side(kVisitor).team.GoalsEmptyNet[1], 1);
    for (const PlayerRecord& p : session->side(kHome).GameRoster)
        EXPECT_EQ(statLine(p, StatLineIndex::Game).GoalsAllowed, 0);
    // A goal that comes too late at the horn is never saved by nobody: on an
    // empty net every shot on goal is a goal.
    for (int i = 0; i < 200; ++i) {
        int shots = s.Shots[kVisitor], goals = s.Score[kVisitor];
        s.PlayZone = Zone::OffenseShooter;
        s.PuckTeam = kVisitor;
        s.PlayResult = Result::Goal;
        s.Clock = 1;
        s.periodEnds = false;
        s.GoaliePulled[kHome] = true;
        game->ApplyPlay();
        EXPECT_EQ(s.Shots[kVisitor] - shots, s.Score[kVisitor] - goals) << i;
    }
    for (const PlayerRecord& p : session->side(kHome).GameRoster) EXPECT_EQ(statLine(p, StatLineIndex::Game).Saves, 0);
}

TEST_F(Puck, EveryDrawIsCountedForTheTeamAndBothMen) {
    int draws = 0;
    for (int i = 0; i < 300 && !game->state().GameOverFlag; ++i) {
        GameState& s = game->editState();
        s.PlayZone = i % 2 ? Zone::FaceoffDefense22 : Zone::FaceoffCenter2;
        s.LastPlayResult = Result::None;
        game->ContinueCommand();  // the draw, then one step
        ++draws;
    }
    const GameState& s = game->state();
    int won = s.events.faceoffsWon[0] + s.events.faceoffsWon[1];
    EXPECT_GE(won, draws);
    int wonByMen = 0, lostByMen = 0;
    for (int side : {kVisitor, kHome}) {
        wonByMen += sumGameField(*session, side, [](const StatLine& l) { return int{l.FaceoffsWon}; });
        lostByMen += sumGameField(*session, side, [](const StatLine& l) { return int{l.FaceoffsLost}; });
    }
    EXPECT_EQ(wonByMen, won);
    EXPECT_EQ(lostByMen, won);
    EXPECT_GT(s.events.faceoffsWon[0], 0);
    EXPECT_GT(s.events.faceoffsWon[1], 0);
}

}  // namespace
}  // namespace tallyrink
