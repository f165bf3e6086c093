// Invented teams: a city put together from a stem and an ending, a
// nickname, a three-letter code no other team has, colours and an arena.

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <set>

#include "operations/name_lists.h"
#include "operations/new_league_parts.h"

namespace tallyrink::newleague {

namespace {

constexpr std::size_t kCityWidth = 20;
constexpr std::size_t kNicknameWidth = 20;
constexpr std::size_t kArenaWidth = 30;

struct Colour {
    std::int32_t value;
    bool light;  // wants dark lettering
};

// clang-format off
constexpr std::array kPalette = {
    Colour{rgb(0, 32, 91), false},   Colour{rgb(0, 56, 168), false},   Colour{rgb(98, 161, 209), true},
    Colour{rgb(166, 25, 46), false}, Colour{rgb(200, 16, 46), false},  Colour{rgb(110, 20, 40), false},
    Colour{rgb(0, 84, 48), false},   Colour{rgb(0, 132, 61), false},   Colour{rgb(0, 110, 120), false},
    Colour{rgb(252, 181, 20), true}, Colour{rgb(244, 115, 33), true},  Colour{rgb(85, 37, 131), false},
    Colour{rgb(17, 17, 17), false},  Colour{rgb(162, 170, 173), true}, Colour{rgb(92, 56, 30), false},
    Colour{rgb(111, 38, 61), false}, Colour{rgb(70, 90, 110), false},  Colour{rgb(0, 70, 50), false},
};
// clang-format on

std::string drawCity(Random& rng, std::set<std::string>& used) {
    for (int tries = 0; tries < 1000; ++tries) {
        std::string city = std::string(pick(rng, names::cityStems())) + std::string(pick(rng, names::cityEndings()));
        if (city.size() <= kCityWidth && !used.contains(city)) {
            used.insert(city);
            return city;
        }
    }
    // The parts make over 700 cities; a league holds at most 288 teams.
    std::string city = fmt::format("New City {}", used.size() + 1);
    used.insert(city);
    return city;
}

std::string drawNickname(Random& rng, std::set<std::string>& used) {
    auto plain = names::nicknames();
    for (int tries = 0; tries < 200; ++tries) {
        std::string name(pick(rng, plain));
        if (!used.contains(name)) {
            used.insert(name);
            return name;
        }
    }
    // More teams than nicknames: a qualifier tells them apart.
    for (int tries = 0; tries < 2000; ++tries) {
        std::string name = std::string(pick(rng, names::nicknameQualifiers())) + " " + std::string(pick(rng, plain));
        if (name.size() <= kNicknameWidth && !used.contains(name)) {
            used.insert(name);
            return name;
        }
    }
    return std::string(pick(rng, plain));
}

std::string upperLetters(const std::string& s) {
    std::string out;
    for (char c : s)
        if (std::isalpha(static_cast<unsigned char>(c))) out += char(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

// A code read from the city: its first letters, or the first letters of
// its words, or other letters of it in order; only letters, so none of the
// characters a file name can't hold.
std::string drawAbbrev(Random& rng, const std::string& city, std::set<std::string>& used) {
    std::string letters = upperLetters(city);
    std::vector<std::string> candidates;
    auto space = city.find(' ');
    if (space != std::string::npos) {
        std::string second = upperLetters(city.substr(space + 1));
        candidates.push_back(letters.substr(0, 1) + second.substr(0, 2));
    }
    candidates.push_back(letters.substr(0, 3));
    for (std::size_t i = 1; i + 1 < letters.size(); ++i)
        for (std::size_t j = i + 1; j < letters.size(); ++j) candidates.push_back({letters[0], letters[i], letters[j]});
    for (const auto& c : candidates)
        if (c.size() == 3 && !used.contains(c)) {
            used.insert(c);
            return c;
        }
    for (;;) {
        std::string c = {letters.empty() ? 'X' : letters[0], char('A' + rng.rand(26) - 1),
                         char('A' + rng.rand(26) - 1)};
        if (!used.contains(c)) {
            used.insert(c);
            return c;
        }
    }
}

std::string drawArena(Random& rng, const std::string& city, std::set<std::string>& used) {
    for (int tries = 0; tries < 200; ++tries) {
        std::string kind(pick(rng, names::arenaKinds()));
        std::string arena =
            rng.rnd() < 0.3 ? city + " " + kind : std::string(pick(rng, names::arenaWords())) + " " + kind;
        if (arena.size() <= kArenaWidth && !used.contains(arena)) {
            used.insert(arena);
            return arena;
        }
    }
    return city.substr(0, kArenaWidth - 6) + " Arena";
}

}  // namespace

std::vector<TeamIdentity> drawTeamIdentities(Random& rng, int count) {
    std::set<std::string> cities, nicknames, codes, arenas;
    std::vector<TeamIdentity> teams;
    teams.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i) {
        TeamIdentity t;
        t.city = drawCity(rng, cities);
        t.nickname = drawNickname(rng, nicknames);
        t.abbrev = drawAbbrev(rng, t.city, codes);
        t.arena = drawArena(rng, t.city, arenas);
        const Colour& back = kPalette[std::size_t(rng.rand(int(kPalette.size())) - 1)];
        const Colour* third = &kPalette[std::size_t(rng.rand(int(kPalette.size())) - 1)];
        if (third->value == back.value) third = &kPalette[(std::size_t(third - kPalette.data()) + 1) % kPalette.size()];
        t.backColor = back.value;
        t.foreColor = back.light ? rgb(17, 17, 17) : (rng.rnd() < 0.75 ? kWhite : rgb(252, 181, 20));
        if (t.foreColor == back.value) t.foreColor = kWhite;
        t.thirdColor = third->value;
        teams.push_back(std::move(t));
    }
    return teams;
}

}  // namespace tallyrink::newleague
