#include "team/ratings.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "league/random.h"
#include "support/rating_checks.h"

namespace tallyrink {
namespace {

enum Flag { LW = 0, C = 1, RW = 2, D = 3, G = 4 };

struct Real {
    int gp = 0, goals = 0, assists = 0, pim = 0, toi = 0, toiSH = 0, sog = 0, fow = 0, fol = 0, hits = 0, blocks = 0,
        takeaways = 0, goalsAllowed = 0, saves = 0;
};

RatingSubject subject(const std::string& last, Flag flag, const Real& r, int weight, double minutes) {
    RatingSubject s;
    PlayerRecord& p = s.record;
    p.PlayerId = 1;
    p.TeamId = 1;
    p.FirstName.assign("Test");
    p.LastName.assign(last);
    p.PlayerYear = 2017;
    p.Age = 28;
    p.PlayerType.assign("P");
    p.PositionFlags[std::size_t(flag)] = 1;
    p.Weight = std::int16_t(weight);
    StatLine& line = statLine(p, StatLineIndex::Real);
    line.GP = std::uint8_t(r.gp);
    line.Goals = std::uint8_t(r.goals);
    line.Assists = std::int16_t(r.assists);
    line.Pim = std::int16_t(r.pim);
    line.Toi = r.toi;
    line.ToiSH = r.toiSH;
    line.Sog = std::int16_t(r.sog);
    line.FaceoffsWon = std::int16_t(r.fow);
    line.FaceoffsLost = std::int16_t(r.fol);
    line.Hits = std::int16_t(r.hits);
    line.Blocks = std::int16_t(r.blocks);
    line.Takeaways = std::int16_t(r.takeaways);
    line.GoalsAllowed = std::int16_t(r.goalsAllowed);
    line.Saves = std::int16_t(r.saves);
    s.averageMinutes = minutes;
    return s;
}

const EraTable& testEra() {
    static const EraTable era = [] {
        EraTable t;
        for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
            EraRecord& e = t.year(y);
            e.Games = 82;
            e.GoalsPerTeam = 3.0;
            e.AssistsPerGoal = 1.5;
            e.PimPerGame = 18;
            e.SavePct = 91;
        }
        return t;
    }();
    return era;
}

// Round figures, so that every expected value below can be worked by hand:
// team offense and defense levels both 5 + 10 / 15.
RatingInputs testInputs() {
    RatingInputs in;
    in.leagueShots = 30;
    in.teamShots = 33;
    in.teamShotsAllowed = 27;
    in.goalsPerGame = 6;
    in.assistsPerGoal = 1.5;
    in.seasonLength = 80;
    in.pimPerGame = 18;
    in.savePct = 91;
    return in;
}

RatingRun testRun() {
    RatingRun run;
    run.inputs = testInputs();
    run.teamYear = 2017;
    run.era = &testEra();
    return run;
}

enum Member { Star, Grinder, Enforcer, OffensiveD, DefensiveD, Starter, Backup, NoGames };

// A team of eight whose real lines look like a season's: a scoring center,
// a checking winger, a fighter, a puck-moving and a stay-at-home
// defenseman, a starting and a backup goalie and a call-up who never played.
std::vector<RatingSubject> testTeam() {
    std::vector<RatingSubject> team;
    Real star{.gp = 80,
              .goals = 40,
              .assists = 50,
              .pim = 20,
              .toi = 96000,
              .toiSH = 6000,
              .sog = 280,
              .fow = 900,
              .fol = 700,
              .hits = 40,
              .blocks = 30,
              .takeaways = 60};
    team.push_back(subject("Star", C, star, 200, 20));
    Real grinder{.gp = 70,
                 .goals = 5,
                 .assists = 8,
                 .pim = 30,
                 .toi = 46200,
                 .toiSH = 6300,
                 .sog = 60,
                 .fow = 10,
                 .fol = 15,
                 .hits = 150,
                 .blocks = 40,
                 .takeaways = 20};
    team.push_back(subject("Grinder", LW, grinder, 205, 11));
    team.back().record.RealMinors = 15;  // all his penalties were minors
    Real enforcer{.gp = 60,
                  .goals = 3,
                  .assists = 4,
                  .pim = 160,
                  .toi = 28800,
                  .sog = 30,
                  .hits = 180,
                  .blocks = 10,
                  .takeaways = 5};
    team.push_back(subject("Enforcer", RW, enforcer, 235, 8));
    Real offensive{.gp = 82,
                   .goals = 15,
                   .assists = 45,
                   .pim = 30,
                   .toi = 118080,
                   .toiSH = 4920,
                   .sog = 200,
                   .hits = 60,
                   .blocks = 110,
                   .takeaways = 40};
    team.push_back(subject("Offensive", D, offensive, 195, 24));
    Real defensive{.gp = 78,
                   .goals = 2,
                   .assists = 12,
                   .pim = 50,
                   .toi = 98280,
                   .toiSH = 14040,
                   .sog = 70,
                   .hits = 170,
                   .blocks = 190,
                   .takeaways = 25};
    team.push_back(subject("Defensive", D, defensive, 220, 21));
    team.push_back(subject("Starter", G, {.gp = 60, .toi = 212400, .goalsAllowed = 150, .saves = 1650}, 190, 59));
    team.push_back(subject("Backup", G, {.gp = 22, .toi = 72600, .goalsAllowed = 70, .saves = 600}, 185, 55));
    team.push_back(subject("Callup", LW, {}, 190, 14));
    return team;
}

struct Stored {
    int off, def, pas, shotIn, shotOut, skate, sports, hit, takeaway, block, durability, penShot, pk, faceoff, goalie;
};

Stored storedOf(const PlayerRecord& p) {
    return {p.RatingOffense,    p.RatingDefense,       p.RatingPassing,     p.RatingShotIn,   p.RatingShotOut,
            p.RatingSkate,      p.RatingSportsmanship, p.RatingHit,         p.RatingTakeaway, p.RatingBlock,
            p.RatingDurability, p.RatingPenaltyShot,   p.RatingPenaltyKill, p.RatingFaceoff,  p.RatingGoalie};
}

void expectStored(const PlayerRecord& p, const Stored& want) {
    Stored got = storedOf(p);
    std::string who = p.LastName.str();
    EXPECT_EQ(got.off, want.off) << who << " offense";
    EXPECT_EQ(got.def, want.def) << who << " defense";
    EXPECT_EQ(got.pas, want.pas) << who << " passing";
    EXPECT_EQ(got.shotIn, want.shotIn) << who << " shot in";
    EXPECT_EQ(got.shotOut, want.shotOut) << who << " shot out";
    EXPECT_EQ(got.skate, want.skate) << who << " skating";
    EXPECT_EQ(got.sports, want.sports) << who << " sportsmanship";
    EXPECT_EQ(got.hit, want.hit) << who << " hits";
    EXPECT_EQ(got.takeaway, want.takeaway) << who << " takeaways";
    EXPECT_EQ(got.block, want.block) << who << " blocks";
    EXPECT_EQ(got.durability, want.durability) << who << " durability";
    EXPECT_EQ(got.penShot, want.penShot) << who << " penalty shot";
    EXPECT_EQ(got.pk, want.pk) << who << " penalty kill";
    EXPECT_EQ(got.faceoff, want.faceoff) << who << " faceoff";
    EXPECT_EQ(got.goalie, want.goalie) << who << " goalie";
}

// ---------------------------------------------------------------- the whole team

TEST(GenerateRatings, TeamOfArchetypesGetsTheHandWorkedValues) {
    auto team = testTeam();
    ASSERT_FALSE(GenerateData(team, testRun()));
    //                       off def pas SI SO skt spt hit tka blk dur ps pk fo goalie
    expectStored(team[Star].record, {96, 49, 8, 8, 4, 9, 9, 8, 6, 5, 10, 8, 2, 9, 0});
    expectStored(team[Grinder].record, {54, 43, 4, 4, 2, 6, 10, 7, 4, 4, 9, 4, 2, 3, 0});
    expectStored(team[Enforcer].record, {54, 36, 4, 3, 2, 6, 0, 7, 3, 3, 8, 3, 0, 1, 0});
    expectStored(team[OffensiveD].record, {47, 65, 6, 1, 2, 5, 8, 10, 6, 7, 10, 2, 2, 1, 0});
    expectStored(team[DefensiveD].record, {32, 67, 4, 1, 1, 3, 7, 10, 6, 7, 9, 1, 2, 1, 0});
    expectStored(team[Starter].record, {0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 9, 0, 0, 0, 72});
    expectStored(team[Backup].record, {0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 4, 0, 0, 0, 48});
    // No games: the floors of the team step, the rest from his size alone.
    expectStored(team[NoGames].record, {5, 5, 1, 1, 0, 1, 10, 5, 1, 1, 1, 1, 0, 1, 0});
}

TEST(GenerateRatings, MarksTheFighterAsEnforcerAndStampsFreshRatings) {
    auto team = testTeam();
    team[Grinder].record.EnforcerStamp = 55;  // already decided: kept as it is
    team[Grinder].record.Enforcer = 1;
    GenerateData(team, testRun());
    EXPECT_EQ(team[Enforcer].record.Enforcer, 1);
    EXPECT_EQ(team[Enforcer].record.EnforcerStamp, 55);
    EXPECT_EQ(team[Star].record.Enforcer, 0);
    EXPECT_EQ(team[Grinder].record.Enforcer, 1);
    EXPECT_EQ(team[NoGames].record.EnforcerStamp, 0);  // nothing to decide by
    for (const auto& s : team) EXPECT_EQ(s.record.HitRatingStamp, 99) << s.record.LastName.str();
}

TEST(Enforcers, PenaltiesAloneOrPenaltiesWithHits) {
    const EraTable& era = testEra();  // 18 minutes a game: e = 2, the mark 2.5
    auto p = subject("Tough", RW, {.gp = 50, .pim = 30, .hits = 150}, 210, 10);
    // 3.6 penalty minutes per 60 is 1.8 e, under the mark, but with 18 hits per 60.
    EXPECT_TRUE(isEnforcerByRecord(p.record, 10, era, 2017, false));
    p.record.Stats[0].Hits = 100;  // 12 per 60
    EXPECT_FALSE(isEnforcerByRecord(p.record, 10, era, 2017, false));
    p.record.Stats[0].Pim = 42;  // 5.04 per 60: over 2.5 e
    EXPECT_TRUE(isEnforcerByRecord(p.record, 10, era, 2017, false));
    EXPECT_FALSE(isEnforcerByRecord(p.record, 7.9, era, 2017, false));  // a part-timer
    p.record.Stats[0].GP = 20;
    EXPECT_FALSE(isEnforcerByRecord(p.record, 10, era, 2017, false));
}

TEST(GenerateRatings, IntermediateValuesMatchTheHandWorking) {
    auto team = testTeam();
    const RatingInputs in = testInputs();
    const TeamFigures tf = teamFiguresOf(team, in.assistsPerGoal);
    EXPECT_EQ(tf.all.count, 6);
    EXPECT_DOUBLE_EQ(tf.all.minutes, 6456);
    EXPECT_NEAR(tf.all.production, 14433.3333, 1e-3);
    EXPECT_EQ(tf.defense.count, 2);
    EXPECT_DOUBLE_EQ(tf.defense.events, 480);
    EXPECT_EQ(tf.forwards.count, 4);
    EXPECT_DOUBLE_EQ(tf.forwards.events, 350);
    EXPECT_TRUE(tf.haveDefenseEvents);
    EXPECT_DOUBLE_EQ(tf.shortHandedMinutes, 521);
    EXPECT_EQ(tf.goalies, 2);

    auto pf = [&](Member m) { return playerFiguresOf(team[m], in.assistsPerGoal); };
    EXPECT_NEAR(offenseValue(team[Star], pf(Star), tf, in, 2017), 11.64655, 1e-4);
    EXPECT_NEAR(offenseValue(team[DefensiveD], pf(DefensiveD), tf, in, 2017), 3.86935, 1e-4);
    EXPECT_NEAR(defenseValue(team[OffensiveD], pf(OffensiveD), tf, in), 7.18149, 1e-4);
    EXPECT_NEAR(defenseValue(team[DefensiveD], pf(DefensiveD), tf, in), 6.89396, 1e-4);
    EXPECT_NEAR(defenseValue(team[Grinder], pf(Grinder), tf, in), 4.70201, 1e-4);
    EXPECT_NEAR(shortHandedAdjustment(team[DefensiveD], tf, in), 0.595869, 1e-5);
    EXPECT_NEAR(shortHandedAdjustment(team[Enforcer], tf, in), -0.217024, 1e-5);
    EXPECT_NEAR(passingValue(team[Star], pf(Star), in), 7.708333, 1e-5);
    EXPECT_NEAR(scoringValue(team[Star], pf(Star), in), 8.15, 1e-9);
    EXPECT_NEAR(scoringValue(team[DefensiveD], pf(DefensiveD), in), 2.666667, 1e-5);  // 2 / 3 + 2 caps him
}

TEST(GenerateRatings, UntickedRatingsKeepTheirStoredValues) {
    auto team = testTeam();
    team[Star].record.RatingFaceoff = 2;
    team[Star].record.RatingGoalie = 0;
    team[Starter].record.RatingGoalie = 33;
    RatingRun run = testRun();
    run.checks.faceoff = false;
    run.checks.goalie = false;
    GenerateData(team, run);
    EXPECT_EQ(team[Star].record.RatingFaceoff, 2);
    EXPECT_EQ(team[Starter].record.RatingGoalie, 33);
    EXPECT_EQ(team[Star].record.RatingOffense, 96);
}

// ---------------------------------------------------------------- single formulas

// A team whose skaters produced 2 a minute and whose levels are both 5 2/3.
TeamFigures evenTeam() {
    TeamFigures tf;
    tf.all.count = 20;
    tf.all.production = 20000;
    tf.all.minutes = 10000;
    return tf;
}

TEST(OffenseValue, PointCapHoldsBackMinutesWithoutPoints) {
    const RatingInputs in = testInputs();
    auto forward = subject("Plodder", RW, {.gp = 80, .goals = 1, .assists = 1, .toi = 72000, .sog = 20}, 200, 15);
    // 6 2/3 + 1.2 x (166.67 / 1201 - 2) = 4.43, over the cap 2 + 1.8 x 0.9 x 6 2/3 / 6 = 3.8.
    EXPECT_NEAR(offenseValue(forward, playerFiguresOf(forward, 1.5), evenTeam(), in, 2017), 3.8 * 1.2, 1e-9);
    auto defense = subject("Anchor", D, {.gp = 80, .toi = 72000, .sog = 20}, 200, 15);
    // 5 2/3 - 2 over a cap of 2: the defenseman keeps 58% of it.
    EXPECT_NEAR(offenseValue(defense, playerFiguresOf(defense, 1.5), evenTeam(), in, 2017), 2 * 0.58, 1e-9);
}

TEST(OffenseValue, FewGamesAndOldSeasonsScaleDown) {
    const RatingInputs in = testInputs();
    auto p = subject("Rookie", C, {.gp = 20, .goals = 10, .assists = 10, .toi = 18000, .sog = 40}, 190, 15);
    // 10.91 + shots 0.1, x 0.9 for 10 games short of 30, held to 20 / 10 + 6.5.
    EXPECT_NEAR(offenseValue(p, playerFiguresOf(p, 1.5), evenTeam(), in, 2017), 8.5 * 1.2, 1e-9);
    EXPECT_NEAR(offenseValue(p, playerFiguresOf(p, 1.5), evenTeam(), in, 1985), 8.5 * 1.18, 1e-9);
}

TEST(Sportsmanship, TablesByPenaltyRateAndByMajors) {
    EXPECT_EQ(sportsmanshipOf(0, 1.8), 10);
    EXPECT_EQ(sportsmanshipOf(1.8, 1.8), 7);        // the era's average
    EXPECT_EQ(sportsmanshipOf(6.5 * 1.8, 1.8), 0);  // boundaries belong to the lower rating
    EXPECT_EQ(sportsmanshipOf(4.2 * 1.8, 1.8), 1);
    EXPECT_EQ(sportsmanshipOf(0.29 * 1.8, 1.8), 10);
    EXPECT_EQ(sportsmanshipByMajors(0), 10);
    EXPECT_EQ(sportsmanshipByMajors(0.5), 9);
    EXPECT_EQ(sportsmanshipByMajors(20), 1);
    EXPECT_EQ(sportsmanshipByMajors(20.1), 0);
    EXPECT_DOUBLE_EQ(sportsmanshipEraRate(testEra(), 2017, false), 1.8);
    EraTable empty;
    EXPECT_DOUBLE_EQ(sportsmanshipEraRate(empty, 2017, false), 0.9);  // 9 minutes stand in for none
}

TEST(Sportsmanship, NamedEnforcersLoseAPoint) {
    auto team = testTeam();
    team[Star].record.Stats[0].Pim = 120;  // R = 120 / 26.67 = 4.5, / 1.8 = 2.5: rating 3
    RatingRun run = testRun();
    run.namedEnforcers = {"TEST STAR"};
    SportsmanshipRating(team, run);
    EXPECT_EQ(team[Star].record.RatingSportsmanship, 2);
}

TEST(Faceoffs, ShareOfProductionWhenTheTeamKeptNoDraws) {
    auto team = testTeam();
    for (auto& s : team) s.record.Stats[0].FaceoffsWon = s.record.Stats[0].FaceoffsLost = 0;
    team[Grinder].record.PositionFlags = {0, 1, 0, 0, 0};  // a center with 7.2% of the production
    FaceoffRating(team, testRun());
    EXPECT_EQ(team[Star].record.RatingFaceoff, 8);  // 50.8% of the team's production
    EXPECT_EQ(team[Grinder].record.RatingFaceoff, 6);
    EXPECT_EQ(team[Enforcer].record.RatingFaceoff, 3);
    EXPECT_EQ(team[OffensiveD].record.RatingFaceoff, 1);
    EXPECT_EQ(team[Starter].record.RatingFaceoff, 0);
}

TEST(Faceoffs, DrawsDecideWhenTheTeamKeptThem) {
    auto team = testTeam();
    // 120 won of 200 (60%) in 80 games: 6 + 10 / 2.7 = 9.70, 2.5 a game is
    // under 15% of the team's 22 draws a game: no bonus, no cut.
    team[Grinder].record.Stats[0].FaceoffsWon = 120;
    team[Grinder].record.Stats[0].FaceoffsLost = 80;
    team[Grinder].record.Stats[0].GP = 80;
    // 100 of 140 in 80 games: 65% at most, 11.56, less 0.7 and held to 7
    // for taking under 2 draws a game.
    team[Enforcer].record.Stats[0].FaceoffsWon = 100;
    team[Enforcer].record.Stats[0].FaceoffsLost = 40;
    team[Enforcer].record.Stats[0].GP = 80;
    FaceoffRating(team, testRun());
    EXPECT_EQ(team[Grinder].record.RatingFaceoff, 10);
    EXPECT_EQ(team[Enforcer].record.RatingFaceoff, 7);
    // 56.25%: 6 + 6.25 / 2.7 = 8.31, + 0.5 for 20 draws a game.
    EXPECT_EQ(team[Star].record.RatingFaceoff, 9);
}

TEST(Goalies, CeilingGrowsWithMinutes) {
    auto team = testTeam();
    // A great save percentage in 5 games: 65 + 56.7, less 5 as a deep
    // backup, then held to 300 / 16 + 25 = 43.75.
    team[Backup].record.Stats[0] = {};
    team[Backup].record.Stats[0].GP = 5;
    team[Backup].record.Stats[0].Toi = 18000;
    team[Backup].record.Stats[0].Saves = 145;
    team[Backup].record.Stats[0].GoalsAllowed = 5;
    GoalieRating(team, testRun());
    EXPECT_EQ(team[Backup].record.RatingGoalie, 44);
    EXPECT_EQ(team[Starter].record.RatingGoalie, 72);
}

TEST(Goalies, WithoutSavesTheRatingStays) {
    auto team = testTeam();
    team[Backup].record.Stats[0] = {};
    team[Backup].record.RatingGoalie = 61;
    team[Star].record.RatingGoalie = 40;  // a skater has none
    GoalieRating(team, testRun());
    EXPECT_EQ(team[Backup].record.RatingGoalie, 61);
    EXPECT_EQ(team[Star].record.RatingGoalie, 0);
}

TEST(Durability, GoaliesAreMeasuredAgainstTheirShareOfGames) {
    auto team = testTeam();
    team.erase(team.begin() + Backup);  // a lone goalie: 60 / (80 / 1.7) x 10 = 12.75
    DurabilityRating(team, testRun());
    EXPECT_EQ(team[Starter].record.RatingDurability, 10);
    auto four = testTeam();
    four.push_back(four[Backup]);
    four.push_back(four[Backup]);
    DurabilityRating(four, testRun());  // more than three goalies: 10, less under 72 games
    EXPECT_EQ(four[Backup].record.RatingDurability, 9);
}

TEST(PenaltyKill, TeamWithoutShortHandedTimeRatesEveryoneTwo) {
    auto team = testTeam();
    for (auto& s : team) s.record.Stats[0].ToiSH = 0;
    PenaltyKillRating(team, testRun());
    EXPECT_EQ(team[Star].record.RatingPenaltyKill, 2);
    EXPECT_EQ(team[NoGames].record.RatingPenaltyKill, 2);
    EXPECT_EQ(team[Starter].record.RatingPenaltyKill, 0);
}

TEST(PenaltyShots, SpecialistsKeepTheirValueOthersGainAFifth) {
    auto team = testTeam();
    const int attempts[] = {5, 5, 2, 7, 5, 0, 0, 5};  // 29 by the skaters: a fifth is 5.8
    for (std::size_t i = 0; i < team.size(); ++i)
        team[i].record.Stats[0].PenaltyShotAttempts = std::uint8_t(attempts[i]);
    auto set = [&](Member m, int in, int out, int skate) {
        team[m].record.RatingShotIn = std::uint8_t(in);
        team[m].record.RatingShotOut = std::uint8_t(out);
        team[m].record.RatingSkate = std::uint8_t(skate);
    };
    set(Star, 8, 4, 9);        // round(7.95) = 8, with 5 attempts: kept
    set(Enforcer, 5, 2, 5);    // round(4.85) = 5, under 5 attempts: x 1.2 = 6
    set(OffensiveD, 2, 2, 6);  // round(2.6) = 3, 7 attempts are over a fifth: 3.6
    PenaltyShotRating(team, testRun());
    EXPECT_EQ(team[Star].record.RatingPenaltyShot, 8);
    EXPECT_EQ(team[Enforcer].record.RatingPenaltyShot, 6);
    EXPECT_EQ(team[OffensiveD].record.RatingPenaltyShot, 4);
    EXPECT_EQ(team[Starter].record.RatingPenaltyShot, 0);
}

// ---------------------------------------------------------------- inputs

TEST(RatingInputs, OutOfRangeFiguresAreRefusedWithTheirMessage) {
    EXPECT_FALSE(refusalOf(testInputs()));
    auto with = [](auto change) {
        RatingInputs in = testInputs();
        change(in);
        return refusalOf(in).value_or("");
    };
    EXPECT_EQ(with([](RatingInputs& i) { i.leagueShots = 61; }), "Shots per game must be between 1 and 60");
    EXPECT_EQ(with([](RatingInputs& i) { i.teamShotsAllowed = 0.5; }), "Shots per game must be between 1 and 70");
    EXPECT_EQ(with([](RatingInputs& i) { i.goalsPerGame = 11; }), "Goals per game must be between 1 and 10");
    EXPECT_EQ(with([](RatingInputs& i) { i.assistsPerGoal = 0.05; }), "Assists per goal must be between .1 and 2");
    EXPECT_EQ(with([](RatingInputs& i) { i.seasonLength = 4; }), "Season length must be between 5 and 150");
    EXPECT_EQ(with([](RatingInputs& i) { i.pimPerGame = 100; }), "Penalty minutes per game must be between 1 and 99");
    EXPECT_EQ(with([](RatingInputs& i) { i.savePct = 59.9; }), "Save % must be between 60 and 99");
    EXPECT_EQ(with([](RatingInputs& i) { i.savePct = std::nan(""); }), "Save % must be between 60 and 99");

    auto team = testTeam();
    RatingRun run = testRun();
    run.inputs.seasonLength = 200;
    EXPECT_EQ(GenerateData(team, run).value_or(""), "Season length must be between 5 and 150");
    EXPECT_EQ(team[Star].record.RatingOffense, 0);  // nobody rated
}

TEST(RatingInputs, PrefilledFromTheEraAndTheTeamTotals) {
    auto team = testTeam();
    RatingInputs in = prefilledInputs(team, testEra(), 2017, false);
    EXPECT_EQ(in.seasonLength, 82);
    EXPECT_DOUBLE_EQ(in.goalsPerGame, 6);
    EXPECT_DOUBLE_EQ(in.assistsPerGoal, 1.5);
    EXPECT_DOUBLE_EQ(in.pimPerGame, 18);
    EXPECT_DOUBLE_EQ(in.savePct, 91);
    EXPECT_NEAR(in.leagueShots, 3 / 0.09, 1e-9);
    EXPECT_DOUBLE_EQ(in.teamShots, 640.0 / 82);          // 640 shots is over 500
    EXPECT_DOUBLE_EQ(in.teamShotsAllowed, 2470.0 / 82);  // saves and goals of both goalies
    EXPECT_FALSE(refusalOf(in));

    // Years before 1910 take 2009; a year with nothing in it gives usable defaults.
    EraTable era;
    era.year(2009).Games = 40;
    RatingInputs old = prefilledInputs({}, era, 1905, false);
    EXPECT_EQ(old.seasonLength, 40);
    EXPECT_FALSE(refusalOf(old));
}

TEST(RatingInputs, AverageGoalieEstimate) {
    auto team = testTeam();
    team[Starter].record.RatingGoalie = 72;
    team[Backup].record.RatingGoalie = 50;
    auto est = GetShotsFromGoalies(team, testInputs());
    ASSERT_TRUE(est);
    EXPECT_NEAR(est->averageGoalie, (7.2 * 60 + 5.0 * 22) / 82, 1e-9);
    EXPECT_NEAR(est->savePct, (est->averageGoalie - 6.5) * 1.1 + 91, 1e-9);
}

TEST(AverageMinutes, FromTimeOnIceElseEstimatedFromPoints) {
    const EraTable& era = testEra();
    auto timed = subject("Timed", C, {.gp = 80, .toi = 96000}, 200, 0);
    EXPECT_DOUBLE_EQ(realAverageMinutes(timed.record, 2017, era, false), 20);
    // League A = (2 x 3 x 1.5 + 6) / 37.46 = 0.40043; 1.25 points a game: 16 + 3 x 0.8496, + 1 for 100 points.
    auto scorer = subject("Scorer", C, {.gp = 80, .goals = 30, .assists = 70}, 200, 0);
    EXPECT_NEAR(realAverageMinutes(scorer.record, 2017, era, false), 16 + 3 * (1.25 - 15.0 / 37.46) + 1, 1e-9);
    // A defenseman without points: 20 - 2 x League B, at least 15.
    auto stay = subject("Stay", D, {.gp = 70}, 200, 0);
    EXPECT_NEAR(realAverageMinutes(stay.record, 2017, era, false), 20 - 2 * 15.0 / 45.4, 1e-9);
    // Sixty-goal forwards are capped at 28 minutes.
    auto sniper = subject("Sniper", RW, {.gp = 80, .goals = 90, .assists = 120}, 200, 0);
    EXPECT_DOUBLE_EQ(realAverageMinutes(sniper.record, 2017, era, false), 28);
}

// ---------------------------------------------------------------- garbage in

void expectInRange(const PlayerRecord& p) {
    std::string who = p.LastName.str();
    const bool goalie = isGoalie(p);
    testing::expectRatingCaps(p);
    if (goalie) {
        EXPECT_EQ(p.RatingOffense, 0) << who;
        EXPECT_EQ(p.RatingDefense, 0) << who;
        EXPECT_EQ(p.RatingFaceoff, 0) << who;
        EXPECT_LE(p.RatingGoalie, 100) << who;
        if (statLine(p, StatLineIndex::Real).Saves > 0) {
            EXPECT_GE(p.RatingGoalie, 15) << who;
        }
    } else {
        EXPECT_GE(p.RatingOffense, 5) << who;
        EXPECT_GE(p.RatingDefense, 5) << who;
        EXPECT_GE(p.RatingFaceoff, 1) << who;
        EXPECT_GE(p.RatingHit, 1) << who;
        EXPECT_EQ(p.RatingGoalie, 0) << who;
    }
}

TEST(GenerateRatings, GarbageLinesStayInRange) {
    Random rng(77);
    for (int round = 0; round < 40; ++round) {
        std::vector<RatingSubject> team;
        for (int k = 0; k < 26; ++k) {
            RatingSubject s;
            PlayerRecord& p = s.record;
            p.LastName.assign(fmt::format("P{}", k));
            for (auto& f : p.PositionFlags) f = std::uint8_t(rng.rand(4) == 1 ? rng.rand(256) - 1 : 0);
            p.Weight = std::int16_t(rng.rand(600) - 200);
            p.PlayerYear = std::int16_t(rng.rand(4000) - 1000);
            StatLine& r = statLine(p, StatLineIndex::Real);
            auto word = [&] { return std::int16_t(rng.rand(65536) - 32769); };
            r.GP = std::uint8_t(rng.rand(256) - 1);
            r.Goals = std::uint8_t(rng.rand(256) - 1);
            r.Assists = word();
            r.Pim = word();
            r.Toi = rng.rand(3) == 1 ? 0 : rng.rand(2000000) - 500000;
            r.ToiSH = rng.rand(400000) - 100000;
            r.Sog = word();
            r.FaceoffsWon = word();
            r.FaceoffsLost = word();
            r.Hits = word();
            r.Blocks = word();
            r.Takeaways = word();
            r.GoalsAllowed = word();
            r.Saves = word();
            r.PenaltyShotAttempts = std::uint8_t(rng.rand(256) - 1);
            p.RealMajors = std::uint8_t(rng.rand(256) - 1);
            s.averageMinutes = realAverageMinutes(p, 2017, testEra(), false);
            team.push_back(s);
        }
        RatingRun run = testRun();
        run.inputs = prefilledInputs(team, testEra(), 2017, false);
        ASSERT_FALSE(GenerateData(team, run));
        for (const auto& s : team) expectInRange(s.record);
    }
}

}  // namespace
}  // namespace tallyrink
