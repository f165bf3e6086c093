#include "league/places.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <system_error>
#include <vector>

#include "league/files.h"
#include "league/setup.h"

namespace tallyrink {

namespace {

// Trailing blanks are no part of a folder name written by hand.
std::string trimRight(std::string s) {
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.pop_back();
    return s;
}

bool usableDataDrive(const std::string& line) {
    if (line.empty()) return false;
    fs::path p(line);
    return p.is_absolute() && canEnterFolder(p);
}

void writeQuietly(const fs::path& file, const std::vector<std::string>& lines) {
    try {
        writeLines(file, lines);
    } catch (const FileError&) {
        // An installed program folder is often read-only: the value is still
        // right for this run and is worked out again next time.
    }
}

}  // namespace

fs::path Places::dataRoot() const { return DataDrive / "norvane-data" / "Hockey"; }

fs::path Places::seasonsDir() const { return dataRoot() / "Seasons"; }

std::string Places::defaultLeagueDir() const { return (seasonsDir() / "").string(); }

fs::path Places::setupFile(int editionYear) const { return findFile(ProgramDir, setupFileName(editionYear)); }

fs::path Places::recentFile() const { return findFile(dataRoot(), kRecentFileName); }

fs::path Places::driveFile() const { return findFile(ProgramDir, kDriveFileName); }

fs::path Places::photoFolder(const fs::path& leagueDir, bool leaguePhotoFolderRule) const {
    fs::path shared = dataRoot() / "PlayerPhotos";
    if (!leaguePhotoFolderRule) return shared;
    fs::path name = leagueDir.filename();
    if (name.empty()) name = leagueDir.parent_path().filename();
    return name.empty() ? shared : shared / name;
}

fs::path defaultProgramDir(const fs::path& executableDir) {
    std::error_code ec;
    if (!executableDir.empty()) {
        fs::path besideExecutable = executableDir.parent_path() / "share" / "tallyrink";
        if (fs::is_directory(besideExecutable, ec)) return besideExecutable;
    }
    fs::path installed = TALLYRINK_INSTALLED_DATA_DIR;
    if (fs::is_directory(installed, ec)) return installed;
    return fs::path(TALLYRINK_DATA_DIR);
}

bool canEnterFolder(const fs::path& folder) {
    std::error_code ec;
    if (folder.empty() || !fs::is_directory(folder, ec)) return false;
    fs::directory_iterator it(folder, ec);
    return !ec;
}

bool isSeasonsFolder(const fs::path& folder) {
    std::string text = folder.string();
    while (!text.empty() && (text.back() == '/' || text.back() == '\\')) text.pop_back();
    constexpr std::string_view kSeasons = "SEASONS";
    if (text.size() < kSeasons.size()) return false;
    auto tail = std::string_view(text).substr(text.size() - kSeasons.size());
    return std::equal(tail.begin(), tail.end(), kSeasons.begin(),
                      [](char a, char b) { return std::toupper(static_cast<unsigned char>(a)) == b; });
}

fs::path readDriveFile(const fs::path& programDir, const fs::path& fallback) {
    fs::path file = findFile(programDir, kDriveFileName);
    std::vector<std::string> lines;
    try {
        lines = readLines(file);
    } catch (const FileError&) {
        lines.clear();
    }
    std::string first = lines.empty() ? std::string() : trimRight(lines.front());
    if (usableDataDrive(first)) return fs::path(first);
    writeQuietly(file, {fallback.string()});
    return fallback;
}

Places resolvePlaces(const PlaceOptions& options) {
    Places places;
    places.ProgramDir = options.programDir.empty() ? defaultProgramDir(options.executableDir) : options.programDir;
    if (!options.dataDrive.empty()) {
        places.DataDrive = options.dataDrive;
    } else {
        std::error_code ec;
        fs::path home = options.home.empty() ? fs::current_path(ec) : options.home;
        places.DataDrive = readDriveFile(places.ProgramDir, home);
    }
    return places;
}

void prepareDataRoot(const Places& places, int editionYear) {
    std::error_code ec;
    for (auto folder : kSharedFolders) fs::create_directories(places.dataRoot() / folder, ec);
    std::string year = std::to_string(editionYear);
    for (const auto& stamp : kEditionStampFiles) {
        fs::path file = findFile(places.dataRoot() / stamp.folder, stamp.file);
        try {
            auto lines = readLines(file);
            if (lines.empty() || trimRight(lines.front()) != year) writeLines(file, {year});
        } catch (const FileError&) {
            // A media folder that can't be written keeps its old stamp.
        }
    }
}

}  // namespace tallyrink
