#include "engine/stand_in.h"

#include <algorithm>
#include <cmath>

#include "engine/game.h"

namespace tallyrink {

namespace {

// Base rows by zone, per mille. A breakout from the own end either gains
// the far zone in one play or is lost or cleared; most shots come from the
// offensive zone, the set-up shooter and the rush.
PlayChances baseRow(Zone z) {
    PlayChances c;
    c.PenaltyOppChance = 8;
    c.PenaltyOwnChance = 6;
    c.PenaltyBothChance = 1;
    c.FightChance = 1;
    switch (z) {
        case Zone::DefenseZone:
            c.EntryChance = 430;
            c.ClearChance = 130;
            c.OffsideChance = 35;
            c.MissChance = 2;
            c.TurnoverDefenseShare = .3;
            c.TurnoverNeutralShare = .35;
            c.TurnoverRushShare = .1;
            break;
        case Zone::NeutralZone:
            c.EntryChance = 520;
            c.ClearChance = 70;
            c.OffsideChance = 55;
            c.TurnoverDefenseShare = .25;
            c.TurnoverNeutralShare = .35;
            c.TurnoverRushShare = .15;
            break;
        case Zone::OffenseShooter:
            c.PassChance = 100;
            c.GoalChance = 42;
            c.SaveChance = 390;
            c.BlockChance = 90;
            c.MissChance = 105;
            c.ClearChance = 40;
            break;
        case Zone::Rush:
            c.PassChance = 120;
            c.GoalChance = 54;
            c.SaveChance = 400;
            c.BlockChance = 35;
            c.MissChance = 105;
            c.ClearChance = 30;
            break;
        default:  // the offensive zone, and a draw won in the other end
            c.PassChance = 220;
            c.GoalChance = 24;
            c.SaveChance = 255;
            c.BlockChance = 95;
            c.MissChance = 95;
            c.ClearChance = 60;
            break;
    }
    return c;
}

int scaled(int chance, double factor) { return static_cast<int>(roundHalfEven(chance * factor)); }

void scaleShots(PlayChances& c, double shots, double goals) {
    c.GoalChance = scaled(c.GoalChance, shots * goals);
    c.SaveChance = scaled(c.SaveChance, shots);
    c.BlockChance = scaled(c.BlockChance, shots);
    c.MissChance = scaled(c.MissChance, shots);
}

void byCall(PlayChances& c, Call call) {
    switch (call) {
        case Call::Safe:
            c.EntryChance = scaled(c.EntryChance, .85);
            c.ClearChance = scaled(c.ClearChance, 1.3);
            break;
        case Call::Aggressive:
        case Call::DumpChase:
            c.EntryChance = scaled(c.EntryChance, 1.12);
            break;
        case Call::Clear:
            c.EntryChance = scaled(c.EntryChance, .3);
            c.ClearChance = 600;
            break;
        case Call::Shoot:
        case Call::PlayShoot:
        case Call::Rush:
            scaleShots(c, 1.35, 1.0);
            c.PassChance = scaled(c.PassChance, .5);
            break;
        case Call::Pass:
        case Call::PassSafe:
        case Call::PlayTo:
            scaleShots(c, .6, 1.0);
            c.PassChance = scaled(c.PassChance, 1.4);
            break;
        case Call::Penetrate:
            scaleShots(c, 1.1, 1.4);
            break;
        default:
            break;
    }
}

}  // namespace

PlayChances StandInChances(const Game& game) {
    const GameState& s = game.state();
    Zone z = s.PlayZone;
    if (s.OffensiveDraw && s.entryFromFaceoff) z = Zone::OffenseZone;
    PlayChances c = baseRow(z);
    byCall(c, s.PlayCall);

    int edge = game.strengthEdge();
    if (edge > 0) {
        scaleShots(c, 1.2, 1.45);
        c.EntryChance = scaled(c.EntryChance, 1.2);
    } else if (edge < 0) {
        scaleShots(c, .55, .8);
        c.EntryChance = scaled(c.EntryChance, .6);
        c.ClearChance = scaled(c.ClearChance, 1.8);
    }
    // An empty net is shot at from anywhere and seldom missed.
    if (s.GoaliePulled[static_cast<std::size_t>(s.OtherTeam())]) {
        if (z == Zone::DefenseZone) c.GoalChance += 60;
        if (z == Zone::NeutralZone) c.GoalChance += 120;
        c.GoalChance += c.SaveChance / 2;
        c.SaveChance /= 2;
    }
    // A side already two men short isn't called for more.
    if (game.strength(s.OtherTeam()) <= 3) c.PenaltyOppChance = 0;
    if (game.strength(s.PuckTeam) <= 3) c.PenaltyOwnChance = 0;

    // Keep the turnover's share of the rest from going below zero.
    int total = c.banded();
    if (total > 950) {
        double f = 950.0 / total;
        c.EntryChance = scaled(c.EntryChance, f);
        c.PassChance = scaled(c.PassChance, f);
        scaleShots(c, f, 1.0);
        c.ClearChance = scaled(c.ClearChance, f);
    }
    return c;
}

}  // namespace tallyrink
