#include "operations/new_league.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <numeric>
#include <set>

#include "league/files.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

// The era table the program ships.
EraTargets eraOf(int year) { return eraTargets(test::shippedEra(), year); }

using testing::TempDir;

const StatLine& real(const PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }
bool goalie(const PlayerRecord& p) { return p.PositionFlags[4] == 1; }
bool defenceman(const PlayerRecord& p) { return p.PositionFlags[3] == 1 && !goalie(p); }
bool forward(const PlayerRecord& p) { return !goalie(p) && !defenceman(p); }

// One league a year, drawn once for all the tests of a run.
const GeneratedLeague& leagueOf(int year, int teams = 24) {
    static std::map<std::pair<int, int>, GeneratedLeague> cache;
    auto key = std::make_pair(year, teams);
    auto it = cache.find(key);
    if (it == cache.end()) {
        NewLeagueOptions options;
        options.teams = teams;
        options.year = year;
        options.seed = 20240 + std::uint64_t(year);
        it = cache.emplace(key, generateLeague(options, eraOf(year))).first;
    }
    return it->second;
}

std::vector<const PlayerRecord*> playersOf(const GeneratedLeague& league, int team) {
    std::vector<const PlayerRecord*> out;
    for (const auto& p : league.files.players)
        if (p.TeamId == team) out.push_back(&p);
    return out;
}

void expectNear(double measured, double wanted, double share, const char* what, int year) {
    EXPECT_NEAR(measured, wanted, std::abs(wanted) * share) << what << " in " << year;
}

class NewLeagueEra : public ::testing::TestWithParam<int> {};

TEST_P(NewLeagueEra, LeagueTotalsPerTeamGameMatchTheEra) {
    int year = GetParam();
    const GeneratedLeague& league = leagueOf(year);
    EraTargets era = eraOf(year);
    EraTargets m = measureLeague(league).measured;
    EXPECT_EQ(m.games, era.games);
    expectNear(m.goalsPerTeamGame, era.goalsPerTeamGame, 0.01, "goals", year);
    expectNear(m.assistsPerGoal, era.assistsPerGoal, 0.01, "assists per goal", year);
    expectNear(m.pimPerTeamGame, era.pimPerTeamGame, 0.02, "penalty minutes", year);
    expectNear(m.powerPlayPct, era.powerPlayPct, 0.02, "power-play %", year);
    expectNear(m.savePct, era.savePct, 0.005, "save %", year);
    expectNear(m.shotsPerTeamGame, targetShotsPerTeamGame(era), 0.03, "shots", year);
    expectNear(m.fightsPerGame, era.fightsPerGame, 0.03, "fights", year);
}

TEST_P(NewLeagueEra, RostersCanDressFourLinesAndThreePairs) {
    const GeneratedLeague& league = leagueOf(GetParam());
    std::set<std::string> fullNames;
    int people = 0;
    for (const TeamSeason& s : league.seasons) {
        auto roster = playersOf(league, s.team);
        const TeamRecord& team = league.files.teams[std::size_t(s.team - 1)];
        EXPECT_GE(roster.size(), 23u);
        EXPECT_LE(roster.size(), 26u);
        int goalies = 0, defence = 0, centres = 0, leftWings = 0, rightWings = 0;
        std::set<std::string> numbers;
        for (const PlayerRecord* p : roster) {
            goalies += goalie(*p);
            defence += defenceman(*p);
            centres += forward(*p) && p->PositionFlags[1];
            leftWings += forward(*p) && p->PositionFlags[0];
            rightWings += forward(*p) && p->PositionFlags[2];
            EXPECT_TRUE(numbers.insert(p->UniformNumber.str()).second) << "two players wear " << p->UniformNumber.str();
            EXPECT_TRUE(fullNames.insert(p->FirstName.str() + " " + p->LastName.str()).second);
            EXPECT_EQ(p->ShortName.str(), p->LastName.str());
            EXPECT_EQ(p->PlayerYear, league.year);
            EXPECT_EQ(p->PlayerType.str(), "P");
            EXPECT_GE(real(*p).GP, 1);
            EXPECT_TRUE(std::find(team.Roster.begin(), team.Roster.end(), p->PlayerId) != team.Roster.end());
            ++people;
        }
        EXPECT_GE(goalies, 2);
        EXPECT_GE(defence, 6);
        EXPECT_GE(centres, 4);
        EXPECT_GE(leftWings, 4);
        EXPECT_GE(rightWings, 4);
        EXPECT_EQ(int(std::count_if(team.Roster.begin(), team.Roster.end(), [](auto id) { return id > 0; })),
                  int(roster.size()));
    }
    EXPECT_EQ(people, int(league.files.players.size()));
}

TEST_P(NewLeagueEra, TeamTotalsAreTheSumOfTheirPlayers) {
    const GeneratedLeague& league = leagueOf(GetParam());
    long goalsFor = 0, goalsAgainst = 0, wins = 0, lossesAndOvertime = 0, ppFor = 0, ppAgainst = 0, plusMinus = 0;
    for (const TeamSeason& s : league.seasons) {
        const TeamRecord& team = league.files.teams[std::size_t(s.team - 1)];
        EXPECT_EQ(team.RealWins + team.RealLosses + team.RealTies + team.RealOvertimeLosses, s.games);
        EXPECT_EQ(team.RealWins, s.wins);
        long goals = 0, assists = 0, gwg = 0, emptyNet = 0, shots = 0, pim = 0, ppg = 0, fights = 0;
        long goalieGoals = 0, faced = 0, starts = 0, goalieWins = 0, goalieLosses = 0, goalieTies = 0, goalieOtl = 0;
        for (const PlayerRecord* p : playersOf(league, s.team)) {
            const StatLine& r = real(*p);
            goals += r.Goals;
            assists += r.Assists;
            gwg += r.GWG;
            emptyNet += r.EmptyNetGoals;
            shots += r.Sog;
            pim += r.Pim;
            ppg += r.PPG;
            fights += p->Fights[0];
            plusMinus += r.PlusMinus;
            goalieGoals += r.GoalsAllowed;
            faced += r.GoalsAllowed + r.Saves;
            if (goalie(*p)) {
                starts += r.GS;
                goalieWins += r.GoalieWins;
                goalieLosses += r.GoalieLosses;
                goalieTies += r.GoalieTies;
                goalieOtl += r.GoalieOvertimeLosses;
                EXPECT_LE(r.GoalieWins + r.GoalieLosses + r.GoalieTies + r.GoalieOvertimeLosses, r.GP);
                EXPECT_LE(r.Shutouts, r.GoalieWins + r.GoalieTies);
                EXPECT_LE(r.GoaliePenaltyShotGoals, r.GoaliePenaltyShotsFaced);
            }
        }
        EXPECT_EQ(goals, s.goalsFor);
        EXPECT_EQ(assists, s.assists);
        EXPECT_EQ(shots, s.shotsFor);
        EXPECT_EQ(pim, s.pim());
        EXPECT_EQ(ppg, s.powerPlayGoalsFor);
        EXPECT_EQ(fights, s.fights);
        EXPECT_EQ(emptyNet, s.emptyNetGoalsFor);
        EXPECT_EQ(gwg, std::min(s.wins - s.shootoutWins, s.goalsFor));
        EXPECT_EQ(goalieGoals + s.emptyNetGoalsAgainst, s.goalsAgainst);
        EXPECT_EQ(faced, s.shotsAgainst);
        EXPECT_EQ(starts, s.games);
        EXPECT_EQ(goalieWins, s.wins);
        EXPECT_EQ(goalieLosses, s.losses);
        EXPECT_EQ(goalieTies, s.ties);
        EXPECT_EQ(goalieOtl, s.overtimeLosses);
        goalsFor += s.goalsFor;
        goalsAgainst += s.goalsAgainst;
        wins += s.wins;
        lossesAndOvertime += s.losses + s.overtimeLosses;
        ppFor += s.powerPlayGoalsFor;
        ppAgainst += s.powerPlayGoalsAgainst;
    }
    // What one team scores another gives up.
    EXPECT_EQ(goalsFor, goalsAgainst);
    EXPECT_EQ(wins, lossesAndOvertime);
    EXPECT_EQ(ppFor, ppAgainst);
    EXPECT_EQ(plusMinus, 0);
}

TEST_P(NewLeagueEra, EveryLineHangsTogether) {
    const GeneratedLeague& league = leagueOf(GetParam());
    for (const PlayerRecord& p : league.files.players) {
        const StatLine& r = real(p);
        SCOPED_TRACE(p.FirstName.str() + " " + p.LastName.str());
        EXPECT_LE(r.PPG + r.SHG, r.Goals);
        EXPECT_LE(r.GWG, r.Goals);
        EXPECT_LE(r.EmptyNetGoals, r.Goals);
        EXPECT_LE(r.PenaltyShotGoals, r.PenaltyShotAttempts);
        EXPECT_LE(r.PenaltyShotGoals, r.Goals);
        EXPECT_LE(r.PPA + r.SHA, r.Assists);
        EXPECT_LE(r.Goals, r.Sog);
        EXPECT_LE(r.GS, r.GP);
        EXPECT_LE(r.ToiPP + r.ToiSH, r.Toi);
        EXPECT_LE(r.Toi, r.GP * 3900);
        EXPECT_GT(r.Toi, 0);
        EXPECT_EQ(r.Pim, 2 * p.RealMinors + 5 * p.RealMajors +
                             10 * (p.RealMisconducts + p.RealGameMisconducts + p.RealMatchPenalties));
        EXPECT_LE(p.Fights[0], p.RealMajors);
        EXPECT_EQ(p.RealPenaltyStamp, 99);
        EXPECT_EQ(p.AvailEndMonth, 12);
        if (goalie(p)) {
            EXPECT_EQ(r.Goals, 0);
            EXPECT_EQ(r.Sog, 0);
        } else {
            EXPECT_EQ(r.Saves + r.GoalsAllowed, 0);
        }
        if (defenceman(p)) {
            EXPECT_EQ(r.FaceoffsWon + r.FaceoffsLost, 0);
        }
    }
}

TEST_P(NewLeagueEra, PlayersDifferAsRealOnesDo) {
    const GeneratedLeague& league = leagueOf(GetParam());
    long defenceGoals = 0, goals = 0;
    int enforcers = 0, callUps = 0;
    double topOverMedian = 0;
    for (const TeamSeason& s : league.seasons) {
        auto roster = playersOf(league, s.team);
        std::vector<int> forwardGoals;
        std::vector<const PlayerRecord*> goalies;
        for (const PlayerRecord* p : roster) {
            const StatLine& r = real(*p);
            goals += r.Goals;
            if (defenceman(*p)) defenceGoals += r.Goals;
            if (forward(*p) && r.GP >= s.games / 2) forwardGoals.push_back(r.Goals);
            if (goalie(*p)) goalies.push_back(p);
            callUps += r.GP <= s.games / 5 ? 1 : 0;
            if (p->Enforcer == 1) {
                ++enforcers;
                // Penalty minutes a minute played far above the era's.
                EXPECT_GT(r.Pim * 60.0 / (r.Toi / 60.0), 2.0 * league.era.pimPerTeamGame / 5.0);
            }
        }
        std::sort(forwardGoals.begin(), forwardGoals.end());
        ASSERT_GE(forwardGoals.size(), 8u);
        topOverMedian += double(forwardGoals.back()) / std::max(1, forwardGoals[forwardGoals.size() / 2]);
        // The starter plays most, the backup some.
        std::sort(goalies.begin(), goalies.end(), [](auto a, auto b) { return real(*a).GS > real(*b).GS; });
        EXPECT_GT(real(*goalies[0]).GS, real(*goalies[1]).GS);
        EXPECT_GT(real(*goalies[1]).GS, 0);
    }
    // A real team's best scorer has two to three times the goals of its
    // middling forward; defencemen score about one goal in seven.
    topOverMedian /= double(league.seasons.size());
    EXPECT_GT(topOverMedian, 1.8);
    EXPECT_LT(topOverMedian, 4.5);
    double share = double(defenceGoals) / double(goals);
    EXPECT_GT(share, 0.08);
    EXPECT_LT(share, 0.25);
    EXPECT_GT(callUps, int(league.seasons.size()));
    if (league.era.fightsPerGame >= 0.8) {
        EXPECT_GE(enforcers, int(league.seasons.size()) / 2);
    }
}

INSTANTIATE_TEST_SUITE_P(Eras, NewLeagueEra, ::testing::Values(1981, 2017, 1955));

TEST(NewLeague, TeamsHaveUniqueSafeCodesAndTheirOwnIdentity) {
    const GeneratedLeague& league = leagueOf(2010, 288);
    std::set<std::string> codes, cities;
    int live = 0;
    for (const TeamRecord& t : league.files.teams) {
        ASSERT_EQ(t.TeamActive, 1);
        ++live;
        std::string code = t.Abbrev.str();
        ASSERT_EQ(code.size(), 3u);
        EXPECT_TRUE(std::all_of(code.begin(), code.end(), [](unsigned char c) { return std::isupper(c); })) << code;
        EXPECT_TRUE(codes.insert(code).second) << "two teams are " << code;
        EXPECT_TRUE(cities.insert(t.City.str()).second) << t.City.str();
        EXPECT_FALSE(t.Nickname.blank());
        EXPECT_FALSE(t.Arena.blank());
        EXPECT_NE(t.ForeColor, t.BackColor);
        EXPECT_NE(t.RoadForeColor, t.RoadBackColor);
        EXPECT_EQ(t.TeamType.str(), "P");
        EXPECT_EQ(t.TeamYear, 2010);
        EXPECT_EQ(t.CreateStampA, 37);
        EXPECT_EQ(t.RealRecordStamp, 199);
    }
    EXPECT_EQ(live, 288);
    EXPECT_EQ(league.divisionNames.size(), 24u);
}

TEST(NewLeague, DivisionsSuitTheTeamCount) {
    EXPECT_EQ(divisionLayout(24), (std::vector<int>{6, 6, 6, 6}));
    EXPECT_EQ(divisionLayout(31), (std::vector<int>{8, 8, 8, 7}));
    EXPECT_EQ(divisionLayout(2), (std::vector<int>{2}));
    EXPECT_EQ(divisionLayout(8), (std::vector<int>{4, 4}));
    EXPECT_EQ(divisionLayout(40), (std::vector<int>{7, 7, 7, 7, 6, 6}));
    EXPECT_EQ(divisionLayout(288), std::vector<int>(24, 12));
    EXPECT_EQ(divisionLayout(100).size(), 13u);
    EXPECT_EQ(divisionLayout(30, 3), (std::vector<int>{10, 10, 10}));
    EXPECT_THROW(divisionLayout(1), ToolRefused);
    EXPECT_THROW(divisionLayout(289), ToolRefused);
    EXPECT_THROW(divisionLayout(30, 2), ToolRefused);  // fifteen to a division
    EXPECT_THROW(divisionLayout(3, 4), ToolRefused);
    EXPECT_EQ(leagueOf(2017).conferenceNames.size(), 2u);
}

TEST(NewLeague, SameSeedSameFilesAnotherSeedAnotherLeague) {
    TempDir tmp;
    auto make = [&](const std::string& name, std::uint64_t seed) {
        NewLeagueOptions options;
        options.teams = 6;
        options.year = 1994;
        options.seed = seed;
        fs::path dir = tmp / name;
        GeneratedLeague league = generateLeague(options, eraOf(options.year));
        writeLeagueFolder(dir, league.files);
        return dir;
    };
    fs::path a = make("A", 5), b = make("B", 5), c = make("C", 6);
    for (const char* file : {"HKPLAYER", "HKTEAMS", "HKgameplan", "HKRULES", "SCORES"})
        EXPECT_EQ(readBytes(a / file), readBytes(b / file)) << file;
    EXPECT_NE(readBytes(a / "HKPLAYER"), readBytes(c / "HKPLAYER"));
    EXPECT_NE(readBytes(a / "HKTEAMS"), readBytes(c / "HKTEAMS"));

    // What was written reads back as drawn, and the plans wait for the
    // first load to fill lines and depth charts.
    NewLeagueOptions options;
    options.teams = 6;
    options.year = 1994;
    options.seed = 5;
    GeneratedLeague league = generateLeague(options, eraOf(1994));
    RandomFile players(a / "HKPLAYER", 1500);
    auto back = readRecords<PlayerRecord>(players, players.count(kPlayerRounding));
    ASSERT_EQ(back.size(), league.files.players.size());
    for (std::size_t i = 0; i < back.size(); ++i) {
        EXPECT_EQ(back[i].PlayerId, int(i + 1));
        EXPECT_EQ(codec::toSlot(back[i]), codec::toSlot(league.files.players[i]));
    }
    auto plan = readRecord<GamePlanRecord>(RandomFile(a / "HKgameplan", 32000), 1);
    EXPECT_EQ(plan.GamePlanTeam, 1);
    EXPECT_EQ(plan.GamePlanStamp, 0);
    EXPECT_EQ(plan.Forecheck, 4);
}

TEST(EraTargets, BuiltInFiguresAndRepairs) {
    EraTargets e2017 = eraOf(2017);
    EXPECT_EQ(e2017.games, 82);
    EXPECT_NEAR(e2017.goalsPerTeamGame, 2.93, 0.001);
    EXPECT_NEAR(e2017.savePct, 90.79, 0.01);
    EXPECT_NEAR(e2017.pimPerTeamGame, 8.64, 0.01);
    EXPECT_EQ(eraOf(1994).games, 48);
    EXPECT_EQ(eraOf(2012).games, 48);
    // No season in 2004: the one before stands in. Outside the table, the nearest.
    EXPECT_EQ(eraOf(2004).goalsPerTeamGame, eraOf(2003).goalsPerTeamGame);
    EXPECT_EQ(eraOf(1850).goalsPerTeamGame, eraOf(1917).goalsPerTeamGame);
    EXPECT_EQ(eraOf(2040).goalsPerTeamGame, eraOf(2017).goalsPerTeamGame);
    // Figures the season didn't keep are estimated in a sensible range.
    EraTargets e1981 = eraOf(1981);
    EXPECT_EQ(e1981.shotsPerTeamGame, 0);
    EXPECT_GT(e1981.savePct, 86.0);
    EXPECT_LT(e1981.savePct, 89.0);
    EXPECT_GT(targetShotsPerTeamGame(e1981), 28.0);
    EXPECT_LT(targetShotsPerTeamGame(e1981), 34.0);
    EXPECT_GT(eraOf(1950).powerPlayPct, 10.0);

    EraTargets broken;
    broken.games = 0;
    broken.savePct = 120;
    broken.assistsPerGoal = std::nan("");
    broken.goalsPerTeamGame = 3.5;
    EraTargets fixed = sanitizedEra(broken, 1990);
    EXPECT_EQ(fixed.games, EraTargets{}.games);
    EXPECT_EQ(fixed.savePct, EraTargets{}.savePct);
    EXPECT_EQ(fixed.assistsPerGoal, EraTargets{}.assistsPerGoal);
    EXPECT_EQ(fixed.goalsPerTeamGame, 3.5);
}

}  // namespace
}  // namespace tallyrink
