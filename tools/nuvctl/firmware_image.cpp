#include "firmware_image.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>

#include "error.h"
#include "file_job.h"
#include "nuvconnect/NuvConnect5.h"
#include "text.h"

namespace nuvctl {
namespace {

// The library counts bytes in an int.
constexpr std::uint64_t kLargestBytes = std::numeric_limits<int>::max();

CommandError Unfit(const std::string& message) {
  return CommandError("wrong_size", kFileProblem, message + ", so nothing was sent",
                      "Check that it is the image that the maker gave for this part.");
}

void RequireSize(FirmwareKind kind, const std::string& file, std::uint64_t bytes) {
  if (bytes == 0) throw Unfit("The file " + file + " is empty");
  if (kind == FirmwareKind::kPanel && bytes != NUV_PANEL_IMAGE_BYTES) {
    throw Unfit("An image of the LCM panel has exactly " + std::to_string(NUV_PANEL_IMAGE_BYTES) +
                " bytes, but " + file + " has " + std::to_string(bytes));
  }
  if (bytes > kLargestBytes) {
    throw Unfit("The file " + file + " has " + FormatBytes(static_cast<std::int64_t>(bytes)) +
                ", more than any image");
  }
}

}  // namespace

FirmwareImage ReadFirmwareImage(FirmwareKind kind, const std::string& file) {
  OpenJobFile(file);
  const std::filesystem::path path = std::filesystem::u8path(file);
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  std::ifstream stream(path, std::ios::binary);
  FirmwareImage image;
  image.file = file;
  image.name = path.filename().u8string();
  if (!error) {
    RequireSize(kind, file, size);
    image.bytes.resize(static_cast<std::size_t>(size));
    stream.read(reinterpret_cast<char*>(image.bytes.data()),
                static_cast<std::streamsize>(image.bytes.size()));
  }
  if (error || !stream) {
    throw CommandError("file_not_readable", kFileProblem, "The file " + file + " cannot be read",
                       "Check that it is a file and that no other program writes to it.");
  }
  return image;
}

}  // namespace nuvctl
