// Penalties, the power play, fights and injuries during a game.

#include "engine/penalties.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "engine/game.h"
#include "team/positions.h"
#include "team/slot_scan.h"

namespace tallyrink {

namespace {

constexpr int kSkatersFull = 5;
constexpr int kSkatersLeast = 3;
constexpr int kMaxShortHanded = kSkatersFull - kSkatersLeast;  // penalties that can run at once against a side
constexpr int kMisconductSeconds = 600;
// Calls against the team without the puck, per mille of a play in its own
// half, before the era and the game's circumstances.
constexpr double kPenaltyBase = 38;
// Fight willingness of the ten skaters on the ice, summed, to fights per mille.
// Set so that a made-up league of 2017, whose players carry real fight
// counts, fights at its era's rate. Without fight counts the rates stand on
// the sportsmanship table alone, where known fighters of a league with
// counts have about one and a half times theirs: the divisor is two thirds
// as large.
constexpr double kFightDivisor = 1.2;
constexpr double kFightDivisorWithoutCounts = kFightDivisor * 2 / 3;

int other(int side) { return side == 0 ? 1 : 0; }
std::size_t at(int i) { return static_cast<std::size_t>(i); }
int per(double x) { return roundToInt(x); }

}  // namespace

std::string_view text(PenaltyType t) {
    switch (t) {
        case PenaltyType::Minor:
            return "minor";
        case PenaltyType::DoubleMinor:
            return "double minor";
        case PenaltyType::Major:
            return "major";
        case PenaltyType::Match:
            return "match";
        case PenaltyType::Misconduct:
            return "misconduct";
        case PenaltyType::GameMisconduct:
            return "game misconduct";
    }
    return "minor";
}

std::string_view PickPenaltyName(PenaltyType type, bool offenseZone, Random& rng) {
    switch (type) {
        case PenaltyType::Minor: {
            int v = rng.rand(100);
            std::string_view name;
            if (v <= 13) {
                name = "hooking";
            } else if (v <= 33) {
                name = "tripping";
            } else if (v <= 39) {
                name = "roughing";
            } else if (v <= 53) {
                name = "holding";
            } else if (v <= 62) {
                name = "interference";
            } else if (v <= 66) {
                name = "high sticking";
            } else if (v <= 76) {
                name = "slashing";
            } else if (v <= 86) {
                name = "cross checking";
            } else if (v <= 87) {
                name = "holding the stick";
            } else if (v <= 97) {
                name = offenseZone ? "goalie interference" : "holding";
            } else {
                static constexpr std::array<std::string_view, 5> rare{"tripping", "charging", "boarding",
                                                                      "closing hand on puck", "boarding"};
                int w = rng.rand(10);
                name = "tripping";
                if (w <= 5) name = rare[at(w - 1)];
                switch (rng.rand(100)) {
                    case 1:
                        name = "illegal equipment";
                        break;
                    case 6:
                        name = "illegal stick";
                        break;
                    case 7:
                        name = "throwing stick";
                        break;
                    case 8:
                        name = "kneeing";
                        break;
                    case 9:
                        name = "elbowing";
                        break;
                    default:
                        break;
                }
            }
            if (rng.rand(10) >= 9 && rng.rand(10) == 1) {
                static constexpr std::array<std::string_view, 3> turned{"roughing", "slashing", "tripping"};
                name = turned[at(rng.rand(3) - 1)];
            }
            if (rng.rand(10) == 1) name = "unsportsmanlike conduct";
            if (rng.rand(30) == 1) name = "high sticking";
            return name;
        }
        case PenaltyType::DoubleMinor: {
            int v = rng.rand(100);
            std::string_view name = v == 1 ? "elbowing" : v <= 14 ? "slashing" : v == 15 ? "boarding" : "high sticking";
            if (rng.rand(10) == 1) {
                int w = rng.rand(10);
                name = w <= 3 ? "slashing\\roughing" : w <= 5 ? "high sticking\\roughing" : "cross checking\\roughing";
            }
            return name;
        }
        case PenaltyType::Major: {
            int v = rng.rand(100);
            if (v <= 2) return "butt-ending";
            if (v <= 17) return "charging";
            if (v <= 34) return "checking from behind";
            if (v <= 37) return "high sticking";
            if (v == 38) return "charging";
            if (v <= 43) return "cross checking";
            if (v <= 48) return "elbowing";
            if (v == 49) return "head-butting";
            if (v <= 52) return "kneeing";
            if (v <= 67) return "slashing";
            if (v <= 82) return "boarding";
            return "fighting";
        }
        case PenaltyType::Misconduct:
        case PenaltyType::GameMisconduct:
            return "misconduct";
        case PenaltyType::Match:
            return "match";
    }
    return "tripping";
}

int misconductSeconds(int lengthSetting, bool& outOfGame) {
    outOfGame = lengthSetting == 0;
    switch (lengthSetting) {
        case 1:
            return 300;
        case 3:
            return 1200;
        default:
            return kMisconductSeconds;
    }
}

// ---- Who sits and how many skate ---------------------------------------------

int Game::minPenaltyLeft() const {
    int least = 999;
    for (const auto& box : s_.pen.box)
        for (const BoxPenalty& p : box)
            if (p.running && p.PenaltySeconds > 0) least = std::min(least, p.PenaltySeconds);
    return least;
}

bool Game::offIce(int side, int slot) const {
    if (slot < 0) return false;
    const PenaltyState& pen = s_.pen;
    if (s_.find.PlayerOut[at(side)][at(slot)] || pen.InjuryKind[at(side)][at(slot)] > 0) return true;
    for (const BoxPenalty& p : pen.box[at(side)])
        if (p.server == slot) return true;
    return false;
}

void Game::keepPenalizedOff(int side) {
    // With nobody serving, a side found as this would leave it (its kept
    // answer asks little) has nothing to move and its goalie stands.
    if (s_.pen.box[at(side)].empty() && keptOffQuiet(side)) return;
    LineupTeam& team = teams_[at(side)];
    int& goalie = s_.goalie[at(side)];
    if (heldSettled_[at(side)]) {
        if (goalie != kNoSlot && !team.candidate[at(goalie)]) goalie = chooseGoalie(team, kNoSlot);
        return;
    }
    auto& held = s_.pen.heldOff[at(side)];
    // offIce's test for every slot at once: the men in the box are marked
    // once rather than searched for at each slot. A change to who counts as
    // off the ice belongs in both.
    BySlot<bool> serving{};
    for (const BoxPenalty& p : s_.pen.box[at(side)])
        if (p.server >= 0 && p.server < kRosterSlots) serving[at(p.server)] = true;
    const auto& out = s_.find.PlayerOut[at(side)];
    const auto& hurt = s_.pen.InjuryKind[at(side)];
    // Eight slots at a time: where nobody is off and nobody held, there is
    // nothing to move, and most steps that is the whole roster.
    for (std::size_t first = 0; first < kRosterSlots; first += 8) {
        if ((slotWord(out, first) | slotWord(hurt, first) | slotWord(serving, first) | slotWord(held, first)) == 0)
            continue;
        const int last = static_cast<int>(std::min<std::size_t>(first + 8, kRosterSlots));
        for (int slot = static_cast<int>(first); slot < last; ++slot) {
            bool off = out[at(slot)] || hurt[at(slot)] > 0 || serving[at(slot)];
            if (off && team.candidate[at(slot)]) {
                team.candidate[at(slot)] = false;
                held[at(slot)] = true;
                keptOffChanged();
            } else if (!off && held[at(slot)]) {
                team.candidate[at(slot)] = true;
                held[at(slot)] = false;
                keptOffChanged();
            }
        }
    }
    heldSettled_[at(side)] = true;
    if (goalie != kNoSlot && !team.candidate[at(goalie)]) goalie = chooseGoalie(team, kNoSlot);
}

// Two short-handed penalties run against a side at most; the next waits and
// starts when one of them ends.
void Game::startWaitingPenalties(int side) {
    auto& box = s_.pen.box[at(side)];
    int running = 0;
    for (BoxPenalty& p : box) {
        if (!p.shortHanded) p.running = true;
        running += p.running && p.shortHanded ? 1 : 0;
    }
    while (running < kMaxShortHanded) {
        BoxPenalty* next = nullptr;
        for (BoxPenalty& p : box)
            if (!p.running && (next == nullptr || p.order < next->order)) next = &p;
        if (next == nullptr) break;
        next->running = true;
        ++running;
    }
}

int Game::fullStrength() const {
    if (s_.Period <= periods_) return kSkatersFull;
    const RulesRecord& rules = session_.league().rules;
    bool playoff = session_.PlayoffGame;
    if ((playoff ? rules.PlayoffThreeOption : rules.ThreeOption) == 1) return 3;
    if ((playoff ? rules.playofffourOption : rules.Fouroption) == 1) return 4;
    return kSkatersFull;
}

// With nobody serving, whether keepPenalizedOff would leave the side as it
// is and nobody kept off is on the ice: every man out or hurt is held and no
// longer a candidate, every held man is still out or hurt, and the goalie
// is one of the candidates.
bool Game::heldAsKeptOff(int side, bool* anyOffOut) const {
    const auto& out = s_.find.PlayerOut[at(side)];
    const auto& hurt = s_.pen.InjuryKind[at(side)];
    const auto& held = s_.pen.heldOff[at(side)];
    const BySlot<bool>& candidate = teams_[at(side)].candidate;
    std::uint64_t anyOff = 0;
    for (std::size_t first = 0; first < kRosterSlots; first += 8) {
        // A one in each byte whose man is out or hurt (hurt is any nonzero byte).
        const std::uint64_t off = slotWord(out, first) | nonzeroBytes(slotWord(hurt, first));
        if ((off & slotWord(candidate, first)) != 0 || (slotWord(held, first) & ~off) != 0) return false;
        anyOff |= off;
    }
    if (anyOffOut != nullptr) *anyOffOut = anyOff != 0;
    // Most steps nobody at all is out or hurt, and then nobody on the ice is.
    if (anyOff != 0)
        for (int slot : s_.onIce[at(side)].slot)
            if (slot >= 0 && slot < kRosterSlots && (out[at(slot)] || hurt[at(slot)] > 0)) return false;
    const int goalie = s_.goalie[at(side)];
    return goalie == kNoSlot || candidate[at(goalie)];
}

bool Game::keptOffQuiet(int side) {
    KeptOffQuiet& kept = keptOffQuiet_[at(side)];
    const int goalie = s_.goalie[at(side)];
    const OnIce& ice = s_.onIce[at(side)];
    // The answer rests on the tables that keptOffChanged watches, on the
    // goalie and, when anyone is out or hurt, on who is on the ice: those
    // two are kept with it.
    if (kept.goalie == goalie && (!kept.anyOff || kept.ice.slot == ice.slot)) return true;
    bool anyOff = true;
    const bool quiet = heldAsKeptOff(side, &anyOff);
    kept.goalie = quiet ? goalie : kNoSlot - 1;
    kept.anyOff = anyOff;
    kept.ice = ice;
    return quiet;
}

void Game::recountSkaters() {
    // Most steps nobody is in either box, and the men kept off (hurt, or out
    // of the game) are the ones already held off: each side is at full
    // strength and nothing moves, so the count stands.
    if (s_.pen.box[0].empty() && s_.pen.box[1].empty()) {
        const int full = fullStrength();
        bool quiet = s_.Skaters[0] == full && s_.Skaters[1] == full;
        for (int side : {kVisitor, kHome}) {
            if (!quiet) break;
            quiet = keptOffQuiet(side);
        }
        if (quiet) {
            s_.pen.lastSkaters = s_.Skaters;
            return;
        }
    }
    std::array<std::array<std::uint64_t, 6>, 2> boxes{};
    std::array<std::uint8_t, 2> sizes{};
    if (boxCount_.kept && boxCount_.skaters == s_.Skaters && s_.pen.lastSkaters == s_.Skaters &&
        boxCount_.full == fullStrength() && packBoxes(boxes, sizes) && boxCount_.sizes == sizes &&
        boxCount_.boxes == boxes) {
        // Nothing to start, hold or count: only whether a man now on the
        // ice is one who may not be is left to ask.
        bool moved = false;
        for (int side : {kVisitor, kHome})
            for (int slot : s_.onIce[at(side)].slot) moved |= slot != kNoSlot && offIce(side, slot);
        if (!moved) return;
    }
    std::array<int, 2> before = s_.Skaters;
    bool moved = false;
    std::array<int, 2> shortOf{};
    for (int side : {kVisitor, kHome}) {
        startWaitingPenalties(side);
        for (const BoxPenalty& p : s_.pen.box[at(side)]) shortOf[at(side)] += p.running && p.shortHanded ? 1 : 0;
    }
    const int full = fullStrength();
    for (int side : {kVisitor, kHome}) {
        int mine = shortOf[at(side)];
        int theirs = shortOf[at(other(side))];
        // Three a side can't go lower: a penalty then puts a man more on
        // the ice for the other side.
        if (full == kSkatersLeast)
            s_.Skaters[at(side)] = std::min(kSkatersFull, kSkatersLeast + std::max(0, theirs - mine));
        else
            s_.Skaters[at(side)] = std::max(kSkatersLeast, full - mine);
        keepPenalizedOff(side);
        for (int slot : s_.onIce[at(side)].slot)
            if (slot != kNoSlot && offIce(side, slot)) moved = true;
    }
    // Kept from here: the box as started, the count and who is held would
    // all come out the same again. Anything below that changes who may play
    // drops it through keptOffChanged.
    boxCount_.kept = packBoxes(boxes, sizes);
    boxCount_.full = full;
    boxCount_.skaters = s_.Skaters;
    boxCount_.sizes = sizes;
    boxCount_.boxes = boxes;
    if (before != s_.Skaters || moved) {
        for (int side : {kVisitor, kHome}) {
            if (before != s_.Skaters) {
                s_.forwardUnit[at(side)] = 1;
                s_.defensePair[at(side)] = 1;
            }
            putUnitOnIce(side);
        }
    }
    countPowerPlay();
}

bool Game::packBoxes(std::array<std::array<std::uint64_t, 6>, 2>& boxes, std::array<std::uint8_t, 2>& sizes) const {
    for (int side : {kVisitor, kHome}) {
        const auto& box = s_.pen.box[at(side)];
        if (box.size() > boxes[at(side)].size()) return false;
        sizes[at(side)] = static_cast<std::uint8_t>(box.size());
        boxes[at(side)].fill(0);
        for (std::size_t i = 0; i < box.size(); ++i) {
            const BoxPenalty& p = box[i];
            boxes[at(side)][i] = std::uint64_t{static_cast<std::uint32_t>(p.order)} << 32 |
                                 std::uint64_t{static_cast<std::uint16_t>(p.server)} << 16 |
                                 std::uint64_t{p.running} << 1 | std::uint64_t{p.shortHanded};
        }
    }
    return true;
}

// A power play starts when a side gains an edge it didn't have. A second
// man up (five on four to five on three) is the same power play, and so is
// what is left of a two-man edge when one penalty ends.
void Game::countPowerPlay() {
    PenaltyState& pen = s_.pen;
    for (int side : {kVisitor, kHome}) {
        int o = other(side);
        bool stronger = s_.Skaters[at(side)] > s_.Skaters[at(o)];
        bool was = pen.lastSkaters[at(side)] > pen.lastSkaters[at(o)];
        if (stronger && !was) {
            ++pen.PowerPlays[at(side)];
            ++pen.PenaltyKills[at(o)];
        }
    }
    pen.lastSkaters = s_.Skaters;
}

// ---- The penalty clock ---------------------------------------------------------

void Game::endPenalty(int side, std::size_t index, bool told) {
    auto& box = s_.pen.box[at(side)];
    BoxPenalty p = box[index];
    box.erase(box.begin() + static_cast<std::ptrdiff_t>(index));
    heldSettled_[at(side)] = false;
    if (p.server == kNoSlot) return;
    if (!p.MayReturn) {
        s_.find.PlayerOut[at(side)][at(p.server)] = true;
        keptOffChanged();
        return;
    }
    if (told && p.shortHanded) DescribeBackOnIce(side, p.server);
}

void Game::runPenaltyClock(double seconds, bool sinceLastRun) {
    int t = static_cast<int>(roundHalfAway(seconds));
    // A penalty called in this play starts its time at the whistle.
    int fresh = sinceLastRun ? s_.pen.clockedUpTo : s_.pen.nextOrder;
    s_.pen.clockedUpTo = s_.pen.nextOrder;
    int minor = minorMinutes(session_.league().rules) * 60;
    for (int side : {kVisitor, kHome}) {
        auto& box = s_.pen.box[at(side)];
        for (std::size_t i = 0; i < box.size();) {
            BoxPenalty& p = box[i];
            if (!p.running || p.order >= fresh) {
                ++i;
                continue;
            }
            p.PenaltySeconds = std::max(0, p.PenaltySeconds - t);
            if (p.DoubleMinorFlag && p.PenaltySeconds <= minor) p.DoubleMinorFlag = false;
            if (p.PenaltySeconds > 0) {
                ++i;
                continue;
            }
            if (p.NextPenaltySeconds > 0) {
                // The major is served: the side is whole again while the man
                // sits out his misconduct.
                p.PenaltySeconds = p.NextPenaltySeconds;
                p.NextPenaltySeconds = 0;
                p.shortHanded = false;
                p.ReleaseOnGoal = 0;
                p.type = p.nextPutsOut ? PenaltyType::GameMisconduct : PenaltyType::Misconduct;
                if (p.nextPutsOut) p.MayReturn = false;
                ++i;
                continue;
            }
            endPenalty(side, i);
        }
    }
    recountSkaters();
}

void Game::penaltyGoal(int side) {
    int o = other(side);
    if (s_.Skaters[at(side)] <= s_.Skaters[at(o)]) return;
    ++s_.pen.PowerPlayGoals[at(side)];
    const RulesRecord& rules = session_.league().rules;
    auto& box = s_.pen.box[at(o)];
    std::size_t chosen = box.size();
    for (std::size_t i = 0; i < box.size(); ++i) {
        const BoxPenalty& p = box[i];
        if (!p.running || !p.shortHanded || p.Coincidental) continue;
        bool ends =
            (p.ReleaseOnGoal == 1 && rules.MinorGoalcheck == 1) || (p.ReleaseOnGoal == 2 && rules.MajorGoalcheck == 1);
        if (!ends) continue;
        // At equal time left the man first in the roster's order comes out.
        if (chosen == box.size() || p.PenaltySeconds < box[chosen].PenaltySeconds ||
            (p.PenaltySeconds == box[chosen].PenaltySeconds && p.server < box[chosen].server))
            chosen = i;
    }
    if (chosen == box.size()) return;
    BoxPenalty& p = box[chosen];
    if (p.DoubleMinorFlag) {
        p.PenaltySeconds = minorMinutes(rules) * 60;
        p.DoubleMinorFlag = false;
    } else if (p.NextPenaltySeconds > 0) {
        p.PenaltySeconds = 1;  // the misconduct follows at once
        runPenaltyClock(1);
        return;
    } else {
        endPenalty(o, chosen, false);  // the goal tells it
    }
    recountSkaters();
}

// ---- Calling penalties -----------------------------------------------------------

void Game::creditPenalty(int side, int slot, PenaltyType type, int minutes) {
    PenaltyState& pen = s_.pen;
    pen.PenaltyMinutes[at(side)] += minutes;
    ++tally_.calls[static_cast<std::size_t>(type)];
    tally_.callMinutes[static_cast<std::size_t>(type)] += minutes;
    TeamRecord& team = session_.side(side).team;
    auto addTo = [](std::int16_t& v, int n) { v = static_cast<std::int16_t>(std::min(v + n, 32767)); };
    addTo(team.TeamFor[1].Pim, minutes);
    if (slot == kNoSlot) {
        // A bench penalty belongs to no player: the team's season line takes it here.
        addTo(team.TeamFor[0].Pim, minutes);
        return;
    }
    PlayerRecord& p = session_.side(side).player(slot);
    addTo(statLine(p, StatLineIndex::Game).Pim, minutes);
    addTo(statLine(p, StatLineIndex::Replay).Pim, minutes);
    auto count = [](auto& both) {
        for (auto& v : both) v = static_cast<std::remove_reference_t<decltype(v)>>(v + 1);
    };
    switch (type) {
        case PenaltyType::Minor:
            count(p.Minors);
            break;
        case PenaltyType::DoubleMinor:
            count(p.Minors);
            count(p.Minors);
            break;
        case PenaltyType::Major:
            count(p.Majors);
            break;
        case PenaltyType::Misconduct:
            count(p.Misconducts);
            break;
        case PenaltyType::GameMisconduct:
            count(p.GameMisconducts);
            break;
        case PenaltyType::Match:
            count(p.MatchPenalties);
            break;
    }
}

int Game::penaltyServer(int side) {
    const OnIce& ice = s_.onIce[at(side)];
    const SideTables& t = sideOf(side);
    int best = kNoSlot;
    int mark = 999;
    for (std::size_t pos = 0; pos < 3; ++pos) {
        int slot = ice.slot[pos];
        if (slot == kNoSlot || offIce(side, slot)) continue;
        const PlayerRecord& p = t.player(slot);
        // The mark left by a man taken is his worth on the kill, which the
        // next forward nearly always comes under: he serves instead.
        if (p.RatingOffense + p.RatingDefense < mark) {
            mark = (4 - p.RatingPenaltyKill) * 100 + p.RatingDefense;
            best = slot;
        }
    }
    if (best == kNoSlot) best = ice.slot[at(2 + rng_.rand(2))];
    return best;
}

// The offender of a call against `side`: the selection tools' pick, or,
// when they find nobody, the first occupied position of a few random tries
// that isn't in the box.
int Game::pickPenalized(int side) {
    FindState& f = s_.find;
    f.PenaltiesToCall = {0, 0};
    f.PenaltiesToCall[at(side)] = 1;
    f.penalizedCount = {0, 0};
    f.PenaltyServer = false;
    FindPenalized();
    if (f.penalizedCount[at(side)] > 0) {
        int slot = f.Penalized[at(side)][0];
        if (slot != kNoSlot && !offIce(side, slot)) return slot;
    }
    const OnIce& ice = s_.onIce[at(side)];
    for (int tries = 0; tries < 50; ++tries) {
        int slot = ice.slot[at(rng_.rand(5) - 1)];
        if (slot != kNoSlot && !offIce(side, slot)) return slot;
    }
    return kNoSlot;
}

BoxPenalty& Game::addToBox(int side, int offender, int server, PenaltyType type, int seconds) {
    BoxPenalty p;
    p.offender = offender;
    p.server = server;
    p.type = type;
    p.PenaltySeconds = seconds;
    p.order = s_.pen.nextOrder++;
    auto& box = s_.pen.box[at(side)];
    box.push_back(p);
    heldSettled_[at(side)] = false;
    return box.back();
}

void Game::tellPenalty(int side, int offender, PenaltyType type, std::string_view name, int minutes) {
    s_.penalties.push_back({s_.Period, s_.Clock, side, offender, minutes, name});
    DescribePenalty(side, offender, type, name, minutes);
}

void Game::assessPenalty(int side, int offender, PenaltyType type, PenaltyKind kind, std::string_view name) {
    callPenalty(side, offender, type, kind, name);
    recountSkaters();
}

void Game::callPenalty(int side, int offender, PenaltyType type, PenaltyKind kind, std::string_view name) {
    const RulesRecord& rules = session_.league().rules;
    PenaltyState& pen = s_.pen;
    int minor = minorMinutes(rules);
    bool goalie = offender != kNoSlot && isGoalie(sideOf(side).player(offender));
    bool bench = offender == kNoSlot;
    int server = offender;
    if (bench || (goalie && rules.GoaliePenaltycheck != 1)) server = penaltyServer(side);
    if (name.empty()) name = PickPenaltyName(type, s_.PuckTeam != side && isOffenseState(s_.LastZone), rng_);
    if (offender != kNoSlot) ++pen.penaltiesOf[at(side)][at(offender)];
    if (kind == PenaltyKind::Coincidental) ++tally_.coincidentalCalls;
    if (kind == PenaltyKind::Fight) ++tally_.fightMajors;
    ++pen.penaltiesCalled[at(side)];
    ++pen.periodPenalties[at(side)];

    int minutes = minor;
    switch (type) {
        case PenaltyType::Minor: {
            BoxPenalty& p = addToBox(side, offender, server, type, minor * 60);
            p.ReleaseOnGoal = 1;
            // A substitute serves when the rule says so: the side stays whole
            // only for coincidental calls, but the man himself is free.
            p.Coincidental = kind != PenaltyKind::OneSide;
            p.shortHanded = !p.Coincidental && rules.SubsOnAllPenaltiesCheck != 1;
            if (p.Coincidental || rules.SubMinorcheck == 1) p.MayReturn = true;
            break;
        }
        case PenaltyType::DoubleMinor: {
            minutes = 2 * minor;
            BoxPenalty& p = addToBox(side, offender, server, type, minutes * 60);
            p.ReleaseOnGoal = 1;
            p.DoubleMinorFlag = true;
            p.shortHanded = rules.SubsOnAllPenaltiesCheck != 1;
            break;
        }
        case PenaltyType::Major:
        case PenaltyType::Match: {
            minutes = majorMinutes(rules);
            bool fight = kind == PenaltyKind::Fight;
            if (type == PenaltyType::Match) {
                // The man is gone; a teammate sits out the major.
                s_.find.PlayerOut[at(side)][at(offender)] = true;
                keptOffChanged();
                server = penaltyServer(side);
                minutes = kMisconductSeconds / 60;
            }
            BoxPenalty& p = addToBox(side, offender, server, type, majorMinutes(rules) * 60);
            p.ReleaseOnGoal = 2;
            p.Coincidental = kind != PenaltyKind::OneSide;
            p.shortHanded =
                !p.Coincidental && !(rules.MajorSubcheck == 1 && !fight) && rules.SubsOnAllPenaltiesCheck != 1;
            if (rules.GameMisconductCheck == 1 && offender != kNoSlot && type == PenaltyType::Major) {
                p.NextPenaltySeconds = misconductSeconds(rules.MiscConductLengthList, p.nextPutsOut);
                tellPenalty(side, offender, type, name, minutes);
                creditPenalty(side, offender, type, minutes);
                PenaltyType follow = p.nextPutsOut ? PenaltyType::GameMisconduct : PenaltyType::Misconduct;
                int followMinutes = p.NextPenaltySeconds / 60;
                tellPenalty(side, offender, follow, "misconduct", followMinutes);
                creditPenalty(side, offender, follow, followMinutes);
                return;
            }
            break;
        }
        case PenaltyType::Misconduct: {
            minutes = kMisconductSeconds / 60;
            BoxPenalty& p = addToBox(side, offender, offender, type, kMisconductSeconds);
            p.shortHanded = false;
            break;
        }
        case PenaltyType::GameMisconduct: {
            minutes = kMisconductSeconds / 60;
            if (offender != kNoSlot) s_.find.PlayerOut[at(side)][at(offender)] = true;
            keptOffChanged();
            break;
        }
    }
    tellPenalty(side, offender, type, name, minutes);
    creditPenalty(side, offender, type, minutes);
}

// Major or minor, and the rarer calls, for a man the draw penalized.
PenaltyType Game::penaltyTypeFor(int side, int offender, PenaltyKind kind, bool delayed, bool onGoal) {
    const RulesRecord& rules = session_.league().rules;
    PenaltyState& pen = s_.pen;
    if (kind == PenaltyKind::Fight) return PenaltyType::Major;
    const PlayerRecord& p = sideOf(side).player(offender);
    const StatLine& real = statLine(p, StatLineIndex::Real);
    double m = 20;
    if (pen.rousedGame) m *= 2;
    double toi = real.GP * (real.GP > 0 ? real.Toi / 60.0 / real.GP : 0);
    if (real.Pim / (toi + .01) > .2 + .3 * rng_.rnd()) m *= 1.5;
    bool goalie = isGoalie(p);
    if (kind == PenaltyKind::Coincidental || goalie || pen.penaltiesOf[at(side)][at(offender)] >= 3) m = 0;
    // A call the play ran on to a goal is seldom a major.
    if (s_.PlayResult == Result::ClearSave || s_.PlayResult == Result::ClearGoal || onGoal) m = 2;
    if (rules.Majorcheck == 0) m = 0;
    if (rules.Minorcheck == 0) m = 1000;
    if (rng_.rand(1000) <= m) {
        if (rules.MatchCheck == 1 && kind == PenaltyKind::OneSide && !delayed && pen.DelayedState == 0 &&
            rng_.rand(2) == 1) {
            const SetRates& r = sideOf(side).rate(RateSet::Real, offender);
            if (r.PimPer60 > 1 + 3 * rng_.rnd() || (rng_.rand(10) == 1 && r.PimPer60 > 1 + 5 * rng_.rnd()) ||
                r.FightsPer1000 > 1 + 10 * rng_.rnd() || rng_.rand(5) == 1)
                if (rng_.rand(20) == 1) return PenaltyType::Match;
        }
        return PenaltyType::Major;
    }
    if (rules.DoubleMinorcheck == 1 && kind == PenaltyKind::OneSide && !goalie && !onGoal &&
        s_.Skaters[0] == kSkatersFull && s_.Skaters[1] == kSkatersFull) {
        int d = 4 + (1 + 1.5 * rng_.rnd() < eraPenaltyFactor() ? 3 : 0);
        if (rng_.rand(100) <= d) return PenaltyType::DoubleMinor;
    }
    return PenaltyType::Minor;
}

void Game::onPenalty(int side) {
    PenaltyState& pen = s_.pen;
    s_.find.PenaltiesToCall = {0, 0};
    pen.kind = PenaltyKind::OneSide;
    if (side == kBothSides) {
        // The draw gave the band of both sides or the fight lying over it.
        int both = std::max(0, chances_.PenaltyBothChance);
        int fight = std::max(0, chances_.FightChance);
        bool isFight = fight > 0 && rng_.rand(both + fight) > both;
        if (isFight && FindFighters()) {
            s_.PlayZone = faceoffZone(FaceoffSpot::Neutral, s_.OtherTeam(), 1);
            return;
        }
        pen.kind = PenaltyKind::Coincidental;
        s_.find.PenaltiesToCall = {1, 1};
    } else {
        s_.find.PenaltiesToCall[at(side)] = 1;
    }
    const RulesRecord& rules = session_.league().rules;
    if (pen.kind == PenaltyKind::OneSide && oddPenalty(side)) {
        s_.PlayZone = faceoffZone(FaceoffSpot::Defense, side, 1);
        return;
    }
    bool delayable = pen.kind == PenaltyKind::OneSide && side == s_.OtherTeam() && rules.NoDelayedcheck == 0 &&
                     pen.DelayedState == 0 && !s_.periodEnds && s_.Clock > 20 && !isFaceoff(s_.PlayZone);
    if (delayable) {
        int offender = pickPenalized(side);
        if (offender != kNoSlot) {
            // The arm goes up; the team with the puck plays on.
            pen.DelayedState = 1;
            pen.delayedSide = side;
            pen.delayedOffender = offender;
            DescribeDelayedPenalty(side, offender);
            return;
        }
    }
    for (int s : {kVisitor, kHome}) {
        if (s_.find.PenaltiesToCall[at(s)] == 0) continue;
        int offender = pickPenalized(s);
        if (offender == kNoSlot) continue;
        PenaltyType type = penaltyTypeFor(s, offender, pen.kind);
        assessPenalty(s, offender, type, pen.kind);
        if (pen.kind == PenaltyKind::OneSide) wordsWithTheReferee(s, offender, type);
    }
    recountSkaters();
    if (pen.kind == PenaltyKind::OneSide)
        s_.PlayZone = faceoffZone(FaceoffSpot::Defense, side, 1);
    else
        s_.PlayZone = faceoffZone(FaceoffSpot::Neutral, s_.OtherTeam(), 1);
}

// A man who argues his minor on the way to the box sits ten more minutes.
void Game::wordsWithTheReferee(int side, int offender, PenaltyType type) {
    if (type != PenaltyType::Minor || session_.league().rules.Misccheck != 1 || rng_.rand(50) != 1) return;
    assessPenalty(side, offender, PenaltyType::Misconduct, PenaltyKind::OneSide, "misconduct");
}

// Now and then the call is on the bench or on the goalie; a skater serves.
bool Game::oddPenalty(int side) {
    if (rng_.rand(60) == 1) {
        assessPenalty(side, kNoSlot, PenaltyType::Minor, PenaltyKind::OneSide, "too many men on the ice");
        return true;
    }
    int goalie = s_.goalie[at(side)];
    if (rng_.rand(40) != 1 || goalie == kNoSlot || s_.GoaliePulled[at(side)]) return false;
    static constexpr std::array<std::string_view, 4> names{"slashing", "tripping", "delay of game", "roughing"};
    assessPenalty(side, goalie, PenaltyType::Minor, PenaltyKind::OneSide, names[at(rng_.rand(4) - 1)]);
    return true;
}

// A clear from the own end that flies over the glass, from the years the
// rule was in the book.
void Game::delayOfGame() {
    int side = s_.StepPuckTeam;
    int o = other(side);
    if (s_.PlayResult != Result::Clear || s_.LastZone != Zone::DefenseZone || s_.pen.DelayedState > 0) return;
    if (s_.Skaters[at(side)] < s_.Skaters[at(o)] || s_.Clock <= 60 || sideOf(side).team.TeamYear < 2005) return;
    if (rng_.rand(25) != 1 || rng_.rand(3) != 1) return;
    int offender =
        s_.find.Carrier != kNoSlot && s_.onIce[at(side)].holds(s_.find.Carrier) ? s_.find.Carrier : pickPenalized(side);
    if (offender == kNoSlot) return;
    assessPenalty(side, offender, PenaltyType::Minor, PenaltyKind::OneSide, "delay of game");
    s_.PlayResult = Result::Penalty;
    s_.PlayZone = faceoffZone(FaceoffSpot::Defense, side, 1);
}

void Game::CallDelayedPenalty(bool goalScored) {
    PenaltyState& pen = s_.pen;
    int side = pen.delayedSide;
    int offender = pen.delayedOffender;
    pen.DelayedState = 0;
    pen.delayedSide = -1;
    pen.delayedOffender = -1;
    if (side < 0 || offender < 0) return;
    PenaltyType type = penaltyTypeFor(side, offender, PenaltyKind::OneSide, true, goalScored);
    if (goalScored && (type == PenaltyType::Minor || type == PenaltyType::DoubleMinor)) {
        // The goal stands in for the power play: the minor is recorded but not served.
        std::string_view name = PickPenaltyName(type, false, rng_);
        int minutes = minorMinutes(session_.league().rules) * (type == PenaltyType::DoubleMinor ? 2 : 1);
        tellPenalty(side, offender, type, name, minutes);
        creditPenalty(side, offender, type, minutes);
        ++pen.penaltiesCalled[at(side)];
        ++pen.periodPenalties[at(side)];
        return;
    }
    assessPenalty(side, offender, type, PenaltyKind::OneSide);
    wordsWithTheReferee(side, offender, type);
    if (!goalScored) s_.PlayZone = faceoffZone(FaceoffSpot::Defense, side, 1);
}

// After the result is applied: the delayed call at a stoppage or when the
// offenders touch the puck, after-whistle scrums and injuries.
void Game::afterPlayPenalties() {
    PenaltyState& pen = s_.pen;
    bool goal = s_.PlayResult == Result::Goal || s_.PlayResult == Result::ClearGoal;
    if (pen.DelayedState > 0 && s_.PlayResult != Result::Penalty) {
        bool stopped = goal || isFaceoff(s_.PlayZone) || s_.periodEnds || s_.PuckTeam == pen.delayedSide;
        if (stopped) CallDelayedPenalty(goal);
    }
    delayOfGame();
    if (s_.PlayResult != Result::Penalty && !goal) ScrumAfterWhistle();
    pen.injuredThisPlay = false;
    HkInjury2017();
}

// ---- Chances ------------------------------------------------------------------

// The era's penalty level against the reference era, from the years of the
// two goalies on the ice.
// Worked out with the other era factors at the start of each step.
double Game::eraPenaltyFactor() const { return s_.find.EraPenaltyFactor > 0 ? s_.find.EraPenaltyFactor : 1.0; }

// A skater of the side without the puck who has taken more or fewer
// penalty minutes in the replay than in real life draws calls less or more
// often, so that the season's minutes follow the real ones.
double Game::penaltySteering() {
    const RulesRecord& rules = session_.league().rules;
    const int opp = s_.OtherTeam();
    const SideTables& o = sideOf(opp);
    if (session_.PlayoffGame || s_.ProbeOnly || rules.FightFrequencyList != 3 || alternateReality()) return 1;
    if (o.team.TeamYear != sideOf(s_.PuckTeam).team.TeamYear) return 1;
    if (s_.Skaters[0] != 5 || s_.Skaters[1] != 5 || rng_.rand(2) != 1) return 1;
    int slot = slotAt(opp, rng_.rand(5) - 1);
    if (slot == kNoSlot) return 1;
    const PlayerRecord& p = o.player(slot);
    const StatLine& real = statLine(p, StatLineIndex::Real);
    const StatLine& replay = statLine(p, StatLineIndex::Replay);
    const SetRates& realRate = o.rate(RateSet::Real, slot);
    const SetRates& replayRate = o.rate(RateSet::Replay, slot);
    if (real.GP * realRate.AverageMinutes <= 200 || real.Pim <= 25 || replay.Pim < 5 ||
        replay.GP * replayRate.AverageMinutes <= 25 || realRate.PimPer60 <= 0 || replayRate.PimPer60 <= 0)
        return 1;
    double m = replayRate.PimPer60 / realRate.PimPer60;
    if (m >= 1 + .15 * rng_.rnd()) return .8;
    if (m >= 1 + .05 * rng_.rnd()) return .9;
    if (m <= 1 - .15 * rng_.rnd()) return 1.2;
    if (m <= 1 - .05 * rng_.rnd()) return 1.1;
    return 1;
}

// The discipline of the side's unit on the ice, from its men's real penalty
// rates, as a factor on the calls against it. The men's figures are worked
// out once a game; only who is on the ice is looked at here.
double Game::disciplineFactor(int side) const {
    const SideTables& t = sideOf(side);
    const EraTable* era = session_.league().era;
    const int places = s_.GoaliePulled[at(side)] ? 6 : 5;
    double sum = 0;
    int men = 0;
    for (int pos = 0; pos < places; ++pos) {
        const int slot = s_.onIce[at(side)].slot[at(pos)];
        if (slot == kNoSlot) continue;
        // With no era table no figure was kept, and every man is the average.
        sum += era == nullptr ? 5
                              : indisciplineOr(manFacts_[at(side)][at(slot)].indiscipline, t.player(slot),
                                               t.rate(RateSet::Real, slot).AverageMinutes, *era);
        ++men;
    }
    const double discipline = unitDiscipline(sum, men);
    // A unit so rough that its rating falls to -1 or below is the roughest
    // there is, not a clean one.
    if (discipline + 1 <= 6.75 / 1.1) return 1.1;
    return std::clamp(6.75 / (discipline + 1), .9, 1.1);
}

// Asked at most steps; its small helpers are built into it.
[[gnu::flatten]] void Game::PenaltyChances(PlayChances& c) {
    c.PenaltyOppChance = c.PenaltyOwnChance = c.PenaltyBothChance = c.FightChance = 0;
    if (isOffenseState(s_.PlayZone) && !(s_.OffensiveDraw && s_.entryFromFaceoff)) return;
    const RulesRecord& rules = session_.league().rules;
    const PenaltyState& pen = s_.pen;
    int puck = s_.PuckTeam;
    int opp = s_.OtherTeam();
    bool lastPeriod = s_.Period == periods_;
    bool overtime = s_.Period > periods_;
    double era = eraPenaltyFactor();
    double f = (era * 1.3 + 1) / 2.3;
    int o = per(f * kPenaltyBase / std::max(s_.find.PenaltyCalibration, .01));
    o = per(o * (s_.Skaters[at(opp)] < s_.Skaters[at(puck)] ? .4 : 1.2));
    int freq = rules.FightFrequencyList;
    if (freq != 3) o = per(o * (1 + (freq - 3) * .1));
    if (sideOf(opp).team.TeamYear <= 1969) o = per(o * 1.3);
    for (double step : {1.1, 1.4, 1.8, 2.1})
        if (era > step) o = per(o * 1.2);
    if (sideFacts_[at(kHome)].college) o = per(o * .7);
    o = per(o * penaltySteering());
    o += rules.DoubleMinorcheck * 3;
    // Referees even up the calls.
    if (!s_.ProbeOnly) {
        int lead = pen.penaltiesCalled[at(opp)] - pen.penaltiesCalled[at(puck)];
        for (int extra : {0, 3, 5, 7})
            if (rng_.overRand(lead, extra, 3)) o = per(o * .5);
        int calls = pen.periodPenalties[0] + pen.periodPenalties[1];
        // A busy night: the calls so far against 3 + 3 * rnd() in the first
        // period, 8 + 5 * rnd() in the second, 10 + 5 * rnd() after.
        const double busyFrom = s_.Period == 1 ? 3 : s_.Period == 2 ? 8 : 10;
        const double busySpan = s_.Period == 1 ? 3 : 5;
        if (!rng_.under(calls, busyFrom, busySpan)) o = per(o * .3);
    }
    if (overtime) o = per(o * .25);
    if (s_.Skaters[0] != s_.Skaters[1]) o = std::max(1, per(o * .25));
    o = per(o * (opp == kHome ? .97 : 1.03));
    if (lastPeriod && s_.Clock < 420) o = per(o * (s_.Clock < 150 ? .3 : .5));
    if (session_.PlayoffGame) {
        o = per(o * (s_.Period == 2 ? .96 : .99));
        if (s_.Period >= 3)
            for (int at : {720, 360, 180})
                if (s_.Clock < at) o = per(o * .9);
    }
    // The defending side's zone aggressiveness scales the calls; the
    // forecheckers it has out now (0 to 3, not its plan's forecheck scroll)
    // add a little.
    int aggressive = std::clamp(s_.coach.live[at(opp)].dzAggressiveness, 1, 5);
    int forecheck = std::clamp(s_.find.ForecheckLevel[at(opp)], 0, 3);
    o = per(o * (aggressive + 1) / 4.0);
    o = per(o + (forecheck + 1) / 2.2);

    int own = std::min(per(era), 25);
    // In the calmer eras the puck carriers think twice once the other side
    // has men who keep going to the box.
    if (own > 0 && era < 1.5) {
        for (std::uint8_t calls : pen.penaltiesOf[at(opp)]) {
            if (calls >= 4)
                own = per(own * .1);
            else if (calls >= 3)
                own = per(own * .3);
        }
    }
    // At full strength a unit that takes its penalties often draws calls
    // more often than a clean one.
    if (s_.Skaters[0] > 4 && s_.Skaters[1] > 4) o = per(o * disciplineFactor(opp));
    int both = per(o * .07);
    if (era >= 1.3) {
        both += per(.2 * o);
        o = per(o * .8);
    }
    if (s_.Period == 1 && s_.Clock > 840) both = per(both * (s_.Clock > 1020 ? .49 : .7));

    c.PenaltyOppChance = o;
    c.PenaltyOwnChance = own;
    c.PenaltyBothChance = both;
    c.FightChance = FightChance();
    if (overtime) {
        c.PenaltyOppChance = per(c.PenaltyOppChance * .2);
        c.PenaltyOwnChance = per(c.PenaltyOwnChance * .2);
        c.FightChance = per(c.FightChance * .05);
    }
    // Three a side: the ice is open and the whistles fewer still.
    if (s_.Skaters[0] == 3 && s_.Skaters[1] == 3) {
        const double k = s_.ProbeOnly ? .5 : .5 * .2;
        c.PenaltyOppChance = per(c.PenaltyOppChance * k);
        c.PenaltyOwnChance = per(c.PenaltyOwnChance * k);
        c.PenaltyBothChance = per(c.PenaltyBothChance * k);
        c.FightChance = per(c.FightChance * k);
    }

    // States in which nothing is called.
    if (s_.Skaters[at(opp)] <= kSkatersLeast) c.PenaltyOppChance = 0;
    if (s_.Skaters[at(puck)] <= kSkatersLeast) c.PenaltyOwnChance = 0;
    bool stop = s_.LastPlayResult == Result::Penalty || pen.DelayedState > 0 || s_.Clock < 20 ||
                (overtime && s_.Skaters[0] != s_.Skaters[1]);
    if (stop) c.PenaltyOppChance = c.PenaltyOwnChance = c.PenaltyBothChance = c.FightChance = 0;
    // The quiet opening minutes and the rules that turn minors or majors
    // off are weighed once, with the table's last changes before the draw.
}

// ---- Fights ---------------------------------------------------------------------

double Game::fightRate() const {
    const RulesRecord& rules = session_.league().rules;
    if (rules.NoFightingCheck == 1) return 0;
    std::array<double, 2> top{};
    std::array<double, 2> sum{};
    for (int side : {kVisitor, kHome}) {
        for (std::size_t pos = 0; pos < 5; ++pos) {
            int slot = s_.onIce[at(side)].slot[pos];
            if (slot == kNoSlot) continue;
            const ManFacts& facts = manFacts_[at(side)][at(slot)];
            double v = facts.fightsPer1000;
            if (facts.enforcer && s_.pen.TensionFlag) v *= 1.5;
            top[at(side)] = std::max(top[at(side)], v);
            sum[at(side)] += v;
        }
    }
    // A willing man seldom finds a partner among players who never fight.
    double matched = std::min(top[0], top[1]) / std::max({top[0], top[1], .01});
    double n = (sum[0] + sum[1]) / (fightCounts_ ? kFightDivisor : kFightDivisorWithoutCounts) * (.3 + .7 * matched);
    if (top[0] > 10 && top[1] > 10) n *= 3;
    if (s_.pen.TensionFlag) n *= 2;
    if (s_.pen.rousedGame) n *= 3;
    n *= .6;
    if (sideFacts_[at(s_.OtherTeam())].year2017) n *= .8;
    n *= fightEraFactor_;
    n /= std::max(s_.find.FightCalibration, .01);
    n *= rules.FightFrequencyList / 3.0;
    if (session_.PlayoffGame) n *= .3;
    if (s_.Period >= periods_)
        for (int at : {720, 360, 180})
            if (s_.Clock < at) n *= .7;
    if (s_.Skaters[0] != s_.Skaters[1]) n *= .5;
    if (s_.Period == 1 && s_.Clock > 13 * 60) n *= .7;
    if (s_.Period > periods_) n *= .1;
    return n;
}

int Game::FightChance() {
    double n = fightRate();
    if (n <= 0) return 0;
    bool close = std::abs(s_.Score[0] - s_.Score[1]) <= 1;
    if (s_.Period >= periods_ && close && rng_.underRand(s_.Clock, 180, 300)) n *= .1;
    // Tension: a chippy, close game with many calls.
    PenaltyState& pen = s_.pen;
    for (int test = 0; test < 2 && !s_.ProbeOnly; ++test) {
        if (!close || rng_.rand(10) != 1) continue;
        // Both sides have been called at least 7 + rand(7) times.
        const int fewer = std::min(pen.penaltiesCalled[0], pen.penaltiesCalled[1]);
        if (!pen.TensionFlag && !rng_.underRand(fewer, 7, 7)) pen.TensionFlag = true;
    }
    // Whole per mille, with the fraction drawn so that small chances keep their weight.
    double whole = std::floor(n);
    return static_cast<int>(whole) + (rng_.over(n - whole, 0, 1) ? 1 : 0);
}

// The men who drop the gloves: on each side the most willing skater on the
// ice who is free. Returns false when a side has nobody.
bool Game::FindFighters() {
    std::array<int, 2> fighter{kNoSlot, kNoSlot};
    std::array<double, 2> score{};
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = sideOf(side);
        double best = -1;
        for (std::size_t pos = 0; pos < 5; ++pos) {
            int slot = s_.onIce[at(side)].slot[pos];
            if (slot == kNoSlot || offIce(side, slot)) continue;
            double g = t.rate(RateSet::Real, slot).FightsPer1000 + 1;
            if (session_.league().rules.AlternateRealityCheck == 1) g *= 1 + t.player(slot).FormBias * .05;
            if (s_.pen.rousedGame) g += 1;
            g = g * 10 + rng_.rnd();
            if (g > best) {
                best = g;
                fighter[at(side)] = slot;
            }
        }
        score[at(side)] = best;
    }
    if (fighter[0] == kNoSlot || fighter[1] == kNoSlot) return false;
    fight(fighter, score[0] >= score[1] ? kVisitor : kHome);
    return true;
}

void Game::fight(std::array<int, 2> fighter, int keener) {
    const RulesRecord& rules = session_.league().rules;
    PenaltyState& pen = s_.pen;
    pen.kind = PenaltyKind::Fight;
    ++pen.fightCount;
    if (pen.fightCount >= 2) pen.rousedGame = true;
    DescribeFight(fighter);
    for (int side : {kVisitor, kHome}) {
        int slot = fighter[at(side)];
        ++pen.fights[at(side)];
        std::uint8_t& times = pen.fightsOf[at(side)][at(slot)];
        ++times;
        PlayerRecord& p = session_.side(side).player(slot);
        ++p.Fights[1];
        ++p.Fights[2];
        TeamRecord& team = session_.side(side).team;
        ++team.FightsCount[1];
        assessPenalty(side, slot, PenaltyType::Major, PenaltyKind::Fight, "fighting");
        if (rules.ThreeFightMajorsCheck == 1 && times >= 3) {
            // His third fight: he sits out his major and then leaves the game.
            for (BoxPenalty& b : pen.box[at(side)])
                if (b.server == slot) b.MayReturn = false;
            tellPenalty(side, slot, PenaltyType::GameMisconduct, "misconduct", kMisconductSeconds / 60);
            creditPenalty(side, slot, PenaltyType::GameMisconduct, kMisconductSeconds / 60);
        }
    }
    // Now and then the referee names the man who started it: his side plays short.
    if (rules.FightInstigatorCheck == 1 && rng_.rand(5) == 1)
        assessPenalty(keener, fighter[at(keener)], PenaltyType::Minor, PenaltyKind::OneSide, "instigating");
    if (rng_.rand(25) == 1) s_.Momentum = std::clamp(s_.Momentum + (rng_.rand(2) == 1 ? .1 : -.1), -.5, .5);
    if (rng_.rand(20) == 1) {
        int loser = rng_.rand(2) - 1;
        pen.hurtSide = loser;
        pen.hurtSlot = fighter[at(loser)];
    }
    recountSkaters();
}

// Tempers after a whistle: now and then two men square off at the draw.
void Game::ScrumAfterWhistle() {
    if (!isFaceoff(s_.PlayZone) || s_.Clock >= 1100 || s_.pen.DelayedState > 0) return;
    if (s_.Skaters[0] != s_.Skaters[1]) return;
    double n = fightRate() * .25;
    if (n <= 0 || rng_.rnd() * 1000 >= n) return;
    if (rng_.rand(100) <= 3) s_.Momentum = std::clamp(s_.Momentum + (rng_.rand(2) == 1 ? .1 : -.1), -.5, .5);
    FindFighters();
}

// ---- Penalty shots ------------------------------------------------------------

// A man hauled down from behind with only the goalie to beat, or a foul on
// the attack that the referee judges took away a clear chance: the fouled
// side gets a penalty shot instead of a power play. Only with both goalies
// in their nets and no call already waiting.
void Game::callPenaltyShot() {
    Result& r = s_.PlayResult;
    bool onRush = s_.LastZone == Zone::Rush;
    bool foulOnAttack = r == Result::Penalty && s_.penaltyOn == s_.OtherTeam();
    // A foul by the attackers, or a scrap, gives them nothing.
    if (r == Result::Penalty && !foulOnAttack) return;
    if (!onRush && !foulOnAttack) return;
    if (session_.league().rules.PShotlist == 0) return;
    if (s_.GoaliePulled[0] || s_.GoaliePulled[1] || penaltyDelayed()) return;
    bool called = rng_.rand(1000) == 1;
    if (!called && onRush) {
        int limit = 0;
        switch (s_.find.rush) {
            case RushType::OneZero:
                limit = 20;
                break;
            case RushType::TwoOne:
            case RushType::ThreeOne:
                limit = 7;
                break;
            case RushType::ThreeTwo:
                limit = 3;
                break;
            case RushType::None:
                break;
        }
        called = limit > 0 && rng_.rand(1000) <= limit;
    }
    if (called) r = Result::PenaltyShot;
}

// A penalty shot or a shootout attempt, in the game's and the replay's
// lines of the shooter and of the goalie who faced it.
void Game::countPenaltyShot(int side, int shooter, bool goal, bool countGoal) {
    auto raise = [](auto& v) { v = static_cast<std::remove_reference_t<decltype(v)>>(v + 1); };
    const int defending = other(side);
    const int goalie = netminder(defending);
    for (StatLineIndex line : {StatLineIndex::Game, StatLineIndex::Replay}) {
        StatLine& taker = statLine(session_.side(side).player(shooter), line);
        raise(taker.PenaltyShotAttempts);
        if (goal && countGoal) raise(taker.PenaltyShotGoals);
        if (goalie == kNoSlot) continue;
        StatLine& g = statLine(session_.side(defending).player(goalie), line);
        raise(g.GoaliePenaltyShotsFaced);
        if (goal) raise(g.GoaliePenaltyShotGoals);
    }
}

// The shot itself, a step of its own: the shooter's coach has been asked,
// nothing else moves on the ice and the clock stands.
void Game::PenaltyShotStep() {
    play_.startPlay();
    s_.LastPlayCall = s_.PlayCall;
    clearPlayFlags();
    const std::array<int, 2> scoreBefore = s_.Score;
    PenaltyShot(s_.PuckTeam, s_.find.Carrier);
    goalieChangeAfterGoal(scoreBefore);
    s_.LastPlayResult = s_.PlayResult;
    s_.find.newPlay = true;
    s_.lineChangeMade = {false, false};
    s_.entryFromFaceoff = false;
    s_.OffensiveDraw = false;
    SetPlayRating();
    // A goal in sudden death ends the game at once.
    endOfPeriod();
    GameOverCheck();
    ++s_.steps;
    ++tally_.steps[static_cast<std::size_t>(Zone::PenaltyShot)];
    if (shown()) {
        presenter_->ShowClock(*this);
        presenter_->ShowIce(*this);
        presenter_->ShowPlayLines(*this, playLines());
    }
    play_.endPlay();
    resumeDriver();
}

// The fouled man shoots (or, where the rules let any man take it, the one
// his team would send out in a shootout), with a shootout attempt's chance.
// A goal is posted as any other, under its own strength key; no penalty is
// served for the foul and nobody's time in the box runs out on it. Play
// goes on from center ice either way.
bool Game::PenaltyShot(int side, int fouled) {
    s_.LastZone = Zone::PenaltyShot;
    const RulesRecord& rules = session_.league().rules;
    SideTables& shooters = session_.side(side);
    int defending = other(side);
    int shooter = fouled;
    if (shooter == kNoSlot || rules.PShotAnyoption == 1 || offIce(side, shooter) ||
        !teams_[at(side)].candidate[at(shooter)])
        shooter = FindShootoutShooter(side);
    FindState& f = s_.find;
    f.Carrier = shooter;
    f.CarrierPos = shooter == kNoSlot ? kNoPos : positionOf(side, shooter);
    f.Passer1 = kNoSlot;
    f.Passer2 = kNoSlot;
    s_.events.Kind = ShotKind::Breakaway;
    s_.events.ShotClass = 3;
    int goalie = netminder(defending);
    bool goal = false;
    if (shooter != kNoSlot) {
        const PlayerRecord& taker = shooters.player(shooter);
        double goalieRating = goalie == kNoSlot ? 0 : sideOf(defending).player(goalie).RatingGoalie;
        double c =
            goalie == kNoSlot
                ? 1000
                : std::clamp((taker.RatingPenaltyShot - 6.2) * 45 + 300 + (6.5 - goalieRating / 10) * 20, 100.0, 600.0);
        goal = rng_.rand(1000) <= c;
        // The shooter's goal itself is counted with the goal.
        countPenaltyShot(side, shooter, goal, false);
        PlayerRecord& p = shooters.player(shooter);
        p.PenaltyShotsTaken = static_cast<std::int16_t>(p.PenaltyShotsTaken + 1);
    }
    DescribePenaltyShot(side, shooter, goal);
    s_.PuckTeam = side;
    if (goal) {
        s_.PlayResult = Result::Goal;
        postGoal(false);
    } else {
        s_.PlayResult = Result::Save;
        countSave(side, shooter);
    }
    s_.PlayZone = Zone::FaceoffCenter1;
    s_.PuckTeam = kVisitor;
    f.Carrier = kNoSlot;
    f.CarrierPos = kNoPos;
    return goal;
}

// ---- Injuries --------------------------------------------------------------------

int Game::injuryGamesOwed(int side, int slot, int& left) const {
    const SideTables& t = sideOf(side);
    const TeamRecord& team = t.team;
    const PlayerRecord& p = t.player(slot);
    int sched = std::max(10, t.SeasonGames);
    int played = std::max(1, team.Wins + team.Losses + team.Ties + team.OvertimeLosses);
    left = std::max(0, sched - played);
    const EraRecord& era = session_.eraRow(p.PlayerYear, 2014);
    int eraGames = era.Games > 0 ? era.Games : 82;
    double scale = static_cast<double>(sched) / eraGames;
    int realMissed = per((eraGames - statLine(p, StatLineIndex::Real).GP) * scale);
    int missedSoFar = played - statLine(p, StatLineIndex::Replay).GP;
    return realMissed - missedSoFar;
}

void Game::HkInjury2017() {
    const RulesRecord& rules = session_.league().rules;
    PenaltyState& pen = s_.pen;
    if (rules.InjuryCheck == 0 || s_.GameOverFlag) return;
    Result r = s_.PlayResult;
    if (r == Result::Penalty || isFaceoff(s_.LastZone) || s_.entryFromFaceoff) return;
    // Each man already hurt makes another less likely.
    for (int already = 1; already <= 3; ++already)
        if (pen.injuries >= already && rng_.rand(10) <= 9) return;
    if (s_.Period >= periods_ && s_.Clock < 60 + rng_.rand(120)) return;

    int side = -1;
    int slot = kNoSlot;
    if (rng_.rand(13) == 1 && s_.Skaters[0] > 3 && s_.Skaters[1] > 3 && pen.DelayedState == 0) {
        side = rng_.rand(2) - 1;
        int out = 0;
        for (bool o : s_.find.PlayerOut[at(side)]) out += o ? 1 : 0;
        slot = out < 2 + rng_.rand(7) ? s_.onIce[at(side)].slot[at(rng_.rand(5) - 1)] : kNoSlot;
        if (slot != kNoSlot && offIce(side, slot)) slot = kNoSlot;
        if (slot != kNoSlot && isGoalie(sideOf(side).player(slot)) && rules.GoalieInjcheck != 1) slot = kNoSlot;
    }
    int left = 0;
    int owed = slot == kNoSlot ? 0 : injuryGamesOwed(side, slot, left);
    bool hurt = slot != kNoSlot &&
                (owed >= rng_.rand(40) || (owed >= rng_.rand(20) && rng_.rand(10) <= 5) ||
                 (owed >= rng_.rand(10) && rng_.rand(10) <= 2) || (rng_.rand(2) == 1 && owed >= left && left > 0) ||
                 (rng_.rand(2) == 1 && owed >= left * rng_.rnd() && owed > 0) ||
                 (rng_.rand(2) == 1 && owed >= (.5 + .5 * rng_.rnd()) * left && owed > 0));
    if (!hurt && pen.hurtSide >= 0 && pen.DelayedState == 0) {
        // A man a fight or a hard hit left hurting.
        side = pen.hurtSide;
        slot = pen.hurtSlot;
        owed = injuryGamesOwed(side, slot, left);
        hurt = !offIce(side, slot);
    }
    pen.hurtSide = pen.hurtSlot = -1;
    if (!hurt || slot == kNoSlot) return;
    injure(side, slot, std::clamp(owed, 0, left));
}

void Game::injure(int side, int slot, int owed) {
    PenaltyState& pen = s_.pen;
    pen.injuredThisPlay = true;
    ++pen.injuries;
    // Most of what he owes, now and then all of it; a man who owes nothing
    // misses the rest of the period or of the game.
    int games = owed > 0 ? std::max(1, per(owed * (.4 + .6 * rng_.rnd()))) : 0;
    pen.InjuredInGame[at(side)][at(slot)] = static_cast<std::int16_t>(games);
    pen.InjuryKind[at(side)][at(slot)] = static_cast<std::uint8_t>(games > 0 ? 4 : rng_.rand(4));
    if (pen.InjuryKind[at(side)][at(slot)] > 3) s_.find.PlayerOut[at(side)][at(slot)] = true;
    keptOffChanged();
    DescribeInjury(side, slot, games);
    recountSkaters();
}

void Game::clearShortInjuries() {
    for (int side : {kVisitor, kHome}) {
        for (auto& kind : s_.pen.InjuryKind[at(side)])
            if (kind >= 1 && kind <= 3) kind = 0;
        s_.pen.periodPenalties[at(side)] = 0;
    }
    keptOffChanged();
    s_.pen.DelayedState = 0;
    s_.pen.delayedSide = s_.pen.delayedOffender = -1;
    recountSkaters();
}

}  // namespace tallyrink
