// libnuvprinter for C++17: values, optionals, closures and owners over nuvprinter.h, which says
// what each call does, its limits and its threads. Header-only and without Qt, so any compiler can
// use the library that another one built.
//
// What differs from C:
//   Failures are nuv::Error.
//   What a printer has not told is an empty optional.
//   Closures return true to go on. What one throws ends the call and leaves it.
#ifndef NUVPRINTER_NUVPRINTER_HPP_
#define NUVPRINTER_NUVPRINTER_HPP_

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "nuvprinter.h"

namespace nuv {

// ---- Failures -----------------------------------------------------------------------------------

enum class Result : int32_t {
  kOk = NUV_RESULT_OK,
  kInvalidArgument = NUV_RESULT_INVALID_ARGUMENT,
  kBadHandle = NUV_RESULT_BAD_HANDLE,
  kBusy = NUV_RESULT_BUSY,
  kNotFound = NUV_RESULT_NOT_FOUND,
  kUnreachable = NUV_RESULT_UNREACHABLE,
  kNoAnswer = NUV_RESULT_NO_ANSWER,
  kLost = NUV_RESULT_LOST,
  kUnreadable = NUV_RESULT_UNREADABLE,
  kRefused = NUV_RESULT_REFUSED,
  kTimeLimit = NUV_RESULT_TIME_LIMIT,
  kCancelled = NUV_RESULT_CANCELLED,
  kBadFile = NUV_RESULT_BAD_FILE,
  kNotFit = NUV_RESULT_NOT_FIT,
  kUnconfirmed = NUV_RESULT_UNCONFIRMED,
  kTooSmall = NUV_RESULT_TOO_SMALL,
  kSystem = NUV_RESULT_SYSTEM,
};

// The category of all codes made of a Result. One object per program or library that includes this.
inline const std::error_category& Category() noexcept {
  class PrinterCategory final : public std::error_category {
   public:
    const char* name() const noexcept override { return "nuvprinter"; }
    std::string message(int code) const override { return nuv_result_text(code); }
  };
  static const PrinterCategory category;
  return category;
}

inline std::error_code make_error_code(Result result) noexcept {
  return {static_cast<int>(result), Category()};
}

// Why a call failed: what() for a person, Reason() for the program.
class Error : public std::system_error {
 public:
  Error(Result reason, const std::string& text, int command = 0, int systemError = 0)
      : std::system_error(make_error_code(reason), text),
        text_(std::make_shared<const std::string>(text.empty() ? code().message() : text)),
        command_(command),
        systemError_(systemError) {}

  Result Reason() const noexcept { return static_cast<Result>(code().value()); }
  // The text alone, where system_error adds that of the code.
  const char* what() const noexcept override { return text_->c_str(); }
  // Number of the printer command that failed, such as 102; 0 for none.
  int Command() const noexcept { return command_; }
  int SystemError() const noexcept { return systemError_; }

 private:
  std::shared_ptr<const std::string> text_;  // shared, so that copying does not throw
  int command_;
  int systemError_;
};

// How long a call may last and who can end it.
struct Call {
  std::chrono::milliseconds timeLimit{0};  // 0: the limits of the wire
  std::function<bool()> stillWanted;       // asked on the calling thread every 200 ms
};

// ---- Plumbing -----------------------------------------------------------------------------------

namespace detail {

inline std::optional<std::string> Value(const nuv_text& text) {
  return text.flags & NUV_TEXT_KNOWN ? std::optional<std::string>(text.text) : std::nullopt;
}

template <typename... Texts>
bool Altered(const Texts&... texts) {
  return ((texts.flags | ...) & (NUV_TEXT_REPAIRED | NUV_TEXT_CUT)) != 0;
}

// A structure that a callback was handed, as this header knows it: the library's may be shorter.
template <typename Native>
Native Received(const Native* from) {
  Native copy = nuv_init<Native>();
  std::memcpy(&copy, from, std::min<size_t>(from->size, sizeof(Native)));
  copy.size = static_cast<uint32_t>(sizeof(Native));
  return copy;
}

// One call of the C interface: its limits, its error, and what a closure threw meanwhile.
class Frame {
 public:
  explicit Frame(const Call& call) : wanted_(call.stillWanted) {
    call_.time_limit_ms = static_cast<int32_t>(call.timeLimit.count());
    if (wanted_) {
      call_.still_wanted = [](void* user) -> int32_t {
        auto* frame = static_cast<Frame*>(user);
        return frame->Guard(frame->wanted_);
      };
      call_.user = this;
    }
  }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  const nuv_call* call() const { return &call_; }
  nuv_error* error() { return &error_; }

  // Runs a closure and makes its answer or its exception one for C.
  template <typename Function, typename... Arguments>
  int32_t Guard(const Function& function, const Arguments&... arguments) noexcept {
    try {
      return function(arguments...) ? 1 : 0;
    } catch (...) {
      thrown_ = std::current_exception();
      return 0;
    }
  }

  void RethrowClosure() const {
    if (thrown_) std::rethrow_exception(thrown_);
  }

  void Finish(nuv_result result) const {
    RethrowClosure();
    if (result == NUV_RESULT_OK) return;
    throw Error(static_cast<Result>(result), error_.message.text, error_.command,
                error_.system_error);
  }

 private:
  const std::function<bool()>& wanted_;
  nuv_call call_ = NUV_INIT(nuv_call);
  nuv_error error_ = NUV_INIT(nuv_error);
  std::exception_ptr thrown_;
};

inline void Finish(nuv_result result) {
  if (result != NUV_RESULT_OK) throw Error(static_cast<Result>(result), nuv_result_text(result));
}

struct Free {
  void operator()(nuv_list* list) const { nuv_list_free(list); }
};
template <typename Handle>
using Owner = std::unique_ptr<Handle, Free>;

}  // namespace detail

// ---- Values -------------------------------------------------------------------------------------

enum class Link : int32_t { kNetwork = NUV_LINK_NETWORK, kUsb = NUV_LINK_USB };

struct Identity {
  Identity() = default;
  explicit Identity(const nuv_identity& from)
      : link(static_cast<Link>(from.link)),
        address(from.address.text),
        tcpPort(from.tcp_port),
        contact(static_cast<Result>(from.contact)),
        mac(detail::Value(from.mac)),
        name(detail::Value(from.name)),
        model(detail::Value(from.model)),
        serial(detail::Value(from.serial)),
        nickname(detail::Value(from.nickname)),
        firmware(detail::Value(from.firmware)),
        controller(detail::Value(from.controller)),
        manufactured(detail::Value(from.manufactured)),
        textsAltered(detail::Altered(from.name, from.model, from.serial, from.nickname,
                                     from.firmware, from.controller, from.manufactured)) {}

  Link link = Link::kNetwork;
  std::string address;
  int tcpPort = 0;
  Result contact = Result::kOk;
  std::optional<std::string> mac, name, model, serial, nickname, firmware, controller, manufactured;
  bool textsAltered = false;  // a text was no UTF-8, or too long
};

// ---- Finding ------------------------------------------------------------------------------------

struct SearchOptions {
  std::vector<Link> links;               // empty: all
  std::optional<std::string> addresses;  // "broadcast 10.0.5.7 10.0.6.2:6014"
  int udpPort = 0;
  bool addressesOnly = false;
  std::function<bool(const Identity&)> found;  // on the calling thread; false ends the search
};

namespace detail {

// The C form of SearchOptions; both are used during one call only.
class NativeSearch {
 public:
  NativeSearch(const SearchOptions& options, Frame& frame) : found_(options.found), frame_(frame) {
    for (const Link link : options.links) native_.links |= static_cast<int32_t>(link);
    native_.addresses = options.addresses ? options.addresses->c_str() : nullptr;
    native_.udp_port = options.udpPort;
    native_.addresses_only = options.addressesOnly ? 1 : 0;
    if (found_) native_.found = &NativeSearch::Found;
    native_.user = this;
  }
  NativeSearch(const NativeSearch&) = delete;
  NativeSearch& operator=(const NativeSearch&) = delete;
  const nuv_search_options* get() const { return &native_; }

 private:
  static int32_t Found(const nuv_identity* printer, void* user) {
    auto* self = static_cast<NativeSearch*>(user);
    return self->frame_.Guard([&] { return self->found_(Identity(Received(printer))); });
  }

  const std::function<bool(const Identity&)>& found_;
  Frame& frame_;
  nuv_search_options native_ = NUV_INIT(nuv_search_options);
};

}  // namespace detail

// Printers on all networks and USB, in order of arrival. call.timeLimit (3 s) is for everything.
inline std::vector<Identity> Find(const SearchOptions& options = {}, const Call& call = {}) {
  detail::Frame frame(call);
  const detail::NativeSearch search(options, frame);
  nuv_list* list = nullptr;
  const nuv_result result = nuv_search_printers(&list, search.get(), frame.call(), frame.error());
  const detail::Owner<nuv_list> owner(list);
  frame.Finish(result);
  std::vector<Identity> printers;
  for (int32_t i = 0; i < nuv_list_count(list); ++i) {
    nuv_identity item = NUV_INIT(nuv_identity);
    detail::Finish(nuv_list_get_identity(&item, list, i));
    printers.emplace_back(item);
  }
  return printers;
}

// ---- Library ------------------------------------------------------------------------------------

enum class LogLevel : int32_t {
  kError = NUV_LOG_ERROR,
  kWarning = NUV_LOG_WARNING,
};

using LogFunction =
    std::function<void(LogLevel level, const std::string& printer, const std::string& text)>;

// Process-wide; called on any thread, several at the same time. An empty function ends it. What a
// log function throws is lost.
inline void SetLog(LogLevel level, LogFunction function) {
  if (!function) return detail::Finish(nuv_log_to(0, nullptr, nullptr, nullptr));
  detail::Finish(nuv_log_to(
      static_cast<int32_t>(level),
      [](const nuv_log_line* line, void* user) -> int32_t {
        try {
          (*static_cast<LogFunction*>(user))(static_cast<LogLevel>(line->level), line->printer,
                                             line->text);
        } catch (...) {
        }
        return 1;
      },
      new LogFunction(std::move(function)),
      [](void* user) { delete static_cast<LogFunction*>(user); }));
}

}  // namespace nuv

template <>
struct std::is_error_code_enum<nuv::Result> : std::true_type {};

#endif  // NUVPRINTER_NUVPRINTER_HPP_
