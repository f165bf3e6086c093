// Commands about the program's places and the open league: where things
// are, what the league holds, and opening another league.

#include <fmt/core.h>

#include <cstdlib>
#include <system_error>

#include "app/cli.h"

namespace tallyrink::cli {

namespace {

std::filesystem::path executableDir() {
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::path() : exe.parent_path();
}

std::filesystem::path absoluteOf(const std::string& folder) {
    std::error_code ec;
    auto full = std::filesystem::absolute(folder, ec);
    return ec ? std::filesystem::path(folder) : full.lexically_normal();
}

void printLines(const std::vector<InfoLine>& lines) {
    for (const auto& [caption, value] : lines) fmt::print("{:<16}{}\n", caption + ":", value);
}

void info(const GlobalOptions& options) {
    auto session = startSession(options);
    const auto& league = session->league();
    std::vector<InfoLine> lines = {
        {"Program folder", session->places().ProgramDir.string()},
        {"Data root", session->places().dataRoot().string()},
        {"League", session->LeagueDir().string()},
        {"Active teams", std::to_string(league.ActiveTeamCount())},
        {"Players", std::to_string(league.PlayerCount())},
    };
    const auto& rules = session->rules();
    if (!rules.LeagueName.blank()) lines.insert(lines.begin() + 2, {"League name", rules.LeagueName.str()});
    int year = league.ActiveTeamCount() > 0 ? leagueYear(session->LeagueDir()) : 0;
    if (year > 0) lines.push_back({"Season", std::to_string(year)});
    const auto& schedule = session->schedule();
    std::size_t open = 0, played = 0;
    for (const auto& g : schedule.rows()) {
        open += isOpen(g);
        played += statusOf(g) == kPlayed;
    }
    lines.push_back({"Schedule", fmt::format("{} ({} games: {} played, {} to play)", session->scheduleFileName(),
                                             open + played, played, open)});
    if (auto date = schedule.leagueDate())
        lines.push_back({"League date", date->year > 0
                                            ? fmt::format("{:04}-{:02}-{:02}", date->year, date->month, date->day)
                                            : fmt::format("{:02}-{:02}", date->month, date->day)});
    for (const auto& source : options.infoSources) {
        auto more = source(*session);
        lines.insert(lines.end(), more.begin(), more.end());
    }
    printLines(lines);
}

void open(const GlobalOptions& options, const std::string& folder) {
    if (isSeasonsFolder(folder)) throw CommandError("Please select a season or hit cancel.");
    GlobalOptions startOptions = options;
    startOptions.league.clear();
    auto session = startSession(startOptions);
    if (auto refusal = session->OpenLeague(absoluteOf(folder))) throw CommandError(*refusal);
    const auto& league = session->league();
    fmt::print("Opened {}: {} active teams, {} players\n", session->LeagueDir().string(), league.ActiveTeamCount(),
               league.PlayerCount());
}

}  // namespace

SessionOptions sessionOptions(const GlobalOptions& options) {
    SessionOptions out;
    if (!options.programDir.empty()) out.places.programDir = absoluteOf(options.programDir);
    if (!options.dataRoot.empty()) out.places.dataDrive = absoluteOf(options.dataRoot);
    if (const char* home = std::getenv("HOME")) out.places.home = home;
    out.places.executableDir = executableDir();
    if (!options.league.empty()) out.league = absoluteOf(options.league);
    return out;
}

std::unique_ptr<Session> startSession(const GlobalOptions& options) {
    auto sessionOpts = sessionOptions(options);
    if (sessionOpts.league && !canEnterFolder(*sessionOpts.league))
        throw CommandError(options.league + " is not available!");
    auto session = std::make_unique<Session>(std::move(sessionOpts), options.hooks);
    session->StartUp();
    return session;
}

int findTeam(const TeamDirectory& teams, const std::string& text) {
    auto match = teams.find(text);
    if (match.ambiguous)
        throw CommandError(fmt::format("More than one team is called \"{}\": use its code or number", text));
    if (match.team == 0) throw CommandError(fmt::format("No team of this league is called \"{}\"", text));
    return match.team;
}

std::filesystem::path leagueDir(const GlobalOptions& options) {
    if (!options.league.empty()) return absoluteOf(options.league);
    Session session(sessionOptions(options), options.hooks);
    session.HkLoadSetup();
    return session.LeagueDir();
}

void addLeagueCommands(CLI::App& app, GlobalOptions& options) {
    auto* infoCmd = app.add_subcommand("info", "Show the program's folders and what the open league holds");
    infoCmd->callback([&options] { info(options); });

    auto* openCmd = app.add_subcommand("open", "Make a folder the open league");
    auto folder = std::make_shared<std::string>();
    openCmd->add_option("folder", *folder, "League folder")->required();
    openCmd->callback([&options, folder] { open(options, *folder); });
}

}  // namespace tallyrink::cli
