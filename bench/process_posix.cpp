#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>

#include "bench/process.h"

namespace Bench {
namespace {

long StatusField(const char* name) {
  std::FILE* const file = std::fopen("/proc/self/status", "r");
  if (file == nullptr) return 0;
  char line[256];
  long kib = 0;
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (std::strncmp(line, name, std::strlen(name)) == 0) {
      kib = std::strtol(line + std::strlen(name), nullptr, 10);
    }
  }
  std::fclose(file);
  return kib;
}

[[noreturn]] void Become(const std::vector<std::string>& program, int output) {
  // Children must not outlive a benchmark that is interrupted.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  dup2(output, STDOUT_FILENO);
  std::vector<char*> arguments;
  for (const std::string& word : program) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(127);
}

}  // namespace

Child::Child(const std::vector<std::string>& program) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) std::perror("pipe");
  const pid_t pid = fork();
  if (pid == 0) Become(program, ends[1]);
  process_ = pid;
  close(ends[1]);
  // Left open: the program may go on writing.
  WaitUntilReady(fdopen(ends[0], "r"), program[0]);
}

Child::~Child() {
  const auto pid = static_cast<pid_t>(process_);
  kill(pid, SIGTERM);
  waitpid(pid, nullptr, 0);
}

std::string OwnProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

void PinToOneCore() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(0, &one);
  sched_setaffinity(0, sizeof one, &one);
}

void Unpin() {
  cpu_set_t all;
  CPU_ZERO(&all);
  for (int core = 0; core < CPU_SETSIZE; ++core) CPU_SET(core, &all);
  sched_setaffinity(0, sizeof all, &all);
}

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

long ResidentKib() { return StatusField("VmRSS:"); }
long PeakKib() { return StatusField("VmHWM:"); }

void ResetPeak() {
  const int file = open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC);
  if (file < 0) return;
  if (write(file, "5", 1) != 1) std::perror("clear_refs");
  close(file);
}

namespace {

size_t Entries(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

size_t Handles() { return Entries("/proc/self/fd"); }
size_t Threads() { return Entries("/proc/self/task"); }

}  // namespace Bench
