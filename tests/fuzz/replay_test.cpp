// Runs a fuzz target once on every input of its corpus.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/fuzz.h"

namespace {

TEST(ReplayTest, TheWholeCorpusPasses) {
  std::size_t inputs = 0;
  for (const auto& entry : std::filesystem::directory_iterator(FUZZ_CORPUS)) {
    std::ifstream stream(entry.path(), std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(stream), {}};
    SCOPED_TRACE(entry.path().filename());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    ++inputs;
  }
  EXPECT_GT(inputs, 0u);
}

}  // namespace
