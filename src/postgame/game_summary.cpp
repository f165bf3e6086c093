#include "postgame/game_summary.h"

#include <algorithm>

#include "engine/game.h"

namespace tallyrink {

int FinishedGame::winnerSide() const {
    int a = totalWithShootout(kVisitor);
    int b = totalWithShootout(kHome);
    if (a == b) return -1;
    return a > b ? kVisitor : kHome;
}

int FinishedGame::finalScore(int s) const {
    const SideSummary& x = side[static_cast<std::size_t>(s)];
    int bonus = wentToShootout() && winnerSide() == s ? 1 : 0;
    return x.score + bonus;
}

namespace {

// The goalies of record are those each side had in net when the game's last
// goal went in (after a shootout, those who faced it), empty net or not. A
// game with a single goalie a side gives the starters either way.
void settleDecisions(FinishedGame& f, const GameState& s) {
    const int winner = f.winnerSide();
    if (winner < 0) return;
    const int loser = winner == kVisitor ? kHome : kVisitor;
    const std::array<int, 2>& inNet = f.wentToShootout() || s.goals.empty() ? s.goalie : s.goals.back().goalies;
    f.winningGoalie = inNet[static_cast<std::size_t>(winner)];
    f.losingGoalie = inNet[static_cast<std::size_t>(loser)];
}

}  // namespace

FinishedGame summarizeGame(const Game& game, std::size_t scheduleRow, int calendarMonth, int day, int year) {
    const GameState& s = game.state();
    const GameSession& session = game.session();
    FinishedGame f;
    f.periods = game.periods();
    f.lastPeriod = s.Period;
    f.clock = std::max(s.Clock, 0);
    f.overtimePlayed = s.Period > game.periods();
    if (s.endedBy == GameEnd::Shootout) f.shootoutRounds = std::max(2, s.ShootoutRound);
    f.neutralIce = session.league().rules.AllGamesNeutralIceCheck == 1;
    f.playoff = session.PlayoffGame;
    f.exhibition = session.GameType == 'E';
    f.calendarMonth = calendarMonth;
    f.day = day;
    f.year = year;
    f.scheduleRow = scheduleRow;
    f.playLines = game.playLines();

    for (int side : {kVisitor, kHome}) {
        auto i = static_cast<std::size_t>(side);
        const SideTables& t = session.side(side);
        SideSummary& x = f.side[i];
        x.team = t.TeamId;
        x.code = t.team.Abbrev.str();
        x.city = t.team.City.str();
        x.nickname = t.team.Nickname.str();
        x.score = s.Score[i];
        x.shootoutScore = s.ShootoutGoals[i];
        x.shots = s.Shots[i];
        x.chancesFor = game.scoringChances(side);
        x.timeOfAttack = s.attackSeconds[i];
        // A goalie taken out or hurt leaves another in net by the end.
        x.startingGoalie = s.relief.starter[i] != kNoSlot ? s.relief.starter[i] : s.goalie[i];
        x.powerPlays = s.pen.PowerPlays[i];
        x.penaltyMinutes = s.pen.PenaltyMinutes[i];
        // Hurt in play: 1 to 3 back after a while, 4 done for the night, and
        // with games to miss hurt past this game.
        for (std::size_t slot = 0; slot < kRosterSlots; ++slot) {
            int kind = s.pen.InjuryKind[i][slot];
            int games = s.pen.InjuredInGame[i][slot];
            if (kind == 0 && games == 0) continue;
            x.injuredInGame[slot] = games > 0 ? kHurtInGame : std::max(kind, 1);
            x.injuryGames[slot] = games;
        }
        for (std::size_t p = 0; p < s.shotsByPeriod.size(); ++p)
            x.shotsByPeriod[std::min<std::size_t>(p, kPeriodSlots - 1)] += s.shotsByPeriod[p][i];
    }
    for (const PenaltyNote& p : s.penalties)
        f.penalties.push_back({p.period, p.clock, p.side, p.slot, p.minutes, std::string(p.name)});
    for (const GoalNote& g : s.goals) {
        GoalSummary out;
        out.period = g.period;
        out.clock = g.clock;
        out.side = g.side;
        out.strengthEdge = g.strengthEdge;
        out.emptyNet = g.emptyNet;
        out.scorer = g.scorer;
        out.assists = g.assists;
        out.penaltyShot = g.type == GoalType::PenaltyShot;
        f.goals.push_back(out);
        SideSummary& x = f.side[static_cast<std::size_t>(g.side)];
        x.goalsByPeriod[static_cast<std::size_t>(std::clamp(g.period, 1, kPeriodSlots) - 1)] += 1;
        if (g.strengthEdge > 0) x.powerPlayGoals += 1;
    }
    settleDecisions(f, s);
    return f;
}

void clearGameEntries(GameSession& session) {
    for (int side : {kVisitor, kHome}) {
        for (PlayerRecord& p : session.side(side).GameRoster) {
            statLine(p, StatLineIndex::Game) = StatLine{};
            p.Majors[1] = 0;
            p.Minors[1] = 0;
            p.Misconducts[1] = 0;
            p.GameMisconducts[1] = 0;
            p.MatchPenalties[1] = 0;
            p.Fights[2] = 0;
            p.RosterGames[1] = 0;
            p.ScoringChances[1] = 0;
            p.PowerPlayShots[1] = 0;
            p.GoalsAgainstOnIce[1] = 0;
            p.ShotsBySpot[1] = {};
            p.GoalsBySpot[1] = {};
        }
        TeamRecord& t = session.side(side).team;
        t.TeamFor[1] = TeamStatLine{};
        t.TeamAgainst[1] = TeamStatLine{};
    }
}

}  // namespace tallyrink
