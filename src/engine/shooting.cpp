#include "engine/shooting.h"

#include <algorithm>
#include <cmath>

#include "engine/game.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

constexpr double kStyleAtRealUsage = 1.15;

int yearOr(int year, int lo, int hi, int fallback) { return year < lo || year > hi ? fallback : year; }

}  // namespace

int drawGoalieForm(int ratingGoalie, Random& rng) {
    int form = rng.rand(10) - rng.rand(10);
    if (rng.rand(3) == 1) form += rng.rand(10) - rng.rand(10);
    if (rng.rand(5) == 1) form += rng.rand(15) - rng.rand(15);
    if (rng.rand(7) == 1) form += rng.rand(20) - rng.rand(20);
    if (ratingGoalie + form >= 100) form = 100 - ratingGoalie;
    return form;
}

double goalieRatingTerm(int ratingGoalie, int form, int playerYear) {
    double f = playerYear <= 1979 ? 1.1 : 1;
    double g = (65 - ratingGoalie - form) * 0.001 * f;
    for (int i = 91; i <= 99; ++i)
        if (ratingGoalie >= i) g -= 0.007;
    return g;
}

ShotDepths shotDepths(double goalPct, int pos, int ratingShotIn, int ratingShotOut) {
    ShotDepths d{goalPct, goalPct, goalPct};
    if (pos == kNoPos) return d;
    if (pos == 3 || pos == 4)
        d = {goalPct * 1.7 + 0.1, goalPct * 0.75, goalPct * 0.3};
    else
        d = {goalPct * 1.1 + 0.05, goalPct * 0.7, goalPct * 0.45};
    int k = ratingShotOut - ratingShotIn;
    d.inside -= 0.002 * (k + 2);
    d.mid -= 0.001 * (k + 1);
    d.outside += 0.002 * (k - 2);
    d.mid = std::max(d.mid, d.outside + 0.03);
    d.inside = std::max(d.inside, d.mid + 0.03);
    return d;
}

double keepInFactor(int ratingDefense, double strong, double weak, Random& rng) {
    if (!rng.underRand(ratingDefense, 7, 3)) return strong;
    if (!rng.randAtMost(5, ratingDefense - 1)) return weak;
    return 1;
}

double limitByClass(double goalPct, int shotClass, double playerPct) {
    switch (shotClass) {
        case kShotOutside:
            return std::clamp(goalPct, 0.1 * playerPct, 0.95 * playerPct);
        case kShotMid:
            return std::clamp(goalPct, 0.8 * playerPct, 2.3 * playerPct);
        case kShotInside:
            goalPct = std::max(goalPct, 1.2 * playerPct);
            // A shot beyond the cap is set a little above it.
            if (goalPct > 3.5 * playerPct) goalPct = 3.8 * playerPct;
            return goalPct;
        default:
            return goalPct;
    }
}

// ---- In the game --------------------------------------------------------------------

[[gnu::noinline]] const EraFigures& Game::workOutEraFigures(int year, int side, int fallback) const {
    bool college = sideOf(side).team.TeamType.view() == "C";
    EraFiguresMemo& m = eraFiguresMemo_[eraFiguresMemoNext_];
    eraFiguresMemoNext_ = (eraFiguresMemoNext_ + 1) % eraFiguresMemo_.size();
    m = {eraYearsKey(year, fallback), side,
         figuresOf(session_.eraRow(year, fallback), college ? EraLevel::College : EraLevel::Professional)};
    return m.figures;
}

void Game::drawGoalieForm() {
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = sideOf(side);
        for (int slot = 0; slot < static_cast<int>(kRosterSlots); ++slot) {
            const PlayerRecord& p = t.player(slot);
            s_.find.GoalieForm[at(side)][at(slot)] =
                p.PlayerId > 0 && isGoalie(p) ? tallyrink::drawGoalieForm(p.RatingGoalie, rng_) : 0;
        }
    }
}

// Rest the goalie has missed: a man who has started game after game gives up
// more.
double Game::goalieFatigue(int side, int goalie, bool rush) const {
    const RulesRecord& rules = session_.league().rules;
    if (session_.PlayoffGame || rules.GoalieConsecCheck == 1) return 0;
    const PlayerRecord& g = sideOf(side).player(goalie);
    int d = g.RosterGames[0] - g.GoalieRestGames;
    if (rush) return d >= 10 ? .04 : d >= 7 ? .03 : d >= 4 ? .02 : d >= 1 ? .01 : 0;
    return d >= 11 ? .07 : d >= 7 ? .05 : d >= 4 ? .03 : d >= 1 ? .01 : 0;
}

double Game::basePct() const {
    const RulesRecord& rules = session_.league().rules;
    const int side = s_.PuckTeam;
    if (rules.GameEraList == 1) return 0.094;
    if (rules.GameEraList >= 2) return 1 - eraFiguresOf(rules.GameEraList + 1948, side).savePct / 100;
    // The era table and the teams' levels hold through a game: the goalies'
    // years and the side decide the answer.
    const std::array<int, 2> years{goalieYear(kVisitor), goalieYear(kHome)};
    BasePctMemo& memo = basePctMemo_[at(side)];
    if (memo.known && memo.years == years) return memo.pct;
    double a = 1 - eraFiguresOf(years[0], side).savePct / 100;
    double b = 1 - eraFiguresOf(years[1], side).savePct / 100;
    memo = {true, years, (a + b) / 2};
    return memo.pct;
}

// Asked at every step, with a handful of small helpers each asked once:
// they are built into it.
[[gnu::flatten]] void Game::GoalPct(PlayChances& c) {
    const int side = s_.PuckTeam;
    const int opp = s_.OtherTeam();
    const SideTables& t = sideOf(side);
    const SideTables& o = sideOf(opp);
    const FindState& f = s_.find;
    const int carrier = f.Carrier;
    const int pos = carrier == kNoSlot ? kNoPos : f.CarrierPos;
    const bool emptyNet = s_.GoaliePulled[at(opp)];
    const PlayerRecord* p = carrier == kNoSlot ? nullptr : &t.player(carrier);
    const PlayerRates* rates = carrier == kNoSlot ? nullptr : &t.rates[at(carrier)];
    const int year = p ? yearOr(p->PlayerYear, 1900, 2050, 2014) : 2014;
    const double shootingPct = rates ? rates->ShootingPct : 0;

    // Steps 1 to 3: the shooter against his era, on the goalies' era.
    // The shooter's era is asked about twice: its save percentage is kept.
    const double eraSavePct = eraFiguresOf(year, side).savePct;
    double savePart = 1 - eraSavePct / 100;
    double rel = 0;
    if (p && savePart > 0) rel = hasForwardFlag(*p) ? shootingPct / (savePart * 1.15) : shootingPct / (savePart * 0.57);
    const double base = basePct();
    double g = base * rel;
    if (sideFacts_[at(kHome)].college) g *= 1.2;

    // Step 4: the defenseman on his side of the ice.
    if (s_.PlayZone == Zone::OffenseZone && pos >= 0 && pos <= 2) {
        auto defense = [&](int dpos) {
            int slot = slotAt(opp, dpos);
            return slot == kNoSlot ? 65.0 : static_cast<double>(o.player(slot).RatingDefense);
        };
        double x = pos == 0 ? defense(4) - 65 : pos == 2 ? defense(3) - 65 : (defense(3) + defense(4)) / 2 - 65;
        g -= x / 2000;
    }
    // Step 5: the very good and the poor shooters stand further apart.
    if (savePart > 0.05) {
        double q = g / savePart;
        if (q >= 1.4)
            g *= 1.3;
        else if (q < 0.65)
            g *= 0.7;
        else if (q <= 0.85)
            g *= 0.8;
    }
    // The style factor is kept relative to real-life usage, where it is 1,
    // so that the steering compares a man's replay with his real rate; the
    // shot itself takes the whole of 1.15 ^ (1 / g), which is 1.15 there.
    g = g / f.ShootingCalibration * (rates ? rates->ShotStyleFactor * kStyleAtRealUsage : 1) * 1.05;
    // Step 7: a team chasing the game late takes the poorer chances.
    if (trailingLate()) {
        for (int tm = 120; tm >= 40; tm -= 10)
            if (s_.Clock <= tm) g *= 0.97;
    }
    // Step 8: the goalie.
    if (!emptyNet) {
        int goalie = slotAt(opp, 5);
        double gt = 0;
        if (goalie != kNoSlot) {
            const PlayerRecord& gp = o.player(goalie);
            gt = goalieRatingTerm(gp.RatingGoalie, f.GoalieForm[at(opp)][at(goalie)], gp.PlayerYear);
            if (!isGoalie(gp)) gt = 0.15;
            const StatLine& real = statLine(gp, StatLineIndex::Real);
            if (real.Saves >= 100) {
                double sv = static_cast<double>(real.Saves) / (real.Saves + real.GoalsAllowed);
                if (sv > 0.85 && sv < 0.88) gt += 0.012;
                if (sv > 0.92 && sv < 0.97) gt -= 0.012;
            }
            gt += goalieFatigue(opp, goalie, false);
            if (alternateReality()) gt -= gp.FormBias * 0.005;
        }
        g += gt;
    }
    if (s_.PlayZone != Zone::Rush) g = std::min(g, savePart * 1.9);
    g = std::min(g, 0.5);
    // Step 10: a playmaker makes his own chances.
    if (rates) {
        double setup = shootingPct < 0.09 ? 0.1 : shootingPct < 0.13 ? 0.4 : shootingPct < 0.19 ? 0.7 : 1;
        g += rates->set[0].AssistsPer60 / 100 * setup;
    }
    g *= 1.12;
    if (p) {
        if (p->PlayerYear <= 1973 && pos >= 3) g *= 1.05;
        if (p->PlayerYear <= 1973) g *= 1.08;
        if (p->PlayerYear >= 2012) g *= 1.05;
    }
    // Step 12: eras of many goals.
    {
        int y = goalieYearOnIce(side);
        if (y == 0) y = goalieYearOnIce(opp);
        if (y == 0) y = 2010;
        double pp = (100 - eraFiguresOf(y, side).savePct) / 100;
        if (sideFacts_[at(side)].college) {
            if (pp > 0.11) g *= 1.07;
        } else {
            if (pp > 0.11) g *= 1.07;
            if (pp > 0.12) g *= 1.05;
        }
    }
    // Step 13: a finisher keeps a little of his edge over the era.
    double playerPct = 0.09;
    if (p && !manFacts_[at(side)][at(carrier)].college && p->PlayerYear >= 1921 && p->PlayerYear <= 2099)
        playerPct = (100 - eraSavePct) / 100;
    if (p) {
        const StatLine& real = statLine(*p, StatLineIndex::Real);
        double s = real.Goals / (real.Sog + 1.0);
        if (s > 0.02 && playerPct > 0.06 && real.Sog > 50 && s / playerPct > 1.1) g *= (s + 2) / (playerPct + 2);
    }
    // Steps 14 and 15: the depths.
    ShotDepths d = shotDepths(g, pos, p ? p->RatingShotIn : 0, p ? p->RatingShotOut : 0);
    if (p && (pos == 3 || pos == 4) && !hasFlag(*p, Flag::Defense)) g *= 1.2;
    if (p && alternateReality()) g *= 1 + p->FormBias * 0.005;
    // Step 17: the class of the shot.
    int shotClass = kShotNone;
    if (s_.PlayZone == Zone::Rush) {
        shotClass = kShotRush;
    } else if (pos != kNoPos) {
        // The carrier's spot decides, in any zone: a carrier found in the own
        // half stands out at the blue line, so his long shot is an outside
        // one. Only a man with no spot at all takes a class by position.
        int spot = f.Spot[at(pos)];
        if (spot >= kSpotIn)
            shotClass = spot - 2;
        else if (spot == kSpotNone)
            shotClass = pos == 3 || pos == 4 ? kShotOutside : (rng_.rand(10) <= 7 ? kShotOutside : kShotMid);
        if (isOffenseState(s_.PlayZone) && spot == kSpotBehind && f.LooseInClose) shotClass = kShotInside;
    }
    if (s_.PlayZone != Zone::Rush) {
        if (shotClass == kShotInside) g = d.inside;
        if (shotClass == kShotMid) g = d.mid;
        if (shotClass == kShotOutside) g = d.outside;
    }
    g = limitByClass(g, shotClass, playerPct);
    // Step 20: the power play.
    if (strength(side) > strength(opp)) {
        double cc = shotClass == kShotInside || shotClass == kShotMid ? 1.5 : 0.5;
        g += cc * 0.006;
        if (!s_.ProbeOnly) {
            g *= f.PowerPlayCalibration;
            if (p && !rng_.overRand(p->PlayerYear, 1965, 10)) g += 0.007;
        }
        if (s_.Skaters[at(side)] == s_.Skaters[at(opp)] + 2) g += cc * 0.004 + 0.1;
        if (pos != kNoPos && f.Spot[at(pos)] == kSpotOut) g = g * 1.1 + 0.01;
    }
    if (emptyNet) g = (g + 0.3) * 1.3;
    g = std::min(g, 0.75);
    if (s_.PlayZone == Zone::OffenseZone && carrier != kNoSlot && carrier == f.ListCarrier) g *= 0.5;

    c.GoalPct = g;
    c.ShotClass = shotClass;
    c.PctInside = d.inside;
    c.PctMid = d.mid;
    c.PctOutside = d.outside;
}

void Game::RushGoalPct(PlayChances& c) {
    const int side = s_.PuckTeam;
    const int opp = s_.OtherTeam();
    const FindState& f = s_.find;
    double g = 0.094;
    int goalie = slotAt(opp, 5);
    if (!s_.GoaliePulled[at(opp)] && goalie != kNoSlot) {
        const PlayerRecord& gp = sideOf(opp).player(goalie);
        double gt = isGoalie(gp) ? (65 - gp.RatingGoalie) * 0.002 : 0.15;
        gt += goalieFatigue(opp, goalie, true);
        g += gt;
    }
    if (f.Carrier != kNoSlot && hasFlag(sideOf(side).player(f.Carrier), Flag::Defense)) g *= 1.5;
    g += 0.1;
    if (f.rush == RushType::OneZero) g += 0.1;
    const double base = basePct();
    g = std::max({g, 0.05, 2 * base});
    if (f.rush == RushType::OneZero) g = std::max(g, 2.5 * base);
    c.GoalPct = std::min(g, 0.5);
    c.ShotClass = kShotRush;
}

int Game::goalieYearOnIce(int side) const {
    int g = slotAt(side, 5);
    if (s_.GoaliePulled[at(side)] || g == kNoSlot) return 0;
    return yearOr(sideOf(side).player(g).PlayerYear, 1910, 2050, 2008);
}

bool Game::trailingLate() {
    int lead = s_.Score[at(s_.PuckTeam)] - s_.Score[at(s_.OtherTeam())];
    return lead < 0 && s_.Period >= periods_ && rng_.underRand(s_.Clock, 360, 360);
}

}  // namespace tallyrink
