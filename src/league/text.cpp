#include "league/text.h"

#include <algorithm>
#include <cctype>

namespace tallyrink {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

char lowerChar(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

}  // namespace

std::string trimmed(std::string_view s) {
    auto b = s.find_first_not_of(kBlanks);
    if (b == std::string_view::npos) return {};
    auto e = s.find_last_not_of(kBlanks);
    return std::string(s.substr(b, e - b + 1));
}

std::string lowered(std::string_view s) {
    std::string out(s);
    std::transform(out.begin(), out.end(), out.begin(), lowerChar);
    return out;
}

std::string upperPrefix(std::string_view s, std::size_t n) {
    std::string out;
    for (char c : s) {
        if (out.size() == n) break;
        if (c != ' ') out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return out;
}

bool equalNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowerChar(x) == lowerChar(y); });
}

std::vector<std::string> splitCsvRecord(std::string_view text, std::size_t& pos, std::size_t& line) {
    std::vector<std::string> cells;
    std::string cur;
    bool quoted = false;
    bool wasQuoted = false;
    auto endCell = [&] {
        cells.push_back(wasQuoted ? std::move(cur) : trimmed(cur));
        cur.clear();
        wasQuoted = false;
    };
    while (pos < text.size()) {
        char c = text[pos++];
        if (quoted) {
            if (c == '"' && pos < text.size() && text[pos] == '"') {
                cur += '"';
                ++pos;
            } else if (c == '"') {
                quoted = false;
            } else {
                if (c == '\n') ++line;
                cur += c;
            }
        } else if (c == '"' && !wasQuoted && trimmed(cur).empty()) {
            quoted = true;
            wasQuoted = true;
            cur.clear();
        } else if (c == ',') {
            endCell();
        } else if (c == '\n') {
            ++line;
            break;
        } else if (c != '\r') {
            cur += c;
        }
    }
    endCell();
    return cells;
}

std::vector<std::string> splitCsvLine(std::string_view line) {
    std::size_t pos = 0, lines = 0;
    return splitCsvRecord(line, pos, lines);
}

std::string htmlEscaped(std::string_view s) {
    std::string out;
    out.reserve(s.size());
    for (char c : s) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

}  // namespace tallyrink
