// Firmware.

#include <algorithm>

#include "api/marshalling.h"

using Nuv::Api::Bytes;
using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::Guarded;
using Nuv::Api::TextOut;
using Nuv::Api::Written;

int API_SetFWUpdateFileInfo_Engine(unsigned int size, const char* path) {
  return Forward(&Framework::SetFWUpdateFileInfo_Engine, size, path);
}

int API_SetFWUpdateFileInfo_Android(unsigned int kind, unsigned int size, const char* path) {
  // The name is read also where there is no framework.
  return Guarded([&] {
    const std::string name(path);
    return Forward(&Framework::SetFWUpdateFileInfo_Android, kind, size, name);
  });
}

int API_StartFWUpdateFileInfo_LCM(const char* path) {
  return Forward(&Framework::StartFWUpdateFileInfo_LCM, path);
}

int API_SendFWData(const unsigned char* data, int length) {
  return Forward(&Framework::SendFWData, Bytes{data, length});
}

int API_SendFWDataAndroid(const unsigned char* data, int length) {
  return Forward(&Framework::SendFWDataAndroid, Bytes{data, length});
}

int API_SendFWPanelData(const unsigned char* data, int length) {
  // The host promises no more than the image of a panel, whatever length it gives.
  const int image = std::min(length, NUV_PANEL_IMAGE_BYTES);
  return Forward(&Framework::SendFWPanelData, Bytes{data, image});
}

int API_FinishFWUpdateFileInfo_LCM(char* out) {
  return Forward(&Framework::FinishFWUpdateFileInfo_LCM, TextOut{out, Written::kOnSuccess});
}

int API_StartFWUpgradeProcess(void) { return Forward(&Framework::StartFWUpgradeProcess); }
