// Answers that come piece by piece while a command runs.
#ifndef NUVCTL_STREAM_H_
#define NUVCTL_STREAM_H_

#include "context.h"
#include "report.h"

namespace nuvctl {

// Writes one piece to the standard output at once: the text, or the document as one line. From then
// on the Report or error that ends the command is a piece too.
void Stream(Context& context, const Report& piece);

}  // namespace nuvctl

#endif  // NUVCTL_STREAM_H_
