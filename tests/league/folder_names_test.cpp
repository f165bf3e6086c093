// A run's list of the league folder answers as a fresh lookup would.

#include <gtest/gtest.h>

#include <fstream>

#include "league/files.h"
#include "league/folder_names.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

TEST(FolderNames, ResolvesAsFindFileDoes) {
    testing::TempDir dir;
    for (const char* n : {"HKPLAYER", "hkteams", "Sked.skd"}) std::ofstream(dir.path() / n) << "x";
    std::filesystem::create_directory(dir.path() / "Sounds");
    std::ofstream(dir.path() / "Sounds" / "Calls.TXT") << "x";
    FolderNames names(dir.path());
    // Asked again, a name answers from what was kept, still as a fresh lookup
    // would; a name below the folder by either separator too.
    for (int round = 0; round < 2; ++round)
        for (const char* n :
             {"hkplayer", "HKTEAMS", "SKED.SKD", "HkPosting.jnl", "BOX12.BOX", "sounds/calls.txt", "SOUNDS\\CALLS.txt"})
            EXPECT_EQ(names.find(n), findFile(dir.path(), n)) << n << " round " << round;
}

TEST(FolderNames, NameMadeDuringTheRunKeepsItsSpelling) {
    testing::TempDir dir;
    FolderNames names(dir.path());
    EXPECT_EQ(names.find("BOX1.BOX"), dir.path() / "BOX1.BOX");
    std::ofstream(dir.path() / "BOX1.BOX") << "x";
    // Asked in another case later, the file as made is found, not a second one.
    EXPECT_EQ(names.find("box1.box"), dir.path() / "BOX1.BOX");
}

// Callers hold the path a name gives across a whole run of later asks.
TEST(FolderNames, AKeptPathStaysPutAsMoreNamesAreAsked) {
    testing::TempDir dir;
    std::ofstream(dir.path() / "HKTEAMS") << "x";
    FolderNames names(dir.path());
    const std::filesystem::path& teams = names.find("hkteams");
    const std::filesystem::path* where = &teams;
    for (int box = 1; box <= 2000; ++box) names.find("BOX" + std::to_string(box) + ".BOX");
    EXPECT_EQ(&names.find("hkteams"), where);
    EXPECT_EQ(teams, dir.path() / "HKTEAMS");
}

}  // namespace
}  // namespace tallyrink
