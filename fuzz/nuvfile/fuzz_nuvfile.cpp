// Opens the input as a print file, as it is and again with its checksums made right,
// since a fuzzer practically never guesses those. What opens must be readable in full.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "nuvfile/print_file.h"
#include "repair_checksums.h"

namespace nuvfile {
namespace {

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "an accepted print file breaks its promise: %s\n", what);
  std::abort();
}

void ReadLines(PrintFile& file) {
  std::vector<uint8_t> buffer(static_cast<size_t>(file.model_bytes()));
  uint64_t total = 0;
  size_t length = 0;
  for (uint64_t i = 0; i < file.line_count(); ++i) {
    Require(file.ReadLine(i, buffer.data(), buffer.size(), &length).ok(), "a line is unreadable");
    total += length;
  }
  Require(total == file.model_bytes(), "the lines do not add up to the model data");
  Require(!file.ReadLine(file.line_count(), nullptr, 0, &length).ok(), "a line behind the last");
}

void OpenAndRead(const std::vector<uint8_t>& bytes) {
  std::unique_ptr<PrintFile> file;
  const Status status = PrintFile::Open(std::make_unique<MemorySource>(bytes), &file);
  if (!status.ok()) {
    Require(!status.message().empty(), "a fault without a message");
    return;
  }
  Require(file->machine_id().size() == kMachineIdLength, "the machine ID has another length");
  Require(FormatArguments(file->arguments()) == file->arguments_text(), "arguments differ");
  for (size_t i = 0; i < kSectionCount; ++i) {
    std::vector<uint8_t> section(static_cast<size_t>(file->SectionLength(static_cast<Section>(i))));
    size_t length = 0;
    Require(
        file->ReadSection(static_cast<Section>(i), section.data(), section.size(), &length).ok(),
        "a section is unreadable");
  }
  ReadLines(*file);
}

}  // namespace
}  // namespace nuvfile

// Declared here because no header of the fuzzing library does.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<uint8_t> bytes(data, data + size);
  nuvfile::OpenAndRead(bytes);
  nuvfile::RepairChecksums(&bytes);
  nuvfile::OpenAndRead(bytes);
  return 0;
}
