#include "league/league.h"

#include <gtest/gtest.h>

#include "league/files.h"
#include "support/league_fixture.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::LeagueFixture;
using testing::TempDir;

TEST(League, TeamTableCountsAndDivisions) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 3, .playersPerTeam = 2, .teamYear = 1992});
    lg.team(30).TeamActive = 1;  // division 3
    lg.team(31).TeamActive = 2;  // any value but 1 is a free slot
    lg.write(dir.path());

    League league(dir.path());
    league.LoadTeams();
    EXPECT_EQ(league.ActiveTeamCount(), 4);
    EXPECT_EQ(league.ExpectedTeamCount(), 24);
    EXPECT_EQ(league.highestActiveTeam(), 30);
    EXPECT_TRUE(league.DivisionUsed(1));
    EXPECT_FALSE(league.DivisionUsed(2));
    EXPECT_TRUE(league.DivisionUsed(3));
    EXPECT_FALSE(league.DivisionUsed(0));
    EXPECT_FALSE(league.DivisionUsed(25));
    EXPECT_EQ(League::DivisionOfTeam(12), 1);
    EXPECT_EQ(League::DivisionOfTeam(13), 2);
    EXPECT_EQ(League::DivisionOfTeam(288), 24);
    EXPECT_EQ(league.team(2).City.str(), "Brisk");
}

TEST(League, ExpectedTeamCountFollowsTheRealLeagueBySeason) {
    std::vector<std::pair<int, int>> cases = {{1966, 6},  {1967, 12}, {1969, 12}, {1970, 18}, {1979, 18}, {1980, 20},
                                              {1991, 20}, {1992, 24}, {1999, 24}, {2000, 30}, {2021, 30}, {0, 6}};
    for (auto [year, teams] : cases) EXPECT_EQ(expectedTeamCount(year), teams) << year;
}

TEST(League, MissingFilesGiveAnEmptyLeague) {
    TempDir dir;
    League league(dir.path());
    league.LoadTeams();
    league.loadActivePlayers();
    EXPECT_EQ(league.ActiveTeamCount(), 0);
    EXPECT_EQ(league.PlayerCount(), 0);
}

TEST(League, StartUpPlayerTableHoldsTeamAndFreeAgentRowsDensely) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 2, .freeAgents = 1});
    lg.addTradedRow(1, 2, 3);            // record 6: a former-team row
    lg.addPlayer(0, "Nobody", "Empty");  // record 7: team id 0
    lg.addPlayer(288, "Last", "Slot");   // record 8: team 288, inactive but a team number
    lg.write(dir.path());

    League league(dir.path());
    league.loadActivePlayers();
    std::vector<int> records;
    for (const auto& row : league.PlayerTable()) records.push_back(row.recordNumber);
    EXPECT_EQ(records, (std::vector<int>{1, 2, 3, 4, 5, 8}));
    EXPECT_EQ(league.PlayerTable()[4].player.TeamId, kFreeAgent);
}

// Plans of the old form: 15,000-byte slots, one a team.
void writeOldGamePlans(const fs::path& dir, int teams) {
    std::vector<std::vector<std::uint8_t>> slots;
    for (int t = 1; t <= teams; ++t) {
        std::vector<std::uint8_t> slot(kOldGamePlanSlot, 0);
        slot[0] = static_cast<std::uint8_t>(t);                            // GamePlanTeam
        slot[kOldGamePlanSlot - 1] = static_cast<std::uint8_t>(0xC0 + t);  // last byte of the old slot
        slots.push_back(slot);
    }
    RandomFile(dir / "HkGamePlan", kOldGamePlanSlot).rewrite(slots);
}

TEST(GamePlanFile, OldFormIsRewrittenInWholeSlotsForAllTeams) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 4, .playersPerTeam = 1, .withGamePlans = false});
    lg.write(dir.path());
    writeOldGamePlans(dir.path(), 4);  // 60,000 bytes < 0.8 x 30,000 x 4

    League league(dir.path());
    league.LoadTeams();
    auto path = findFile(dir.path(), "HKGAMEPLAN");
    ASSERT_EQ(fileLength(path), kMaxTeams * kGamePlanSlot);
    RandomFile plans(path, kGamePlanSlot);
    for (int t = 1; t <= 4; ++t) {
        auto slot = plans.readSlot(static_cast<std::size_t>(t));
        EXPECT_EQ(slot[0], t);
        EXPECT_EQ(slot[kOldGamePlanSlot - 1], 0xC0 + t);
        EXPECT_EQ(slot[kOldGamePlanSlot], 0);
        EXPECT_EQ(readRecord<GamePlanRecord>(plans, static_cast<std::size_t>(t)).GamePlanTeam, t);
    }
    EXPECT_EQ(plans.readSlot(5)[0], 0);

    // Converted once: the new length is no longer in the old form's range.
    EXPECT_FALSE(convertOldGamePlanFile(dir.path(), 4));
}

TEST(GamePlanFile, NewFormAndTinyFilesAreLeftAlone) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 4, .playersPerTeam = 1});
    lg.write(dir.path());  // 4 x 32,000 bytes: 128,000 >= 96,000
    auto before = readBytes(dir / "HKgameplan");
    League league(dir.path());
    league.LoadTeams();
    EXPECT_EQ(readBytes(dir / "HKgameplan"), before);

    writeFileAtomic(dir / "HKgameplan", std::vector<std::uint8_t>(10000, 1));
    EXPECT_FALSE(convertOldGamePlanFile(dir.path(), 4));
    writeFileAtomic(dir / "HKgameplan", std::vector<std::uint8_t>(10001, 1));
    EXPECT_FALSE(convertOldGamePlanFile(dir.path(), 0));  // no active team: no form to tell
    EXPECT_TRUE(convertOldGamePlanFile(dir.path(), 1));
}

}  // namespace
}  // namespace tallyrink
