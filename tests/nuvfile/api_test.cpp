#include <cstring>

#include "nuvfile/NuvFile.h"
#include "test_files.h"

namespace NuvFile {
namespace {

class ApiTest : public FolderTest {
 protected:
  ApiTest() {
    const std::vector<std::string> lines = SampleLines();
    EXPECT_TRUE(WritePrintFile(Path("a.nuv"), SampleContents(), LinesOf(lines)).Ok());
  }
  ~ApiTest() override { Close(); }

  int LoadSample() { return Load(Path("a.nuv").c_str()); }

  static std::string LastError() {
    std::string text(1000, '\0');
    text.resize(static_cast<size_t>(GetLastErrorText(text.data(), 1000)));
    return text;
  }

  uint64_t OffsetOf(const std::string& bytes) { return Text(ReadBytes(Path("a.nuv"))).find(bytes); }
};

using TextFunction = int (*)(char*, int);
using BinaryFunction = int (*)(unsigned char*, int);

// `function` copies `content` into exactly the room it needs, with `end` behind it, and nothing
// into less. The buffer has a byte more than the content.
template <class Char>
void ExpectCopied(int (*function)(Char*, int), const std::string& content, char end) {
  const int length = static_cast<int>(content.size());
  const int needed = end == '\0' ? length + 1 : length;
  const std::string untouched(content.size() + 1, '#');
  std::string buffer = untouched;
  const auto bytes = reinterpret_cast<Char*>(buffer.data());
  EXPECT_EQ(function(nullptr, 0), length);
  for (const int room : {-1, needed - 1}) EXPECT_EQ(function(bytes, room), length);
  EXPECT_EQ(buffer, untouched);
  EXPECT_EQ(function(bytes, needed), length);
  EXPECT_EQ(buffer, content + end);
}

TEST_F(ApiTest, PartsAreCopiedWhenTheyFit) {
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
  const PrintFileContents contents = SampleContents();
  const std::string arguments = "job_name=crown=left\nlayer_thickness_mm=0.05\nlayers=7\n";
  ExpectCopied(GetMachineID, contents.machineId, '\0');
  ExpectCopied(GetProjectID, contents.projectId, '\0');
  ExpectCopied(GetMaterialID, contents.materialId, '\0');
  ExpectCopied(GetFileArguments, arguments, '\0');
  ExpectCopied(GetAESkey, Text(contents.aesKey), '#');
  ExpectCopied(ReadL101, Text(contents.l101), '#');
  ExpectCopied(ReadL102, Text(contents.l102), '#');
  ExpectCopied(ReadL103, Text(contents.l103), '#');
  ExpectCopied(ReadPreImg, Text(contents.preview), '#');
}

TEST_F(ApiTest, LayersAreTheDataLines) {
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
  EXPECT_EQ(GetModelDataSize(), 42);
  unsigned char buffer[64] = {'#'};
  EXPECT_EQ(ReadLayer(0, buffer, 7, 0.0F), 8);
  EXPECT_EQ(buffer[0], '#');
  EXPECT_EQ(ReadLayer(0, buffer, 8, 0.0F), 8);
  EXPECT_EQ(std::memcmp(buffer, "L0 first#", 8), 0);
  EXPECT_EQ(ReadLayer(1, nullptr, 0, 0.0F), 0);
  for (int i = 0; i < 7; ++i) {
    const int length = ReadLayer(i, buffer, 64, 1.5F);
    EXPECT_EQ(std::string(buffer, buffer + length), SampleLines()[static_cast<size_t>(i)]);
  }
  for (const int index : {-1, 7, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
    EXPECT_EQ(ReadLayer(index, buffer, 64, 0.0F), NUVFILE_INDEX_OUT_OF_RANGE) << index;
  }
}

TEST_F(ApiTest, WithoutAFileEveryFunctionSaysSo) {
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED);
  Close();
  Close();
  for (const TextFunction f : {GetMachineID, GetProjectID, GetMaterialID, GetFileArguments}) {
    EXPECT_EQ(f(nullptr, 0), NUVFILE_NO_FILE);
  }
  for (const BinaryFunction f : {GetAESkey, ReadL101, ReadL102, ReadL103, ReadPreImg}) {
    EXPECT_EQ(f(nullptr, 0), NUVFILE_NO_FILE);
  }
  EXPECT_EQ(GetModelDataSize(), NUVFILE_NO_FILE);
  EXPECT_EQ(ReadLayer(0, nullptr, 0, 0.0F), NUVFILE_NO_FILE);
  EXPECT_EQ(LastError(), "no print file is open");
}

TEST_F(ApiTest, FailedLoadClosesTheEarlierFileAndIsExplained) {
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED);
  EXPECT_EQ(Load(Path("missing").c_str()), NUVFILE_CANNOT_OPEN);
  EXPECT_NE(LastError().find("missing"), std::string::npos) << LastError();
  EXPECT_EQ(GetModelDataSize(), NUVFILE_NO_FILE);
  EXPECT_EQ(Load(nullptr), NUVFILE_CANNOT_OPEN);
  EXPECT_EQ(Load(WriteText("text", "just some text").c_str()), NUVFILE_NOT_A_PRINT_FILE);
  EXPECT_EQ(LoadSample(), NUVFILE_LOADED);
  EXPECT_EQ(LastError(), "");
}

TEST_F(ApiTest, DamageAfterLoadIsAReadError) {
  unsigned char buffer[64];
  const struct {
    const char* oldBytes;
    const char* newBytes;
    std::function<int()> read;
  } kRows[] = {
      {"FA1", "F11", [&] { return ReadLayer(4, buffer, 64, 0.0F); }},
      {"last line", "last\nline", [&] { return ReadLayer(5, buffer, 64, 0.0F); }},
      {"cde", "cdx", [&] { return ReadL103(buffer, 64); }},
  };
  for (const auto& row : kRows) {
    ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
    ASSERT_GE(row.read(), 0);
    const uint64_t offset = OffsetOf(row.oldBytes);
    Overwrite("a.nuv", offset, row.newBytes);
    EXPECT_EQ(row.read(), NUVFILE_READ_ERROR) << row.oldBytes;
    EXPECT_NE(LastError(), "");
    Overwrite("a.nuv", offset, row.oldBytes);
  }
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
  std::filesystem::resize_file(Path("a.nuv"), OffsetOf("L0 first"));
  EXPECT_EQ(ReadLayer(5, buffer, 64, 0.0F), NUVFILE_READ_ERROR);
  EXPECT_NE(LastError().find("INDX"), std::string::npos) << LastError();
}

}  // namespace
}  // namespace NuvFile
