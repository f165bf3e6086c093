#include "engine/goalie_rest.h"

#include <algorithm>

#include "team/positions.h"

namespace tallyrink {

int goalieStreakLimit(int realGames, Random& rng) {
    if (realGames <= 10 + rng.rand(15)) return 1;
    if (realGames < 20 + rng.rand(15)) return 2;
    if (realGames < 40 + rng.rand(15)) return 3;
    if (realGames < 60 + rng.rand(15)) return 4;
    if (realGames < 70 + rng.rand(10)) return 5;
    return 8;  // a workhorse still sits now and then
}

int startingGoalie(const LineupTeam& team, const GoalieSeason& season, Random& rng) {
    int best = kNoSlot;
    double bestScore = -1;
    const double seasonGames = std::max(season.seasonGames, 10);
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!team.candidate[static_cast<std::size_t>(slot)]) continue;
        const PlayerRecord& p = team.player(slot);
        if (!isGoalie(p)) continue;
        const int real = statLine(p, StatLineIndex::Real).GP;
        const int replay = statLine(p, StatLineIndex::Replay).GP;
        const int target = p.GoalieTargetStarts > 0 ? p.GoalieTargetStarts : real;
        double score = 100.0 * p.DepthGoalie + 10.0 * p.RatingGoalie / 10 + rng.rand(10);
        // A man who has played his run in a row rests.
        if (p.RosterGames[0] >= goalieStreakLimit(real, rng)) score *= 0.3;
        // So does one ahead of his share of the starts so far.
        double pace = replay / (season.teamGames + 1.0);
        if (target > 0 && pace > target / seasonGames) score *= 0.5;
        if (score > bestScore) {
            best = slot;
            bestScore = score;
        }
    }
    return best;
}

}  // namespace tallyrink
