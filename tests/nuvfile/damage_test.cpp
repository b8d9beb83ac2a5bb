#include <algorithm>
#include <functional>

#include "fuzz/targets.h"
#include "header.h"
#include "repair_checksums.h"
#include "test_files.h"

namespace NuvFile {
namespace {

// Fields of an entry of the section table.
constexpr size_t kOffset = 8;
constexpr size_t kLength = 16;

// The bytes of a print file, with verbs to spoil them.
struct Image {
  size_t EntryAt(Section section, size_t field) const {
    return kFixedHeaderSize + static_cast<size_t>(section) * kTableEntrySize + field;
  }
  uint64_t Get(Section section, size_t field) const {
    return LoadU64(&bytes[EntryAt(section, field)]);
  }
  void Set(Section section, size_t field, uint64_t value) {
    StoreU64(&bytes[EntryAt(section, field)], value);
  }
  // Byte `at` of the content of `section`.
  void SetContent(Section section, size_t at, char value) {
    bytes[Get(section, kOffset) + at] = static_cast<uint8_t>(value);
  }
  void SetIndexEntry(size_t number, uint64_t value) {
    StoreU64(&bytes[Get(Section::kIndex, kOffset) + number * kIndexEntrySize], value);
  }

  Status Open() const {
    std::unique_ptr<PrintFile> file;
    return PrintFile::Open(std::make_unique<MemorySource>(bytes), &file);
  }
  // The fuzz target, which makes the checksums right too, finds no broken promise.
  void HoldsInFuzzTarget() const { EXPECT_NO_THROW(Fuzz::NuvFile(bytes.data(), bytes.size())); }

  std::vector<uint8_t> bytes;
};

class DamageTest : public FolderTest {
 protected:
  Image MakeImage(const std::vector<std::string>& lines) {
    const Status status = WritePrintFile(Path("good.nuv"), SampleContents(), LinesOf(lines));
    EXPECT_TRUE(status.Ok()) << status.Message();
    return {ReadBytes(Path("good.nuv"))};
  }
  Image MakeImage() { return MakeImage(SampleLines()); }
};

TEST_F(DamageTest, EveryChangedByteIsRefused) {
  Image image = MakeImage();
  ASSERT_TRUE(image.Open().Ok());
  for (size_t i = 0; i < image.bytes.size(); ++i) {
    const uint8_t good = image.bytes[i];
    for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
      image.bytes[i] = static_cast<uint8_t>(good ^ change);
      EXPECT_FALSE(image.Open().Ok()) << "byte " << i;
      image.HoldsInFuzzTarget();
    }
    image.bytes[i] = good;
  }
}

TEST_F(DamageTest, EveryOtherLengthOfTheFileIsRefused) {
  const Image good = MakeImage();
  for (Image image = good; !image.bytes.empty();) {
    image.bytes.pop_back();
    EXPECT_FALSE(image.Open().Ok()) << "cut to " << image.bytes.size();
    image.HoldsInFuzzTarget();
  }
  Image longer = good;
  longer.bytes.push_back(0);
  EXPECT_EQ(longer.Open().GetFault(), Fault::kBadHeader);
}

TEST_F(DamageTest, ChecksumFaultNamesTheSection) {
  for (size_t i = 0; i < kSectionCount; ++i) {
    Image image = MakeImage();
    const auto section = static_cast<Section>(i);
    image.SetContent(section, 0, '\n');  // also a bad line, a bad index, a bad text
    const Status status = image.Open();
    EXPECT_EQ(status.GetFault(), Fault::kBadChecksum) << status.Message();
    EXPECT_NE(status.Message().find(SectionTag(section)), std::string::npos) << status.Message();
  }
}

// All with right checksums. The sample has 7 lines, 42 bytes of model data and
// 53 of arguments.
const struct {
  std::function<void(Image&)> spoil;
  Fault fault;
  const char* message;  // a part of it
} kHostileRows[] = {
    {[](Image& i) { i.bytes[1] = 'n'; }, Fault::kNotPrintFile, "not a print file"},
    {[](Image& i) { i.bytes[8] = 2; }, Fault::kUnknownVersion, "expected 1, found 2"},
    {[](Image& i) { i.bytes[12] = 10; }, Fault::kBadHeader, "expected 11, found 10"},
    {[](Image& i) { i.bytes[17] = 9; }, Fault::kBadHeader, "cut short"},
    {[](Image& i) { StoreU64(&i.bytes[24], 8); }, Fault::kBadHeader,
     "INDX: length for 8 lines: expected 72, found 64"},
    {[](Image& i) { StoreU64(&i.bytes[24], (uint64_t{1} << 61) + 7); }, Fault::kTooLarge,
     "data lines"},
    {[](Image& i) { i.bytes[32] = 1; }, Fault::kBadHeader, "reserved"},
    {[](Image& i) { i.bytes[i.EntryAt(Section::kData, 0)] = 'X'; }, Fault::kBadHeader,
     "entry 9 of the section table is not DATA"},
    {[](Image& i) { i.Set(Section::kData, kOffset, i.Get(Section::kPreview, kOffset)); },
     Fault::kBadHeader, "DATA: offset"},
    {[](Image& i) { i.Set(Section::kL102, kOffset, i.Get(Section::kL102, kOffset) + 1); },
     Fault::kBadHeader, "leaves a gap"},
    {[](Image& i) { i.Set(Section::kIndex, kOffset, ~uint64_t{0} - 7); }, Fault::kBadHeader,
     "INDX: offset"},
    {[](Image& i) { i.Set(Section::kData, kLength, ~uint64_t{0}); }, Fault::kTooLarge,
     "DATA: length"},
    {[](Image& i) { i.Set(Section::kData, kLength, 0x80000000u); }, Fault::kTooLarge,
     "expected at most 2147483647, found 2147483648"},
    {[](Image& i) { i.Set(Section::kL101, kLength, 1 << 20); }, Fault::kBadHeader,
     "L101: length: 1048576 goes past the end"},
    {[](Image& i) { i.Set(Section::kArguments, kLength, i.Get(Section::kArguments, kLength) - 1); },
     Fault::kBadHeader, "end of the last section"},
    {[](Image& i) { i.SetIndexEntry(0, 1); }, Fault::kBadIndex, "entry 0: expected 0, found 1"},
    {[](Image& i) { i.SetIndexEntry(3, 7); }, Fault::kBadIndex,
     "entry 3: expected at least the 8 before it, found 7"},
    {[](Image& i) { i.SetIndexEntry(6, 43); }, Fault::kBadIndex,
     "entry 6: expected at most the length of the data, 42, found 43"},
    {[](Image& i) { i.SetIndexEntry(7, 43); }, Fault::kBadIndex,
     "entry 7: expected the length of the data, 42, found 43"},
    {[](Image& i) { i.SetContent(Section::kMachineId, 3, '-'); }, Fault::kBadText, "machine ID"},
    {[](Image& i) { i.SetContent(Section::kArguments, 8, '\n'); }, Fault::kBadText,
     "expected name=value, found 'job_name'"},
    {[](Image& i) { i.SetContent(Section::kArguments, 52, '0'); }, Fault::kBadText,
     "expected LF at the end"},
    {[](Image& i) { i.SetContent(Section::kData, 4, '\r'); }, Fault::kBadLine,
     "data line 1: expected no line end inside the line, found CR"},
    {[](Image& i) { i.SetContent(Section::kData, 41, '\n'); }, Fault::kBadLine,
     "data line 6: expected no line end inside the line, found LF"},
    {[](Image& i) { i.SetContent(Section::kData, 31, '7'); }, Fault::kBadLine,
     "data line 5 begins with 'F7'"},
};

TEST_F(DamageTest, HostileFilesAreRefusedAndTheFaultNamed) {
  for (const auto& row : kHostileRows) {
    Image image = MakeImage();
    row.spoil(image);
    RepairChecksums(&image.bytes);
    const Status status = image.Open();
    EXPECT_EQ(status.GetFault(), row.fault) << row.message << ": " << status.Message();
    EXPECT_NE(status.Message().find(row.message), std::string::npos) << status.Message();
  }
}

TEST_F(DamageTest, LineOver16MiBIsRefusedByItsIndexEntry) {
  Image image = MakeImage({std::string(9 << 20, 'a'), std::string(9 << 20, 'b')});
  image.SetIndexEntry(1, 18 << 20);
  RepairChecksums(&image.bytes);
  EXPECT_EQ(image.Open().GetFault(), Fault::kBadIndex);
}

// The data are checked in chunks of 256 KiB; a command must not slip through between two.
TEST_F(DamageTest, CommandAndLineEndAreSeenAroundTheEndsOfChunks) {
  constexpr size_t kChunk = size_t{256} * 1024;
  for (size_t begin = kChunk - 3; begin <= kChunk + 2; ++begin) {
    Image image = MakeImage({std::string(begin, 'a'), "X", "X1", "F", "2"});
    ASSERT_TRUE(image.Open().Ok());
    Image command = image;
    command.SetContent(Section::kData, begin + 1, 'F');
    RepairChecksums(&command.bytes);
    EXPECT_NE(command.Open().Message().find("data line 3 begins with 'F1'"), std::string::npos)
        << begin << command.Open().Message();
    image.SetContent(Section::kData, begin + 3, '\r');
    RepairChecksums(&image.bytes);
    EXPECT_NE(image.Open().Message().find("data line 4: "), std::string::npos)
        << begin << image.Open().Message();
  }
}

}  // namespace
}  // namespace NuvFile
