#include "engine/stand_in.h"

#include "engine/game.h"

namespace tallyrink {

Call StandInComputerCall(const Game& game, int side, Random& rng) {
    const GameState& s = game.state();
    if (isFaceoff(s.PlayZone)) return Call::Balanced;
    int r = rng.rand(100);
    bool shortHanded = game.strength(side) < game.strength(side == 0 ? 1 : 0);
    int lead = s.Score[static_cast<std::size_t>(side)] - s.Score[static_cast<std::size_t>(side == 0 ? 1 : 0)];
    bool lateLead = s.Period >= game.periods() && s.Clock < 300 && lead > 0;
    bool emptyNet = s.GoaliePulled[static_cast<std::size_t>(side == 0 ? 1 : 0)];
    if (emptyNet && (s.PlayZone == Zone::DefenseZone || s.PlayZone == Zone::NeutralZone))
        return r <= 50 ? Call::Shoot : r <= 80 ? Call::Clear : Call::Advance;
    switch (s.PlayZone) {
        case Zone::DefenseZone:
            if (shortHanded || lateLead) return r <= 50 ? Call::Clear : Call::Safe;
            return r <= 60 ? Call::Balanced : r <= 75 ? Call::Safe : r <= 95 ? Call::Aggressive : Call::Clear;
        case Zone::NeutralZone:
            if (shortHanded || lateLead) return r <= 40 ? Call::Clear : Call::DumpChase;
            return r <= 45 ? Call::Balanced : r <= 60 ? Call::SkatePass : r <= 80 ? Call::DumpChase : Call::Aggressive;
        case Zone::OffenseZone:
            return r <= 35 ? Call::Shoot : r <= 70 ? Call::Pass : r <= 90 ? Call::PlayShoot : Call::PlayTo;
        case Zone::OffenseShooter:
            return r <= 60 ? Call::Shoot : r <= 90 ? Call::Pass : Call::Penetrate;
        case Zone::Rush:
            return r <= 70 ? Call::Rush : Call::Pass;
        default:
            return Call::Balanced;
    }
}

}  // namespace tallyrink
