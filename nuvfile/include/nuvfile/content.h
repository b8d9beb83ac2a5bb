// What a print file may hold: the limits and the rules for its texts and data lines.
//
// Writer and reader apply the same rules, so a file that was written is a file that
// opens, and a file made by anything else is held to them too.
#ifndef NUVFILE_CONTENT_H_
#define NUVFILE_CONTENT_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "nuvfile/status.h"

namespace NuvFile {

inline constexpr size_t kMachineIdLength = 17;
inline constexpr uint64_t kMaxIdLength = 255;
inline constexpr uint64_t kMaxArgumentsLength = uint64_t{1024} * 1024;
inline constexpr uint64_t kMaxKeyLength = 4096;
inline constexpr uint64_t kMaxRecordLength = uint64_t{16} * 1024 * 1024;
inline constexpr uint64_t kRecordFrameLength = 8;  // name and length in front of the payload
inline constexpr uint64_t kMaxPreviewLength = uint64_t{64} * 1024 * 1024;
inline constexpr uint64_t kMaxLineLength = uint64_t{16} * 1024 * 1024;
// Callers count model bytes, lines, layers and minutes in signed 32-bit integers.
inline constexpr uint64_t kMaxModelBytes = 0x7FFFFFFF;
inline constexpr uint64_t kMaxLines = 0x7FFFFFFF;
inline constexpr uint32_t kMaxWholeNumber = 0x7FFFFFFF;

struct Argument {
  std::string name;
  std::string value;
};

// 17 ASCII letters and digits.
Status CheckMachineId(std::string_view id);

// At most 255 bytes without control characters. `what` names the ID in the message.
Status CheckId(std::string_view what, std::string_view id);

// Names of 1 to 64 letters, digits, '_', '.' or '-', each at most once; values without
// control characters; the arguments that job opening reads as numbers are finite decimal
// numbers not below 0, `layers` and `print_minutes` in digits alone, up to 2147483647.
Status CheckArguments(const std::vector<Argument>& arguments);

// No CR, no LF, at most 16 MiB, and not 'F' followed by a digit: the printer would
// execute such a line. `number` counts from 1 and is used in the message only.
Status CheckDataLine(uint64_t number, std::string_view line);

// A header record as printers tell it from other bytes: its name ("L101"), the payload's length as
// 4 bytes little-endian, the payload.
std::vector<uint8_t> FrameRecord(std::string_view name, const std::vector<uint8_t>& payload);

// `name=value` LF for each argument, and back. Parsing also checks the arguments.
std::string FormatArguments(const std::vector<Argument>& arguments);
Status ParseArguments(std::string_view text, std::vector<Argument>* arguments);

}  // namespace NuvFile

#endif  // NUVFILE_CONTENT_H_
