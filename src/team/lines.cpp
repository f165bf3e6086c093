#include "team/lines.h"

#include <fmt/core.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <initializer_list>
#include <span>

#include "team/positions.h"
#include "team/slot_scan.h"

namespace tallyrink {

namespace {

constexpr std::size_t idx(EvenDepth d) { return static_cast<std::size_t>(d); }
constexpr std::size_t idx(KillDepth d) { return static_cast<std::size_t>(d); }

const StatLine& realOf(const PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }

}  // namespace

// ---- Line tables ------------------------------------------------------------

int LineTables::holderOf(int line, ForwardRole r) const {
    for (int s = 0; s < kRosterSlots; ++s)
        if (lineRole(line, s) == r) return s;
    return -1;
}

int LineTables::holderOf(int line, PairRole r) const {
    for (int s = 0; s < kRosterSlots; ++s)
        if (pairRole(line, s) == r) return s;
    return -1;
}

bool LineTables::lineUsed(int line) const {
    for (int s = 0; s < kRosterSlots; ++s)
        if (onLine(line, s)) return true;
    return false;
}

void LineTables::clearSlot(int slot) {
    for (auto& set : LineRoleLive) set[static_cast<std::size_t>(slot)] = 0;
    for (auto& set : LineFlagLive) set[static_cast<std::size_t>(slot)] = 0;
}

void loadStoredLines(const PlayerRecord& p, int slot, LineTables& lines) {
    auto keep = [](std::uint8_t role) -> std::uint8_t { return role > 3 ? 0 : role; };
    for (int line = 1; line <= kStoredLineSets; ++line) {
        auto i = static_cast<std::size_t>(line - 1);
        lines.LineRoleLive[i][static_cast<std::size_t>(slot)] = keep(p.LineRoleStored[i]);
        lines.LineFlagLive[i][static_cast<std::size_t>(slot)] = keep(p.LineFlagStored[i]);
    }
    for (std::size_t k = 0; k < 2; ++k) {
        lines.LineRoleLive[kStoredLineSets + k][static_cast<std::size_t>(slot)] = keep(p.ExtraLineRole[k]);
        lines.LineFlagLive[kStoredLineSets + k][static_cast<std::size_t>(slot)] = keep(p.ExtraLineFlag[k]);
    }
}

void storeLiveLines(const LineTables& lines, int slot, PlayerRecord& p) {
    for (int line = 1; line <= kStoredLineSets; ++line) {
        auto i = static_cast<std::size_t>(line - 1);
        p.LineRoleStored[i] = lines.LineRoleLive[i][static_cast<std::size_t>(slot)];
        p.LineFlagStored[i] = lines.LineFlagLive[i][static_cast<std::size_t>(slot)];
    }
    for (std::size_t k = 0; k < 2; ++k) {
        p.ExtraLineRole[k] = lines.LineRoleLive[kStoredLineSets + k][static_cast<std::size_t>(slot)];
        p.ExtraLineFlag[k] = lines.LineFlagLive[kStoredLineSets + k][static_cast<std::size_t>(slot)];
    }
}

// ---- Situations -------------------------------------------------------------

int fallbackLine(int line) {
    if (line == 5 || line == 6) return line - 4;
    if (line == 9 || line == 10) return line - 2;
    if (line == 13 || line == 14) return line - 2;
    if (line == 15 || line == 16) return line - 4;
    if (line >= 17 && line <= 19) return line == 18 ? 8 : 7;
    if (line == 20 || line == 21) return line - 19;
    if (line == 22 || line == 23) return line - 2;
    if (line >= 24 && line <= kLineSets) return 1;
    return 0;
}

std::string lineCaption(int line) {
    if (line >= 1 && line <= 6) return fmt::format("Even-strength line {}", line);
    if (line >= 7 && line <= 10) return fmt::format("Power play unit {}", line - 6);
    if (line >= 11 && line <= 14) return fmt::format("Penalty kill unit {}", line - 10);
    if (line == 15 || line == 16) return fmt::format("3-on-5 unit {}", line - 14);
    if (line >= 17 && line <= 19) return fmt::format("4-on-3 unit {}", line - 16);
    if (line == 20 || line == 21) return fmt::format("4-on-4 unit {}", line - 19);
    if (line == 22 || line == 23) return fmt::format("3-on-3 unit {}", line - 21);
    return fmt::format("Line set {}", line);
}

// ---- Ratings the fills read -------------------------------------------------

bool hasStandInRatings(const PlayerRecord& p) {
    if (isGoalie(p)) return p.RatingGoalie == 0;
    return p.RatingOffense == 0 && p.RatingDefense == 0;
}

LineupRatings lineupRatings(const PlayerRecord& p, double averageMinutes, double eraSavePct) {
    LineupRatings r{double(p.RatingOffense), double(p.RatingDefense),     double(p.RatingPenaltyKill),
                    double(p.RatingGoalie),  double(p.RatingPenaltyShot), false};
    const StatLine& real = realOf(p);
    if (isGoalie(p)) {
        if (!hasStandInRatings(p)) return r;
        r.standIn = true;
        // A goalie at the era's save percentage rates 6.5, a point of
        // save percentage being worth a whole point of rating. His record
        // is drawn toward a backup's figure by 500 shots, so a few good
        // games don't make him the starter.
        double faced = double(real.Saves) + real.GoalsAllowed;
        double pct = (real.Saves + 500 * (eraSavePct - 0.5) / 100) / (faced + 500) * 100;
        r.goalie = std::clamp(65 + (pct - eraSavePct) * 10, 15.0, 100.0);
        return r;
    }
    if (!hasStandInRatings(p)) return r;
    r.standIn = true;
    // Scoring rate for offence, and the coach's trust (ice time) for
    // defence, on the scales of the stored ratings: a first-line forward
    // near 8, a depth player near 4. A short record is drawn toward an
    // ordinary player's rate by 15 hours of it, so ten good games don't
    // make a star.
    bool defense = isDefenseman(p);
    double hours = real.GP * averageMinutes / 60;
    double points60 = (real.Goals + real.Assists + 15 * (defense ? 0.7 : 1.2)) / (hours + 15);
    double goals60 = (real.Goals + 15 * (defense ? 0.15 : 0.5)) / (hours + 15);
    r.offense = 10 * std::clamp(2 + 2.5 * points60, 0.5, 10.0);
    r.defense = 10 * std::clamp(2 + (averageMinutes - 10) / 3, 2.0, 10.0);
    if (p.RatingPenaltyKill == 0 && real.ToiSH > 0) {
        double k = real.ToiSH / 60.0;
        r.penaltyKill = k < 5 ? 0 : k > 0.7 * real.GP + 5 ? 2 : 1;
    }
    if (p.RatingPenaltyShot == 0) r.penaltyShot = std::clamp(std::round(2 + 4 * goals60), 1.0, 10.0);
    return r;
}

// ---- Depth charts -----------------------------------------------------------

namespace {

// Even a player with few minutes and few games stays a candidate: the
// corrections order the chart, they don't take a man off it.
constexpr double kUsageFloor = 0.02;

// Under 18 minutes a game a score loses 8% a minute, under 30 games 1% a game.
double usageFactor(const LineupTeam& t, int slot) {
    double f = 1;
    double minutes = t.minutes[static_cast<std::size_t>(slot)];
    int gp = realOf(t.player(slot)).GP;
    if (minutes < 18) f *= 1 - (18 - minutes) * 0.08;
    if (gp < 30) f *= 1 - (30 - gp) * 0.01;
    return std::max(f, kUsageFloor);
}

double drawsPer60(const LineupTeam& t, int slot) {
    const StatLine& real = realOf(t.player(slot));
    double minutes = real.GP * t.minutes[static_cast<std::size_t>(slot)];
    return minutes > 0 ? (real.FaceoffsWon + real.FaceoffsLost) / minutes * 60 : 0;
}

// How much a centre's score counts by the draws he takes: a man flagged only
// at centre is a centre whatever his draws; a winger who can play centre
// and takes few draws ranks behind the real centres. Without any draw data
// (older seasons, a team never given them) the draws say nothing.
double centerFactor(const LineupTeam& t, int slot, bool draws) {
    const PlayerRecord& p = t.player(slot);
    if (!hasFlag(p, Flag::LeftWing) && !hasFlag(p, Flag::RightWing)) return 1.1;
    double q = drawsPer60(t, slot);
    if (q == 0 && (!draws || p.PlayerYear < 1998)) return 1;
    if (q <= 5) return 0.3;
    if (q <= 12) return 0.5;
    if (q <= 20) return 0.7;
    return 1;
}

std::string lcFirst(std::string text) {
    if (!text.empty()) text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

// The side a player asked to play (PreferredSide: 1 left, 2 right) holds
// him off the other side's places; 0 plays either.
bool wrongHand(const PlayerRecord& p, bool leftSide) { return leftSide ? p.PreferredSide == 2 : p.PreferredSide == 1; }

// Ranks go from `top` down to `bottom`, highest score first; of equal scores
// the earlier slot, and only a score above 0 earns a rank. `men` holds, a
// bit a slot, the candidates who can score above 0 at all; the others are
// left unranked without being asked. Every slot's rank is cleared first
// unless `clear` says the caller has done it.
template <class Score, class Field>
void rankChart(LineupTeam& t, std::uint64_t men, int top, int bottom, Score score, Field field, bool clear = true) {
    if (clear)
        for (int s = 0; s < kRosterSlots; ++s) field(t.player(s)) = 0;
    // Every load ranks a dozen charts of ten places or fewer: the best are
    // kept in order as the men are scored, lowest slot first, so a man
    // enters only ahead of lower scores and a tie leaves the earlier slot
    // ahead. A man who can't beat the last of a full list isn't placed.
    struct Ranked {
        double score;
        int slot;
    };
    std::array<Ranked, kRosterSlots> best;  // the first `count` are set
    const std::size_t places = std::min<std::size_t>(static_cast<std::size_t>(std::max(top - bottom + 1, 0)),
                                                     static_cast<std::size_t>(kRosterSlots));
    std::size_t count = 0;
    for (; men != 0 && places > 0; men &= men - 1) {
        const int s = std::countr_zero(men);
        const double v = score(s);
        if (!(v > 0) || (count == places && !(v > best[count - 1].score))) continue;
        std::size_t at = count < places ? count++ : places - 1;
        for (; at > 0 && best[at - 1].score < v; --at) best[at] = best[at - 1];
        best[at] = {v, s};
    }
    for (std::size_t k = 0; k < count; ++k)
        field(t.player(best[k].slot)) = static_cast<std::uint8_t>(top - static_cast<int>(k));
}

double centerDepthScore(const LineupTeam& t, int slot, double center, double usage) {
    const PlayerRecord& p = t.player(slot);
    if (isGoalie(p) || !hasFlag(p, Flag::Center)) return 0;
    const auto& r = t.ratings[static_cast<std::size_t>(slot)];
    double score = 1000 + r.defense / 30 + r.offense / 7 + 100000;
    return score * center * usage;
}

// Defensemen aren't ranked at wing: the line fill never takes them there,
// and a rank they held would be one a forward lacks.
double wingDepthScore(const LineupTeam& t, int slot, bool left, double usage) {
    const PlayerRecord& p = t.player(slot);
    if (!isForward(p)) return 0;
    const auto& r = t.ratings[static_cast<std::size_t>(slot)];
    double score = 1000 + r.defense / 30 + r.offense / 10;
    if (hasFlag(p, left ? Flag::LeftWing : Flag::RightWing))
        score += 100000;
    else
        score *= 0.9;
    if (wrongHand(p, left)) score *= 0.1;
    return score * usage;
}

// Even-strength minutes a game as a whole number.
int evenMinutesOf(const PlayerRecord& p) {
    const StatLine& real = realOf(p);
    if (real.GP == 0) return 0;
    return static_cast<int>((real.Toi - real.ToiPP - real.ToiSH) / 60.0 / real.GP);
}

// The share of his even-strength time a player also got on the power play
// (or the kill): a team's own use of a player counts for more than ratings.
double specialTeamsFactor(const PlayerRecord& p, std::int32_t StatLine::*field, bool teamHasTime, int evenFloor,
                          std::initializer_list<std::pair<double, double>> steps) {
    int even = evenMinutesOf(p);
    if (!teamHasTime || even <= evenFloor) return 1;
    const StatLine& real = realOf(p);
    double share = (real.*field / 60.0) / ((real.GP + 0.1) * even);
    for (auto [limit, factor] : steps)
        if (share < limit) return factor;
    return 1;
}

// The first step holds a share of exactly 0 only.
double powerPlayFactor(const PlayerRecord& p, bool teamHasTime) {
    return specialTeamsFactor(p, &StatLine::ToiPP, teamHasTime, 5,
                              {{1e-12, 0.01}, {0.1, 0.05}, {0.2, 0.3}, {0.3, 0.5}});
}

double killFactor(const PlayerRecord& p, bool teamHasTime) {
    return specialTeamsFactor(p, &StatLine::ToiSH, teamHasTime, 4, {{0.05, 0.3}, {0.15, 0.5}, {0.25, 0.7}});
}

// What every chart of a fill reads of a man beyond his ratings, worked out
// once for all the charts: the candidates by kind, a bit a slot, and the
// corrections for use, draws and special-teams time.
struct DepthInputs {
    std::uint64_t men = 0;       // candidates
    std::uint64_t goalies = 0;   // candidates in goal
    std::uint64_t defense = 0;   // candidate defencemen
    std::uint64_t forwards = 0;  // candidates who are neither (flagged up front or not)
    std::uint64_t centers = 0;   // candidate skaters flagged at centre
    std::uint64_t upFront = 0;   // candidate skaters with any forward flag
    // Set only for the men named, the only ones the charts ask about.
    BySlot<double> usage;      // usageFactor, of the candidates
    BySlot<double> center;     // centerFactor, of the centres
    BySlot<double> powerPlay;  // powerPlayFactor, of the skaters
    BySlot<double> kill;       // killFactor, of the skaters

    explicit DepthInputs(const LineupTeam& t) {
        men = fitBits(t.candidate);
        bool draws = false, ppTime = false, shTime = false;
        for (std::uint64_t m = men; m != 0; m &= m - 1) {
            const int s = std::countr_zero(m);
            const PlayerRecord& p = t.player(s);
            const StatLine& real = realOf(p);
            const std::uint64_t bit = std::uint64_t{1} << s;
            draws = draws || real.FaceoffsWon + real.FaceoffsLost > 0;
            ppTime = ppTime || real.ToiPP > 0;
            shTime = shTime || real.ToiSH > 0;
            usage[static_cast<std::size_t>(s)] = usageFactor(t, s);
            if (isGoalie(p)) {
                goalies |= bit;
                continue;
            }
            (isDefenseman(p) ? defense : forwards) |= bit;
            if (hasFlag(p, Flag::Center)) centers |= bit;
            if (hasForwardFlag(p)) upFront |= bit;
        }
        for (std::uint64_t m = centers; m != 0; m &= m - 1) {
            const int s = std::countr_zero(m);
            center[static_cast<std::size_t>(s)] = centerFactor(t, s, draws);
        }
        for (std::uint64_t m = men & ~goalies; m != 0; m &= m - 1) {
            const int s = std::countr_zero(m);
            const PlayerRecord& p = t.player(s);
            powerPlay[static_cast<std::size_t>(s)] = powerPlayFactor(p, ppTime);
            kill[static_cast<std::size_t>(s)] = killFactor(p, shTime);
        }
    }
};

void fillForwardDepth(LineupTeam& t, const DepthInputs& in, bool clear) {
    rankChart(
        t, in.centers, 10, 1,
        [&](int s) {
            auto i = static_cast<std::size_t>(s);
            return centerDepthScore(t, s, in.center[i], in.usage[i]);
        },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthEven[idx(EvenDepth::Center)]; }, clear);
    rankChart(
        t, in.forwards, 10, 1, [&](int s) { return wingDepthScore(t, s, true, in.usage[static_cast<std::size_t>(s)]); },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthEven[idx(EvenDepth::LeftWing)]; }, clear);
    rankChart(
        t, in.forwards, 10, 1,
        [&](int s) { return wingDepthScore(t, s, false, in.usage[static_cast<std::size_t>(s)]); },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthEven[idx(EvenDepth::RightWing)]; }, clear);
}

void fillDefenseDepth(LineupTeam& t, const DepthInputs& in, bool clear) {
    rankChart(
        t, in.defense, 10, 1,
        [&](int s) {
            if (!isDefenseman(t.player(s))) return 0.0;
            const auto& r = t.ratings[static_cast<std::size_t>(s)];
            return (10 + (r.offense / 2 + r.defense) * 10) * in.usage[static_cast<std::size_t>(s)];
        },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthEven[idx(EvenDepth::Defense)]; }, clear);
}

void fillGoalieDepth(LineupTeam& t, const DepthInputs& in, bool clear) {
    rankChart(
        t, in.goalies, 10, 1,
        [&](int s) {
            const PlayerRecord& p = t.player(s);
            if (!isGoalie(p)) return 0.0;
            double score = t.ratings[static_cast<std::size_t>(s)].goalie * 100 + realOf(p).Toi / 1000.0 + 10000;
            return score * in.usage[static_cast<std::size_t>(s)];
        },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthGoalie; }, clear);
}

void fillPowerPlayDepth(LineupTeam& t, const DepthInputs& in, bool clear) {
    auto forwardScore = [&](int s, Flag position) {
        const PlayerRecord& p = t.player(s);
        if (isGoalie(p) || isDefenseman(p) || !hasForwardFlag(p)) return 0.0;
        auto i = static_cast<std::size_t>(s);
        double score = (10 + t.ratings[i].offense) * 10;
        if (position == Flag::Center && hasFlag(p, Flag::Center)) score *= in.center[i];
        score *= in.powerPlay[i];
        if (!hasFlag(p, position) && realOf(p).ToiPP < 150) score *= 0.7;
        return score * in.usage[i];
    };
    const std::uint64_t flaggedForwards = in.forwards & in.upFront;
    rankChart(
        t, flaggedForwards, 10, 1, [&](int s) { return forwardScore(s, Flag::Center); },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthPowerPlay[idx(EvenDepth::Center)]; }, clear);
    rankChart(
        t, flaggedForwards, 10, 1, [&](int s) { return forwardScore(s, Flag::LeftWing); },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthPowerPlay[idx(EvenDepth::LeftWing)]; }, clear);
    rankChart(
        t, flaggedForwards, 10, 1, [&](int s) { return forwardScore(s, Flag::RightWing); },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthPowerPlay[idx(EvenDepth::RightWing)]; }, clear);
    // The point men: the same offence score among the defencemen.
    rankChart(
        t, in.defense, 10, 1,
        [&](int s) {
            const PlayerRecord& p = t.player(s);
            if (!isDefenseman(p)) return 0.0;
            auto i = static_cast<std::size_t>(s);
            double score = (10 + t.ratings[i].offense) * 10;
            return score * in.powerPlay[i] * in.usage[i];
        },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthPowerPlay[idx(EvenDepth::Defense)]; }, clear);
}

void fillPenaltyKillDepth(LineupTeam& t, const DepthInputs& in, bool clear) {
    auto forwardScore = [&](int s) {
        const PlayerRecord& p = t.player(s);
        if (isGoalie(p) || !hasForwardFlag(p)) return 0.0;
        auto i = static_cast<std::size_t>(s);
        const auto& r = t.ratings[i];
        double score = (100 + r.penaltyKill * 1000 + r.offense / 5.5 + r.defense) * 10 + 10000;
        if (hasFlag(p, Flag::Center) && !hasFlag(p, Flag::LeftWing) && !hasFlag(p, Flag::RightWing)) score *= 1.1;
        return score * in.kill[i] * in.usage[i];
    };
    auto defenseScore = [&](int s) {
        const PlayerRecord& p = t.player(s);
        if (!isDefenseman(p)) return 0.0;
        auto i = static_cast<std::size_t>(s);
        const auto& r = t.ratings[i];
        const StatLine& real = realOf(p);
        double use = real.GP > 0 ? real.ToiSH / 60.0 / real.GP : 0;  // short-handed minutes a game
        double score = (100 + (r.penaltyKill * 3 + use) * 100 + r.offense / 5.5 + r.defense) * 10 + 10000;
        return score * in.kill[i] * in.usage[i];
    };
    // Both forward places rank by the same score, so they are ranked once.
    // A defenceman flagged up front ranks among the forwards here.
    rankChart(
        t, in.upFront, 10, 1, forwardScore,
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthPenaltyKill[idx(KillDepth::ForwardLeft)]; }, clear);
    for (int s = 0; s < kRosterSlots; ++s) {
        auto& depth = t.player(s).DepthPenaltyKill;
        depth[idx(KillDepth::ForwardRight)] = depth[idx(KillDepth::ForwardLeft)];
    }
    rankChart(
        t, in.defense, 10, 1, defenseScore,
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthPenaltyKill[idx(KillDepth::Defense)]; }, clear);
}

}  // namespace

void clearDepth(PlayerRecord& p) {
    p.DepthEven = {};
    p.DepthPowerPlay = {};
    p.DepthPenaltyKill = {};
    p.DepthGoalie = 0;
    p.DepthExtraAttacker = 0;
    p.DepthShootout = 0;
}

bool depthChartEmpty(const LineupTeam& t) {
    for (int s = 0; s < kRosterSlots; ++s) {
        if (!t.candidate[static_cast<std::size_t>(s)]) continue;
        const PlayerRecord& p = t.player(s);
        if (p.DepthGoalie > 0) return false;
        for (auto d : p.DepthEven)
            if (d > 0) return false;
    }
    return true;
}

void FillForwardDepth(LineupTeam& t) { fillForwardDepth(t, DepthInputs(t), true); }
void FillDefenseDepth(LineupTeam& t) { fillDefenseDepth(t, DepthInputs(t), true); }
void FillGoalieDepth(LineupTeam& t) { fillGoalieDepth(t, DepthInputs(t), true); }
void FillPowerPlayDepth(LineupTeam& t) { fillPowerPlayDepth(t, DepthInputs(t), true); }
void FillPenaltyKillDepth(LineupTeam& t) { fillPenaltyKillDepth(t, DepthInputs(t), true); }

void HkAutofillDepth(LineupTeam& t) {
    // The charts read ratings, flags and the real line, none of which a
    // chart writes, so one reading serves all five; their ranks are cleared
    // in one pass over the roster rather than one a chart.
    const DepthInputs in(t);
    for (PlayerRecord& p : *t.roster) {
        p.DepthEven = {};
        p.DepthGoalie = 0;
        p.DepthPowerPlay = {};
        p.DepthPenaltyKill = {};
    }
    fillForwardDepth(t, in, false);
    fillDefenseDepth(t, in, false);
    fillGoalieDepth(t, in, false);
    fillPowerPlayDepth(t, in, false);
    fillPenaltyKillDepth(t, in, false);
}

// ---- Lines --------------------------------------------------------------------

namespace {

std::size_t depthIndexOf(ForwardRole r) {
    switch (r) {
        case ForwardRole::LeftWing:
            return idx(EvenDepth::LeftWing);
        case ForwardRole::RightWing:
            return idx(EvenDepth::RightWing);
        default:
            return idx(EvenDepth::Center);
    }
}

Flag flagOf(ForwardRole r) {
    switch (r) {
        case ForwardRole::LeftWing:
            return Flag::LeftWing;
        case ForwardRole::RightWing:
            return Flag::RightWing;
        default:
            return Flag::Center;
    }
}

// The men who can't take a place on `line`: those already on it, and those
// holding a role (`pairsOnly`: a pair role) on another line of `others`.
// Worked out once per line, with the places someone already holds, rather
// than for each man at each place; only the man given a place changes it.
// The men are a bit a slot, read from the tables eight slots at a time.
struct LinePlaces {
    std::uint64_t taken = 0;
    std::array<bool, 4> roleHeld{};  // by ForwardRole
    std::array<bool, 3> pairHeld{};  // by PairRole
};

// The slots of a table of bytes that hold anything, a bit a slot.
std::uint64_t heldBits(const BySlot<std::uint8_t>& table) {
    std::uint64_t bits = 0;
    for (std::size_t first = 0; first < static_cast<std::size_t>(kRosterSlots); first += 8)
        bits |= byteMarks(nonzeroBytes(slotWord(table, first))) << first;
    return bits;
}

// Marks the roles held in a table (values past the roles, in a damaged
// table, hold no place the fills make).
template <std::size_t N>
void markHeld(const BySlot<std::uint8_t>& table, std::uint64_t holders, std::array<bool, N>& held) {
    for (; holders != 0; holders &= holders - 1) {
        std::uint8_t role = table[static_cast<std::size_t>(std::countr_zero(holders))];
        if (role < N) held[role] = true;
    }
}

// Who holds a role on each line the fills make or look at (1 to 14), a bit
// a slot, read from the tables once for all the lines of a fill and kept up
// as the fill places men.
struct LineHolders {
    static constexpr int kLines = 14;
    std::array<std::uint64_t, kLines> roles{};  // forward roles
    std::array<std::uint64_t, kLines> pairs{};  // pair roles

    explicit LineHolders(const LineTables& lines) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(kLines); ++i) {
            roles[i] = heldBits(lines.LineRoleLive[i]);
            pairs[i] = heldBits(lines.LineFlagLive[i]);
        }
    }
    static std::size_t at(int line) { return static_cast<std::size_t>(line - 1); }
};

LinePlaces placesOf(const LineTables& lines, const LineHolders& holders, int line, LineRange others, bool pairsOnly) {
    LinePlaces places;
    const auto i = LineHolders::at(line);
    markHeld(lines.LineRoleLive.at(i), holders.roles.at(i), places.roleHeld);
    markHeld(lines.LineFlagLive.at(i), holders.pairs.at(i), places.pairHeld);
    places.taken = holders.roles[i] | holders.pairs[i];
    for (int l = others.first; l <= others.last; ++l) {
        if (l == line) continue;
        places.taken |= holders.pairs.at(LineHolders::at(l));
        if (!pairsOnly) places.taken |= holders.roles.at(LineHolders::at(l));
    }
    return places;
}

// The best candidate without a role on the line; -1 when no score is above 0.
template <class Score>
int bestFor(const LineupTeam& t, int line, Score score) {
    int best = -1;
    double bestScore = 0;
    for (int s = 0; s < kRosterSlots; ++s) {
        if (!t.candidate[static_cast<std::size_t>(s)] || t.lines->onLine(line, s)) continue;
        double v = score(s);
        if (v > bestScore) {
            best = s;
            bestScore = v;
        }
    }
    return best;
}

double evenForwardScore(const LineupTeam& t, int slot, ForwardRole role) {
    const PlayerRecord& p = t.player(slot);
    if (isGoalie(p) || isDefenseman(p) || !hasForwardFlag(p)) return 0;
    if (role == ForwardRole::Center && !hasFlag(p, Flag::Center)) return 0;
    double score = (hasFlag(p, flagOf(role)) ? 100 : 0) + 1000.0 * p.DepthEven[depthIndexOf(role)];
    if (role != ForwardRole::Center && wrongHand(p, role == ForwardRole::LeftWing)) score *= 0.1;
    return score;
}

double powerPlayForwardScore(const LineupTeam& t, int slot, ForwardRole role) {
    const PlayerRecord& p = t.player(slot);
    if (isGoalie(p)) return 0;
    if (role == ForwardRole::Center && !hasFlag(p, Flag::Center)) return 0;
    double score = t.ratings[static_cast<std::size_t>(slot)].offense / 10 + 100;
    if (hasFlag(p, flagOf(role))) score += 100;
    score += 1000.0 * p.DepthPowerPlay[depthIndexOf(role)];
    if (hasForwardFlag(p)) score += 100;
    if (role != ForwardRole::Center && wrongHand(p, role == ForwardRole::LeftWing)) score *= 0.1;
    return score;
}

double killForwardScore(const LineupTeam& t, int slot, ForwardRole role) {
    const PlayerRecord& p = t.player(slot);
    if (isGoalie(p)) return 0;
    const auto& r = t.ratings[static_cast<std::size_t>(slot)];
    auto side = role == ForwardRole::LeftWing ? KillDepth::ForwardLeft : KillDepth::ForwardRight;
    double score = r.penaltyKill * 100 + (hasForwardFlag(p) ? 100 : 0) + 1000.0 * p.DepthPenaltyKill[idx(side)];
    if (r.offense > 70) score *= 0.5;
    if (r.offense > 90) score *= 0.5;
    return score;
}

// The scores of one place, with the men whose score is above 0 (the only
// ones who can take it) a bit a slot. Only their scores are ever read, so
// the rest are left unset rather than cleared at every fill.
struct PlaceScores {
    BySlot<double> score;
    std::uint64_t scored = 0;

    void set(int slot, double v) {
        score[static_cast<std::size_t>(slot)] = v;
        if (v > 0) scored |= std::uint64_t{1} << slot;
    }
};

// Each man's score at each forward place, by the kind of line (even, power
// play, kill) and the role (ForwardRole less one). The scores read ratings,
// flags and depth charts, which filling lines doesn't change, so a fill works
// them out once for all its lines. A man who isn't a candidate isn't scored.
struct ForwardScores {
    std::array<std::array<PlaceScores, 3>, 3> byKind;

    explicit ForwardScores(const LineupTeam& t) {
        for (std::uint64_t men = fitBits(t.candidate); men != 0; men &= men - 1) {
            const int s = std::countr_zero(men);
            if (isGoalie(t.player(s))) continue;  // a goalie scores 0 everywhere
            for (ForwardRole role : {ForwardRole::LeftWing, ForwardRole::Center, ForwardRole::RightWing}) {
                auto r = static_cast<std::size_t>(role) - 1;
                byKind[0][r].set(s, evenForwardScore(t, s, role));
                byKind[1][r].set(s, powerPlayForwardScore(t, s, role));
                if (role != ForwardRole::Center) byKind[2][r].set(s, killForwardScore(t, s, role));
            }
        }
    }
    [[nodiscard]] const PlaceScores& of(int line, ForwardRole role) const {
        std::size_t kind = line <= 4 ? 0 : line <= 10 ? 1 : 2;
        return byKind[kind][static_cast<std::size_t>(role) - 1];
    }
};

// The man not taken with the best score, the earlier slot of equal scores;
// -1 when no score is above 0.
int bestOf(const PlaceScores& place, std::uint64_t taken) {
    int best = -1;
    double bestScore = 0;
    for (std::uint64_t men = place.scored & ~taken; men != 0; men &= men - 1) {
        const int s = std::countr_zero(men);
        if (double v = place.score[static_cast<std::size_t>(s)]; v > bestScore) {
            best = s;
            bestScore = v;
        }
    }
    return best;
}

// Men already on the line, or on another line of its group, are passed
// over (the taken places); the scores only rank the rest.
void fillForwardLine(LineupTeam& t, LineHolders& holders, int line, const ForwardScores& scores) {
    bool kill = line >= 11;
    static constexpr std::array kKillRoles{ForwardRole::LeftWing, ForwardRole::RightWing};
    static constexpr std::array kRoles{ForwardRole::Center, ForwardRole::LeftWing, ForwardRole::RightWing};
    std::span<const ForwardRole> roles = kill ? std::span<const ForwardRole>(kKillRoles) : kRoles;
    LineRange group = line <= 4 ? LineRange{1, 4} : line <= 10 ? LineRange{7, 10} : LineRange{11, 14};
    LinePlaces places = placesOf(*t.lines, holders, line, group, false);
    for (ForwardRole role : roles) {
        if (places.roleHeld[static_cast<std::size_t>(role)]) continue;
        int best = bestOf(scores.of(line, role), places.taken);
        if (best < 0) continue;
        t.lines->setLineRole(line, best, role);
        places.taken |= std::uint64_t{1} << best;
        holders.roles[LineHolders::at(line)] |= std::uint64_t{1} << best;
    }
}

double pairScore(const LineupTeam& t, int slot, int line, PairRole role) {
    const PlayerRecord& p = t.player(slot);
    if (!isDefenseman(p)) return 0;
    const auto& r = t.ratings[static_cast<std::size_t>(slot)];
    if (line <= 4) {
        double score = 1000.0 * p.DepthEven[idx(EvenDepth::Defense)] + 100;
        if (wrongHand(p, role == PairRole::Left)) score *= 0.1;
        return score;
    }
    if (line <= 10) {
        return r.defense * 90 + 1001.0 * p.DepthPowerPlay[idx(EvenDepth::Defense)] + 10000;
    }
    return r.penaltyKill * 90 + 1001.0 * p.DepthPenaltyKill[idx(KillDepth::Defense)] + 10000;
}

// Each defenceman's score at each pair place, by the kind of line and the
// role (PairRole less one), worked out once per fill as the forwards' are.
struct PairScores {
    std::array<std::array<PlaceScores, 2>, 3> byKind;

    explicit PairScores(const LineupTeam& t) {
        for (std::uint64_t men = fitBits(t.candidate); men != 0; men &= men - 1) {
            const int s = std::countr_zero(men);
            if (!isDefenseman(t.player(s))) continue;  // only defencemen score
            for (PairRole role : {PairRole::Left, PairRole::Right}) {
                auto r = static_cast<std::size_t>(role) - 1;
                byKind[0][r].set(s, pairScore(t, s, 1, role));
                byKind[1][r].set(s, pairScore(t, s, 7, role));
                byKind[2][r].set(s, pairScore(t, s, 11, role));
            }
        }
    }
    [[nodiscard]] const PlaceScores& of(int line, PairRole role) const {
        std::size_t kind = line <= 4 ? 0 : line <= 10 ? 1 : 2;
        return byKind[kind][static_cast<std::size_t>(role) - 1];
    }
};

// A man with a pair on another line of the group is passed over, but for
// the first even pair, which takes the best men whatever pair they are on.
void fillPair(LineupTeam& t, LineHolders& holders, int line, const PairScores& scores) {
    LineRange group = line == 1    ? LineRange{1, 0}
                      : line <= 4  ? LineRange{1, 4}
                      : line <= 10 ? LineRange{7, 10}
                                   : LineRange{11, 14};
    LinePlaces places = placesOf(*t.lines, holders, line, group, true);
    for (PairRole role : {PairRole::Left, PairRole::Right}) {
        if (places.pairHeld[static_cast<std::size_t>(role)]) continue;
        int best = bestOf(scores.of(line, role), places.taken);
        if (best < 0) continue;
        t.lines->setPairRole(line, best, role);
        places.taken |= std::uint64_t{1} << best;
        holders.pairs[LineHolders::at(line)] |= std::uint64_t{1} << best;
    }
}

constexpr std::array kFilledLines = {1, 2, 3, 4, 7, 8, 11, 12};

void fillForwards(LineupTeam& t, LineHolders& holders) {
    const ForwardScores scores(t);
    for (int line : kFilledLines) fillForwardLine(t, holders, line, scores);
}

void fillDefense(LineupTeam& t, LineHolders& holders) {
    const PairScores scores(t);
    for (int line : kFilledLines) fillPair(t, holders, line, scores);
}

}  // namespace

void FillForwards(LineupTeam& t) {
    LineHolders holders(*t.lines);
    fillForwards(t, holders);
}

void FillDefense(LineupTeam& t) {
    LineHolders holders(*t.lines);
    fillDefense(t, holders);
}

void FillExtraAttacker(LineupTeam& t) {
    rankChart(
        t, fitBits(t.candidate), 15, 9,
        [&](int s) { return isGoalie(t.player(s)) ? 0.0 : t.ratings[static_cast<std::size_t>(s)].offense * 10; },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthExtraAttacker; });
}

void FillShootout(LineupTeam& t) {
    rankChart(
        t, fitBits(t.candidate), 15, 9,
        [&](int s) {
            const PlayerRecord& p = t.player(s);
            if (isGoalie(p)) return 0.0;
            const auto& r = t.ratings[static_cast<std::size_t>(s)];
            return r.penaltyShot * 1000 + r.offense * 10 + realOf(p).Goals;
        },
        [](PlayerRecord& p) -> std::uint8_t& { return p.DepthShootout; });
}

void HkAutofillLines(LineupTeam& t) {
    // The pairs are filled around the forwards just placed: one reading of
    // the tables serves both.
    LineHolders holders(*t.lines);
    fillForwards(t, holders);
    fillDefense(t, holders);
    FillExtraAttacker(t);
    FillShootout(t);
}

// ---- Completing short lines -----------------------------------------------------

namespace {

struct Need {
    int line;
    ForwardRole forward;  // None for a defence role
    PairRole pair;
};

// The roles of the lines a team plays, in the order they are completed:
// forward lines 1 to 4, even pairs 1 to 3, then each power-play and
// penalty-kill unit's forwards and its pair. A fixed table, since every
// team load asks it.
constexpr std::array<Need, 36> kNeeds = [] {
    std::array<Need, 36> needs{};
    std::size_t n = 0;
    auto forwards = [&](int line, bool center) {
        if (center) needs[n++] = {line, ForwardRole::Center, PairRole::None};
        needs[n++] = {line, ForwardRole::LeftWing, PairRole::None};
        needs[n++] = {line, ForwardRole::RightWing, PairRole::None};
    };
    auto pair = [&](int line) {
        needs[n++] = {line, ForwardRole::None, PairRole::Left};
        needs[n++] = {line, ForwardRole::None, PairRole::Right};
    };
    for (int line = 1; line <= 4; ++line) forwards(line, true);
    for (int line = 1; line <= 3; ++line) pair(line);
    for (int line : {7, 8}) {
        forwards(line, true);
        pair(line);
    }
    for (int line : {11, 12}) {
        forwards(line, false);
        pair(line);
    }
    return needs;
}();

// True when some slot of a line's table holds `role` (not 0), read eight
// slots at a time: a byte equal to the role is a zero byte once the role is
// taken out of every byte.
bool roleTaken(const BySlot<std::uint8_t>& table, std::uint8_t role) {
    constexpr std::uint64_t kLow = 0x0101010101010101ULL;
    const std::uint64_t spread = kLow * role;
    for (std::size_t first = 0; first < static_cast<std::size_t>(kRosterSlots); first += 8) {
        // Slots past the roster read as 0, which never equals a role.
        if ((nonzeroBytes(slotWord(table, first) ^ spread) ^ kLow) != 0) return true;
    }
    return false;
}

LineRange groupOf(int line) {
    if (line <= 6) return {1, 6};
    if (line <= 10) return {7, 10};
    return {11, 14};
}

std::uint8_t depthFor(const PlayerRecord& p, const Need& n) {
    bool pp = n.line >= 7 && n.line <= 10;
    bool kill = n.line >= 11;
    if (n.forward != ForwardRole::None) {
        if (kill)
            return p.DepthPenaltyKill[idx(n.forward == ForwardRole::LeftWing ? KillDepth::ForwardLeft
                                                                             : KillDepth::ForwardRight)];
        return pp ? p.DepthPowerPlay[depthIndexOf(n.forward)] : p.DepthEven[depthIndexOf(n.forward)];
    }
    if (kill) return p.DepthPenaltyKill[idx(KillDepth::Defense)];
    return pp ? p.DepthPowerPlay[idx(EvenDepth::Defense)] : p.DepthEven[idx(EvenDepth::Defense)];
}

std::string roleName(const Need& n) {
    switch (n.forward) {
        case ForwardRole::LeftWing:
            return "left wing";
        case ForwardRole::Center:
            return "center";
        case ForwardRole::RightWing:
            return "right wing";
        case ForwardRole::None:
            break;
    }
    return n.pair == PairRole::Left ? "left defense" : "right defense";
}

std::string needCaption(const Need& n) {
    if (n.line <= 6 && n.forward == ForwardRole::None) return fmt::format("Even-strength pair {}", n.line);
    return lineCaption(n.line);
}

int otherLineOf(const LineTables& lines, int slot, LineRange group, int except) {
    for (int line = group.first; line <= group.last; ++line)
        if (line != except && lines.onLine(line, slot)) return line;
    return 0;
}

}  // namespace

std::vector<std::string> completeLines(LineupTeam& t, const BySlot<std::string>& nameOf) {
    std::vector<std::string> notes;
    for (const Need& n : kNeeds) {
        bool forwardRole = n.forward != ForwardRole::None;
        const auto i = static_cast<std::size_t>(n.line - 1);
        if (forwardRole ? roleTaken(t.lines->LineRoleLive[i], static_cast<std::uint8_t>(n.forward))
                        : roleTaken(t.lines->LineFlagLive[i], static_cast<std::uint8_t>(n.pair)))
            continue;
        LineRange group = groupOf(n.line);
        int best = bestFor(t, n.line, [&](int s) {
            const PlayerRecord& p = t.player(s);
            if (isGoalie(p)) return 0.0;
            const auto& r = t.ratings[static_cast<std::size_t>(s)];
            bool rightKind = forwardRole ? isForward(p) : isDefenseman(p);
            double score = 1 + r.offense / 10 + r.defense / 10 + t.minutes[static_cast<std::size_t>(s)];
            score += 1000.0 * depthFor(p, n);
            if (forwardRole && hasFlag(p, flagOf(n.forward))) score += 20000;
            if (rightKind) score += 100000;
            if (otherLineOf(*t.lines, s, group, n.line) == 0) score += 1000000;
            return score;
        });
        if (best < 0) continue;
        const PlayerRecord& p = t.player(best);
        std::string why;
        if (int other = otherLineOf(*t.lines, best, group, n.line); other > 0)
            why = fmt::format(", also on {}", lcFirst(needCaption({other, n.forward, n.pair})));
        if (forwardRole && !isForward(p)) why = ", a defenseman" + why;
        if (!forwardRole && !isDefenseman(p)) why = ", a forward" + why;
        if (forwardRole)
            t.lines->setLineRole(n.line, best, n.forward);
        else
            t.lines->setPairRole(n.line, best, n.pair);
        notes.push_back(fmt::format("{}, {}: {} fills in{}", needCaption(n), roleName(n),
                                    nameOf[static_cast<std::size_t>(best)],
                                    why.empty() ? "" : " (" + why.substr(2) + ")"));
    }
    return notes;
}

}  // namespace tallyrink
