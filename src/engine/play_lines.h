#pragma once

// The lines a play is told in, with what a screen needs to show each one
// (colours, sound cue, icon, alert, zone), a short telling of the same play,
// and what the telling itself looks back on (pauses, who a line named).
//
// The memory is kept for every game, told or not, because the telling's own
// draws depend on it and a seed must play the same game whether anybody
// watches. The text is built only while a game is told: a headless game
// pays for counting, never for strings.

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tallyrink {

// Sound cues of a line.
enum LineSoundCue : std::int16_t {
    kSoundNone = 0,
    kSoundStoppage = 2,
    kSoundPass = 3,
    kSoundShot = 5,
    kSoundNamedShot = 7,
    kSoundSave = 8,
    kSoundIron = 21,
    kSoundGoal = 98,
};

// Icons of a line.
enum LineIconKind : std::int16_t {
    kIconNone = 0,
    kIconPenalty = 1,
    kIconLineChange = 2,
    kIconGoal = 99,
    kIconShot = 104,  // 101 to 109: shots
};

struct LineMarks {
    std::int16_t team = 0;          // 0 or 3 neutral, 1 visitor, 2 home: the colours of the line
    std::int16_t sound = 0;         // LineSoundCue
    std::int16_t icon = 0;          // LineIconKind
    char alert = 0;                 // 'T' takeaway, 'G' giveaway, 'H' hit, 'S' great save, 0 none
    char zone = 0;                  // 'O', 'N' or 'D': where the puck is, seen from the team of the line
    std::int16_t playerTeam = 0;    // team whose men are redrawn at this line, 0 none
    std::int16_t shotTeam = 0;      // with shotVideo: the shooting team
    std::int16_t shotQuality = -1;  // the shot's chance of scoring × 100 on a shot line
    bool shotVideo = false;
    bool faceoffShown = false;
    bool fightShown = false;
    bool clockZero = false;
    bool clockOne = false;
};

// A player as the telling remembers him: side and slot, or nobody.
struct NamedMan {
    int side = -1;
    int slot = -1;
    [[nodiscard]] bool empty() const { return side < 0 || slot < 0; }
    friend bool operator==(const NamedMan&, const NamedMan&) = default;
};

class PlayLines {
public:
    static constexpr int kMaxLines = 50;
    static constexpr std::string_view kPause = "..";

    // Whether text is kept. Set once per game; the memory is kept either way.
    void setTelling(bool telling) {
        telling_ = telling;
        if (telling_) {
            texts_.reserve(kMaxLines + 14);
            marks_.reserve(kMaxLines + 14);
        }
    }
    [[nodiscard]] bool telling() const { return telling_; }

    // Everything goes.
    void clear();
    // The play's lines have been told (or thrown away); what is added from
    // now on, between plays (a line change, a timeout), opens the next.
    void endPlay();
    // A new play: the lines of the last one go, those told since it ended stay.
    void startPlay();

    // A composed line. Past the fiftieth line of a play nothing more is
    // kept; the returned marks then belong to a scratch line.
    // Inline: most lines are added while nobody watches, and then only the
    // memory changes.
    LineMarks& add(std::string&& text, NamedMan opens = {}, NamedMan ends = {}) {
        if (full()) {
            scratch_ = {};
            return scratch_;
        }
        memory_[at(count_)] = {text == kPause, opens, ends};
        ++count_;
        if (!telling_) {
            scratch_ = {};
            return scratch_;
        }
        return keep(std::move(text));
    }
    // The last writer wins: a variant put over the line just added.
    void rewrite(std::string&& text, NamedMan opens = {}, NamedMan ends = {});
    // Adds `mark` to the last told line that isn't a pause.
    void markLastLine(std::string_view mark);
    // A pause line: the play breaks off for a beat.
    void pause();
    // A line told by other parts of the engine (penalties, the coach): shown
    // like the others but not part of what the composition looks back on.
    void addPlain(std::string text, LineMarks marks = {});
    // The short telling: one line a stoppage, shot result or penalty.
    void addShort(std::string text);

    // Composed lines of this play, told or not.
    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] bool full() const { return count_ >= kMaxLines; }
    [[nodiscard]] bool empty() const { return count_ == 0; }
    [[nodiscard]] bool lastIsPause() const { return count_ > 0 && memory_[at(count_ - 1)].pause; }
    // The last composed line opens or ends with `man`.
    [[nodiscard]] bool lastNames(const NamedMan& man) const;
    // One of the last `n` composed lines opens or ends with `man`.
    [[nodiscard]] bool recentlyNamed(const NamedMan& man, int n) const;
    [[nodiscard]] int shortCount() const { return shortCount_; }

    // What a screen shows: texts and marks in parallel (empty when untold).
    [[nodiscard]] const std::vector<std::string>& texts() const { return texts_; }
    [[nodiscard]] const std::vector<LineMarks>& marks() const { return marks_; }
    [[nodiscard]] const std::vector<std::string>& shortTexts() const { return shortTexts_; }
    // Lines told since the last play ended (a bench move at a stoppage).
    [[nodiscard]] std::vector<std::string> textsBetweenPlays() const {
        std::size_t from = ended_ ? std::min(endTexts_, texts_.size()) : 0;
        return {texts_.begin() + static_cast<std::ptrdiff_t>(from), texts_.end()};
    }

private:
    struct Memory {
        bool pause = false;
        NamedMan opens;
        NamedMan ends;
    };
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }
    // The text and marks of a line just added while it is told.
    LineMarks& keep(std::string&& text);

    bool telling_ = false;
    int count_ = 0;
    int shortCount_ = 0;
    std::array<Memory, kMaxLines> memory_{};
    std::vector<std::string> texts_;
    std::vector<LineMarks> marks_;
    std::vector<std::string> shortTexts_;
    LineMarks scratch_;
    int lastComposed_ = -1;  // index in texts_ of the last composed line
    // Where the last play ended: composed lines, texts and short lines.
    int endCount_ = 0;
    std::size_t endTexts_ = 0;
    std::size_t endShort_ = 0;
    int endShortCount_ = 0;
    bool ended_ = false;
};

// Where spoken play-by-play goes: a voice the screen may offer. The game's
// text is handed over as told; replacing words for the voice is the
// narrator's business (see narrator_translations.h).
class Narrator {
public:
    virtual ~Narrator() = default;
    // `purge`: cut off what is still being said; otherwise the text queues.
    virtual void speak(std::string_view text, bool purge) = 0;
};

}  // namespace tallyrink
