#!/usr/bin/env bash
# The layers' arrows point one way, the simulator shares nothing with the library, and headers of an
# operating system stay in the files that CMake chooses by system.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

failed=0
# refuse WHAT PATTERN PATHS...: no file below the paths may include what matches.
refuse() {
  local hits
  hits=$(grep -rnE "^#include [<\"]($2)" "${@:3}" | grep -vE '_(posix|windows|win|linux)\.(cpp|h):' || true)
  [ -z "$hits" ] && return
  printf '%s:\n%s\n' "$1" "$hits"
  failed=1
}

refuse "command knows nothing above it" '(api|connect|job|transport)/' src/command
refuse "job reaches down to command only" '(api|connect|transport)/' src/job
refuse "transport knows nothing above it" '(api|connect|job|command)/' src/transport
refuse "platform knows nothing above it" '(api|connect|job|command|transport|nuvconnect)/' src/platform
refuse "connect does not know the exports" 'api/' src/connect
refuse "the simulator shares no code with the library" '(api|connect|job|command|transport|platform|nuvconnect|nuvfile)/' tools/nuvsim
# The simulator's own arrows: tools/nuvsim/README.md, "Folders".
sim=tools/nuvsim
refuse "the simulator knows nothing of its control" 'nuvsim/control/' \
  $sim/simulator* $sim/served_printer* $sim/commands $sim/printer $sim/faults $sim/net $sim/usb
refuse "commands know no endpoint" 'nuvsim/(net|usb|simulator|served_printer)' $sim/commands
refuse "the printer knows its configuration and what it remembers only" \
  'nuvsim/(commands|faults|net|usb|simulator|served_printer|wire)' $sim/printer
refuse "usb carries bytes, over net" 'nuvsim/(commands|config|faults|printer|records|simulator|served_printer)' $sim/usb
refuse "net carries bytes" 'nuvsim/(commands|printer|usb|simulator|served_printer)' $sim/net
refuse "faults know no printer" \
  'nuvsim/(commands|config|net|printer|records|usb|simulator|served_printer)' $sim/faults
refuse "what all share knows no folder but faults" \
  'nuvsim/(commands|control|net|printer|usb|simulator|served_printer)' \
  $sim/config* $sim/records* $sim/wire* $sim/addresses* $sim/json_object*
refuse "what nuvctl's commands use knows no command" 'commands/' \
  $(ls tools/nuvctl/*.cpp tools/nuvctl/*.h | grep -v command_line)
refuse "nuvctl uses the public headers only" '(api|connect|job|command|transport|platform)/' tools/nuvctl
refuse "an operating system's header outside the files of that system" \
  '(sys|arpa|netinet|net|linux)/|(windows|iphlpapi|ifaddrs|winsock2|ws2tcpip|unistd|dlfcn|poll|netdb|syslog|fcntl|libudev|setupapi|termios|signal|pthread)\.h' \
  include src nuvfile tools
exit "$failed"
