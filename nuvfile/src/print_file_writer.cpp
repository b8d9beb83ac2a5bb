#include "nuvfile/print_file_writer.h"

#include <algorithm>

#include "header.h"
#include "output_file.h"

namespace nuvfile {
namespace {

// Writes the sections in table order and notes where each lies.
class Writer {
 public:
  explicit Writer(const PrintFileContents& contents) : contents_(contents) {}

  Status Run(const std::string& path, const NextLine& next);
  const Layout& layout() const { return layout_; }

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
  uint64_t model_bytes_ = 0;
};

Status CheckLength(const char* what, const std::vector<uint8_t>& bytes, uint64_t max_length) {
  if (bytes.size() <= max_length) return {};
  return {Fault::kTooLarge, std::string(what) + ": expected at most " + std::to_string(max_length) +
                                " bytes, found " + std::to_string(bytes.size())};
}

// Before anything is written, so that a wrong option does not cost the lines' copying.
Status CheckContents(const PrintFileContents& contents) {
  Status status = CheckMachineId(contents.machine_id);
  if (status.ok()) status = CheckId("project ID", contents.project_id);
  if (status.ok()) status = CheckId("material ID", contents.material_id);
  if (status.ok()) status = CheckArguments(contents.arguments);
  if (status.ok()) status = CheckLength("key", contents.aes_key, kMaxKeyLength);
  if (status.ok()) status = CheckLength("record L101", contents.l101, kMaxRecordLength);
  if (status.ok()) status = CheckLength("record L102", contents.l102, kMaxRecordLength);
  if (status.ok()) status = CheckLength("record L103", contents.l103, kMaxRecordLength);
  if (status.ok()) status = CheckLength("preview", contents.preview, kMaxPreviewLength);
  return status;
}

Status Writer::Run(const std::string& path, const NextLine& next) {
  Status status = CheckContents(contents_);
  if (status.ok()) status = out_.Create(path + ".partial");
  if (status.ok()) status = index_.Create(path + ".partial-index");
  const HeaderBytes placeholder{};
  if (status.ok()) status = out_.Append(placeholder.data(), placeholder.size());
  out_.TakeChecksum();
  if (status.ok()) status = WriteFrontSections();
  if (status.ok()) status = WriteLines(next);
  if (status.ok()) status = WriteArguments();
  if (!status.ok()) return status;
  layout_.file_size = out_.size();
  const HeaderBytes header = EncodeHeader(layout_);
  status = out_.WriteAtStart(header.data(), header.size());
  if (status.ok()) status = out_.RenameTo(path);
  return status;
}

Status Writer::WriteFrontSections() {
  const PrintFileContents& c = contents_;
  const struct {
    Section section;
    const void* bytes;
    size_t length;
  } kRows[] = {
      {Section::kMachineId, c.machine_id.data(), c.machine_id.size()},
      {Section::kProjectId, c.project_id.data(), c.project_id.size()},
      {Section::kMaterialId, c.material_id.data(), c.material_id.size()},
      {Section::kAesKey, c.aes_key.data(), c.aes_key.size()},
      {Section::kL101, c.l101.data(), c.l101.size()},
      {Section::kL102, c.l102.data(), c.l102.size()},
      {Section::kL103, c.l103.data(), c.l103.size()},
      {Section::kPreview, c.preview.data(), c.preview.size()},
  };
  for (const auto& row : kRows) {
    Status status = WriteSection(row.section, row.bytes, row.length);
    if (!status.ok()) return status;
  }
  return {};
}

Status Writer::WriteLines(const NextLine& next) {
  const uint64_t data_begin = out_.size();
  std::string_view line;
  Status status;
  while (next(&line, &status)) {
    if (status = WriteLine(line); !status.ok()) return status;
  }
  if (!status.ok()) return status;
  EndSection(Section::kData, data_begin);
  uint8_t end[kIndexEntrySize];
  StoreU64(end, model_bytes_);
  if (status = index_.Append(end, sizeof(end)); !status.ok()) return status;
  const uint64_t index_begin = out_.size();
  if (status = out_.AppendFile(index_); !status.ok()) return status;
  EndSection(Section::kIndex, index_begin);
  return {};
}

Status Writer::WriteLine(std::string_view line) {
  if (layout_.line_count == kMaxLines) {
    return {Fault::kTooLarge,
            "expected at most " + std::to_string(kMaxLines) + " data lines, found more"};
  }
  const uint64_t number = ++layout_.line_count;
  if (Status status = CheckDataLine(number, line); !status.ok()) return status;
  if (line.size() > kMaxModelBytes - model_bytes_) {
    return {Fault::kTooLarge, "model data: expected at most " + std::to_string(kMaxModelBytes) +
                                  " bytes in all data lines, more with data line " +
                                  std::to_string(number)};
  }
  uint8_t begin[kIndexEntrySize];
  StoreU64(begin, model_bytes_);
  if (Status status = index_.Append(begin, sizeof(begin)); !status.ok()) return status;
  model_bytes_ += line.size();
  return out_.Append(line.data(), line.size());
}

Status Writer::WriteArguments() {
  std::vector<Argument> arguments = contents_.arguments;
  const bool has_layers = std::any_of(arguments.begin(), arguments.end(),
                                      [](const Argument& a) { return a.name == "layers"; });
  if (!has_layers) arguments.push_back({"layers", std::to_string(layout_.line_count)});
  const std::string text = FormatArguments(arguments);
  if (text.size() > kMaxArgumentsLength) {
    return {Fault::kTooLarge, "arguments: expected at most " + std::to_string(kMaxArgumentsLength) +
                                  " bytes in all, found " + std::to_string(text.size())};
  }
  return WriteSection(Section::kArguments, text.data(), text.size());
}

Status Writer::WriteSection(Section section, const void* bytes, size_t length) {
  const uint64_t begin = out_.size();
  if (Status status = out_.Append(bytes, length); !status.ok()) return status;
  EndSection(section, begin);
  return {};
}

void Writer::EndSection(Section section, uint64_t begin) {
  layout_.At(section) = {begin, out_.size() - begin, out_.TakeChecksum()};
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
  if (Status status = writer.Run(path, next); !status.ok()) return status;
  if (summary != nullptr) {
    const Layout& layout = writer.layout();
    *summary = {layout.line_count, layout.At(Section::kData).length, layout.file_size};
  }
  return {};
}

}  // namespace nuvfile
