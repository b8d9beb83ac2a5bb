#include "state.h"

#include <cstdlib>
#include <ctime>

namespace NuvCtl {
namespace {

using std::chrono::system_clock;

std::string Formatted(const std::tm& time, const char* form) {
  char text[32] = {};
  std::strftime(text, sizeof text, form, &time);
  return text;
}

}  // namespace

std::string StateName(nuv::PrinterState state) {
  constexpr const char* kNames[] = {"idle", "printing", "receiving", "error"};
  return FormatName(kNames, static_cast<int>(state));
}

std::string JobResultName(nuv::JobResult result) {
  constexpr const char* kNames[] = {"finished", "cancelled", "failed", "not ended"};
  return FormatName(kNames, static_cast<int>(result));
}

std::string LayerText(const nuv::State& state, std::optional<int> layers) {
  return std::to_string(state.layer.value_or(0)) +
         (layers ? " of " + std::to_string(*layers) : std::string());
}

std::string TimeText(system_clock::time_point time) {
  const std::time_t seconds = system_clock::to_time_t(time);
  const bool near = std::chrono::abs(time - system_clock::now()) < std::chrono::hours(20);
  return Formatted(*std::localtime(&seconds), near ? "%H:%M" : "%Y-%m-%d %H:%M");
}

Fields StateFields(const nuv::State& state, std::optional<int> layers) {
  Fields fields = {{"State", StateName(state.state)}};
  if (state.errorNumber) fields.emplace_back("Error number", std::to_string(*state.errorNumber));
  if (!IsPrinting(state)) return fields;
  if (state.jobName) fields.emplace_back("Job", *state.jobName);
  fields.emplace_back("Layer", LayerText(state, layers));
  if (state.percent) fields.emplace_back("Progress", std::to_string(*state.percent) + " %");
  fields.emplace_back("Time left", state.left ? std::to_string(state.left->count()) + " min"
                                              : std::string("not known"));
  if (state.endsAt) fields.emplace_back("Ends", TimeText(*state.endsAt));
  return fields;
}

nlohmann::ordered_json StateJson(const nuv::State& state, std::optional<int> layers) {
  nlohmann::ordered_json json = {{"state", StateName(state.state)},
                                 {"state_number", static_cast<int>(state.state)}};
  if (state.errorNumber) json["error_number"] = *state.errorNumber;
  if (!IsPrinting(state)) return json;
  if (state.jobName) json["job_name"] = *state.jobName;
  if (state.layer) json["layer"] = *state.layer;
  if (layers) json["layers"] = *layers;
  if (state.percent) json["percent"] = *state.percent;
  json["minutes_left"] = nullptr;
  if (state.left) json["minutes_left"] = state.left->count();
  if (state.endsAt) {
    const std::time_t seconds = system_clock::to_time_t(*state.endsAt);
    json["ends_at"] = Formatted(*std::gmtime(&seconds), "%Y-%m-%dT%H:%M:%SZ");
  }
  return json;
}

std::string StateText(const nuv::State& state, std::optional<int> layers) {
  std::string text = StateName(state.state);
  if (state.errorNumber) text += " " + std::to_string(*state.errorNumber);
  if (!IsPrinting(state)) return text;
  if (state.jobName) text += " " + *state.jobName;
  text += ", layer " + LayerText(state, layers);
  if (state.percent) text += ", " + std::to_string(*state.percent) + " %";
  return text + (state.endsAt ? ", ends " + TimeText(*state.endsAt) : ", end not known");
}

}  // namespace NuvCtl
