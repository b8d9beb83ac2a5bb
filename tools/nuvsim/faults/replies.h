// What a fault does to the answer of a command.
#ifndef NUVSIM_FAULTS_REPLIES_H_
#define NUVSIM_FAULTS_REPLIES_H_

#include <string>
#include <string_view>

#include "nuvsim/faults/vocabulary.h"
#include "nuvsim/wire.h"

namespace NuvSim {

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

}  // namespace NuvSim

#endif  // NUVSIM_FAULTS_REPLIES_H_
