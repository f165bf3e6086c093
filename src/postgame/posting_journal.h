#pragma once

// Posting a game changes several league files. To make that all or nothing,
// every change is first gathered in memory, then written as one journal file
// (through a temporary file renamed into place: it is either there whole or
// not at all), then applied file by file, and the journal removed last.
//
// Each change is idempotent (bytes at a fixed offset, or a whole file), so a
// journal found at the next start is simply applied again: a failure before
// the journal stands leaves the league untouched and the game unposted; a
// failure after it leaves a journal that finishes the posting.

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tallyrink {

class FolderNames;

inline constexpr const char* kPostingJournal = "HkPosting.jnl";

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
    // `names`, when given, resolves the league's file names instead of the disk.
    explicit PostingJournal(std::filesystem::path leagueDir, FolderNames* names = nullptr)
        : dir_(std::move(leagueDir)), names_(names) {}

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
    void apply(const std::vector<FileChange>& changes, FileWriter& writer) const;
    [[nodiscard]] std::filesystem::path path() const;

    [[nodiscard]] std::filesystem::path locate(std::string_view name) const;

    std::filesystem::path dir_;
    FolderNames* names_;
};

}  // namespace tallyrink
