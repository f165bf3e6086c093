#include "operations/schedule_generator.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "league/team_directory.h"
#include "support/team_file.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

std::vector<int> numbers(std::initializer_list<std::pair<int, int>> ranges) {
    std::vector<int> out;
    for (auto [first, last] : ranges)
        for (int t = first; t <= last; ++t) out.push_back(t);
    return out;
}

ScheduleRequest request(int games, int divisionGames) {
    ScheduleRequest r;
    r.gamesPerTeam = games;
    r.divisionGames = divisionGames;
    r.startMonth = 10;
    r.startDay = 4;
    r.seasonYear = 2017;
    return r;
}

// What a user checks in a schedule: everyone plays G games, half of them at
// home; no team plays twice on a day; division rivals meet DG times; other
// pairs meet evenly and split their games between both rinks.
void expectBalanced(const std::vector<int>& teams, const ScheduleRequest& req, const GeneratedSchedule& s,
                    bool exactDivisionGames = true) {
    int g = req.gamesPerTeam;
    EXPECT_EQ(s.missingGames, 0);
    ASSERT_EQ(s.games.size(), teams.size() * static_cast<std::size_t>(g / 2));
    std::map<int, int> home;
    std::map<int, int> away;
    std::map<std::pair<int, int>, int> hosted;
    std::set<std::pair<int, int>> busy;
    for (const auto& x : s.games) {
        ++home[x.home];
        ++away[x.visitor];
        ++hosted[{x.home, x.visitor}];
        EXPECT_TRUE(busy.insert({x.slot, x.home}).second) << "team " << x.home << " twice on day " << x.slot;
        EXPECT_TRUE(busy.insert({x.slot, x.visitor}).second) << "team " << x.visitor << " twice on day " << x.slot;
    }
    std::set<int> divisions;
    for (int t : teams) divisions.insert(divisionOfTeam(t));
    bool oneDivision = divisions.size() == 1;
    for (int a : teams) {
        EXPECT_EQ(home[a], g / 2) << "team " << a;
        EXPECT_EQ(away[a], g / 2) << "team " << a;
        int fewest = 1000;
        int most = 0;
        for (int b : teams) {
            if (a == b) continue;
            int ab = hosted[{a, b}];
            int ba = hosted[{b, a}];
            EXPECT_LE(std::abs(ab - ba), 1) << a << " and " << b << " at each other's rinks";
            bool rivals = !oneDivision && divisionOfTeam(a) == divisionOfTeam(b);
            if (rivals && exactDivisionGames) {
                EXPECT_EQ(ab + ba, req.divisionGames) << a << " and " << b;
            }
            if (!rivals) {
                fewest = std::min(fewest, ab + ba);
                most = std::max(most, ab + ba);
            }
        }
        if (most > 0) {
            EXPECT_LE(most - fewest, 1) << "meetings of team " << a;
        }
    }
    // The rows carry the games with the dates of their days.
    auto dates = slotDates(req, s.slots);
    ASSERT_EQ(s.records.size(), s.games.size());
    for (std::size_t k = 0; k < s.games.size(); ++k) {
        const auto& r = s.records[k];
        EXPECT_EQ(r.HomeTeam, s.games[k].home);
        EXPECT_EQ(r.VisitorTeam, s.games[k].visitor);
        EXPECT_EQ(r.Month, dates[static_cast<std::size_t>(s.games[k].slot)].first);
        EXPECT_EQ(r.Day, dates[static_cast<std::size_t>(s.games[k].slot)].second);
        EXPECT_EQ(r.Status.str(), "U");
        EXPECT_EQ(r.Coach[0].str(), "C");
        EXPECT_EQ(r.Year, req.seasonYear);
    }
}

GeneratedSchedule make(const std::vector<int>& teams, const ScheduleRequest& req, std::uint64_t seed) {
    EXPECT_EQ(checkScheduleRequest(teams, req), "");
    Random random(seed);
    return generateSchedule(teams, req, random);
}

TEST(ScheduleGenerator, BalancedForLeaguesOfEveryShape) {
    struct Shape {
        const char* name;
        std::vector<int> teams;
        int games;
        int divisionGames;
    };
    std::vector<Shape> shapes{
        {"six teams, one division", numbers({{1, 6}}), 20, 2},
        {"six teams, all division games", numbers({{1, 6}}), 10, 2},
        {"seven teams, one division", numbers({{1, 7}}), 10, 0},
        {"31 teams in four uneven divisions", numbers({{1, 8}, {13, 20}, {25, 32}, {37, 43}}), 82, 4},
        {"24 teams in two divisions", numbers({{1, 12}, {13, 24}}), 82, 6},
        {"30 teams in six divisions", numbers({{1, 5}, {13, 17}, {25, 29}, {37, 41}, {49, 53}, {61, 65}}), 82, 4},
        {"two teams", {1, 13}, 10, 0},
    };
    for (const auto& shape : shapes) {
        for (std::uint64_t seed : {1u, 2u}) {
            SCOPED_TRACE(::testing::Message() << shape.name << ", seed " << seed);
            auto req = request(shape.games, shape.divisionGames);
            expectBalanced(shape.teams, req, make(shape.teams, req, seed));
        }
    }
}

TEST(ScheduleGenerator, UnevenTwoDivisionLeagueAddsDivisionGamesAndSaysSo) {
    // 8 teams playing 26 games against 7 teams who play 28 against them can't
    // add up: the rest are games inside the larger division.
    auto teams = numbers({{1, 8}, {13, 19}});
    auto req = request(40, 2);
    auto s = make(teams, req, 3);
    expectBalanced(teams, req, s, false);
    EXPECT_EQ(s.report,
              (std::vector<std::string>{"Schedule complete!", "Additional divisional games were added to the schedule.",
                                        "Unbalanced League."}));
    std::map<std::pair<int, int>, int> meetings;
    for (const auto& g : s.games) ++meetings[{std::min(g.home, g.visitor), std::max(g.home, g.visitor)}];
    for (auto [pair, n] : meetings) {
        bool rivals = divisionOfTeam(pair.first) == divisionOfTeam(pair.second);
        if (!rivals) continue;
        EXPECT_GE(n, 2);
        if (pair.first > 12) {
            EXPECT_EQ(n, 2);  // the smaller division plays no extra
        }
    }
}

TEST(ScheduleGenerator, ReportLines) {
    auto even = numbers({{1, 6}, {13, 18}});
    auto req = request(20, 2);
    EXPECT_EQ(make(even, req, 1).report, (std::vector<std::string>{"Schedule complete!"}));
    auto uneven = numbers({{1, 8}, {13, 20}, {25, 32}, {37, 43}});
    EXPECT_EQ(make(uneven, request(82, 4), 1).report,
              (std::vector<std::string>{"Schedule complete!", "Unbalanced League."}));
}

TEST(ScheduleGenerator, TinyOddLeagueGetsTheDaysItNeeds) {
    // Three teams: one team rests every day, so 98 games take 147 days, far
    // beyond the usual G + 10.
    auto teams = numbers({{1, 3}});
    auto req = request(98, 0);
    auto s = make(teams, req, 4);
    expectBalanced(teams, req, s);
    EXPECT_EQ(s.slots, 147);
    EXPECT_FALSE(s.runsPastSeasonEnd);
}

TEST(ScheduleGenerator, SameSeedSameSchedule) {
    auto teams = numbers({{1, 8}, {13, 20}});
    auto req = request(30, 2);
    auto a = make(teams, req, 99);
    auto b = make(teams, req, 99);
    ASSERT_EQ(a.games.size(), b.games.size());
    for (std::size_t k = 0; k < a.games.size(); ++k) {
        EXPECT_EQ(a.games[k].slot, b.games[k].slot);
        EXPECT_EQ(a.games[k].home, b.games[k].home);
        EXPECT_EQ(a.games[k].visitor, b.games[k].visitor);
    }
}

TEST(ScheduleGenerator, DaysStepByThreeInShortSeasonsAndByTwoFromFiftyGames) {
    auto r = request(48, 0);
    r.startMonth = 2;
    r.startDay = 31;  // cut to the 28th
    auto d = slotDates(r, 3);
    EXPECT_EQ(d[1], (std::pair{2, 28}));
    EXPECT_EQ(d[2], (std::pair{3, 3}));
    EXPECT_EQ(d[3], (std::pair{3, 6}));

    r = request(50, 0);
    r.startMonth = 12;
    r.startDay = 30;
    d = slotDates(r, 3);
    EXPECT_EQ(d[2], (std::pair{1, 1}));
    EXPECT_EQ(d[3], (std::pair{1, 3}));

    auto teams = numbers({{1, 4}});
    auto s = make(teams, request(10, 0), 1);
    auto days = slotDates(request(10, 0), s.slots);
    EXPECT_EQ(days[1], (std::pair{10, 4}));
    EXPECT_EQ(days[2], (std::pair{10, 7}));
}

TEST(ScheduleGenerator, RequestsThatCannotMakeASeasonAreRefused) {
    auto six = numbers({{1, 6}});
    EXPECT_EQ(checkScheduleRequest({5}, request(20, 0)), "A minimum of two teams is required to create a schedule!");
    for (int g : {8, 21, 100})
        EXPECT_EQ(checkScheduleRequest(six, request(g, 0)),
                  "Schedules must be an even number of games between 10 and 98.");
    for (int dg : {-2, 3, 22})
        EXPECT_EQ(checkScheduleRequest(six, request(40, dg)),
                  "Divisional games must be zero or an even number between 2 and 20 games.");
    EXPECT_EQ(checkScheduleRequest(six, request(10, 4)),
              "4 games against each of 5 division rivals make 20 games, more than the 10 each team plays.");
    EXPECT_EQ(checkScheduleRequest(numbers({{1, 288}}), request(98, 0)),
              "288 teams playing 98 games each need 14112 games; a schedule holds at most 10000.");
    auto late = request(60, 0);
    late.startMonth = 6;
    late.startDay = 1;
    EXPECT_EQ(checkScheduleRequest(six, late), "A season of 60 games from June 1 would run past the end of August.");
    EXPECT_EQ(checkScheduleRequest(six, request(20, 4)), "");
}

TEST(MakeComputerSchedule, ReplacesTheLeagueScheduleWithUnplayedComputerGames) {
    TempDir dir;
    testing::writeNumberedTeams(dir.path(), numbers({{1, 4}, {13, 16}}));
    testing::writeTeams(dir.path(), {{20, "Gone", "Gone", "GON", 2017, false}});
    // An old, longer schedule, with a played game.
    std::vector<GameRecord> old(200, newGameRecord(1, 2, 9, 1, 2016));
    old[0].Status.assign("P");
    saveNewSchedule(dir.path(), old, TeamDirectory::load(dir.path()).activeTeams());

    auto req = request(14, 2);
    req.seasonYear = 0;  // taken from the teams
    auto outcome = makeComputerSchedule(dir.path(), req, kDefaultScheduleFile, 5);
    ASSERT_TRUE(outcome.ok) << outcome.messages.front();
    EXPECT_EQ(outcome.games, 56u);
    auto s = Schedule::load(dir.path());
    ASSERT_EQ(s.size(), 56u);
    EXPECT_EQ(fileLength(s.path()), 56u * 200);
    for (const auto& g : s.rows()) {
        EXPECT_EQ(statusOf(g), kUnplayed);
        EXPECT_EQ(g.Year, 2017);
        EXPECT_NE(g.HomeTeam, 20);
        EXPECT_NE(g.VisitorTeam, 20);
    }
    ASSERT_TRUE(s.leagueDate());
    EXPECT_EQ(s.leagueDate()->month, 10);
    EXPECT_EQ(s.leagueDate()->day, 4);

    // From plain numbers, as a new league asks for it: a January start is
    // in the season that began the year before.
    ASSERT_TRUE(makeComputerSchedule(dir.path(), 10, 0, 2018, 1, 15, 5).ok);
    EXPECT_EQ(Schedule::load(dir.path()).size(), 40u);
    EXPECT_EQ(Schedule::load(dir.path()).seasonYear(), 2017);

    auto refused = makeComputerSchedule(dir.path(), request(15, 0), kDefaultScheduleFile, 5);
    EXPECT_FALSE(refused.ok);
    EXPECT_EQ(Schedule::load(dir.path()).size(), 40u);
}

}  // namespace
}  // namespace tallyrink
