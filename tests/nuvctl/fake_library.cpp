#include "fake_library.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

FakeLibrary fake;

namespace {

int Fail(int result, int command) {
  if (result != 0 && fake.on_error != nullptr) fake.on_error(result, command);
  return result;
}

std::string OnUsb(int kind) { return kind == NUV_KIND_USB ? "usb " : ""; }

int Open(const std::string& what) {
  fake.calls.push_back("open " + what);
  return fake.open_result;
}

int Transfer(const wchar_t* path) {
  fake.path = path;
  fake.calls.emplace_back("send");
  if (fake.send_result == 1) return Fail(1, 103);
  fake.on_start();
  for (size_t i = 0; i < fake.sent.size(); ++i) {
    fake.before_step(i);
    if (fake.on_cancel()) return 0;
    fake.on_update(fake.total, fake.sent[i]);
  }
  fake.at_end();
  return fake.send_result;
}

// In two blocks.
int TransferImage(const unsigned char* data, int length) {
  fake.calls.emplace_back("image");
  fake.on_start();
  for (const int sent : {length / 2, length}) {
    fake.before_step(static_cast<size_t>(sent));
    if (fake.on_cancel()) return 2;
    fake.image.assign(data, data + sent);
    fake.on_update(length, sent);
  }
  return 0;
}

}  // namespace

int ResultOf(int command) {
  const auto row = fake.results.find(command);
  return Fail(row == fake.results.end() ? 0 : row->second, command);
}

extern "C" {

int API_Initial() {
  fake.running = true;
  return 0;
}
void API_Close() { fake.running = false; }
int API_SetBroadCastPort(int port) {
  fake.calls.push_back("port " + std::to_string(port));
  return 0;
}

int API_GetDeviceList(int kind, char** list, int* count, int entrySize, int timeoutMs) {
  fake.calls.push_back(OnUsb(kind) + "list " + std::to_string(timeoutMs));
  const int found = static_cast<int>(fake.devices.size());
  for (int i = 0; i < std::min(*count, found); ++i) {
    // Writes all that the contract allows, so that a buffer too small shows under a sanitizer.
    std::memset(list[i], 0, static_cast<size_t>(entrySize) + 1);
    std::strcpy(list[i], fake.devices[static_cast<size_t>(i)][NUV_DEVICE_SERIAL].c_str());
  }
  *count = found;
  return fake.list_result;
}

int API_GetDeviceInfo(char* out, int kind, int index, int field) {
  const bool listed = fake.list_result == 0 && kind == fake.kind &&
                      static_cast<size_t>(index) < fake.devices.size();
  *out = '\0';
  if (!listed) return NUV_NOT_FOUND;
  std::strcpy(out, fake.devices[static_cast<size_t>(index)][static_cast<size_t>(field)].c_str());
  return 0;
}

int API_ChooseDevice(int kind, int index) { return Open(OnUsb(kind) + std::to_string(index)); }
int API_ConnectNetWorkDevice(const char* address) { return Open(address); }

int API_GetPrinterInfo(char* version, char* name, char* model, char* serial, char* controller) {
  std::strcpy(version, "1.2");
  std::strcpy(name, "\x1b[31mred");
  std::strcpy(model, fake.devices[0][NUV_DEVICE_MODEL].c_str());
  std::strcpy(serial, "SN1");
  std::strcpy(controller, "C7");
  return ResultOf(101);
}

int API_GetPrinterInfo_BEGO(char* version, char* name, char* model, char* serial, char* controller,
                            char* date) {
  API_GetPrinterInfo(version, name, model, serial, controller);
  std::strcpy(serial, fake.bego_result == 0 ? "BEGO-9" : "");
  std::strcpy(date, "2024-05-06");
  return Fail(fake.bego_result, 354);
}

int API_GetPrinterStatusWithErrorCode(int* status, int* errorCode) {
  if (fake.malformed) throw std::invalid_argument("stoi");
  const StateAnswer answer = fake.states.Take();
  *status = answer.result == 0 ? answer.state : -1;
  if (*status == NUV_PRINTER_ERROR) *errorCode = answer.error_number;
  return Fail(answer.result, 102);
}

int API_GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) {
  const ProgressAnswer answer = fake.progress.Take();
  *layer = answer.layer;
  *progressPercent = answer.percent;
  *minutesLeft = answer.minutes_left;
  return Fail(fake.progress_result, 102);
}

int API_GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) {
  *totalLayers = 340;
  *totalMinutes = 90;
  return 0;
}

int API_GetCurrJobIndexAndTotalSize(int* index, int* totalSize) {
  const MarkAnswer answer = fake.marks.Take();
  *index = answer.index;
  *totalSize = answer.bytes;
  return Fail(answer.result, 157);
}

int API_SendPrintFile(const wchar_t* path, NuvJobProgressCallback) { return Transfer(path); }
int API_SendGCodeFile(const wchar_t* path, NuvJobProgressCallback) { return Transfer(path); }

int API_SetFWUpdateFileInfo_Engine(unsigned int size, const char* path) {
  fake.calls.push_back("engine " + std::to_string(size) + " " + path);
  return ResultOf(141);
}
int API_SetFWUpdateFileInfo_Android(unsigned int kind, unsigned int size, const char* path) {
  fake.calls.push_back("android " + std::to_string(kind) + " " + std::to_string(size) + " " + path);
  return ResultOf(506);
}
int API_StartFWUpdateFileInfo_LCM(const char* path) {
  fake.calls.push_back(std::string("panel ") + path);
  return ResultOf(188);
}
int API_SendFWData(const unsigned char* data, int length) { return TransferImage(data, length); }
int API_SendFWDataAndroid(const unsigned char* data, int length) {
  return TransferImage(data, length);
}
int API_SendFWPanelData(const unsigned char* data, int length) {
  return TransferImage(data, length);
}
int API_FinishFWUpdateFileInfo_LCM(char* out) {
  fake.calls.emplace_back("finish");
  std::strcpy(out, fake.panel_answer.c_str());
  return ResultOf(189);
}
int API_StartFWUpgradeProcess() {
  fake.calls.emplace_back("start");
  return ResultOf(507);
}

bool API_NUVCONNECT_OpenDevice() {
  if (++fake.reopened == fake.answers_when_reopened) fake.results.erase(101);
  return true;
}

int API_NUVCONNECT_ExecutiveCommand(const char* command, char* reply, int) {
  fake.calls.push_back(std::string("raw ") + command);
  std::strcpy(reply, fake.reply.c_str());
  return 0;
}

int API_RegisterErrorCodeCallback(NuvErrorCodeCallback callback) {
  fake.on_error = callback;
  return 0;
}
int API_RegisterSendDataStartCallback(NuvSendDataStartCallback callback) {
  fake.on_start = callback;
  return 0;
}
int API_RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback callback) {
  fake.on_update = callback;
  return 0;
}
int API_RegisterSendDataCancelCallback(NuvSendDataCancelCallback callback) {
  fake.on_cancel = callback;
  return 0;
}

}  // extern "C"
