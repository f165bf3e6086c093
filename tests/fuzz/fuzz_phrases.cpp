// Any bytes, as a phrase file or a translation file, load without fault: the
// phrase table holds only usable wordings or defaults, and the file's bytes
// read and write back unchanged.

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>

#include "presentation/ansi_text.h"
#include "presentation/narrator_translations.h"
#include "presentation/phrases.h"

namespace {

using namespace tallyrink;

void phraseFile(std::span<const std::uint8_t> in) {
    const auto file = PhraseFile::fromBytes(in);
    const auto bytes = file.bytes();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint8_t expected = i < in.size() ? in[i] : (i < kPhraseFileBytes ? 0 : 1);
        if (bytes[i] != expected) std::abort();
    }
    const auto table = loadPhrases(file).table;
    for (int key = 1; key <= kPhraseKeys; ++key) {
        if (table(1, key) != defaultWording(key)) std::abort();
        for (int v = 2; v <= kPhraseVariants; ++v) {
            const auto& w = table(v, key);
            if (w == defaultWording(key)) continue;
            if (w.size() < kShortestWording || w.size() > kPhraseWidth) std::abort();
            for (char c : w)
                if (isControlByte(c)) std::abort();
        }
    }
}

void translationFile(std::span<const std::uint8_t> in) {
    const std::string_view text(reinterpret_cast<const char*>(in.data()), in.size());
    const auto table = NarratorTranslations::parse(text);
    const auto again = NarratorTranslations::parse(table.text());
    if (again.size() != table.size()) std::abort();
    (void)table.filter(text.substr(0, 200));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::span<const std::uint8_t> in(data + 1, size - 1);
    if (data[0] % 2 == 0)
        phraseFile(in);
    else
        translationFile(in);
    return 0;
}
