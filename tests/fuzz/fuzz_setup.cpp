// Any bytes as a set-up file load into a usable record: defaults where the
// record was never filled, every value in its range, and a second load of
// the saved record changes nothing.

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "league/files.h"
#include "league/setup.h"

namespace {

using namespace tallyrink;

// One file for the whole run, removed when the fuzzer exits.
struct ScratchFile {
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("tallyrink-fuzz-setup-" + std::to_string(getpid()) + ".dat");
    ~ScratchFile() {
        std::error_code ec;
        std::filesystem::remove(path, ec);
    }
};

void check(bool ok) {
    if (!ok) std::abort();
}

void checkInvariants(const SetupRecord& s, const SetupLoadContext& ctx) {
    check(s.SetupStamp == kSetupStampFilled);
    check(s.LateNarratorStamp == kLateNarratorStampDone);
    check(s.PBPscroll >= 0 && s.PBPscroll <= 50);
    check(s.PBPdelayscroll >= 1 && s.PBPdelayscroll <= 30);
    check(s.ComputerCheck <= 1);
    check(!ctx.voiceCount || s.VoiceList < *ctx.voiceCount || s.VoiceList == 0);
    check(s.EncyclopediaNumber >= 1 && s.EncyclopediaNumber <= kEncyclopedias);
    check(!s.PlayByPlayFile.blank());
    for (const auto& f : s.EncyclopediaFile) check(!f.blank());
    for (const auto& column : s.KeyReportColumn)
        for (std::size_t report = 0; report < kKeyReports; ++report)
            check(report >= 1 && report <= 18 ? true : column[report] >= 0 && column[report] <= kMaxUserColumnId);
    for (const auto& column : s.SecondLayoutColumn)
        for (auto id : column) check(id >= 0 && id <= kMaxUserColumnId);
    check(s.KeyReportName[1].str() == "Basic");
    check(s.SecondLayoutName[7].str() == "Shooting");
}

}  // namespace

// The first byte chooses how the rest is used: as a whole file, or spliced
// into a filled record at an offset given by the next two bytes (so the
// checks on a filled record are reached at once); and whether the file
// round trip runs too, which is slower and so only for one input in eight.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::uint8_t mode = data[0];
    SetupLoadContext ctx{"/leagues/fuzz", std::nullopt};
    if (mode & 1) ctx.voiceCount = (mode >> 1) % 7;

    std::vector<std::uint8_t> in;
    if ((mode & 8) && size >= 3) {
        static const auto filled = codec::toSlot(newSetupRecord({"/leagues/fuzz", std::nullopt}));
        in = filled;
        std::size_t at = (data[1] | std::size_t{data[2]} << 8) % codec::Layout<SetupRecord>::size;
        std::size_t n = std::min(size - 3, in.size() - at);
        std::copy_n(data + 3, n, in.begin() + static_cast<std::ptrdiff_t>(at));
    } else {
        in.assign(data + 1, data + size);
    }

    auto s = setupFromBytes(in, ctx);
    checkInvariants(s, ctx);
    auto saved = codec::toSlot(s);
    check(codec::toSlot(setupFromBytes(saved, ctx)) == saved);
    if ((mode & 0x70) != 0) return 0;

    static const ScratchFile scratch;
    writeFileAtomic(scratch.path, in);
    auto loaded = loadSetupFile(scratch.path, ctx);
    check(codec::toSlot(loaded) == saved);
    saveSetupFile(scratch.path, loaded);
    auto after = readBytes(scratch.path);
    check(after.size() == std::max(in.size(), saved.size()));
    check(std::equal(saved.begin(), saved.end(), after.begin()));
    return 0;
}
