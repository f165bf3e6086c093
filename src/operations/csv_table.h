#pragma once

// A comma-separated file with a header row, read whole. Cells are looked up
// by column name, so files whose columns come in another order or carry
// extra columns read the same. Every error names the file, and where it
// applies the line and the column, so that a user can fix the input.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tallyrink {

class CsvTable {
public:
    // Reads `path`; throws FileError when it can't be read or has no header.
    static CsvTable read(const std::filesystem::path& path);
    // Parses text already in memory; `name` is what messages call the file.
    static CsvTable parse(std::string name, std::string_view text);

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] std::size_t rows() const { return rows_.size(); }
    [[nodiscard]] const std::vector<std::string>& header() const { return header_; }
    [[nodiscard]] bool hasColumn(std::string_view column) const;

    // Index of a column; throws FileError naming the file and the column.
    [[nodiscard]] std::size_t column(std::string_view column) const;

    [[nodiscard]] const std::string& text(std::size_t row, std::size_t col) const;
    // A whole number; an empty cell counts as 0. Anything else throws
    // FileError naming the file, the line and the column.
    [[nodiscard]] long number(std::size_t row, std::size_t col) const;
    // Line of the file a row came from (the header is line 1).
    [[nodiscard]] std::size_t line(std::size_t row) const { return lines_[row]; }

private:
    std::string name_;
    std::vector<std::string> header_;
    std::vector<std::vector<std::string>> rows_;
    std::vector<std::size_t> lines_;
};

}  // namespace tallyrink
