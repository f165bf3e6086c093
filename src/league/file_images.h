#pragma once

// The league files a run of many games reads at every game (teams, game
// plans, players, the record book, the leaders, the lengths of the files a
// game adds to), held in memory for the run. The run holds the league open
// and is the only writer of its folder, so an image read once stays true as
// long as every write of the run goes to the image as well as to the disk
// (RunWriter of the posting journal does both).
//
// Images are read whole at the first ask; a file the run only writes (a box
// score) never gets one.
//
// A reader that keeps part of a file decoded between games (the team table
// the run calibrates by) can have the writes of its image noted, and then
// decodes again only the slots they touched.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "league/codec.h"

namespace tallyrink {

class FileImages {
public:
    // The whole file as it stands; a missing file is empty. Throws FileError
    // for a file that can't be read.
    const std::vector<std::uint8_t>& bytes(const std::filesystem::path& path);
    std::uint64_t length(const std::filesystem::path& path) { return bytes(path).size(); }
    // Slot r (from 1) as a RandomFile reads it: bytes past the end are zero.
    std::vector<std::uint8_t> readSlot(const std::filesystem::path& path, std::size_t slot, std::size_t r);
    // The part of slot r the file holds, without a copy: shorter than the
    // slot (or empty) where the file ends. Valid until the image changes.
    std::span<const std::uint8_t> slotBytes(const std::filesystem::path& path, std::size_t slot, std::size_t r);
    // The same of an image in hand (from bytes()): a reader of many slots
    // looks the file up once.
    static std::span<const std::uint8_t> slotIn(const std::vector<std::uint8_t>& image, std::size_t slot,
                                                std::size_t r);

    // The image of a file read before, or null.
    [[nodiscard]] const std::vector<std::uint8_t>* held(const std::filesystem::path& path) const;

    // Keeping step with a write of the disk; a file without an image is let be.
    void writeAt(const std::filesystem::path& path, std::uint64_t offset, std::span<const std::uint8_t> bytes);
    // Several writes of one file (each with `offset` and `bytes`), its image looked up once.
    template <class Writes>
    void writeEach(const std::filesystem::path& path, const Writes& writes) {
        Image* image = imageOf(path);
        if (image == nullptr) return;
        for (const auto& w : writes) put(*image, w.offset, w.bytes);
    }
    void replace(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);
    void forget(const std::filesystem::path& path) { images_.erase(path.string()); }

    // A mark of the image as it stands (reading it if need be): any write,
    // replacement, or a forgetting and reading again gives it a new one, never
    // one it or another image had before. A reader that keeps what it decoded
    // from an image knows it still holds while the mark is the same, without
    // comparing the bytes.
    [[nodiscard]] std::uint64_t stamp(const std::filesystem::path& path);

    // What was written to a watched file since it was last asked.
    struct Written {
        bool whole = false;  // replaced, forgotten or written too often to list: read it all again
        std::vector<std::pair<std::uint64_t, std::uint64_t>> ranges;  // [begin, end) byte ranges

        // The first and last slot (from 1) of `slot` bytes that a range touches.
        static std::pair<std::size_t, std::size_t> slotsOf(std::pair<std::uint64_t, std::uint64_t> range,
                                                           std::size_t slot) {
            return {static_cast<std::size_t>(range.first / slot) + 1,
                    static_cast<std::size_t>((range.second + slot - 1) / slot)};
        }
    };
    // Starts noting the writes of the file (reading its image if need be).
    void watch(const std::filesystem::path& path);
    // The writes noted since watch or the last call, which forgets them. A
    // file not watched (or whose image is gone) reads as wholly written.
    Written takeWritten(const std::filesystem::path& path);

private:
    struct Image {
        std::vector<std::uint8_t> bytes;
        bool watched = false;
        Written written;
        std::uint64_t stamp = 0;
    };
    static void note(Image& image, std::uint64_t begin, std::uint64_t end);
    Image* imageOf(const std::filesystem::path& path);
    Image& imageRead(const std::filesystem::path& path);
    void put(Image& image, std::uint64_t offset, std::span<const std::uint8_t> bytes);

    std::unordered_map<std::string, Image> images_;
    std::uint64_t lastStamp_ = 0;  // the last mark given out, to any image
};

// Reads of a league file through the run's images when there are any, else
// from the disk.
std::uint64_t fileLengthVia(FileImages* images, const std::filesystem::path& path);
std::vector<std::uint8_t> readSlotVia(FileImages* images, const std::filesystem::path& path, std::size_t slot,
                                      std::size_t r);

// A record decodes the bytes a short slot lacks as zero, so an image's slot
// is decoded where it lies.
template <codec::Record R>
R readRecordVia(FileImages* images, const std::filesystem::path& path, std::size_t slot, std::size_t r) {
    if (images) return codec::fromSlot<R>(images->slotBytes(path, slot, r));
    auto bytes = readSlotVia(images, path, slot, r);
    return codec::fromSlot<R>(bytes);
}

}  // namespace tallyrink
