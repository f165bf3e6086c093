#include "engine/goalie_change.h"

#include <algorithm>

#include "engine/game.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }
std::uint64_t bitOf(int slot) { return std::uint64_t{1} << slot; }

}  // namespace

GoalieHook hookForPeriod(const std::array<std::uint8_t, 3>& hooks, int period) {
    const int index = hooks[at(std::clamp(period, 1, 3) - 1)];
    return index <= static_cast<int>(GoalieHook::VeryFast) ? static_cast<GoalieHook>(index) : GoalieHook::NoPreference;
}

// Real benches, over a season, take about one starter in fourteen out for the
// goals he gave up, nearly always after the third, fourth or fifth goal, and
// more often in the second period than in the first or third. The chances
// below are tuned to that on a replay of a real season; the factors say what
// makes a coach move sooner or later.
double reliefChance(GoalieHook hook, const ReliefPicture& p) {
    // One goal is never enough, whatever the hook: that takes a goalie's
    // own "after one goal" setting.
    if (p.goalsAllowed < 2) return 0;
    // A slow hook forgives a goal or two more than the usual bench, a fast
    // one a goal or two fewer.
    static constexpr std::array<int, 5> forgiven{0, 2, 1, -1, -2};
    const int goals = p.goalsAllowed - forgiven[static_cast<std::size_t>(hook)];
    if (goals < 3) return 0;
    // By the goals counted: the third, the fourth, the fifth, any later one.
    static constexpr std::array<double, 4> byGoals{.07, .16, .30, .50};
    double c = byGoals[at(std::min(goals, 6) - 3)];

    // Early, there is a game left to save and a bad start is given up on;
    // in the last period there is little left to gain, and in its second
    // half the goalie is left to finish what is by then a decided game.
    if (p.period == 1) {
        c *= 1.3;
    } else if (p.period >= p.regularPeriods) {
        c *= .6;
        if (p.clock * 2 < p.periodSeconds) c *= .4;
    }
    // Goals on few shots are the goalie's; goals behind a team that gives
    // up shot after shot are not.
    if (p.shotsFaced > 0) {
        const double savePct = 1.0 - static_cast<double>(p.goalsAllowed) / p.shotsFaced;
        if (savePct < .75)
            c *= 1.5;
        else if (savePct >= .88)
            c *= .5;
    }
    // A team still ahead keeps its goalie; one falling far behind wants a
    // change of luck.
    if (p.lead > 0)
        c *= .25;
    else if (p.lead == 0)
        c *= .6;
    else if (p.lead <= -3)
        c *= 1.3;
    return std::min(c, .95);
}

// ---- In the game ----------------------------------------------------------------

void Game::goalieChangeAfterGoal(const std::array<int, 2>& scoreBefore) {
    for (int side : {kVisitor, kHome}) {
        if (s_.Score[at(other(side))] == scoreBefore[at(other(side))]) continue;
        const int spare = reliefGoalie(side);
        if (spare == kNoSlot) continue;
        const int out = s_.goalie[at(side)];
        s_.relief.relieved[at(side)] |= bitOf(out);
        ++tally_.goalieReliefs;
        s_.goalie[at(side)] = spare;
        keptOffChanged();
        putUnitOnIce(side);
        // Told with the goal; the draw that follows needn't tell it again.
        s_.events.goalieAnnounced[at(side)] = spare;
        DescribeGoalieRelief(side, out);
    }
}

int Game::reliefGoalie(int side) {
    // The person coaching a side changes his own goalie.
    if (!computerDecides(side) || s_.GameOverFlag) return kNoSlot;
    // Overtime and the shootout are played out by the goalie in net, and a
    // change in the last minute of regulation would serve nobody.
    if (s_.Period > periods_ || s_.PlayZone == Zone::Shootout) return kNoSlot;
    if (s_.Period == periods_ && s_.Clock < 60) return kNoSlot;
    // An empty-net goal is not the goalie's.
    if (s_.GoaliePulled[at(side)]) return kNoSlot;
    const int goalie = s_.goalie[at(side)];
    if (goalie == kNoSlot) return kNoSlot;
    const PlayerRecord& p = sideOf(side).player(goalie);
    // A skater in net in an emergency stays there.
    if (!isGoalie(p)) return kNoSlot;
    if (p.GoalieNeverPullInGamesStarted == 1 && goalie == s_.relief.starter[at(side)]) return kNoSlot;
    const int spare = spareGoalie(side);
    if (spare == kNoSlot) return kNoSlot;

    const StatLine& line = statLine(p, StatLineIndex::Game);
    const int limit = p.GoaliePullAfterGoalsAllowed;
    if (limit >= 1 && limit <= 8) return line.GoalsAllowed >= limit ? spare : kNoSlot;

    ReliefPicture pic;
    pic.goalsAllowed = line.GoalsAllowed;
    pic.shotsFaced = line.GoalsAllowed + line.Saves;
    pic.period = s_.Period;
    pic.regularPeriods = periods_;
    pic.clock = s_.Clock;
    pic.periodSeconds = periodSeconds();
    pic.lead = leadOf(side);
    const double chance = reliefChance(hookForPeriod(sideOf(side).plan.YankGoalie, s_.Period), pic);
    if (chance <= 0 || rng_.rnd() >= chance) return kNoSlot;
    return spare;
}

// The backup who would go in: a dressed goalie, fit and not in the box,
// who hasn't already been taken out tonight; the first of the chart.
int Game::spareGoalie(int side) const {
    const int inNet = s_.goalie[at(side)];
    const std::uint64_t relieved = s_.relief.relieved[at(side)];
    return topGoalie(teams_[at(side)],
                     [&](int slot) { return slot == inNet || (relieved & bitOf(slot)) != 0 || offIce(side, slot); });
}

}  // namespace tallyrink
