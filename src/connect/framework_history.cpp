// What the printer keeps of its jobs.

#include "connect/connecting_framework.h"

namespace Nuv::Connect {

int ConnectingFramework::GetCurrJobIndexAndTotalSize(int* index, int* totalSize) {
  return Commands().Read(157, {}, {{"I", index}, {"S", totalSize}});
}

int ConnectingFramework::GetJobCounter(int kind, int* started, int* finished, int* cancelled,
                                       int* failed) {
  return Commands().Read(169, {std::to_string(kind)},
                         {{"S", started}, {"F", finished}, {"C", cancelled}, {"E", failed}});
}

int ConnectingFramework::GetLastUpdatedIndex(int* index) {
  return Commands().Read(170, {}, {{"I", index}});
}

int ConnectingFramework::SetLastUpdatedIndex(int index) {
  return Commands().Run(171, {std::to_string(index)}).result;
}

int ConnectingFramework::GetJobInfo1(int jobIndex, std::string& jobName, std::string& resinCode,
                                     std::string& startTime) {
  return Commands().Read(174, {std::to_string(jobIndex)},
                         {{"N", &jobName}, {"C", &resinCode}, {"T", &startTime}});
}

int ConnectingFramework::GetJobInfo2(int jobIndex, int* layers, int* minutes, int* resinVolume,
                                     int* result) {
  return Commands().Read(175, {std::to_string(jobIndex)},
                         {{"L", layers}, {"T", minutes}, {"V", resinVolume}, {"R", result}});
}

int ConnectingFramework::GetJobInfo3(int jobIndex, int* layerThickness, int* exposureTime,
                                     int* bottomExposureTime, int* laserPower) {
  return Commands().Read(
      176, {std::to_string(jobIndex)},
      {{"T", layerThickness}, {"E", exposureTime}, {"B", bottomExposureTime}, {"P", laserPower}});
}

int ConnectingFramework::GetJobInfo4(int jobIndex, std::string& endTime, std::string& lot) {
  return Commands().Read(177, {std::to_string(jobIndex)}, {{"T", &endTime}, {"Q", &lot}});
}

}  // namespace Nuv::Connect
