// Every restart is a draw: who takes it, who wins it, the call the winner
// plays, and the flags by which the next step knows that it comes off a
// faceoff.

#include "engine/faceoffs.h"

#include <algorithm>
#include <cmath>

#include "engine/game.h"
#include "engine/live_stats.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

constexpr int kCenterPos = 1;  // OnIce positions, 0-based
constexpr int kLeftWingPos = 0;
constexpr int kRightWingPos = 2;

}  // namespace

std::array<double, 2> faceoffChances(const DrawSide& visitor, const DrawSide& home) {
    std::array<DrawSide, 2> sides{visitor, home};
    std::array<double, 2> c{};
    for (std::size_t i = 0; i < 2; ++i) c[i] = (sides[i].rating - 5) * 2.7 + 50;
    for (std::size_t i = 0; i < 2; ++i) {
        std::size_t o = 1 - i;
        c[i] = 50 + c[i] - c[o];
        if (sides[i].skaters > sides[o].skaters) c[i] *= 1.05;
        if (sides[i].skaters < sides[o].skaters) c[i] *= .95;
        if (sides[i].human && !sides[o].human) c[i] *= 1.1;
    }
    return c;
}

int faceoffWinner(const std::array<double, 2>& c, Random& rng) {
    int total = roundToInt(c[0] + c[1]);
    return rng.rand(total) <= c[0] ? 0 : 1;
}

int Game::faceoffRating(int side, int pos) const {
    int slot = s_.onIce[at(side)].slot[at(pos)];
    return slot == kNoSlot ? -1 : int{sideOf(side).player(slot).RatingFaceoff};
}

// The centre takes the draw unless manpower leaves a wing to take it, or
// the coach lets a clearly better wing step in.
void Game::PickFaceoffMen() {
    for (int side : {kVisitor, kHome}) {
        const OnIce& ice = s_.onIce[at(side)];
        int man = kCenterPos;
        bool shortOfCentre = s_.Skaters[at(side)] == 4 || (s_.Skaters[0] == 3 && s_.Skaters[1] == 3);
        if (shortOfCentre || ice.slot[kCenterPos] == kNoSlot)
            man = faceoffRating(side, kRightWingPos) > faceoffRating(side, kLeftWingPos) ? kRightWingPos : kLeftWingPos;
        if (ice.slot[at(man)] == kNoSlot) {
            for (int pos = 0; pos < 5; ++pos)
                if (ice.slot[at(pos)] != kNoSlot) {
                    man = pos;
                    break;
                }
        }
        const SideTables& t = sideOf(side);
        int present = ice.slot[at(man)];
        if (present != kNoSlot && t.plan.FaceoffOption == 1 &&
            (rng_.rand(2) == 1 || t.player(present).RatingFaceoff >= 4 + rng_.rand(3))) {
            const PlayerRecord& p = t.player(present);
            bool centre = hasFlag(p, Flag::Center);
            int best = p.RatingFaceoff + (centre ? 1 : 0);
            bool pureCentre = centre && !hasFlag(p, Flag::LeftWing) && !hasFlag(p, Flag::RightWing);
            if (pureCentre && rng_.rand(10) <= 7) best += rng_.rand(3);
            for (int pos = 0; pos < 3; ++pos) {
                int slot = ice.slot[at(pos)];
                if (slot == kNoSlot) continue;
                const PlayerRecord& q = t.player(slot);
                if (q.NeverUseOnFaceoffs == 1 && slot != present) continue;
                int score = q.RatingFaceoff + (hasFlag(q, Flag::Center) ? 1 : 0);
                if (score > best) {
                    man = pos;
                    best = score + rng_.rand(3);
                }
            }
        }
        s_.events.FaceoffMan[at(side)] = man;
    }
}

void Game::FaceoffStep() {
    EventState& ev = s_.events;
    Result ledHere = s_.LastPlayResult;
    s_.LastPlayResult = Result::None;
    s_.find.Carrier = kNoSlot;
    s_.find.CarrierPos = kNoPos;
    s_.find.Passer1 = kNoSlot;
    s_.find.Passer2 = kNoSlot;
    s_.find.DrawForcedEntry = false;
    s_.pen.TensionFlag = false;
    if (s_.GameOverFlag) return;

    play_.startPlay();
    Zone z = s_.PlayZone;
    if (s_.Period == 1 && s_.Clock == periodSeconds() && !ev.openingTold) {
        ev.openingTold = true;
        DescribeOpening();
    }
    PickFaceoffMen();
    for (int side : {kVisitor, kHome}) {
        int g = s_.goalie[at(side)];
        if (s_.GoaliePulled[at(side)] || g == kNoSlot) continue;
        if (ev.goalieAnnounced[at(side)] != kNoSlot && ev.goalieAnnounced[at(side)] != g) DescribeNewGoalie(side);
        ev.goalieAnnounced[at(side)] = g;
    }

    s_.entryFromFaceoff = true;
    for (int side : {kVisitor, kHome}) ev.DrawMan[at(side)] = s_.onIce[at(side)].slot[at(ev.FaceoffMan[at(side)])];

    // Now and then the linesman throws a man out of the circle; a wing
    // takes his place.
    int thrown = rng_.rand(2) - 1;
    if (rng_.rand(100) <= 8 && s_.Skaters[0] == 5 && s_.Skaters[1] == 5 && ev.FaceoffMan[at(thrown)] == kCenterPos &&
        (rng_.rand(50) == 1 || faceoffSpot(z) != FaceoffSpot::Center)) {
        int out = ev.DrawMan[at(thrown)];
        int in =
            faceoffRating(thrown, kLeftWingPos) < faceoffRating(thrown, kRightWingPos) ? kRightWingPos : kLeftWingPos;
        int inSlot = s_.onIce[at(thrown)].slot[at(in)];
        if (out != kNoSlot && inSlot != kNoSlot) {
            ev.DrawMan[at(thrown)] = inSlot;
            DescribeCircleChange(thrown, out, inSlot);
        }
    }

    ev.AttackingSide = faceoffSpot(z) == FaceoffSpot::Defense ? other(faceoffEndSide(z)) : -1;
    ev.DrawCall = Call::Computer;
    std::array<DrawSide, 2> sides{};
    for (int side : {kVisitor, kHome}) {
        int slot = ev.DrawMan[at(side)];
        sides[at(side)].rating = slot == kNoSlot ? 0 : sideOf(side).player(slot).RatingFaceoff;
        sides[at(side)].skaters = strength(side);
        sides[at(side)].human = !computerDecides(side);
    }
    std::array<double, 2> c = faceoffChances(sides[0], sides[1]);
    if (ev.AttackingSide >= 0 && !computerDecides(ev.AttackingSide)) {
        Call call = s_.FaceoffCall[at(ev.AttackingSide)];
        c[at(ev.AttackingSide)] += call == Call::Balanced ? 1 : -4;
        ev.DrawCall = call;
    }
    for (double& v : c) v = std::max(v, 1.0);
    int winner = faceoffWinner(c, rng_);
    int loser = other(winner);
    s_.PuckTeam = winner;

    ++ev.faceoffsWon[at(winner)];
    int won = ev.DrawMan[at(winner)];
    int lost = ev.DrawMan[at(loser)];
    if (won != kNoSlot && lost != kNoSlot)
        creditFaceoff(session_.side(winner).player(won), session_.side(loser).player(lost));
    ev.lastDrawWinner[at(winner)] = won;
    ev.drawPossession = winner;

    tensionBeforeDraw();
    DescribeFaceoffResult(winner);

    s_.OffensiveDraw = faceoffSpot(z) == FaceoffSpot::Defense && faceoffEndSide(z) == loser;
    s_.PlayZone = Zone::DefenseZone;
    ev.puckToEmptyEnd = s_.GoaliePulled[at(loser)] && (ledHere == Result::Goal || ledHere == Result::Save ||
                                                       ledHere == Result::Miss || ledHere == Result::Block);

    s_.find.LastPasser = kNoSlot;
    FindCarrier();
    FindPassers();
    // Built whether or not anybody looks: the spots it draws are part of the
    // play, and a watched game must play as a headless one.
    HkSetPlayCallList();

    bool drawPlay = ev.DrawCall == Call::DrawForward || ev.DrawCall == Call::DrawBack;
    if (winner == ev.AttackingSide && drawPlay) {
        s_.find.DrawForcedEntry = true;
        s_.find.drawCall = ev.DrawCall;
        FindCarrier();
        FindPassers();
    }

    Call call = s_.FaceoffCall[at(winner)];
    bool usable = call != Call::None && call != Call::Computer && call != Call::DrawForward && call != Call::DrawBack;
    if (computerDecides(winner) || !usable) {
        call = drawPlay && winner == ev.AttackingSide && !computerDecides(winner) ? Call::Balanced
                                                                                  : ChooseOffensePlay(winner, false);
        s_.FaceoffCall[at(winner)] = call;
    }
    s_.PlayCall = call;
    s_.PlayTime = 0;

    bool inOtherEnd = s_.OffensiveDraw;
    if (inOtherEnd && strength(winner) < strength(loser) && s_.PlayCall == Call::Clear) s_.PlayCall = Call::Balanced;
    SetPlayRating();

    ev.ForcedEntry = false;
    if (inOtherEnd && s_.PlayCall != Call::Clear && strength(winner) >= strength(loser) && rng_.rand(100) <= 20)
        ev.ForcedEntry = true;
    if (!computerDecides(winner) && computerDecides(loser) && rng_.rand(10) == 1) ev.ForcedEntry = false;
}

// Penalties a side has taken in this game.
int Game::penaltiesTaken(int side) const { return s_.pen.penaltiesCalled[at(side)]; }

// Bad blood shows before a draw: both teams have taken their share of
// penalties, the game is close, and each side has a fighter on the ice.
void Game::tensionBeforeDraw() {
    if (s_.Period > 3) return;
    for (int side : {kVisitor, kHome}) {
        int need = s_.Period * (2 + rng_.rand(3)) + rng_.rand(5);
        if (penaltiesTaken(side) <= need) return;
    }
    if (!(rng_.rand(3) == 1 || s_.Clock == 1200)) return;
    if (rng_.overRand(std::abs(s_.Score[0] - s_.Score[1]), 0, 3) || rng_.underRand(s_.Period, 0, 3)) return;
    for (int side : {kVisitor, kHome}) {
        bool fighter = false;
        for (int pos = 0; pos < 5; ++pos) {
            int slot = s_.onIce[at(side)].slot[at(pos)];
            if (slot == kNoSlot) continue;
            if (!fighter && rng_.over(sideOf(side).rate(RateSet::Real, slot).FightsPer1000, 1, 3)) fighter = true;
        }
        if (!fighter) return;
    }
    s_.pen.TensionFlag = true;
    DescribeTension();
}

}  // namespace tallyrink
