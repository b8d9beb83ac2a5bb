#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string_view>
#include <thread>

#include "error.h"
#include "system.h"

namespace NuvCtl {
namespace {

constexpr int kUsualWidth = 80;
constexpr size_t kMaxSecret = 1024;  // bytes
// A killed sender leaves the printer waiting for data, so these too cancel the job first.
constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP};
constexpr size_t kInterruptCount = sizeof(kInterrupts) / sizeof(kInterrupts[0]);

volatile sig_atomic_t g_interrupted = 0;

// Only calls that a signal handler may make.
void Say(std::string_view text) {
  const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
  static_cast<void>(written);  // nobody is left to tell
}

extern "C" void OnInterrupt(int) {
  if (g_interrupted != 0) {
    Say("\nnuvctl: stopped at once; the printer may still be waiting for data.\n");
    _exit(kCancelled);
  }
  g_interrupted = 1;
  Say("\nnuvctl: cancelling; press Ctrl-C again to stop at once.\n");
}

void Watch(int number, void (*handler)(int), struct sigaction* earlier) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;  // the library's reads and writes go on
  sigemptyset(&action.sa_mask);
  sigaction(number, nullptr, earlier);
  // What the shell or nohup chose to ignore stays ignored.
  if (earlier->sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
}

int Columns(int terminal) {
  struct winsize size = {};
  if (ioctl(terminal, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
  return size.ws_col;
}

struct termios g_echoing;  // the terminal as it was before a secret is typed

// Ends the process by the signal, as without a handler, but leaves a terminal that shows what is
// typed.
extern "C" void OnInterruptedSecret(int number) {
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &g_echoing);  // half a secret is not for the shell
  Say("\n");
  signal(number, SIG_DFL);
  raise(number);  // takes effect when this handler returns
}

// While it lives, the terminal at the standard input does not show what is typed.
class EchoOff {
 public:
  // `echoing`: the terminal's mode.
  explicit EchoOff(const struct termios& echoing) {
    g_echoing = echoing;
    for (size_t i = 0; i < kInterruptCount; ++i) {
      Watch(kInterrupts[i], OnInterruptedSecret, &earlier_[i]);
    }
    // A stopped nuvctl would come back to a terminal whose mode the shell has changed.
    stop_ = signal(SIGTSTP, SIG_IGN);
    struct termios silent = echoing;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ICANON | ISIG | ECHONL;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~EchoOff() {
    tcsetattr(STDIN_FILENO, TCSADRAIN, &g_echoing);
    signal(SIGTSTP, stop_);
    for (size_t i = 0; i < kInterruptCount; ++i) sigaction(kInterrupts[i], &earlier_[i], nullptr);
  }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

 private:
  struct sigaction earlier_[kInterruptCount] = {};
  void (*stop_)(int) = SIG_DFL;
};

// To the end of the line also when it is too long: what is left behind would go to the shell.
std::optional<std::string> ReadLine() {
  std::string line;
  for (;;) {
    char c = 0;
    const ssize_t count = read(STDIN_FILENO, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0 && line.empty()) return std::nullopt;
    if (count <= 0 || c == '\n') break;
    if (line.size() <= kMaxSecret) line += c;
  }
  return line.size() > kMaxSecret ? std::nullopt : std::optional<std::string>(line);
}

class PosixSystem final : public System {
 public:
  // A reader that goes away (such as `head`) must not kill a running transfer.
  PosixSystem() { signal(SIGPIPE, SIG_IGN); }
  ~PosixSystem() override { WatchInterrupts(false); }

  int64_t NowMs() override {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  }

  void SleepMs(int64_t milliseconds) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }

  bool ErrorIsTerminal() override { return isatty(STDERR_FILENO) == 1; }

  bool OutputIsTerminal() override { return isatty(STDOUT_FILENO) == 1; }
  bool InputIsTerminal() override { return isatty(STDIN_FILENO) == 1; }

  std::optional<std::string> Ask(const std::string& question) override {
    Say(question);
    // A read that has begun would go on behind a Ctrl-C.
    constexpr int kMomentMs = 200;
    struct pollfd input = {STDIN_FILENO, POLLIN, 0};
    while (g_interrupted == 0 && poll(&input, 1, kMomentMs) <= 0) continue;
    if (g_interrupted != 0) return std::nullopt;
    return ReadLine();
  }

  int ErrorWidth() override { return Columns(STDERR_FILENO); }
  int OutputWidth() override { return Columns(STDOUT_FILENO); }

  std::optional<std::string> ReadSecret(const std::string& prompt) override {
    struct termios echoing = {};
    if (tcgetattr(STDIN_FILENO, &echoing) != 0) return ReadLine();
    const EchoOff quiet(echoing);
    Say(prompt);
    return ReadLine();
  }

  void WatchInterrupts(bool watch) override {
    if (watch == watching_) return;
    watching_ = watch;
    if (watch) g_interrupted = 0;
    for (size_t i = 0; i < kInterruptCount; ++i) {
      if (watch) {
        Watch(kInterrupts[i], OnInterrupt, &earlier_[i]);
      } else {
        sigaction(kInterrupts[i], &earlier_[i], nullptr);
      }
    }
  }

  bool Interrupted() override { return g_interrupted != 0 || (watchesInput_ && InputEnded()); }
  void WatchInput() override {
    struct stat input = {};
    watchesInput_ = fstat(STDIN_FILENO, &input) == 0 && S_ISFIFO(input.st_mode);
  }

  void SetEnvironment(const char* name, const char* value) override { setenv(name, value, 1); }

  std::string Program() override { return std::filesystem::read_symlink("/proc/self/exe"); }

 private:
  static bool InputEnded() {
    struct pollfd input = {STDIN_FILENO, POLLIN, 0};
    char ignored[256];
    return poll(&input, 1, 0) > 0 && read(STDIN_FILENO, ignored, sizeof(ignored)) == 0;
  }

  bool watching_ = false;
  std::atomic<bool> watchesInput_{false};
  struct sigaction earlier_[kInterruptCount] = {};
};

}  // namespace

std::unique_ptr<System> MakeSystem() { return std::make_unique<PosixSystem>(); }

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

}  // namespace NuvCtl
