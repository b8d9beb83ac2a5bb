// Operations whose printer side is not built yet: they fail with 1. README.md lists them.

#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int ConnectingFramework::GetPrinterInfo_BEGO(std::string& /*version*/, std::string& /*name*/,
                                             std::string& /*model*/, std::string& /*serial*/,
                                             std::string& /*controller*/, std::string& /*date*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetResinInfo_BEGO(std::string& /*name*/, std::string& /*lot*/,
                                           std::string& /*expiry*/, std::string& /*volume*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetResinInfo(int* /*state*/, int* /*remaining*/, std::string& /*date*/,
                                      std::string& /*type*/) {
  return NUV_FAILED;
}
int ConnectingFramework::RegisterPrintingInfoCallback(NuvPrintingInfoCallback /*callback*/,
                                                      uint32_t /*intervalMs*/) {
  return NUV_FAILED;
}
int ConnectingFramework::SetBCPScaling(float /*x1*/, float /*x2*/, float /*y1*/, float /*y2*/,
                                       float /*z1*/, float /*z2*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetBCPScaling(float* /*x1*/, float* /*x2*/, float* /*y1*/, float* /*y2*/,
                                       float* /*z1*/, float* /*z2*/) {
  return NUV_FAILED;
}
int ConnectingFramework::SetNickName(const std::string& /*name*/) { return NUV_FAILED; }
int ConnectingFramework::GetApList(std::vector<std::string>& /*names*/) { return NUV_FAILED; }
int ConnectingFramework::IsconnectedAp(int* /*connected*/) { return NUV_FAILED; }
int ConnectingFramework::ConnectAp(std::string /*name*/, std::string /*key*/) { return NUV_FAILED; }
int ConnectingFramework::GetApAttribute(std::string /*name*/, int* /*signal*/, int* /*security*/) {
  return NUV_FAILED;
}
int ConnectingFramework::DisconnectAp() { return NUV_FAILED; }
int ConnectingFramework::GetAndroidVersion(std::string& /*version*/) { return NUV_FAILED; }
int ConnectingFramework::GetLCMPanelVersion(std::string& /*version*/) { return NUV_FAILED; }
int ConnectingFramework::IsOpenModeSupported(int* /*supported*/) { return NUV_FAILED; }
int ConnectingFramework::IsRegisteredCorrectTag(int* /*registered*/) { return NUV_FAILED; }
int ConnectingFramework::GetMacAddressWifi(std::string& /*mac*/) { return NUV_FAILED; }
int ConnectingFramework::GetMacAddressLan(std::string& /*mac*/) { return NUV_FAILED; }
int ConnectingFramework::GetTankType(int* /*type*/) { return NUV_FAILED; }
int ConnectingFramework::GetLastUpdatedIndex(int* /*index*/) { return NUV_FAILED; }
int ConnectingFramework::SetLastUpdatedIndex(int /*index*/) { return NUV_FAILED; }
int ConnectingFramework::GetJobInfo1(int /*jobIndex*/, std::string& /*jobName*/,
                                     std::string& /*resinCode*/, std::string& /*startTime*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetJobInfo2(int /*jobIndex*/, int* /*layers*/, int* /*minutes*/,
                                     int* /*resinVolume*/, int* /*result*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetJobInfo3(int /*jobIndex*/, int* /*layerThickness*/,
                                     int* /*exposureTime*/, int* /*bottomExposureTime*/,
                                     int* /*laserPower*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetJobInfo4(int /*jobIndex*/, std::string& /*endTime*/,
                                     std::string& /*lot*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetJobCounter(int /*kind*/, int* /*started*/, int* /*finished*/,
                                       int* /*cancelled*/, int* /*failed*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetLSUFlashParameterFX150(int* /*c1*/, int* /*c2*/, int* /*c3*/,
                                                   int* /*l1*/, int* /*l2*/, int* /*l3*/,
                                                   int* /*t1*/, int* /*t2*/, int* /*t3*/,
                                                   int* /*z1*/, int* /*z2*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetLSUFlashParameter(int* /*c*/, int* /*l*/, int* /*p*/, int* /*s*/,
                                              int* /*t*/, int* /*w*/, int* /*y*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetLSULaserPWMvalues(int /*laser*/, int* /*lsu*/, int* /*p1*/, int* /*p2*/,
                                              int* /*p3*/, int* /*p4*/, int* /*p5*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetPDSensorData(int /*laser*/, int* /*minimum*/, int* /*maximum*/,
                                         int* /*average*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetLedUseTime(std::string& /*hours*/) { return NUV_FAILED; }
int ConnectingFramework::GetSensorStatusFX120(int* /*ct*/, int* /*cb*/, int* /*zlt*/, int* /*zlb*/,
                                              int* /*vs*/, int* /*ls*/, int* /*wh*/, int* /*yh*/,
                                              int* /*cli*/, int* /*cp*/, int* /*ps*/, int* /*yf*/,
                                              int* /*tt*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetRepositionProcessing(int* /*processing*/) { return NUV_FAILED; }
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
int ConnectingFramework::SkipSLAWarmup() { return NUV_FAILED; }
int ConnectingFramework::SetParameter(PrinterParameter /*parameter*/, int /*value*/) {
  return NUV_FAILED;
}
int ConnectingFramework::GetParameter(PrinterParameter /*parameter*/, int* /*value*/) {
  return NUV_FAILED;
}

}  // namespace Nuv::Connect
