#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// shellapi.h needs windows.h before it.
#include <shellapi.h>
#include <stdlib.h>

#include <atomic>
#include <chrono>
#include <string_view>
#include <thread>

#include "error.h"
#include "system.h"

namespace NuvCtl {
namespace {

constexpr int kUsualWidth = 80;
constexpr size_t kMaxSecret = 1024;  // bytes, or characters of a console

std::atomic<bool> g_interrupted{false};

void Say(std::string_view text) {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written,
            nullptr);
}

// Runs on a thread of its own that Windows starts.
BOOL WINAPI OnInterrupt(DWORD) {
  if (g_interrupted.exchange(true)) {
    Say("\r\nnuvctl: stopped at once; the printer may still be waiting for data.\r\n");
    ExitProcess(kCancelled);
  }
  Say("\r\nnuvctl: cancelling; press Ctrl-C again to stop at once.\r\n");
  return TRUE;
}

int Columns(DWORD stream) {
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(stream), &info)) return kUsualWidth;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

std::string Utf8FromWide(const wchar_t* text) {
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (bytes <= 1) return std::string();
  std::string utf8(static_cast<size_t>(bytes), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), bytes, nullptr, nullptr);
  utf8.resize(static_cast<size_t>(bytes) - 1);  // without the NUL
  return utf8;
}

std::atomic<DWORD> g_echoing{0};  // the console's mode before a secret is typed

// Leaves a console that shows what is typed, then lets the process end as usual.
BOOL WINAPI OnInterruptedSecret(DWORD) {
  SetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), g_echoing);
  Say("\r\n");
  return FALSE;
}

// While it lives, the console at the standard input does not show what is typed.
class EchoOff {
 public:
  // `echoing`: the console's mode.
  EchoOff(HANDLE console, DWORD echoing) : console_(console) {
    g_echoing = echoing;
    SetConsoleCtrlHandler(OnInterruptedSecret, TRUE);
    const DWORD wanted = echoing | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT;
    SetConsoleMode(console_, wanted & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
  }
  ~EchoOff() {
    SetConsoleMode(console_, g_echoing);
    SetConsoleCtrlHandler(OnInterruptedSecret, FALSE);
    Say("\r\n");  // the one that was typed did not show
  }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

 private:
  const HANDLE console_;
};

// One character of the console; false at its end and when Ctrl-C was pressed.
bool ReadCharacter(HANDLE console, wchar_t* c) {
  DWORD count = 0;
  return ReadConsoleW(console, c, 1, &count, nullptr) && count == 1;
}

// One byte of a file or pipe; a pipe that was closed is an error, the end of a file is not.
bool ReadCharacter(HANDLE input, char* c) {
  DWORD count = 0;
  return ReadFile(input, c, 1, &count, nullptr) && count == 1;
}

// To the end of the line also when it is too long: what is left behind would go to the shell.
template <typename Character>
std::optional<std::basic_string<Character>> ReadLine(HANDLE input) {
  std::basic_string<Character> line;
  for (;;) {
    Character c = 0;
    const bool more = ReadCharacter(input, &c);
    if (!more && line.empty()) return std::nullopt;
    if (!more || c == '\n') break;
    if (line.size() <= kMaxSecret) line += c;
  }
  if (line.size() > kMaxSecret) return std::nullopt;
  return line;
}

bool IsConsole(DWORD which) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(which), &mode) != 0;
}

class WindowsSystem final : public System {
 public:
  WindowsSystem() : earlier_code_page_(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
    for (const DWORD stream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
      DWORD mode = 0;
      const HANDLE console = GetStdHandle(stream);
      if (!GetConsoleMode(console, &mode)) continue;
      SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
  }
  ~WindowsSystem() override {
    WatchInterrupts(false);
    SetConsoleOutputCP(earlier_code_page_);
  }

  int64_t NowMs() override {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  }

  void SleepMs(int64_t milliseconds) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }

  bool ErrorIsTerminal() override { return IsConsole(STD_ERROR_HANDLE); }
  bool OutputIsTerminal() override { return IsConsole(STD_OUTPUT_HANDLE); }
  bool InputIsTerminal() override { return IsConsole(STD_INPUT_HANDLE); }

  std::optional<std::string> Ask(const std::string& question) override {
    Say(question);
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (!IsConsole(STD_INPUT_HANDLE)) return ReadLine<char>(input);
    const std::optional<std::wstring> line = ReadLine<wchar_t>(input);
    if (!line) return std::nullopt;
    return Utf8FromWide(line->c_str());
  }

  int ErrorWidth() override { return Columns(STD_ERROR_HANDLE); }
  int OutputWidth() override { return Columns(STD_OUTPUT_HANDLE); }

  std::optional<std::string> ReadSecret(const std::string& prompt) override {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD echoing = 0;
    if (!GetConsoleMode(input, &echoing)) return ReadLine<char>(input);
    const EchoOff quiet(input, echoing);
    Say(prompt);
    const std::optional<std::wstring> line = ReadLine<wchar_t>(input);
    if (!line) return std::nullopt;
    return Utf8FromWide(line->c_str());
  }

  void WatchInterrupts(bool watch) override {
    if (watch == watching_) return;
    watching_ = watch;
    if (watch) g_interrupted = false;
    SetConsoleCtrlHandler(OnInterrupt, watch ? TRUE : FALSE);
  }

  bool Interrupted() override { return g_interrupted || (watchesInput_ && InputEnded()); }
  void WatchInput() override { watchesInput_ = true; }

  void SetEnvironment(const char* name, const char* value) override { _putenv_s(name, value); }

  std::string Program() override {
    wchar_t path[32768];  // the longest that Windows has
    const DWORD length = GetModuleFileNameW(nullptr, path, 32768);
    return length > 0 ? Utf8FromWide(path) : std::string();
  }

 private:
  static bool InputEnded() {
    return !PeekNamedPipe(GetStdHandle(STD_INPUT_HANDLE), nullptr, 0, nullptr, nullptr, nullptr) &&
           GetLastError() == ERROR_BROKEN_PIPE;
  }

  const UINT earlier_code_page_;
  bool watching_ = false;
  std::atomic<bool> watchesInput_{false};
};

}  // namespace

std::unique_ptr<System> MakeSystem() { return std::make_unique<WindowsSystem>(); }

// `argv` is in the system's code page, which cannot hold every file name; Windows keeps the
// original.
std::vector<std::string> Utf8Arguments(int, char**) {
  std::vector<std::string> arguments;
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (wide == nullptr) return arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Utf8FromWide(wide[i]));
  LocalFree(wide);
  return arguments;
}

}  // namespace NuvCtl
