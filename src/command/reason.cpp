#include "command/reason.h"

#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int ResultOf(Reason reason, Step step) {
  if (reason == Reason::kNone) return NUV_OK;
  switch (step) {
    case Step::kOpening:
      return NUV_CONNECTION_REFUSED;
    case Step::kCommand:
      break;
    case Step::kStream:
      return NUV_WRITE_FAILED;
    case Step::kWaitingForSpace:
      return NUV_NO_BUFFER_SPACE;
  }
  return reason == Reason::kRefused ? NUV_PRINTER_REFUSED : NUV_FAILED;
}

ConnectError ErrorOf(Reason reason) {
  if (reason == Reason::kRefused) return kErrorRefused;
  return reason == Reason::kOtherReply ? kErrorOtherReply : kErrorNoReply;
}

int ResultOf(ConnectError error) {
  return error == kErrorRefused ? NUV_PRINTER_REFUSED : NUV_FAILED;
}

const char* WordsFor(Reason reason) {
  switch (reason) {
    case Reason::kNone:
      break;
    case Reason::kSilence:
      return "the printer did not answer in time";
    case Reason::kNotTaken:
      return "the printer did not take the bytes in time";
    case Reason::kEnded:
      return "the printer ended the link";
    case Reason::kUnreachable:
      return "the printer cannot be reached";
    case Reason::kNotOpen:
      return "no printer is open";
    case Reason::kOtherReply:
      return "a reply to another command came";
    case Reason::kMalformed:
      return "the reply cannot be read";
    case Reason::kRefused:
      return "the printer refused";
    case Reason::kGivenUp:
      return "the wait was given up";
  }
  return "";
}

}  // namespace Nuv::Connect
