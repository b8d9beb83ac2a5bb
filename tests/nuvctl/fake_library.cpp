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

template <class Callback>
int Keep(Callback& kept, Callback given) {
  kept = given;
  return NUV_OK;
}

std::string OnUsb(int kind) { return kind == NUV_KIND_USB ? "usb " : ""; }

int Open(const std::string& what) {
  fake.calls.push_back("open " + what);
  return fake.open_result;
}

// Returns whether it was not cancelled.
bool Transfer(const char* what, int total, const std::vector<int>& steps) {
  fake.calls.emplace_back(what);
  fake.on_start();
  for (size_t i = 0; i < steps.size(); ++i) {
    fake.before_step(i);
    if (fake.on_cancel()) return false;
    fake.on_update(total, steps[i]);
  }
  return true;
}

int TransferFile(const wchar_t* path) {
  fake.path = path;
  if (Transfer("send", 1000, fake.sent)) fake.at_end();
  return Fail(fake.send_result, 103);
}

int TransferImage(const unsigned char* data, int length) {
  fake.image.assign(data, data + length);
  return Transfer("image", length, {length / 2, length}) ? NUV_OK : NUV_CANCELLED;
}

}  // namespace

int ResultOf(int command) {
  const auto row = fake.results.find(command);
  return Fail(row == fake.results.end() ? 0 : row->second, command);
}

int Order(int command, const std::string& call) {
  fake.calls.push_back(call);
  return ResultOf(command);
}

void FillList(const std::vector<std::string>& texts, char** list, int* count, int entrySize) {
  const int found = static_cast<int>(texts.size());
  for (int i = 0; i < std::min(*count, found); ++i) {
    std::memset(list[i], 0, static_cast<size_t>(entrySize) + 1);
    std::strcpy(list[i], texts[static_cast<size_t>(i)].c_str());
  }
  *count = found;
}

extern "C" {

int API_Initial() {
  fake.running = true;
  return 0;
}
void API_Close() { fake.running = false; }
int API_SetBroadCastPort(int port) { return Order(0, "port " + std::to_string(port)); }

int API_GetDeviceList(int kind, char** list, int* count, int entrySize, int timeoutMs) {
  fake.calls.push_back(OnUsb(kind) + "list " + std::to_string(timeoutMs));
  std::vector<std::string> serials;
  if (fake.missed_searches > 0) {
    --fake.missed_searches;
    *count = 0;
    return NUV_NOT_FOUND;
  }
  for (const auto& device : fake.devices) serials.push_back(device[NUV_DEVICE_SERIAL]);
  FillList(serials, list, count, entrySize);
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
  const int result = ResultOf(354);
  std::strcpy(serial, result == 0 ? "BEGO-9" : "");
  std::strcpy(date, "2024-05-06");
  return result;
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

int API_SendPrintFile(const wchar_t* path, NuvJobProgressCallback) { return TransferFile(path); }
int API_SendGCodeFile(const wchar_t* path, NuvJobProgressCallback) { return TransferFile(path); }

int API_SetFWUpdateFileInfo_Engine(unsigned int size, const char* path) {
  return Order(141, "engine " + std::to_string(size) + " " + path);
}
int API_SetFWUpdateFileInfo_Android(unsigned int kind, unsigned int size, const char* path) {
  return Order(506, "android " + std::to_string(kind) + " " + std::to_string(size) + " " + path);
}
int API_StartFWUpdateFileInfo_LCM(const char* path) {
  return Order(188, std::string("panel ") + path);
}
int API_SendFWData(const unsigned char* data, int n) { return TransferImage(data, n); }
int API_SendFWDataAndroid(const unsigned char* data, int n) { return TransferImage(data, n); }
int API_SendFWPanelData(const unsigned char* data, int n) { return TransferImage(data, n); }
int API_FinishFWUpdateFileInfo_LCM(char* out) {
  std::strcpy(out, "Done");
  return Order(189, "finish");
}
int API_StartFWUpgradeProcess() { return Order(507, "start"); }

bool API_NUVCONNECT_OpenDevice() {
  if (++fake.reopened == fake.answers_when_reopened) fake.results.erase(101);
  return true;
}

bool API_NUVCONNECT_CloseDevice() { return true; }

int API_NUVCONNECT_ExecutiveCommand(const char* command, char* reply, int) {
  fake.calls.push_back(std::string("raw ") + command);
  std::strcpy(reply, fake.reply.c_str());
  return 0;
}

int API_RegisterErrorCodeCallback(NuvErrorCodeCallback f) { return Keep(fake.on_error, f); }
int API_RegisterSendDataStartCallback(NuvSendDataStartCallback f) { return Keep(fake.on_start, f); }
int API_RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback f) {
  return Keep(fake.on_update, f);
}
int API_RegisterSendDataCancelCallback(NuvSendDataCancelCallback f) {
  return Keep(fake.on_cancel, f);
}

}  // extern "C"
