#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <string>

#include "league/files.h"
#include "league/records.h"
#include "operations/csv_table.h"
#include "operations/season_checks.h"
#include "operations/season_data.h"
#include "operations/season_import.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

// A season of four teams in two conferences and six games: Tim Trader goes
// from Boston to San Jose, the goalie Gil Wanderer from San Jose to
// Anaheim. Sam Shooter has no tracking rows, Al Anaheim no per-player
// totals row. All totals agree with each other as in the real files.
const std::map<std::string, std::string> kFixture = {
    {"teams.csv",
     "team,tmID_databank,name,conf,div,GP,W,L,OTL,SoW,GF,GA,PIM,BenchMinor,PPG,SHGF,shots_for,hits,giveaways,"
     "takeaways\n"
     "BOS,BOS,Boston Bruins,EC,AT,3,3,0,0,0,7,3,20,2,2,0,20,30,10,11\n"
     "TOR,TOR,Toronto Maple Leafs,EC,AT,3,1,1,1,0,9,8,17,0,1,0,21,25,9,8\n"
     "ANA,AND,Anaheim Ducks,WC,PC,3,2,1,0,1,7,5,8,2,1,0,12,40,7,6\n"
     "SJS,SJS,San Jose Sharks,WC,PC,3,0,2,1,0,4,11,2,0,0,0,13,20,8,5\n"},
    {"team_names.csv", "team,city,nickname\nTOR,Toronto,Maple Leafs\n"},
    {"skaters_official.csv",
     "playerID,firstName,lastName,pos,shootCatch,height_in,weight_lb,age_feb1_2018,stint,team,GP,G,A,PIM,"
     "PlusMinus,PPG,PPA,SHG,SHA,GWG,SOG\n"
     "alphaze01,Zed,Alpha,C,L,73,200,25,1,BOS,3,5,4,12,3,2,1,0,0,2,15\n"
     "tradeti01,Tim,Trader,R,R,70,180,30,1,BOS,2,2,1,4,1,0,0,0,0,1,5\n"
     "goalgu01,Gus,Goalie,G,L,75,210,28,1,BOS,3,0,1,2,0,0,0,0,0,0,0\n"
     "defenda01,Dan,Defense,D,L,76,220,33,1,TOR,3,9,3,17,-1,1,0,0,0,1,20\n"
     "tendeto01,Tom,Tender,G,L,74,190,27,1,TOR,3,0,0,0,0,0,0,0,0,0,0\n"
     "shootsa01,Sam,Shooter,R,R,71,185,22,1,SJS,3,3,2,0,-2,0,0,0,0,0,10\n"
     "tradeti01,Tim,Trader,R,R,70,180,30,2,SJS,1,1,2,2,0,0,0,0,0,0,3\n"
     "wandegi01,Gil,Wanderer,G,L,72,180,31,1,SJS,1,0,0,0,0,0,0,0,0,0,0\n"
     "secondsi01,Sid,Second,G,R,73,190,24,1,SJS,2,0,0,0,0,0,0,0,0,0,0\n"
     "anaheal01,Al,Anaheim,L,L,72,195,29,1,ANA,3,6,5,6,2,1,2,0,0,1,12\n"
     "keepeac01,Ace,Keeper,G,L,77,230,26,1,ANA,3,0,0,0,0,0,0,0,0,0,0\n"
     "wandegi01,Gil,Wanderer,G,L,72,180,31,2,ANA,1,0,0,0,0,0,0,0,0,0,0\n"},
    {"goalies_official.csv",
     "playerID,firstName,lastName,shootCatch,height_in,weight_lb,age_feb1_2018,stint,team,GP,Min,W,L,OTL,ENG,SHO,"
     "GA,SA,Saves\n"
     "goalgu01,Gus,Goalie,L,75,210,28,1,BOS,3,182,3,0,0,0,1,3,60,57\n"
     "tendeto01,Tom,Tender,L,74,190,27,1,TOR,3,185,1,1,1,1,0,6,70,64\n"
     "wandegi01,Gil,Wanderer,L,72,180,31,1,SJS,1,62,0,0,1,0,0,2,30,28\n"
     "secondsi01,Sid,Second,R,73,190,24,1,SJS,2,120,0,2,0,0,0,9,50,41\n"
     "keepeac01,Ace,Keeper,L,77,230,26,1,ANA,3,165,2,1,0,1,0,4,40,36\n"
     "wandegi01,Gil,Wanderer,L,72,180,31,2,ANA,1,20,0,0,0,0,0,0,5,5\n"},
    // Game 2 starts before game 1 on the same date; game 4 went to a shootout.
    {"schedule_results.csv",
     "game_id,date,start_utc,away,home,away_goals,home_goals,decided_in,winner,venue\n"
     "1,2017-10-05,2017-10-05T23:00:00Z,TOR,BOS,2,3,REG,home,Garden\n"
     "2,2017-10-05,2017-10-05T02:00:00Z,SJS,ANA,1,4,REG,home,Pond\n"
     "3,2017-11-10,2017-11-11T03:00:00Z,BOS,SJS,2,1,OT,away,Tank\n"
     "4,2017-12-01,2017-12-02T00:00:00Z,ANA,TOR,3,2,SO,away,\"Rink, The\"\n"
     "5,2018-01-15,2018-01-16T03:00:00Z,TOR,SJS,5,2,REG,away,Tank\n"
     "6,2018-01-20,2018-01-21T00:00:00Z,ANA,BOS,0,2,REG,home,Garden\n"},
    {"goalie_games.csv",
     "game_id,date,playerID,team,toi_sec\n"
     "1,2017-10-05,goalgu01,BOS,3600\n1,2017-10-05,tendeto01,TOR,3600\n"
     "2,2017-10-05,secondsi01,SJS,3600\n2,2017-10-05,keepeac01,ANA,3600\n"
     "3,2017-11-10,goalgu01,BOS,3720\n3,2017-11-10,wandegi01,SJS,3720\n"
     "4,2017-12-01,keepeac01,ANA,3900\n4,2017-12-01,tendeto01,TOR,3900\n"
     "5,2018-01-15,tendeto01,TOR,3600\n5,2018-01-15,secondsi01,SJS,3600\n"
     "6,2018-01-20,goalgu01,BOS,3600\n"
     "6,2018-01-20,keepeac01,ANA,2400\n6,2018-01-20,wandegi01,ANA,1200\n"},
    {"team_games.csv",
     "game_id,date,team,head_coach\n"
     "1,2017-10-05,BOS,Old Coach\n1,2017-10-05,TOR,Leaf Coach\n2,2017-10-05,SJS,Shark Coach\n"
     "2,2017-10-05,ANA,Duck Coach\n3,2017-11-10,BOS,New Coach\n6,2018-01-20,BOS,New Coach\n"},
    {"skaters_tracking_by_situation.csv",
     "playerID,situation,toi_sec,shifts,missedShots,penalties,PIM,takeaways,giveaways,hits,blocks,FOW,FOL\n"
     "alphaze01,all,3900,70,5,6,12,4,3,1,1,30,25\n"
     "alphaze01,5on4,400,10,0,0,0,0,0,0,0,0,0\n"
     "alphaze01,4on5,100,5,0,0,0,0,0,0,0,0,0\n"
     "tradeti01,all,3100,60,6,3,6,3,6,99,99,99,99\n"
     "tradeti01,5on4,300,9,0,0,0,0,0,0,0,0,0\n"
     "tradeti01,4on5,150,4,0,0,0,0,0,0,0,0,0\n"
     "defenda01,all,4500,80,2,1,5,1,2,8,9,0,0\n"
     "anaheal01,all,3333,66,7,3,6,2,2,5,4,3,2\n"},
    {"skaters_hockeyref_totals.csv",
     "hrefID,playerID,TOI_min,BLK,HIT,FOW,FOL\n"
     "alphaze01,alphaze01,65,2,3,31,26\n"
     "tradeti01,tradeti01,50,3,9,10,5\n"
     "defenda01,defenda01,75,10,8,,\n"
     "shootsa01,shootsa01,40,1,2,0,0\n"},
};

void writeFixture(const fs::path& dir, const std::map<std::string, std::string>& files = kFixture) {
    fs::create_directories(dir);
    for (const auto& [name, text] : files) std::ofstream(dir / name, std::ios::binary) << text;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

std::string fileText(const fs::path& path) {
    auto bytes = readBytes(path);
    return {bytes.begin(), bytes.end()};
}

struct Imported {
    TempDir tmp;
    SeasonData data;
    ImportedLeague league;
    fs::path dir;
    std::vector<PlayerRecord> players;
    std::vector<TeamRecord> teams;

    explicit Imported(const std::map<std::string, std::string>& files = kFixture) {
        writeFixture(tmp / "season", files);
        data = readSeasonData(tmp / "season");
        league = buildLeague(data);
        dir = tmp / "league";
        writeLeague(league, dir, false);
        RandomFile pf(dir / kPlayerFile, 1500);
        players = readRecords<PlayerRecord>(pf, pf.count(kPlayerRounding));
        teams = readRecords<TeamRecord>(RandomFile(dir / kTeamFile, 1500), kMaxTeams);
    }

    // Records of a player, in the order of their player numbers.
    std::vector<const PlayerRecord*> stints(const std::string& last) const {
        std::vector<const PlayerRecord*> out;
        for (const auto& p : players)
            if (p.LastName.str() == last) out.push_back(&p);
        return out;
    }
    const PlayerRecord& only(const std::string& last) const {
        auto s = stints(last);
        EXPECT_EQ(s.size(), 1u) << last;
        return *s.at(0);
    }
    const TeamRecord& team(int number) const { return teams.at(static_cast<std::size_t>(number - 1)); }
};

const StatLine& real(const PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }

struct Window {
    int startMonth, startDay, endMonth, endDay;
    bool operator==(const Window&) const = default;
};
Window window(const PlayerRecord& p) { return {p.AvailStartMonth, p.AvailStartDay, p.AvailEndMonth, p.AvailEndDay}; }

TEST(ImportSeason, TeamsStandInTheirDivisionBlocksWithTheirRealRecord) {
    Imported im;
    EXPECT_EQ(im.league.names.conferences, (std::vector<std::string>{"Eastern", "Western"}));
    EXPECT_EQ(im.league.names.divisions, (std::vector<std::string>{"Atlantic", "Pacific"}));
    EXPECT_EQ(teamNumber(im.league, "BOS"), 1);
    EXPECT_EQ(teamNumber(im.league, "TOR"), 2);
    EXPECT_EQ(teamNumber(im.league, "ANA"), 13);
    EXPECT_EQ(teamNumber(im.league, "SJS"), 14);
    EXPECT_EQ(im.team(3).TeamActive, 0);
    EXPECT_EQ(std::count_if(im.teams.begin(), im.teams.end(), [](auto& t) { return t.TeamActive == 1; }), 4);
    EXPECT_EQ(fileLength(im.dir / kTeamFile), 288u * 1500u);
    EXPECT_EQ(fileLength(im.dir / kGamePlanFile), 14u * 32000u);

    const TeamRecord& tor = im.team(2);
    EXPECT_EQ(tor.City.str(), "Toronto");  // from team_names.csv
    EXPECT_EQ(tor.Nickname.str(), "Maple Leafs");
    EXPECT_EQ(im.team(14).City.str(), "San Jose");  // the full name split before its last word
    EXPECT_EQ(im.team(14).Nickname.str(), "Sharks");
    EXPECT_EQ(tor.Abbrev.str(), "TOR");
    EXPECT_EQ(tor.TeamYear, 2017);
    EXPECT_EQ(tor.TeamType.str(), "P");
    EXPECT_EQ(tor.RealRecordStamp, 199);
    EXPECT_EQ(std::make_tuple(tor.RealWins, tor.RealLosses, tor.RealTies, tor.RealOvertimeLosses),
              std::make_tuple(1, 1, 0, 1));
    EXPECT_EQ(tor.Arena.str(), "Rink, The");
    EXPECT_EQ(im.team(1).Arena.str(), "Garden");
    EXPECT_EQ(im.team(1).CoachName.str(), "New Coach");  // the coach of the last game
    EXPECT_EQ(im.team(1).CoachNameStamp, 99);

    const StatLine& line = im.team(1).TeamRealLine;
    EXPECT_EQ(line.GP, 3);
    EXPECT_EQ(line.Goals, 7);
    EXPECT_EQ(line.PlusMinus, 4);
    EXPECT_EQ(line.Pim, 20);
    EXPECT_EQ(line.GoalsAllowed, 3);

    // Forwards first, by games played, then defense, then goalies.
    std::vector<std::string> roster;
    for (auto id : im.team(1).Roster)
        if (id != 0) roster.push_back(im.players.at(static_cast<std::size_t>(id - 1)).LastName.str());
    EXPECT_EQ(roster, (std::vector<std::string>{"Alpha", "Trader", "Goalie"}));

    auto plan = readRecord<GamePlanRecord>(RandomFile(im.dir / kGamePlanFile, 32000), 13);
    EXPECT_EQ(plan.GamePlanTeam, 13);
    EXPECT_EQ(readRecord<GamePlanRecord>(RandomFile(im.dir / kGamePlanFile, 32000), 12).GamePlanTeam, 0);
}

TEST(ImportSeason, PlayerRecordsCarryBioAndRealLine) {
    Imported im;
    ASSERT_EQ(im.players.size(), 12u);
    for (std::size_t i = 0; i < im.players.size(); ++i) EXPECT_EQ(im.players[i].PlayerId, static_cast<int>(i) + 1);

    const PlayerRecord& zed = im.only("Alpha");
    EXPECT_EQ(zed.TeamId, 1);
    EXPECT_EQ(zed.FirstName.str(), "Zed");
    EXPECT_EQ(zed.ShortName.str(), "Alpha");
    EXPECT_EQ(zed.PlayerYear, 2017);
    EXPECT_EQ(zed.Age, 25);
    EXPECT_EQ(zed.HandedOrClass.str(), "L");
    EXPECT_EQ(zed.PositionFlags, (std::array<std::uint8_t, 5>{0, 1, 0, 0, 0}));
    EXPECT_EQ(std::make_tuple(zed.HeightFeet, zed.HeightInches, zed.Weight), std::make_tuple(6, 1, 200));
    EXPECT_EQ(zed.PlayerType.str(), "P");
    EXPECT_EQ(zed.UniformNumber.str(), "");
    EXPECT_EQ(window(zed), (Window{1, 1, 12, 31}));  // all season
    const StatLine& r = real(zed);
    EXPECT_EQ(std::make_tuple(r.GP, r.Goals, r.Assists, r.Pim, r.PlusMinus), std::make_tuple(3, 5, 4, 12, 3));
    EXPECT_EQ(std::make_tuple(r.PPG, r.PPA, r.GWG, r.Sog), std::make_tuple(2, 1, 2, 15));
    EXPECT_EQ(r.Toi, 65 * 60);  // the totals file's minutes, not the tracking seconds
    EXPECT_EQ(std::make_tuple(r.ToiPP, r.ToiSH, r.Shifts, r.MissedShots), std::make_tuple(400, 100, 70, 5));
    EXPECT_EQ(std::make_tuple(r.Hits, r.Blocks, r.FaceoffsWon, r.FaceoffsLost), std::make_tuple(3, 2, 31, 26));
    EXPECT_EQ(std::make_tuple(r.Takeaways, r.Giveaways), std::make_tuple(4, 3));

    // Missing rows of one file fall back on the other, or leave 0.
    const StatLine& al = real(im.only("Anaheim"));
    EXPECT_EQ(std::make_tuple(al.Toi, al.Hits, al.FaceoffsWon), std::make_tuple(3333, 5, 3));
    const StatLine& sam = real(im.only("Shooter"));
    EXPECT_EQ(std::make_tuple(sam.Toi, sam.Shifts, sam.ToiPP), std::make_tuple(40 * 60, 0, 0));
    EXPECT_EQ(real(im.only("Defense")).FaceoffsWon, 0);  // an empty cell counts as 0

    // Penalty counts: penalties and minutes of the tracking file, the
    // official minutes it lacks as misconducts.
    const PlayerRecord& dan = im.only("Defense");
    EXPECT_EQ(dan.RealPenaltyStamp, 99);
    EXPECT_EQ(std::make_tuple(dan.RealMinors, dan.RealMajors, dan.RealMisconducts), std::make_tuple(0, 1, 1));
    EXPECT_EQ(std::make_tuple(zed.RealMinors, zed.RealMajors, zed.RealMisconducts), std::make_tuple(6, 0, 0));
    EXPECT_EQ(im.only("Goalie").RealMinors, 1);  // PIM 2 / 2
}

TEST(ImportSeason, TradedSkaterIsOneRecordPerStintWithTotalsSplitByGames) {
    Imported im;
    auto tim = im.stints("Trader");
    ASSERT_EQ(tim.size(), 2u);
    const PlayerRecord& bos = *tim[0];
    const PlayerRecord& sjs = *tim[1];
    // Both stints keep their team number and stand on their team's roster,
    // so each team dresses him for the part of the season he was there.
    EXPECT_EQ(bos.TeamId, 1);
    EXPECT_EQ(sjs.TeamId, 14);
    auto onRoster = [&](const PlayerRecord& p) {
        const auto& roster = im.team(p.TeamId).Roster;
        return std::find(roster.begin(), roster.end(), p.PlayerId) != roster.end();
    };
    EXPECT_TRUE(onRoster(bos));
    EXPECT_TRUE(onRoster(sjs));
    EXPECT_EQ(bos.OriginalTeam.str(), "BOS");
    EXPECT_EQ(sjs.OriginalTeam.str(), "BOS");
    EXPECT_EQ(sjs.OriginalTeamStamp, 22);

    // Per-stint scoring from the official rows.
    EXPECT_EQ(std::make_tuple(real(bos).GP, real(bos).Goals, real(bos).Pim), std::make_tuple(2, 2, 4));
    EXPECT_EQ(std::make_tuple(real(sjs).GP, real(sjs).Goals, real(sjs).Pim), std::make_tuple(1, 1, 2));
    // Season totals 2 : 1 by games, the parts adding up to the total.
    EXPECT_EQ(real(bos).Toi, 2000);
    EXPECT_EQ(real(sjs).Toi, 1000);
    EXPECT_EQ(std::make_tuple(real(bos).Shifts, real(sjs).Shifts), std::make_tuple(40, 20));
    EXPECT_EQ(std::make_tuple(real(bos).ToiPP, real(sjs).ToiPP), std::make_tuple(200, 100));
    EXPECT_EQ(std::make_tuple(real(bos).FaceoffsWon, real(sjs).FaceoffsWon), std::make_tuple(7, 3));    // 6.67, 3.33
    EXPECT_EQ(std::make_tuple(real(bos).FaceoffsLost, real(sjs).FaceoffsLost), std::make_tuple(3, 2));  // 3.33, 1.67
    EXPECT_EQ(std::make_tuple(real(bos).Hits, real(sjs).Hits), std::make_tuple(6, 3));
    // Penalty counts follow the minutes of each stint: 3 minors, 4 : 2.
    EXPECT_EQ(std::make_tuple(bos.RealMinors, sjs.RealMinors), std::make_tuple(2, 1));

    // Boston's stint ends at its second game (Nov 10, season month 3); San
    // Jose's starts at its first game after that (Jan 15, month 5).
    EXPECT_EQ(window(bos), (Window{1, 1, 3, 10}));
    EXPECT_EQ(window(sjs), (Window{5, 15, 12, 31}));
}

TEST(ImportSeason, GoalieStintsFollowTheirGamesAndStarts) {
    Imported im;
    auto gil = im.stints("Wanderer");
    ASSERT_EQ(gil.size(), 2u);
    if (gil[0]->TeamId != 14) std::swap(gil[0], gil[1]);
    ASSERT_EQ(std::make_tuple(gil[0]->TeamId, gil[1]->TeamId), std::make_tuple(14, 13));
    // One game for San Jose, but it was San Jose's second (Nov 10): the
    // per-game lines, not the games played, end the stint; Anaheim's next
    // game is Dec 1.
    EXPECT_EQ(window(*gil[0]), (Window{1, 1, 3, 10}));
    EXPECT_EQ(window(*gil[1]), (Window{4, 1, 12, 31}));
    EXPECT_EQ(gil[0]->PositionFlags, (std::array<std::uint8_t, 5>{0, 0, 0, 0, 1}));

    const StatLine& sj = real(*gil[0]);
    EXPECT_EQ(std::make_tuple(sj.GP, sj.GS, sj.Toi), std::make_tuple(1, 1, 3720));  // seconds of the game lines
    EXPECT_EQ(std::make_tuple(sj.GoalsAllowed, sj.Saves, sj.GoalieOvertimeLosses), std::make_tuple(2, 28, 1));
    // In a game of two goalies the one with more time started.
    EXPECT_EQ(real(*gil[1]).GS, 0);
    const StatLine& ace = real(im.only("Keeper"));
    EXPECT_EQ(std::make_tuple(ace.GP, ace.GS, ace.Toi), std::make_tuple(3, 3, 9900));
    EXPECT_EQ(std::make_tuple(ace.GoalieWins, ace.GoalieLosses, ace.GoalsAllowed), std::make_tuple(2, 1, 4));
    const StatLine& gus = real(im.only("Goalie"));
    EXPECT_EQ(std::make_tuple(gus.Shutouts, gus.GoalieWins, gus.Assists, gus.Pim), std::make_tuple(1, 3, 1, 2));
}

TEST(ImportSeason, ScheduleIsUnplayedInDateOrderAndResultsLieBeside) {
    Imported im;
    RandomFile sked(im.dir / kDefaultScheduleFile, 200);
    auto games = readRecords<GameRecord>(sked, sked.count(kScheduleRounding));
    ASSERT_EQ(games.size(), 6u);
    // Game 2 started earlier on the same date.
    EXPECT_EQ(std::make_tuple(games[0].VisitorTeam, games[0].HomeTeam), std::make_tuple(14, 13));
    EXPECT_EQ(std::make_tuple(games[1].VisitorTeam, games[1].HomeTeam), std::make_tuple(2, 1));
    for (const auto& g : games) {
        EXPECT_EQ(g.Status.str(), "U");
        EXPECT_EQ(g.Coach[0].str(), "C");
        EXPECT_EQ(g.Coach[1].str(), "C");
        EXPECT_EQ(g.Year, 2017);  // one year for the season, the one it starts in
        EXPECT_EQ(g.ScoreOf[0] + g.ScoreOf[1], 0);
    }
    EXPECT_EQ(std::make_tuple(games[0].Month, games[0].Day), std::make_tuple(10, 5));
    EXPECT_EQ(std::make_tuple(games[5].Month, games[5].Day), std::make_tuple(1, 20));

    auto lines = readLines(im.dir / kRealResultsFile);
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[0], "date,visitor,home,visitor_team,home_team,visitor_goals,home_goals,decided_in");
    EXPECT_EQ(lines[1], "2017-10-05,SJS,ANA,14,13,1,4,REG");
    EXPECT_EQ(lines[4], "2017-12-01,ANA,TOR,13,2,3,2,SO");
    EXPECT_EQ(lines[6], "2018-01-20,ANA,BOS,13,1,0,2,REG");
}

TEST(ImportSeason, ChecksPassOnConsistentDataAndNameTheTeamOtherwise) {
    Imported im;
    auto checks = checkLeague(im.dir, im.data);
    EXPECT_GE(checks.size(), 10u);
    for (const auto& c : checks) EXPECT_TRUE(c.ok) << c.name << ": " << c.detail;

    auto files = kFixture;
    files["teams.csv"] = replaced(files["teams.csv"], "BOS,BOS,Boston Bruins,EC,AT,3,3,0,0,0,7,3,20",
                                  "BOS,BOS,Boston Bruins,EC,AT,3,3,0,0,0,8,3,21");
    Imported off(files);
    std::map<std::string, SeasonCheck> byName;
    for (auto& c : checkLeague(off.dir, off.data)) byName[c.name] = c;
    EXPECT_FALSE(byName["goals"].ok);
    EXPECT_NE(byName["goals"].detail.find("BOS players 7 + shootout wins 0 = 7, GF 8"), std::string::npos)
        << byName["goals"].detail;
    EXPECT_FALSE(byName["penalty minutes"].ok);
    EXPECT_FALSE(byName["scores"].ok);
    EXPECT_TRUE(byName["assists"].ok);

    // What the data lacked is said, with the counts of this season.
    auto said = [&](const std::string& part) {
        return std::any_of(im.league.notes.begin(), im.league.notes.end(),
                           [&](const std::string& n) { return n.find(part) != std::string::npos; });
    };
    EXPECT_TRUE(said("uniform numbers"));
    EXPECT_TRUE(said("fights: not in the data; taken as the player's majors"));
    EXPECT_TRUE(said("traded players: 2 players in 4 stints"));
    EXPECT_TRUE(said("1 skaters without tracking rows"));
    EXPECT_TRUE(said("1 skaters without a per-player totals row"));
}

TEST(ImportSeason, BadInputNamesTheFileLineAndColumn) {
    auto failure = [](const std::map<std::string, std::string>& files) -> std::string {
        TempDir tmp;
        writeFixture(tmp / "season", files);
        try {
            readSeasonData(tmp / "season");
        } catch (const FileError& e) {
            return e.what();
        }
        return "no error";
    };
    auto with = [](const std::string& file, const std::string& from, const std::string& to) {
        auto files = kFixture;
        files[file] = replaced(files[file], from, to);
        return files;
    };
    auto has = [](const std::string& message, const std::string& part) {
        return message.find(part) != std::string::npos;
    };

    auto missing = failure(with("skaters_official.csv", ",SOG\n", ",Shots\n"));
    EXPECT_TRUE(has(missing, "skaters_official.csv: missing column \"SOG\"")) << missing;
    auto number = failure(with("skaters_official.csv", "BOS,3,5,4,12", "BOS,x3,5,4,12"));
    EXPECT_TRUE(has(number, "skaters_official.csv, line 2, column \"GP\": \"x3\" is not a whole number")) << number;
    auto date = failure(with("schedule_results.csv", "2018-01-15,", "2018-02-30,"));
    EXPECT_TRUE(has(date, "schedule_results.csv, line 6, column \"date\": \"2018-02-30\" is not a date")) << date;
    EXPECT_TRUE(has(failure(with("team_games.csv", "3,2017-11-10,BOS", "3,2017-1x-10,BOS")),
                    "team_games.csv, line 6, column \"date\": \"2017-1x-10\""));
    auto team = failure(with("goalie_games.csv", "3,2017-11-10,goalgu01,BOS", "3,2017-11-10,goalgu01,BSO"));
    EXPECT_TRUE(has(team, "goalie_games.csv, line 6: unknown team \"BSO\"")) << team;
    auto cells = failure(with("teams.csv", "SJS,SJS,San Jose Sharks,", "SJS,San Jose Sharks,"));
    EXPECT_TRUE(has(cells, "teams.csv, line 5: 19 cells where the header has 20")) << cells;
    auto result = failure(with("schedule_results.csv", ",OT,away,Tank", ",XX,away,Tank"));
    EXPECT_TRUE(has(result, "decided_in \"XX\"")) << result;
    auto files = kFixture;
    files.erase("goalie_games.csv");
    EXPECT_TRUE(has(failure(files), "goalie_games.csv: file not found"));
}

TEST(ImportSeason, WritingIsAllOrNothingAndKeepsAnExistingLeague) {
    TempDir tmp;
    writeFixture(tmp / "season");
    auto league = buildLeague(readSeasonData(tmp / "season"));

    // A new folder appears whole, with no scratch folder left beside it.
    writeLeague(league, tmp / "new", false);
    for (std::string_view name : {kPlayerFile, kTeamFile, kGamePlanFile, kDefaultScheduleFile, kRealResultsFile})
        EXPECT_TRUE(fs::exists(tmp / "new" / name)) << name;
    int entries = 0;
    for ([[maybe_unused]] auto& e : fs::directory_iterator(tmp.path())) ++entries;
    EXPECT_EQ(entries, 2);  // season and new

    // An existing league is refused, and left as it was, unless replaced.
    std::ofstream(tmp / "new" / "hkplayer", std::ios::binary) << "old";
    fs::remove(tmp / "new" / kPlayerFile);
    try {
        writeLeague(league, tmp / "new", false);
        FAIL() << "an existing league was overwritten";
    } catch (const FileError& e) {
        EXPECT_NE(std::string(e.what()).find("already holds a league"), std::string::npos);
    }
    EXPECT_EQ(fileText(tmp / "new" / "hkplayer"), "old");
    writeLeague(league, tmp / "new", true);
    EXPECT_EQ(fileLength(tmp / "new" / "hkplayer"), 12u * 1500u);  // the file's own spelling is kept
    entries = 0;
    for ([[maybe_unused]] auto& e : fs::directory_iterator(tmp / "new")) ++entries;
    EXPECT_EQ(entries, 5);
}

TEST(CsvTable, ReadsQuotesLineEndsAndEmptyCells) {
    auto t = CsvTable::parse("x.csv",
                             "\xEF\xBB\xBF"
                             "a,b,c\r\n1,\"x, \"\"y\"\"\",\r\n\r\n-4,+5,z\n");
    ASSERT_EQ(t.rows(), 2u);
    EXPECT_EQ(t.column("b"), 1u);
    EXPECT_EQ(t.text(0, 1), "x, \"y\"");
    EXPECT_EQ(t.number(0, 2), 0);
    EXPECT_EQ(t.number(1, 0), -4);
    EXPECT_EQ(t.number(1, 1), 5);
    EXPECT_EQ(t.line(1), 4u);
    EXPECT_THROW((void)t.number(1, 2), FileError);
    EXPECT_THROW((void)t.column("d"), FileError);
}

// The shipped season against the totals its own files give.
TEST(ImportSeason, ShippedSeasonMatchesItsOwnTotals) {
    TempDir tmp;
    auto data = readSeasonData(defaultSeasonFolder({}));
    auto league = buildLeague(data);
    writeLeague(league, tmp / "league", false);
    for (const auto& c : checkLeague(tmp / "league", data)) EXPECT_TRUE(c.ok) << c.name << ": " << c.detail;

    EXPECT_EQ(league.schedule.size(), 1271u);
    EXPECT_EQ(league.names.divisions, (std::vector<std::string>{"Atlantic", "Metropolitan", "Central", "Pacific"}));
    long goals = 0, resultGoals = 0;
    for (const auto& p : league.players) goals += real(p).Goals;
    for (const auto& r : league.results) resultGoals += r.visitorGoals + r.homeGoals;
    EXPECT_EQ(goals, 7449);
    EXPECT_EQ(resultGoals, 7552);
    std::map<int, int> perTeam;
    for (const auto& g : league.schedule) ++perTeam[g.VisitorTeam], ++perTeam[g.HomeTeam];
    EXPECT_EQ(perTeam.size(), 31u);
    for (auto [team, n] : perTeam) EXPECT_EQ(n, 82) << team;
    EXPECT_EQ(league.distinctPlayers, 985);
    EXPECT_EQ(league.players.size(), 1067u);
    int wins = 0, losses = 0, otl = 0;
    for (const auto& t : league.teams) wins += t.RealWins, losses += t.RealLosses, otl += t.RealOvertimeLosses;
    EXPECT_EQ(wins, 1271);
    EXPECT_EQ(losses + otl, 1271);
    EXPECT_EQ(otl, 193 + 103);

    // Namesakes: the initial when it tells them apart, else the first name.
    std::set<std::string> shortNames;
    for (const auto& p : league.players)
        if (p.LastName.str() == "Staal" || p.LastName.str() == "Nash") shortNames.insert(p.ShortName.str());
    EXPECT_EQ(shortNames, (std::set<std::string>{"E.Staal", "J.Staal", "M.Staal", "Rick Nash", "Riley Nash"}));
}

}  // namespace
}  // namespace tallyrink
