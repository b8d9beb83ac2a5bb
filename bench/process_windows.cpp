#include <windows.h>
// windows.h must come before psapi.h, which needs it.
#include <fcntl.h>
#include <io.h>
#include <psapi.h>
#include <tlhelp32.h>

#include <cstdio>
#include <cstdlib>

#include "bench/process.h"

namespace Bench {
namespace {

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "%s: error %lu\n", what, GetLastError());
  std::exit(1);
}

// Ends the programs in it when its only handle goes, which is when this process ends.
HANDLE JobOfChildren() {
  static const HANDLE job = [] {
    const HANDLE made = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    Check(SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits,
                                  sizeof limits) != 0,
          "job");
    return made;
  }();
  return job;
}

std::string CommandLine(const std::vector<std::string>& program) {
  std::string line;
  for (const std::string& word : program) line += "\"" + word + "\" ";
  return line;
}

HANDLE Start(const std::vector<std::string>& program, HANDLE output) {
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = output;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION started{};
  std::string line = CommandLine(program);
  Check(CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                       nullptr, &startup, &started) != 0,
        program[0].c_str());
  Check(AssignProcessToJobObject(JobOfChildren(), started.hProcess) != 0, "assigning to the job");
  ResumeThread(started.hThread);
  CloseHandle(started.hThread);
  return started.hProcess;
}

PROCESS_MEMORY_COUNTERS Memory() {
  PROCESS_MEMORY_COUNTERS counters{};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters;
}

double Seconds(const FILETIME& time) {
  constexpr double kTicksPerSecond = 1e7;
  ULARGE_INTEGER ticks;
  ticks.LowPart = time.dwLowDateTime;
  ticks.HighPart = time.dwHighDateTime;
  return static_cast<double>(ticks.QuadPart) / kTicksPerSecond;
}

}  // namespace

Child::Child(const std::vector<std::string>& program) {
  HANDLE input = nullptr;
  HANDLE output = nullptr;
  Check(CreatePipe(&input, &output, nullptr, 0) != 0, "pipe");
  SetHandleInformation(output, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  process_ = reinterpret_cast<intptr_t>(Start(program, output));
  CloseHandle(output);
  // Left open: the program may go on writing.
  const int file = _open_osfhandle(reinterpret_cast<intptr_t>(input), _O_RDONLY);
  WaitUntilReady(_fdopen(file, "r"), program[0]);
}

Child::~Child() {
  const auto process = reinterpret_cast<HANDLE>(process_);
  TerminateProcess(process, 0);
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
}

std::string OwnProgram() {
  char path[MAX_PATH];
  return {path, GetModuleFileNameA(nullptr, path, sizeof path)};
}

void PinToOneCore() { SetProcessAffinityMask(GetCurrentProcess(), 1); }

void Unpin() {
  DWORD_PTR own = 0;
  DWORD_PTR all = 0;
  GetProcessAffinityMask(GetCurrentProcess(), &own, &all);
  SetProcessAffinityMask(GetCurrentProcess(), all);
}

// Not the C library's clock(), which gives the time that passed.
double ProcessorSeconds() {
  FILETIME created, exited, kernel, user;
  GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
  return Seconds(kernel) + Seconds(user);
}

long ResidentKib() { return static_cast<long>(Memory().WorkingSetSize / 1024); }
long PeakKib() { return static_cast<long>(Memory().PeakWorkingSetSize / 1024); }
void ResetPeak() {}

size_t Handles() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return count;
}

size_t Threads() {
  HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  size_t count = 0;
  for (BOOL any = Thread32First(all, &entry); any; any = Thread32Next(all, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
  }
  CloseHandle(all);
  return count;
}

}  // namespace Bench
