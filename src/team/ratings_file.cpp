#include "team/ratings_file.h"

#include <fmt/core.h>

#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "league/files.h"
#include "league/random.h"

namespace tallyrink {

namespace {

std::string upper(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

std::string trim(std::string_view s) {
    auto b = s.find_first_not_of(" \t\r");
    if (b == std::string_view::npos) return {};
    auto e = s.find_last_not_of(" \t\r");
    return std::string(s.substr(b, e - b + 1));
}

std::string nameKey(std::string_view first, std::string_view last) {
    return upper(trim(first)) + "|" + upper(trim(last));
}

// Cells of one line; a cell in double quotes may hold commas and doubled quotes.
std::vector<std::string> cells(std::string_view line) {
    std::vector<std::string> out;
    std::string cell;
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (quoted) {
            if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
                cell += '"';
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                cell += c;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            out.push_back(trim(cell));
            cell.clear();
        } else {
            cell += c;
        }
    }
    out.push_back(trim(cell));
    return out;
}

// A whole number, or a decimal one rounded; blank counts as 0.
std::optional<int> numberOf(const std::string& text) {
    if (text.empty()) return 0;
    char* end = nullptr;
    double v = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || !std::isfinite(v) || std::fabs(v) > 1e6) return std::nullopt;
    return static_cast<int>(roundHalfEven(v));
}

std::string quoted(const std::string& text) {
    if (text.find_first_of(",\"") == std::string::npos) return text;
    std::string out = "\"";
    for (char c : text) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

constexpr std::size_t kNamedNumbers = 11;  // offense to takeaways
constexpr std::size_t kNumbers = 14;

}  // namespace

const HistoricalRating* HistoricalRatings::find(const PlayerRecord& p) const {
    auto it = byName.find(nameKey(p.FirstName.str(), p.LastName.str()));
    return it == byName.end() ? nullptr : &it->second;
}

HistoricalRatings parseHistoricalRatings(std::string_view text) {
    HistoricalRatings out;
    while (!text.empty()) {
        auto eol = text.find('\n');
        std::string_view line = text.substr(0, eol);
        text = eol == std::string_view::npos ? std::string_view() : text.substr(eol + 1);

        auto c = cells(line);
        if (c.size() < 2 + kNamedNumbers || (c[0].empty() && c[1].empty())) continue;
        std::array<int, kNumbers> n{};
        bool ok = true;
        for (std::size_t i = 0; i < kNumbers && ok; ++i) {
            if (2 + i >= c.size()) break;
            auto v = numberOf(c[2 + i]);
            if (v)
                n[i] = *v;
            else
                ok = false;
        }
        if (!ok) continue;  // a header, or a line nobody can read
        HistoricalRating r{c[0], c[1], n[0], n[1], n[2],  n[3],  n[4],  n[5],
                           n[6], n[7], n[8], n[9], n[10], n[11], n[12], n[13]};
        out.byName.emplace(nameKey(r.firstName, r.lastName), std::move(r));
    }
    return out;
}

HistoricalRatings readHistoricalRatings(const std::filesystem::path& programDir) {
    try {
        auto bytes = readBytes(findFile(programDir, kRatingsCsvFile));
        return parseHistoricalRatings(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    } catch (const std::exception&) {
        return {};  // the historical ratings are an extra; without them the generated values stand
    }
}

std::string historicalNote(const HistoricalRating& r) {
    const std::pair<const char*, int> tagged[] = {
        {" Bk:", r.blocks},  {" Hit:", r.hits},    {" TkA:", r.takeaways}, {" Skt:", r.skating}, {" Pass:", r.passing},
        {" FO:", r.faceoff}, {" Off:", r.offense}, {" S-I:", r.shotIn},    {" S-O:", r.shotOut}, {" Def:", r.defense}};
    std::string note;
    for (const auto& [tag, value] : tagged)
        if (value > 0) note += fmt::format("{}{}", tag, value);
    return note;
}

std::vector<std::string> ratingsCsvLines(std::span<const PlayerRecord> players) {
    std::vector<std::string> lines;
    lines.reserve(players.size() + 1);
    lines.emplace_back(
        "First Name,Last Name,Offense,Defense,Faceoff,Passing,Shot In,Shot Out,Skating,Penalty Shot,Blocks,Hits,"
        "Takeaways,Sportsmanship,Penalty Kill,Goalie");
    for (const PlayerRecord& p : players)
        lines.push_back(fmt::format("{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}", quoted(p.FirstName.str()),
                                    quoted(p.LastName.str()), p.RatingOffense, p.RatingDefense, p.RatingFaceoff,
                                    p.RatingPassing, p.RatingShotIn, p.RatingShotOut, p.RatingSkate,
                                    p.RatingPenaltyShot, p.RatingBlock, p.RatingHit, p.RatingTakeaway,
                                    p.RatingSportsmanship, p.RatingPenaltyKill, p.RatingGoalie));
    return lines;
}

void writeRatingsCsv(const std::filesystem::path& folder, std::span<const PlayerRecord> players) {
    writeLines(findFile(folder, kRatingsCsvFile), ratingsCsvLines(players));
}

}  // namespace tallyrink
