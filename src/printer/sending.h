#ifndef NUV_PRINTER_SENDING_H_
#define NUV_PRINTER_SENDING_H_

#include <string>

#include "job/print_job.h"
#include "printer/device.h"
#include "printer/transfer.h"
#include "printer/values.h"

namespace Nuv::Printer {

// These send with a session whose printer is idle, and fill `outcome`; each throws Failure unless
// the file was accepted, or sent where nothing can be accepted.

// The open print file; asks whether the printer has it.
void SendPrintFile(Session& session, Connect::OpenPrintFile& file,
                   Connect::IPrintFileLibrary& library, Transfer& transfer, nuv_outcome& outcome);

// A text file of printer commands.
void SendText(Session& session, const HostFile& file, Transfer& transfer, nuv_outcome& outcome);

// An image of firmware for a part (NUV_PART_...).
void SendImage(Session& session, const std::vector<uint8_t>& image, int32_t part,
               const std::string& name, Transfer& transfer, nuv_outcome& outcome);

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_SENDING_H_
