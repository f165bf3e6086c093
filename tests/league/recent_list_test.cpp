#include "league/recent_list.h"

#include <gtest/gtest.h>

#include "league/files.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

TEST(RecentList, ReadsAtMostThirtyAndCreatesAMissingFile) {
    TempDir dir;
    auto file = dir / "Hockey-Recent";
    EXPECT_TRUE(RecentList::read(file).entries().empty());
    EXPECT_TRUE(fs::exists(file));

    std::vector<std::string> lines;
    for (int i = 0; i < 35; ++i) lines.push_back("/leagues/season-" + std::to_string(i) + "/");
    writeLines(file, lines);
    auto list = RecentList::read(file);
    ASSERT_EQ(list.entries().size(), 30u);
    EXPECT_EQ(list.first(), "/leagues/season-0/");
}

TEST(RecentList, WritingDropsShortEntriesAndRepeatsAndEndsEachWithOneSeparator) {
    TempDir dir;
    auto file = dir / "Hockey-Recent";
    RecentList list({"/leagues/Alpha//", "/x/Season", "/leagues/Alpha", "/x/Seasons1", "", "/leagues/Beta\\"});
    list.write(file);
    // "/x/Season" is 9 characters; "/x/Seasons1" is 11 and stays.
    EXPECT_EQ(readLines(file), (std::vector<std::string>{"/leagues/Alpha/", "/x/Seasons1/", "/leagues/Beta/"}));
    // Memory keeps the list as it was.
    EXPECT_EQ(list.entries().size(), 6u);
}

TEST(RecentList, PushMovesEveryEntryDownAndTheThirtiethFallsOff) {
    std::vector<std::string> entries;
    for (int i = 1; i <= 30; ++i) entries.push_back("/leagues/league" + std::to_string(i));
    RecentList list(entries);
    list.push("/leagues/new-one");
    ASSERT_EQ(list.entries().size(), 30u);
    EXPECT_EQ(list.first(), "/leagues/new-one");
    EXPECT_EQ(list.entries()[1], "/leagues/league1");
    EXPECT_EQ(list.entries().back(), "/leagues/league29");
}

TEST(RecentList, TrailingSeparatorsComeOff) {
    EXPECT_EQ(withoutTrailingSeparator("/leagues/Demo/"), "/leagues/Demo");
    EXPECT_EQ(withoutTrailingSeparator("/leagues/Demo\\\\"), "/leagues/Demo");
    EXPECT_EQ(withoutTrailingSeparator("/"), "/");
}

}  // namespace
}  // namespace tallyrink
