#include <map>
#include <random>

#include "nuvfile/text_lines.h"
#include "test_files.h"

namespace nuvfile {
namespace {

class WriterTest : public FolderTest {
 protected:
  std::unique_ptr<PrintFile> WriteAndOpen(const PrintFileContents& contents,
                                          const std::vector<std::string>& lines) {
    std::unique_ptr<PrintFile> file;
    Status status = WritePrintFile(Path("a.nuv"), contents, LinesOf(lines));
    if (status.ok()) status = PrintFile::Open(Path("a.nuv"), &file);
    EXPECT_TRUE(status.ok()) << status.message();
    return file;
  }
};

TEST_F(WriterTest, WhatIsWrittenIsRead) {
  const PrintFileContents contents = SampleContents();
  const auto file = WriteAndOpen(contents, SampleLines());
  ASSERT_TRUE(file);
  EXPECT_EQ(file->machine_id(), contents.machine_id);
  EXPECT_EQ(file->project_id(), contents.project_id);
  EXPECT_EQ(file->material_id(), contents.material_id);
  EXPECT_EQ(file->arguments_text(), "job_name=crown=left\nlayer_thickness_mm=0.05\nlayers=7\n");
  EXPECT_EQ(file->model_bytes(), 42u);
  ASSERT_EQ(file->line_count(), SampleLines().size());
  for (size_t i = 0; i < SampleLines().size(); ++i) {
    EXPECT_EQ(LineText(*file, i), SampleLines()[i]);
  }
  const std::map<Section, std::vector<uint8_t>> records = {{Section::kAesKey, contents.aes_key},
                                                           {Section::kL101, contents.l101},
                                                           {Section::kL102, contents.l102},
                                                           {Section::kL103, contents.l103},
                                                           {Section::kPreview, contents.preview}};
  for (const auto& [section, bytes] : records) {
    std::vector<uint8_t> read(bytes.size());
    size_t length = 0;
    EXPECT_TRUE(file->ReadSection(section, read.data(), read.size(), &length).ok());
    EXPECT_EQ(read, bytes) << SectionTag(section);
  }
}

TEST_F(WriterTest, FileWithoutLinesOrRecordsIsLegal) {
  PrintFileContents contents;
  contents.machine_id = "3DPSNKG23WTW00001";
  const auto file = WriteAndOpen(contents, {});
  ASSERT_TRUE(file);
  EXPECT_EQ(file->line_count(), 0u);
  EXPECT_EQ(file->model_bytes(), 0u);
  EXPECT_EQ(file->arguments_text(), "layers=0\n");
}

TEST_F(WriterTest, GivenLayersAreKept) {
  PrintFileContents contents = SampleContents();
  contents.arguments = {{"layers", "3"}, {"vendor.note", ""}};
  EXPECT_EQ(WriteAndOpen(contents, {"a"})->arguments_text(), "layers=3\nvendor.note=\n");
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

class CountingSource final : public ByteSource {
 public:
  CountingSource(std::vector<uint8_t> bytes, int* reads)
      : inner_(std::move(bytes)), reads_(reads) {}
  uint64_t Size() const override { return inner_.Size(); }
  Status ReadAt(uint64_t offset, uint8_t* buffer, size_t length) override {
    ++*reads_;
    return inner_.ReadAt(offset, buffer, length);
  }

 private:
  MemorySource inner_;
  int* reads_;
};

TEST_F(WriterTest, ALineCostsTwoReadsWhereverItLies) {
  const std::vector<std::string> lines(20000, "some line");
  ASSERT_TRUE(WriteAndOpen(SampleContents(), lines));
  int reads = 0;
  std::unique_ptr<PrintFile> file;
  auto source = std::make_unique<CountingSource>(ReadBytes(Path("a.nuv")), &reads);
  ASSERT_TRUE(PrintFile::Open(std::move(source), &file).ok());
  for (const uint64_t index : {0u, 10000u, 19999u}) {
    reads = 0;
    EXPECT_EQ(LineText(*file, index), "some line");
    EXPECT_EQ(reads, 2) << index;
  }
}

struct RefusedRow {
  const char* name;
  std::function<void(PrintFileContents&, std::vector<std::string>&)> spoil;
  Fault fault;
  const char* message;
};

using Contents = PrintFileContents;
using Lines = std::vector<std::string>;
const RefusedRow kRefusedRows[] = {
    {"short machine ID", [](Contents& c, Lines&) { c.machine_id.pop_back(); }, Fault::kBadText,
     "(16 bytes)"},
    {"long project ID", [](Contents& c, Lines&) { c.project_id.assign(256, 'p'); }, Fault::kBadText,
     "project ID: expected at most 255 bytes, found 256"},
    {"tab in the material ID", [](Contents& c, Lines&) { c.material_id = "a\tb"; }, Fault::kBadText,
     "found 'a?b'"},
    {"not a number",
     [](Contents& c, Lines&) {
       c.arguments = {{"resin_ml", "12,5"}};
     },
     Fault::kBadText, "argument resin_ml"},
    {"number and more",
     [](Contents& c, Lines&) {
       c.arguments = {{"lift_mm", "5 mm"}};
     },
     Fault::kBadText, "argument lift_mm"},
    {"infinite",
     [](Contents& c, Lines&) {
       c.arguments = {{"exposure_s", "inf"}};
     },
     Fault::kBadText, "argument exposure_s"},
    {"negative",
     [](Contents& c, Lines&) {
       c.arguments = {{"print_minutes", "-1"}};
     },
     Fault::kBadText, "argument print_minutes"},
    {"empty number",
     [](Contents& c, Lines&) {
       c.arguments = {{"lift_mm_s", ""}};
     },
     Fault::kBadText, "argument lift_mm_s"},
    {"part of a layer",
     [](Contents& c, Lines&) {
       c.arguments = {{"layers", "1.5"}};
     },
     Fault::kBadText, "argument layers"},
    {"twice",
     [](Contents& c, Lines&) {
       c.arguments = {{"a", "1"}, {"a", "1"}};
     },
     Fault::kBadText, "more than once"},
    {"name",
     [](Contents& c, Lines&) {
       c.arguments = {{"a b", "1"}};
     },
     Fault::kBadText, "argument name 'a b'"},
    {"LF in a value",
     [](Contents& c, Lines&) {
       c.arguments = {{"a", "1\nb=2"}};
     },
     Fault::kBadText, "control characters"},
    {"key", [](Contents& c, Lines&) { c.aes_key.resize(4097); }, Fault::kTooLarge,
     "key: expected at most 4096 bytes"},
    {"command", [](Contents&, Lines& l) { l[2] = "F104 S2"; }, Fault::kBadLine,
     "data line 3 begins with 'F1'"},
    {"CR", [](Contents&, Lines& l) { l[1] = "a\rb"; }, Fault::kBadLine, "data line 2"},
    {"LF", [](Contents&, Lines& l) { l[0] = "\n"; }, Fault::kBadLine, "data line 1"},
    {"long line", [](Contents&, Lines& l) { l[1].assign((16 << 20) + 1, 'a'); }, Fault::kTooLarge,
     "data line 2: expected at most 16777216 bytes"},
};

TEST_F(WriterTest, RefusedContentLeavesTheOlderFileAndNothingElse) {
  WriteText("a.nuv", "older");
  for (const RefusedRow& row : kRefusedRows) {
    PrintFileContents contents = SampleContents();
    std::vector<std::string> lines = SampleLines();
    row.spoil(contents, lines);
    const Status status = WritePrintFile(Path("a.nuv"), contents, LinesOf(lines));
    EXPECT_EQ(status.fault(), row.fault) << row.name << ": " << status.message();
    EXPECT_NE(status.message().find(row.message), std::string::npos)
        << row.name << ": " << status.message();
    EXPECT_EQ(FileNames(), std::vector<std::string>{"a.nuv"}) << row.name;
    EXPECT_EQ(ReadBytes(Path("a.nuv")).size(), 5u) << row.name;
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
  EXPECT_EQ(PrintFile::Open(Path("missing.nuv"), &file).fault(), Fault::kCannotOpen);
  EXPECT_FALSE(PrintFile::Open(Path("."), &file).ok());
  const std::vector<std::string> lines = SampleLines();
  EXPECT_EQ(WritePrintFile(Path("no/such/folder"), SampleContents(), LinesOf(lines)).fault(),
            Fault::kCannotOpen);
  std::filesystem::create_directory(Path("taken"));
  EXPECT_EQ(WritePrintFile(Path("taken"), SampleContents(), LinesOf(lines)).fault(),
            Fault::kWriteFailed);
  EXPECT_EQ(FileNames(), std::vector<std::string>{"taken"});
}

struct TextRow {
  std::string text;
  std::vector<std::string> lines;
  Fault fault;
};

TEST_F(WriterTest, TextIsSplitIntoLines) {
  const std::string edge(256 * 1024 - 1, 'e');  // puts CR and LF into different buffers
  const std::string longest(16 << 20, 'l');
  const TextRow rows[] = {
      {"", {}, Fault::kNone},
      {"a\nb\n", {"a", "b"}, Fault::kNone},
      {"a\r\n\r\nb", {"a", "", "b"}, Fault::kNone},
      {"\n", {""}, Fault::kNone},
      {"a\rb\n", {"a\rb"}, Fault::kNone},
      {edge + "\r\nnext\n", {edge, "next"}, Fault::kNone},
      {longest + "\r\nx", {longest, "x"}, Fault::kNone},
      {"a\n" + longest + "mm", {"a"}, Fault::kTooLarge},
      {"\xEF\xBB\xBF"
       "F1\n",
       {},
       Fault::kBadText},
  };
  for (const TextRow& row : rows) {
    std::unique_ptr<TextLines> lines;
    ASSERT_TRUE(TextLines::Open(WriteText("lines.txt", row.text), &lines).ok());
    std::vector<std::string> read;
    std::string_view line;
    Status status;
    while (lines->Next(&line, &status)) read.emplace_back(line);
    EXPECT_TRUE(read == row.lines) << row.text.substr(0, 20);
    EXPECT_EQ(status.fault(), row.fault) << status.message();
  }
}

}  // namespace
}  // namespace nuvfile
