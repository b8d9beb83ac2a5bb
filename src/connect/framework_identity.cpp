// Identity, state and versions. docs/protocol.md has the replies.

#include "command/commands.h"
#include "command/reply_views.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int ConnectingFramework::GetPrinterInfo(std::string& version, std::string& name, std::string& model,
                                        std::string& serial, std::string& controller) {
  return Commands().Read(
      101, {}, {{"V", &version}, {"N", &name}, {"M", &model}, {"S", &serial}, {"C", &controller}});
}

int ConnectingFramework::GetPrinterInfo_BEGO(std::string& version, std::string& name,
                                             std::string& model, std::string& serial,
                                             std::string& controller, std::string& date) {
  return Commands().Read<Command::F354Cmd>({{"V", &version},
                                            {"N", &name},
                                            {"M", &model},
                                            {"S", &serial},
                                            {"C", &controller},
                                            {"D", &date}});
}

int ConnectingFramework::GetPrinterStatus(int* status) {
  *status = -1;
  const Outcome outcome = Commands().Run(102);
  if (outcome.result == NUV_OK) *status = outcome.Number("S");
  return outcome.result;
}

int ConnectingFramework::GetPrinterStatusWithErrorCode(int* status, int* errorCode) {
  *status = -1;
  const Outcome outcome = Commands().Run(102);
  if (outcome.result != NUV_OK) return outcome.result;
  const int state = outcome.Number("S");
  if (state == NUV_PRINTER_ERROR) *errorCode = outcome.Number("E");
  *status = state;
  return NUV_OK;
}

int ConnectingFramework::GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) {
  const Outcome outcome = Commands().Run(102);
  if (outcome.result != NUV_OK) return outcome.result;
  if (outcome.Number("S") != NUV_PRINTER_PRINTING) return Fail(NUV_NOT_PRINTING, outcome.code);
  // All are read before the first is written: one that is malformed throws.
  const int layerNumber = outcome.Number("L");
  const int minutes = outcome.Number("T");
  const std::string progress = outcome.Text("C");
  *progressPercent = Command::ParseDecimal(progress.substr(0, progress.find('%')), outcome.code);
  *layer = layerNumber;
  *minutesLeft = minutes;
  return NUV_OK;
}

int ConnectingFramework::GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) {
  return Commands().Read(107, {}, {{"L", totalLayers}, {"T", totalMinutes}});
}

int ConnectingFramework::SkipSLAWarmup() { return Commands().Run(112).result; }

int ConnectingFramework::GetRepositionProcessing(int* processing) {
  return Commands().Read(515, {}, {{"R", processing}});
}

int ConnectingFramework::GetAndroidVersion(std::string& version) {
  return Commands().Read(310, {}, {{"V", &version}});
}

int ConnectingFramework::GetLCMPanelVersion(std::string& version) {
  return Commands().Read(504, {"0"}, {{"V", &version}});
}

}  // namespace Nuv::Connect
