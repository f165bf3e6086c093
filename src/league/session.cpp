#include "league/session.h"

#include <system_error>

#include "league/files.h"

namespace tallyrink {

Session::Session(SessionOptions options, SessionHooks hooks)
    : options_(std::move(options)),
      hooks_(std::move(hooks)),
      random_(options_.seed.value_or(Random::freshSeed())),
      places_(resolvePlaces(options_.places)) {}

void Session::run(const std::function<void(Session&)>& hook) {
    if (hook) hook(*this);
}

void Session::StartUp() {
    prepareDataRoot(places_, kEditionYear);
    HkLoadSetup();
    HkRulesLoad();
    LoadTeams();
    LoadSchedule();
    LoadEra();
    // The rules and the teams are known now; the lists of the set-up depend on them.
    HkLoadSetup();
    run(hooks_.loadPhraseFile);
    run(hooks_.startSpeech);
    loadPlayerTable();
    HkLoadSetup();
}

void Session::HkLoadSetup() {
    places_ = resolvePlaces(options_.places);
    readRecentList();
    readSetupRecord();
}

void Session::readRecentList() {
    recent_ = RecentList::read(places_.recentFile());
    if (recent_.first().size() < kShortestFirstEntry) recent_.setFirst(places_.defaultLeagueDir());
    leagueDir_ = fs::path(withoutTrailingSeparator(recent_.first()));
    std::error_code ec;
    fs::create_directories(leagueDir_, ec);
    if (options_.league) leagueDir_ = fs::path(withoutTrailingSeparator(options_.league->string()));
    setPhotoFolder();
}

void Session::readSetupRecord() {
    SetupLoadContext ctx{leagueDir_.string(), hooks_.voiceCount ? hooks_.voiceCount() : std::nullopt};
    setup_ = loadSetupFile(places_.setupFile(kEditionYear), ctx);
}

bool Session::SaveSetup() {
    setup_.SetupLeagueDir.assign(leagueDir_.string());
    try {
        saveSetupFile(places_.setupFile(kEditionYear), setup_);
        return true;
    } catch (const FileError&) {
        return false;
    }
}

void Session::HkRulesLoad() {
    // Rules load before the teams, but their year-dependent defaults follow
    // team 1, so its year is read from the file itself.
    int year = leagueYear(leagueDir_);
    rules_ = tallyrink::HkRulesLoad(leagueDir_, year);
    // A file written by an earlier edition upgrades itself on first use.
    auto onDisk = readBytes(findFile(leagueDir_, kRulesFileName));
    if (onDisk.empty()) return;
    onDisk.resize(codec::Layout<RulesRecord>::size);
    auto upgraded = codec::toSlot(rules_);
    upgraded.resize(codec::Layout<RulesRecord>::size);
    if (upgraded == onDisk) return;
    try {
        HkRulesSave(leagueDir_, rules_);
    } catch (const FileError&) {
        // A league on a read-only medium plays with the upgraded rules in memory.
    }
}

std::string Session::scheduleFileName() const {
    auto name = rules_.ScheduleFile.str();
    return name.empty() ? std::string(kDefaultScheduleFile) : name;
}

void Session::LoadSchedule() { schedule_ = Schedule::load(leagueDir_, scheduleFileName()); }

void Session::LoadEra() { era_ = tallyrink::LoadEra(places_.ProgramDir); }

int Session::eraGames(int year) const {
    if (!EraTable::contains(year)) return kDefaultEraGames;
    int games = era_.year(year).Games;
    return games > 0 ? games : kDefaultEraGames;
}

void Session::LoadTeams() {
    league_.setDir(leagueDir_);
    league_.LoadTeams();
}

void Session::loadPlayerTable() {
    league_.setDir(leagueDir_);
    league_.loadActivePlayers();
}

void Session::LoadDataBase() {
    league_.setDir(leagueDir_);
    tallyrink::LoadDataBase(league_, [this](int year) { return eraGames(year); });
}

std::optional<std::string> Session::OpenLeague(const fs::path& folder) {
    if (!canEnterFolder(folder)) return folder.string() + " is not available!";
    std::error_code ec;
    fs::path full = fs::absolute(folder, ec);
    std::string entry = withoutTrailingSeparator((ec ? folder : full.lexically_normal()).string());

    RecentList next = recent_;
    next.push(entry);
    next.write(places_.recentFile());
    recent_ = std::move(next);
    leagueDir_ = fs::path(entry);
    options_.league.reset();

    SaveSetup();
    // The recent list in memory is the one just written, and names this
    // league even where the file leaves out a short folder name.
    readSetupRecord();
    HkRulesLoad();
    LoadTeams();
    loadPlayerTable();
    LoadSchedule();
    run(hooks_.LoadRecords);
    recent_.write(places_.recentFile());
    setPhotoFolder();
    return std::nullopt;
}

void Session::setPhotoFolder() {
    bool own = rules_.PrivateLeaguePhotoFolderCheck == 1;
    photoFolder_ = places_.photoFolder(leagueDir_, own);
    if (own) {
        std::error_code ec;
        fs::create_directories(photoFolder_, ec);
    }
}

void Session::ExitProgram() {
    SaveSetup();
    league_.clear();
}

}  // namespace tallyrink
