// What nuvctl needs from the operating system, behind one interface that tests replace.
#ifndef NUVCTL_SYSTEM_H_
#define NUVCTL_SYSTEM_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NuvCtl {

// Thread-safety: Interrupted may be called from any thread, the rest from the main thread only.
class System {
 public:
  virtual ~System() = default;

  // Milliseconds of a clock that is never set back; only differences mean something.
  virtual int64_t NowMs() = 0;
  virtual void SleepMs(int64_t milliseconds) = 0;

  // Whether the standard error stream, where progress goes, is a terminal; and its columns.
  virtual bool ErrorIsTerminal() = 0;
  virtual int ErrorWidth() = 0;

  // The same of the standard output, where a print that is followed is shown.
  virtual bool OutputIsTerminal() = 0;
  virtual int OutputWidth() = 0;

  virtual bool InputIsTerminal() = 0;  // the standard input

  // Writes `question` to standard error and reads a line of the standard input as below, shown
  // while it is typed.
  virtual std::optional<std::string> Ask(const std::string& question) = 0;

  // The next line of the standard input, perhaps with its line end; nothing when there is none or
  // it is far too long for a key. When that is a terminal, writes `prompt` to standard error and
  // does not show what is typed.
  virtual std::optional<std::string> ReadSecret(const std::string& prompt) = 0;

  // While watched, the first Ctrl-C (on POSIX also a request to terminate or a closed terminal)
  // makes Interrupted true and says so; a second one ends the process at once with code 130.
  // Not watched, Ctrl-C ends the process as usual.
  virtual void WatchInterrupts(bool watch) = 0;
  virtual bool Interrupted() = 0;
  // From now on the end of the standard input, a pipe, is an interrupt too: the program that
  // started this one wants it to end, or is gone.
  virtual void WatchInput() = 0;

  virtual void SetEnvironment(const char* name, const char* value) = 0;

  // The file of this program.
  virtual std::string Program() = 0;
};

// The system that nuvctl runs on. One at a time: interrupts are a matter of the whole process.
std::unique_ptr<System> MakeSystem();

// The arguments after the program's name, in UTF-8.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

}  // namespace NuvCtl

#endif  // NUVCTL_SYSTEM_H_
