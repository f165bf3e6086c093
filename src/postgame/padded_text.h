#pragma once

// Text padded to a width as fmt's "{:<w}", "{:<w.p}" and "{:>w}" pad it,
// without a format call for the plain case: of ASCII text a character is a
// byte and a column, so a cell is its text (cut to the precision) and its
// blanks. Other text goes through fmt, which counts code points and columns.
// A box prints some hundreds of such cells a game.

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

namespace tallyrink {

inline bool asciiText(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// "{:<width}"
inline void appendLeft(std::string& out, std::string_view text, std::size_t width) {
    if (!asciiText(text)) {
        fmt::format_to(std::back_inserter(out), "{:<{}}", text, width);
        return;
    }
    out.append(text);
    if (text.size() < width) out.append(width - text.size(), ' ');
}

// "{:<width.precision}"
inline void appendLeft(std::string& out, std::string_view text, std::size_t width, std::size_t precision) {
    if (!asciiText(text)) {
        fmt::format_to(std::back_inserter(out), "{:<{}.{}}", text, width, precision);
        return;
    }
    appendLeft(out, text.substr(0, precision), width);
}

// "{:>width}"
inline void appendRight(std::string& out, std::string_view text, std::size_t width) {
    if (!asciiText(text)) {
        fmt::format_to(std::back_inserter(out), "{:>{}}", text, width);
        return;
    }
    if (text.size() < width) out.append(width - text.size(), ' ');
    out.append(text);
}

}  // namespace tallyrink
