#include "league/era.h"

#include <fmt/format.h>

#include <cmath>
#include <stdexcept>

#include "league/files.h"

namespace tallyrink::codec {

template <>
struct FieldTable<EraRecord> {
    static constexpr auto fields = std::tuple{
        Field{"Games", 0, &EraRecord::Games},
        Field{"PowerPlayPct", 2, &EraRecord::PowerPlayPct},
        Field{"GoalsPerTeam", 10, &EraRecord::GoalsPerTeam},
        Field{"PimPerGame", 18, &EraRecord::PimPerGame},
        Field{"AssistsPerGoal", 26, &EraRecord::AssistsPerGoal},
        Field{"CollegeGames", 34, &EraRecord::CollegeGames},
        Field{"CollegePowerPlayPct", 36, &EraRecord::CollegePowerPlayPct},
        Field{"CollegeGoalsPerTeam", 44, &EraRecord::CollegeGoalsPerTeam},
        Field{"CollegePim", 52, &EraRecord::CollegePim},
        Field{"CollegeAssistsPerGoal", 60, &EraRecord::CollegeAssistsPerGoal},
        Field{"SavePct", 68, &EraRecord::SavePct},
        Field{"CollegeSavePct", 76, &EraRecord::CollegeSavePct},
        Field{"FightsPerGame", 84, &EraRecord::FightsPerGame},
    };
};

static_assert(tilesExactly<EraRecord>());

TALLYRINK_INSTANTIATE_RECORD_CODEC(EraRecord)

}  // namespace tallyrink::codec

namespace tallyrink {

namespace {

// The last record of the file may have been written without the rest of its
// slot. What lies past the last year isn't the table's to judge.
bool isEraFileLength(std::size_t length) {
    if (length > EraTable::kYears * kEraSlot) return true;
    return length % kEraSlot == 0 || length % kEraSlot == codec::Layout<EraRecord>::size;
}

void clearIfNotFigure(double& v, double highest) {
    if (!std::isfinite(v) || v < 0 || v > highest) v = 0;
}

void sanitize(EraRecord& e) {
    if (e.Games < 0) e.Games = 0;
    if (e.CollegeGames < 0) e.CollegeGames = 0;
    clearIfNotFigure(e.PowerPlayPct, 100);
    clearIfNotFigure(e.CollegePowerPlayPct, 100);
    clearIfNotFigure(e.SavePct, 100);
    clearIfNotFigure(e.CollegeSavePct, 100);
    clearIfNotFigure(e.GoalsPerTeam, 1000);
    clearIfNotFigure(e.CollegeGoalsPerTeam, 1000);
    clearIfNotFigure(e.PimPerGame, 10000);
    clearIfNotFigure(e.CollegePim, 10000);
    clearIfNotFigure(e.AssistsPerGoal, 100);
    clearIfNotFigure(e.CollegeAssistsPerGoal, 100);
    if (!std::isfinite(e.FightsPerGame) || e.FightsPerGame < 0) e.FightsPerGame = 0;
    if (e.FightsPerGame > 20) e.FightsPerGame = 20;
}

// Copies the figures of another year; the slot's unused tail stays this year's.
void takeFiguresOf(EraRecord& to, const EraRecord& from) {
    auto tail = to.SlotTail;
    to = from;
    to.SlotTail = tail;
}

void fillCollege(EraRecord& e) {
    if (e.CollegeAssistsPerGoal == 0) e.CollegeAssistsPerGoal = e.AssistsPerGoal;
    if (e.CollegeGoalsPerTeam == 0) e.CollegeGoalsPerTeam = e.GoalsPerTeam * 1.1;
    if (e.CollegePim == 0) e.CollegePim = e.PimPerGame * 0.75;
    if (e.CollegePowerPlayPct == 0) e.CollegePowerPlayPct = e.PowerPlayPct;
    if (e.CollegeSavePct == 0) e.CollegeSavePct = e.SavePct * 0.97;
}

}  // namespace

EraFigures figuresOf(const EraRecord& e, EraLevel level) {
    if (level == EraLevel::College)
        return {e.CollegeGames > 0 ? e.CollegeGames : e.Games,
                e.CollegePowerPlayPct,
                e.CollegeGoalsPerTeam,
                e.CollegePim,
                e.CollegeAssistsPerGoal,
                e.CollegeSavePct,
                e.FightsPerGame};
    return {e.Games, e.PowerPlayPct, e.GoalsPerTeam, e.PimPerGame, e.AssistsPerGoal, e.SavePct, e.FightsPerGame};
}

const EraRecord& EraTable::year(int y) const {
    if (!contains(y)) throw std::out_of_range(fmt::format("no era figures for {}", y));
    return years_[static_cast<std::size_t>(y - kFirstYear)];
}

EraRecord& EraTable::year(int y) {
    if (!contains(y)) throw std::out_of_range(fmt::format("no era figures for {}", y));
    return years_[static_cast<std::size_t>(y - kFirstYear)];
}

const EraRecord& EraTable::yearOr(int y, int fallbackYear) const { return year(contains(y) ? y : fallbackYear); }

EraTable readEraFile(const fs::path& path) {
    const auto bytes = readBytes(path);
    if (!isEraFileLength(bytes.size()))
        throw FileError(
            fmt::format("{} is not an era table: its length of {} bytes is not a whole number of "
                        "{}-byte records",
                        path.string(), bytes.size(), kEraSlot));
    EraTable table;
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
        const std::size_t begin = static_cast<std::size_t>(y - EraTable::kFirstYear) * kEraSlot;
        if (begin >= bytes.size()) break;
        const std::size_t n = std::min(kEraSlot, bytes.size() - begin);
        table.year(y) = codec::fromSlot<EraRecord>(std::span(bytes).subspan(begin, n));
    }
    const std::size_t whole = EraTable::kYears * kEraSlot;
    if (bytes.size() > whole) table.trailing.assign(bytes.begin() + static_cast<std::ptrdiff_t>(whole), bytes.end());
    return table;
}

void fillEraGaps(EraTable& table) {
    int first = 0;
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
        sanitize(table.year(y));
        if (first == 0 && table.year(y).Games > 0) first = y;
    }
    if (first != 0) {
        for (int y = EraTable::kFirstYear; y < first; ++y) takeFiguresOf(table.year(y), table.year(first));
        for (int y = first + 1; y <= EraTable::kLastYear; ++y)
            if (table.year(y).Games == 0) takeFiguresOf(table.year(y), table.year(y - 1));
    }
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
        auto& e = table.year(y);
        fillCollege(e);
        if (e.FightsPerGame == 0) e.FightsPerGame = y <= 1969 ? 0.3 : 0.5;
    }
}

EraTable LoadEra(const fs::path& programDir) {
    auto table = readEraFile(findFile(programDir, kEraFileName));
    fillEraGaps(table);
    return table;
}

void writeEraFile(const fs::path& path, const EraTable& table) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(EraTable::kYears * kEraSlot + table.trailing.size());
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
        const auto slot = codec::toSlot(table.year(y));
        bytes.insert(bytes.end(), slot.begin(), slot.end());
    }
    bytes.insert(bytes.end(), table.trailing.begin(), table.trailing.end());
    writeFileAtomic(path, bytes);
}

void SaveEra(const fs::path& programDir, const EraTable& table) {
    writeEraFile(findFile(programDir, kEraFileName), table);
}

}  // namespace tallyrink
