// Opens the input as a print file, as it is and again with its checksums made right,
// since a fuzzer practically never guesses those. What opens must be readable in full.
#include <memory>
#include <vector>

#include "fuzz/targets.h"
#include "nuvfile/print_file.h"
#include "repair_checksums.h"

namespace NuvFile {
namespace {

using Fuzz::Require;

void ReadLines(PrintFile& file) {
  std::vector<uint8_t> buffer(static_cast<size_t>(file.ModelBytes()));
  uint64_t total = 0;
  size_t length = 0;
  for (uint64_t i = 0; i < file.LineCount(); ++i) {
    Require(file.ReadLine(i, buffer.data(), buffer.size(), &length).Ok(), "a line is unreadable");
    total += length;
  }
  Require(total == file.ModelBytes(), "the lines do not add up to the model data");
  Require(!file.ReadLine(file.LineCount(), nullptr, 0, &length).Ok(), "a line behind the last");
}

void OpenAndRead(const std::vector<uint8_t>& bytes) {
  std::unique_ptr<PrintFile> file;
  const Status status = PrintFile::Open(std::make_unique<MemorySource>(bytes), &file);
  if (!status.Ok()) {
    Require(!status.Message().empty(), "a fault without a message");
    return;
  }
  Require(file->MachineId().size() == kMachineIdLength, "the machine ID has another length");
  Require(FormatArguments(file->Arguments()) == file->ArgumentsText(), "arguments differ");
  for (size_t i = 0; i < kSectionCount; ++i) {
    std::vector<uint8_t> section(static_cast<size_t>(file->SectionLength(static_cast<Section>(i))));
    size_t length = 0;
    Require(
        file->ReadSection(static_cast<Section>(i), section.data(), section.size(), &length).Ok(),
        "a section is unreadable");
  }
  ReadLines(*file);
}

}  // namespace
}  // namespace NuvFile

void Fuzz::NuvFile(const uint8_t* data, size_t size) {
  std::vector<uint8_t> bytes(data, data + size);
  ::NuvFile::OpenAndRead(bytes);
  ::NuvFile::RepairChecksums(&bytes);
  ::NuvFile::OpenAndRead(bytes);
}
