// Penalties and the strength on the ice: overlapping, waiting and
// coincidental penalties, goals that end a minor but not a major, double
// minors, men coming back from the box, the power-play count, fights with
// their majors, instigators and misconducts, injuries, and the rates a
// season of a made-up league comes to.

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "engine/game.h"
#include "operations/blank_league.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "operations/schedule_generator.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using test::shippedEra;
using testing::TempDir;

struct League2017 {
    TempDir dir;
    std::vector<int> teams;
    explicit League2017(std::uint64_t seed, int count) {
        NewLeagueOptions options;
        options.teams = count;
        options.year = 2017;
        options.seed = seed;
        GeneratedLeague league = generateLeague(options, eraTargets(shippedEra(), 2017));
        writeLeagueFolder(dir.path(), league.files);
        for (int t = 1; t <= kMaxTeams; ++t)
            if (league.files.teams[std::size_t(t - 1)].TeamActive == 1) teams.push_back(t);
    }
};

League2017& smallLeague() {
    static League2017 league(31, 4);
    return league;
}

RulesRecord standardRules() {
    RulesRecord r = defaultRules(2017);
    r.Periodslist = 2;
    r.Minuteslist = 19;
    r.OTLengthlist = 1;
    r.ShootOutList = 1;
    r.Minorcheck = 1;
    r.MinorLengthlist = 1;
    r.Majorcheck = 1;
    r.MajorLengthlist = 3;
    r.MinorGoalcheck = 1;
    r.MajorGoalcheck = 0;
    r.MajorSubcheck = 0;
    r.SubsOnAllPenaltiesCheck = 0;
    r.GameMisconductCheck = 0;
    r.NoFightingCheck = 0;
    return r;
}

// A loaded game stopped at a neutral-zone draw, with nothing in the box.
struct PenaltyGame : ::testing::Test {
    RulesRecord rules = standardRules();
    std::unique_ptr<GameSession> session;
    std::unique_ptr<Game> game;

    void start() {
        League2017& lg = smallLeague();
        session = std::make_unique<GameSession>(LeagueContext{lg.dir.path(), rules, &shippedEra(), nullptr});
        Random draws(3);
        session->loadGame(lg.teams[0], lg.teams[1], 11, 10, draws);
        game = std::make_unique<Game>(*session, GameOptions{.seed = 5});
        game->InitGame();
    }
    void SetUp() override { start(); }

    // The chances of a plain neutral-zone step in mid-game, the visitor
    // with the puck, in which nothing is drawn at random: `arrange` sets
    // what the test varies.
    PlayChances midGameChances(const std::function<void(GameState&)>& arrange = {}) {
        GameState& e = game->editState();
        e.PlayZone = Zone::NeutralZone;
        e.PuckTeam = kVisitor;
        e.LastPlayResult = Result::Pass;
        e.Period = 2;
        e.Clock = 700;
        if (arrange) arrange(e);
        PlayChances c;
        game->PenaltyChances(c);
        return c;
    }

    const GameState& s() const { return game->state(); }
    std::array<int, 2> skaters() const { return s().Skaters; }
    // Skaters of a side's unit on the ice, not counting the goalie.
    int onIce(int side) const {
        int n = 0;
        for (std::size_t pos = 0; pos < 5; ++pos) n += s().onIce[std::size_t(side)].slot[pos] != kNoSlot ? 1 : 0;
        return n;
    }
    int skater(int side, std::size_t pos) const { return s().onIce[std::size_t(side)].slot[pos]; }
    const std::vector<BoxPenalty>& box(int side) const { return s().pen.box[std::size_t(side)]; }
};

TEST_F(PenaltyGame, OverlappingPenaltiesNeverLeaveASideBelowThree) {
    int a = skater(kHome, 0), b = skater(kHome, 1), c = skater(kHome, 3);
    game->assessPenalty(kHome, a, PenaltyType::Minor);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 4}));
    EXPECT_EQ(onIce(kHome), 4);
    game->runPenaltyClock(12, true);  // the play it was called in doesn't count
    EXPECT_EQ(box(kHome)[0].PenaltySeconds, 120);
    EXPECT_TRUE(game->offIce(kHome, a));
    EXPECT_FALSE(s().onIce[kHome].holds(a));
    game->runPenaltyClock(30);
    game->assessPenalty(kHome, b, PenaltyType::Minor);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 3}));
    EXPECT_EQ(onIce(kHome), 3);
    // The third waits, its clock stopped, until one of the others ends.
    game->assessPenalty(kHome, c, PenaltyType::Minor);
    EXPECT_EQ(skaters()[kHome], 3);
    ASSERT_EQ(box(kHome).size(), 3u);
    EXPECT_FALSE(box(kHome)[2].running);
    game->runPenaltyClock(60);
    EXPECT_EQ(box(kHome)[2].PenaltySeconds, 120);
    EXPECT_EQ(game->minPenaltyLeft(), 30);
    // The first comes out; the waiting one starts, and the side stays at three.
    game->runPenaltyClock(30);
    EXPECT_FALSE(game->offIce(kHome, a));
    ASSERT_EQ(box(kHome).size(), 2u);
    EXPECT_TRUE(box(kHome)[1].running);
    EXPECT_EQ(skaters()[kHome], 3);
    game->runPenaltyClock(30);  // the second ends: four again
    EXPECT_EQ(skaters()[kHome], 4);
    EXPECT_EQ(onIce(kHome), 4);
    EXPECT_FALSE(game->offIce(kHome, b));
    game->runPenaltyClock(120);  // the last: full strength, everyone free
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 5}));
    EXPECT_EQ(onIce(kHome), 5);
    EXPECT_TRUE(box(kHome).empty());
    EXPECT_EQ(game->minPenaltyLeft(), 999);
}

TEST_F(PenaltyGame, CoincidentalPenaltiesSitMenWithoutChangingStrength) {
    int v = skater(kVisitor, 1), h = skater(kHome, 1);
    game->assessPenalty(kVisitor, v, PenaltyType::Minor, PenaltyKind::Coincidental);
    game->assessPenalty(kHome, h, PenaltyType::Minor, PenaltyKind::Coincidental);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 5}));
    EXPECT_TRUE(game->offIce(kVisitor, v));
    EXPECT_FALSE(s().onIce[kVisitor].holds(v));
    EXPECT_EQ(onIce(kVisitor), 5);
    // A later minor is a plain power play, and a goal on it leaves the
    // coincidental men where they are.
    game->assessPenalty(kHome, skater(kHome, 0), PenaltyType::Minor);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 4}));
    EXPECT_EQ(s().pen.PowerPlays[kVisitor], 1);
    game->penaltyGoal(kVisitor);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 5}));
    EXPECT_EQ(box(kHome).size(), 1u);
    EXPECT_TRUE(box(kHome)[0].Coincidental);
    EXPECT_TRUE(game->offIce(kHome, h));
    EXPECT_EQ(s().pen.PowerPlayGoals[kVisitor], 1);
    // A goal at even strength ends nothing.
    game->penaltyGoal(kHome);
    EXPECT_EQ(box(kVisitor).size(), 1u);
    EXPECT_EQ(s().pen.PowerPlayGoals[kHome], 0);
}

// A man in the box leaves the list of the men fit to go on, and comes back
// to it when his penalty ends; his teammates stay on it throughout.
TEST_F(PenaltyGame, TheBoxHoldsAManOffTheFitListUntilHisPenaltyEnds) {
    int v = skater(kVisitor, 2);
    auto held = [&](int slot) { return s().pen.heldOff[kVisitor][std::size_t(slot)]; };
    EXPECT_FALSE(held(v));
    game->assessPenalty(kVisitor, v, PenaltyType::Minor);
    EXPECT_TRUE(held(v));
    for (int slot = 0; slot < kRosterSlots; ++slot) EXPECT_EQ(held(slot), slot == v) << slot;
    game->penaltyGoal(kHome);
    EXPECT_TRUE(box(kVisitor).empty());
    EXPECT_FALSE(held(v));
}

// With both boxes empty the clock still takes off a man on the ice who is
// hurt or out of the game, holds him while he stays so (a run with nothing
// new moves nobody), and gives him back when he is fit again.
TEST_F(PenaltyGame, TheClockKeepsHurtAndOutMenOffOnlyWhileTheyAre) {
    auto held = [&](int side, int slot) { return s().pen.heldOff[std::size_t(side)][std::size_t(slot)]; };
    const int hurt = skater(kVisitor, 1);
    const int out = skater(kHome, 3);
    GameState& e = game->editState();
    e.pen.InjuryKind[kVisitor][std::size_t(hurt)] = 4;
    e.find.PlayerOut[kHome][std::size_t(out)] = true;
    game->runPenaltyClock(10);
    EXPECT_TRUE(held(kVisitor, hurt));
    EXPECT_TRUE(held(kHome, out));
    EXPECT_FALSE(s().onIce[kVisitor].holds(hurt));
    EXPECT_FALSE(s().onIce[kHome].holds(out));
    EXPECT_EQ(onIce(kVisitor), 5);
    EXPECT_EQ(onIce(kHome), 5);
    const OnIce visitors = s().onIce[kVisitor];
    game->runPenaltyClock(10);
    EXPECT_EQ(s().onIce[kVisitor].slot, visitors.slot);
    EXPECT_TRUE(held(kVisitor, hurt));

    // Fit again: back on the list, and no one else held.
    game->editState().pen.InjuryKind[kVisitor][std::size_t(hurt)] = 0;
    game->runPenaltyClock(10);
    EXPECT_FALSE(held(kVisitor, hurt));
    EXPECT_TRUE(held(kHome, out));
    for (int slot = 0; slot < kRosterSlots; ++slot) EXPECT_EQ(held(kVisitor, slot), false) << slot;
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 5}));
    EXPECT_EQ(s().pen.PowerPlays, (std::array<int, 2>{0, 0}));
}

TEST_F(PenaltyGame, AGoalEndsTheEarliestMinorButNotAMajor) {
    int a = skater(kHome, 0), b = skater(kHome, 2), m = skater(kHome, 3);
    game->assessPenalty(kHome, m, PenaltyType::Major, PenaltyKind::OneSide, "boarding");
    EXPECT_EQ(skaters()[kHome], 4);
    game->penaltyGoal(kVisitor);  // a major is served in full
    EXPECT_EQ(skaters()[kHome], 4);
    EXPECT_EQ(box(kHome).size(), 1u);

    game->assessPenalty(kHome, a, PenaltyType::Minor);
    game->runPenaltyClock(20);
    game->assessPenalty(kHome, b, PenaltyType::Minor);
    EXPECT_EQ(skaters()[kHome], 3);
    ASSERT_EQ(box(kHome).size(), 3u);
    EXPECT_FALSE(box(kHome)[2].running);  // b waits behind the major and a
    game->penaltyGoal(kVisitor);          // ends a's minor, the one nearest its end
    EXPECT_FALSE(game->offIce(kHome, a));
    EXPECT_TRUE(game->offIce(kHome, b));
    EXPECT_TRUE(game->offIce(kHome, m));
    EXPECT_TRUE(box(kHome)[1].running);
    EXPECT_EQ(skaters()[kHome], 3);
    game->penaltyGoal(kVisitor);  // then b's
    EXPECT_FALSE(game->offIce(kHome, b));
    EXPECT_EQ(skaters()[kHome], 4);
    // Five on four and then five on three are one power play; back to
    // five on four is none.
    EXPECT_EQ(s().pen.PowerPlays[kVisitor], 1);
    EXPECT_EQ(s().pen.PenaltyKills[kHome], 1);
    EXPECT_EQ(s().pen.PowerPlayGoals[kVisitor], 3);
}

TEST_F(PenaltyGame, AtEqualTimeAGoalFreesTheManFirstInTheRoster) {
    int x = skater(kHome, 0), y = skater(kHome, 1);
    int first = std::min(x, y), second = std::max(x, y);
    game->assessPenalty(kHome, second, PenaltyType::Minor);  // called first, but later in the roster
    game->assessPenalty(kHome, first, PenaltyType::Minor);
    game->penaltyGoal(kVisitor);
    EXPECT_FALSE(game->offIce(kHome, first));
    EXPECT_TRUE(game->offIce(kHome, second));
}

// A bench minor goes to the forwards in their order on the ice: each man
// taken leaves a mark of his worth on the kill, which the next forward
// comes under, so the last of them serves even when the first is weakest.
TEST_F(PenaltyGame, ABenchMinorIsServedByTheForwardTheRunningMarkLeaves) {
    std::vector<int> forwards;
    for (std::size_t pos = 0; pos < 3; ++pos)
        if (skater(kVisitor, pos) != kNoSlot) forwards.push_back(skater(kVisitor, pos));
    ASSERT_GE(forwards.size(), 2u);
    auto set = [&](int slot, int offense, int defense, int kill) {
        PlayerRecord& p = session->side(kVisitor).player(slot);
        p.RatingOffense = std::uint8_t(offense);
        p.RatingDefense = std::uint8_t(defense);
        p.RatingPenaltyKill = std::uint8_t(kill);
    };
    set(forwards[0], 40, 40, 2);                                                    // the weakest: 80, leaves 200 + 40
    for (std::size_t i = 1; i < forwards.size(); ++i) set(forwards[i], 90, 60, 1);  // 150 under 240, then 360
    game->assessPenalty(kVisitor, kNoSlot, PenaltyType::Minor, PenaltyKind::OneSide, "too many men");
    ASSERT_EQ(box(kVisitor).size(), 1u);
    EXPECT_EQ(box(kVisitor)[0].server, forwards.back());
}

// A man called often this season is called less now; what counts is how
// many calls he had, not their minutes: four majors are four calls, not ten.
TEST_F(PenaltyGame, ASeasonOfCallsCountsCallsNotMinutes) {
    const int man = skater(kHome, 0);
    auto picked = [&](int minors, int majors) {
        PlayerRecord& p = session->side(kHome).player(man);
        statLine(p, StatLineIndex::Replay).GP = 10;
        statLine(p, StatLineIndex::Replay).Pim = std::int16_t(2 * minors + 5 * majors);
        p.Minors[0] = std::int16_t(minors);
        p.Majors[0] = std::int16_t(majors);
        game = std::make_unique<Game>(*session, GameOptions{.seed = 5});
        game->InitGame();
        int n = 0;
        for (int i = 0; i < 2000; ++i) {
            FindState& f = game->editState().find;
            f.PenaltiesToCall = {0, 1};
            f.Drawn = {};
            f.penalizedCount = {0, 0};
            f.PenaltyServer = false;
            game->FindPenalized();
            n += f.penalizedCount[kHome] > 0 && f.Penalized[kHome][0] == man ? 1 : 0;
        }
        return n;
    };
    // Both histories come to 20 minutes in 10 games.
    EXPECT_GT(picked(0, 4), picked(10, 0) * 1.3);
}

TEST_F(PenaltyGame, AMajorEndsOnAGoalOnlyUnderItsRule) {
    rules.MajorGoalcheck = 1;
    start();
    game->assessPenalty(kVisitor, skater(kVisitor, 4), PenaltyType::Major);
    game->penaltyGoal(kHome);
    EXPECT_EQ(skaters()[kVisitor], 5);
}

TEST_F(PenaltyGame, ADoubleMinorLosesOnlyItsFirstHalfToAGoal) {
    int d = skater(kVisitor, 2);
    game->assessPenalty(kVisitor, d, PenaltyType::DoubleMinor);
    ASSERT_EQ(box(kVisitor).size(), 1u);
    EXPECT_EQ(box(kVisitor)[0].PenaltySeconds, 240);
    game->runPenaltyClock(50);
    game->penaltyGoal(kHome);
    EXPECT_EQ(box(kVisitor)[0].PenaltySeconds, 120);
    EXPECT_EQ(skaters()[kVisitor], 4);
    game->penaltyGoal(kHome);  // a goal in the second half ends it
    EXPECT_TRUE(box(kVisitor).empty());
    EXPECT_EQ(skaters()[kVisitor], 5);

    // Once the first half has run out by the clock, a goal ends it all.
    game->assessPenalty(kVisitor, d, PenaltyType::DoubleMinor);
    game->runPenaltyClock(130);
    EXPECT_FALSE(box(kVisitor)[0].DoubleMinorFlag);
    game->penaltyGoal(kHome);
    EXPECT_TRUE(box(kVisitor).empty());
    EXPECT_EQ(s().pen.PenaltyMinutes[kVisitor], 8);
}

TEST_F(PenaltyGame, SubstitutionRulesKeepTheSideWhole) {
    rules.MajorSubcheck = 1;
    start();
    int m = skater(kHome, 3);
    game->assessPenalty(kHome, m, PenaltyType::Major);
    EXPECT_EQ(skaters()[kHome], 5);
    EXPECT_TRUE(game->offIce(kHome, m));  // he sits all the same

    rules = standardRules();
    rules.SubsOnAllPenaltiesCheck = 1;
    start();
    game->assessPenalty(kHome, skater(kHome, 0), PenaltyType::Minor);
    EXPECT_EQ(skaters()[kHome], 5);
}

TEST_F(PenaltyGame, PenaltyMinutesGoToThePlayerAndTheTeam) {
    int p = skater(kHome, 1);
    const PlayerRecord& rec = session->side(kHome).player(p);
    int replay = statLine(rec, StatLineIndex::Replay).Pim;
    int minors = rec.Minors[0];
    game->assessPenalty(kHome, p, PenaltyType::Minor);
    game->assessPenalty(kHome, p, PenaltyType::Misconduct);
    EXPECT_EQ(statLine(rec, StatLineIndex::Game).Pim, 12);
    EXPECT_EQ(statLine(rec, StatLineIndex::Replay).Pim, replay + 12);
    EXPECT_EQ(rec.Minors[0], minors + 1);
    EXPECT_EQ(rec.Minors[1], 1);
    EXPECT_EQ(rec.Misconducts[1], 1);
    EXPECT_EQ(session->side(kHome).team.TeamFor[1].Pim, 12);
    EXPECT_EQ(s().pen.PenaltyMinutes[kHome], 12);
    // A misconduct doesn't shorten the side.
    EXPECT_EQ(skaters()[kHome], 4);

    // A bench minor is served by a forward and charged to the team alone.
    int seasonPim = session->side(kVisitor).team.TeamFor[0].Pim;
    game->assessPenalty(kVisitor, kNoSlot, PenaltyType::Minor, PenaltyKind::OneSide, "too many men");
    ASSERT_EQ(box(kVisitor).size(), 1u);
    int server = box(kVisitor)[0].server;
    ASSERT_NE(server, kNoSlot);
    EXPECT_TRUE(isForward(session->side(kVisitor).player(server)));
    EXPECT_EQ(session->side(kVisitor).team.TeamFor[0].Pim, seasonPim + 2);
    EXPECT_EQ(skaters()[kVisitor], 4);

    // A goalie doesn't go to the box for his own minor.
    int goalie = s().goalie[kVisitor];
    game->runPenaltyClock(120);
    game->assessPenalty(kVisitor, goalie, PenaltyType::Minor);
    EXPECT_NE(box(kVisitor)[0].server, goalie);
    EXPECT_EQ(s().goalie[kVisitor], goalie);
    EXPECT_EQ(s().onIce[kVisitor][IcePos::GoalieOrExtra], goalie);
}

TEST_F(PenaltyGame, APenaltyRunsOnIntoOvertime) {
    game->assessPenalty(kHome, skater(kHome, 0), PenaltyType::Minor);
    game->runPenaltyClock(0);  // called in an earlier play
    GameState& e = game->editState();
    e.Period = 3;
    e.Clock = 2;  // the horn sounds in this play
    e.Score = {2, 2};
    e.PlayZone = Zone::NeutralZone;
    e.PuckTeam = kVisitor;
    game->OffenseCommand(Call::Balanced);
    ASSERT_EQ(s().Period, 4);
    // Overtime is three a side under the league's rule: the short side
    // can't lose a man, so the other gains one.
    EXPECT_EQ(skaters(), (std::array<int, 2>{4, 3}));
    ASSERT_EQ(box(kHome).size(), 1u);
    EXPECT_EQ(box(kHome)[0].PenaltySeconds, 118);
    EXPECT_EQ(s().pen.PowerPlays[kVisitor], 1);  // still the same power play
    game->runPenaltyClock(118);
    EXPECT_EQ(skaters(), (std::array<int, 2>{3, 3}));
}

// The overtime rule sets how many skate a side once regulation ends tied,
// and their men stand on the ice.
TEST_F(PenaltyGame, OvertimeIsPlayedWithTheRulesSkaters) {
    auto overtimeSkaters = [&](int three, int four) {
        rules.ThreeOption = static_cast<std::uint8_t>(three);
        rules.Fouroption = static_cast<std::uint8_t>(four);
        start();
        GameState& e = game->editState();
        e.Period = 3;
        e.Clock = 2;
        e.Score = {1, 1};
        e.PlayZone = Zone::NeutralZone;
        e.PuckTeam = kVisitor;
        game->OffenseCommand(Call::Balanced);
        EXPECT_EQ(s().Period, 4);
        EXPECT_EQ(onIce(kVisitor), s().Skaters[kVisitor]);
        return skaters();
    };
    EXPECT_EQ(overtimeSkaters(1, 0), (std::array<int, 2>{3, 3}));
    EXPECT_EQ(overtimeSkaters(0, 1), (std::array<int, 2>{4, 4}));
    EXPECT_EQ(overtimeSkaters(0, 0), (std::array<int, 2>{5, 5}));
}

TEST_F(PenaltyGame, ADelayedPenaltyIsCalledWhenTheOffendersTouchThePuck) {
    GameState& e = game->editState();
    auto play = [&](int puck, Result r) {
        e.PlayZone = Zone::NeutralZone;
        e.PuckTeam = puck;
        e.PlayResult = r;
        e.Clock = 600;
        game->ApplyPlay();
    };
    e.penaltyOn = kHome;
    play(kVisitor, Result::Penalty);
    EXPECT_EQ(s().pen.DelayedState, 1);
    EXPECT_TRUE(box(kHome).empty());
    EXPECT_EQ(s().PlayZone, Zone::NeutralZone);  // the visitors play on
    EXPECT_EQ(s().PuckTeam, kVisitor);
    play(kVisitor, Result::Pass);
    EXPECT_EQ(s().pen.DelayedState, 1);
    play(kVisitor, Result::To);  // the home side has the puck: whistle
    EXPECT_EQ(s().pen.DelayedState, 0);
    ASSERT_EQ(box(kHome).size(), 1u);
    EXPECT_EQ(skaters()[kHome], 4);
    EXPECT_EQ(text(s().PlayZone), "FACEOFF-DEFENSE-2-1");

    // A goal on the delayed call stands for the power play: the minor is
    // charged but not served.
    game->runPenaltyClock(120);
    int before = s().pen.PenaltyMinutes[kHome];
    e.penaltyOn = kHome;
    play(kVisitor, Result::Penalty);
    ASSERT_EQ(s().pen.DelayedState, 1);
    e.PlayZone = Zone::OffenseZone;
    e.PlayResult = Result::Goal;
    game->ApplyPlay();
    EXPECT_EQ(s().pen.DelayedState, 0);
    int minutes = s().pen.PenaltyMinutes[kHome] - before;
    EXPECT_GE(minutes, 2);
    if (minutes == 2) {
        EXPECT_TRUE(box(kHome).empty());
    }
}

// The box rests a man in full: whatever he had played, he comes out fresh.
// A delayed call that the play runs on to a goal is a minor nearly always:
// never a double minor, a major one time in five hundred.
TEST_F(PenaltyGame, ADelayedCallEndedByAGoalIsAlmostAlwaysAMinor) {
    GameState& e = game->editState();
    int delayed = 0, doubles = 0, majors = 0;
    for (int i = 0; i < 400; ++i) {
        e.pen.penaltiesOf = {};
        e.penaltyOn = kHome;
        e.PlayZone = Zone::NeutralZone;
        e.PuckTeam = kVisitor;
        e.PlayResult = Result::Penalty;
        e.Clock = 600;
        game->ApplyPlay();
        if (s().pen.DelayedState != 1) {  // a bench or goalie call is never delayed
            game->runPenaltyClock(900);
            continue;
        }
        ++delayed;
        const int before = s().pen.PenaltyMinutes[kHome];
        e.PlayZone = Zone::OffenseZone;
        e.PlayResult = Result::Goal;
        e.Clock = 600;
        game->ApplyPlay();
        const int minutes = s().pen.PenaltyMinutes[kHome] - before;
        doubles += minutes == 4 ? 1 : 0;
        majors += minutes >= 5 ? 1 : 0;
        game->runPenaltyClock(900);
    }
    ASSERT_GT(delayed, 300);
    EXPECT_EQ(doubles, 0);
    EXPECT_LE(majors, 3);
}

TEST_F(PenaltyGame, AManInTheBoxIsRestedInFull) {
    const int tired = skater(kVisitor, 0);
    const auto i = std::size_t(tired);
    ASSERT_TRUE(s().onIce[kVisitor].holds(tired));
    GameState& e = game->editState();
    e.ShiftSecs[kVisitor][i] = 80;
    e.Energy[kVisitor][i] = 55;
    game->assessPenalty(kVisitor, tired, PenaltyType::Minor);
    game->PlayStep();
    ASSERT_TRUE(game->offIce(kVisitor, tired));
    EXPECT_EQ(s().ShiftSecs[kVisitor][i], 0);
    EXPECT_EQ(s().Energy[kVisitor][i], std::min(100, int(session->side(kVisitor).MaxEnergy[i])));
}

TEST_F(PenaltyGame, APowerPlayIsCountedWhenASideGainsTheEdge) {
    auto& pp = s().pen.PowerPlays;
    game->assessPenalty(kVisitor, skater(kVisitor, 0), PenaltyType::Minor);
    EXPECT_EQ(pp, (std::array<int, 2>{0, 1}));
    game->runPenaltyClock(30);
    game->assessPenalty(kHome, skater(kHome, 0), PenaltyType::Minor);  // four on four
    EXPECT_EQ(skaters(), (std::array<int, 2>{4, 4}));
    game->runPenaltyClock(90);  // the visitor's man is back: their power play
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 4}));
    EXPECT_EQ(pp, (std::array<int, 2>{1, 1}));
    game->runPenaltyClock(30);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 5}));
    // Two at once, a man each: one power play, and none more as they end.
    game->assessPenalty(kHome, skater(kHome, 0), PenaltyType::Minor);
    game->assessPenalty(kHome, skater(kHome, 1), PenaltyType::Minor);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 3}));
    game->runPenaltyClock(120);
    EXPECT_EQ(skaters(), (std::array<int, 2>{5, 5}));
    EXPECT_EQ(pp, (std::array<int, 2>{2, 1}));
    EXPECT_EQ(s().pen.PenaltyKills, (std::array<int, 2>{1, 2}));
    // A pulled goalie is no power play.
    GameState& e = game->editState();
    e.GoaliePulled[kHome] = true;
    game->runPenaltyClock(1);
    EXPECT_EQ(pp, (std::array<int, 2>{2, 1}));
}

// A foul on a breakaway: the play stops for the shot, which is a step of its
// own; goal or save, it is counted once and play resumes at center with the
// manpower it had, a man in the box staying there.
TEST_F(PenaltyGame, APenaltyShotIsCalledTakenAndCountedOnce) {
    int jailed = skater(kHome, 4);
    game->assessPenalty(kHome, jailed, PenaltyType::Minor);
    ASSERT_EQ(skaters(), (std::array<int, 2>{5, 4}));
    int fouled = skater(kVisitor, 1);
    int goalie = s().goalie[kHome];
    GameState& e = game->editState();
    e.Clock = 600;
    e.PlayZone = Zone::Rush;
    e.PuckTeam = kVisitor;
    e.find.Carrier = fouled;
    e.find.CarrierPos = 1;
    e.PlayResult = Result::PenaltyShot;
    game->ApplyPlay();
    ASSERT_EQ(s().PlayZone, Zone::PenaltyShot);
    EXPECT_EQ(s().PuckTeam, kVisitor);
    EXPECT_EQ(s().find.Carrier, fouled);
    EXPECT_TRUE(s().onIce[kHome].holds(s().find.Defender));  // the man who hauled him down
    EXPECT_EQ(box(kHome).size(), 1u);                        // no penalty for it

    auto line = [&](int side, int slot) { return statLine(session->side(side).player(slot), StatLineIndex::Game); };
    auto replayLine = [&](int side, int slot) {
        return statLine(session->side(side).player(slot), StatLineIndex::Replay);
    };
    int goals = 0, saves = 0;
    for (int attempt = 1; attempt <= 60 && (goals == 0 || saves == 0); ++attempt) {
        const StatLine shooterBefore = line(kVisitor, fouled);
        const StatLine goalieBefore = line(kHome, goalie);
        const int penaltyShotGoals = session->side(kVisitor).team.GoalsPenaltyShot[1];
        const auto score = s().Score;
        const auto shots = s().Shots;
        const std::size_t notes = s().goals.size();
        const int replayAttempts = replayLine(kVisitor, fouled).PenaltyShotAttempts;
        GameState& r = game->editState();
        r.PlayZone = Zone::PenaltyShot;
        r.PuckTeam = kVisitor;
        r.find.Carrier = fouled;
        game->OffenseCommand(Call::Shoot);

        const StatLine shooter = line(kVisitor, fouled);
        const StatLine keeper = line(kHome, goalie);
        const bool goal = s().Score[kVisitor] > score[kVisitor];
        (goal ? goals : saves) += 1;
        EXPECT_EQ(s().Score[kVisitor], score[kVisitor] + (goal ? 1 : 0));
        EXPECT_EQ(s().Score[kHome], score[kHome]);
        EXPECT_EQ(s().Shots[kVisitor], shots[kVisitor] + 1);
        EXPECT_EQ(shooter.Sog, shooterBefore.Sog + 1);
        EXPECT_EQ(shooter.PenaltyShotAttempts, attempt);
        EXPECT_EQ(replayLine(kVisitor, fouled).PenaltyShotAttempts, replayAttempts + 1);
        EXPECT_EQ(shooter.Goals, shooterBefore.Goals + (goal ? 1 : 0));
        EXPECT_EQ(shooter.PenaltyShotGoals, shooterBefore.PenaltyShotGoals + (goal ? 1 : 0));
        // One man against the goalie: no power-play goal, no plus or minus.
        EXPECT_EQ(shooter.PPG, 0);
        EXPECT_EQ(shooter.PlusMinus, shooterBefore.PlusMinus);
        EXPECT_EQ(keeper.GoaliePenaltyShotsFaced, attempt);
        EXPECT_EQ(keeper.GoaliePenaltyShotGoals, goals);
        EXPECT_EQ(keeper.GoalsAllowed, goalieBefore.GoalsAllowed + (goal ? 1 : 0));
        EXPECT_EQ(keeper.Saves, goalieBefore.Saves + (goal ? 0 : 1));
        EXPECT_EQ(session->side(kVisitor).team.GoalsPenaltyShot[1], penaltyShotGoals + (goal ? 1 : 0));
        ASSERT_EQ(s().goals.size(), notes + (goal ? 1 : 0));
        if (goal) {
            EXPECT_EQ(s().goals.back().type, GoalType::PenaltyShot);
            EXPECT_EQ(s().goals.back().strengthEdge, 0);
        }
        EXPECT_EQ(s().PlayZone, Zone::FaceoffCenter1);
        EXPECT_EQ(skaters(), (std::array<int, 2>{5, 4}));
        EXPECT_TRUE(game->offIce(kHome, jailed));
    }
    EXPECT_GT(goals, 0);
    EXPECT_GT(saves, 0);
    EXPECT_EQ(s().pen.PowerPlayGoals[kVisitor], 0);
}

// The whistle comes on a rush by its manpower, a breakaway most often, and
// never against an empty net.
TEST_F(PenaltyGame, PenaltyShotsComeOnRushesByTheirManpower) {
    auto calls = [&](RushType rush, bool pulled) {
        int n = 0;
        for (int i = 0; i < 20000; ++i) {
            GameState& e = game->editState();
            e.Clock = 600;
            e.PlayZone = Zone::Rush;
            e.find.rush = rush;
            e.PuckTeam = kVisitor;
            e.GoaliePulled = {false, pulled};
            e.PlayResult = Result::ToNeutral;
            e.pen.DelayedState = 0;
            game->ApplyPlay();
            n += s().PlayZone == Zone::PenaltyShot ? 1 : 0;
        }
        return n;
    };
    // 1 in 1000 on any rush, then 20, 7 and 3 in 1000 by the rush.
    EXPECT_NEAR(calls(RushType::OneZero, false), 20000 * .021, 70);
    EXPECT_NEAR(calls(RushType::TwoOne, false), 20000 * .008, 45);
    EXPECT_NEAR(calls(RushType::ThreeTwo, false), 20000 * .004, 35);
    EXPECT_EQ(calls(RushType::OneZero, true), 0);

    // The attackers' own foul on a breakaway is only a penalty.
    int shots = 0;
    for (int i = 0; i < 2000; ++i) {
        GameState& e = game->editState();
        e.pen = {};
        e.Skaters = {5, 5};
        e.GoaliePulled = {false, false};
        e.Clock = 600;
        e.PlayZone = Zone::Rush;
        e.find.rush = RushType::OneZero;
        e.PuckTeam = kVisitor;
        e.penaltyOn = kVisitor;
        e.PlayResult = Result::Penalty;
        game->ApplyPlay();
        shots += s().PlayZone == Zone::PenaltyShot ? 1 : 0;
    }
    EXPECT_EQ(shots, 0);
}

TEST_F(PenaltyGame, TheMatchPenaltyAndTheMisconductRulePutMenOut) {
    int m = skater(kHome, 2);
    game->assessPenalty(kHome, m, PenaltyType::Match);
    EXPECT_TRUE(s().find.PlayerOut[kHome][std::size_t(m)]);
    ASSERT_EQ(box(kHome).size(), 1u);
    EXPECT_NE(box(kHome)[0].server, m);  // a teammate serves
    EXPECT_EQ(skaters()[kHome], 4);
    EXPECT_EQ(s().pen.PenaltyMinutes[kHome], 10);
    game->runPenaltyClock(300);
    EXPECT_EQ(skaters()[kHome], 5);
    EXPECT_TRUE(game->offIce(kHome, m));

    rules.GameMisconductCheck = 1;
    rules.MiscConductLengthList = 0;
    start();
    int f = skater(kVisitor, 0);
    game->assessPenalty(kVisitor, f, PenaltyType::Major);
    EXPECT_EQ(s().pen.PenaltyMinutes[kVisitor], 15);
    game->runPenaltyClock(300);
    // The major is served; the side is whole, the man sits on.
    EXPECT_EQ(skaters()[kVisitor], 5);
    EXPECT_TRUE(game->offIce(kVisitor, f));
    game->runPenaltyClock(600);
    EXPECT_TRUE(s().find.PlayerOut[kVisitor][std::size_t(f)]);
}

TEST_F(PenaltyGame, FightersGetMajorsAndTheSidesStayEven) {
    int v = skater(kVisitor, 0), h = skater(kHome, 0);
    int before = session->side(kVisitor).player(v).Fights[2];
    game->fight({v, h}, kVisitor);
    // The referee may add a minor for what was said to him; only that
    // puts a side short, never the fighting majors.
    for (int side : {kVisitor, kHome}) {
        int extraMinutes = 0;
        int short_ = 0;
        for (const BoxPenalty& b : box(side)) {
            if (b.type == PenaltyType::Major) continue;
            extraMinutes += b.PenaltySeconds / 60;
            if (b.shortHanded) ++short_;
        }
        EXPECT_EQ(skaters()[std::size_t(side)], 5 - short_);
        EXPECT_EQ(s().pen.PenaltyMinutes[std::size_t(side)], 5 + extraMinutes);
        EXPECT_EQ(s().pen.PowerPlays[std::size_t(1 - side)], short_ > 0 ? 1 : 0);
    }
    EXPECT_TRUE(game->offIce(kVisitor, v));
    EXPECT_TRUE(game->offIce(kHome, h));
    EXPECT_EQ(session->side(kVisitor).player(v).Fights[2], before + 1);
    EXPECT_EQ(session->side(kHome).team.FightsCount[1], 1);
    EXPECT_EQ(s().pen.fightCount, 1);
    game->runPenaltyClock(300);
    EXPECT_FALSE(game->offIce(kVisitor, v));
}

TEST_F(PenaltyGame, AnInstigatorPutsHisSideShortNowAndThen) {
    rules.FightInstigatorCheck = 1;
    int instigated = 0;
    for (std::uint64_t seed = 0; seed < 60; ++seed) {
        start();
        game = std::make_unique<Game>(*session, GameOptions{.seed = seed});
        game->InitGame();
        game->fight({skater(kVisitor, 0), skater(kHome, 0)}, kHome);
        EXPECT_EQ(skaters()[kVisitor], 5);
        if (skaters()[kHome] == 4) {
            ++instigated;
            EXPECT_EQ(s().pen.PenaltyMinutes[kHome], 7);
        }
    }
    EXPECT_GT(instigated, 3);
    EXPECT_LT(instigated, 30);

    rules.FightInstigatorCheck = 0;
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        start();
        game = std::make_unique<Game>(*session, GameOptions{.seed = seed});
        game->InitGame();
        game->fight({skater(kVisitor, 0), skater(kHome, 0)}, kHome);
        EXPECT_EQ(skaters(), (std::array<int, 2>{5, 5}));
    }
}

TEST_F(PenaltyGame, AThirdFightOrTheMisconductRuleEndsAFightersGame) {
    rules.ThreeFightMajorsCheck = 1;
    start();
    int v = skater(kVisitor, 1);
    for (int i = 0; i < 3; ++i) {
        game->fight({v, skater(kHome, std::size_t(i))}, kVisitor);
        game->runPenaltyClock(300);
        if (i < 2) {
            EXPECT_FALSE(game->offIce(kVisitor, v)) << i;
        }
    }
    EXPECT_TRUE(s().find.PlayerOut[kVisitor][std::size_t(v)]);

    rules = standardRules();
    rules.GameMisconductCheck = 1;
    rules.MiscConductLengthList = 0;
    start();
    int a = skater(kVisitor, 0), b = skater(kHome, 0);
    game->fight({a, b}, kVisitor);
    game->runPenaltyClock(300);
    game->runPenaltyClock(600);
    EXPECT_TRUE(s().find.PlayerOut[kVisitor][std::size_t(a)]);
    EXPECT_TRUE(s().find.PlayerOut[kHome][std::size_t(b)]);
    EXPECT_EQ(s().pen.PenaltyMinutes[kVisitor], 15);
}

TEST_F(PenaltyGame, NoFightingMeansNoFightChance) {
    rules.NoFightingCheck = 1;
    start();
    for (int i = 0; i < 50; ++i) {
        GameState& e = game->editState();
        e.PlayZone = Zone::NeutralZone;
        e.LastPlayResult = Result::Pass;
        PlayChances c;
        game->PenaltyChances(c);
        EXPECT_EQ(c.FightChance, 0);
        EXPECT_GT(c.PenaltyOppChance, 0);
    }
}

// The forecheckers the defending side has out at the moment, none to
// three, add a per mille or two to the calls against it, whatever the
// forecheck scroll of its plan; its zone aggressiveness scales them.
TEST_F(PenaltyGame, ForecheckersOnTheIceAddToTheCallsAggressivenessScalesThem) {
    auto calls = [&](int forecheckers, int aggressiveness) {
        return midGameChances([&](GameState& e) {
                   e.find.ForecheckLevel = {1, forecheckers};
                   e.coach.live[kHome].dzAggressiveness = aggressiveness;
               })
            .PenaltyOppChance;
    };
    const int none = calls(0, 3);
    ASSERT_GT(none, 10);
    EXPECT_EQ(calls(0, 3), none);  // nothing drawn at random in this state
    EXPECT_GE(calls(3, 3) - none, 1);
    EXPECT_LE(calls(3, 3) - none, 2);
    session->side(kHome).plan.Forecheck = 7;
    EXPECT_LE(calls(3, 3) - none, 2);
    EXPECT_NEAR(calls(0, 5) / double(none), 1.5, .1);
}

// At full strength the calls against a side follow the real penalty rates
// of its men on the ice, a tenth up or down; a man short, they don't.
TEST_F(PenaltyGame, AtFullStrengthCallsFollowTheDefendingUnitsDiscipline) {
    auto calls = [&](int realPim, int visitorSkaters) {
        for (PlayerRecord& p : session->side(kHome).GameRoster) statLine(p, StatLineIndex::Real).Pim = realPim;
        game = std::make_unique<Game>(*session, GameOptions{.seed = 5});
        game->InitGame();
        return midGameChances([&](GameState& e) { e.Skaters = {visitorSkaters, 5}; }).PenaltyOppChance;
    };
    const int clean = calls(0, 5), rough = calls(400, 5);
    ASSERT_GT(clean, 20);
    EXPECT_NEAR(double(rough) / clean, 1.1 / .9, .06);
    EXPECT_EQ(calls(0, 4), calls(400, 4));
}

// In a calm era the team with the puck stops drawing calls against itself
// once a man of the other side has been called three times.
TEST_F(PenaltyGame, AManCalledThreeTimesCalmsThePuckCarriers) {
    auto ownChance = [&]() { return midGameChances().PenaltyOwnChance; };
    ASSERT_GT(ownChance(), 0);
    game->editState().pen.penaltiesOf[kHome][std::size_t(skater(kHome, 0))] = 2;
    EXPECT_GT(ownChance(), 0);
    game->editState().pen.penaltiesOf[kHome][std::size_t(skater(kHome, 0))] = 3;
    EXPECT_EQ(ownChance(), 0);
}

TEST_F(PenaltyGame, NoPenaltyIsCalledInTheOffensiveZoneOrRightAfterOne) {
    GameState& e = game->editState();
    e.PlayZone = Zone::OffenseZone;
    PlayChances c;
    game->PenaltyChances(c);
    EXPECT_EQ(c.PenaltyOppChance + c.PenaltyOwnChance + c.PenaltyBothChance + c.FightChance, 0);
    e.PlayZone = Zone::DefenseZone;
    e.LastPlayResult = Result::Penalty;
    game->PenaltyChances(c);
    EXPECT_EQ(c.PenaltyOppChance + c.PenaltyOwnChance + c.PenaltyBothChance + c.FightChance, 0);
    // A side already at three draws no more calls against it.
    e.LastPlayResult = Result::Pass;
    e.PuckTeam = kVisitor;
    game->assessPenalty(kHome, skater(kHome, 0), PenaltyType::Minor);
    game->assessPenalty(kHome, skater(kHome, 1), PenaltyType::Minor);
    game->PenaltyChances(c);
    EXPECT_EQ(c.PenaltyOppChance, 0);
}

// Men hurt in play: those who missed many real games get hurt, those who
// played every real game don't, and the rule turns it all off.
TEST_F(PenaltyGame, InjuriesFollowTheGamesAManReallyMissed) {
    auto hurtBySide = [&](std::uint8_t injuryRule) {
        rules.InjuryCheck = injuryRule;
        start();
        for (int side : {kVisitor, kHome}) {
            int games = shippedEra().year(2017).Games;
            for (PlayerRecord& p : session->side(side).GameRoster) {
                statLine(p, StatLineIndex::Real).GP = std::uint8_t(side == kVisitor ? games / 3 : games);
                statLine(p, StatLineIndex::Replay).GP = 0;
            }
        }
        std::array<int, 2> hurt{};
        for (std::uint64_t seed = 0; seed < 30; ++seed) {
            game = std::make_unique<Game>(*session, GameOptions{.seed = seed});
            game->InitGame();
            GameState& e = game->editState();
            for (int i = 0; i < 150; ++i) {
                e.PlayZone = Zone::NeutralZone;
                e.PuckTeam = i % 2;
                e.PlayResult = Result::Pass;
                e.Clock = 600;
                game->ApplyPlay();
            }
            for (int side : {kVisitor, kHome})
                for (std::int16_t games : s().pen.InjuredInGame[std::size_t(side)])
                    hurt[std::size_t(side)] += games > 0;
        }
        return hurt;
    };
    std::array<int, 2> hurt = hurtBySide(1);
    EXPECT_GT(hurt[kVisitor], 10);
    EXPECT_EQ(hurt[kHome], 0);
    EXPECT_EQ(hurtBySide(0), (std::array<int, 2>{0, 0}));
}

TEST_F(PenaltyGame, AnInjuredManIsReplacedAndMissesTheRest) {
    int hurt = skater(kHome, 1);
    game->injure(kHome, hurt, 5);
    EXPECT_TRUE(s().find.PlayerOut[kHome][std::size_t(hurt)]);
    EXPECT_GE(s().pen.InjuredInGame[kHome][std::size_t(hurt)], 1);
    EXPECT_LE(s().pen.InjuredInGame[kHome][std::size_t(hurt)], 5);
    EXPECT_FALSE(s().onIce[kHome].holds(hurt));
    EXPECT_EQ(onIce(kHome), 5);  // someone took his place
    EXPECT_EQ(skaters()[kHome], 5);
    // The injured goalie gives way to the backup.
    int goalie = s().goalie[kVisitor];
    game->injure(kVisitor, goalie, 0);
    EXPECT_NE(s().goalie[kVisitor], goalie);
    EXPECT_NE(s().goalie[kVisitor], kNoSlot);
    EXPECT_EQ(s().onIce[kVisitor][IcePos::GoalieOrExtra], s().goalie[kVisitor]);
}

// A season's worth of games of a made-up 2017 league comes near the real
// league of its year in penalty minutes and power plays.
TEST(PenaltyRates, AMadeUpSeasonPlaysNearItsEra) {
    League2017 lg(7, 8);
    Random draws(7);
    ScheduleRequest request;
    request.gamesPerTeam = 64;
    request.seasonYear = 2017;
    GeneratedSchedule schedule = generateSchedule(lg.teams, request, draws);
    ASSERT_GE(schedule.records.size(), 250u);
    long pim = 0, powerPlays = 0, ppGoals = 0, fights = 0, injuries = 0;
    int games = 0;
    std::array<long, 4> kinds{};
    std::uint64_t seed = 700;
    for (const GameRecord& row : schedule.records) {
        if (games == 250) break;
        GameSession session({lg.dir.path(), defaultRules(2017), &shippedEra(), nullptr});
        Random loadDraws(++seed);
        session.loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, loadDraws);
        Game game(session, GameOptions{.seed = seed});
        game.playToEnd();
        const PenaltyState& pen = game.state().pen;
        for (int side : {0, 1}) {
            auto i = std::size_t(side);
            pim += pen.PenaltyMinutes[i];
            powerPlays += pen.PowerPlays[i];
            ppGoals += pen.PowerPlayGoals[i];
            fights += pen.fights[i];
            EXPECT_EQ(pen.PowerPlays[i], pen.PenaltyKills[1 - i]);
            // A major or a double minor can give more than one goal, seldom more.
            EXPECT_LE(pen.PowerPlayGoals[i], pen.PowerPlays[i] + 2);
            EXPECT_GE(game.state().Skaters[i], 3);
        }
        injuries += pen.injuries;
        for (int side : {0, 1})
            for (const PlayerRecord& p : session.side(side).GameRoster) {
                kinds[0] += p.Minors[1];
                kinds[1] += p.Majors[1];
                kinds[2] += p.Misconducts[1] + p.GameMisconducts[1];
                kinds[3] += p.MatchPenalties[1];
            }
        ++games;
    }
    double teamGames = 2.0 * games;
    const EraRecord& era = shippedEra().year(2017);
    double eraPim = era.PimPerGame / 2;
    std::printf(
        "[ rates    ] per team-game: PIM %.2f (era %.2f), power plays %.2f, PP%% %.1f (era %.1f), "
        "fighting majors a game %.3f (era %.3f), injuries a game %.2f\n",
        pim / teamGames, eraPim, powerPlays / teamGames, 100.0 * ppGoals / std::max(1L, powerPlays), era.PowerPlayPct,
        2 * fights / teamGames, era.FightsPerGame, double(injuries) / games);
    std::printf("[ rates    ] per team-game: minors %.2f, majors %.2f, misconducts %.3f, match %.3f\n",
                kinds[0] / teamGames, kinds[1] / teamGames, kinds[2] / teamGames, kinds[3] / teamGames);
    EXPECT_NEAR(pim / teamGames, eraPim, eraPim * .2);
    // The real league of that season had 3.04 power plays a team-game.
    EXPECT_NEAR(powerPlays / teamGames, 3.04, .6);
}

}  // namespace
}  // namespace tallyrink
