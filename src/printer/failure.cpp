#include "printer/failure.h"

#include <new>
#include <stdexcept>

#include "command/reply_views.h"
#include "printer/log.h"
#include "printer/values.h"

namespace Nuv::Printer {
namespace {

Failure RunFor(const std::function<void()>& body) {
  try {
    body();
    return {NUV_RESULT_OK, {}};
  } catch (const Failure& failure) {
    return failure;
  } catch (const Command::ReplyError& error) {
    return {NUV_RESULT_UNREADABLE,
            "command " + std::to_string(error.Code()) + ": the answer cannot be read",
            error.Code()};
  } catch (const std::bad_alloc&) {
    return {NUV_RESULT_SYSTEM, "no memory"};
  } catch (const std::exception& error) {
    return {NUV_RESULT_SYSTEM, error.what()};
  }
}

}  // namespace

nuv_result ResultOf(Connect::Reason reason) {
  using Connect::Reason;
  switch (reason) {
    case Reason::kSilence:
    case Reason::kNotTaken:
      return NUV_RESULT_NO_ANSWER;
    case Reason::kEnded:
    case Reason::kNotOpen:
      return NUV_RESULT_LOST;
    case Reason::kUnreachable:
      return NUV_RESULT_UNREACHABLE;
    case Reason::kRefused:
      return NUV_RESULT_REFUSED;
    case Reason::kGivenUp:
      return NUV_RESULT_CANCELLED;
    default:
      return NUV_RESULT_UNREADABLE;
  }
}

nuv_result Guarded(nuv_error* error, const std::function<void()>& body) {
  if (error != nullptr && error->size < sizeof *error) return NUV_RESULT_INVALID_ARGUMENT;
  Failure failure = RunFor(body);
  if (failure.result != NUV_RESULT_OK) {
    if (failure.message.empty()) failure.message = nuv_result_text(failure.result);
    Log(NUV_LOG_ERROR, {}, failure.message);
  }
  if (error != nullptr) {
    nuv_error told = NUV_INIT(nuv_error);
    told.result = failure.result;
    told.command = failure.command;
    if (failure.result != NUV_RESULT_OK) told.message = Text(failure.message);
    HandOut(told, error);
  }
  return failure.result;
}

}  // namespace Nuv::Printer
