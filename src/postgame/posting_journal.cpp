#include "postgame/posting_journal.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "league/files.h"
#include "postgame/record_book.h"
#include "league/folder_names.h"

namespace tallyrink {

namespace {

constexpr std::string_view kMagic = "TLYPOST1";
constexpr std::string_view kEnd = "END";

void putU32(std::vector<std::uint8_t>& out, std::uint64_t v, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

class Reader {
public:
    Reader(std::span<const std::uint8_t> b, const std::string& what) : b_(b), what_(what) {}
    std::uint64_t num(int bytes) {
        need(static_cast<std::size_t>(bytes));
        std::uint64_t v = 0;
        for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | b_[pos_ + static_cast<std::size_t>(i)];
        pos_ += static_cast<std::size_t>(bytes);
        return v;
    }
    std::span<const std::uint8_t> take(std::size_t n) {
        need(n);
        auto s = b_.subspan(pos_, n);
        pos_ += n;
        return s;
    }
    [[nodiscard]] bool atEnd() const { return pos_ == b_.size(); }

private:
    void need(std::size_t n) const {
        if (pos_ + n > b_.size())
            throw FileError(fmt::format("{} is cut short: {} bytes expected at byte {}, {} found", what_, n, pos_,
                                        b_.size() - pos_));
    }
    std::span<const std::uint8_t> b_;
    const std::string& what_;
    std::size_t pos_ = 0;
};

}  // namespace

void DiskWriter::writeWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    writeFileAtomic(path, bytes);
}

void DiskWriter::writeManyAt(const std::filesystem::path& path, std::span<const At> changes) {
    if (changes.empty()) return;
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        std::ofstream create(path, std::ios::binary);
        if (!create) throw FileError(fmt::format("Cannot create {}: {}", path.string(), std::strerror(errno)));
    }
    std::fstream io(path, std::ios::binary | std::ios::in | std::ios::out);
    if (!io) throw FileError(fmt::format("Cannot write {}: {}", path.string(), std::strerror(errno)));
    std::uint64_t length = fileLength(path);
    for (const At& c : changes) {
        if (c.offset > length) {
            // Bytes never written before this change read as zero.
            io.seekp(static_cast<std::streamoff>(length));
            std::vector<char> zeros(static_cast<std::size_t>(c.offset - length), 0);
            io.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
        }
        io.seekp(static_cast<std::streamoff>(c.offset));
        io.write(reinterpret_cast<const char*>(c.bytes.data()), static_cast<std::streamsize>(c.bytes.size()));
        length = std::max(length, c.offset + c.bytes.size());
    }
    io.flush();
    if (!io) throw FileError(fmt::format("Cannot write {}: {}", path.string(), std::strerror(errno)));
}

void DiskWriter::writeAt(const std::filesystem::path& path, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    // A file of one-byte slots: slot offset + 1 starts at the offset.
    RandomFile(path, 1).writeSlot(static_cast<std::size_t>(offset) + 1, bytes);
}

void DiskWriter::remove(const std::filesystem::path& path) {
    std::error_code ec;
    std::filesystem::remove(path, ec);
    if (ec) throw FileError(fmt::format("Cannot remove {}: {}", path.string(), ec.message()));
}

std::vector<std::uint8_t> PostingJournal::encode(const std::vector<FileChange>& changes) {
    std::vector<std::uint8_t> out(kMagic.begin(), kMagic.end());
    putU32(out, changes.size(), 4);
    for (const FileChange& c : changes) {
        putU32(out, c.name.size(), 2);
        out.insert(out.end(), c.name.begin(), c.name.end());
        out.push_back(c.whole ? 1 : 0);
        putU32(out, c.offset, 8);
        putU32(out, c.bytes.size(), 4);
        out.insert(out.end(), c.bytes.begin(), c.bytes.end());
    }
    out.insert(out.end(), kEnd.begin(), kEnd.end());
    return out;
}

namespace {

// The one file a posting writes outside the league folder, named by its
// whole path: the record book kept across leagues.
bool allTimeRecords(const std::string& name) {
    std::filesystem::path p(name);
    std::string file = p.filename().string();
    std::string want = kRecordsFile;
    auto lower = [](std::string v) {
        std::transform(v.begin(), v.end(), v.begin(), [](unsigned char ch) { return std::tolower(ch); });
        return v;
    };
    return p.is_absolute() && lower(file) == lower(want);
}

}  // namespace

std::vector<FileChange> PostingJournal::decode(std::span<const std::uint8_t> bytes, const std::string& what) {
    Reader in(bytes, what);
    auto magic = in.take(kMagic.size());
    if (std::memcmp(magic.data(), kMagic.data(), kMagic.size()) != 0)
        throw FileError(fmt::format("{} is not a posting journal", what));
    std::vector<FileChange> out(in.num(4));
    for (FileChange& c : out) {
        auto name = in.take(in.num(2));
        c.name.assign(name.begin(), name.end());
        if (c.name.empty() || (c.name.find_first_of("/\\") != std::string::npos && !allTimeRecords(c.name)))
            throw FileError(fmt::format("{} names a file outside the league folder", what));
        c.whole = in.num(1) == 1;
        c.offset = in.num(8);
        auto b = in.take(in.num(4));
        c.bytes.assign(b.begin(), b.end());
    }
    auto end = in.take(kEnd.size());
    if (std::memcmp(end.data(), kEnd.data(), kEnd.size()) != 0 || !in.atEnd())
        throw FileError(fmt::format("{} does not end as a posting journal does", what));
    return out;
}

std::filesystem::path PostingJournal::locate(std::string_view name) const {
    return names_ ? names_->find(name) : findFile(dir_, name);
}

std::filesystem::path PostingJournal::path() const { return locate(kPostingJournal); }

bool PostingJournal::pending() const { return std::filesystem::exists(path()); }

void PostingJournal::apply(const std::vector<FileChange>& changes, FileWriter& writer) const {
    std::vector<FileWriter::At> run;
    for (std::size_t i = 0; i < changes.size();) {
        const FileChange& c = changes[i];
        // A change outside the league folder (the all-time records) carries its whole path.
        std::filesystem::path named(c.name);
        auto target = named.is_absolute() ? named : locate(c.name);
        if (c.whole) {
            writer.writeWhole(target, c.bytes);
            ++i;
            continue;
        }
        // In-place changes of one file in a row go together.
        run.clear();
        for (; i < changes.size() && !changes[i].whole && changes[i].name == c.name; ++i)
            run.push_back({changes[i].offset, changes[i].bytes});
        writer.writeManyAt(target, run);
    }
    writer.remove(path());
}

void PostingJournal::commit(const std::vector<FileChange>& changes, FileWriter& writer) const {
    writer.writeWhole(path(), encode(changes));
    apply(changes, writer);
}

bool PostingJournal::recover(FileWriter& writer) const {
    if (!pending()) return false;
    auto p = path();
    apply(decode(readBytes(p), p.string()), writer);
    return true;
}

}  // namespace tallyrink
