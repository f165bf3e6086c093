#include "operations/blank_league.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "league/files.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

RandomFile teamsFile(const fs::path& dir) { return RandomFile(findFile(dir, "HKTEAMS"), 1500); }
RandomFile plansFile(const fs::path& dir) { return RandomFile(findFile(dir, "HKgameplan"), 32000); }

TEST(BlankLeague, WritesEveryFileWithTeamsInTheirDivisionSlots) {
    TempDir tmp;
    fs::path dir = tmp / "Blank";
    createBlankLeague({dir, {4, 4, 4}, 1975, false});

    EXPECT_EQ(fileLength(findFile(dir, "HKPLAYER")), 0u);
    EXPECT_EQ(fileLength(findFile(dir, "HKRULES")), 0u);
    EXPECT_EQ(fileLength(findFile(dir, "SCORES")), 0u);
    EXPECT_TRUE(fs::exists(findFile(dir, "HKRULES")));
    ASSERT_EQ(fileLength(findFile(dir, "HKTEAMS")), 288u * 1500u);

    auto teams = readRecords<TeamRecord>(teamsFile(dir), 288);
    std::vector<int> live;
    for (int t = 1; t <= 288; ++t)
        if (teams[t - 1].TeamActive == 1) live.push_back(t);
    EXPECT_EQ(live, (std::vector<int>{1, 2, 3, 4, 13, 14, 15, 16, 25, 26, 27, 28}));
    for (std::size_t n = 0; n < live.size(); ++n) {
        const TeamRecord& t = teams[live[n] - 1];
        EXPECT_EQ(t.City.str(), "Team " + std::to_string(n + 1));
        EXPECT_EQ(t.Abbrev.str(), "Tea");
        EXPECT_EQ(t.TeamYear, 1975);
        EXPECT_EQ(t.CreateStampA, 37);
        EXPECT_EQ(t.CreateStampB, 44);
        EXPECT_EQ(divisionOfTeam(live[n]), int(n / 4) + 1);
    }
    // A free slot is never-written zero bytes.
    auto freeSlot = teamsFile(dir).readSlot(5);
    EXPECT_TRUE(std::all_of(freeSlot.begin(), freeSlot.end(), [](auto b) { return b == 0; }));

    // One plan slot for each number up to the highest team, the live ones
    // holding the default coach.
    EXPECT_EQ(fileLength(findFile(dir, "HKgameplan")), 28u * 32000u);
    auto plan = readRecord<GamePlanRecord>(plansFile(dir), 14);
    EXPECT_EQ(plan.GamePlanTeam, 14);
    EXPECT_EQ(plan.GamePlanStamp, 44);
    EXPECT_EQ(plan.Forecheck, 4);
    EXPECT_EQ(plan.PullTrailingByTwo, 100);
    EXPECT_EQ(plan.LineUsage, (std::array<std::uint8_t, 4>{6, 5, 4, 3}));
    EXPECT_EQ(plan.DefenseRosterCount, 2);
    EXPECT_EQ(plan.UsageStamp, 222);
    EXPECT_EQ(readRecord<GamePlanRecord>(plansFile(dir), 5).GamePlanStamp, 0);

    // The old-era roster size follows the team year.
    EXPECT_EQ(blankLeague({1}, 1940).plans[0].DefenseRosterCount, 0);
    EXPECT_EQ(blankLeague({1}, 1960).plans[0].DefenseRosterCount, 1);
}

TEST(BlankLeague, RefusesAndOverwritesOnlyWhenTold) {
    TempDir tmp;
    EXPECT_THROW(createBlankLeague({"", {1}, 1990, false}), ToolRefused);
    try {
        createBlankLeague({"", {1}, 1990, false});
    } catch (const ToolRefused& e) {
        EXPECT_STREQ(e.what(), "You Must Specify A Folder Name!");
    }

    fs::path dir = tmp / "Old";
    fs::create_directories(dir);
    // Spelled in another case: the new league must replace it, not sit beside it.
    writeFileAtomic(dir / "hkplayer", std::string(3000, 'x'));
    writeFileAtomic(dir / "Notes.txt", std::string_view("mine"));
    try {
        createBlankLeague({dir, {2}, 1990, false});
        FAIL() << "an existing league was overwritten without leave";
    } catch (const ToolRefused& e) {
        EXPECT_NE(std::string(e.what()).find("Already Exists!"), std::string::npos);
    }
    EXPECT_EQ(fileLength(dir / "hkplayer"), 3000u);
    EXPECT_FALSE(fs::exists(findFile(dir, "HKTEAMS")));

    createBlankLeague({dir, {2}, 1990, true});
    EXPECT_EQ(fileLength(dir / "hkplayer"), 0u);
    int playerFiles = 0;
    for (const auto& e : fs::directory_iterator(dir)) {
        std::string name = e.path().filename().string();
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return char(std::tolower(c)); });
        playerFiles += name == "hkplayer" ? 1 : 0;
    }
    EXPECT_EQ(playerFiles, 1);
    EXPECT_EQ(readBytes(dir / "Notes.txt").size(), 4u);

    // A trailing separator still names the folder; only a folder with files
    // in it wants leave to be overwritten.
    EXPECT_NO_THROW(checkNewLeagueFolder(tmp / "Fresh/", false));
    EXPECT_THROW(checkNewLeagueFolder(dir, false), LeagueFolderExists);
    EXPECT_NO_THROW(checkNewLeagueFolder(dir, true));

    // An empty folder is as good as none; no divisions, no teams.
    fs::path empty = tmp / "Empty";
    fs::create_directories(empty);
    LeagueFiles none = createBlankLeague({empty, {}, 1990, false});
    EXPECT_TRUE(std::none_of(none.teams.begin(), none.teams.end(), [](auto& t) { return t.TeamActive == 1; }));
    EXPECT_EQ(fileLength(findFile(empty, "HKTEAMS")), 288u * 1500u);
}

TEST(BlankLeague, PlacesTeamsWithinTheirDivisionsOnly) {
    EXPECT_EQ(placeTeams({12, 1}), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}));
    EXPECT_EQ(placeTeams({0, 2}), (std::vector<int>{13, 14}));
    EXPECT_THROW(placeTeams({13}), ToolRefused);
    EXPECT_THROW(placeTeams(std::vector<int>(25, 1)), ToolRefused);
}

}  // namespace
}  // namespace tallyrink
