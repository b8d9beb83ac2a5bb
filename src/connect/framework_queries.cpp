// One-command queries of identity, state, resin and jobs.

#include "command/decimal.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {
namespace {

// The result for a printer that refuses a resin query and names its resin state instead.
int ResinRefusal(int resinState) {
  switch (resinState) {
    case 0:
      return NUV_RESIN_NO_CARTRIDGE;
    case 1:
      return NUV_RESIN_TAG_UNREADABLE;
    case 2:
      return NUV_RESIN_EXPIRED;
    case 3:
      return NUV_RESIN_WRONG_TYPE;
    case 4:
      return NUV_RESIN_EMPTY;
    default:
      return NUV_FAILED;
  }
}

}  // namespace

int ConnectingFramework::GetPrinterInfo(std::string& version, std::string& name, std::string& model,
                                        std::string& serial, std::string& controller) {
  for (std::string* text : {&version, &name, &model, &serial, &controller}) text->clear();
  Query query = NewQuery();
  const int result = query.Run(101);
  if (result != NUV_OK) return result;
  version = query.Text("V");
  name = query.Text("N");
  model = query.Text("M");
  serial = query.Text("S");
  controller = query.Text("C");
  return NUV_OK;
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
  *status = query.Number("S");
  if (*status == NUV_PRINTER_ERROR) *errorCode = query.Number("E");
  return NUV_OK;
}

int ConnectingFramework::GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) {
  Query query = NewQuery();
  const int result = query.Run(102);
  if (result != NUV_OK) return result;
  if (query.Number("S") != NUV_PRINTER_PRINTING) return query.Fail(NUV_NOT_PRINTING);
  *layer = query.Number("L");
  *minutesLeft = query.Number("T");
  const std::string progress = query.Text("C");
  *progressPercent = Command::ParseDecimal(progress.substr(0, progress.find('%')));
  return NUV_OK;
}

int ConnectingFramework::GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) {
  *totalLayers = 0;
  *totalMinutes = 0;
  Query query = NewQuery();
  const int result = query.Run(107);
  if (result != NUV_OK) return result;
  *totalLayers = query.Number("L");
  *totalMinutes = query.Number("T");
  return NUV_OK;
}

int ConnectingFramework::GetResinInfo2(int* state, int* remaining, std::string& resinCode,
                                       int* tankVolume, std::string& lot) {
  for (int* number : {state, remaining, tankVolume}) *number = 0;
  resinCode.clear();
  lot.clear();
  Query query = NewQuery();
  const int result = query.RunQuietOnRefusal(105);
  if (result == NUV_PRINTER_REFUSED) {
    // A printer that has no resin query refuses it without naming a state.
    return query.Fail(query.Has("S") ? ResinRefusal(query.Number("S")) : result);
  }
  if (result != NUV_OK) return result;
  *state = query.Number("S");
  *remaining = query.Number("R");
  resinCode = query.Text("C");
  *tankVolume = query.Number("V");
  lot = query.Text("Q");
  return NUV_OK;
}

int ConnectingFramework::GetNickName(std::string& name) {
  name.clear();
  Query query = NewQuery();
  const int result = query.Run(197);
  // By position, not by key: a nickname may itself hold a colon.
  if (result == NUV_OK && !query.values().empty()) name = query.values().front();
  return result;
}

int ConnectingFramework::GetCurrJobIndexAndTotalSize(int* index, int* totalSize) {
  *index = 0;
  *totalSize = 0;
  Query query = NewQuery();
  const int result = query.Run(157);
  if (result != NUV_OK) return result;
  *index = query.Number("I");
  *totalSize = query.Number("S");
  return NUV_OK;
}

}  // namespace Nuv::Connect
