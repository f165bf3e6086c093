#include "team/lineup_tools.h"

#include <algorithm>
#include <bit>

#include "team/positions.h"
#include "team/slot_scan.h"

namespace tallyrink {

namespace {

constexpr std::size_t at(IcePos p) { return static_cast<std::size_t>(p); }

bool isForwardPos(IcePos p) { return p == IcePos::LeftWing || p == IcePos::Center || p == IcePos::RightWing; }

std::uint8_t depthAt(const PlayerRecord& p, DepthKind kind, IcePos pos) {
    auto even = [](IcePos q) {
        switch (q) {
            case IcePos::LeftWing:
                return EvenDepth::LeftWing;
            case IcePos::RightWing:
                return EvenDepth::RightWing;
            case IcePos::Center:
                return EvenDepth::Center;
            default:
                return EvenDepth::Defense;
        }
    };
    auto i = static_cast<std::size_t>(even(pos));
    switch (kind) {
        case DepthKind::Even:
            return p.DepthEven[i];
        case DepthKind::PowerPlay:
            return p.DepthPowerPlay[i];
        case DepthKind::PenaltyKill:
            if (!isForwardPos(pos)) return p.DepthPenaltyKill[static_cast<std::size_t>(KillDepth::Defense)];
            return p.DepthPenaltyKill[static_cast<std::size_t>(pos == IcePos::RightWing ? KillDepth::ForwardRight
                                                                                        : KillDepth::ForwardLeft)];
    }
    return 0;
}

Flag flagAt(IcePos p) {
    switch (p) {
        case IcePos::LeftWing:
            return Flag::LeftWing;
        case IcePos::Center:
            return Flag::Center;
        case IcePos::RightWing:
            return Flag::RightWing;
        default:
            return Flag::Defense;
    }
}

bool freeSkater(const LineupTeam& t, const OnIce& ice, int goalie, int slot) {
    return t.candidate[static_cast<std::size_t>(slot)] && slot != goalie && !ice.holds(slot) &&
           !isGoalie(t.player(slot));
}

// A line's role bytes by slot, forwards' or defence pairs': no role is 0.
const BySlot<std::uint8_t>& lineRoles(const LineupTeam& t, int line, bool forwards) {
    const auto i = static_cast<std::size_t>(line - 1);
    return forwards ? t.lines->LineRoleLive.at(i) : t.lines->LineFlagLive.at(i);
}

// The line that gives a place its players: the line asked for when a fit
// player holds a role of that kind on it, else the first line behind it in
// the chain of stand-ins that has one; 0 when none has.
int sourceLine(const LineupTeam& t, int line, bool forwards) {
    for (int hops = 0; line > 0 && hops < kLineSets; ++hops, line = fallbackLine(line)) {
        const BySlot<std::uint8_t>& roles = lineRoles(t, line, forwards);
        for (int first = 0; first < kRosterSlots; first += 8) {
            for (std::uint64_t held = nonzeroBytes(slotWord(roles, static_cast<std::size_t>(first))); held != 0;
                 held &= held - 1)
                if (t.candidate[static_cast<std::size_t>(first + std::countr_zero(held) / 8)]) return line;
        }
    }
    return 0;
}

// The holder of `role` at slot `s` goes to his place when it is wanted and
// open, else among the spares.
void placeHolder(const LineupTeam& t, int s, std::uint8_t role, bool forwards, const PositionList& wanted, int goalie,
                 IceSource source, IcePlacement& out, std::array<int, kRosterSlots>& spare, std::size_t& spareCount) {
    IcePos pos;
    if (forwards) {
        auto r = static_cast<ForwardRole>(role);
        pos = r == ForwardRole::LeftWing ? IcePos::LeftWing
              : r == ForwardRole::Center ? IcePos::Center
                                         : IcePos::RightWing;
    } else {
        auto r = static_cast<PairRole>(role);
        pos = r == PairRole::Left ? IcePos::LeftDefense : IcePos::RightDefense;
    }
    if (!freeSkater(t, out.onIce, goalie, s)) return;
    bool open = wanted.contains(pos) && out.onIce[pos] == kNoSlot;
    if (open) {
        out.onIce[pos] = s;
        out.source[at(pos)] = source;
    } else {
        spare[spareCount++] = s;
    }
}

// Puts the fit holders of a line's roles on their places; holders whose
// place isn't wanted in this situation are left for the places still open.
void placeFromLine(const LineupTeam& t, int line, bool forwards, const PositionList& wanted, int goalie,
                   IceSource source, IcePlacement& out) {
    if (line == 0) return;
    // Holders left over, in slot order; the first of them fills the next open place.
    std::array<int, kRosterSlots> spare;  // the first spareCount are set
    std::size_t spareCount = 0;
    std::size_t nextSpare = 0;
    // The role is the cheap test and most slots hold none on the line, so it
    // comes before the question of whether the man is free.
    const BySlot<std::uint8_t>& roles = lineRoles(t, line, forwards);
    for (int first = 0; first < kRosterSlots; first += 8) {
        // Only the slots of the block that hold a role, lowest first.
        for (std::uint64_t held = nonzeroBytes(slotWord(roles, static_cast<std::size_t>(first))); held != 0;
             held &= held - 1) {
            const int s = first + std::countr_zero(held) / 8;
            placeHolder(t, s, roles[static_cast<std::size_t>(s)], forwards, wanted, goalie, source, out, spare,
                        spareCount);
        }
    }
    for (IcePos pos : wanted) {
        if (out.onIce[pos] != kNoSlot || isForwardPos(pos) != forwards || nextSpare == spareCount) continue;
        out.onIce[pos] = spare[nextSpare++];
        out.source[at(pos)] = source;
    }
}

// The best fit free skater for a place: a player of the place's kind first,
// then one flagged for the very place, then by the situation's depth chart,
// his ratings and his minutes.
void placeFromBench(const LineupTeam& t, DepthKind kind, const PositionList& wanted, int goalie, IcePlacement& out) {
    // The fit men not on the ice, a bit a slot: a fourth line's shift has
    // no pair of its own, so the bench is searched many times a game and
    // only these are worth scoring.
    std::uint64_t bench = 0;
    bool asked = false;
    for (IcePos pos : wanted) {
        if (out.onIce[pos] != kNoSlot) continue;
        if (!asked) {
            asked = true;
            bench = fitBits(t.candidate);
            for (int s : out.onIce.slot)
                if (s != kNoSlot) bench &= ~(std::uint64_t{1} << s);
            if (goalie != kNoSlot) bench &= ~(std::uint64_t{1} << goalie);
        }
        int best = kNoSlot;
        double bestScore = 0;
        for (std::uint64_t men = bench; men != 0; men &= men - 1) {
            const int s = std::countr_zero(men);
            const PlayerRecord& p = t.player(s);
            if (isGoalie(p)) continue;
            const auto& r = t.ratings[static_cast<std::size_t>(s)];
            bool rightKind = isForwardPos(pos) ? isForward(p) : isDefenseman(p);
            double score = 1 + t.minutes[static_cast<std::size_t>(s)] + (r.offense + r.defense) / 10;
            score += 1000.0 * depthAt(p, kind, pos);
            if (hasFlag(p, flagAt(pos))) score += 100000;
            if (rightKind) score += 1000000;
            if (score > bestScore) {
                best = s;
                bestScore = score;
            }
        }
        if (best == kNoSlot) continue;
        const PlayerRecord& p = t.player(best);
        bool rightKind = isForwardPos(pos) ? isForward(p) : isDefenseman(p);
        bench &= ~(std::uint64_t{1} << best);
        out.onIce[pos] = best;
        out.source[at(pos)] = rightKind && depthAt(p, kind, pos) > 0 ? IceSource::DepthChart : IceSource::Bench;
    }
}

}  // namespace

std::string positionName(IcePos p) {
    switch (p) {
        case IcePos::LeftWing:
            return "Left Wing";
        case IcePos::Center:
            return "Center";
        case IcePos::RightWing:
            return "Right Wing";
        case IcePos::LeftDefense:
            return "Left Defenseman";
        case IcePos::RightDefense:
            return "Right Defenseman";
        case IcePos::GoalieOrExtra:
            break;
    }
    return "Goalie";
}

BySlot<bool> BuildFitList(const BySlot<PlayerRecord>& roster, int teamId, const BySlot<std::int16_t>& dressedToday,
                          const BySlot<int>* energy) {
    BySlot<bool> fit{};
    for (std::size_t s = 0; s < roster.size(); ++s) {
        const PlayerRecord& p = roster[s];
        fit[s] = p.PlayerId > 0 && p.TeamId == teamId && p.InjuryReturnMonth == 0 && p.SuspensionGamesLeft == 0 &&
                 dressedToday[s] == 0 && p.InactiveFlag != 99 && (energy == nullptr || (*energy)[s] >= 80);
    }
    return fit;
}

PositionList requiredPositions(int skaters, int threeSkaterFormation) {
    using P = IcePos;
    if (skaters >= 5) return {{P::LeftWing, P::Center, P::RightWing, P::LeftDefense, P::RightDefense}, 5};
    if (skaters == 4) return {{P::LeftWing, P::RightWing, P::LeftDefense, P::RightDefense}, 4};
    if (threeSkaterFormation == 1) return {{P::LeftWing, P::RightWing, P::LeftDefense}, 3};
    return {{P::Center, P::LeftDefense, P::RightDefense}, 3};
}

int chooseGoalie(const LineupTeam& t, int wanted, bool* emergency) {
    if (emergency) *emergency = false;
    auto fit = [&](int s) { return s >= 0 && s < kRosterSlots && t.candidate[static_cast<std::size_t>(s)]; };
    if (fit(wanted) && isGoalie(t.player(wanted))) return wanted;
    int best = topGoalie(t, [](int) { return false; });
    if (best != kNoSlot) return best;
    // No goalie: the skater the team can best spare goes in net.
    double fewest = 0;
    for (int s = 0; s < kRosterSlots; ++s) {
        if (!fit(s)) continue;
        double m = t.minutes[static_cast<std::size_t>(s)];
        if (best == kNoSlot || m < fewest) {
            best = s;
            fewest = m;
        }
    }
    if (best != kNoSlot && emergency) *emergency = true;
    return best;
}

IcePlacement PutLinesOnIce(const LineupTeam& t, const IceRequest& req, Random* rng) {
    IcePlacement out;
    bool emergency = false;
    out.goalie = chooseGoalie(t, req.goalie, &emergency);
    int own = std::clamp(req.own, 3, 5);
    PositionList wanted = requiredPositions(own, req.threeSkaterFormation);
    LineRange range = situationLines(own, req.opponent);
    int forwardLine = std::min(range.first + std::max(req.unit, 1) - 1, range.last);
    int pairNumber = req.pair > 0 ? req.pair : req.unit;
    int pairLine = std::min(range.first + std::max(pairNumber, 1) - 1, range.last);

    int fLine = sourceLine(t, forwardLine, true);
    int dLine = sourceLine(t, pairLine, false);
    out.forwardLine = fLine;
    out.pairLine = dLine;
    placeFromLine(t, fLine, true, wanted, out.goalie, fLine == forwardLine ? IceSource::Line : IceSource::StandInLine,
                  out);
    placeFromLine(t, dLine, false, wanted, out.goalie, dLine == pairLine ? IceSource::Line : IceSource::StandInLine,
                  out);
    placeFromBench(t, depthKindOf(own, req.opponent), wanted, out.goalie, out);

    if (req.goaliePulled) {
        if (FindExtraAttacker(t, out.onIce, out.goalie, rng) != kNoSlot)
            out.source[at(IcePos::GoalieOrExtra)] = IceSource::ExtraAttacker;
    } else if (out.goalie != kNoSlot) {
        out.onIce[IcePos::GoalieOrExtra] = out.goalie;
        out.source[at(IcePos::GoalieOrExtra)] = emergency ? IceSource::EmergencyGoalie : IceSource::Goalie;
    }
    return out;
}

int FindExtraAttacker(const LineupTeam& t, OnIce& ice, int goalie, Random* rng) {
    ice[IcePos::GoalieOrExtra] = kNoSlot;
    int best = kNoSlot;
    double bestScore = 0;
    for (int s = 0; s < kRosterSlots; ++s) {
        if (!freeSkater(t, ice, goalie, s)) continue;
        const PlayerRecord& p = t.player(s);
        if (p.NeverUseAsExtraAttacker == 1) continue;
        double score = p.DepthExtraAttacker * 10.0;
        if (score > 0 && isForward(p) && rng) score += rng->rand(10);
        if (score > bestScore) {
            best = s;
            bestScore = score;
        }
    }
    if (best == kNoSlot) {
        for (int s = 0; s < kRosterSlots; ++s) {
            if (!freeSkater(t, ice, goalie, s) || t.player(s).NeverUseAsExtraAttacker == 1) continue;
            double score = 1 + t.ratings[static_cast<std::size_t>(s)].offense;
            if (score > bestScore) {
                best = s;
                bestScore = score;
            }
        }
    }
    ice[IcePos::GoalieOrExtra] = best;
    return best;
}

LineupCheck CheckLineup(const OnIce& ice, int skaters, bool goaliePulled, int formation, bool shownOnScreen) {
    LineupCheck check;
    for (IcePos pos : requiredPositions(std::clamp(skaters, 3, 5), formation)) {
        if (ice[pos] == kNoSlot) {
            check.LineupValid = false;
            check.fault = positionName(pos);
            return check;
        }
    }
    if (ice[IcePos::GoalieOrExtra] == kNoSlot) {
        check.LineupValid = false;
        check.fault = goaliePulled ? "You are missing an extra attacker!" : "You are missing a goalie!";
        return check;
    }
    if (shownOnScreen) {
        for (std::size_t a = 0; a < kIcePositions; ++a)
            for (std::size_t b = a + 1; b < kIcePositions; ++b)
                if (ice.slot[a] != kNoSlot && ice.slot[a] == ice.slot[b]) {
                    check.LineupValid = false;
                    check.fault = "Duplicate Player";
                    return check;
                }
    }
    return check;
}

LineupMessage lineupInvalidMessage(const std::string& city, const std::string& fault) {
    return {city + " Lineup Is Invalid!", city + " lineup is invalid!\n\n" + fault};
}

}  // namespace tallyrink
