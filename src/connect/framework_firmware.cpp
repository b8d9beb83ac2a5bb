// Firmware updates: announcement, image, end. docs/protocol.md has the order of each.

#include "command/processors.h"
#include "connect/connecting_framework.h"
#include "job/block_transfer.h"
#include "nuvconnect/NuvConnect5.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {

int ConnectingFramework::SetFWUpdateFileInfo_Engine(uint32_t size, const std::string& path) {
  return AnnounceImage(NewJobContext(), [&] {
    std::vector<std::string> values;
    return F141Proc(Commands(), size, path).ProcessAccepted(values);
  });
}

int ConnectingFramework::SetFWUpdateFileInfo_Android(uint32_t kind, uint32_t size,
                                                     std::string path) {
  return AnnounceImage(NewJobContext(), [&] {
    return Commands().Run(506, {std::to_string(kind), std::to_string(size), path}).result;
  });
}

int ConnectingFramework::StartFWUpdateFileInfo_LCM(std::string path) {
  return AnnounceImage(NewJobContext(), [&] {
    std::vector<std::string> values;
    return F188Proc(Commands(), path).ProcessAccepted(values);
  });
}

int ConnectingFramework::FinishFWUpdateFileInfo_LCM(std::string& answer) {
  answer.clear();
  std::vector<std::string> values;
  const int result = F189Proc(Commands()).ProcessAccepted(values);
  if (result == NUV_OK && !values.empty()) answer = values.front();
  return result;
}

int ConnectingFramework::SendFWData(const std::vector<uint8_t>& image) {
  return SendFirmware(NewJobContext(), image, BlockHeader::kNone);
}

int ConnectingFramework::SendFWDataAndroid(const std::vector<uint8_t>& image) {
  return SendFirmware(NewJobContext(), image, BlockHeader::kL105);
}

int ConnectingFramework::SendFWPanelData(const std::vector<uint8_t>& image) {
  if (image.size() < NUV_PANEL_IMAGE_BYTES) {
    Platform::Diagnostic("panel image: %zu bytes given, %d needed; nothing sent", image.size(),
                         NUV_PANEL_IMAGE_BYTES);
    return NUV_FAILED;
  }
  return SendFWData({image.begin(), image.begin() + NUV_PANEL_IMAGE_BYTES});
}

int ConnectingFramework::StartFWUpgradeProcess() { return Commands().Run(507).result; }

}  // namespace Nuv::Connect
