#include <cstdlib>
#include <filesystem>
#include <functional>

#include "test_files.h"

namespace NuvFile {
namespace {

class ToolTest : public FolderTest {
 protected:
  // Runs the tool in the test's folder and returns its exit code.
  int Run(const std::string& arguments) {
    const std::filesystem::path folder = std::filesystem::current_path();
    std::filesystem::current_path(Path(""));
    const std::string command = "\"" NUVFILE_TOOL "\" " + arguments + " > output 2>&1";
#if defined(_WIN32)
    // Its shell takes the outermost quotes away.
    const int result = std::system(("\"" + command + "\"").c_str());
#else
    const int result = std::system(command.c_str()) / 256;
#endif
    std::filesystem::current_path(folder);
    return result;
  }

  std::string Output() const { return Text(ReadBytes(Path("output"))); }
};

TEST_F(ToolTest, CreatedFileIsShownAndVerified) {
  WriteText("lines.txt", "one\r\ntwo\r\n\r\n");
  WriteText("key", "12345678");
  WriteText("p.png", "\x89PNG\r\n\x1a\n...");
  ASSERT_EQ(Run("create --machine-id 3DPSNKGB3WTW00001 --project-id p1 --key-file key "
                "--preview p.png --argument resin_ml=1.5 --argument note=a=b lines.txt out.nuv"),
            0)
      << Output();
  ASSERT_EQ(Run("info --json out.nuv"), 0) << Output();
  for (const char* part :
       {"\"machine_id\": \"3DPSNKGB3WTW00001\"", "\"data_lines\": 3", "\"model_bytes\": 6",
        "\"key_bytes\": 8", "\"preview_bytes\": 11", "\"note\": \"a=b\"", "\"layers\": \"3\""}) {
    EXPECT_NE(Output().find(part), std::string::npos) << part << " in " << Output();
  }
  EXPECT_EQ(Output().find("12345678"), std::string::npos) << "the key is shown";
  EXPECT_EQ(Run("verify out.nuv"), 0) << Output();
  EXPECT_EQ(Run("create --machine-id 3DPSNKGB3WTW00001 - out.nuv < lines.txt"), 0) << Output();
  EXPECT_EQ(Run("info out.nuv"), 0);
  EXPECT_NE(Output().find("argument        layers=3"), std::string::npos) << Output();
}

// Printers tell the records apart by what stands in front of their payload.
TEST_F(ToolTest, RecordsAreFramedByTheirNameAndLength) {
  WriteText("lines.txt", "one\n");
  WriteText("r3", std::string(300, 'x'));
  ASSERT_EQ(Run("create --machine-id 3DPSNKG43WTW00001 --l103 r3 lines.txt out.nuv"), 0)
      << Output();
  const std::string record = std::string("L103\x2c\1\0\0", 8) + std::string(300, 'x');
  EXPECT_NE(Text(ReadBytes(Path("out.nuv"))).find(record), std::string::npos);
}

TEST_F(ToolTest, ExitCodesTellUsageFromDamageFromTheDisk) {
  WriteText("lines.txt", "one\ntwo\n");
  WriteText("command.txt", "one\ntwo\nF104 S2\n");
  ASSERT_EQ(Run("create --machine-id 3DPSNKG23WTW00001 lines.txt good.nuv"), 0) << Output();
  ASSERT_EQ(Run("create --machine-id 3DPSNKG23WTW00001 lines.txt bad.nuv"), 0) << Output();
  Overwrite("bad.nuv", 310, "?");
  const std::string create = "create --machine-id 3DPSNKG23WTW00001 ";
  const struct {
    std::string arguments;
    int exitCode;
    const char* output;
  } rows[] = {
      {"--help", 0, "Examples:"},
      {"create --help", 0, "Exit codes: 0 done"},
      {"", 2, "subcommand"},
      {"create lines.txt out.nuv", 2, "--machine-id"},
      {"create --machine-id short lines.txt out.nuv", 2, "expected 17 letters and digits"},
      {create + "--argument layers=many lines.txt out.nuv", 2, "expected a whole number"},
      {create + "--argument layers lines.txt out.nuv", 2, "expected name=value"},
      {create + "lines.txt lines.txt", 2, "the same file"},
      {create + "command.txt out.nuv", 1, "data line 3 begins with 'F1'"},
      {create + "--preview lines.txt lines.txt out.nuv", 1, "not a PNG"},
      {create + "--l102 missing lines.txt out.nuv", 3, "--l102: cannot open 'missing'"},
      {create + "missing.txt out.nuv", 3, "cannot open 'missing.txt'"},
      {create + "lines.txt no/folder/out.nuv", 3, "cannot create"},
      {"verify --json good.nuv", 0, "\"ok\": true"},
      {"verify bad.nuv", 1, "section MACH: its checksum is"},
      {"verify --json bad.nuv", 1, "\"fault\": \"bad-checksum\""},
      {"info --json bad.nuv", 1, "\"ok\": false"},
      {"verify lines.txt", 1, "not a print file"},
      {"verify missing.nuv", 3, "Check the path"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Run(row.arguments), row.exitCode) << row.arguments << "\n" << Output();
    EXPECT_NE(Output().find(row.output), std::string::npos) << row.arguments << "\n" << Output();
  }
  EXPECT_FALSE(std::filesystem::exists(Path("out.nuv")));
}

}  // namespace
}  // namespace NuvFile
