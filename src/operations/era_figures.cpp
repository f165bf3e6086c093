#include "operations/era_figures.h"

#include <algorithm>
#include <cmath>

namespace tallyrink {

namespace {

bool within(double v, double lo, double hi) { return std::isfinite(v) && v >= lo && v <= hi; }

// Before power plays were counted they succeeded about as often as in the
// first counted seasons.
constexpr double kUncountedPowerPlayPct = 16.0;

}  // namespace

EraTargets eraTargets(const EraTable& table, int year) {
    const int clamped = std::clamp(year, EraTable::kFirstYear, EraTable::kLastYear);
    const EraFigures f = figuresOf(table.year(clamped), EraLevel::Professional);
    EraTargets e;
    e.games = f.games;
    e.goalsPerTeamGame = f.goalsPerTeam;
    e.assistsPerGoal = f.assistsPerGoal;
    // The table counts penalty minutes of both teams in a game.
    e.pimPerTeamGame = f.pimPerGame / 2;
    e.powerPlayPct = f.powerPlayPct > 0 ? f.powerPlayPct : kUncountedPowerPlayPct;
    e.savePct = f.savePct;
    e.shotsPerTeamGame = 0;  // the table keeps no shots: they follow from goals and saves
    e.fightsPerGame = f.fightsPerGame;
    return sanitizedEra(e, year);
}

EraTargets sanitizedEra(const EraTargets& era, int /*year*/) {
    const EraTargets fb{};
    EraTargets e = era;
    if (e.games < 10 || e.games > 120) e.games = fb.games;
    if (!within(e.goalsPerTeamGame, 0.5, 10)) e.goalsPerTeamGame = fb.goalsPerTeamGame;
    if (!within(e.assistsPerGoal, 0.1, 2)) e.assistsPerGoal = fb.assistsPerGoal;
    if (!within(e.pimPerTeamGame, 1, 60)) e.pimPerTeamGame = fb.pimPerTeamGame;
    if (!within(e.powerPlayPct, 1, 50)) e.powerPlayPct = fb.powerPlayPct;
    if (!within(e.savePct, 60, 99)) e.savePct = fb.savePct;
    if (!within(e.shotsPerTeamGame, 0, 70)) e.shotsPerTeamGame = 0;
    if (!within(e.fightsPerGame, 0, 5)) e.fightsPerGame = fb.fightsPerGame;
    return e;
}

DecisionShares decisionShares(int year) {
    // Regular-season overtime was played from 1983; the loser's point from
    // 1999; shootouts, and the end of ties, from 2005.
    DecisionShares d;
    if (year < 1983) {
        d.ties = 0.17;
    } else if (year < 1999) {
        d.ties = 0.13;
        d.overtimeMinutes = d.ties * 5.0 + 0.07 * 2.5;
    } else if (year < 2005) {
        d.ties = 0.12;
        d.overtimeLosses = 0.10;
        d.overtimeMinutes = d.ties * 5.0 + d.overtimeLosses * 2.5;
    } else {
        d.overtimeLosses = 0.23;
        d.shootouts = 0.08;
        d.overtimeMinutes = (d.overtimeLosses - d.shootouts) * 2.5 + d.shootouts * 5.0;
    }
    return d;
}

DressedSkaters dressedSkaters(int year) {
    DressedSkaters d;
    d.defence = year <= 1949 ? 4 : year <= 1974 ? 5 : 6;
    d.forwards = year <= 1949 ? 9 : year <= 1966 ? 10 : year <= 1977 ? 11 : 12;
    return d;
}

}  // namespace tallyrink
