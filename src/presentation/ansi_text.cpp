#include "presentation/ansi_text.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tallyrink {

namespace {

// Code points of the bytes 0x80 to 0x9F; 0 marks the five undefined ones.
constexpr std::array<char32_t, 32> kHighControls = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void appendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

char ansiOf(char32_t cp) {
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<char>(cp);
    for (std::size_t i = 0; i < kHighControls.size(); ++i)
        if (kHighControls[i] == cp && cp != 0) return static_cast<char>(0x80 + i);
    return '?';
}

}  // namespace

char upperAnsi(char c) {
    const auto b = static_cast<unsigned char>(c);
    if (b >= 'a' && b <= 'z') return static_cast<char>(b - 0x20);
    // Latin-1 letters à to þ, less the division sign.
    if (b >= 0xE0 && b <= 0xFE && b != 0xF7) return static_cast<char>(b - 0x20);
    switch (b) {
        case 0x9A:
            return static_cast<char>(0x8A);  // š
        case 0x9C:
            return static_cast<char>(0x8C);  // œ
        case 0x9E:
            return static_cast<char>(0x8E);  // ž
        case 0xFF:
            return static_cast<char>(0x9F);  // ÿ
        default:
            return c;
    }
}

char lowerAnsi(char c) {
    const auto b = static_cast<unsigned char>(c);
    if (b >= 'A' && b <= 'Z') return static_cast<char>(b + 0x20);
    if (b >= 0xC0 && b <= 0xDE && b != 0xD7) return static_cast<char>(b + 0x20);
    switch (b) {
        case 0x8A:
            return static_cast<char>(0x9A);
        case 0x8C:
            return static_cast<char>(0x9C);
        case 0x8E:
            return static_cast<char>(0x9E);
        case 0x9F:
            return static_cast<char>(0xFF);
        default:
            return c;
    }
}

std::string upperAnsi(std::string_view text) {
    std::string out(text);
    for (auto& c : out) c = upperAnsi(c);
    return out;
}

std::string lowerAnsi(std::string_view text) {
    std::string out(text);
    for (auto& c : out) c = lowerAnsi(c);
    return out;
}

bool isControlByte(char c) {
    const auto b = static_cast<unsigned char>(c);
    return b < 0x20 || b == 0x7F;
}

std::string ansiToUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 && b <= 0x9F) {
            const char32_t cp = kHighControls[b - 0x80];
            appendUtf8(out, cp == 0 ? char32_t{0xFFFD} : cp);
        } else {
            appendUtf8(out, b);
        }
    }
    return out;
}

std::string utf8ToAnsi(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t len = lead < 0x80             ? 1
                                : (lead & 0xE0) == 0xC0 ? 2
                                : (lead & 0xF0) == 0xE0 ? 3
                                : (lead & 0xF8) == 0xF0 ? 4
                                                        : 0;
        bool valid = len > 0 && i + len <= text.size();
        char32_t cp = len == 1 ? lead : len == 2 ? lead & 0x1Fu : len == 3 ? lead & 0x0Fu : lead & 0x07u;
        for (std::size_t k = 1; valid && k < len; ++k) {
            const auto b = static_cast<unsigned char>(text[i + k]);
            valid = (b & 0xC0) == 0x80;
            cp = (cp << 6) | (b & 0x3Fu);
        }
        out += valid ? ansiOf(cp) : '?';
        i += valid ? len : 1;
    }
    return out;
}

}  // namespace tallyrink
