// Player ratings on the command line: a team's players with their stored
// ratings, the strength of its first five on the ice, and the rating tool
// that works the ratings out from the real season for a team or a league.

#include <fmt/core.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/cli.h"
#include "league/era.h"
#include "league/places.h"
#include "league/team_directory.h"
#include "team/rating_tool.h"
#include "team/team_ratings.h"

namespace tallyrink::cli {

namespace {

namespace fs = std::filesystem;

std::string positionsOf(const PlayerRecord& p) {
    static constexpr const char* kNames[] = {"LW", "C", "RW", "D", "G"};
    std::string out;
    for (std::size_t i = 0; i < 5; ++i)
        if (p.PositionFlags[i] != 0) out += (out.empty() ? "" : "/") + std::string(kNames[i]);
    return out.empty() ? "-" : out;
}

std::string tenths(int value) { return fmt::format("{}.{}", value / 10, value % 10); }

std::string stars(int pk) { return pk <= 0 ? "-" : std::string(std::size_t(std::min(pk, 3)), '*'); }

std::string nameOf(const PlayerRecord& p) {
    std::string name = p.FirstName.str() + " " + p.LastName.str();
    return name.size() > 22 ? name.substr(0, 22) : name;
}

// One row of the table: name, positions, games, then the ratings.
constexpr char kRow[] =
    "{:<22} {:<7} {:>3} {:>5} {:>5} {:>3} {:>3} {:>3} {:>3} {:>3} {:>3} {:>3} {:>3} {:>3} {:>3} {:>3} {:>3} {:>5} "
    "{:>3}\n";

void printPlayers(const std::vector<RatingSubject>& players) {
    fmt::print(kRow, "Player", "Pos", "GP", "Off", "Def", "FO", "Pas", "SI", "SO", "Skt", "PS", "Spt", "Blk", "Hit",
               "TkA", "PK", "Dur", "Goal", "Enf");
    for (const auto& s : players) {
        const PlayerRecord& p = s.record;
        const bool goalie = isGoalie(p);
        fmt::print(kRow, nameOf(p), positionsOf(p), statLine(p, StatLineIndex::Real).GP,
                   goalie ? "-" : tenths(p.RatingOffense), goalie ? "-" : tenths(p.RatingDefense), p.RatingFaceoff,
                   p.RatingPassing, p.RatingShotIn, p.RatingShotOut, p.RatingSkate, p.RatingPenaltyShot,
                   p.RatingSportsmanship, p.RatingBlock, p.RatingHit, p.RatingTakeaway, stars(p.RatingPenaltyKill),
                   p.RatingDurability, goalie ? tenths(p.RatingGoalie) : "-", p.Enforcer == 1 ? "E" : "");
    }
    for (const auto& s : players)
        if (!s.note.empty()) fmt::print("  {} (ratings file):{}\n", nameOf(s.record), s.note);
}

// The first five at even strength: the depth chart's first choices where
// the team has a chart, else the best rated man for each place; in goal the
// starter, else the goalie with the most games. Places 0 to 5: left wing,
// center, right wing, two defensemen, goalie.
int chartRank(const PlayerRecord& p, int place) {
    switch (place) {
        case 0:
            return p.DepthEven[0];
        case 1:
            return p.DepthEven[2];
        case 2:
            return p.DepthEven[1];
        case 5:
            return p.DepthGoalie;
        default:
            return p.DepthEven[3];
    }
}

int placeScore(const PlayerRecord& p, int place) {
    if (place == 5) return statLine(p, StatLineIndex::Real).GP;
    return place >= 3 ? p.RatingDefense : p.RatingOffense;
}

bool fitsPlace(const PlayerRecord& p, int place) {
    static constexpr std::size_t kFlag[] = {0, 1, 2, 3, 3, 4};
    return p.PositionFlags[kFlag[place]] != 0 && (place == 5 || !isGoalie(p));
}

std::array<int, 6> firstFive(const std::vector<RatingSubject>& players) {
    std::array<int, 6> chosen{-1, -1, -1, -1, -1, -1};  // index into the players, -1 nobody
    for (int place : {1, 0, 2, 3, 4, 5}) {
        std::pair<int, int> bestKey{-1, -1};  // the first of equals stays
        for (int i = 0; i < int(players.size()); ++i) {
            const PlayerRecord& p = players[std::size_t(i)].record;
            if (std::find(chosen.begin(), chosen.end(), i) != chosen.end() || !fitsPlace(p, place)) continue;
            std::pair<int, int> key{chartRank(p, place), placeScore(p, place)};
            if (key > bestKey) {
                chosen[std::size_t(place)] = i;
                bestKey = key;
            }
        }
    }
    return chosen;
}

void printFirstFive(const std::vector<RatingSubject>& players, const EraTable& era) {
    if (players.empty()) return;
    std::vector<UnitPlayer> roster;
    roster.reserve(players.size());
    for (const auto& s : players) roster.push_back({&s.record, s.averageMinutes});
    const std::array<int, 6> five = firstFive(players);
    std::array<UnitPlayer, 6> onIce{};
    static constexpr const char* kPlaces[] = {"LW", "C", "RW", "D", "D", "G"};
    std::string names;
    for (std::size_t place = 0; place < 6; ++place) {
        int i = five[place];
        if (i < 0) continue;
        onIce[place] = roster[std::size_t(i)];
        names += fmt::format("{}{} {}", names.empty() ? "" : ", ", kPlaces[place],
                             players[std::size_t(i)].record.LastName.str());
    }
    UnitRatings r = HkSetTeamRatings(roster, onIce, UnitSituation{}, era);
    fmt::print("\nFirst five at even strength: {}\n", names.empty() ? "nobody" : names);
    fmt::print("  Roster:  offense {:.2f}  defense {:.2f}\n", r.teamOffense, r.teamDefense);
    fmt::print(
        "  On ice:  offense {:.2f}  defense {:.2f}  passing {:.2f}  inside {:.2f}  outside {:.2f}  "
        "discipline {:.2f}\n",
        r.onIceOffense, r.onIceDefense, r.onIcePassing, r.onIceInside, r.onIceOutside, r.discipline);
}

void printInputs(const RatingInputs& in) {
    fmt::print(
        "League shots {:.1f}, team shots {:.1f}, allowed {:.1f}, goals per game {:.2f}, assists per goal "
        "{:.2f}, season {} games, penalty minutes per game {:.1f}, save % {:.2f}\n",
        in.leagueShots, in.teamShots, in.teamShotsAllowed, in.goalsPerGame, in.assistsPerGoal, in.seasonLength,
        in.pimPerGame, in.savePct);
}

void printTeam(const TeamDirectory& teams, const TeamRating& rated, const EraTable& era, bool generated) {
    fmt::print("{} ({}), {} players\n", teams.fullName(rated.team), teams.team(rated.team).year, rated.players.size());
    if (generated) {
        printInputs(rated.inputs);
        if (auto g = GetShotsFromGoalies(rated.players, rated.inputs))
            fmt::print("Average Goalie: {:.1f}  Est. Save%: {:04.1f}\n", g->averageGoalie, g->savePct);
    }
    fmt::print("\n");
    printPlayers(rated.players);
    printFirstFive(rated.players, era);
}

struct Args {
    std::string team;
    bool all = false;
    bool write = false;
    bool preview = false;
};

void run(const Args& args, const GlobalOptions& options) {
    if (args.team.empty() && !args.all) throw CommandError("Name a team (number, code or city), or give --all");
    if (!args.team.empty() && args.all) throw CommandError("Name a team or give --all, not both");
    if (args.write && args.preview) throw CommandError("--preview shows what --write would save: give one of them");

    const fs::path dir = leagueDir(options);
    const fs::path programDir = resolvePlaces(sessionOptions(options).places).ProgramDir;
    const EraTable era = LoadEra(programDir);
    const TeamDirectory teams = TeamDirectory::load(dir);
    const bool generate = args.write || args.preview;
    const HistoricalRatings history = generate ? readHistoricalRatings(programDir) : HistoricalRatings{};

    if (teams.activeNumbers().empty()) throw CommandError(fmt::format("The league in {} has no teams", dir.string()));
    std::vector<int> numbers = args.all ? teams.activeNumbers() : std::vector<int>{findTeam(teams, args.team)};

    if (args.all && args.write) {
        auto rated = rateLeague(dir, era, &history);
        std::size_t players = 0;
        for (const auto& t : rated) {
            if (t.refusal) fmt::print("{}: {}\n", teams.fullName(t.team), *t.refusal);
            players += t.refusal ? 0 : t.players.size();
        }
        fmt::print("Rated {} players of {} teams. Wrote {}.\n", players, rated.size(),
                   (dir / std::string(kRatingsCsvFile)).string());
        return;
    }

    for (std::size_t k = 0; k < numbers.size(); ++k) {
        if (k > 0) fmt::print("\n");
        TeamRating rated =
            generate ? rateTeam(dir, numbers[k], era, &history) : readTeamForRating(dir, numbers[k], era);
        if (rated.refusal) throw CommandError(*rated.refusal);
        printTeam(teams, rated, era, generate);
        if (args.write) {
            saveTeamRatings(dir, rated);
            writeLeagueRatingsCsv(dir);
            fmt::print("\nSaved the ratings of {} players. Wrote {}.\n", rated.players.size(),
                       (dir / std::string(kRatingsCsvFile)).string());
        }
    }
    if (args.preview) fmt::print("\nNothing was saved: give --write to keep these ratings.\n");
}

}  // namespace

std::size_t rateWholeLeague(const GlobalOptions& options, const std::filesystem::path& folder) {
    const auto programDir = resolvePlaces(sessionOptions(options).places).ProgramDir;
    const auto history = readHistoricalRatings(programDir);
    std::size_t players = 0;
    for (const auto& t : rateLeague(folder, LoadEra(programDir), &history)) players += t.refusal ? 0 : t.players.size();
    return players;
}

void addRatingsCommands(CLI::App& app, GlobalOptions& options) {
    auto args = std::make_shared<Args>();
    auto* cmd = app.add_subcommand("ratings", "Show a team's player ratings, or work them out from the real season");
    cmd->add_option("team", args->team, "Team by number, code or city");
    cmd->add_flag("--all", args->all, "Every team of the league");
    cmd->add_flag("--write", args->write,
                  "Work the ratings out from the real season, save them and write \"Hockey Ratings.CSV\"");
    cmd->add_flag("--preview", args->preview, "Work the ratings out and show them without saving");
    cmd->callback([args, &options] { run(*args, options); });
}

}  // namespace tallyrink::cli
