#include "operations/csv_table.h"

#include <fmt/format.h>

#include <charconv>

#include "league/files.h"
#include "league/text.h"

namespace tallyrink {

namespace {

bool blankRecord(const std::vector<std::string>& cells) { return cells.size() == 1 && cells[0].empty(); }

}  // namespace

CsvTable CsvTable::read(const std::filesystem::path& path) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) throw FileError(fmt::format("{}: file not found", path.string()));
    auto bytes = readBytes(path);
    return parse(path.string(), std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

CsvTable CsvTable::parse(std::string name, std::string_view text) {
    CsvTable t;
    t.name_ = std::move(name);
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    std::size_t pos = 0;
    std::size_t line = 1;
    t.header_ = splitCsvRecord(text, pos, line);
    if (blankRecord(t.header_)) throw FileError(fmt::format("{}: no header row", t.name_));
    while (pos < text.size()) {
        std::size_t first = line;
        auto cells = splitCsvRecord(text, pos, line);
        if (blankRecord(cells)) continue;
        if (cells.size() != t.header_.size())
            throw FileError(fmt::format("{}, line {}: {} cells where the header has {}", t.name_, first, cells.size(),
                                        t.header_.size()));
        t.rows_.push_back(std::move(cells));
        t.lines_.push_back(first);
    }
    return t;
}

bool CsvTable::hasColumn(std::string_view column) const {
    for (const auto& h : header_)
        if (h == column) return true;
    return false;
}

std::size_t CsvTable::column(std::string_view column) const {
    for (std::size_t i = 0; i < header_.size(); ++i)
        if (header_[i] == column) return i;
    throw FileError(fmt::format("{}: missing column \"{}\"", name_, column));
}

const std::string& CsvTable::text(std::size_t row, std::size_t col) const { return rows_[row][col]; }

long CsvTable::number(std::size_t row, std::size_t col) const {
    const std::string& cell = rows_[row][col];
    if (cell.empty()) return 0;
    long value = 0;
    const char* begin = cell.data();
    const char* end = cell.data() + cell.size();
    if (*begin == '+') ++begin;
    auto [ptr, ec] = std::from_chars(begin, end, value);
    if (ec != std::errc() || ptr != end)
        throw FileError(fmt::format("{}, line {}, column \"{}\": \"{}\" is not a whole number", name_, lines_[row],
                                    header_[col], cell));
    return value;
}

}  // namespace tallyrink
