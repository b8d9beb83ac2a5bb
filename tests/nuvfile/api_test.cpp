#include <cstring>

#include "nuvfile/NuvFile.h"
#include "test_files.h"

namespace nuvfile {
namespace {

class ApiTest : public FolderTest {
 protected:
  ApiTest() {
    const std::vector<std::string> lines = SampleLines();
    EXPECT_TRUE(WritePrintFile(Path("a.nuv"), SampleContents(), LinesOf(lines)).ok());
  }
  ~ApiTest() override { Close(); }

  int LoadSample() { return Load(Path("a.nuv").c_str()); }

  static std::string LastError() {
    std::string text(1000, '\0');
    text.resize(static_cast<size_t>(GetLastErrorText(text.data(), 1000)));
    return text;
  }

  uint64_t OffsetOf(const std::string& bytes) {
    const std::vector<uint8_t> file = ReadBytes(Path("a.nuv"));
    return std::string(file.begin(), file.end()).find(bytes);
  }
};

using TextFunction = int (*)(char*, int);
using BinaryFunction = int (*)(unsigned char*, int);

struct TextCase {
  TextFunction function;
  std::string text;
};

TEST_F(ApiTest, TextsAreCopiedOnlyWithRoomForTheNul) {
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
  const TextCase cases[] = {
      {GetMachineID, "3DPSNKG43WTW00001"},
      {GetProjectID, "project-7"},
      {GetMaterialID, "resin grey"},
      {GetFileArguments, "job_name=crown=left\nlayer_thickness_mm=0.05\nlayers=7\n"}};
  for (const auto& [function, text] : cases) {
    const int length = static_cast<int>(text.size());
    EXPECT_EQ(function(nullptr, 0), length);
    std::string buffer(text.size() + 1, '#');
    const std::string untouched = buffer;
    EXPECT_EQ(function(buffer.data(), -1), length);
    EXPECT_EQ(function(buffer.data(), length), length);
    EXPECT_EQ(buffer, untouched);
    EXPECT_EQ(function(buffer.data(), length + 1), length);
    EXPECT_STREQ(buffer.c_str(), text.c_str());
  }
}

TEST_F(ApiTest, BinariesAreCopiedWhenTheyFitExactly) {
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
  const PrintFileContents contents = SampleContents();
  const std::pair<BinaryFunction, std::vector<uint8_t>> cases[] = {{GetAESkey, contents.aes_key},
                                                                   {ReadL101, contents.l101},
                                                                   {ReadL102, contents.l102},
                                                                   {ReadL103, contents.l103},
                                                                   {ReadPreImg, contents.preview}};
  for (const auto& [function, bytes] : cases) {
    const int length = static_cast<int>(bytes.size());
    EXPECT_EQ(function(nullptr, 0), length);
    std::vector<uint8_t> buffer(bytes.size(), '#');
    const std::vector<uint8_t> untouched = buffer;
    EXPECT_EQ(function(buffer.data(), length - 1), length);
    EXPECT_EQ(buffer, untouched);
    EXPECT_EQ(function(buffer.data(), length), length);
    EXPECT_EQ(buffer, bytes);
  }
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
  EXPECT_EQ(ReadLayer(6, buffer, 64, 1.5F), 0);
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
  struct Row {
    const char* old_bytes;
    const char* new_bytes;
    std::function<int()> read;
  };
  const Row rows[] = {
      {"FA1", "F11", [&] { return ReadLayer(4, buffer, 64, 0.0F); }},
      {"last line", "last\nline", [&] { return ReadLayer(5, buffer, 64, 0.0F); }},
      {"de", "dx", [&] { return ReadL103(buffer, 64); }},
  };
  const uint64_t record = OffsetOf("cde") + 1;
  for (const Row& row : rows) {
    ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
    ASSERT_GE(row.read(), 0);
    const uint64_t offset = row.old_bytes[0] == 'd' ? record : OffsetOf(row.old_bytes);
    Overwrite("a.nuv", offset, row.new_bytes);
    EXPECT_EQ(row.read(), NUVFILE_READ_ERROR) << row.old_bytes;
    EXPECT_NE(LastError(), "");
    Overwrite("a.nuv", offset, row.old_bytes);
  }
  ASSERT_EQ(LoadSample(), NUVFILE_LOADED) << LastError();
  std::filesystem::resize_file(Path("a.nuv"), OffsetOf("L0 first"));
  EXPECT_EQ(ReadLayer(5, buffer, 64, 0.0F), NUVFILE_READ_ERROR);
  EXPECT_NE(LastError().find("INDX"), std::string::npos) << LastError();
}

}  // namespace
}  // namespace nuvfile
