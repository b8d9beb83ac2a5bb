// What a printer answers to a search by UDP broadcast.
#ifndef NUVSIM_SEARCH_ANSWERS_H_
#define NUVSIM_SEARCH_ANSWERS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/reply_faults.h"
#include "nuvsim/types.h"

namespace nuvsim {

// True for the search message, in any letter case, with or without its line end.
bool IsSearch(std::string_view datagram);

// The datagrams that answer `search`, in order; the last is the proper answer unless a fault
// replaces or duplicates it. `address` and `port` are where the printer accepts connections.
std::vector<Delivery> AnswerSearch(const PrinterConfig& printer, const std::string& address,
                                   std::uint16_t port, const std::vector<Fault>& faults,
                                   std::string_view search);

}  // namespace nuvsim

#endif  // NUVSIM_SEARCH_ANSWERS_H_
