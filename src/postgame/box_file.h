#pragma once

// A box file: the four records that keep one game. BoxWrite turns a posted
// game into them, BoxRead reads them back; the printed box score
// (box_text.h) is built from what they hold.

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "postgame/box_records.h"
#include "postgame/game_summary.h"

namespace tallyrink {

struct BoxFile {
    BoxRecord1 r1{};
    BoxRecord2 r2{};
    std::array<BoxPlayRecord, 2> plays{};  // records 3 and 4

    // Entry of a side's slot in the side-slot tables.
    static std::size_t at(int side, int slot) { return static_cast<std::size_t>(side * kRosterSlots + slot); }
    [[nodiscard]] std::vector<std::string> playLines() const;
    // The printed box score kept in the file, its lines' indents kept.
    [[nodiscard]] std::vector<std::string> keptText() const;
};

// "BOX", the SCORES row as plain digits, ".BOX".
std::string boxFileName(std::size_t scoresRow);

// What posting decided that the box keeps beside the game itself.
struct BoxFacts {
    int winnerSide = -1;       // -1 a tie
    int gameWinningSide = -1;  // side and slot of the game-winning goal
    int gameWinningSlot = kNoSlot;
    std::array<int, 2> shutoutGoalie{kNoSlot, kNoSlot};
    std::array<std::array<int, 2>, 3> stars{{{-1, kNoSlot}, {-1, kNoSlot}, {-1, kNoSlot}}};  // side, slot
    std::size_t scheduleRow = 0;
    int leagueStamp = 0;
    std::vector<std::string> scoringText;
    std::vector<std::string> penaltyText;
    std::vector<std::string> boxText;  // the printed box score
};

// The four records of a finished game of the session.
std::unique_ptr<BoxFile> BoxWrite(const GameSession& session, const FinishedGame& game, const BoxFacts& facts);
// The same into `box`, which must be blank: all zero, as made or as
// blankBox leaves it.
void BoxWrite(BoxFile& box, const GameSession& session, const FinishedGame& game, const BoxFacts& facts);

// Makes a box filled by BoxWrite all zero again. Its lists of lines are
// cleared only as far as their counts go: a run keeps one box for all its
// games, and clearing all 120 KB of it at each would cost more than the
// lines a game uses. Lines past a list's count must be blank already.
void blankBox(BoxFile& box);

// The file image: four slots of 30,000 bytes.
std::vector<std::uint8_t> boxBytes(const BoxFile& box);
inline constexpr std::size_t kBoxFileBytes = 4 * kBoxSlot;
// The same into the kBoxFileBytes at `out`, every one of them written.
void putBoxBytes(const BoxFile& box, std::uint8_t* out);

// A box's file image that a run writes every game's box into. The lists of
// lines (the box text, the summaries, the events, the play-by-play) fill a
// game's few lines of their room: their lines past what the box counts are
// left as the last game left them, all zero, and those the last game used
// more are cleared. The boxes put must have their lines past each count
// blank, as BoxWrite and blankBox leave them.
class BoxImage {
public:
    BoxImage();
    // The image of `box`, as boxBytes makes it; it lasts until the next put.
    std::span<const std::uint8_t> put(const BoxFile& box);

private:
    struct List {
        std::size_t at;        // in the image
        std::size_t lineSize;  // bytes of a line
        std::size_t used;      // bytes in use since the last put
    };
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::array<List, 10> lists_;
};

// Reads a box file; a file shorter than four records is read as far as it
// goes. Throws FileError when the file is missing or holds less than a
// first record.
std::unique_ptr<BoxFile> BoxRead(const std::filesystem::path& path);

// The goals of a game in the order they were scored, as the scoring summary
// prints them: "1 12:34 PP HAL Scorer (Assist, Assist)".
std::vector<std::string> scoringSummary(const GameSession& session, const FinishedGame& game);
std::vector<std::string> penaltySummary(const GameSession& session, const FinishedGame& game);

}  // namespace tallyrink
