#include "presentation/call_menu.h"

#include <fmt/format.h>

#include "engine/game.h"

namespace tallyrink {

namespace {

bool emptyNetAhead(const Game& game, int side) {
    return game.state().GoaliePulled[static_cast<std::size_t>(side == kVisitor ? kHome : kVisitor)];
}

}  // namespace

CallBox callBoxOf(const Game& game, int side) {
    const GameState& s = game.state();
    Zone z = s.PlayZone;
    if (z == Zone::Shootout) return CallBox::Shootout;
    if (z == Zone::PenaltyShot) return CallBox::PenaltyShot;
    if (isFaceoff(z)) return CallBox::Faceoff;
    if (z == Zone::ContinueBox) return CallBox::ContinueBox;
    if (z == Zone::OffenseShooter) return CallBox::Shooter;
    if (z == Zone::OffenseZone) return CallBox::OffenseZone;
    if (z == Zone::Rush) return CallBox::Rush;
    if (emptyNetAhead(game, side)) return CallBox::EmptyNet;
    int other = side == kVisitor ? kHome : kVisitor;
    if (game.strength(side) > game.strength(other)) return CallBox::PowerPlay;
    if (game.strength(side) < game.strength(other)) return CallBox::ShortHanded;
    return CallBox::Balanced;
}

std::vector<CallChoice> callChoices(const Game& game, int side) {
    const GameState& s = game.state();
    switch (callBoxOf(game, side)) {
        case CallBox::Shootout:
        case CallBox::PenaltyShot:
            return {{'1', "1-Shoot", Call::Shoot}};
        case CallBox::ContinueBox:
            return {};
        case CallBox::Faceoff:
            if (faceoffSpot(s.PlayZone) == FaceoffSpot::Defense)
                return {{'1', "1-Normal", Call::Balanced},
                        {'2', "2-Draw Back", Call::DrawBack},
                        {'3', "3-Draw Forward", Call::DrawForward}};
            return {{'1', "1-Balanced", Call::Balanced},
                    {'2', "2-Aggressive", Call::Aggressive},
                    {'3', "3-Safe", Call::Safe},
                    {'4', "4-Clear", Call::Clear}};
        case CallBox::Shooter:
            return {{'1', "1-Shoot", Call::Shoot},
                    {'2', "2-Penetrate", Call::Penetrate},
                    {'3', "3-Pass", Call::Pass},
                    {'4', "4-Clear", Call::PassSafe}};
        case CallBox::OffenseZone: {
            std::vector<CallChoice> out;
            char key = '1';
            const FindState& find = s.find;
            const SideTables& team = game.session().side(side);
            for (int k = 0; k < find.openCount && key <= '6'; ++k) {
                const OpenMan& m = find.openMen[static_cast<std::size_t>(k)];
                if (m.slot == kNoSlot) continue;
                // The man with the puck now, which may have changed since the list was drawn.
                bool puck = m.slot == find.Carrier;
                std::string where = puck ? std::string("Puck") : std::string(spotText(m.spot));
                out.push_back(
                    {key,
                     fmt::format("{}-{} ({}, shot {}, pass {})", key,
                                 team.ShortNameOf[static_cast<std::size_t>(m.slot)], where, m.shotGrade, m.passGrade),
                     Call::PlayTo, m.pos});
                ++key;
            }
            out.push_back({'7', "7-Shoot", Call::Shoot});
            out.push_back({'8', "8-Pass", Call::Pass});
            out.push_back({'9', "9-Dump", Call::Clear});
            out.push_back({'0', "0-Retreat", Call::Retreat});
            return out;
        }
        case CallBox::Rush:
            return {{'1', "1-Rush", Call::Rush}, {'2', "2-Setup", Call::Pass}, {'3', "3-Clear", Call::Clear}};
        case CallBox::EmptyNet:
            return {{'1', "1-Shoot", Call::Shoot}, {'2', "2-Advance", Call::Advance}, {'3', "3-Clear", Call::Clear}};
        case CallBox::PowerPlay:
            return {{'1', "1-Power Play", Call::Aggressive}, {'2', "2-Continue Safe", Call::Safe}};
        case CallBox::ShortHanded:
            return {
                {'1', "1-Clear", Call::Clear}, {'2', "2-Safe", Call::Safe}, {'3', "3-Aggressive", Call::Aggressive}};
        case CallBox::Balanced:
            if (s.PlayZone == Zone::NeutralZone)
                return {{'1', "1-Balanced", Call::Balanced},
                        {'2', "2-SKATE OR PASS", Call::SkatePass},
                        {'3', "3-DUMP AND CHASE", Call::DumpChase},
                        {'4', "4-Clear", Call::Clear}};
            return {{'1', "1-Balanced", Call::Balanced},
                    {'2', "2-Aggressive", Call::Aggressive},
                    {'3', "3-Safe", Call::Safe},
                    {'4', "4-Clear", Call::Clear}};
    }
    return {};
}

std::string callBoxCaption(const Game& game) {
    const GameState& s = game.state();
    std::string team = game.session().side(s.PuckTeam).team.City.str();
    switch (s.PlayZone) {
        case Zone::DefenseZone:
        case Zone::DefenseZoneRetreat:
            return team + " has the puck in their own zone.";
        case Zone::NeutralZone:
        case Zone::NeutralZoneRetreat:
            return team + " has the puck in the neutral zone.";
        case Zone::OffenseZone:
            return team + " has the puck in the offensive zone.";
        case Zone::OffenseShooter:
            return team + " now shooting.";
        case Zone::Rush:
            return team + " with a 2-1 rush.";
        case Zone::Shootout:
            return game.session().side(s.shootoutSide).team.City.str() + " shooting in the shootout.";
        default:
            return "Faceoff.";
    }
}

}  // namespace tallyrink
