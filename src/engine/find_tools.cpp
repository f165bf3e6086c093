#include "engine/find_tools.h"

#include "engine/game.h"

namespace tallyrink {

std::string_view spotText(int spot) {
    switch (spot) {
        case kSpotBehind:
            return "Behind";
        case kSpotScreen:
            return "Screen";
        case kSpotIn:
            return "In";
        case kSpotMid:
            return "Mid";
        case kSpotOut:
            return "Out";
        default:
            return "";
    }
}

void Game::FindCarrier() {}
void Game::FindPassers() {}
void Game::FindPenalized() {}
void Game::FindDefender() {}
void Game::FindTakeaway() {}
void Game::FindBlocker() {}
void Game::FindHitter() {}
void Game::PickNames(const OnIce*) {}
void Game::PickOpponentName() {}
void Game::HkSetPlayCallList() {}
void Game::PickLooseCarrier(int) {}

}  // namespace tallyrink
