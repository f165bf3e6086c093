#pragma once

// What a game's steps drew, counted for whoever tunes the engine: where the
// steps were played and how long they ran, and how the shots went by class
// and by strength, beside the goal chance the table gave them. It reads the
// play and never draws, so counting leaves every game as it was.

#include <array>
#include <cstddef>

#include "engine/play_state.h"

namespace tallyrink {

struct ShotTallyRow {
    long tried = 0;  // shots drawn: goals, saves, misses and blocks
    long goals = 0;
    long saves = 0;
    long misses = 0;
    long blocks = 0;
    double goalPctSum = 0;  // the table's goal chance, summed over the shots on net

    [[nodiscard]] long onNet() const { return goals + saves; }
    void count(Result r, double goalPct);
    void add(const ShotTallyRow& o);
};

// Rows of `PlayTally::byClass`: the shot classes 0 to 5, then the shots
// taken straight off a rebound, which the table never sees.
inline constexpr std::size_t kTallyRebound = 6;
// Rows of `PlayTally::byStrength`.
enum class TallyStrength : std::size_t { Even, PowerPlay, ShortHanded };

struct PlayTally {
    std::array<long, kZoneCount> steps{};      // by the zone a step started in
    std::array<double, kZoneCount> seconds{};  // of play, same rows
    // The result drawn, by the zone the step started in.
    std::array<std::array<long, kResultCount>, kZoneCount> results{};
    std::array<ShotTallyRow, 7> byClass{};
    std::array<ShotTallyRow, 3> byStrength{};
    long penaltyDraws = 0;  // steps whose draw was a penalty or a fight
    // Penalties called and their minutes, by type (minor, double minor,
    // major, match, misconduct, game misconduct); the fighting majors and
    // the coincidental calls among them.
    std::array<long, 6> calls{};
    std::array<long, 6> callMinutes{};
    long fightMajors = 0;
    long coincidentalCalls = 0;
    // The late game: goalies a computer coach pulled, goals into an empty
    // net and goals scored with the own goalie out.
    long goaliePulls = 0;
    long emptyNetGoals = 0;
    long extraAttackerGoals = 0;
    // Goalies a computer coach took out after goals against.
    long goalieReliefs = 0;

    void add(const PlayTally& o);
};

inline void ShotTallyRow::count(Result r, double goalPct) {
    ++tried;
    if (r == Result::Goal) ++goals;
    if (r == Result::Save) ++saves;
    if (r == Result::Miss) ++misses;
    if (r == Result::Block) ++blocks;
    if (r == Result::Goal || r == Result::Save) goalPctSum += goalPct;
}

inline void ShotTallyRow::add(const ShotTallyRow& o) {
    tried += o.tried;
    goals += o.goals;
    saves += o.saves;
    misses += o.misses;
    blocks += o.blocks;
    goalPctSum += o.goalPctSum;
}

inline void PlayTally::add(const PlayTally& o) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        steps[i] += o.steps[i];
        seconds[i] += o.seconds[i];
        for (std::size_t r = 0; r < kResultCount; ++r) results[i][r] += o.results[i][r];
    }
    for (std::size_t i = 0; i < byClass.size(); ++i) byClass[i].add(o.byClass[i]);
    for (std::size_t i = 0; i < byStrength.size(); ++i) byStrength[i].add(o.byStrength[i]);
    penaltyDraws += o.penaltyDraws;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        calls[i] += o.calls[i];
        callMinutes[i] += o.callMinutes[i];
    }
    fightMajors += o.fightMajors;
    coincidentalCalls += o.coincidentalCalls;
    goaliePulls += o.goaliePulls;
    emptyNetGoals += o.emptyNetGoals;
    extraAttackerGoals += o.extraAttackerGoals;
    goalieReliefs += o.goalieReliefs;
}

}  // namespace tallyrink
