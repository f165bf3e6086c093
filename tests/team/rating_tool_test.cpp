#include "team/rating_tool.h"

#include <gtest/gtest.h>

#include "league/files.h"
#include "league/league.h"
#include "operations/blank_league.h"
#include "operations/new_league.h"
#include "support/league_fixture.h"
#include "support/rating_checks.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using test::shippedEra;

using testing::LeagueFixture;
using testing::TempDir;

PlayerRecord named(const std::string& first, const std::string& last) {
    PlayerRecord p;
    p.FirstName.assign(first);
    p.LastName.assign(last);
    return p;
}

// ---------------------------------------------------------------- the file

TEST(RatingsFile, ColumnsInTheirOrder) {
    PlayerRecord p = named("Ada", "O'Neil, Jr");
    p.RatingOffense = 84;
    p.RatingDefense = 52;
    p.RatingFaceoff = 7;
    p.RatingPassing = 8;
    p.RatingShotIn = 6;
    p.RatingShotOut = 3;
    p.RatingSkate = 9;
    p.RatingPenaltyShot = 5;
    p.RatingBlock = 2;
    p.RatingHit = 4;
    p.RatingTakeaway = 6;
    p.RatingSportsmanship = 7;
    p.RatingPenaltyKill = 1;
    p.RatingGoalie = 0;
    auto lines = ratingsCsvLines(std::span(&p, 1));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "First Name,Last Name,Offense,Defense,Faceoff,Passing,Shot In,Shot Out,Skating,Penalty Shot,Blocks,"
              "Hits,Takeaways,Sportsmanship,Penalty Kill,Goalie");
    EXPECT_EQ(lines[1], "Ada,\"O'Neil, Jr\",84,52,7,8,6,3,9,5,2,4,6,7,1,0");

    // What the tool writes, the tool reads back.
    auto back = parseHistoricalRatings(lines[0] + "\n" + lines[1] + "\n");
    const HistoricalRating* r = back.find(p);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->offense, 84);
    EXPECT_EQ(r->takeaways, 6);
    EXPECT_EQ(r->sportsmanship, 7);
    EXPECT_EQ(r->penaltyKill, 1);
}

TEST(RatingsFile, ReadingPassesOverWhatItCantUse) {
    auto h = parseHistoricalRatings(
        "First,Last,Off\r\n"
        "Wayne,Gretzky,100,60,7,10,9,8,9,10,1,2,8\r\n"  // the last three numbers left off
        "Bad,Line,1,2,x,4,5,6,7,8,9,10,11,12,13,14\n"
        "Short,Line,1,2,3\n"
        "\n"
        "Wayne,Gretzky,1,1,1,1,1,1,1,1,1,1,1,1,1,1\n"  // a name's first line wins
        "Bobby,Orr,90,95,1,9,6,7,10,8,6,5,9,9,3,0");
    EXPECT_EQ(h.byName.size(), 2u);
    const HistoricalRating* wayne = h.find(named("WAYNE", "gretzky"));
    ASSERT_NE(wayne, nullptr);
    EXPECT_EQ(wayne->offense, 100);
    EXPECT_EQ(wayne->sportsmanship, 0);
    EXPECT_EQ(h.find(named("Bad", "Line")), nullptr);
    EXPECT_EQ(historicalNote(*wayne), " Bk:1 Hit:2 TkA:8 Skt:9 Pass:10 FO:7 Off:100 S-I:9 S-O:8 Def:60");
    HistoricalRating zeros;
    zeros.hits = 3;
    EXPECT_EQ(historicalNote(zeros), " Hit:3");
}

TEST(RatingsFile, MissingFileIsEmpty) {
    TempDir dir;
    EXPECT_TRUE(readHistoricalRatings(dir.path()).empty());
}

TEST(RatingsFile, HistoricalSportsmanshipAndPenaltyShotsAreTakenOver) {
    std::vector<RatingSubject> team(3);
    const char* names[] = {"Young", "Veteran", "Elder"};
    const int ages[] = {25, 36, 41};
    for (std::size_t i = 0; i < 3; ++i) {
        team[i].record = named("Hist", names[i]);
        team[i].record.PositionFlags[1] = 1;
        team[i].record.Age = std::uint8_t(ages[i]);
        team[i].record.Stats[0].GP = 50;
        team[i].averageMinutes = 15;
    }
    auto history = parseHistoricalRatings(
        "Hist,Young,80,50,6,7,8,4,7,9,2,3,4,3,1,0\n"
        "Hist,Veteran,80,50,6,7,8,4,7,9,2,3,4,3,1,0\n"
        "HIST,ELDER,80,50,6,7,8,4,7,9,2,3,4,0,1,0\n");
    RatingRun run;
    run.teamYear = 2017;
    GenerateData(team, run, &history);
    EXPECT_EQ(team[0].record.RatingPenaltyShot, 9);
    EXPECT_EQ(team[1].record.RatingPenaltyShot, 8);  // one off at 35
    EXPECT_EQ(team[2].record.RatingPenaltyShot, 7);  // and one more at 40
    EXPECT_EQ(team[0].record.RatingSportsmanship, 3);
    EXPECT_EQ(team[2].record.RatingSportsmanship, 10);  // 0 in the file: the generated value stays
    EXPECT_EQ(team[0].note, " Bk:2 Hit:3 TkA:4 Skt:7 Pass:7 FO:6 Off:80 S-I:8 S-O:4 Def:50");
    EXPECT_NE(team[0].record.RatingOffense, 80);  // the other values are only shown

    run.checks.penaltyShot = false;
    team[0].record.RatingPenaltyShot = 2;
    GenerateData(team, run, &history);
    EXPECT_EQ(team[0].record.RatingPenaltyShot, 2);
}

// ---------------------------------------------------------------- a league folder

// A fixture league whose players have real lines to rate.
LeagueFixture playedLeague() {
    auto lg = LeagueFixture::make({.teams = 3, .playersPerTeam = 20});
    for (int r = 1; r <= lg.playerCount(); ++r) {
        StatLine& real = statLine(lg.player(r), StatLineIndex::Real);
        real.GP = std::uint8_t(40 + r % 40);
        bool goalie = lg.player(r).PositionFlags[4] != 0;
        real.Toi = real.GP * 60 * (goalie ? 58 : 12 + r % 10);
        real.Goals = std::uint8_t(goalie ? 0 : r % 30);
        real.Assists = std::int16_t(goalie ? 1 : r % 45);
        real.Pim = std::int16_t(r % 70);
        real.Sog = std::int16_t(goalie ? 0 : 3 * real.Goals + 40);
        real.Saves = std::int16_t(goalie ? 25 * real.GP : 0);
        real.GoalsAllowed = std::int16_t(goalie ? 3 * real.GP : 0);
        lg.player(r).Weight = 190;
    }
    return lg;
}

TEST(RatingTool, RatesATeamAndWritesItsPlayersAtTheirNumbers) {
    TempDir dir;
    auto lg = playedLeague();
    lg.player(25).TeamId = 1;  // on team 2's roster but no longer its player
    lg.write(dir.path());

    TeamRating rated = rateTeam(dir.path(), 2, shippedEra(), nullptr);
    ASSERT_FALSE(rated.refusal);
    EXPECT_EQ(rated.players.size(), 19u);
    EXPECT_EQ(rated.recordNumbers.front(), 21);
    saveTeamRatings(dir.path(), rated);

    const auto rows = readPlayerRows(findFile(dir.path(), kPlayerFile));
    ASSERT_EQ(rows.size(), 60u);
    EXPECT_GT(rows[23 - 1].player.RatingOffense, 0);  // a defenseman of team 2
    EXPECT_GT(rows[21 - 1].player.RatingGoalie, 0);
    EXPECT_EQ(rows[25 - 1].player.RatingOffense, 0);  // skipped
    EXPECT_EQ(rows[3 - 1].player.RatingOffense, 0);   // team 1 not rated
    EXPECT_EQ(rows[23 - 1].player.LastName.str(), "Last23");
    EXPECT_EQ(fileLength(findFile(dir.path(), kPlayerFile)), 60u * kPlayerSlot);
}

TEST(RatingTool, ShortPlayerFileIsNeverLengthened) {
    TempDir dir;
    auto lg = playedLeague();
    lg.write(dir.path());
    const fs::path file = findFile(dir.path(), kPlayerFile);
    fs::resize_file(file, 59 * kPlayerSlot + 700);  // player 60 cut in half

    TeamRating rated = rateTeam(dir.path(), 3, shippedEra(), nullptr);
    EXPECT_EQ(rated.players.size(), 19u);
    saveTeamRatings(dir.path(), rated);
    EXPECT_EQ(fileLength(file), 59u * kPlayerSlot + 700);
}

TEST(RatingTool, WholeLeagueAndItsRatingsFile) {
    TempDir dir;
    auto lg = playedLeague();
    lg.addPlayer(kFreeAgent, "Free", "Agent");
    lg.write(dir.path());
    auto rated = rateLeague(dir.path(), shippedEra(), nullptr);
    ASSERT_EQ(rated.size(), 3u);
    for (const auto& t : rated) EXPECT_FALSE(t.refusal);

    auto lines = readLines(findFile(dir.path(), kRatingsCsvFile));
    ASSERT_EQ(lines.size(), 62u);  // header, 60 rostered players, the free agent
    EXPECT_EQ(lines[1].rfind("First1,Last1,0,0,0,0,0,0,0,0,0,0,0,10,0,", 0), 0u) << lines[1];  // a goalie
    EXPECT_EQ(lines.back().rfind("Free,Agent,", 0), 0u);
}

TEST(RatingTool, NeedsRatingsOnlyForPlayedUnratedPlayers) {
    PlayerRecord p;
    p.PositionFlags[1] = 1;
    EXPECT_FALSE(needsRatings(p));  // nothing to rate from
    p.Stats[0].GP = 10;
    EXPECT_TRUE(needsRatings(p));
    p.RatingDefense = 30;
    EXPECT_FALSE(needsRatings(p));
    PlayerRecord g;
    g.PositionFlags[4] = 1;
    g.Stats[0].GP = 10;
    EXPECT_FALSE(needsRatings(g));
    g.Stats[0].Saves = 200;
    EXPECT_TRUE(needsRatings(g));
}

TEST(RatingTool, TeamLoadRatesOnlyTheUnratedPlayers) {
    auto lg = playedLeague();
    std::vector<PlayerRecord> team(lg.players.begin(), lg.players.begin() + 20);
    team[10].RatingOffense = 77;  // edited by hand
    team[10].RatingDefense = 33;
    const auto before = team;
    EXPECT_EQ(rateUnratedPlayers(team, shippedEra(), 2018, false), 19);
    EXPECT_EQ(team[10].RatingOffense, 77);
    EXPECT_EQ(team[10].RatingDefense, 33);
    EXPECT_GE(team[12].RatingOffense, 5);
    EXPECT_GE(team[0].RatingGoalie, 15);
    EXPECT_EQ(rateUnratedPlayers(team, shippedEra(), 2018, false), 0);  // all rated now
    EXPECT_EQ(team[12].LastName, before[12].LastName);
}

// ---------------------------------------------------------------- a made-up league

TEST(RatingTool, MadeUpLeagueRatesEveryPlayerInRange) {
    TempDir dir;
    NewLeagueOptions options;
    options.teams = 6;
    options.year = 2017;
    options.seed = 4242;
    GeneratedLeague league = generateLeague(options, eraTargets(shippedEra(), 2017));
    writeLeagueFolder(dir.path(), league.files);

    auto rated = rateLeague(dir.path(), shippedEra(), nullptr);
    ASSERT_EQ(rated.size(), 6u);
    double forwardOffense = 0;
    int forwards = 0;
    for (const auto& t : rated) {
        ASSERT_FALSE(t.refusal) << *t.refusal;
        for (const auto& s : t.players) {
            const PlayerRecord& p = s.record;
            const std::string who = p.LastName.str();
            testing::expectRatingCaps(p);
            if (isGoalie(p)) {
                if (p.Stats[0].Saves > 0) {
                    EXPECT_GE(p.RatingGoalie, 15) << who;
                }
                EXPECT_LE(p.RatingGoalie, 100) << who;
            } else {
                EXPECT_GE(p.RatingOffense, 5) << who;
                EXPECT_GE(p.RatingDefense, 5) << who;
                EXPECT_GE(p.RatingFaceoff, 1) << who;
            }
            if (isFlaggedForward(p) && p.Stats[0].GP >= 40) {
                forwardOffense += p.RatingOffense;
                ++forwards;
            }
        }
    }
    // Regulars up front come out near the middle of the scale, not at its ends.
    ASSERT_GT(forwards, 20);
    EXPECT_GT(forwardOffense / forwards, 40);
    EXPECT_LT(forwardOffense / forwards, 110);

    // The folder holds what was rated.
    const auto rows = readPlayerRows(findFile(dir.path(), kPlayerFile));
    const auto& first = rated.front();
    EXPECT_EQ(rows[std::size_t(first.recordNumbers[0] - 1)].player.RatingOffense,
              first.players[0].record.RatingOffense);
}

}  // namespace
}  // namespace tallyrink
