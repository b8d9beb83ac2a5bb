// What a printer does, in words.
#ifndef NUVCTL_STATE_H_
#define NUVCTL_STATE_H_

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "format.h"
#include "nuvprinter/nuvprinter.hpp"

namespace NuvCtl {

inline bool IsPrinting(const nuv::State& state) {
  return state.state == nuv::PrinterState::kPrinting;
}

// "idle", "printing", "receiving", "error", or "unknown (7)".
std::string StateName(nuv::PrinterState state);

// "finished", "cancelled", "failed", "not ended", or "unknown (7)".
std::string JobResultName(nuv::JobResult result);

// "12 of 340", or "12" when `layers`, of the whole print, is not known.
std::string LayerText(const nuv::State& state, std::optional<int> layers);

// "14:05" by this computer's clock, with the date when that is not within the next 20 hours.
std::string TimeText(std::chrono::system_clock::time_point time);

Fields StateFields(const nuv::State& state, std::optional<int> layers);
nlohmann::ordered_json StateJson(const nuv::State& state, std::optional<int> layers);

// "printing crown, layer 12 of 340, 34 %, ends 14:05"; other states with nothing but what they
// tell.
std::string StateText(const nuv::State& state, std::optional<int> layers);

}  // namespace NuvCtl

#endif  // NUVCTL_STATE_H_
