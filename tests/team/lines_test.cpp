#include "team/lines.h"

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "team/lineup_tools.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using Flags = std::array<std::uint8_t, 5>;
constexpr Flags kLW{1, 0, 0, 0, 0};
constexpr Flags kC{0, 1, 0, 0, 0};
constexpr Flags kRW{0, 0, 1, 0, 0};
constexpr Flags kD{0, 0, 0, 1, 0};
constexpr Flags kG{0, 0, 0, 0, 1};

// A team built in memory: the fills work on records and tables only.
struct TeamBuilder {
    BySlot<PlayerRecord> roster{};
    LineTables lines;
    BySlot<double> minutes{};
    int count = 0;

    int add(Flags flags, int gp = 82, double mins = 18, int offense = 0, int defense = 0, int goals = 0,
            int assists = 0) {
        PlayerRecord& p = roster[std::size_t(count)];
        p.PlayerId = std::int16_t(count + 1);
        p.TeamId = 1;
        p.PositionFlags = flags;
        p.LastName.assign(fmt::format("P{}", count + 1));
        p.RatingOffense = std::uint8_t(offense);
        p.RatingDefense = std::uint8_t(defense);
        StatLine& s = statLine(p, StatLineIndex::Real);
        s.GP = std::uint8_t(gp);
        s.Toi = std::int32_t(gp * mins * 60);
        s.Goals = std::uint8_t(goals);
        s.Assists = std::int16_t(assists);
        if (flags == kG) {
            s.Saves = std::int16_t(gp * 27);
            s.GoalsAllowed = std::int16_t(gp * 3);
        }
        minutes[std::size_t(count)] = mins;
        return count++;
    }

    // A roster of so many goalies, defensemen and forwards (centres, left
    // and right wings in turn), with ratings falling down the list.
    static TeamBuilder of(int goalies, int defense, int forwards) {
        TeamBuilder b;
        for (int i = 0; i < goalies; ++i) b.add(kG, 60 - 20 * i, 59, 0, 0);
        for (int i = 0; i < defense; ++i) b.add(kD, 80, 24 - i, 50 - 3 * i, 70 - 4 * i);
        const Flags kinds[] = {kC, kLW, kRW};
        for (int i = 0; i < forwards; ++i) b.add(kinds[i % 3], 80, 19 - i * 0.5, 80 - 4 * i, 50 - 2 * i);
        return b;
    }

    LineupTeam team() {
        LineupTeam t;
        t.roster = &roster;
        t.lines = &lines;
        t.minutes = minutes;
        for (std::size_t s = 0; s < roster.size(); ++s) {
            t.candidate[s] = roster[s].PlayerId > 0;
            t.ratings[s] = lineupRatings(roster[s], minutes[s], 91);
        }
        return t;
    }

    BySlot<std::string> names() const {
        BySlot<std::string> n;
        for (std::size_t s = 0; s < roster.size(); ++s) n[s] = roster[s].LastName.str();
        return n;
    }

    std::vector<std::string> fillAll() {
        LineupTeam t = team();
        HkAutofillDepth(t);
        HkAutofillLines(t);
        return completeLines(t, names());
    }
};

constexpr std::size_t kEvenC = 2, kEvenLW = 0, kEvenD = 3;

TEST(DepthCharts, EqualScoresKeepTheEarlierSlot) {
    TeamBuilder b;
    int first = b.add(kC, 82, 18, 60, 40);
    int second = b.add(kC, 82, 18, 60, 40);
    LineupTeam t = b.team();
    FillForwardDepth(t);
    EXPECT_EQ(b.roster[std::size_t(first)].DepthEven[kEvenC], 10);
    EXPECT_EQ(b.roster[std::size_t(second)].DepthEven[kEvenC], 9);
}

TEST(DepthCharts, AGoalieIsRankedInGoalOnly) {
    TeamBuilder b = TeamBuilder::of(2, 6, 12);
    b.fillAll();
    for (int g = 0; g < 2; ++g) {
        const PlayerRecord& p = b.roster[std::size_t(g)];
        EXPECT_EQ(p.DepthGoalie, 10 - g);  // the one of more games first
        EXPECT_EQ(p.DepthEven, (std::array<std::uint8_t, 4>{}));
        EXPECT_EQ(p.DepthPowerPlay, (std::array<std::uint8_t, 4>{}));
        EXPECT_EQ(p.DepthPenaltyKill, (std::array<std::uint8_t, 3>{}));
        EXPECT_EQ(p.DepthExtraAttacker, 0);
        EXPECT_EQ(p.DepthShootout, 0);
        for (int line = 1; line <= kLineSets; ++line) EXPECT_FALSE(b.lines.onLine(line, g));
    }
}

// Under 18 minutes a score loses 8% a minute, under 30 games 1% a game:
// 17 minutes (x 0.92) falls behind 24 games (x 0.94).
TEST(DepthCharts, MinutesAndGamesCorrectTheScore) {
    TeamBuilder b;
    int shortMinutes = b.add(kD, 82, 17, 40, 60);
    int fewGames = b.add(kD, 24, 20, 40, 60);
    int both = b.add(kD, 24, 17, 40, 60);
    LineupTeam t = b.team();
    FillDefenseDepth(t);
    EXPECT_EQ(b.roster[std::size_t(fewGames)].DepthEven[kEvenD], 10);
    EXPECT_EQ(b.roster[std::size_t(shortMinutes)].DepthEven[kEvenD], 9);
    EXPECT_EQ(b.roster[std::size_t(both)].DepthEven[kEvenD], 8);
}

// Without stored ratings the charts follow the real season: the centre who
// played and scored most is the first centre.
TEST(DepthCharts, UnratedTeamFollowsItsRealLine) {
    TeamBuilder b;
    int depth = b.add(kC, 70, 10, 0, 0, 3, 4);
    int star = b.add(kC, 80, 20, 0, 0, 35, 45);
    int middle = b.add(kC, 80, 15, 0, 0, 12, 18);
    b.add(kLW, 80, 18, 0, 0, 20, 20);
    b.add(kRW, 80, 18, 0, 0, 20, 20);
    LineupTeam t = b.team();
    EXPECT_TRUE(t.ratings[std::size_t(star)].standIn);
    HkAutofillDepth(t);
    HkAutofillLines(t);
    EXPECT_EQ(b.roster[std::size_t(star)].DepthEven[kEvenC], 10);
    EXPECT_EQ(b.roster[std::size_t(middle)].DepthEven[kEvenC], 9);
    EXPECT_EQ(b.roster[std::size_t(depth)].DepthEven[kEvenC], 8);
    EXPECT_EQ(b.lines.holderOf(1, ForwardRole::Center), star);
    EXPECT_EQ(b.lines.holderOf(7, ForwardRole::Center), star);  // and the first power play
}

TEST(Lines, ADefensemanWithAForwardFlagPlaysDefense) {
    TeamBuilder b = TeamBuilder::of(1, 5, 12);
    int both = b.add({1, 0, 0, 1, 0}, 82, 25, 99, 99);  // the best of all, LW and D
    b.fillAll();
    for (int line = 1; line <= 4; ++line) EXPECT_EQ(b.lines.lineRole(line, both), ForwardRole::None) << line;
    EXPECT_NE(b.lines.pairRole(1, both), PairRole::None);
}

TEST(Lines, APartlyHandMadeLineupIsCompleted) {
    TeamBuilder b = TeamBuilder::of(1, 6, 12);
    int best = 7;     // the first centre of the list
    int chosen = 13;  // a lesser centre the coach put on line 1
    ASSERT_TRUE(hasFlag(b.roster[std::size_t(chosen)], Flag::Center));
    b.lines.setLineRole(1, chosen, ForwardRole::Center);
    b.fillAll();
    EXPECT_EQ(b.lines.holderOf(1, ForwardRole::Center), chosen);
    EXPECT_EQ(b.lines.holderOf(2, ForwardRole::Center), best);
    EXPECT_GE(b.lines.holderOf(1, ForwardRole::LeftWing), 0);
    EXPECT_GE(b.lines.holderOf(1, ForwardRole::RightWing), 0);
}

TEST(Lines, APreferredSideKeepsAPlayerOffTheOtherSide) {
    TeamBuilder b = TeamBuilder::of(1, 6, 12);
    int lw = 8;  // the first left wing
    ASSERT_TRUE(hasFlag(b.roster[std::size_t(lw)], Flag::LeftWing));
    b.roster[std::size_t(lw)].PreferredSide = 2;
    b.fillAll();
    EXPECT_NE(b.lines.holderOf(1, ForwardRole::LeftWing), lw);
    EXPECT_LT(b.roster[std::size_t(lw)].DepthEven[kEvenLW], b.roster[17].DepthEven[kEvenLW]);  // below every left wing
}

// Filling around a coach's hand-made roles: a man placed on a line of a
// group is passed over on the group's other lines but not on another
// group's; the first even pair alone takes the best men whatever pair they
// already hold.
TEST(Lines, FillsPassOverMenPlacedInTheSameGroup) {
    TeamBuilder b = TeamBuilder::of(1, 6, 12);
    const int bestD = 1, secondD = 2, thirdD = 3;
    const int bestC = 7, bestLW = 8, nextC = 10;
    b.lines.setLineRole(2, bestC, ForwardRole::Center);
    b.lines.setLineRole(8, bestLW, ForwardRole::LeftWing);
    b.lines.setPairRole(2, bestD, PairRole::Left);
    LineupTeam t = b.team();
    HkAutofillDepth(t);
    FillForwards(t);
    FillDefense(t);

    EXPECT_EQ(b.lines.holderOf(1, ForwardRole::Center), nextC);
    EXPECT_EQ(b.lines.holderOf(2, ForwardRole::Center), bestC);
    EXPECT_EQ(b.lines.holderOf(7, ForwardRole::Center), bestC);  // even lines don't hold back the power play
    EXPECT_NE(b.lines.holderOf(7, ForwardRole::LeftWing), bestLW);
    EXPECT_EQ(b.lines.holderOf(8, ForwardRole::LeftWing), bestLW);
    for (int line = 1; line <= 4; ++line) {
        std::set<int> forwards;
        for (auto role : {ForwardRole::Center, ForwardRole::LeftWing, ForwardRole::RightWing})
            forwards.insert(b.lines.holderOf(line, role));
        for (int other = line + 1; other <= 4; ++other)
            for (auto role : {ForwardRole::Center, ForwardRole::LeftWing, ForwardRole::RightWing})
                EXPECT_FALSE(forwards.count(b.lines.holderOf(other, role))) << line << " " << other;
    }

    EXPECT_EQ(b.lines.holderOf(1, PairRole::Left), bestD);
    EXPECT_EQ(b.lines.holderOf(1, PairRole::Right), secondD);
    EXPECT_EQ(b.lines.holderOf(2, PairRole::Left), bestD);
    EXPECT_EQ(b.lines.holderOf(2, PairRole::Right), thirdD);
    for (auto role : {PairRole::Left, PairRole::Right}) {
        int d = b.lines.holderOf(3, role);
        EXPECT_GT(d, thirdD);
        EXPECT_NE(b.lines.holderOf(7, role), -1);
    }
}

TEST(Lines, ExtraAttackerAndShootoutRanksRunFromFifteen) {
    TeamBuilder b = TeamBuilder::of(1, 6, 12);
    b.fillAll();
    std::multiset<int> ranks;
    for (const auto& p : b.roster)
        if (p.DepthExtraAttacker) ranks.insert(p.DepthExtraAttacker);
    EXPECT_EQ(ranks, (std::multiset<int>{9, 10, 11, 12, 13, 14, 15}));
    EXPECT_EQ(b.roster[7].DepthExtraAttacker, 15);  // the highest offense

    LineupTeam t = b.team();
    OnIce ice;
    b.roster[7].NeverUseAsExtraAttacker = 1;
    int xa = FindExtraAttacker(t, ice, 0);
    EXPECT_NE(xa, 7);
    EXPECT_EQ(b.roster[std::size_t(xa)].DepthExtraAttacker, 14);
    EXPECT_EQ(ice[IcePos::GoalieOrExtra], xa);
}

// ---- Short rosters on the ice ---------------------------------------------------

struct Shape {
    int goalies, defense, forwards;
};

std::vector<std::pair<IceRequest, std::string>> everySituation() {
    std::vector<std::pair<IceRequest, std::string>> out;
    for (int u = 1; u <= 4; ++u) out.push_back({{.own = 5, .opponent = 5, .unit = u}, fmt::format("5-5 line {}", u)});
    for (auto [own, opp] : {std::pair{5, 4}, {5, 3}, {4, 5}, {3, 5}, {4, 4}, {4, 3}, {3, 3}, {3, 4}})
        for (int u = 1; u <= 2; ++u)
            out.push_back({{.own = own, .opponent = opp, .unit = u}, fmt::format("{}-{} unit {}", own, opp, u)});
    out.push_back({{.own = 5, .opponent = 5, .goaliePulled = true}, "extra attacker"});
    out.push_back({{.own = 3, .opponent = 3, .threeSkaterFormation = 1}, "3-3 two wings"});
    return out;
}

void expectLegal(const LineupTeam& t, const IceRequest& req, const IcePlacement& ice) {
    LineupCheck check = CheckLineup(ice.onIce, req.own, req.goaliePulled, req.threeSkaterFormation);
    EXPECT_TRUE(check.LineupValid) << check.fault;
    std::set<int> seen;
    for (int s : ice.onIce.slot) {
        if (s == kNoSlot) continue;
        EXPECT_TRUE(seen.insert(s).second) << "slot " << s << " twice";
        EXPECT_TRUE(t.candidate[std::size_t(s)]);
    }
    if (!req.goaliePulled) {
        EXPECT_EQ(ice.onIce[IcePos::GoalieOrExtra], ice.goalie);
    }
}

class ShortRoster : public ::testing::TestWithParam<Shape> {};

TEST_P(ShortRoster, EverySituationGetsALegalUnit) {
    Shape shape = GetParam();
    TeamBuilder b = TeamBuilder::of(shape.goalies, shape.defense, shape.forwards);
    auto notes = b.fillAll();
    LineupTeam t = b.team();
    for (const auto& [req, name] : everySituation()) {
        SCOPED_TRACE(name);
        IcePlacement ice = PutLinesOnIce(t, req);
        expectLegal(t, req, ice);
        if (shape.goalies == 0 && !req.goaliePulled) {
            EXPECT_EQ(ice.source[std::size_t(IcePos::GoalieOrExtra)], IceSource::EmergencyGoalie);
            EXPECT_FALSE(isGoalie(b.roster[std::size_t(ice.goalie)]));
        }
    }
    if (shape.defense < 6) {
        bool forwardOnDefense = false;
        for (const auto& n : notes) forwardOnDefense = forwardOnDefense || n.find("a forward") != std::string::npos;
        EXPECT_TRUE(forwardOnDefense);
    }
    // The even pairs the team uses are full.
    for (int pair = 1; pair <= 3; ++pair) {
        EXPECT_GE(b.lines.holderOf(pair, PairRole::Left), 0) << pair;
        EXPECT_GE(b.lines.holderOf(pair, PairRole::Right), 0) << pair;
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, ShortRoster,
                         ::testing::Values(Shape{0, 6, 12}, Shape{2, 3, 12}, Shape{1, 3, 5}, Shape{1, 0, 8},
                                           Shape{2, 7, 14}));

TEST(OnIce, TooFewSkatersFailTheCheck) {
    TeamBuilder b = TeamBuilder::of(1, 2, 2);
    b.fillAll();
    LineupTeam t = b.team();
    IcePlacement ice = PutLinesOnIce(t, {});
    LineupCheck check = CheckLineup(ice.onIce, 5, false);
    EXPECT_FALSE(check.LineupValid);
    EXPECT_EQ(check.fault, "Right Wing");  // a centre and a left wing for three places
    // Four men still make a legal four-on-four.
    IcePlacement four = PutLinesOnIce(t, {.own = 4, .opponent = 4});
    EXPECT_TRUE(CheckLineup(four.onIce, 4, false).LineupValid);
}

TEST(OnIce, OnlyFitPlayersPlay) {
    TeamBuilder b = TeamBuilder::of(2, 6, 12);
    b.fillAll();
    int starter = 0;
    int firstCenter = b.lines.holderOf(1, ForwardRole::Center);
    b.roster[std::size_t(firstCenter)].InjuryReturnMonth = 5;
    b.roster[0].InactiveFlag = 99;
    BySlot<std::int16_t> dressed{};
    BySlot<int> energy{};
    energy.fill(100);
    energy[9] = 70;
    LineupTeam t = b.team();
    t.candidate = BuildFitList(b.roster, 1, dressed, &energy);
    EXPECT_FALSE(t.candidate[std::size_t(firstCenter)]);
    EXPECT_FALSE(t.candidate[9]);
    IcePlacement ice = PutLinesOnIce(t, {});
    EXPECT_NE(ice.goalie, starter);
    EXPECT_EQ(ice.goalie, 1);
    EXPECT_NE(ice.onIce[IcePos::Center], firstCenter);
    EXPECT_TRUE(hasFlag(b.roster[std::size_t(ice.onIce[IcePos::Center])], Flag::Center));
    expectLegal(t, {}, ice);

    b.roster[5].TeamId = 2;  // traded away
    dressed[6] = 1;          // out today
    BySlot<bool> fit = BuildFitList(b.roster, 1, dressed);
    EXPECT_FALSE(fit[5]);
    EXPECT_FALSE(fit[6]);
    EXPECT_TRUE(fit[7]);
    EXPECT_FALSE(fit[40]);  // an empty slot
}

TEST(OnIce, CheckLineupNamesTheFirstFault) {
    OnIce ice;
    for (std::size_t p = 0; p < kIcePositions; ++p) ice.slot[p] = int(p);
    EXPECT_TRUE(CheckLineup(ice, 5, false).LineupValid);
    ice[IcePos::RightWing] = kNoSlot;
    EXPECT_EQ(CheckLineup(ice, 5, false).fault, "Right Wing");
    // Four skaters: the centre may be open, the wings not.
    ice[IcePos::RightWing] = 2;
    ice[IcePos::Center] = kNoSlot;
    EXPECT_TRUE(CheckLineup(ice, 4, false).LineupValid);
    // Three: a centre and two defensemen, or two wings and the left defenseman.
    ice[IcePos::Center] = 1;
    ice[IcePos::LeftWing] = kNoSlot;
    ice[IcePos::RightWing] = kNoSlot;
    EXPECT_TRUE(CheckLineup(ice, 3, false, 2).LineupValid);
    EXPECT_EQ(CheckLineup(ice, 3, false, 1).fault, "Left Wing");
    ice[IcePos::LeftWing] = 0;
    ice[IcePos::RightWing] = 2;
    ice[IcePos::GoalieOrExtra] = kNoSlot;
    EXPECT_EQ(CheckLineup(ice, 5, false).fault, "You are missing a goalie!");
    EXPECT_EQ(CheckLineup(ice, 5, true).fault, "You are missing an extra attacker!");
    ice[IcePos::GoalieOrExtra] = 3;  // the left defenseman twice
    EXPECT_EQ(CheckLineup(ice, 5, true).fault, "Duplicate Player");
    EXPECT_TRUE(CheckLineup(ice, 5, true, 2, false).LineupValid);  // not checked off screen

    LineupMessage m = lineupInvalidMessage("Halden", "Center");
    EXPECT_EQ(m.title, "Halden Lineup Is Invalid!");
    EXPECT_EQ(m.text, "Halden lineup is invalid!\n\nCenter");
}

TEST(Situations, LinesByManpower) {
    auto range = [](int own, int opp) {
        LineRange r = situationLines(own, opp);
        return std::pair{r.first, r.last};
    };
    EXPECT_EQ(range(5, 5), (std::pair{1, 6}));
    EXPECT_EQ(range(5, 4), (std::pair{7, 10}));
    EXPECT_EQ(range(5, 3), (std::pair{7, 10}));
    EXPECT_EQ(range(4, 5), (std::pair{11, 14}));
    EXPECT_EQ(range(3, 5), (std::pair{15, 16}));
    EXPECT_EQ(range(3, 4), (std::pair{15, 16}));
    EXPECT_EQ(range(4, 3), (std::pair{17, 19}));
    EXPECT_EQ(range(4, 4), (std::pair{20, 21}));
    EXPECT_EQ(range(3, 3), (std::pair{22, 23}));
    // Every stand-in chain ends at a line the fills make.
    const std::set<int> filled = {1, 2, 3, 4, 7, 8, 11, 12};
    for (int line = 1; line <= kLineSets; ++line) {
        int l = line, hops = 0;
        while (fallbackLine(l) != 0 && hops < 10) l = fallbackLine(l), ++hops;
        EXPECT_LT(hops, 10) << line;
        EXPECT_TRUE(filled.count(l)) << line << " ends at " << l;
    }
}

TEST(Situations, StoredLinesRoundTrip) {
    PlayerRecord p;
    p.LineRoleStored[0] = 2;
    p.LineRoleStored[6] = 7;  // not a role: dropped
    p.LineFlagStored[10] = 1;
    p.ExtraLineRole[1] = 3;
    LineTables lines;
    loadStoredLines(p, 4, lines);
    EXPECT_EQ(lines.lineRole(1, 4), ForwardRole::Center);
    EXPECT_EQ(lines.lineRole(7, 4), ForwardRole::None);
    EXPECT_EQ(lines.pairRole(11, 4), PairRole::Left);
    EXPECT_EQ(lines.lineRole(23, 4), ForwardRole::RightWing);
    PlayerRecord q;
    storeLiveLines(lines, 4, q);
    EXPECT_EQ(q.LineRoleStored[0], 2);
    EXPECT_EQ(q.LineRoleStored[6], 0);
    EXPECT_EQ(q.LineFlagStored[10], 1);
    EXPECT_EQ(q.ExtraLineRole[1], 3);
}

}  // namespace
}  // namespace tallyrink
