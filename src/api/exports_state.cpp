// Identity, state, resin, versions and features.

#include "api/marshalling.h"
#include "nuvconnect/NuvConnect5.h"

using Nuv::Api::OneString;
using Nuv::Api::Strings;
using Nuv::Api::WithFramework;
using Outs2 = std::array<char*, 2>;
using Outs4 = std::array<char*, 4>;
using Outs5 = std::array<char*, 5>;
using Outs6 = std::array<char*, 6>;

int API_GetPrinterInfo(char* version, char* name, char* model, char* serial, char* controller) {
  return Strings(
      Outs5{version, name, model, serial, controller},
      [](auto& framework, auto&... texts) { return framework.GetPrinterInfo(texts...); });
}

int API_GetPrinterInfo_BEGO(char* version, char* name, char* model, char* serial, char* controller,
                            char* date) {
  return Strings(
      Outs6{version, name, model, serial, controller, date},
      [](auto& framework, auto&... texts) { return framework.GetPrinterInfo_BEGO(texts...); });
}

int API_GetPrinterStatus(int* status) {
  return WithFramework([&](auto& framework) { return framework.GetPrinterStatus(status); });
}

int API_GetPrinterStatusWithErrorCode(int* status, int* errorCode) {
  return WithFramework(
      [&](auto& framework) { return framework.GetPrinterStatusWithErrorCode(status, errorCode); });
}

int API_GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) {
  return WithFramework([&](auto& framework) {
    return framework.GetPrintingStatus(layer, progressPercent, minutesLeft);
  });
}

int API_GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) {
  return WithFramework(
      [&](auto& framework) { return framework.GetTotalLayerAndTime(totalLayers, totalMinutes); });
}

int API_GetResinInfo2(int* state, int* remaining, char* resinCode, int* tankVolume, char* lot) {
  return Strings(Outs2{resinCode, lot}, [&](auto& framework, auto& codeText, auto& lotText) {
    return framework.GetResinInfo2(state, remaining, codeText, tankVolume, lotText);
  });
}

int API_GetResinInfo(int* state, int* remaining, char* date, char* type) {
  return Strings(Outs2{date, type}, [&](auto& framework, auto&... texts) {
    return framework.GetResinInfo(state, remaining, texts...);
  });
}

int API_GetResinInfo_BEGO(char* name, char* lot, char* expiry, char* volume) {
  return Strings(Outs4{name, lot, expiry, volume}, [](auto& framework, auto&... texts) {
    return framework.GetResinInfo_BEGO(texts...);
  });
}

int API_GetAndroidVersion(char* out) {
  return OneString(out,
                   [](auto& framework, auto& text) { return framework.GetAndroidVersion(text); });
}

int API_GetLCMPanelVersion(char* out) {
  return OneString(out,
                   [](auto& framework, auto& text) { return framework.GetLCMPanelVersion(text); });
}

int API_IsOpenModeSupported(int* supported) {
  return WithFramework([&](auto& framework) { return framework.IsOpenModeSupported(supported); });
}

int API_IsRegisteredCorrectTag(int* registered) {
  return WithFramework(
      [&](auto& framework) { return framework.IsRegisteredCorrectTag(registered); });
}

int API_GetTankType(int* type) {
  return WithFramework([&](auto& framework) { return framework.GetTankType(type); });
}
