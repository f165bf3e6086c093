#include "league/file_images.h"

#include <algorithm>

#include "league/files.h"

namespace tallyrink {

FileImages::Image& FileImages::imageRead(const std::filesystem::path& path) {
    auto key = path.string();
    auto it = images_.find(key);
    if (it == images_.end())
        it = images_.emplace(std::move(key), Image{readBytes(path), false, {}, ++lastStamp_}).first;
    return it->second;
}

const std::vector<std::uint8_t>& FileImages::bytes(const std::filesystem::path& path) { return imageRead(path).bytes; }

std::uint64_t FileImages::stamp(const std::filesystem::path& path) { return imageRead(path).stamp; }

std::vector<std::uint8_t> FileImages::readSlot(const std::filesystem::path& path, std::size_t slot, std::size_t r) {
    std::vector<std::uint8_t> out(slot, 0);
    if (r == 0) return out;
    const auto& image = bytes(path);
    std::size_t begin = (r - 1) * slot;
    if (begin < image.size()) {
        std::size_t n = std::min(slot, image.size() - begin);
        std::copy_n(image.begin() + static_cast<std::ptrdiff_t>(begin), n, out.begin());
    }
    return out;
}

std::span<const std::uint8_t> FileImages::slotBytes(const std::filesystem::path& path, std::size_t slot,
                                                    std::size_t r) {
    return slotIn(bytes(path), slot, r);
}

std::span<const std::uint8_t> FileImages::slotIn(const std::vector<std::uint8_t>& image, std::size_t slot,
                                                 std::size_t r) {
    std::size_t begin = (r - 1) * slot;
    if (r == 0 || begin >= image.size()) return {};
    return std::span(image).subspan(begin, std::min(slot, image.size() - begin));
}

const std::vector<std::uint8_t>* FileImages::held(const std::filesystem::path& path) const {
    auto it = images_.find(path.string());
    return it == images_.end() ? nullptr : &it->second.bytes;
}

FileImages::Image* FileImages::imageOf(const std::filesystem::path& path) {
    auto it = images_.find(path.string());
    return it == images_.end() ? nullptr : &it->second;
}

void FileImages::writeAt(const std::filesystem::path& path, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    if (Image* image = imageOf(path)) put(*image, offset, bytes);
}

void FileImages::put(Image& image, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    image.stamp = ++lastStamp_;
    if (image.watched) note(image, offset, offset + bytes.size());
    auto& held = image.bytes;
    auto end = static_cast<std::size_t>(offset) + bytes.size();
    // A gap past the old end reads as zero bytes, as on the disk.
    if (held.size() < end) held.resize(end, 0);
    std::copy(bytes.begin(), bytes.end(), held.begin() + static_cast<std::ptrdiff_t>(offset));
}

void FileImages::replace(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    auto it = images_.find(path.string());
    if (it == images_.end()) return;
    it->second.bytes.assign(bytes.begin(), bytes.end());
    it->second.stamp = ++lastStamp_;
    if (it->second.watched) {
        it->second.written.whole = true;
        it->second.written.ranges.clear();
    }
}

void FileImages::note(Image& image, std::uint64_t begin, std::uint64_t end) {
    // A reader that hasn't looked for long rereads the file rather than let the list grow.
    constexpr std::size_t kMostRanges = 4096;
    Written& w = image.written;
    if (w.whole) return;
    if (!w.ranges.empty() && w.ranges.back().second == begin) {
        w.ranges.back().second = end;
        return;
    }
    if (w.ranges.size() == kMostRanges) {
        w.whole = true;
        w.ranges.clear();
        return;
    }
    w.ranges.emplace_back(begin, end);
}

void FileImages::watch(const std::filesystem::path& path) {
    Image& image = imageRead(path);
    image.watched = true;
    image.written = {};
}

FileImages::Written FileImages::takeWritten(const std::filesystem::path& path) {
    auto it = images_.find(path.string());
    if (it == images_.end() || !it->second.watched) return {true, {}};
    Written out = std::move(it->second.written);
    it->second.written = {};
    return out;
}

std::uint64_t fileLengthVia(FileImages* images, const std::filesystem::path& path) {
    return images ? images->length(path) : fileLength(path);
}

std::vector<std::uint8_t> readSlotVia(FileImages* images, const std::filesystem::path& path, std::size_t slot,
                                      std::size_t r) {
    return images ? images->readSlot(path, slot, r) : RandomFile(path, slot).readSlot(r);
}

}  // namespace tallyrink
