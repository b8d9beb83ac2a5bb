// The table of printer commands: what differs from one to the next, as data.
#ifndef NUV_COMMAND_CATALOGUE_H_
#define NUV_COMMAND_CATALOGUE_H_

#include <array>
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

using Name = std::string_view;

// Keys of a named record as the printer writes them, with their separator where it always has one.
struct Record {
  static constexpr size_t kMostKeys = 18;

  std::array<Name, kMostKeys> keys{};
  size_t count = 0;
  // A value may hold blanks ("BEGO VARSEO XS") and goes on over the tokens that hold no separator:
  // only where each field has one. In the others such a token may be a field of its own ("S1").
  bool valuesGoOn = false;
};

// The record of these keys; of none: the command has no named record.
template <class... Names>
constexpr Record Of(Names... keys) {
  return {{keys...}, sizeof...(keys), (IsSeparator(Name(keys).back()) && ...)};
}

struct CommandRow {
  int code;
  Request request;
  std::string_view tags;  // in wire order
  int exactCount;         // with any other count the bare line is sent, which the printer refuses
  Values values;
  Keys keys;
  Ok ok;
  Maker maker;
  Record record;
};

// While a print runs the identity (101) also carries its layer, minutes left and state.
// clang-format off
// One row per code, in code order.
inline constexpr CommandRow kRows[] = {
    // code request       tags            count values               keys           ok             made by          record
    {101, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("V:", "N:", "M:", "C:", "S:", "L:", "R:", "T:")},
    {102, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("C", "E", "L", "R", "S", "T")},
    {103, Request::kTagged, "SLTRVCEHYUP",  kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {104, Request::kTagged, "S",            1,    Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {105, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("C:", "P", "Q", "R", "S", "V")},
    {106, Request::kTagged, "SC",           2,    Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {107, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("L", "R", "T")},
    {108, Request::kTagged, "SR",           kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {109, Request::kTagged, "XYZLTWERQP",   10,   Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {110, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {111, Request::kTagged, "S",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {112, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {117, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("S")},
    {120, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {121, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {122, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {140, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {141, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {155, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {156, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {157, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {159, Request::kTagged, "SVC",          kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {160, Request::kTagged, "SC",           kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {166, Request::kTagged, "V",            kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {169, Request::kTagged, "S",            kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {170, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {171, Request::kTagged, "S",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {174, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {175, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {176, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {177, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kLetter, Ok::kSecond,   Maker::kFactory, Of()},
    {186, Request::kTagged, "L",            kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {188, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {189, Request::kCommon, "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {190, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("SSID", "C", "M", "R", "S")},
    {191, Request::kOwn,    "",             kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {192, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("SSID=", "IP=", "SUB=", "GATE=", "DNS1=", "DNS2=", "MAC=", "C", "M", "R", "S")},
    {194, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {196, Request::kOwn,    "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {197, Request::kCommon, "",             kAny, Values::kRestOfLine, Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {198, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {219, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {301, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kAnyToken, Maker::kFactory, Of("C_B", "C_LI", "C_P", "C_T", "L_S", "P_S", "T_T", "V_S", "W_H", "Y_F", "Y_H", "ZLB", "ZLT")},
    {303, Request::kTagged, "S",            kAny, Values::kNone,       Keys::kColon,  Ok::kAnyToken, Maker::kFactory, Of("LSU:", "P1:", "P2:", "P3:", "P4:", "P5:")},
    {310, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("L", "V")},
    {319, Request::kTagged, "X",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {327, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("C:", "L:", "P:", "S:", "T:", "W:", "Y:", "C1", "C2", "C3", "L1", "L2", "L3", "T1", "T2", "T3", "Z1", "Z2")},
    {332, Request::kTagged, "SVC",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {335, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("S")},
    {353, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {354, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {355, Request::kOwn,    "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {356, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {366, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("M")},
    {367, Request::kOwn,    "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {369, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kAnyToken, Maker::kDirect,  Of()},
    {370, Request::kTagged, "XYZ",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {500, Request::kNamed,  "SLTRVCEHYUPN", kAny, Values::kLetter,     Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {501, Request::kNamed,  "SN",           kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {503, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("S")},
    {504, Request::kTagged, "A",            kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("V")},
    {506, Request::kTagged, "SAC",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {507, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {508, Request::kNamed,  "SVN",          kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kDirect,  Of()},
    {515, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("R")},
    {550, Request::kTagged, "WR",           kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of("M")},
    {708, Request::kCommon, "",             kAny, Values::kField,      Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {807, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kSecond,   Maker::kFactory, Of()},
    {839, Request::kCommon, "",             kAny, Values::kNone,       Keys::kColon,  Ok::kAnyToken, Maker::kFactory, Of("A", "B", "E", "G", "T")},
};
// clang-format on

// Place of `code` in kRows; std::size(kRows) when it has none. A place and not a pointer: comparing
// addresses is no constant expression to a compiler that adds the undefined-behaviour checks.
constexpr size_t RowPlace(int code) {
  size_t place = 0;
  while (place < std::size(kRows) && kRows[place].code != code) ++place;
  return place;
}

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_CATALOGUE_H_
