#include "operations/season_import.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <set>

#include "league/files.h"

namespace tallyrink {

namespace {

// Full names of the division and conference codes of the season files.
std::string divisionName(const std::string& code) {
    static const std::map<std::string, std::string> names = {
        {"AT", "Atlantic"},  {"ME", "Metropolitan"}, {"CE", "Central"},   {"PC", "Pacific"},
        {"NW", "Northwest"}, {"SE", "Southeast"},    {"NE", "Northeast"}, {"AD", "Adams"},
        {"PT", "Patrick"},   {"NO", "Norris"},       {"SM", "Smythe"},
    };
    auto it = names.find(code);
    if (it != names.end()) return it->second;
    return code.empty() ? "League" : code;
}

std::string conferenceName(const std::string& code) {
    static const std::map<std::string, std::string> names = {
        {"EC", "Eastern"}, {"WC", "Western"}, {"WA", "Wales"}, {"CC", "Campbell"}};
    auto it = names.find(code);
    if (it != names.end()) return it->second;
    return code.empty() ? "League" : code;
}

// The season files are UTF-8; record text is one byte a character, so a
// character of Latin-1 keeps its byte and anything beyond becomes "?".
std::string recordText(std::string_view s) {
    std::string out;
    for (std::size_t i = 0; i < s.size();) {
        auto c = static_cast<unsigned char>(s[i]);
        if (c < 0x80) {
            out += static_cast<char>(c);
            ++i;
        } else if ((c & 0xE0) == 0xC0 && i + 1 < s.size() && (static_cast<unsigned char>(s[i + 1]) & 0xC0) == 0x80) {
            unsigned cp = ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(s[i + 1]) & 0x3Fu);
            out += cp < 256 ? static_cast<char>(cp) : '?';
            i += 2;
        } else {
            std::size_t len = (c & 0xF0) == 0xE0 ? 3 : (c & 0xF8) == 0xF0 ? 4 : 1;
            out += '?';
            i += len;
        }
    }
    return out;
}

// Splits `total` in proportion to `weights` so that the parts add up to it:
// each part is rounded down and the rest goes to the largest remainders,
// the earlier part first on a tie. With no weight at all the first part
// takes everything.
std::vector<int> apportion(int total, const std::vector<int>& weights) {
    std::vector<int> parts(weights.size(), 0);
    if (weights.empty()) return parts;
    long long sum = 0;
    for (int w : weights) sum += std::max(w, 0);
    if (sum == 0) {
        parts[0] = total;
        return parts;
    }
    std::vector<std::pair<long long, std::size_t>> remainders;
    int given = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        long long share = static_cast<long long>(total) * std::max(weights[i], 0);
        parts[i] = static_cast<int>(share / sum);
        given += parts[i];
        remainders.emplace_back(share % sum, i);
    }
    std::stable_sort(remainders.begin(), remainders.end(), [](auto& a, auto& b) { return a.first > b.first; });
    for (std::size_t k = 0; given < total && k < remainders.size(); ++k, ++given) ++parts[remainders[k].second];
    return parts;
}

// Counts values that had to be held to the width of their field.
struct Clamps {
    int count = 0;
    std::uint8_t byte(int v) {
        if (v < 0 || v > 255) ++count;
        return static_cast<std::uint8_t>(std::clamp(v, 0, 255));
    }
    std::int16_t word(int v) {
        if (v < -32768 || v > 32767) ++count;
        return static_cast<std::int16_t>(std::clamp(v, -32768, 32767));
    }
};

struct TeamSlot {
    const TeamFacts* facts;
    int number;
};

struct Placement {
    std::vector<TeamSlot> teams;  // by team number
    LeagueNames names;
    bool conferencesLineUp = true;
};

// Conferences in the order of their names, their divisions in the order of
// theirs, and each division in a block of 12 team numbers, its teams in the
// order of their names. The standings split the divisions in use into two
// halves for the conferences, so a conference's divisions stay together.
Placement placeTeams(const std::vector<TeamFacts>& teams) {
    std::map<std::string, std::map<std::string, std::vector<const TeamFacts*>>> byConference;
    for (const auto& t : teams) byConference[conferenceName(t.conference)][divisionName(t.division)].push_back(&t);
    Placement p;
    int division = 0;
    std::vector<int> divisionsPerConference;
    for (auto& [conference, divisions] : byConference) {
        p.names.conferences.push_back(conference);
        divisionsPerConference.push_back(static_cast<int>(divisions.size()));
        for (auto& [name, members] : divisions) {
            ++division;
            if (division > kDivisions)
                throw FileError(fmt::format("teams.csv: more than {} divisions; a league holds at most {}", kDivisions,
                                            kDivisions));
            if (members.size() > static_cast<std::size_t>(kTeamsPerDivision))
                throw FileError(fmt::format("teams.csv: division {} has {} teams; a division holds at most {}", name,
                                            members.size(), kTeamsPerDivision));
            std::sort(members.begin(), members.end(), [](auto* a, auto* b) { return a->name < b->name; });
            p.names.divisions.push_back(name);
            int number = (division - 1) * kTeamsPerDivision;
            for (const auto* t : members) p.teams.push_back({t, ++number});
        }
    }
    int d = division;
    int expectedConferences = d >= 2 ? 2 : 1;
    p.conferencesLineUp = static_cast<int>(divisionsPerConference.size()) == expectedConferences &&
                          (expectedConferences == 1 || divisionsPerConference[0] == (d + 1) / 2);
    return p;
}

// One player's games for one team, with everything the record needs.
struct Stint {
    std::string playerId;
    int stint{};
    std::string team;
    int teamNumber{};
    PlayerBio bio;
    bool goalie{};
    const ScoringStint* scoring{};
    const GoalieStint* goalieLine{};
    StatLine real;
    int minors{}, majors{}, misconducts{};
    int startMonth{1}, startDay{1}, endMonth{12}, endDay{31};  // season months
    int gamesInWindow{};
    int gp() const { return goalieLine ? goalieLine->gp : scoring ? scoring->gp : 0; }
};

using TeamDates = std::map<std::string, std::vector<CalendarDate>>;

class LeagueBuilder {
public:
    explicit LeagueBuilder(const SeasonData& data) : data_(data) {}
    ImportedLeague build();

private:
    void indexGames();
    void collectStints();
    std::string shortName(const Stint& s) const;
    void buildRosters(ImportedLeague& league);
    void applyScoring(StatLine& r, const ScoringStint& o);
    void fillSkaterLines(std::vector<Stint*>& stints);
    void fillGoalieLine(Stint& s);
    void setAvailability(std::vector<Stint*>& stints);
    PlayerRecord playerRecord(const Stint& s, int id, const std::string& shortName, const std::string& originalTeam);
    TeamRecord teamRecord(const TeamSlot& slot, const std::vector<int>& roster);
    void buildSchedule(ImportedLeague& league);
    void writeNotes(ImportedLeague& league);

    const SeasonData& data_;
    CalendarDate opening_;  // date of the season's first game
    Placement placement_;
    std::map<std::string, int> numberOf_;
    std::vector<Stint> stints_;
    std::map<std::string, std::vector<Stint*>> byPlayer_;
    TeamDates teamDates_;
    std::map<std::pair<std::string, std::string>, std::vector<CalendarDate>> goalieDates_;
    std::map<std::pair<std::string, std::string>, int> goalieStarts_;
    std::map<std::pair<std::string, std::string>, int> goalieSeconds_;
    Clamps clamps_;
    int noTracking_ = 0, noTotals_ = 0, goaliesWithoutScoring_ = 0, scoringGoaliesWithoutLine_ = 0;
    int namesCut_ = 0, shortWindows_ = 0;
    std::vector<std::string> cappedTeamGoals_;
};

void LeagueBuilder::collectStints() {
    std::set<const GoalieStint*> matched;
    auto findGoalie = [&](const ScoringStint& s) -> const GoalieStint* {
        const GoalieStint* byTeam = nullptr;
        for (const auto& g : data_.goalies) {
            if (g.playerId != s.playerId || g.team != s.team || matched.contains(&g)) continue;
            if (g.stint == s.stint) return &g;
            if (!byTeam) byTeam = &g;
        }
        return byTeam;
    };
    stints_.reserve(data_.scoring.size() + data_.goalies.size());
    for (const auto& s : data_.scoring) {
        Stint st;
        st.playerId = s.playerId;
        st.stint = s.stint;
        st.team = s.team;
        st.bio = s.bio;
        st.scoring = &s;
        if (s.bio.position == 'G') {
            st.goalie = true;
            st.goalieLine = findGoalie(s);
            if (st.goalieLine) {
                matched.insert(st.goalieLine);
            } else {
                ++scoringGoaliesWithoutLine_;
            }
        }
        stints_.push_back(std::move(st));
    }
    for (const auto& g : data_.goalies) {
        if (matched.contains(&g)) continue;
        ++goaliesWithoutScoring_;
        Stint st;
        st.playerId = g.playerId;
        st.stint = g.stint;
        st.team = g.team;
        st.bio = g.bio;
        st.goalie = true;
        st.goalieLine = &g;
        stints_.push_back(std::move(st));
    }
    for (auto& s : stints_) {
        s.teamNumber = numberOf_.at(s.team);
        byPlayer_[s.playerId].push_back(&s);
    }
    for (auto& [id, list] : byPlayer_)
        std::stable_sort(list.begin(), list.end(), [](auto* a, auto* b) { return a->stint < b->stint; });
}

void LeagueBuilder::applyScoring(StatLine& r, const ScoringStint& o) {
    r.GP = clamps_.byte(o.gp);
    r.Goals = clamps_.byte(o.goals);
    r.Assists = clamps_.word(o.assists);
    r.PlusMinus = clamps_.word(o.plusMinus);
    r.Pim = clamps_.word(o.pim);
    r.Sog = clamps_.word(o.sog);
    r.PPG = clamps_.byte(o.ppg);
    r.PPA = clamps_.byte(o.ppa);
    r.SHG = clamps_.byte(o.shg);
    r.SHA = clamps_.byte(o.sha);
    r.GWG = clamps_.byte(o.gwg);
}

// Per-team scoring comes from the official stint rows. Time on ice and the
// counts kept only for the season are split across the stints by games
// played; penalty counts by penalty minutes, which are known per stint.
void LeagueBuilder::fillSkaterLines(std::vector<Stint*>& stints) {
    const std::string& id = stints.front()->playerId;
    auto mpIt = data_.tracking.find(id);
    auto hrIt = data_.totals.find(id);
    const TrackingTotals* mp = mpIt == data_.tracking.end() ? nullptr : &mpIt->second;
    const OfficialTotals* hr = hrIt == data_.totals.end() ? nullptr : &hrIt->second;
    if (!mp) ++noTracking_;
    if (!hr) ++noTotals_;

    std::vector<int> games, minutes;
    int pimTotal = 0;
    for (auto* s : stints) {
        games.push_back(s->gp());
        minutes.push_back(s->scoring->pim);
        pimTotal += s->scoring->pim;
    }
    if (pimTotal == 0) minutes = games;
    auto split = [&](int total) { return apportion(total, games); };

    auto toi = split(hr ? hr->toiMinutes * 60 : mp ? mp->toiSeconds : 0);
    auto pp = split(mp ? mp->powerPlaySeconds : 0);
    auto sh = split(mp ? mp->shortHandedSeconds : 0);
    auto shifts = split(mp ? mp->shifts : 0);
    auto missed = split(mp ? mp->missedShots : 0);
    auto takeaways = split(mp ? mp->takeaways : 0);
    auto giveaways = split(mp ? mp->giveaways : 0);
    auto hits = split(hr ? hr->hits : mp ? mp->hits : 0);
    auto blocks = split(hr ? hr->blocks : mp ? mp->blocks : 0);
    auto won = split(hr ? hr->faceoffsWon : mp ? mp->faceoffsWon : 0);
    auto lost = split(hr ? hr->faceoffsLost : mp ? mp->faceoffsLost : 0);

    // The tracking file counts penalties and their minutes but leaves out
    // some misconduct minutes: minutes beyond two a penalty are taken as
    // majors (three more each), the official minutes it misses as
    // misconducts of ten.
    int minorsTotal = pimTotal / 2, majorsTotal = 0, misconductsTotal = 0;
    if (mp) {
        majorsTotal = std::clamp((mp->pim - 2 * mp->penalties) / 3, 0, mp->penalties);
        minorsTotal = mp->penalties - majorsTotal;
        misconductsTotal = std::max(0, pimTotal - mp->pim) / 10;
    }
    auto minors = apportion(minorsTotal, minutes);
    auto majors = apportion(majorsTotal, minutes);
    auto misconducts = apportion(misconductsTotal, minutes);

    for (std::size_t i = 0; i < stints.size(); ++i) {
        Stint& s = *stints[i];
        StatLine& r = s.real;
        applyScoring(r, *s.scoring);
        r.Toi = toi[i];
        r.ToiPP = pp[i];
        r.ToiSH = sh[i];
        r.Shifts = clamps_.word(shifts[i]);
        r.FaceoffsWon = clamps_.word(won[i]);
        r.FaceoffsLost = clamps_.word(lost[i]);
        r.MissedShots = clamps_.word(missed[i]);
        r.Giveaways = clamps_.word(giveaways[i]);
        r.Hits = clamps_.word(hits[i]);
        r.Blocks = clamps_.word(blocks[i]);
        r.Takeaways = clamps_.word(takeaways[i]);
        s.minors = minors[i];
        s.majors = majors[i];
        s.misconducts = misconducts[i];
    }
}

void LeagueBuilder::fillGoalieLine(Stint& s) {
    StatLine& r = s.real;
    if (const ScoringStint* o = s.scoring) {
        applyScoring(r, *o);
        s.minors = o->pim / 2;
    }
    r.GP = clamps_.byte(s.gp());
    const GoalieStint* g = s.goalieLine;
    if (!g) return;
    auto key = std::make_pair(s.playerId, s.team);
    auto seconds = goalieSeconds_.find(key);
    r.Toi = seconds != goalieSeconds_.end() ? seconds->second : g->minutes * 60;
    auto starts = goalieStarts_.find(key);
    r.GS = clamps_.byte(starts != goalieStarts_.end() ? starts->second : 0);
    r.GoalsAllowed = clamps_.word(g->goalsAgainst);
    r.Saves = clamps_.word(g->saves);
    r.GoalieWins = clamps_.byte(g->wins);
    r.GoalieLosses = clamps_.byte(g->losses);
    r.GoalieOvertimeLosses = clamps_.byte(g->overtimeLosses);
    r.Shutouts = clamps_.byte(g->shutouts);
}

// A player with one team may play all season. A player with several teams
// has one stint after another: a stint ends on the date of its team's game
// in which he can first have played all his games for it (a goalie: his
// last game for it, from the per-game goalie lines), and the next stint
// starts with its team's first game after that date. So each stint's
// window holds at least his games for that team.
void LeagueBuilder::setAvailability(std::vector<Stint*>& stints) {
    CalendarDate from = opening_;  // stint k starts with its team's first game on or after this date
    for (std::size_t k = 0; k < stints.size(); ++k) {
        Stint& s = *stints[k];
        const auto& dates = teamDates_[s.team];
        auto first = std::lower_bound(dates.begin(), dates.end(), from);
        std::size_t firstIndex = static_cast<std::size_t>(first - dates.begin());
        bool last = k + 1 == stints.size();
        CalendarDate end{};
        if (!last) {
            auto pinned = goalieDates_.find({s.playerId, s.team});
            if (s.goalie && pinned != goalieDates_.end() && !(pinned->second.back() < from)) {
                end = pinned->second.back();
            } else if (dates.empty()) {
                end = from;
            } else {
                std::size_t i = firstIndex + static_cast<std::size_t>(std::max(s.gp(), 1)) - 1;
                end = std::max(from, dates[std::min(i, dates.size() - 1)]);
            }
            s.endMonth = seasonMonth(end.month);
            s.endDay = end.day;
        }
        if (k > 0) {
            s.startMonth = seasonMonth(from.month);
            s.startDay = from.day;
        }
        auto stop = last ? dates.end() : std::upper_bound(dates.begin(), dates.end(), end);
        s.gamesInWindow = static_cast<int>(std::max<std::ptrdiff_t>(0, stop - first));
        if (s.gamesInWindow < s.gp()) ++shortWindows_;
        if (!last) {
            const auto& next = teamDates_[stints[k + 1]->team];
            auto after = std::upper_bound(next.begin(), next.end(), end);
            from = after != next.end() ? *after : CalendarDate::fromSerial(end.serial() + 1);
        }
    }
}

PlayerRecord LeagueBuilder::playerRecord(const Stint& s, int id, const std::string& shortName,
                                         const std::string& originalTeam) {
    PlayerRecord p{};
    p.PlayerId = static_cast<std::int16_t>(id);
    p.TeamId = static_cast<std::int16_t>(s.teamNumber);
    auto first = recordText(s.bio.firstName), last = recordText(s.bio.lastName);
    if (first.size() > 15 || last.size() > 15) ++namesCut_;
    p.FirstName.assign(first);
    p.LastName.assign(last);
    p.ShortName.assign(shortName);
    p.PlayerYear = 0;  // set by the caller
    p.Age = clamps_.byte(s.bio.age);
    p.OriginalTeam.assign(originalTeam);
    p.OriginalTeamStamp = 22;
    p.UniformNumber.assign("");
    p.HandedOrClass.assign(s.bio.shoots);
    switch (s.bio.position) {
        case 'L':
            p.PositionFlags[0] = 1;
            break;
        case 'C':
            p.PositionFlags[1] = 1;
            break;
        case 'R':
            p.PositionFlags[2] = 1;
            break;
        case 'D':
            p.PositionFlags[3] = 1;
            break;
        default:
            p.PositionFlags[4] = 1;
            break;
    }
    p.AvailStartMonth = static_cast<std::uint8_t>(s.startMonth);
    p.AvailStartDay = static_cast<std::uint8_t>(s.startDay);
    p.AvailEndMonth = static_cast<std::uint8_t>(s.endMonth);
    p.AvailEndDay = static_cast<std::uint8_t>(s.endDay);
    statLine(p, StatLineIndex::Real) = s.real;
    p.HeightFeet = clamps_.byte(s.bio.heightInches / 12);
    p.HeightInches = clamps_.byte(s.bio.heightInches % 12);
    p.Weight = clamps_.word(s.bio.weightPounds);
    p.RealPenaltyStamp = 99;  // the counts below are this season's, not left-overs to clear
    p.RealMinors = clamps_.byte(s.minors);
    p.RealMajors = clamps_.byte(s.majors);
    // The data counts no fights; nearly every major of a recent season is
    // one, so a man's majors stand for his fights.
    p.Fights[0] = clamps_.byte(s.majors);
    p.RealMisconducts = clamps_.byte(s.misconducts);
    p.PlayerType.assign("P");
    return p;
}

TeamRecord LeagueBuilder::teamRecord(const TeamSlot& slot, const std::vector<int>& roster) {
    const TeamFacts& t = *slot.facts;
    TeamRecord r{};
    r.TeamActive = 1;
    r.City.assign(recordText(t.city));
    r.Nickname.assign(recordText(t.nickname));
    r.Abbrev.assign(t.code);
    r.ForeColor = 0x000000;
    r.BackColor = 0xFFFFFF;
    r.TeamType.assign("P");
    for (std::size_t i = 0; i < roster.size(); ++i) r.Roster[i] = static_cast<std::int16_t>(roster[i]);

    StatLine& real = r.TeamRealLine;
    real.GP = clamps_.byte(t.gp);
    if (t.goalsFor > 255) cappedTeamGoals_.push_back(fmt::format("{} {}", t.code, t.goalsFor));
    real.Goals = static_cast<std::uint8_t>(std::clamp(t.goalsFor, 0, 255));
    int assists = 0;
    for (const auto& s : stints_)
        if (s.team == t.code && s.scoring) assists += s.scoring->assists;
    real.Assists = clamps_.word(assists);
    real.PlusMinus = clamps_.word(t.goalsFor - t.goalsAgainst);
    real.Pim = clamps_.word(t.pim);
    real.Sog = clamps_.word(t.shotsFor);
    real.PPG = clamps_.byte(t.ppg);
    real.SHG = clamps_.byte(t.shgFor);
    real.Hits = clamps_.word(t.hits);
    real.Giveaways = clamps_.word(t.giveaways);
    real.Takeaways = clamps_.word(t.takeaways);
    real.GoalsAllowed = clamps_.word(t.goalsAgainst);
    real.GoalieWins = clamps_.byte(t.wins);
    real.GoalieLosses = clamps_.byte(t.losses);
    real.GoalieOvertimeLosses = clamps_.byte(t.overtimeLosses);

    // The venue of most of the team's home games; games played elsewhere
    // (outdoors, abroad) are few.
    std::map<std::string, int> venues;
    std::string arena;
    int most = 0;
    for (const auto& g : data_.games) {
        if (g.home != t.code || g.venue.empty()) continue;
        int n = ++venues[g.venue];
        if (n > most) most = n, arena = g.venue;
    }
    r.Arena.assign(recordText(arena));
    auto coach = data_.coaches.find(t.code);
    if (coach != data_.coaches.end()) {
        r.CoachShort.assign(recordText(coach->second));
        r.CoachName.assign(recordText(coach->second));
        r.CoachNameStamp = 99;
    }
    r.RealRecordStamp = 199;
    r.RealWins = static_cast<std::uint8_t>(std::clamp(t.wins, 0, 120));
    r.RealLosses = static_cast<std::uint8_t>(std::clamp(t.losses, 0, 120));
    r.RealTies = 0;
    r.RealOvertimeLosses = static_cast<std::uint8_t>(std::clamp(t.overtimeLosses, 0, 120));
    return r;
}

void LeagueBuilder::buildSchedule(ImportedLeague& league) {
    std::vector<const GameFacts*> order;
    for (const auto& g : data_.games) order.push_back(&g);
    std::stable_sort(order.begin(), order.end(), [](auto* a, auto* b) {
        return std::tie(a->date, a->start, a->id) < std::tie(b->date, b->start, b->id);
    });
    for (const auto* g : order) {
        GameRecord r{};
        r.Coach[0].assign("C");
        r.Coach[1].assign("C");
        r.Month = static_cast<std::uint8_t>(g->date.month);
        r.Day = static_cast<std::uint8_t>(g->date.day);
        r.Year = static_cast<std::int16_t>(league.seasonYear);
        r.RecordText[0].assign("");
        r.RecordText[1].assign("");
        r.Status.assign("U");
        r.VisitorTeam = static_cast<std::int16_t>(numberOf_.at(g->visitor));
        r.HomeTeam = static_cast<std::int16_t>(numberOf_.at(g->home));
        r.RowLocked.assign("N");
        r.RowType.assign("L");
        league.schedule.push_back(r);
        league.results.push_back(
            {g->date, r.VisitorTeam, r.HomeTeam, g->visitor, g->home, g->visitorGoals, g->homeGoals, g->decidedIn});
    }
}

void LeagueBuilder::writeNotes(ImportedLeague& league) {
    auto& n = league.notes;
    n.push_back("uniform numbers: not in the data; left blank");
    n.push_back("fights: not in the data; taken as the player's majors");
    n.push_back("empty-net goals, penalty-shot attempts and goals: not in the data; 0");
    n.push_back("games started by skaters: not in the data; 0");
    n.push_back("goalie starts: in a game with two goalies the one with more time on ice counted as the starter");
    n.push_back(
        "penalty counts: minors and majors from the tracking file's penalties and minutes (minutes beyond two a "
        "penalty taken as majors); misconducts from the official minutes the tracking file leaves out, ten each; "
        "game misconducts and match penalties 0; goalies: minors = PIM / 2");
    n.push_back(
        "power-play and short-handed time: the 5-on-4 and 4-on-5 time of the tracking file (5-on-3 time isn't "
        "counted)");
    n.push_back(
        "time on ice, hits, blocks, faceoffs: per-player totals file, in whole minutes; shifts, missed shots, "
        "takeaways, giveaways: tracking file");
    n.push_back(fmt::format(
        "traded players: {} players in {} stints; time on ice, shifts, hits, blocks, faceoffs, takeaways, "
        "giveaways, missed shots, power-play and short-handed time split across stints by games played, penalty "
        "counts by penalty minutes",
        league.tradedPlayers, std::count_if(stints_.begin(), stints_.end(), [&](const Stint& s) {
            return byPlayer_.at(s.playerId).size() > 1;
        })));
    n.push_back(
        "availability: a player of one team all season (September 1 to August 31); a traded player's stint ends on "
        "the date of its team's game by which he can have played all his games for it (a goalie's on his last game "
        "for it) and the next stint starts at its team's next game");
    n.push_back("team colours: not in the data; black on white");
    n.push_back("player ratings: not in the data; worked out from the real lines after the import");
    n.push_back("salaries: not in the data; worked out when a team is loaded");
    if (!cappedTeamGoals_.empty()) {
        std::string list;
        for (const auto& c : cappedTeamGoals_) list += (list.empty() ? "" : ", ") + c;
        n.push_back(fmt::format("team real line: goals for are a byte; held at 255 for {}", list));
    }
    if (noTracking_ > 0)
        n.push_back(
            fmt::format("{} skaters without tracking rows: their shifts, missed shots, takeaways, giveaways "
                        "and special-teams time are 0",
                        noTracking_));
    if (noTotals_ > 0)
        n.push_back(
            fmt::format("{} skaters without a per-player totals row: time on ice, hits, blocks and "
                        "faceoffs from the tracking file",
                        noTotals_));
    if (goaliesWithoutScoring_ > 0)
        n.push_back(fmt::format("{} goalie stints without an official scoring row: goals, assists and PIM 0",
                                goaliesWithoutScoring_));
    if (scoringGoaliesWithoutLine_ > 0)
        n.push_back(
            fmt::format("{} goalie scoring rows without a goalie line: goalie figures 0", scoringGoaliesWithoutLine_));
    if (namesCut_ > 0) n.push_back(fmt::format("{} names longer than 15 characters cut", namesCut_));
    if (shortWindows_ > 0)
        n.push_back(
            fmt::format("{} stints whose window holds fewer team games than their games played: the "
                        "stints of the files contradict the schedule",
                        shortWindows_));
    if (clamps_.count > 0) n.push_back(fmt::format("{} values held to the width of their field", clamps_.count));
    if (!placement_.conferencesLineUp)
        n.push_back(
            "conferences: the standings put the first half of the divisions in the first conference; "
            "these conferences don't split that way");
}

void LeagueBuilder::indexGames() {
    for (const auto& g : data_.games) {
        teamDates_[g.visitor].push_back(g.date);
        teamDates_[g.home].push_back(g.date);
    }
    for (auto& [team, dates] : teamDates_) std::sort(dates.begin(), dates.end());

    std::map<std::pair<std::string, std::string>, std::vector<const GoalieGame*>> inGame;
    for (const auto& g : data_.goalieGames) {
        auto key = std::make_pair(g.playerId, g.team);
        goalieDates_[key].push_back(g.date);
        goalieSeconds_[key] += g.toiSeconds;
        inGame[{g.gameId, g.team}].push_back(&g);
    }
    for (auto& [key, dates] : goalieDates_) std::sort(dates.begin(), dates.end());
    for (auto& [game, goalies] : inGame) {
        auto starter = std::max_element(goalies.begin(), goalies.end(),
                                        [](auto* a, auto* b) { return a->toiSeconds < b->toiSeconds; });
        ++goalieStarts_[{(*starter)->playerId, (*starter)->team}];
    }
}

// A last name shared by two players of the league gets the first initial in
// front, so that play-by-play tells them apart; when the initials are
// shared too, the whole first name.
std::string LeagueBuilder::shortName(const Stint& s) const {
    std::string last = recordText(s.bio.lastName);
    std::set<std::string> namesakes, sameInitial;
    for (const auto& o : stints_) {
        if (o.bio.lastName != s.bio.lastName) continue;
        namesakes.insert(o.playerId);
        if (!o.bio.firstName.empty() && !s.bio.firstName.empty() && o.bio.firstName[0] == s.bio.firstName[0])
            sameInitial.insert(o.playerId);
    }
    if (namesakes.size() < 2 || s.bio.firstName.empty()) return last;
    if (sameInitial.size() > 1) return recordText(s.bio.firstName) + " " + last;
    return recordText(s.bio.firstName.substr(0, 1)) + "." + last;
}

// Each team's players in roster order (forwards, defense, goalies; by games
// and time played), numbered on from the players of the teams before it.
void LeagueBuilder::buildRosters(ImportedLeague& league) {
    league.teams.assign(kMaxTeams, TeamRecord{});
    for (const auto& slot : placement_.teams) {
        std::vector<const Stint*> roster;
        for (const auto& s : stints_)
            if (s.teamNumber == slot.number) roster.push_back(&s);
        if (roster.size() > static_cast<std::size_t>(kRosterSlots))
            throw FileError(fmt::format("{} has {} players; a roster holds at most {}", slot.facts->code, roster.size(),
                                        kRosterSlots));
        auto order = [](const Stint* s) {
            int group = s->goalie ? 2 : s->bio.position == 'D' ? 1 : 0;
            return std::make_tuple(group, -s->real.GP, -s->real.Toi, s->bio.lastName, s->playerId);
        };
        std::sort(roster.begin(), roster.end(), [&](auto* a, auto* b) { return order(a) < order(b); });
        std::vector<int> ids;
        for (const Stint* s : roster) {
            int id = static_cast<int>(league.players.size()) + 1;
            auto rec = playerRecord(*s, id, shortName(*s), byPlayer_.at(s->playerId).front()->team);
            rec.PlayerYear = static_cast<std::int16_t>(league.seasonYear);
            league.players.push_back(rec);
            ids.push_back(id);
        }
        auto team = teamRecord(slot, ids);
        team.TeamYear = static_cast<std::int16_t>(league.seasonYear);
        league.teams[static_cast<std::size_t>(slot.number - 1)] = team;
    }
    if (league.players.size() > static_cast<std::size_t>(kMaxRosterPlayerId))
        throw FileError(
            fmt::format("{} player records; a league holds at most {}", league.players.size(), kMaxRosterPlayerId));
}

ImportedLeague LeagueBuilder::build() {
    if (data_.games.empty()) throw FileError("schedule_results.csv: no games");
    ImportedLeague league;
    opening_ = std::min_element(data_.games.begin(), data_.games.end(), [](auto& a, auto& b) {
                   return a.date < b.date;
               })->date;
    league.seasonYear = opening_.month >= 7 ? opening_.year : opening_.year - 1;

    placement_ = placeTeams(data_.teams);
    league.names = placement_.names;
    for (const auto& slot : placement_.teams) numberOf_[slot.facts->code] = slot.number;
    indexGames();

    collectStints();
    for (auto& [id, list] : byPlayer_) {
        if (list.size() > 1) ++league.tradedPlayers;
        std::vector<Stint*> skaters;
        for (auto* s : list) {
            if (s->goalie)
                fillGoalieLine(*s);
            else
                skaters.push_back(s);
        }
        if (!skaters.empty()) fillSkaterLines(skaters);
        setAvailability(list);
    }
    league.distinctPlayers = static_cast<int>(byPlayer_.size());

    buildRosters(league);
    int top = placement_.teams.empty() ? 0 : placement_.teams.back().number;
    league.gamePlans.assign(static_cast<std::size_t>(top), GamePlanRecord{});
    for (const auto& slot : placement_.teams)
        league.gamePlans[static_cast<std::size_t>(slot.number - 1)].GamePlanTeam =
            static_cast<std::int16_t>(slot.number);

    buildSchedule(league);
    writeNotes(league);
    return league;
}

// --- writing ---

fs::path scratchFolder(const fs::path& near, const std::string& stem) {
    std::random_device rd;
    for (int i = 0; i < 100; ++i) {
        auto p = near / fmt::format("{}.importing-{:08x}", stem, rd());
        std::error_code ec;
        if (!fs::exists(p, ec)) return p;
    }
    throw FileError(fmt::format("{}: no free name for a temporary folder", near.string()));
}

void writeFiles(const ImportedLeague& league, const fs::path& dir) {
    rewriteRecords(RandomFile(dir / kPlayerFile, codec::slotWidth<PlayerRecord>()), league.players);
    rewriteRecords(RandomFile(dir / kTeamFile, codec::slotWidth<TeamRecord>()), league.teams);
    rewriteRecords(RandomFile(dir / kGamePlanFile, codec::slotWidth<GamePlanRecord>()), league.gamePlans);
    rewriteRecords(RandomFile(dir / kDefaultScheduleFile, codec::slotWidth<GameRecord>()), league.schedule);
    writeFileAtomic(dir / kRealResultsFile, realResultsText(league.results));
}

const std::vector<std::string_view>& leagueFiles() {
    static const std::vector<std::string_view> files = {kPlayerFile, kTeamFile, kGamePlanFile, kDefaultScheduleFile,
                                                        kRealResultsFile};
    return files;
}

}  // namespace

int teamNumber(const ImportedLeague& league, std::string_view code) {
    for (std::size_t i = 0; i < league.teams.size(); ++i)
        if (league.teams[i].TeamActive == 1 && league.teams[i].Abbrev.str() == code) return static_cast<int>(i) + 1;
    return 0;
}

ImportedLeague buildLeague(const SeasonData& data) { return LeagueBuilder(data).build(); }

std::string realResultsText(const std::vector<RealResult>& results) {
    std::string out = "date,visitor,home,visitor_team,home_team,visitor_goals,home_goals,decided_in\n";
    for (const auto& r : results)
        out += fmt::format("{:04}-{:02}-{:02},{},{},{},{},{},{},{}\n", r.date.year, r.date.month, r.date.day, r.visitor,
                           r.home, r.visitorTeam, r.homeTeam, r.visitorGoals, r.homeGoals, r.decidedIn);
    return out;
}

void writeLeague(const ImportedLeague& league, const fs::path& dir, bool replace) {
    std::error_code ec;
    bool fresh = !fs::exists(dir, ec);
    if (!fresh && !fs::is_directory(dir, ec)) throw FileError(fmt::format("{}: not a folder", dir.string()));
    if (!fresh && !replace) {
        for (std::string_view name : leagueFiles()) {
            auto existing = findFile(dir, name);
            if (fs::exists(existing, ec))
                throw FileError(fmt::format("{} already holds a league ({}); use --force to replace its files",
                                            dir.string(), existing.filename().string()));
        }
    }
    fs::path target = fs::absolute(dir).lexically_normal();
    if (!target.has_filename()) target = target.parent_path();  // a trailing separator
    fs::path parent = fresh ? target.parent_path() : target;
    if (fresh) {
        fs::create_directories(parent, ec);
        if (ec) throw FileError(fmt::format("{}: cannot create the folder: {}", parent.string(), ec.message()));
    }
    fs::path scratch = scratchFolder(parent, fresh ? target.filename().string() : std::string(".league"));
    try {
        fs::create_directory(scratch);
        writeFiles(league, scratch);
        if (fresh) {
            fs::rename(scratch, target);
        } else {
            for (std::string_view name : leagueFiles()) fs::rename(scratch / name, findFile(target, name));
            fs::remove(scratch);
        }
    } catch (const fs::filesystem_error& e) {
        fs::remove_all(scratch, ec);
        throw FileError(fmt::format("{}: cannot write the league: {}", dir.string(), e.code().message()));
    } catch (...) {
        fs::remove_all(scratch, ec);
        throw;
    }
}

fs::path defaultSeasonFolder(const fs::path& programDir) {
    const fs::path season = fs::path("seasons") / "2017-18";
    std::error_code ec;
    if (!programDir.empty() && fs::is_directory(programDir / season, ec)) return programDir / season;
    fs::path source = fs::path(TALLYRINK_DATA_DIR) / season;
    if (fs::is_directory(source, ec)) return source;
    return fs::path(TALLYRINK_INSTALLED_DATA_DIR) / season;
}

}  // namespace tallyrink
