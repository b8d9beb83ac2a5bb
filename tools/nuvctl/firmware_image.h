// A firmware image as a file, and which part of a printer it is for.
#ifndef NUVCTL_FIRMWARE_IMAGE_H_
#define NUVCTL_FIRMWARE_IMAGE_H_

#include <string>
#include <vector>

namespace nuvctl {

enum class FirmwareKind { kEngine, kAndroid, kPanel };

struct FirmwareImage {
  std::string file;  // as the user gave it
  std::string name;  // without folders, for the printer
  std::vector<unsigned char> bytes;
};

// Throws CommandError when the file cannot be read or its size is not that of such an image.
FirmwareImage ReadFirmwareImage(FirmwareKind kind, const std::string& file);

}  // namespace nuvctl

#endif  // NUVCTL_FIRMWARE_IMAGE_H_
