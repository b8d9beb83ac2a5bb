// The framework behind the exports, as an interface for hosts that drive it directly
// (GetConnectingInstance). NuvConnect5.h documents each operation at its export: meaning, units,
// ranges, result codes, printer command and reply keys; here stands only what differs.
#ifndef NUVCONNECT_ICONNECTINGFRAMEWORK_H_
#define NUVCONNECT_ICONNECTINGFRAMEWORK_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "nuvconnect/Callbacks.h"
#include "nuvconnect/IConnect.h"

// Nested like this for hosts older than C++17.
namespace Nuv {
namespace Connect {

// Settings that SetParameter and GetParameter tell apart.
enum class PrinterParameter : int { kLaserPower = 0, kZCompensation = 1 };

// Thread-safety: operations may be called from any thread; the channel serialises the traffic.
// Choosing, listing and jobs change what is current, so one thread at a time does those.
// Errors: the result codes of ResultCodes.h. A malformed number in a printer's reply leaves an
// operation as std::invalid_argument or std::out_of_range; the listing of a BEGO printer that names
// no serial number ends with std::out_of_range. NUVCONNECT_NO_EXCEPTIONS changes nothing here.
// Outputs: on failure an operation leaves its outputs at 0 or empty unless its export says else.
// The order of the operations is binding: hosts call them through the virtual table.
class IConnectingFramework {
 public:
  virtual ~IConnectingFramework() = default;

  // Finding and choosing printers.
  virtual int SetUpdPort(int port) = 0;
  virtual int SearchNetworkDevice(std::vector<std::string>& found, std::string address,
                                  std::string netmask, int timeoutMs) = 0;
  virtual int ConnectNetWorkDevice(std::string address) = 0;
  // Appends to `serials`.
  virtual int GetDeviceList(int kind, std::vector<std::string>& serials, int timeoutMs) = 0;
  virtual int ChooseDevice(int kind, int index) = 0;

  // Identity, resin and state.
  virtual int GetPrinterInfo_BEGO(std::string& version, std::string& name, std::string& model,
                                  std::string& serial, std::string& controller,
                                  std::string& date) = 0;
  virtual int GetPrinterInfo(std::string& version, std::string& name, std::string& model,
                             std::string& serial, std::string& controller) = 0;
  virtual int GetResinInfo_BEGO(std::string& name, std::string& lot, std::string& expiry,
                                std::string& volume) = 0;
  virtual int GetResinInfo(int* state, int* remaining, std::string& date, std::string& type) = 0;
  virtual int GetResinInfo2(int* state, int* remaining, std::string& resinCode, int* tankVolume,
                            std::string& lot) = 0;
  virtual int GetPrinterStatusWithErrorCode(int* status, int* errorCode) = 0;
  virtual int GetPrinterStatus(int* status) = 0;

  // Jobs and callbacks.
  virtual int SendPrintFile(std::wstring path, NuvJobProgressCallback progress) = 0;
  virtual int RegisterPrintingInfoCallback(NuvPrintingInfoCallback callback,
                                           uint32_t intervalMs) = 0;
  virtual int RegisterErrorCodeCallback(NuvErrorCodeCallback callback) = 0;

  // Settings.
  virtual int SetBCPScaling(float x1, float x2, float y1, float y2, float z1, float z2) = 0;
  virtual int GetBCPScaling(float* x1, float* x2, float* y1, float* y2, float* z1, float* z2) = 0;
  virtual int SetNickName(const std::string& name) = 0;
  virtual int GetNickName(std::string& name) = 0;

  // Wireless access points.
  virtual int GetApList(std::vector<std::string>& names) = 0;
  virtual int IsconnectedAp(int* connected) = 0;
  virtual int ConnectAp(std::string name, std::string key) = 0;
  virtual int GetApAttribute(std::string name, int* signal, int* security) = 0;
  virtual int DisconnectAp() = 0;

  // The raw channel; owned by the framework and not to be destroyed by the caller. Its
  // EnumerateDevices finds printers that ChooseDevice and ConnectNetWorkDevice then reach, without
  // opening each as GetDeviceList does, which disturbs the frameworks that hold one.
  virtual IConnect* GetConnect() = 0;

  // Raises the closing flag, which ends the status thread, and nothing else: queries and jobs work
  // on. Destruction gives up waiting for replies, waits for the thread as API_Close tells (not on
  // the thread itself, inside the printing-info callback) and frees everything.
  virtual void Close() = 0;

  // Progress, versions and features.
  virtual int GetTotalLayerAndTime(int* totalLayers, int* totalMinutes) = 0;
  virtual int GetPrintingStatus(int* layer, int* progressPercent, int* minutesLeft) = 0;
  virtual int GetAndroidVersion(std::string& version) = 0;
  virtual int GetLCMPanelVersion(std::string& version) = 0;
  virtual int IsOpenModeSupported(int* supported) = 0;
  virtual int IsRegisteredCorrectTag(int* registered) = 0;
  virtual int GetMacAddressWifi(std::string& mac) = 0;
  virtual int GetMacAddressLan(std::string& mac) = 0;
  virtual int GetTankType(int* type) = 0;

  // Job history.
  virtual int GetLastUpdatedIndex(int* index) = 0;
  virtual int SetLastUpdatedIndex(int index) = 0;
  virtual int GetCurrJobIndexAndTotalSize(int* index, int* totalSize) = 0;
  virtual int GetJobInfo1(int jobIndex, std::string& jobName, std::string& resinCode,
                          std::string& startTime) = 0;
  virtual int GetJobInfo2(int jobIndex, int* layers, int* minutes, int* resinVolume,
                          int* result) = 0;
  virtual int GetJobInfo3(int jobIndex, int* layerThickness, int* exposureTime,
                          int* bottomExposureTime, int* laserPower) = 0;
  virtual int GetJobInfo4(int jobIndex, std::string& endTime, std::string& lot) = 0;
  virtual int GetJobCounter(int kind, int* started, int* finished, int* cancelled, int* failed) = 0;

  // Light engine and sensors.
  virtual int GetLSUFlashParameterFX150(int* c1, int* c2, int* c3, int* l1, int* l2, int* l3,
                                        int* t1, int* t2, int* t3, int* z1, int* z2) = 0;
  virtual int GetLSUFlashParameter(int* c, int* l, int* p, int* s, int* t, int* w, int* y) = 0;
  virtual int GetLSULaserPWMvalues(int laser, int* lsu, int* p1, int* p2, int* p3, int* p4,
                                   int* p5) = 0;
  virtual int GetPDSensorData(int laser, int* minimum, int* maximum, int* average) = 0;
  virtual int GetLedUseTime(std::string& hours) = 0;
  virtual int GetSensorStatusFX120(int* ct, int* cb, int* zlt, int* zlb, int* vs, int* ls, int* wh,
                                   int* yh, int* cli, int* cp, int* ps, int* yf, int* tt) = 0;
  virtual int GetRepositionProcessing(int* processing) = 0;

  // One command transaction with any code that the command factory knows: `parameters` in wire
  // order, `reply` replaced by the reply's keyed fields. Returns 1 for a code that the factory does
  // not know and for a failed transaction, 29 when the printer refused (the fields that it sent
  // along are in `reply`). No export.
  virtual int ExecuteCommand(int code, const std::vector<std::string>& parameters,
                             std::map<std::string, std::string>& reply) = 0;

  // Firmware; images are below 2 GiB.
  virtual int SetFWUpdateFileInfo_Android(uint32_t kind, uint32_t size, std::string path) = 0;
  virtual int StartFWUpdateFileInfo_LCM(std::string path) = 0;
  virtual int FinishFWUpdateFileInfo_LCM(std::string& answer) = 0;
  virtual int SendFWData(const std::vector<uint8_t>& image) = 0;
  virtual int SendFWPanelData(const std::vector<uint8_t>& image) = 0;
  virtual int SetFWUpdateFileInfo_Engine(uint32_t size, const std::string& path) = 0;
  virtual int SendFWDataAndroid(const std::vector<uint8_t>& image) = 0;
  virtual int StartFWUpgradeProcess() = 0;

  virtual int SkipSLAWarmup() = 0;

  // Devices, continued.
  virtual int SearchUSBDevice(int* count) = 0;
  virtual int GetDeviceInfo(std::string& value, int kind, int index, int field) = 0;
  virtual int GetBroadCastResult(std::vector<std::string>& replies, std::string filter) = 0;
  virtual int SetBroadCastPort(int port) = 0;
  virtual int ConnectDeviceBySN(int kind, const std::string& serial) = 0;

  // Command text job and transfer callbacks.
  virtual int SendGCodeFile(const std::wstring& path, NuvJobProgressCallback progress) = 0;
  virtual int RegisterSendDataStartCallback(NuvSendDataStartCallback callback) = 0;
  virtual int RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback callback) = 0;
  virtual int RegisterSendDataCancelCallback(NuvSendDataCancelCallback callback) = 0;

  // Laser power and Z compensation.
  virtual int SetParameter(PrinterParameter parameter, int value) = 0;
  virtual int GetParameter(PrinterParameter parameter, int* value) = 0;
};

}  // namespace Connect
}  // namespace Nuv

#endif  // NUVCONNECT_ICONNECTINGFRAMEWORK_H_
