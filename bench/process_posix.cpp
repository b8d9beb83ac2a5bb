#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/bench.h"

namespace bench {
namespace {

// Children must not outlive a benchmark that is interrupted.
void DieWithParent() { prctl(PR_SET_PDEATHSIG, SIGKILL); }

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

}  // namespace

Child::Child(const std::function<void()>& body) : pid_(fork()) {
  if (pid_ != 0) return;
  DieWithParent();
  body();
  _exit(0);
}

Child::Child(const std::vector<std::string>& program, std::vector<std::string>* output) : pid_(-1) {
  int ends[2];
  if (pipe(ends) != 0) return;
  pid_ = fork();
  if (pid_ == 0) {
    DieWithParent();
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    std::vector<char*> arguments;
    for (const std::string& word : program) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  close(ends[1]);
  std::FILE* const lines = fdopen(ends[0], "r");
  char line[1024];
  while (std::fgets(line, sizeof line, lines) != nullptr) {
    line[std::strcspn(line, "\n")] = '\0';
    if (std::strcmp(line, "ready") == 0) break;
    if (output != nullptr) output->emplace_back(line);
  }
  // Left open: the program may go on writing.
}

Child::~Child() {
  if (pid_ <= 0) return;
  kill(pid_, SIGTERM);
  waitpid(pid_, nullptr, 0);
}

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

long ResidentKib() { return StatusField("VmRSS:"); }
long PeakKib() { return StatusField("VmHWM:"); }

void ResetPeak() {
  const int file = open("/proc/self/clear_refs", O_WRONLY);
  if (file < 0) return;
  if (write(file, "5", 1) != 1) std::perror("clear_refs");
  close(file);
}

}  // namespace bench
