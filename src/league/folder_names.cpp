#include "league/folder_names.h"

#include <algorithm>
#include <vector>

#include "league/files.h"

namespace tallyrink {

namespace fs = std::filesystem;

namespace {

std::string upper(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

}  // namespace

FolderNames::FolderNames(fs::path dir) : dir_(std::move(dir)) {
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(dir_, ec), end; !ec && it != end; it.increment(ec))
        names.push_back(it->path().filename().string());
    // Sorted, so that of two names differing only in case the same one wins
    // as with findFile.
    std::sort(names.begin(), names.end());
    for (std::string& n : names) spellingOf_.try_emplace(upper(n), std::move(n));
}

const fs::path& FolderNames::find(std::string_view name) {
    // A character at a time: find_first_of would search the pair for each one.
    if (std::any_of(name.begin(), name.end(), [](char c) { return c == '/' || c == '\\'; })) {
        auto it = subpaths_.find(name);
        if (it == subpaths_.end()) it = subpaths_.emplace(std::string(name), fs::path()).first;
        it->second = findFile(dir_, name);
        return it->second;
    }
    if (auto it = paths_.find(name); it != paths_.end()) return it->second;
    auto spelling = spellingOf_.try_emplace(upper(name), name).first;
    // The exact spelling, when it is there, wins over any other.
    std::string_view onDisk = spelling->second;
    if (onDisk != name && fs::exists(dir_ / name)) onDisk = name;
    return paths_.emplace(std::string(name), dir_ / onDisk).first->second;
}

}  // namespace tallyrink
