#ifndef NUV_JOB_PRINT_FILE_LIBRARY_H_
#define NUV_JOB_PRINT_FILE_LIBRARY_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "command/processors.h"

namespace Nuv::Connect {

// The print-file library, as jobs use it. Another build of it needs another adapter only.
//
// Thread-safety: none. One file is open at a time, so jobs must not overlap.
class IPrintFileLibrary {
 public:
  virtual ~IPrintFileLibrary() = default;

  // Loads the library itself, once. False, with a diagnostic that names the file looked for, when
  // it is not there or lacks a function.
  virtual bool LoadLibrary() = 0;

  // Opens a print file, closing an earlier one. False, with a diagnostic, when it is refused.
  virtual bool Load(const std::string& path) = 0;
  virtual void Close() = 0;

  // What was wrong in the last call that failed, for a person.
  virtual std::string LastError() const = 0;

  // Of the open file. Empty or 0 when there is none.
  virtual std::string GetMachineID() = 0;
  virtual std::string GetProjectID() = 0;
  virtual std::string GetMaterialID() = 0;
  virtual std::string GetFileArguments() = 0;  // lines "name=value"
  virtual int GetModelDataSize() = 0;          // bytes of all data lines, without line ends

  // Replaces `line` by data line `index`, without line end. False, with a diagnostic, when there is
  // no such line or it cannot be read.
  virtual bool ReadLayer(int index, std::vector<uint8_t>& line) = 0;

  // What some printers are sent before the data lines. Replace `bytes`, which is empty when the
  // file has no such part. False, with a diagnostic, when it cannot be read.
  virtual bool GetAESkey(std::vector<uint8_t>& bytes) = 0;
  virtual bool ReadPreImg(std::vector<uint8_t>& bytes) = 0;  // a PNG
  virtual bool ReadL101(std::vector<uint8_t>& bytes) = 0;
  virtual bool ReadL102(std::vector<uint8_t>& bytes) = 0;
  virtual bool ReadL103(std::vector<uint8_t>& bytes) = 0;
};

// What the arguments (lines "name=value") and the model data of the open print file say of the job.
// Unknown names are passed over; a missing number, or a malformed fraction, is 0, which the printer
// judges. Nothing, with a diagnostic, when the layers or the minutes are not digits alone or beyond
// 31 bits: NuvFile refuses such a file, another build of it may not.
std::optional<JobOpening> OpeningOf(IPrintFileLibrary& printFiles);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_PRINT_FILE_LIBRARY_H_
