// A made-up team's season split among its players. Time on ice comes first;
// every event is then drawn one at a time among the players in proportion to
// their time and their role's bent, so lines scatter as real ones do and
// still add up to the team's totals.

#include <algorithm>
#include <cmath>

#include "operations/new_league.h"
#include "operations/roster_plan.h"

namespace tallyrink::newleague {

namespace {

using Weights = std::vector<double>;
using Group = std::vector<Member*>;

template <class F>
Weights weigh(const Group& group, F f) {
    Weights w;
    w.reserve(group.size());
    for (const Member* m : group) w.push_back(f(*m));
    return w;
}

template <class F>
std::vector<Count> capsOf(const Group& group, F f) {
    std::vector<Count> c;
    c.reserve(group.size());
    for (const Member* m : group) c.push_back(std::max<Count>(0, f(*m)));
    return c;
}

double seconds(const Member& m) { return double(m.even + m.powerPlay + m.shortHanded); }

// Counts on a byte of the record stop short of its end.
constexpr Count kByteCap = 250;

void drawIceTime(Random& rng, const Group& skaters, const TeamSeason& s) {
    const double games = s.games;
    auto pp =
        shareOut(5 * Count(s.powerPlaySeconds),
                 weigh(skaters,
                       [&](const Member& m) {
                           return m.games * profileOf(m.role).powerPlay * std::pow(m.scoring, 0.3) * spread(rng, 0.15);
                       }),
                 capsOf(skaters, [&](const Member& m) { return Count(s.powerPlaySeconds * m.games / games); }));
    auto sh = shareOut(4 * Count(s.shortHandedSeconds),
                       weigh(skaters,
                             [&](const Member& m) {
                                 return m.games * profileOf(m.role).penaltyKill * m.defending * spread(rng, 0.15);
                             }),
                       capsOf(skaters, [&](const Member& m) { return Count(s.shortHandedSeconds * m.games / games); }));
    Count evenClock = Count(s.seconds) - s.powerPlaySeconds - s.shortHandedSeconds;
    auto even = shareOut(5 * evenClock, weigh(skaters, [&](const Member& m) {
                             double noise = spread(rng, 0.06);
                             if (m.role == Role::Enforcer) noise = std::max(1.0, noise);
                             return m.games * profileOf(m.role).evenMinutes * noise * (m.regular ? 1.0 : 0.92);
                         }));
    for (std::size_t i = 0; i < skaters.size(); ++i) {
        skaters[i]->powerPlay = pp[i];
        skaters[i]->shortHanded = sh[i];
        skaters[i]->even = even[i];
        StatLine& line = skaters[i]->line;
        line.GP = std::uint8_t(skaters[i]->games);
        line.Toi = std::int32_t(pp[i] + sh[i] + even[i]);
        line.ToiPP = std::int32_t(pp[i]);
        line.ToiSH = std::int32_t(sh[i]);
    }
}

// Goals and assists by situation: power-play ones only to men on the power
// play, short-handed ones only to penalty killers.
void drawScoring(Random& rng, const Group& skaters, const Group& everyone, const TeamSeason& s) {
    auto goalBent = [](const Member& m) { return profileOf(m.role).goals * m.scoring; };
    auto passBent = [](const Member& m) { return profileOf(m.role).assists * m.playmaking; };
    auto ppg = drawCounts(rng, s.powerPlayGoalsFor, weigh(skaters, [&](auto& m) { return m.powerPlay * goalBent(m); }));
    auto shg =
        drawCounts(rng, s.shortHandedGoalsFor, weigh(skaters, [&](auto& m) { return m.shortHanded * goalBent(m); }));
    for (std::size_t i = 0; i < skaters.size(); ++i) {
        skaters[i]->line.PPG = std::uint8_t(std::min(ppg[i], kByteCap));
        skaters[i]->line.SHG = std::uint8_t(std::min(shg[i], kByteCap));
    }
    int evenGoals = s.goalsFor - s.powerPlayGoalsFor - s.shortHandedGoalsFor;
    auto esg = drawCounts(rng, evenGoals, weigh(skaters, [&](auto& m) { return m.even * goalBent(m); }),
                          capsOf(skaters, [](auto& m) { return kByteCap - m.line.PPG - m.line.SHG; }));
    for (std::size_t i = 0; i < skaters.size(); ++i) {
        Member& m = *skaters[i];
        m.line.Goals = std::uint8_t(m.line.PPG + m.line.SHG + esg[i]);
    }
    auto ppa = drawCounts(rng, s.powerPlayAssists, weigh(skaters, [&](auto& m) { return m.powerPlay * passBent(m); }));
    auto sha =
        drawCounts(rng, s.shortHandedAssists, weigh(skaters, [&](auto& m) { return m.shortHanded * passBent(m); }));
    for (std::size_t i = 0; i < skaters.size(); ++i) {
        skaters[i]->line.PPA = std::uint8_t(std::min(ppa[i], kByteCap));
        skaters[i]->line.SHA = std::uint8_t(std::min(sha[i], kByteCap));
    }
    // Goalies earn an assist now and then, at even strength.
    int evenAssists = s.assists - s.powerPlayAssists - s.shortHandedAssists;
    auto esa = drawCounts(rng, evenAssists, weigh(everyone, [&](auto& m) { return double(m.even) * passBent(m); }));
    for (std::size_t i = 0; i < everyone.size(); ++i) {
        Member& m = *everyone[i];
        m.line.Assists = std::int16_t(m.line.PPA + m.line.SHA + esa[i]);
    }
}

void drawDecidingGoals(Random& rng, const Group& skaters, const TeamSeason& s) {
    Count goals = 0;
    for (const Member* m : skaters) goals += m->line.Goals;
    auto gwg = drawCounts(rng, std::min<Count>(s.wins - s.shootoutWins, goals),
                          weigh(skaters, [](auto& m) { return m.line.Goals * (m.role == Role::Star ? 1.3 : 1.0); }),
                          capsOf(skaters, [](auto& m) { return Count(m.line.Goals); }));
    auto en = drawCounts(
        rng, s.emptyNetGoalsFor,
        weigh(skaters, [](auto& m) { return double(m.line.Goals - m.line.PPG) * (isForward(m.role) ? 1.0 : 0.4); }),
        capsOf(skaters, [](auto& m) { return Count(m.line.Goals - m.line.PPG); }));
    auto attempts = drawCounts(
        rng, s.penaltyShots,
        weigh(skaters,
              [](auto& m) { return m.games * profileOf(m.role).goals * m.scoring * (isForward(m.role) ? 1.0 : 0.2); }),
        capsOf(skaters, [](auto&) { return kByteCap; }));
    std::vector<Count> canScore(skaters.size());
    for (std::size_t i = 0; i < skaters.size(); ++i) canScore[i] = std::min<Count>(attempts[i], skaters[i]->line.Goals);
    auto scored = drawCounts(rng, s.penaltyShotGoals, Weights(attempts.begin(), attempts.end()), canScore);
    for (std::size_t i = 0; i < skaters.size(); ++i) {
        StatLine& line = skaters[i]->line;
        line.GWG = std::uint8_t(gwg[i]);
        line.EmptyNetGoals = std::uint8_t(en[i]);
        line.PenaltyShotAttempts = std::uint8_t(attempts[i]);
        line.PenaltyShotGoals = std::uint8_t(scored[i]);
    }
}

void drawShooting(Random& rng, const Group& skaters, const TeamSeason& s) {
    auto extra = drawCounts(rng, s.shotsFor - s.goalsFor, weigh(skaters, [](auto& m) {
                                double t = double(m.even) + 1.6 * double(m.powerPlay) + 0.4 * double(m.shortHanded);
                                // Scorers shoot more, which keeps shooting percentages in a real range.
                                return t * profileOf(m.role).shots * std::pow(m.scoring, 0.7) * m.shooting;
                            }));
    for (std::size_t i = 0; i < skaters.size(); ++i)
        skaters[i]->line.Sog = std::int16_t(skaters[i]->line.Goals + extra[i]);
    auto missed = drawCounts(rng, s.missedShots, weigh(skaters, [&](auto& m) {
                                 return m.line.Sog * (isDefence(m.role) ? 1.15 : 1.0) * spread(rng, 0.2);
                             }));
    for (std::size_t i = 0; i < skaters.size(); ++i) skaters[i]->line.MissedShots = std::int16_t(missed[i]);
}

double faceoffShare(const Member& m) {
    if (!isForward(m.role)) return 0.0;
    if (m.position == kCenter) return 1.0;
    return 0.03;
}

void drawPlayEvents(Random& rng, const Group& skaters, const TeamSeason& s, int year) {
    auto hits = drawCounts(rng, s.hits, weigh(skaters, [&](auto& m) {
                               return seconds(m) * profileOf(m.role).hits * std::sqrt(m.toughness) * spread(rng, 0.3);
                           }));
    auto blocks = drawCounts(rng, s.blocks, weigh(skaters, [&](auto& m) {
                                 double t = seconds(m) + 1.5 * double(m.shortHanded);
                                 return t * profileOf(m.role).blocks * m.defending * spread(rng, 0.3);
                             }));
    auto takeaways =
        drawCounts(rng, s.takeaways, weigh(skaters, [&](auto& m) {
                       return seconds(m) * profileOf(m.role).takeaways * std::pow(m.scoring, 0.3) * spread(rng, 0.3);
                   }));
    auto giveaways = drawCounts(rng, s.giveaways, weigh(skaters, [&](auto& m) {
                                    return seconds(m) * profileOf(m.role).giveaways * spread(rng, 0.3);
                                }));
    auto taken = drawCounts(rng, s.faceoffsWon + s.faceoffsLost,
                            weigh(skaters, [&](auto& m) { return seconds(m) * faceoffShare(m) * spread(rng, 0.15); }));
    Weights skill(skaters.size());
    for (std::size_t i = 0; i < skaters.size(); ++i) skill[i] = double(taken[i]) * std::pow(skaters[i]->faceoffs, 2);
    auto won = drawCounts(rng, s.faceoffsWon, skill, std::vector<Count>(taken.begin(), taken.end()));
    auto starts =
        drawCounts(rng, 5 * Count(s.games), weigh(skaters, [](auto& m) { return m.games * profileOf(m.role).starts; }),
                   capsOf(skaters, [](auto& m) { return Count(m.games); }));
    // Shifts were longer before line changes grew quick.
    double shiftScale = year < 1990 ? 1.25 : 1.0;
    for (std::size_t i = 0; i < skaters.size(); ++i) {
        Member& m = *skaters[i];
        m.line.Hits = std::int16_t(hits[i]);
        m.line.Blocks = std::int16_t(blocks[i]);
        m.line.Takeaways = std::int16_t(takeaways[i]);
        m.line.Giveaways = std::int16_t(giveaways[i]);
        m.line.FaceoffsWon = std::int16_t(won[i]);
        m.line.FaceoffsLost = std::int16_t(taken[i] - won[i]);
        m.line.GS = std::uint8_t(starts[i]);
        double shift = (isDefence(m.role) ? 48.0 : 45.0) * shiftScale * spread(rng, 0.05);
        m.line.Shifts = std::int16_t(std::max<long>(m.games, std::lround(seconds(m) / shift)));
    }
}

void drawPenaltyRecord(Random& rng, const Group& skaters, const Group& everyone, const TeamSeason& s) {
    auto byGames = [](const Member& m, double bent) { return m.games * bent; };
    auto fights = drawCounts(
        rng, s.fights, weigh(skaters, [&](auto& m) { return byGames(m, profileOf(m.role).fights) * m.toughness; }),
        capsOf(skaters, [](auto&) { return kByteCap; }));
    auto majors =
        drawCounts(rng, s.majors - s.fights,
                   weigh(skaters, [&](auto& m) { return byGames(m, profileOf(m.role).fights + 0.3) * m.toughness; }),
                   capsOf(skaters, [&](auto&) { return kByteCap; }));
    auto minors = drawCounts(
        rng, s.minors, weigh(everyone, [](auto& m) { return seconds(m) * profileOf(m.role).minors * m.discipline; }),
        capsOf(everyone, [](auto&) { return kByteCap; }));
    auto misconducts =
        drawCounts(rng, s.misconducts,
                   weigh(skaters,
                         [&](auto& m) {
                             const RoleProfile& p = profileOf(m.role);
                             return byGames(m, p.minors + 0.5 * p.fights) * m.discipline * std::sqrt(m.toughness);
                         }),
                   capsOf(skaters, [](auto&) { return kByteCap; }));
    auto ejections =
        drawCounts(rng, s.gameMisconducts,
                   weigh(skaters, [&](auto& m) { return byGames(m, 0.5 + profileOf(m.role).fights) * m.toughness; }),
                   capsOf(skaters, [](auto&) { return kByteCap; }));
    auto matches =
        drawCounts(rng, s.matchPenalties,
                   weigh(skaters, [&](auto& m) { return byGames(m, 0.3 + profileOf(m.role).fights) * m.toughness; }));
    for (std::size_t i = 0; i < skaters.size(); ++i) {
        Member& m = *skaters[i];
        m.fights = fights[i];
        m.majors = fights[i] + majors[i];
        m.misconducts = misconducts[i];
        m.gameMisconducts = ejections[i];
        m.matches = matches[i];
    }
    for (std::size_t i = 0; i < everyone.size(); ++i) {
        Member& m = *everyone[i];
        m.minors = minors[i];
        m.line.Pim = std::int16_t(2 * m.minors + 5 * m.majors + 10 * (m.misconducts + m.gameMisconducts + m.matches));
    }
}

// Everybody on the ice shares in a goal at even strength or short-handed;
// a goal against on the power play counts against the power-play unit.
void drawPlusMinus(Random& rng, const Group& skaters, const TeamSeason& s) {
    Count forEven = 5 * Count(s.goalsFor - s.powerPlayGoalsFor - s.shortHandedGoalsFor);
    Count forShort = 5 * Count(s.shortHandedGoalsFor);
    Count againstEven = 5 * Count(s.goalsAgainst - s.powerPlayGoalsAgainst - s.shortHandedGoalsAgainst);
    Count againstOnPowerPlay = 5 * Count(s.shortHandedGoalsAgainst);
    auto plusEven = drawCounts(rng, forEven, weigh(skaters, [](auto& m) { return m.even * std::sqrt(m.scoring); }));
    auto plusShort = drawCounts(rng, forShort, weigh(skaters, [](auto& m) { return double(m.shortHanded); }));
    auto minusEven = drawCounts(rng, againstEven, weigh(skaters, [](auto& m) { return m.even / m.defending; }));
    auto minusPowerPlay =
        drawCounts(rng, againstOnPowerPlay, weigh(skaters, [](auto& m) { return double(m.powerPlay); }));
    for (std::size_t i = 0; i < skaters.size(); ++i)
        skaters[i]->line.PlusMinus = std::int16_t(plusEven[i] + plusShort[i] - minusEven[i] - minusPowerPlay[i]);
}

void drawGoalieLines(Random& rng, const Group& goalies, const TeamSeason& s) {
    auto clock =
        shareOut(s.seconds - s.emptyNetSeconds, weigh(goalies, [](auto& m) { return m.starts + 0.35 * m.relief; }),
                 capsOf(goalies, [](auto& m) { return Count(m.games) * 3900; }));
    for (std::size_t i = 0; i < goalies.size(); ++i) goalies[i]->even = clock[i];
    int goalieGoals = s.goalsAgainst - s.emptyNetGoalsAgainst;
    auto ga = drawCounts(rng, goalieGoals,
                         weigh(goalies, [](auto& m) { return m.even * std::exp(-0.15 * m.goalieQuality); }));
    auto saves = drawCounts(rng, s.shotsAgainst - goalieGoals,
                            weigh(goalies, [](auto& m) { return m.even * std::exp(0.02 * m.goalieQuality); }));
    auto starts = capsOf(goalies, [](auto& m) { return Count(m.starts); });
    auto wins = drawCounts(rng, s.wins,
                           weigh(goalies, [](auto& m) { return m.starts * std::exp(0.3 * m.goalieQuality); }), starts);
    std::vector<Count> room(goalies.size());
    for (std::size_t i = 0; i < room.size(); ++i) room[i] = starts[i] - wins[i];
    auto ties = drawCounts(rng, s.ties, Weights(room.begin(), room.end()), room);
    for (std::size_t i = 0; i < room.size(); ++i) room[i] -= ties[i];
    auto otl = drawCounts(rng, s.overtimeLosses, Weights(room.begin(), room.end()), room);
    std::vector<Count> winsAndTies(goalies.size());
    for (std::size_t i = 0; i < room.size(); ++i) winsAndTies[i] = wins[i] + ties[i];
    auto shutouts =
        drawCounts(rng, s.shutouts, weigh(goalies, [](auto& m) { return m.starts * std::exp(0.4 * m.goalieQuality); }),
                   winsAndTies);
    auto faced = drawCounts(rng, s.penaltyShotsFaced, weigh(goalies, [](auto& m) { return double(m.even); }));
    std::vector<Count> canConcede(goalies.size());
    for (std::size_t i = 0; i < canConcede.size(); ++i) canConcede[i] = std::min(faced[i], ga[i]);
    auto psGoals = drawCounts(rng, s.penaltyShotGoalsAllowed, Weights(faced.begin(), faced.end()), canConcede);
    for (std::size_t i = 0; i < goalies.size(); ++i) {
        Member& m = *goalies[i];
        StatLine& line = m.line;
        line.GP = std::uint8_t(m.games);
        line.GS = std::uint8_t(m.starts);
        line.Toi = std::int32_t(m.even);
        line.GoalsAllowed = std::int16_t(ga[i]);
        line.Saves = std::int16_t(saves[i]);
        line.GoalieWins = std::uint8_t(wins[i]);
        line.GoalieTies = std::uint8_t(ties[i]);
        line.GoalieOvertimeLosses = std::uint8_t(otl[i]);
        line.GoalieLosses = std::uint8_t(starts[i] - wins[i] - ties[i] - otl[i]);
        line.Shutouts = std::uint8_t(shutouts[i]);
        line.GoaliePenaltyShotsFaced = std::uint8_t(faced[i]);
        line.GoaliePenaltyShotGoals = std::uint8_t(psGoals[i]);
    }
}

}  // namespace

void drawLines(Random& rng, std::vector<Member>& roster, const TeamSeason& season, int year) {
    Group skaters, goalies, everyone;
    for (auto& m : roster) {
        (isGoalie(m.role) ? goalies : skaters).push_back(&m);
    }
    drawGoalieLines(rng, goalies, season);
    drawIceTime(rng, skaters, season);
    for (auto& m : roster) everyone.push_back(&m);
    drawScoring(rng, skaters, everyone, season);
    drawDecidingGoals(rng, skaters, season);
    drawShooting(rng, skaters, season);
    drawPlayEvents(rng, skaters, season, year);
    drawPenaltyRecord(rng, skaters, everyone, season);
    drawPlusMinus(rng, skaters, season);
}

}  // namespace tallyrink::newleague
