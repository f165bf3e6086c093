#include "team/team_ratings.h"

#include <algorithm>

#include "team/ratings.h"

namespace tallyrink {

namespace {

bool shortHanded(const UnitSituation& s) { return s.skaters < s.opponentSkaters; }

// Penalty killers stand taller when the team is a man short.
double killFactor(const PlayerRecord& p, const UnitSituation& s) {
    return shortHanded(s) && p.RatingPenaltyKill <= 3 ? 1.1 : 1.0;
}

double usageFactor(const UnitPlayer& u) { return u.usageBand >= 1 && u.usageBand <= 3 ? 0.7 : 1.0; }

// How well a man fits the place he stands at (index 0 to 5).
double positionFactor(const PlayerRecord& p, int place, const UnitSituation& s) {
    const auto& f = p.PositionFlags;
    double pf = 1;
    if (place == 0 || place == 2) {
        if (f[std::size_t(place)] == 0) {
            pf = 0.9;
            if (f[2] != 0) pf = 0.95;
            if (f[1] != 0) pf = 0.98;
        }
    } else if (place == 1) {
        if (f[1] == 0) pf = 0.98;
    } else if (place == 3 || place == 4) {
        // A man short, a forward may stand on defense without harm.
        if (s.skaters >= 5 && f[3] == 0) pf = 0.66;
    }
    if (place <= 2 && f[3] != 0 && !hasForwardFlag(p)) pf = 0.66;
    return pf;
}

}  // namespace

double indiscipline(const PlayerRecord& p, double averageMinutes, const EraTable& era) {
    const StatLine& real = statLine(p, StatLineIndex::Real);
    double played = real.GP * averageMinutes;
    if (played == 0) played = 1;
    const double perSixty = std::max<double>(real.Pim, 0) * 60 / played;
    const bool college = p.PlayerType.raw[0] == 'C';
    const double eraPim =
        figuresOf(era.yearOr(p.PlayerYear, 2008), college ? EraLevel::College : EraLevel::Professional).pimPerGame;
    if (eraPim <= 0) return 5;
    return perSixty / (eraPim / 2 / 5) * 5;
}

bool usesInsideDefense(std::string_view playZone, bool hasPuck) {
    return playZone == "OFFENSE-ZONE" || playZone == "OFFENSE-SHOOTER" || (playZone == "DEFENSE-ZONE" && !hasPuck);
}

int usageBand(const std::array<std::uint8_t, 3>& bands, int replayGames, int realGames) {
    if (realGames <= 0) return 0;
    const double use = (replayGames + 1.0) / realGames;
    int band = 0;
    for (int b = 0; b < 3; ++b)
        if (bands[std::size_t(b)] != 0 && (bands[std::size_t(b)] + 100) / 100.0 < use) band = b + 1;
    return band;
}

AdjustedDefense adjustedDefense(const PlayerRecord& p) {
    const double in = 0.5 * p.RatingBlock + 0.3 * p.RatingTakeaway + 0.1 * p.RatingHit + 0.1 * p.RatingSkate +
                      p.RatingPenaltyKill / 8.0;
    const double out = 0.2 * p.RatingBlock + 0.5 * p.RatingTakeaway + 0.2 * p.RatingHit + 0.1 * p.RatingSkate +
                       (p.RatingPenaltyKill - 2) / 6.0;
    const double defense = p.RatingDefense / 10.0;
    AdjustedDefense d;
    d.outside = defense + (out - in) * (out > in ? 0.2 : 0.5);
    d.inside = defense + (in - out) * 0.2;
    return d;
}

void rosterRatings(std::span<const UnitPlayer> roster, const UnitSituation& situation, UnitRatings& out) {
    double weights = 0, offense = 0, defense = 0;
    for (const UnitPlayer& u : roster) {
        if (!u.record || u.averageMinutes <= 0 || isGoalie(*u.record)) continue;
        const PlayerRecord& p = *u.record;
        const double w = statLine(p, StatLineIndex::Real).GP * u.averageMinutes;
        const double tired = u.fatigueCount >= 1 ? 0.7 : 1.0;
        weights += w;
        offense += p.RatingOffense * w * tired;
        defense += p.RatingDefense * killFactor(p, situation) * tired * usageFactor(u) * w;
    }
    out.teamOffense = weights > 0 ? offense / weights / 10 : 0;
    out.teamDefense = weights > 0 ? defense / weights / 10 : 0;
}

void onIceRatings(const std::array<UnitPlayer, 6>& onIce, const UnitSituation& situation, const EraTable& era,
                  UnitRatings& out) {
    double offense = 0, defense = 0, passing = 0, inside = 0, outside = 0, discipline = 0;
    int skaters = 0;
    const int places = situation.extraAttacker ? 6 : 5;
    for (int place = 0; place < places; ++place) {
        const UnitPlayer& u = onIce[std::size_t(place)];
        if (!u.record) continue;
        const PlayerRecord& p = *u.record;
        const double pf = positionFactor(p, place, situation);
        const double stick = u.brokenStick ? 0.5 : 1.0;
        const double tired = u.fatigued ? 0.7 : 1.0;

        double off = p.RatingOffense * pf * stick * tired;
        if (place == 3 || place == 4) off = std::min(off, 60.0);
        offense += off / 10;

        const double figure = situation.insideDefense ? adjustedDefense(p).inside * 10 : p.RatingDefense;
        double def = figure * pf * killFactor(p, situation) * usageFactor(u) * stick * tired;
        if (place <= 2) def = std::min(def, 60.0);
        defense += def / 10;

        passing += p.RatingPassing;
        inside += p.RatingShotIn;
        outside += p.RatingShotOut;
        discipline += indisciplineOr(u.indiscipline, p, u.averageMinutes, era);
        ++skaters;
    }
    out.onIceOffense = offense / 5;
    out.onIceDefense = defense / 5;
    out.onIcePassing = passing / 5;
    out.onIceInside = inside / 5;
    out.onIceOutside = outside / 5;
    out.discipline = unitDiscipline(discipline, skaters);
}

UnitRatings HkSetTeamRatings(std::span<const UnitPlayer> roster, const std::array<UnitPlayer, 6>& onIce,
                             const UnitSituation& situation, const EraTable& era) {
    UnitRatings out;
    rosterRatings(roster, situation, out);
    onIceRatings(onIce, situation, era, out);
    return out;
}

}  // namespace tallyrink
