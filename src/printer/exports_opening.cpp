// Opening a printer and letting go of it.

#include <algorithm>
#include <optional>

#include "printer/finder.h"
#include "printer/query.h"
#include "printer/watch.h"

using namespace Nuv::Printer;

namespace {

OpenPrinters& Printers() { return OpenPrinters::Instance(); }

// When a search within a call is over.
Nuv::Platform::Deadline SearchEnd(const CallLimits& limits) {
  const auto usual = std::chrono::milliseconds(kUsualSearchMs);
  return std::min(limits.End(), Nuv::Platform::SystemClock().Now() + usual);
}

// Asks one address who answers there.
nuv_identity Locate(const char* address, CallLimits& limits) {
  const Wishes wishes = [&] {
    nuv_search_options options = NUV_INIT(nuv_search_options);
    options.links = NUV_LINK_NETWORK;  // another one is not even listed
    options.addresses = address;
    options.addresses_only = 1;
    return WishesOf(&options);
  }();
  if (wishes.whom.broadcast || wishes.whom.asked.size() != 1) {
    throw Failure{NUV_RESULT_INVALID_ARGUMENT, "not one address"};
  }
  const std::vector<nuv_identity> found = Find(wishes, limits, SearchEnd(limits));
  if (found.empty())
    throw Failure{NUV_RESULT_NOT_FOUND, std::string(address) + ": no printer answers"};
  return found.front();
}

template <class Where>
nuv_result Open(nuv_printer** out, const nuv_call* call, nuv_error* error, Where where) {
  if (out != nullptr) *out = nullptr;
  return Guarded(error, [&] {
    if (out == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no place for the printer"};
    CallLimits limits(call, 0, Nuv::Platform::SystemClock());
    *out = Printers().Open(where(limits), limits);
  });
}

}  // namespace

nuv_result nuv_printer_open(nuv_printer** out, const nuv_identity* printer, const nuv_call* call,
                            nuv_error* error) {
  return Open(out, call, error, [&](CallLimits&) {
    if (printer == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no printer to open"};
    return Given(printer);
  });
}

nuv_result nuv_printer_open_address(nuv_printer** out, const char* address, const nuv_call* call,
                                    nuv_error* error) {
  return Open(out, call, error, [&](CallLimits& limits) {
    if (address == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no address"};
    return Locate(address, limits);
  });
}

nuv_result nuv_printer_open_serial(nuv_printer** out, const char* serial,
                                   const nuv_search_options* options, const nuv_call* call,
                                   nuv_error* error) {
  return Open(out, call, error, [&](CallLimits& limits) {
    if (serial == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no serial number"};
    Wishes wishes = WishesOf(options);
    wishes.addressesOnly = false;
    std::optional<nuv_identity> found;
    wishes.tell = [&, tell = wishes.tell](const nuv_identity& printer) {
      if (std::string(printer.serial.text) == serial) found = printer;
      return (!tell || tell(printer)) && !found;
    };
    Find(wishes, limits, SearchEnd(limits));
    if (!found)
      throw Failure{NUV_RESULT_NOT_FOUND, std::string(serial) + ": no such printer answers"};
    return *found;
  });
}

nuv_result nuv_printer_cancel(nuv_printer* printer) {
  return Guarded(nullptr, [&] { Printers().Get(printer)->Cancel(); });
}

nuv_result nuv_printer_let_go(nuv_printer* printer) {
  return Guarded(nullptr, [&] { Printers().Get(printer)->LetGo(); });
}

void nuv_printer_free(nuv_printer* printer) {
  const std::shared_ptr<Device> device = Printers().Remove(printer);
  if (device == nullptr) return;
  device->End();
  for (const std::shared_ptr<Watch>& watch : Watches().All()) {
    if (watch->IsOn(*device)) watch->End();
  }
}
