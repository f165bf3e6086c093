#pragma once

// Phrase files: every wording of the narrated game that a user may change.
// A phrase file gives each of 250 phrase keys twenty interchangeable
// wordings; the narration asks for a key and takes one of the twenty at
// random, so the mix a user types decides how often each is heard. The
// program carries a default wording for keys 1 to 223 and puts it in place
// of any stored wording that can't be used.
//
// The file is 5000 records of 40 single-byte characters, blank-padded, no
// header: key k, variant v is record (k - 1) * 20 + v, counted from 1. The
// program folder holds the standard file "HKpbp.HKp", the user's own files
// ending ".HKp", and the master file "HckyPbp", twenty copies of each
// default, from which a lost standard file is restored.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "league/codec.h"
#include "league/fixed_text.h"
#include "league/random.h"

namespace tallyrink {

namespace fs = std::filesystem;

inline constexpr int kPhraseKeys = 250;
inline constexpr int kPhraseVariants = 20;
// Keys 1 to 223 have a built-in wording; 224 to 250 default to empty text,
// and nothing in the narration asks for them.
inline constexpr int kDefaultPhraseKeys = 223;
inline constexpr std::size_t kPhraseWidth = 40;
inline constexpr std::size_t kPhraseRecords = std::size_t{kPhraseKeys} * kPhraseVariants;
inline constexpr std::size_t kPhraseFileBytes = kPhraseRecords * kPhraseWidth;
// A stored wording shorter than this can't be used.
inline constexpr std::size_t kShortestWording = 5;

inline constexpr std::string_view kStandardPhraseFile = "HKpbp.HKp";
inline constexpr std::string_view kMasterPhraseFile = "HckyPbp";
// The active name a deletion leaves behind. It names no file of its own, so
// the next load finds nothing there and the table holds the defaults.
inline constexpr std::string_view kPhraseNameAfterDelete = "HckyPbp.HKp";
inline constexpr std::string_view kPhraseFileExtension = ".HKp";
inline constexpr std::string_view kRefuseDeleteStandard = "You may not delete the standard play-by-play file!";

// A master file shorter than this is written anew at each load.
inline constexpr std::uint64_t kMasterRewriteBelow = 150000;
// At start-up a standard file shorter than kWorkingFileShortBelow is restored
// from a master longer than kMasterUsableAbove.
inline constexpr std::uint64_t kWorkingFileShortBelow = 1000;
inline constexpr std::uint64_t kMasterUsableAbove = 50000;

// One record of a phrase file.
struct PhraseRecord {
    FixedText<kPhraseWidth> Wording{};
};

// The built-in wordings. The index is the phrase key: the narration refers to
// keys by number and sometimes adds a random number to a base key, so the
// order is fixed. Entry 0 repeats key 5 and is asked for by nobody.
inline constexpr std::array<std::string_view, kDefaultPhraseKeys + 1> DefaultPhrases = {
    "at the point",                                // 0
    "at the left point",                           // 1
    "at the right point",                          // 2
    "at the blue line",                            // 3
    "behind the net",                              // 4
    "at the point",                                // 5
    "in front of the net",                         // 6
    "in the crease",                               // 7
    "in the slot",                                 // 8
    "in the high slot",                            // 9
    "in the low slot",                             // 10
    "on the half boards",                          // 11
    "in the corner",                               // 12
    "along the boards",                            // 13
    "down low",                                    // 14
    "at the faceoff circle",                       // 15
    "on the wing",                                 // 16
    "on the left wing",                            // 17
    "on the right wing",                           // 18
    "in the attacking zone",                       // 19
    "in the neutral zone",                         // 20
    "at center ice",                               // 21
    "in the defensive zone",                       // 22
    "behind his own net",                          // 23
    "shoots",                                      // 24
    "shoots from a bad angle",                     // 25
    "shoots through traffic",                      // 26
    "with a one-timer!",                           // 27
    "with a slap shot",                            // 28
    "with a wrist shot",                           // 29
    "with a snap shot",                            // 30
    "winds up and fires",                          // 31
    "slap shot",                                   // 32
    "wrist shot",                                  // 33
    "snap shot",                                   // 34
    "one timer!",                                  // 35
    "shoots for the empty net",                    // 36
    "redirected by",                               // 37
    "with the deflection",                         // 38
    "weak shot",                                   // 39
    "whiffs on the shot",                          // 40
    "breaks his stick",                            // 41
    "off the post!",                               // 42
    "off the crossbar!",                           // 43
    "missed the net",                              // 44
    "wide of the net",                             // 45
    "missed the net high",                         // 46
    "over the net",                                // 47
    "not even close to the net",                   // 48
    "glove save",                                  // 49
    "blocker save",                                // 50
    "stick save",                                  // 51
    "saved by",                                    // 52
    "saves it",                                    // 53
    "what a save by",                              // 54
    "with an acrobatic save!",                     // 55
    "denied by",                                   // 56
    "and he'll freeze it",                         // 57
    "will play it",                                // 58
    "plays it behind his net",                     // 59
    "leaves the net to play it",                   // 60
    "leaves it behind the net for",                // 61
    "rebound",                                     // 62
    "the puck is loose",                           // 63
    "passes to",                                   // 64
    "fantastic pass by",                           // 65
    "dazzling pass to",                            // 66
    "played ahead to",                             // 67
    "headman pass to",                             // 68
    "on the wing to",                              // 69
    "played along the boards to",                  // 70
    "saucer pass to",                              // 71
    "long pass to",                                // 72
    "leaves it for",                               // 73
    "return pass to",                              // 74
    "passed back to",                              // 75
    "risky pass to",                               // 76
    "plays it safely to",                          // 77
    "tipped ahead by",                             // 78
    "looking to pass",                             // 79
    "bad pass",                                    // 80
    "is cycling the puck in the attacking zone",   // 81
    "the puck comes back out to center",           // 82
    "and it deflects to",                          // 83
    "loose puck",                                  // 84
    "loose puck in front of the net",              // 85
    "loose puck in the slot",                      // 86
    "loose puck in the neutral zone",              // 87
    "loose puck behind the net",                   // 88
    "loose puck in the corner",                    // 89
    "loose puck on the half boards",               // 90
    "deflected to the corner",                     // 91
    "are battling for the loose puck",             // 92
    "are tied up along the boards",                // 93
    "the puck ends up out of play",                // 94
    "shoots it over the glass",                    // 95
    "the puck ends up over the glass",             // 96
    "the puck ends up on the bench",               // 97
    "the puck ends up in the netting",             // 98
    "the net is off its moorings",                 // 99
    "has control",                                 // 100
    "has the puck",                                // 101
    "in possession",                               // 102
    "pressured by",                                // 103
    "looks to make a play",                        // 104
    "dekes",                                       // 105
    "great move by",                               // 106
    "with a spectacular deke!",                    // 107
    "penetrates",                                  // 108
    "gets by a defender",                          // 109
    "stickhandles",                                // 110
    "skating with it",                             // 111
    "circles back",                                // 112
    "stops",                                       // 113
    "waits",                                       // 114
    "gaining speed",                               // 115
    "takes it over the blue line",                 // 116
    "gains the zone",                              // 117
    "skates through the neutral zone",             // 118
    "skating in his own end",                      // 119
    "retreats with it",                            // 120
    "will regroup",                                // 121
    "in trouble",                                  // 122
    "lost the puck",                               // 123
    "they'll bring it back up ice",                // 124
    "dumps it in",                                 // 125
    "will dump it in",                             // 126
    "dumps it to the far corner",                  // 127
    "dumps it to the near corner",                 // 128
    "shot hard around the boards",                 // 129
    "he just gets it deep",                        // 130
    "fires it around the boards",                  // 131
    "and they'll get a new line out",              // 132
    "changes on the fly",                          // 133
    "sends out new skaters",                       // 134
    "sends out new forwards",                      // 135
    "sends out new defensemen",                    // 136
    "needs a line change",                         // 137
    "clears it",                                   // 138
    "clears it to the neutral zone",               // 139
    "cleared back to the neutral zone",            // 140
    "plays it off the glass and out",              // 141
    "sent back out of the zone",                   // 142
    "clears it all the way down the ice",          // 143
    "icing",                                       // 144
    "offsides",                                    // 145
    "comes across offsides",                       // 146
    "that's a 2 line pass",                        // 147
    "delayed offsides",                            // 148
    "called intentional offsides",                 // 149
    "will need to tag up",                         // 150
    "tags up",                                     // 151
    "the icing is waved off",                      // 152
    "that's an illegal forward pass",              // 153
    "faceoff at center ice",                       // 154
    "faceoff in the neutral zone",                 // 155
    "faceoff to the left of",                      // 156
    "faceoff to the right of",                     // 157
    "will face off against",                       // 158
    "The linesman drops the puck",                 // 159
    "wins the draw cleanly",                       // 160
    "comes away with it",                          // 161
    "HE SCORES!",                                  // 162
    "trickles across the line!",                   // 163
    "GOAL!",                                       // 164
    "and in the net!",                             // 165
    "five hole",                                   // 166
    "glove side",                                  // 167
    "glove side high",                             // 168
    "glove side low",                              // 169
    "stick side high",                             // 170
    "stick side low",                              // 171
    "top shelf",                                   // 172
    "will be credited with the goal",              // 173
    "will get an assist",                          // 174
    "unassisted",                                  // 175
    "stolen by",                                   // 176
    "poked away by",                               // 177
    "knocked loose by",                            // 178
    "blocked by",                                  // 179
    "blocks the shot",                             // 180
    "deflected away by",                           // 181
    "takes it away",                               // 182
    "tightly checked by",                          // 183
    "knocked off the puck by",                     // 184
    "hit hard by",                                 // 185
    "checks him into the boards",                  // 186
    "with a huge open ice hit!",                   // 187
    "pass intercepted by",                         // 188
    "picks it off",                                // 189
    "steals it!",                                  // 190
    "is forechecking hard",                        // 191
    "is plugging up the neutral zone",             // 192
    "is on its heels",                             // 193
    "cut off by",                                  // 194
    "tripped by",                                  // 195
    "slashed by",                                  // 196
    "held by",                                     // 197
    "is checked hard from behind by",              // 198
    "dragged down by",                             // 199
    "played it with a high stick",                 // 200
    "caught him with a high stick",                // 201
    "wants a penalty called",                      // 202
    "is being called for",                         // 203
    "delayed penalty on",                          // 204
    "a penalty will be called on",                 // 205
    "a penalty shot is being called!",             // 206
    "will take the penalty shot",                  // 207
    "the refs didn't see it!",                     // 208
    "no call",                                     // 209
    "some pushing and shoving after the whistle",  // 210
    "will drop the gloves!",                       // 211
    "multiple penalties here",                     // 212
    "with a breakaway!",                           // 213
    "on the rush",                                 // 214
    "odd man rush",                                // 215
    "3 on 2 rush",                                 // 216
    "2 on 1 rush",                                 // 217
    "is pulling their goalie",                     // 218
    "is leaving the net",                          // 219
    "comes on as an extra skater",                 // 220
    "We'll go to overtime",                        // 221
    "We'll go to a shootout",                      // 222
    "We'll go to yet another overtime period",     // 223
};

// The default wording of a key: the built-in text for 1 to 223, empty for
// every other key.
std::string_view defaultWording(int key);

// Record number, from 1, of key k, variant v.
constexpr std::size_t phraseRecordNumber(int key, int variant) {
    return static_cast<std::size_t>(key - 1) * kPhraseVariants + static_cast<std::size_t>(variant);
}

// One matching entry of a search of the table.
struct PhraseHit {
    int key;
    int variant;
    std::string wording;
};

// The phrase table: 250 keys of 20 variants, the wordings the narration
// draws from. After a load every slot holds a usable wording, or the key's
// default, and variant 1 of each key holds the default.
class PhraseTable {
public:
    // Every variant of every key holds the key's default: what a load makes
    // of a missing file.
    static PhraseTable defaults();

    // The wording of a slot, as the narration reads it. A variant outside 1
    // to 20 reads variant 1, the default; a key outside 1 to 250 reads as
    // empty text.
    [[nodiscard]] const std::string& operator()(int variant, int key) const;

    // What the editor does with a typed text: stored right-trimmed, at once.
    // Longer than 40 characters is kept in memory and cut when saved. A slot
    // outside the table is ignored.
    void set(int variant, int key, std::string_view text);

    // The narration's draw: a uniform variant from 1 to 20. Every slot is
    // eligible, since a load has put the default in place of each unusable
    // one; a wording typed into n slots is drawn n times in 20.
    static int drawVariant(Random& random) { return random.rand(kPhraseVariants); }
    // A phrase of `key`, of a drawn variant.
    [[nodiscard]] const std::string& phrase(int key, Random& random) const;
    // A phrase from a base and a count: the key is base + Rand(count), then a
    // second draw picks the variant.
    [[nodiscard]] const std::string& phrase(int base, int count, Random& random) const;

    // Every variant of every key takes the key's variant-1 wording, its
    // default. Nothing is written until the table is saved.
    void resetToDefaults();

    // Entries of keys 1 to 250 whose 40-character form holds `text`, compared
    // in upper case; in key and variant order. An empty text matches nothing.
    [[nodiscard]] std::vector<PhraseHit> search(std::string_view text) const;

    friend bool operator==(const PhraseTable&, const PhraseTable&) = default;

private:
    PhraseTable();
    static std::size_t index(int variant, int key);

    std::vector<std::string> wordings_;  // key-major, as in the file
};

// A search hit as the editor lists it: the key right-aligned in three
// characters, a blank, the wording.
std::string searchRow(const PhraseHit& hit);

// A phrase file as it lies on disk. A missing file reads as blank records; a
// short one has blank records past its end; bytes past the 5000th record are
// kept as found and written back.
struct PhraseFile {
    std::vector<PhraseRecord> records = std::vector<PhraseRecord>(kPhraseRecords);
    std::vector<std::uint8_t> trailing;
    std::uint64_t length = 0;  // bytes of the file it was read from

    [[nodiscard]] PhraseRecord& at(int key, int variant) { return records[phraseRecordNumber(key, variant) - 1]; }
    [[nodiscard]] const PhraseRecord& at(int key, int variant) const {
        return records[phraseRecordNumber(key, variant) - 1];
    }

    static PhraseFile fromBytes(std::span<const std::uint8_t> bytes);
    // Throws FileError when an existing file can't be read.
    static PhraseFile read(const fs::path& path);
    // Each entry of the table, left-aligned and cut to 40 characters.
    static PhraseFile ofTable(const PhraseTable& table);
    // The standard file: twenty copies of each key's default.
    static PhraseFile standard();

    [[nodiscard]] std::vector<std::uint8_t> bytes() const;
    // Whole-file rewrite; throws FileError naming the file.
    void write(const fs::path& path) const;
};

// Why a stored wording gave way to the default.
enum class WordingFault {
    Blank,      // nothing stored
    TooShort,   // 1 to 4 characters
    NotText,    // control characters: not typed text
    FirstSlot,  // variant 1 always holds the default
};

std::string_view faultText(WordingFault fault);

struct PhraseFault {
    int key;
    int variant;
    WordingFault fault;
    std::string stored;  // the trimmed stored text
};

// What a load made of a file.
struct PhraseLoadReport {
    std::uint64_t length = 0;
    // Whole records in the file; the rest, a cut last record included, take
    // the defaults.
    std::size_t recordsFound = 0;
    std::size_t nonBlank = 0;  // records holding any text
    std::size_t notText = 0;   // of these, those holding control characters
    // Most of the file's text isn't text: it is no phrase file, and every
    // entry took its default.
    bool foreign = false;
    // Stored entries that took the default, in file order; empty for a
    // foreign file. Blank slots of keys without a default are no fault.
    std::vector<PhraseFault> faults;
    // Slots of keys 1 to 223 past the end of the file: they take the default.
    std::size_t missingWithDefault = 0;
    // The file couldn't be read; the table holds the defaults.
    std::optional<std::string> readError;

    // Entries of keys 1 to 223 that hold their default for want of a usable
    // stored wording.
    [[nodiscard]] std::size_t fallbacks() const;
};

struct PhraseLoad {
    PhraseTable table = PhraseTable::defaults();
    PhraseLoadReport report;
};

// Fills a table from a file's records: each wording is trimmed; one that is
// blank, shorter than five characters or not text takes the key's default;
// then variant 1 of each key takes the default. A stored wording that is a
// default cut to the 40 characters of the record is that default whole.
PhraseLoad loadPhrases(const PhraseFile& file);

// Reads and loads a file; a missing file gives the defaults, an unreadable
// one too, with the reason in the report.
PhraseLoad loadPhraseFile(const fs::path& path);

// The active file's name from the set-up's choice: trimmed, and the standard
// name when it doesn't end in "HKP" (any case). A name that leaves the
// program folder (holds a path separator) also gives the standard name.
std::string activePhraseFileName(std::string_view playByPlayFile);

// The path of the active file in the program folder, matched without regard to case.
fs::path activePhraseFile(const fs::path& programDir, std::string_view playByPlayFile);

// Start of the program, before any league: a standard file shorter than 1000
// bytes (or missing) is restored from a master file longer than 50000 bytes.
// Returns true when it was restored. A folder that can't be written is
// passed over.
bool restoreStandardPhraseFile(const fs::path& programDir);

// Writes the master file anew when it is shorter than 150000 bytes. Returns
// true when it was written; a folder that can't be written is passed over.
bool ensureMasterPhraseFile(const fs::path& programDir);

// The load: makes sure of the master file, resolves the active name and
// fills the table from the active file.
PhraseLoad HkLoadPlayByPlay(const fs::path& programDir, std::string_view playByPlayFile);

// The save: all 250 x 20 entries to the active file, each cut to 40
// characters; bytes past the last record stay. Throws FileError.
void savePlayByPlay(const fs::path& programDir, std::string_view playByPlayFile, const PhraseTable& table);

// True for the standard file's name in any mix of case: it can't be deleted.
bool isStandardPhraseFile(std::string_view name);

// The file name a typed save-as name gives: trimmed, a typed ".HKp" taken
// off and put back. Nothing left, or a path separator in it: no name.
std::optional<std::string> saveAsPhraseFileName(std::string_view typed);

}  // namespace tallyrink

namespace tallyrink::codec {

template <>
struct Layout<PhraseRecord> {
    static constexpr std::size_t size = kPhraseWidth;
};

TALLYRINK_EXTERN_RECORD_CODEC(PhraseRecord)

}  // namespace tallyrink::codec
