// Jobs, job history, firmware and callbacks.

#include <algorithm>

#include "api/marshalling.h"
#include "nuvconnect/NuvConnect5.h"

using Nuv::Api::Bytes;
using Nuv::Api::Guarded;
using Nuv::Api::OneString;
using Nuv::Api::Strings;
using Nuv::Api::WithFramework;
using Outs2 = std::array<char*, 2>;
using Outs3 = std::array<char*, 3>;

int API_SendPrintFile(const wchar_t* path, NuvJobProgressCallback progress) {
  return WithFramework(
      [&](auto& framework) { return framework.SendPrintFile(std::wstring(path), progress); });
}

int API_SendGCodeFile(const wchar_t* path, NuvJobProgressCallback progress) {
  return WithFramework(
      [&](auto& framework) { return framework.SendGCodeFile(std::wstring(path), progress); });
}

int API_RegisterPrintingInfoCallback(NuvPrintingInfoCallback callback, unsigned int intervalMs) {
  return WithFramework([&](auto& framework) {
    return framework.RegisterPrintingInfoCallback(callback, intervalMs);
  });
}

int API_RegisterErrorCodeCallback(NuvErrorCodeCallback callback) {
  return WithFramework([&](auto& framework) {
    g_errorCode = callback;
    return framework.RegisterErrorCodeCallback(callback);
  });
}

int API_RegisterSendDataStartCallback(NuvSendDataStartCallback callback) {
  return WithFramework(
      [&](auto& framework) { return framework.RegisterSendDataStartCallback(callback); });
}

int API_RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback callback) {
  return WithFramework(
      [&](auto& framework) { return framework.RegisterSendDataUpdateCallback(callback); });
}

int API_RegisterSendDataCancelCallback(NuvSendDataCancelCallback callback) {
  return WithFramework(
      [&](auto& framework) { return framework.RegisterSendDataCancelCallback(callback); });
}

int API_GetLastUpdatedIndex(int* index) {
  return WithFramework([&](auto& framework) { return framework.GetLastUpdatedIndex(index); });
}

int API_SetLastUpdatedIndex(int index) {
  return WithFramework([&](auto& framework) { return framework.SetLastUpdatedIndex(index); });
}

int API_GetCurrJobIndexAndTotalSize(int* index, int* totalSize) {
  return WithFramework(
      [&](auto& framework) { return framework.GetCurrJobIndexAndTotalSize(index, totalSize); });
}

int API_GetJobInfo1(int jobIndex, char* jobName, char* resinCode, char* startTime) {
  return Strings(Outs3{jobName, resinCode, startTime}, [&](auto& framework, auto&... texts) {
    return framework.GetJobInfo1(jobIndex, texts...);
  });
}

int API_GetJobInfo2(int jobIndex, int* layers, int* minutes, int* resinVolume, int* result) {
  return WithFramework([&](auto& framework) {
    return framework.GetJobInfo2(jobIndex, layers, minutes, resinVolume, result);
  });
}

int API_GetJobInfo3(int jobIndex, int* layerThickness, int* exposureTime, int* bottomExposureTime,
                    int* laserPower) {
  return WithFramework([&](auto& framework) {
    return framework.GetJobInfo3(jobIndex, layerThickness, exposureTime, bottomExposureTime,
                                 laserPower);
  });
}

int API_GetJobInfo4(int jobIndex, char* endTime, char* lot) {
  return Strings(Outs2{endTime, lot}, [&](auto& framework, auto&... texts) {
    return framework.GetJobInfo4(jobIndex, texts...);
  });
}

int API_GetJobCounter(int kind, int* started, int* finished, int* cancelled, int* failed) {
  return WithFramework([&](auto& framework) {
    return framework.GetJobCounter(kind, started, finished, cancelled, failed);
  });
}

int API_SetFWUpdateFileInfo_Engine(unsigned int size, const char* path) {
  return WithFramework([&](auto& framework) {
    return framework.SetFWUpdateFileInfo_Engine(size, std::string(path));
  });
}

int API_SetFWUpdateFileInfo_Android(unsigned int kind, unsigned int size, const char* path) {
  return Guarded([&] {
    const std::string name(path);
    return WithFramework(
        [&](auto& framework) { return framework.SetFWUpdateFileInfo_Android(kind, size, name); });
  });
}

int API_StartFWUpdateFileInfo_LCM(const char* path) {
  return WithFramework(
      [&](auto& framework) { return framework.StartFWUpdateFileInfo_LCM(std::string(path)); });
}

int API_SendFWData(const unsigned char* data, int length) {
  return WithFramework([&](auto& framework) { return framework.SendFWData(Bytes(data, length)); });
}

int API_SendFWDataAndroid(const unsigned char* data, int length) {
  return WithFramework(
      [&](auto& framework) { return framework.SendFWDataAndroid(Bytes(data, length)); });
}

int API_SendFWPanelData(const unsigned char* data, int length) {
  // The host promises no more than the image of a panel, whatever length it gives.
  const int image = std::min(length, NUV_PANEL_IMAGE_BYTES);
  return WithFramework(
      [&](auto& framework) { return framework.SendFWPanelData(Bytes(data, image)); });
}

int API_FinishFWUpdateFileInfo_LCM(char* out) {
  return OneString(
      out, [](auto& framework, auto& text) { return framework.FinishFWUpdateFileInfo_LCM(text); });
}

int API_StartFWUpgradeProcess(void) {
  return WithFramework([](auto& framework) { return framework.StartFWUpgradeProcess(); });
}
