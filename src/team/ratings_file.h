#pragma once

// "Hockey Ratings.CSV": one player a line with his first and last name and
// his ratings, in this order: offense, defense, faceoff, passing, shot in,
// shot out, skating, penalty shot, blocks, hits, takeaways, sportsmanship,
// penalty kill and goalie. The rating tool writes it into the league folder
// for the league's players. A copy in the program folder holds historical
// ratings that the tool reads back: they are shown beside the generated
// values, and their sportsmanship and penalty-shot values are taken over.

#include <filesystem>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "league/records.h"

namespace tallyrink {

inline constexpr std::string_view kRatingsCsvFile = "Hockey Ratings.CSV";

struct HistoricalRating {
    std::string firstName;
    std::string lastName;
    int offense = 0;
    int defense = 0;
    int faceoff = 0;
    int passing = 0;
    int shotIn = 0;
    int shotOut = 0;
    int skating = 0;
    int penaltyShot = 0;
    int blocks = 0;
    int hits = 0;
    int takeaways = 0;
    int sportsmanship = 0;
    int penaltyKill = 0;
    int goalie = 0;
};

struct HistoricalRatings {
    // Keyed by first and last name in upper case; the first line of a name wins.
    std::map<std::string, HistoricalRating> byName;

    [[nodiscard]] const HistoricalRating* find(const PlayerRecord& p) const;
    [[nodiscard]] bool empty() const { return byName.empty(); }
};

// Lines that don't hold a name and thirteen numbers are passed over, as is
// a header line; the three last numbers may be missing.
HistoricalRatings parseHistoricalRatings(std::string_view text);
// The file of the program folder; a missing or unreadable one is empty.
HistoricalRatings readHistoricalRatings(const std::filesystem::path& programDir);

// What the file says of a player, the values above 0 each after its tag:
// " Bk:7 Hit:5 ...".
std::string historicalNote(const HistoricalRating& r);

// The file's lines for these players, a header first.
std::vector<std::string> ratingsCsvLines(std::span<const PlayerRecord> players);
// Writes the file into `folder` (temporary file, then rename).
void writeRatingsCsv(const std::filesystem::path& folder, std::span<const PlayerRecord> players);

}  // namespace tallyrink
