#ifndef NUV_CONNECT_DEVICE_TABLE_H_
#define NUV_CONNECT_DEVICE_TABLE_H_

#include <array>
#include <string>
#include <vector>

namespace Nuv::Connect {

// A listed printer: its texts by NuvDeviceField (identifier, serial, model, supplementary).
struct DeviceEntry : std::array<std::string, 4> {
  std::string identity;  // names the device and the enumeration that listed it
};
using DeviceTable = std::vector<DeviceEntry>;

// Printers that report their serial number by a query of their own.
bool HasOwnSerialQuery(const std::string& model);

// Printers whose nickname the listing shows; letter case does not count.
bool ListsNickname(const std::string& model);

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_DEVICE_TABLE_H_
