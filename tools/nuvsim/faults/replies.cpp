#include "nuvsim/faults/replies.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace NuvSim {
namespace {

constexpr size_t kKib = 1024;

// Bytes that are neither text nor a line end; the same ones every time, so that a failure recurs.
std::string Garbage(uint64_t length) {
  std::string bytes;
  uint32_t state = 12345;
  while (bytes.size() < length) {
    state = state * 1664525u + 1013904223u;
    const auto byte = static_cast<unsigned char>((state >> 24) | 0x80u);
    bytes += (bytes.size() % 8 == 7) ? '\0' : static_cast<char>(byte);
  }
  return bytes;
}

// The token at `index` (from 0) of the answer replaced.
std::string ReplaceToken(const std::string& answer, int index, const std::string& text) {
  size_t start = 0;
  for (; index > 0; --index) start = std::min(answer.find(' ', start), answer.size() - 1) + 1;
  const size_t end = std::min(answer.find(' ', start), answer.size());
  return answer.substr(0, start) + text + answer.substr(end);
}

std::string Padded(const std::string& answer, uint64_t kib) {
  std::string padded = answer + " X:";
  const auto length = static_cast<size_t>(kib) * kKib;
  if (padded.size() < length) padded.resize(length, 'x');
  return padded;
}

void AnswerInPieces(const std::string& line, const Fault& fault, Reaction& reaction) {
  const auto pieceLength = static_cast<size_t>(std::max<uint64_t>(fault.size, 1));
  for (size_t start = 0; start < line.size(); start += pieceLength) {
    const std::chrono::milliseconds pause = start == 0 ? fault.delay * 0 : fault.delay;
    reaction.deliveries.push_back({line.substr(start, pieceLength), pause});
  }
}

Delivery EndlessPiece(const Fault& fault) {
  std::string piece(static_cast<size_t>(fault.size), 'x');
  for (size_t i = 0; i < piece.size() && !fault.text.empty(); ++i) {
    piece[i] = fault.text[i % fault.text.size()];
  }
  return {piece, fault.delay, true};
}

}  // namespace

std::string ReplaceField(const std::string& answer, const std::string& field,
                         const std::string& text) {
  size_t start = std::min(answer.find(" " + field + ":"), answer.find(" " + field + "="));
  size_t value = 0;
  if (start != std::string::npos) {
    value = start + field.size() + 2;
  } else {
    // Tagged by a letter alone; the head and the verdict before it are no fields.
    const size_t verdict = std::min(answer.find(' '), answer.size() - 1) + 1;
    start = answer.find(" " + field, verdict);
    if (start == std::string::npos) return answer + " " + field + ":" + text;
    value = start + field.size() + 1;
  }
  const size_t end = std::min(answer.find(' ', value), answer.size());
  return answer.substr(0, value) + text + answer.substr(end);
}

void AnswerProperly(const std::string& answer, Reaction& reaction) {
  reaction.deliveries.push_back({answer + std::string(kLineEnd), std::chrono::milliseconds(0)});
}

void AnswerWithFault(const Fault& fault, const std::string& answer, Reaction& reaction) {
  const std::string line = answer + std::string(kLineEnd);
  const size_t firstLength = std::min(answer.find(kLineEnd), answer.size());
  const std::string first = answer.substr(0, firstLength);
  const std::string others = answer.substr(firstLength);
  switch (fault.kind) {
    case FaultKind::kSilent:
      break;
    case FaultKind::kLate:
      reaction.deliveries.push_back({line, fault.delay});
      break;
    case FaultKind::kPieces:
      AnswerInPieces(line, fault, reaction);
      break;
    case FaultKind::kOtherCode:
      AnswerProperly(ReplaceToken(first, 0, fault.text) + others, reaction);
      break;
    case FaultKind::kAnswer:
      AnswerProperly(fault.text, reaction);
      break;
    case FaultKind::kRefuse:
      AnswerProperly(ReplaceToken(first, 1, "NG"), reaction);
      break;
    case FaultKind::kGarbage:
      AnswerProperly(Garbage(fault.size) + others, reaction);
      break;
    case FaultKind::kBadNumber:
      AnswerProperly(ReplaceField(first, fault.field, fault.text) + others, reaction);
      break;
    case FaultKind::kTwice:
      reaction.deliveries.push_back({line + line, std::chrono::milliseconds(0)});
      break;
    case FaultKind::kOversized:
      AnswerProperly(Padded(first, fault.size) + others, reaction);
      break;
    case FaultKind::kZeroPacket:
      reaction.deliveries.push_back({"", std::chrono::milliseconds(0)});
      AnswerProperly(answer, reaction);
      break;
    case FaultKind::kEndless:
      reaction.deliveries.push_back(EndlessPiece(fault));
      break;
    case FaultKind::kDrop:
      reaction.closing = Closing::kDrop;
      break;
    case FaultKind::kReset:
      reaction.closing = Closing::kReset;
      break;
    default:  // faults on the connection, the buffer and searches leave the answer alone
      AnswerProperly(answer, reaction);
      break;
  }
}

}  // namespace NuvSim
