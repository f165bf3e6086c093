#include "engine/narration.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "engine/game.h"
#include "presentation/phrases.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

bool closesWord(char c) { return c == '!' || c == ',' || c == '?' || c == '.' || c == ')'; }

void appendPart(std::string& out, std::string_view part) { appendWords(out, part); }
void appendPart(std::string& out, const std::string& part) { appendWords(out, part); }
void appendPart(std::string& out, const char* part) { appendWords(out, part); }
void appendPart(std::string& out, int n) { appendWords(out, fmt::format_int(n).c_str()); }

// Keys of the phrase table the telling asks for by number.
enum Key : int {
    kAtThePoint = 5,
    kInFrontOfNet = 6,
    kInTheSlot = 8,
    kInTheLowSlot = 10,
    kInTheCorner = 12,
    kAlongTheBoards = 13,
    kNeutralZoneWords = 20,
    kShoots = 24,
    kBadAngle = 25,
    kThroughTraffic = 26,
    kWithOneTimer = 27,
    kWithSlapShot = 28,
    kWindsUp = 31,
    kSlapShot = 32,
    kWristShot = 33,
    kOneTimer = 35,
    kEmptyNetShot = 36,
    kWeakShot = 39,
    kWhiffs = 40,
    kBreaksStick = 41,
    kOffThePost = 42,
    kOffTheCrossbar = 43,
    kGloveSave = 49,
    kBlockerSave = 50,
    kStickSave = 51,
    kSavedBy = 52,
    kSavesIt = 53,
    kWhatASaveBy = 54,
    kAcrobaticSave = 55,
    kDeniedBy = 56,
    kFreezeIt = 57,
    kWillPlayIt = 58,
    kLeavesTheNet = 60,
    kRebound = 62,
    kPuckIsLoose = 63,
    kPassesTo = 64,
    kDeke = 105,
    kLookingToPass = 79,
    kCycling = 81,
    kDeflectsTo = 83,
    kLoosePuck = 84,
    kOutOfPlay = 94,
    kPossession = 99,  // base: keys 100 to 102
    kPressure = 103,   // base: keys 104 and 105
    kCarriesOver = 116,
    kGainsTheZone = 117,
    kDumpsIn = 125,
    kClearsIt = 138,
    kIcing = 144,
    kOffsides = 145,
    kComesAcrossOffsides = 146,
    kFaceoffCenter = 154,
    kFaceoffNeutral = 155,
    kFaceoffLeft = 156,
    kFaceoffRight = 157,
    kFacesOffAgainst = 158,
    kLinesmanDrops = 159,
    kWinsTheDraw = 160,
    kComesAway = 161,
    kHeScores = 162,
    kGoal = 164,
    kAndInTheNet = 165,
    kSpot = 166,  // base: keys 167 to 172
    kCreditedGoal = 173,
    kGetsAssist = 174,
    kUnassisted = 175,
    kStolenBy = 176,
    kBlockedBy = 179,
    kBlocksTheShot = 180,
    kHitHardBy = 185,
    kChecksIntoBoards = 186,
    kOpenIceHit = 187,
    kBreakaway = 213,
    kOnTheRush = 214,
    kOddManRush = 215,
    kTwoOnOne = 217,
};

}  // namespace

const PhraseTable& builtInPhrases() {
    static const PhraseTable table = PhraseTable::defaults();
    return table;
}

void appendWords(std::string& out, std::string_view part) {
    if (part.empty()) return;
    if (!out.empty() && out.back() != ' ' && part.front() != ' ' && !closesWord(part.front())) out += ' ';
    out += part;
}

std::string playName(const SideTables& side, int slot) {
    if (slot < 0 || slot >= kRosterSlots) return "nobody";
    const std::string& shortName = side.ShortNameOf[at(slot)];
    if (!shortName.empty()) return shortName;
    std::string last = side.player(slot).LastName.str();
    return last.empty() ? side.player(slot).ShortName.str() : last;
}

BySlot<std::string> narrationNames(const SideTables& side) {
    BySlot<std::string> names{};
    // The last names of the men on the team, read once for the comparisons,
    // each with its length and first letters as one word: two names that
    // differ there differ, and nearly every pair does.
    BySlot<int> dressed{};
    BySlot<std::string_view> lastNames{};
    BySlot<std::uint64_t> keys{};
    std::size_t count = 0;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!side.onTeam(slot)) continue;
        const std::string_view last = side.player(slot).LastName.view();
        std::uint64_t key = 0;
        std::memcpy(&key, last.data(), std::min<std::size_t>(last.size(), 7));
        dressed[count] = slot;
        lastNames[count] = last;
        keys[count] = key << 8 | (last.size() & 0xFF);
        ++count;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const int slot = dressed[i];
        const PlayerRecord& p = side.player(slot);
        const std::string_view last = lastNames[i];
        bool shared = false;
        for (std::size_t mate = 0; mate < count && !last.empty() && !shared; ++mate)
            shared = mate != i && keys[mate] == keys[i] && lastNames[mate] == last;
        if (last.empty())
            names[at(slot)] = playName(side, slot);
        else if (shared && !p.FirstName.str().empty())
            names[at(slot)] = p.FirstName.str() + " " + std::string(last);
        else
            names[at(slot)] = last;
    }
    return names;
}

std::string ordinal(int n) {
    int tens = n % 100;
    const char* suffix = "th";
    if (tens < 11 || tens > 13) {
        switch (n % 10) {
            case 1:
                suffix = "st";
                break;
            case 2:
                suffix = "nd";
                break;
            case 3:
                suffix = "rd";
                break;
            default:
                break;
        }
    }
    return fmt::format("{}{}", n, suffix);
}

// ---- The tools of the telling ------------------------------------------------------

void Game::initNarration() {
    play_.setTelling(telling());
    play_.clear();
    told_ = NarrationState{};
    for (int side : {kVisitor, kHome}) told_.name[at(side)] = narrationNames(sideOf(side));
}

std::string_view Game::phrase(int key) { return phrases_->phrase(key, rng_); }

std::string_view Game::phrase(int base, int count) { return phrases_->phrase(base, count, rng_); }

template <class... P>
std::string Game::words(const P&... parts) const {
    std::string out;
    if (!telling()) return out;
    (appendPart(out, parts), ...);
    return out;
}

LineMarks& Game::say(std::string&& text, NamedMan opens, NamedMan ends) {
    return play_.add(std::move(text), opens, ends);
}

LineMarks& Game::sayFor(int side, std::string&& text, NamedMan opens, NamedMan ends) {
    // After a pause the telling picks the play up again with the man who
    // has the puck.
    int carrier = s_.find.Carrier;
    if (play_.lastIsPause() && !told_.resuming && !isFaceoff(s_.PlayZone) && carrier != kNoSlot &&
        !(opens == NamedMan{s_.PuckTeam, carrier})) {
        told_.resuming = true;
        sayPossession(s_.PuckTeam, carrier);
        told_.resuming = false;
    }
    LineMarks& m = play_.add(std::move(text), opens, ends);
    m.team = static_cast<std::int16_t>(side + 1);
    return m;
}

const std::string& Game::nameOf(int side, int slot) const {
    static const std::string nobody;
    if (slot < 0 || slot >= kRosterSlots || side < 0 || side > 1) return nobody;
    const std::string& n = told_.name[at(side)][at(slot)];
    return n;
}

std::string_view Game::teamName(int side) const { return sideOf(side).team.Nickname.view(); }

std::string_view Game::cityOf(int side) const { return sideOf(side).team.City.view(); }

void Game::sayPossession(int side, int slot) {
    NamedMan who{side, slot};
    // Said once is enough: no second possession line for the man just named.
    if (told_.possessionLine == play_.count() && play_.lastNames(who)) return;
    sayFor(side, words(nameOf(side, slot), phrase(kPossession, 3)), who);
    told_.possessionLine = play_.count();
    told_.lastCarrier = who;
}

// A pass from `from` to `to` of `side`, as a caster says it: the full
// sentence or a shortened one, and after a pause the receiver with the puck.
void Game::sayPass(int side, int from, int to) {
    NamedMan receiver{side, to};
    if (to == kNoSlot || receiver == told_.lastCarrier) return;
    if (play_.empty() || play_.lastIsPause()) {
        // Nothing told before it: the receiver simply has the puck.
        told_.resuming = true;
        sayPossession(side, to);
        told_.resuming = false;
    } else {
        std::string_view passes = phrase(kPassesTo);
        LineMarks& m = sayFor(side, words(nameOf(side, from), passes, nameOf(side, to)), {side, from}, receiver);
        m.sound = kSoundPass;
        if (roll(3) == 1) play_.rewrite(words(passes, nameOf(side, to)), {}, receiver);
        if (roll(3) == 1) play_.rewrite(words("to", nameOf(side, to)), {}, receiver);
    }
    const FindState& f = s_.find;
    int odds = to == f.Passer2 ? 20 : to == f.Passer1 ? 30 : 40;
    if (roll(odds) == 1) sayFor(side, words(phrase(kPressure, 2)));
    told_.lastCarrier = receiver;
}

// ---- The draw ------------------------------------------------------------------------

void Game::DescribeOpening() {
    int home = kHome;
    const TeamRecord& t = sideOf(home).team;
    std::string arena = t.Arena.str();
    say(arena.size() >= 5 ? words("welcome to", arena, "for tonight's game between the", cityOf(kVisitor),
                                  teamName(kVisitor), "and the", cityOf(kHome), teamName(kHome))
                          : words("welcome to tonight's game between the", cityOf(kVisitor), teamName(kVisitor),
                                  "and the", cityOf(kHome), teamName(kHome)));
    if (!telling()) return;
    for (int side : {kVisitor, kHome}) {
        std::string starters;
        for (int slot : s_.onIce[at(side)].slot) {
            if (slot == kNoSlot) continue;
            starters += (starters.empty() ? "" : ", ") + nameOf(side, slot);
        }
        sayFor(side, fmt::format("starting for the {}: {}", teamName(side), starters));
    }
}

void Game::DescribeNewGoalie(int side) {
    sayFor(side, words(nameOf(side, s_.goalie[at(side)]), "now in goal for", cityOf(side)));
}

void Game::DescribeGoalieRelief(int side, int out) {
    sayFor(side, words(nameOf(side, out), "heads to the bench"));
    DescribeNewGoalie(side);
    // A change in goal is news enough for the short telling too.
    if (telling()) play_.addShort(words(nameOf(side, s_.goalie[at(side)]), "now in goal for", cityOf(side)));
}

void Game::DescribeCircleChange(int side, int out, int in) {
    sayFor(side, words(nameOf(side, out), "is removed from the circle"));
    sayFor(side, words(nameOf(side, in), "will take the draw"));
}

void Game::DescribeTension() {
    int v = roll(10);
    bool periodStart = s_.Clock == periodSeconds();
    if (v == 1)
        say(words(periodStart ? "angry faces to start the period" : "angry faces for the faceoff"));
    else if (v == 3 || v == 4)
        say(words("chippy skaters take the ice"));
    else
        say(words(periodStart ? "tension on the ice to start the period" : "tension on the ice"));
}

void Game::DescribeFaceoffResult(int winner) {
    const EventState& ev = s_.events;
    int loser = other(winner);
    int won = ev.DrawMan[at(winner)];
    int lost = ev.DrawMan[at(loser)];
    Zone z = s_.PlayZone;
    FaceoffSpot spot = faceoffSpot(z);
    if (spot == FaceoffSpot::Center) {
        say(words(phrase(kFaceoffCenter))).faceoffShown = true;
    } else if (spot == FaceoffSpot::Neutral) {
        say(words(phrase(kFaceoffNeutral))).faceoffShown = true;
    } else {
        int end = faceoffEndSide(z);
        int g = netminder(end);
        std::string_view side = phrase(roll(2) == 1 ? kFaceoffLeft : kFaceoffRight);
        LineMarks& m =
            g == kNoSlot ? say(words(side, "the empty", teamName(end), "net")) : say(words(side, nameOf(end, g)));
        m.faceoffShown = true;
    }
    if (roll(3) == 1)
        sayFor(winner, words(nameOf(winner, won), phrase(kFacesOffAgainst), nameOf(loser, lost)), {winner, won},
               {loser, lost});
    else if (roll(4) == 1)
        say(words(phrase(kLinesmanDrops)));
    sayFor(winner, words(nameOf(winner, won), phrase(kWinsTheDraw - 1, 2)), {winner, won});
    told_.lastCarrier = {winner, won};
}

// ---- Shots ---------------------------------------------------------------------------

int Game::shooterDepth() const {
    int pos = s_.find.CarrierPos;
    if (pos < 0 || pos >= static_cast<int>(kIcePositions)) return kSpotOut;
    int spot = s_.find.Spot[at(pos)];
    return spot >= kSpotBehind && spot <= kSpotOut ? spot : kSpotOut;
}

void Game::DescribeShot() {
    told_.reboundShot = false;
    EventState& ev = s_.events;
    int side = s_.PuckTeam;
    int shooter = s_.find.Carrier;
    NamedMan who{side, shooter};
    const std::string& name = nameOf(side, shooter);
    double quality = std::clamp(chances_.GoalPct, 0.0, 1.0);
    bool rebound = ev.Kind == ShotKind::Rebound || ev.Kind == ShotKind::ReboundShot;
    told_.shotWord = " shot";

    auto shotLine = [&](std::string&& text, NamedMan opens) -> LineMarks& {
        LineMarks& m = sayFor(side, std::move(text), opens, who);
        m.sound = kSoundShot;
        m.shotVideo = true;
        m.shotTeam = static_cast<std::int16_t>(side + 1);
        if (!rebound) {
            m.shotQuality = static_cast<std::int16_t>(roundHalfAway(quality * 100));
            m.icon = kIconShot;
        }
        return m;
    };

    if (netminder(other(side)) == kNoSlot) {
        shotLine(words(name, phrase(kEmptyNetShot)), who);
        if (roll(2) == 1) play_.pause();
        told_.lastCarrier = who;
        sayShotResult();
        return;
    }
    // A draw won in the attacking end isn't a shot from afar, whatever the
    // zone state says.
    if (ev.Kind == ShotKind::Long && !s_.OffensiveDraw) {
        told_.shotWord = " long shot";
        shotLine(words(name, "shoots from center ice"), who);
        told_.lastCarrier = who;
        sayShotResult();
        return;
    }

    DescribeGameSituation();
    // The subject: left out when the line before already names him, now
    // and then his first name alone once the play has gone on a while.
    bool named = play_.lastNames(who);
    if (s_.LastPlayCall == Call::Penetrate) {
        DescribeDeke(true);
        named = play_.lastNames(who);
    }
    std::string_view subject = named ? std::string_view{} : std::string_view{name};
    std::string first;
    if (!named && roll(10) == 1 && play_.count() >= 4 + roll(4) && shooter != kNoSlot) {
        first = sideOf(side).player(shooter).FirstName.str();
        if (!first.empty()) subject = first;
    }
    NamedMan opens = subject.empty() ? NamedMan{} : who;
    bool afterPass = told_.lastCarrier != who;
    const PlayerRecord* p = shooter == kNoSlot ? nullptr : &sideOf(side).player(shooter);
    int shotRating = p ? std::max<int>(p->RatingShotIn, p->RatingShotOut) : 0;

    bool badAngle = roll(40) == 1 || (told_.badAngle && told_.lastShotQuality * 100 < 2 * shotRating);
    if (s_.LastZone == Zone::Rush) badAngle = false;
    told_.badAngle = badAngle;

    bool oneTimerFits = s_.LastZone != Zone::Rush && s_.LastPlayCall != Call::Penetrate && afterPass;
    auto oneTimer = [&](bool askName) {
        if (!oneTimerFits) {
            shotLine(words(subject, phrase(kShoots)), opens);
            return;
        }
        ev.Kind = ShotKind::OneTimer;
        told_.shotWord = " one-timer";
        shotLine(words(phrase(kOneTimer)), {}).sound = kSoundNamedShot;
        if (askName || roll(2) == 1) play_.rewrite(words(subject, phrase(kWithOneTimer)), opens, who);
    };
    auto wristForm = [&] {
        ev.Kind = ShotKind::Wrist;
        told_.shotWord = " wrist shot";
        std::string_view w = phrase(kWristShot);
        shotLine(afterPass ? words(name, "with a wrist shot") : words(w), afterPass ? who : NamedMan{}).sound =
            kSoundNamedShot;
    };

    int depth = shooterDepth();
    if (badAngle) {
        shotLine(words(subject, phrase(kBadAngle)), opens);
    } else if (depth == kSpotBehind) {
        if (ev.Kind == ShotKind::Rebound || ev.Kind == ShotKind::ReboundShot || roll(3) != 1) {
            shotLine(words(subject, phrase(kShoots)), opens);
        } else {
            int v = roll(10);
            shotLine(v <= 3   ? words(name, "with the wraparound shot")
                     : v <= 5 ? words("wraparound by", name)
                              : words(name, "with the wraparound"),
                     who)
                .sound = kSoundNamedShot;
        }
    } else if (depth == kSpotIn) {
        int v = roll(10);
        if (v <= 2) {
            std::string_view kind = phrase(kSlapShot, 2);
            ev.Kind = ShotKind::Wrist;
            told_.shotWord = " wrist shot";
            shotLine(afterPass ? words(name, "with a", kind) : words(kind, "!"), afterPass ? who : NamedMan{}).sound =
                kSoundNamedShot;
        } else if (v == 3) {
            oneTimer(true);
        } else {
            shotLine(words(subject, phrase(kShoots), "!"), opens);
        }
    } else if (depth == kSpotOut) {
        if (sideOf(side).team.TeamYear < 1940) {
            if (roll(5) == 1)
                wristForm();
            else
                shotLine(words(subject, phrase(kShoots)), opens);
        } else {
            int v = roll(10);
            if (v == 1) {
                ev.Kind = ShotKind::Slap;
                told_.shotWord = " slap shot";
                shotLine(words(subject, phrase(kWindsUp)), opens);
            } else if (v <= 3) {
                ev.Kind = ShotKind::Slap;
                told_.shotWord = " slap shot";
                std::string_view kind = phrase(kSlapShot);
                shotLine(afterPass ? words(name, "with a", kind) : words(kind), afterPass ? who : NamedMan{}).sound =
                    kSoundNamedShot;
            } else if (v == 4) {
                oneTimer(!play_.lastNames(who));
            } else if (v <= 7) {
                shotLine(words(subject, phrase(kShoots)), opens);
            } else if (v == 8) {
                wristForm();
            } else {
                int screens = 0;
                for (int pos = 0; pos < 5; ++pos)
                    if (s_.find.Spot[at(pos)] == kSpotScreen) ++screens;
                if (roll(20) < 5 * screens + 2) {
                    shotLine(words(subject, phrase(kThroughTraffic)), opens);
                } else {
                    ev.Kind = ShotKind::Slap;
                    told_.shotWord = " slap shot";
                    shotLine(words(subject, phrase(kWithSlapShot)), opens);
                }
            }
        }
    } else {  // a screen in front or the middle distance
        int v = roll(10);
        if (v == 1) {
            std::string_view kind = phrase(kWindsUp, 3);
            shotLine(afterPass ? words(name, "with a", kind) : words(kind), afterPass ? who : NamedMan{}).sound =
                kSoundNamedShot;
            if (roll(5) == 1) play_.rewrite(words(subject, phrase(kWindsUp)), opens, who);
        } else if (v == 2) {
            ev.Kind = ShotKind::Slap;
            told_.shotWord = " slap shot";
            shotLine(words(subject, phrase(kWithSlapShot)), opens);
        } else if (v == 3) {
            oneTimer(true);
        } else {
            shotLine(words(subject, phrase(kShoots)), opens);
        }
    }
    if (ev.Kind == ShotKind::Deflection) told_.shotWord = " deflection";
    if (ev.Kind == ShotKind::Breakaway) told_.shotWord = " breakaway shot";
    if (rebound) told_.shotWord = " rebound shot";

    // A shot told as weak is weak: it may not even reach the net.
    int accuracy = p ? p->RatingShotOut : 5;
    bool goal = s_.PlayResult == Result::Goal;
    bool weak = goal ? roll(500) == 1 : (roll(60) == 1 || (roll(30) == 1 && accuracy < roll(10)));
    if (weak) {
        ev.Kind = ShotKind::Weak;
        told_.shotWord = " weak shot";
        int v = roll(250);
        if (goal) {
            sayFor(side, words(phrase(kWeakShot)));
        } else if (v == 1) {
            sayFor(side, words(phrase(kBreaksStick)));
        } else if (v <= 4 && s_.PlayResult == Result::Miss) {
            sayFor(side, words(phrase(kWhiffs)));
            told_.whiff = true;
        } else {
            sayFor(side, words(phrase(kWeakShot)));
        }
    }
    told_.lastShotQuality = quality;
    told_.lastCarrier = who;
    sayShotResult();
    countScoringChance(quality);
}

void Game::sayShotResult() {
    switch (s_.PlayResult) {
        case Result::Save:
            DescribeSave();
            break;
        case Result::Miss:
            DescribeMiss();
            break;
        default:
            break;
    }
}

void Game::DescribeSave() {
    int side = s_.PuckTeam;
    int goalieSide = other(side);
    int shooter = s_.find.Carrier;
    int goalie = netminder(goalieSide);
    const std::string& g = nameOf(goalieSide, goalie);
    if (telling()) play_.addShort(words(nameOf(side, shooter), told_.shotWord) + words(" saved by ", g));
    bool weak = s_.events.Kind == ShotKind::Weak;
    const PlayerRecord* gp = goalie == kNoSlot ? nullptr : &sideOf(goalieSide).player(goalie);
    int greatSaves = gp ? gp->RatingGoalie : 50;
    NamedMan keeper{goalieSide, goalie};

    LineMarks* m = &sayFor(goalieSide, {}, {}, keeper);
    m->sound = kSoundSave;
    auto upgrade = [&] {
        if (roll(100) > greatSaves) return;
        play_.rewrite(words(phrase(kWhatASaveBy), g, "!"), {}, keeper);
        if (roll(3) == 1) {
            play_.rewrite(words(g, phrase(kAcrobaticSave)), keeper);
            m->alert = 'S';
        }
    };
    int v = roll(110);
    if (v <= 5) {
        play_.rewrite(words(phrase(kSavedBy), g), {}, keeper);
        upgrade();
    } else if (v <= 10) {
        int f = roll(10);
        play_.rewrite(f <= 2   ? words(g, "with a glove save")
                      : f <= 4 ? words(g, "got a glove on it")
                               : words("glove save by", g),
                      keeper);
    } else if (v <= 30) {
        play_.rewrite(words(phrase(kDeniedBy), g), {}, keeper);
    } else if (v <= 32) {
        play_.rewrite(words(g, "covers up the five hole"), keeper);
    } else if (v <= 43) {
        play_.rewrite(words(phrase(kStickSave)));
    } else if (v <= 50) {
        play_.rewrite(words(phrase(kBlockerSave)));
    } else if (v <= 75) {
        play_.rewrite(words(g, phrase(kSavesIt)), keeper);
    } else if (v <= 86) {
        play_.rewrite(v <= 79   ? words(g, "kicks it away")
                      : v <= 82 ? words(g, "with a kick save")
                                : words("kick save by", g),
                      keeper);
    } else {
        play_.rewrite(words(phrase(kSavedBy), g), {}, keeper);
    }
    if (goalieSide == kHome && !weak && roll(10) == 1 && greatSaves >= 20 + roll(80) && gp)
        play_.rewrite(words("great save by", gp->LastName.str()), {}, keeper);
    if (!weak && roll(100) > 10 && telling() && !lastText().ends_with('!'))
        play_.rewrite(words(lastText(), "!"), {}, keeper);

    // Round numbers of saves for a goalie who hasn't been beaten yet.
    if (goalie != kNoSlot && !goalieBeaten(goalieSide, goalie)) {
        int saves = s_.events.shotsFaced[at(goalieSide)][at(goalie)] + 1;
        if (saves % 10 == 0 && (saves >= 30 || saves > 15 * s_.Period)) {
            const char* bang = saves >= 40 ? "!" : "";
            sayFor(goalieSide, roll(10) <= 3 ? words(g, "with save number", saves, bang)
                                             : words("save number", saves, "for", g, bang));
        }
    }
    DescribeShotsNoGoal();
}

bool Game::goalieBeaten(int side, int goalie) const { return told_.goalsAllowed[at(side)][at(goalie)] > 0; }

std::string Game::lastText() const {
    const auto& t = play_.texts();
    return t.empty() ? std::string{} : t.back();
}

void Game::DescribeShotsNoGoal() {
    int side = s_.PuckTeam;
    int shooter = s_.find.Carrier;
    if (shooter == kNoSlot) return;
    const StatLine& line = statLine(sideOf(side).player(shooter), StatLineIndex::Game);
    int shots = line.Sog + line.MissedShots + 1;
    if (line.Goals > 0 || shots < 7) return;
    bool tell = shots == 10 || shots == 15 || shots == 20 || roll(3) == 1 || (shots >= 11 && roll(5) == 1);
    if (tell) sayFor(side, words(nameOf(side, shooter), "with", shots, "shots, no goals"), {side, shooter});
}

void Game::DescribeMiss() {
    int side = s_.PuckTeam;
    int shooter = s_.find.Carrier;
    const std::string& name = nameOf(side, shooter);
    bool weak = s_.events.Kind == ShotKind::Weak;
    std::string_view shortEnd = " missed the net";
    if (told_.whiff) {
        shortEnd = " missed ";
        told_.whiff = false;
    } else if (weak) {
        shortEnd = " missed weakly";
    }
    int v = roll(12);
    if (weak) {
        sayFor(side, words(v <= 4   ? "the shot went nowhere"
                           : v <= 8 ? "the weak shot won't get to the net"
                                    : "nothing on the shot"));
    } else {
        int k = roll(300);
        static constexpr std::array<int, 7> keys{47, 46, 48, 44, 42, 43, 45};
        if (k <= 14) {
            int key = keys[at((k - 1) / 2)];
            LineMarks& m = sayFor(side, words(phrase(key)));
            if (key == kOffThePost || key == kOffTheCrossbar) {
                m.sound = kSoundIron;
                shortEnd = key == kOffThePost ? " hit the post" : " hit the crossbar";
            }
        } else {
            static constexpr std::array<std::string_view, 7> wide{"the puck slides wide of the net",
                                                                  "missed the net",
                                                                  "the shot is off target",
                                                                  "the puck bounces wide of the net",
                                                                  "well off target",
                                                                  "wide of the goal",
                                                                  "wide of the net"};
            sayFor(side, words(wide[at((k - 15) % 7)]));
            if ((k - 15) % 7 == 0 || (k - 15) % 7 >= 5) shortEnd = " missed wide";
        }
    }
    if (telling()) play_.addShort(words(name, told_.shotWord) + std::string(shortEnd));

    // A stick can break on a shot; the man then can't take a pass until he
    // has a new one.
    if (shooter != kNoSlot && roll(50) == 1 && !brokenStickOnIce(side)) {
        s_.find.BrokenStick[at(side)][at(shooter)] = true;
        NamedMan who{side, shooter};
        bool namedLately = play_.recentlyNamed(who, 2);
        int b = roll(12);
        sayFor(side, b <= 7 ? words("a broken stick for", name) : words("he broke his stick"));
        if (!namedLately && roll(10) <= 5) sayFor(side, words(name, "broke his stick"), who);
    }
}

void Game::DescribeBlock(int side, int blocker) {
    int shooting = other(side);
    int shooter = s_.find.Carrier;
    const std::string& b = nameOf(side, blocker);
    NamedMan by{side, blocker};
    if (telling()) play_.addShort(words(nameOf(shooting, shooter), "shot blocked by", b));
    int v = roll(5);
    if (v == 1)
        sayFor(side, words(phrase(kBlockedBy), b), {}, by);
    else if (v == 2)
        sayFor(side, words("it hits", b), {}, by);
    else if (v == 3)
        sayFor(side, words("it didn't get past", b), {}, by);
    else if (v == 4)
        sayFor(side, words(b, phrase(kBlocksTheShot)), by);
    else
        sayFor(side, words("didn't make it through"));
}

// ---- Goals ---------------------------------------------------------------------------

void Game::DescribeGoalLead() {
    int side = s_.PuckTeam;
    int against = other(side);
    int shooter = s_.find.Carrier;
    const std::string& name = nameOf(side, shooter);
    bool fromClear = s_.PlayResult == Result::ClearGoal;
    std::array<int, 2> score = s_.Score;
    ++score[at(side)];
    if (telling()) {
        std::string text = fromClear
                               ? words(name, "SCORES on dump attempt")
                               : words(name, s_.LastZone == Zone::PenaltyShot ? "SCORES on a penalty shot" : "SCORES");
        play_.addShort(fmt::format("{} ({} {} {} {}) {}", text, sideOf(kVisitor).team.Abbrev.str(), score[0],
                                   sideOf(kHome).team.Abbrev.str(), score[1], std::string(99, '-')));
    }
    int beaten = netminder(against);
    if (beaten != kNoSlot) ++told_.goalsAllowed[at(against)][at(beaten)];
    // A rebound put in was told without a shot line: it is a chance too.
    if (told_.reboundShot || fromClear) countScoringChance(1);
    if (fromClear) {
        LineMarks& m = sayFor(side, words(name, "scores!"), {side, shooter});
        m.sound = kSoundGoal;
        m.icon = kIconGoal;
        return;
    }
    int v = roll(300);
    LineMarks* m = nullptr;
    if (v == 1) {
        sayFor(side, words(phrase(kOffTheCrossbar))).sound = kSoundIron;
        m = &sayFor(side, words(phrase(kAndInTheNet)));
    } else if (v == 2) {
        sayFor(side, words(phrase(kOffThePost))).sound = kSoundIron;
        if (roll(60) == 1) {
            sayFor(side, words("off the other post!")).sound = kSoundIron;
            sayFor(side, words(phrase(kAndInTheNet)));
        }
        m = &sayFor(side, words(phrase(kGoal)));
    } else {
        m = &sayFor(side, words(phrase(v >= 10 && v <= 30 ? kHeScores : kGoal)));
        if (roll(3000) == 1) {
            int g = netminder(against);
            play_.rewrite(words(phrase(kWhatASaveBy), nameOf(against, g), "!"));
            sayFor(side, words("but he lost it!"));
            m = &sayFor(side, words(phrase(kGoal)));
        }
    }
    m->sound = kSoundGoal;
    m->icon = kIconGoal;
    if (strength(side) < strength(against))
        sayFor(side, roll(10) == 1 ? words(cityOf(side), "with the short handed goal!") : words("short handed goal!"));

    int margin = score[at(side)] - score[at(against)];
    if (s_.Period == periods_ && s_.Clock < 180) {
        const char* bang = side == kHome ? "!" : "";
        int r = roll(10);
        if (margin == 1)
            sayFor(side, r <= 3   ? words(cityOf(side), "gives", name, "the lead", bang)
                         : r <= 7 ? words("and", cityOf(side), "grabs the lead", bang)
                                  : words(name, "breaks the tie", bang));
        else if (margin == 0)
            sayFor(side, r <= 4   ? words(name, "ties it up", bang)
                         : r == 5 ? words("and we're tied at", score[0], bang)
                                  : words("and", name, "ties it up", bang));
        else if (margin == -1 && s_.Clock > 30)
            sayFor(side, r <= 3   ? words(cityOf(side), "pulls", name, "within a goal")
                         : r <= 5 ? words("and", cityOf(side), "is within a goal")
                                  : words(cityOf(side), "pulls within a goal"));
    }
}

void Game::DescribeVideoReview() {
    static constexpr std::array<std::string_view, 8> openers{
        "they will review this one",          "this one might not count", "the ref wants to see the replay",
        "they're going to take another look", "but this might not count", "they'll view the replay on this one",
        "this might be disallowed",           "this one is under review"};
    static constexpr std::array<std::string_view, 5> stands{"it counts!", "the goal will stand!", "it stands!",
                                                            "the goal stands!",
                                                            "the goal is confirmed by video review"};
    say(words(openers[at(roll(8) - 1)]));
    play_.pause();
    say(words(stands[at(roll(5) - 1)]));
}

void Game::DescribeGoalCredit(int scorer) {
    if (s_.PlayResult == Result::ClearGoal) return;
    DescribeGoalColor(scorer);
}

void Game::DescribeGoalColor(int scorer) {
    EventState& ev = s_.events;
    int side = s_.PuckTeam;
    int against = other(side);
    const FindState& f = s_.find;
    const std::string& name = nameOf(side, scorer);
    const std::string& assist = nameOf(side, f.Passer1);
    int goalie = netminder(against);
    const std::string& g = nameOf(against, goalie);
    const PlayerRecord* p = scorer == kNoSlot ? nullptr : &sideOf(side).player(scorer);
    NamedMan who{side, scorer};

    if (f.Passer1 != kNoSlot && play_.recentlyNamed({side, f.Passer1}, 6) && shooterDepth() != kSpotOut &&
        ev.Kind != ShotKind::Deflection && p && sideOf(side).player(f.Passer1).RatingPassing > roll(8) &&
        roll(s_.LastZone == Zone::Rush ? 5 : 3) == 1)
        told_.greatPass = true;
    bool badDefense = roll(25) == 1;
    int margin = s_.Score[at(side)] + 1 - s_.Score[at(against)];
    if (side == kHome && margin < 3 && roll(25) == 1) {
        if (roll(2) == 1) {
            static constexpr std::array<std::string_view, 16> quips{"MA! The Meatloaf!",
                                                                    "make me a bicycle, clown!",
                                                                    "pay that man his money!",
                                                                    "wacka wacka!",
                                                                    "we landed on the moon!",
                                                                    "you're my boy, blue!",
                                                                    "we're gonna need a bigger boat!",
                                                                    "I'm never gonna dance again!",
                                                                    "come with me if you want to live!",
                                                                    "get off my lawn!",
                                                                    "I go to work like a doctor!",
                                                                    "ding, fries are done!",
                                                                    "look kids, it's Big Ben!",
                                                                    "my car just hit a water buffalo!",
                                                                    "iceberg, dead ahead!",
                                                                    "I can't believe it's not butter!"};
            sayFor(side, words(quips[at(roll(16) - 1)]));
        } else {
            int q = roll(13);
            sayFor(side, q <= 4   ? words("get in the fast lane grandma..")
                         : q <= 7 ? words(g, "doesn't know whether to cry..")
                                  : words("ladies and gentlemen.."));
        }
    }
    if (side == kHome && roll(5) == 1 && p) {
        std::string full = words(p->FirstName.str(), p->LastName.str(), "!");
        if (roll(10) == 1)
            std::transform(full.begin(), full.end(), full.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        sayFor(side, std::move(full), who);
    }
    if (side == kHome && roll(10) == 1 && p && !p->UniformNumber.str().empty())
        sayFor(side, words("number", p->UniformNumber.str(), "!"));
    if (goalie == kNoSlot) {
        told_.greatPass = false;
        return;  // an empty net needs no story
    }

    auto spotWords = [&] { return phrase(kSpot, 6); };
    int r = roll(10);
    if (told_.greatPass) {
        told_.greatPass = false;
        switch (r) {
            case 1:
                sayFor(side, words(assist, "fed him a great pass!"));
                break;
            case 2:
                sayFor(side, words("what a pass from", assist));
                break;
            case 3:
                sayFor(side, words(assist, "set up that goal with a great pass!"));
                break;
            case 4:
                sayFor(side, words(assist, "fed a saucer pass through"));
                break;
            case 5:
                sayFor(side, words(assist, "made that happen!"));
                break;
            case 6:
                sayFor(side, words(assist, "to", name, "for the score!"));
                break;
            case 7:
                sayFor(side, words(name, "on a great pass from", assist), who);
                break;
            case 8:
                sayFor(side, words("what a pass by", assist, "!"));
                break;
            default:
                sayFor(side, words("on a great pass by", assist));
                break;
        }
        return;
    }
    if (badDefense) {
        if (r <= 3) {
            sayFor(side, words("the defense fell apart on that play"));
            sayFor(side, words("and it resulted in a goal"));
        } else if (r <= 5) {
            sayFor(side, words("poor defense leads to an easy goal"));
        } else if (r <= 7) {
            sayFor(side, words("caught the defense out of position"));
        } else {
            sayFor(side, words("poor defense led to that goal"));
        }
        return;
    }
    switch (ev.Kind) {
        case ShotKind::Deflection: {
            int d = roll(8);
            if (d == 1)
                sayFor(side, words("what a deflection by", name, "!"));
            else if (d == 2)
                sayFor(side, words("amazing redirection by", name));
            else if (d == 3)
                sayFor(side, words(g, "was caught out of position"));
            else if (d == 4)
                sayFor(side, words("redirected to the back of the net!"));
            else if (d == 5 && f.Passer1 != kNoSlot)
                sayFor(side, words("great set up on the shot by", assist));
            else
                sayFor(side, words(name, "scores a deflection goal!"), who);
            if (roll(3) == 1) sayFor(side, words("and", g, "didn't have a chance!"));
            break;
        }
        case ShotKind::Slap:
            if (r <= 2)
                sayFor(side, words(name, "beat him cleanly with the slap shot"), who);
            else if (r <= 4)
                sayFor(side, words("that was a rocket!"));
            else if (r <= 6)
                sayFor(side, words(g, "got beat", spotWords()));
            else if (r <= 8)
                sayFor(side, words("just ripped it by", g, "!"));
            else
                sayFor(side, words(name, "ripped a slap shot by him!"), who);
            if (roll(2) == 1 && p && p->RatingShotOut > roll(5)) sayFor(side, words("what a shot!"));
            break;
        case ShotKind::Breakaway:
            sayFor(side, words("a breakaway goal!"));
            break;
        case ShotKind::OneTimer:
            if (roll(3) == 1) {
                if (r <= 3)
                    sayFor(side, words("the one-timer caught", g, "out of position"));
                else if (r <= 6)
                    sayFor(side, words("he got all of that one-timer!"));
                else
                    sayFor(side, words(spotWords(), "on the one-timer!"));
                if (f.Passer1 != kNoSlot && roll(5) <= 2) sayFor(side, words(assist, "set him up with a nice pass"));
            }
            break;
        case ShotKind::Rebound:
        case ShotKind::ReboundShot:
            if (r <= 2)
                sayFor(side, words("an easy goal for", name, "!"));
            else if (r <= 4)
                sayFor(side, words(name, "was in perfect position for the rebound!"), who);
            else if (r <= 6)
                sayFor(side, words(name, "bangs home the rebound!"), who);
            else if (r == 7) {
                sayFor(side, words("that was a bad rebound allowed by", g));
                sayFor(side, words("and it resulted in a goal!"));
            } else
                sayFor(side, words(name, "scores on a rebound!"), who);
            break;
        default:
            if (r <= 3)
                sayFor(side, words(g, "got beat", spotWords(), "!"));
            else if (r <= 5)
                sayFor(side, words(spotWords()));
            if (roll(5) == 1) sayFor(side, words("great goal by", name));
            break;
    }
}

void Game::DescribeGoalClose(int scorer) {
    int side = s_.PuckTeam;
    int against = other(side);
    const std::string& name = nameOf(side, scorer);
    const EventState& ev = s_.events;
    bool rebound = ev.Kind == ShotKind::Rebound || ev.Kind == ShotKind::ReboundShot;
    bool emptyNet = netminder(against) == kNoSlot;
    if (strength(side) > strength(against) && s_.Period <= periods_ && roll(5) == 1 && !rebound && !emptyNet) {
        sayFor(side, roll(10) == 1 ? words(cityOf(side), "scores on the power play")
                                   : words(name, "scores on the power play"));
        if (roll(7) == 1) sayFor(side, words(cityOf(side), "with the power play goal"));
    }
    if (s_.Period > periods_ && overtimeType_ != 2) {
        sayFor(side, roll(10) <= 2 ? words("for the", cityOf(side), "win!") : words(cityOf(side), "wins!"));
        return;
    }
    if (scorer != kNoSlot) {
        const PlayerRecord& p = sideOf(side).player(scorer);
        int inGame = statLine(p, StatLineIndex::Game).Goals + 1;
        if (inGame == 3) {
            int r = roll(10);
            sayFor(side, r == 1   ? words("that's a hat trick for", name)
                         : r == 2 ? words("and the hats rain down!")
                         : r == 3 ? words("it's raining hats!")
                         : r == 4 ? words("three goals today for", name)
                                  : words("a hat trick for", name, "!"));
        } else if (inGame == 4) {
            sayFor(side, words(inGame, "goals today for", name, "!"));
        } else if (inGame >= 5) {
            sayFor(side, words("what a game for", name, "!"));
            sayFor(side, words(inGame, "goals today!!"));
        }
        if (session_.GameType != 'E') {
            // The replay line is credited as the game goes: it holds the
            // earlier goals of this game already.
            int season = statLine(p, StatLineIndex::Replay).Goals + 1;
            const std::string number = telling() ? fmt::format("goal #{}", season) : std::string{};
            sayFor(side, session_.PlayoffGame ? words(number, "of the playoffs for", name)
                                              : words(number, "on the year for", name));
        }
    }
    int margin = s_.Score[at(side)] + 1 - s_.Score[at(against)];
    if (margin == 0)
        sayFor(side, words("that ties the game at", s_.Score[at(against)]));
    else if (margin == 1 && roll(4) == 1)
        sayFor(side, words("that goal gives them the lead"));
    else if (margin == -1 && roll(4) == 1)
        sayFor(side, words("it's a one goal game!"));
    else if (margin <= -2 && roll(3) == 1)
        sayFor(side, words("but they're still way behind"));
}

void Game::DescribeAssists() {
    if (s_.PlayResult == Result::ClearGoal) return;
    int side = s_.PuckTeam;
    const FindState& f = s_.find;
    int scorer = f.Carrier;
    sayFor(side, words(nameOf(side, scorer), phrase(kCreditedGoal)), {side, scorer});
    if (f.Passer1 == kNoSlot) {
        sayFor(side, words(phrase(kUnassisted)));
    } else {
        std::string_view assist = phrase(kGetsAssist);
        sayFor(side, words(nameOf(side, f.Passer1), assist), {side, f.Passer1});
        if (f.Passer2 != kNoSlot) sayFor(side, words("and", nameOf(side, f.Passer2), assist), {}, {side, f.Passer2});
    }
    DescribeGoalClose(scorer);
}

// ---- Rebounds and the puck after a shot --------------------------------------------------

void Game::DescribeKnockedAway(int side, int defender) {
    if (roll(3) == 1) sayFor(side, words(phrase(kDeflectsTo, 3)));
    sayFor(side, words("knocked away by", nameOf(side, defender), roll(100) > 10 ? "!" : ""), {}, {side, defender});
}

void Game::DescribeReboundClear() {
    int side = s_.PuckTeam;
    int v = roll(6);
    static constexpr std::array<std::string_view, 6> clears{
        "cleared out of trouble", "sent back out of the zone", "the puck moves back out of the zone",
        "cleared back to safety", "it's played at center ice", "recovered in the neutral zone"};
    sayFor(side, words(clears[at(v - 1)]));
}

void Game::DescribeOutOfPlay() {
    LineMarks& m = say(words(phrase(kOutOfPlay + roll(5) - 1)));
    m.sound = kSoundStoppage;
    if (telling()) play_.addShort(words("the puck goes out of play"));
}

bool Game::DescribeClearSave() {
    int shooting = s_.PuckTeam;
    sayFor(shooting, words(roll(4) == 1 ? "off the glass and on net" : "off the boards and on net"));
    int keeperSide = other(shooting);
    const std::string& goalie = nameOf(keeperSide, netminder(keeperSide));
    if (roll(30) == 1) {
        sayFor(keeperSide, words(goalie, "is behind the net!"));
        sayFor(keeperSide, words("he dives for the puck"));
        sayFor(keeperSide, words("and makes the save!")).sound = kSoundSave;
        return true;
    }
    sayFor(keeperSide, words(goalie, phrase(kSavesIt))).sound = kSoundSave;
    return false;
}

void Game::DescribeGoaliePass() {
    int side = s_.PuckTeam;
    int g = s_.goalie[at(side)];
    sayFor(side, words(nameOf(side, g), phrase(roll(2) == 1 ? kWillPlayIt : kLeavesTheNet)), {side, g});
}

void Game::DescribeFreeze() {
    LineMarks& m = say(words(phrase(kFreezeIt)));
    m.sound = kSoundStoppage;
}

void Game::DescribeReboundShot(int shooter) {
    int side = s_.PuckTeam;
    told_.reboundShot = true;
    sayFor(side, words(phrase(roll(2) == 1 ? kRebound : kPuckIsLoose)));
    LineMarks& m = sayFor(side, words(nameOf(side, shooter), phrase(kShoots)), {side, shooter});
    m.sound = kSoundShot;
    told_.lastCarrier = {side, shooter};
}

void Game::DescribeGoalieDrops() { say(words("the goalie drops it, loose puck in front!")); }

void Game::DescribeReboundMiss() {
    sayFor(s_.PuckTeam, words(roll(2) == 1 ? "the rebound goes wide" : "wide of the net"));
}

// ---- The puck up the ice --------------------------------------------------------------

void Game::DescribeDump() {
    int side = s_.StepPuckTeam;
    int carrier = s_.find.Carrier;
    const std::string& name = nameOf(side, carrier);
    int v = roll(8);
    if (v <= 4)
        sayFor(side, words(name, phrase(kDumpsIn + v - 1)), {side, carrier});
    else if (v == 5)
        sayFor(side, words("shot in by", name), {}, {side, carrier});
    else if (v == 6)
        sayFor(side, words(name, "steers it in deep"), {side, carrier});
    else if (v == 7)
        sayFor(side, words("steered into the", teamName(other(side)), "zone"));
    else
        sayFor(side, words("flipped into the corner by", name), {}, {side, carrier});
    if (roll(3) == 1) {
        static constexpr std::array<std::string_view, 4> chase{"dump and chase", "they'll try to get it back",
                                                               "racing to the puck", "they'll chase it down"};
        sayFor(side, words(chase[at(roll(4) - 1)]));
    }
}

void Game::DescribePass() {
    int side = s_.PuckTeam;
    int carrier = s_.find.Carrier;
    int v = roll(6);
    if (v <= 3)
        sayFor(side, words(nameOf(side, carrier), phrase(kLookingToPass)), {side, carrier});
    else if (v == 4)
        sayFor(side, words(cityOf(side), phrase(kCycling)));
    else
        sayFor(side, words(nameOf(side, carrier), phrase(kPressure, 2)), {side, carrier});
}

void Game::DescribeEntry() {
    int side = s_.PuckTeam;
    const FindState& f = s_.find;
    int first = f.NameFirst != kNoSlot ? f.NameFirst : f.Carrier;
    int second = f.NameSecond;
    if (second != kNoSlot && second != first) sayPass(side, first, second);
    int man = second != kNoSlot ? second : first;
    NamedMan who{side, man};
    std::string_view entry = phrase(roll(2) == 1 ? kCarriesOver : kGainsTheZone);
    if (play_.lastNames(who))
        sayFor(side, words("he", entry), {}, who);
    else
        sayFor(side, words(nameOf(side, man), entry), who);
    told_.lastCarrier = who;
}

void Game::DescribeMoveUp() {
    int side = s_.PuckTeam;
    int carrier = s_.find.Carrier;
    static constexpr std::array<std::string_view, 10> carries{"starts up ice",
                                                              "carries the puck up ice",
                                                              "stickhandles his way up ice",
                                                              "speeds up the right wing",
                                                              "carries the puck through the middle",
                                                              "skates down the right side",
                                                              "speeds up the left wing",
                                                              "advances with the puck",
                                                              "skates down the left side",
                                                              "carries it out of the zone"};
    NamedMan who{side, carrier};
    if (play_.lastNames(who) || told_.lastCarrier == who)
        sayFor(side, words("he", carries[at(roll(10) - 1)]), {}, who);
    else
        sayFor(side, words(nameOf(side, carrier), carries[at(roll(10) - 1)]), who);
    told_.lastCarrier = who;
}

void Game::DescribeRecover() {
    int side = s_.PuckTeam;
    static constexpr std::array<std::string_view, 4> kept{"kept in at the line", "they keep it in",
                                                          "held in at the blue line", "the clear is kept in"};
    sayFor(side, words(kept[at(roll(4) - 1)]));
}

void Game::DescribeClear() {
    int side = s_.PuckTeam;
    int carrier = s_.find.Carrier;
    NamedMan who{side, carrier};
    int v = roll(10);
    if (v <= 6)
        sayFor(side, words(nameOf(side, carrier), phrase(kClearsIt + v - 1)), who);
    else if (v == 7)
        sayFor(side, words("cleared out of trouble by", nameOf(side, carrier)), {}, who);
    else if (v == 8)
        sayFor(side, words(nameOf(side, carrier), "gets it out along the boards"), who);
    else if (v == 9)
        sayFor(side, words("sent back out of the", teamName(other(side)), "zone"));
    else
        sayFor(side, words(nameOf(side, carrier), "just gets it out"), who);
}

void Game::DescribeIcing(int side) {
    LineMarks& m = sayFor(side, words(phrase(kIcing)));
    m.sound = kSoundStoppage;
    if (telling()) play_.addShort(words("icing called against", cityOf(side)));
}

void Game::DescribeOffside() {
    int side = s_.PuckTeam;
    std::string line = words(phrase(roll(10) > 5 ? kComesAcrossOffsides : kOffsides));
    LineMarks& m = sayFor(side, std::move(line));
    m.sound = kSoundStoppage;
    if (telling()) {
        std::string t = lastText();
        if (t.size() >= 8 && t.ends_with("offsides")) play_.rewrite(t.substr(0, t.size() - 1));
        play_.addShort(words("offside called against", cityOf(side)));
    }
}

void Game::DescribeHit(int side, int hitter) {
    int victimSide = other(side);
    int victim = s_.find.Carrier;
    const std::string& h = nameOf(side, hitter);
    const std::string& v = nameOf(victimSide, victim);
    NamedMan by{side, hitter};
    NamedMan hit{victimSide, victim};
    int r = roll(8);
    LineMarks* m = nullptr;
    if (r <= 2)
        m = &sayFor(side, words(v, phrase(kHitHardBy), h), hit, by);
    else if (r == 3)
        m = &sayFor(side, words(h, phrase(kChecksIntoBoards)), by);
    else if (r == 4)
        m = &sayFor(side, words(h, phrase(kOpenIceHit)), by);
    else if (r == 5)
        m = &sayFor(side, words(h, "with a big hit on", v), by, hit);
    else if (r == 6)
        m = &sayFor(side, words(v, "is nailed by", h), hit, by);
    else if (r == 7)
        m = &sayFor(side, words(h, "drills", v, "into the boards!"), by);
    else
        m = &sayFor(side, words(v, "is bumped off the puck by", h), hit, by);
    m->alert = 'H';
    if (roll(20) == 1) {
        int q = roll(5);
        sayFor(victimSide, q == 1   ? words(v, "didn't like that hit!")
                           : q == 2 ? words("the", teamName(victimSide), "bench is chirping!")
                           : q == 3 ? words(v, "is upset with the hit!")
                           : q == 4 ? words(v, phrase(202))
                                    : words("that hit upset", v));
    }
}

void Game::DescribeTurnover() {
    int side = s_.PuckTeam;
    int taking = other(side);
    const FindState& f = s_.find;
    int carrier = f.Carrier;
    NamedMan lost{side, carrier};
    if (s_.LastPlayCall == Call::Penetrate) DescribeDeke(false);
    switch (s_.events.turnover) {
        case TurnoverKind::Giveaway: {
            int v = roll(3);
            LineMarks& m = v == 1   ? sayFor(side, words("giveaway by", nameOf(side, carrier)), {}, lost)
                           : v == 2 ? sayFor(side, words(nameOf(side, carrier), "lost the puck"), lost)
                                    : sayFor(side, words("turnover"));
            m.alert = 'G';
            break;
        }
        case TurnoverKind::Takeaway:
        case TurnoverKind::HitTakeaway: {
            int man = f.TakeawayMan != kNoSlot ? f.TakeawayMan : f.Hitter;
            const std::string& by = nameOf(taking, man);
            NamedMan who{taking, man};
            int v = roll(6);
            LineMarks& m = v == 1   ? sayFor(taking, words(phrase(kStolenBy), by), {}, who)
                           : v == 2 ? sayFor(taking, words(phrase(177), by), {}, who)
                           : v == 3 ? sayFor(taking, words(by, phrase(182)), who)
                           : v == 4 ? sayFor(taking, words("takeaway by", by), {}, who)
                           : v == 5 ? sayFor(taking, words(by, phrase(190)), who)
                                    : sayFor(taking, words(phrase(189), by), {}, who);
            m.alert = 'T';
            if (roll(30) == 1) sayFor(taking, words(by, "with a diving poke check!"), who);
            break;
        }
        default: {
            static constexpr std::array<std::string_view, 6> lostForms{"they'll turn it over", "they lost possession",
                                                                       "loose puck",           "lost control",
                                                                       "puck is loose",        "they lost the puck"};
            sayFor(side, words(lostForms[at(roll(6) - 1)]));
            break;
        }
    }
}

void Game::DescribeLoosePuck() {
    int side = s_.PuckTeam;
    int carrier = s_.find.Carrier;
    NamedMan who{side, carrier};
    if (play_.lastNames(who) || carrier == kNoSlot) {
        told_.lastCarrier = who;
        return;
    }
    static constexpr std::array<std::string_view, 9> wins{
        "comes away with it", "gets it",         "has it now", "gets the puck",
        "gains possession",   "wins the battle", "won by",     "comes out with the puck",
        "wins that one"};
    int v = roll(10);
    if (v == 10)
        sayPossession(side, carrier);
    else if (v == 7)
        sayFor(side, words("won by", nameOf(side, carrier)), {}, who);
    else
        sayFor(side, words(nameOf(side, carrier), wins[at(v - 1)]), who);
    told_.lastCarrier = who;
}

void Game::DescribeRush() {
    int side = s_.PuckTeam;
    int carrier = s_.find.Carrier;
    const std::string& name = nameOf(side, carrier);
    NamedMan who{side, carrier};
    int v = roll(6);
    if (v == 1)
        sayFor(side, words("scooped up by", name), {}, who);
    else if (v == 2)
        sayFor(side, words("controlled by", name), {}, who);
    else if (v == 3)
        sayFor(side, words("picked up by", name), {}, who);
    else if (v == 4)
        sayFor(side, words(name, "in control"), who);
    else if (v == 5)
        sayFor(side, words(name, "with the puck"), who);
    switch (s_.events.rushKind) {
        case RushKind::OneZero:
            sayFor(side, roll(2) == 1 ? words(name, phrase(kBreakaway)) : words(name, "breakaway!"), who);
            break;
        case RushKind::TwoOne:
            sayFor(side, roll(2) == 1 ? words(name, phrase(kOnTheRush)) : words(phrase(kTwoOnOne)), who);
            break;
        case RushKind::ThreeOne:
            sayFor(side, words("3 on 1 rush!"));
            break;
        default: {
            int r = roll(4);
            if (r == 1)
                sayFor(side, words(name, phrase(kOnTheRush)), who);
            else if (r == 2)
                sayFor(side, words(phrase(kOddManRush - 1, 2)));
            else
                sayFor(side, words(name, "on a", cityOf(side), "rush!"), who);
            break;
        }
    }
    told_.lastCarrier = who;
}

void Game::DescribeRetreat() {
    int side = s_.PuckTeam;
    int carrier = s_.find.Carrier;
    const std::string& name = nameOf(side, carrier);
    if (s_.PlayZone == Zone::DefenseZoneRetreat) {
        static constexpr std::array<std::string_view, 4> back{
            "they'll regroup to their own end", "passed back to the defensive zone",
            "moved all the way back to their own end", "played back to the defensive zone"};
        int v = roll(5);
        sayFor(side, v == 5 ? words(name, "regroups to the defensive zone") : words(back[at(v - 1)]));
        return;
    }
    static constexpr std::array<std::string_view, 6> neutral{
        "regroups at center ice", "regroups in the neutral zone", "played back to center",
        "forced to regroup",      "forced back out of the zone",  "played back to the neutral zone"};
    int v = roll(8);
    if (v <= 6)
        sayFor(side, words(neutral[at(v - 1)]));
    else if (v == 7)
        sayFor(side, words(name, "retreats with the puck"), {side, carrier});
    else
        sayFor(side, words(name, "couldn't hold the zone"), {side, carrier});
}

void Game::DescribeDelay() {
    if (roll(4) != 1) {
        say(words("a pane of glass is broken: play is held up"));
        return;
    }
    int v = roll(10);
    const char* what = v <= 3 ? "a fan on the ice" : v <= 5 ? "the scoreboard" : v <= 7 ? "the horn" : "the lights";
    say(words("play is held up:", what));
}

// ---- The clock ---------------------------------------------------------------------------

void Game::DescribePeriodEnd(bool last) {
    int n = s_.Period;
    LineMarks& m = roll(15) <= 6 ? say(words("that wraps up period", n)) : say(words("end of the period"));
    m.clockZero = true;
    m.sound = kSoundStoppage;
    if (telling()) play_.addShort(words("end of period", n));
    if (!last) return;
    bool tied = s_.Score[0] == s_.Score[1];
    if (tied && s_.Period == periods_) {
        if (telling()) play_.addShort(words("End Of Regulation"));
        return;
    }
    say(words("Game Over"));
    if (telling()) play_.addShort(words("Game Over"));
}

// ---- Penalties, fights, injuries and the bench ----------------------------------------------

void Game::DescribePenalty(int side, int offender, PenaltyType type, std::string_view name, int minutes) {
    const SideTables& t = sideOf(side);
    NamedMan who{side, offender};
    LineMarks* m = nullptr;
    if (offender == kNoSlot) {
        m = &sayFor(side, words("a bench penalty against the", teamName(side), "for", name));
    } else {
        int v = roll(3);
        m = v == 1   ? &sayFor(side, words(nameOf(side, offender), phrase(203), name), who)
            : v == 2 ? &sayFor(side, words(phrase(205), nameOf(side, offender), "for", name), {}, who)
                     : &sayFor(side, words(nameOf(side, offender), "goes to the box for", name), who);
    }
    m->icon = kIconPenalty;
    m->sound = kSoundStoppage;
    sayFor(side, words("that's", minutes, "minutes,", text(type)));
    if (telling()) {
        std::string server = offender == kNoSlot ? "bench" : t.DisplayName[at(offender)];
        play_.addShort(fmt::format("PENALTY {}: {}, {} minutes ({}) for {}", t.team.Abbrev.str(), server, minutes,
                                   text(type), name));
    }
}

void Game::DescribeBackOnIce(int side, int slot) {
    sayFor(side, words(nameOf(side, slot), roll(2) == 1 ? "is back on the ice" : "comes out of the box"), {side, slot});
}

void Game::DescribeDelayedPenalty(int side, int offender) {
    int v = roll(3);
    if (v == 1) {
        sayFor(side, words(phrase(204), nameOf(side, offender)), {}, {side, offender}).icon = kIconPenalty;
        return;
    }
    sayFor(side, words("delayed penalty")).icon = kIconPenalty;
    play_.pause();
    sayFor(side, words("to", nameOf(side, offender)), {}, {side, offender});
}

void Game::DescribeFight(std::array<int, 2> fighter) {
    const std::string& a = nameOf(kVisitor, fighter[0]);
    const std::string& b = nameOf(kHome, fighter[1]);
    int keen = roll(2) - 1;
    sayFor(keen, words(nameOf(keen, fighter[at(keen)]), phrase(211)), {keen, fighter[at(keen)]}).fightShown = true;
    sayFor(kVisitor, words(a, "and", b, "are going at it!"), {kVisitor, fighter[0]}, {kHome, fighter[1]});
    if (telling()) play_.addShort(words("FIGHT:", a, "and", b, "drop the gloves"));
}

// The whistle on the foul; the shot waits for the next step.
void Game::DescribePenaltyShotCall() {
    int side = s_.PuckTeam;
    int fouled = s_.find.Carrier;
    int foul = s_.find.Defender;
    if (fouled != kNoSlot && foul != kNoSlot)
        sayFor(other(side), words(nameOf(other(side), foul), "hauls down", nameOf(side, fouled)), {other(side), foul},
               {side, fouled});
    sayFor(side, words(phrase(206))).sound = kSoundStoppage;
}

// The shooter steps up; a goal is told by the goal lines that post it, so
// only a stop is finished here.
void Game::DescribePenaltyShot(int side, int shooter, bool goal) {
    sayFor(side, words(nameOf(side, shooter), phrase(207)), {side, shooter});
    if (goal) return;
    int goalie = netminder(other(side));
    LineMarks& m = sayFor(other(side), words("the penalty shot is stopped by", nameOf(other(side), goalie)));
    m.sound = kSoundSave;
    if (telling()) play_.addShort(words(nameOf(side, shooter), "misses penalty shot"));
}

void Game::DescribeInjury(int side, int slot, int games) {
    int kind = s_.pen.InjuryKind[at(side)][at(slot)];
    // Quiet play builds no text.
    std::string how = !telling()  ? std::string{}
                      : games > 0 ? fmt::format("he'll be out for about {} games", games)
                      : kind > 3  ? "he's done for the night"
                                  : "he's helped off the ice";
    sayFor(side, words(nameOf(side, slot), roll(2) == 1 ? "is hurt on the play" : "is slow to get up"), {side, slot});
    sayFor(side, words(how));
    if (telling()) play_.addShort(words(nameOf(side, slot), "injured,", how));
}

void Game::DescribeGoaliePull(int side) {
    int g = s_.goalie[at(side)];
    sayFor(side, words(cityOf(side), phrase(218))).icon = kIconLineChange;
    if (roll(2) == 1) sayFor(side, words(nameOf(side, g), phrase(219)), {side, g});
}

void Game::DescribeTimeout(int side) { sayFor(side, words(cityOf(side), "uses its timeout")).sound = kSoundStoppage; }

void Game::DescribeLineChange(int side) {
    int v = roll(10);
    bool onTheFly = !isFaceoff(s_.PlayZone) && s_.PlayZone != Zone::ContinueBox;
    LineMarks& m = v > 7 && onTheFly ? sayFor(side, words(cityOf(side), phrase(133)))
                                     : sayFor(side, words(cityOf(side), "with a line change"));
    m.icon = kIconLineChange;
    m.playerTeam = static_cast<std::int16_t>(side + 1);
    if (roll(3) == 1) {
        int n = s_.forwardUnit[at(side)];
        sayFor(side, roll(10) <= 3 ? words("line", n, "on for", cityOf(side))
                                   : words("line", n, "on the ice for", cityOf(side)));
    }
    play_.pause();
}

void Game::DescribeShootoutAttempt(int side, int shooter, bool goal) {
    int keeperSide = other(side);
    int goalie = netminder(keeperSide);
    const std::string& name = nameOf(side, shooter);
    const std::string& g = nameOf(keeperSide, goalie);
    NamedMan who{side, shooter};
    int v = roll(3);
    sayFor(side,
           v == 1   ? words(name, "skates in on", g)
           : v == 2 ? words(name, "comes in slowly,", phrase(kDeke))
                    : words(name, "takes the puck at center ice"),
           who);
    if (goal) {
        LineMarks& m = sayFor(side, roll(2) == 1 ? words(name, "scores!") : words(phrase(kGoal)), who);
        m.sound = kSoundGoal;
        m.icon = kIconGoal;
    } else {
        int r = roll(4);
        LineMarks& m = r == 1   ? sayFor(keeperSide, words(phrase(kSavedBy), g))
                       : r == 2 ? sayFor(keeperSide, words(phrase(kDeniedBy), g))
                       : r == 3 ? sayFor(keeperSide, words(g, "covers up the five hole"))
                                : sayFor(side, words(name, phrase(kOffThePost + roll(2) - 1)));
        m.sound = r == 4 ? kSoundIron : kSoundSave;
    }
    if (telling()) play_.addShort(words(name, goal ? "scores in the shootout" : "is stopped in the shootout"));
}

// The score, the manpower and the time left, now and then before a shot
// in the attacking zone.
void Game::DescribeGameSituation() {
    if (s_.LastZone == Zone::Rush || !isOffenseState(s_.LastZone)) return;
    if (told_.situationPeriod == s_.Period && told_.situationClock - s_.Clock <= 4 + roll(3)) return;
    int side = s_.PuckTeam;
    int against = other(side);
    bool told = false;
    if (roll(17) == 1 && 300 + roll(500) < s_.Clock) {
        told = true;
        int a = s_.Score[at(side)];
        int b = s_.Score[at(against)];
        int v = roll(3);
        if (a == 0 && b == 0)
            say(words(v == 1 ? "still looking for the first goal" : "no score yet in this one"));
        else if (a == b)
            say(v == 1 ? words("tie game") : v == 2 ? words("we're tied at", a) : words("the score is tied at", a));
        else if (v == 1)
            sayFor(side, words(cityOf(side), a > b ? "leads by" : "trails by", std::abs(a - b)));
        else {
            int leader = a > b ? side : against;
            sayFor(leader, words(roll(3) == 1 ? teamName(leader) : cityOf(leader), "leads",
                                 telling() ? fmt::format("{}-{}", std::max(a, b), std::min(a, b)) : std::string{}));
        }
    }
    if (roll(4) == 1 && netminder(against) != kNoSlot && strength(side) != strength(against)) {
        told = true;
        int v = roll(3);
        if (strength(side) < strength(against))
            sayFor(side, v == 1   ? words(cityOf(side), "trying to kill the penalty")
                         : v == 2 ? words(cityOf(side), "is on the penalty kill")
                                  : words(cityOf(side), "is short handed"));
        else
            sayFor(side, v == 1   ? words(cityOf(side), "on the powerplay")
                         : v == 2 ? words("the powerplay continues for", cityOf(side))
                                  : words(cityOf(side), "is on the powerplay"));
    }
    if (s_.Clock <= 60 && s_.Clock > 0 && roll(3) == 1) {
        told = true;
        int v = roll(4);
        say(v == 1   ? words(s_.Clock, "seconds remaining")
            : v == 2 ? words("under a minute remaining")
            : v == 3 ? words("nearing the end of the period")
                     : words(telling() ? fmt::format("{}:{:02}", s_.Clock / 60, s_.Clock % 60) : std::string{},
                             "until the horn sounds"));
    }
    if (told) {
        told_.situationPeriod = s_.Period;
        told_.situationClock = s_.Clock;
    }
}

// A drive to the net ("PENETRATE"): the move, and whether it beat the man.
void Game::DescribeDeke(bool beatHim) {
    int side = s_.PuckTeam;
    int carrier = s_.find.Carrier;
    int defender = s_.find.Defender;
    const std::string& name = nameOf(side, carrier);
    const std::string& d = nameOf(other(side), defender);
    NamedMan who{side, carrier};
    int v = roll(5);
    if (v == 1 && defender != kNoSlot)
        sayFor(side, words(name, "tries to deke past", d), who);
    else if (v == 2)
        sayFor(side, words(name, "drives to the net"), who);
    else if (v == 3)
        sayFor(side, words(name, "tries to penetrate"), who);
    else if (v == 4)
        sayFor(side, words(name, "makes a move"), who);
    else
        sayFor(side, words(name, "attempts to get to the net"), who);
    int r = roll(6);
    if (beatHim) {
        if (r <= 2)
            sayFor(side, words(phrase(106), name), {}, who);
        else if (r == 3)
            sayFor(side, words(name, phrase(107)), who);
        else if (defender != kNoSlot && r == 4)
            sayFor(side, words("dekes past", d, "!"));
        else
            sayFor(side, words("gets around him"));
    } else {
        if (defender != kNoSlot && r <= 2)
            sayFor(other(side), words("forced wide by", d));
        else if (defender != kNoSlot && r == 3)
            sayFor(other(side), words(d, "stays with him"), {other(side), defender});
        else if (r == 4)
            sayFor(side, words("he can't get around him"));
        else
            sayFor(side, words("he's forced wide"));
    }
}

// Whether the shot just told was a scoring chance: every goal, and other
// shots by their quality, a shot from a bad angle seldom.
void Game::countScoringChance(double quality) {
    told_.reboundShot = false;
    Result r = s_.PlayResult;
    bool chance = r == Result::Goal || r == Result::ClearGoal;
    if (!chance && rng_.rnd() * .05 + .05 < quality) {
        int limit = r == Result::Save ? 80 : r == Result::Miss ? 55 : 30;
        chance = rng_.rnd() * .04 + .1 < quality || roll(100) <= limit;
    }
    if (chance && told_.badAngle && roll(10) != 1) chance = false;
    if (!chance) return;
    int side = s_.PuckTeam;
    ++told_.chances[at(side)];
    int shooter = s_.find.Carrier;
    if (shooter != kNoSlot) ++session_.side(side).player(shooter).ScoringChances[1];
    if (options_.markScoringChances && telling()) play_.markLastLine("  *SC*");
}

}  // namespace tallyrink
