// `tallyrink phrases`: the play-by-play phrase files of the program folder
// and the narrator's word replacements.

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "app/cli.h"
#include "league/files.h"
#include "league/places.h"
#include "presentation/ansi_text.h"
#include "presentation/narrator_translations.h"
#include "presentation/phrases.h"

namespace tallyrink::cli {

namespace {

namespace fs = std::filesystem;

// A session that has read the places and the set-up record, without opening
// the league: enough for the program folder's files.
std::unique_ptr<Session> setupSession(const GlobalOptions& options) {
    auto session = std::make_unique<Session>(sessionOptions(options), options.hooks);
    session->HkLoadSetup();
    return session;
}

bool fileExists(const fs::path& p) {
    std::error_code ec;
    return fs::exists(p, ec);
}

// Stored text for a terminal: UTF-8, control characters shown as escapes.
std::string printable(std::string_view text) {
    std::string out;
    for (char c : text) {
        if (isControlByte(c))
            out += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
        else
            out += c;
    }
    return ansiToUtf8(out);
}

std::string inQuotes(std::string_view text) { return "\"" + printable(text) + "\""; }

std::string plural(std::size_t n, const char* one, const char* many) {
    return fmt::format("{} {}", n, n == 1 ? one : many);
}

// "2-5, 9, 12-20"
std::string slotRanges(const std::vector<int>& slots) {
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < slots.size();) {
        std::size_t j = i;
        while (j + 1 < slots.size() && slots[j + 1] == slots[j] + 1) ++j;
        parts.push_back(j == i ? std::to_string(slots[i]) : fmt::format("{}-{}", slots[i], slots[j]));
        i = j + 1;
    }
    return fmt::format("{}", fmt::join(parts, ", "));
}

int parseKey(const std::string& text) {
    int key = 0;
    try {
        std::size_t used = 0;
        key = std::stoi(text, &used);
        if (used != text.size()) key = 0;
    } catch (const std::exception&) {
        key = 0;
    }
    if (key < 1 || key > kPhraseKeys)
        throw CommandError(fmt::format("No phrase key {}: keys run from 1 to {}", text, kPhraseKeys));
    return key;
}

// The file a command writes: an existing file of the same name in any case
// is the one replaced, so two spellings never stand side by side.
fs::path outputFile(const std::string& out) {
    const fs::path given(out);
    const fs::path dir = given.has_parent_path() ? given.parent_path() : fs::path(".");
    return findFile(dir, given.filename().string());
}

// ---- build ---------------------------------------------------------------------

void build(const GlobalOptions& options, const std::string& out) {
    const fs::path path =
        out.empty() ? findFile(setupSession(options)->places().ProgramDir, kStandardPhraseFile) : outputFile(out);
    const auto file = PhraseFile::standard();
    file.write(path);
    fmt::print("Wrote {}: {} keys of {} variants, the built-in wordings of keys 1 to {} ({} bytes)\n", path.string(),
               kPhraseKeys, kPhraseVariants, kDefaultPhraseKeys, file.bytes().size());
}

// ---- show ----------------------------------------------------------------------

struct Shown {
    fs::path path;
    PhraseLoad load;
};

Shown loadForShow(const GlobalOptions& options, const std::string& file) {
    if (!file.empty()) {
        if (!fileExists(file)) throw CommandError(fmt::format("{} not found", file));
        return {file, loadPhraseFile(file)};
    }
    auto session = setupSession(options);
    const auto path = activePhraseFile(session->places().ProgramDir, session->setup().PlayByPlayFile.str());
    return {path, loadPhraseFile(path)};
}

void printSource(const Shown& shown) {
    if (!fileExists(shown.path))
        fmt::print("Phrase file: {} (not found: the built-in wordings)\n", shown.path.string());
    else
        fmt::print("Phrase file: {}\n", shown.path.string());
    const auto& report = shown.load.report;
    if (report.readError) fmt::print("{}; showing the built-in wordings\n", *report.readError);
    if (report.foreign) fmt::print("Not a phrase file; showing the built-in wordings\n");
}

void showKey(const PhraseTable& table, int key) {
    const auto fallback = defaultWording(key);
    fmt::print("\nKey {}{}\n", key,
               fallback.empty() ? " (no default wording)" : " (default " + inQuotes(fallback) + ")");
    for (int v = 1; v <= kPhraseVariants; ++v)
        fmt::print("  {:>2}  {}{}\n", v, printable(table(v, key)), v == 1 ? "   [always the default]" : "");
}

// Each key once, with its distinct wordings and the number of the twenty
// slots that hold each: how often the narration says it.
void showAll(const PhraseTable& table) {
    fmt::print("\n{:>3}  {:>5}  {}\n", "Key", "Slots", "Wording");
    for (int key = 1; key <= kPhraseKeys; ++key) {
        std::vector<std::pair<std::string, int>> mix;
        for (int v = 1; v <= kPhraseVariants; ++v) {
            const auto& w = table(v, key);
            if (w.empty()) continue;
            auto it = std::find_if(mix.begin(), mix.end(), [&](const auto& m) { return m.first == w; });
            if (it == mix.end())
                mix.emplace_back(w, 1);
            else
                ++it->second;
        }
        for (std::size_t i = 0; i < mix.size(); ++i)
            fmt::print("{:>3}  {:>5}  {}\n", i == 0 ? std::to_string(key) : "", mix[i].second, printable(mix[i].first));
    }
}

void search(const PhraseTable& table, const std::string& text) {
    const auto hits = table.search(utf8ToAnsi(text));
    fmt::print("\n");
    // A wording typed into several slots of a key is listed once, with its slots.
    for (std::size_t i = 0; i < hits.size();) {
        std::vector<int> slots;
        std::size_t j = i;
        for (; j < hits.size() && hits[j].key == hits[i].key && hits[j].wording == hits[i].wording; ++j)
            slots.push_back(hits[j].variant);
        fmt::print("{}   ({} {})\n", printable(searchRow(hits[i])), slots.size() == 1 ? "slot" : "slots",
                   slotRanges(slots));
        i = j;
    }
    if (hits.empty())
        fmt::print("No wording holds \"{}\"\n", text);
    else
        fmt::print("{} holding {}\n", plural(hits.size(), "wording", "wordings"), "\"" + text + "\"");
}

void show(const GlobalOptions& options, const std::string& keyText, const std::string& file,
          const std::string& searchText) {
    const int key = keyText.empty() ? 0 : parseKey(keyText);
    const auto shown = loadForShow(options, file);
    printSource(shown);
    const auto& table = shown.load.table;
    if (!searchText.empty())
        search(table, searchText);
    else if (key != 0)
        showKey(table, key);
    else
        showAll(table);
    const auto fallbacks = shown.load.report.fallbacks();
    if (fallbacks > 0 && !shown.load.report.foreign && !shown.load.report.readError)
        fmt::print("\n{} take the default wording: see tallyrink phrases check {}\n",
                   plural(fallbacks, "entry", "entries"), shown.path.string());
}

// ---- check ---------------------------------------------------------------------

void printFaultsOfKey(int key, const std::vector<PhraseFault>& faults) {
    const auto fallback = defaultWording(key);
    fmt::print("Key {}{}\n", key, fallback.empty() ? " (no default wording)" : " (default " + inQuotes(fallback) + ")");
    std::vector<int> blanks;
    for (const auto& f : faults)
        if (f.fault == WordingFault::Blank) blanks.push_back(f.variant);
    if (!blanks.empty()) fmt::print("  {} {}: blank\n", blanks.size() == 1 ? "slot" : "slots", slotRanges(blanks));
    for (const auto& f : faults)
        if (f.fault != WordingFault::Blank)
            fmt::print("  slot {}: {} is {}\n", f.variant, inQuotes(f.stored),
                       f.fault == WordingFault::FirstSlot ? "replaced: slot 1 always holds the default"
                                                          : std::string(faultText(f.fault)));
}

void check(const std::string& file) {
    if (!fileExists(file)) throw CommandError(fmt::format("{} not found", file));
    const auto load = loadPhraseFile(file);
    const auto& report = load.report;
    if (report.readError) throw CommandError(*report.readError);

    fmt::print("{}: {} bytes, {} of {} records\n", file, report.length, report.recordsFound, kPhraseRecords);
    if (report.foreign) {
        fmt::print("Not a phrase file: {} of the {} records that hold anything hold control characters.\n",
                   report.notText, report.nonBlank);
        fmt::print("Every entry takes its default wording.\n");
        return;
    }
    std::map<int, std::vector<PhraseFault>> byKey;
    for (const auto& f : report.faults) byKey[f.key].push_back(f);
    for (const auto& [key, faults] : byKey) printFaultsOfKey(key, faults);
    if (report.recordsFound < kPhraseRecords) {
        const std::size_t next = report.recordsFound + 1;
        const int key = static_cast<int>(report.recordsFound / kPhraseVariants) + 1;
        const int variant = static_cast<int>(report.recordsFound % kPhraseVariants) + 1;
        if (report.length % kPhraseWidth != 0)
            fmt::print(
                "The file ends inside record {} (key {}, slot {}): it and the records after it take the defaults.\n",
                next, key, variant);
        else
            fmt::print(
                "The file ends before record {} (key {}, slot {}): the records from there on take the defaults.\n",
                next, key, variant);
    }
    const auto fallbacks = report.fallbacks();
    if (fallbacks == 0 && report.faults.empty())
        fmt::print("Every entry is usable.\n");
    else
        fmt::print("{} of keys 1 to {} take the default wording.\n", plural(fallbacks, "entry", "entries"),
                   kDefaultPhraseKeys);
}

// ---- use -----------------------------------------------------------------------

std::vector<std::string> phraseFilesIn(const fs::path& dir) {
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        const auto name = it->path().filename().string();
        if (it->is_regular_file(ec) && name.size() > 4 && upperAnsi(name.substr(name.size() - 4)) == ".HKP")
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void use(const GlobalOptions& options, const std::string& name) {
    auto session = setupSession(options);
    const fs::path dir = session->places().ProgramDir;
    if (name.empty()) {
        const auto active = activePhraseFileName(session->setup().PlayByPlayFile.str());
        fmt::print("Play-by-play file: {}\n", active);
        fmt::print("Phrase files in {}:\n", dir.string());
        for (const auto& n : phraseFilesIn(dir))
            fmt::print("  {}{}\n", n, upperAnsi(n) == upperAnsi(active) ? "   [active]" : "");
        return;
    }
    if (activePhraseFileName(name) != name)
        throw CommandError(fmt::format("{} is not a phrase file name: it must end in {} and name a file of {}", name,
                                       kPhraseFileExtension, dir.string()));
    const auto path = findFile(dir, name);
    if (!fileExists(path) && !isStandardPhraseFile(name))
        throw CommandError(fmt::format("{} is not in {}", name, dir.string()));
    const auto onDisk = fileExists(path) ? path.filename().string() : name;
    if (onDisk.size() > session->setup().PlayByPlayFile.raw.size())
        throw CommandError(fmt::format("{} is too long a name: at most {} characters", onDisk,
                                       session->setup().PlayByPlayFile.raw.size()));
    session->setup().PlayByPlayFile.assign(onDisk);
    if (!session->SaveSetup()) throw CommandError(fmt::format("Cannot write the set-up file in {}", dir.string()));
    fmt::print("Play-by-play file is now {}\n", onDisk);
}

// ---- narrator translations -------------------------------------------------------

std::string withoutLeadingBlank(std::string text) {
    if (!text.empty() && text.front() == ' ') text.erase(0, 1);
    return text;
}

void translate(const GlobalOptions& options, const std::vector<std::string>& words) {
    const auto path = translationFile(setupSession(options)->places().dataRoot());
    const auto table = NarratorTranslations::read(path);
    std::string text;
    for (const auto& w : words) text += (text.empty() ? "" : " ") + w;
    fmt::print("{}\n", printable(withoutLeadingBlank(table.filter(utf8ToAnsi(text)))));
}

void translation(const GlobalOptions& options, const std::string& typedName, const std::string& typedSaid) {
    const auto name = utf8ToAnsi(typedName);
    const auto said = utf8ToAnsi(typedSaid);
    const auto path = translationFile(setupSession(options)->places().dataRoot());
    auto table = NarratorTranslations::read(path);
    if (said.empty()) {
        const auto t = table.lookup(name);
        if (t)
            fmt::print("'{}' is said '{}'\n", printable(name), printable(*t));
        else
            fmt::print("'{}' has no translation in {}\n", printable(name), path.string());
        return;
    }
    if (!table.set(name, said)) throw CommandError("Both the name and its translation are needed");
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    table.write(path);
    fmt::print("'{}' - '{}' Saved!\n", printable(name), printable(said));
}

std::vector<InfoLine> phraseInfo(const Session& session) {
    const auto path = activePhraseFile(session.places().ProgramDir, session.setup().PlayByPlayFile.str());
    if (!fileExists(path)) return {{"Phrase file", path.filename().string() + " (not found: the built-in wordings)"}};
    const auto fallbacks = loadPhraseFile(path).report.fallbacks();
    return {{"Phrase file", fallbacks == 0 ? path.filename().string()
                                           : fmt::format("{} ({} take the default)", path.filename().string(),
                                                         plural(fallbacks, "entry", "entries"))}};
}

}  // namespace

// What the subcommands were given; shared with their callbacks.
struct PhrasesCommandOptions {
    std::string out;
    std::string key;
    std::string file;
    std::string search;
    std::string checkFile;
    std::string useName;
    std::vector<std::string> words;
    std::string name;
    std::string said;
};

void addPhrasesCommands(CLI::App& app, GlobalOptions& options) {
    auto opts = std::make_shared<PhrasesCommandOptions>();
    options.infoSources.push_back(phraseInfo);

    auto* phrases = app.add_subcommand("phrases", "Play-by-play phrase files and the narrator's word replacements");
    phrases->require_subcommand(1);
    phrases->fallthrough();

    auto* buildCmd = phrases->add_subcommand("build", "Write the standard phrase file from the built-in wordings");
    buildCmd->fallthrough();
    buildCmd->add_option("--out", opts->out, "File to write (default: the standard file of the program folder)");
    buildCmd->callback([&options, opts] { build(options, opts->out); });

    auto* showCmd = phrases->add_subcommand("show", "Show the phrase keys and their wordings");
    showCmd->fallthrough();
    showCmd->add_option("KEY", opts->key, "A key from 1 to 250: its twenty slots");
    showCmd->add_option("--file", opts->file, "Phrase file to show (default: the active one of the program folder)");
    showCmd->add_option("--search", opts->search, "List the wordings that hold this text, any case");
    showCmd->callback([&options, opts] { show(options, opts->key, opts->file, opts->search); });

    auto* checkCmd = phrases->add_subcommand("check", "Report the entries of a phrase file that take the default");
    checkCmd->fallthrough();
    checkCmd->add_option("FILE", opts->checkFile, "Phrase file")->required();
    checkCmd->callback([opts] { check(opts->checkFile); });

    auto* useCmd = phrases->add_subcommand("use", "Show or change the active phrase file");
    useCmd->fallthrough();
    useCmd->add_option("NAME", opts->useName, "A .HKp file of the program folder");
    useCmd->callback([&options, opts] { use(options, opts->useName); });

    auto* translateCmd = phrases->add_subcommand("translate", "Show a text as the narrator would speak it");
    translateCmd->fallthrough();
    translateCmd->add_option("TEXT", opts->words, "Text to speak")->required();
    translateCmd->callback([&options, opts] { translate(options, opts->words); });

    auto* translationCmd =
        phrases->add_subcommand("translation", "Show how the narrator says a name, or save how it should");
    translationCmd->fallthrough();
    translationCmd->add_option("NAME", opts->name, "Name or word")->required();
    translationCmd->add_option("SAID", opts->said, "How it is to be said");
    translationCmd->callback([&options, opts] { translation(options, opts->name, opts->said); });
}

}  // namespace tallyrink::cli
