#include "team/team_ratings.h"

#include <gtest/gtest.h>

#include <vector>

namespace tallyrink {
namespace {

enum Flag { LW = 0, C = 1, RW = 2, D = 3, G = 4 };

struct Rated {
    Flag flag;
    int off, def, block, takeaway, hit, skate, pk, passing, shotIn, shotOut, gp, pim;
};

PlayerRecord rated(const Rated& r) {
    PlayerRecord p;
    p.PositionFlags[std::size_t(r.flag)] = 1;
    p.PlayerYear = 2017;
    p.RatingOffense = std::uint8_t(r.off);
    p.RatingDefense = std::uint8_t(r.def);
    p.RatingBlock = std::uint8_t(r.block);
    p.RatingTakeaway = std::uint8_t(r.takeaway);
    p.RatingHit = std::uint8_t(r.hit);
    p.RatingSkate = std::uint8_t(r.skate);
    p.RatingPenaltyKill = std::uint8_t(r.pk);
    p.RatingPassing = std::uint8_t(r.passing);
    p.RatingShotIn = std::uint8_t(r.shotIn);
    p.RatingShotOut = std::uint8_t(r.shotOut);
    statLine(p, StatLineIndex::Real).GP = std::uint8_t(r.gp);
    statLine(p, StatLineIndex::Real).Pim = std::int16_t(r.pim);
    return p;
}

const EraTable& testEra() {
    static const EraTable era = [] {
        EraTable t;
        t.year(2017).PimPerGame = 18;
        t.year(2008).PimPerGame = 30;
        return t;
    }();
    return era;
}

// A first five: a left wing, a center, a left wing on the right side, a
// defenseman and a center standing in on defense; a goalie behind them and
// a scratch without minutes on the roster.
struct Unit {
    std::vector<PlayerRecord> records;
    std::vector<UnitPlayer> roster;
    std::array<UnitPlayer, 6> onIce{};

    Unit() {
        records = {
            rated({LW, 80, 40, 3, 6, 5, 8, 1, 7, 8, 4, 80, 40}), rated({C, 90, 50, 4, 7, 4, 9, 2, 9, 7, 4, 82, 20}),
            rated({LW, 70, 45, 2, 5, 6, 7, 0, 6, 6, 3, 70, 60}), rated({D, 50, 75, 8, 5, 7, 6, 3, 5, 2, 3, 82, 30}),
            rated({C, 65, 55, 4, 6, 5, 7, 1, 6, 5, 3, 60, 10}),  rated({G, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 60, 4}),
            rated({C, 99, 99, 9, 9, 9, 9, 3, 9, 9, 9, 0, 0}),
        };
        const double minutes[] = {18, 20, 15, 24, 16, 59, 0};
        for (std::size_t i = 0; i < records.size(); ++i) roster.push_back({&records[i], minutes[i]});
        for (std::size_t i = 0; i < 6; ++i) onIce[i] = roster[i];
    }
};

TEST(UnitRatings, EvenStrengthFiveWorkedByHand) {
    Unit u;
    UnitRatings r = HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra());
    // Roster: offense weighted by games x minutes, 497100 / 7058 / 10.
    EXPECT_NEAR(r.teamOffense, 7.043072, 1e-6);
    EXPECT_NEAR(r.teamDefense, 5.486682, 1e-6);
    // The left wing on the right side plays at 0.9, the center on defense
    // at 0.66: (80 + 90 + 63 + 60 + 42.9) / 10 / 5.
    EXPECT_NEAR(r.onIceOffense, 6.518, 1e-9);
    EXPECT_NEAR(r.onIceDefense, 4.836, 1e-9);
    EXPECT_NEAR(r.onIcePassing, 6.6, 1e-9);
    EXPECT_NEAR(r.onIceInside, 5.6, 1e-9);
    EXPECT_NEAR(r.onIceOutside, 3.4, 1e-9);
    // Each man's penalty minutes a 60 against a fifth of the era's per
    // team-game (9 here), times five: their mean is 4.092545.
    EXPECT_NEAR(r.discipline, 4.725964, 1e-5);
}

TEST(UnitRatings, IndisciplineHandedInIsTheOneWorkedOut) {
    // The engine hands in each man's figure, worked out once a game; the
    // ratings must come out exactly as when they work it out themselves.
    Unit u;
    const UnitRatings fresh = HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra());
    for (UnitPlayer& man : u.onIce) man.indiscipline = indiscipline(*man.record, man.averageMinutes, testEra());
    const UnitRatings kept = HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra());
    EXPECT_EQ(kept.discipline, fresh.discipline);
    EXPECT_EQ(kept.onIceDefense, fresh.onIceDefense);
    // And a figure handed in is the one counted: five, the era's average.
    for (UnitPlayer& man : u.onIce) man.indiscipline = 5;
    EXPECT_DOUBLE_EQ(HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra()).discipline, 4);
}

TEST(UnitRatings, InsideDefenseInTheAttackingZone) {
    Unit u;
    UnitSituation s;
    s.insideDefense = true;
    UnitRatings r = HkSetTeamRatings(u.roster, u.onIce, s, testEra());
    EXPECT_NEAR(r.onIceDefense, 4.8085, 1e-9);
    EXPECT_NEAR(r.onIceOffense, 6.518, 1e-9);  // offense doesn't depend on the zone
}

TEST(UnitRatings, BrokenStickAndFatigue) {
    Unit u;
    u.onIce[1].brokenStick = true;
    u.onIce[0].fatigued = true;
    UnitRatings r = HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra());
    EXPECT_NEAR(r.onIceOffense, 5.138, 1e-9);
    EXPECT_NEAR(r.onIceDefense, 4.096, 1e-9);
    EXPECT_NEAR(r.teamOffense, 7.043072, 1e-6);  // the roster figures don't see the ice
}

TEST(UnitRatings, ShortHandedKillersAndNoPenaltyForAForwardOnDefense) {
    Unit u;
    UnitSituation s;
    s.skaters = 4;
    s.opponentSkaters = 5;
    UnitRatings r = HkSetTeamRatings(u.roster, u.onIce, s, testEra());
    EXPECT_NEAR(r.teamDefense, 6.035350, 1e-6);
    EXPECT_NEAR(r.onIceOffense, 6.86, 1e-9);  // 65 on defense is held to 60
    EXPECT_NEAR(r.onIceDefense, 5.731, 1e-9);
}

TEST(UnitRatings, OverusedAndTiredPlayersDefendLess) {
    Unit u;
    u.roster[3].usageBand = 2;
    u.roster[0].fatigueCount = 1;
    UnitRatings base = HkSetTeamRatings(Unit().roster, u.onIce, UnitSituation{}, testEra());
    UnitRatings r = HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra());
    const double w0 = 80 * 18, w3 = 82 * 24, all = 7058;  // games x minutes of the skaters with minutes
    EXPECT_NEAR(r.teamOffense, base.teamOffense - 80 * w0 * 0.3 / all / 10, 1e-9);
    EXPECT_NEAR(r.teamDefense, base.teamDefense - (40 * w0 * 0.3 + 75 * w3 * 0.3) / all / 10, 1e-9);
    u.onIce[3].usageBand = 1;
    UnitRatings onIce = HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra());
    EXPECT_NEAR(onIce.onIceDefense, 4.836 - 75 * 0.3 / 50, 1e-9);
}

TEST(UnitRatings, PlaceSixCountsOnlyAsExtraAttacker) {
    Unit u;
    u.onIce[5] = u.roster[6];  // a center in place of the goalie, with no real games
    UnitRatings goalie = HkSetTeamRatings(u.roster, u.onIce, UnitSituation{}, testEra());
    EXPECT_NEAR(goalie.onIceOffense, 6.518, 1e-9);
    UnitSituation s;
    s.extraAttacker = true;
    UnitRatings six = HkSetTeamRatings(u.roster, u.onIce, s, testEra());
    EXPECT_NEAR(six.onIceOffense, 6.518 + 9.9 / 5, 1e-9);
    EXPECT_NEAR(six.onIcePassing, 6.6 + 9.0 / 5, 1e-9);
    // He took no penalties in no minutes (counted as one): discipline over six men.
    EXPECT_NEAR(six.discipline, (10 - (5 * (10 - 4.725964 / 0.8)) / 6) * 0.8, 1e-5);
}

TEST(UnitRatings, EmptyIceAndEmptyRosterGiveZeroes) {
    std::array<UnitPlayer, 6> none{};
    UnitRatings r = HkSetTeamRatings({}, none, UnitSituation{}, testEra());
    EXPECT_EQ(r.teamOffense, 0);
    EXPECT_EQ(r.onIceOffense, 0);
    EXPECT_EQ(r.discipline, 8);
}

TEST(UnitRatings, AdjustedDefenseLeansByStyle) {
    // A shot blocker: I = 4 + 0.6 + 0.5 + 0.6 + 3/8 = 6.075, O = 1.6 + 1 + 1 + 0.6 + 1/6.
    PlayerRecord p = rated({D, 0, 70, 8, 2, 5, 6, 3, 0, 0, 0, 82, 0});
    AdjustedDefense d = adjustedDefense(p);
    const double in = 6.075, out = 1.6 + 1 + 1 + 0.6 + 1.0 / 6;
    EXPECT_NEAR(d.inside, 7 + (in - out) * 0.2, 1e-9);
    EXPECT_NEAR(d.outside, 7 + (out - in) * 0.5, 1e-9);
}

TEST(UnitRatings, ZoneAndUsageHelpers) {
    EXPECT_TRUE(usesInsideDefense("OFFENSE-ZONE", true));
    EXPECT_TRUE(usesInsideDefense("OFFENSE-SHOOTER", false));
    EXPECT_TRUE(usesInsideDefense("DEFENSE-ZONE", false));
    EXPECT_FALSE(usesInsideDefense("DEFENSE-ZONE", true));
    EXPECT_FALSE(usesInsideDefense("NEUTRAL-ZONE", false));

    const std::array<std::uint8_t, 3> bands{4, 14, 24};
    EXPECT_EQ(usageBand(bands, 47, 40), 2);  // 48 / 40 = 1.2: over 1.14, under 1.24
    EXPECT_EQ(usageBand(bands, 40, 40), 0);  // 1.025
    EXPECT_EQ(usageBand(bands, 60, 40), 3);
    EXPECT_EQ(usageBand(bands, 60, 0), 0);        // no real games, no penalty
    EXPECT_EQ(usageBand({0, 14, 0}, 45, 40), 2);  // a band of 0 is not used
    EXPECT_EQ(usageBand({0, 14, 0}, 43, 40), 0);
}

}  // namespace
}  // namespace tallyrink
