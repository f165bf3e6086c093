#include "league/places.h"

#include <gtest/gtest.h>

#include "league/files.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

std::vector<std::string> linesOf(const fs::path& p) { return readLines(p); }

TEST(DriveFile, AnUnusableLineIsReplacedByTheFallbackAndWrittenBack) {
    TempDir program;
    TempDir home;
    TempDir other;
    auto file = program / "Norvane-Hockey-Drive";

    // Missing: created, then written with the fallback.
    EXPECT_EQ(readDriveFile(program.path(), home.path()), home.path());
    EXPECT_EQ(linesOf(file), std::vector<std::string>{home.path().string()});

    // Empty, relative, or naming a folder that is gone: same.
    for (const std::string& line : std::vector<std::string>{"", "relative/folder", (other / "gone").string()}) {
        writeLines(file, {line});
        EXPECT_EQ(readDriveFile(program.path(), home.path()), home.path()) << line;
        EXPECT_EQ(linesOf(file), std::vector<std::string>{home.path().string()}) << line;
    }

    // A usable folder is kept, trailing blanks and all later lines ignored.
    writeLines(file, {other.path().string() + "  ", "second line"});
    EXPECT_EQ(readDriveFile(program.path(), home.path()), other.path());
    EXPECT_EQ(linesOf(file).size(), 2u);
}

TEST(DriveFile, FoundWithoutRegardToCase) {
    TempDir program;
    TempDir home;
    TempDir other;
    writeLines(program / "NORVANE-HOCKEY-DRIVE", {other.path().string()});
    EXPECT_EQ(readDriveFile(program.path(), home.path()), other.path());
}

TEST(DriveFile, AProgramFolderThatCantBeWrittenIsNoError) {
    TempDir tmp;
    TempDir home;
    // A "folder" that is a plain file: nothing can be created in it, whoever runs the test.
    writeLines(tmp / "not-a-folder", {"x"});
    EXPECT_EQ(readDriveFile(tmp / "not-a-folder", home.path()), home.path());
}

TEST(Places, ExplicitDataDriveWinsAndLeavesTheDriveFileAlone) {
    TempDir program;
    TempDir home;
    TempDir chosen;
    auto places = resolvePlaces({program.path(), chosen.path(), home.path(), {}});
    EXPECT_EQ(places.ProgramDir, program.path());
    EXPECT_EQ(places.DataDrive, chosen.path());
    EXPECT_EQ(places.dataRoot(), chosen.path() / "norvane-data" / "Hockey");
    EXPECT_FALSE(fs::exists(program / "Norvane-Hockey-Drive"));

    auto fromHome = resolvePlaces({program.path(), {}, home.path(), {}});
    EXPECT_EQ(fromHome.DataDrive, home.path());
    EXPECT_EQ(fromHome.defaultLeagueDir(), (home.path() / "norvane-data/Hockey/Seasons/").string());
}

TEST(Places, ProgramFolderPrefersAnInstalledDataFolderNextToTheExecutable) {
    TempDir install;
    fs::create_directories(install / "bin");
    EXPECT_NE(defaultProgramDir(install / "bin"), install.path() / "share" / "tallyrink");
    fs::create_directories(install / "share" / "tallyrink");
    EXPECT_EQ(defaultProgramDir(install / "bin"), install.path() / "share" / "tallyrink");
}

TEST(Places, PhotoFolderOfALeagueWithItsOwnPhotos) {
    Places places{"/prog", "/home/u"};
    EXPECT_EQ(places.photoFolder("/x/Seasons/Demo", false), fs::path("/home/u/norvane-data/Hockey/PlayerPhotos"));
    EXPECT_EQ(places.photoFolder("/x/Seasons/Demo", true), fs::path("/home/u/norvane-data/Hockey/PlayerPhotos/Demo"));
}

TEST(Places, TheSeasonsFolderItselfIsNoLeague) {
    EXPECT_TRUE(isSeasonsFolder("/home/u/norvane-data/Hockey/Seasons"));
    EXPECT_TRUE(isSeasonsFolder("/home/u/norvane-data/hockey/SEASONS/"));
    EXPECT_TRUE(isSeasonsFolder("D:\\norvane-data\\hockey\\seasons\\"));
    EXPECT_FALSE(isSeasonsFolder("/home/u/norvane-data/Hockey/Seasons/Demo2018"));
    EXPECT_FALSE(isSeasonsFolder("/"));
}

TEST(DataRoot, SharedFoldersAndEditionStampsAreMadeAndRenewed) {
    TempDir drive;
    Places places{drive.path(), drive.path()};
    fs::create_directories(places.dataRoot() / "Rinks");
    writeLines(places.dataRoot() / "Rinks" / "Hockey-Rinks-Edition", {"2019"});
    fs::create_directories(places.dataRoot() / "Sounds");
    writeLines(places.dataRoot() / "Sounds" / "Hockey-Sound-Edition", {"2021", "kept"});

    prepareDataRoot(places, 2021);
    for (auto folder : kSharedFolders) EXPECT_TRUE(fs::is_directory(places.dataRoot() / folder)) << folder;
    for (const auto& stamp : kEditionStampFiles) {
        auto lines = linesOf(places.dataRoot() / stamp.folder / stamp.file);
        ASSERT_FALSE(lines.empty()) << stamp.file;
        EXPECT_EQ(lines.front(), "2021") << stamp.file;
    }
    // A stamp already right isn't rewritten.
    EXPECT_EQ(linesOf(places.dataRoot() / "Sounds" / "Hockey-Sound-Edition").size(), 2u);
}

TEST(DataRoot, AFolderInTheWayIsPassedOver) {
    TempDir drive;
    Places places{drive.path(), drive.path()};
    fs::create_directories(places.dataRoot());
    writeLines(places.dataRoot() / "Arenas", {"a file where a folder belongs"});
    EXPECT_NO_THROW(prepareDataRoot(places, 2021));
    EXPECT_TRUE(fs::is_directory(places.dataRoot() / "Rinks"));
    EXPECT_TRUE(fs::is_regular_file(places.dataRoot() / "Arenas"));
}

}  // namespace
}  // namespace tallyrink
