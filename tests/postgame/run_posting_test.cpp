// Posting in a run of many games, as autoplay posts: the files kept in
// memory, the journal narrowed to what differs, the run's own writer. A run
// must leave the league exactly as games posted one by one from the disk
// would, and a failure at any of its writes must be finished by the next
// start as any other posting is.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "engine/chance_table.h"
#include "engine/game.h"
#include "league/file_images.h"
#include "league/files.h"
#include "league/folder_names.h"
#include "league/league.h"
#include "league/random.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "operations/blank_league.h"
#include "postgame/game_done.h"
#include "postgame/game_summary.h"
#include "postgame/posting_journal.h"
#include "postgame/schedule_games.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using test::shippedEra;
using testing::TempDir;

constexpr std::uint64_t kSeed = 77;
constexpr const char* kDate = "10/10/2017";

// Five made-up teams, every pairing once over a few days.
void writeLeague(const fs::path& dir) {
    auto [teams, active] = test::writeMadeUpLeague(dir, 5, 53);
    std::vector<GameRecord> rows;
    int n = 0;
    for (std::size_t a = 0; a < teams.size(); ++a)
        for (std::size_t b = a + 1; b < teams.size(); ++b, ++n)
            rows.push_back(
                newGameRecord(n % 2 ? teams[a] : teams[b], n % 2 ? teams[b] : teams[a], 10, 5 + n / 2, 2017));
    saveNewSchedule(dir, rows, active);
}

std::map<std::string, std::vector<std::uint8_t>> folderImage(const fs::path& dir) {
    std::map<std::string, std::vector<std::uint8_t>> out;
    for (const auto& e : fs::directory_iterator(dir)) out[e.path().filename().string()] = readBytes(e.path());
    return out;
}

ScheduleGamesOptions runOptions(const fs::path& dir) {
    return {dir, defaultRules(2017), &shippedEra(), kSeed, kDate, {}};
}

// What a run keeps between games; all null: every file read from the disk
// and the schedule loaded again for the posting.
struct Kept {
    FileWriter* writer = nullptr;
    FolderNames* names = nullptr;
    FileImages* images = nullptr;
};

// Row `row` played and posted with what `kept` holds.
void post(const fs::path& dir, std::size_t row, Kept kept = {}) {
    Schedule schedule = Schedule::load(dir);
    const GameRecord r = schedule.row(row);
    std::uint64_t seed = kSeed + row;
    GameSession session({dir, defaultRules(2017), &shippedEra(), &schedule, nullptr, kept.names, kept.images});
    Random draws(seed);
    session.GameActive = true;
    session.loadGame(r.VisitorTeam, r.HomeTeam, r.Month, r.Day, draws);
    clearGameEntries(session);
    Game game(session, GameOptions{.seed = seed});
    game.playToEnd();
    PostingOptions posting;
    posting.dateText = kDate;
    posting.names = kept.names;
    posting.images = kept.images;
    posting.writer = kept.writer;
    if (kept.images) posting.schedule = &schedule;
    postScheduleGame(session, game, schedule, row, seed, posting);
}

void postAlone(const fs::path& dir, std::size_t row) { post(dir, row); }

// A league folder with the schedule's games posted one by one, made once.
const std::map<std::string, std::vector<std::uint8_t>>& postedOneByOne() {
    static const auto image = [] {
        TempDir dir;
        writeLeague(dir.path());
        std::size_t games = Schedule::load(dir.path()).size();
        for (std::size_t row = 1; row <= games; ++row) postAlone(dir.path(), row);
        return folderImage(dir.path());
    }();
    return image;
}

TEST(RunPosting, ARunLeavesTheLeagueAsGamesPostedOneByOne) {
    TempDir dir;
    writeLeague(dir.path());
    Schedule schedule = Schedule::load(dir.path());
    {
        ScheduleGames run(runOptions(dir.path()));
        for (std::size_t row = 1; row <= schedule.size(); ++row) {
            PostingResult r = run.playAndPost(schedule, row);
            EXPECT_EQ(r.scheduleRow, row);
            EXPECT_EQ(statusOf(schedule.row(row)), kPlayed);
        }
        // The run's copy of the schedule is the file's.
        Schedule onDisk = Schedule::load(dir.path());
        ASSERT_EQ(onDisk.size(), schedule.size());
        for (std::size_t row = 1; row <= schedule.size(); ++row)
            EXPECT_EQ(codec::toSlot(onDisk.row(row)), codec::toSlot(schedule.row(row))) << "row " << row;
    }
    // Byte for byte, and the run leaves no file of its own behind.
    auto ran = folderImage(dir.path());
    const auto& expected = postedOneByOne();
    EXPECT_EQ(ran.size(), expected.size());
    for (const auto& [name, bytes] : expected) {
        ASSERT_TRUE(ran.count(name)) << name;
        EXPECT_TRUE(ran.at(name) == bytes) << name;
    }
}

// A run that calibrates each game to the league's totals so far decodes
// those totals once and follows its own writes; games posted one by one
// from the disk, the team table read before each game and the players once
// a day, must come out the same.
TEST(RunPosting, ARunCalibratingToTheSeasonReadsTheTotalsAsTheDiskHoldsThem) {
    TempDir dir;
    writeLeague(dir.path());
    {
        Schedule schedule = Schedule::load(dir.path());
        ScheduleGamesOptions options = runOptions(dir.path());
        options.calibrateToSeason = true;
        ScheduleGames run(options);
        for (std::size_t row = 1; row <= schedule.size(); ++row) run.playAndPost(schedule, row);
    }

    TempDir reference;
    writeLeague(reference.path());
    League totals(reference.path());
    int playersDate = -1;
    std::size_t games = Schedule::load(reference.path()).size();
    for (std::size_t row = 1; row <= games; ++row) {
        Schedule schedule = Schedule::load(reference.path());
        const GameRecord r = schedule.row(row);
        std::uint64_t seed = kSeed + row;
        GameSession session({reference.path(), defaultRules(2017), &shippedEra(), &schedule});
        Random draws(seed);
        session.GameActive = true;
        session.GameType = 'L';
        session.loadGame(r.VisitorTeam, r.HomeTeam, r.Month, r.Day, draws);
        clearGameEntries(session);
        totals.readTeamTable();
        if (r.Month * 100 + r.Day != playersDate) {
            totals.PlayerTable() = readPlayerRows(findFile(reference.path(), kPlayerFile));
            playersDate = r.Month * 100 + r.Day;
        }
        GameOptions options{.seed = seed};
        options.calibration = seasonCalibration(totals, shippedEra(), defaultRules(2017), draws);
        Game game(session, options);
        game.playToEnd();
        postScheduleGame(session, game, schedule, row, seed, kDate);
    }
    EXPECT_EQ(folderImage(dir.path()), folderImage(reference.path()));
}

// The run's writer, failing at its n-th call (from 1); counts them all.
class FailingRunWriter final : public FileWriter {
public:
    FailingRunWriter(RunWriter& run, int failAt) : run_(run), failAt_(failAt) {}
    void writeWhole(const fs::path& p, std::span<const std::uint8_t> b) override {
        step();
        run_.writeWhole(p, b);
    }
    void writeAt(const fs::path& p, std::uint64_t o, std::span<const std::uint8_t> b) override {
        step();
        run_.writeAt(p, o, b);
    }
    void writeManyAt(const fs::path& p, std::span<const At> c) override {
        step();
        run_.writeManyAt(p, c);
    }
    void replace(const fs::path& p, std::span<const std::uint8_t> b) override {
        step();
        run_.replace(p, b);
    }
    void remove(const fs::path& p) override {
        step();
        run_.remove(p);
    }
    void writeJournal(const fs::path& p, std::span<const std::uint8_t> b) override {
        step();
        run_.writeJournal(p, b);
    }
    void removeJournal(const fs::path& p) override {
        step();
        run_.removeJournal(p);
    }
    int calls = 0;

private:
    void step() {
        if (++calls == failAt_) throw FileError("disk full (test)");
    }
    RunWriter& run_;
    int failAt_;
};

// Row 2 posted as a run posts it, after row 1 posted alone, through `writer`.
void postInRun(const fs::path& dir, FileWriter& writer, FolderNames& names, FileImages& images) {
    postAlone(dir, 1);
    post(dir, 2, {&writer, &names, &images});
}

TEST(RunPosting, AFailureAtAnyWriteOfARunIsFinishedAtTheNextStart) {
    TempDir reference;
    writeLeague(reference.path());
    postAlone(reference.path(), 1);
    postAlone(reference.path(), 2);
    auto expected = folderImage(reference.path());

    int calls = 0;
    {
        TempDir counting;
        writeLeague(counting.path());
        FolderNames names(counting.path());
        FileImages images;
        RunWriter run(images);
        FailingRunWriter counter(run, 0);
        postInRun(counting.path(), counter, names, images);
        calls = counter.calls;
    }
    ASSERT_GE(calls, 5);
    for (int failAt = 1; failAt <= calls; ++failAt) {
        TempDir work;
        writeLeague(work.path());
        {
            FolderNames names(work.path());
            FileImages images;
            RunWriter run(images);
            FailingRunWriter failing(run, failAt);
            EXPECT_THROW(postInRun(work.path(), failing, names, images), FileError) << "write " << failAt;
        }
        // The next start: a journal that stands is finished; without one the
        // game is posted anew.
        recoverPosting(work.path());
        if (statusOf(Schedule::load(work.path()).row(2)) != kPlayed) postAlone(work.path(), 2);
        EXPECT_EQ(folderImage(work.path()), expected) << "write " << failAt;
    }
}

// Records what the journal held.
class Recording final : public FileWriter {
public:
    explicit Recording(RunWriter& run) : run_(run) {}
    void writeWhole(const fs::path& p, std::span<const std::uint8_t> b) override { run_.writeWhole(p, b); }
    void writeAt(const fs::path& p, std::uint64_t o, std::span<const std::uint8_t> b) override {
        run_.writeAt(p, o, b);
    }
    void writeManyAt(const fs::path& p, std::span<const At> c) override { run_.writeManyAt(p, c); }
    void replace(const fs::path& p, std::span<const std::uint8_t> b) override { run_.replace(p, b); }
    void remove(const fs::path& p) override { run_.remove(p); }
    void writeJournal(const fs::path& p, std::span<const std::uint8_t> b) override {
        journal = PostingJournal::decode(b, "journal");
        run_.writeJournal(p, b);
    }
    void removeJournal(const fs::path& p) override { run_.removeJournal(p); }
    std::vector<FileChange> journal;

private:
    RunWriter& run_;
};

TEST(RunPosting, TheJournalKeepsOnlyWhatDiffersFromTheImages) {
    TempDir dir;
    std::vector<std::uint8_t> table(4000, 7);
    writeFileAtomic(dir / "TABLE", std::span<const std::uint8_t>(table));
    writeFileAtomic(dir / "SLOTS", std::string(600, 'a'));

    FolderNames names(dir.path());
    FileImages images;
    images.bytes(dir / "TABLE");
    images.bytes(dir / "SLOTS");
    RunWriter run(images);
    Recording writer(run);
    std::vector<std::uint8_t> newTable = table;
    newTable[10] = 1;
    newTable[12] = 2;  // near the first: one change
    newTable[3000] = 3;
    std::vector<std::uint8_t> same(100, 'a'), grown(50, 'b');
    std::fill_n(grown.begin(), 20, 'a');
    PostingJournal journal(dir.path(), &names, &images);
    journal.commit({{"TABLE", true, 0, newTable}, {"SLOTS", false, 200, same}, {"SLOTS", false, 580, grown}}, writer);

    ASSERT_EQ(writer.journal.size(), 3u);
    EXPECT_EQ(writer.journal[0].offset, 10u);
    EXPECT_EQ(writer.journal[0].bytes, (std::vector<std::uint8_t>{1, 7, 2}));
    EXPECT_EQ(writer.journal[1].offset, 3000u);
    // Of the slot change past the old end, only the bytes that weren't there already.
    EXPECT_EQ(writer.journal[2].offset, 600u);
    EXPECT_EQ(writer.journal[2].bytes.size(), 30u);
    for (const FileChange& c : writer.journal) EXPECT_FALSE(c.whole);

    // The disk and the images hold the whole change, and the journal is gone.
    std::string slots = std::string(600, 'a') + std::string(30, 'b');
    EXPECT_EQ(readBytes(dir / "TABLE"), newTable);
    EXPECT_EQ(readBytes(dir / "SLOTS"), std::vector<std::uint8_t>(slots.begin(), slots.end()));
    EXPECT_EQ(images.bytes(dir / "TABLE"), newTable);
    EXPECT_EQ(images.length(dir / "SLOTS"), slots.size());
    EXPECT_FALSE(journal.pending());
}

// A run's journals write the file a lookup finds, whatever the spelling a
// change names it by, and make no second file in the case asked for.
TEST(RunPosting, ARunWritesTheFilesALookupFinds) {
    TempDir dir;
    writeFileAtomic(dir / "TABLE", std::string(100, 'a'));
    FolderNames names(dir.path());
    DiskWriter disk;
    for (char mark : {'b', 'c'}) {
        PostingJournal journal(dir.path(), &names, nullptr);
        journal.commit({{"table", false, 10, std::vector<std::uint8_t>(5, static_cast<std::uint8_t>(mark))}}, disk);
        EXPECT_EQ(readBytes(dir / "TABLE")[12], mark);
        EXPECT_FALSE(journal.pending());
    }
    EXPECT_EQ(names.find("table"), findFile(dir.path(), "table"));
    EXPECT_FALSE(fs::exists(dir / "table"));
}

// A change over bytes an earlier change of the same posting wrote is kept
// whole, even where it equals the image, which doesn't hold the earlier
// change yet; changes of another file between them don't hide it.
TEST(RunPosting, AChangeOverAnEarlierOneOfTheSamePostingStands) {
    TempDir dir;
    writeFileAtomic(dir / "TABLE", std::string(100, 'a'));
    writeFileAtomic(dir / "OTHER", std::string(20, 'a'));
    FolderNames names(dir.path());
    FileImages images;
    images.bytes(dir / "TABLE");
    images.bytes(dir / "OTHER");
    RunWriter run(images);
    auto text = [](std::string_view t) { return std::vector<std::uint8_t>(t.begin(), t.end()); };
    PostingJournal(dir.path(), &names, &images)
        .commit({{"TABLE", false, 10, text("bbbbb")},
                 {"TABLE", false, 40, text("c")},
                 {"OTHER", false, 2, text("aa")},
                 {"TABLE", false, 12, text("aaa")}},
                run);
    std::vector<std::uint8_t> table = readBytes(dir / "TABLE");
    EXPECT_EQ(std::string(table.begin() + 10, table.begin() + 15), "bbaaa");
    EXPECT_EQ(table[40], 'c');
    EXPECT_EQ(images.bytes(dir / "TABLE")[12], 'a');
}

// The changed stretches of `now` against `was` as the journal keeps them:
// each from a changed byte to a changed byte, equal bytes inside it fewer
// than kJournalGap in a row. Bytes past the end of `was` are new, so changed.
std::vector<std::pair<std::size_t, std::size_t>> changedStretches(const std::vector<std::uint8_t>& was,
                                                                  const std::vector<std::uint8_t>& now) {
    std::vector<std::pair<std::size_t, std::size_t>> out;
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (i < was.size() && was[i] == now[i]) continue;
        if (!out.empty() && i - out.back().second < kJournalGap)
            out.back().second = i + 1;
        else
            out.emplace_back(i, i + 1);
    }
    return out;
}

TEST(RunPosting, TheJournalFindsEveryChangedStretchWhereverItLies) {
    // Changes at every place of a word and of a block, alone, in dense
    // runs and with equal gaps about the journal's limit.
    Random draws(5);
    for (int round = 0; round < 40; ++round) {
        TempDir dir;
        std::size_t size = 12001 + static_cast<std::size_t>(draws.rand(97));
        std::vector<std::uint8_t> table(size);
        for (auto& b : table) b = static_cast<std::uint8_t>(draws.rand(4));
        writeFileAtomic(dir / "TABLE", std::span<const std::uint8_t>(table));
        std::vector<std::uint8_t> now = table;
        for (std::size_t at = static_cast<std::size_t>(draws.rand(40)); at < size;) {
            int run = draws.rand(3) == 1 ? draws.rand(70) : 1;
            for (int k = 0; k < run && at < size; ++k, ++at)
                if (draws.rand(4) != 1) now[at] = static_cast<std::uint8_t>(now[at] + 1 + draws.rand(3));
            int gap = static_cast<int>(kJournalGap);
            at += static_cast<std::size_t>(draws.rand(5) == 1 ? gap - 4 + draws.rand(8) : draws.rand(gap + gap / 4));
        }
        // Some changes run past the file's end, the last bytes before it equal.
        if (round % 3 == 1) {
            auto equal = static_cast<std::ptrdiff_t>(draws.rand(45));
            std::copy(table.end() - equal, table.end(), now.end() - equal);
            now.resize(size + 1 + static_cast<std::size_t>(draws.rand(40)), 9);
        }
        FolderNames names(dir.path());
        FileImages images;
        images.bytes(dir / "TABLE");
        RunWriter run(images);
        Recording writer(run);
        PostingJournal(dir.path(), &names, &images).commit({{"TABLE", false, 0, now}}, writer);

        std::vector<std::pair<std::size_t, std::size_t>> kept;
        for (const FileChange& c : writer.journal) {
            auto begin = static_cast<std::size_t>(c.offset);
            kept.emplace_back(begin, begin + c.bytes.size());
            EXPECT_TRUE(std::equal(c.bytes.begin(), c.bytes.end(), now.begin() + static_cast<std::ptrdiff_t>(begin)));
        }
        EXPECT_EQ(kept, changedStretches(table, now)) << "round " << round;
        EXPECT_EQ(readBytes(dir / "TABLE"), now);
    }
}

// The run keeps one journal file under its name: it reads as a pending
// posting exactly from the time it is written whole until it is removed, and
// a done one is gone when the run ends while an unfinished one stays.
TEST(RunPosting, TheRunsJournalStandsOnlyWhileAPostingIsUnderWay) {
    TempDir dir;
    FolderNames names(dir.path());
    PostingJournal journal(dir.path(), &names);
    const fs::path file = dir / kPostingJournal;
    auto journalOf = [](std::size_t bytes) {
        return PostingJournal::encode({{"HKTEAMS", false, 0, std::vector<std::uint8_t>(bytes, 5)}});
    };
    // The file holds the journal, whatever a longer one left past its end.
    auto holds = [&](std::size_t bytes) {
        auto changes = PostingJournal::decode(readBytes(file), "journal");
        return changes.size() == 1 && changes[0].bytes == std::vector<std::uint8_t>(bytes, 5);
    };
    {
        FileImages images;
        RunWriter run(images);
        for (std::size_t size : {300u, 20u, 900u}) {
            run.writeJournal(file, journalOf(size));
            EXPECT_TRUE(holds(size)) << size;
            EXPECT_TRUE(journal.pending());
            EXPECT_EQ(run.ownJournalStands(file), true);
            run.removeJournal(file);
            EXPECT_FALSE(journal.pending());
            EXPECT_EQ(run.ownJournalStands(file), false);
            EXPECT_EQ(run.ownJournalStands(dir / "OTHER"), std::nullopt);
        }
    }
    EXPECT_FALSE(fs::exists(file));
    {
        FileImages images;
        RunWriter run(images);
        run.writeJournal(file, journalOf(40));
    }
    EXPECT_TRUE(journal.pending());
    EXPECT_TRUE(holds(40));

    // A journal that ends at its end marker, as an earlier version wrote it,
    // reads as before; nothing may follow it.
    auto exact = journalOf(10);
    exact.erase(exact.begin() + 8, exact.begin() + 16);
    exact[7] = '1';
    EXPECT_EQ(PostingJournal::decode(exact, "journal").at(0).bytes, std::vector<std::uint8_t>(10, 5));
    exact.push_back(0);
    EXPECT_THROW(PostingJournal::decode(exact, "journal"), FileError);
    auto cut = journalOf(10);
    cut.pop_back();
    EXPECT_THROW(PostingJournal::decode(cut, "journal"), FileError);

    // A done journal with whatever behind its mark (a run stopped while
    // writing the next) is no posting; a cut-short one still is.
    std::vector<std::uint8_t> done(kDoneJournal.begin(), kDoneJournal.end());
    done.resize(100, 7);
    writeFileAtomic(file, std::span<const std::uint8_t>(done));
    EXPECT_FALSE(journal.pending());
    EXPECT_FALSE(recoverPosting(dir.path()));
    writeFileAtomic(file, std::string("TLY"));
    EXPECT_TRUE(journal.pending());
}

TEST(RunPosting, AFileTheRunOnlyWritesReadsBackWholeWhateverPagesAreZero) {
    // Zero pages at the start, between written ones, at the end, a short
    // last page, all zeros, and a file made shorter than it was.
    TempDir dir;
    auto page = [](std::uint8_t v, std::size_t n = 4096) { return std::vector<std::uint8_t>(n, v); };
    auto join = [](std::initializer_list<std::vector<std::uint8_t>> parts) {
        std::vector<std::uint8_t> out;
        for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
        return out;
    };
    std::vector<std::uint8_t> oneByte = page(0);
    oneByte[4095] = 9;
    const std::vector<std::vector<std::uint8_t>> cases{
        join({page(0), page(1), page(0), page(0), oneByte, page(2, 100)}),
        join({page(3), page(0), page(0, 100)}),
        join({page(0), page(0, 7)}),
        join({page(4, 10)}),
        {},
    };
    FileImages images;
    RunWriter run(images);
    for (std::size_t k = 0; k < cases.size(); ++k) {
        run.replace(dir / "BOX1.BOX", cases[k]);
        EXPECT_EQ(readBytes(dir / "BOX1.BOX"), cases[k]) << "case " << k;
    }
    EXPECT_EQ(images.held(dir / "BOX1.BOX"), nullptr);
}

TEST(RunPosting, ImagesReadAsTheDiskAndFollowWritesOfFilesTheyHold) {
    TempDir dir;
    writeFileAtomic(dir / "A", std::string("abcdef"));
    FileImages images;
    // A slot past the end reads as zeros, as a RandomFile's does.
    EXPECT_EQ(images.readSlot(dir / "A", 4, 2), (std::vector<std::uint8_t>{'e', 'f', 0, 0}));
    EXPECT_EQ(images.readSlot(dir / "A", 4, 3), std::vector<std::uint8_t>(4, 0));
    EXPECT_EQ(images.length(dir / "MISSING"), 0u);
    // Without a copy: the part of the slot the file holds.
    auto part = images.slotBytes(dir / "A", 4, 2);
    EXPECT_EQ(std::vector<std::uint8_t>(part.begin(), part.end()), (std::vector<std::uint8_t>{'e', 'f'}));
    EXPECT_TRUE(images.slotBytes(dir / "A", 4, 3).empty());

    std::vector<std::uint8_t> x{'x'};
    images.writeAt(dir / "A", 8, x);  // past the end: the gap is zero bytes
    EXPECT_EQ(images.bytes(dir / "A"), (std::vector<std::uint8_t>{'a', 'b', 'c', 'd', 'e', 'f', 0, 0, 'x'}));
    images.writeAt(dir / "B", 0, x);  // never read: no image is made
    EXPECT_EQ(images.held(dir / "B"), nullptr);
    images.replace(dir / "A", x);
    EXPECT_EQ(images.bytes(dir / "A"), x);
    images.forget(dir / "A");
    EXPECT_EQ(images.bytes(dir / "A"), (std::vector<std::uint8_t>{'a', 'b', 'c', 'd', 'e', 'f'}));
}

TEST(RunPosting, AWatchedImageTellsWhatWasWrittenSinceTheLastLook) {
    TempDir dir;
    writeFileAtomic(dir / "A", std::string(100, 'a'));
    FileImages images;
    using Ranges = std::vector<std::pair<std::uint64_t, std::uint64_t>>;
    EXPECT_TRUE(images.takeWritten(dir / "A").whole);  // not watched: read it all
    images.watch(dir / "A");
    std::vector<std::uint8_t> x(4, 'x');
    images.writeAt(dir / "A", 10, x);
    images.writeAt(dir / "A", 14, x);  // follows on: one range
    images.writeAt(dir / "A", 98, x);  // past the end
    auto w = images.takeWritten(dir / "A");
    EXPECT_FALSE(w.whole);
    EXPECT_EQ(w.ranges, (Ranges{{10, 18}, {98, 102}}));
    EXPECT_TRUE(images.takeWritten(dir / "A").ranges.empty());
    images.replace(dir / "A", x);
    EXPECT_TRUE(images.takeWritten(dir / "A").whole);
    images.forget(dir / "A");
    EXPECT_TRUE(images.takeWritten(dir / "A").whole);
}

TEST(RunPosting, AnImagesMarkChangesAtEveryWriteAndNeverComesBack) {
    TempDir dir;
    writeFileAtomic(dir / "A", std::string("abcdef"));
    writeFileAtomic(dir / "B", std::string("ghijkl"));
    FileImages images;
    std::vector<std::uint64_t> seen{images.stamp(dir / "A"), images.stamp(dir / "B")};
    EXPECT_EQ(images.stamp(dir / "A"), seen[0]);  // reading is no change
    images.bytes(dir / "A");
    EXPECT_EQ(images.stamp(dir / "A"), seen[0]);
    std::vector<std::uint8_t> same{'a'};
    auto changed = [&](const char* name) {
        std::uint64_t now = images.stamp(dir / name);
        bool fresh = std::find(seen.begin(), seen.end(), now) == seen.end();
        seen.push_back(now);
        return fresh;
    };
    images.writeAt(dir / "A", 0, same);  // the same byte over itself still counts
    EXPECT_TRUE(changed("A"));
    struct W {
        std::uint64_t offset;
        std::span<const std::uint8_t> bytes;
    };
    images.writeEach(dir / "A", std::vector<W>{{2, same}, {9, same}});
    EXPECT_TRUE(changed("A"));
    images.writeAt(dir / "B", 0, same);
    EXPECT_TRUE(changed("B"));
    images.replace(dir / "A", same);
    EXPECT_TRUE(changed("A"));
    // Read again from the disk after being forgotten: a mark never given.
    images.forget(dir / "A");
    EXPECT_TRUE(changed("A"));
    EXPECT_EQ(images.stamp(dir / "A"), seen.back());
}

}  // namespace
}  // namespace tallyrink
