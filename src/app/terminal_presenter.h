#pragma once

// A game in the terminal: the play lines at a readable pace, a scoreboard
// line at each decision, and, for a side the user coaches, the calls of the
// state to choose from by their keys. Works on a plain terminal, under tmux
// and with input from a pipe; end of input hands the rest of the game to
// the computer, so the game still ends.

#include <cstdio>
#include <functional>
#include <istream>
#include <optional>
#include <ostream>
#include <string>

#include "engine/game.h"
#include "engine/presenter.h"
#include "postgame/saved_game.h"

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

    // Quiet while a saved game is played back to where it stopped: the user
    // has seen those plays already.
    void setQuiet(bool quiet) { quiet_ = quiet; }

    // The scoreboard in one line: period, clock, score, shots, strength.
    static std::string scoreboard(const Game& game);

private:
    std::ostream& out_;
    TerminalOptions options_;
    Pending pending_;
    int shownPeriod_ = 0;
    bool over_ = false;
    bool quiet_ = false;
};

// Plays `game` in the terminal from its opening faceoff: the user answers
// for the sides the game gives to a person, reading from `in`. Returns when
// the game ends.
void coachGame(Game& game, TerminalPresenter& presenter, std::istream& in, std::ostream& out);

enum class CoachingEnd { GameOver, SaveAsked };
// Goes on with a game already started (or resumed) through `game`. With
// `offerSave` the user may answer "s" to stop and have the game saved: it
// then returns SaveAsked with the question still standing.
// `stopAsked`, when given, is asked at each decision and when reading fails:
// true (the user pressed Ctrl-C) stops to save as "s" does.
CoachingEnd coachRecordedGame(RecordedGame& game, TerminalPresenter& presenter, std::istream& in, std::ostream& out,
                              bool offerSave, const std::function<bool()>& stopAsked = {});

std::string periodName(int period, int periods);
std::string clockText(int seconds);

}  // namespace tallyrink::cli
