#pragma once

// The three places the program works in: the program folder (the program's
// own files, the drive file and the set-up file), the data root below the
// data drive (folders every league shares and the list of recent leagues) and
// the league folders. The data drive is a path prefix, by default the user's
// home; the drive file in the program folder remembers it between runs.

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace tallyrink {

namespace fs = std::filesystem;

inline constexpr std::string_view kDriveFileName = "Norvane-Hockey-Drive";
inline constexpr std::string_view kRecentFileName = "Hockey-Recent";

inline constexpr std::array<std::string_view, 7> kSharedFolders = {"PlayerPhotos", "TeamLogos", "Rinks", "Sounds",
                                                                   "Seasons",      "Uniforms",  "Arenas"};

// A media folder of the data root and the file in it that holds the edition
// year of its media.
struct EditionStampFile {
    std::string_view folder;
    std::string_view file;
};
inline constexpr std::array<EditionStampFile, 4> kEditionStampFiles = {{
    {"Sounds", "Hockey-Sound-Edition"},
    {"Arenas", "Hockey-Arenas-Edition"},
    {"Rinks", "Hockey-Rinks-Edition"},
    {"TeamLogos", "Hockey-TeamLogos-Edition"},
}};

struct Places {
    fs::path ProgramDir;
    fs::path DataDrive;  // path prefix that carries the data root

    // DataDrive/norvane-data/Hockey
    [[nodiscard]] fs::path dataRoot() const;
    // The folder below which leagues live by default: dataRoot/Seasons.
    [[nodiscard]] fs::path seasonsDir() const;
    // The league folder used when the recent list names none: the seasons
    // folder, written with its trailing separator.
    [[nodiscard]] std::string defaultLeagueDir() const;
    [[nodiscard]] fs::path setupFile(int editionYear) const;
    [[nodiscard]] fs::path recentFile() const;
    [[nodiscard]] fs::path driveFile() const;
    // The player photo folder of a league: the shared one, or with the
    // league's own-photo rule a folder below it named after the league.
    [[nodiscard]] fs::path photoFolder(const fs::path& leagueDir, bool leaguePhotoFolderRule) const;
};

// Where the program looks for its own files when no folder is named: an
// installed data folder next to the executable (../share/tallyrink), then the
// installation's data folder, then the source tree's data folder.
fs::path defaultProgramDir(const fs::path& executableDir);

// A folder the program can change into and list.
bool canEnterFolder(const fs::path& folder);

// True for a path ending in "Seasons" (any case, trailing separator or
// not): the folder that holds the leagues rather than a league.
bool isSeasonsFolder(const fs::path& folder);

// The data drive from the drive file in the program folder. A missing file
// is created empty; a first line that is empty or doesn't name a usable
// (absolute, existing) folder gives `fallback`, and the file is rewritten
// with it. A program folder that can't be written is not an error.
fs::path readDriveFile(const fs::path& programDir, const fs::path& fallback);

// What decides the places: the command line's or the environment's choices,
// and the user's home as the last resort for the data drive.
struct PlaceOptions {
    fs::path programDir;     // empty: defaultProgramDir(executableDir)
    fs::path dataDrive;      // empty: the drive file, else `home`
    fs::path home;           // empty: the current folder
    fs::path executableDir;  // where the program runs from
};

// Works out the places. A data drive named in the options is used as it is
// and leaves the drive file alone: it is a choice for this run only.
Places resolvePlaces(const PlaceOptions& options);

// Start-up's care of the data root: creates the shared folders that are
// missing and rewrites each edition stamp file whose first line isn't the
// edition year. Nothing here fails: a folder or file that can't be made is
// passed over.
void prepareDataRoot(const Places& places, int editionYear);

}  // namespace tallyrink
