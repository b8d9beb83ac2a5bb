// libnuvprinter for C++17: values, optionals, closures and owners over nuvprinter.h, which says
// what each call does, its limits and its threads. Header-only and without Qt, so any compiler can
// use the library that another one built.
//
// What differs from C:
//   Failures are nuv::Error.
//   What a printer has not told is an empty optional.
//   Closures return true to go on. What one throws ends the call and leaves it.
//   A Printer is an owner: it can be moved, a moved-from one gives kBadHandle.
#ifndef NUVPRINTER_NUVPRINTER_HPP_
#define NUVPRINTER_NUVPRINTER_HPP_

#if __cplusplus < 201703L && !(defined(_MSVC_LANG) && _MSVC_LANG >= 201703L)
#error "nuvprinter.hpp needs C++17; nuvprinter.h serves any language"
#endif

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
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

inline std::optional<int> Value(const nuv_int& number) {
  return number.known ? std::optional<int>(number.value) : std::nullopt;
}

inline std::optional<bool> Flag(const nuv_int& number) {
  return number.known ? std::optional<bool>(number.value != 0) : std::nullopt;
}

template <typename Enum>
std::optional<Enum> As(const nuv_int& number) {
  return number.known ? std::optional<Enum>(static_cast<Enum>(number.value)) : std::nullopt;
}

inline std::optional<std::string> Value(const nuv_text& text) {
  return text.flags & NUV_TEXT_KNOWN ? std::optional<std::string>(text.text) : std::nullopt;
}

inline std::optional<std::chrono::system_clock::time_point> Instant(int64_t seconds) {
  if (seconds == 0) return std::nullopt;
  return std::chrono::system_clock::time_point(std::chrono::seconds(seconds));
}

template <typename... Texts>
bool Altered(const Texts&... texts) {
  return ((texts.flags | ...) & (NUV_TEXT_REPAIRED | NUV_TEXT_CUT)) != 0;
}

inline std::string Utf8(const std::filesystem::path& path) {
  const auto text = path.u8string();  // char8_t from C++20 on
  return std::string(text.begin(), text.end());
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
  void operator()(nuv_printer* printer) const { nuv_printer_free(printer); }
  void operator()(nuv_watch* watch) const { nuv_watch_free(watch); }
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

enum class PrinterState : int32_t {
  kIdle = NUV_STATE_IDLE,
  kPrinting = NUV_STATE_PRINTING,
  kReceiving = NUV_STATE_RECEIVING,
  kError = NUV_STATE_ERROR,
};

struct State {
  State() = default;
  explicit State(const nuv_state& from)
      : state(static_cast<PrinterState>(from.state.value)),
        errorNumber(detail::Value(from.error_number)),
        layer(detail::Value(from.layer)),
        percent(detail::Value(from.percent)),
        jobName(detail::Value(from.job_name)),
        endsAt(detail::Instant(from.ends_at)) {
    if (from.minutes_left.known) left = std::chrono::minutes(from.minutes_left.value);
  }

  PrinterState state = PrinterState::kIdle;
  std::optional<int> errorNumber, layer, percent;
  std::optional<std::chrono::minutes> left;
  std::optional<std::string> jobName;
  std::optional<std::chrono::system_clock::time_point> endsAt;
};

struct Job {
  Job() = default;
  explicit Job(const nuv_job& from)
      : index(detail::Value(from.index)),
        bytes(detail::Value(from.bytes)),
        layers(detail::Value(from.layers)),
        minutes(detail::Value(from.minutes)),
        name(detail::Value(from.name)) {}

  std::optional<int> index, bytes, layers, minutes;
  std::optional<std::string> name;
};

enum class ResinState : int32_t {
  kReady = NUV_RESIN_STATE_READY,
  kAbsent = NUV_RESIN_STATE_ABSENT,
  kTagUnreadable = NUV_RESIN_STATE_TAG_UNREADABLE,
  kExpired = NUV_RESIN_STATE_EXPIRED,
  kWrong = NUV_RESIN_STATE_WRONG,
  kTooLittle = NUV_RESIN_STATE_TOO_LITTLE,
};

struct Resin {
  explicit Resin(const nuv_resin& from)
      : state(detail::As<ResinState>(from.state)),
        remainingMl(detail::Value(from.remaining_ml)),
        tankVolumeMl(detail::Value(from.tank_volume_ml)),
        openMode(detail::Flag(from.open_mode)),
        tagRegistered(detail::Flag(from.tag_registered)),
        code(detail::Value(from.code)),
        type(detail::Value(from.type)),
        name(detail::Value(from.name)),
        lot(detail::Value(from.lot)),
        useBy(detail::Value(from.use_by)) {}

  std::optional<ResinState> state;
  std::optional<int> remainingMl, tankVolumeMl;
  std::optional<bool> openMode, tagRegistered;
  std::optional<std::string> code, type, name, lot, useBy;
};

struct AccessPoint {
  explicit AccessPoint(const nuv_access_point& from)
      : joined(detail::Flag(from.joined)),
        signalPercent(detail::Value(from.signal_percent)),
        security(detail::Value(from.security)),
        channel(detail::Value(from.channel)),
        name(detail::Value(from.name)) {}

  std::optional<bool> joined;
  std::optional<int> signalPercent, security, channel;
  std::optional<std::string> name;
};

struct Scaling {
  double x[2] = {1, 1}, y[2] = {1, 1}, z[2] = {1, 1};
};

enum class Port : int32_t {
  kInUse = NUV_PORT_IN_USE,
  kWired = NUV_PORT_WIRED,
  kWireless = NUV_PORT_WIRELESS,
};

struct Network {
  explicit Network(const nuv_network& from)
      : address(detail::Value(from.address)),
        netmask(detail::Value(from.netmask)),
        gateway(detail::Value(from.gateway)),
        nameServer(detail::Value(from.name_server)),
        secondNameServer(detail::Value(from.second_name_server)),
        mac(detail::Value(from.mac)) {}

  std::optional<std::string> address, netmask, gateway, nameServer, secondNameServer, mac;
};

struct Versions {
  explicit Versions(const nuv_versions& from)
      : androidBoard(detail::Value(from.android_board)),
        androidLoader(detail::Value(from.android_loader)),
        lcmPanel(detail::Value(from.lcm_panel)) {}

  std::optional<std::string> androidBoard, androidLoader, lcmPanel;
};

enum class JobResult : int32_t {
  kFinished = NUV_JOB_FINISHED,
  kCancelled = NUV_JOB_CANCELLED,
  kFailed = NUV_JOB_FAILED,
  kNotEnded = NUV_JOB_NOT_ENDED,
};

struct JobRecord {
  explicit JobRecord(const nuv_job_record& from)
      : index(from.index.value),
        result(detail::As<JobResult>(from.result)),
        layers(detail::Value(from.layers)),
        minutes(detail::Value(from.minutes)),
        resinMl(detail::Value(from.resin_ml)),
        layerThicknessUm(detail::Value(from.layer_thickness_um)),
        exposureMs(detail::Value(from.exposure_ms)),
        bottomExposureMs(detail::Value(from.bottom_exposure_ms)),
        laserPowerPercent(detail::Value(from.laser_power_percent)),
        name(detail::Value(from.name)),
        resinCode(detail::Value(from.resin_code)),
        resinLot(detail::Value(from.resin_lot)),
        started(detail::Value(from.started)),
        ended(detail::Value(from.ended)) {}

  int index;
  std::optional<JobResult> result;
  std::optional<int> layers, minutes, resinMl, layerThicknessUm, exposureMs, bottomExposureMs,
      laserPowerPercent;
  std::optional<std::string> name, resinCode, resinLot, started, ended;
};

struct JobCounts {
  explicit JobCounts(const nuv_job_counts& from)
      : started(detail::Value(from.started)),
        finished(detail::Value(from.finished)),
        cancelled(detail::Value(from.cancelled)),
        failed(detail::Value(from.failed)) {}

  std::optional<int> started, finished, cancelled, failed;
};

struct Sensors {
  explicit Sensors(const nuv_sensors& from)
      : chamberTopC(detail::Value(from.chamber_top_c)),
        chamberBottomC(detail::Value(from.chamber_bottom_c)),
        tankC(detail::Value(from.tank_c)),
        resinLevelPercent(detail::Value(from.resin_level_percent)),
        tank(detail::Value(from.tank)),
        zLimitTop(detail::Flag(from.z_limit_top)),
        zLimitBottom(detail::Flag(from.z_limit_bottom)),
        wiperHome(detail::Flag(from.wiper_home)),
        yHome(detail::Flag(from.y_home)),
        yEnd(detail::Flag(from.y_end)),
        lidClosed(detail::Flag(from.lid_closed)),
        cartridge(detail::Flag(from.cartridge)),
        platform(detail::Flag(from.platform)),
        movingToReference(detail::Flag(from.moving_to_reference)) {}

  std::optional<int> chamberTopC, chamberBottomC, tankC, resinLevelPercent, tank;
  std::optional<bool> zLimitTop, zLimitBottom, wiperHome, yHome, yEnd, lidClosed, cartridge,
      platform, movingToReference;
};

struct Laser {
  explicit Laser(const nuv_laser& from)
      : photodiodeMinimum(detail::Value(from.photodiode_minimum)),
        photodiodeMaximum(detail::Value(from.photodiode_maximum)),
        photodiodeMean(detail::Value(from.photodiode_mean)) {
    for (int i = 0; i < 5; ++i) pulseWidth[i] = detail::Value(from.pulse_width[i]);
  }

  std::optional<int> photodiodeMinimum, photodiodeMaximum, photodiodeMean, pulseWidth[5];
};

struct ScanUnit {
  explicit ScanUnit(const nuv_scan_unit& from)
      : polygonSpeed(detail::Value(from.polygon_speed)),
        start(detail::Value(from.start)),
        lineWidth(detail::Value(from.line_width)),
        yOffset(detail::Value(from.y_offset)) {
    for (int i = 0; i < 3; ++i) {
      scanCentre[i] = detail::Value(from.scan_centre[i]);
      lineLength[i] = detail::Value(from.line_length[i]);
      triggerDelay[i] = detail::Value(from.trigger_delay[i]);
    }
    for (int i = 0; i < 2; ++i) zOffset[i] = detail::Value(from.z_offset[i]);
  }

  // [0] alone on models with one scan line.
  std::optional<int> scanCentre[3], lineLength[3], triggerDelay[3], zOffset[2];
  std::optional<int> polygonSpeed, start, lineWidth, yOffset;
};

// ---- Jobs and firmware --------------------------------------------------------------------------

enum class Finding : int32_t {
  kFileDamaged = NUV_FINDING_FILE_DAMAGED,
  kOtherModel = NUV_FINDING_OTHER_MODEL,
  kResinForbids = NUV_FINDING_RESIN_FORBIDS,
  kResinTooLittle = NUV_FINDING_RESIN_TOO_LITTLE,
  kPrinterNotIdle = NUV_FINDING_PRINTER_NOT_IDLE,
  kNoImage = NUV_FINDING_NO_IMAGE,
  kImageWrongSize = NUV_FINDING_IMAGE_WRONG_SIZE,
};

// Reasons against a print file: what a check found, or what a person has accepted.
struct Findings {
  Findings() = default;
  explicit Findings(int32_t findings) : bits(findings) {}
  bool Has(Finding finding) const { return (bits & static_cast<int32_t>(finding)) != 0; }
  explicit operator bool() const { return bits != 0; }
  int32_t bits = 0;
};

struct CheckReport {
  explicit CheckReport(const nuv_check& from)
      : findings(from.findings),
        message(from.message.text),
        machineId(detail::Value(from.machine_id)),
        machineFamily(detail::Value(from.machine_family)),
        printerModel(detail::Value(from.printer_model)),
        resinNeededMl(detail::Value(from.resin_needed_ml)),
        resinLeftMl(detail::Value(from.resin_left_ml)),
        layers(detail::Value(from.layers)),
        minutes(detail::Value(from.minutes)),
        bytes(from.bytes) {}

  Findings findings;
  std::string message;
  std::optional<std::string> machineId, machineFamily, printerModel;
  std::optional<int> resinNeededMl, resinLeftMl, layers, minutes;
  int64_t bytes;
};

enum class Stage : int32_t {
  kChecking = NUV_STAGE_CHECKING,
  kOpening = NUV_STAGE_OPENING,
  kSending = NUV_STAGE_SENDING,
  kWaiting = NUV_STAGE_WAITING,
  kConfirming = NUV_STAGE_CONFIRMING,
};

struct Progress {
  explicit Progress(const nuv_progress& from)
      : stage(static_cast<Stage>(from.stage)), sent(from.bytes_sent), total(from.bytes_total) {}
  int Percent() const { return total > 0 ? static_cast<int>(sent * 100 / total) : 0; }

  Stage stage;
  int64_t sent, total;  // bytes
};

struct SendOptions {
  Findings accept;
  int androidKind = 0;                            // Update of the Android board only; 0: 1
  std::function<bool(const Progress&)> progress;  // on the calling thread; false cancels
};

enum class OutcomeKind : int32_t {
  kAccepted = NUV_OUTCOME_ACCEPTED,
  kSent = NUV_OUTCOME_SENT,
  kCancelled = NUV_OUTCOME_CANCELLED,
  kRefused = NUV_OUTCOME_REFUSED,
  kUnconfirmed = NUV_OUTCOME_UNCONFIRMED,
  kNotFit = NUV_OUTCOME_NOT_FIT,
};

struct Outcome {
  Outcome(const nuv_outcome& from, nuv_result result)
      : kind(static_cast<OutcomeKind>(from.outcome)),
        reason(static_cast<Result>(result)),
        findings(from.findings),
        mayHoldJob(from.may_hold_job != 0),
        bytesSent(from.bytes_sent),
        jobIndex(detail::Value(from.job_index)),
        message(from.message.text) {}
  // All was sent, and the printer has not said that it lacks something.
  explicit operator bool() const {
    return kind == OutcomeKind::kAccepted || kind == OutcomeKind::kSent;
  }

  OutcomeKind kind;
  Result reason;
  Findings findings;
  bool mayHoldJob;
  int64_t bytesSent;
  std::optional<int> jobIndex;
  std::string message;
};

enum class Part : int32_t {
  kEngine = NUV_PART_ENGINE,
  kAndroidBoard = NUV_PART_ANDROID_BOARD,
  kLcmPanel = NUV_PART_LCM_PANEL,
};

enum class EventKind : int32_t {
  kState = NUV_EVENT_STATE,
  kSilent = NUV_EVENT_SILENT,
  kGone = NUV_EVENT_GONE,
  kPrintEnded = NUV_EVENT_PRINT_ENDED,
};

struct Event {
  explicit Event(const nuv_event& from)
      : kind(static_cast<EventKind>(from.event)),
        lastAnswer(detail::Instant(from.last_answer)),
        jobResult(detail::As<JobResult>(from.job_result)),
        changed(from.changed != 0),
        reason(static_cast<Result>(from.reason)) {
    if (from.state) state.emplace(detail::Received(from.state));
    if (from.job) job.emplace(detail::Received(from.job));
  }

  EventKind kind;
  std::optional<State> state;
  std::optional<Job> job;
  std::optional<std::chrono::system_clock::time_point> lastAnswer;
  std::optional<JobResult> jobResult;
  bool changed;
  Result reason;
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

// ---- Watching -----------------------------------------------------------------------------------

// Ends the watch when it is destroyed, also inside its own closure.
class Watch {
 public:
  Watch() = default;

  // Waits until the watch has ended: its closure returned false or threw, which is thrown here, or
  // the printer was destroyed. False: the time limit came first.
  bool Wait(const Call& call = {}) {
    detail::Frame frame(call);
    const nuv_result result = nuv_watch_wait(handle_.get(), frame.call());
    frame.RethrowClosure();
    if (result == NUV_RESULT_TIME_LIMIT) return false;
    detail::Finish(result);
    const std::lock_guard<std::mutex> lock(shared_->mutex);
    if (shared_->thrown) std::rethrow_exception(std::exchange(shared_->thrown, nullptr));
    return true;
  }

 private:
  friend class Printer;

  // Owned by the watch and, until `release`, by the library.
  struct Shared {
    std::function<bool(const Event&)> function;
    std::mutex mutex;
    std::exception_ptr thrown;
  };

  static int32_t Look(const nuv_event* event, void* user) noexcept {
    Shared& shared = **static_cast<std::shared_ptr<Shared>*>(user);
    try {
      return shared.function(Event(detail::Received(event))) ? 1 : 0;
    } catch (...) {
      const std::lock_guard<std::mutex> lock(shared.mutex);
      shared.thrown = std::current_exception();
      return 0;
    }
  }

  static void Release(void* user) {
    const std::unique_ptr<std::shared_ptr<Shared>> held(
        static_cast<std::shared_ptr<Shared>*>(user));
    (*held)->function = nullptr;  // what it captured ends here, not with the Watch
  }

  std::shared_ptr<Shared> shared_;
  detail::Owner<nuv_watch> handle_;
};

// ---- A printer ----------------------------------------------------------------------------------

class Printer {
 public:
  static Printer Open(const Identity& found, const Call& call = {}) {
    nuv_identity where = NUV_INIT(nuv_identity);
    where.link = static_cast<int32_t>(found.link);
    where.tcp_port = found.tcpPort;
    if (found.address.size() >= sizeof(where.address.text)) detail::Finish(NUV_RESULT_NOT_FOUND);
    found.address.copy(where.address.text, sizeof(where.address.text) - 1);
    where.address.flags = NUV_TEXT_KNOWN;
    return Opened(call, [&](nuv_printer** out, detail::Frame& frame) {
      return nuv_printer_open(out, &where, frame.call(), frame.error());
    });
  }

  static Printer OpenAddress(const std::string& address, const Call& call = {}) {
    return Opened(call, [&](nuv_printer** out, detail::Frame& frame) {
      return nuv_printer_open_address(out, address.c_str(), frame.call(), frame.error());
    });
  }

  static Printer OpenSerial(const std::string& serial, const SearchOptions& options = {},
                            const Call& call = {}) {
    return Opened(call, [&](nuv_printer** out, detail::Frame& frame) {
      const detail::NativeSearch search(options, frame);
      return nuv_printer_open_serial(out, serial.c_str(), search.get(), frame.call(),
                                     frame.error());
    });
  }

  Printer() = default;

  // Thread-safe while the Printer lives: ends the calls under way.
  void Cancel() const { detail::Finish(nuv_printer_cancel(handle_.get())); }
  void LetGo() const { detail::Finish(nuv_printer_let_go(handle_.get())); }
  // For what this layer lacks; stays the Printer's.
  nuv_printer* Handle() const { return handle_.get(); }

  Identity GetIdentity(const Call& call = {}) const {
    return Identity(Ask<nuv_identity>(call, nuv_printer_get_identity));
  }
  State GetState(const Call& call = {}) const {
    return State(Ask<nuv_state>(call, nuv_printer_get_state));
  }
  Job GetJob(const Call& call = {}) const { return Job(Ask<nuv_job>(call, nuv_printer_get_job)); }
  Resin GetResin(const Call& call = {}) const {
    return Resin(Ask<nuv_resin>(call, nuv_printer_get_resin));
  }

  int GetLaserPowerPercent(const Call& call = {}) const {
    return Number(call, nuv_printer_get_laser_power_percent);
  }
  void SetLaserPowerPercent(int percent, const Call& call = {}) {
    Tell(call, nuv_printer_set_laser_power_percent, percent);
  }
  int GetZCompensationUm(const Call& call = {}) const {
    return Number(call, nuv_printer_get_z_compensation_um);
  }
  void SetZCompensationUm(int micrometres, const Call& call = {}) {
    Tell(call, nuv_printer_set_z_compensation_um, micrometres);
  }
  void SetNickname(const std::string& nickname, const Call& call = {}) {
    Tell(call, nuv_printer_set_nickname, nickname.c_str());
  }
  Scaling GetScaling(const Call& call = {}) const {
    const nuv_scaling from = Ask<nuv_scaling>(call, nuv_printer_get_scaling);
    return {{from.x[0], from.x[1]}, {from.y[0], from.y[1]}, {from.z[0], from.z[1]}};
  }
  void SetScaling(const Scaling& scaling, const Call& call = {}) {
    nuv_scaling native = NUV_INIT(nuv_scaling);
    for (int i = 0; i < 2; ++i) {
      native.x[i] = scaling.x[i];
      native.y[i] = scaling.y[i];
      native.z[i] = scaling.z[i];
    }
    Tell(call, nuv_printer_set_scaling, &native);
  }

  AccessPoint GetAccessPoint(const std::optional<std::string>& name = std::nullopt,
                             const Call& call = {}) const {
    return AccessPoint(
        Ask<nuv_access_point>(call, nuv_printer_get_access_point, name ? name->c_str() : nullptr));
  }
  std::vector<AccessPoint> GetAccessPoints(const Call& call = {}) const {
    nuv_list* list = nullptr;
    detail::Frame frame(call);
    frame.Finish(nuv_printer_get_access_points(&list, handle_.get(), frame.call(), frame.error()));
    const detail::Owner<nuv_list> owner(list);
    std::vector<AccessPoint> points;
    for (int32_t i = 0; i < nuv_list_count(list); ++i) {
      nuv_access_point item = NUV_INIT(nuv_access_point);
      detail::Finish(nuv_list_get_access_point(&item, list, i));
      points.emplace_back(item);
    }
    return points;
  }

  Network GetNetwork(Port port = Port::kInUse, const Call& call = {}) const {
    return Network(
        Ask<nuv_network>(call, nuv_printer_get_network, static_cast<int32_t>(port)));
  }
  // Without a key an open one.
  void JoinAccessPoint(const std::string& name, const std::optional<std::string>& key,
                       const Call& call = {}) {
    Tell(call, nuv_printer_join_access_point, name.c_str(), key ? key->c_str() : nullptr);
  }
  void LeaveAccessPoint(const Call& call = {}) { Tell(call, nuv_printer_leave_access_point); }

  Versions GetVersions(const Call& call = {}) const {
    return Versions(Ask<nuv_versions>(call, nuv_printer_get_versions));
  }
  Sensors GetSensors(const Call& call = {}) const {
    return Sensors(Ask<nuv_sensors>(call, nuv_printer_get_sensors));
  }
  Laser GetLaser(int number, const Call& call = {}) const {
    return Laser(Ask<nuv_laser>(call, nuv_printer_get_laser, number));
  }
  ScanUnit GetScanUnit(const Call& call = {}) const {
    return ScanUnit(Ask<nuv_scan_unit>(call, nuv_printer_get_scan_unit));
  }
  int GetLedHours(const Call& call = {}) const { return Number(call, nuv_printer_get_led_hours); }
  void SkipWarmup(const Call& call = {}) { Tell(call, nuv_printer_skip_warmup); }

  JobRecord GetJobRecord(int index, const Call& call = {}) const {
    return JobRecord(Ask<nuv_job_record>(call, nuv_printer_get_job_record, index));
  }
  JobCounts GetJobCounts(bool sincePowerOn = false, const Call& call = {}) const {
    return JobCounts(Ask<nuv_job_counts>(call, nuv_printer_get_job_counts, sincePowerOn ? 1 : 0));
  }
  int GetLastReadJob(const Call& call = {}) const {
    return Number(call, nuv_printer_get_last_read_job);
  }
  void SetLastReadJob(int index, const Call& call = {}) {
    Tell(call, nuv_printer_set_last_read_job, index);
  }

  CheckReport Check(const std::filesystem::path& file, const Call& call = {}) const {
    nuv_check report = NUV_INIT(nuv_check);
    detail::Frame frame(call);
    frame.Finish(nuv_printer_check(&report, handle_.get(), detail::Utf8(file).c_str(), frame.call(),
                                   frame.error()));
    return CheckReport(report);
  }
  Outcome Send(const std::filesystem::path& file, const SendOptions& options = {},
               const Call& call = {}) {
    return Transfer(options, call,
                    [&](nuv_outcome* out, const nuv_send_options* native, detail::Frame& frame) {
                      return nuv_printer_send(out, handle_.get(), detail::Utf8(file).c_str(),
                                              native, frame.call(), frame.error());
                    });
  }
  Outcome SendText(const std::filesystem::path& file, const SendOptions& options = {},
                   const Call& call = {}) {
    return Transfer(options, call,
                    [&](nuv_outcome* out, const nuv_send_options* native, detail::Frame& frame) {
                      return nuv_printer_send_text(out, handle_.get(), detail::Utf8(file).c_str(),
                                                   native, frame.call(), frame.error());
                    });
  }
  Outcome Update(Part part, const std::filesystem::path& image, const SendOptions& options = {},
                 const Call& call = {}) {
    return Transfer(options, call,
                    [&](nuv_outcome* out, const nuv_send_options* native, detail::Frame& frame) {
                      return nuv_printer_update(out, handle_.get(), static_cast<int32_t>(part),
                                                detail::Utf8(image).c_str(), native, frame.call(),
                                                frame.error());
                    });
  }
  void AbandonJob(const Call& call = {}) { Tell(call, nuv_printer_abandon_job); }

  // One command line and its reply, bytes as they came; without a line one more reply.
  std::string Raw(const std::optional<std::string>& line, const Call& call = {}) {
    std::string reply(NUV_RAW_REPLY_BYTES, '\0');
    size_t length = 0;
    detail::Frame frame(call);
    frame.Finish(nuv_printer_raw(&reply[0], reply.size(), &length, handle_.get(),
                                 line ? line->c_str() : nullptr, frame.call(), frame.error()));
    reply.resize(length);
    return reply;
  }

  // `function` runs on a thread of the library; true to go on.
  nuv::Watch Watch(std::chrono::milliseconds interval,
                   std::function<bool(const Event&)> function) const {
    nuv::Watch watch;
    watch.shared_ = std::make_shared<nuv::Watch::Shared>();
    watch.shared_->function = std::move(function);
    auto* user = new std::shared_ptr<nuv::Watch::Shared>(watch.shared_);
    nuv_watch* handle = nullptr;
    detail::Finish(nuv_printer_watch(&handle, handle_.get(), static_cast<int32_t>(interval.count()),
                                     &nuv::Watch::Look, user, &nuv::Watch::Release));
    watch.handle_.reset(handle);
    return watch;
  }

 private:
  template <typename Open>
  static Printer Opened(const Call& call, Open open) {
    nuv_printer* handle = nullptr;
    detail::Frame frame(call);
    const nuv_result result = open(&handle, frame);
    Printer printer;
    printer.handle_.reset(handle);
    frame.Finish(result);
    return printer;
  }

  template <typename Native, typename Query, typename... Inputs>
  Native Ask(const Call& call, Query query, Inputs... inputs) const {
    Native out = nuv_init<Native>();
    detail::Frame frame(call);
    frame.Finish(query(&out, handle_.get(), inputs..., frame.call(), frame.error()));
    return out;
  }

  template <typename Query>
  int Number(const Call& call, Query query) const {
    int32_t out = 0;
    detail::Frame frame(call);
    frame.Finish(query(&out, handle_.get(), frame.call(), frame.error()));
    return out;
  }

  template <typename Setter, typename... Inputs>
  void Tell(const Call& call, Setter setter, Inputs... inputs) const {
    detail::Frame frame(call);
    frame.Finish(setter(handle_.get(), inputs..., frame.call(), frame.error()));
  }

  template <typename Sender>
  static Outcome Transfer(const SendOptions& options, const Call& call, Sender sender) {
    detail::Frame frame(call);
    struct User {
      const SendOptions& options;
      detail::Frame& frame;
    } user{options, frame};
    nuv_send_options native = NUV_INIT(nuv_send_options);
    native.accept = options.accept.bits;
    native.android_kind = options.androidKind;
    native.user = &user;
    if (options.progress) {
      native.progress = [](const nuv_progress* progress, void* closure) -> int32_t {
        auto* held = static_cast<User*>(closure);
        return held->frame.Guard(held->options.progress, Progress(detail::Received(progress)));
      };
    }
    nuv_outcome out = NUV_INIT(nuv_outcome);
    const nuv_result result = sender(&out, &native, frame);
    frame.RethrowClosure();
    if (out.outcome == NUV_OUTCOME_NONE) frame.Finish(result);
    return Outcome(out, result);
  }

  detail::Owner<nuv_printer> handle_;
};

// What is wrong with a print file in itself, without a printer.
inline CheckReport CheckFile(const std::filesystem::path& file, const Call& call = {}) {
  return Printer().Check(file, call);
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
