// A framework behind the exports that notes what it was asked and hands out what the test says.
#ifndef NUV_TESTS_FAKE_FRAMEWORK_H_
#define NUV_TESTS_FAKE_FRAMEWORK_H_

#include <functional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "nuvconnect/IConnectingFramework.h"
#include "tests/support/channel_stub.h"

namespace Nuv::Connect {

using String = std::string;
using Strings = std::vector<String>;
using Bytes = std::vector<uint8_t>;

// What an operation ends with: numbers and texts as text, the entries of a list each with a line
// end. An output that is not there is 0 or empty.
struct Reaction {
  int result;
  Strings outputs;
};

// Outlives the framework, which the exports destroy.
struct Record {
  Strings calls;  // each operation by its name, with its inputs in order
  // Without one, `result` and the outputs 1, 2, 3 in order.
  std::function<Reaction(const String& operation, const Strings& inputs)> reacts;
  int result = 0;
  std::function<void()> trouble;  // called at the end of every operation
  std::wstring path;              // of the last file
  NuvErrorCodeCallback onError = nullptr;
  NuvSendDataStartCallback onStart = nullptr;
  NuvSendDataUpdateCallback onUpdate = nullptr;
  NuvSendDataCancelCallback onCancel = nullptr;

  template <class... Parameters>
  int Did(const char* operation, Parameters&&... parameters) {
    Strings inputs;
    (AddInput<Parameters>(inputs, parameters), ...);
    calls.emplace_back(operation);
    for (const String& input : inputs) calls.back() += ' ' + input;
    const Reaction reaction = reacts ? reacts(operation, inputs) : Reaction{result, {}};
    [[maybe_unused]] size_t number = 0;
    [[maybe_unused]] const auto next = [&] {
      ++number;
      if (!reacts) return std::to_string(number);
      return number > reaction.outputs.size() ? "" : reaction.outputs[number - 1];
    };
    (Write<Parameters>(parameters, next), ...);
    if (trouble) trouble();
    return reaction.result;
  }

 private:
  // What an operation may write to is an output; inputs come as values or constants.
  template <class Parameter>
  static constexpr bool IsOutput() {
    using Type = std::decay_t<Parameter>;
    return std::is_same_v<Type, int*> || std::is_same_v<Type, float*> ||
           std::is_same_v<Parameter, String&> || std::is_same_v<Parameter, Strings&>;
  }
  template <class Parameter, class Value>
  static void AddInput(Strings& inputs, const Value& value) {
    using Type = std::decay_t<Parameter>;
    std::ostringstream input;
    if constexpr (IsOutput<Parameter>()) {
      return;
    } else if constexpr (std::is_same_v<Type, Bytes> || std::is_same_v<Type, std::wstring>) {
      for (const auto each : value) input << static_cast<char>(each);
    } else if constexpr (std::is_pointer_v<Type>) {
      input << (value == nullptr ? "null" : "callback");
    } else if constexpr (std::is_enum_v<Type>) {
      input << static_cast<int>(value);
    } else {
      input << value;
    }
    inputs.push_back(input.str());
  }
  template <class Parameter, class Value, class Next>
  static void Write(Value& output, const Next& next) {
    if constexpr (std::is_same_v<Parameter, String&>) {
      output = next();
    } else if constexpr (std::is_same_v<Parameter, Strings&>) {
      std::istringstream entries(next());
      output.clear();
      for (String entry; std::getline(entries, entry);) output.push_back(entry);
    } else if constexpr (IsOutput<Parameter>()) {
      *output = 0;
      std::istringstream(next()) >> *output;
    }
  }
};

class FakeChannel final : public ChannelStub {
 public:
  explicit FakeChannel(Record& record) : record_(record) {}

  Reason Reopen() override {
    return record_.Did("OpenDevice") == 0 ? Reason::kNone : Reason::kUnreachable;
  }
  bool CloseDevice() override { return record_.Did(__func__) == 0; }
  Reply ReadAgain(Platform::Interrupt*) override {
    Reply reply;
    record_.Did("ReceiveReply", reply.text);
    return reply;
  }
  Reply Transact(const Request& request) override {
    Reply reply;
    record_.Did("ExecuteCommand", request.line, reply.text);
    return reply;
  }

 private:
  Record& record_;
};

class FakeFramework final : public IConnectingFramework {
  // Outputs.
  using N = int*;
  using F = float*;
  using S = String&;

 public:
  explicit FakeFramework(Record& record) : record_(record), channel_(record) {}
  ~FakeFramework() override { record_.calls.push_back("destroyed"); }

  int SetUpdPort(int a) override { return Did(__func__, a); }
  int SearchNetworkDevice(Strings& a, String b, String c, int d) override {
    return Did(__func__, a, std::move(b), std::move(c), d);
  }
  int ConnectNetWorkDevice(String a) override { return Did(__func__, std::move(a)); }
  int GetDeviceList(int a, Strings& b, int c) override { return Did(__func__, a, b, c); }
  int ChooseDevice(int a, int b) override { return Did(__func__, a, b); }
  int GetPrinterInfo_BEGO(S a, S b, S c, S d, S e, S f) override {
    return Did(__func__, a, b, c, d, e, f);
  }
  int GetPrinterInfo(S a, S b, S c, S d, S e) override { return Did(__func__, a, b, c, d, e); }
  int GetResinInfo_BEGO(S a, S b, S c, S d) override { return Did(__func__, a, b, c, d); }
  int GetResinInfo(N a, N b, S c, S d) override { return Did(__func__, a, b, c, d); }
  int GetResinInfo2(N a, N b, S c, N d, S e) override { return Did(__func__, a, b, c, d, e); }
  int GetPrinterStatusWithErrorCode(N a, N b) override { return Did(__func__, a, b); }
  int GetPrinterStatus(N a) override { return Did(__func__, a); }
  int SendPrintFile(std::wstring a, NuvJobProgressCallback b) override {
    record_.path = a;
    return Did(__func__, std::move(a), b);
  }
  int RegisterPrintingInfoCallback(NuvPrintingInfoCallback a, uint32_t b) override {
    return Did(__func__, a, b);
  }
  int RegisterErrorCodeCallback(NuvErrorCodeCallback a) override {
    return Did(__func__, record_.onError = a);
  }
  int SetBCPScaling(float a, float b, float c, float d, float e, float f) override {
    return Did(__func__, a, b, c, d, e, f);
  }
  int GetBCPScaling(F a, F b, F c, F d, F e, F f) override {
    return Did(__func__, a, b, c, d, e, f);
  }
  int SetNickName(const String& a) override { return Did(__func__, a); }
  int GetNickName(S a) override { return Did(__func__, a); }
  int GetApList(Strings& a) override { return Did(__func__, a); }
  int IsconnectedAp(N a) override { return Did(__func__, a); }
  int ConnectAp(String a, String b) override { return Did(__func__, std::move(a), std::move(b)); }
  int GetApAttribute(String a, N b, N c) override { return Did(__func__, std::move(a), b, c); }
  int DisconnectAp() override { return Did(__func__); }
  IConnect* GetConnect() override { return &channel_; }
  void Close() override { Did(__func__); }
  int GetTotalLayerAndTime(N a, N b) override { return Did(__func__, a, b); }
  int GetPrintingStatus(N a, N b, N c) override { return Did(__func__, a, b, c); }
  int GetAndroidVersion(S a) override { return Did(__func__, a); }
  int GetLCMPanelVersion(S a) override { return Did(__func__, a); }
  int IsOpenModeSupported(N a) override { return Did(__func__, a); }
  int IsRegisteredCorrectTag(N a) override { return Did(__func__, a); }
  int GetMacAddressWifi(S a) override { return Did(__func__, a); }
  int GetMacAddressLan(S a) override { return Did(__func__, a); }
  int GetTankType(N a) override { return Did(__func__, a); }
  int GetLastUpdatedIndex(N a) override { return Did(__func__, a); }
  int SetLastUpdatedIndex(int a) override { return Did(__func__, a); }
  int GetCurrJobIndexAndTotalSize(N a, N b) override { return Did(__func__, a, b); }
  int GetJobInfo1(int a, S b, S c, S d) override { return Did(__func__, a, b, c, d); }
  int GetJobInfo2(int a, N b, N c, N d, N e) override { return Did(__func__, a, b, c, d, e); }
  int GetJobInfo3(int a, N b, N c, N d, N e) override { return Did(__func__, a, b, c, d, e); }
  int GetJobInfo4(int a, S b, S c) override { return Did(__func__, a, b, c); }
  int GetJobCounter(int a, N b, N c, N d, N e) override { return Did(__func__, a, b, c, d, e); }
  int GetLSUFlashParameterFX150(N a, N b, N c, N d, N e, N f, N g, N h, N i, N j, N k) override {
    return Did(__func__, a, b, c, d, e, f, g, h, i, j, k);
  }
  int GetLSUFlashParameter(N a, N b, N c, N d, N e, N f, N g) override {
    return Did(__func__, a, b, c, d, e, f, g);
  }
  int GetLSULaserPWMvalues(int a, N b, N c, N d, N e, N f, N g) override {
    return Did(__func__, a, b, c, d, e, f, g);
  }
  int GetPDSensorData(int a, N b, N c, N d) override { return Did(__func__, a, b, c, d); }
  int GetLedUseTime(S a) override { return Did(__func__, a); }
  int GetSensorStatusFX120(N a, N b, N c, N d, N e, N f, N g, N h, N i, N j, N k, N l,
                           N m) override {
    return Did(__func__, a, b, c, d, e, f, g, h, i, j, k, l, m);
  }
  int GetRepositionProcessing(N a) override { return Did(__func__, a); }
  int ExecuteCommand(int, const Strings&, std::map<String, String>&) override {
    return Did(__func__);
  }
  int SetFWUpdateFileInfo_Android(uint32_t a, uint32_t b, String c) override {
    return Did(__func__, a, b, std::move(c));
  }
  int StartFWUpdateFileInfo_LCM(String a) override { return Did(__func__, std::move(a)); }
  int FinishFWUpdateFileInfo_LCM(S a) override { return Did(__func__, a); }
  int SendFWData(const Bytes& a) override { return Did(__func__, a); }
  int SendFWPanelData(const Bytes& a) override { return Did(__func__, a); }
  int SetFWUpdateFileInfo_Engine(uint32_t a, const String& b) override {
    return Did(__func__, a, b);
  }
  int SendFWDataAndroid(const Bytes& a) override { return Did(__func__, a); }
  int StartFWUpgradeProcess() override { return Did(__func__); }
  int SkipSLAWarmup() override { return Did(__func__); }
  int SearchUSBDevice(N a) override { return Did(__func__, a); }
  int GetDeviceInfo(S a, int b, int c, int d) override { return Did(__func__, a, b, c, d); }
  int GetBroadCastResult(Strings& a, String b) override { return Did(__func__, a, std::move(b)); }
  int SetBroadCastPort(int a) override { return Did(__func__, a); }
  int ConnectDeviceBySN(int a, const String& b) override { return Did(__func__, a, b); }
  int SendGCodeFile(const std::wstring& a, NuvJobProgressCallback b) override {
    record_.path = a;
    return Did(__func__, a, b);
  }
  int RegisterSendDataStartCallback(NuvSendDataStartCallback a) override {
    return Did(__func__, record_.onStart = a);
  }
  int RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback a) override {
    return Did(__func__, record_.onUpdate = a);
  }
  int RegisterSendDataCancelCallback(NuvSendDataCancelCallback a) override {
    return Did(__func__, record_.onCancel = a);
  }
  int SetParameter(PrinterParameter a, int b) override { return Did(__func__, a, b); }
  int GetParameter(PrinterParameter a, N b) override { return Did(__func__, a, b); }

 private:
  template <class... Parameters>
  int Did(Parameters&&... parameters) {
    return record_.Did(std::forward<Parameters>(parameters)...);
  }

  Record& record_;
  FakeChannel channel_;
};

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_FAKE_FRAMEWORK_H_
