#include "league/files.h"

#include <fmt/format.h>
#include <fmt/std.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <random>
#include <system_error>

#include "league/text.h"

namespace tallyrink {

namespace {

fs::path findPart(const fs::path& dir, const std::string& part) {
    std::error_code ec;
    fs::path exact = dir / part;
    if (fs::exists(exact, ec)) return exact;
    // Sorted so that two names differing only in case always resolve the same way.
    std::vector<fs::path> matches;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        if (equalNoCase(it->path().filename().string(), part)) matches.push_back(it->path());
    }
    if (matches.empty()) return exact;
    std::sort(matches.begin(), matches.end());
    return matches.front();
}

std::string systemMessage(int err) { return std::generic_category().message(err); }

}  // namespace

fs::path findFile(const fs::path& dir, std::string_view name) {
    fs::path out = dir;
    std::string part;
    auto flush = [&] {
        if (part.empty() || part == ".") {
        } else if (part == "..") {
            out = out.parent_path();
        } else {
            out = findPart(out, part);
        }
        part.clear();
    };
    for (char c : name) {
        if (c == '/' || c == '\\')
            flush();
        else
            part += c;
    }
    flush();
    return out;
}

std::uint64_t fileLength(const fs::path& path) {
    std::error_code ec;
    auto n = fs::file_size(path, ec);
    return ec ? 0 : n;
}

std::vector<std::uint8_t> readBytes(const fs::path& path) {
    std::error_code ec;
    if (!fs::exists(path, ec)) return {};
    std::ifstream in(path, std::ios::binary);
    if (!in) throw FileError(fmt::format("Cannot read {}: {}", path.string(), systemMessage(errno)));
    std::vector<std::uint8_t> bytes(fileLength(path));
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

void writeFileAtomic(const fs::path& path, std::span<const std::uint8_t> bytes) {
    fs::path dir = path.has_parent_path() ? path.parent_path() : fs::path(".");
    // A name no other writer picks, in the same folder so the rename is atomic.
    std::random_device rd;
    fs::path tmp = dir / fmt::format(".{}.tmp{:08x}", path.filename().string(), rd());
    {
        std::ofstream out(tmp, std::ios::binary | std::ios::trunc);
        if (!out) throw FileError(fmt::format("Cannot write {}: {}", path.string(), systemMessage(errno)));
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        out.flush();
        if (!out) {
            int err = errno;
            out.close();
            std::error_code ec;
            fs::remove(tmp, ec);
            throw FileError(fmt::format("Cannot write {}: {}", path.string(), systemMessage(err)));
        }
    }
    std::error_code ec;
    fs::rename(tmp, path, ec);
    if (ec) {
        std::error_code ignore;
        fs::remove(tmp, ignore);
        throw FileError(fmt::format("Cannot replace {}: {}", path.string(), ec.message()));
    }
}

void writeFileAtomic(const fs::path& path, std::string_view text) {
    writeFileAtomic(path, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

std::vector<std::string> readLines(const fs::path& path) {
    std::error_code ec;
    if (!fs::exists(path, ec)) {
        std::ofstream touch(path, std::ios::app);  // may fail in a read-only folder; still empty
        return {};
    }
    auto bytes = readBytes(path);
    std::vector<std::string> lines;
    std::string cur;
    for (auto b : bytes) {
        if (b == '\n') {
            if (!cur.empty() && cur.back() == '\r') cur.pop_back();
            lines.push_back(std::move(cur));
            cur.clear();
        } else {
            cur += static_cast<char>(b);
        }
    }
    if (!cur.empty()) {
        if (cur.back() == '\r') cur.pop_back();
        lines.push_back(std::move(cur));
    }
    return lines;
}

void writeLines(const fs::path& path, const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& l : lines) {
        text += l;
        text += '\n';
    }
    writeFileAtomic(path, text);
}

void appendLine(const fs::path& path, std::string_view line) {
    std::ofstream out(path, std::ios::binary | std::ios::app);
    out << line << '\n';
    if (!out) throw FileError(fmt::format("Cannot append to {}: {}", path.string(), systemMessage(errno)));
}

std::vector<std::uint8_t> RandomFile::readSlot(std::size_t r) const {
    std::vector<std::uint8_t> buf(slot_, 0);
    if (r == 0) return buf;
    std::error_code ec;
    if (!fs::exists(path_, ec)) return buf;
    std::ifstream in(path_, std::ios::binary);
    if (!in) throw FileError(fmt::format("Cannot read {}: {}", path_.string(), systemMessage(errno)));
    in.seekg(static_cast<std::streamoff>((r - 1) * slot_));
    if (in) in.read(reinterpret_cast<char*>(buf.data()), static_cast<std::streamsize>(slot_));
    return buf;
}

SlotReader::SlotReader(const RandomFile& file) : file_(file) {
    std::error_code ec;
    if (!fs::exists(file.path(), ec)) return;
    in_.open(file.path(), std::ios::binary);
    if (!in_) throw FileError(fmt::format("Cannot read {}: {}", file.path().string(), systemMessage(errno)));
    open_ = true;
}

std::vector<std::uint8_t> SlotReader::readSlot(std::size_t r) {
    std::vector<std::uint8_t> buf;
    readSlot(r, buf);
    return buf;
}

void SlotReader::readSlot(std::size_t r, std::vector<std::uint8_t>& into) {
    into.assign(file_.slot(), 0);
    if (r == 0 || !open_) return;
    in_.clear();
    in_.seekg(static_cast<std::streamoff>((r - 1) * file_.slot()));
    if (in_) in_.read(reinterpret_cast<char*>(into.data()), static_cast<std::streamsize>(into.size()));
}

std::vector<std::vector<std::uint8_t>> RandomFile::readSlots(std::size_t count) const {
    auto bytes = readBytes(path_);
    std::vector<std::vector<std::uint8_t>> out(count, std::vector<std::uint8_t>(slot_, 0));
    for (std::size_t r = 0; r < count; ++r) {
        std::size_t begin = r * slot_;
        if (begin >= bytes.size()) break;
        std::size_t n = std::min(slot_, bytes.size() - begin);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), n, out[r].begin());
    }
    return out;
}

void RandomFile::writeSlot(std::size_t r, std::span<const std::uint8_t> bytes) const {
    if (r == 0) throw FileError(fmt::format("Record 0 of {} does not exist", path_.string()));
    std::error_code ec;
    if (!fs::exists(path_, ec)) {
        std::ofstream create(path_, std::ios::binary);
        if (!create) throw FileError(fmt::format("Cannot create {}: {}", path_.string(), systemMessage(errno)));
    }
    std::fstream io(path_, std::ios::binary | std::ios::in | std::ios::out);
    if (!io) throw FileError(fmt::format("Cannot write {}: {}", path_.string(), systemMessage(errno)));
    auto offset = static_cast<std::uint64_t>(r - 1) * slot_;
    auto len = fileLength(path_);
    if (offset > len) {
        // Never-written slots before this one hold zero bytes.
        io.seekp(static_cast<std::streamoff>(len));
        std::vector<char> zeros(static_cast<std::size_t>(offset - len), 0);
        io.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
    }
    io.seekp(static_cast<std::streamoff>(offset));
    io.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    io.flush();
    if (!io) throw FileError(fmt::format("Cannot write record {} of {}: {}", r, path_.string(), systemMessage(errno)));
}

void RandomFile::rewrite(const std::vector<std::vector<std::uint8_t>>& slots) const {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(slots.size() * slot_);
    for (const auto& s : slots) {
        std::size_t n = std::min(slot_, s.size());
        bytes.insert(bytes.end(), s.begin(), s.begin() + static_cast<std::ptrdiff_t>(n));
        bytes.resize(bytes.size() + (slot_ - n), 0);
    }
    writeFileAtomic(path_, bytes);
}

}  // namespace tallyrink
