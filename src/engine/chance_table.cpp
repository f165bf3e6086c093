#include "engine/chance_table.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <string>

#include "engine/game.h"
#include "engine/shooting.h"
#include "league/league.h"
#include "team/positions.h"
#include "team/team_ratings.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

bool isCall(Call c, std::initializer_list<Call> calls) {
    return std::find(calls.begin(), calls.end(), c) != calls.end();
}

void zeroPenalties(PlayChances& c) { c.PenaltyOppChance = c.PenaltyOwnChance = c.PenaltyBothChance = 0; }
void scalePenalties(PlayChances& c, double f) {
    scale(c.PenaltyOppChance, f);
    scale(c.PenaltyOwnChance, f);
    scale(c.PenaltyBothChance, f);
}
int penaltySum(const PlayChances& c) { return c.PenaltyOppChance + c.PenaltyOwnChance + c.PenaltyBothChance; }

}  // namespace

// ---- Free arithmetic -------------------------------------------------------------

double eraPenaltyFactor(double pim, double shots, double refPim) {
    if (shots <= 0 || refPim <= 0) return 1;
    double ratio = (pim / shots) / (refPim / (2.8 / 0.094));
    return std::pow(std::max(ratio, 0.0), 1.4);
}

double eraMultiplier(double f) {
    if (f >= 2.1) return 1.44;
    if (f >= 1.8) return 1.38;
    if (f >= 1.5) return 1.32;
    if (f >= 1.2) return 1.26;
    return 1.2;
}

double calibration(double actual, double expected, double power, double lo, double hi) {
    if (expected <= 0 || actual <= 0) return 1;
    return std::clamp(std::pow(actual / expected, power), lo, hi);
}

double powerPlayEraFactor(double pct) {
    if (pct == 0) pct = 16;
    double c = 1;
    if (pct > 17.9) c = (17.8 / pct) * (17.8 / pct);
    if (pct < 17.7) c = (pct / 17.8) * (pct / 17.8);
    return std::clamp(c, 0.7, 1.3);
}

int usageTier(const std::array<std::uint8_t, 3>& steps, int replayGames, int realGames) {
    if (realGames <= 0) return 0;
    double u = (replayGames + 1.0) / realGames;
    int tier = 0;
    for (int i = 0; i < 3; ++i)
        if (steps[at(i)] != 0 && (steps[at(i)] + 1) / 100.0 < u) tier = i + 1;
    return tier;
}

SeasonCalibration seasonCalibration(const League& league, const EraTable& era, const RulesRecord& rules, Random& rng) {
    SeasonCalibration out;
    int games = 0;
    for (int t = 1; t <= kMaxTeams; ++t)
        if (league.isActive(t)) games += league.team(t).TeamFor[0].GP;
    if (games < 5 + rng.rand(10)) return out;

    double expGames = 0, expShots = 0, expPim = 0, expFights = 0, expGoals = 0;
    double games2 = 0, shots = 0, pim = 0, fights = 0, goals = 0, ppChances = 0, ppGoals = 0;
    const auto& rows = league.PlayerTable();
    for (int t = 1; t <= kMaxTeams; ++t) {
        if (!league.isActive(t)) continue;
        const TeamRecord& team = league.team(t);
        int teamGames = team.TeamFor[0].GP;
        // The year the team plays by: a regular of its roster, or its own.
        int year = 0;
        for (int tries = 0; tries < 200 && year == 0; ++tries) {
            if (rng.rand(50) == 1) {
                year = team.TeamYear;
                break;
            }
            int id = team.Roster[at(rng.rand(50) - 1)];
            if (id <= 0 || id > static_cast<int>(rows.size())) continue;
            const PlayerRecord& p = rows[at(id - 1)].player;
            if (p.PlayerId != id || p.TeamId != t || p.PlayerYear <= 0) continue;
            if (statLine(p, StatLineIndex::Replay).GP > (0.5 + 0.5 * rng.rnd()) * teamGames) year = p.PlayerYear;
        }
        if (year == 0) year = team.TeamYear;
        if (rules.GameEraList == 1) year = 1960 + rng.rand(60);
        if (rules.GameEraList > 1) year = rules.GameEraList + 1948;
        EraFigures e =
            figuresOf(era.yearOr(year, 2008), team.TeamType.view() == "C" ? EraLevel::College : EraLevel::Professional);
        expGames += 1;
        expShots += e.shotsPerTeam();
        expPim += e.pimPerGame / 2;
        expFights += e.fightsPerGame / 2;  // a team takes part in half the fighting majors of its games
        expGoals += e.goalsPerTeam;
        games2 += teamGames;
        shots += team.TeamFor[0].Sog;
        pim += team.TeamFor[0].Pim;
        fights += team.FightsCount[0];
        goals += team.TeamFor[0].Goals;
        ppChances += team.PowerPlays[0];
        ppGoals += team.PowerPlayGoals[0];
    }
    if (games2 <= 0 || expGames <= 0) return out;
    out.Shots = calibration(shots / games2, expShots / expGames, 3, 0.85, 1.15);
    out.Penalty = calibration(pim / games2, expPim / expGames, 2, 0.7, 1.5);
    out.Fight = calibration(fights / games2, expFights / expGames, 2, 0.5, 1.5);
    if (shots > 0 && expShots > 0) out.Shooting = calibration(goals / shots, expGoals / expShots, 2, 0.8, 1.2);
    if (ppChances >= 100 && ppGoals > 0) {
        double actual = ppGoals / ppChances * 100;
        int first = 0;
        for (int t = 1; t <= kMaxTeams && first == 0; ++t)
            if (league.isActive(t)) first = t;
        double expected = first ? era.yearOr(league.team(first).TeamYear, 2008).PowerPlayPct : 18;
        if (expected < 12) expected = 18;
        out.PowerPlay = std::pow(std::clamp(expected / actual, 0.7, 1.3), 1.3);
    }
    return out;
}

// ---- The parts of a step before the table ---------------------------------------------

void Game::setManpower(int visitorSkaters, int homeSkaters) {
    s_.Skaters = {std::clamp(visitorSkaters, 3, 5), std::clamp(homeSkaters, 3, 5)};
    for (int side : {kVisitor, kHome}) {
        s_.forwardUnit[at(side)] = 1;
        s_.defensePair[at(side)] = 1;
        putUnitOnIce(side);
    }
}

void Game::initChances() {
    drawGoalieForm();
    FindState& f = s_.find;
    const SeasonCalibration& k = options_.calibration;
    f.ShotsCalibration = k.Shots;
    f.PenaltyCalibration = k.Penalty;
    f.FightCalibration = k.Fight;
    f.ShootingCalibration = k.Shooting > 0 ? k.Shooting : 1;
    f.PowerPlayCalibration = k.PowerPlay;
    // A projection of the coming season has no penalty record to follow.
    std::string dir = session_.league().leagueDir.filename().string();
    if (dir.empty()) dir = session_.league().leagueDir.parent_path().filename().string();
    std::transform(dir.begin(), dir.end(), dir.begin(), [](unsigned char ch) { return std::toupper(ch); });
    if (dir.ends_with("PROJECTION") && sideOf(kVisitor).team.TeamYear == 2021) f.PenaltyCalibration = 1;
}

// The men who matter in the zone the play left the puck in: a new carrier
// and his spot, the passers of the set-up shot, the defender on him.
void Game::prepareZone() {
    FindState& f = s_.find;
    const bool kept = s_.PuckTeam == s_.StepPuckTeam;
    if (!kept) {
        f.Carrier = f.Passer1 = f.Passer2 = f.LastPasser = kNoSlot;
        f.CarrierPos = f.Passer1Pos = f.Passer2Pos = kNoPos;
    }
    switch (s_.PlayZone) {
        case Zone::OffenseZone: {
            bool held =
                kept && isOffenseState(s_.LastZone) &&
                (s_.PlayResult == Result::Save || s_.PlayResult == Result::Miss || s_.PlayResult == Result::Block);
            if (!held) f.Carrier = kNoSlot;
            HkSetPlayCallList();
            if (f.Carrier == kNoSlot) FindCarrier();
            FindDefender();
            f.CarrierPos = positionOf(s_.PuckTeam, f.Carrier);
            if (f.CarrierPos != kNoPos) f.Spot[at(f.CarrierPos)] = kSpotOut;
            break;
        }
        case Zone::OffenseShooter: {
            if (f.Carrier == kNoSlot || positionOf(s_.PuckTeam, f.Carrier) == kNoPos) FindCarrier();
            FindPassers();
            f.CarrierPos = positionOf(s_.PuckTeam, f.Carrier);
            if (f.CarrierPos != kNoPos && !(f.CarrierPos <= 2 && rng_.rand(100) <= 95))
                f.Spot[at(f.CarrierPos)] = 2 + rng_.rand(2);
            FindDefender();
            break;
        }
        case Zone::Rush:
            if (f.Carrier == kNoSlot || positionOf(s_.PuckTeam, f.Carrier) == kNoPos) FindCarrier();
            f.ListCarrier = kNoSlot;
            break;
        default:
            f.Carrier = f.Passer1 = f.Passer2 = kNoSlot;
            f.CarrierPos = f.Passer1Pos = f.Passer2Pos = kNoPos;
            f.ListCarrier = kNoSlot;
            f.Spot = {};
            break;
    }
}

// The mood of the coming shot: mostly neutral, now and then up or down
// (baseShooterMood), and a shooter who has scored on more of his shots
// than in real life gets a little less of it. His record is read as the
// play starts; the rest waits for the first table that asks.
void Game::drawShooterMood() {
    FindState& f = s_.find;
    f.newPlay = false;
    f.moodDrawn = false;
    int lift = 0;
    if (f.Carrier != kNoSlot) {
        const PlayerRecord& p = sideOf(s_.PuckTeam).player(f.Carrier);
        const StatLine& real = statLine(p, StatLineIndex::Real);
        const StatLine& replay = statLine(p, StatLineIndex::Replay);
        if (real.Sog > 30 && real.Goals > 0 && rng_.overRand(replay.Sog, 10, 20)) {
            double ratio =
                (static_cast<double>(replay.Goals) / replay.Sog) / (static_cast<double>(real.Goals) / real.Sog);
            if (!rng_.under(ratio, 1, 0.15))
                lift -= rng_.rand(2);
            else if (!rng_.over(ratio, 1, -0.15))
                lift += rng_.rand(2);
        }
    }
    f.moodLift = lift;
}

// A probe's draws are taken back after it, so a mood it draws is not kept:
// the step that follows draws it again.
int Game::shooterMood() {
    FindState& f = s_.find;
    if (f.moodDrawn) return f.ShooterMood;
    const int mood = std::clamp(baseShooterMood(rng_.rnd()) + f.moodLift, 1, 9);
    if (!s_.ProbeOnly) {
        f.ShooterMood = mood;
        f.moodDrawn = true;
    }
    return mood;
}

void Game::moveForecheck() {
    FindState& f = s_.find;
    const int opp = s_.OtherTeam();
    int& level = f.ForecheckLevel[at(opp)];
    if (rng_.rand(100) <= 20) level += rng_.rand(2) - rng_.rand(2);
    int cap = strength(opp) < strength(s_.PuckTeam) ? 2 : 3;
    level = std::clamp(level, 0, cap);
    if (s_.Score[at(opp)] > s_.Score[at(s_.PuckTeam)] && level > 2) level = 2;
    if (s_.PuckTeam != s_.StepPuckTeam) {
        if (s_.LastPlayCall == Call::Aggressive) level = std::max(level, 2);
        if (s_.LastPlayCall == Call::Balanced) level = std::max(level, 1);
    }
}

// Who has the puck: a pass or a breakout finds a new man; a shot, a set
// play or a rush stays with the man who has it.
void Game::chooseCarrier() {
    FindState& f = s_.find;
    const Zone z = s_.PlayZone;
    const Call call = s_.PlayCall;
    bool pick = false;
    if (isCall(call, {Call::PlayShoot, Call::PlayTo, Call::Shoot, Call::Rush})) pick = false;
    if (isCall(call, {Call::Pass, Call::PassSafe})) {
        pick = true;
        if (!s_.ProbeOnly) f.LastPasser = f.Carrier;
    }
    if (isCall(call, {Call::Balanced, Call::Safe, Call::Aggressive}) && f.Spot[3] == kSpotNone) pick = true;
    if (z == Zone::DefenseZone || z == Zone::NeutralZone) pick = true;
    if (isCall(call, {Call::PlayShoot, Call::PlayTo}) || z == Zone::Rush) pick = false;
    if (z == Zone::DefenseZone && call == Call::Shoot) pick = false;
    if (z == Zone::OffenseZone && s_.StepPuckTeam == s_.PuckTeam &&
        (s_.LastPlayResult == Result::Block || s_.LastPlayResult == Result::Miss || s_.LastPlayResult == Result::Save))
        pick = false;
    // The chaser who got to a dump-in already has the puck.
    if (isOffenseState(z) && s_.events.dumpIn) pick = false;
    // A set play goes to the man the coach chose: the carrier passes to him.
    if (isCall(call, {Call::PlayShoot, Call::PlayTo}) && !s_.ProbeOnly && f.PlayTarget != f.Carrier &&
        positionOf(s_.PuckTeam, f.PlayTarget) != kNoPos) {
        f.Passer2 = f.Passer1;
        f.Passer2Pos = f.Passer1Pos;
        f.Passer1 = f.Carrier;
        f.Passer1Pos = f.CarrierPos;
        f.LastPasser = f.Carrier;
        f.Carrier = f.PlayTarget;
        pick = false;
    }
    if (!s_.ProbeOnly) f.PlayTarget = kNoSlot;
    // A carrier who is no longer on the ice, or none at all, is found anew.
    if (f.Carrier == kNoSlot || positionOf(s_.PuckTeam, f.Carrier) == kNoPos) pick = true;
    if (s_.ProbeOnly) pick = false;
    f.PickCarrier = pick;
    if (pick) {
        f.LastPasser = kNoSlot;
        FindCarrier();
        FindPassers();
    }
    f.CarrierPos = positionOf(s_.PuckTeam, f.Carrier);
    if (f.CarrierPos == kNoPos) f.Carrier = kNoSlot;
}

const UnitRatings& Game::unitRatings(int side, bool sticks, const UnitSituation& sit) const {
    static_assert(kRosterSlots < 64, "a slot and its two marks fit a byte of the key");
    const OnIce& ice = s_.onIce[at(side)];
    // Only the places the ratings count: the sixth holds an extra attacker
    // or a goalie, who doesn't count.
    const int places = sit.extraAttacker ? 6 : 5;
    const bool keyed = sit.skaters >= 0 && sit.skaters < 8 && sit.opponentSkaters >= 0 && sit.opponentSkaters < 8;
    std::uint64_t key = 1 | std::uint64_t(side & 1) << 1 | std::uint64_t{sit.extraAttacker} << 2 |
                        std::uint64_t{sit.insideDefense} << 3 | std::uint64_t(sit.skaters & 7) << 4 |
                        std::uint64_t(sit.opponentSkaters & 7) << 7;
    for (int pos = 0; pos < places; ++pos) {
        const int slot = ice.slot[at(pos)];
        if (slot == kNoSlot) continue;
        const std::uint64_t man = std::uint64_t(slot + 1) | std::uint64_t{s_.Energy[at(side)][at(slot)] < 80} << 6 |
                                  std::uint64_t{sticks && stickBroken(side, slot)} << 7;
        key |= man << (10 + 8 * pos);
    }
    // A place by a hash of the key: a step asks about a dozen or so units
    // in turn, and a search of a ring of them costs more than a rating.
    constexpr std::size_t kPlaces = std::tuple_size_v<decltype(unitMemo_)>;
    static_assert(std::has_single_bit(kPlaces), "the hash picks a place by its top bits");
    UnitMemo& kept = unitMemo_[(key * 0x9E3779B97F4A7C15ULL) >> (64 - std::countr_zero(kPlaces))];
    if (keyed && kept.key == key) [[likely]]
        return kept.out;
    return rateUnit(side, sticks, sit, keyed ? key : 0, kept);
}

[[gnu::noinline]] const UnitRatings& Game::rateUnit(int side, bool sticks, const UnitSituation& sit, std::uint64_t key,
                                                    UnitMemo& kept) const {
    const OnIce& ice = s_.onIce[at(side)];
    const int places = sit.extraAttacker ? 6 : 5;
    std::array<UnitPlayer, 6> men{};
    const SideTables& t = sideOf(side);
    for (int pos = 0; pos < places; ++pos) {
        const int slot = ice.slot[at(pos)];
        if (slot == kNoSlot) continue;
        UnitPlayer& u = men[at(pos)];
        u.record = &t.player(slot);
        u.averageMinutes = t.rate(RateSet::Real, slot).AverageMinutes;
        u.brokenStick = sticks && stickBroken(side, slot);
        u.fatigued = s_.Energy[at(side)][at(slot)] < 80;
        u.indiscipline = manFacts_[at(side)][at(slot)].indiscipline;
    }
    kept.out = {};
    onIceRatings(men, sit, *session_.league().era, kept.out);
    kept.key = key;
    return kept.out;
}

// The era's penalties against its shots, at the head of every step.
void Game::eraFactors() {
    FindState& f = s_.find;
    const int side = s_.PuckTeam;
    // The same goalies and the same side with the puck give the same factors.
    const std::array<int, 2> years{goalieYear(kVisitor), goalieYear(kHome)};
    EraFactorsMemo& memo = eraMemo_[at(side)];
    if (memo.side == side && memo.years == years) {
        f.EraShotsPerGame = memo.shotsPerGame;
        f.EraPenaltyFactor = memo.penaltyFactor;
        return;
    }
    eraFactorsFor(side);
    memo = {side, years, f.EraShotsPerGame, f.EraPenaltyFactor};
}

void Game::eraFactorsFor(int side) {
    FindState& f = s_.find;
    const RulesRecord& rules = session_.league().rules;
    const bool homeCollege = sideOf(kHome).team.TeamType.view() == "C";
    const EraRecord& ref = session_.eraRow(2008, 2008);
    const double refPim = homeCollege ? ref.CollegePim : ref.PimPerGame;
    if (rules.GameEraList == 1) {
        f.EraShotsPerGame = 1;
        double ratio = 1 / (refPim / (2.8 / 0.094));
        f.EraPenaltyFactor = refPim > 0 ? std::pow(ratio, 1.4) : 1;
        return;
    }
    double pim = 0, shots = 0;
    if (rules.GameEraList >= 2) {
        EraFigures e = eraFiguresOf(rules.GameEraList + 1948, side);
        pim = e.pimPerGame;
        shots = e.shotsPerTeam();
    } else {
        for (int s : {kVisitor, kHome}) {
            EraFigures e = eraFiguresOf(goalieYear(s), side);
            pim += e.pimPerGame;
            shots += e.shotsPerTeam();
        }
    }
    f.EraShotsPerGame = shots;
    f.EraPenaltyFactor = tallyrink::eraPenaltyFactor(pim, shots, refPim);
}

// ---- The table -------------------------------------------------------------------

const Game::SpecialGoals& Game::rosterSpecialGoals(int side) {
    SpecialGoals& goals = rosterSpecialGoals_[at(side)];
    if (goals.known) return goals;
    const SideTables& t = sideOf(side);
    goals = SpecialGoals{.known = true};
    for (int slot = 0; slot < static_cast<int>(kRosterSlots); ++slot) {
        if (!t.onTeam(slot)) continue;
        goals.powerPlay += statLine(t.player(slot), StatLineIndex::Real).PPG;
        goals.shortHanded += statLine(t.player(slot), StatLineIndex::Real).SHG;
    }
    return goals;
}

PlayChances Game::ChanceTable() {
    PlayChances c;
    fillChanceTable(c);
    return c;
}

void Game::fillChanceTable(PlayChances& c) {
    FindState& f = s_.find;
    const RulesRecord& rules = session_.league().rules;
    const bool probe = s_.ProbeOnly;
    const int side = s_.PuckTeam;
    const int opp = s_.OtherTeam();
    const SideTables& t = sideOf(side);
    const SideTables& o = sideOf(opp);
    const Zone z = s_.PlayZone;
    const Call call = s_.PlayCall;
    const bool stronger = strength(side) > strength(opp);
    const bool shorthanded = strength(side) < strength(opp);
    // A few steps ask for the men each side has, an extra attacker not counted.
    const bool moreSkaters = s_.Skaters[at(side)] > s_.Skaters[at(opp)];
    const bool emptyNetOpp = s_.GoaliePulled[at(opp)];
    const bool emptyNetOwn = s_.GoaliePulled[at(side)];
    const int chanceEdge = s_.Skaters[at(side)] + (emptyNetOwn ? 1 : 0) - s_.Skaters[at(opp)] + (emptyNetOpp ? 1 : 0);
    const int edge = strengthEdge();
    const bool offense = isOffenseState(z);
    const bool ownHalf = z == Zone::DefenseZone || z == Zone::NeutralZone;
    const bool ratedPlay = !offense;
    const bool lastPeriod = s_.Period >= periods_;
    const bool playoff = session_.PlayoffGame;
    const bool exhibition = session_.GameType == 'E';
    const int carrier = f.Carrier;
    const int cpos = carrier == kNoSlot ? kNoPos : f.CarrierPos;
    const PlayerRecord* cp = carrier == kNoSlot ? nullptr : &t.player(carrier);
    const int lead = s_.Score[at(side)] - s_.Score[at(opp)];
    const int L = f.ForecheckLevel[at(opp)];

    // Steps 1 to 3.
    c = PlayChances{};
    GoalPct(c);
    double& gp = c.GoalPct;
    int& shoot = c.shotsTried;
    c.ClearChance = chanceEdge == -2 ? 100 : chanceEdge == -1 ? 50 : chanceEdge == 0 ? 20 : 0;
    if (!offense) PenaltyChances(c);

    // Step 4: the base of the zone and the call.
    auto passPlay = [&](int bonus1, int bonus2, int byEdge) {
        shoot = 0;
        c.ClearChance = c.EntryChance = 0;
        scalePenalties(c, .1);
        if (!probe) f.LastPasser = carrier;
        c.PassChance = (cp ? cp->RatingPassing : 0) * 50 + 550;
        if (byEdge == 1) c.PassChance += bonus1;
        if (byEdge == 2) c.PassChance += bonus2;
        c.PassChance = std::clamp(c.PassChance, 300, 950);
    };
    auto clearPlay = [&]() {
        c.PassChance = shoot = 0;
        zeroPenalties(c);
        c.ClearChance = 950;
    };
    if (z == Zone::OffenseZone) {
        c.ClearChance = 0;
        if (isCall(call, {Call::PlayShoot, Call::Shoot})) {
            shoot = 1000;
        } else if (call == Call::PlayTo) {
            shoot = 0;
        } else if (call == Call::Clear) {
            clearPlay();
        } else if (call == Call::Retreat) {
            int skaterEdge = s_.Skaters[at(side)] - s_.Skaters[at(opp)];
            c.PassChance = 700 + (skaterEdge >= 2 ? 200 : skaterEdge == 1 ? 100 : 0);
            c.PassChance = std::clamp(c.PassChance, 350, 950);
            zeroPenalties(c);
            shoot = 0;
        } else {
            passPlay(200, 300, edge);
        }
    } else if (z == Zone::OffenseShooter) {
        c.ClearChance = 0;
        if (call == Call::Shoot) {
            shoot = 1000;
            c.PassChance = 0;
        } else if (call == Call::Penetrate) {
            c.PassChance = 0;
            shoot = 600;
            int defense = f.Defender == kNoSlot ? 50 : o.player(f.Defender).RatingDefense;
            gp = gp * 1.05 + (100 - defense) * 0.0005;
            if (!probe) {
                int r = rng_.rand(4);
                if (r == 1) gp *= 1.4;
                if (r == 2) gp *= 0.6;
            }
        } else if (call == Call::Clear) {
            clearPlay();
        } else {
            passPlay(200, 400, chanceEdge);
        }
    } else if (z == Zone::Rush) {
        c.ClearChance = 0;
        shoot = f.rush == RushType::OneZero ? 995 : 800;
        c.PenaltyOwnChance = c.PenaltyBothChance = 0;
        if (call == Call::Pass) {
            shoot = 0;
            c.EntryChance = 700;
        }
        if (call == Call::Clear) {
            shoot = c.EntryChance = 0;
            c.ClearChance = 1000;
        }
        RushGoalPct(c);
    } else {
        c.EntryChance = ratedPlay ? roundToInt(s_.PlayRating * 30) : 30;
        if (shorthanded) c.EntryChance = 0;
        if (stronger) c.EntryChance += strength(side) - strength(opp) > 1 ? 300 : 200;
        c.EntryChance = std::min(c.EntryChance, 500);
        shoot = 350;
        if (stronger && cp) {
            shoot += 200;
            if (!probe && !rng_.overRand(cp->PlayerYear, 1965, 10)) scale(shoot, 1.1);
            if (s_.Skaters[at(side)] >= s_.Skaters[at(opp)] + 2) shoot += 250;
            double pp = eraFiguresOf(cp->PlayerYear, side).powerPlayPct;
            if (pp > 5) scale(shoot, pp / 17.8);
            if (!probe) scale(shoot, f.PowerPlayCalibration);
        }
        const int system = s_.coach.live[at(side)].offenseSystem;
        if (system == 1 || system == 2) shoot += 25;
        if (system == 3) shoot -= 25;
        if (emptyNetOwn) shoot = 900;
        if (emptyNetOpp) {
            shoot = 750;
            c.EntryChance = 50;
            gp = 0.5;
        }
        if (shorthanded) c.EntryChance = 0;
        c.ClearChance = coach(side) == CoachKind::Computer && lead < 0 && lastPeriod && s_.Clock <= 60 ? 0 : 150;
        switch (call) {
            case Call::Shoot:
                shoot = 1000;
                c.ClearChance = c.EntryChance = 0;
                break;
            case Call::Safe:
            case Call::DumpChase:
                scale(c.EntryChance, .45);
                scale(shoot, .45);
                scale(c.ClearChance, 1.5);
                c.PenaltyOwnChance = 0;
                if (chanceEdge == -1) {
                    c.ClearChance = 400;
                    shoot = 30;
                    c.EntryChance = 0;
                } else if (chanceEdge == -2) {
                    c.ClearChance = 300;
                    shoot = 10;
                    c.EntryChance = 0;
                }
                break;
            case Call::Aggressive:
            case Call::SkatePass:
                scale(c.EntryChance, 1.1);
                scale(shoot, 1.1);
                if (call == Call::SkatePass && !probe) {
                    for (int pos = 0; pos < 5; ++pos) {
                        int slot = slotAt(side, pos);
                        if (slot == kNoSlot) continue;
                        const PlayerRecord& p = t.player(slot);
                        if (!rng_.underRand(p.RatingSkate, 6, 4) || !rng_.underRand(p.RatingPassing, 6, 4)) {
                            scale(c.EntryChance, 1.01);
                            scale(shoot, 1.01);
                        }
                    }
                }
                c.ClearChance = 0;
                scale(c.PenaltyOwnChance, 2.5);
                if (chanceEdge == -1) shoot = 250;
                if (chanceEdge == -2) shoot = 150;
                break;
            case Call::Clear:
                c.ClearChance = chanceEdge == 0 ? 990 : chanceEdge == -1 ? 700 : chanceEdge == -2 ? 500 : c.ClearChance;
                shoot = c.EntryChance = 0;
                break;
            default:
                break;
        }
    }

    // Step 5: special-team scorers play their real share of the power play.
    if (shoot > 100 && shoot < 900 && !probe) {
        const int rosterPPG = rosterSpecialGoals(side).powerPlay;
        const int rosterSHG = rosterSpecialGoals(side).shortHanded;
        auto steer = [&](double m) {
            if (!rng_.under(m, 1.2, 0.2))
                scale(shoot, 0.2);
            else if (!rng_.under(m, 1, 0.2))
                scale(shoot, 0.5);
            else if (!rng_.over(m, 1, -0.2))
                scale(shoot, 1.5);
        };
        for (int pos = 0; pos < 3; ++pos) {
            int slot = slotAt(side, pos);
            if (slot == kNoSlot) continue;
            const PlayerRecord& p = t.player(slot);
            const StatLine& real = statLine(p, StatLineIndex::Real);
            const StatLine& replay = statLine(p, StatLineIndex::Replay);
            if (real.GP < 20 || real.PPG < 3) continue;
            double a = real.PPG / (real.Goals + 1.0);
            double b = replay.PPG / (replay.Goals + 1.0);
            double r = std::clamp(a / (0.58 / 2.67), 0.1, 1.9);
            if (s_.Skaters[at(side)] == s_.Skaters[at(opp)]) {
                add(shoot, -(r - 1) * 20);
            } else if (s_.Skaters[at(side)] > s_.Skaters[at(opp)]) {
                add(shoot, (r - 1) * 40);
                if (rng_.randAtMost(6, rosterPPG)) steer(b / a);
            } else {
                scale(shoot, 0.93);
                if (!rng_.overRand(p.PlayerYear, 1960, 25)) scale(shoot, 0.5);
                if (rng_.randAtMost(3, rosterSHG)) {
                    a = real.SHG / (real.GP + 1.0);
                    b = replay.SHG / (replay.GP + 1.0);
                    r = std::clamp(a / (0.08 / 2.67), 0.1, 1.9);
                    add(shoot, (r - 1) * 30);
                    if (!rng_.randAtMost(2, real.SHG)) scale(shoot, 0.2);
                    if (real.SHG == 0) scale(shoot, 0.01);
                    if (a > 0) steer(b / a);
                }
            }
        }
    }
    if (emptyNetOpp) gp = std::max(gp, 0.35);

    // Step 7: usage. A man played past his real share is tired.
    const bool inPlayoffs = playoff;
    const auto skaterSteps = inPlayoffs
                                 ? std::array<std::uint8_t, 3>{rules.PlayoffUsageLists[0], rules.PlayoffUsageLists[1],
                                                               rules.PlayoffUsageLists[2]}
                                 : rules.SkaterUsageList;
    const auto goalieSteps = inPlayoffs
                                 ? std::array<std::uint8_t, 3>{rules.PlayoffUsageLists[3], rules.PlayoffUsageLists[4],
                                                               rules.PlayoffUsageLists[5]}
                                 : rules.GoalieUsageList;
    const bool skaterRule = (inPlayoffs ? rules.PlayoffSkaterUsageCheck : rules.SkaterGameUsagePenaltiesCheck) == 1;
    const bool goalieRule = (inPlayoffs ? rules.PlayoffGoalieUsageCheck : rules.GoalieGameUsagePenaltiesCheck) == 1;
    auto tierOf = [&](const SideTables& st, int slot, const std::array<std::uint8_t, 3>& steps) {
        const PlayerRecord& p = st.player(slot);
        return usageTier(steps, statLine(p, StatLineIndex::Replay).GP, statLine(p, StatLineIndex::Real).GP);
    };
    int goalieTier = 0;
    int oppGoalie = emptyNetOpp ? kNoSlot : slotAt(opp, 5);
    if (goalieRule && oppGoalie != kNoSlot) {
        goalieTier = tierOf(o, oppGoalie, goalieSteps);
        if (goalieTier == 1) gp = gp * 1.15 + 0.005;
        if (goalieTier == 2) gp = gp * 1.25 + 0.01;
        if (goalieTier == 3) gp = gp * 1.35 + 0.015;
    }
    int carrierTier = 0;
    if (skaterRule && carrier != kNoSlot) {
        carrierTier = tierOf(t, carrier, skaterSteps);
        if (carrierTier > 0) {
            double k = 1 - 0.1 * carrierTier;
            gp *= k;
            scale(shoot, k);
        }
    }
    if (skaterRule) {
        int w = 0;
        for (int pos = 0; pos < 5; ++pos) {
            int slot = slotAt(opp, pos);
            if (slot == kNoSlot) continue;
            int tier = tierOf(o, slot, skaterSteps);
            if (tier > 0) w = tier * (pos <= 2 ? 1 : 3);
        }
        gp *= 1 + 0.02 * w;
        scale(shoot, 1 + 0.02 * w);
    }

    // Step 8: shot rates steered toward the real season.
    const bool steered = !probe && !playoff && !exhibition && shotSteering();
    if (carrierTier == 0 && shoot > 50 && shoot < 900 && steered && goalieTier == 0 &&
        rng_.randAtMost(5, t.team.TeamFor[0].GP)) {
        for (int pos = 0; pos < 5; ++pos) {
            int slot = slotAt(side, pos);
            if (slot == kNoSlot) continue;
            const PlayerRecord& p = t.player(slot);
            const double S = t.rate(RateSet::Real, slot).ShotsPer60;
            if (!rng_.overRand(statLine(p, StatLineIndex::Real).Sog, 100, 50)) continue;
            if (!rng_.overRand(statLine(p, StatLineIndex::Replay).Sog, 3, 3)) continue;
            if (rng_.under(S, 2, 2)) continue;
            double m = t.rate(RateSet::Replay, slot).ShotsPer60 / S;
            int d = 40;  // a ratio near 1 gets the full nudge up
            if (!rng_.under(m, 1.05, 0.05))
                d = -40;
            else if (!rng_.under(m, 1.01, 0.05))
                d = -20;
            else if (!rng_.over(m, 0.99, -0.05))
                d = 20;
            else if (rng_.under(m, 0.95, -0.05))
                d = 0;
            shoot += d;
            c.EntryChance += d;
        }
        shoot = std::min(shoot, 950);
    }

    if (shoot > 50 && shoot <= 950) {
        // Step 9: the strength of the men on the ice, which only a shot
        // chance in this band is weighed by.
        // Only the offense of the side with the puck and the defense of the
        // other are weighed: those two are taken as each unit is rated.
        double unitOffense = 0, unitDefense = 0;
        for (int s : {kVisitor, kHome}) {
            UnitSituation sit;
            sit.skaters = s_.Skaters[at(s)];
            sit.opponentSkaters = s_.Skaters[at(other(s))];
            sit.extraAttacker = s_.GoaliePulled[at(s)];
            sit.insideDefense = (z == Zone::OffenseZone || z == Zone::OffenseShooter) && s != side;
            const UnitRatings& unit = unitRatings(s, true, sit);
            if (s == side)
                unitOffense = unit.onIceOffense;
            else
                unitDefense = unit.onIceDefense;
        }
        // A unit with no ratings at all (players never rated) plays as an
        // average one rather than as one that can't shoot.
        const double onOff = unitOffense > 0 ? unitOffense : 5;
        const double onDef = unitDefense > 0 ? unitDefense : 5;
        if (stronger) scale(shoot, 1.3);
        scale(shoot, 1 + (25 - onDef * 5) * (o.team.TeamYear <= 1970 ? 1.1 : 1) * 0.035);
        int d1 = slotAt(side, 3), d2 = slotAt(side, 4);
        bool realDefense = d1 != kNoSlot && d2 != kNoSlot && hasFlag(t.player(d1), Flag::Defense) &&
                           hasFlag(t.player(d2), Flag::Defense);
        if (!realDefense) scale(shoot, 0.95);
        scale(shoot, 1 + (onOff * 5 - 25) * 0.04);
        if (onOff >= 6) add(shoot, (onOff - 6) * 10);
        if (onOff < 4 && shoot > 50) add(shoot, -(4 - onOff) * 10);
        if (ratedPlay) add(shoot, (s_.PlayRating - 5.8) * 20);
        if (offense) {
            // The defenders' aggressiveness as they play it now, on the kill
            // or at even strength.
            const LiveStrategy& live = s_.coach.live[at(opp)];
            const int a =
                std::clamp(strength(opp) < strength(side) ? live.pkDzAggressiveness : live.dzAggressiveness, 1, 5);
            shoot += (3 - a) * 50;
            gp -= (3 - a) * 0.005;
        }
        scale(shoot, 0.995);
        if (trailingLate()) {
            for (int tm = 120; tm >= 40; tm -= 10)
                if (s_.Clock <= tm) scale(shoot, 1.02);
        }
        shoot = std::min(shoot, 950);
    }
    shoot = std::clamp(shoot, 0, 1000);
    if (s_.Period > periods_ && !probe) scale(shoot, 0.8);

    // Step 11: a man far off his real shot pace, picked at random.
    if (carrierTier == 0 && !playoff && !exhibition && !probe && shoot > 50 && shoot < 800 && shotSteering() &&
        s_.Skaters[at(side)] > 3) {
        int ps = kVisitor, slot = kNoSlot;
        for (int tries = 0; tries < 100 && slot == kNoSlot; ++tries) {
            ps = rng_.rand(2) - 1;
            slot = slotAt(ps, rng_.rand(5) - 1);
        }
        if (slot != kNoSlot) {
            const PlayerRecord& p = sideOf(ps).player(slot);
            const StatLine& real = statLine(p, StatLineIndex::Real);
            const StatLine& replay = statLine(p, StatLineIndex::Replay);
            if (real.GP > 3 && replay.GP > 3 && real.Sog > 10 && replay.Sog > 10) {
                double m = (static_cast<double>(replay.Sog) / replay.GP) / (static_cast<double>(real.Sog) / real.GP);
                double k = 1;
                if (!rng_.under(m, 1.05, 0.15))
                    k = 0.7;
                else if (!rng_.under(m, 1.01, 0.07))
                    k = 0.9;
                else if (!rng_.over(m, 0.95, -0.15))
                    k = 1.3;
                else if (!rng_.over(m, 0.99, -0.07))
                    k = 1.1;
                scale(shoot, k);
                scale(c.EntryChance, k);
            }
        }
    }
    // Step 12: the last seconds of a period.
    if (!probe && shoot > 50 && !rng_.overRand(s_.Clock, 3, 3)) {
        shoot = 1000;
        gp *= 0.5;
    }
    // Step 13: a man behind the net or on the screen doesn't shoot.
    if (offense) {
        if (cpos != kNoPos && f.Spot[at(cpos)] != kSpotNone && f.Spot[at(cpos)] <= kSpotScreen) shoot = 0;
        c.ClearChance = 0;
    }
    // Step 14: the forecheck on a breakout.
    if (z == Zone::DefenseZone) {
        c.OffsideChance = rules.TwoLinePasscheck == 1 ? 45 : 68;
        if (call == Call::Clear) c.OffsideChance = 0;
        add(shoot, -(L - 1.5) * 50);
        add(c.EntryChance, -(L - 1.5) * 50);
        gp += (L - 1.5) * 0.003;
    }
    // Step 15: an entry takes the place of a shot.
    if (shorthanded) c.EntryChance = 0;
    c.EntryChance = std::clamp(c.EntryChance, 0, 700);
    if (c.EntryChance > 0) scale(shoot, (1000 - c.EntryChance - penaltySum(c)) / 1000.0);

    // Step 16: how a turnover goes.
    double D = 0.12, N = z == Zone::NeutralZone ? 0.55 * 0.35 : 0.55;
    double R = rng_.over(f.EraShotsPerGame, 30, 2) ? 0.05 : 0.04;
    if (ratedPlay && s_.PlayRating > 0) {
        double k = std::min(5 / s_.PlayRating, 2.0);
        D *= k;
        N *= k;
        R *= k;
    }
    if (stronger) {
        D *= 0.4;
        N *= 0.4;
    }
    if (z == Zone::DefenseZone) {
        D = (L / 1.5) * D * 0.8 + D * 0.2;
        N = (L / 1.5) * N * 0.8 + N * 0.2;
    }
    switch (call) {
        case Call::Penetrate:
            D = N = 0;
            R = 0.2;
            break;
        case Call::Clear:
            D = 1;
            N = R = 0;
            break;
        case Call::Pass:
        case Call::PlayTo:
        case Call::PlayShoot:
        case Call::Shoot:
            D = N = 0;
            break;
        case Call::PassSafe:
            D = N = 0;
            R *= 0.2;
            break;
        case Call::Safe:
        case Call::DumpChase:
            D *= 0.2;
            N *= 0.2;
            R *= 0.2;
            if (chanceEdge == -1) D *= 1.5, N *= 1.5;
            if (chanceEdge == -2) D *= 2, N *= 2;
            break;
        case Call::Aggressive:
        case Call::SkatePass:
            D *= 2;
            R *= 4;
            if (chanceEdge == -1) D = 0.85, N = 0.15;
            if (chanceEdge == -2) D = 0.95, N = 0.05;
            break;
        case Call::Rush:
            D = N = 0;
            break;
        default:
            break;
    }
    if (z == Zone::OffenseZone || z == Zone::OffenseShooter) D = N = 0;
    if (stronger) R = 0;
    if (z == Zone::NeutralZone) D = 0;
    if (z == Zone::Rush && f.rush == RushType::OneZero) c.ClearChance = c.OffsideChance = 0;
    if (call == Call::Clear) R = 0;
    if (L == 0) {
        R *= 0.05;
        N *= 0.5;
    } else if (L == 1) {
        R *= 0.8;
        N *= 0.9;
    } else {
        R *= 1.05;
        N *= 1.03;
    }
    R *= 0.8;
    const int liveSystem = s_.coach.live[at(side)].offenseSystem;
    if (liveSystem == 1 || liveSystem == 2) D *= 1.2, N *= 1.2, R *= 1.2;
    if (liveSystem == 3) D *= 0.8, N *= 0.8, R *= 0.8;
    if (D + N + R > 1) {
        double sum = D + N + R;
        D /= sum;
        N /= sum;
        R /= sum;
    }
    c.TurnoverDefenseShare = D;
    c.TurnoverNeutralShare = N;
    c.TurnoverRushShare = R;

    // Step 17: home ice.
    if (rules.AllGamesNeutralIceCheck != 1 && shoot > 50 && shoot < 950) {
        if (side == kHome) {
            scale(shoot, 1 / 0.95);
            gp /= 0.95;
        } else {
            scale(shoot, 0.95);
            gp *= 0.95;
        }
    }
    // Step 18: tired legs.
    for (int s : {side, opp}) {
        for (int pos = 0; pos < positionsInPlay(s); ++pos) {
            int slot = slotAt(s, pos);
            if (slot == kNoSlot || (pos == 5 && !s_.GoaliePulled[at(s)])) continue;
            int e = s_.Energy[at(s)][at(slot)];
            if (e > 79) continue;
            if (s == side) {
                scale(shoot, 0.9);
                scale(shoot, 1 - (79 - e) * 0.007);
            } else {
                scale(shoot, 1.1);
                scale(shoot, 1 + (75 - e) * 0.007);
            }
        }
    }
    // Step 19.
    if (isCall(call, {Call::PlayShoot, Call::Shoot})) shoot = 1000;
    if (playoff) scale(shoot, 1.05);
    if (lastPeriod && s_.Period == periods_ && lead == 0 && !probe && shoot > 10 && shoot < 900 &&
        rng_.underRand(s_.Clock, 60, 60))
        scale(shoot, 1.1);

    // Step 20: how many shots reach the net, how many of the rest are missed.
    {
        double onNet = 0.53;
        int y = cp ? cp->PlayerYear : 0;
        if (cp && y <= 2003) onNet += std::min(0.003 * (2003 - y), 0.15);
        int gy = goalieYearOnIce(side);
        if (gy == 0) gy = goalieYearOnIce(opp);
        if (gy == 0) gy = 2010;
        EraFigures e = eraFiguresOf(gy, side);
        if (rng_.over(e.shotsPerTeam() + e.pimPerGame / 2.5 / 2, 35, 5)) onNet += 0.06;
        double miss = 0.51;
        int spot = cpos == kNoPos ? kSpotNone : f.Spot[at(cpos)];
        if (spot == kSpotIn) miss = 0.408;
        if (spot == kSpotOut) miss = 0.663;
        if (chanceEdge >= 2) onNet *= 0.8, miss *= 0.7;
        if (chanceEdge == 1) onNet *= 0.9, miss *= 0.8;
        if (chanceEdge == 0) onNet *= 1.1;
        if (chanceEdge <= -1) onNet *= 1.2, miss *= 1.1;
        if (spot == kSpotIn) onNet *= 1.1;
        if (spot == kSpotOut) onNet *= 0.9;
        if (z == Zone::Rush) {
            onNet *= 1.3;
            miss *= 1.5;
            if (f.rush == RushType::OneZero) {
                onNet *= 1.3;
                miss = 1;
            }
        }
        c.OnNetShare = onNet;
        c.MissShare = miss;
    }
    // Step 21: a draw won in the other end is a shot from the offensive zone.
    if (s_.OffensiveDraw && s_.entryFromFaceoff) {
        scale(shoot, 1.1);
        if (moreSkaters) scale(shoot, 1.2);
        scalePenalties(c, 0.2);
        c.TurnoverDefenseShare = c.TurnoverNeutralShare = 0;
        shoot += c.ClearChance + c.OffsideChance;
        c.ClearChance = c.OffsideChance = 0;
    }
    c.OnNetShare = std::clamp(c.OnNetShare, 0.25, 0.95);
    c.MissShare = std::min(c.MissShare, 1.0);
    // Step 23: the era.
    if (!probe) {
        double k = eraMultiplier(f.EraPenaltyFactor);
        scale(shoot, k);
        scalePenalties(c, k);
    }
    // Step 24: a man who never scores.
    if (!emptyNetOpp && carrier != kNoSlot && t.rates[at(carrier)].ShootingPct < 0.01 && gp > 0.02) gp = 0.015;

    // Step 25: the bounce of the puck.
    if (rng_.rand(4) == 1 || call == Call::Penetrate) {
        if (call == Call::Penetrate && !probe && rng_.rand(3) == 1) {
            gp += 0.2 * rng_.rnd() - 0.2 * rng_.rnd();
            if (rng_.rand(10) == 1)
                gp += 0.27 * rng_.rnd();
            else
                gp -= 0.03;
            gp = std::max(gp, 0.05);
        }
        if (rng_.over(gp, 0.06, 0.09) && rng_.rand(10) == 1) gp += 0.2 * rng_.rnd();
        const double g = gp;
        if (rng_.over(g, 0.11, 0.07)) {
            gp += 0.09 * rng_.rnd() - 0.09 * rng_.rnd();
            if (rng_.rand(5) == 1) gp += rng_.rand(2) == 1 ? 0.1 * rng_.rnd() : -0.1 * rng_.rnd();
            gp = std::max(gp, 0.04);
        } else if (rng_.over(g, 0.07, 0.05)) {
            gp += 0.03 * rng_.rnd() - 0.03 * rng_.rnd();
            if (rng_.rand(5) == 1) gp += rng_.rand(2) == 1 ? 0.05 * rng_.rnd() : -0.57 * rng_.rnd();
        } else if (!rng_.under(g, 0.02, 0.03)) {
            gp += 0.02 * rng_.rnd() - 0.02 * rng_.rnd();
            if (rng_.rand(5) == 1) gp += rng_.rand(2) == 1 ? 0.04 * rng_.rnd() : -0.04 * rng_.rnd();
        } else {
            gp += 0.01 * rng_.rnd() - 0.01 * rng_.rnd();
        }
    }
    // Step 26: the computer coach's small edge.
    if (coach(side) == CoachKind::Computer) {
        scale(shoot, 1.03);
        gp *= 1.01;
    }
    if (coach(opp) == CoachKind::Computer) {
        scale(shoot, 1 / 1.03);
        gp /= 1.01;
    }
    // Step 27: a shadowed man on the ice draws his shadow away from the
    // rest, which leaves the others more room, unless the shadow's side
    // is a man up.
    if (s_.Skaters[at(opp)] <= s_.Skaters[at(side)]) {
        const GamePlanRecord& plan = o.plan;
        for (std::size_t pair = 0; pair < plan.ShadowTarget.size(); ++pair) {
            int shadowed = plan.ShadowTarget[pair][0] - 1;
            if (shadowed >= 0 && shadowOf(opp, shadowed) != kNoSlot) {
                scale(shoot, 1.03);
                gp *= 1.03;
            }
        }
    }
    // Step 28: a goalie without his stick, tired shooters and defenders.
    if (oppGoalie != kNoSlot && stickBroken(opp, oppGoalie)) gp += 0.03;
    if (carrier != kNoSlot) {
        int e = s_.Energy[at(side)][at(carrier)];
        if (e <= 79) gp *= 1 - (79 - e) * 0.007;
    }
    for (int pos = 3; pos <= 4; ++pos) {
        int slot = slotAt(opp, pos);
        if (slot == kNoSlot) continue;
        int e = s_.Energy[at(opp)][at(slot)];
        if (e <= 79) gp *= 1 + (79 - e) * 0.007;
    }
    // Step 29: power plays of the era.
    if (moreSkaters && shoot < 850 && c.EntryChance < 850 && z != Zone::Rush) {
        int own = slotAt(side, 5);
        if (!emptyNetOwn && own != kNoSlot) {
            const PlayerRecord& g = t.player(own);
            if (!manFacts_[at(side)][at(own)].college && g.PlayerYear >= 1931 && g.PlayerYear <= 2099) {
                double k = powerPlayEraFactor(eraFiguresOf(g.PlayerYear, side).powerPlayPct);
                scale(shoot, k);
                scale(c.EntryChance, k);
                gp *= (k + 1) / 2;
                scale(shoot, f.PowerPlayCalibration);
                scale(c.EntryChance, f.PowerPlayCalibration);
            }
        }
    }
    // Step 30: a human coach plays against a handicap.
    if (coach(side) == CoachKind::Human && !probe && s_.AutoPlayTo == AutoStop::None) {
        double k = 0.95;
        int shotsThisPeriod = s_.shotsByPeriod.empty() ? 0 : s_.shotsByPeriod.back()[at(side)];
        if (!rng_.underRand(shotsThisPeriod, 10, 10)) k = 0.9025;
        if (!rng_.underRand(shotsThisPeriod, 8, 8) && rng_.overRand(s_.Clock, 600, 600)) k *= 0.97;
        gp *= k;
        scale(shoot, k);
        scale(c.EntryChance, k);
    }
    // Step 31: open ice.
    if (s_.Skaters[0] == 4 && s_.Skaters[1] == 4) {
        scale(c.EntryChance, 1.2);
        scale(shoot, 1.4);
    } else if (s_.Skaters[0] == 3 && s_.Skaters[1] == 3) {
        scale(c.EntryChance, 1.4);
        scale(shoot, 1.7);
    }
    // Step 32: the shooter's mood.
    const int mood = shooterMood();
    c.OnNetShare *= 1 + (mood - 5) * 0.1;
    gp *= 1 + (mood - 5) * 0.1;
    // Step 33: shooting percentages steered toward the real season.
    // The same tests as the shot-rate steering: a tired man or a tired goalie
    // plays by his tiredness, not by his record.
    if (steered && carrierTier == 0 && goalieTier == 0 && carrier != kNoSlot && gp > 0.02 &&
        rng_.randAtMost(5, t.team.TeamFor[0].GP)) {
        const StatLine& real = statLine(*cp, StatLineIndex::Real);
        const StatLine& replay = statLine(*cp, StatLineIndex::Replay);
        if (replay.Sog > 3 && replay.Goals >= 3 && rng_.overRand(real.Sog, 10, 20) &&
            !rng_.underRand(real.Goals, 5, 3)) {
            double a = static_cast<double>(real.Goals) / real.Sog * t.rates[at(carrier)].ShotStyleFactor;
            double b = static_cast<double>(replay.Goals) / replay.Sog;
            double m = a > 0 ? b / a : 1;
            if (!rng_.under(m, 1, 0.03))
                gp = gp * 0.8 - 0.01;
            else if (!rng_.over(m, 1, -0.03))
                gp = gp * 1.2 + 0.01;
            if (coach(0) == CoachKind::Computer && coach(1) == CoachKind::Computer) {
                if (!rng_.under(m, 1, 0.03))
                    gp = gp * 0.9 - 0.01;
                else if (!rng_.over(m, 1, -0.03))
                    gp = gp * 1.1 + 0.01;
                if (rng_.over(m, 1.01, 0.2))
                    gp *= 0.8;
                else if (rng_.under(m, 0.99, -0.2))
                    gp *= 1.2;
            }
        }
    }
    gp = std::max(gp, 0.005);

    // Step 35: the endings of a shot.
    c.GoalChance = roundToInt(shoot * c.OnNetShare * gp);
    c.SaveChance = roundToInt((c.OnNetShare - gp) * shoot);
    c.MissChance = roundToInt((shoot - c.GoalChance - c.SaveChance) * c.MissShare);
    if (emptyNetOpp) {
        c.MissChance += c.SaveChance;
        c.SaveChance = 0;
    }
    c.BlockChance = shoot - c.GoalChance - c.SaveChance - c.MissChance;
    if (call == Call::Penetrate || c.ShotClass == kShotInside) {
        int x = c.MissChance + c.BlockChance;
        add(c.SaveChance, 0.75 * x);
        c.MissChance = scaled(x, 0.25);
        c.BlockChance = 0;
    }
    if (emptyNetOpp) c.MissChance = c.SaveChance = 0;

    // Step 36.
    if (stronger) scale(c.ClearChance, 0.05);
    if (shoot >= 1000) {
        shoot = 1000;
        c.PassChance = c.ClearChance = c.OffsideChance = 0;
        zeroPenalties(c);
    }
    auto clearOnly = [&](int clear) {
        c.ClearChance = clear;
        shoot = c.EntryChance = c.PassChance = 0;
        zeroPenalties(c);
        c.GoalChance = c.SaveChance = c.BlockChance = c.MissChance = 0;
    };
    if (z == Zone::Rush && call == Call::Clear) clearOnly(1000);
    if (call == Call::Clear && c.ClearChance < 950) clearOnly(950);
    if (emptyNetOpp) {
        shoot += c.EntryChance;
        c.EntryChance = 0;
    }
    // Step 37: blocked shots by era and sticks.
    scale(c.BlockChance, 1.3);
    if (cp && cp->PlayerYear <= 2003) scale(c.BlockChance, std::max(0.8 - 0.003 * (2003 - cp->PlayerYear), 0.6));
    for (int pos = 0; pos < 5; ++pos)
        if (stickBroken(opp, slotAt(opp, pos))) scale(c.BlockChance, 0.8);
    if (shoot == 1000) c.ClearChance = 0;
    if (z == Zone::Rush && f.rush == RushType::OneZero) shoot = std::max(shoot, 950);
    if (probe) return;

    // Last changes before the draw.
    if (s_.Skaters[at(opp)] == 3) c.PenaltyOppChance = 0;
    if (s_.Skaters[at(side)] == 3) c.PenaltyOwnChance = 0;
    if (s_.LastPlayResult == Result::Penalty) {
        zeroPenalties(c);
        c.FightChance = 0;
    }
    if (lastPeriod && s_.Clock <= 120 && std::abs(lead) <= 2) scale(c.PassChance, 1.5);
    if (s_.GoaliePulled[at(opp)]) scale(c.BlockChance, 0.5);
    if (emptyNetOpp && ownHalf) {
        if (call == Call::Shoot) {
            shoot = z == Zone::NeutralZone ? 900 : 800;
            c.GoalChance = roundToInt(shoot * gp);
            if (z == Zone::DefenseZone) scale(c.GoalChance, 0.4);
            c.BlockChance = roundToInt((shoot - c.GoalChance) * 0.2);
            c.MissChance = shoot - c.GoalChance - c.BlockChance;
            c.SaveChance = 0;
            c.EntryChance = c.PassChance = c.ClearChance = 0;
            zeroPenalties(c);
        } else if (call == Call::Clear) {
            clearOnly(1000);
            c.OffsideChance = c.FightChance = 0;
        }
    }
    if (call == Call::SkatePass) c.ClearChance = 0;
    for (int* v : {&shoot, &c.EntryChance, &c.GoalChance, &c.SaveChance, &c.BlockChance, &c.MissChance})
        *v = std::max(*v, 0);
    if (coach(side) == CoachKind::Human && rules.NoComputerPlayCallsCheck == 1 && coach(opp) == CoachKind::Computer &&
        s_.Skaters[0] == s_.Skaters[1]) {
        int shotsThisPeriod = s_.shotsByPeriod.empty() ? 0 : s_.shotsByPeriod.back()[at(side)];
        double k = rng_.overRand(shotsThisPeriod, 11, 4) ? 0.7 : 1;
        gp *= k;
        scale(shoot, k);
        scale(c.EntryChance, k);
    }
    if (s_.Period > periods_ && s_.Skaters[0] != s_.Skaters[1]) {
        zeroPenalties(c);
        c.FightChance = 0;
    }
    if (s_.Period == 1 && rng_.overRand(s_.Clock, 900, 120)) scalePenalties(c, 0.3);
    if (s_.Clock < 20) {
        zeroPenalties(c);
        c.FightChance = 0;
    }
    const bool minors = rules.Minorcheck == 1, majors = rules.Majorcheck == 1;
    if (!minors && !majors) {
        zeroPenalties(c);
    } else if (!minors) {
        scale(c.PenaltyOppChance, 0.1);
        scale(c.PenaltyOwnChance, 0.1);
    } else if (!majors) {
        scale(c.PenaltyOppChance, 0.9);
        scale(c.PenaltyOwnChance, 0.9);
    }
    if (!(minors && majors)) c.PenaltyBothChance = 0;
}

}  // namespace tallyrink
