#include "postgame/record_book.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "league/files.h"
#include "postgame/posting_journal.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

constexpr int kGoals = 1;
constexpr int kGoalsAgainstAverage = kFirstGoalieCategory + 9;

RecordHolder holder(const std::string& name, const std::string& team = "HAL") {
    return {name, team, "BOS", "11/10/2017"};
}

std::vector<std::pair<std::string, int>> places(const RecordBook& book, int category, RecordScope scope) {
    std::vector<std::pair<std::string, int>> out;
    const RecordEntry& e = book.entry(category, scope);
    for (std::size_t k = 0; k < kRecordPlaces; ++k)
        if (!e.RecordName[k].str().empty()) out.emplace_back(e.RecordName[k].str(), e.RecordValue[k]);
    return out;
}

TEST(RecordBook, CategoriesAndTheirRecordNumbers) {
    EXPECT_EQ(recordNames()[1], "Goals");
    EXPECT_EQ(recordNames()[35], "Penalties Killed");
    EXPECT_EQ(recordNames()[kFirstGoalieCategory], "Saves");
    EXPECT_EQ(recordNames()[kFirstTeamCategory], "Goals");
    EXPECT_TRUE(recordNames()[36].empty());
    EXPECT_EQ(recordNumber(1, RecordScope::Season), 2u);
    EXPECT_EQ(recordNumber(kRecordCategories, RecordScope::Game), 801u);
}

TEST(RecordBook, ValuesEnterInOrderTiesBelowTheOlderAndAFullListKeepsItsLevel) {
    RecordBook book;
    EXPECT_FALSE(book.insert(kGoals, RecordScope::Game, 0, holder("Nobody")));
    EXPECT_TRUE(book.insert(kGoals, RecordScope::Game, 2, holder("Abel")));
    EXPECT_TRUE(book.insert(kGoals, RecordScope::Game, 4, holder("Berg")));
    EXPECT_TRUE(book.insert(kGoals, RecordScope::Game, 2, holder("Cole")));
    EXPECT_TRUE(book.insert(kGoals, RecordScope::Game, 3, holder("Dahl")));
    EXPECT_TRUE(book.insert(kGoals, RecordScope::Game, 1, holder("Ekse")));
    using P = std::vector<std::pair<std::string, int>>;
    EXPECT_EQ(places(book, kGoals, RecordScope::Game),
              (P{{"Berg", 4}, {"Dahl", 3}, {"Abel", 2}, {"Cole", 2}, {"Ekse", 1}}));
    // Equal to the fifth doesn't enter; above it pushes the fifth out.
    EXPECT_FALSE(book.insert(kGoals, RecordScope::Game, 1, holder("Falk")));
    EXPECT_TRUE(book.insert(kGoals, RecordScope::Game, 2, holder("Gran")));
    EXPECT_EQ(places(book, kGoals, RecordScope::Game).back(), (std::pair<std::string, int>{"Gran", 2}));
    // A single game may stand twice for one player.
    EXPECT_TRUE(book.insert(kGoals, RecordScope::Game, 5, holder("Berg")));
    EXPECT_EQ(places(book, kGoals, RecordScope::Game)[1].first, "Berg");
}

TEST(RecordBook, ASeasonHolderKeepsOnePlaceAndLessIsBetterRanksUp) {
    RecordBook book;
    book.insert(kGoals, RecordScope::Season, 10, holder("Abel"));
    book.insert(kGoals, RecordScope::Season, 12, holder("Berg"));
    book.insert(kGoals, RecordScope::Season, 14, holder("Abel"));
    book.insert(kGoals, RecordScope::Season, 9, holder("Abel", "BOS"));  // another team's season
    using P = std::vector<std::pair<std::string, int>>;
    EXPECT_EQ(places(book, kGoals, RecordScope::Season), (P{{"Abel", 14}, {"Berg", 12}, {"Abel", 9}}));

    book.insert(kGoalsAgainstAverage, RecordScope::Season, 280, holder("Gull"));
    book.insert(kGoalsAgainstAverage, RecordScope::Season, 195, holder("Hart"));
    book.insert(kGoalsAgainstAverage, RecordScope::Season, 240, holder("Ives"));
    EXPECT_EQ(places(book, kGoalsAgainstAverage, RecordScope::Season),
              (P{{"Hart", 195}, {"Ives", 240}, {"Gull", 280}}));
}

// A game's values posted at once pass over most of them by what the book
// keeps of its places; the book must end as if each had been offered alone.
TEST(RecordBook, PostedValuesEndAsEachOfferedAlone) {
    // Names that share a team, one cut at the width, one with blanks about it.
    const std::vector<RecordHolder> men{holder("Abel"),
                                        holder("Abel", "BOS"),
                                        holder("Berg"),
                                        holder("Vanderhoeven-Castellanos"),
                                        holder("Vanderhoeven-Castellanosa"),
                                        holder(" Cole "),
                                        holder("Cole"),
                                        holder("Dahl", "BO")};
    constexpr int kPlusMinus = 6;
    const std::vector<int> categories{kGoals, kPlusMinus, kGoalsAgainstAverage};
    RecordBook posted, alone;
    std::uint32_t draw = 12345;
    auto next = [&](int n) {
        draw = draw * 1103515245u + 12345u;
        return static_cast<int>((draw >> 16) % static_cast<std::uint32_t>(n));
    };
    for (int game = 0; game < 80; ++game) {
        if (game % 10 == 9) {
            // What the book keeps of its places is what a book read afresh finds.
            posted.written();
            alone = RecordBook::fromBytes(posted.bytes());
        }
        // Each man's values offered alone in the order they come; the
        // posting may put some of them after his others.
        PlayerRecordValues values;
        std::vector<std::vector<PlayerRecordValues::Value>> offered;
        for (std::size_t m = 0; m < men.size(); ++m) {
            if (next(3) == 0) continue;
            offered.emplace_back();
            for (int c : categories)
                for (RecordScope scope : {RecordScope::Season, RecordScope::Game}) {
                    int value = next(12) - 4;
                    values.add(c, scope, value);
                    offered.back().push_back({static_cast<std::int16_t>(c), scope, value});
                }
            values.endPlayer(men[m]);
        }
        posted.postPlayers(values);
        for (std::size_t k = 0; k < offered.size(); ++k)
            for (const auto& v : offered[k]) alone.insert(v.category, v.scope, v.value, values.players[k].who);
        if (game % 7 == 0) {
            posted.written();
            alone.written();
        }
        for (int c : categories)
            for (RecordScope scope : {RecordScope::Season, RecordScope::Game})
                ASSERT_EQ(codec::toSlot(posted.entry(c, scope)), codec::toSlot(alone.entry(c, scope)))
                    << "game " << game << " category " << c;
    }
    // The names that differ only past the width, or in blanks about them,
    // held one place between them.
    int cutNames = 0;
    for (const auto& [name, value] : places(posted, kGoals, RecordScope::Season))
        cutNames += name.starts_with("Vanderhoeven");
    EXPECT_LE(cutNames, 1);
}

// A book read with places below nothing takes a game of nothing: the values
// a posting passes over elsewhere are asked there, and the book ends as if
// each had been offered alone.
TEST(RecordBook, AGameOfNothingEntersABookWhosePlacesHoldLess) {
    constexpr int kPlusMinus = 6;
    std::vector<std::uint8_t> bytes(801 * kRecordSlot, 0);
    RecordEntry low{};
    for (std::size_t k = 0; k < kRecordPlaces; ++k) {
        low.RecordName[k].assign("Low" + std::to_string(k));
        low.RecordTeam[k].assign("BOS");
        low.RecordValue[k] = static_cast<std::int16_t>(-1 - static_cast<int>(k));
    }
    codec::encode(low, bytes.data() + (recordNumber(kPlusMinus, RecordScope::Game) - 1) * kRecordSlot);

    const std::vector<PlayerRecordValues::Value> offered{
        {kPlusMinus, RecordScope::Game, 0},
        {kGoals, RecordScope::Game, 0},
        {kGoals, RecordScope::Season, 3},
        {kGoalsAgainstAverage, RecordScope::Game, 0},  // less is better: never passed over
    };
    PlayerRecordValues values;
    for (const auto& v : offered) values.add(v.category, v.scope, v.value);
    values.endPlayer(holder("Zero"));
    ASSERT_EQ(values.players.size(), 1u);
    EXPECT_EQ(values.players[0].nothingFrom, 2u);
    EXPECT_EQ(values.players[0].end, 4u);

    RecordBook posted = RecordBook::fromBytes(bytes), alone = RecordBook::fromBytes(bytes);
    posted.postPlayers(values);
    for (const auto& v : offered) alone.insert(v.category, v.scope, v.value, values.players[0].who);
    EXPECT_EQ(places(posted, kPlusMinus, RecordScope::Game).front(), (std::pair<std::string, int>{"Zero", 0}));
    for (int c : {kGoals, kPlusMinus, kGoalsAgainstAverage})
        for (RecordScope scope : {RecordScope::Season, RecordScope::Game})
            EXPECT_EQ(codec::toSlot(posted.entry(c, scope)), codec::toSlot(alone.entry(c, scope))) << c;
}

TEST(RecordBook, PlayerValuesFollowTheScope) {
    PlayerRecord p{};
    statLine(p, StatLineIndex::Replay).Goals = 20;
    statLine(p, StatLineIndex::Replay).Assists = 15;
    statLine(p, StatLineIndex::Replay).Toi = 60 * 600 + 29;
    statLine(p, StatLineIndex::Game).Goals = 2;
    p.Minors = {7, 1};
    p.PointStreak = 6;
    EXPECT_EQ(playerRecordValue(4, RecordScope::Season, p), 35);  // points
    EXPECT_EQ(playerRecordValue(4, RecordScope::Game, p), 2);
    EXPECT_EQ(playerRecordValue(12, RecordScope::Season, p), 600);  // minutes on the ice
    EXPECT_EQ(playerRecordValue(25, RecordScope::Season, p), 7);    // minors
    EXPECT_EQ(playerRecordValue(25, RecordScope::Game, p), 1);
    EXPECT_EQ(playerRecordValue(31, RecordScope::Season, p), 6);  // point streak
    EXPECT_FALSE(playerRecordValue(31, RecordScope::Game, p));
    EXPECT_FALSE(playerRecordValue(kFirstGoalieCategory, RecordScope::Game, p));  // saves: goalies only
}

TEST(RecordBook, WrittenChangesReadBackAndLeaveOtherBytesAlone) {
    testing::TempDir dir;
    {
        // A foreign byte in a slot's unused end, and one in a record of no category.
        std::vector<std::uint8_t> bytes(801 * kRecordSlot, 0);
        bytes[2 * kRecordSlot + 250] = 0x5a;
        bytes[recordNumber(40, RecordScope::Season) * kRecordSlot - 10] = 0x77;
        bytes[(recordNumber(2, RecordScope::Season) - 1) * kRecordSlot + 150] = 0x33;
        writeFileAtomic(dir.path() / kRecordsFile, bytes);
    }
    RecordBook book = RecordBook::load(dir.path());
    book.insert(kGoals, RecordScope::Season, 7, holder("Abel"));
    book.insert(kGoals, RecordScope::Game, 3, holder("Abel"));
    book.insert(kFirstTeamCategory, RecordScope::Game, 9, holder("2017 Halvard"));
    // A record a few slots past kGoals', an unchanged one between them.
    EXPECT_TRUE(book.insert(3, RecordScope::Game, 2, holder("Abel")));
    DiskWriter disk;
    auto original = readBytes(dir.path() / kRecordsFile);
    for (const FileChange& c : book.changes(kRecordsFile)) disk.writeAt(dir.path() / c.name, c.offset, c.bytes);
    // Joined into fewer writes, the changes leave the same file.
    std::filesystem::path joinedFile = dir.path() / "joined";
    writeFileAtomic(joinedFile, original);
    auto joined = book.changes(kRecordsFile, kRecordsJoinedWithin);
    EXPECT_LT(joined.size(), book.changes(kRecordsFile).size());
    for (const FileChange& c : joined) disk.writeAt(joinedFile, c.offset, c.bytes);
    EXPECT_EQ(readBytes(joinedFile), readBytes(dir.path() / kRecordsFile));

    RecordBook again = RecordBook::load(dir.path());
    EXPECT_EQ(places(again, kGoals, RecordScope::Season), places(book, kGoals, RecordScope::Season));
    EXPECT_EQ(again.entry(kFirstTeamCategory, RecordScope::Game).RecordValue[0], 9);
    EXPECT_EQ(again.entry(kGoals, RecordScope::Season).RecordDate[0].str(), "11/10/2017");
    auto bytes = readBytes(dir.path() / kRecordsFile);
    EXPECT_EQ(bytes[2 * kRecordSlot + 250], 0x5a);
    EXPECT_EQ(bytes[recordNumber(40, RecordScope::Season) * kRecordSlot - 10], 0x77);
    EXPECT_EQ(bytes[(recordNumber(2, RecordScope::Season) - 1) * kRecordSlot + 150], 0x33);
    EXPECT_TRUE(RecordBook::load(dir.path() / "nowhere").changes(kRecordsFile).empty());
}

// What a run keeps must read as the file does after each posting, and a
// change made to the file by anyone else must be seen at the next ask.
TEST(RecordBook, AKeptBookStandsAsItsFileAndSeesChangesMadeUnderIt) {
    testing::TempDir dir;
    std::filesystem::path file = dir.path() / kRecordsFile;
    DiskWriter disk;
    auto writeOut = [&](const RecordBook& book) {
        for (const FileChange& c : book.changes(kRecordsFile)) disk.writeAt(dir.path() / c.name, c.offset, c.bytes);
    };
    KeptRecordBooks kept;
    {
        RecordBook& book = kept.book(file, true);  // no file yet: an empty book
        book.insert(kGoals, RecordScope::Season, 7, holder("Abel"));
        book.insert(kGoals, RecordScope::Game, 3, holder("Abel"));
        book.insert(kGoals, RecordScope::Game, 2, holder(""));  // a nameless place holds no value once read
        writeOut(book);
        kept.written();
        // As the file now reads, so that the next ask finds it unchanged.
        EXPECT_TRUE(std::ranges::equal(book.bytes(), readBytes(file)));
    }
    RecordBook& again = kept.book(file, true);
    EXPECT_TRUE(again.changes(kRecordsFile).empty());
    RecordBook read = RecordBook::load(dir.path());
    for (RecordScope scope : {RecordScope::Season, RecordScope::Game})
        EXPECT_EQ(codec::toSlot(again.entry(kGoals, scope)), codec::toSlot(read.entry(kGoals, scope)));
    // His season figure replaces his own place, also in the kept book.
    again.insert(kGoals, RecordScope::Season, 9, holder("Abel"));
    writeOut(again);
    kept.written();
    EXPECT_TRUE(std::ranges::equal(again.bytes(), readBytes(file)));
    using P = std::vector<std::pair<std::string, int>>;
    EXPECT_EQ(places(kept.book(file, true), kGoals, RecordScope::Season), (P{{"Abel", 9}}));
    kept.written();

    // Another league's run posts into the same file.
    RecordBook other = RecordBook::load(dir.path());
    other.insert(kGoals, RecordScope::Season, 12, holder("Berg", "BOS"));
    writeOut(other);
    EXPECT_EQ(places(kept.book(file, true), kGoals, RecordScope::Season), (P{{"Berg", 12}, {"Abel", 9}}));

    // Entries of a posting that failed are not kept.
    kept.book(file, true).insert(kGoals, RecordScope::Season, 30, holder("Cole"));
    kept.drop();
    EXPECT_EQ(places(kept.book(file, true), kGoals, RecordScope::Season), (P{{"Berg", 12}, {"Abel", 9}}));
}

}  // namespace
}  // namespace tallyrink
