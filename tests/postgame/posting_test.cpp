// Posting a finished game: what it adds to the players, the teams and the
// standings, the schedule row, SCORES and the box file; refusal of a game
// posted twice; and a failure at each write that a rerun finishes without
// posting twice or losing the game.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>

#include "league/file_images.h"
#include "league/files.h"
#include "league/names.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "operations/blank_league.h"
#include "postgame/box_file.h"
#include "postgame/game_done.h"
#include "postgame/record_book.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using test::shippedEra;
using testing::TempDir;

constexpr std::size_t kPlayerBytes = 1500;

// Four made-up teams with a three-game schedule, written into a folder.
std::vector<int> writeLeague(const fs::path& dir) {
    auto [teams, active] = test::writeMadeUpLeague(dir, 4, 41);
    saveNewSchedule(dir,
                    {newGameRecord(teams[0], teams[1], 10, 10, 2017), newGameRecord(teams[1], teams[0], 10, 12, 2017),
                     newGameRecord(teams[2], teams[3], 10, 10, 2017)},
                    active);
    return teams;
}

// How a scripted game went; goals are scored in turn by each side's skaters.
struct Script {
    std::size_t row = 1;
    int visitorGoals = 2;
    int homeGoals = 3;
    bool overtime = false;
    int shootoutWinner = -1;  // a side, or -1 for none
    bool overtimePoint = true;
};

// A game whose lines are filled by hand as play fills them: every count in
// both the Game and the Replay line, ice time in the Game line only.
struct ScriptedGame {
    Schedule schedule;
    std::unique_ptr<GameSession> session;
    FinishedGame game;

    ScriptedGame(const fs::path& dir, const Script& s) : schedule(Schedule::load(dir)) {
        RulesRecord rules = defaultRules(2017);
        rules.OnePointForOvertimeLossCheck = s.overtimePoint ? 1 : 0;
        rules.InjuryCheck = 1;
        session = std::make_unique<GameSession>(LeagueContext{dir, rules, &shippedEra(), &schedule});
        const GameRecord& row = schedule.row(s.row);
        Random draws(7);
        session->GameActive = true;
        session->loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, draws);
        clearGameEntries(*session);
        game.scheduleRow = s.row;
        game.calendarMonth = row.Month;
        game.day = row.Day;
        game.year = 2017;
        game.overtimePlayed = s.overtime || s.shootoutWinner >= 0;
        game.lastPeriod = game.overtimePlayed ? 4 : 3;
        if (s.shootoutWinner >= 0) {
            game.shootoutRounds = 3;
            game.side[std::size_t(s.shootoutWinner)].shootoutScore = 1;
        }
        std::array<int, 2> goals{s.visitorGoals, s.homeGoals};
        std::array<std::vector<int>, 2> skaters;
        for (int side : {kVisitor, kHome}) {
            SideTables& t = session->side(side);
            SideSummary& x = game.side[std::size_t(side)];
            x.team = t.TeamId;
            x.code = t.team.Abbrev.str();
            x.city = t.team.City.str();
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                if (!t.onTeam(slot)) continue;
                StatLine& g = statLine(t.player(slot), StatLineIndex::Game);
                if (isGoalie(t.player(slot))) {
                    if (x.startingGoalie == kNoSlot) {
                        x.startingGoalie = slot;
                        g.Toi = game.overtimePlayed ? 3900 : 3600;
                        g.GP = 1;
                    }
                } else if (skaters[std::size_t(side)].size() < 18) {
                    skaters[std::size_t(side)].push_back(slot);
                    g.Toi = 900 + 10 * slot;
                    g.GP = 1;
                    g.Shifts = 20;
                }
            }
        }
        for (int side : {kVisitor, kHome}) {
            auto i = std::size_t(side);
            const auto& sk = skaters[i];
            int shots = 0;
            for (int k = 0; k < goals[i]; ++k) {
                GoalSummary goal;
                goal.period = 1 + k % 3;
                goal.clock = 600 - 10 * k;
                goal.side = side;
                goal.scorer = sk[std::size_t(k) % sk.size()];
                goal.assists = {sk[std::size_t(k + 1) % sk.size()], sk[std::size_t(k + 2) % sk.size()]};
                credit(side, goal.scorer, [](StatLine& l) { ++l.Goals, ++l.Sog; });
                for (int a : goal.assists) credit(side, a, [](StatLine& l) { ++l.Assists; });
                game.side[i].goalsByPeriod[std::size_t(goal.period - 1)] += 1;
                game.goals.push_back(goal);
                ++shots;
            }
            for (int k = 0; k < 20; ++k) credit(side, sk[std::size_t(k) % sk.size()], [](StatLine& l) { ++l.Sog; });
            shots += 20;
            game.side[i].score = goals[i];
            game.side[i].shots = shots;
            int goalie = game.side[1 - i].startingGoalie;
            credit(1 - side, goalie, [&](StatLine& l) {
                l.GoalsAllowed = static_cast<std::int16_t>(l.GoalsAllowed + goals[i]);
                l.Saves = static_cast<std::int16_t>(l.Saves + shots - goals[i]);
            });
        }
    }

    template <class F>
    void credit(int side, int slot, F f) {
        PlayerRecord& p = session->side(side).player(slot);
        f(statLine(p, StatLineIndex::Game));
        f(statLine(p, StatLineIndex::Replay));
    }

    PostingResult post(FileWriter* writer = nullptr, const fs::path& allTime = {}) {
        Random draws(99);
        PostingOptions o;
        o.rng = &draws;
        o.dateText = "10/10/2017";
        o.writer = writer;
        o.allTimeRecordsDir = allTime;
        return GameDone(*session, game, o);
    }
};

TeamRecord teamOnDisk(const fs::path& dir, int team) {
    return readRecord<TeamRecord>(RandomFile(findFile(dir, kTeamFile), 1500), std::size_t(team));
}
PlayerRecord playerOnDisk(const fs::path& dir, int id) {
    return readRecord<PlayerRecord>(RandomFile(findFile(dir, kPlayerFile), kPlayerBytes), std::size_t(id));
}

struct Totals {
    int goals = 0, sog = 0, wins = 0, losses = 0, ties = 0, overtimeLosses = 0, gp = 0, toi = 0;
};

// The Replay totals of a team's players on disk.
Totals replayTotals(const fs::path& dir, const TeamRecord& team) {
    Totals t;
    for (int id : team.Roster) {
        if (id <= 0) continue;
        PlayerRecord p = playerOnDisk(dir, id);
        const StatLine& r = statLine(p, StatLineIndex::Replay);
        t.goals += r.Goals;
        t.sog += r.Sog;
        t.wins += r.GoalieWins;
        t.losses += r.GoalieLosses;
        t.ties += r.GoalieTies;
        t.overtimeLosses += r.GoalieOvertimeLosses;
        t.gp += r.GP;
        t.toi += r.Toi;
    }
    return t;
}

TEST(Posting, PlayersTeamsAndTheBoxAddUp) {
    TempDir dir;
    auto teams = writeLeague(dir.path());
    std::array<TeamRecord, 2> before{teamOnDisk(dir.path(), teams[0]), teamOnDisk(dir.path(), teams[1])};
    std::array<Totals, 2> playersBefore{replayTotals(dir.path(), before[0]), replayTotals(dir.path(), before[1])};

    ScriptedGame g(dir.path(), {.row = 1, .visitorGoals = 2, .homeGoals = 4});
    PostingResult res = g.post();
    EXPECT_EQ(res.scoresRow, 1u);
    EXPECT_EQ(res.boxFile, "BOX1.BOX");
    EXPECT_EQ(res.winnerSide, kHome);

    auto box = BoxRead(findFile(dir.path(), "BOX1.BOX"));
    for (int side : {kVisitor, kHome}) {
        auto i = std::size_t(side);
        TeamRecord after = teamOnDisk(dir.path(), teams[i]);
        Totals players = replayTotals(dir.path(), after);
        int goals = g.game.side[i].score;
        // The team's season grew by the sum of its players' games.
        EXPECT_EQ(after.TeamFor[0].Goals - before[i].TeamFor[0].Goals, players.goals - playersBefore[i].goals);
        EXPECT_EQ(after.TeamFor[0].Goals - before[i].TeamFor[0].Goals, goals);
        EXPECT_EQ(after.TeamAgainst[0].Goals - before[i].TeamAgainst[0].Goals, g.game.side[1 - i].score);
        EXPECT_EQ(after.TeamFor[0].Sog - before[i].TeamFor[0].Sog, box->r1.BoxShots[i]);
        EXPECT_EQ(box->r1.BoxShots[i], g.game.side[i].shots);
        EXPECT_EQ(box->r1.BoxScore[i], goals);
        // Goalie decisions match the team's result; 19 played and got their time.
        EXPECT_EQ(players.wins - playersBefore[i].wins, after.Wins - before[i].Wins);
        EXPECT_EQ(players.losses - playersBefore[i].losses, after.Losses - before[i].Losses);
        EXPECT_EQ(players.gp - playersBefore[i].gp, 19);
        EXPECT_EQ(after.TeamFor[0].Toi - before[i].TeamFor[0].Toi, players.toi - playersBefore[i].toi);
        EXPECT_EQ(after.LastResults[1].str(), side == kHome ? "W" : "L");
    }
    TeamRecord home = teamOnDisk(dir.path(), teams[1]);
    EXPECT_EQ(standingsPoints(home) - standingsPoints(before[1]), 2);
    EXPECT_EQ(home.HomeWins - before[1].HomeWins, 1);

    Schedule schedule = Schedule::load(dir.path());
    EXPECT_EQ(statusOf(schedule.row(1)), kPlayed);
    EXPECT_EQ(schedule.row(1).ScoreOf[1], 4);
    EXPECT_EQ(schedule.row(1).BoxFile.str(), "BOX1.BOX");
    EXPECT_EQ(schedule.row(1).RecordText[1].str(), recordText(home));
    auto scores = loadScores(dir.path());
    ASSERT_EQ(scores.size(), 1u);
    EXPECT_EQ(scores[0].ResultStamp, 99);
    EXPECT_EQ(scores[0].DateText.str(), "10/10/2017");
    EXPECT_FALSE(PostingJournal(dir.path()).pending());
    EXPECT_EQ(RandomFile(findFile(dir.path(), kTickerFile), kTickerSlot).count(kScoresRounding), 1u);
}

TEST(Posting, AGameIsPostedOnceAndTheNextGoesToTheNextScoresRow) {
    TempDir dir;
    writeLeague(dir.path());
    ScriptedGame(dir.path(), {.row = 1}).post();
    auto playersBefore = readBytes(findFile(dir.path(), kPlayerFile));
    EXPECT_THROW(ScriptedGame(dir.path(), {.row = 1}).post(), AlreadyPosted);
    EXPECT_EQ(readBytes(findFile(dir.path(), kPlayerFile)), playersBefore);
    EXPECT_EQ(loadScores(dir.path()).size(), 1u);

    PostingResult second = ScriptedGame(dir.path(), {.row = 3, .visitorGoals = 1, .homeGoals = 0}).post();
    EXPECT_EQ(second.scoresRow, 2u);
    EXPECT_EQ(second.boxFile, "BOX2.BOX");
}

TEST(Posting, OvertimeAndShootoutResultsFollowTheRules) {
    TempDir dir;
    auto teams = writeLeague(dir.path());
    TeamRecord v0 = teamOnDisk(dir.path(), teams[0]);
    TeamRecord h0 = teamOnDisk(dir.path(), teams[1]);
    // Level after overtime, the visitor wins the shootout.
    ScriptedGame so(dir.path(), {.row = 1, .visitorGoals = 2, .homeGoals = 2, .shootoutWinner = kVisitor});
    so.post();
    TeamRecord v1 = teamOnDisk(dir.path(), teams[0]);
    TeamRecord h1 = teamOnDisk(dir.path(), teams[1]);
    EXPECT_EQ(v1.Wins - v0.Wins, 1);
    EXPECT_EQ(v1.ShootoutWins - v0.ShootoutWins, 1);
    EXPECT_EQ(v1.Ties, v0.Ties);
    EXPECT_EQ(h1.OvertimeLosses - h0.OvertimeLosses, 1);
    EXPECT_EQ(v1.TeamFor[0].Goals - v0.TeamFor[0].Goals, 3);  // the shootout's goal for the winner
    EXPECT_EQ(h1.LastResults[1].str(), "O");
    EXPECT_EQ(Schedule::load(dir.path()).row(1).ScoreOf[0], 3);
    EXPECT_EQ(Schedule::load(dir.path()).row(1).ExtraMark, 2);
    Totals loser = replayTotals(dir.path(), h1);
    Totals loserBefore = replayTotals(dir.path(), h0);
    (void)loserBefore;
    EXPECT_EQ(standingsPoints(h1) - standingsPoints(h0), 1);
    EXPECT_GE(loser.overtimeLosses, 1);

    // An overtime loss without the overtime point is a plain loss, marked "O".
    ScriptedGame ot(dir.path(),
                    {.row = 2, .visitorGoals = 3, .homeGoals = 2, .overtime = true, .overtimePoint = false});
    ot.post();
    // Row 2 has the teams the other way round: the home side lost.
    TeamRecord lost = teamOnDisk(dir.path(), teams[0]);
    EXPECT_EQ(lost.Losses - v1.Losses, 1);
    EXPECT_EQ(lost.OvertimeLosses, v1.OvertimeLosses);
    EXPECT_EQ(lost.LastResults[1].str(), "O");
    EXPECT_EQ(lost.LastResults[2].str(), "W");
    EXPECT_EQ(teamOnDisk(dir.path(), teams[1]).Wins - h1.Wins, 1);
    EXPECT_EQ(standingsPoints(lost), standingsPoints(v1));
}

TEST(Posting, TiesAndShutoutsAndTheGameWinner) {
    FinishedGame g;
    g.side[0].score = 4;
    g.side[1].score = 2;
    for (int k = 0; k < 4; ++k) g.goals.push_back({.period = 1, .side = 0, .scorer = 10 + k});
    g.goals.insert(g.goals.begin() + 1, GoalSummary{.period = 1, .side = 1, .scorer = 5});
    EXPECT_EQ(gameWinningGoal(g), (std::pair{0, 12}));  // the third goal put them ahead for good

    TeamRecord a, b;
    a.Streak = 3;
    b.Streak = -2;
    FinishedGame tie;
    tie.side[0].score = tie.side[1].score = 1;
    tie.side[0].team = 1;
    tie.side[1].team = 13;
    postTeams({&a, &b}, tie, defaultRules(2017));
    EXPECT_EQ(a.Ties, 1);
    EXPECT_EQ(b.Ties, 1);
    EXPECT_EQ(b.HomeTies, 1);
    EXPECT_EQ(a.Streak, 99);
    EXPECT_EQ(a.LastResults[1].str(), "T");
    EXPECT_EQ(a.DivisionWins + a.DivisionLosses, 0);

    FinishedGame shutout;
    shutout.side[0].score = 0;
    shutout.side[1].score = 3;
    shutout.side[0].team = 1;
    shutout.side[1].team = 2;  // same division
    postTeams({&a, &b}, shutout, defaultRules(2017));
    EXPECT_EQ(b.Shutouts, 1);
    EXPECT_EQ(b.Streak, 1);
    EXPECT_EQ(a.Streak, -1);
    EXPECT_EQ(b.DivisionWins, 1);
    EXPECT_EQ(a.DivisionLosses, 1);
    EXPECT_EQ(b.GoalsByPeriod[0][0] + b.GoalsByPeriod[0][1] + b.GoalsByPeriod[0][2], 0);
}

TEST(Posting, LeadersKeepOneEntryAPlayerHighestFirst) {
    TempDir dir;
    writeLeague(dir.path());
    ScriptedGame g(dir.path(), {.row = 1, .visitorGoals = 5, .homeGoals = 1});
    g.post();
    LeadersRecord leaders = readRecord<LeadersRecord>(RandomFile(findFile(dir.path(), kLeadersFile), 30000), 1);
    EXPECT_EQ(leaders.LeadersStamp, kLeadersStamp);
    const auto& goals = leaders.Leaders[1];
    std::map<int, int> seen;
    for (std::size_t r = 0; r + 1 < goals.size(); ++r) {
        if (goals[r].PlayerNumber == 0) break;
        EXPECT_GE(goals[r].Value, goals[r + 1].Value);
        EXPECT_EQ(++seen[goals[r].PlayerNumber], 1);
    }
    EXPECT_FALSE(seen.empty());
    Top40Record top = readRecord<Top40Record>(RandomFile(findFile(dir.path(), kTop40File), 30000), 1);
    EXPECT_EQ(top.Top40Stamp, kTop40Stamp);
    EXPECT_GE(top.Top[0][1].Value, 1);
    EXPECT_EQ(top.Top[0][1].BoxFile.str(), "BOX1.BOX");
}

// The same men posted again are each found where they are listed, among
// numbers that share their low bits: the tables come out as they went in.
TEST(Posting, LeadersPostedAgainFindEveryListedMan) {
    TempDir dir;
    writeLeague(dir.path());
    ScriptedGame g(dir.path(), {.row = 1, .visitorGoals = 5, .homeGoals = 1});
    g.post();
    LeadersRecord leaders = readRecord<LeadersRecord>(RandomFile(findFile(dir.path(), kLeadersFile), 30000), 1);
    for (auto& table : leaders.Leaders)
        for (LeaderEntry& e : table)
            if (e.PlayerNumber == 0) {
                e.PlayerNumber = static_cast<std::int16_t>(64 * 300 + table[0].PlayerNumber % 64);
                e.Value = -30000;
            }
    const std::vector<std::uint8_t> before = codec::toSlot(leaders);
    postLeaders(leaders, *g.session);
    EXPECT_EQ(codec::toSlot(leaders), before);
}

// A table read out of order is put in order at the next posting, even when
// none of the game's men enters it.
TEST(Posting, LeadersReadOutOfOrderAreOrderedWhenNobodyEnters) {
    TempDir dir;
    writeLeague(dir.path());
    ScriptedGame g(dir.path(), {.row = 1, .visitorGoals = 5, .homeGoals = 1});
    g.post();
    LeadersRecord leaders{};
    leaders.LeadersStamp = kLeadersStamp;
    auto& goals = leaders.Leaders[1];
    for (std::size_t r = 0; r < goals.size(); ++r) {
        goals[r].Value = static_cast<std::int16_t>(500 + (r * 7) % goals.size());  // past anyone's goals
        goals[r].PlayerNumber = static_cast<std::int16_t>(30000 + r);              // nobody in the game
    }
    auto expected = goals;
    std::stable_sort(expected.begin(), expected.end(),
                     [](const LeaderEntry& a, const LeaderEntry& b) { return a.Value > b.Value; });
    postLeaders(leaders, *g.session);
    for (std::size_t r = 0; r < goals.size(); ++r) EXPECT_EQ(goals[r].PlayerNumber, expected[r].PlayerNumber);
}

// A run keeps the top single games between postings; one that nobody
// enters leaves the file as it was, and what the run keeps reads as the file.
TEST(Posting, AKeptTopTableThatNobodyEntersStandsAsItsFile) {
    TempDir dir;
    writeLeague(dir.path());
    Top40Record full{};
    full.Top40Stamp = kTop40Stamp;
    for (auto& rank : full.Top)
        for (Top40Entry& e : rank) {
            e.Value = 1000;
            e.Name.assign("Old Hand");
        }
    fs::path file = findFile(dir.path(), kTop40File);
    const std::vector<std::uint8_t> bytes = codec::toSlot(full);
    writeFileAtomic(file, bytes);
    FileImages images;
    RunWriter run(images);
    KeptTables tables;
    for (std::size_t row : {1u, 2u}) {
        ScriptedGame g(dir.path(), {.row = row});
        Random draws(99);
        PostingOptions o;
        o.rng = &draws;
        o.dateText = "10/10/2017";
        o.writer = &run;
        o.images = &images;
        o.tables = &tables;
        GameDone(*g.session, g.game, o);
        EXPECT_EQ(readBytes(file), bytes) << "row " << row;
        ASSERT_TRUE(tables.top.record);
        EXPECT_EQ(codec::toSlot(*tables.top.record), bytes) << "row " << row;
    }
}

TEST(Posting, AManHurtInPlayIsOutUntilHisReturnAndInTheInjuryHistory) {
    TempDir dir;
    writeLeague(dir.path());
    ScriptedGame g(dir.path(), {.row = 1});
    int slot = kNoSlot;
    for (int s = 0; s < kRosterSlots && slot == kNoSlot; ++s)
        if (g.session->side(kHome).onTeam(s) && !isGoalie(g.session->side(kHome).player(s)) &&
            statLine(g.session->side(kHome).player(s), StatLineIndex::Game).Toi > 0)
            slot = s;
    ASSERT_NE(slot, kNoSlot);
    g.game.side[kHome].injuredInGame[std::size_t(slot)] = kHurtInGame;
    g.game.side[kHome].injuryGames[std::size_t(slot)] = 5;
    PostingResult res = g.post();

    PlayerRecord p = playerOnDisk(dir.path(), g.session->side(kHome).player(slot).PlayerId);
    EXPECT_EQ(p.InjuryReturnMonth, seasonMonth(10));  // 10 October and five games
    EXPECT_EQ(p.InjuryReturnDay, 15);
    ASSERT_NE(p.InjuryType, 0);
    std::string name(injuryName(p.InjuryType));
    ASSERT_FALSE(res.injuries.empty());
    EXPECT_NE(res.injuries.front().find("(" + name + ")"), std::string::npos) << res.injuries.front();
    auto history = readLines(findFile(dir.path(), kInjuryHistoryFile));
    ASSERT_FALSE(history.empty());
    EXPECT_TRUE(history.front().starts_with("Oct 10,")) << history.front();
    EXPECT_TRUE(history.front().ends_with(",Oct 15," + name)) << history.front();
    auto box = BoxRead(findFile(dir.path(), res.boxFile));
    EXPECT_EQ(box->r1.BoxInjuredInGame[BoxFile::at(kHome, slot)], kHurtInGame);
    EXPECT_EQ(box->r1.BoxInjuryType[BoxFile::at(kHome, slot)], p.InjuryType);
}

// The same game under the rule of all-time records on or off.
void keepAllTime(ScriptedGame& g, bool on) {
    RulesRecord rules = g.session->league().rules;
    rules.AllTimeRecordCheck = on ? 1 : 0;
    auto again =
        std::make_unique<GameSession>(LeagueContext{g.session->league().leagueDir, rules, &shippedEra(), &g.schedule});
    again->side(kVisitor) = g.session->side(kVisitor);
    again->side(kHome) = g.session->side(kHome);
    g.session = std::move(again);
}

TEST(Posting, RecordsGoToTheLeagueAndWhenAskedToTheAllTimeBook) {
    TempDir dir;
    TempDir allTime;
    writeLeague(dir.path());
    {
        ScriptedGame g(dir.path(), {.row = 1, .visitorGoals = 4, .homeGoals = 1});
        keepAllTime(g, false);
        g.post(nullptr, allTime.path());
        RecordBook book = RecordBook::load(dir.path());
        const RecordEntry& points = book.entry(4, RecordScope::Game);
        int best = 0;
        for (int side : {kVisitor, kHome})
            for (const PlayerRecord& p : g.session->side(side).GameRoster)
                if (p.PlayerId > 0)
                    best = std::max(best,
                                    statLine(p, StatLineIndex::Game).Goals + statLine(p, StatLineIndex::Game).Assists);
        EXPECT_EQ(points.RecordValue[0], best);
        EXPECT_EQ(points.RecordDate[0].str(), "10/10/2017");
        const RecordEntry& margin = book.entry(kFirstTeamCategory + 16, RecordScope::Game);
        EXPECT_EQ(margin.RecordValue[0], 3);
        EXPECT_EQ(margin.RecordName[0].str().substr(0, 5), "2017 ");
        EXPECT_FALSE(fs::exists(allTime.path() / kRecordsFile));
    }
    ScriptedGame g(dir.path(), {.row = 3, .visitorGoals = 2, .homeGoals = 6});
    keepAllTime(g, true);
    g.post(nullptr, allTime.path());
    RecordBook book = RecordBook::load(allTime.path());
    EXPECT_EQ(book.entry(kFirstTeamCategory + 16, RecordScope::Game).RecordValue[0], 4);
    // The league's book holds both games.
    EXPECT_EQ(RecordBook::load(dir.path()).entry(kFirstTeamCategory + 16, RecordScope::Game).RecordValue[1], 3);
}

// Fails the n-th write (counting from 1); counts them all.
class FailingWriter final : public FileWriter {
public:
    explicit FailingWriter(int failAt) : failAt_(failAt) {}
    void writeWhole(const fs::path& p, std::span<const std::uint8_t> b) override {
        step();
        disk_.writeWhole(p, b);
    }
    void writeAt(const fs::path& p, std::uint64_t o, std::span<const std::uint8_t> b) override {
        step();
        disk_.writeAt(p, o, b);
    }
    void remove(const fs::path& p) override {
        step();
        disk_.remove(p);
    }
    int calls = 0;

private:
    void step() {
        if (++calls == failAt_) throw FileError("disk full (test)");
    }
    int failAt_;
    DiskWriter disk_;
};

std::map<std::string, std::vector<std::uint8_t>> folderImage(const fs::path& dir) {
    std::map<std::string, std::vector<std::uint8_t>> out;
    for (const auto& e : fs::directory_iterator(dir)) out[e.path().filename().string()] = readBytes(e.path());
    return out;
}

TEST(Posting, AFailureAtAnyWriteLeavesARerunConsistent) {
    TempDir original;
    writeLeague(original.path());
    auto copy = [&](const fs::path& to) {
        fs::create_directories(to);
        for (const auto& e : fs::directory_iterator(original.path())) fs::copy_file(e.path(), to / e.path().filename());
    };

    TempDir reference;
    copy(reference.path() / "lg");
    // The all-time records stand outside the league folder and go through the same journal.
    fs::create_directories(reference.path() / "all");
    FailingWriter counter(0);
    ScriptedGame(reference.path() / "lg", {.row = 1}).post(&counter, reference.path() / "all");
    auto expected = folderImage(reference.path() / "lg");
    auto expectedAll = folderImage(reference.path() / "all");
    ASSERT_GT(counter.calls, 8);
    ASSERT_FALSE(expectedAll.empty());

    for (int failAt = 1; failAt <= counter.calls; ++failAt) {
        TempDir work;
        fs::path lg = work.path() / "lg";
        fs::path all = work.path() / "all";
        copy(lg);
        fs::create_directories(all);
        FailingWriter failing(failAt);
        EXPECT_THROW(ScriptedGame(lg, {.row = 1}).post(&failing, all), FileError) << "write " << failAt;
        // The rerun: a pending posting is finished, and the game is posted
        // only when its row isn't played yet.
        recoverPosting(lg);
        bool played = statusOf(Schedule::load(lg).row(1)) == kPlayed;
        // The box goes first, then the journal: the game stands once the journal does.
        EXPECT_EQ(played, failAt > 2) << "write " << failAt;
        if (!played) ScriptedGame(lg, {.row = 1}).post(nullptr, all);
        EXPECT_THROW(ScriptedGame(lg, {.row = 1}).post(nullptr, all), AlreadyPosted);
        EXPECT_EQ(folderImage(lg), expected) << "write " << failAt;
        EXPECT_EQ(folderImage(all), expectedAll) << "write " << failAt;
    }
}

TEST(Posting, AJournalThatCantBeReadIsKeptAndNamed) {
    TempDir dir;
    writeLeague(dir.path());
    writeFileAtomic(dir / kPostingJournal, std::string("TLYPOST1\x01"));
    try {
        recoverPosting(dir.path());
        FAIL() << "no error";
    } catch (const FileError& e) {
        EXPECT_NE(std::string(e.what()).find(kPostingJournal), std::string::npos);
    }
    EXPECT_TRUE(fs::exists(dir / kPostingJournal));
}

}  // namespace
}  // namespace tallyrink
