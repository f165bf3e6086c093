// The box file's records: sizes and the offsets other readers depend on, a
// write and read that keeps every value, short or foreign files, and the
// padding of the printed cells.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "league/files.h"
#include "postgame/box_file.h"
#include "postgame/padded_text.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

template <class R>
std::size_t offsetOf(std::string_view field) {
    const codec::FieldInfo* f = codec::findField<R>(field);
    EXPECT_NE(f, nullptr) << field;
    return f ? f->offset : 0;
}

TEST(BoxRecords, SizesAndTheOffsetsReportsRead) {
    EXPECT_EQ(codec::Layout<BoxRecord1>::size, 29891u);
    EXPECT_EQ(codec::Layout<BoxRecord2>::size, 29687u);
    EXPECT_EQ(codec::Layout<BoxPlayRecord>::size, 29533u);
    EXPECT_EQ(codec::Layout<BoxLine>::size, 38u);
    EXPECT_EQ(codec::Layout<TickerRecord>::size, 65u);
    EXPECT_EQ(codec::toSlot(BoxRecord1{}).size(), 30000u);

    EXPECT_EQ(offsetOf<BoxRecord1>("BoxToi"), 97u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxPlayerId"), 1852u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxLines"), 2052u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxText"), 8460u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxTextCount"), 25710u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxStars"), 27331u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxVersion"), 27918u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxGoalTypes"), 29235u);
    EXPECT_EQ(offsetOf<BoxRecord1>("BoxReserved"), 29691u);
    EXPECT_EQ(offsetOf<BoxRecord2>("EventText"), 11904u);
    EXPECT_EQ(offsetOf<BoxRecord2>("PeriodTable"), 29304u);
    EXPECT_EQ(offsetOf<BoxPlayRecord>("BoxStampC"), 28082u);
    EXPECT_EQ(offsetOf<BoxLine>("Sog"), 13u);
    EXPECT_EQ(offsetOf<BoxLine>("Saves"), 35u);
    EXPECT_EQ(offsetOf<BoxLine>("GoalieOvertimeLosses"), 37u);
}

TEST(BoxRecords, ALineLiesAtItsSideSlotWithItsBiasedPlusMinus) {
    BoxRecord1 r;
    BoxLine& line = r.BoxLines[BoxFile::at(1, 2)];  // home side, third slot: entry 52
    line.Goals = 3;
    line.PlusMinus = static_cast<std::uint8_t>(-2 + kPlusMinusBias);
    line.Toi = 1234;
    line.Saves = 31;
    auto bytes = codec::toSlot(r);
    std::size_t base = 2052 + 52 * 38;
    EXPECT_EQ(bytes[base + 2], 3);
    EXPECT_EQ(bytes[base + 4], 18);
    EXPECT_EQ(bytes[base + 6] | bytes[base + 7] << 8, 1234);
    EXPECT_EQ(bytes[base + 35], 31);
}

TEST(BoxRecords, WriteAndReadKeepTheRecords) {
    TempDir dir;
    auto box = std::make_unique<BoxFile>();
    box->r1.BoxScore = {2, 5};
    box->r1.BoxVersion = kBoxVersion;
    box->r1.BoxText[0].assign("BOXSCORE");
    box->r2.ScoringCount = 1;
    box->r2.ScoringText[0].assign("1   11:10 EV  ABA  Somebody (unassisted)");
    box->plays[0].PlayLineCount = 352;
    box->plays[1].PlayLines[0].assign("the 352nd line");
    writeFileAtomic(dir / "BOX1.BOX", boxBytes(*box));
    EXPECT_EQ(fileLength(dir / "BOX1.BOX"), 4u * 30000u);

    auto back = BoxRead(dir / "BOX1.BOX");
    EXPECT_EQ(back->r1.BoxScore[1], 5);
    EXPECT_EQ(back->r1.BoxText[0].str(), "BOXSCORE");
    EXPECT_EQ(back->r2.ScoringText[0].str(), box->r2.ScoringText[0].str());
    auto lines = back->playLines();
    ASSERT_EQ(lines.size(), 352u);
    EXPECT_EQ(lines.back(), "the 352nd line");
}

// A box of full fixed fields whose lists use `used` lines each, or all
// they have when fewer; the lines past each count blank, as BoxWrite leaves
// them.
std::unique_ptr<BoxFile> boxUsing(int used) {
    auto box = std::make_unique<BoxFile>();
    std::memset(static_cast<void*>(box.get()), 0x5A, sizeof(BoxFile));
    // Lines past a list's count are blank, as BoxWrite leaves them.
    auto blankFrom = [&](auto& lines, std::size_t from) {
        for (std::size_t k = from; k < lines.size(); ++k) lines[k] = {};
    };
    auto upTo = [&](std::size_t n) { return std::min<std::size_t>(static_cast<std::size_t>(used), n); };
    box->r1.BoxTextCount = static_cast<std::int16_t>(upTo(kBoxTextLines));
    blankFrom(box->r1.BoxText, upTo(kBoxTextLines));
    box->r2.ScoringCount = static_cast<std::uint8_t>(upTo(kScoringLines));
    blankFrom(box->r2.ScoringText, upTo(kScoringLines));
    box->r2.PenaltyCount = static_cast<std::uint8_t>(upTo(kPenaltyLines));
    blankFrom(box->r2.PenaltyText, upTo(kPenaltyLines));
    box->r2.EventCount = static_cast<std::int16_t>(upTo(kBoxEvents));
    blankFrom(box->r2.EventTime, upTo(kBoxEvents));
    blankFrom(box->r2.EventTeam, upTo(kBoxEvents));
    blankFrom(box->r2.EventStrength, upTo(kBoxEvents));
    blankFrom(box->r2.EventKind, upTo(kBoxEvents));
    blankFrom(box->r2.EventText, upTo(kBoxEventTexts));
    box->plays[0].PlayLineCount = static_cast<std::int16_t>(used);
    blankFrom(box->plays[0].PlayLines, upTo(kPlayLinesPerRecord));
    blankFrom(box->plays[1].PlayLines,
              static_cast<std::size_t>(std::max(0, std::min(used, 2 * kPlayLinesPerRecord) - kPlayLinesPerRecord)));
    box->plays[1].PlayLineCount = 0x5A5A;  // only record 3 counts the lines
    return box;
}

// A run keeps one box for all its games: blanked, it must write out as a
// new one, whatever its fixed fields held and however many lines its lists
// used, up to full and across the two play records.
TEST(BoxRecords, ABlankedBoxWritesOutAsANewOne) {
    const std::vector<std::uint8_t> fresh = boxBytes(BoxFile{});
    for (int used : {0, 1, 40, 290, 300, 351, 352, 400, 702}) {
        auto box = boxUsing(used);
        blankBox(*box);
        EXPECT_EQ(boxBytes(*box), fresh) << used << " lines";
    }
}

// The image a run writes its boxes into holds each box as a new image
// would, whether the box before it used more lines or fewer.
TEST(BoxRecords, TheKeptImageOfABoxIsThatOfTheBoxAlone) {
    BoxImage image;
    for (int used : {702, 3, 400, 0, 352, 115, 351, 1, 290, 300, 0}) {
        auto box = boxUsing(used);
        box->r1.BoxClock = used;  // a fixed field that differs from game to game
        auto put = image.put(*box);
        EXPECT_EQ(std::vector<std::uint8_t>(put.begin(), put.end()), boxBytes(*box)) << used << " lines";
    }
}

TEST(BoxRecords, AShortFileIsReadAsFarAsItGoesAndAForeignOneIsRefused) {
    TempDir dir;
    auto box = std::make_unique<BoxFile>();
    box->r1.BoxScore = {4, 1};
    box->r2.PenaltyCount = 7;
    auto bytes = boxBytes(*box);
    bytes.resize(30000 + 100);  // record 1 and a scrap of record 2
    writeFileAtomic(dir / "BOX2.BOX", bytes);
    auto back = BoxRead(dir / "BOX2.BOX");
    EXPECT_EQ(back->r1.BoxScore[0], 4);
    EXPECT_EQ(back->r2.PenaltyCount, 0);  // beyond the scrap
    EXPECT_TRUE(back->playLines().empty());

    writeFileAtomic(dir / "BOX3.BOX", std::string("not a box"));
    EXPECT_THROW(BoxRead(dir / "BOX3.BOX"), FileError);
}

// Cells are padded by columns: a name with letters of two bytes takes as
// many blanks as its letters leave, and a cut counts letters too.
TEST(BoxRecords, CellsArePaddedByColumnsWhateverTheirBytes) {
    auto left = [](std::string_view text, std::size_t width) {
        std::string out;
        appendLeft(out, text, width);
        return out;
    };
    auto cut = [](std::string_view text, std::size_t width, std::size_t precision) {
        std::string out;
        appendLeft(out, text, width, precision);
        return out;
    };
    auto right = [](std::string_view text, std::size_t width) {
        std::string out;
        appendRight(out, text, width);
        return out;
    };
    EXPECT_EQ(left("PP", 3), "PP ");
    EXPECT_EQ(left("OT12", 3), "OT12");  // longer than the width: kept whole
    EXPECT_EQ(right("5:07", 5), " 5:07");
    EXPECT_EQ(cut("Vanderhoeven", 8, 6), "Vander  ");
    EXPECT_EQ(left("G\xc3\xb6ta", 6), "G\xc3\xb6ta  ");     // four letters, five bytes
    EXPECT_EQ(right("\xc3\x85re", 5), "  \xc3\x85re");      // three letters
    EXPECT_EQ(cut("\xc3\x85keson", 5, 3), "\xc3\x85ke  ");  // cut after three letters
}

}  // namespace
}  // namespace tallyrink
