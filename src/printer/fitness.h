// Whether a file should be sent to a printer.
#ifndef NUV_PRINTER_FITNESS_H_
#define NUV_PRINTER_FITNESS_H_

#include <string>
#include <vector>

#include "job/print_job.h"
#include "printer/device.h"
#include "printer/values.h"

namespace Nuv::Printer {

// What speaks against it.
class Findings {
 public:
  // `finding`: NUV_FINDING_...; `words`: for a person.
  void Add(int32_t finding, const std::string& words);

  int32_t All() const { return all_; }
  std::string Words() const { return words_; }

  // Whether nothing is left when a person has accepted these.
  bool FitWith(int32_t accepted) const;

 private:
  int32_t all_ = 0;
  std::string words_;
};

// Opens a print file and tells what it is; a damaged one is a finding. Throws Failure when it
// cannot be opened, is for no printer that we know, or another one is open in this process.
void LookAtFile(const HostFile& file, Connect::OpenPrintFile& open,
                Connect::IPrintFileLibrary& library, nuv_check& check, Findings& findings);

// Compares the file that `check` tells of with the printer. Throws Failure.
void LookAtPrinter(Session& session, nuv_check& check, Findings& findings);

// That the printer is idle. Throws Failure.
void LookAtState(Session& session, Findings& findings);

// That an image may be one of that part (NUV_PART_...).
void LookAtImage(const std::vector<uint8_t>& image, int32_t part, const std::string& name,
                 Findings& findings);

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_FITNESS_H_
