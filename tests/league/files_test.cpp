#include <gtest/gtest.h>

#include <fstream>

#include "league/files.h"
#include "league/records.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

void writeRaw(const fs::path& p, std::size_t n, std::uint8_t fill = 0xAB) {
    std::ofstream out(p, std::ios::binary);
    std::vector<char> bytes(n, static_cast<char>(fill));
    out.write(bytes.data(), static_cast<std::streamsize>(n));
}

TEST(RecordCount, RoundingsDifferByFile) {
    EXPECT_EQ(recordCount(4500, 1500, kPlayerRounding), 3u);
    EXPECT_EQ(recordCount(3749, 1500, kPlayerRounding), 2u);  // 2.4993 + 0.5
    EXPECT_EQ(recordCount(3750, 1500, kPlayerRounding), 3u);  // half a record counts
    EXPECT_EQ(recordCount(200 * 7 + 50, 200, kScheduleRounding), 8u);
    EXPECT_EQ(recordCount(200 * 7 + 49, 200, kScheduleRounding), 7u);
    EXPECT_EQ(recordCount(200 * 7 + 99, 200, kScoresRounding), 7u);
    EXPECT_EQ(recordCount(200 * 7 + 100, 200, kScoresRounding), 8u);
    EXPECT_EQ(recordCount(300 * 4 + 30, 300, kDisplayRounding), 5u);
    EXPECT_EQ(recordCount(300 * 4 + 29, 300, kDisplayRounding), 4u);
    EXPECT_EQ(recordCount(0, 1500, kPlayerRounding), 0u);
}

TEST(FindFile, IgnoresCaseAndKeepsNewNamesAsWritten) {
    TempDir dir;
    writeRaw(dir / "HKgameplan", 4);
    fs::create_directories(dir / "Seasons" / "Demo");
    writeRaw(dir / "Seasons" / "Demo" / "Sked.skd", 4);

    EXPECT_EQ(findFile(dir.path(), "HKGAMEPLAN"), dir / "HKgameplan");
    EXPECT_EQ(findFile(dir.path(), "HkGamePlan"), dir / "HKgameplan");
    EXPECT_EQ(findFile(dir.path(), "seasons\\DEMO\\SKED.SKD"), dir.path() / "Seasons" / "Demo" / "Sked.skd");
    EXPECT_EQ(findFile(dir.path(), "seasons/demo/new.txt"), dir.path() / "Seasons" / "Demo" / "new.txt");
    EXPECT_EQ(findFile(dir.path(), "HKPLAYER"), dir / "HKPLAYER");
}

TEST(FindFile, TwoSpellingsOfOneNameResolveTheSameWayEveryTime) {
    TempDir dir;
    writeRaw(dir / "sked.skd", 1);
    writeRaw(dir / "SKED.skd", 2);
    auto first = findFile(dir.path(), "Sked.SKD");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(findFile(dir.path(), "Sked.SKD"), first);
}

TEST(RandomFile, MissingFileIsEmptyAndWritesGrowIt) {
    TempDir dir;
    RandomFile f(dir / "HKPLAYER", 1500);
    EXPECT_EQ(f.count(kPlayerRounding), 0u);
    auto blank = readRecord<PlayerRecord>(f, 1);
    EXPECT_EQ(blank.PlayerId, 0);

    PlayerRecord p{};
    p.PlayerId = 3;
    p.LastName.assign("Vachon");
    writeRecord(f, 3, p);
    EXPECT_EQ(f.length(), 4500u);
    EXPECT_EQ(f.count(kPlayerRounding), 3u);
    EXPECT_EQ(readRecord<PlayerRecord>(f, 1).PlayerId, 0);  // gap reads as never written
    EXPECT_EQ(readRecord<PlayerRecord>(f, 3).LastName.str(), "Vachon");
}

TEST(RandomFile, RecordWriteLeavesTheSlotTailOnDisk) {
    TempDir dir;
    auto path = dir / "HKTEAMS";
    writeRaw(path, 3000, 0x5A);
    RandomFile f(path, 1500);
    auto t = readRecord<TeamRecord>(f, 2);
    t.City.assign("Halden");
    t.SlotTail.fill(0);  // the in-memory tail is not written by a record write
    writeRecord(f, 2, t);
    auto bytes = readBytes(path);
    ASSERT_EQ(bytes.size(), 3000u);
    EXPECT_EQ(bytes[1500 + 2], 'H');
    for (std::size_t i = 1500 + 1479; i < 3000; ++i) ASSERT_EQ(bytes[i], 0x5A) << i;
    for (std::size_t i = 0; i < 1500; ++i) ASSERT_EQ(bytes[i], 0x5A) << i;
}

TEST(RandomFile, WholeRewriteKeepsTailsAndReplacesAtomically) {
    TempDir dir;
    auto path = dir / "HKTEAMS";
    writeRaw(path, 1500 * 2 + 700, 0x11);  // a partial third slot
    RandomFile f(path, 1500);
    auto teams = readRecords<TeamRecord>(f, 3);
    teams[0].TeamActive = 1;
    rewriteRecords(f, teams);
    auto bytes = readBytes(path);
    ASSERT_EQ(bytes.size(), 4500u);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[1499], 0x11);
    EXPECT_EQ(bytes[3000 + 699], 0x11);
    EXPECT_EQ(bytes[3000 + 700], 0);
    // No temporary file is left behind.
    int files = 0;
    for ([[maybe_unused]] auto& e : fs::directory_iterator(dir.path())) ++files;
    EXPECT_EQ(files, 1);
}

TEST(WriteFileAtomic, FailureLeavesTheOldFileWhole) {
    TempDir dir;
    auto path = dir / "HKRULES";
    writeRaw(path, 2000, 0x33);
    EXPECT_THROW(writeFileAtomic(dir / "missing-folder" / "HKRULES", std::string_view("x")), FileError);
    fs::create_directories(dir / "blocker");
    // Renaming a file over a folder fails after the temporary file was written.
    EXPECT_THROW(writeFileAtomic(dir / "blocker", std::string_view("x")), FileError);
    EXPECT_EQ(fileLength(path), 2000u);
    int files = 0;
    for ([[maybe_unused]] auto& e : fs::directory_iterator(dir.path())) ++files;
    EXPECT_EQ(files, 2);
}

TEST(TextFiles, LinesRoundTripAndMissingFileIsCreatedEmpty) {
    TempDir dir;
    auto path = dir / "Hockey-Recent";
    EXPECT_TRUE(readLines(path).empty());
    EXPECT_TRUE(fs::exists(path));
    writeLines(path, {"/a/b", "", "c"});
    EXPECT_EQ(readLines(path), (std::vector<std::string>{"/a/b", "", "c"}));
    appendLine(path, "d");
    EXPECT_EQ(readLines(path).back(), "d");
    writeFileAtomic(path, std::string_view("x\r\ny\r\nz"));
    EXPECT_EQ(readLines(path), (std::vector<std::string>{"x", "y", "z"}));
}

}  // namespace
}  // namespace tallyrink
