#include "nuvsim/usb/device.h"

#include <initializer_list>
#include <utility>

namespace NuvSim {
namespace {

// Direction and kind of request types; the recipient is in the other bits.
constexpr uint8_t kKindMask = 0x60;
constexpr uint8_t kStandard = 0x00;
constexpr uint8_t kClass = 0x20;
constexpr uint8_t kRecipientMask = 0x1f;

// Standard requests.
constexpr uint8_t kGetStatus = 0;
constexpr uint8_t kClearFeature = 1;
constexpr uint8_t kSetFeature = 3;
constexpr uint8_t kGetDescriptor = 6;
constexpr uint8_t kGetConfiguration = 8;
constexpr uint8_t kSetConfiguration = 9;
constexpr uint8_t kGetInterface = 10;
constexpr uint8_t kSetInterface = 11;

// Requests to printers.
constexpr uint8_t kGetDeviceId = 0;
constexpr uint8_t kGetPortStatus = 1;
constexpr uint8_t kSoftReset = 2;

constexpr char kSelectedWithoutError = 0x18;
constexpr char kSelfPowered = 1;

// Kinds of descriptors.
constexpr uint8_t kDeviceKind = 1;
constexpr uint8_t kConfigurationKind = 2;
constexpr uint8_t kStringKind = 3;
constexpr uint8_t kQualifierKind = 6;

// Indices of texts.
constexpr uint8_t kManufacturer = 1;
constexpr uint8_t kProduct = 2;
constexpr uint8_t kSerial = 3;

constexpr size_t kLongestText = 126;  // characters that fit in a descriptor
constexpr uint8_t kAscii = 0x80;
constexpr uint8_t kControlPacket = 64;

// The bus's own hub has number 1.
constexpr uint32_t kFirstNumber = 2;

std::string Bytes(std::initializer_list<int> numbers) {
  std::string bytes;
  for (const int each : numbers) bytes += static_cast<char>(each);
  return bytes;
}

constexpr int Low(uint16_t number) { return number & 0xff; }
constexpr int High(uint16_t number) { return number >> 8; }

std::string Configuration() {
  return Bytes({9, kConfigurationKind, 32, 0, /*interfaces*/ 1, /*number*/ 1, /*text*/ 0,
                /*self-powered*/ 0xc0, /*2 mA*/ 1}) +
         Bytes({9, 4, /*number*/ 0, /*alternative*/ 0, /*endpoints*/ 2, kPrinterClass,
                kPrinterSubclass, kPrinterProtocol, /*text*/ 0}) +
         Bytes({7, 5, kBulkOut, /*bulk*/ 2, /*512*/ 0, 2, /*interval*/ 0}) +
         Bytes({7, 5, 0x80 | kBulkIn, /*bulk*/ 2, /*512*/ 0, 2, /*interval*/ 0});
}

// What another speed would look like: the same, with smaller packets.
std::string Qualifier() {
  return Bytes({10, kQualifierKind, 0, 2, 0, 0, 0, kControlPacket, /*configurations*/ 1, 0});
}

std::string Languages() { return Bytes({4, kStringKind, /*US English*/ 0x09, 0x04}); }

// Texts of the configuration may be any bytes; those that are not ASCII show as "?".
std::string Text(const std::string& text) {
  const std::string told = text.substr(0, kLongestText);
  std::string bytes = Bytes({static_cast<int>(2 + 2 * told.size()), kStringKind});
  for (const char each : told) {
    bytes += static_cast<unsigned char>(each) < kAscii ? each : '?';
    bytes += '\0';
  }
  return bytes;
}

}  // namespace

SetupPacket::SetupPacket(const std::array<uint8_t, 8>& bytes)
    : type(bytes[0]),
      request(bytes[1]),
      value(static_cast<uint16_t>(bytes[2] | bytes[3] << 8)),
      index(static_cast<uint16_t>(bytes[4] | bytes[5] << 8)),
      length(static_cast<uint16_t>(bytes[6] | bytes[7] << 8)) {}

bool SetupPacket::IsSoftReset() const {
  return (type & kKindMask) == kClass && request == kSoftReset;
}

UsbDescriptors::UsbDescriptors(UsbId id, std::string model, std::string serial)
    : id_(id), model_(std::move(model)), serial_(std::move(serial)) {}

std::optional<std::string> UsbDescriptors::Answer(const SetupPacket& setup) {
  std::optional<std::string> answer;
  if ((setup.type & kKindMask) == kStandard) answer = AnswerStandard(setup);
  if ((setup.type & kKindMask) == kClass) answer = AnswerPrinter(setup);
  if (answer && answer->size() > setup.length) answer->resize(setup.length);
  return answer;
}

std::optional<std::string> UsbDescriptors::AnswerStandard(const SetupPacket& setup) {
  switch (setup.request) {
    case kGetDescriptor:
      return Descriptor(setup.value);
    case kSetConfiguration:
      if (setup.value > 1) return std::nullopt;
      configuration_ = static_cast<uint8_t>(setup.value);
      return "";
    case kGetConfiguration:
      return Bytes({configuration_});
    case kGetStatus:
      return Bytes({(setup.type & kRecipientMask) == 0 ? kSelfPowered : 0, 0});
    case kSetInterface:
      if (setup.value != 0 || setup.index != 0) return std::nullopt;
      return "";
    case kGetInterface:
      return Bytes({0});
    case kClearFeature:
    case kSetFeature:
      return "";
    default:
      return std::nullopt;
  }
}

std::optional<std::string> UsbDescriptors::AnswerPrinter(const SetupPacket& setup) const {
  switch (setup.request) {
    case kGetDeviceId:
      return Identification();
    case kGetPortStatus:
      return Bytes({kSelectedWithoutError});
    case kSoftReset:
      return "";
    default:
      return std::nullopt;
  }
}

std::optional<std::string> UsbDescriptors::Descriptor(uint16_t kindAndIndex) const {
  const int index = Low(kindAndIndex);
  switch (High(kindAndIndex)) {
    case kDeviceKind:
      return Device();
    case kConfigurationKind:
      if (index != 0) return std::nullopt;
      return Configuration();
    case kQualifierKind:
      return Qualifier();
    case kStringKind:
      if (index == 0) return Languages();
      if (index == kManufacturer) return Text("nuvsim");
      if (index == kProduct) return Text(model_);
      if (index == kSerial) return Text(serial_);
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

std::string UsbDescriptors::Device() const {
  return Bytes({18, kDeviceKind, /*USB 2.0*/ 0, 2, /*class: the interface's*/ 0, 0, 0,
                kControlPacket, Low(id_.vendor), High(id_.vendor), Low(id_.product),
                High(id_.product), Low(kUsbDeviceRelease), High(kUsbDeviceRelease), kManufacturer,
                kProduct, kSerial, /*configurations*/ 1});
}

// The text by which printers tell what they are, its length in front, high byte first.
std::string UsbDescriptors::Identification() const {
  const std::string text = "MFG:nuvsim;CLS:PRINTER;MDL:" + model_.substr(0, kLongestText) +
                           ";SN:" + serial_.substr(0, kLongestText) + ";";
  const auto length = static_cast<uint16_t>(text.size() + 2);
  return Bytes({High(length), Low(length)}) + text;
}

UsbDevice::UsbDevice(asio::io_context& io, Wire& wire, size_t number, UsbId id,
                     const std::string& model, const std::string& serial)
    : pipe(io, wire),
      descriptors(id, model, serial),
      announced_{kFirstNumber + static_cast<uint32_t>(number), "1-" + std::to_string(number + 1),
                 id} {}

void UsbDevice::Unplug() {
  isPlugged_ = false;
  if (host_ != nullptr) host_->Ended();
}

void UsbDevice::Attach(UsbHost& host) {
  host_ = &host;
  pipe.Attach(host);
}

void UsbDevice::Detach() {
  host_ = nullptr;
  pipe.Detach();
}

}  // namespace NuvSim
