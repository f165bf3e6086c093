#include "league/session.h"

#include <gtest/gtest.h>

#include "league/files.h"
#include "support/league_fixture.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::LeagueFixture;
using testing::TempDir;

// A program folder and a data drive of the test's own, never the real home.
struct Machine {
    TempDir program;
    TempDir drive;
    std::vector<std::string> calls;

    SessionOptions options(std::optional<fs::path> league = std::nullopt) const {
        SessionOptions o;
        o.places = {program.path(), drive.path(), drive.path(), {}};
        o.league = std::move(league);
        o.seed = 1;
        return o;
    }

    SessionHooks hooks() {
        SessionHooks h;
        auto note = [this](std::string name) { return [this, name](Session&) { calls.push_back(name); }; };
        h.LoadRecords = note("records");
        h.loadPhraseFile = note("phrases");
        h.startSpeech = note("speech");
        return h;
    }

    [[nodiscard]] fs::path dataRoot() const { return drive / "norvane-data" / "Hockey"; }
    [[nodiscard]] fs::path recentFile() const { return dataRoot() / "Hockey-Recent"; }
};

TEST(StartUp, OnEmptyFoldersGivesTheDefaultLeagueAndDefaults) {
    Machine m;
    Session s(m.options(), m.hooks());
    ASSERT_NO_THROW(s.StartUp());

    EXPECT_EQ(s.LeagueDir(), m.dataRoot() / "Seasons");
    EXPECT_TRUE(fs::is_directory(s.LeagueDir()));
    EXPECT_TRUE(fs::is_directory(m.dataRoot() / "PlayerPhotos"));
    EXPECT_TRUE(fs::exists(m.recentFile()));
    EXPECT_EQ(s.league().ActiveTeamCount(), 0);
    EXPECT_EQ(s.league().PlayerCount(), 0);
    EXPECT_EQ(s.setup().PBPscroll, 5);
    EXPECT_EQ(s.setup().SetupLeagueDir.str(), s.LeagueDir().string());
    EXPECT_EQ(m.calls, (std::vector<std::string>{"phrases", "speech"}));
    EXPECT_EQ(s.photoFolder(), m.dataRoot() / "PlayerPhotos");
}

TEST(StartUp, OpensTheFirstRecentLeagueAndCreatesItWhenGone) {
    Machine m;
    TempDir leagues;
    auto lg = LeagueFixture::make({.teams = 3, .playersPerTeam = 4, .freeAgents = 2});
    lg.addTradedRow(1, 2, 1);
    lg.write(leagues.path());
    fs::create_directories(m.dataRoot());
    writeLines(m.recentFile(), {leagues.path().string() + "//", "/some/other/league"});

    Session s(m.options(), m.hooks());
    s.StartUp();
    EXPECT_EQ(s.LeagueDir(), leagues.path());
    EXPECT_EQ(s.league().ActiveTeamCount(), 3);
    EXPECT_EQ(s.league().PlayerCount(), 14);  // the former-team row isn't in the menu's table

    auto gone = leagues / "moved-away";
    writeLines(m.recentFile(), {gone.string()});
    Session again(m.options());
    again.StartUp();
    EXPECT_EQ(again.LeagueDir(), gone);
    EXPECT_TRUE(fs::is_directory(gone));
}

TEST(StartUp, AShortFirstEntryNamesTheDefaultLeague) {
    Machine m;
    fs::create_directories(m.dataRoot());
    writeLines(m.recentFile(), {"/tmp/ab"});
    Session s(m.options());
    s.StartUp();
    EXPECT_EQ(s.LeagueDir(), m.dataRoot() / "Seasons");
}

TEST(StartUp, ALeagueGivenForTheRunLeavesTheRecentListAlone) {
    Machine m;
    TempDir league;
    LeagueFixture::make({.teams = 2, .playersPerTeam = 1}).write(league.path());
    Session s(m.options(league.path()));
    s.StartUp();
    EXPECT_EQ(s.LeagueDir(), league.path());
    EXPECT_EQ(s.league().ActiveTeamCount(), 2);
    EXPECT_TRUE(readLines(m.recentFile()).empty());
}

TEST(OpenLeague, AFolderThatIsntThereChangesNothing) {
    Machine m;
    TempDir leagues;
    fs::create_directories(m.dataRoot());
    writeLines(m.recentFile(), {leagues.path().string() + "/"});
    Session s(m.options(), m.hooks());
    s.StartUp();
    m.calls.clear();
    auto recentBefore = readBytes(m.recentFile());

    auto missing = leagues / "no-such-league";
    auto message = s.OpenLeague(missing);
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(*message, missing.string() + " is not available!");
    EXPECT_EQ(s.LeagueDir(), leagues.path());
    EXPECT_EQ(readBytes(m.recentFile()), recentBefore);
    EXPECT_FALSE(fs::exists(m.program / "HockeySetup2021.dat"));
    EXPECT_TRUE(m.calls.empty());

    // A plain file is no folder either.
    writeLines(leagues / "a-file", {"x"});
    EXPECT_TRUE(s.OpenLeague(leagues / "a-file").has_value());
}

TEST(OpenLeague, MakesTheFolderTheOpenLeagueFirstInTheList) {
    Machine m;
    TempDir first;
    TempDir second;
    LeagueFixture::make({.teams = 2, .playersPerTeam = 2}).write(second.path());
    fs::create_directories(m.dataRoot());
    writeLines(m.recentFile(), {first.path().string() + "/"});
    Session s(m.options(), m.hooks());
    s.StartUp();
    m.calls.clear();

    ASSERT_FALSE(s.OpenLeague(second.path().string() + "/").has_value());
    EXPECT_EQ(s.LeagueDir(), second.path());
    EXPECT_EQ(readLines(m.recentFile()),
              (std::vector<std::string>{second.path().string() + "/", first.path().string() + "/"}));
    EXPECT_EQ(s.league().ActiveTeamCount(), 2);
    EXPECT_EQ(s.league().PlayerCount(), 4);
    EXPECT_EQ(m.calls, (std::vector<std::string>{"records"}));

    // The set-up file names it, and a new run opens it.
    auto setup = loadSetupFile(m.program / "HockeySetup2021.dat", {});
    EXPECT_EQ(setup.SetupLeagueDir.str(), second.path().string());
    Session next(m.options());
    next.StartUp();
    EXPECT_EQ(next.LeagueDir(), second.path());

    // Opening it again doesn't list it twice.
    ASSERT_FALSE(s.OpenLeague(second.path()).has_value());
    EXPECT_EQ(readLines(m.recentFile()).size(), 2u);
}

TEST(ExitProgram, WritesTheSetupAndClearsTheTables) {
    Machine m;
    TempDir league;
    LeagueFixture::make({.teams = 2, .playersPerTeam = 2}).write(league.path());
    fs::create_directories(m.dataRoot());
    writeLines(m.recentFile(), {league.path().string()});
    Session s(m.options());
    s.StartUp();
    s.setup().TeamColorCheck = 1;
    s.ExitProgram();
    EXPECT_EQ(s.league().PlayerCount(), 0);
    EXPECT_EQ(s.league().ActiveTeamCount(), 0);
    EXPECT_EQ(loadSetupFile(m.program / "HockeySetup2021.dat", {}).TeamColorCheck, 1);
}

}  // namespace
}  // namespace tallyrink
