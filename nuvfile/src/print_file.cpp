#include "nuvfile/print_file.h"

#include <algorithm>
#include <string_view>

#include "header.h"
#include "verify.h"

namespace nuvfile {
namespace {

Status ReadText(PrintFile& file, Section section, std::string* text) {
  size_t length = static_cast<size_t>(file.SectionLength(section));
  text->resize(length);
  return file.ReadSection(section, reinterpret_cast<uint8_t*>(text->data()), length, &length);
}

}  // namespace

Status PrintFile::Open(const std::string& path, std::unique_ptr<PrintFile>* file) {
  std::unique_ptr<ByteSource> source;
  if (Status status = FileSource::Open(path, &source); !status.ok()) return status;
  return Open(std::move(source), file);
}

Status PrintFile::Open(std::unique_ptr<ByteSource> source, std::unique_ptr<PrintFile>* file) {
  HeaderBytes bytes{};
  const uint64_t size = source->Size();
  const auto available = static_cast<size_t>(std::min<uint64_t>(size, bytes.size()));
  if (Status status = source->ReadAt(0, bytes.data(), available); !status.ok()) return status;
  Layout layout;
  Status status = DecodeHeader(bytes, available, size, &layout);
  if (!status.ok()) return status;
  if (status = VerifySections(*source, layout); !status.ok()) return status;
  std::unique_ptr<PrintFile> opened(new PrintFile(std::move(source), layout));
  if (status = opened->LoadTexts(); !status.ok()) return status;
  *file = std::move(opened);
  return {};
}

Status PrintFile::LoadTexts() {
  const struct {
    Section section;
    std::string* text;
  } kTexts[] = {{Section::kMachineId, &machine_id_},
                {Section::kProjectId, &project_id_},
                {Section::kMaterialId, &material_id_},
                {Section::kArguments, &arguments_text_}};
  for (const auto& row : kTexts) {
    if (Status status = ReadText(*this, row.section, row.text); !status.ok()) return status;
  }
  Status status = CheckMachineId(machine_id_);
  if (status.ok()) status = CheckId("project ID", project_id_);
  if (status.ok()) status = CheckId("material ID", material_id_);
  if (status.ok()) status = ParseArguments(arguments_text_, &arguments_);
  return status;
}

Status PrintFile::ReadLine(uint64_t index, uint8_t* buffer, size_t capacity, size_t* length) {
  if (index >= layout_.line_count) {
    return {Fault::kLineOutOfRange, "line index " + std::to_string(index) +
                                        ": expected less than " +
                                        std::to_string(layout_.line_count)};
  }
  uint8_t entries[2 * kIndexEntrySize];
  const uint64_t entry_offset = layout_.At(Section::kIndex).offset + index * kIndexEntrySize;
  Status status = source_->ReadAt(entry_offset, entries, sizeof(entries));
  if (!status.ok()) return SectionFault(status.fault(), Section::kIndex, status.message());
  // Checked again, since the file on disk may have been overwritten meanwhile.
  const uint64_t begin = LoadU64(entries);
  const uint64_t end = LoadU64(entries + kIndexEntrySize);
  const SectionEntry& data = layout_.At(Section::kData);
  if (begin > end || end > data.length || end - begin > kMaxLineLength) {
    return SectionFault(
        Fault::kBadIndex, Section::kIndex,
        "entry " + std::to_string(index) + " has changed since the file was opened");
  }
  *length = static_cast<size_t>(end - begin);
  if (*length > capacity) return {};
  status = source_->ReadAt(data.offset + begin, buffer, *length);
  if (!status.ok()) return SectionFault(status.fault(), Section::kData, status.message());
  if (*length == 0) return {};
  return CheckDataLine(index + 1, {reinterpret_cast<const char*>(buffer), *length});
}

Status PrintFile::ReadSection(Section section, uint8_t* buffer, size_t capacity, size_t* length) {
  const SectionEntry& entry = layout_.At(section);
  *length = static_cast<size_t>(entry.length);
  if (*length > capacity) return {};
  Status status = source_->ReadAt(entry.offset, buffer, *length);
  if (!status.ok()) return SectionFault(status.fault(), section, status.message());
  if (UpdateChecksum(0, buffer, *length) != entry.checksum) {
    return SectionFault(Fault::kBadChecksum, section, "it has changed since the file was opened");
  }
  return {};
}

}  // namespace nuvfile
