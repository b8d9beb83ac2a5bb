// Processors of one command each: they prepare its parameters and run it. Process returns 1 when
// the transaction failed, else 0: a refusal by the printer is no failure to them, it shows in what
// the printer answers next. Where bytes follow that only a printer that accepted takes as such,
// callers use ProcessAccepted.
#ifndef NUV_COMMAND_CODE_PROCS_H_
#define NUV_COMMAND_CODE_PROCS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "command/commands.h"
#include "command/i_fcmd_proc.h"

namespace Nuv::Connect {

// What such a processor is created with. `channel` and `clock` must outlive it.
struct ProcContext {
  IChannel& channel;
  ErrorCallback errorCallback;  // may be empty
  Platform::Clock& clock = Platform::SystemClock();
};

class CodeProc : public IFcmdProc {
 public:
  int32_t Process(std::vector<std::string>& output) override;

  // As Process, but a refusal is a failure too: 29, also told to the error callback.
  int32_t ProcessAccepted(std::vector<std::string>& output);

  // Whether the printer accepted the last command.
  bool accepted() const { return accepted_; }

  // Whether its request was sent more than once: the printer may have taken it each time.
  bool sent_again() const { return sentAgain_; }

  // The named fields of its reply.
  const Command::ResultMap& fields() const { return fields_; }

 protected:
  explicit CodeProc(ProcContext context) : context_(std::move(context)) {}

  // The command to run, not yet bound.
  virtual std::unique_ptr<Command::CommandBase> MakeCommand() const = 0;
  virtual std::vector<std::string> Parameters() const { return {}; }

 private:
  ProcContext context_;
  int32_t code_ = 0;
  bool accepted_ = false;
  bool sentAgain_ = false;
  Command::ResultMap fields_;
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

// Readiness of a BEGO printer for a job: state and free memory are the values of the output.
class F353proc final : public CodeProcOf<Command::F353Cmd> {
 public:
  using CodeProcOf::CodeProcOf;
};

// Identity of a BEGO printer: version, name, model, serial number, controller, date.
class F354proc final : public CodeProcOf<Command::F354Cmd> {
 public:
  using CodeProcOf::CodeProcOf;
};

// Ends a panel update: the printer's answer is the first value of the output.
class F189Proc final : public CodeProcOf<Command::F189Cmd> {
 public:
  using CodeProcOf::CodeProcOf;
};

// A processor of a command whose parameters are known when it is created.
template <class Class>
class ParameterProcOf : public CodeProcOf<Class> {
 protected:
  ParameterProcOf(ProcContext context, std::vector<std::string> parameters)
      : CodeProcOf<Class>(std::move(context)), parameters_(std::move(parameters)) {}

 private:
  std::vector<std::string> Parameters() const final { return parameters_; }

  std::vector<std::string> parameters_;
};

// Announces an engine image: its size in bytes and its file name.
class F141Proc final : public ParameterProcOf<Command::F141Cmd> {
 public:
  F141Proc(ProcContext context, uint32_t bytes, const std::string& fileName);
};

// Opens a panel update: the image's file name.
class F188Proc final : public ParameterProcOf<Command::F188Cmd> {
 public:
  F188Proc(ProcContext context, const std::string& fileName);
};

// Material and project of a BEGO job.
class F355proc final : public ParameterProcOf<Command::F355Cmd> {
 public:
  F355proc(ProcContext context, const std::string& materialId, const std::string& projectId);
};

// Announces a BEGO job's print file by its name.
class F367proc final : public ParameterProcOf<Command::F367Cmd> {
 public:
  F367proc(ProcContext context, const std::string& fileName);
};

// Announces a thumbnail: its size in bytes and its name.
class F501proc final : public ParameterProcOf<Command::F501Cmd> {
 public:
  F501proc(ProcContext context, uint32_t bytes, const std::string& name);
};

// Announces a print file by its size, its digest (written as hexadecimal digits, "%02x") and its
// name.
class F508proc final : public ParameterProcOf<Command::F508Cmd> {
 public:
  F508proc(ProcContext context, uint64_t bytes, const std::vector<uint8_t>& digest,
           const std::string& fileName);
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
class F103proc final : public ParameterProcOf<Command::F103Cmd> {
 public:
  F103proc(ProcContext context, const JobOpening& job);
};

// Opens a job on an Android board: as F103proc, and the print file's name.
class F500proc final : public ParameterProcOf<Command::F500Cmd> {
 public:
  F500proc(ProcContext context, const JobOpening& job, const std::string& fileName);
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_CODE_PROCS_H_
