// Print files for tests.
#ifndef TESTS_NUVFILE_TEST_FILES_H_
#define TESTS_NUVFILE_TEST_FILES_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "nuvfile/print_file.h"
#include "nuvfile/print_file_writer.h"

namespace NuvFile {

// A test with a folder of its own, which is removed at the end.
class FolderTest : public testing::Test {
 protected:
  FolderTest() {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    folder_ = std::filesystem::path(testing::TempDir()) /
              (std::string("nuvfile_") + info->test_suite_name() + "_" + info->name());
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
  }
  ~FolderTest() override { std::filesystem::remove_all(folder_); }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }

  std::string WriteText(const std::string& name, const std::string& text) const {
    std::ofstream(Path(name), std::ios::binary) << text;
    return Path(name);
  }

  // Overwrites bytes of a file in place.
  void Overwrite(const std::string& name, uint64_t offset, const std::string& bytes) const {
    std::fstream file(Path(name), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(offset))
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  std::vector<std::string> FileNames() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

 private:
  std::filesystem::path folder_;
};

inline PrintFileContents SampleContents() {
  PrintFileContents contents;
  contents.machineId = "3DPSNKG43WTW00001";
  contents.projectId = "project-7";
  contents.materialId = "resin grey";
  contents.arguments = {{"job_name", "crown=left"}, {"layer_thickness_mm", "0.05"}};
  contents.aesKey = {0, 1, 2, 3, 254, 255};
  contents.l101 = {'a', 0, 'b'};
  contents.l102 = {'c'};
  contents.l103 = {'d', 'e'};
  contents.preview = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  return contents;
}

inline std::vector<std::string> SampleLines() {
  return {"L0 first", "", "F", "1 begins with a digit", "FA1", "last line", ""};
}

inline std::vector<uint8_t> ReadBytes(const std::string& path) {
  std::vector<uint8_t> bytes;
  const Status status = ReadWholeFile(path, uint64_t{1} << 30, &bytes);
  EXPECT_TRUE(status.Ok()) << status.Message();
  return bytes;
}

inline std::string Text(const std::vector<uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

inline std::string LineText(PrintFile& file, uint64_t index) {
  std::string text(1000, '\0');
  size_t length = 0;
  const Status status =
      file.ReadLine(index, reinterpret_cast<uint8_t*>(text.data()), text.size(), &length);
  if (!status.Ok()) return "failed: " + status.Message();
  if (length > text.size()) return "long: " + std::to_string(length);
  text.resize(length);
  return text;
}

}  // namespace NuvFile

#endif  // TESTS_NUVFILE_TEST_FILES_H_
