#include "nuvsim/commands.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>

namespace nuvsim {
namespace {

constexpr const char* kDentalModel = "BEGO VARSEO XS";
constexpr std::size_t kShortSerialLength = 6;
constexpr double kLongestPrintMinutes = 1e9;

template <typename Number>
std::optional<Number> ParseNumber(std::string_view text) {
  Number number{};
  const char* const last = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), last, number);
  if (text.empty() || parsed.ec != std::errc() || parsed.ptr != last) return std::nullopt;
  return number;
}

bool IsDental(const Machine& machine) { return machine.Config().model == kDentalModel; }

// The dental printer reports a short serial number with its identity, the whole one on request.
std::string IdentitySerial(const Machine& machine) {
  const std::string& serial = machine.Config().serial;
  if (!IsDental(machine) || serial.size() <= kShortSerialLength) return serial;
  return serial.substr(serial.size() - kShortSerialLength);
}

std::string StateField(Machine& machine) {
  return "S:" + std::to_string(static_cast<int>(machine.CurrentState()));
}

// Each command: carries itself out and returns what follows the head of the answer.

std::string Identity(Machine& machine, const Request&) {
  const PrinterConfig& config = machine.Config();
  std::string answer = "OK V:" + config.firmware + " N:" + config.name + " M:" + config.model +
                       " S:" + IdentitySerial(machine) + " C:" + config.controllerVersion;
  if (const auto progress = machine.Printing()) {
    answer += " L:" + std::to_string(progress->layer) +
              " T:" + std::to_string(progress->minutesLeft) + " R:Printing";
  }
  return answer;
}

std::string PrinterState(Machine& machine, const Request&) {
  std::string answer = "OK " + StateField(machine);
  if (machine.CurrentState() == State::kError) {
    answer += " E:" + std::to_string(machine.ErrorNumber());
  } else if (const auto progress = machine.Printing()) {
    answer += " L:" + std::to_string(progress->layer) +
              " T:" + std::to_string(progress->minutesLeft) +
              " C:" + std::to_string(progress->percent) + "% R:" + progress->jobName;
  }
  return answer;
}

// Size, layers, layer thickness, minutes, volume and the exposure and motion settings, which the
// simulator checks to be numbers but does not use.
std::string OpenJob(Machine& machine, const Request& request) {
  constexpr std::string_view kTags = "SLTRVCEHYUP";
  const auto& parameters = request.parameters;
  std::optional<std::uint64_t> bytes;
  std::optional<std::uint32_t> layers;
  double minutes = 0;
  bool valid = parameters.size() == kTags.size();
  for (std::size_t i = 0; valid && i < kTags.size(); ++i) {
    const std::string_view value = parameters[i].substr(1);
    const auto number = ParseNumber<double>(value);
    valid = parameters[i].front() == kTags[i] && number && std::isfinite(*number);
    if (!valid) break;
    if (kTags[i] == 'S') bytes = ParseNumber<std::uint64_t>(value);
    if (kTags[i] == 'L') layers = ParseNumber<std::uint32_t>(value);
    if (kTags[i] == 'R') minutes = std::clamp(*number, 0.0, kLongestPrintMinutes);
  }
  if (valid && bytes && layers && machine.OpenJob(*bytes, *layers, minutes)) return "OK";
  return "NG " + StateField(machine);
}

std::string AbandonJob(Machine& machine, const Request& request) {
  if (request.parameters != std::vector<std::string_view>{"S2"}) return "NG";
  machine.AbandonJob();
  return "OK";
}

std::string ResinState(Machine& machine, const Request&) {
  const ResinConfig& resin = machine.Resin();
  if (resin.refusal) return "NG S:" + std::to_string(*resin.refusal);
  return "OK S:" + std::to_string(resin.state) + " R:" + std::to_string(resin.remainingMl) +
         " C:" + resin.code + " V:" + std::to_string(resin.tankMl) + " Q:" + resin.lot;
}

std::string JobTotals(Machine& machine, const Request&) {
  const JobRecord* job = machine.LastJob();
  if (job == nullptr) return "OK L:0 T:0";
  return "OK L:" + std::to_string(job->layers) +
         " T:" + std::to_string(std::llround(job->minutes)) + " R:" + job->name;
}

std::string FreeBuffer(Machine& machine, const Request&) {
  return "OK S:" + std::to_string(machine.FreeBytes());
}

std::string WholeSerial(Machine& machine, const Request&) {
  return IsDental(machine) ? "OK S" + machine.Config().serial : "NG";
}

std::string JobReceipt(Machine& machine, const Request&) {
  const JobRecord* job = machine.LastJob();
  if (job == nullptr) return "OK I0 S0";
  return "OK I" + std::to_string(job->index) + " S" + std::to_string(job->receivedBytes);
}

std::string Nickname(Machine& machine, const Request&) {
  return "OK N:" + machine.Config().nickname;
}

struct CommandRow {
  int code;
  std::string (*answer)(Machine&, const Request&);
};

constexpr CommandRow kCommands[] = {
    {101, Identity},   {102, PrinterState}, {103, OpenJob},    {104, AbandonJob},
    {105, ResinState}, {107, JobTotals},    {117, FreeBuffer}, {140, WholeSerial},
    {157, JobReceipt}, {197, Nickname},     {503, FreeBuffer},
};

}  // namespace

Request ParseRequest(std::string_view line) {
  std::vector<std::string_view> tokens;
  while (true) {
    const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
    line.remove_prefix(start);
    if (line.empty()) break;
    const std::size_t length = std::min(line.find(' '), line.size());
    tokens.push_back(line.substr(0, length));
    line.remove_prefix(length);
  }
  Request request;
  if (tokens.empty()) return request;
  const std::string_view first = tokens.front();
  const std::size_t headLength = std::min(first.find_first_not_of("0123456789", 1), first.size());
  request.head = first.substr(0, headLength);
  request.code = headLength == first.size() ? ParseNumber<int>(first.substr(1)).value_or(-1) : -1;
  request.parameters.assign(tokens.begin() + 1, tokens.end());
  return request;
}

std::string Answer(Machine& machine, const Request& request) {
  const auto* row =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&request](const CommandRow& each) { return each.code == request.code; });
  const std::string head(request.head);
  if (row == std::end(kCommands)) return head + " NG";
  return head + " " + row->answer(machine, request);
}

}  // namespace nuvsim
