#include "engine/game.h"
#include "engine/stand_in.h"

namespace tallyrink {

PlayChances Game::ChanceTable() { return StandInChances(*this); }
void Game::GoalPct(PlayChances&) {}
void Game::RushGoalPct(PlayChances&) {}
void Game::drawShooterMood() {}
void Game::moveForecheck() {}
void Game::chooseCarrier() {}
void Game::eraFactors() {}
void Game::seasonCalibration() {}
void Game::drawGoalieForm() {}

}  // namespace tallyrink
