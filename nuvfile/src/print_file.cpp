#include "nuvfile/print_file.h"

#include <algorithm>
#include <string_view>

#include "header.h"
#include "verify.h"

namespace NuvFile {
namespace {

Status ReadText(PrintFile& file, Section section, std::string* text) {
  size_t length = static_cast<size_t>(file.SectionLength(section));
  text->resize(length);
  return file.ReadSection(section, reinterpret_cast<uint8_t*>(text->data()), length, &length);
}

}  // namespace

Status PrintFile::Open(const std::string& path, std::unique_ptr<PrintFile>* file) {
  std::unique_ptr<ByteSource> source;
  if (Status status = FileSource::Open(path, &source); !status.Ok()) return status;
  return Open(std::move(source), file);
}

Status PrintFile::Open(std::unique_ptr<ByteSource> source, std::unique_ptr<PrintFile>* file) {
  HeaderBytes bytes{};
  const uint64_t size = source->Size();
  const auto available = static_cast<size_t>(std::min<uint64_t>(size, bytes.size()));
  if (Status status = source->ReadAt(0, bytes.data(), available); !status.Ok()) return status;
  Layout layout;
  Status status = DecodeHeader(bytes, available, size, &layout);
  if (!status.Ok()) return status;
  if (status = VerifySections(*source, layout); !status.Ok()) return status;
  std::unique_ptr<PrintFile> opened(new PrintFile(std::move(source), layout));
  if (status = opened->LoadTexts(); !status.Ok()) return status;
  *file = std::move(opened);
  return {};
}

Status PrintFile::LoadTexts() {
  const struct {
    Section section;
    std::string* text;
  } kTexts[] = {{Section::kMachineId, &machineId_},
                {Section::kProjectId, &projectId_},
                {Section::kMaterialId, &materialId_},
                {Section::kArguments, &argumentsText_}};
  for (const auto& row : kTexts) {
    if (Status status = ReadText(*this, row.section, row.text); !status.Ok()) return status;
  }
  Status status = CheckMachineId(machineId_);
  if (status.Ok()) status = CheckId("project ID", projectId_);
  if (status.Ok()) status = CheckId("material ID", materialId_);
  if (status.Ok()) status = ParseArguments(argumentsText_, &arguments_);
  return status;
}

Status PrintFile::ReadLine(uint64_t index, uint8_t* buffer, size_t capacity, size_t* length) {
  if (index >= layout_.lineCount) {
    return {Fault::kLineOutOfRange, "line index " + std::to_string(index) +
                                        ": expected less than " +
                                        std::to_string(layout_.lineCount)};
  }
  uint8_t entries[2 * kIndexEntrySize];
  const uint64_t entryOffset = layout_.At(Section::kIndex).offset + index * kIndexEntrySize;
  Status status = source_->ReadAt(entryOffset, entries, sizeof(entries));
  if (!status.Ok()) return SectionFault(status.GetFault(), Section::kIndex, status.Message());
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
  if (!status.Ok()) return SectionFault(status.GetFault(), Section::kData, status.Message());
  if (*length == 0) return {};
  return CheckDataLine(index + 1, {reinterpret_cast<const char*>(buffer), *length});
}

Status PrintFile::ReadSection(Section section, uint8_t* buffer, size_t capacity, size_t* length) {
  const SectionEntry& entry = layout_.At(section);
  *length = static_cast<size_t>(entry.length);
  if (*length > capacity) return {};
  Status status = source_->ReadAt(entry.offset, buffer, *length);
  if (!status.Ok()) return SectionFault(status.GetFault(), section, status.Message());
  if (UpdateChecksum(0, buffer, *length) != entry.checksum) {
    return SectionFault(Fault::kBadChecksum, section, "it has changed since the file was opened");
  }
  return {};
}

}  // namespace NuvFile
