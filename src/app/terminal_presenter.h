#pragma once

// A game in the terminal: the play lines at a readable pace, a scoreboard
// line at each decision, and, for a side the user coaches, the calls of the
// state to choose from by their keys. Works on a plain terminal, under tmux
// and with input from a pipe; end of input hands the rest of the game to
// the computer, so the game still ends.

#include <cstdio>
#include <istream>
#include <optional>
#include <ostream>
#include <string>

#include "engine/game.h"
#include "engine/presenter.h"

namespace tallyrink::cli {

struct TerminalOptions {
    double pace = 0.8;  // seconds a play line stays before the next
    bool color = false;
};

class TerminalPresenter final : public GamePresenter {
public:
    TerminalPresenter(std::ostream& out, TerminalOptions options) : out_(out), options_(options) {}

    void ShowPlayLines(const Game& game, const std::vector<std::string>& lines) override;
    void ShowClock(const Game& game) override;
    void ShowIce(const Game&) override {}
    void ShowOffenseTargets(const Game&) override {}
    void AskPlayCall(const Game& game, int side) override;
    void AskLineChange(const Game& game, int side) override;
    void ShowPause(const Game&) override {}
    void GameOver(const Game& game) override;

    enum class Ask { None, PlayCall, LineChange };
    struct Pending {
        Ask ask = Ask::None;
        int side = 0;
    };
    // What the engine asked for last, and clears it.
    Pending takePending();

    // The scoreboard in one line: period, clock, score, shots, strength.
    static std::string scoreboard(const Game& game);

private:
    std::ostream& out_;
    TerminalOptions options_;
    Pending pending_;
    int shownPeriod_ = 0;
    bool over_ = false;
};

// Plays `game` in the terminal: the user answers for the sides in
// `humanSides` (a bit a side), reading from `in`. Returns when the game ends.
void coachGame(Game& game, TerminalPresenter& presenter, std::istream& in, std::ostream& out);

std::string periodName(int period, int periods);
std::string clockText(int seconds);

}  // namespace tallyrink::cli
