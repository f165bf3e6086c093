#include "league/team_directory.h"

#include <gtest/gtest.h>

#include "support/team_file.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

TEST(TeamDirectory, FindsActiveTeamsByAnyOfTheirNames) {
    TempDir dir;
    testing::writeTeams(dir.path(), {{1, "Toronto", "Maple Leafs", "TOR"},
                                     {2, "New York", "Rangers", "NYR"},
                                     {3, "New York", "Islanders", "NYI"},
                                     {5, "Montreal", "", ""},
                                     {7, "Boston", "Bruins", "BOS", 2017, false}});
    auto d = TeamDirectory::load(dir.path());
    EXPECT_EQ(d.activeNumbers(), (std::vector<int>{1, 2, 3, 5}));
    EXPECT_EQ(d.find("tor").team, 1);
    EXPECT_EQ(d.find(" TORONTO ").team, 1);
    EXPECT_EQ(d.find("toronto maple leafs").team, 1);
    EXPECT_EQ(d.find("maple leafs").team, 1);
    EXPECT_EQ(d.find("3").team, 3);
    EXPECT_EQ(d.find("islanders").team, 3);
    EXPECT_EQ(d.find("New York Rangers").team, 2);

    EXPECT_TRUE(d.find("new york").ambiguous);
    EXPECT_EQ(d.find("new york").team, 0);
    EXPECT_EQ(d.find("Boston").team, 0);  // not in the league
    EXPECT_EQ(d.find("7").team, 0);
    EXPECT_EQ(d.find("289").team, 0);
    EXPECT_EQ(d.find("").team, 0);

    // Blank fields take what the load step gives them.
    EXPECT_EQ(d.team(5).abbrev, "MON");
    EXPECT_EQ(d.fullName(5), "Montreal");
    EXPECT_EQ(d.find("mon").team, 5);

    EXPECT_EQ(d.displayName(1), "Toronto");
    EXPECT_EQ(d.displayName(2), "New York (NYR)");
}

}  // namespace
}  // namespace tallyrink
