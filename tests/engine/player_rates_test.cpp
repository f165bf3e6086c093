#include "engine/player_rates.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tallyrink {
namespace {

// Figures of a made-up era, so that every expected number below can be
// worked out by hand from them.
EraFigures era() {
    EraFigures e;
    e.games = 80;
    e.goalsPerTeam = 3.5;
    e.assistsPerGoal = 1.6;
    e.savePct = 88;
    e.pimPerGame = 30;
    return e;
}

RateContext context(int year) {
    RateContext ctx;
    ctx.era = era();
    ctx.gamesForScale = 80;
    ctx.year = year;
    return ctx;
}

PlayerRecord forward() {
    PlayerRecord p;
    p.PlayerId = 1;
    p.PositionFlags[1] = 1;
    p.UsageSogAggressiveness = p.UsagePenetrate = p.UsageDeflect = 3;
    p.RatingSportsmanship = 7;  // one fight per 1,000 minutes, without a draw
    return p;
}

StatLine& real(PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }
StatLine& replay(PlayerRecord& p) { return statLine(p, StatLineIndex::Replay); }

PlayerRates bothSets(const PlayerRecord& p, const RateContext& ctx, std::uint64_t seed = 1) {
    Random rng(seed);
    PlayerRates r;
    computeSetRates(RateSet::Real, p, ctx, rng, r);
    computeSetRates(RateSet::Replay, p, ctx, rng, r);
    return r;
}

// A first-line centre of a modern season: 82 games at 18 minutes, 3 of them
// on the power play and one short-handed.
TEST(PlayerRates, SkaterWithTimeOnIce) {
    PlayerRecord p = forward();
    StatLine& s = real(p);
    s.GP = 82;
    s.Goals = 30;
    s.Assists = 40;
    s.Pim = 20;
    s.Toi = 82 * 18 * 60;
    s.ToiPP = 82 * 3 * 60;
    s.ToiSH = 82 * 60;
    s.Sog = 250;
    s.Hits = 100;
    PlayerRates r = bothSets(p, context(2017));
    const SetRates& rr = r[RateSet::Real];

    EXPECT_DOUBLE_EQ(rr.AverageMinutes, 18.0);
    EXPECT_EQ(rr.EvenMinutes, 14);
    EXPECT_EQ(rr.PowerPlayMinutes, 3);
    EXPECT_EQ(rr.ShortHandMinutes, 1);
    EXPECT_DOUBLE_EQ(r.ShootingPct, 30.0 / 250);  // 250 shots a season: no cap
    EXPECT_DOUBLE_EQ(rr.SeasonShots, 250);
    double n = 82 * 18.0 + 0.1;
    EXPECT_NEAR(rr.GoalsPer60, 30 / n * 60, 1e-12);
    EXPECT_NEAR(rr.AssistsPer60, 40 / n * 60, 1e-12);
    EXPECT_NEAR(rr.ShotsPer60, 250 / n * 60, 1e-12);  // real-life usage: g = 1
    EXPECT_NEAR(rr.HitsPer60, 100 / n * 60, 1e-12);
    EXPECT_NEAR(rr.PimPer60, 20 / n * 60, 1e-12);
    EXPECT_DOUBLE_EQ(r.ShotStyleFactor, 1.0);
    // Sportsmanship 7: 1 fight; from 2016 x 1.3, and the two halvings never
    // come for a rating above 4.
    EXPECT_NEAR(rr.FightsPer1000, 1.3, 1e-12);
    EXPECT_NEAR(rr.NonFightPimPer60, 20 / n * 60 - 5.1 * 1.3 * 60 / 1000, 1e-12);

    // No replay games: the minutes fall back to the scoring estimate, the
    // rates to their floors.
    const SetRates& rp = r[RateSet::Replay];
    double leagueA = (2 * 3.5 * 1.6 + 2 * 3.5) / 37.46;
    EXPECT_NEAR(rp.AverageMinutes, 16 + 3 * (0 - leagueA), 1e-12);
    EXPECT_DOUBLE_EQ(rp.AssistsPer60, 0.1);
    EXPECT_DOUBLE_EQ(rp.ShotsPer60, 0.5);
    EXPECT_DOUBLE_EQ(rp.GoalsPer60, 0);
    EXPECT_DOUBLE_EQ(rp.FightsPer1000, 0);
}

// A 1975 scorer with no ice times and no shots on record: minutes from his
// points, the 40-goal bump on the 82-game scale, and a shooting percentage
// from the era's save percentage.
TEST(PlayerRates, OldForwardWithoutMinutesOrShots) {
    PlayerRecord p = forward();
    StatLine& s = real(p);
    s.GP = 80;
    s.Goals = 45;
    s.Assists = 55;
    RateContext ctx = context(1975);
    PlayerRates r = bothSets(p, ctx, 7);

    double leagueA = (2 * 3.5 * 1.6 + 2 * 3.5) / 37.46;
    double am = 16 + 3 * (100.0 / 80 - leagueA);  // 18.2924...
    am += 1.5;                                    // 45 goals x 82 / 80 = 46.1 >= 40
    const SetRates& rr = r[RateSet::Real];
    EXPECT_EQ(rr.EvenMinutes, 16);      // Round(0.8 x 19.79)
    EXPECT_EQ(rr.PowerPlayMinutes, 2);  // Round(0.12 x 19.79)
    EXPECT_EQ(rr.ShortHandMinutes, 2);  // Round(0.08 x 19.79)
    am += 1;                            // 100 points x 82 / 80 = 102.5 >= 100
    EXPECT_NEAR(rr.AverageMinutes, am, 1e-12);

    Random draws(7);  // the same draws the estimate takes
    double goals60 = 45 / (80 * am + 0.1) * 60;
    double pct = 0.12 * 1.15 + ((3 * 0 + 0) / 4.0 - 5) * 0.001;
    if (goals60 > 1 + 2 * draws.rnd()) pct += 0.06;
    if (45 >= 30 + draws.rand(30)) pct += 0.06;
    EXPECT_NEAR(r.ShootingPct, pct, 1e-12);
    EXPECT_NEAR(rr.SeasonShots, 45 / pct, 1e-9);
}

// A defenseman with no minutes: 20 minutes and his scoring against the
// league's, at least 15; a low-volume shooter is held to 8%.
TEST(PlayerRates, DefensemanFallbacksAndShootingCap) {
    PlayerRecord p = forward();
    p.PositionFlags = {0, 0, 0, 1, 0};
    StatLine& s = real(p);
    s.GP = 80;
    s.Goals = 5;
    s.Assists = 15;
    s.Sog = 40;
    PlayerRates r = bothSets(p, context(2017));
    const SetRates& rr = r[RateSet::Real];
    double leagueB = (2 * 3.5 * 1.6 + 2 * 3.5) / 45.4;
    double am = 20 + 2 * (20.0 / 80 - leagueB);
    EXPECT_NEAR(rr.AverageMinutes, am, 1e-12);
    EXPECT_EQ(rr.EvenMinutes, 16);
    EXPECT_EQ(rr.PowerPlayMinutes, 2);
    EXPECT_DOUBLE_EQ(r.ShootingPct, 0.08);  // 5 / 40, 41 shots a season: capped
    EXPECT_DOUBLE_EQ(rr.SeasonShots, 40);

    // A defenseman who hardly scores still plays 15 minutes.
    s.Goals = 0;
    s.Assists = 0;
    s.GP = 10;
    r = bothSets(p, context(2017));
    EXPECT_DOUBLE_EQ(r[RateSet::Real].AverageMinutes, std::max(20 + 2 * (0 - leagueB), 15.0));
}

TEST(PlayerRates, ShotStyleFollowsTheUsageSettings) {
    PlayerRecord p = forward();
    StatLine& s = real(p);
    s.GP = 50;
    s.Goals = 10;
    s.Sog = 100;
    s.Toi = 50 * 15 * 60;
    p.UsageSogAggressiveness = 5;
    PlayerRates r = bothSets(p, context(2017));
    double g = 0.922 * 1.4 + 0.051 + 0.027;
    EXPECT_NEAR(r[RateSet::Real].ShotsPer60, 100 / (50 * 15.0 + 0.1) * 60 * g, 1e-12);
    EXPECT_NEAR(r.ShotStyleFactor, std::pow(1.15, 1 / g) / 1.15, 1e-12);
    EXPECT_LT(r.ShotStyleFactor, 1.0);  // more shots, poorer ones

    // A value out of the list reads as real life.
    p.UsageSogAggressiveness = 0;
    EXPECT_DOUBLE_EQ(bothSets(p, context(2017)).ShotStyleFactor, 1.0);
}

TEST(PlayerRates, FightRates) {
    PlayerRecord p = forward();
    StatLine& s = real(p);
    s.GP = 70;
    s.Pim = 120;
    s.Toi = 70 * 10 * 60;
    p.Fights[0] = 10;
    replay(p).GP = 20;
    replay(p).Toi = 20 * 8 * 60;
    p.Fights[1] = 4;
    RateContext ctx = context(2010);
    PlayerRates r = bothSets(p, ctx);
    // Real fights replace the estimate from sportsmanship.
    EXPECT_NEAR(r[RateSet::Real].FightsPer1000, 10 / (70 * 10.0 + 1) * 1000, 1e-12);
    EXPECT_NEAR(r[RateSet::Replay].FightsPer1000, 4 / (20 * 8.0 + 1) * 1000, 1e-12);

    // No real fights, sportsmanship 0: 30, an enforcer at least 35 plus the
    // penalty bump of (q - 0.2) x 100, capped at 45.
    p.Fights = {0, 0, 0};
    p.RatingSportsmanship = 0;
    p.Enforcer = 1;
    s.Pim = 100;
    r = bothSets(p, ctx);
    double q = 100 / (70 * 10.0 + 1);  // 0.1427: no bump
    ASSERT_LT(q, 0.2);
    EXPECT_DOUBLE_EQ(r[RateSet::Real].FightsPer1000, 35);
    s.Pim = 250;  // q = 0.357: + 15.7, then the cap
    EXPECT_DOUBLE_EQ(bothSets(p, ctx)[RateSet::Real].FightsPer1000, 45);

    // A rating the load hands in stands for the stored one: 10 takes away
    // the penalty bump of a 0.
    ctx.sportsmanship = 10;
    EXPECT_DOUBLE_EQ(bothSets(p, ctx)[RateSet::Real].FightsPer1000, 35);
    ctx.sportsmanship = -1;

    // A league with real fight data: a player with none fights rarely.
    ctx.leagueFightData = true;
    p.RatingSportsmanship = 8;
    p.Enforcer = 0;
    EXPECT_NEAR(bothSets(p, ctx)[RateSet::Real].FightsPer1000, (11 - 8) * 0.1, 1e-12);
}

// An unrated player's sportsmanship from his penalty minutes per 60,
// against a tenth of the era's penalty minutes a game (30: 3 a 60).
TEST(PlayerRates, SportsmanshipStandInFromPenalties) {
    EXPECT_EQ(sportsmanshipFromPenalties(0, 30), 10);
    EXPECT_EQ(sportsmanshipFromPenalties(0.89, 30), 10);  // ratio 0.297
    EXPECT_EQ(sportsmanshipFromPenalties(0.9, 30), 9);    // 0.3
    EXPECT_EQ(sportsmanshipFromPenalties(3.0, 30), 7);    // 1.0, between 0.8 and 1.1
    EXPECT_EQ(sportsmanshipFromPenalties(7.5, 30), 3);    // 2.5
    EXPECT_EQ(sportsmanshipFromPenalties(20, 30), 0);     // 6.67
    EXPECT_EQ(sportsmanshipFromPenalties(1.8, 0), 4);     // no era figure: 9 a game; ratio 2
}

TEST(PlayerRates, GoalieHasNoShootingAndEndlessShifts) {
    PlayerRecord p;
    p.PositionFlags[4] = 1;
    real(p).GP = 60;
    real(p).Toi = 60 * 3600;
    PlayerRates r = bothSets(p, context(2017));
    EXPECT_DOUBLE_EQ(r.ShootingPct, 0);
    EXPECT_DOUBLE_EQ(r.ShotStyleFactor, 1);
    EXPECT_DOUBLE_EQ(r[RateSet::Real].SeasonShots, 0);
    ShiftResult shift = computeShift(p, 60, {});
    EXPECT_EQ(shift.ShiftLimit, 360000);
    EXPECT_EQ(shift.MaxEnergy, 100);
}

// A forward of 21.5 real minutes: 84 seconds (21.5 - 20 + 82, halves to
// even); his replay minutes against the real ones then lengthen his shifts.
TEST(PlayerRates, ShiftLimitsAndEnergy) {
    PlayerRecord p = forward();
    real(p).GP = 80;
    real(p).Toi = 80 * 21.5 * 60;
    real(p).Pim = 60;
    ShiftContext ctx{82, 18, 400, 25};
    EXPECT_EQ(computeShift(p, 21.5, ctx).ShiftLimit, 84);

    replay(p).GP = 20;
    replay(p).Toi = 20 * 19 * 60;  // under his real minutes
    ShiftResult r = computeShift(p, 21.5, ctx);
    double u = 1.02 * 21.5 + 0.03 - 19;                     // 2.96, full weight (20 / 80 >= 0.2)
    u *= (20.0 / 25) / (80.0 / 82);                         // b / a = 0.82, inside 0.3 .. 0.9
    EXPECT_EQ(r.MaxEnergy, 100);                            // 102, capped
    EXPECT_EQ(r.ShiftLimit, std::lround(84 + 40 + 3 * u));  // four + 10 steps

    replay(p).Toi = 20 * 25 * 60;  // over: shorter shifts, less energy
    r = computeShift(p, 21.5, ctx);
    u = (1.02 * 21.5 + 0.03 - 25) * ((20.0 / 25) / (80.0 / 82));  // -2.49
    EXPECT_EQ(r.MaxEnergy, 98);                                   // Int(Round(97.5) + 0.9)
    EXPECT_EQ(r.ShiftLimit, std::lround(84 + 3 * u));

    // Defense of an old season dressing few skaters.
    PlayerRecord d = forward();
    d.PositionFlags = {0, 0, 0, 1, 0};
    d.PlayerYear = 1960;
    real(d).GP = 70;
    real(d).Toi = 70 * 24 * 60;
    ShiftContext old{70, 16, 70 * 5, 0};  // five defensemen's worth of games: x = 5
    // 24 - 22 + 85 = 87, + 20 for 16 skaters, + 15 for x under 5.5, then
    // Round(0.5 x (1975 - 1960) + 122) = 130 (halves to even).
    EXPECT_EQ(computeShift(d, 24, old).ShiftLimit, 130);
}

TEST(PlayerRates, Salary) {
    PlayerRecord p = forward();
    p.RatingDefense = 50;
    real(p).GP = 82;
    PlayerRates r;
    r[RateSet::Real].AssistsPer60 = 1.5;
    r[RateSet::Real].GoalsPer60 = 1.0;
    SalaryContext ctx;
    ctx.era.goalsPerTeam = 3.0;
    ctx.eraGames = 82;
    // 0.9 x 50 + (22 x 1.5 + 37 x 1.0) x 2.7 / 3 = 108; a full season;
    // + 20 = 128; Int(128 x 65 x 0.8^2) = 5324.
    EXPECT_EQ(ComputeSalary(p, r, ctx), 5324);
    // Ten games: the games factor leaves little, and the floor is 250.
    real(p).GP = 10;
    EXPECT_EQ(ComputeSalary(p, r, ctx), 250);
    // 35 games: floor 350 at least.
    real(p).GP = 35;
    EXPECT_GE(ComputeSalary(p, r, ctx), 350);
}

TEST(PlayerRates, SeasonGamesOfAPlayerFollowHisAvailability) {
    PlayerRecord p;
    EXPECT_EQ(seasonGamesOfPlayer(p, 82), 82);  // no window: the whole season
    p.AvailStartMonth = 4;                      // from December 15
    p.AvailStartDay = 15;
    p.AvailEndMonth = 8;  // to April 31: nothing off
    p.AvailEndDay = 31;
    double m = 82 / 6.0;
    EXPECT_EQ(seasonGamesOfPlayer(p, 82), std::lround(82 - m * 15 / 31 - m * 2));  // 48
    p.AvailEndMonth = 6;                                                           // to February 10
    p.AvailEndDay = 10;
    EXPECT_EQ(seasonGamesOfPlayer(p, 82), std::lround(82 - m * 15 / 31 - m * 2 - m * 21 / 31 - m * 2));
    p.AvailStartMonth = 7;  // a March call-up to February: the floor
    EXPECT_EQ(seasonGamesOfPlayer(p, 82), 10);
    EXPECT_EQ(seasonGamesOfPlayer(PlayerRecord{}, 5), 15);  // a short era season counts 15

    EXPECT_EQ(durabilityOf(82, 82), 10);
    EXPECT_EQ(durabilityOf(41, 82), 5);
    EXPECT_EQ(durabilityOf(60, 48), 10);
    EXPECT_EQ(goalieRestGames(60, 82, 60), 7);  // 60 / 8.8 = 6.8
    EXPECT_EQ(goalieRestGames(10, 82, 0), 4);
    EXPECT_EQ(goalieRestGames(70, 82, 80), 70);  // r at least 1
}

TEST(PlayerRates, EnforcerByPenaltyRecord) {
    PlayerRecord p = forward();
    real(p).GP = 60;
    real(p).Pim = 150;                              // 150 / (60 x 8) x 60 = 18.75 a 60; e = 30 / 10 = 3
    EXPECT_TRUE(enforcerByRecord(p, 8, 5, 30));     // 6.25 > 2.5
    EXPECT_FALSE(enforcerByRecord(p, 7.9, 5, 30));  // too few minutes
    real(p).Pim = 40;                               // 5 a 60: 1.67 of e
    EXPECT_FALSE(enforcerByRecord(p, 8, 5, 30));
    EXPECT_TRUE(enforcerByRecord(p, 8, 16, 30));  // over 1.5 and a big hitter
    real(p).GP = 20;
    EXPECT_FALSE(enforcerByRecord(p, 8, 16, 30));  // more than 20 games wanted
}

}  // namespace
}  // namespace tallyrink
