#ifndef NUV_PRINTER_OPEN_PRINTERS_H_
#define NUV_PRINTER_OPEN_PRINTERS_H_

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "printer/device.h"
#include "printer/handles.h"

namespace Nuv::Printer {

// The printers that this process has open, each once.
//
// Thread-safety: safe.
class OpenPrinters {
 public:
  static OpenPrinters& Instance();

  // Connects to the printer and opens it. Throws Failure, also when it is open.
  nuv_printer* Open(const nuv_identity& where, CallLimits& limits);

  // Throws Failure for a handle that is none, or no longer.
  std::shared_ptr<Device> Get(const nuv_printer* handle) const;

  // The one that is open there, or null.
  std::shared_ptr<Device> At(const nuv_identity& where) const;

  // Null when there is none.
  std::shared_ptr<Device> Remove(const nuv_printer* handle);

 private:
  Handles<Device, nuv_printer> handles_;
  mutable std::mutex mutex_;
  std::map<std::string, std::weak_ptr<Device>> places_;
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_OPEN_PRINTERS_H_
