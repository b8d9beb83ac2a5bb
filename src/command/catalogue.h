// The table of printer commands: what differs from one to the next, as data.
#ifndef NUV_COMMAND_CATALOGUE_H_
#define NUV_COMMAND_CATALOGUE_H_

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace Nuv::Command {

// Parameter count of a tagged request.
constexpr int kAny = -1;

// How a request carries its parameters.
enum class Request : uint8_t {
  kCommon,  // one parameter behind "S", else none
  kTagged,  // each parameter behind its tag letter
  kNamed,   // tagged, the last one a name in angle brackets, so that it may hold blanks
  kOwn      // the class builds it
};

// How the values of a reply are read (reply_views.h).
enum class Values : uint8_t { kNone, kLetter, kField, kRestOfLine };
enum class Keys : uint8_t { kColon, kLetter };

// Which token tells that the printer accepted the command.
enum class Ok : uint8_t { kSecond, kAnyToken };

// Who makes the command: the factory, or a processor or the framework for itself.
enum class Maker : uint8_t { kFactory, kDirect };

constexpr bool IsSeparator(char c) { return c == ':' || c == '='; }

// Keys of a named record, with their separator where the printer always writes one.
struct Record {
  const std::string_view* keys = nullptr;
  size_t count = 0;
  // A value may hold blanks ("BEGO VARSEO XS") and goes on over the tokens that hold no separator:
  // only where each field has one. In the others such a token may be a field of its own ("S1").
  bool valuesGoOn = false;
};

struct CommandRow {
  int32_t code;
  Request request;
  std::string_view tags;  // in wire order
  int exactCount;         // with any other count the bare line is sent, which the printer refuses
  Values values;
  Keys keys;
  Ok ok;
  Record record;
  Maker maker;
};

// ---- Named records: the keys as the printer writes them

using Name = std::string_view;

// While a print runs the identity also carries its layer, minutes left and state.
inline constexpr Name kIdentityKeys[] = {"V:", "N:", "M:", "C:", "S:", "L:", "R:", "T:"};
inline constexpr Name kStatusKeys[] = {"C", "E", "L", "R", "S", "T"};
inline constexpr Name kResinKeys[] = {"C:", "P", "Q", "R", "S", "V"};
inline constexpr Name kJobTotalsKeys[] = {"L", "R", "T"};
inline constexpr Name kStateOnlyKeys[] = {"S"};
inline constexpr Name kModeOnlyKeys[] = {"M"};
inline constexpr Name kVersionOnlyKeys[] = {"V"};
inline constexpr Name kRepositionOnlyKeys[] = {"R"};
inline constexpr Name kAccessPointKeys[] = {"SSID", "C", "M", "R", "S"};
inline constexpr Name kNetworkKeys[] = {
    "SSID=", "IP=", "SUB=", "GATE=", "DNS1=", "DNS2=", "MAC=", "C", "M", "R", "S"};
inline constexpr Name kSensorsKeys[] = {"C_B", "C_LI", "C_P", "C_T", "L_S", "P_S", "T_T",
                                        "V_S", "W_H",  "Y_F", "Y_H", "ZLB", "ZLT"};
inline constexpr Name kLaserPulsesKeys[] = {"LSU:", "P1:", "P2:", "P3:", "P4:", "P5:"};
inline constexpr Name kVersionsKeys[] = {"L", "V"};
inline constexpr Name kFlashKeys[] = {"C:", "L:", "P:", "S:", "T:", "W:", "Y:", "C1", "C2",
                                      "C3", "L1", "L2", "L3", "T1", "T2", "T3", "Z1", "Z2"};
inline constexpr Name kAuxiliaryKeys[] = {"A", "B", "E", "G", "T"};

template <size_t N>
constexpr Record Of(const Name (&keys)[N]) {
  bool eachHasSeparator = true;
  for (const Name& key : keys) eachHasSeparator = eachHasSeparator && IsSeparator(key.back());
  return {keys, N, eachHasSeparator};
}

inline constexpr Record kNoRecord{};
inline constexpr Record kIdentity = Of(kIdentityKeys);
inline constexpr Record kStatus = Of(kStatusKeys);
inline constexpr Record kResin = Of(kResinKeys);
inline constexpr Record kJobTotals = Of(kJobTotalsKeys);
inline constexpr Record kStateOnly = Of(kStateOnlyKeys);
inline constexpr Record kModeOnly = Of(kModeOnlyKeys);
inline constexpr Record kVersionOnly = Of(kVersionOnlyKeys);
inline constexpr Record kRepositionOnly = Of(kRepositionOnlyKeys);
inline constexpr Record kAccessPoint = Of(kAccessPointKeys);
inline constexpr Record kNetwork = Of(kNetworkKeys);
inline constexpr Record kSensors = Of(kSensorsKeys);
inline constexpr Record kLaserPulses = Of(kLaserPulsesKeys);
inline constexpr Record kVersions = Of(kVersionsKeys);
inline constexpr Record kFlash = Of(kFlashKeys);
inline constexpr Record kAuxiliary = Of(kAuxiliaryKeys);

// clang-format off
// One row per code, in code order.
inline constexpr CommandRow kRows[] = {
    // code request       tags            count values               keys           ok             record           made by
    {101, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kIdentity,       Maker::kFactory},
    {102, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kStatus,         Maker::kFactory},
    {103, Request::kTagged, "SLTRVCEHYUP",  kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {104, Request::kTagged, "S",            1,    Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {105, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kResin,          Maker::kFactory},
    {106, Request::kTagged, "SC",           2,    Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {107, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kJobTotals,      Maker::kFactory},
    {108, Request::kTagged, "SR",           kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {109, Request::kTagged, "XYZLTWERQP",   10,   Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {110, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {111, Request::kTagged, "S",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {112, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {117, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kStateOnly,      Maker::kFactory},
    {120, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {121, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {122, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {140, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {141, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {155, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {156, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {157, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {159, Request::kTagged, "SVC",          kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {160, Request::kTagged, "SC",           kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {166, Request::kTagged, "V",            kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {169, Request::kTagged, "S",            kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {170, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {171, Request::kTagged, "S",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {174, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {175, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {176, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {177, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {186, Request::kTagged, "L",            kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {188, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {189, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {190, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kAccessPoint,    Maker::kFactory},
    {191, Request::kOwn,    "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {192, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNetwork,        Maker::kFactory},
    {194, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {196, Request::kOwn,    "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {197, Request::kCommon, "",             kAny, Values::kRestOfLine, Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {198, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {219, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {301, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kAnyToken, kSensors,        Maker::kFactory},
    {303, Request::kTagged, "S",            kAny, Values::kNone,       Keys::kColon,  Ok::kAnyToken, kLaserPulses,    Maker::kFactory},
    {310, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kVersions,       Maker::kFactory},
    {319, Request::kTagged, "X",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {327, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kFlash,          Maker::kFactory},
    {332, Request::kTagged, "SVC",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {335, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kStateOnly,      Maker::kFactory},
    {353, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {354, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {355, Request::kOwn,    "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {356, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {366, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kModeOnly,       Maker::kFactory},
    {367, Request::kOwn,    "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {369, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kAnyToken, kNoRecord,       Maker::kDirect},
    {370, Request::kTagged, "XYZ",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {500, Request::kNamed,  "SLTRVCEHYUPN", kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {501, Request::kNamed,  "SN",           kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {503, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kStateOnly,      Maker::kFactory},
    {504, Request::kTagged, "A",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kVersionOnly,    Maker::kFactory},
    {506, Request::kTagged, "SAC",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {507, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {508, Request::kNamed,  "SVN",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kDirect},
    {515, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kRepositionOnly, Maker::kFactory},
    {550, Request::kTagged, "WR",           kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kModeOnly,       Maker::kFactory},
    {708, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {807, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   kNoRecord,       Maker::kFactory},
    {839, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kAnyToken, kAuxiliary,      Maker::kFactory},
};
// clang-format on

// Place of `code` in kRows; std::size(kRows) when it has none. A place and not a pointer: comparing
// addresses is no constant expression to a compiler that adds the undefined-behaviour checks.
constexpr size_t RowPlace(int32_t code) {
  size_t place = 0;
  while (place < std::size(kRows) && kRows[place].code != code) ++place;
  return place;
}

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_CATALOGUE_H_
