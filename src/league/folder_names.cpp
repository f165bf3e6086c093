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
    for (std::string& n : names) byUpperName_.try_emplace(upper(n), std::move(n));
}

fs::path FolderNames::find(std::string_view name) {
    if (name.find_first_of("/\\") != std::string_view::npos) return findFile(dir_, name);
    std::string key = upper(name);
    auto it = byUpperName_.find(key);
    if (it != byUpperName_.end()) {
        // The exact spelling, when it is there, wins over any other.
        if (it->second != name && fs::exists(dir_ / name)) it->second = std::string(name);
        return dir_ / it->second;
    }
    byUpperName_.emplace(std::move(key), std::string(name));
    return dir_ / name;
}

}  // namespace tallyrink
