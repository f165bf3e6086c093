// A stretch of games played and posted one after another, as autoplay does,
// and the league files checked against what the games themselves counted:
// every goal, penalty minute and result must land once, on both sides.

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "engine/game.h"
#include "league/files.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "operations/blank_league.h"
#include "postgame/game_done.h"
#include "postgame/record_book.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

struct Counted {
    int games = 0, goalsFor = 0, goalsAgainst = 0, playerGoals = 0, playerGoalsAgainst = 0;
    int pim = 0, pimAgainst = 0, playerPim = 0;
    int wins = 0, losses = 0, ties = 0, overtimeLosses = 0;
};

class PostedStretch : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dir_ = new testing::TempDir;
        auto [teams, active] = test::writeMadeUpLeague(dir_->path(), 6, 23);
        // Every pairing twice, home and away, a day apart.
        std::vector<GameRecord> rows;
        int day = 0;
        for (int round = 0; round < 2; ++round)
            for (std::size_t a = 0; a < teams.size(); ++a)
                for (std::size_t b = a + 1; b < teams.size(); ++b) {
                    // The second round after the new year, as a season runs.
                    int d = 5 + day++ / 3;
                    rows.push_back(newGameRecord(round == 0 ? teams[a] : teams[b], round == 0 ? teams[b] : teams[a],
                                                 round == 0 ? 10 : 1, d % 28 + 1, round == 0 ? 2017 : 2018));
                }
        saveNewSchedule(dir_->path(), rows, active);

        counted_ = new std::map<int, Counted>;
        Schedule schedule = Schedule::load(dir_->path());
        RulesRecord rules = defaultRules(2017);
        for (std::size_t row = 1; row <= schedule.size(); ++row) {
            const GameRecord r = schedule.row(row);
            GameSession session(LeagueContext{dir_->path(), rules, &test::shippedEra(), &schedule});
            Random draws(row);
            session.GameActive = true;
            session.loadGame(r.VisitorTeam, r.HomeTeam, r.Month, r.Day, draws);
            clearGameEntries(session);
            GameOptions o;
            o.seed = 1000 + row;
            Game game(session, o);
            game.playToEnd();
            count(game);
            postScheduleGame(session, game, schedule, row, o.seed, "10/10/2017");
            schedule = Schedule::load(dir_->path());
        }
    }
    static void TearDownTestSuite() {
        delete counted_;
        delete dir_;
    }

    static void count(const Game& game) {
        const GameState& s = game.state();
        auto score = game.finalScore();
        for (int side : {kVisitor, kHome}) {
            auto i = std::size_t(side);
            int team = game.session().side(side).TeamId;
            Counted& c = (*counted_)[team];
            ++c.games;
            c.goalsFor += score[i];
            c.goalsAgainst += score[1 - i];
            c.playerGoals += s.Score[i];
            c.playerGoalsAgainst += s.Score[1 - i];
            c.pim += s.pen.PenaltyMinutes[i];
            c.pimAgainst += s.pen.PenaltyMinutes[1 - i];
            for (const PlayerRecord& p : game.session().side(side).GameRoster)
                if (p.TeamId == team) c.playerPim += statLine(p, StatLineIndex::Game).Pim;
            bool extra = s.Period > game.periods();
            if (score[i] > score[1 - i])
                ++c.wins;
            else if (score[i] == score[1 - i])
                ++c.ties;
            else if (s.endedBy == GameEnd::Shootout ||
                     (extra && game.session().league().rules.OnePointForOvertimeLossCheck == 1))
                ++c.overtimeLosses;
            else
                ++c.losses;
        }
    }

    static TeamRecord team(int t) {
        return readRecord<TeamRecord>(RandomFile(findFile(dir_->path(), kTeamFile), 1500), std::size_t(t));
    }
    static std::vector<PlayerRecord> players(int t) {
        std::vector<PlayerRecord> out;
        RandomFile file(findFile(dir_->path(), kPlayerFile), 1500);
        for (std::size_t r = 1; r <= file.count(kPlayerRounding); ++r) {
            PlayerRecord p = readRecord<PlayerRecord>(file, r);
            if (p.PlayerId > 0 && p.TeamId == t) out.push_back(p);
        }
        return out;
    }

    static testing::TempDir* dir_;
    static std::map<int, Counted>* counted_;
};

testing::TempDir* PostedStretch::dir_ = nullptr;
std::map<int, Counted>* PostedStretch::counted_ = nullptr;

TEST_F(PostedStretch, PenaltyMinutesAreThePlayersAndTheBenchsOnBothSides) {
    int bench = 0;
    for (const auto& [t, c] : *counted_) {
        TeamRecord rec = team(t);
        int players = 0;
        for (const PlayerRecord& p : PostedStretch::players(t)) players += statLine(p, StatLineIndex::Replay).Pim;
        EXPECT_EQ(players, c.playerPim) << "team " << t;
        EXPECT_EQ(rec.TeamFor[0].Pim, c.pim) << "team " << t;
        EXPECT_EQ(rec.TeamAgainst[0].Pim, c.pimAgainst) << "team " << t;
        bench += c.pim - c.playerPim;
    }
    EXPECT_GE(bench, 0);
}

TEST_F(PostedStretch, GoalsAddUpForTeamsPlayersAndScores) {
    for (const auto& [t, c] : *counted_) {
        TeamRecord rec = team(t);
        int players = 0;
        for (const PlayerRecord& p : PostedStretch::players(t)) players += statLine(p, StatLineIndex::Replay).Goals;
        EXPECT_EQ(players, c.playerGoals) << "team " << t;
        EXPECT_EQ(rec.TeamFor[0].Goals, c.goalsFor) << "team " << t;
        EXPECT_EQ(rec.TeamAgainst[0].Goals, c.goalsAgainst) << "team " << t;
        int byPeriod = 0, againstByPeriod = 0;
        for (int p = 0; p < 10; ++p) {
            byPeriod += rec.GoalsByPeriod[0][std::size_t(p)];
            againstByPeriod += rec.GoalsByPeriod[1][std::size_t(p)];
        }
        EXPECT_EQ(byPeriod, c.playerGoals) << "team " << t;
        EXPECT_EQ(rec.TeamFor[0].GP, c.games) << "team " << t;
        EXPECT_EQ(againstByPeriod, c.playerGoalsAgainst) << "team " << t;
    }
    std::vector<GameRecord> scores = loadScores(dir_->path());
    int scored = 0;
    for (const GameRecord& g : scores) scored += g.ScoreOf[0] + g.ScoreOf[1];
    int counted = 0;
    for (const auto& [t, c] : *counted_) counted += c.goalsFor;
    EXPECT_EQ(scored, counted);
}

TEST_F(PostedStretch, GoalieDecisionsAreTheTeamsResults) {
    for (const auto& [t, c] : *counted_) {
        TeamRecord rec = team(t);
        EXPECT_EQ(rec.Wins, c.wins) << "team " << t;
        EXPECT_EQ(rec.Losses, c.losses) << "team " << t;
        EXPECT_EQ(rec.Ties, c.ties) << "team " << t;
        EXPECT_EQ(rec.OvertimeLosses, c.overtimeLosses) << "team " << t;
        int w = 0, l = 0, tie = 0, otl = 0;
        for (const PlayerRecord& p : PostedStretch::players(t)) {
            const StatLine& r = statLine(p, StatLineIndex::Replay);
            w += r.GoalieWins;
            l += r.GoalieLosses;
            tie += r.GoalieTies;
            otl += r.GoalieOvertimeLosses;
        }
        EXPECT_EQ(w, rec.Wins) << "team " << t;
        EXPECT_EQ(l, rec.Losses) << "team " << t;
        EXPECT_EQ(tie, rec.Ties) << "team " << t;
        EXPECT_EQ(otl, rec.OvertimeLosses) << "team " << t;
    }
}

TEST_F(PostedStretch, ASeasonRecordHasOnePlaceForATeamAcrossTheNewYear) {
    RecordBook book = RecordBook::load(dir_->path());
    for (int c = kFirstTeamCategory; c <= kRecordCategories; ++c) {
        const RecordEntry& e = book.entry(c, RecordScope::Season);
        std::set<std::string> seen;
        for (const auto& name : e.RecordName) {
            if (!name.str().empty()) {
                EXPECT_TRUE(seen.insert(name.str()).second) << name.str() << " in " << c;
                EXPECT_TRUE(name.str().starts_with("2017 ")) << name.str() << " in " << c;
            }
        }
    }
    EXPECT_FALSE(book.entry(kFirstTeamCategory, RecordScope::Season).RecordName[0].str().empty());
}

}  // namespace
}  // namespace tallyrink
