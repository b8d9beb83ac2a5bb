// The control language: one JSON object in, one JSON line out. Knows no sockets.
#ifndef NUVSIM_CONTROL_LANGUAGE_H_
#define NUVSIM_CONTROL_LANGUAGE_H_

#include <string>

#include "nuvsim/simulator.h"

namespace NuvSim {

struct ControlAnswer {
  std::string line;    // JSON without a line end; {"error": "..."} for a bad request
  bool quits = false;  // the simulator was told to end
};

// Carries out one request (see README.md). Never throws for what the request holds.
// Thread-safety: may be called from several threads.
ControlAnswer ControlSimulator(Simulator& simulator, const std::string& request);

}  // namespace NuvSim

#endif  // NUVSIM_CONTROL_LANGUAGE_H_
