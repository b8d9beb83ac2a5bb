// Job history.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::TextOut;

int API_GetLastUpdatedIndex(int* index) { return Forward(&Framework::GetLastUpdatedIndex, index); }

int API_SetLastUpdatedIndex(int index) { return Forward(&Framework::SetLastUpdatedIndex, index); }

int API_GetCurrJobIndexAndTotalSize(int* index, int* totalSize) {
  return Forward(&Framework::GetCurrJobIndexAndTotalSize, index, totalSize);
}

int API_GetJobInfo1(int jobIndex, char* jobName, char* resinCode, char* startTime) {
  return Forward(&Framework::GetJobInfo1, jobIndex, TextOut{jobName}, TextOut{resinCode},
                 TextOut{startTime});
}

int API_GetJobInfo2(int jobIndex, int* layers, int* minutes, int* resinVolume, int* result) {
  return Forward(&Framework::GetJobInfo2, jobIndex, layers, minutes, resinVolume, result);
}

int API_GetJobInfo3(int jobIndex, int* layerThickness, int* exposureTime, int* bottomExposureTime,
                    int* laserPower) {
  return Forward(&Framework::GetJobInfo3, jobIndex, layerThickness, exposureTime,
                 bottomExposureTime, laserPower);
}

int API_GetJobInfo4(int jobIndex, char* endTime, char* lot) {
  return Forward(&Framework::GetJobInfo4, jobIndex, TextOut{endTime}, TextOut{lot});
}

int API_GetJobCounter(int kind, int* started, int* finished, int* cancelled, int* failed) {
  return Forward(&Framework::GetJobCounter, kind, started, finished, cancelled, failed);
}
