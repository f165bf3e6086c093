#pragma once

// The record book: the top five of each category, for single games and for
// seasons, players and teams, kept in "HkRecords" of a league folder (and,
// when the league keeps them, of the all-time folder as well). Each game
// posts into it once; a category's fifth entry is the level to beat.
//
// File: slots of 300 bytes of which 200 are used; category i (1 to 400) in
// scope s (2 the season, 3 a single game) stands in record (i - 1) x 2 + s,
// so records 2 to 801. Record 1 is unused.

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "league/codec.h"
#include "league/fixed_text.h"
#include "postgame/game_summary.h"
#include "postgame/posting_journal.h"

namespace tallyrink {

inline constexpr const char* kRecordsFile = "HkRecords";
inline constexpr std::size_t kRecordSlot = 300;
inline constexpr int kRecordCategories = 400;
inline constexpr int kRecordPlaces = 5;
inline constexpr int kFirstGoalieCategory = 50;
inline constexpr int kFirstTeamCategory = 201;

enum class RecordScope : int { Season = 2, Game = 3 };
// Changed records this close go out in one write where nothing narrows the
// write: rewriting some 8 KB that didn't change costs less than a write call.
inline constexpr std::size_t kRecordsJoinedWithin = 8192 / kRecordSlot;

// One category in one scope, best first.
struct RecordEntry {
    std::array<std::int16_t, kRecordPlaces> RecordValue{};
    std::array<FixedText<20>, kRecordPlaces> RecordName{};  // player, or year and city of a team
    std::array<FixedText<3>, kRecordPlaces> RecordTeam{};
    std::array<FixedText<3>, kRecordPlaces> RecordOpponent{};
    std::array<FixedText<12>, kRecordPlaces> RecordDate{};  // month/day/year
};

// Record number of a category in a scope.
constexpr std::size_t recordNumber(int category, RecordScope scope) {
    return static_cast<std::size_t>((category - 1) * 2 + static_cast<int>(scope));
}

// The category names by number (1 to 400); an empty name is no category.
const std::array<std::string_view, kRecordCategories + 1>& recordNames();
// Categories where less is better ("Goals Allowed Per Game").
bool lowerIsBetter(int category);
// Categories that a season holds but a single game can't ("Point Streak", ...).
bool seasonOnly(int category);

// Who set a record, and when.
struct RecordHolder {
    std::string name;
    std::string team;
    std::string opponent;
    std::string date;
};

// What a game's players enter into a record book, worked out once for every
// book it is posted into: each player who played, his values of the
// categories that apply to him, in the order they are posted.
struct PlayerRecordValues {
    struct Value {
        std::int16_t category;
        RecordScope scope;
        int value;
    };
    struct Player {
        RecordHolder who;
        std::size_t end;  // his values are those before `end`, after the last player's
        // His values from here to `end` are game values of nothing or less
        // where more is better: a book whose places all hold more than
        // nothing turns them away unasked.
        std::size_t nothingFrom = static_cast<std::size_t>(-1);
    };
    std::vector<Player> players;
    std::vector<Value> values;

    // A value of the player under way; those a book may pass over unasked
    // are put after his others.
    void add(int category, RecordScope scope, int value);
    // Ends the player under way: his values are those added since the last.
    void endPlayer(RecordHolder who);

    static PlayerRecordValues of(const GameSession& session, const FinishedGame& game);

private:
    std::vector<Value> nothing_;  // of the player under way
};

class RecordBook {
public:
    RecordBook();
    // LoadRecords: a missing file is an empty book. Throws FileError for a
    // file that can't be read.
    static RecordBook load(const std::filesystem::path& folder);
    // The book from the bytes of its file (empty: an empty book).
    static RecordBook fromBytes(std::span<const std::uint8_t> bytes);

    [[nodiscard]] const RecordEntry& entry(int category, RecordScope scope) const;

    // InsertPlayerRecord and InsertTeamRecord: enters `value` when it beats
    // the fifth entry; a season's holder keeps a single place. True when it
    // entered.
    bool insert(int category, RecordScope scope, int value, const RecordHolder& who);

    // PostPlayerRecords: every player of both sides who played in the game,
    // for his game and his season so far.
    void postPlayers(const GameSession& session, const FinishedGame& game);
    void postPlayers(const PlayerRecordValues& values);
    // PostTeamRecords: both teams' game and season so far.
    void postTeams(const GameSession& session, const FinishedGame& game);

    // The entries changed since load (a drop of his own older place counts
    // even when he doesn't enter again), as writes of their slots of `file`.
    // Changed slots up to `joinWithin` records apart go in one write, the
    // bytes between as they were read.
    [[nodiscard]] std::vector<FileChange> changes(const std::string& file, std::size_t joinWithin = 1) const;

    // The changes are written: the book stands as its file now does, as if
    // read from it again, with nothing changed since.
    void written();
    // The bytes of the file as the book stands.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return raw_; }

private:
    // Who a value is entered for, in the forms the entries hold.
    struct Holder {
        const RecordHolder& who;
        FixedText<3> team;
        std::uint32_t teamKey;
        // His name as the places keep theirs (placeName): the test for his
        // own season place is one compare of each place his team holds.
        FixedText<20> placeName;
        bool named;             // his name isn't blank: a place he takes is held
        std::uint64_t teamBit;  // his team's bit of Gate::teams
    };
    // Past any team key: a code's length, its lowest byte, is at most three.
    static constexpr std::uint32_t kNoTeamKey = 0xFFFFFFFF;
    // Of one record, what insert asks of every place before it touches it.
    struct Places {
        std::array<bool, kRecordPlaces> held{};
        // The team key of each place held, and for a place nobody holds a
        // key no team has: one compare finds his team's places.
        std::array<std::uint32_t, kRecordPlaces> heldTeamKey{kNoTeamKey, kNoTeamKey, kNoTeamKey, kNoTeamKey,
                                                             kNoTeamKey};
        std::int16_t lastValue = 0;  // the fifth place's value
        // Each place's name trimmed and padded again: equal just when the
        // names as insert compares them are.
        std::array<FixedText<20>, kRecordPlaces> heldName{};
    };
    // Of one record, the little that turns most values away, kept apart
    // from the places so that a posting's walk over the records stays in
    // the cache.
    struct Gate {
        // A bit for each team that holds a place; teams may share a bit,
        // so a set bit asks the places, a clear one tells.
        std::uint64_t teams = 0;
        // A value enters above it where more is better; where less is, the
        // places are asked.
        std::int32_t bar = 0;
        bool lower = false;
    };
    // True when `value` can't enter nor move his own season place: most of
    // a posting's values, told from the places alone.
    [[nodiscard]] bool turnedAway(int category, RecordScope scope, int value, const Holder& who) const;
    static Holder holderOf(const RecordHolder& who);
    bool insert(int category, RecordScope scope, int value, Holder& who);
    // What is kept of record r's places made again from its entry.
    void noteEntry(std::size_t r);
    // The same of its fifth place and its gate, the places being known.
    void noteLast(std::size_t r);

    std::vector<RecordEntry> entries_;
    std::vector<Places> places_;
    std::vector<Gate> gates_;
    // Game records where more is better whose gate lets in a value of
    // nothing: only a book read with a fifth place below nothing has any.
    std::size_t gamesOpenToNothing_ = 0;
    std::vector<bool> changed_;
    std::vector<std::size_t> changedList_;  // the records of changed_, in order
    std::vector<std::uint8_t> raw_;         // the file as read
};

// The record books a run of many games posts into, kept decoded between its
// games instead of read and decoded at each. The league's own book is the
// run's alone, as all its files are. The book across leagues may have
// another league's run posting into it: its file is read at every ask and
// the book decoded again when the bytes aren't what the run left.
class KeptRecordBooks {
public:
    // The book of the file as it stands (a missing file: an empty book).
    // Throws FileError for a file that can't be read.
    RecordBook& book(const std::filesystem::path& file, bool shared);
    // The changes of every book asked for since are written.
    void written();
    // A posting failed part way: every book is read again at its next ask.
    void drop() { books_.clear(); }

private:
    struct Kept {
        std::filesystem::path file;
        RecordBook book;
        bool asked = false;
    };
    std::vector<Kept> books_;
    std::vector<std::uint8_t> scratch_;  // a shared book's file as last read
};

// A player's value of a category (1 to 199) for the scope; nothing when the
// category doesn't apply to him or to the scope. `shootoutGoals`: his goals
// in this game's shootout.
std::optional<int> playerRecordValue(int category, RecordScope scope, const PlayerRecord& p, int shootoutGoals = 0);

// The record book's lines as a report prints them: each category with
// entries, its five places.
std::vector<std::string> recordBookText(const RecordBook& book, RecordScope scope, bool teams);

}  // namespace tallyrink

namespace tallyrink::codec {
template <>
struct Layout<RecordEntry> {
    static constexpr std::size_t size = 200;
};
TALLYRINK_EXTERN_RECORD_CODEC(RecordEntry)
}  // namespace tallyrink::codec
