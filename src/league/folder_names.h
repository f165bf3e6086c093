#pragma once

// The names of one folder, listed once and kept for a run. Looking a name up
// without regard to case means listing the folder whenever the exact
// spelling isn't there; a season's posting asks for files that don't exist
// yet (each new box, the journal) thousands of times in a folder that grows
// by a box a game, so a run that owns the folder asks this instead.

#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tallyrink {

class FolderNames {
public:
    explicit FolderNames(std::filesystem::path dir);

    // The file as findFile would find it. A name not there yet resolves to
    // `dir / name` and is remembered so, since that is where it will be made.
    // Names with a separator go to findFile.
    std::filesystem::path find(std::string_view name);

    [[nodiscard]] const std::filesystem::path& dir() const { return dir_; }

private:
    std::filesystem::path dir_;
    struct Entry {
        std::string name;            // the spelling on disk, or as first asked for
        std::filesystem::path path;  // dir_ / name, joined once: a run asks for the same files every game
    };
    std::unordered_map<std::string, Entry> byUpperName_;  // the first in sorted order wins
};

}  // namespace tallyrink
