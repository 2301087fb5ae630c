#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "devkit/report_server/request_target.h"

namespace ostrell {

// What the server remembers of a ticket request until the PUT comes.
struct IssuedTicket {
  std::string report;  // "rc2"
  QueryValues query;
  std::string digest;  // the query value "o"
};

// The tickets given out, by number. All operations may be called from any thread.
class Tickets {
 public:
  // The oldest ticket is forgotten when there are more.
  static constexpr size_t kMaxTickets = 10000;

  explicit Tickets(uint64_t firstNumber) : next(firstNumber) {}

  // Returns the ticket's number, which no other ticket has.
  uint64_t Issue(IssuedTicket ticket);

  // A ticket stays valid when it is used. Nothing for a number that was never given out.
  std::optional<IssuedTicket> Find(uint64_t number) const;

 private:
  mutable std::mutex mutex;
  uint64_t next;
  std::map<uint64_t, IssuedTicket> issued;
};

}  // namespace ostrell
