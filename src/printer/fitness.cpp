#include "printer/fitness.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "job/machine_ids.h"
#include "nuvconnect/NuvConnect5.h"
#include "printer/asking.h"
#include "printer/query.h"

namespace Nuv::Printer {

using Connect::FamilyOf;
using Connect::FamilyOfModel;
using Connect::NameOf;
using Connect::PrinterFamily;

void Findings::Add(int32_t finding, const std::string& words) {
  all_ |= finding;
  if (!words_.empty()) words_ += "; ";
  words_ += words;
}

bool Findings::FitWith(int32_t accepted) const {
  constexpr int32_t kNever =
      NUV_FINDING_FILE_DAMAGED | NUV_FINDING_PRINTER_NOT_IDLE | NUV_FINDING_IMAGE_WRONG_SIZE;
  return (all_ & ~(accepted & ~kNever)) == 0;
}

// ---- Print files

void LookAtFile(const HostFile& file, Connect::OpenPrintFile& open,
                Connect::IPrintFileLibrary& library, nuv_check& check, Findings& findings) {
  switch (open.Open(file.path)) {
    case NUV_OK:
      break;
    case NUV_FAILED:
      throw Failure{NUV_RESULT_BUSY, file.name + ": this program sends or checks a print job"};
    case NUV_NUVFILE_MISSING:
      throw Failure{NUV_RESULT_SYSTEM, "the print-file library NuvFile cannot be loaded"};
    default:
      if (open.Damage().empty()) {
        throw Failure{NUV_RESULT_BAD_FILE, file.name + ": cannot be opened"};
      }
      findings.Add(NUV_FINDING_FILE_DAMAGED, file.name + " is damaged: " + open.Damage());
      return;
  }
  const std::string machine = library.GetMachineID();
  const PrinterFamily family = FamilyOf(machine);
  const std::optional<Connect::JobOpening> job = OpeningOf(library);
  if (family == PrinterFamily::kUnknown || !job) {
    throw Failure{NUV_RESULT_BAD_FILE,
                  file.name + (job ? " is for no printer that is known here: machine ID " + machine
                                   : ": its arguments are none of a job")};
  }
  check.machine_id = Text(machine);
  check.machine_family = Text(NameOf(family));
  if (job->resinMl > 0) check.resin_needed_ml = Known(static_cast<int>(std::ceil(job->resinMl)));
  check.layers = Known(job->layers);
  check.minutes = Known(job->printMinutes);
  check.bytes = job->dataBytes;
}

void LookAtPrinter(Session& session, nuv_check& check, Findings& findings) {
  LookAtState(session, findings);
  if (const auto identity = session.Try(101)) Take(*identity, {{"M", &check.printer_model}});
  const std::string model = check.printer_model.text;
  const PrinterFamily family = FamilyOfModel(model);
  if (family != PrinterFamily::kUnknown && check.machine_id.flags != 0 &&
      family != FamilyOf(check.machine_id.text)) {
    findings.Add(NUV_FINDING_OTHER_MODEL, std::string("the file is for ") +
                                              check.machine_family.text +
                                              " printers, this one is a " + model);
  }
  nuv_resin resin = NUV_INIT(nuv_resin);
  try {
    AskResin(session, resin);
  } catch (const Failure& failure) {
    if (failure.result != NUV_RESULT_REFUSED) throw;  // it tells nothing of its resin
  }
  if (resin.state.value != NUV_RESIN_STATE_READY) {
    findings.Add(NUV_FINDING_RESIN_FORBIDS, WordsForResin(resin.state.value));
  }
  check.resin_left_ml = resin.remaining_ml;
  const nuv_int& needed = check.resin_needed_ml;
  if (needed.known != 0 && resin.remaining_ml.known != 0 &&
      resin.remaining_ml.value < needed.value) {
    findings.Add(NUV_FINDING_RESIN_TOO_LITTLE,
                 "the job needs " + std::to_string(needed.value) + " ml of resin, " +
                     std::to_string(resin.remaining_ml.value) + " ml are left");
  }
}

void LookAtState(Session& session, Findings& findings) {
  nuv_state state = NUV_INIT(nuv_state);
  AskState(session, state);
  switch (state.state.value) {
    case NUV_STATE_IDLE:
      return;
    case NUV_STATE_PRINTING:
      return findings.Add(NUV_FINDING_PRINTER_NOT_IDLE, "the printer is printing");
    case NUV_STATE_RECEIVING:
      return findings.Add(NUV_FINDING_PRINTER_NOT_IDLE,
                          "the printer receives a job, or waits for the rest of one");
    case NUV_STATE_ERROR:
      return findings.Add(NUV_FINDING_PRINTER_NOT_IDLE,
                          "the printer is in error " + std::to_string(state.error_number.value));
    default:
      return findings.Add(NUV_FINDING_PRINTER_NOT_IDLE,
                          "the printer is in state " + std::to_string(state.state.value));
  }
}

// ---- Firmware

namespace {

struct Signature {
  const char* what;
  size_t offset;
  std::string bytes;
  bool archive = false;
};

// Firmware of the Android board is an archive itself.
const Signature* SignatureOf(const std::vector<uint8_t>& image, bool archives) {
  static const Signature kSignatures[] = {
      {"a print file", 0, "\x89NUV"},
      {"a PNG picture", 0, "\x89PNG"},
      {"a JPEG picture", 0, "\xFF\xD8\xFF"},
      {"a GIF picture", 0, "GIF8"},
      {"a PDF document", 0, "%PDF"},
      {"a ZIP archive", 0, "PK\x03\x04", true},
      {"a gzip archive", 0, "\x1F\x8B", true},
      {"an xz archive", 0,
       "\xFD"
       "7zXZ",
       true},
      {"a bzip2 archive", 0, "BZh", true},
      {"a 7-Zip archive", 0, "7z\xBC\xAF", true},
      {"a RAR archive", 0, "Rar!", true},
      {"a tar archive", 257, "ustar", true},
  };
  for (const Signature& one : kSignatures) {
    if (one.archive && !archives) continue;
    if (image.size() >= one.offset + one.bytes.size() &&
        std::equal(one.bytes.begin(), one.bytes.end(),
                   image.begin() + static_cast<ptrdiff_t>(one.offset),
                   [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; })) {
      return &one;
    }
  }
  return nullptr;
}

// Characters and white space only.
bool IsText(const std::vector<uint8_t>& image) {
  const auto isControl = [](uint8_t byte) { return byte < ' ' && (byte < '\t' || byte > '\r'); };
  return std::none_of(image.begin(), image.end(), isControl) &&
         (Text({image.begin(), image.end()}).flags & NUV_TEXT_REPAIRED) == 0;
}

// Each line of an Intel HEX image begins with a colon, of S-records with an S and a digit.
bool IsImageText(const std::vector<uint8_t>& image) {
  return image[0] == ':' ||
         (image.size() > 1 && image[0] == 'S' && image[1] >= '0' && image[1] <= '9');
}

}  // namespace

void LookAtImage(const std::vector<uint8_t>& image, int32_t part, const std::string& name,
                 Findings& findings) {
  if (image.empty()) return findings.Add(NUV_FINDING_NO_IMAGE, name + " is empty");
  const Signature* const signature = SignatureOf(image, part == NUV_PART_ENGINE);
  if (signature != nullptr) {
    findings.Add(NUV_FINDING_NO_IMAGE, name + " is " + signature->what);
  } else if (IsText(image) && !IsImageText(image)) {
    findings.Add(NUV_FINDING_NO_IMAGE, name + " is a text");
  }
  if (part == NUV_PART_LCM_PANEL && image.size() != NUV_PANEL_IMAGE_BYTES) {
    findings.Add(NUV_FINDING_IMAGE_WRONG_SIZE,
                 "a panel image has " + std::to_string(NUV_PANEL_IMAGE_BYTES) + " bytes, " + name +
                     " has " + std::to_string(image.size()));
  }
}

}  // namespace Nuv::Printer
