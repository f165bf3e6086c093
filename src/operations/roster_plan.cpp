#include "operations/roster_plan.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tallyrink::newleague {

bool isForward(Role r) { return r <= Role::CallUpForward; }
bool isDefence(Role r) { return r >= Role::OffensiveDefence && r <= Role::CallUpDefence; }
bool isGoalie(Role r) { return r >= Role::StartingGoalie; }
bool isCallUp(Role r) { return r == Role::CallUpForward || r == Role::CallUpDefence || r == Role::CallUpGoalie; }

const RoleProfile& profileOf(Role r) {
    // Calibrated on a modern season: forwards score about 85% of the goals
    // and take about 70% of the shots; defencemen play a third more minutes,
    // block three times the shots and set up a third of the goals.
    // clang-format off
    static constexpr std::array<RoleProfile, 15> kProfiles = {{
        //  even   pp    pk    goals assists shots hits blocks take give minors fights starts
        {15.0, 0.90, 0.20, 1.75, 2.10, 1.70, 0.60, 0.35, 1.50, 1.20, 0.80, 0.10, 1.00},  // star
        {13.5, 0.70, 0.35, 1.45, 1.55, 1.30, 0.90, 0.45, 1.10, 1.00, 0.90, 0.30, 0.70},  // top six
        {12.0, 0.15, 1.00, 0.95, 0.90, 1.00, 1.20, 0.70, 1.00, 0.80, 1.00, 0.60, 0.30},  // checking
        {10.0, 0.03, 0.50, 0.62, 0.62, 0.85, 1.80, 0.60, 0.80, 0.70, 1.30, 1.50, 0.10},  // grinder
        { 8.8, 0.00, 0.05, 0.35, 0.35, 0.60, 2.60, 0.40, 0.40, 0.60, 2.00, 6.00, 0.05},  // enforcer
        {10.0, 0.05, 0.30, 0.80, 0.75, 0.90, 1.20, 0.60, 0.80, 0.70, 1.00, 0.80, 0.10},  // spare forward
        { 9.5, 0.05, 0.20, 0.75, 0.70, 0.90, 1.10, 0.60, 0.70, 0.70, 0.90, 0.50, 0.05},  // call-up forward
        {17.0, 0.80, 0.40, 0.55, 1.50, 1.20, 0.90, 1.60, 0.60, 1.50, 0.90, 0.20, 0.80},  // offensive defence
        {17.5, 0.05, 1.00, 0.20, 0.50, 0.65, 1.30, 2.20, 0.50, 1.00, 1.10, 0.60, 0.80},  // defensive defence
        {16.0, 0.25, 0.60, 0.35, 0.90, 0.80, 1.10, 1.80, 0.50, 1.10, 1.00, 0.50, 0.30},  // two-way defence
        {14.0, 0.05, 0.30, 0.25, 0.60, 0.65, 1.10, 1.60, 0.40, 1.00, 1.00, 0.60, 0.10},  // spare defence
        {13.5, 0.05, 0.20, 0.20, 0.50, 0.60, 1.00, 1.50, 0.40, 1.00, 0.90, 0.40, 0.05},  // call-up defence
        { 0.0, 0.00, 0.00, 0.00, 0.04, 0.00, 0.00, 0.00, 0.00, 0.00, 0.04, 0.00, 0.00},  // starting goalie
        { 0.0, 0.00, 0.00, 0.00, 0.04, 0.00, 0.00, 0.00, 0.00, 0.00, 0.04, 0.00, 0.00},  // backup goalie
        { 0.0, 0.00, 0.00, 0.00, 0.04, 0.00, 0.00, 0.00, 0.00, 0.00, 0.04, 0.00, 0.00},  // call-up goalie
    }};
    // clang-format on
    return kProfiles[static_cast<std::size_t>(r)];
}

namespace {

int round0(double x) { return int(std::lround(x)); }

// Enforcers per team follow the era's appetite for fighting; a game of few
// dressed forwards had no room for one.
int enforcerCount(Random& rng, const EraTargets& era, int year) {
    if (dressedSkaters(year).forwards < 11) return 0;
    double f = era.fightsPerGame;
    if (f >= 0.8) return rng.rnd() < 0.35 ? 2 : 1;
    double chance = f >= 0.4 ? 0.85 : f >= 0.2 ? 0.6 : 0.2;
    return rng.rnd() < chance ? 1 : 0;
}

void shuffleLine(Random& rng, std::vector<Member>& roster, std::size_t first) {
    std::array<int, 3> pos = {kLeftWing, kCenter, kRightWing};
    for (int i = 2; i > 0; --i) std::swap(pos[i], pos[rng.rand(i + 1) - 1]);
    for (std::size_t k = 0; k < 3; ++k) roster[first + k].position = pos[k];
}

void addForwards(Random& rng, std::vector<Member>& roster, const EraTargets& era, int year, int extras) {
    double r = rng.rnd();
    int stars = r < 0.25 ? 0 : r < 0.8 ? 1 : 2;
    int enforcers = enforcerCount(rng, era, year);
    std::vector<Role> roles;
    for (int i = 0; i < 6; ++i) roles.push_back(i < stars ? Role::Star : Role::TopSix);
    for (int i = 0; i < 3; ++i) roles.push_back(Role::Checking);
    for (int i = 0; i < 3; ++i) roles.push_back(i < 3 - enforcers ? Role::Grinder : Role::Enforcer);
    for (int i = 0; i < extras; ++i)
        roles.push_back((i == extras - 1 && extras >= 2) || rng.rnd() < 0.4 ? Role::CallUpForward : Role::SpareForward);
    std::size_t first = roster.size();
    for (std::size_t k = 0; k < roles.size(); ++k)
        roster.push_back(Member{.role = roles[k], .forwardLine = k < 12 ? int(k / 3) : -1});
    for (std::size_t line = 0; line < 4; ++line) shuffleLine(rng, roster, first + 3 * line);
    // An enforcer plays the wing: a grinder on his line takes the draws.
    for (std::size_t k = first + 9; k < first + 12; ++k) {
        if (roster[k].role != Role::Enforcer || roster[k].position != kCenter) continue;
        for (std::size_t j = first + 9; j < first + 12; ++j)
            if (roster[j].role == Role::Grinder) {
                std::swap(roster[j].position, roster[k].position);
                break;
            }
    }
    for (std::size_t k = first + 12; k < roster.size(); ++k) roster[k].position = rng.rand(3) - 1;
}

void addDefence(Random& rng, std::vector<Member>& roster, int extras) {
    std::vector<Role> roles = {
        Role::OffensiveDefence, Role::DefensiveDefence, rng.rnd() < 0.4 ? Role::OffensiveDefence : Role::TwoWayDefence,
        Role::DefensiveDefence, Role::TwoWayDefence,    Role::TwoWayDefence};
    for (int i = 0; i < extras; ++i)
        roles.push_back(i == extras - 1 && (extras >= 2 || rng.rnd() < 0.5) ? Role::CallUpDefence : Role::SpareDefence);
    for (Role role : roles) roster.push_back(Member{.role = role, .position = kDefence});
}

void addGoalies(std::vector<Member>& roster, int count) {
    roster.push_back(Member{.role = Role::StartingGoalie, .position = kGoalie});
    roster.push_back(Member{.role = Role::BackupGoalie, .position = kGoalie});
    if (count > 2) roster.push_back(Member{.role = Role::CallUpGoalie, .position = kGoalie});
}

void drawLeanings(Random& rng, std::vector<Member>& roster) {
    for (auto& m : roster) {
        m.scoring = spread(rng, 0.25);
        // The first line gets the chances the second has to wait for.
        if (m.role == Role::TopSix) m.scoring *= m.forwardLine == 0 ? 1.12 : 0.9;
        m.playmaking = std::pow(m.scoring, 0.6) * spread(rng, 0.2);
        m.shooting = spread(rng, 0.2);
        m.defending = spread(rng, 0.15);
        m.toughness = spread(rng, 0.45);
        m.discipline = spread(rng, 0.35);
        m.faceoffs = spread(rng, 0.06);
        if (isGoalie(m.role)) m.goalieQuality = normal(rng) + (m.role == Role::StartingGoalie ? 0.5 : 0.0);
        // An enforcer is one by his fists, whatever the draw.
        if (m.role == Role::Enforcer) m.toughness = std::max(m.toughness, 1.0);
    }
}

// Games an extra skater can play: a call-up only a stretch of the season.
int extraCap(Role role, int games) {
    if (isCallUp(role)) return std::max(1, round0(0.3 * games));
    if (role == Role::SpareForward || role == Role::SpareDefence) return round0(0.8 * games);
    return round0(0.9 * games);
}

double extraWeight(Role role) {
    if (isCallUp(role)) return 1.0;
    if (role == Role::SpareForward || role == Role::SpareDefence) return 3.0;
    return 4.0;
}

// Regulars miss a few games each, some many; the extras fill exactly the
// places the year's lineups had, each playing at least once.
void drawSkaterGames(Random& rng, std::vector<Member*> group, int games, int dressed) {
    std::vector<Member*> regulars(group.begin(), group.begin() + std::min<std::size_t>(dressed, group.size()));
    std::vector<Member*> extras(group.begin() + regulars.size(), group.end());
    for (Member* m : regulars) {
        m->regular = true;
        int missed = rng.rnd() < 0.4 ? between(rng, 0, 2) : round0(-std::log(1.0 - rng.rnd()) * 0.15 * games);
        m->games = std::max(games / 2, games - missed);
    }
    Count deficit = Count(dressed) * games;
    for (Member* m : regulars) deficit -= m->games;
    Count room = 0;
    for (Member* m : extras) room += extraCap(m->role, games);
    auto mostGames = [&] {
        return *std::max_element(regulars.begin(), regulars.end(), [](auto a, auto b) { return a->games < b->games; });
    };
    auto fewestGames = [&] {
        return *std::min_element(regulars.begin(), regulars.end(), [](auto a, auto b) { return a->games < b->games; });
    };
    while (deficit < Count(extras.size())) {
        --mostGames()->games;
        ++deficit;
    }
    while (deficit > room && fewestGames()->games < games) {
        ++fewestGames()->games;
        --deficit;
    }
    std::vector<double> weights;
    std::vector<Count> caps;
    for (Member* m : extras) {
        weights.push_back(extraWeight(m->role) * spread(rng, 0.3));
        caps.push_back(extraCap(m->role, games) - 1);
    }
    auto more = drawCounts(rng, std::max<Count>(0, deficit - Count(extras.size())), weights, caps);
    for (std::size_t k = 0; k < extras.size(); ++k) extras[k]->games = 1 + int(more[k]);
}

double starterShare(Random& rng, int year) {
    if (year < 1965) return 0.85 + 0.12 * rng.rnd();
    if (year < 1990) return 0.55 + 0.17 * rng.rnd();
    return 0.58 + 0.18 * rng.rnd();
}

void drawGoalieGames(Random& rng, std::vector<Member*> goalies, int games, int year) {
    Member& starter = *goalies[0];
    Member& backup = *goalies[1];
    Member* callUp = goalies.size() > 2 ? goalies[2] : nullptr;
    int callUpStarts = callUp != nullptr ? between(rng, 1, std::max(1, round0(0.06 * games))) : 0;
    starter.starts = std::min(games - callUpStarts - 1, round0(starterShare(rng, year) * games));
    backup.starts = games - callUpStarts - starter.starts;
    int relief = round0(0.05 * games * spread(rng, 0.4));
    backup.relief = std::min(games - backup.starts, round0(0.75 * relief));
    starter.relief = std::min(games - starter.starts, relief - backup.relief);
    if (callUp != nullptr) {
        callUp->starts = callUpStarts;
        callUp->relief = rng.rnd() < 0.4 ? 1 : 0;
    }
    for (Member* g : goalies) {
        g->games = g->starts + g->relief;
        g->regular = g->role != Role::CallUpGoalie;
    }
}

std::vector<Member*> membersWhere(std::vector<Member>& roster, bool (*pred)(Role)) {
    std::vector<Member*> out;
    for (auto& m : roster)
        if (pred(m.role)) out.push_back(&m);
    return out;
}

}  // namespace

std::vector<Member> planRoster(Random& rng, const EraTargets& era, int year) {
    int size = between(rng, 23, 26);
    int goalies = rng.rnd() < 0.35 ? 3 : 2;
    int extras = size - goalies - 12 - 6;
    int extraDefence = std::max(1, int(extras * (0.3 + 0.2 * rng.rnd())));
    std::vector<Member> roster;
    roster.reserve(std::size_t(size));
    addForwards(rng, roster, era, year, extras - extraDefence);
    addDefence(rng, roster, extraDefence);
    addGoalies(roster, goalies);
    drawLeanings(rng, roster);
    DressedSkaters dressed = dressedSkaters(year);
    drawSkaterGames(rng, membersWhere(roster, isForward), era.games, dressed.forwards);
    drawSkaterGames(rng, membersWhere(roster, isDefence), era.games, dressed.defence);
    drawGoalieGames(rng, membersWhere(roster, isGoalie), era.games, year);
    return roster;
}

}  // namespace tallyrink::newleague
