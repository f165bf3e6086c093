#include <gtest/gtest.h>

#include <string>

#include "league/files.h"
#include "presentation/ansi_text.h"
#include "presentation/narrator_translations.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using testing::TempDir;

NarratorTranslations tableOf(std::initializer_list<NarratorTranslation> entries) {
    NarratorTranslations t;
    for (const auto& e : entries) t.add(e.name, e.translation);
    return t;
}

TEST(NarratorTranslationFile, NameLinesAndQuotes) {
    EXPECT_EQ(translationFileName(), "TLY-HK-Translate2021.csv");
    EXPECT_EQ(translationFileName(2022), "TLY-HK-Translate2022.csv");

    const auto t = NarratorTranslations::parse(
        "Pietrangelo,pea tran jello\r\n"
        "\"Ekman-Larsson\",\"Eckman Larson\"\n"
        "  Blanks Around , are dropped  \n"
        "NoComma\n"
        ",no name\n"
        "\n"
        "Smith,John,Jr\n"
        "\"a, b\",\"say \"\"ab\"\"\"\n");
    ASSERT_EQ(t.size(), 5u);
    EXPECT_EQ(t.entries()[0].name, "Pietrangelo");
    EXPECT_EQ(t.entries()[0].translation, "pea tran jello");
    EXPECT_EQ(t.entries()[1].name, "Ekman-Larsson");
    EXPECT_EQ(t.entries()[1].translation, "Eckman Larson");
    EXPECT_EQ(t.entries()[2].name, "Blanks Around");
    EXPECT_EQ(t.entries()[2].translation, "are dropped");
    EXPECT_EQ(t.entries()[3].translation, "John,Jr");
    EXPECT_EQ(t.entries()[4].name, "a, b");
    EXPECT_EQ(t.entries()[4].translation, "say \"ab\"");
}

TEST(NarratorTranslationFile, ReadWriteAndTinyFiles) {
    TempDir dir;
    EXPECT_EQ(NarratorTranslations::read(dir / "missing.csv").size(), 0u);
    writeFileAtomic(dir / "nine.csv", std::string_view("Abc,defgh"));
    EXPECT_EQ(NarratorTranslations::read(dir / "nine.csv").size(), 0u);  // under 10 bytes: left alone
    writeFileAtomic(dir / "ten.csv", std::string_view("Abcd,efghi"));
    EXPECT_EQ(NarratorTranslations::read(dir / "ten.csv").size(), 1u);

    auto t = tableOf({{"Pietrangelo", "pea tran jello"}, {"a, b", "say \"ab\""}, {"B\xE9rub\xE9", "bear oo bay"}});
    t.write(dir / "t.csv");
    EXPECT_EQ(readLines(dir / "t.csv")[0], "Pietrangelo,pea tran jello");  // plain text without quotes
    const auto back = NarratorTranslations::read(dir / "t.csv");
    ASSERT_EQ(back.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(back.entries()[i].name, t.entries()[i].name);
        EXPECT_EQ(back.entries()[i].translation, t.entries()[i].translation);
    }
    // The file sits in the data root's Sounds folder, found in any case.
    fs::create_directories(dir / "SOUNDS");
    writeFileAtomic(dir / "SOUNDS" / "tly-hk-translate2021.CSV", std::string_view("x"));
    EXPECT_EQ(translationFile(dir.path()), dir / "SOUNDS" / "tly-hk-translate2021.CSV");
}

TEST(NarratorTranslationEditor, LookupAndSave) {
    auto t = tableOf({{"Name", "first"}, {"NAME", "second"}});
    EXPECT_EQ(t.lookup("name"), "second");  // the last matching entry wins
    EXPECT_EQ(t.spokenName("Other"), "Other");
    EXPECT_FALSE(t.lookup("Nam"));

    EXPECT_TRUE(t.set("naMe", "third"));
    ASSERT_EQ(t.size(), 2u);
    EXPECT_EQ(t.entries()[0].translation, "third");
    EXPECT_EQ(t.entries()[1].translation, "third");

    EXPECT_TRUE(t.set("  New  ", "  said so  "));
    ASSERT_EQ(t.size(), 3u);
    EXPECT_EQ(t.entries()[2].name, "New");
    EXPECT_EQ(t.entries()[2].translation, "said so");
    EXPECT_FALSE(t.set("", "x"));
    EXPECT_FALSE(t.set("x", "  "));
    EXPECT_EQ(t.size(), 3u);
}

TEST(SpeechFilter, ReplacementsChainInTableOrder) {
    EXPECT_EQ(tableOf({{"A", "B"}, {"B", "C"}}).filter("A"), " C");
    EXPECT_EQ(tableOf({{"B", "C"}, {"A", "B"}}).filter("A"), " B");
    const auto t = tableOf({{"Pietrangelo", "pea tran jello"}, {"B\xC9RUB\xC9", "bear oo bay"}, {"IX", "9"}});
    EXPECT_EQ(t.filter("PIETRANGELO shoots"), " pea tran jello shoots");
    EXPECT_EQ(t.filter("save by b\xE9rub\xE9"), " save by bear oo bay");  // accented letters ignore case too
    EXPECT_EQ(t.filter("Henry IX"), " Henry nine");                       // the spoken forms come after
    EXPECT_EQ(NarratorTranslations().filter(""), "");
}

TEST(SpeechFilter, SuffixesNumbersAndTimes) {
    const NarratorTranslations none;
    EXPECT_EQ(none.filter("Smith Jr. and Jones jr with Brown II III sr. Sr"), " Smith  and Jones  with Brown    ");
    EXPECT_EQ(none.filter("number 9 not 99"), " number nine not 99");
    EXPECT_EQ(none.filter("1st 2nd 3rd 4th 5th 6th 7th 8th 9th 10th 11th"),
              " first second third fourth fifth sixth seventh eight ninth tenth 11th");
    EXPECT_EQ(none.filter("2:00 5:00 10:00 4:00"), " two minutes five minutes ten minutes 4:00");
    EXPECT_EQ(none.filter("a  b"), " a  b");  // a run of blanks gives empty words
}

TEST(AnsiText, CaseAndConversion) {
    EXPECT_EQ(upperAnsi("b\xE9rub\xE9 \xFF \x9A"), "B\xC9RUB\xC9 \x9F \x8A");
    EXPECT_EQ(lowerAnsi("B\xC9RUB\xC9 \xD7"), "b\xE9rub\xE9 \xD7");  // the multiplication sign has no case
    EXPECT_EQ(ansiToUtf8("C\xE9l \x80"), "C\xC3\xA9l \xE2\x82\xAC");
    EXPECT_EQ(utf8ToAnsi("C\xC3\xA9l \xE2\x82\xAC \xE2\x98\x83 \xFF"), "C\xE9l \x80 ? ?");
    EXPECT_EQ(utf8ToAnsi(ansiToUtf8("Ekman-Larsson \xC5\xE4\xF6")), "Ekman-Larsson \xC5\xE4\xF6");
}

}  // namespace
}  // namespace tallyrink
