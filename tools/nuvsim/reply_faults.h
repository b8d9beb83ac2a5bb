// What a fault does to the answer of a command.
#ifndef NUVSIM_REPLY_FAULTS_H_
#define NUVSIM_REPLY_FAULTS_H_

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/fault.h"
#include "nuvsim/fault_list.h"

namespace nuvsim {

// Bytes to send in one go, `delay` after the delivery before them has been sent. None at all are
// an empty packet over USB, and nothing over the network.
struct Delivery {
  std::string bytes;
  std::chrono::milliseconds delay{0};
  bool repeats = false;  // it is sent again and again until the client is gone
};

// What a printer does in reaction to received bytes: deliveries in order, then the end of the
// connection unless `closing` is kNone.
struct Reaction {
  std::vector<Delivery> deliveries;
  Closing closing = Closing::kNone;
  std::size_t taken = 0;  // of the bytes; the others come again when the stall is over
  // Nothing more is read for so long; zero: until the faults are cleared.
  std::optional<std::chrono::milliseconds> stall;
};

inline constexpr std::string_view kLineEnd = "\r\n";

// Appends the answer (without its last line end) to `reaction` as `fault` makes it. What changes
// the text of an answer of several lines changes the first; a refused one has no others.
void AnswerWithFault(const Fault& fault, const std::string& answer, Reaction& reaction);

// Appends the answer (as above), with its line end, as it should be.
void AnswerProperly(const std::string& answer, Reaction& reaction);

// `answer` with the value of its field `field` (S:5, S=5, or S5 from the third token on) replaced
// by `text`; a field that it lacks is added.
std::string ReplaceField(const std::string& answer, const std::string& field,
                         const std::string& text);

}  // namespace nuvsim

#endif  // NUVSIM_REPLY_FAULTS_H_
