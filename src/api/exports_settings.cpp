// Settings.

#include "api/marshalling.h"

using Nuv::Api::Forward;
using Nuv::Api::Framework;
using Nuv::Api::TextOut;
using Nuv::Api::Written;
using Nuv::Connect::PrinterParameter;

int API_SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2) {
  return Forward(&Framework::SetBCPScaling, x1, x2, y1, y2, z1, z2);
}

int API_GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1, float* z2) {
  return Forward(&Framework::GetBCPScaling, x1, x2, y1, y2, z1, z2);
}

int API_SetNickName(const char* name) { return Forward(&Framework::SetNickName, name); }

int API_GetNickName(char* out) {
  return Forward(&Framework::GetNickName, TextOut{out, Written::kOnSuccess});
}

int API_SetLaserPower(int percent) {
  return Forward(&Framework::SetParameter, PrinterParameter::kLaserPower, percent);
}

int API_GetLaserPower(int* percent) {
  return Forward(&Framework::GetParameter, PrinterParameter::kLaserPower, percent);
}

int API_SetZCompensation(int micrometres) {
  return Forward(&Framework::SetParameter, PrinterParameter::kZCompensation, micrometres);
}

int API_GetZCompensation(int* micrometres) {
  return Forward(&Framework::GetParameter, PrinterParameter::kZCompensation, micrometres);
}
