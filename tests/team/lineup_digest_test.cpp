// The depth charts, lines and units on the ice a roster gets are pinned, as
// a digest, for rosters of many shapes: the fills are often reworked for
// speed, and a change in who plays where must be a choice, not a slip. A digest
// that moves on purpose is printed by the failure and pasted here.

#include <fmt/core.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "team/lines.h"
#include "team/lineup_tools.h"

namespace tallyrink {
namespace {

// The roster's draws: a small local stream, so the rosters stay the same
// whatever the league's own generator becomes.
struct Draws {
    std::uint64_t state;
    std::uint64_t next() {
        std::uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    int upTo(int n) { return static_cast<int>(next() % static_cast<std::uint64_t>(n + 1)); }
    bool chance(int percent) { return upTo(99) < percent; }
};

struct Digest {
    std::uint64_t h = 0xcbf29ce484222325ULL;
    void add(std::uint64_t v) {
        for (int i = 0; i < 8; ++i) {
            h ^= (v >> (8 * i)) & 0xFF;
            h *= 0x100000001b3ULL;
        }
    }
    void add(const std::string& s) {
        for (unsigned char c : s) add(c);
        add(s.size());
    }
};

enum class Kind { Goalie, Defense, Forward, Odd };

struct RosterShape {
    const char* name;
    std::uint64_t seed;
    int goalies, defense, forwards, odd;
    int hurtPercent = 0;     // men left off the candidates
    bool rated = true;       // stored ratings, or stand-ins from the real line
    bool handMade = false;   // some roles placed before the fill
    std::uint64_t expected;  // the digest the fills give
};

struct Roster {
    BySlot<PlayerRecord> players{};
    LineTables lines;
    BySlot<double> minutes{};
    BySlot<bool> candidate{};
};

void addPlayer(Roster& r, int slot, Kind kind, bool rated, Draws& d) {
    PlayerRecord& p = r.players[std::size_t(slot)];
    p.PlayerId = std::int16_t(slot + 1);
    p.TeamId = 1;
    p.PlayerYear = std::int16_t(d.chance(20) ? 1990 : 2017);
    p.LastName.assign(fmt::format("M{}", slot));
    p.PreferredSide = std::uint8_t(d.chance(70) ? 0 : d.upTo(1) + 1);
    switch (kind) {
        case Kind::Goalie:
            p.PositionFlags = {0, 0, 0, 0, 1};
            break;
        case Kind::Defense:
            p.PositionFlags = {0, 0, 0, 1, 0};
            break;
        case Kind::Forward: {
            // One to three forward places.
            do {
                for (std::size_t f = 0; f < 3; ++f) p.PositionFlags[f] = std::uint8_t(d.chance(40) ? 1 : 0);
            } while (p.PositionFlags[0] + p.PositionFlags[1] + p.PositionFlags[2] == 0);
            break;
        }
        case Kind::Odd:
            // No flag at all, a defenceman who can play up front, a goalie
            // flagged for everything.
            for (auto& f : p.PositionFlags) f = std::uint8_t(d.chance(30) ? 1 : 0);
            break;
    }
    StatLine& s = statLine(p, StatLineIndex::Real);
    s.GP = std::uint8_t(d.upTo(82));
    double mins = kind == Kind::Goalie ? 40 + d.upTo(20) : 6 + d.upTo(20);
    r.minutes[std::size_t(slot)] = mins + d.upTo(9) / 10.0;
    s.Toi = std::int32_t(s.GP * mins * 60);
    s.ToiPP = d.chance(60) ? std::int32_t(s.GP * d.upTo(240)) : 0;
    s.ToiSH = d.chance(60) ? std::int32_t(s.GP * d.upTo(180)) : 0;
    s.Goals = std::uint8_t(d.upTo(40));
    s.Assists = std::int16_t(d.upTo(60));
    if (d.chance(50)) {
        s.FaceoffsWon = std::int16_t(d.upTo(900));
        s.FaceoffsLost = std::int16_t(d.upTo(900));
    }
    s.Saves = std::int16_t(kind == Kind::Goalie ? s.GP * (20 + d.upTo(10)) : 0);
    s.GoalsAllowed = std::int16_t(kind == Kind::Goalie ? s.GP * d.upTo(4) : 0);
    p.NeverUseAsExtraAttacker = std::uint8_t(d.chance(10) ? 1 : 0);
    if (rated) {
        p.RatingOffense = std::uint8_t(d.upTo(100));
        p.RatingDefense = std::uint8_t(d.upTo(100));
        p.RatingGoalie = std::uint8_t(kind == Kind::Goalie ? d.upTo(100) : 0);
        p.RatingPenaltyKill = std::uint8_t(d.upTo(3));
        p.RatingPenaltyShot = std::uint8_t(d.upTo(10));
        // Ties: whole groups of men with the same ratings.
        if (d.chance(15)) p.RatingOffense = p.RatingDefense = 50;
    }
}

Roster rosterOf(const RosterShape& shape) {
    Roster r;
    Draws d{shape.seed};
    std::vector<Kind> kinds;
    kinds.insert(kinds.end(), std::size_t(shape.goalies), Kind::Goalie);
    kinds.insert(kinds.end(), std::size_t(shape.defense), Kind::Defense);
    kinds.insert(kinds.end(), std::size_t(shape.forwards), Kind::Forward);
    kinds.insert(kinds.end(), std::size_t(shape.odd), Kind::Odd);
    // Shuffled, and spread over the slots with gaps, as a real roster is.
    for (std::size_t i = kinds.size(); i > 1; --i) std::swap(kinds[i - 1], kinds[d.next() % i]);
    std::vector<int> slots;
    for (int s = 0; s < kRosterSlots; ++s) slots.push_back(s);
    for (std::size_t i = slots.size(); i > 1; --i) std::swap(slots[i - 1], slots[d.next() % i]);
    for (std::size_t k = 0; k < kinds.size(); ++k) {
        int slot = slots[k];
        addPlayer(r, slot, kinds[k], shape.rated, d);
        r.candidate[std::size_t(slot)] = !d.chance(shape.hurtPercent);
    }
    if (shape.handMade) {
        // A coach's few roles, some on lines of the same group, one a
        // defenceman at wing; a man off the candidates keeps his.
        for (int k = 0; k < 6 && !kinds.empty(); ++k) {
            int slot = slots[std::size_t(d.upTo(int(kinds.size()) - 1))];
            int line = 1 + d.upTo(13);
            if (d.chance(50))
                r.lines.setLineRole(line, slot, ForwardRole(1 + d.upTo(2)));
            else
                r.lines.setPairRole(line, slot, PairRole(1 + d.upTo(1)));
        }
    }
    return r;
}

void addRoster(Digest& dg, const Roster& r) {
    for (const PlayerRecord& p : r.players) {
        for (auto v : p.DepthEven) dg.add(v);
        for (auto v : p.DepthPowerPlay) dg.add(v);
        for (auto v : p.DepthPenaltyKill) dg.add(v);
        dg.add(p.DepthGoalie);
        dg.add(p.DepthExtraAttacker);
        dg.add(p.DepthShootout);
    }
    for (const auto& line : r.lines.LineRoleLive)
        for (auto v : line) dg.add(v);
    for (const auto& line : r.lines.LineFlagLive)
        for (auto v : line) dg.add(v);
}

// The team the fills see: stand-in ratings against a .905 era.
LineupTeam teamOf(Roster& r) {
    LineupTeam t;
    t.roster = &r.players;
    t.lines = &r.lines;
    t.minutes = r.minutes;
    t.candidate = r.candidate;
    for (std::size_t s = 0; s < r.players.size(); ++s) t.ratings[s] = lineupRatings(r.players[s], r.minutes[s], 90.5);
    return t;
}

// Everything a load makes of the roster, and then every unit it puts on the ice.
std::uint64_t digestOf(const RosterShape& shape) {
    Roster r = rosterOf(shape);
    BySlot<std::string> names;
    for (std::size_t s = 0; s < r.players.size(); ++s) names[s] = r.players[s].LastName.str();
    LineupTeam t = teamOf(r);

    Digest dg;
    HkAutofillDepth(t);
    addRoster(dg, r);
    HkAutofillLines(t);
    addRoster(dg, r);
    for (const std::string& note : completeLines(t, names)) dg.add(note);
    addRoster(dg, r);
    // Filling again keeps what is there.
    FillForwards(t);
    FillDefense(t);
    addRoster(dg, r);

    for (int own = 3; own <= 5; ++own) {
        for (int opp = 3; opp <= 5; ++opp) {
            for (int unit = 1; unit <= 4; ++unit) {
                for (bool pulled : {false, true}) {
                    IceRequest req{.own = own, .opponent = opp, .unit = unit, .goaliePulled = pulled};
                    req.threeSkaterFormation = 1 + unit % 2;
                    IcePlacement ice = PutLinesOnIce(t, req);
                    for (int s : ice.onIce.slot) dg.add(std::uint64_t(s + 1));
                    for (IceSource src : ice.source) dg.add(std::uint64_t(src));
                    dg.add(std::uint64_t(ice.goalie + 1));
                    dg.add(std::uint64_t(ice.forwardLine));
                    dg.add(std::uint64_t(ice.pairLine));
                }
            }
        }
    }
    // Lines made with no depth charts at all: the scores tie often, and
    // the earlier slot must win each tie.
    for (PlayerRecord& p : r.players) clearDepth(p);
    r.lines.clear();
    HkAutofillLines(t);
    for (const std::string& note : completeLines(t, names)) dg.add(note);
    addRoster(dg, r);
    return dg.h;
}

const RosterShape kShapes[] = {
    {"full fifty, rated", 11, 5, 15, 28, 2, 0, true, false, 0x3ba99e15a368d411},
    {"full fifty, unrated", 12, 4, 16, 28, 2, 0, false, false, 0xb37896cc4ad08184},
    {"full fifty, a third hurt", 13, 4, 14, 30, 2, 33, true, false, 0x7efee9d3410cde64},
    {"dressed game roster", 14, 2, 6, 12, 0, 0, true, false, 0xa9504e0ba766ad1d},
    {"dressed roster, some hurt", 15, 2, 7, 13, 0, 20, true, false, 0x5d73e5bb4041aa1b},
    {"short bench", 16, 1, 3, 5, 0, 0, true, false, 0xb432e980c878a31c},
    {"no defensemen", 17, 1, 0, 9, 0, 0, true, false, 0x21c893ec92d3c7dc},
    {"no goalie", 18, 0, 6, 10, 0, 0, false, false, 0x9e8a3bff9b7e8962},
    {"goalies only", 19, 3, 0, 0, 0, 0, true, false, 0x2b02d72d7e5c8525},
    {"odd flags only", 20, 0, 0, 0, 20, 0, true, false, 0x3b67b997326033c7},
    {"hand-made roles", 21, 2, 8, 14, 2, 10, true, true, 0xd6d0f632751553c4},
    {"hand-made roles, unrated", 22, 3, 9, 16, 1, 0, false, true, 0x937532c447b15b68},
    {"empty", 23, 0, 0, 0, 0, 0, true, false, 0x5a925c52260060a5},
};

TEST(LineupDigest, EveryRosterShapeGetsThePinnedLineup) {
    for (const RosterShape& shape : kShapes) {
        std::uint64_t got = digestOf(shape);
        EXPECT_EQ(got, shape.expected) << shape.name << ": 0x" << fmt::format("{:016x}", got);
    }
}

// A load remakes the charts over whatever ranks the records held: stale
// ranks, on men in the roster or not, must not survive into the new charts.
TEST(LineupDigest, StaleRanksDoNotSurviveARefill) {
    for (const RosterShape& shape : kShapes) {
        SCOPED_TRACE(shape.name);
        Roster clean = rosterOf(shape);
        Roster stale = clean;
        for (PlayerRecord& p : stale.players) {
            p.DepthEven.fill(7);
            p.DepthGoalie = 7;
            p.DepthPowerPlay.fill(7);
            p.DepthPenaltyKill.fill(7);
        }
        for (Roster* r : {&clean, &stale}) {
            LineupTeam t = teamOf(*r);
            HkAutofillDepth(t);
        }
        for (std::size_t s = 0; s < clean.players.size(); ++s) {
            const PlayerRecord& a = clean.players[s];
            const PlayerRecord& b = stale.players[s];
            EXPECT_EQ(a.DepthEven, b.DepthEven) << "slot " << s;
            EXPECT_EQ(a.DepthGoalie, b.DepthGoalie) << "slot " << s;
            EXPECT_EQ(a.DepthPowerPlay, b.DepthPowerPlay) << "slot " << s;
            EXPECT_EQ(a.DepthPenaltyKill, b.DepthPenaltyKill) << "slot " << s;
        }
    }
}

}  // namespace
}  // namespace tallyrink
