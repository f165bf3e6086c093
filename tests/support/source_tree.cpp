#include "support/source_tree.h"

namespace tallyrink::test {

std::filesystem::path sourceDir() { return TALLYRINK_SOURCE_DIR; }

std::filesystem::path shippedDataDir() { return sourceDir() / "data"; }

const EraTable& shippedEra() {
    static const EraTable table = LoadEra(shippedDataDir());
    return table;
}

}  // namespace tallyrink::test
