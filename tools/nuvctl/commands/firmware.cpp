#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>

#include "commands/commands.h"
#include "error.h"
#include "format.h"
#include "library.h"
#include "printer.h"
#include "transfer.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

constexpr unsigned kBoardImage = 1;  // the kind of image that the Android board is told

int AnnounceEngine(unsigned bytes, const char* name) {
  return API_SetFWUpdateFileInfo_Engine(bytes, name);
}
int AnnounceAndroid(unsigned bytes, const char* name) {
  return API_SetFWUpdateFileInfo_Android(kBoardImage, bytes, name);
}
int AnnouncePanel(unsigned, const char* name) { return API_StartFWUpdateFileInfo_LCM(name); }

// An engine confirms an update in no way. Whether it still answers can be seen at least.
void FinishEngine(Context& context, Report& report) {
  constexpr int kAttempts = 20;
  constexpr int64_t kPatienceMs = 30000;
  const int64_t until = context.system.NowMs() + kPatienceMs;
  std::optional<Identity> identity;
  // One question to a printer that stays silent can take longer than all the attempts together.
  const auto answersOrTimeIsUp = [&] {
    try {
      identity = ReadIdentity();
    } catch (const CommandError&) {
      // A printer that restarts has closed the connection.
      API_NUVCONNECT_OpenDevice();
    }
    return identity.has_value() || context.system.NowMs() >= until;
  };
  WaitFor(context.system, kAttempts, answersOrTimeIsUp);
  if (!identity) {
    throw CommandError("update_unconfirmed", kConnectionProblem,
                       "Everything was sent, but the printer does not answer since",
                       "It may be restarting: run 'nuvctl info' in a minute, and look at its "
                       "panel before switching it off.");
  }
  report.json["firmware"] = identity->firmware;
  report.text +=
      "The printer confirms engine images in no way. It answers, with firmware version " +
      Printable(identity->firmware) + ".\n";
}

// An order that the printer did not answer may have been carried out all the same.
CommandError NotEnded(const CommandError& cause) {
  const bool refused = cause.result == NUV_PRINTER_REFUSED;
  CommandError error(refused ? "update_failed" : "update_unconfirmed", cause.exit,
                     (refused ? "The printer did not take the update: "
                              : "Whether the printer took the update is not known: ") +
                         cause.message,
                     refused ? "It keeps its old firmware; try again."
                             : "Look at its panel before switching it off, then try again.");
  error.result = cause.result;
  return error;
}

void FinishAndroid(Context&, Report& report) {
  Check(API_StartFWUpgradeProcess(), "Starting the upgrade");
  report.text += "The printer has it whole and upgrades; leave it on until it is done.\n";
}

void FinishPanel(Context&, Report& report) {
  TextBuffer answer;
  Check(API_FinishFWUpdateFileInfo_LCM(answer.Data()), "Ending the update");
  report.json["answer"] = answer.Text();
  report.text += "The printer answers: " + Printable(answer.Text()) + ".\n";
}

struct KindRow {
  const char* name;
  const char* part;
  uint64_t bytes;  // of every image; 0: they differ
  int (*announce)(unsigned bytes, const char* name);
  int (*send)(const unsigned char* data, int length);
  void (*finish)(Context& context, Report& report);
  const char* result;  // when all went well
};

constexpr KindRow kKinds[] = {
    {"engine", "engine", 0, AnnounceEngine, API_SendFWData, FinishEngine, "sent"},
    {"android", "Android board", 0, AnnounceAndroid, API_SendFWDataAndroid, FinishAndroid,
     "accepted"},
    {"panel", "LCM panel", NUV_PANEL_IMAGE_BYTES, AnnouncePanel, API_SendFWPanelData, FinishPanel,
     "accepted"},
};

struct FirmwareImage {
  std::string file;  // as the user gave it
  std::string name;  // without folders, for the printer
  std::vector<unsigned char> bytes;
};

// The library counts bytes in an int.
constexpr uint64_t kLargestBytes = std::numeric_limits<int>::max();

CommandError Unfit(const std::string& message) {
  return CommandError("wrong_size", kFileProblem, message + ", so nothing was sent",
                      "Check that it is the image that the maker gave for this part.");
}

void RequireSize(const KindRow& row, const std::string& file, uint64_t bytes) {
  if (bytes == 0) throw Unfit("The file " + file + " is empty");
  if (row.bytes != 0 && bytes != row.bytes) {
    throw Unfit("An image of the " + std::string(row.part) + " has exactly " +
                std::to_string(row.bytes) + " bytes, but " + file + " has " +
                std::to_string(bytes));
  }
  if (bytes > kLargestBytes) {
    throw Unfit("The file " + file + " has " + FormatBytes(static_cast<int64_t>(bytes)) +
                ", more than any image");
  }
}

// Throws CommandError when the file cannot be read or its size is not that of such an image.
FirmwareImage ReadFirmwareImage(const KindRow& row, const std::string& file) {
  RequireFile(file);
  const std::filesystem::path path = std::filesystem::u8path(file);
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  std::ifstream stream(path, std::ios::binary);
  FirmwareImage image;
  image.file = file;
  image.name = path.filename().u8string();
  if (!error) {
    RequireSize(row, file, size);
    image.bytes.resize(static_cast<size_t>(size));
    stream.read(reinterpret_cast<char*>(image.bytes.data()),
                static_cast<std::streamsize>(image.bytes.size()));
  }
  if (error || !stream) {
    throw CommandError("file_not_readable", kFileProblem, "The file " + file + " cannot be read",
                       "Check that it is a file and that no other program writes to it.");
  }
  return image;
}

struct FirmwareOptions {
  std::string kind;
  std::string file;
  bool yes = false;
};

void RequireSomebodyToAsk(const Context& context, bool yes) {
  if (yes || context.system.InputIsTerminal()) return;
  throw CommandError("usage", kUsage, "A firmware update is confirmed at a terminal",
                     "Give --yes to update without being asked.");
}

void AskForConsent(const Context& context, const KindRow& row, const FirmwareImage& image,
                   const Printer& printer) {
  const std::optional<std::string> answer = context.system.Ask(
      "Update the " + std::string(row.part) + " of " + Printable(printer.Name()) + " (" +
      Printable(printer.model) + ") with " + Printable(image.file) + ", " +
      FormatBytes(static_cast<int64_t>(image.bytes.size())) +
      "?\nThe printer must stay on until it is done. [y/N] ");
  if (answer && !answer->empty() && (answer->front() == 'y' || answer->front() == 'Y')) return;
  throw CommandError("cancelled", kCancelled, "Not updated", "Answer y to update.");
}

Transfer SendImage(const Context& context, const KindRow& row, const FirmwareImage& image) {
  const int length = static_cast<int>(image.bytes.size());
  CheckOrder(row.announce(static_cast<unsigned>(length), image.name.c_str()),
             "Announcing the image",
             "Not every model has this part, and none takes an image while it works; 'nuvctl info' "
             "and 'nuvctl status' show which one this is and what it does.");
  Transfer transfer = RunTransfer(context.output, context.system,
                                  [&] { return row.send(image.bytes.data(), length); });
  if (transfer.result == NUV_CANCELLED) {
    transfer.cancelled = true;
    transfer.result = NUV_OK;
  }
  RequireSent(context.output, image.file, transfer, [] {
    return std::string("The printer keeps its old firmware; run the command again for a new try.");
  });
  return transfer;
}

Report RunFirmware(Context& context, const FirmwareOptions& options) {
  const KindRow& row =
      *std::find_if(std::begin(kKinds), std::end(kKinds),
                    [&](const KindRow& each) { return options.kind == each.name; });
  const FirmwareImage image = ReadFirmwareImage(row, options.file);
  RequireSomebodyToAsk(context, options.yes);
  const Printer printer = OpenPrinter(context.choice);
  RequireReady();
  if (!options.yes) AskForConsent(context, row, image, printer);
  const Transfer transfer = SendImage(context, row, image);
  Report report;
  report.json = TransferJson(image.file, transfer, row.result);
  report.json["kind"] = row.name;
  report.text = "Sent " + Printable(image.file) + ": " + TransferText(transfer) + ".\n";
  const auto unconfirmed = [&](CommandError error) {
    error.shown.json = TransferJson(image.file, transfer, "not_confirmed");
    return error;
  };
  try {
    row.finish(context, report);
  } catch (const CommandError& error) {
    throw unconfirmed(error.code == "update_unconfirmed" ? error : NotEnded(error));
  } catch (const std::logic_error& error) {
    throw unconfirmed(NotEnded(
        CommandError("bad_reply", kPrinterFailed,
                     std::string("its reply cannot be understood (") + error.what() + ")", "")));
  }
  return report;
}

Action DeclareFirmware(CLI::App& app) {
  const auto options = std::make_shared<FirmwareOptions>();
  std::vector<std::string> names;
  for (const KindRow& row : kKinds) names.emplace_back(row.name);
  app.add_option("KIND", options->kind, "engine, android or panel")
      ->required()
      ->type_name("")
      ->check(CLI::IsMember(names).description(""));
  app.add_option("FILE", options->file, "The image")->required()->type_name("");
  app.add_flag("--yes", options->yes, "Do not ask before starting");
  return [options](Context& context) { return RunFirmware(context, *options); };
}

}  // namespace

Subcommands FirmwareCommands() {
  return {{"firmware", "Update the firmware of the engine, the Android board or the LCM panel",
           "nuvctl firmware panel panel.bin", DeclareFirmware}};
}

}  // namespace NuvCtl
