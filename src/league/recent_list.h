#pragma once

// The leagues opened last: one folder a line in "Hockey-Recent" of the data
// root, at most 30, the open league first.

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace tallyrink {

inline constexpr std::size_t kRecentListSize = 30;
// Entries this short (a folder right below a drive root) are not written back.
inline constexpr std::size_t kShortestKeptEntry = 11;
// Entry 1 shorter than this names no league; the default folder takes its place.
inline constexpr std::size_t kShortestFirstEntry = 10;

// A league folder as the program holds it: no trailing separator ("/" or
// "\"), except for a root folder.
std::string withoutTrailingSeparator(std::string folder);

class RecentList {
public:
    RecentList() = default;
    explicit RecentList(std::vector<std::string> entries);

    // Reads at most 30 lines; a missing file is created empty.
    static RecentList read(const std::filesystem::path& file);

    // Writes each entry from the first on with one trailing "/", skipping an
    // entry of 10 characters or fewer and one an earlier entry already named.
    // The list in memory is left as it is. Throws FileError.
    void write(const std::filesystem::path& file) const;

    // Moves every entry down one place (the 30th falls off) and puts `folder` first.
    void push(const std::string& folder);

    // Entry 1, or "" when the list is empty.
    [[nodiscard]] std::string first() const;
    void setFirst(const std::string& folder);

    [[nodiscard]] const std::vector<std::string>& entries() const { return entries_; }

private:
    std::vector<std::string> entries_;
};

}  // namespace tallyrink
