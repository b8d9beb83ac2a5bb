// Identity, state and versions.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::TextOut;
using Nuv::Api::Written;

int API_GetPrinterInfo(char* version, char* name, char* model, char* serial, char* controller) {
  return Forward(&Framework::GetPrinterInfo, TextOut{version}, TextOut{name}, TextOut{model},
                 TextOut{serial}, TextOut{controller});
}

int API_GetPrinterInfo_BEGO(char* version, char* name, char* model, char* serial, char* controller,
                            char* date) {
  return Forward(&Framework::GetPrinterInfo_BEGO, TextOut{version}, TextOut{name}, TextOut{model},
                 TextOut{serial}, TextOut{controller}, TextOut{date});
}

int API_GetPrinterStatus(int* status) { return Forward(&Framework::GetPrinterStatus, status); }

int API_GetPrinterStatusWithErrorCode(int* status, int* errorCode) {
  return Forward(&Framework::GetPrinterStatusWithErrorCode, status, errorCode);
}

int API_GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) {
  return Forward(&Framework::GetPrintingStatus, layer, progressPercent, minutesLeft);
}

int API_GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) {
  return Forward(&Framework::GetTotalLayerAndTime, totalLayers, totalMinutes);
}

int API_SkipSLAWarmup(void) { return Forward(&Framework::SkipSLAWarmup); }

int API_GetRepositionProcessing(int* processing) {
  return Forward(&Framework::GetRepositionProcessing, processing);
}

int API_GetAndroidVersion(char* out) {
  return Forward(&Framework::GetAndroidVersion, TextOut{out, Written::kOnSuccess});
}

int API_GetLCMPanelVersion(char* out) {
  return Forward(&Framework::GetLCMPanelVersion, TextOut{out, Written::kOnSuccess});
}
