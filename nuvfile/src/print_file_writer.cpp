#include "nuvfile/print_file_writer.h"

#include <algorithm>

#include "header.h"
#include "output_file.h"

namespace NuvFile {
namespace {

// Writes the sections in table order and notes where each lies.
class Writer {
 public:
  explicit Writer(const PrintFileContents& contents) : contents_(contents) {}

  Status Run(const std::string& path, const NextLine& next);
  const Layout& GetLayout() const { return layout_; }

 private:
  Status WriteFrontSections();
  Status WriteLines(const NextLine& next);
  Status WriteLine(std::string_view line);
  Status WriteArguments();
  Status WriteSection(Section section, const void* bytes, size_t length);
  void EndSection(Section section, uint64_t begin);

  const PrintFileContents& contents_;
  Layout layout_;
  OutputFile out_;
  OutputFile index_;  // apart until the last line: the number of lines is not known before
  uint64_t modelBytes_ = 0;
};

Status CheckLength(const char* what, const std::vector<uint8_t>& bytes, uint64_t maxLength) {
  if (bytes.size() <= maxLength) return {};
  return {Fault::kTooLarge, std::string(what) + ": expected at most " + std::to_string(maxLength) +
                                " bytes, found " + std::to_string(bytes.size())};
}

// Before anything is written, so that a wrong option does not cost the lines' copying.
Status CheckContents(const PrintFileContents& contents) {
  Status status = CheckMachineId(contents.machineId);
  if (status.Ok()) status = CheckId("project ID", contents.projectId);
  if (status.Ok()) status = CheckId("material ID", contents.materialId);
  if (status.Ok()) status = CheckArguments(contents.arguments);
  if (status.Ok()) status = CheckLength("key", contents.aesKey, kMaxKeyLength);
  if (status.Ok()) status = CheckLength("record L101", contents.l101, kMaxRecordLength);
  if (status.Ok()) status = CheckLength("record L102", contents.l102, kMaxRecordLength);
  if (status.Ok()) status = CheckLength("record L103", contents.l103, kMaxRecordLength);
  if (status.Ok()) status = CheckLength("preview", contents.preview, kMaxPreviewLength);
  return status;
}

Status Writer::Run(const std::string& path, const NextLine& next) {
  Status status = CheckContents(contents_);
  if (status.Ok()) status = out_.Create(path + ".partial");
  if (status.Ok()) status = index_.Create(path + ".partial-index");
  const HeaderBytes placeholder{};
  if (status.Ok()) status = out_.Append(placeholder.data(), placeholder.size());
  out_.TakeChecksum();
  if (status.Ok()) status = WriteFrontSections();
  if (status.Ok()) status = WriteLines(next);
  if (status.Ok()) status = WriteArguments();
  if (!status.Ok()) return status;
  layout_.fileSize = out_.Size();
  const HeaderBytes header = EncodeHeader(layout_);
  status = out_.WriteAtStart(header.data(), header.size());
  if (status.Ok()) status = out_.RenameTo(path);
  return status;
}

Status Writer::WriteFrontSections() {
  const PrintFileContents& c = contents_;
  const struct {
    Section section;
    const void* bytes;
    size_t length;
  } kRows[] = {
      {Section::kMachineId, c.machineId.data(), c.machineId.size()},
      {Section::kProjectId, c.projectId.data(), c.projectId.size()},
      {Section::kMaterialId, c.materialId.data(), c.materialId.size()},
      {Section::kAesKey, c.aesKey.data(), c.aesKey.size()},
      {Section::kL101, c.l101.data(), c.l101.size()},
      {Section::kL102, c.l102.data(), c.l102.size()},
      {Section::kL103, c.l103.data(), c.l103.size()},
      {Section::kPreview, c.preview.data(), c.preview.size()},
  };
  for (const auto& row : kRows) {
    Status status = WriteSection(row.section, row.bytes, row.length);
    if (!status.Ok()) return status;
  }
  return {};
}

Status Writer::WriteLines(const NextLine& next) {
  const uint64_t dataBegin = out_.Size();
  std::string_view line;
  Status status;
  while (next(&line, &status)) {
    if (status = WriteLine(line); !status.Ok()) return status;
  }
  if (!status.Ok()) return status;
  EndSection(Section::kData, dataBegin);
  uint8_t end[kIndexEntrySize];
  StoreU64(end, modelBytes_);
  if (status = index_.Append(end, sizeof(end)); !status.Ok()) return status;
  const uint64_t indexBegin = out_.Size();
  if (status = out_.AppendFile(index_); !status.Ok()) return status;
  EndSection(Section::kIndex, indexBegin);
  return {};
}

Status Writer::WriteLine(std::string_view line) {
  if (layout_.lineCount == kMaxLines) {
    return {Fault::kTooLarge,
            "expected at most " + std::to_string(kMaxLines) + " data lines, found more"};
  }
  const uint64_t number = ++layout_.lineCount;
  if (Status status = CheckDataLine(number, line); !status.Ok()) return status;
  if (line.size() > kMaxModelBytes - modelBytes_) {
    return {Fault::kTooLarge, "model data: expected at most " + std::to_string(kMaxModelBytes) +
                                  " bytes in all data lines, more with data line " +
                                  std::to_string(number)};
  }
  uint8_t begin[kIndexEntrySize];
  StoreU64(begin, modelBytes_);
  if (Status status = index_.Append(begin, sizeof(begin)); !status.Ok()) return status;
  modelBytes_ += line.size();
  return out_.Append(line.data(), line.size());
}

Status Writer::WriteArguments() {
  std::vector<Argument> arguments = contents_.arguments;
  const bool hasLayers = std::any_of(arguments.begin(), arguments.end(),
                                     [](const Argument& a) { return a.name == "layers"; });
  if (!hasLayers) arguments.push_back({"layers", std::to_string(layout_.lineCount)});
  const std::string text = FormatArguments(arguments);
  if (text.size() > kMaxArgumentsLength) {
    return {Fault::kTooLarge, "arguments: expected at most " + std::to_string(kMaxArgumentsLength) +
                                  " bytes in all, found " + std::to_string(text.size())};
  }
  return WriteSection(Section::kArguments, text.data(), text.size());
}

Status Writer::WriteSection(Section section, const void* bytes, size_t length) {
  const uint64_t begin = out_.Size();
  if (Status status = out_.Append(bytes, length); !status.Ok()) return status;
  EndSection(section, begin);
  return {};
}

void Writer::EndSection(Section section, uint64_t begin) {
  layout_.At(section) = {begin, out_.Size() - begin, out_.TakeChecksum()};
}

}  // namespace

NextLine LinesOf(const std::vector<std::string>& lines) {
  return [&lines, i = size_t{0}](std::string_view* line, Status*) mutable {
    if (i == lines.size()) return false;
    *line = lines[i++];
    return true;
  };
}

Status WritePrintFile(const std::string& path, const PrintFileContents& contents,
                      const NextLine& next, WriteSummary* summary) {
  Writer writer(contents);
  if (Status status = writer.Run(path, next); !status.Ok()) return status;
  if (summary != nullptr) {
    const Layout& layout = writer.GetLayout();
    *summary = {layout.lineCount, layout.At(Section::kData).length, layout.fileSize};
  }
  return {};
}

}  // namespace NuvFile
