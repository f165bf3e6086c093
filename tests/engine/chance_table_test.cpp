// The chance table and the shot model: the arithmetic that stands on its
// own, the chances of hand-built states worked out by hand (the zone base,
// the calls, the forecheck, manpower, and the rounding of halves to even),
// the rush percentage, and the selection tools' steering toward the real
// season.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <set>

#include "engine/chance_table.h"
#include "engine/game.h"
#include "engine/shooting.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using test::shippedEra;

struct League {
    testing::TempDir dir;
    std::vector<int> teams;
    League() {
        NewLeagueOptions options;
        options.teams = 4;
        options.year = 2017;
        options.seed = 5;
        GeneratedLeague league = generateLeague(options, eraTargets(shippedEra(), 2017));
        writeLeagueFolder(dir.path(), league.files);
        for (int t = 1; t <= kMaxTeams; ++t)
            if (league.files.teams[std::size_t(t - 1)].TeamActive == 1) teams.push_back(t);
    }
};

League& league() {
    static League lg;
    return lg;
}

// A game set up at the opening faceoff, ready to be put in any state.
struct Table : ::testing::Test {
    std::unique_ptr<GameSession> session;
    std::unique_ptr<Game> game;

    void SetUp() override {
        RulesRecord rules = defaultRules(2017);
        rules.AlternateRealityCheck = 0;
        rules.TwoLinePasscheck = 0;
        session = std::make_unique<GameSession>(LeagueContext{league().dir.path(), rules, &shippedEra(), nullptr});
        Random draws(3);
        session->loadGame(league().teams[0], league().teams[1], 11, 10, draws);
        game = std::make_unique<Game>(*session, GameOptions{.seed = 9});
        game->InitGame();
    }

    GameState& s() { return game->editState(); }
    const PlayerRecord& onIce(int side, int pos) {
        return session->side(side).player(s().onIce[std::size_t(side)].slot[std::size_t(pos)]);
    }
    PlayerRecord& onIceEdit(int side, int pos) {
        return session->side(side).player(s().onIce[std::size_t(side)].slot[std::size_t(pos)]);
    }

    // The puck with the visitor in `zone`, its center carrying it.
    PlayChances probe(Zone zone, Call call, double rating = 5.7, int forecheck = 1) {
        s().PuckTeam = kVisitor;
        s().StepPuckTeam = kVisitor;
        s().PlayZone = zone;
        s().PlayCall = call;
        s().PlayRating = rating;
        s().find.ForecheckLevel = {forecheck, forecheck};
        s().find.Carrier = s().onIce[kVisitor].slot[1];
        s().find.Spot = {};
        s().find.Spot[1] = zone == Zone::OffenseShooter ? kSpotIn : kSpotOut;
        return game->ProbeOnly();
    }
};

TEST(ChanceArithmetic, FactorsAreRoundedAtOnceWithHalvesToEven) {
    EXPECT_EQ(scaled(1, 0.4), 0);  // a small chance can vanish
    EXPECT_EQ(scaled(5, 0.5), 2);  // 2.5 goes to the even neighbour
    EXPECT_EQ(scaled(7, 0.5), 4);  // 3.5 too
    EXPECT_EQ(scaled(150, 0.05), 8);
    int c = 171;
    add(c, 25.0);
    EXPECT_EQ(c, 196);
}

TEST(ChanceArithmetic, EraFactorsAndCalibrationAreHeldToTheirRanges) {
    // A year as penalized as the reference against its shots gives 1.
    const double ref = 2.8 / 0.094;
    EXPECT_NEAR(eraPenaltyFactor(30, 30, ref), 1.0, 1e-12);
    EXPECT_NEAR(eraPenaltyFactor(60, 30, ref), std::pow(2.0, 1.4), 1e-12);
    EXPECT_DOUBLE_EQ(eraMultiplier(1.19), 1.2);
    EXPECT_DOUBLE_EQ(eraMultiplier(1.2), 1.26);
    EXPECT_DOUBLE_EQ(eraMultiplier(1.5), 1.32);
    EXPECT_DOUBLE_EQ(eraMultiplier(2.09), 1.38);
    EXPECT_DOUBLE_EQ(eraMultiplier(3), 1.44);
    EXPECT_DOUBLE_EQ(calibration(36, 30, 3, .85, 1.15), 1.15);
    EXPECT_NEAR(calibration(31, 30, 3, .85, 1.15), std::pow(31.0 / 30, 3), 1e-12);
    EXPECT_DOUBLE_EQ(calibration(0, 30, 3, .85, 1.15), 1);
    EXPECT_DOUBLE_EQ(powerPlayEraFactor(17.8), 1);
    EXPECT_NEAR(powerPlayEraFactor(0), (16 / 17.8) * (16 / 17.8), 1e-12);  // unknown counts as 16
    EXPECT_DOUBLE_EQ(powerPlayEraFactor(30), 0.7);
}

TEST(ChanceArithmetic, UsageTierIsTheHighestStepPassed) {
    std::array<std::uint8_t, 3> steps{104, 114, 124};
    EXPECT_EQ(usageTier(steps, 40, 80), 0);
    EXPECT_EQ(usageTier(steps, 84, 80), 1);   // 85 / 80 = 1.0625 > 1.05
    EXPECT_EQ(usageTier(steps, 93, 80), 2);   // 1.175 > 1.15
    EXPECT_EQ(usageTier(steps, 100, 80), 3);  // 1.2625 > 1.25
    EXPECT_EQ(usageTier(steps, 10, 0), 0);    // no real games
    EXPECT_EQ(usageTier({0, 0, 0}, 100, 80), 0);
}

// The mood's one draw against the throws it stands for, counted out one by
// one: the start (a throw of three), then for each swing its odds (a throw
// of 3, 5 or 7) and, when it comes, two throws of three.
TEST(ShotModel, TheMoodsOneDrawHasTheLawOfItsThrows) {
    std::map<int, std::int64_t> counted;
    std::int64_t all = 0;
    for (int start = 1; start <= 3; ++start)
        for (int a = 1; a <= 3; ++a)
            for (int a1 = 1; a1 <= 3; ++a1)
                for (int a2 = 1; a2 <= 3; ++a2)
                    for (int b = 1; b <= 5; ++b)
                        for (int b1 = 1; b1 <= 3; ++b1)
                            for (int b2 = 1; b2 <= 3; ++b2)
                                for (int c = 1; c <= 7; ++c)
                                    for (int c1 = 1; c1 <= 3; ++c1)
                                        for (int c2 = 1; c2 <= 3; ++c2) {
                                            // A swing that doesn't come still has its
                                            // two throws counted, nine ways alike.
                                            int mood = start == 1 ? 4 : 5;
                                            if (a == 1) mood += a1 - a2;
                                            if (b == 1) mood += b1 - b2;
                                            if (c == 1) mood += c1 - c2;
                                            ++counted[mood];
                                            ++all;
                                        }
    ASSERT_EQ(all, kMoodWeightTotal);
    std::int64_t total = 0;
    for (std::size_t m = 0; m < kMoodWeights.size(); ++m) {
        const int mood = kLowestMood + static_cast<int>(m);
        EXPECT_EQ(kMoodWeights[m], counted[mood]) << mood;
        total += kMoodWeights[m];
    }
    EXPECT_EQ(total, kMoodWeightTotal);
    EXPECT_EQ(counted.size(), kMoodWeights.size());

    // The draw lands on each mood as often as its weight says: every step
    // of Int(u * total) once.
    std::map<int, std::int64_t> landed;
    for (std::int64_t k = 0; k < kMoodWeightTotal; ++k)
        ++landed[baseShooterMood((static_cast<double>(k) + .5) / kMoodWeightTotal)];
    for (std::size_t m = 0; m < kMoodWeights.size(); ++m)
        EXPECT_EQ(landed[kLowestMood + static_cast<int>(m)], kMoodWeights[m]) << m;
    EXPECT_EQ(baseShooterMood(0), kLowestMood);
    EXPECT_EQ(baseShooterMood(std::nextafter(1.0, 0.0)), 11);
}

// How many of the first passer's five tests pass, in one draw, comes as
// often as when each test draws on its own; figures that settle the count
// take no draw and give the count the tests give.
TEST(PasserWeight, TheFiveTestsInOneDrawHaveTheLawOfTheTestsInTurn) {
    struct Figures {
        double assists, goals, shots;
    };
    for (Figures m : {Figures{3.1, 2.5, 9.0}, Figures{2.2, 1.4, 7.5}, Figures{4.5, 3.0, 13.0}, Figures{0.5, 1.0, 2.0},
                      Figures{4.5, 1.0, 6.0}, Figures{3.4, 0.0, 10.5}}) {
        const PasserFives fives = passerFives(m.assists, m.goals, m.shots);
        const double A = m.assists, G = m.goals, S = m.shots;
        auto inTurn = [&](Random& r) {
            int n = 0;
            n += r.over(A, 2.5, 1.5) ? 1 : 0;
            n += r.over(A, 1.6, .6, G) ? 1 : 0;
            n += r.over(A, 2.5, 1) && r.over(A, 1.6, .6, G) ? 1 : 0;
            n += r.over(S, 7, 4) && r.over(A, 2, 1.5) ? 1 : 0;
            n += r.over(S, 8, 4) && r.over(A, 3, 1) ? 1 : 0;
            return n;
        };
        constexpr int kTries = 100000;
        std::array<int, 6> tests{}, one{};
        Random a(7), b(8);
        for (int i = 0; i < kTries; ++i) {
            ++tests[static_cast<std::size_t>(inTurn(a))];
            ++one[static_cast<std::size_t>(fives.certain ? fives.sure : fivesFor(b.rnd(), fives))];
        }
        for (std::size_t n = 0; n < tests.size(); ++n)
            EXPECT_NEAR(one[n] / double(kTries), tests[n] / double(kTries), 0.006) << m.assists << " " << n;
        Random once(3), untouched(3);
        const int settled = inTurn(once);
        // Tests that draw nothing leave the count certain (and a count can be
        // certain where a test in turn would still have drawn in vain).
        if (once.rnd() == untouched.rnd()) {
            EXPECT_TRUE(fives.certain) << m.assists;
        }
        if (fives.certain) {
            EXPECT_EQ(fives.sure, settled) << m.assists;
        }
    }
}

TEST(ShotModel, GoalieStepsFormAndDepths) {
    EXPECT_NEAR(goalieRatingTerm(65, 0, 2017), 0, 1e-12);
    EXPECT_NEAR(goalieRatingTerm(90, 0, 2017), -0.025, 1e-12);
    EXPECT_NEAR(goalieRatingTerm(91, 0, 2017), -0.026 - 0.007, 1e-12);
    EXPECT_NEAR(goalieRatingTerm(99, 1, 2017), -0.035 - 9 * 0.007, 1e-12);
    EXPECT_NEAR(goalieRatingTerm(55, 0, 1975), 0.011, 1e-12);  // old-time goalies count 1.1 times
    Random rng(4);
    for (int i = 0; i < 2000; ++i) EXPECT_LT(99 + drawGoalieForm(99, rng), 101);

    // A forward at 20%: inside 0.27, mid 0.14, outside 0.09, bent by a
    // shooter who is better from outside (k = 4).
    ShotDepths d = shotDepths(0.20, 1, 3, 7);
    EXPECT_NEAR(d.inside, 0.27 - 0.012, 1e-12);
    EXPECT_NEAR(d.mid, 0.14 - 0.005, 1e-12);
    EXPECT_NEAR(d.outside, 0.09 + 0.004, 1e-12);
    // At 10% the mid floor holds: at least 0.03 above the outside shot.
    EXPECT_NEAR(shotDepths(0.10, 1, 3, 7).mid, 0.049 + 0.03, 1e-12);
    // A defenseman with no shot at all: the mid and inside floors hold.
    ShotDepths z = shotDepths(0, 3, 0, 0);
    EXPECT_NEAR(z.outside, -0.004, 1e-12);
    EXPECT_NEAR(z.mid, 0.026, 1e-12);
    EXPECT_NEAR(z.inside, 0.1 - 0.004, 1e-12);
    EXPECT_DOUBLE_EQ(shotDepths(0.08, kNoPos, 5, 5).inside, 0.08);

    EXPECT_DOUBLE_EQ(limitByClass(0.2, kShotOutside, 0.09), 0.95 * 0.09);
    EXPECT_DOUBLE_EQ(limitByClass(0.001, kShotOutside, 0.09), 0.1 * 0.09);
    EXPECT_DOUBLE_EQ(limitByClass(0.05, kShotMid, 0.09), 0.8 * 0.09);
    EXPECT_DOUBLE_EQ(limitByClass(0.09 * 3.6, kShotInside, 0.09), 0.09 * 3.8);  // above the cap: 3.8, not 3.5
    EXPECT_DOUBLE_EQ(limitByClass(0.5, kShotRush, 0.09), 0.5);
}

// A shot takes its class from the carrier's spot wherever the puck is: the
// man found in his own half stands out at the blue line and shoots from
// outside. Only a man with no spot at all takes a class by his position.
TEST_F(Table, TheShotClassIsTheCarriersSpotInEveryZone) {
    s().PuckTeam = kVisitor;
    s().find.Carrier = s().onIce[kVisitor].slot[1];
    s().find.CarrierPos = 1;
    const std::array<std::pair<int, int>, 3> byDepth{
        {{kSpotIn, kShotInside}, {kSpotMid, kShotMid}, {kSpotOut, kShotOutside}}};
    for (Zone zone : {Zone::DefenseZone, Zone::NeutralZone, Zone::OffenseZone}) {
        s().PlayZone = zone;
        for (auto [spot, shotClass] : byDepth) {
            s().find.Spot = {};
            s().find.Spot[1] = spot;
            for (int i = 0; i < 100; ++i) {
                PlayChances c;
                game->GoalPct(c);
                ASSERT_EQ(c.ShotClass, shotClass) << text(zone) << " spot " << spot;
            }
        }
    }
    s().PlayZone = Zone::DefenseZone;
    s().find.Spot = {};
    std::set<int> classes;
    for (int i = 0; i < 200; ++i) {
        PlayChances c;
        game->GoalPct(c);
        classes.insert(c.ShotClass);
    }
    EXPECT_EQ(classes, (std::set<int>{kShotMid, kShotOutside}));
}

// At even strength a shot's chance is the value of its depth held to the
// limits of its class against the era's percentage, with nothing laid on
// top of it.
TEST_F(Table, AnEvenStrengthShotIsItsDepthWithinTheLimitsOfItsClass) {
    s().PuckTeam = kVisitor;
    s().PlayZone = Zone::DefenseZone;
    const int carrier = s().onIce[kVisitor].slot[1];
    s().find.Carrier = carrier;
    s().find.CarrierPos = 1;
    s().find.ListCarrier = kNoSlot;
    session->side(kVisitor).rates[std::size_t(carrier)].ShootingPct = 0.06;
    const int year = onIce(kVisitor, 1).PlayerYear;
    const double pp = (100 - figuresOf(shippedEra().yearOr(year, 2014), EraLevel::Professional).savePct) / 100;
    for (int spot : {kSpotIn, kSpotMid, kSpotOut}) {
        s().find.Spot = {};
        s().find.Spot[1] = spot;
        PlayChances c;
        game->GoalPct(c);
        const double depth = spot == kSpotIn ? c.PctInside : spot == kSpotMid ? c.PctMid : c.PctOutside;
        EXPECT_DOUBLE_EQ(c.GoalPct, limitByClass(depth, c.ShotClass, pp)) << spotText(spot);
    }
    // The outside shot of this man lies well inside its limits, so the
    // value itself is what the shot gets.
    PlayChances c;
    game->GoalPct(c);
    EXPECT_GT(c.PctOutside, 0.2 * pp);
    EXPECT_LT(c.PctOutside, 0.75 * pp);
    EXPECT_DOUBLE_EQ(c.GoalPct, c.PctOutside);
}

TEST_F(Table, BreakoutEntryFollowsThePlayRatingAndTheForecheck) {
    // 5.75 * 30 = 172.5 rounds to 172; a forecheck of 1 adds 25.
    PlayChances c = probe(Zone::DefenseZone, Call::Balanced, 5.75, 1);
    EXPECT_EQ(c.EntryChance, 197);
    EXPECT_EQ(c.ClearChance, 150);
    EXPECT_EQ(c.OffsideChance, 68);
    EXPECT_EQ(c.PassChance, 0);
    // 5.25 * 30 = 157.5 rounds to 158; a forecheck of 3 takes 75.
    EXPECT_EQ(probe(Zone::DefenseZone, Call::Balanced, 5.25, 3).EntryChance, 83);
    // Safe: 171 * .45 = 76.95, then the forecheck; the clear half again.
    c = probe(Zone::DefenseZone, Call::Safe, 5.7, 1);
    EXPECT_EQ(c.EntryChance, 102);
    EXPECT_EQ(c.ClearChance, 225);
    EXPECT_EQ(c.PenaltyOwnChance, 0);
    // Clearing: no offside; only a weak forecheck leaves room to skate out.
    c = probe(Zone::DefenseZone, Call::Clear, 5.7, 1);
    EXPECT_EQ(c.ClearChance, 990);
    EXPECT_EQ(c.OffsideChance, 0);
    EXPECT_EQ(c.EntryChance, 25);
    EXPECT_EQ(probe(Zone::DefenseZone, Call::Clear, 5.7, 2).EntryChance, 0);
    // The neutral zone has no offside and no forecheck term.
    c = probe(Zone::NeutralZone, Call::Balanced, 5.7, 3);
    EXPECT_EQ(c.EntryChance, 171);
    EXPECT_EQ(c.OffsideChance, 0);
}

TEST_F(Table, ManpowerMovesTheClearAndTheEntry) {
    game->setManpower(5, 4);
    // The stronger side clears seldom: 150 * .05 = 7.5 rounds to 8.
    EXPECT_EQ(probe(Zone::DefenseZone, Call::Balanced).ClearChance, 8);
    game->setManpower(4, 5);
    for (Call call : {Call::Balanced, Call::Safe, Call::Aggressive, Call::Shoot})
        EXPECT_EQ(probe(Zone::DefenseZone, call).EntryChance, 0) << text(call);
    PlayChances c = probe(Zone::DefenseZone, Call::Safe);
    EXPECT_EQ(c.ClearChance, 400);  // one man short
    game->setManpower(3, 5);
    EXPECT_EQ(probe(Zone::DefenseZone, Call::Safe).ClearChance, 300);  // two men short
}

// A person coaching the puck team plays against a small handicap while he
// calls the plays himself, whether or not the game is on a screen; running
// ahead to a stop hands the calls to the computer and lifts it.
TEST_F(Table, AHumanCoachIsHandicappedUntilHeRunsAheadWithOrWithoutAScreen) {
    auto table = [&](AutoStop stop) {
        Game g(*session, GameOptions{.seed = 9});  // no screen
        g.InitGame();
        g.setCoach(kVisitor, CoachKind::Human);
        GameState& st = g.editState();
        st.PuckTeam = st.StepPuckTeam = kVisitor;
        st.PlayZone = Zone::DefenseZone;
        st.PlayCall = Call::Balanced;
        st.PlayRating = 5.7;
        st.find.ForecheckLevel = {1, 1};
        st.find.Carrier = st.onIce[kVisitor].slot[1];
        st.AutoPlayTo = stop;
        return g.ChanceTable();
    };
    const PlayChances calling = table(AutoStop::None), running = table(AutoStop::End3rd);
    EXPECT_LT(calling.shotsTried, running.shotsTried);
    EXPECT_LT(calling.EntryChance, running.EntryChance);
    EXPECT_LT(calling.GoalPct, running.GoalPct);
}

// A computer coach trailing in the last minute never clears from his own
// half; a person keeps the clear, even in a game with no screen where the
// computer calls his plays.
TEST_F(Table, OnlyAComputerCoachGivesUpTheClearWhenTrailingInTheLastMinute) {
    s().Period = game->periods();
    s().Clock = 50;
    s().Score = {1, 2};
    EXPECT_EQ(probe(Zone::DefenseZone, Call::Balanced).ClearChance, 0);
    game->setCoach(kVisitor, CoachKind::Human);
    EXPECT_EQ(probe(Zone::DefenseZone, Call::Balanced).ClearChance, 150);
    s().Clock = 61;
    game->setCoach(kVisitor, CoachKind::Computer);
    EXPECT_EQ(probe(Zone::DefenseZone, Call::Balanced).ClearChance, 150);
}

// A turnover by the side a man up never sends the killers off on a rush by
// the table's share, wherever it happens; at even strength it can.
TEST_F(Table, TheStrongerSideGivesUpNoRushShareInAnyZone) {
    for (Zone zone : {Zone::DefenseZone, Zone::NeutralZone, Zone::OffenseZone}) {
        game->setManpower(5, 5);
        const Call call = zone == Zone::OffenseZone ? Call::Pass : Call::Aggressive;
        EXPECT_GT(probe(zone, call, 5.7, 2).TurnoverRushShare, 0) << text(zone);
        game->setManpower(5, 4);
        EXPECT_EQ(probe(zone, call, 5.7, 2).TurnoverRushShare, 0) << text(zone);
    }
}

// In the attacking zone the defenders' aggressiveness as they play it now
// moves the chance of a goal, up for the bolder: the killers' own value on
// a power play, the even-strength one otherwise; the plan's values, which
// the live ones start from, don't count once play has moved them.
TEST_F(Table, TheDefendersLiveAggressivenessMovesTheGoalChance) {
    auto goal = [&](int even, int kill) {
        s().coach.live[kHome].dzAggressiveness = even;
        s().coach.live[kHome].pkDzAggressiveness = kill;
        return probe(Zone::OffenseShooter, Call::Penetrate).GoalPct;
    };
    EXPECT_LT(goal(1, 3), goal(5, 3));
    EXPECT_EQ(goal(3, 1), goal(3, 5));
    game->setManpower(5, 4);
    EXPECT_LT(goal(3, 1), goal(3, 5));
    EXPECT_EQ(goal(1, 3), goal(5, 3));
}

// The offense system the puck team plays now, not its plan's, moves the
// shot from its own half and the turnovers it risks.
TEST_F(Table, TheLiveOffenseSystemMovesTheShotAndTheTurnovers) {
    auto with = [&](int system) {
        s().coach.live[kVisitor].offenseSystem = system;
        return probe(Zone::DefenseZone, Call::Balanced);
    };
    const PlayChances point = with(1), defensive = with(3);
    EXPECT_GT(point.shotsTried, defensive.shotsTried);
    EXPECT_GT(point.TurnoverRushShare, defensive.TurnoverRushShare);
}

TEST_F(Table, OffensiveZonePassesByThePassersRatingAndTheEdge) {
    PlayerRecord& center = onIceEdit(kVisitor, 1);
    center.RatingPassing = 6;
    PlayChances c = probe(Zone::OffenseZone, Call::Pass);
    EXPECT_EQ(c.PassChance, 6 * 50 + 550);
    EXPECT_EQ(c.shotsTried, 0);
    EXPECT_EQ(c.EntryChance + c.ClearChance + c.PenaltyOppChance + c.PenaltyOwnChance, 0);
    center.RatingPassing = 2;
    EXPECT_EQ(probe(Zone::OffenseZone, Call::Pass).PassChance, 650);
    game->setManpower(5, 4);
    s().onIce[kVisitor].slot[1] = s().find.Carrier;
    EXPECT_EQ(probe(Zone::OffenseZone, Call::Pass).PassChance, 850);
    center.RatingPassing = 8;
    EXPECT_EQ(probe(Zone::OffenseZone, Call::Pass).PassChance, 950);  // held to 950
    game->setManpower(5, 3);
    EXPECT_EQ(probe(Zone::OffenseZone, Call::Retreat).PassChance, 900);
    EXPECT_EQ(probe(Zone::OffenseZone, Call::Retreat).PenaltyOppChance, 0);
}

TEST_F(Table, AShotCallLeavesOnlyTheEndingsAndAnEmptyNetNoSavesOrMisses) {
    PlayChances c = probe(Zone::OffenseShooter, Call::Shoot);
    EXPECT_EQ(c.shotsTried, 1000);
    EXPECT_EQ(c.PassChance + c.ClearChance + c.OffsideChance + c.EntryChance, 0);
    EXPECT_EQ(c.PenaltyOppChance + c.PenaltyOwnChance + c.PenaltyBothChance, 0);
    EXPECT_GT(c.GoalChance, 0);
    EXPECT_GT(c.SaveChance, 0);
    EXPECT_EQ(c.ShotClass, kShotInside);
    EXPECT_EQ(c.BlockChance, 0);  // an inside shot isn't blocked

    s().GoaliePulled[kHome] = true;
    c = probe(Zone::OffenseZone, Call::Shoot);
    EXPECT_EQ(c.SaveChance, 0);
    EXPECT_EQ(c.MissChance, 0);
    EXPECT_GT(c.GoalChance, 0);
    EXPECT_GE(c.GoalPct, 0.35);
}

TEST_F(Table, APenaltyNeverFollowsAPenaltyAndLateShotsStayInTheTable) {
    s().PuckTeam = kVisitor;
    s().PlayZone = Zone::DefenseZone;
    s().PlayCall = Call::Balanced;
    s().PlayRating = 5.7;
    s().LastPlayResult = Result::Penalty;
    PlayChances c = game->ChanceTable();
    EXPECT_EQ(c.PenaltyOppChance + c.PenaltyOwnChance + c.PenaltyBothChance + c.FightChance, 0);
    s().LastPlayResult = Result::Save;
    bool any = false;
    for (int i = 0; i < 20 && !any; ++i) any = game->ChanceTable().PenaltyOppChance > 0;
    EXPECT_TRUE(any);
}

// The calm of a game's first minutes and a rule that turns minors off each
// cut the chance of a call once: to about .3 and .1 of what it is otherwise.
TEST_F(Table, TheOpeningMinutesAndTheMinorRuleCutThePenaltyChanceOnce) {
    RulesRecord& rules = const_cast<RulesRecord&>(session->league().rules);
    auto calls = [&](int clock) {
        long sum = 0;
        for (int i = 0; i < 300; ++i) {
            s().PuckTeam = kVisitor;
            s().PlayZone = Zone::DefenseZone;
            s().PlayCall = Call::Balanced;
            s().PlayRating = 5.7;
            s().LastPlayResult = Result::Save;
            s().Period = 1;
            s().Clock = clock;
            sum += game->ChanceTable().PenaltyOppChance;
        }
        return double(sum);
    };
    const double settled = calls(700);
    ASSERT_GT(settled, 3000);
    EXPECT_NEAR(calls(1150) / settled, .3, .08);
    rules.Minorcheck = 0;
    EXPECT_NEAR(calls(700) / settled, .1, .04);
}

TEST_F(Table, ARushIsTheGoalieTheDefensemanAndTheRushTypeNotTheShooter) {
    RulesRecord& rules = const_cast<RulesRecord&>(session->league().rules);
    rules.GoalieConsecCheck = 1;  // no rest term
    rules.GameEraList = 1;        // base 0.094 whatever the years
    s().PuckTeam = kVisitor;
    s().PlayZone = Zone::Rush;
    s().find.rush = RushType::TwoOne;
    onIceEdit(kHome, 5).RatingGoalie = 55;
    onIceEdit(kHome, 5).PositionFlags = {0, 0, 0, 0, 1};
    PlayerRecord& carrier = onIceEdit(kVisitor, 1);
    carrier.PositionFlags = {0, 1, 0, 0, 0};
    s().find.Carrier = s().onIce[kVisitor].slot[1];
    PlayChances c;
    game->RushGoalPct(c);
    EXPECT_NEAR(c.GoalPct, 0.094 + 0.02 + 0.1, 1e-12);
    session->side(kVisitor).rates[std::size_t(s().find.Carrier)].ShootingPct = 0.3;
    PlayChances same;
    game->RushGoalPct(same);
    EXPECT_DOUBLE_EQ(same.GoalPct, c.GoalPct);
    carrier.PositionFlags = {0, 0, 0, 1, 0};
    game->RushGoalPct(c);
    EXPECT_NEAR(c.GoalPct, (0.094 + 0.02) * 1.5 + 0.1, 1e-12);
    s().find.rush = RushType::OneZero;
    game->RushGoalPct(c);
    EXPECT_NEAR(c.GoalPct, (0.094 + 0.02) * 1.5 + 0.2, 1e-12);
    onIceEdit(kHome, 5).RatingGoalie = 0;
    game->RushGoalPct(c);
    EXPECT_DOUBLE_EQ(c.GoalPct, 0.5);  // at most a coin flip
}

// The steering of the replay: of two shooters alike in real life, the one
// who has shot far more in the replay gets the puck far less often.
TEST_F(Table, ACarrierAheadOfHisRealShotRateIsPickedLessOften) {
    SideTables& t = session->side(kVisitor);
    s().PuckTeam = kVisitor;
    s().PlayZone = Zone::NeutralZone;
    for (int pos = 0; pos < 5; ++pos) {
        int slot = s().onIce[kVisitor].slot[std::size_t(pos)];
        PlayerRecord& p = t.player(slot);
        p.UsageSogAggressiveness = 3;
        statLine(p, StatLineIndex::Real).Sog = 200;
        statLine(p, StatLineIndex::Replay).Sog = 40;
        statLine(p, StatLineIndex::Real).PPG = 0;
        PlayerRates& r = t.rates[std::size_t(slot)];
        r[RateSet::Real].ShotsPer60 = 8;
        r[RateSet::Real].AssistsPer60 = 1;
        r[RateSet::Real].GoalsPer60 = 1;
        r[RateSet::Replay].ShotsPer60 = 8;
        s().Energy[kVisitor][std::size_t(slot)] = 100;
    }
    int ahead = s().onIce[kVisitor].slot[0];
    int behind = s().onIce[kVisitor].slot[2];
    t.rates[std::size_t(ahead)][RateSet::Replay].ShotsPer60 = 12;
    t.rates[std::size_t(behind)][RateSet::Replay].ShotsPer60 = 5;
    int picksAhead = 0, picksBehind = 0;
    for (int i = 0; i < 4000; ++i) {
        s().find.LastPasser = kNoSlot;
        game->FindCarrier();
        picksAhead += s().find.Carrier == ahead ? 1 : 0;
        picksBehind += s().find.Carrier == behind ? 1 : 0;
    }
    EXPECT_GT(picksBehind, 3 * picksAhead) << picksAhead << " against " << picksBehind;
    EXPECT_GT(picksAhead, 0);

    // A broken stick is never picked while a sound one is there.
    s().find.BrokenStick[kVisitor][std::size_t(behind)] = true;
    for (int i = 0; i < 500; ++i) {
        game->FindCarrier();
        EXPECT_NE(s().find.Carrier, behind);
    }
}

// What a game keeps of its men between steps (the ratings of the units on
// the ice, the figures the carrier's weight starts from) follows an edit
// made during the game just as one made before it: the same draws then
// give the same table and the same carriers.
TEST_F(Table, KeptFiguresFollowAnEditMadeDuringTheGame) {
    const int winger = s().onIce[kVisitor].slot[0];
    SideTables& t = session->side(kVisitor);
    auto edit = [&] {
        t.player(winger).RatingOffense = 99;
        t.rates[std::size_t(winger)][RateSet::Real].ShotsPer60 = 25;
    };
    // Two probes, then the picks of a run of carriers.
    struct Run {
        PlayChances second;
        std::vector<int> carriers;
    };
    auto play = [&](bool editBefore, bool editBetween) {
        if (editBefore) edit();
        game = std::make_unique<Game>(*session, GameOptions{.seed = 9});
        game->InitGame();
        probe(Zone::NeutralZone, Call::Balanced);
        if (editBetween) edit();
        Run run{probe(Zone::NeutralZone, Call::Balanced), {}};
        s().PlayZone = Zone::OffenseZone;
        for (int i = 0; i < 300; ++i) {
            s().find.LastPasser = kNoSlot;
            game->FindCarrier();
            run.carriers.push_back(s().find.Carrier);
        }
        return run;
    };
    const Run plain = play(false, false);
    const Run during = play(false, true);
    const Run before = play(true, false);

    EXPECT_EQ(during.second.ShootChance(), before.second.ShootChance());
    EXPECT_EQ(during.second.EntryChance, before.second.EntryChance);
    EXPECT_EQ(during.carriers, before.carriers);
    // The edit matters to both, so the agreement isn't one of no effect.
    EXPECT_NE(plain.second.ShootChance(), before.second.ShootChance());
    EXPECT_NE(plain.carriers, before.carriers);
}

// A shadow pair of the defending side's plan: the shadow plays the man he
// is told to as a rule, and a shadowed man on the ice gives his mates room.
TEST_F(Table, AShadowPlaysHisManAndLeavesTheOthersRoom) {
    // The same game from its start each time, so that the draws agree.
    auto fresh = [&](std::array<int, 2> skaters) {
        game = std::make_unique<Game>(*session, GameOptions{.seed = 9});
        game->InitGame();
        s().Skaters = skaters;
        return probe(Zone::NeutralZone, Call::Balanced);
    };
    int target = s().onIce[kVisitor].slot[1];
    int shadow = s().onIce[kHome].slot[0];
    PlayChances before = fresh({5, 5});
    PlayChances beforeManUp = fresh({4, 5});
    GamePlanRecord& plan = session->side(kHome).plan;
    plan.ShadowTarget[1][0] = static_cast<std::uint8_t>(target + 1);
    plan.ShadowPlayer[1][0] = static_cast<std::uint8_t>(shadow + 1);
    PlayChances afterManUp = fresh({4, 5});
    EXPECT_DOUBLE_EQ(afterManUp.GoalPct, beforeManUp.GoalPct);
    PlayChances after = fresh({5, 5});
    EXPECT_NEAR(after.GoalPct, before.GoalPct * 1.03, 1e-9);

    int onHim = 0;
    for (int i = 0; i < 1000; ++i) {
        s().find.Carrier = target;
        game->FindDefender();
        onHim += s().find.Defender == shadow ? 1 : 0;
    }
    EXPECT_GT(onHim, 850);
    // Another carrier is played as before; a man up, the shadow's side
    // plays its usual defender and gives no room.
    int others = 0;
    for (int i = 0; i < 1000; ++i) {
        s().find.Carrier = s().onIce[kVisitor].slot[0];
        game->FindDefender();
        others += s().find.Defender == shadow ? 1 : 0;
    }
    EXPECT_LT(others, 300);
    s().Skaters = {4, 5};
    int manUp = 0;
    for (int i = 0; i < 1000; ++i) {
        s().find.Carrier = target;
        game->FindDefender();
        manUp += s().find.Defender == shadow ? 1 : 0;
    }
    EXPECT_LT(manUp, 300);
}

TEST_F(Table, PassersAreNeverTheCarrierAndSecondAssistsFollowTheEra) {
    s().PuckTeam = kVisitor;
    s().PlayZone = Zone::OffenseShooter;
    int none = 0, tries = 2000;
    for (int i = 0; i < tries; ++i) {
        s().find.LastPasser = kNoSlot;
        game->FindCarrier();
        game->FindPassers();
        const FindState& f = s().find;
        ASSERT_NE(f.Carrier, kNoSlot);
        EXPECT_NE(f.Passer1, f.Carrier);
        EXPECT_NE(f.Passer2, f.Carrier);
        if (f.Passer2 != kNoSlot) {
            EXPECT_NE(f.Passer2, f.Passer1);
        }
        none += f.Passer2 == kNoSlot ? 1 : 0;
    }
    // 2017 has about 1.7 assists a goal: most goals keep their second assist.
    EXPECT_LT(none, tries / 3);
    EXPECT_GT(none, 0);
}

}  // namespace
}  // namespace tallyrink
