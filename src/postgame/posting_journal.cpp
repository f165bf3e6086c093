#include "postgame/posting_journal.h"

#include <fmt/core.h>

#include <fcntl.h>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define TALLYRINK_AVX2_COMPARE 1
#endif
#include <unistd.h>
#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cerrno>
#include <cstring>

#include <fstream>

#include "league/file_images.h"
#include "league/files.h"
#include "league/folder_names.h"
#include "postgame/record_book.h"

namespace tallyrink {

namespace {

// A journal ends at its end marker ("TLYPOST1"), or at the length it gives
// after its first bytes ("TLYPOST2"): a run's journal file is written over
// in place and may hold an older, longer journal's bytes past that length.
constexpr std::string_view kMagic = "TLYPOST2";
constexpr std::string_view kExactMagic = "TLYPOST1";
constexpr std::string_view kEnd = "END";

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

// ---- The writer of a run ---------------------------------------------------------

namespace {

// Changes of one file closer than this go out in one write, the bytes
// between them taken from the image: a write call costs more than copying a
// few kilobytes more.
constexpr std::uint64_t kWriteGap = 8192;

// Equal words in a row that start the search for the end of a changed
// stretch: any run of kJournalGap equal bytes holds that many whole words,
// however it lies against them. Fewer than the gap could hold: the words are
// compared one at a time, the run's end is then found by the block.
constexpr int kWordsInJournalGap = 3;
static_assert(kJournalGap >= 8 * kWordsInJournalGap + 7);

void writeFully(int fd, const std::filesystem::path& path, std::uint64_t offset, const std::uint8_t* data,
                std::size_t n) {
    while (n > 0) {
        ssize_t done = ::pwrite(fd, data, n, static_cast<off_t>(offset));
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) throw FileError(fmt::format("Cannot write {}: {}", path.string(), std::strerror(errno)));
        data += done;
        offset += static_cast<std::uint64_t>(done);
        n -= static_cast<std::size_t>(done);
    }
}

// The first i from `from` below `n` where a and b differ; n when none does.
std::size_t firstDifferenceNarrow(const std::uint8_t* a, const std::uint8_t* b, std::size_t from, std::size_t n) {
    // Long equal stretches (a table that barely changed) in blocks, then words.
    constexpr std::size_t kBlock = 64;
#if defined(__SSE2__)
    // Sixteen bytes to a compare, four compares to a test, no call: a
    // posting compares a few hundred kilobytes, nearly all of them equal.
    auto equalMask = [&](std::size_t at) {
        __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + at));
        __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + at));
        return _mm_cmpeq_epi8(x, y);
    };
    while (from + kBlock <= n) {
        __m128i all = _mm_and_si128(_mm_and_si128(equalMask(from), equalMask(from + 16)),
                                    _mm_and_si128(equalMask(from + 32), equalMask(from + 48)));
        if (_mm_movemask_epi8(all) != 0xFFFF) break;
        from += kBlock;
    }
    for (; from + 16 <= n; from += 16) {
        auto equal = static_cast<unsigned>(_mm_movemask_epi8(equalMask(from)));
        if (equal != 0xFFFFu) return from + static_cast<std::size_t>(std::countr_one(equal));
    }
#else
    while (from + kBlock <= n && std::memcmp(a + from, b + from, kBlock) == 0) from += kBlock;
#endif
    for (; from + 8 <= n; from += 8) {
        std::uint64_t x = 0, y = 0;
        std::memcpy(&x, a + from, 8);
        std::memcpy(&y, b + from, 8);
        // The lowest differing byte of a little-endian word is the first one.
        if (x != y) return from + static_cast<std::size_t>(std::countr_zero(x ^ y) / 8);
    }
    while (from < n && a[from] == b[from]) ++from;
    return from;
}

#if defined(TALLYRINK_AVX2_COMPARE)
// The same, 32 bytes to a compare: a posting makes about a thousand of these
// scans over the players' records, most of them a few hundred bytes long.
[[gnu::target("avx2")]] std::size_t firstDifferenceWide(const std::uint8_t* a, const std::uint8_t* b, std::size_t from,
                                                        std::size_t n) {
    for (; from + 64 <= n; from += 64) {
        __m256i x0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + from));
        __m256i y0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + from));
        __m256i x1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + from + 32));
        __m256i y1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + from + 32));
        __m256i both = _mm256_and_si256(_mm256_cmpeq_epi8(x0, y0), _mm256_cmpeq_epi8(x1, y1));
        if (static_cast<unsigned>(_mm256_movemask_epi8(both)) != 0xFFFFFFFFu) break;
    }
    for (; from + 32 <= n; from += 32) {
        __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + from));
        __m256i y = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + from));
        auto equal = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(x, y)));
        if (equal != 0xFFFFFFFFu) return from + static_cast<std::size_t>(std::countr_one(equal));
    }
    return firstDifferenceNarrow(a, b, from, n);
}

// Whether the processor has the wider compares, asked once.
const bool kWideCompare = (__builtin_cpu_init(), __builtin_cpu_supports("avx2") != 0);
#endif

std::size_t firstDifference(const std::uint8_t* a, const std::uint8_t* b, std::size_t from, std::size_t n) {
#if defined(TALLYRINK_AVX2_COMPARE)
    if (kWideCompare) return firstDifferenceWide(a, b, from, n);
#endif
    return firstDifferenceNarrow(a, b, from, n);
}

// A box is half zero pages: those are left as holes of the new (empty) file,
// which read as zeros, and the copying of them into the page cache is saved.
constexpr std::size_t kPage = 4096;
constexpr std::array<std::uint8_t, kPage> kZeroPage{};

bool zeroPage(const std::uint8_t* p, std::size_t n) { return std::memcmp(p, kZeroPage.data(), n) == 0; }

// Writes `bytes` to the empty file of `fd` but for its pages of zeros.
void writeSkippingZeroPages(int fd, const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    std::size_t n = bytes.size();
    std::size_t at = 0;
    while (at < n) {
        auto pageEnd = [&](std::size_t from) { return std::min(n, from + kPage); };
        if (zeroPage(bytes.data() + at, pageEnd(at) - at)) {
            at = pageEnd(at);
            continue;
        }
        std::size_t end = pageEnd(at);
        while (end < n && !zeroPage(bytes.data() + end, pageEnd(end) - end)) end = pageEnd(end);
        writeFully(fd, path, at, bytes.data() + at, end - at);
        at = end;
    }
    // Zeros at the end: the length still counts them. Its last byte written
    // sets it at less cost than a truncation to the length.
    if (n > 0 && zeroPage(bytes.data() + (n - 1) / kPage * kPage, n - (n - 1) / kPage * kPage))
        writeFully(fd, path, n - 1, bytes.data() + (n - 1), 1);
}

}  // namespace

RunWriter::~RunWriter() {
    for (const auto& [path, fd] : open_) ::close(fd);
    if (journalFd_ >= 0) {
        ::close(journalFd_);
        // An unfinished posting's journal stays for the next start.
        if (journalDone_) ::unlink(journal_.c_str());
    }
}

void RunWriter::writeJournal(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    auto fail = [&](const char* what) {
        return FileError(fmt::format("Cannot {} {}: {}", what, path.string(), std::strerror(errno)));
    };
    if (journalFd_ >= 0 && path != journal_) {
        ::close(journalFd_);
        if (journalDone_) ::unlink(journal_.c_str());
        journalFd_ = -1;
    }
    const auto* done = reinterpret_cast<const std::uint8_t*>(kDoneJournal.data());
    if (journalFd_ < 0) {
        // Made whole under its name, as a done journal, once for the run (a
        // journal found here was finished before the posting began).
        writeFileAtomic(path, std::span(done, kDoneJournal.size()));
        int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        if (fd < 0) throw fail("write");
        journal_ = path;
        journalFd_ = fd;
        journalDone_ = true;
    }
    if (bytes.size() < kDoneJournal.size()) throw FileError(fmt::format("{}: not a posting journal", path.string()));
    // The file reads as done until its first bytes are written last. A
    // longer journal's bytes past this one's end stay: the journal gives its
    // length.
    writeFully(journalFd_, journal_, kDoneJournal.size(), bytes.data() + kDoneJournal.size(),
               bytes.size() - kDoneJournal.size());
    writeFully(journalFd_, journal_, 0, bytes.data(), kDoneJournal.size());
    journalDone_ = false;
}

void RunWriter::removeJournal(const std::filesystem::path& path) {
    if (journalFd_ < 0 || path != journal_) {
        // A journal left by an earlier run.
        remove(path);
        return;
    }
    writeFully(journalFd_, journal_, 0, reinterpret_cast<const std::uint8_t*>(kDoneJournal.data()),
               kDoneJournal.size());
    journalDone_ = true;
}

std::optional<bool> RunWriter::ownJournalStands(const std::filesystem::path& path) const {
    if (journalFd_ < 0 || path != journal_) return std::nullopt;
    return !journalDone_;
}

int RunWriter::openFile(const std::filesystem::path& path) {
    auto key = path.string();
    for (const auto& [name, fd] : open_)
        if (name == key) return fd;
    int fd = ::open(key.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0) throw FileError(fmt::format("Cannot write {}: {}", key, std::strerror(errno)));
    open_.emplace_back(std::move(key), fd);
    return fd;
}

void RunWriter::closeFile(const std::filesystem::path& path) {
    auto key = path.string();
    auto it = std::find_if(open_.begin(), open_.end(), [&](const auto& e) { return e.first == key; });
    if (it == open_.end()) return;
    ::close(it->second);
    open_.erase(it);
}

void RunWriter::writeWhole(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    // Renamed into place: the descriptor of the old file would write nowhere.
    closeFile(path);
    writeFileAtomic(path, bytes);
    images_.replace(path, bytes);
}

void RunWriter::writeAt(const std::filesystem::path& path, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    At change{offset, bytes};
    writeManyAt(path, std::span(&change, 1));
}

void RunWriter::writeManyAt(const std::filesystem::path& path, std::span<const At> changes) {
    if (changes.empty()) return;
    int fd = openFile(path);
    const std::vector<std::uint8_t>* image = images_.held(path);
    if (image == nullptr) {
        // A write past the end leaves zero bytes between, as the disk reads them.
        for (const At& c : changes) writeFully(fd, path, c.offset, c.bytes.data(), c.bytes.size());
        return;
    }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> spans;
    spans.reserve(changes.size());
    images_.writeEach(path, changes);
    for (const At& c : changes) spans.emplace_back(c.offset, c.offset + c.bytes.size());
    std::sort(spans.begin(), spans.end());
    std::size_t k = 0;
    while (k < spans.size()) {
        auto [begin, end] = spans[k++];
        while (k < spans.size() && spans[k].first <= end + kWriteGap) end = std::max(end, spans[k++].second);
        writeFully(fd, path, begin, image->data() + begin, static_cast<std::size_t>(end - begin));
    }
}

void RunWriter::replace(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    const std::vector<std::uint8_t>* image = images_.held(path);
    if (image == nullptr) {
        // A file the run only writes (a box): made anew and let go.
        closeFile(path);
        int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (fd < 0) throw FileError(fmt::format("Cannot write {}: {}", path.string(), std::strerror(errno)));
        try {
            writeSkippingZeroPages(fd, path, bytes);
        } catch (...) {
            ::close(fd);
            throw;
        }
        ::close(fd);
        return;
    }
    int fd = openFile(path);
    if (image->size() == bytes.size()) {
        std::vector<At> changes;
        std::size_t i = 0;
        while (i < bytes.size()) {
            if ((*image)[i] == bytes[i]) {
                ++i;
                continue;
            }
            std::size_t j = i + 1;
            while (j < bytes.size() && (*image)[j] != bytes[j]) ++j;
            changes.push_back({i, bytes.subspan(i, j - i)});
            i = j;
        }
        writeManyAt(path, changes);
        return;
    }
    writeFully(fd, path, 0, bytes.data(), bytes.size());
    if (::ftruncate(fd, static_cast<off_t>(bytes.size())) != 0)
        throw FileError(fmt::format("Cannot write {}: {}", path.string(), std::strerror(errno)));
    images_.replace(path, bytes);
}

void RunWriter::remove(const std::filesystem::path& path) {
    closeFile(path);
    images_.forget(path);
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        throw FileError(fmt::format("Cannot remove {}: {}", path.string(), std::strerror(errno)));
}

// ---- The journal ----------------------------------------------------------------------

std::vector<PostingJournal::Piece> PostingJournal::piecesOf(const std::vector<FileChange>& changes) {
    std::vector<Piece> out;
    out.reserve(changes.size());
    for (const FileChange& c : changes) out.push_back({&c.name, c.whole, c.offset, c.bytes});
    return out;
}

std::vector<std::uint8_t> PostingJournal::encode(const std::vector<FileChange>& changes) {
    Encoded out = encode(piecesOf(changes));
    return {out.bytes.get(), out.bytes.get() + out.size};
}

PostingJournal::Encoded PostingJournal::encode(std::span<const Piece> pieces) {
    std::size_t size = kMagic.size() + 8 + 4 + kEnd.size();
    for (const Piece& c : pieces) size += 2 + c.name->size() + 1 + 8 + 4 + c.bytes.size();
    // Sized once and filled in place: a journal holds hundreds of pieces.
    Encoded out{std::make_unique_for_overwrite<std::uint8_t[]>(size), size};
    std::uint8_t* at = out.bytes.get();
    auto put = [&](const void* p, std::size_t n) {
        if (n > 0) std::memcpy(at, p, n);
        at += n;
    };
    auto num = [&](std::uint64_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) *at++ = static_cast<std::uint8_t>(v >> (8 * i));
    };
    put(kMagic.data(), kMagic.size());
    num(size, 8);
    num(pieces.size(), 4);
    for (const Piece& c : pieces) {
        num(c.name->size(), 2);
        put(c.name->data(), c.name->size());
        *at++ = c.whole ? 1 : 0;
        num(c.offset, 8);
        num(c.bytes.size(), 4);
        put(c.bytes.data(), c.bytes.size());
    }
    put(kEnd.data(), kEnd.size());
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
    Reader head(bytes, what);
    auto magic = head.take(kMagic.size());
    bool exact = std::memcmp(magic.data(), kExactMagic.data(), kExactMagic.size()) == 0;
    if (!exact && std::memcmp(magic.data(), kMagic.data(), kMagic.size()) != 0)
        throw FileError(fmt::format("{} is not a posting journal", what));
    if (!exact) {
        std::uint64_t length = head.num(8);
        if (length > bytes.size())
            throw FileError(fmt::format("{} is cut short: {} bytes of {}", what, bytes.size(), length));
        bytes = bytes.first(static_cast<std::size_t>(length));
    }
    Reader in(bytes, what);
    in.take(kMagic.size() + (exact ? 0 : 8));
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

const std::filesystem::path& PostingJournal::locate(std::string_view name) const {
    if (names_ == nullptr) {
        own_ = std::make_unique<FolderNames>(dir_);
        names_ = own_.get();
    }
    return names_->find(name);
}

const std::filesystem::path& PostingJournal::path() const { return locate(kPostingJournal); }

bool PostingJournal::pending() const {
    const auto& p = path();
    int fd = ::open(p.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return errno != ENOENT && std::filesystem::exists(p);  // unreadable but there: recovery says why
    std::array<char, kDoneJournal.size()> head{};
    ssize_t got = ::read(fd, head.data(), head.size());
    ::close(fd);
    return got != static_cast<ssize_t>(head.size()) || std::string_view(head.data(), head.size()) != kDoneJournal;
}

const std::filesystem::path& PostingJournal::Targets::of(const std::string& name) {
    // A change outside the league folder (the all-time records) carries its whole path.
    if (name.find('/') == std::string::npos || !std::filesystem::path(name).is_absolute()) return journal_.locate(name);
    for (const auto& [known, path] : outside_)
        if (known == name) return path;
    return outside_.emplace_back(name, name).second;
}

std::vector<PostingJournal::Piece> PostingJournal::narrowed(const std::vector<FileChange>& changes,
                                                            Targets& targets) const {
    std::vector<Piece> out;
    out.reserve(changes.size());
    // Ranges this posting has changed already, by file: a later change over
    // one of them is kept whole, as the images don't hold the earlier one yet.
    // A change past the end of all of a file's earlier ones (as most come)
    // overlaps none of them.
    struct Touched {
        const std::string* name;
        std::uint64_t end = 0;  // of all the ranges
        std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;
    };
    std::vector<Touched> touched;
    Touched* file = nullptr;
    const std::string* lastName = nullptr;
    const std::vector<std::uint8_t>* image = nullptr;
    for (const FileChange& c : changes) {
        std::uint64_t begin = c.whole ? 0 : c.offset;
        std::uint64_t end = begin + c.bytes.size();
        // Changes of one file come in a row: its name is looked up once.
        if (lastName == nullptr || c.name != *lastName) {
            image = images_->held(targets.of(c.name));
            lastName = &c.name;
            auto it = std::find_if(touched.begin(), touched.end(), [&](const Touched& t) { return *t.name == c.name; });
            file = it != touched.end() ? &*it : &touched.emplace_back(Touched{&c.name, 0, {}});
        }
        bool overlaps = begin < file->end && std::any_of(file->ranges.begin(), file->ranges.end(), [&](const auto& r) {
                            return r.first < end && begin < r.second;
                        });
        file->ranges.emplace_back(begin, end);
        file->end = std::max(file->end, end);
        if (image == nullptr || overlaps || (c.whole && image->size() != c.bytes.size())) {
            out.push_back({&c.name, c.whole, c.offset, c.bytes});
            continue;
        }
        // Bytes past the image's end are new, whatever their value.
        std::size_t n = c.bytes.size();
        std::size_t comparable = begin < image->size() ? std::min<std::uint64_t>(n, image->size() - begin) : 0;
        const std::uint8_t* was = image->data() + begin;
        const std::uint8_t* now = c.bytes.data();
        auto nextDifferent = [&](std::size_t from) {
            return from >= comparable ? from : firstDifference(was, now, from, comparable);
        };
        // The first of the equal bytes that end just before `to`, no further
        // back than `from`: a word at a time, the last differing byte of a
        // little-endian word being its highest.
        auto equalRunStart = [&](std::size_t to, std::size_t from) {
            while (to >= from + 8) {
                std::uint64_t x = 0, y = 0;
                std::memcpy(&x, was + to - 8, 8);
                std::memcpy(&y, now + to - 8, 8);
                if (x != y) return to - static_cast<std::size_t>(std::countl_zero(x ^ y) / 8);
                to -= 8;
            }
            while (to > from && was[to - 1] == now[to - 1]) --to;
            return to;
        };
        // The end of the stretch that starts at changed byte i: the first byte
        // of the first run of kJournalGap equal bytes after it, or of the
        // equal bytes that end the change; n when there is neither. A run that
        // long holds kWordsInJournalGap whole words of equal bytes, so words
        // are passed over until that many equal ones come in a row, and only
        // then are the run's ends found.
        // Where the bytes differ next after a stretch, when finding its end
        // has found that too: the equal run is not scanned a second time.
        constexpr std::size_t kUnknown = static_cast<std::size_t>(-1);
        std::size_t nextKnown = kUnknown;
        auto stretchEnd = [&](std::size_t i) -> std::size_t {
            if (i >= comparable) return n;
            std::size_t from = i + 1;  // the byte before `from` differs
            while (true) {
                std::size_t w = (from + 7) / 8 * 8;
                int equalWords = 0;
                for (; w + 8 <= comparable; w += 8) {
                    std::uint64_t x = 0, y = 0;
                    std::memcpy(&x, was + w, 8);
                    std::memcpy(&y, now + w, 8);
                    equalWords = x == y ? equalWords + 1 : 0;
                    if (equalWords == kWordsInJournalGap) break;
                }
                if (equalWords < kWordsInJournalGap) {
                    // No run that long is left: only equal bytes at the very
                    // end of the change end the stretch before its end.
                    if (comparable < n) return n;
                    return equalRunStart(comparable, from);
                }
                std::size_t start = equalRunStart(w - 8 * static_cast<std::size_t>(kWordsInJournalGap - 1), from);
                std::size_t end = firstDifference(was, now, w + 8, comparable);
                if (end - start >= kJournalGap || (end >= comparable && comparable == n)) {
                    nextKnown = end;  // the bytes from start to end are equal: end is the next difference
                    return start;
                }
                if (end >= comparable) return n;
                from = end + 1;
            }
        };
        for (std::size_t i = nextDifferent(0); i < n;) {
            nextKnown = kUnknown;
            std::size_t j = stretchEnd(i);
            out.push_back({&c.name, false, begin + i, std::span(c.bytes).subspan(i, j - i)});
            i = nextKnown != kUnknown ? nextKnown : nextDifferent(j);
        }
    }
    return out;
}

void PostingJournal::apply(std::span<const Piece> pieces, FileWriter& writer, Targets& targets) const {
    std::vector<FileWriter::At> run;
    for (std::size_t i = 0; i < pieces.size();) {
        const Piece& c = pieces[i];
        const std::filesystem::path& target = targets.of(*c.name);
        if (c.whole) {
            writer.replace(target, c.bytes);
            ++i;
            continue;
        }
        // In-place changes of one file in a row go together.
        run.clear();
        for (; i < pieces.size() && !pieces[i].whole && *pieces[i].name == *c.name; ++i)
            run.push_back({pieces[i].offset, pieces[i].bytes});
        writer.writeManyAt(target, run);
    }
    writer.removeJournal(path());
}

void PostingJournal::commit(const std::vector<FileChange>& changes, FileWriter& writer) const {
    Targets targets(*this);
    auto pieces = images_ != nullptr ? narrowed(changes, targets) : piecesOf(changes);
    writer.writeJournal(path(), encode(pieces).view());
    apply(pieces, writer, targets);
}

bool PostingJournal::recover(FileWriter& writer) const {
    auto own = writer.ownJournalStands(path());
    if (own ? !*own : !pending()) return false;
    const auto& p = path();
    auto changes = decode(readBytes(p), p.string());
    Targets targets(*this);
    apply(piecesOf(changes), writer, targets);
    return true;
}

}  // namespace tallyrink
