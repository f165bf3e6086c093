#include "team/ratings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "team/rating_math.h"
#include "team/ratings_file.h"

namespace tallyrink {

using namespace rating_math;

namespace {

constexpr std::uint8_t kEnforcerStamp = 55;
constexpr std::uint8_t kHitRatingStamp = 99;

void addTo(GroupSums& g, const Real& r, const PlayerFigures& pf) {
    g.count += 1;
    g.gp += r.gp;
    g.minutes += pf.minutes;
    g.points += r.goals + r.assists;
    g.production += pf.production;
    g.events += 0.5 * r.hits + r.blocks + r.takeaways;
}

}  // namespace

int yearOfPlayer(const PlayerRecord& p, int teamYear) { return p.PlayerYear >= 1900 ? p.PlayerYear : teamYear; }

std::optional<std::string> refusalOf(const RatingInputs& in) {
    auto outside = [](double v, double lo, double hi) { return !(v >= lo && v <= hi); };
    if (outside(in.leagueShots, 1, 60)) return "Shots per game must be between 1 and 60";
    if (outside(in.teamShots, 1, 70)) return "Shots per game must be between 1 and 70";
    if (outside(in.teamShotsAllowed, 1, 70)) return "Shots per game must be between 1 and 70";
    if (outside(in.goalsPerGame, 1, 10)) return "Goals per game must be between 1 and 10";
    if (outside(in.assistsPerGoal, 0.1, 2)) return "Assists per goal must be between .1 and 2";
    if (outside(in.seasonLength, 5, 150)) return "Season length must be between 5 and 150";
    if (outside(in.pimPerGame, 1, 99)) return "Penalty minutes per game must be between 1 and 99";
    if (outside(in.savePct, 60, 99)) return "Save % must be between 60 and 99";
    return std::nullopt;
}

double realAverageMinutes(const PlayerRecord& p, int teamYear, const EraTable& era, bool college) {
    const Real r = realOf(p);
    const int year = yearOfPlayer(p, teamYear);
    const bool collegePlayer = isCollegePlayer(p, college);
    const EraFigures e = eraFigures(era, year, EraTable::kFirstYear, EraTable::kLastYear, 2012, collegePlayer);
    const double scoring = 2 * e.goalsPerTeam * e.assistsPerGoal + 2 * e.goalsPerTeam;
    const double leagueA = scoring / 37.46;
    const double leagueB = scoring / 45.4;
    const double pointsPerGame = r.gp == 0 || e.games == 0 ? 0 : (r.goals + r.assists) / r.gp;

    if (r.toi != 0) return std::min(r.toi / 60 / std::max(r.gp, 1.0), 60.0);

    double minutes = 0;
    double f = 1;  // games of the era against a season of 82
    if (isDefenseman(p) || isGoalie(p)) {
        minutes = std::max(20 + 2 * (pointsPerGame - leagueB), 15.0);
    } else {
        if (!collegePlayer) {
            int games = eraFigures(era, year, 1920, 2050, 2012, false).games;
            f = 82.0 / (games > 0 ? games : 60);
        }
        minutes = 16 + 3 * (pointsPerGame - leagueA);
        if (year <= 1966) minutes *= 1.15;
        if (r.goals * f >= 40) minutes += 1.5;
        if (r.goals * f >= 50) minutes += 2;
    }
    const double points = (r.goals + r.assists) * f;
    if (points >= 200)
        minutes += 2;
    else if (points >= 150)
        minutes += 1.5;
    else if (points >= 100)
        minutes += 1;
    minutes = std::min(minutes, isDefenseman(p) ? 34.0 : 28.0);
    return std::clamp(minutes, 0.0, 60.0);
}

PlayerFigures playerFiguresOf(const RatingSubject& s, double assistsPerGoal) {
    const Real r = realOf(s.record);
    PlayerFigures pf;
    pf.minutes = r.toi / 60;
    if (pf.minutes == 0) pf.minutes = r.gp * s.averageMinutes;
    double apg = assistsPerGoal > 0 ? assistsPerGoal : 1.65;
    pf.production = pf.minutes != 0 ? 100 * (r.goals + r.assists / apg) : r.goals + r.assists;
    pf.defenseEvents = safeDiv(0.5 * r.hits + r.blocks + r.takeaways, pf.minutes / 60);
    return pf;
}

TeamFigures teamFiguresOf(std::span<const RatingSubject> team, double assistsPerGoal) {
    TeamFigures tf;
    for (const auto& s : team) {
        if (isGoalie(s.record)) {
            tf.goalies += 1;
            continue;
        }
        const Real r = realOf(s.record);
        const PlayerFigures pf = playerFiguresOf(s, assistsPerGoal);
        addTo(tf.all, r, pf);
        if (isDefenseman(s.record)) addTo(tf.defense, r, pf);
        if (isFlaggedForward(s.record)) addTo(tf.forwards, r, pf);
        tf.shortHandedMinutes += r.toiSH / 60;
        tf.faceoffs += r.fow + r.fol;
        tf.penaltyShotAttempts += static_cast<int>(r.penaltyShotAttempts);
    }
    tf.haveDefenseEvents = tf.forwards.events > 100 && tf.defense.events > 250;
    return tf;
}

double teamOffenseLevel(const RatingInputs& in) {
    return 5 - safeDiv((in.leagueShots - in.teamShots) * 100, in.leagueShots) / 15;
}

double teamDefenseLevel(const RatingInputs& in) {
    return 5 + safeDiv((in.leagueShots - in.teamShotsAllowed) * 100, in.leagueShots) / 15;
}

RatingInputs prefilledInputs(std::span<const RatingSubject> team, const EraTable& era, int teamYear, bool college) {
    const int year = teamYear < 1910 || teamYear > EraTable::kLastYear ? 2009 : teamYear;
    const EraFigures e = figuresOf(era.year(year), levelOf(college));
    auto within = [](double v, double lo, double hi, double otherwise) {
        return std::isfinite(v) && v > 0 ? std::clamp(v, lo, hi) : otherwise;
    };
    RatingInputs in;
    in.seasonLength = static_cast<int>(within(e.games, 5, 150, 82));
    in.savePct = within(e.savePct, 60, 99, 90);
    in.goalsPerGame = within(2 * e.goalsPerTeam, 1, 10, 6);
    in.assistsPerGoal = within(e.assistsPerGoal, 0.1, 2, 1.65);
    in.pimPerGame = within(e.pimPerGame, 1, 99, 17);
    in.leagueShots = within(in.goalsPerGame / 2 / (1 - in.savePct / 100), 1, 60, 30);

    double shots = 0, against = 0;
    for (const auto& s : team) {
        const Real r = realOf(s.record);
        shots += r.sog;
        if (isGoalie(s.record)) against += r.saves + r.goalsAllowed;
    }
    in.teamShots = shots > 500 ? within(shots / in.seasonLength, 1, 70, in.leagueShots) : in.leagueShots;
    in.teamShotsAllowed = against > 500 ? within(against / in.seasonLength, 1, 70, in.leagueShots) : in.leagueShots;
    return in;
}

std::optional<GoalieEstimate> GetShotsFromGoalies(std::span<const RatingSubject> team, const RatingInputs& in) {
    double sum = 0, games = 0;
    for (const auto& s : team) {
        if (!isGoalie(s.record)) continue;
        double gp = realOf(s.record).gp;
        sum += s.record.RatingGoalie / 10.0 * gp;
        games += gp;
    }
    if (games == 0) return std::nullopt;
    GoalieEstimate g;
    g.averageGoalie = sum / games;
    g.savePct = (g.averageGoalie - 6.5) * 1.1 + in.savePct;
    return g;
}

// ---------------------------------------------------------------- the whole run

bool isEnforcerByRecord(const PlayerRecord& p, double averageMinutes, const EraTable& era, int teamYear, bool college) {
    if (isGoalie(p)) return false;
    const Real r = realOf(p);
    if (averageMinutes < 8 || r.gp <= 20) return false;
    const int year = yearOfPlayer(p, teamYear);
    const double e = std::max(
        eraFigures(era, year, EraTable::kFirstYear, EraTable::kLastYear, 2008, isCollegePlayer(p, college)).pimPerGame /
            10,
        2.0);
    const double played = r.gp * averageMinutes;
    const double pimPer60 = r.pim / played * 60;
    const double hitsPer60 = r.hits / (played + 0.1) * 60;
    const double mark = e > 4 ? 2 : (e > 3 ? 2.25 : 2.5);
    return pimPer60 / e > mark || (pimPer60 / e > 1.5 && hitsPer60 > 15);
}

namespace {

void applyHistory(RatingSubject& s, const HistoricalRating& h, const RatingChecks& checks) {
    PlayerRecord& p = s.record;
    s.note = historicalNote(h);
    if (checks.sportsmanship && h.sportsmanship > 0) p.RatingSportsmanship = store(h.sportsmanship, 0, 10);
    if (checks.penaltyShot && h.penaltyShot > 0) {
        int v = h.penaltyShot - (p.Age >= 35 ? 1 : 0) - (p.Age >= 40 ? 1 : 0);
        p.RatingPenaltyShot = store(v, 0, 10);
    }
}

}  // namespace

std::optional<std::string> GenerateData(std::span<RatingSubject> team, const RatingRun& run,
                                        const HistoricalRatings* history) {
    if (auto refusal = refusalOf(run.inputs)) return refusal;
    const RatingChecks& c = run.checks;
    if (c.defense) DefenseRating(team, run);
    if (c.offense) OffenseRating(team, run);
    if (c.passing) PassingRating(team, run);
    if (c.scoring) ScoringRating(team, run);
    if (c.skating) SkatingRating(team, run);
    if (c.sportsmanship) SportsmanshipRating(team, run);
    if (c.hitsBlocksTakeaways) HitsBkSTkARating(team, run);
    if (c.durability) DurabilityRating(team, run);
    if (c.penaltyShot) PenaltyShotRating(team, run);
    if (c.penaltyKill) PenaltyKillRating(team, run);
    if (c.faceoff) FaceoffRating(team, run);
    if (c.goalie) GoalieRating(team, run);

    for (auto& s : team) {
        PlayerRecord& p = s.record;
        if (history)
            if (const HistoricalRating* h = history->find(p)) applyHistory(s, *h, c);
        // A freshly worked out hit rating is already on today's scale.
        if (c.hitsBlocksTakeaways) p.HitRatingStamp = kHitRatingStamp;
        if (run.era && p.Stats[0].GP >= 1 && p.EnforcerStamp != kEnforcerStamp) {
            p.EnforcerStamp = kEnforcerStamp;
            p.Enforcer = isEnforcerByRecord(p, s.averageMinutes, *run.era, run.teamYear, run.college) ? 1 : 0;
        }
    }
    return std::nullopt;
}

}  // namespace tallyrink
