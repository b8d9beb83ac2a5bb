#include "fake_library.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

FakeLibrary g_fake;

namespace {

int Fail(int result, int command) {
  if (result != 0 && g_fake.onError != nullptr) g_fake.onError(result, command);
  return result;
}

template <class Callback>
int Keep(Callback& kept, Callback given) {
  kept = given;
  return NUV_OK;
}

std::string OnUsb(int kind) { return kind == NUV_KIND_USB ? "usb " : ""; }

int Open(const std::string& what) {
  g_fake.calls.push_back("open " + what);
  return g_fake.openResult;
}

// Returns whether it was not cancelled.
bool Transfer(const char* what, int total, const std::vector<int>& steps) {
  g_fake.calls.emplace_back(what);
  g_fake.onStart();
  for (size_t i = 0; i < steps.size(); ++i) {
    g_fake.beforeStep(i);
    if (g_fake.onCancel()) return false;
    g_fake.onUpdate(total, steps[i]);
  }
  return true;
}

int TransferFile(const wchar_t* path) {
  g_fake.path = path;
  if (Transfer("send", 1000, g_fake.sent)) g_fake.atEnd();
  return Fail(g_fake.sendResult, 103);
}

int TransferImage(const unsigned char* data, int length) {
  g_fake.image.assign(data, data + length);
  return Transfer("image", length, {length / 2, length}) ? NUV_OK : NUV_CANCELLED;
}

}  // namespace

int ResultOf(int command) {
  const auto row = g_fake.results.find(command);
  return Fail(row == g_fake.results.end() ? 0 : row->second, command);
}

int Order(int command, const std::string& call) {
  g_fake.calls.push_back(call);
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
  g_fake.running = true;
  return 0;
}
void API_Close() { g_fake.running = false; }
int API_SetBroadCastPort(int port) { return Order(0, "port " + std::to_string(port)); }

int API_GetDeviceList(int kind, char** list, int* count, int entrySize, int timeoutMs) {
  g_fake.calls.push_back(OnUsb(kind) + "list " + std::to_string(timeoutMs));
  std::vector<std::string> serials;
  if (g_fake.missedSearches > 0) {
    --g_fake.missedSearches;
    *count = 0;
    return NUV_NOT_FOUND;
  }
  for (const auto& device : g_fake.devices) serials.push_back(device[NUV_DEVICE_SERIAL]);
  FillList(serials, list, count, entrySize);
  return g_fake.listResult;
}

int API_GetDeviceInfo(char* out, int kind, int index, int field) {
  const bool listed = g_fake.listResult == 0 && kind == g_fake.kind &&
                      static_cast<size_t>(index) < g_fake.devices.size();
  *out = '\0';
  if (!listed) return NUV_NOT_FOUND;
  std::strcpy(out, g_fake.devices[static_cast<size_t>(index)][static_cast<size_t>(field)].c_str());
  return 0;
}

int API_ChooseDevice(int kind, int index) { return Open(OnUsb(kind) + std::to_string(index)); }
int API_ConnectNetWorkDevice(const char* address) { return Open(address); }

int API_GetPrinterInfo(char* version, char* name, char* model, char* serial, char* controller) {
  std::strcpy(version, "1.2");
  std::strcpy(name, "\x1b[31mred");
  std::strcpy(model, g_fake.devices[0][NUV_DEVICE_MODEL].c_str());
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
  if (g_fake.malformed) throw std::invalid_argument("stoi");
  const StateAnswer answer = g_fake.states.Take();
  *status = answer.result == 0 ? answer.state : -1;
  if (*status == NUV_PRINTER_ERROR) *errorCode = answer.errorNumber;
  return Fail(answer.result, 102);
}

int API_GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) {
  const ProgressAnswer answer = g_fake.progress.Take();
  *layer = answer.layer;
  *progressPercent = answer.percent;
  *minutesLeft = answer.minutesLeft;
  return Fail(g_fake.progressResult, 102);
}

int API_GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) {
  *totalLayers = 340;
  *totalMinutes = 90;
  return 0;
}

int API_GetCurrJobIndexAndTotalSize(int* index, int* totalSize) {
  const MarkAnswer answer = g_fake.marks.Take();
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
  if (++g_fake.reopened == g_fake.answersWhenReopened) g_fake.results.erase(101);
  return true;
}

bool API_NUVCONNECT_CloseDevice() { return true; }

int API_NUVCONNECT_ExecutiveCommand(const char* command, char* reply, int) {
  g_fake.calls.push_back(std::string("raw ") + command);
  std::strcpy(reply, g_fake.reply.c_str());
  return 0;
}

int API_RegisterErrorCodeCallback(NuvErrorCodeCallback f) { return Keep(g_fake.onError, f); }
int API_RegisterSendDataStartCallback(NuvSendDataStartCallback f) {
  return Keep(g_fake.onStart, f);
}
int API_RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback f) {
  return Keep(g_fake.onUpdate, f);
}
int API_RegisterSendDataCancelCallback(NuvSendDataCancelCallback f) {
  return Keep(g_fake.onCancel, f);
}

}  // extern "C"
