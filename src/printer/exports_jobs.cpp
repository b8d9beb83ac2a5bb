// Print jobs, command text and firmware.

#include "job/nuv_file_library.h"
#include "platform/files.h"
#include "printer/fitness.h"
#include "printer/query.h"
#include "printer/sending.h"

using namespace Nuv::Printer;

namespace {

namespace Platform = Nuv::Platform;

// One transfer: what it goes to, how long it may last, and what becomes of it.
struct Errand {
  const std::shared_ptr<Device> device;
  CallLimits limits;
  Transfer transfer;
  nuv_outcome& outcome;

  Errand(const nuv_printer* printer, const nuv_send_options* options, const nuv_call* call,
         nuv_outcome& fills)
      : device(OpenPrinters::Instance().Get(printer)),
        limits(call, 0, Platform::SystemClock()),
        transfer(options, limits, Platform::SystemClock()),
        outcome(fills) {}

  // Throws Failure when there are findings that nobody has accepted.
  void RequireFit(const Findings& findings, const std::string& name) const {
    outcome.findings = findings.All();
    if (findings.FitWith(transfer.Options().accept)) return;
    outcome.outcome = NUV_OUTCOME_NOT_FIT;
    throw Failure{NUV_RESULT_NOT_FIT, name + ": " + findings.Words()};
  }
};

// Runs `body`, whose outcome is handed out whatever becomes of it.
template <class Body>
nuv_result Run(nuv_outcome* out, nuv_error* error, const nuv_printer* printer,
               const nuv_send_options* options, const nuv_call* call, Body body) {
  return Guarded(error, [&] {
    Prepare(out);
    nuv_outcome outcome = NUV_INIT(nuv_outcome);
    try {
      Errand errand(printer, options, call, outcome);
      errand.transfer.Enter(NUV_STAGE_CHECKING);
      body(errand);
    } catch (const Failure& failure) {
      if (failure.result == NUV_RESULT_REFUSED) outcome.outcome = NUV_OUTCOME_REFUSED;
      outcome.message = Text(failure.message);
      HandOut(outcome, out);
      throw;
    }
    HandOut(outcome, out);
  });
}

// A print file that is open, and what is found.
struct OpenedFile {
  explicit OpenedFile(const HostFile& file) { LookAtFile(file, open, library, check, findings); }

  void SendOver(Session& session, Errand& errand) {
    SendPrintFile(session, open, library, errand.transfer, errand.outcome);
  }

  Nuv::Connect::NuvFileLibrary library;
  Nuv::Connect::OpenPrintFile open{library};
  nuv_check check = NUV_INIT(nuv_check);
  Findings findings;
};

// The whole file. Throws Failure when it cannot be read, or is larger than any image.
std::vector<uint8_t> ReadImage(const HostFile& file) {
  const std::optional<std::string> path = Platform::NarrowPath(file.path);
  std::vector<uint8_t> image;
  if (path) {
    Platform::RegularFile source(*path);
    std::vector<char> chunk(Platform::kFileChunkBytes);
    int64_t count = source.IsOpen() ? 0 : -1;
    while (count >= 0 && image.size() <= size_t{INT32_MAX} &&
           (count = source.Read(chunk.data(), chunk.size())) > 0) {
      image.insert(image.end(), chunk.begin(), chunk.begin() + count);
    }
    if (count == 0) return image;
  }
  throw Failure{NUV_RESULT_BAD_FILE, file.name + ": cannot be read, or is larger than any image"};
}

}  // namespace

nuv_result nuv_printer_check(nuv_check* out, nuv_printer* printer, const char* path,
                             const nuv_call* call, nuv_error* error) {
  return Guarded(error, [&] {
    Prepare(out);
    const auto device = printer == nullptr ? nullptr : OpenPrinters::Instance().Get(printer);
    CallLimits limits(call, 0, Platform::SystemClock());
    const HostFile file = FileOf(path);
    OpenedFile opened(file);
    if (device != nullptr) {
      Session session(device, limits);
      LookAtPrinter(session, opened.check, opened.findings);
    }
    opened.check.findings = opened.findings.All();
    if (opened.findings.All() != 0) {
      opened.check.message = Text(file.name + ": " + opened.findings.Words());
    }
    HandOut(opened.check, out);
  });
}

nuv_result nuv_printer_send(nuv_outcome* out, nuv_printer* printer, const char* path,
                            const nuv_send_options* options, const nuv_call* call,
                            nuv_error* error) {
  return Run(out, error, printer, options, call, [&](Errand& errand) {
    const HostFile file = FileOf(path);
    OpenedFile opened(file);
    Session session(errand.device, errand.limits);
    LookAtPrinter(session, opened.check, opened.findings);
    errand.RequireFit(opened.findings, file.name);
    opened.SendOver(session, errand);
  });
}

nuv_result nuv_printer_send_text(nuv_outcome* out, nuv_printer* printer, const char* path,
                                 const nuv_send_options* options, const nuv_call* call,
                                 nuv_error* error) {
  return Run(out, error, printer, options, call, [&](Errand& errand) {
    const HostFile file = FileOf(path);
    Findings findings;
    Session session(errand.device, errand.limits);
    LookAtState(session, findings);
    errand.RequireFit(findings, file.name);
    SendText(session, file, errand.transfer, errand.outcome);
  });
}

nuv_result nuv_printer_update(nuv_outcome* out, nuv_printer* printer, int32_t part,
                              const char* path, const nuv_send_options* options,
                              const nuv_call* call, nuv_error* error) {
  return Run(out, error, printer, options, call, [&](Errand& errand) {
    if (part < NUV_PART_ENGINE || part > NUV_PART_LCM_PANEL) {
      throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no part that has firmware"};
    }
    const HostFile file = FileOf(path);
    const std::vector<uint8_t> image = ReadImage(file);
    Findings findings;
    LookAtImage(image, part, file.name, findings);
    Session session(errand.device, errand.limits);
    LookAtState(session, findings);
    errand.RequireFit(findings, file.name);
    SendImage(session, image, part, file.name, errand.transfer, errand.outcome);
  });
}

nuv_result nuv_printer_abandon_job(nuv_printer* printer, const nuv_call* call, nuv_error* error) {
  return OnPrinter(error, printer, call, [](Session& session) { session.Run(104, {"2"}); });
}
