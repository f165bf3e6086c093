#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace tallyrink {

// Fixed-width text as it lies in a record: single-byte characters, padded
// with blanks, no terminator. The raw bytes are kept so that a slot that was
// never written (all zero bytes) reads back and writes out unchanged.
template <std::size_t N>
struct FixedText {
    std::array<char, N> raw{};

    // The value as the program uses it: blanks and zero bytes trimmed.
    [[nodiscard]] std::string str() const {
        std::string_view v(raw.data(), N);
        auto end = v.find_last_not_of(std::string_view(" \0", 2));
        if (end == std::string_view::npos) return {};
        auto begin = v.find_first_not_of(std::string_view(" \0", 2));
        return std::string(v.substr(begin, end - begin + 1));
    }

    // The same without a copy (it lives as long as the text), for the
    // comparisons the engine makes at every step.
    [[nodiscard]] std::string_view view() const {
        std::size_t end = N;
        while (end > 0 && padding(raw[end - 1])) --end;
        std::size_t begin = 0;
        while (begin < end && padding(raw[begin])) ++begin;
        return {raw.data() + begin, end - begin};
    }

    // Left-justified and blank-padded; longer text is cut to the width.
    void assign(std::string_view text) {
        raw.fill(' ');
        std::copy_n(text.begin(), std::min(text.size(), N), raw.begin());
    }

    [[nodiscard]] bool blank() const {
        return std::all_of(raw.begin(), raw.end(), [](char c) { return padding(c); });
    }

    friend bool operator==(const FixedText&, const FixedText&) = default;

private:
    static constexpr bool padding(char c) { return c == ' ' || c == '\0'; }
};

}  // namespace tallyrink
