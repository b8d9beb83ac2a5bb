#ifndef NUV_CONNECT_CONNECTING_FRAMEWORK_H_
#define NUV_CONNECT_CONNECTING_FRAMEWORK_H_

#include <memory>
#include <string>
#include <vector>

#include "command/command_runner.h"
#include "connect/device_table.h"
#include "connect/nuv_connect.h"
#include "job/job_context.h"
#include "job/nuv_file_library.h"
#include "job/print_status_handler.h"
#include "nuvconnect/IConnectingFramework.h"
#include "platform/clock.h"

namespace Nuv::Connect {

// The object behind the exports: device tables, current printer, callbacks, jobs.
//
// Thread-safety: as IConnectingFramework. Traffic is serialised by the channel; the device tables
// are not locked, so one thread at a time lists.
class ConnectingFramework final : public IConnectingFramework {
 public:
  // `clock` outlives the framework. `replyTimeoutMs`: how long a network printer may take to
  // answer. `usb`: the connector to printers on USB.
  explicit ConnectingFramework(Platform::Clock& clock = Platform::SystemClock(),
                               int replyTimeoutMs = NuvConnect::kReplyTimeoutMs,
                               std::unique_ptr<ConnectorBase> usb = MakeUsbConnector());
  ~ConnectingFramework() override;

  int SetUpdPort(int port) override;
  int SearchNetworkDevice(std::vector<std::string>& found, std::string address, std::string netmask,
                          int timeoutMs) override;
  int ConnectNetWorkDevice(std::string address) override;
  int GetDeviceList(int kind, std::vector<std::string>& serials, int timeoutMs) override;
  int ChooseDevice(int kind, int index) override;
  int GetPrinterInfo_BEGO(std::string& version, std::string& name, std::string& model,
                          std::string& serial, std::string& controller, std::string& date) override;
  int GetPrinterInfo(std::string& version, std::string& name, std::string& model,
                     std::string& serial, std::string& controller) override;
  int GetResinInfo_BEGO(std::string& name, std::string& lot, std::string& expiry,
                        std::string& volume) override;
  int GetResinInfo(int* state, int* remaining, std::string& date, std::string& type) override;
  int GetResinInfo2(int* state, int* remaining, std::string& resinCode, int* tankVolume,
                    std::string& lot) override;
  int GetPrinterStatusWithErrorCode(int* status, int* errorCode) override;
  int GetPrinterStatus(int* status) override;
  int SendPrintFile(std::wstring path, NuvJobProgressCallback progress) override;
  int RegisterPrintingInfoCallback(NuvPrintingInfoCallback callback, uint32_t intervalMs) override;
  int RegisterErrorCodeCallback(NuvErrorCodeCallback callback) override;
  int SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2) override;
  int GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1, float* z2) override;
  int SetNickName(const std::string& name) override;
  int GetNickName(std::string& name) override;
  int GetApList(std::vector<std::string>& names) override;
  int IsconnectedAp(int* connected) override;
  int ConnectAp(std::string name, std::string key) override;
  int GetApAttribute(std::string name, int* signal, int* security) override;
  int DisconnectAp() override;
  IConnect* GetConnect() override;
  void Close() override;
  int GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) override;
  int GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) override;
  int GetAndroidVersion(std::string& version) override;
  int GetLCMPanelVersion(std::string& version) override;
  int IsOpenModeSupported(int* supported) override;
  int IsRegisteredCorrectTag(int* registered) override;
  int GetMacAddressWifi(std::string& mac) override;
  int GetMacAddressLan(std::string& mac) override;
  int GetTankType(int* type) override;
  int GetLastUpdatedIndex(int* index) override;
  int SetLastUpdatedIndex(int index) override;
  int GetCurrJobIndexAndTotalSize(int* index, int* totalSize) override;
  int GetJobInfo1(int jobIndex, std::string& jobName, std::string& resinCode,
                  std::string& startTime) override;
  int GetJobInfo2(int jobIndex, int* layers, int* minutes, int* resinVolume, int* result) override;
  int GetJobInfo3(int jobIndex, int* layerThickness, int* exposureTime, int* bottomExposureTime,
                  int* laserPower) override;
  int GetJobInfo4(int jobIndex, std::string& endTime, std::string& lot) override;
  int GetJobCounter(int kind, int* started, int* finished, int* cancelled, int* failed) override;
  int GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2, int* l3, int* t1,
                                int* t2, int* t3, int* z1, int* z2) override;
  int GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w, int* y) override;
  int GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3, int* p4,
                           int* p5) override;
  int GetPDSensorData(int laser, int* minimum, int* maximum, int* average) override;
  int GetLedUseTime(std::string& hours) override;
  int GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs, int* ls, int* wh, int* yh,
                           int* cli, int* cp, int* ps, int* yf, int* tt) override;
  int GetRepositionProcessing(int* processing) override;
  int ExecuteCommand(int code, const std::vector<std::string>& parameters,
                     std::map<std::string, std::string>& reply) override;
  int SetFWUpdateFileInfo_Android(uint32_t kind, uint32_t size, std::string path) override;
  int StartFWUpdateFileInfo_LCM(std::string path) override;
  int FinishFWUpdateFileInfo_LCM(std::string& answer) override;
  int SendFWData(const std::vector<uint8_t>& image) override;
  int SendFWPanelData(const std::vector<uint8_t>& image) override;
  int SetFWUpdateFileInfo_Engine(uint32_t size, const std::string& path) override;
  int SendFWDataAndroid(const std::vector<uint8_t>& image) override;
  int StartFWUpgradeProcess() override;
  int SkipSLAWarmup() override;
  int SearchUSBDevice(int* count) override;
  int GetDeviceInfo(std::string& value, int kind, int index, int field) override;
  int GetBroadCastResult(std::vector<std::string>& replies, std::string filter) override;
  int SetBroadCastPort(int port) override;
  int ConnectDeviceBySN(int kind, const std::string& serial) override;
  int SendGCodeFile(const std::wstring& path, NuvJobProgressCallback progress) override;
  int RegisterSendDataStartCallback(NuvSendDataStartCallback callback) override;
  int RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback callback) override;
  int RegisterSendDataCancelCallback(NuvSendDataCancelCallback callback) override;
  int SetParameter(PrinterParameter parameter, int value) override;
  int GetParameter(PrinterParameter parameter, int* value) override;

 private:
  JobContext NewJobContext() { return {connect_, clock_, printFiles_, callbacks_, jobs_}; }

  // Runs the command of an operation: the host is told of a failure once, by the result that the
  // operation has.
  CommandRunner Commands() {
    return {connect_, clock_,
            [this](ConnectError error, int code) { Fail(ResultOf(error), code); }};
  }

  // Tells the host of `result`, that of an operation whose command is `code`, and returns it.
  int Fail(int result, int code);

  // A resin query: a refusal that names the resin's state returns that (10 to 14, 1).
  int ReadResin(int code, Outputs outputs);

  // The table of `kind`, or null for a kind that has none.
  DeviceTable* TableOf(int kind);

  // Asks the open printer for the texts of its table entry. 0, or the code that ends the listing.
  int IdentifyDevice(DeviceEntry& entry);

  // First value of the BEGO serial query.
  int QueryBegoSerial(std::string& serial);

  Platform::Clock& clock_;
  // Shared with the status thread, which ends by itself when the host closes inside its callback.
  const std::shared_ptr<NuvConnect> channel_;
  const std::shared_ptr<JobState> jobState_;
  NuvConnect& connect_ = *channel_;
  JobState& jobs_ = *jobState_;
  DeviceTable usbDevices_;
  DeviceTable networkDevices_;
  NuvFileLibrary printFiles_;
  HostCallbacks callbacks_;
  PrintStatusHandler statusHandler_;  // last: its thread ends before all else goes
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_CONNECTING_FRAMEWORK_H_
