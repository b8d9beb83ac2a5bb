// Processors: each runs one command and turns its outcome into values for the caller.
#ifndef NUV_COMMAND_PROCESSORS_H_
#define NUV_COMMAND_PROCESSORS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "command/command_runner.h"
#include "command/commands.h"

namespace Nuv::Connect {

// Thread-safety: none. One processor runs one command at a time. Errors as RunCommand.
class IFcmdProc {
 public:
  virtual ~IFcmdProc() = default;

  // Replaces `output` by the values that the command delivered. Nonzero: failed.
  virtual int Process(std::vector<std::string>& output) = 0;
};

// Runs any command that it is handed, and keeps the keyed fields of the reply for look-up.
class GeneralCommandProc final : public IFcmdProc {
 public:
  // `errorCallback` may be empty.
  explicit GeneralCommandProc(std::unique_ptr<Command::AbstractCommand> command,
                              ErrorCallback errorCallback = {})
      : command_(std::move(command)), errorCallback_(std::move(errorCallback)) {}

  // 0 accepted, 1 the transaction failed, 29 the printer refused. After a refusal the output and
  // the look-ups still have what the reply carried.
  int Process(std::vector<std::string>& output) override;

  int GetCode() const { return command_->GetCode(); }

  // As Text and Number of Outcome.
  std::string GetStringValue(const std::string& key) const { return outcome_.Text(key); }
  int GetIntValue(const std::string& key) const { return outcome_.Number(key); }
  const Command::ResultMap& Result() const { return outcome_.fields; }

 private:
  std::unique_ptr<Command::AbstractCommand> command_;
  ErrorCallback errorCallback_;
  Outcome outcome_;
};

// Those of one code each: they prepare its parameters. To Process, which returns 1 when the
// transaction failed, else 0, a refusal is an answer: it shows in what the printer says next. Where
// bytes follow that only a printer that accepted takes as such, callers use ProcessAccepted.
class CodeProc : public IFcmdProc {
 public:
  int Process(std::vector<std::string>& output) override { return Keep(Refusal::kAnswers, output); }

  // As Process, but a refusal is a failure too: 29, also told to the error callback.
  int ProcessAccepted(std::vector<std::string>& output) { return Keep(Refusal::kFails, output); }

  // Of the last command: whether the printer accepted it, whether it was sent more than once, the
  // named fields of its reply.
  bool Accepted() const { return outcome_.reason == Reason::kNone; }
  bool SentAgain() const { return outcome_.sentAgain; }
  const Command::ResultMap& Fields() const { return outcome_.fields; }

 private:
  virtual Outcome Run(Refusal refusal) const = 0;
  int Keep(Refusal refusal, std::vector<std::string>& output);

  Outcome outcome_;
};

// The processor of command class `Class`.
template <class Class>
class ProcOf : public CodeProc {
 public:
  explicit ProcOf(CommandRunner runner, std::vector<std::string> parameters = {})
      : runner_(std::move(runner)), parameters_(std::move(parameters)) {}

 private:
  Outcome Run(Refusal refusal) const final { return runner_.Run<Class>(parameters_, refusal); }

  const CommandRunner runner_;
  const std::vector<std::string> parameters_;
};

// State of the printer.
class F102proc final : public ProcOf<Command::F102Cmd> {
 public:
  using ProcOf::ProcOf;
};

// Serial number of a BEGO printer: the first value of the output.
class F140Proc final : public ProcOf<Command::F140Cmd> {
 public:
  using ProcOf::ProcOf;
};

// Readiness of a BEGO printer for a job: state and free memory are the values of the output.
class F353proc final : public ProcOf<Command::F353Cmd> {
 public:
  using ProcOf::ProcOf;
};

// Identity of a BEGO printer: version, name, model, serial number, controller, date.
class F354proc final : public ProcOf<Command::F354Cmd> {
 public:
  using ProcOf::ProcOf;
};

// Ends a panel update: the printer's answer is the first value of the output.
class F189Proc final : public ProcOf<Command::F189Cmd> {
 public:
  using ProcOf::ProcOf;
};

// Announces an engine image: its size in bytes and its file name.
class F141Proc final : public ProcOf<Command::F141Cmd> {
 public:
  F141Proc(const CommandRunner& runner, uint32_t bytes, const std::string& fileName);
};

// Opens a panel update: the image's file name.
class F188Proc final : public ProcOf<Command::F188Cmd> {
 public:
  F188Proc(const CommandRunner& runner, const std::string& fileName);
};

// Material and project of a BEGO job.
class F355proc final : public ProcOf<Command::F355Cmd> {
 public:
  F355proc(const CommandRunner& runner, const std::string& materialId,
           const std::string& projectId);
};

// Announces a BEGO job's print file by its name.
class F367proc final : public ProcOf<Command::F367Cmd> {
 public:
  F367proc(const CommandRunner& runner, const std::string& fileName);
};

// Announces a thumbnail: its size in bytes and its name.
class F501proc final : public ProcOf<Command::F501Cmd> {
 public:
  F501proc(const CommandRunner& runner, uint32_t bytes, const std::string& name);
};

// Announces a print file by its size, its digest (written as hexadecimal digits, "%02x") and its
// name.
class F508proc final : public ProcOf<Command::F508Cmd> {
 public:
  F508proc(const CommandRunner& runner, uint64_t bytes, const std::vector<uint8_t>& digest,
           const std::string& fileName);
};

// What the printer needs to know of a job before its data.
struct JobOpening {
  int dataBytes = 0;             // S: model data, without line ends
  int layers = 0;                // L
  double layerThicknessMm = 0;   // T
  int printMinutes = 0;          // R
  double resinMl = 0;            // V
  double exposureS = 0;          // C: per layer
  double bottomExposureS = 0;    // E: per bottom layer
  double liftMm = 0;             // H
  double liftMmPerS = 0;         // Y
  double retractMmPerS = 0;      // U
  double laserPowerPercent = 0;  // P
};

// Opens a job. Whole numbers are written in decimal, the others with six places ("%f").
class F103proc final : public ProcOf<Command::F103Cmd> {
 public:
  F103proc(const CommandRunner& runner, const JobOpening& job);
};

// Opens a job on an Android board: as F103proc, and the print file's name.
class F500proc final : public ProcOf<Command::F500Cmd> {
 public:
  F500proc(const CommandRunner& runner, const JobOpening& job, const std::string& fileName);
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_PROCESSORS_H_
