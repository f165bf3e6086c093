// The twelve passes of the rating tool and the per-player values they store.

#include "team/ratings.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <string>

#include "team/rating_math.h"

namespace tallyrink {

using namespace rating_math;

namespace {

bool hasRealPenaltyCounts(const PlayerRecord& p) {
    return p.RealMinors + p.RealMajors + p.RealMisconducts + p.RealGameMisconducts + p.RealMatchPenalties > 0;
}

std::string upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

double weightOf(const RatingSubject& s) { return realOf(s.record).gp * s.averageMinutes; }

// The weighted average over the team's skaters with games of a tenths
// rating, weighted by minutes of the season; 0 without any.
template <class Field>
double weightedAverage(std::span<const RatingSubject> team, Field field) {
    double sumW = 0, sum = 0;
    for (const auto& s : team) {
        if (isGoalie(s.record) || s.record.Stats[0].GP == 0) continue;
        double w = weightOf(s);
        sumW += w;
        sum += w * field(s.record) / 10.0;
    }
    return safeDiv(sum, sumW);
}

}  // namespace

// ---------------------------------------------------------------- offense

double offenseValue(const RatingSubject& s, const PlayerFigures& pf, const TeamFigures& tf, const RatingInputs& in,
                    int year) {
    const PlayerRecord& p = s.record;
    if (isGoalie(p)) return 0;
    const Real r = realOf(p);
    const bool defense = isDefenseman(p);
    const double teamOff = teamOffenseLevel(in);
    const double baseF = teamOff + 1;

    const double rate = pf.production / (pf.minutes + 1) - safeDiv(tf.all.production, tf.all.minutes);
    double v = defense ? std::max(teamOff + rate, 0.5) : std::max(baseF + 1.2 * rate, 1.0);

    // A shooter above the league's shots per minute gains a little.
    if (r.sog > r.gp / 3 + 15 && r.toi > 100) {
        double shots = (r.sog / (r.toi / 60) - in.leagueShots / 300) * 3;
        v += std::clamp(shots, -0.4, 0.4);
    }
    // Minutes without points don't make offense.
    const double cap = 2 + (0.8 * r.assists + r.goals) * 0.9 * baseF / 6;
    if (v > cap) {
        v = cap;
        if (defense) v *= 0.58;
    }
    if (r.gp < 30) {
        v = v * (100 - (30 - r.gp)) / 100;
        v = std::min(v, r.gp / 10 + 6.5);
    }
    if (!defense) v *= year < 1990 ? 1.18 : 1.2;
    return v;
}

void OffenseRating(std::span<RatingSubject> team, const RatingRun& run) {
    const TeamFigures tf = teamFiguresOf(team, run.inputs.assistsPerGoal);
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p) || p.Stats[0].GP == 0) {
            p.RatingOffense = 0;  // a skater without games takes the floor below
            continue;
        }
        const double v = offenseValue(s, playerFiguresOf(s, run.inputs.assistsPerGoal), tf, run.inputs,
                                      yearOfPlayer(p, run.teamYear));
        p.RatingOffense = store(10 * v, 0, 255);
    }

    // The team's weighted average is brought to its offense level.
    const double teamOff = teamOffenseLevel(run.inputs);
    double average = weightedAverage(team, [](const PlayerRecord& p) { return p.RatingOffense; });
    if (average == 0) average = 4;
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) continue;
        if (p.Stats[0].GP > 0 && p.RatingOffense < 200) {
            p.RatingOffense = store(p.RatingOffense * teamOff / average, 0, 255);
            if (!isDefenseman(p)) p.RatingOffense = std::max<std::uint8_t>(p.RatingOffense, 20);
        }
        p.RatingOffense = std::max<std::uint8_t>(p.RatingOffense, 5);
    }
}

// ---------------------------------------------------------------- defense

double defenseValue(const RatingSubject& s, const PlayerFigures& pf, const TeamFigures& tf, const RatingInputs& in) {
    const PlayerRecord& p = s.record;
    const Real r = realOf(p);
    if (isGoalie(p) || r.gp == 0) return 0;
    const double teamDef = teamDefenseLevel(in);
    const double perGame = pf.minutes / r.gp;
    const double points = (r.goals + r.assists + 3) / r.gp;

    if (isDefenseman(p)) {
        const GroupSums& d = tf.defense;
        double v = teamDef + 1.5 + (perGame - safeDiv(d.minutes, d.gp)) / 5 +
                   3 * (safeDiv(pf.minutes, d.minutes) - safeDiv(1, d.count));
        v -= std::clamp(points - 0.8 * safeDiv(d.points, d.gp), -1.0, 0.7);
        if (tf.haveDefenseEvents) {
            double e = (pf.defenseEvents - safeDiv(d.events, d.minutes / 60)) / 150;
            v += std::clamp(e, -0.6, 0.4);
        }
        return std::max(v, 2.0);
    }
    const GroupSums& f = tf.forwards;
    double v = std::max(teamDef - 1, 4.6) + (perGame - safeDiv(f.minutes, f.gp)) / 8 +
               2 * (safeDiv(pf.minutes, f.minutes) - safeDiv(f.minutes, f.count) / (f.minutes + 1));
    v -= std::clamp(points - safeDiv(f.points, f.gp), -1.0, 1.0);
    if (tf.haveDefenseEvents) {
        double e = (pf.defenseEvents - safeDiv(f.events, f.minutes / 60)) / 150;
        v += std::clamp(e, -0.5, 0.5);
    }
    return std::clamp(v, 2.0, 6.0);
}

double shortHandedAdjustment(const RatingSubject& s, const TeamFigures& tf, const RatingInputs& in) {
    const Real r = realOf(s.record);
    if (r.gp == 0) return 0;
    const double k = (r.toiSH + 1) / 60;
    double adj = k / r.gp - safeDiv(safeDiv(tf.shortHandedMinutes, tf.all.count), in.seasonLength) +
                 ((r.toiSH + 1) / (r.toi + 1)) / 2;
    adj *= 0.2;
    if (adj > 0.4)
        adj = 0.2;
    else if (adj < -0.4)
        adj = -0.2;
    if (isDefenseman(s.record)) adj *= 1.5;
    return adj;
}

void DefenseRating(std::span<RatingSubject> team, const RatingRun& run) {
    const TeamFigures tf = teamFiguresOf(team, run.inputs.assistsPerGoal);
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        p.RatingDefense = 0;
        if (isGoalie(p) || p.Stats[0].GP == 0) continue;
        p.RatingDefense =
            store(10 * defenseValue(s, playerFiguresOf(s, run.inputs.assistsPerGoal), tf, run.inputs), 0, 255);
    }

    // Work short-handed is worth something only where the team's records hold it.
    if (tf.shortHandedMinutes > 50) {
        for (auto& s : team) {
            PlayerRecord& p = s.record;
            if (isGoalie(p) || p.Stats[0].GP == 0 || p.RatingDefense <= 10) continue;
            p.RatingDefense = store(p.RatingDefense + 10 * shortHandedAdjustment(s, tf, run.inputs), 0, 255);
        }
    }

    const double teamDef = teamDefenseLevel(run.inputs);
    double average = weightedAverage(team, [](const PlayerRecord& p) { return p.RatingDefense; });
    if (average == 0) average = 3;
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) continue;
        if (p.Stats[0].GP == 0) {
            p.RatingDefense = 5;
            continue;
        }
        double v = p.RatingDefense * teamDef / average;
        p.RatingDefense = isDefenseman(p) ? store(v, 20, 100) : store(v, 5, 100);
    }
}

// ---------------------------------------------------------------- passing and scoring

double passingValue(const RatingSubject& s, const PlayerFigures& pf, const RatingInputs& in) {
    const Real r = realOf(s.record);
    if (pf.minutes <= 0) return 1;
    const double perPlayer = (in.goalsPerGame / 2 * in.assistsPerGoal) / 2;
    const double ratio = safeDiv(5 * r.assists / (pf.minutes / 60), perPlayer);
    double v = std::max(5 * (1 + 0.25 * (ratio - 2)), 1.0);
    const double share = safeDiv(r.gp, in.seasonLength);
    if (share < 0.1)
        v *= 0.2;
    else if (share < 0.2)
        v *= 0.4;
    else if (share < 0.35)
        v *= 0.65;
    else if (share < 0.5)
        v *= 0.8;
    if (r.assists == 0)
        v = 1;
    else if (r.assists < 5)
        v = std::min(v, 5.0);
    return v;
}

void PassingRating(std::span<RatingSubject> team, const RatingRun& run) {
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        p.RatingPassing =
            isGoalie(p) ? 0 : store(passingValue(s, playerFiguresOf(s, run.inputs.assistsPerGoal), run.inputs), 0, 10);
    }
}

double scoringValue(const RatingSubject& s, const PlayerFigures& pf, const RatingInputs& in) {
    const Real r = realOf(s.record);
    double v = 1;
    if (pf.minutes > 0) v = std::max(5 + 0.7 * (5 * r.goals / (pf.minutes / 60) - in.goalsPerGame / 2), 1.0);
    v = std::min(v, r.goals / 3 + 2);
    // Two goals on few shots say little about a shooter.
    if (r.goals == 2 && r.sog < r.gp / 2 + 5) v = std::max(v - 1, 1.0);
    return v;
}

void ScoringRating(std::span<RatingSubject> team, const RatingRun& run) {
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) {
            p.RatingShotIn = p.RatingShotOut = 0;
            continue;
        }
        const double v = scoringValue(s, playerFiguresOf(s, run.inputs.assistsPerGoal), run.inputs);
        p.RatingShotIn = store(isDefenseman(p) ? v * 0.3 : v, 0, 10);
        p.RatingShotOut = store(v * 0.5, 0, 10);
    }
}

// ---------------------------------------------------------------- skating

void SkatingRating(std::span<RatingSubject> team, const RatingRun&) {
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) {
            p.RatingSkate = 0;
            continue;
        }
        if (p.RatingOffense < 20) {
            p.RatingSkate = 1;
            continue;
        }
        // Offense that his hands don't explain comes from his legs.
        const double off = p.RatingOffense / 10.0;
        double v = 2 * off - (p.RatingShotIn + p.RatingShotOut + p.RatingPassing) / 2.05;
        v = std::clamp(v, 1.0, 10.0);
        v = std::clamp(v, off - 2, off + 2);
        p.RatingSkate = store(v, 0, 10);
    }
}

// ---------------------------------------------------------------- sportsmanship

int sportsmanshipOf(double pimPer60, double eraPer60) {
    const double x = safeDiv(pimPer60, eraPer60);
    static constexpr double kFrom[] = {6.5, 4.2, 3.3, 2.5, 2, 1.5, 1.1, 0.8, 0.5, 0.3};
    for (int i = 0; i < 10; ++i)
        if (x >= kFrom[i]) return i;
    return 10;
}

int sportsmanshipByMajors(double m) {
    static constexpr double kAbove[] = {20, 12, 6, 4.5, 4, 3.5, 3, 2, 1, 0};
    for (int i = 0; i < 10; ++i)
        if (m > kAbove[i]) return i;
    return 10;
}

double sportsmanshipEraRate(const EraTable& era, int year, bool college) {
    double pim = eraFigures(era, year, 1920, 2050, 2013, college).pimPerGame;
    if (pim == 0) pim = 9;
    return pim / 2 / 5;
}

void SportsmanshipRating(std::span<RatingSubject> team, const RatingRun& run) {
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) {
            p.RatingSportsmanship = 10;
            continue;
        }
        const Real r = realOf(p);
        const double minutes = playerFiguresOf(s, run.inputs.assistsPerGoal).minutes;
        const double eraRate =
            run.era ? sportsmanshipEraRate(*run.era, yearOfPlayer(p, run.teamYear), isCollegePlayer(p, run.college))
                    : run.inputs.pimPerGame / 2 / 5;
        int rating = sportsmanshipOf(safeDiv(r.pim, minutes / 60), eraRate);
        // Majors tell a fighter from a player who takes hooking calls; the
        // rate is per the minutes he played, estimated where time on ice
        // wasn't kept.
        if (hasRealPenaltyCounts(p)) rating = sportsmanshipByMajors(p.RealMajors / (minutes + 0.1) * 1000);
        if (r.pim > 100) {
            std::string name = upper(p.FirstName.str() + " " + p.LastName.str());
            if (std::find(run.namedEnforcers.begin(), run.namedEnforcers.end(), name) != run.namedEnforcers.end())
                rating = std::max(rating - 1, 0);
        }
        p.RatingSportsmanship = static_cast<std::uint8_t>(rating);
    }
}

// ---------------------------------------------------------------- hits, blocks and takeaways

namespace {

// A hitting value from size and penalties, for records without real hits.
double hitFromBuild(const Real& r, double weight, double pimPerGame, bool defense) {
    const double base = defense ? 4 : 5;
    const double perWeight = defense ? 25 : 20;
    if (weight > 130 && r.gp >= 10) return r.pim / r.gp + base - pimPerGame / 30 + (weight - 200) / perWeight;
    if (r.gp < 10 && weight > 130) return (weight - 190) / 30 + base;
    if (r.gp > 10 && weight <= 130) return r.pim / r.gp + base - 1;
    return base - 1;
}

void ratePhysicalFromEvents(PlayerRecord& p, const Real& r, double minutes, double d) {
    double hit = 4 + (r.hits / std::max(r.blocks + r.takeaways, 1.0) - 0.613) + 5 * r.hits / (minutes / 60);
    p.RatingHit = store(std::min(hit, d + 3), 1, 10);
    double forced = d + 2 * (r.takeaways / std::max(r.hits + r.blocks, 1.0) - 0.48);
    p.RatingTakeaway = store(roundUp(std::min(forced, d + 5)), 0, 10);
    double block = d;
    if (r.takeaways + r.hits != 0) block += r.blocks / (r.takeaways + r.hits) - 0.6;
    p.RatingBlock = store(roundUp(std::min(block, d + 3)), 0, 10);
}

void ratePhysicalFromBuild(PlayerRecord& p, const Real& r, double d, double productionTerm, double pimPerGame) {
    const bool defense = isDefenseman(p);
    p.RatingHit = store(hitFromBuild(r, p.Weight, pimPerGame, defense), 1, 10);
    const double hit = p.RatingHit;
    double forced =
        defense ? d * 0.9 - (hit - 4) / 2 + productionTerm : std::min(d * 1.1 - (hit - 5) / 3 + productionTerm, 10.0);
    p.RatingTakeaway = store(forced, 0, 10);
    const double first = defense ? (d - 1) * 2 : (d + 0.5) * 1;
    double block = first - (d - p.RatingTakeaway) - (hit - 4) / 3.5;
    p.RatingBlock = store(block, 0, 10);
}

}  // namespace

void HitsBkSTkARating(std::span<RatingSubject> team, const RatingRun& run) {
    const TeamFigures tf = teamFiguresOf(team, run.inputs.assistsPerGoal);
    const double teamRate = safeDiv(tf.all.production, tf.all.minutes);
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) {
            p.RatingHit = p.RatingBlock = p.RatingTakeaway = 0;
            continue;
        }
        const Real r = realOf(p);
        const PlayerFigures pf = playerFiguresOf(s, run.inputs.assistsPerGoal);
        const double d = std::clamp<int>(p.RatingDefense, 10, 85) / 10.0;
        if (tf.haveDefenseEvents && r.hits + r.blocks + r.takeaways > 20 && pf.minutes > 0) {
            ratePhysicalFromEvents(p, r, pf.minutes, d);
        } else {
            // A player without minutes has no production to weigh; his size decides.
            double production = pf.minutes > 0 ? (pf.production / pf.minutes - teamRate) / 3 : 0;
            ratePhysicalFromBuild(p, r, d, production, run.inputs.pimPerGame);
        }
    }
}

// ---------------------------------------------------------------- durability

void DurabilityRating(std::span<RatingSubject> team, const RatingRun& run) {
    const double season = run.inputs.seasonLength;
    int goalies = 0;
    for (const auto& s : team) goalies += isGoalie(s.record) ? 1 : 0;
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        const double gp = realOf(p).gp;
        double v = std::max(std::floor(gp / season * 10 + 0.5), 1.0);
        if (v >= 10 && gp < season) v = 9;
        if (isGoalie(p)) {
            // A team's starter plays less than the season; his share of the
            // goalies' games is what counts.
            if (goalies > 3)
                v = 10;
            else if (goalies == 2)
                v = std::floor(gp / (season / 1.4) * 10 + 0.5);
            else if (goalies < 2)
                v = std::floor(gp / (season / 1.7) * 10 + 0.5);
            v = std::clamp(v, 1.0, 10.0);
            if (goalies >= 2 && v == 10 && gp < 0.9 * season) v = 9;
        }
        p.RatingDurability = store(v, 1, 10);
    }
}

// ---------------------------------------------------------------- penalty shots and penalty kill

void PenaltyShotRating(std::span<RatingSubject> team, const RatingRun& run) {
    const TeamFigures tf = teamFiguresOf(team, run.inputs.assistsPerGoal);
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) {
            p.RatingPenaltyShot = 0;
            continue;
        }
        double v = roundHalfEven(p.RatingShotOut * 0.05 + p.RatingShotIn * 0.8 + p.RatingSkate * 0.15);
        if (tf.penaltyShotAttempts > 20) {
            const double attempts = realOf(p).penaltyShotAttempts;
            if (attempts < 5 || attempts > 0.2 * tf.penaltyShotAttempts) v = roundHalfEven(v * 1.2);
        }
        p.RatingPenaltyShot = store(v, 0, 10);
    }
}

void PenaltyKillRating(std::span<RatingSubject> team, const RatingRun& run) {
    const TeamFigures tf = teamFiguresOf(team, run.inputs.assistsPerGoal);
    const double total = tf.shortHandedMinutes;
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) {
            p.RatingPenaltyKill = 0;
            continue;
        }
        const Real r = realOf(p);
        const double k = r.toiSH / 60;
        int rating = k < 5 ? 0 : (0.02 * total > k ? 1 : 2);
        if (k > 0.7 * r.gp + 5) rating = 2;
        // Without short-handed time in the records nobody can be told apart.
        if (total < 30) rating = 2;
        p.RatingPenaltyKill = static_cast<std::uint8_t>(rating);
    }
}

// ---------------------------------------------------------------- faceoffs

namespace {

double faceoffByPosition(const PlayerRecord& p) {
    if (isDefenseman(p)) return 1;
    return isCenter(p) ? 5 : 3;
}

double faceoffFromDraws(const PlayerRecord& p, const Real& r, double teamDraws) {
    double v = faceoffByPosition(p);
    if (r.fow > 20) {
        double pct = std::clamp(r.fow / (r.fow + r.fol) * 100, 40.0, 65.0);
        v = 6 + (pct - 50) / 2.7;
    }
    const double perGame = (r.fow + r.fol) / (r.gp + 0.01);
    const double teamPerGame = teamDraws / 82;
    if (perGame > 0.3 * teamPerGame)
        v += 0.5;
    else if (perGame > 0.15 * teamPerGame)
        v += 0.2;
    // A man who seldom takes a draw can't be trusted with one.
    if (perGame < 2) {
        if (v != 0) v -= 0.7;
        v = std::min(v, 7.0);
    }
    if (perGame < 1.5) v = std::min(v - 1, 7.0);
    if (perGame < 1) v *= 0.75;
    if (r.fow < 80) v = std::min(v, 6.0);
    if (r.fow < 50) v = std::min(v, 5.0);
    if (r.fow < 20) v = std::min(v, 4.0);
    if (isDefenseman(p))
        v = std::max(v, 1.0);
    else if (r.fow > 5)
        v = std::max(v, 3.0);
    return v;
}

double faceoffFromProduction(const PlayerRecord& p, double production, double teamProduction) {
    if (isDefenseman(p)) return 1;
    if (!isCenter(p)) return 3;
    const double share = safeDiv(production, teamProduction);
    if (share > 0.15) return 8;
    if (share > 0.08) return 7;
    if (share > 0.01) return 6;
    return 5;
}

}  // namespace

void FaceoffRating(std::span<RatingSubject> team, const RatingRun& run) {
    const TeamFigures tf = teamFiguresOf(team, run.inputs.assistsPerGoal);
    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (isGoalie(p)) {
            p.RatingFaceoff = 0;
            continue;
        }
        const double v =
            tf.faceoffs > 100
                ? faceoffFromDraws(p, realOf(p), tf.faceoffs)
                : faceoffFromProduction(p, playerFiguresOf(s, run.inputs.assistsPerGoal).production, tf.all.production);
        p.RatingFaceoff = store(v, 1, 10);
    }
}

// ---------------------------------------------------------------- goaltending

void GoalieRating(std::span<RatingSubject> team, const RatingRun& run) {
    auto minutesOf = [](const Real& r) { return r.toi > 0 ? r.toi / 60 : r.gp * 60; };
    double firstMinutes = 0;
    for (const auto& s : team)
        if (isGoalie(s.record)) firstMinutes = std::max(firstMinutes, minutesOf(realOf(s.record)));
    const double firstGames = firstMinutes / 60;

    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (!isGoalie(p)) {
            p.RatingGoalie = 0;
            continue;
        }
        const Real r = realOf(p);
        if (r.saves <= 0) {
            p.RatingGoalie = std::min<std::uint8_t>(p.RatingGoalie, 100);  // nothing to go by
            continue;
        }
        const double pct = r.saves / (r.goalsAllowed + r.saves) * 100;
        double v = 65 + std::max((pct - run.inputs.savePct) * 10, -50.0);
        const double q = r.gp / run.inputs.leagueShots * 100;
        if (q > 60 && q <= 85) v += 1;
        // A backup's figures come from fewer, often easier, games.
        int loss = 0;
        if (r.gp < 0.3 * firstGames)
            loss = 5;
        else if (r.gp < 0.4 * firstGames)
            loss = 4;
        else if (r.gp < 0.5 * firstGames)
            loss = 3;
        else if (r.gp < 0.6 * firstGames)
            loss = 2;
        else if (r.gp < 0.8 * firstGames)
            loss = 1;
        if (v > 5) v -= loss;
        v = std::min(v, minutesOf(r) / 16 + 25);
        p.RatingGoalie = store(v, 15, 100);
    }
}

}  // namespace tallyrink
