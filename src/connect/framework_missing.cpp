// Operations whose printer side is not built yet: they fail with 1. README.md lists them.

#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int ConnectingFramework::RegisterPrintingInfoCallback(NuvPrintingInfoCallback /*callback*/,
                                                      uint32_t /*intervalMs*/) {
  return NUV_FAILED;
}
int ConnectingFramework::SetFWUpdateFileInfo_Android(uint32_t /*kind*/, uint32_t /*size*/,
                                                     std::string /*path*/) {
  return NUV_FAILED;
}
int ConnectingFramework::StartFWUpdateFileInfo_LCM(std::string /*path*/) { return NUV_FAILED; }
int ConnectingFramework::FinishFWUpdateFileInfo_LCM(std::string& /*answer*/) { return NUV_FAILED; }
int ConnectingFramework::SendFWData(const std::vector<uint8_t>& /*image*/) { return NUV_FAILED; }
int ConnectingFramework::SendFWPanelData(const std::vector<uint8_t>& /*image*/) {
  return NUV_FAILED;
}
int ConnectingFramework::SetFWUpdateFileInfo_Engine(uint32_t /*size*/,
                                                    const std::string& /*path*/) {
  return NUV_FAILED;
}
int ConnectingFramework::SendFWDataAndroid(const std::vector<uint8_t>& /*image*/) {
  return NUV_FAILED;
}
int ConnectingFramework::StartFWUpgradeProcess() { return NUV_FAILED; }

}  // namespace Nuv::Connect
