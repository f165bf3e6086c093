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
    for (std::string& n : names) {
        std::string key = upper(n);
        fs::path path = dir_ / n;
        byUpperName_.try_emplace(std::move(key), Entry{std::move(n), std::move(path)});
    }
}

fs::path FolderNames::find(std::string_view name) {
    if (name.find_first_of("/\\") != std::string_view::npos) return findFile(dir_, name);
    std::string key = upper(name);
    auto it = byUpperName_.find(key);
    if (it != byUpperName_.end()) {
        // The exact spelling, when it is there, wins over any other.
        Entry& e = it->second;
        if (e.name != name && fs::exists(dir_ / name)) e = Entry{std::string(name), dir_ / name};
        return e.path;
    }
    fs::path path = dir_ / name;
    byUpperName_.emplace(std::move(key), Entry{std::string(name), path});
    return path;
}

}  // namespace tallyrink
