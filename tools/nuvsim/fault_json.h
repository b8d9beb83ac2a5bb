// Faults as JSON objects, for the configuration file and the control socket.
#ifndef NUVSIM_FAULT_JSON_H_
#define NUVSIM_FAULT_JSON_H_

#include <nlohmann/json.hpp>
#include <string>

#include "nuvsim/fault.h"

namespace nuvsim {

// Reads {"kind": "late", "code": 102, "count": 2, "ms": 500}: the same keys as a fault text.
// `path` names the value in messages. Throws ConfigError.
Fault ParseFault(const nlohmann::json& value, const std::string& path);

}  // namespace nuvsim

#endif  // NUVSIM_FAULT_JSON_H_
