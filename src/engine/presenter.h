#pragma once

// What a game asks of whatever shows it. The engine never prints: it calls
// these at the points of a step where a screen would change or a human must
// decide, and a game with no display gets the presenter that does nothing.
// A presenter reads the game through the const reference it is given and
// answers a request for a decision by calling the game's OffenseCommand or
// ContinueCommand later, never from inside the call.

#include <string>
#include <vector>

namespace tallyrink {

class Game;

class GamePresenter {
public:
    virtual ~GamePresenter() = default;

    // The lines told of the step just run; with no screen they are only cleared.
    virtual void ShowPlayLines(const Game& game, const std::vector<std::string>& lines) = 0;
    // Period, clock, score and shots after the clock step.
    virtual void ShowClock(const Game& game) = 0;
    // The players on the ice or their spots changed.
    virtual void ShowIce(const Game& game) = 0;
    // The open men of the offensive zone and their grades.
    virtual void ShowOffenseTargets(const Game& game) = 0;
    // A human coach of `side` must call the play for the zone: show the
    // choices and return at once; the choice comes back through OffenseCommand.
    virtual void AskPlayCall(const Game& game, int side) = 0;
    // A human coach of `side` may change lines before play goes on; the
    // answer comes back through OffenseCommand (at a faceoff, with the
    // faceoff call) or ContinueCommand.
    virtual void AskLineChange(const Game& game, int side) = 0;
    // The game stopped at the user's stopping point until ContinueCommand.
    virtual void ShowPause(const Game& game) = 0;
    // The game is decided.
    virtual void GameOver(const Game& game) = 0;
};

// For games nobody watches; a presenter that watches one thing (a test's)
// overrides only that.
class NullPresenter : public GamePresenter {
public:
    void ShowPlayLines(const Game&, const std::vector<std::string>&) override {}
    void ShowClock(const Game&) override {}
    void ShowIce(const Game&) override {}
    void ShowOffenseTargets(const Game&) override {}
    void AskPlayCall(const Game&, int) override {}
    void AskLineChange(const Game&, int) override {}
    void ShowPause(const Game&) override {}
    void GameOver(const Game&) override {}
};

}  // namespace tallyrink
