// Processors of one command each: they prepare its parameters and run it. Process returns 1 when
// the transaction failed, else 0: a refusal by the printer is no failure to them, it shows in what
// the printer answers next.
#ifndef NUV_COMMAND_CODE_PROCS_H_
#define NUV_COMMAND_CODE_PROCS_H_

#include <memory>
#include <string>
#include <vector>

#include "command/commands.h"
#include "command/i_fcmd_proc.h"

namespace Nuv::Connect {

// What such a processor is created with. `channel` and `clock` must outlive it.
struct ProcContext {
  IConnect& channel;
  ErrorCallback errorCallback;  // may be empty
  Platform::Clock& clock = Platform::SystemClock();
};

class CodeProc : public IFcmdProc {
 public:
  int32_t Process(std::vector<std::string>& output) override;

 protected:
  explicit CodeProc(ProcContext context) : context_(std::move(context)) {}

  // The command to run, not yet bound.
  virtual std::unique_ptr<Command::CommandBase> MakeCommand() const = 0;
  virtual std::vector<std::string> Parameters() const { return {}; }

 private:
  ProcContext context_;
};

// A processor that runs the command class `Class`.
template <class Class>
class CodeProcOf : public CodeProc {
 public:
  explicit CodeProcOf(ProcContext context) : CodeProc(std::move(context)) {}

 private:
  std::unique_ptr<Command::CommandBase> MakeCommand() const final {
    return std::make_unique<Class>();
  }
};

// State of the printer.
class F102proc final : public CodeProcOf<Command::F102Cmd> {
 public:
  using CodeProcOf::CodeProcOf;
};

// Serial number of a BEGO printer: the first value of the output.
class F140Proc final : public CodeProcOf<Command::F140Cmd> {
 public:
  using CodeProcOf::CodeProcOf;
};

// What the printer needs to know of a job before its data.
struct JobOpening {
  int32_t dataBytes = 0;         // S: model data, without line ends
  int32_t layers = 0;            // L
  double layerThicknessMm = 0;   // T
  int32_t printMinutes = 0;      // R
  double resinMl = 0;            // V
  double exposureS = 0;          // C: per layer
  double bottomExposureS = 0;    // E: per bottom layer
  double liftMm = 0;             // H
  double liftMmPerS = 0;         // Y
  double retractMmPerS = 0;      // U
  double laserPowerPercent = 0;  // P
};

// Opens a job. Whole numbers are written in decimal, the others with six places ("%f").
class F103proc final : public CodeProcOf<Command::F103Cmd> {
 public:
  F103proc(ProcContext context, const JobOpening& job)
      : CodeProcOf(std::move(context)), job_(job) {}

 private:
  std::vector<std::string> Parameters() const override;

  JobOpening job_;
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_CODE_PROCS_H_
