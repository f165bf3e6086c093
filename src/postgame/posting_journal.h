#pragma once

// Posting a game changes several league files. To make that all or nothing,
// every change is first gathered in memory, then written as one journal file
// (through a temporary file renamed into place: it is either there whole or
// not at all), then applied file by file, and the journal removed last.
//
// Each change is idempotent (bytes at a fixed offset, or a whole file), so a
// journal found at the next start is simply applied again: a failure before
// the journal stands leaves the game unposted (and at most a new file that
// no row names yet, such as its box); a failure after it leaves a journal
// that finishes the posting.

#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "league/folder_names.h"

namespace tallyrink {

class FileImages;

inline constexpr const char* kPostingJournal = "HkPosting.jnl";
// Of a changed byte range in a run's journal, equal bytes fewer than this in
// a row stay in the change: each change costs its name and offsets in the
// journal and a step of its own in every write that follows, while a few
// hundred bytes more cost a copy. A player's record changes in a handful of
// places some tens of bytes apart.
inline constexpr std::size_t kJournalGap = 256;
// The first bytes of a journal file whose posting is done (or was never
// whole): no posting is pending.
inline constexpr std::string_view kDoneJournal = "TLYDONE1";

// Where posting's writes go: the disk, or in a test a writer that fails on
// the n-th call.
class FileWriter {
public:
    virtual ~FileWriter() = default;
    // Replaces the file through a temporary file.
    virtual void writeWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) = 0;
    // Writes bytes at an offset in place, zero-filling a gap past the end.
    virtual void writeAt(const std::filesystem::path& path, std::uint64_t offset,
                         std::span<const std::uint8_t> bytes) = 0;
    virtual void remove(const std::filesystem::path& path) = 0;
    // The journal itself: it must stand whole or not at all, and its removal
    // is what ends a posting.
    virtual void writeJournal(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
        writeWhole(path, bytes);
    }
    virtual void removeJournal(const std::filesystem::path& path) { remove(path); }
    // Whether a journal this writer wrote at `path` stands unfinished, when
    // the writer keeps that journal itself; nothing when the disk must tell.
    [[nodiscard]] virtual std::optional<bool> ownJournalStands(const std::filesystem::path& /*path*/) const {
        return std::nullopt;
    }
    // Replaces a file's bytes as a change of a standing journal: a failure
    // part way is mended by the journal, so a writer may do it in place.
    virtual void replace(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
        writeWhole(path, bytes);
    }

    // One file's in-place changes in order; a writer that can keeps the file
    // open across them (a posting changes some fifty player slots).
    struct At {
        std::uint64_t offset;
        std::span<const std::uint8_t> bytes;
    };
    virtual void writeManyAt(const std::filesystem::path& path, std::span<const At> changes) {
        for (const At& c : changes) writeAt(path, c.offset, c.bytes);
    }
};

class DiskWriter final : public FileWriter {
public:
    void writeWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) override;
    void writeAt(const std::filesystem::path& path, std::uint64_t offset, std::span<const std::uint8_t> bytes) override;
    void remove(const std::filesystem::path& path) override;
    void writeManyAt(const std::filesystem::path& path, std::span<const At> changes) override;
};

// The writer of a run of many games: it keeps the files it writes open
// across games, and the run's images (file_images.h) in step with them. With
// the images a file's changes go out as few writes of the image as they
// allow: changes near each other in one write, the bytes between them as
// they stand.
//
// The journal keeps its name and its open file for the whole run: a file
// made and deleted, or renamed twice, at every game would cost the file
// system far more than the writes themselves. It is written marked done
// (kDoneJournal), which reads as no journal at all, and the mark is turned
// into a journal's only once the rest stands whole; the posting's end puts
// the mark back. A done journal is deleted when the run ends.
class RunWriter final : public FileWriter {
public:
    explicit RunWriter(FileImages& images) : images_(images) {}
    ~RunWriter() override;
    RunWriter(const RunWriter&) = delete;
    RunWriter& operator=(const RunWriter&) = delete;

    void writeWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) override;
    void writeAt(const std::filesystem::path& path, std::uint64_t offset, std::span<const std::uint8_t> bytes) override;
    void writeManyAt(const std::filesystem::path& path, std::span<const At> changes) override;
    void replace(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) override;
    void remove(const std::filesystem::path& path) override;
    void writeJournal(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) override;
    void removeJournal(const std::filesystem::path& path) override;
    [[nodiscard]] std::optional<bool> ownJournalStands(const std::filesystem::path& path) const override;

private:
    int openFile(const std::filesystem::path& path);
    void closeFile(const std::filesystem::path& path);

    FileImages& images_;
    std::vector<std::pair<std::string, int>> open_;  // path, descriptor
    std::filesystem::path journal_;
    int journalFd_ = -1;
    bool journalDone_ = true;
};

// One change of a league file, named as the folder spells it; a file
// outside the league folder is named by its absolute path.
struct FileChange {
    std::string name;
    bool whole = false;  // the whole file, else bytes at `offset`
    std::uint64_t offset = 0;
    std::vector<std::uint8_t> bytes;
};

class PostingJournal {
public:
    // `names`, when given, resolves the league's file names for the run that
    // keeps them; without, the journal lists the folder itself when it first
    // needs a name. With `images` (the files as they stand) the journal keeps
    // of a change only the bytes that differ from them.
    explicit PostingJournal(std::filesystem::path leagueDir, FolderNames* names = nullptr, FileImages* images = nullptr)
        : dir_(std::move(leagueDir)), names_(names), images_(images) {}

    // Makes the changes in one step as told above.
    void commit(const std::vector<FileChange>& changes, FileWriter& writer) const;

    // Finishes a posting that a failure cut short. Returns true when there
    // was one. A journal that can't be read throws FileError and is kept.
    bool recover(FileWriter& writer) const;

    [[nodiscard]] bool pending() const;

    static std::vector<std::uint8_t> encode(const std::vector<FileChange>& changes);
    // Throws FileError naming `what` for bytes that are not a whole journal.
    static std::vector<FileChange> decode(std::span<const std::uint8_t> bytes, const std::string& what);

private:
    // A change, or the part of one the journal keeps: its name and bytes are
    // those of a FileChange, not copies.
    struct Piece {
        const std::string* name;
        bool whole;
        std::uint64_t offset;
        std::span<const std::uint8_t> bytes;
    };
    static std::vector<Piece> piecesOf(const std::vector<FileChange>& changes);
    // A journal's bytes, every one written by the encoding: none cleared first.
    struct Encoded {
        std::unique_ptr<std::uint8_t[]> bytes;
        std::size_t size = 0;
        [[nodiscard]] std::span<const std::uint8_t> view() const { return {bytes.get(), size}; }
    };
    static Encoded encode(std::span<const Piece> pieces);

    // The files of one commit by the names its changes give, each looked up
    // once for the narrowing and the writes both.
    class Targets {
    public:
        explicit Targets(const PostingJournal& journal) : journal_(journal) {}
        const std::filesystem::path& of(const std::string& name);

    private:
        const PostingJournal& journal_;
        // Files outside the league folder (the all-time records), named in full.
        std::deque<std::pair<std::string, std::filesystem::path>> outside_;
    };

    void apply(std::span<const Piece> pieces, FileWriter& writer, Targets& targets) const;
    [[nodiscard]] const std::filesystem::path& path() const;

    [[nodiscard]] const std::filesystem::path& locate(std::string_view name) const;

    [[nodiscard]] std::vector<Piece> narrowed(const std::vector<FileChange>& changes, Targets& targets) const;

    std::filesystem::path dir_;
    mutable FolderNames* names_;
    FileImages* images_;
    mutable std::unique_ptr<FolderNames> own_;  // when no run lends its names
};

}  // namespace tallyrink
