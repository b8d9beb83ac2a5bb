// A lab with a print file.
#ifndef NUV_TESTS_CONNECT_JOB_LAB_H_
#define NUV_TESTS_CONNECT_JOB_LAB_H_

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "nuvfile/print_file_writer.h"
#include "tests/connect/lab.h"
#include "tests/support/environment.h"

namespace Nuv::Connect {

class JobLab : public Lab {
 protected:
  void SetUp() override {
    Lab::SetUp();
    if (IsSkipped()) return;
    SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
  }

  // A new print file. A job that did not open leaves its file open, and Windows lets nobody replace
  // an open file.
  void WritePrintFile(const std::string& machineId = "3DPSNKG53WTW00001") {
    contents.machineId = machineId;
    path.replace_filename(TestName() + std::to_string(files++) + ".nuv");
    const NuvFile::Status written =
        NuvFile::WritePrintFile(path.string(), contents, NuvFile::LinesOf(lines));
    ASSERT_TRUE(written.Ok()) << written.Message();
  }
  int Send() { return framework.SendPrintFile(path.wstring(), nullptr); }

  // The first `count` lines as they go over the wire.
  std::string Wire(size_t count) const {
    std::string bytes;
    for (size_t i = 0; i < count; ++i) bytes += lines[i] + "\r\n";
    return bytes;
  }
  void ExpectJobArrived() {
    const std::string job = Wire(lines.size());
    EXPECT_TRUE(Becomes([&] { return simulator->JobBytes().size() >= job.size(); }));
    EXPECT_EQ(simulator->JobBytes(), job);
  }

  static std::string TestName() {
    std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::replace(name.begin(), name.end(), '/', '-');  // before its parameter
    return name;
  }

  std::filesystem::path path = std::filesystem::path(::testing::TempDir()) / TestName();
  std::vector<std::string> lines{"G1 X1", "", "G1 X2 Y3"};
  NuvFile::PrintFileContents contents;
  int files = 0;
};

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_CONNECT_JOB_LAB_H_
