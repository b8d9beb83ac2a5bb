// Every export that calls the framework, to be called with arguments that fit it.
#ifndef NUV_TESTS_API_EXPORT_ROWS_H_
#define NUV_TESTS_API_EXPORT_ROWS_H_

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "nuvconnect/NuvConnect5.h"

// Inputs that differ from what tells their place, by the place (from 1) among all parameters.
using Inputs = std::map<int, std::string>;

template <class Result, class... Parameters>
auto HostCallbackOf(Result (*)(Parameters...)) {
  return +[](Parameters...) { return Result(); };
}

// What an export is called with at one place among its parameters: inputs, and memory for outputs,
// exactly as much as the header asks for.
template <class P>
class Argument {
  using Target = std::remove_pointer_t<P>;

 public:
  static constexpr bool kIsCallback = std::is_function_v<Target>;
  static constexpr bool kIsOutput =
      std::is_pointer_v<P> && !std::is_const_v<Target> && !kIsCallback;

  // An input that tells its place.
  void SetPlace(int place) {
    Set(std::is_arithmetic_v<P> ? std::to_string(place) + ".25" : "s" + std::to_string(place));
  }
  void Set(const std::string& input) {
    input_ = input;
    if constexpr (std::is_arithmetic_v<P>) value_ = static_cast<P>(std::stod(input));
  }

  P Get() {
    if constexpr (std::is_same_v<P, char*>) return text_.data();
    if constexpr (std::is_same_v<P, char**>) {
      for (std::vector<char>& entry : entries_) list_.push_back(entry.data());
      return list_.data();
    }
    if constexpr (std::is_same_v<P, int*> || std::is_same_v<P, float*>) return &number_;
    if constexpr (std::is_same_v<P, const char*>) return input_.c_str();
    if constexpr (std::is_same_v<P, const wchar_t*>) {
      wide_.assign(input_.begin(), input_.end());
      return wide_.c_str();
    }
    if constexpr (std::is_same_v<P, const unsigned char*>) {
      static const std::string kBytes = "abcd" + std::string(NUV_PANEL_IMAGE_BYTES, 'e');
      return reinterpret_cast<const unsigned char*>(kBytes.data());
    }
    if constexpr (std::is_arithmetic_v<P>) return value_;
    if constexpr (kIsCallback) return HostCallbackOf(P());
  }

  // How the fake notes an input.
  std::string Noted() const {
    std::ostringstream noted;
    if constexpr (std::is_arithmetic_v<P>) {
      noted << value_;
    } else {
      noted << (kIsCallback ? "callback" : input_);
    }
    return noted.str();
  }

  std::string Output() const {
    if constexpr (std::is_same_v<P, char*>) return text_.data();
    if constexpr (std::is_same_v<P, char**>) return entries_.front().data();
    return std::to_string(static_cast<int>(number_));
  }

 private:
  static constexpr int kEntries = 99;
  static constexpr size_t kEntryBytes = 8;  // the entry size is a place, and one more

  std::string input_;
  std::wstring wide_;
  std::conditional_t<std::is_arithmetic_v<P>, P, int> value_ = 0;
  // Their sizes are the least that a host may give.
  static std::vector<char> Buffer(size_t size) {
    std::vector<char> buffer(size);
    buffer.front() = '#';
    return buffer;
  }
  std::vector<char> text_ = Buffer(std::is_same_v<P, char*> ? NUV_TEXT_BYTES : 1);
  std::vector<std::vector<char>> entries_ =
      std::vector<std::vector<char>>(std::is_same_v<P, char**> ? kEntries : 0, Buffer(kEntryBytes));
  std::vector<char*> list_;
  // Also the room in a list.
  std::conditional_t<std::is_same_v<P, float*>, float, int> number_ = kEntries;
};

struct Outcome {
  int result;
  std::string outputs;
};

struct Row {
  std::string name;
  std::function<Outcome(const Inputs&)> call;
  std::string operation;  // with its inputs
  std::string outputs, untouched;
  bool isYesNo = false;   // true on success
  bool isSingle = false;  // one string, which is written on success only
  bool isRaw = false;     // the raw channel: a reply and always 0

  // What a failed operation leaves in the outputs.
  std::string AfterFailure() const { return isSingle ? untouched : outputs; }
  int Returns(int result) const { return isYesNo ? int{result == NUV_OK} : result; }
  Outcome Call(const Inputs& inputs = {}) const { return call(inputs); }
};

template <class... P>
std::string Outputs(const std::tuple<Argument<P>...>& arguments) {
  std::string outputs;
  [[maybe_unused]] const auto add = [&](const auto& each) {
    outputs += each.kIsOutput ? " " + each.Output() : "";
  };
  std::apply([&](const auto&... each) { (add(each), ...); }, arguments);
  return outputs;
}

// Without an `operation` that of the export's name, with all inputs and outputs in order.
template <class Result, class... P>
Row Of(const std::string& name, Result (*function)(P...), std::string operation = "",
       std::string outputs = "") {
  std::tuple<Argument<P>...> arguments;
  [[maybe_unused]] int place = 0, number = 0;
  std::apply([&](auto&... each) { (each.SetPlace(++place), ...); }, arguments);
  if (operation.empty()) {
    operation = name.substr(4);
    [[maybe_unused]] const auto add = [&](const auto& each) {
      if (each.kIsOutput) {
        outputs += " " + std::to_string(++number);
      } else {
        operation += " " + each.Noted();
      }
    };
    std::apply([&](const auto&... each) { (add(each), ...); }, arguments);
  }
  const auto call = [=](const Inputs& inputs) -> Outcome {
    auto own = arguments;
    [[maybe_unused]] int at = 0;
    [[maybe_unused]] const auto set = [&](auto& each) {
      const auto input = inputs.find(++at);
      if (input != inputs.end()) each.Set(input->second);
    };
    std::apply([&](auto&... each) { (set(each), ...); }, own);
    const Result result = std::apply([&](auto&... each) { return function(each.Get()...); }, own);
    return {result, Outputs(own)};
  };
  Row row{name, call, operation, outputs, Outputs(arguments)};
  row.isYesNo = std::is_same_v<Result, bool>;
  row.isSingle = std::is_same_v<std::tuple<P...>, std::tuple<char*>>;
  row.isRaw = !row.isYesNo && name.rfind("API_NUVCONNECT_", 0) == 0;
  return row;
}
#define NUV_ROW(function, ...) Of(#function, function, __VA_ARGS__)
#define NUV_PLAIN(function) Of(#function, function)

// All that need a framework, by their names. The list makes a plain row of each export.
const std::map<std::string, Row> kRows = [] {
  std::map<std::string, Row> rows;
  // Under another name, or with lengths and rooms that are no inputs of their own.
  for (const Row& row :
       {NUV_ROW(API_SearchNetworkDevice, "SearchNetworkDevice s4 s5 6", " 1 1"),
        NUV_ROW(API_GetDeviceList, "GetDeviceList 1 5", " 1 1"),
        NUV_ROW(API_GetBroadCastResult, "GetBroadCastResult s4", " 1 1"),
        NUV_ROW(API_NUVCONNECT_ExecutiveCommand, "ExecuteCommand s1", " 1"),
        NUV_ROW(API_NUVCONNECT_ReceiveCommand, "ReceiveReply", " 1"),
        NUV_ROW(API_SetLaserPower, "SetParameter 0 1"),
        NUV_ROW(API_GetLaserPower, "GetParameter 0", " 1"),
        NUV_ROW(API_SetZCompensation, "SetParameter 1 1"),
        NUV_ROW(API_GetZCompensation, "GetParameter 1", " 1"),
        NUV_ROW(API_GetApList, "GetApList", " 1 1"), NUV_ROW(API_SendFWData, "SendFWData ab"),
        NUV_ROW(API_SendFWDataAndroid, "SendFWDataAndroid ab"),
        NUV_ROW(API_SendFWPanelData, "SendFWPanelData ab"),
        NUV_ROW(API_NUVCONNECT_OpenDevice, "OpenDevice"),
        NUV_ROW(API_NUVCONNECT_CloseDevice, "CloseDevice")}) {
    rows.emplace(row.name, row);
  }
  for (const Row& row : {
#include "exports.inc"
       }) {
    rows.emplace(row.name, row);
  }
  return rows;
}();

#endif  // NUV_TESTS_API_EXPORT_ROWS_H_
