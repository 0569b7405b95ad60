// Runs every target over its corpus, which holds seeds and what fuzzing has found.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/target.h"

namespace toolbelt::fuzz {
namespace {

TEST(Fuzz, EveryTargetHoldsOverItsCorpus)
{
    std::uint32_t targets = 0, inputs = 0;
    for (const Target* target = Target::first; target; target = target->next, ++targets) {
        target->run({nullptr, 0});
        std::uint32_t files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(std::string(TOOLBELT_CORPUS) + target->name)) {
            currentFile = entry.path().string();
            std::ifstream file(entry.path(), std::ios::binary);
            const Bytes whole{std::istreambuf_iterator<char>(file), {}};
            // And every input that ends before it does; in blocks of their size, as the stream leaves room behind.
            for (std::size_t size = 0; size <= whole.size(); ++size) {
                const Bytes exact(whole.data(), whole.data() + size);
                target->run({exact.data(), exact.size()});
            }
            ++files;
        }
        EXPECT_GE(files, 3u) << target->name;
        inputs += files;
        currentFile.clear();
    }
    std::printf("%u targets, %u inputs\n", targets, inputs);
    EXPECT_EQ(targets, std::uint32_t{TOOLBELT_TARGET_COUNT}) << "a target was not linked";
}

} // namespace
} // namespace toolbelt::fuzz
