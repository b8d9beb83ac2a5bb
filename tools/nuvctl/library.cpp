#include "library.h"

#include <algorithm>

#include "error.h"

namespace NuvCtl {
namespace {

struct FailedCommand {
  int result = NUV_OK;
  int code = 0;
};

// The callback has no argument of the host's, so what it hears is kept here. All calls are made on
// the main thread, and the library calls back on the thread of the failing call.
FailedCommand g_failed;

constexpr int kUsualEntries = 64;
constexpr int kListAttempts = 3;

void OnCommandFailed(int result, int code) { g_failed = {result, code}; }

// The command behind `result`, or 0: an earlier failure that was put up with is not its cause.
int CommandBehind(int result) {
  const bool byTransaction = g_failed.result < 0 && result == NUV_FAILED;
  return g_failed.result == result || byTransaction ? g_failed.code : 0;
}

}  // namespace

Library::Library() {
  g_failed = FailedCommand();
  API_Initial();
  API_RegisterErrorCodeCallback(OnCommandFailed);
}

Library::~Library() { API_Close(); }

CommandError FailureOf(int result, const std::string& action) {
  return ResultError(result, action, CommandBehind(result));
}

void Check(int result, const std::string& action) {
  if (result != NUV_OK) throw FailureOf(result, action);
}

void CheckQuery(int result, const std::string& action) {
  if (result == NUV_OK) return;
  CommandError error = FailureOf(result, action);
  if (result == NUV_PRINTER_REFUSED) {
    error.message = FailureMessage(action, "this printer does not have it", CommandBehind(result));
    error.hint = "Models differ in what they can tell; 'nuvctl info' shows which one this is.";
  }
  throw error;
}

void CheckOrder(int result, const std::string& action, const std::string& hint) {
  if (result == NUV_OK) return;
  CommandError error = FailureOf(result, action);
  if (result == NUV_PRINTER_REFUSED) error.hint = hint;
  throw error;
}

bool Answered(int result, const std::string& action) {
  if (result != NUV_PRINTER_REFUSED) Check(result, action);
  return result == NUV_OK;
}

TextList::TextList(int capacity) : bytes_(static_cast<size_t>(capacity) * (kLength + 1)) {
  for (size_t i = 0; i < static_cast<size_t>(capacity); ++i) {
    entries_.push_back(bytes_.data() + i * (kLength + 1));
  }
}

std::vector<std::string> ReadList(ListQuery query, const std::string& action) {
  int count = kUsualEntries;
  // The list may grow from one call to the next, so its end is given up on at some point.
  for (int attempt = 1;; ++attempt) {
    TextList list(count);
    CheckQuery(query(list.Data(), &count, TextList::kLength), action);
    if (count > list.Capacity() && attempt < kListAttempts) continue;
    std::vector<std::string> texts;
    for (int i = 0; i < std::min(count, list.Capacity()); ++i) texts.push_back(list.Text(i));
    return texts;
  }
}

}  // namespace NuvCtl
