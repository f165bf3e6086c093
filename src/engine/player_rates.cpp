#include "engine/player_rates.h"

#include <algorithm>
#include <cmath>

#include "team/positions.h"

namespace tallyrink {

namespace {

const StatLine& realOf(const PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }
const StatLine& replayOf(const PlayerRecord& p) { return statLine(p, StatLineIndex::Replay); }

std::int16_t round16(double x) { return static_cast<std::int16_t>(roundHalfEven(x)); }

struct Minutes {
    double average = 0;
    std::int16_t even = 0;
    std::int16_t powerPlay = 0;
    std::int16_t shortHand = 0;
};

// Minutes a game: the set's own time on ice where it has some, otherwise an
// estimate from the player's points against the era's scoring.
Minutes minutesOf(RateSet set, const PlayerRecord& p, const RateContext& ctx) {
    const StatLine& s = statLine(p, statLineOf(set));
    const StatLine& real = realOf(p);
    bool realSet = set == RateSet::Real;
    Minutes m;
    if (s.Toi != 0) {
        double g = std::max<int>(s.GP, 1);
        m.average = std::min(s.Toi / 60.0 / g, 60.0);
        m.even = round16((s.Toi - s.ToiPP - s.ToiSH) / 60.0 / g);
        m.powerPlay = round16(s.ToiPP / 60.0 / g);
        m.shortHand = round16(s.ToiSH / 60.0 / g);
        return m;
    }
    double goals = ctx.era.goalsPerTeam;
    double leagueScoring = 2 * goals * ctx.era.assistsPerGoal + 2 * goals;
    double pointsPerGame = s.GP == 0 || ctx.era.games == 0 ? 0 : double(s.Goals + s.Assists) / s.GP;
    bool defense = isDefenseman(p);
    double f = 1;  // the 82-game scale of a forward's totals
    if (defense || isGoalie(p)) {
        m.average = std::max(20 + 2 * (pointsPerGame - leagueScoring / 45.4), 15.0);
        m.even = round16(0.8 * m.average);
        m.powerPlay = round16(0.09 * m.average);
    } else {
        if (!ctx.college) f = 82.0 / (ctx.gamesForScale > 0 ? ctx.gamesForScale : 60);
        m.average = 16 + 3 * (pointsPerGame - leagueScoring / 37.46);
        if (realSet) {
            if (ctx.year <= 1966) m.average *= 1.15;
            if (real.Goals * f >= 40) m.average += 1.5;
            if (real.Goals * f >= 50) m.average += 2;
        }
        m.even = round16(0.8 * m.average);
        m.powerPlay = round16(0.12 * m.average);
    }
    m.shortHand = round16(0.08 * m.average);
    if (realSet) {
        double points = (real.Goals + real.Assists) * f;
        m.average += points >= 200 ? 2 : points >= 150 ? 1.5 : points >= 100 ? 1 : 0;
        m.average = std::min(m.average, defense ? 34.0 : 28.0);
    }
    m.average = std::min(m.average, 60.0);
    return m;
}

double per60(double count, double minutesOnIce) { return count / minutesOnIce * 60; }

// Real shooting percentage; short shooters are held to a modest figure.
// Without any shots: the era's, bent by position, ratings and scoring.
double shootingPctOf(const PlayerRecord& p, const RateContext& ctx, double realAverageMinutes, Random& rng) {
    const StatLine& real = realOf(p);
    if (real.Sog > 0) {
        double pct = double(real.Goals) / real.Sog;
        double pace = real.Sog / (real.GP + 0.1) * 82;
        if (pace < 10) return std::min(pct, 0.06);
        if (pace < 30) return std::min(pct, 0.07);
        if (pace < 50) return std::min(pct, 0.08);
        return pct;
    }
    if (isGoalie(p)) return 0;
    double pct = (100 - ctx.era.savePct) / 100;
    if (isDefenseman(p)) return pct * 0.57 + (p.RatingShotOut - 4) * 0.0005 + 0.06;
    double goals60 = per60(real.Goals, real.GP * realAverageMinutes + 0.1);
    pct = pct * 1.15 + ((3.0 * p.RatingShotIn + p.RatingShotOut) / 4 - 5) * 0.001;
    bool scorer = goals60 > 1 + 2 * rng.rnd();
    bool sniper = real.Goals >= 30 + rng.rand(30);
    return pct + (scorer ? 0.06 : 0) + (sniper ? 0.06 : 0);
}

// A usage setting outside 1 to 5 reads as "Real Life".
int usageOf(std::uint8_t v) { return v >= 1 && v <= 5 ? v : 3; }

double fightsBySportsmanship(int sports, Random& rng) {
    switch (sports) {
        case 10:
            return 0;
        case 9:
        case 8:
            return rng.rand(2) == 1 ? 1 : 0;
        case 7:
            return 1;
        case 6:
            return rng.rand(3);
        case 5:
            return 1 + rng.rand(4);
        case 4:
            return 2 + rng.rand(4);
        case 3:
            return 3 + rng.rand(5);
        case 2:
            return 10;
        case 1:
            return 20;
        default:
            return 30;
    }
}

double realFightRate(const PlayerRecord& p, const RateContext& ctx, double average, Random& rng) {
    const StatLine& real = realOf(p);
    int sports = ctx.sportsmanship >= 0 ? ctx.sportsmanship : std::min<int>(p.RatingSportsmanship, 10);
    double f = fightsBySportsmanship(sports, rng);
    if (p.Enforcer == 1) f = std::max(f + 5, 35.0);
    if (ctx.leagueFightData) f = p.Fights[0] == 0 ? (11 - sports) * 0.1 : f * 3;
    double q = real.Pim / (real.GP * average + 1);
    if (sports == 0 && q > 0.2) f += (q - 0.2) * 100;
    f = std::min(f, 45.0);
    if (ctx.year >= 2016) {
        f *= 1.3;
        if (sports <= rng.rand(4)) f *= 0.5;
        if (sports <= rng.rand(2)) f *= 0.5;
    }
    if (p.Fights[0] > 0) f = p.Fights[0] / (real.GP * average + 1) * 1000;
    return f;
}

// Pulls the Real fight rate toward what keeps the replay's fights near the
// real season's: down when the replay runs ahead, up when it lags.
void steerFights(const PlayerRecord& p, PlayerRates& out, Random& rng) {
    double& real = out[RateSet::Real].FightsPer1000;
    double replay = out[RateSet::Replay].FightsPer1000;
    const StatLine& rp = replayOf(p);
    if (real <= 0 || replay <= 0 || rp.GP < 3) return;
    double r = replay / real;
    if (r > 1 + 0.2 * rng.rnd())
        real *= 0.4;
    else if (r > 1 + 0.05 * rng.rnd())
        real *= 0.7;
    else if (r < 1 - 0.2 * rng.rnd())
        real *= 1.6;
    else if (r < 1 - 0.05 * rng.rnd())
        real *= 1.3;
    double h = double(p.Fights[1]) / rp.GP;
    for (auto [base, share] : {std::pair{40.0, 0.4}, std::pair{30.0, 0.25}, std::pair{20.0, 0.15}}) {
        bool low = real < base + 10 * rng.rnd();
        bool often = h >= share + 0.2 * rng.rnd();
        if (low && often) real *= 0.4;
    }
}

}  // namespace

int sportsmanshipFromPenalties(double pimPer60, double eraPimPerGame) {
    double era = (eraPimPerGame > 0 ? eraPimPerGame : 9) / 2 / 5;
    double ratio = pimPer60 / era;
    static constexpr double steps[] = {6.5, 4.2, 3.3, 2.5, 2, 1.5, 1.1, 0.8, 0.5, 0.3};
    int rating = 0;
    for (double step : steps) {
        if (ratio >= step) return rating;
        ++rating;
    }
    return 10;
}

double realAverageMinutes(const PlayerRecord& p, const RateContext& ctx) {
    return minutesOf(RateSet::Real, p, ctx).average;
}

void computeSetRates(RateSet set, const PlayerRecord& p, const RateContext& ctx, Random& rng, PlayerRates& out) {
    const StatLine& s = statLine(p, statLineOf(set));
    const StatLine& real = realOf(p);
    bool realSet = set == RateSet::Real;
    SetRates& r = out[set];
    Minutes m = minutesOf(set, p, ctx);
    r.AverageMinutes = m.average;
    r.EvenMinutes = m.even;
    r.PowerPlayMinutes = m.powerPlay;
    r.ShortHandMinutes = m.shortHand;

    if (realSet) out.ShootingPct = shootingPctOf(p, ctx, m.average, rng);
    if (real.Sog > 0)
        r.SeasonShots = s.Sog;
    else
        r.SeasonShots = out.ShootingPct > 0 ? s.Goals / out.ShootingPct * (realSet && isDefenseman(p) ? 0.5 : 1) : 0;

    double n = s.GP * m.average + 0.1;
    r.AssistsPer60 = std::max(per60(s.Assists, n), 0.1);
    r.GoalsPer60 = per60(s.Goals, n);
    r.ShotsPer60 = std::max(per60(r.SeasonShots, n), 0.5);
    r.HitsPer60 = per60(s.Hits, n);
    r.PimPer60 = per60(s.Pim, n);

    if (realSet) {
        out.ShotStyleFactor = 1;
        if (!isGoalie(p)) {
            auto step = [](std::uint8_t usage) { return 1 + 0.2 * (usageOf(usage) - 3); };
            bool d = isDefenseman(p);
            double g = (d ? 0.985 : 0.922) * step(p.UsageSogAggressiveness) +
                       (d ? 0.014 : 0.051) * step(p.UsagePenetrate) + (d ? 0.001 : 0.027) * step(p.UsageDeflect);
            r.ShotsPer60 *= g;
            // More shots mean poorer ones: 1.15 ^ (1 / g), taken relative to
            // the real-life usage (g = 1) so that it stands at 1 there.
            out.ShotStyleFactor = std::pow(1.15, 1 / g) / 1.15;
        }
        r.FightsPer1000 = realFightRate(p, ctx, m.average, rng);
    } else {
        r.FightsPer1000 = s.Toi > 0 ? p.Fights[1] / (s.GP * m.average + 1) * 1000 : 0;
    }

    double k = p.Enforcer == 1 ? 5.6 : 5.1;
    if (r.FightsPer1000 > 10 + 30 * rng.rnd()) k += 0.5;
    r.NonFightPimPer60 = r.PimPer60 - k * r.FightsPer1000 * 60 / 1000;
    if (realSet) r.NonFightPimPer60 = std::max({r.NonFightPimPer60, 0.35 * r.PimPer60, 0.01});

    if (!realSet && ctx.steerFights) steerFights(p, out, rng);
}

ShiftResult computeShift(const PlayerRecord& p, double am, const ShiftContext& ctx) {
    if (isGoalie(p)) return {360000, 100};
    const StatLine& real = realOf(p);
    const StatLine& replay = replayOf(p);
    int y = p.PlayerYear >= 1920 && p.PlayerYear <= 2100 ? p.PlayerYear : 2019;
    double v;
    if (isDefenseman(p)) {
        v = am >= 22 ? roundHalfEven(am - 22 + 85) : 85;
        if (y >= 1920 && y <= 1979) {
            if (ctx.dressedSkaters <= 17) v += 10;
            if (ctx.dressedSkaters <= 16) v += 10;
            double x = ctx.eraGames > 0 ? double(ctx.defenseGames) / ctx.eraGames : 0;
            if (x < 5.5) v += 15;
            if (x < 4.5) v += 15;
        }
    } else {
        v = am >= 20 ? roundHalfEven(am - 20 + 82) : 82;
        if (p.Enforcer == 1) v += 5;
    }
    if (y <= 1949)
        v += 20;
    else if (y <= 1974)
        v = roundHalfEven(0.5 * (1975 - y) + v);
    double q = real.Pim / (real.GP * am + 0.01);
    v += (q > 0.2) + (q > 0.3) + (q > 0.4);

    ShiftResult out;
    out.MaxEnergy = 100;
    if (replay.GP >= 2 && real.GP >= 5 && real.Toi > 50 && replay.Toi > 30) {
        double r = std::max(real.Toi / 60.0 / real.GP, 15.0);
        double played = replay.Toi / 60.0 / replay.GP;
        if (replay.GP >= 10 && r >= 18)
            v += 10 * ((played < r) + (played < r + 0.5) + (played < r + 1) + (played < r + 1.5));
        // Minutes he is short of his real ice time: a player kept under his
        // real minutes gets longer shifts and more energy to catch up.
        double u = 1.02 * r + 0.03 - played;
        u *= std::min(1.0, (double(replay.GP) / real.GP) / 0.2);
        double a = ctx.eraGames > 0 ? double(real.GP) / ctx.eraGames : 0;
        if (a > 0 && ctx.teamGames > 0) {
            double b = double(replay.GP) / ctx.teamGames;
            u *= std::clamp(b / a, 0.3, 0.9);
        }
        u = std::clamp(u, -5.0, std::clamp((am - 10) / 2, 1.0, 5.0));
        double energy = roundHalfEven(std::floor(roundHalfEven(100 + u) + 0.9));
        out.MaxEnergy = static_cast<std::uint8_t>(std::min(energy, 100.0));
        v = roundHalfEven(u * 3 + v);
    }
    out.ShiftLimit = static_cast<std::int32_t>(v);
    return out;
}

std::int32_t ComputeSalary(const PlayerRecord& p, const PlayerRates& rates, const SalaryContext& ctx) {
    const StatLine& real = realOf(p);
    bool goalie = isGoalie(p);
    double s = 1.4 * p.RatingGoalie;
    if (!goalie && ctx.era.goalsPerTeam > 0) {
        const SetRates& r = rates[RateSet::Real];
        s += 0.9 * p.RatingDefense + (22 * r.AssistsPer60 + 37 * r.GoalsPer60) * (2.7 / ctx.era.goalsPerTeam);
    }
    double w = ctx.shortSeasonCount ? 82.0 / 56 : 1;
    if (ctx.scaleGames && ctx.eraGames > 0) {
        double q = goalie ? 0.8 : 0.9;
        s *= std::clamp(real.GP * w / (ctx.eraGames * q), 0.1, 1.0);
    }
    s += 20;
    if (s > 160) s = (s - 160) * 0.5 + 160;
    s = std::floor(s * 65 * std::pow(s / 160, 2));
    double floor = real.GP >= 40 * w ? 400 : real.GP >= 35 * w ? 350 : real.GP >= 30 * w ? 300 : 250;
    return static_cast<std::int32_t>(std::max(s, floor));
}

std::int16_t seasonGamesOfPlayer(const PlayerRecord& p, int seasonGames) {
    double g = std::max(seasonGames, 15);
    double m = g / 6;
    double v = g;
    int start = p.AvailStartMonth;
    double d = p.AvailStartDay;
    if (start == 2) v -= m * d / 31;
    if (start >= 3 && start <= 6) v -= m * d / 31 + m * (start - 2);
    if (start == 7) v -= m * d / 30 + m * 5;
    if (start == 8) v -= m * d / 30 + m * 6;
    int end = p.AvailEndMonth;
    d = p.AvailEndDay;
    if (end >= 2 && end <= 7) v -= m * (31 - d) / 31 + m * (8 - end);
    if (end == 8) v -= m * (31 - d) / 31;
    v = std::max(std::min(v, g), 10.0);
    return static_cast<std::int16_t>(roundHalfEven(v));
}

bool withinAvailability(const PlayerRecord& p, int seasonMonth, int day) {
    auto valid = [](int month, int d) { return month >= 1 && month <= 12 && d >= 1 && d <= 31; };
    if (!valid(p.AvailStartMonth, p.AvailStartDay) || !valid(p.AvailEndMonth, p.AvailEndDay)) return true;
    int startMonth = p.AvailStartMonth == 2 && p.AvailStartDay == 1 ? 1 : p.AvailStartMonth;
    int date = seasonMonth * 100 + day;
    return date >= startMonth * 100 + p.AvailStartDay && date <= p.AvailEndMonth * 100 + p.AvailEndDay;
}

std::uint8_t durabilityOf(int realGames, int seasonGames) {
    if (seasonGames <= 0) return 0;
    double v = roundHalfEven(std::floor(realGames * 10.0 / seasonGames + 0.1));
    return static_cast<std::uint8_t>(std::clamp(v, 0.0, 10.0));
}

std::uint8_t goalieRestGames(int realGames, int seasonGames, int targetStarts) {
    double r = std::max((seasonGames - targetStarts) / 2.5, 1.0);
    return static_cast<std::uint8_t>(std::clamp(roundHalfEven(realGames / r), 4.0, 99.0));
}

bool enforcerByRecord(const PlayerRecord& p, double am, double hits60, double eraPim) {
    const StatLine& real = realOf(p);
    if (am < 8 || real.GP <= 20) return false;
    double e = std::max(eraPim / 10, 2.0);
    double rate = real.Pim / (real.GP * am) * 60 / e;
    double limit = e > 4 ? 2 : e > 3 ? 2.25 : 2.5;
    return rate > limit || (rate > 1.5 && hits60 > 15);
}

}  // namespace tallyrink
