#pragma once

// The names of one folder, listed once and kept for a run. Looking a name up
// without regard to case means listing the folder whenever the exact
// spelling isn't there; a season's posting asks for files that don't exist
// yet (each new box, the journal) thousands of times in a folder that grows
// by a box a game, so a run that owns the folder asks this instead. Each
// spelling asked for is resolved once and its path kept, so the files every
// game names cost a hash of the name from the second game on.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tallyrink {

class FolderNames {
public:
    explicit FolderNames(std::filesystem::path dir);

    // The file as findFile would find it. A name not there yet resolves to
    // `dir / name` and is remembered so, since that is where it will be made.
    // The path is kept: the reference stays good while this lives. Names
    // with a separator go to findFile afresh each time; a later ask of the
    // same such name renews the path the reference shows.
    const std::filesystem::path& find(std::string_view name);

    [[nodiscard]] const std::filesystem::path& dir() const { return dir_; }

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view s) const { return std::hash<std::string_view>{}(s); }
    };
    template <class T>
    using ByName = std::unordered_map<std::string, T, Hash, std::equal_to<>>;

    std::filesystem::path dir_;
    // By the name in capitals: the spelling on disk (the first in sorted
    // order) or, for a file not there at the listing, as first asked for.
    ByName<std::string> spellingOf_;
    ByName<std::filesystem::path> paths_;     // by the spelling asked for
    ByName<std::filesystem::path> subpaths_;  // names with a separator, looked up each time
};

}  // namespace tallyrink
