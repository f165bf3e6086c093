#include <gtest/gtest.h>

#include "league/text.h"

namespace tallyrink {
namespace {

using Cells = std::vector<std::string>;

TEST(CsvSplit, QuotesCommasBlanksAndLineBreaks) {
    EXPECT_EQ(splitCsvLine("a, b ,c"), (Cells{"a", "b", "c"}));
    EXPECT_EQ(splitCsvLine(R"("St. Louis, MO",  " padded ",x)"), (Cells{"St. Louis, MO", " padded ", "x"}));
    EXPECT_EQ(splitCsvLine(R"("say ""hi""",2)"), (Cells{R"(say "hi")", "2"}));
    EXPECT_EQ(splitCsvLine(R"(O"Neil,3)"), (Cells{R"(O"Neil)", "3"}));  // a quote inside a cell is text
    EXPECT_EQ(splitCsvLine(""), (Cells{""}));
    EXPECT_EQ(splitCsvLine("a,,"), (Cells{"a", "", ""}));

    std::string_view text = "h1,h2\r\n\"two\nlines\",x\nlast,y";
    std::size_t pos = 0, line = 1;
    EXPECT_EQ(splitCsvRecord(text, pos, line), (Cells{"h1", "h2"}));
    EXPECT_EQ(line, 2u);
    EXPECT_EQ(splitCsvRecord(text, pos, line), (Cells{"two\nlines", "x"}));
    EXPECT_EQ(line, 4u);
    EXPECT_EQ(splitCsvRecord(text, pos, line), (Cells{"last", "y"}));
    EXPECT_EQ(pos, text.size());
}

TEST(TextHelpers, TrimLowerAndCompare) {
    EXPECT_EQ(trimmed(" \tSked.skd\r\n"), "Sked.skd");
    EXPECT_EQ(trimmed("   "), "");
    EXPECT_EQ(lowered("HKgamePLAN"), "hkgameplan");
    EXPECT_TRUE(equalNoCase("SKED.SKD", "Sked.skd"));
    EXPECT_FALSE(equalNoCase("Sked.skd", "Sked.sk"));
}

}  // namespace
}  // namespace tallyrink
