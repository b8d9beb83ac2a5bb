// What is told of a command line that is wrong.
#ifndef NUVCTL_USAGE_H_
#define NUVCTL_USAGE_H_

#include <string>
#include <vector>

#include "error.h"

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace NuvCtl {

// The failure of `arguments`, which `app` did not take.
CommandError UsageFailure(const CLI::App& app, const CLI::ParseError& error,
                          const std::vector<std::string>& arguments);

}  // namespace NuvCtl

#endif  // NUVCTL_USAGE_H_
