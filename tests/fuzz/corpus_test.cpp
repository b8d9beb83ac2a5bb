// What fuzzing has kept: inputs that reach much of the code, and those that once broke it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/targets.h"

namespace {

using Target = void (*)(const uint8_t* data, size_t size);

std::vector<std::filesystem::path> FilesOf(const std::string& target) {
  const std::filesystem::path folder(NUV_SOURCE_FOLDER "/fuzz/corpus/" + target);
  std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(folder), {});
  std::sort(files.begin(), files.end());
  return files;
}

void Replay(const std::string& name, Target target) {
  const auto files = FilesOf(name);
  ASSERT_FALSE(files.empty());
  for (const std::filesystem::path& each : files) {
    std::ifstream file(each, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    const std::vector<uint8_t> input(bytes.begin(), bytes.end());
    ASSERT_FALSE(input.empty()) << each;
    SCOPED_TRACE(each.filename().string());
    EXPECT_NO_THROW(target(input.data(), input.size()));
  }
}

TEST(FuzzCorpusTest, Control) { Replay("control", Fuzz::Control); }
TEST(FuzzCorpusTest, Discovery) { Replay("discovery", Fuzz::Discovery); }
TEST(FuzzCorpusTest, PrintFile) { Replay("nuvfile", Fuzz::NuvFile); }
TEST(FuzzCorpusTest, Reply) { Replay("reply", Fuzz::Reply); }
TEST(FuzzCorpusTest, Usbip) { Replay("usbip", Fuzz::Usbip); }

}  // namespace
