#pragma once

// A game interrupted in mid-play, kept in the league folder as a ".HAL" file
// and picked up later exactly where it stopped.
//
// The file holds the four box records of the game so far (the same form as
// a finished game's box file, so the box score of a saved game can be read
// like any other), followed by a resume block of our own. The box records
// describe the game as a person sees it; they can't hold all of the engine's
// state (its generator, the picks and flags of the play in progress, the
// computer coach's memory). Rather than copy that state field by field, the
// resume block keeps what the game was made from: its seed, the season
// calibration it was given, the coaches it began with, and every input that
// reached it from outside, in order. A game is a pure function of these, so
// loading the same teams and playing the inputs back again rebuilds every
// byte of the state, whatever shape the engine's state takes.
//
// The replay is checked: the box records of the rebuilt game must equal the
// saved ones. They differ only when the teams were changed in between (a
// game of either team posted, a trade, a roster edit); the resume then
// refuses rather than go on with a game that isn't the one on the screen.

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/chance_table.h"
#include "engine/game.h"
#include "postgame/box_file.h"

namespace tallyrink {

inline constexpr const char* kSavedGameExtension = ".HAL";

// What reached a game from outside it, in the order it came.
enum class GameInputKind : std::uint8_t {
    Drive = 1,      // SetPlayBox: run until a person must decide
    Offense = 2,    // OffenseCommand(call)
    OffenseAt = 3,  // OffenseCommand(call, target position)
    Continue = 4,   // ContinueCommand
    Coach = 5,      // setCoach(side, kind)
    RunTo = 6,      // runTo(stop)
    Lines = 7,      // HumanLineChange(side, forward unit, pair): b holds unit + 16 * pair
    Goalie = 8,     // HumanGoaliePull(side, out)
    Roll = 9,       // RollLines(side)
};

struct GameInput {
    GameInputKind kind = GameInputKind::Drive;
    std::uint8_t a = 0;  // the call, the side or the stop
    std::uint8_t b = 0;  // the target position or the coach
    bool operator==(const GameInput&) const = default;
};

// A game driven through here keeps its inputs, so it can be saved at any
// decision and played back to the same point.
class RecordedGame {
public:
    explicit RecordedGame(Game& game) : game_(game) {}

    // InitGame, then the driver.
    void start();
    void drive();
    void offense(Call call);
    void offense(Call call, int targetPos);
    void proceed();
    void setCoach(int side, CoachKind kind);
    void runTo(AutoStop stop);
    // The bench's moves; a refused one changes nothing and isn't kept.
    std::string lineChange(int side, int forwards, int pair);
    std::string goaliePull(int side, bool out);
    std::string rollLines(int side);

    // InitGame, then `inputs` in order; they become this game's inputs.
    void replay(const std::vector<GameInput>& inputs);

    [[nodiscard]] Game& game() { return game_; }
    [[nodiscard]] const Game& game() const { return game_; }
    [[nodiscard]] const std::vector<GameInput>& inputs() const { return inputs_; }

private:
    void apply(const GameInput& in);
    Game& game_;
    std::vector<GameInput> inputs_;
};

// How a saved game was set up: enough to load the same teams the same way.
struct SavedGameStart {
    std::uint64_t seed = 0;
    std::size_t scheduleRow = 0;  // 1-based; 0 for a game outside the schedule
    int visitor = 0;              // team numbers
    int home = 0;
    int calendarMonth = 0;
    int day = 0;
    int year = 0;
    char gameType = 'L';
    bool playoff = false;
    bool noDisplay = false;
    std::array<CoachKind, 2> coach{CoachKind::Computer, CoachKind::Computer};
    std::array<bool, 2> autoLines{false, false};
    SeasonCalibration calibration{};
    // Of the records both teams were loaded from, to tell a changed team
    // from a changed engine when a replay doesn't meet the saved box.
    std::uint64_t teamsFingerprint = 0;

    [[nodiscard]] GameOptions gameOptions() const;
};

// Loads both teams of a game for play from `seed`: the one way a game that
// may be saved is set up, so a resume loads them the same way. Returns the
// load's generator, whose further draws the caller may use (the calibration).
Random loadGameForPlay(GameSession& session, const SavedGameStart& start);

// A hash of the records both sides were read from, and of the rules.
std::uint64_t teamsFingerprint(const GameSession& session);

struct SavedGame {
    std::filesystem::path path;
    std::unique_ptr<BoxFile> box;
    SavedGameStart start;
    std::vector<GameInput> inputs;
};

// The file name: the day of saving, the game's date ("Ex" for an
// exhibition), the teams with their scores, and the period and clock, e.g.
// "11-23-2026 Nov-10 HAL2 BOS1 P2 1234.HAL".
std::string savedGameFileName(const Game& game, const SavedGameStart& start, const std::string& dateText);

// The four box records of a game in progress, with the play state a screen
// shows (zone, possession, the ice, energies, the box).
std::unique_ptr<BoxFile> boxOfGameInProgress(const Game& game, const SavedGameStart& start);

// Writes the saved game into `leagueDir` and returns its path. Only a game
// waiting on a person's decision can be saved; a game already over can't.
std::filesystem::path HkSaveGame(const std::filesystem::path& leagueDir, const RecordedGame& game,
                                 const SavedGameStart& start, const std::string& dateText);

// Reads a saved game. Throws FileError naming the file when it isn't one.
SavedGame readSavedGame(const std::filesystem::path& path);

// The saved games of a league folder, in the order of their names.
std::vector<std::filesystem::path> savedGames(const std::filesystem::path& leagueDir);

// A replay that doesn't arrive at the saved game.
class ResumeMismatch : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Plays the saved inputs back into `game` (built on a session loaded by
// loadGameForPlay from `saved.start`, with its options) and checks the
// result against the saved box. Throws ResumeMismatch when they differ.
void ResumeGame(RecordedGame& game, const SavedGame& saved, const GameSession& session);

}  // namespace tallyrink
