#pragma once

// Autoplay: the league's calendar. Games are marked to play ("N") by day,
// through a date, by month, all of them or all of one team's; then they are
// played one at a time in date order, computer games of a date before the
// human games of that date, each set up, played and posted before the next
// is chosen. The league date is never stored: it is the earliest date with a
// game still to play.

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "league/schedule.h"

namespace tallyrink {

enum class MarkScope {
    Day,      // "Play Day": the games of the league date
    Through,  // "Play Through": every game on or before the date
    Month,    // "Play Month": the games of the date's month
    All,      // "Play All Games"
    Team,     // "Play All Games For:" one team
};

// Marks the unplayed games of the scope "N" and returns how many. `date` is
// the date the scope is measured from (by default the league date).
int markGames(Schedule& schedule, MarkScope scope, const LeagueDate& date, int team = 0);

// Puts every marked game back to unplayed; returns how many.
int unmarkGames(Schedule& schedule);

// True when a game of calendar month `month`, day `day` lies on or before the
// league date: the season runs from August to July, so a game of August
// comes before one of October.
bool onOrBefore(int month, int day, const LeagueDate& date);

// The next marked game to play (a 1-based row), or none when nothing is
// marked: the computer games of the earliest date go before its human
// games, a human game of an earlier date before anything later, and of equal
// dates the lower row first.
std::optional<std::size_t> PlayCommandChosen(const Schedule& schedule);

// Plays one game of the schedule to its end and posts it, which turns the
// row to "P"; no other row changes. Set up and posting belong to the
// caller's layers.
class GameRunner {
public:
    virtual ~GameRunner() = default;
    virtual void playAndPost(Schedule& schedule, std::size_t row) = 0;
};

struct AutoplayProgress {
    int done = 0;   // games played in this run
    int total = 0;  // games marked when the run began
    LeagueDate date{};
    double gamesPerSecond = 0;
    double secondsLeft = 0;
};

enum class AutoplayEnd {
    Done,           // "All requested games have been played."
    NothingMarked,  // "No games are marked to play"
    Stopped,        // the user stopped it; the games left are unmarked
    HumanGame,      // the next game has a human coach
};

struct AutoplayResult {
    AutoplayEnd end = AutoplayEnd::Done;
    int played = 0;
    std::size_t humanRow = 0;  // with HumanGame: the game that waits for its coach
    double seconds = 0;
};

struct AutoplayHooks {
    // Asked between games; true stops the run after the game in hand.
    std::function<bool()> stopRequested;
    // After each game.
    std::function<void(const AutoplayProgress&)> progress;
};

// Plays the marked games, in the order PlayCommandChosen gives, until none
// is left, the user stops or a human game is next. At a stop every game
// still marked goes back to unplayed and the schedule is saved, so the next
// run starts from the same place.
AutoplayResult runAutoplay(Schedule& schedule, const ActiveTeams& active, GameRunner& runner,
                           const AutoplayHooks& hooks = {});

}  // namespace tallyrink
