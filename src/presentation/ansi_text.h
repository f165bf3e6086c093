#pragma once

// Text as the program stores it: one byte a character in the Windows-1252
// code page (Latin-1 with printable characters in 0x80 to 0x9F). Phrase
// files, translation files and record text all use it; a terminal wants
// UTF-8, and comparisons that ignore case must know the accented letters.

#include <string>
#include <string_view>

namespace tallyrink {

// Upper and lower case of a single-byte character, accented letters included.
char upperAnsi(char c);
char lowerAnsi(char c);
std::string upperAnsi(std::string_view text);
std::string lowerAnsi(std::string_view text);

// True for a byte that can't stand in a wording: the control characters
// 0x00 to 0x1F and 0x7F.
bool isControlByte(char c);

// The text in UTF-8 for printing. The five bytes the code page leaves
// undefined print as U+FFFD.
std::string ansiToUtf8(std::string_view text);

// UTF-8 text (a command line, a terminal) in the code page: a character the
// code page lacks, or a byte that isn't UTF-8, becomes "?".
std::string utf8ToAnsi(std::string_view text);

}  // namespace tallyrink
