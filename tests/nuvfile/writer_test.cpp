#include <algorithm>
#include <fstream>
#include <functional>
#include <random>

#include "nuvfile/text_lines.h"
#include "output_file.h"
#include "test_files.h"

namespace NuvFile {
namespace {

class WriterTest : public FolderTest {
 protected:
  std::unique_ptr<PrintFile> WriteAndOpen(const PrintFileContents& contents,
                                          const std::vector<std::string>& lines) {
    std::unique_ptr<PrintFile> file;
    Status status = WritePrintFile(Path("a.nuv"), contents, LinesOf(lines));
    if (status.Ok()) status = PrintFile::Open(Path("a.nuv"), &file);
    EXPECT_TRUE(status.Ok()) << status.Message();
    return file;
  }
};

TEST_F(WriterTest, ArgumentsTellTheLayers) {
  const struct {
    std::vector<Argument> given;
    std::vector<std::string> lines;
    const char* text;
  } kRows[] = {
      {{}, {}, "layers=0\n"},
      {{{"a", "x=y"}}, {"1", "2"}, "a=x=y\nlayers=2\n"},
      {{{"layers", "2147483647"}, {"vendor.note", ""}}, {"1"}, "layers=2147483647\nvendor.note=\n"},
  };
  for (const auto& row : kRows) {
    PrintFileContents contents;  // without any record
    contents.machineId = "3DPSNKG23WTW00001";
    contents.arguments = row.given;
    const auto file = WriteAndOpen(contents, row.lines);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->ArgumentsText(), row.text);
    EXPECT_EQ(file->LineCount(), row.lines.size());
    EXPECT_EQ(file->ModelBytes(), row.lines.size());
  }
}

std::vector<uint8_t> SampleBytes() {
  std::ifstream file(NUVFILE_SAMPLE);
  std::vector<uint8_t> bytes;
  for (std::string line; std::getline(file, line);) {
    const size_t end = line.find_first_not_of("0123456789abcdef");
    for (size_t i = 0; i + 1 < std::min(end, line.size()); i += 2) {
      bytes.push_back(static_cast<uint8_t>(std::stoi(line.substr(i, 2), nullptr, 16)));
    }
  }
  return bytes;
}

// The bytes of the format, and not only what the writer makes of them, are what others read.
TEST_F(WriterTest, SampleFileIsTheOneOfTheFormat) {
  const std::vector<uint8_t> sample = SampleBytes();
  ASSERT_EQ(sample.size(), 519U);
  ASSERT_TRUE(WriteAndOpen(SampleContents(), SampleLines()));
  EXPECT_EQ(ReadBytes(Path("a.nuv")), sample);
  std::unique_ptr<PrintFile> file;
  const Status status = PrintFile::Open(std::make_unique<MemorySource>(sample), &file);
  ASSERT_TRUE(status.Ok()) << status.Message();
  EXPECT_EQ(file->ModelBytes(), 42U);
  ASSERT_EQ(file->LineCount(), SampleLines().size());
  for (size_t i = 0; i < SampleLines().size(); ++i) EXPECT_EQ(LineText(*file, i), SampleLines()[i]);
}

// Enough lines that index and data cross their read buffers many times.
TEST_F(WriterTest, ManyLinesOfManyLengthsAreReadInAnyOrder) {
  std::mt19937 random(7);
  std::vector<std::string> lines(50000);
  for (size_t i = 0; i < lines.size(); ++i) {
    lines[i] = std::string(random() % 60, static_cast<char>('a' + i % 26));
  }
  const auto file = WriteAndOpen(SampleContents(), lines);
  ASSERT_TRUE(file);
  for (size_t i = lines.size(); i-- > 0;) ASSERT_EQ(LineText(*file, i), lines[i]) << i;
}

using Contents = PrintFileContents;
using Lines = std::vector<std::string>;
using Spoil = std::function<void(Contents&, Lines&)>;

Spoil Arguments(const std::vector<Argument>& arguments) {
  return [=](Contents& c, Lines&) { c.arguments = arguments; };
}
Spoil Line(size_t index, const std::string& line) {
  return [=](Contents&, Lines& l) { l[index] = line; };
}

TEST_F(WriterTest, RefusedContentLeavesTheOlderFileAndNothingElse) {
  const struct {
    Spoil spoil;
    Fault fault;
    const char* message;  // a part of it
  } kRows[] = {
      {[](Contents& c, Lines&) { c.machineId.pop_back(); }, Fault::kBadText, "(16 bytes)"},
      {[](Contents& c, Lines&) { c.projectId.assign(256, 'p'); }, Fault::kBadText,
       "project ID: expected at most 255 bytes, found 256"},
      {[](Contents& c, Lines&) { c.materialId = "a\tb"; }, Fault::kBadText, "found 'a?b'"},
      {[](Contents& c, Lines&) { c.aesKey.resize(4097); }, Fault::kTooLarge,
       "key: expected at most 4096 bytes"},
      {Arguments({{"resin_ml", "12,5"}}), Fault::kBadText, "argument resin_ml"},
      {Arguments({{"exposure_s", "inf"}}), Fault::kBadText, "argument exposure_s"},
      {Arguments({{"lift_mm_s", ""}}), Fault::kBadText, "argument lift_mm_s"},
      {Arguments({{"layers", "2147483648"}}), Fault::kBadText,
       "argument layers: expected a whole number from 0 to 2147483647"},
      {Arguments({{"print_minutes", "1.2e2"}}), Fault::kBadText,
       "argument print_minutes: expected a whole number"},
      {Arguments({{"a", "1"}, {"a", "1"}}), Fault::kBadText, "more than once"},
      {Arguments({{"a b", "1"}}), Fault::kBadText, "argument name 'a b'"},
      {Arguments({{"a", "1\nb=2"}}), Fault::kBadText, "control characters"},
      {Line(2, "F104 S2"), Fault::kBadLine, "data line 3 begins with 'F1'"},
      {Line(1, "a\rb"), Fault::kBadLine, "data line 2"},
      {Line(0, "\n"), Fault::kBadLine, "data line 1"},
      {Line(1, std::string((16 << 20) + 1, 'a')), Fault::kTooLarge,
       "data line 2: expected at most 16777216 bytes"},
  };
  WriteText("a.nuv", "older");
  for (const auto& row : kRows) {
    PrintFileContents contents = SampleContents();
    std::vector<std::string> lines = SampleLines();
    row.spoil(contents, lines);
    const Status status = WritePrintFile(Path("a.nuv"), contents, LinesOf(lines));
    EXPECT_EQ(status.GetFault(), row.fault) << row.message << ": " << status.Message();
    EXPECT_NE(status.Message().find(row.message), std::string::npos) << status.Message();
    EXPECT_EQ(FileNames(), std::vector<std::string>{"a.nuv"}) << row.message;
    EXPECT_EQ(ReadBytes(Path("a.nuv")).size(), 5u) << row.message;
  }
}

TEST_F(WriterTest, LineOfExactly16MiBIsWrittenAndRead) {
  const auto file = WriteAndOpen(SampleContents(), {"a", std::string(16 << 20, 'z'), "b"});
  ASSERT_TRUE(file);
  EXPECT_EQ(LineText(*file, 1), "long: 16777216");
  EXPECT_EQ(LineText(*file, 2), "b");
}

TEST_F(WriterTest, SystemFaultsAreTold) {
  std::unique_ptr<PrintFile> file;
  EXPECT_EQ(PrintFile::Open(Path("missing.nuv"), &file).GetFault(), Fault::kCannotOpen);
  EXPECT_FALSE(PrintFile::Open(Path("."), &file).Ok());
  const std::vector<std::string> lines = SampleLines();
  EXPECT_EQ(WritePrintFile(Path("no/such/folder"), SampleContents(), LinesOf(lines)).GetFault(),
            Fault::kCannotOpen);
  std::filesystem::create_directory(Path("taken"));
  EXPECT_EQ(WritePrintFile(Path("taken"), SampleContents(), LinesOf(lines)).GetFault(),
            Fault::kWriteFailed);
  EXPECT_EQ(FileNames(), std::vector<std::string>{"taken"});
}

// What is still in the buffer is written by a change of place or by the closing.
TEST_F(WriterTest, FullDiskIsToldHoweverLateItShows) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  std::filesystem::create_symlink("/dev/full", Path("a.nuv.partial"));
  OutputFile file;
  ASSERT_TRUE(file.Create(Path("a.nuv.partial")).Ok());
  ASSERT_TRUE(file.Append("a", 1).Ok()) << "buffered";
  EXPECT_EQ(file.RenameTo(Path("a.nuv")).GetFault(), Fault::kWriteFailed);
  EXPECT_FALSE(std::filesystem::exists(Path("a.nuv")));

  OutputFile other;
  ASSERT_TRUE(other.Create(Path("a.nuv.partial")).Ok());
  ASSERT_TRUE(other.Append("a", 1).Ok());
  EXPECT_EQ(other.WriteAtStart("b", 1).GetFault(), Fault::kWriteFailed);
}

TEST_F(WriterTest, TextIsSplitIntoLines) {
  const std::string edge(256 * 1024 - 1, 'e');  // puts CR and LF into different buffers
  const std::string longest(16 << 20, 'l');
  const struct {
    std::string text;
    std::vector<std::string> lines;
    Fault fault = Fault::kNone;
  } kRows[] = {
      {"", {}},
      {"a\nb\n", {"a", "b"}},
      {"a\r\n\r\nb", {"a", "", "b"}},
      {"\n", {""}},
      {"a\rb\n", {"a\rb"}},
      {edge + "\r\nnext\n", {edge, "next"}},
      {longest + "\r\nx", {longest, "x"}},
      {"a\n" + longest + "mm", {"a"}, Fault::kTooLarge},
      {"\xEF\xBB\xBFG1\n", {}, Fault::kBadText},
  };
  for (const auto& row : kRows) {
    std::unique_ptr<TextLines> lines;
    ASSERT_TRUE(TextLines::Open(WriteText("lines.txt", row.text), &lines).Ok());
    std::vector<std::string> read;
    std::string_view line;
    Status status;
    while (lines->Next(&line, &status)) read.emplace_back(line);
    EXPECT_TRUE(read == row.lines) << row.text.substr(0, 20);
    EXPECT_EQ(status.GetFault(), row.fault) << status.Message();
  }
}

}  // namespace
}  // namespace NuvFile
