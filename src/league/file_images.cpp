#include "league/file_images.h"

#include <algorithm>

#include "league/files.h"

namespace tallyrink {

const std::vector<std::uint8_t>& FileImages::bytes(const std::filesystem::path& path) {
    auto key = path.string();
    auto it = images_.find(key);
    if (it == images_.end()) it = images_.emplace(std::move(key), readBytes(path)).first;
    return it->second;
}

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
    const auto& image = bytes(path);
    std::size_t begin = (r - 1) * slot;
    if (r == 0 || begin >= image.size()) return {};
    return std::span(image).subspan(begin, std::min(slot, image.size() - begin));
}

const std::vector<std::uint8_t>* FileImages::held(const std::filesystem::path& path) const {
    auto it = images_.find(path.string());
    return it == images_.end() ? nullptr : &it->second;
}

void FileImages::writeAt(const std::filesystem::path& path, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    auto it = images_.find(path.string());
    if (it == images_.end()) return;
    auto& image = it->second;
    auto end = static_cast<std::size_t>(offset) + bytes.size();
    // A gap past the old end reads as zero bytes, as on the disk.
    if (image.size() < end) image.resize(end, 0);
    std::copy(bytes.begin(), bytes.end(), image.begin() + static_cast<std::ptrdiff_t>(offset));
}

void FileImages::replace(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    auto it = images_.find(path.string());
    if (it != images_.end()) it->second.assign(bytes.begin(), bytes.end());
}

std::uint64_t fileLengthVia(FileImages* images, const std::filesystem::path& path) {
    return images ? images->length(path) : fileLength(path);
}

std::vector<std::uint8_t> readSlotVia(FileImages* images, const std::filesystem::path& path, std::size_t slot,
                                      std::size_t r) {
    return images ? images->readSlot(path, slot, r) : RandomFile(path, slot).readSlot(r);
}

}  // namespace tallyrink
