#pragma once

// Small text helpers shared by the readers of league files and imports.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tallyrink {

// Without leading and trailing blanks, tabs and line ends.
std::string trimmed(std::string_view s);
// ASCII letters in lower case; other bytes as they are.
std::string lowered(std::string_view s);

// The text with & < > " written as HTML entities.
std::string htmlEscaped(std::string_view s);
// Equal when ASCII letters are compared without regard to case.
bool equalNoCase(std::string_view a, std::string_view b);
// The first n characters other than blanks, in upper case (a team's
// abbreviation from its city, a file's extension).
std::string upperPrefix(std::string_view s, std::size_t n);

// One record of comma-separated text starting at `pos`: cells separated by
// commas; a cell that opens with a double quote (after blanks) may hold
// commas, line breaks and doubled quotes, and keeps its blanks; other cells
// are trimmed. `pos` moves past the record and its line end, and `line`
// counts the line ends passed.
std::vector<std::string> splitCsvRecord(std::string_view text, std::size_t& pos, std::size_t& line);

// The cells of a single line of comma-separated text.
std::vector<std::string> splitCsvLine(std::string_view line);

}  // namespace tallyrink
