// Identity, state, resin, versions and features. docs/protocol.md has the replies.

#include "command/commands.h"
#include "command/decimal.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int ConnectingFramework::GetPrinterInfo(std::string& version, std::string& name, std::string& model,
                                        std::string& serial, std::string& controller) {
  return NewQuery().Read(
      101, {},
      {{}, {{"V", &version}, {"N", &name}, {"M", &model}, {"S", &serial}, {"C", &controller}}});
}

int ConnectingFramework::GetPrinterInfo_BEGO(std::string& version, std::string& name,
                                             std::string& model, std::string& serial,
                                             std::string& controller, std::string& date) {
  return NewQuery().ReadDirect<Command::F354Cmd>({{},
                                                  {{"V", &version},
                                                   {"N", &name},
                                                   {"M", &model},
                                                   {"S", &serial},
                                                   {"C", &controller},
                                                   {"D", &date}}});
}

int ConnectingFramework::GetPrinterStatus(int* status) {
  *status = -1;
  Query query = NewQuery();
  const int result = query.Run(102);
  if (result == NUV_OK) *status = query.Number("S");
  return result;
}

int ConnectingFramework::GetPrinterStatusWithErrorCode(int* status, int* errorCode) {
  *status = -1;
  Query query = NewQuery();
  const int result = query.Run(102);
  if (result != NUV_OK) return result;
  const int state = query.Number("S");
  if (state == NUV_PRINTER_ERROR) *errorCode = query.Number("E");
  *status = state;
  return NUV_OK;
}

int ConnectingFramework::GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) {
  Query query = NewQuery();
  const int result = query.Run(102);
  if (result != NUV_OK) return result;
  if (query.Number("S") != NUV_PRINTER_PRINTING) return query.Fail(NUV_NOT_PRINTING);
  // All are read before the first is written: one that is malformed throws.
  const int layerNumber = query.Number("L");
  const int minutes = query.Number("T");
  const std::string progress = query.Text("C");
  *progressPercent = Command::ParseDecimal(progress.substr(0, progress.find('%')), query.code());
  *layer = layerNumber;
  *minutesLeft = minutes;
  return NUV_OK;
}

int ConnectingFramework::GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) {
  return NewQuery().Read(107, {}, {{{"L", totalLayers}, {"T", totalMinutes}}, {}});
}

int ConnectingFramework::GetResinInfo(int* state, int* remaining, std::string& date,
                                      std::string& type) {
  return NewQuery().ReadResin(120,
                              {{{"S", state}, {"R", remaining}}, {{"D", &date}, {"T", &type}}});
}

int ConnectingFramework::GetResinInfo2(int* state, int* remaining, std::string& resinCode,
                                       int* tankVolume, std::string& lot) {
  return NewQuery().ReadResin(
      105, {{{"S", state}, {"R", remaining}, {"V", tankVolume}}, {{"C", &resinCode}, {"Q", &lot}}});
}

int ConnectingFramework::GetResinInfo_BEGO(std::string& name, std::string& lot, std::string& expiry,
                                           std::string& volume) {
  return NewQuery().ReadDirect<Command::F356Cmd>(
      {{}, {{"N", &name}, {"L", &lot}, {"D", &expiry}, {"V", &volume}}});
}

int ConnectingFramework::GetAndroidVersion(std::string& version) {
  return NewQuery().Read(310, {}, {{}, {{"V", &version}}});
}

int ConnectingFramework::GetLCMPanelVersion(std::string& version) {
  return NewQuery().Read(504, {"0"}, {{}, {{"V", &version}}});
}

int ConnectingFramework::IsOpenModeSupported(int* supported) {
  return NewQuery().Read(335, {}, {{{"S", supported}}, {}});
}

int ConnectingFramework::IsRegisteredCorrectTag(int* registered) {
  *registered = 0;
  const int result = NewQuery().Run(219);
  if (result == NUV_OK) *registered = 1;
  return result;
}

}  // namespace Nuv::Connect
