// The people behind a made-up team's lines: names, ages, builds, hands and
// sweater numbers, and the record fields the league reads them by.

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "operations/name_lists.h"
#include "operations/new_league_parts.h"
#include "operations/roster_plan.h"

namespace tallyrink::newleague {

namespace {

// Stamps written with the fields they guard, so that the first load keeps
// the drawn values instead of putting its defaults in.
constexpr std::uint8_t kOriginalTeamStamp = 22;
constexpr std::uint8_t kUniformStamp = 22;
constexpr std::uint8_t kEnforcerStamp = 55;
constexpr std::uint8_t kRealPenaltyStamp = 99;

struct NameDraw {
    std::string first;
    std::string last;
};

// A full name nobody else in the league has, and a surname new to the team
// when the lists allow.
NameDraw drawName(Random& rng, int year, NameBook& book, std::set<std::string>& teamSurnames) {
    NameDraw name;
    for (int tries = 0; tries < 200; ++tries) {
        bool oldTime = year < 1960 && rng.rnd() < 0.35;
        name.first = std::string(oldTime ? pick(rng, names::oldTimeFirstNames()) : pick(rng, names::firstNames()));
        name.last = std::string(pick(rng, names::surnames()));
        if (book.contains(name.first + " " + name.last)) continue;
        if (teamSurnames.contains(name.last) && tries < 100) continue;
        break;
    }
    book.insert(name.first + " " + name.last);
    teamSurnames.insert(name.last);
    return name;
}

int drawAge(Random& rng, Role role) {
    struct Age {
        double mean, sd;
    };
    // clang-format off
    static constexpr std::array<Age, 15> kAges = {{
        {26.5, 3.0}, {27.0, 4.0}, {28.5, 4.0}, {28.0, 4.0}, {28.0, 3.5}, {26.0, 4.0}, {21.5, 1.5},
        {26.5, 3.5}, {29.0, 4.0}, {27.5, 4.0}, {26.0, 3.5}, {21.5, 1.5},
        {28.5, 3.5}, {30.0, 4.5}, {22.5, 2.0},
    }};
    // clang-format on
    const Age& a = kAges[std::size_t(role)];
    int age = int(std::lround(a.mean + a.sd * normal(rng)));
    return std::clamp(age, 18, isCallUp(role) ? 25 : 40);
}

struct Build {
    int inches;
    int pounds;
};

// Players grew over the decades; defencemen and enforcers are the big men.
Build drawBuild(Random& rng, Role role, int year) {
    double baseHeight = year >= 2000 ? 73.0 : year >= 1980 ? 72.0 : year >= 1960 ? 71.0 : 70.0;
    double baseWeight = year >= 2000 ? 200.0 : year >= 1980 ? 192.0 : year >= 1960 ? 184.0 : 175.0;
    double height = baseHeight + 1.8 * normal(rng);
    if (isDefence(role)) height += 1.2;
    if (isGoalie(role)) height += 1.0;
    if (role == Role::Enforcer) height += 2.0;
    double weight = baseWeight + 4.5 * (height - baseHeight) + 8.0 * normal(rng);
    if (isDefence(role)) weight += 5.0;
    if (role == Role::Enforcer) weight += 15.0;
    return {int(std::clamp(std::lround(height), 64L, 80L)), int(std::clamp(std::lround(weight), 150L, 270L))};
}

std::string drawHand(Random& rng, Role role) {
    double left = isGoalie(role) ? 0.88 : isDefence(role) ? 0.65 : 0.62;
    return rng.rnd() < left ? "L" : "R";
}

// Sweater numbers by custom: low numbers and 30s for goalies, single digits
// and doubled digits for defencemen, the teens and twenties for forwards.
int drawNumber(Random& rng, Role role, int year, std::set<int>& taken) {
    static constexpr std::array kGoalie = {1, 30, 31, 29, 35, 33, 34, 40, 32, 37, 39, 41, 60, 70};
    static constexpr std::array kDefence = {2, 3, 4, 5, 6, 8, 44, 55, 77, 24, 27, 28, 47, 45, 22, 58, 74, 76};
    static constexpr std::array kForward = {7,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                            23, 25, 26, 36, 38, 42, 43, 46, 48, 51, 53, 57, 61, 63,
                                            67, 71, 73, 81, 86, 88, 91, 92, 93, 94, 96, 97};
    std::span<const int> pool = isGoalie(role)    ? std::span<const int>(kGoalie)
                                : isDefence(role) ? std::span<const int>(kDefence)
                                                  : std::span<const int>(kForward);
    // High numbers came into fashion late: before the 1960s sweaters rarely
    // went past the twenties, before the 1990s past the forties.
    int highest = year < 1960 ? 30 : year < 1990 ? 45 : 98;
    for (int tries = 0; tries < 40; ++tries) {
        int n = pool[std::size_t(rng.rand(int(pool.size())) - 1)];
        if (n <= highest && !taken.contains(n)) {
            taken.insert(n);
            return n;
        }
    }
    for (int n = 1; n <= 98; ++n)
        if (!taken.contains(n)) {
            taken.insert(n);
            return n;
        }
    return 0;
}

std::array<std::uint8_t, 5> drawPositions(Random& rng, const Member& m) {
    std::array<std::uint8_t, 5> flags{};
    flags[std::size_t(m.position)] = 1;
    double r = rng.rnd();
    if (m.position == kCenter && r < 0.25) flags[std::size_t(rng.rand(2) == 1 ? kLeftWing : kRightWing)] = 1;
    if (m.position == kLeftWing || m.position == kRightWing) {
        if (r < 0.25)
            flags[std::size_t(m.position == kLeftWing ? kRightWing : kLeftWing)] = 1;
        else if (r < 0.37)
            flags[kCenter] = 1;
    }
    if (m.position == kDefence && r < 0.03) flags[kRightWing] = 1;
    return flags;
}

// The load's own test for an enforcer: penalty minutes a minute far above
// the era's, over a real share of the season.
bool meetsEnforcerMark(const StatLine& real, const EraTargets& era) {
    if (real.GP <= 20 || real.Toi <= 0) return false;
    double minutes = real.Toi / 60.0 / real.GP;
    if (minutes < 8.0) return false;
    double e = std::max(2.0, 2.0 * era.pimPerTeamGame / 10.0);
    double p = real.Pim / (real.GP * minutes) * 60.0;
    double mark = e > 4.0 ? 2.0 : e > 3.0 ? 2.25 : 2.5;
    return p / e > mark;
}

// A call-up joins the team part way through the season, with room left for
// the games he played.
void setAvailability(Random& rng, PlayerRecord& p, const Member& m, int games) {
    p.AvailStartMonth = 1;
    p.AvailStartDay = 1;
    p.AvailEndMonth = 12;
    p.AvailEndDay = 31;
    if (!isCallUp(m.role)) return;
    double perMonth = games / 6.0;
    int latest = 2;
    for (int month = 3; month <= 7; ++month)
        if (games - perMonth * (month - 2 + 1.0 / 31.0) >= m.games + perMonth / 2.0) latest = month;
    int month = between(rng, 2, latest);
    if (month > 2) p.AvailStartMonth = std::uint8_t(month);
}

PlayerRecord makeRecord(Random& rng, const Member& m, const TeamSeason& season, const TeamIdentity& identity,
                        const EraTargets& era, int year, NameBook& book, std::set<std::string>& teamSurnames,
                        std::set<int>& numbers) {
    PlayerRecord p;
    p.TeamId = std::int16_t(season.team);
    NameDraw name = drawName(rng, year, book, teamSurnames);
    p.FirstName.assign(name.first);
    p.LastName.assign(name.last);
    p.ShortName.assign(name.last);
    p.PlayerYear = std::int16_t(year);
    p.PlayerType.assign("P");
    p.Age = std::uint8_t(drawAge(rng, m.role));
    Build build = drawBuild(rng, m.role, year);
    p.HeightFeet = std::uint8_t(build.inches / 12);
    p.HeightInches = std::uint8_t(build.inches % 12);
    p.Weight = std::int16_t(build.pounds);
    p.HandedOrClass.assign(drawHand(rng, m.role));
    p.UniformNumber.assign(fmt::format("{}", drawNumber(rng, m.role, year, numbers)));
    p.UniformStamp = kUniformStamp;
    p.PositionFlags = drawPositions(rng, m);
    p.OriginalTeam.assign(identity.abbrev);
    p.OriginalTeamStamp = kOriginalTeamStamp;
    setAvailability(rng, p, m, season.games);

    statLine(p, StatLineIndex::Real) = m.line;
    p.Fights[0] = std::uint8_t(m.fights);
    p.RealMinors = std::uint8_t(m.minors);
    p.RealMajors = std::uint8_t(m.majors);
    p.RealMisconducts = std::uint8_t(m.misconducts);
    p.RealGameMisconducts = std::uint8_t(m.gameMisconducts);
    p.RealMatchPenalties = std::uint8_t(m.matches);
    p.RealPenaltyStamp = kRealPenaltyStamp;
    p.Enforcer = !isGoalie(m.role) && meetsEnforcerMark(m.line, era) ? 1 : 0;
    p.EnforcerStamp = kEnforcerStamp;
    return p;
}

}  // namespace

std::vector<PlayerRecord> drawTeamPlayers(Random& rng, const TeamSeason& season, const TeamIdentity& identity,
                                          const EraTargets& era, int year, NameBook& names) {
    std::vector<Member> roster = planRoster(rng, era, year);
    drawLines(rng, roster, season, year);
    std::vector<PlayerRecord> players;
    players.reserve(roster.size());
    std::set<std::string> teamSurnames;
    std::set<int> numbers;
    for (const Member& m : roster)
        players.push_back(makeRecord(rng, m, season, identity, era, year, names, teamSurnames, numbers));
    return players;
}

}  // namespace tallyrink::newleague
