// A framework that does nothing but note what it was asked, behind the exports.
#ifndef NUV_TESTS_API_FAKE_FRAMEWORK_H_
#define NUV_TESTS_API_FAKE_FRAMEWORK_H_

#include <functional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "nuvconnect/IConnectingFramework.h"

namespace Nuv::Connect {

using String = std::string;
using Strings = std::vector<String>;
using Bytes = std::vector<uint8_t>;

// Outlives the framework, which the exports destroy.
struct Record {
  Strings calls;                  // each operation by its name, with its inputs in order
  int result = 0;                 // of every operation
  std::function<void()> trouble;  // called at the end of every operation

  // The outputs are numbered in order: 1, 2.5, "t3", the list {"t4", "u4"}.
  template <class... Parameters>
  int Did(const char* operation, Parameters&&... parameters) {
    std::ostringstream call;
    call << operation;
    [[maybe_unused]] int outputs = 0;
    (Note(call, outputs, std::forward<Parameters>(parameters)), ...);
    calls.push_back(call.str());
    if (trouble) trouble();
    return result;
  }

 private:
  // What an operation may write to is an output; inputs come as values or constants.
  template <class Parameter>
  void Note(std::ostream& call, int& outputs, Parameter&& parameter) {
    using Type = std::decay_t<Parameter>;
    if constexpr (std::is_same_v<Type, int*>) {
      *parameter = ++outputs;
    } else if constexpr (std::is_same_v<Type, float*>) {
      *parameter = static_cast<float>(++outputs) + 0.5F;
    } else if constexpr (std::is_same_v<Parameter, String&>) {
      parameter = "t" + std::to_string(++outputs);
    } else if constexpr (std::is_same_v<Parameter, Strings&>) {
      const String number = std::to_string(++outputs);
      parameter = {"t" + number, "u" + number};
    } else if constexpr (std::is_same_v<Type, Bytes> || std::is_same_v<Type, std::wstring>) {
      call << ' ';
      for (const auto each : parameter) call << static_cast<char>(each);
    } else if constexpr (std::is_pointer_v<Type>) {
      call << (parameter == nullptr ? " null" : " callback");
    } else if constexpr (std::is_enum_v<Type>) {
      call << ' ' << static_cast<int>(parameter);
    } else {
      call << ' ' << parameter;
    }
  }
};

class FakeChannel final : public IConnect {
 public:
  explicit FakeChannel(Record& record) : record_(record) {}

  bool OpenDevice() override { return record_.Did("OpenDevice") == 0; }
  bool CloseDevice() override { return record_.Did("CloseDevice") == 0; }
  String ReceiveReply() override {
    String reply;
    record_.Did("ReceiveReply", reply);
    return reply;
  }
  String ExecuteCommand(String command) override {
    String reply;
    record_.Did("ExecuteCommand", std::move(command), reply);
    return reply;
  }

  bool SearchDevices(Strings&, String, String, int) override { return false; }
  bool EnumerateDevices(int, Strings&) override { return false; }
  bool ReadLocalData(Bytes&) override { return false; }
  bool ChooseDevice(int, int) override { return false; }
  bool SendBytes(Bytes) override { return false; }
  void SetLocalOption(int) override {}
  void SetSearchTimeout(int) override {}
  void SetSearchPort(int) override {}
  void SetSearchMessage(String) override {}

 private:
  Record& record_;
};

class FakeFramework final : public IConnectingFramework {
 public:
  explicit FakeFramework(Record& record) : record_(record), channel_(record) {}
  ~FakeFramework() override { record_.calls.push_back("destroyed"); }

  int SetUpdPort(int a) override { return Did("SetUpdPort", a); }
  int SearchNetworkDevice(Strings& a, String b, String c, int d) override {
    return Did("SearchNetworkDevice", a, std::move(b), std::move(c), d);
  }
  int ConnectNetWorkDevice(String a) override { return Did("ConnectNetWorkDevice", std::move(a)); }
  int GetDeviceList(int a, Strings& b, int c) override { return Did("GetDeviceList", a, b, c); }
  int ChooseDevice(int a, int b) override { return Did("ChooseDevice", a, b); }
  int GetPrinterInfo_BEGO(String& a, String& b, String& c, String& d, String& e,
                          String& f) override {
    return Did("GetPrinterInfo_BEGO", a, b, c, d, e, f);
  }
  int GetPrinterInfo(String& a, String& b, String& c, String& d, String& e) override {
    return Did("GetPrinterInfo", a, b, c, d, e);
  }
  int GetResinInfo_BEGO(String& a, String& b, String& c, String& d) override {
    return Did("GetResinInfo_BEGO", a, b, c, d);
  }
  int GetResinInfo(int* a, int* b, String& c, String& d) override {
    return Did("GetResinInfo", a, b, c, d);
  }
  int GetResinInfo2(int* a, int* b, String& c, int* d, String& e) override {
    return Did("GetResinInfo2", a, b, c, d, e);
  }
  int GetPrinterStatusWithErrorCode(int* a, int* b) override {
    return Did("GetPrinterStatusWithErrorCode", a, b);
  }
  int GetPrinterStatus(int* a) override { return Did("GetPrinterStatus", a); }
  int SendPrintFile(std::wstring a, NuvJobProgressCallback b) override {
    return Did("SendPrintFile", std::move(a), b);
  }
  int RegisterPrintingInfoCallback(NuvPrintingInfoCallback a, uint32_t b) override {
    return Did("RegisterPrintingInfoCallback", a, b);
  }
  int RegisterErrorCodeCallback(NuvErrorCodeCallback a) override {
    return Did("RegisterErrorCodeCallback", a);
  }
  int SetBCPScaling(float a, float b, float c, float d, float e, float f) override {
    return Did("SetBCPScaling", a, b, c, d, e, f);
  }
  int GetBCPScaling(float* a, float* b, float* c, float* d, float* e, float* f) override {
    return Did("GetBCPScaling", a, b, c, d, e, f);
  }
  int SetNickName(const String& a) override { return Did("SetNickName", a); }
  int GetNickName(String& a) override { return Did("GetNickName", a); }
  int GetApList(Strings& a) override { return Did("GetApList", a); }
  int IsconnectedAp(int* a) override { return Did("IsconnectedAp", a); }
  int ConnectAp(String a, String b) override {
    return Did("ConnectAp", std::move(a), std::move(b));
  }
  int GetApAttribute(String a, int* b, int* c) override {
    return Did("GetApAttribute", std::move(a), b, c);
  }
  int DisconnectAp() override { return Did("DisconnectAp"); }
  IConnect* GetConnect() override { return &channel_; }
  void Close() override { Did("Close"); }
  int GetTotalLayerAndTime(int* a, int* b) override { return Did("GetTotalLayerAndTime", a, b); }
  int GetPrintingStatus(int* a, int* b, int* c) override {
    return Did("GetPrintingStatus", a, b, c);
  }
  int GetAndroidVersion(String& a) override { return Did("GetAndroidVersion", a); }
  int GetLCMPanelVersion(String& a) override { return Did("GetLCMPanelVersion", a); }
  int IsOpenModeSupported(int* a) override { return Did("IsOpenModeSupported", a); }
  int IsRegisteredCorrectTag(int* a) override { return Did("IsRegisteredCorrectTag", a); }
  int GetMacAddressWifi(String& a) override { return Did("GetMacAddressWifi", a); }
  int GetMacAddressLan(String& a) override { return Did("GetMacAddressLan", a); }
  int GetTankType(int* a) override { return Did("GetTankType", a); }
  int GetLastUpdatedIndex(int* a) override { return Did("GetLastUpdatedIndex", a); }
  int SetLastUpdatedIndex(int a) override { return Did("SetLastUpdatedIndex", a); }
  int GetCurrJobIndexAndTotalSize(int* a, int* b) override {
    return Did("GetCurrJobIndexAndTotalSize", a, b);
  }
  int GetJobInfo1(int a, String& b, String& c, String& d) override {
    return Did("GetJobInfo1", a, b, c, d);
  }
  int GetJobInfo2(int a, int* b, int* c, int* d, int* e) override {
    return Did("GetJobInfo2", a, b, c, d, e);
  }
  int GetJobInfo3(int a, int* b, int* c, int* d, int* e) override {
    return Did("GetJobInfo3", a, b, c, d, e);
  }
  int GetJobInfo4(int a, String& b, String& c) override { return Did("GetJobInfo4", a, b, c); }
  int GetJobCounter(int a, int* b, int* c, int* d, int* e) override {
    return Did("GetJobCounter", a, b, c, d, e);
  }
  int GetLSUFlashParameterFX150(int* a, int* b, int* c, int* d, int* e, int* f, int* g, int* h,
                                int* i, int* j, int* k) override {
    return Did("GetLSUFlashParameterFX150", a, b, c, d, e, f, g, h, i, j, k);
  }
  int GetLSUFlashParameter(int* a, int* b, int* c, int* d, int* e, int* f, int* g) override {
    return Did("GetLSUFlashParameter", a, b, c, d, e, f, g);
  }
  int GetLSULaserPWMvalues(int a, int* b, int* c, int* d, int* e, int* f, int* g) override {
    return Did("GetLSULaserPWMvalues", a, b, c, d, e, f, g);
  }
  int GetPDSensorData(int a, int* b, int* c, int* d) override {
    return Did("GetPDSensorData", a, b, c, d);
  }
  int GetLedUseTime(String& a) override { return Did("GetLedUseTime", a); }
  int GetSensorStatusFX120(int* a, int* b, int* c, int* d, int* e, int* f, int* g, int* h, int* i,
                           int* j, int* k, int* l, int* m) override {
    return Did("GetSensorStatusFX120", a, b, c, d, e, f, g, h, i, j, k, l, m);
  }
  int GetRepositionProcessing(int* a) override { return Did("GetRepositionProcessing", a); }
  int ExecuteCommand(int, const Strings&, std::map<String, String>&) override {
    return Did("ExecuteCommand");
  }
  int SetFWUpdateFileInfo_Android(uint32_t a, uint32_t b, String c) override {
    return Did("SetFWUpdateFileInfo_Android", a, b, std::move(c));
  }
  int StartFWUpdateFileInfo_LCM(String a) override {
    return Did("StartFWUpdateFileInfo_LCM", std::move(a));
  }
  int FinishFWUpdateFileInfo_LCM(String& a) override {
    return Did("FinishFWUpdateFileInfo_LCM", a);
  }
  int SendFWData(const Bytes& a) override { return Did("SendFWData", a); }
  int SendFWPanelData(const Bytes& a) override { return Did("SendFWPanelData", a); }
  int SetFWUpdateFileInfo_Engine(uint32_t a, const String& b) override {
    return Did("SetFWUpdateFileInfo_Engine", a, b);
  }
  int SendFWDataAndroid(const Bytes& a) override { return Did("SendFWDataAndroid", a); }
  int StartFWUpgradeProcess() override { return Did("StartFWUpgradeProcess"); }
  int SkipSLAWarmup() override { return Did("SkipSLAWarmup"); }
  int SearchUSBDevice(int* a) override { return Did("SearchUSBDevice", a); }
  int GetDeviceInfo(String& a, int b, int c, int d) override {
    return Did("GetDeviceInfo", a, b, c, d);
  }
  int GetBroadCastResult(Strings& a, String b) override {
    return Did("GetBroadCastResult", a, std::move(b));
  }
  int SetBroadCastPort(int a) override { return Did("SetBroadCastPort", a); }
  int ConnectDeviceBySN(int a, const String& b) override { return Did("ConnectDeviceBySN", a, b); }
  int SendGCodeFile(const std::wstring& a, NuvJobProgressCallback b) override {
    return Did("SendGCodeFile", a, b);
  }
  int RegisterSendDataStartCallback(NuvSendDataStartCallback a) override {
    return Did("RegisterSendDataStartCallback", a);
  }
  int RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback a) override {
    return Did("RegisterSendDataUpdateCallback", a);
  }
  int RegisterSendDataCancelCallback(NuvSendDataCancelCallback a) override {
    return Did("RegisterSendDataCancelCallback", a);
  }
  int SetParameter(PrinterParameter a, int b) override { return Did("SetParameter", a, b); }
  int GetParameter(PrinterParameter a, int* b) override { return Did("GetParameter", a, b); }

 private:
  template <class... Parameters>
  int Did(Parameters&&... parameters) {
    return record_.Did(std::forward<Parameters>(parameters)...);
  }

  Record& record_;
  FakeChannel channel_;
};

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_API_FAKE_FRAMEWORK_H_
