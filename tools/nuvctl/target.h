// The printer that is meant: opened, and asked with the words that a failure is told in.
#ifndef NUVCTL_TARGET_H_
#define NUVCTL_TARGET_H_

#include <optional>
#include <string>
#include <type_traits>

#include "error.h"
#include "listing.h"

namespace NuvCtl {

class Target {
 public:
  // `where`: who it is as far as is known.
  Target(const Context& context, nuv::Printer printer, Listed where);

  // What a person knows it by: name, nickname, serial number or address.
  std::string Name() const { return where_.Name(); }
  // Model, nickname and address, as far as is known.
  std::string Description() const;
  const nuv::Identity& Where() const { return where_.who; }
  // Asked once.
  const nuv::Identity& Who();
  nuv::Printer& Printer() { return printer_; }

  // Each calls a method of the printer, with the limits of a call behind the inputs; throws
  // CommandError. `action`: "Reading the state".
  //
  // A query; a printer that refuses it does not have it.
  template <class Method, class... Inputs>
  auto Ask(const std::string& action, Method method, const Inputs&... inputs) {
    try {
      return (printer_.*method)(inputs..., context_->Call(Name()));
    } catch (const nuv::Error& error) {
      throw LackOf(error, action);
    }
  }
  // A query that may be refused.
  template <class Method, class... Inputs>
  auto Try(const std::string& action, Method method, const Inputs&... inputs)
      -> std::optional<std::invoke_result_t<Method, nuv::Printer&, Inputs..., nuv::Call>> {
    try {
      return (printer_.*method)(inputs..., context_->Call(Name()));
    } catch (const nuv::Error& error) {
      if (error.Reason() != nuv::Result::kRefused) throw FailureOf(error, action);
      return std::nullopt;
    }
  }
  // An order; `hint`: the advice when the printer refuses it.
  template <class Method, class... Inputs>
  void Tell(const std::string& action, const std::string& hint, Method method,
            const Inputs&... inputs) {
    try {
      (printer_.*method)(inputs..., context_->Call(Name()));
    } catch (const nuv::Error& error) {
      CommandError failure = FailureOf(error, action);
      if (error.Reason() == nuv::Result::kRefused) failure.hint = hint;
      throw failure;
    }
  }

 private:
  static CommandError LackOf(const nuv::Error& error, const std::string& action);

  const Context* context_;  // outlives it
  nuv::Printer printer_;
  Listed where_;
  bool asked_;
};

// Opens the printer that was chosen, or the only one. Throws CommandError: none, several without a
// choice, another one than was known, or not to be opened.
Target OpenTarget(const Context& context);

// The same before something is changed or sent: says on standard error which one it is, and asks
// when it was chosen by its place in the list, which shifts.
Target OpenToChange(const Context& context);

// For each of these names the options by which another nuvctl uses that printer. Those that are not
// known are searched for here, once, so that several do not search at the same time.
std::vector<std::vector<std::string>> OptionsFor(const Context& context,
                                                 const std::vector<std::string>& names);

// Opens the printer that was open as `before` and is perhaps at another place now, by its serial
// number. Throws CommandError.
Target OpenAgain(const Context& context, const nuv::Identity& before);

// Asks a person; throws CommandError when the answer is no. Without anybody to ask, and without
// --yes, RequireSomebodyToAsk throws before a printer is bothered.
void RequireSomebodyToAsk(const Context& context, const std::string& what);
void RequireConsent(const Context& context, const std::string& question, const std::string& no);

// Calls `settled` every half second until it is true, `attempts` times at most; false when it never
// was.
template <typename Settled>
bool WaitFor(System& system, int attempts, Settled settled) {
  constexpr int64_t kPauseMs = 500;
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    if (settled()) return true;
    if (attempt < attempts) system.SleepMs(kPauseMs);
  }
  return false;
}

}  // namespace NuvCtl

#endif  // NUVCTL_TARGET_H_
