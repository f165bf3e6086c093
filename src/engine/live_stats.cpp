#include "engine/live_stats.h"

#include <algorithm>

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// Byte counters stop at their top rather than wrap.
template <class T>
void bump(T& field, int by = 1) {
    int v = static_cast<int>(field) + by;
    field = static_cast<T>(std::clamp<int>(v, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

bool present(int slot) { return slot != kNoSlot; }

}  // namespace

void clearGameLines(BySlot<PlayerRecord>& roster, TeamRecord& team) {
    for (PlayerRecord& p : roster) statLine(p, StatLineIndex::Game) = StatLine{};
    team.GoalsFiveOnFive[1] = 0;
    for (auto* entry : {&team.GoalsFiveOnFour, &team.GoalsFiveOnThree, &team.GoalsFourOnFour, &team.GoalsFourOnThree,
                        &team.GoalsThreeOnThree, &team.GoalsThreeOnFour, &team.GoalsThreeOnFive, &team.GoalsFourOnFive,
                        &team.GoalsEmptyNet, &team.GoalsPenaltyShot})
        (*entry)[1] = 0;
}

void creditShotOnGoal(PlayerRecord& shooter) {
    creditBoth(shooter, [](StatLine& l) { bump(l.Sog); });
}
void creditSave(PlayerRecord& goalie) {
    creditBoth(goalie, [](StatLine& l) { bump(l.Saves); });
}
void creditMissedShot(PlayerRecord& shooter) {
    creditBoth(shooter, [](StatLine& l) { bump(l.MissedShots); });
}
void creditBlock(PlayerRecord& blocker) {
    creditBoth(blocker, [](StatLine& l) { bump(l.Blocks); });
}
void creditFaceoff(PlayerRecord& winner, PlayerRecord& loser) {
    creditBoth(winner, [](StatLine& l) { bump(l.FaceoffsWon); });
    creditBoth(loser, [](StatLine& l) { bump(l.FaceoffsLost); });
}
void creditHit(PlayerRecord& hitter) {
    creditBoth(hitter, [](StatLine& l) { bump(l.Hits); });
}
void creditTakeaway(PlayerRecord& p) {
    creditBoth(p, [](StatLine& l) { bump(l.Takeaways); });
}
void creditGiveaway(PlayerRecord& p) {
    creditBoth(p, [](StatLine& l) { bump(l.Giveaways); });
}

std::string_view goalTypeKey(GoalType t) {
    static constexpr std::array<std::string_view, 11> keys{"5-5", "5-4", "5-3", "4-4",   "4-3",         "3-3",
                                                           "3-4", "3-5", "4-5", "EMPTY", "PENALTY-SHOT"};
    return keys[static_cast<std::size_t>(t)];
}

GoalType goalTypeOf(int scorerSkaters, int otherSkaters, bool emptyNet, bool penaltyShot) {
    if (penaltyShot) return GoalType::PenaltyShot;
    if (emptyNet) return GoalType::EmptyNet;
    int a = std::clamp(scorerSkaters, 3, 5);
    int b = std::clamp(otherSkaters, 3, 5);
    switch (a * 10 + b) {
        case 54:
            return GoalType::FiveOnFour;
        case 53:
            return GoalType::FiveOnThree;
        case 44:
            return GoalType::FourOnFour;
        case 43:
            return GoalType::FourOnThree;
        case 33:
            return GoalType::ThreeOnThree;
        case 34:
            return GoalType::ThreeOnFour;
        case 35:
            return GoalType::ThreeOnFive;
        case 45:
            return GoalType::FourOnFive;
        default:
            return GoalType::FiveOnFive;
    }
}

void creditGoalType(TeamRecord& team, GoalType t) {
    switch (t) {
        case GoalType::FiveOnFive:
            bump(team.GoalsFiveOnFive[1]);
            break;
        case GoalType::FiveOnFour:
            bump(team.GoalsFiveOnFour[1]);
            break;
        case GoalType::FiveOnThree:
            bump(team.GoalsFiveOnThree[1]);
            break;
        case GoalType::FourOnFour:
            bump(team.GoalsFourOnFour[1]);
            break;
        case GoalType::FourOnThree:
            bump(team.GoalsFourOnThree[1]);
            break;
        case GoalType::ThreeOnThree:
            bump(team.GoalsThreeOnThree[1]);
            break;
        case GoalType::ThreeOnFour:
            bump(team.GoalsThreeOnFour[1]);
            break;
        case GoalType::ThreeOnFive:
            bump(team.GoalsThreeOnFive[1]);
            break;
        case GoalType::FourOnFive:
            bump(team.GoalsFourOnFive[1]);
            break;
        case GoalType::EmptyNet:
            bump(team.GoalsEmptyNet[1]);
            break;
        case GoalType::PenaltyShot:
            bump(team.GoalsPenaltyShot[1]);
            break;
    }
}

void cleanAssists(GoalCredit& g) {
    if (g.passer1 == g.scorer) g.passer1 = kNoSlot;
    if (g.passer2 == g.scorer || g.passer2 == g.passer1) g.passer2 = kNoSlot;
    if (!present(g.passer1)) g.passer2 = kNoSlot;
}

GoalStrength strengthOf(const GoalCredit& g) {
    if (g.penaltyShot) return GoalStrength::Even;
    if (g.skaters[0] > g.skaters[1]) return GoalStrength::PowerPlay;
    if (g.skaters[0] < g.skaters[1]) return GoalStrength::ShortHanded;
    return GoalStrength::Even;
}

void creditGoal(GoalCredit g, BySlot<PlayerRecord>& scoring, BySlot<PlayerRecord>& other) {
    cleanAssists(g);
    GoalStrength strength = strengthOf(g);
    if (present(g.scorer)) {
        creditBoth(scoring[at(g.scorer)], [&](StatLine& l) {
            bump(l.Goals);
            bump(l.Sog);
            if (strength == GoalStrength::PowerPlay) bump(l.PPG);
            if (strength == GoalStrength::ShortHanded) bump(l.SHG);
            if (g.emptyNet) bump(l.EmptyNetGoals);
            if (g.penaltyShot) bump(l.PenaltyShotGoals);
        });
    }
    for (int passer : {g.passer1, g.passer2}) {
        if (!present(passer)) continue;
        creditBoth(scoring[at(passer)], [&](StatLine& l) {
            bump(l.Assists);
            if (strength == GoalStrength::PowerPlay) bump(l.PPA);
            if (strength == GoalStrength::ShortHanded) bump(l.SHA);
        });
    }
    if (present(g.goalie)) creditBoth(other[at(g.goalie)], [](StatLine& l) { bump(l.GoalsAllowed); });
    // A power-play goal moves nobody's plus/minus; any other goal moves
    // everybody's who stood on the ice.
    // Nor does a penalty shot: the men on the ice stood and watched.
    if (strength == GoalStrength::PowerPlay || g.penaltyShot) return;
    for (int slot : g.ice[0].slot)
        if (present(slot)) creditBoth(scoring[at(slot)], [](StatLine& l) { bump(l.PlusMinus); });
    for (int slot : g.ice[1].slot)
        if (present(slot)) creditBoth(other[at(slot)], [](StatLine& l) { bump(l.PlusMinus, -1); });
}

}  // namespace tallyrink
