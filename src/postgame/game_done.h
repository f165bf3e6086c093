#pragma once

// Game completion: what a finished game leaves in the league. GameDone names
// the goalies of record, draws post-game injuries, writes the highlights,
// adds the game to every player's and team's season, settles the standings,
// the leaders and the top single games, writes the ticker, the box file, the
// schedule row and the SCORES line. It runs once for each game whoever
// coached it.
//
// Everything is worked out in memory first and then committed through a
// posting journal (posting_journal.h), so a failure at any write leaves the
// game either wholly posted or not at all.

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "engine/team_load.h"
#include "league/folder_names.h"
#include "league/random.h"
#include "league/schedule.h"
#include "postgame/box_file.h"
#include "postgame/box_records.h"
#include "postgame/box_text.h"
#include "postgame/game_summary.h"
#include "postgame/posting_journal.h"
#include "postgame/record_book.h"

namespace tallyrink {

inline constexpr const char* kLeadersFile = "HkLeaders";
inline constexpr const char* kTop40File = "hktop40";
inline constexpr const char* kTickerFile = "HKTICKER";
inline constexpr const char* kHighlightsFile = "HkHighlights.txt";
inline constexpr const char* kInjuryHistoryFile = "HkInjuryHistory";

// A whole-file table (the leaders, the top single games) as a run last
// wrote it: the record and the mark its image took from that write
// (FileImages::stamp). While the image keeps the mark, the record is taken
// as it stands instead of decoded again. `spare` is the room its bytes were
// written from, to be written into again rather than made anew.
template <class R>
struct KeptTable {
    std::uint64_t stamp = 0;
    std::unique_ptr<R> record;
    std::vector<std::uint8_t> spare;
};

struct KeptTables {
    KeptTable<LeadersRecord> leaders;
    KeptTable<Top40Record> top;
    // The rooms the last posting's player records were written from, to be
    // written into again rather than made anew for some seventy men a game.
    std::vector<std::vector<std::uint8_t>> playerRooms;
    // The box of a game, blank between postings (blankBox).
    std::unique_ptr<BoxFile> box;
    // Its file image, written over game after game.
    std::unique_ptr<BoxImage> boxImage;
    // The names its text prints, written over game after game: each keeps its room.
    std::unique_ptr<BoxNames> boxNames;
};

struct PostingOptions {
    Random* rng = nullptr;         // the draws of the post-game injuries; required
    std::string dateText;          // the day of playing as the SCORES row shows it
    FileWriter* writer = nullptr;  // null: the disk
    // Where the records across all leagues are kept, posted when the rules
    // ask for them; empty: nowhere.
    std::filesystem::path allTimeRecordsDir;
    FolderNames* names = nullptr;  // the league folder's names when a run keeps them; null: listed for the posting
    // The files as a run keeps them in memory; the writer must keep them in
    // step (RunWriter). Null: read from the disk.
    FileImages* images = nullptr;
    // The run's copy of the schedule, the same as the file: its row of the
    // game is posted in it too. Null: the file is read.
    Schedule* schedule = nullptr;
    // The record books as a run keeps them decoded. Null: read at each posting.
    KeptRecordBooks* books = nullptr;
    // The leaders and top single games as a run keeps them; null: decoded
    // from the file at each posting. Needs `images`, the same at every
    // posting: the marks the tables keep are those images' own.
    KeptTables* tables = nullptr;
};

struct PostingResult {
    std::size_t scheduleRow = 0;  // 0: not a schedule game
    std::size_t scoresRow = 0;    // 0: no SCORES row (exhibition, playoff)
    std::string boxFile;
    int winnerSide = -1;  // -1 a tie
    std::array<std::string, 3> stars;
    std::vector<std::string> highlights;
    std::vector<std::string> injuries;
};

// Thrown when a game is posted whose schedule row is already played.
class AlreadyPosted : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Posts the game. The session's rosters and team records are updated in
// memory as well as on disk. Call recoverPosting before the teams are
// loaded: a posting that an earlier failure cut short and that is found only
// here is finished, and then FileError asks for the teams to be loaded
// again, as they were read before it. Throws AlreadyPosted (and changes nothing) for a schedule
// row already played, FileError when a league file can't be read or written.
PostingResult GameDone(GameSession& session, FinishedGame& game, const PostingOptions& options);

// Posts a game played from schedule row `row` (1-based): its summary, the
// post-game draws from `seed` and the day of playing. The one way the
// command line and autoplay post a game.
PostingResult postScheduleGame(GameSession& session, const Game& game, const Schedule& schedule, std::size_t row,
                               std::uint64_t seed, const std::string& dateText,
                               const std::filesystem::path& allTimeRecordsDir = {}, FolderNames* names = nullptr);
// The same with the caller's options but for the draws, which come from `seed`.
PostingResult postScheduleGame(GameSession& session, const Game& game, const Schedule& schedule, std::size_t row,
                               std::uint64_t seed, PostingOptions posting);

// Today's date as a SCORES row keeps it ("11/23/2026").
std::string todayDateText();

// Finishes a posting cut short, if any; true when there was one.
bool recoverPosting(const std::filesystem::path& leagueDir, FileWriter* writer = nullptr);

// ---- The parts, for tests and for the screens that show them -----------------

// Goalies of record left unset by play: the starters of the sides ahead and behind.
void settleGoaliesOfRecord(FinishedGame& game);

// The game-winning goal: the winner's goal that put it ahead for good. Side
// and slot, or {-1, kNoSlot} when no goal decided the game.
std::pair<int, int> gameWinningGoal(const FinishedGame& game);

// Adds the game to both team records: goals by period, chances, power plays,
// goal types, shutouts and shootout wins, then the standings.
void postTeams(std::array<TeamRecord*, 2> teams, const FinishedGame& game, const RulesRecord& rules);

// Points in the standings of a team record.
int standingsPoints(const TeamRecord& team);

// "W-L-T-OTL".
std::string recordText(const TeamRecord& team);

// The three stars: side and slot each, best first.
std::array<std::pair<int, int>, 3> threeStars(const GameSession& session, const FinishedGame& game);

void postLeaders(LeadersRecord& leaders, const GameSession& session);
// True when the table changed.
bool postTop40(Top40Record& top, const GameSession& session, const FinishedGame& game, const std::string& boxFile);

}  // namespace tallyrink
