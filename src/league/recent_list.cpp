#include "league/recent_list.h"

#include <algorithm>

#include "league/files.h"

namespace tallyrink {

namespace {

bool isSeparator(char c) { return c == '/' || c == '\\'; }

std::string trimBlanks(std::string s) {
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.pop_back();
    auto begin = s.find_first_not_of(" \t");
    return begin == std::string::npos ? std::string() : s.substr(begin);
}

}  // namespace

std::string withoutTrailingSeparator(std::string folder) {
    while (folder.size() > 1 && isSeparator(folder.back())) folder.pop_back();
    return folder;
}

RecentList::RecentList(std::vector<std::string> entries) : entries_(std::move(entries)) {
    if (entries_.size() > kRecentListSize) entries_.resize(kRecentListSize);
}

RecentList RecentList::read(const std::filesystem::path& file) {
    auto lines = readLines(file);
    if (lines.size() > kRecentListSize) lines.resize(kRecentListSize);
    for (auto& line : lines) line = trimBlanks(std::move(line));
    return RecentList(std::move(lines));
}

void RecentList::write(const std::filesystem::path& file) const {
    std::vector<std::string> lines;
    std::vector<std::string> seen;
    for (const auto& entry : entries_) {
        std::string folder = withoutTrailingSeparator(entry);
        if (folder.size() < kShortestKeptEntry) continue;
        if (std::find(seen.begin(), seen.end(), folder) != seen.end()) continue;
        seen.push_back(folder);
        lines.push_back(folder == "/" ? folder : folder + "/");
    }
    writeLines(file, lines);
}

void RecentList::push(const std::string& folder) {
    entries_.insert(entries_.begin(), folder);
    if (entries_.size() > kRecentListSize) entries_.resize(kRecentListSize);
}

std::string RecentList::first() const { return entries_.empty() ? std::string() : entries_.front(); }

void RecentList::setFirst(const std::string& folder) {
    if (entries_.empty())
        entries_.push_back(folder);
    else
        entries_.front() = folder;
}

}  // namespace tallyrink
