#include "devkit/report_server/tickets.h"

#include <utility>

namespace ostrell {

uint64_t Tickets::Issue(IssuedTicket ticket) {
  const std::scoped_lock lock(mutex);
  if (issued.size() == kMaxTickets) {
    issued.erase(issued.begin());
  }
  issued.emplace(next, std::move(ticket));
  return next++;
}

std::optional<IssuedTicket> Tickets::Find(uint64_t number) const {
  const std::scoped_lock lock(mutex);
  const auto found = issued.find(number);
  if (found == issued.end()) {
    return std::nullopt;
  }
  return found->second;
}

}  // namespace ostrell
