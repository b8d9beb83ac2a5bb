#include "library.h"
#include "printers.h"
#include "subcommands.h"
#include "table.h"

namespace nuvctl {
namespace {

// This model keeps its serial number and date of manufacture in a record of its own.
constexpr char kBegoModel[] = "BEGO VARSEO XS";

struct Identity {
  TextBuffer version, name, model, serial, controller, date;
};

Identity ReadIdentity() {
  Identity id;
  Check(API_GetPrinterInfo(id.version.Data(), id.name.Data(), id.model.Data(), id.serial.Data(),
                           id.controller.Data()),
        "Reading the identity");
  if (id.model.Text() != kBegoModel) return id;
  // Failed outputs come back empty, so the record goes elsewhere until it is known to be good.
  Identity bego;
  const int result =
      API_GetPrinterInfo_BEGO(bego.version.Data(), bego.name.Data(), bego.model.Data(),
                              bego.serial.Data(), bego.controller.Data(), bego.date.Data());
  return result == NUV_OK ? bego : id;
}

Report RunInfo(Context& context) {
  const Printer printer = OpenPrinter(context);
  const Identity id = ReadIdentity();
  Report report;
  report.json = {{"address", printer.address},    {"name", id.name.Text()},
                 {"model", id.model.Text()},      {"serial", id.serial.Text()},
                 {"firmware", id.version.Text()}, {"controller", id.controller.Text()},
                 {"nickname", printer.nickname}};
  std::vector<std::pair<std::string, std::string>> fields = {
      {"Address", printer.address},    {"Name", id.name.Text()},
      {"Model", id.model.Text()},      {"Serial number", id.serial.Text()},
      {"Firmware", id.version.Text()}, {"Controller", id.controller.Text()},
      {"Nickname", printer.nickname},
  };
  if (!id.date.Text().empty()) {
    report.json["manufactured"] = id.date.Text();
    fields.emplace_back("Manufactured", id.date.Text());
  }
  report.text = FormatFields(fields);
  return report;
}

}  // namespace

Action DeclareInfo(CLI::App&) { return RunInfo; }

}  // namespace nuvctl
