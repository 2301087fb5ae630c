#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "base/json.h"
#include "devkit/report_server/request_log.h"

namespace ostrell {

// What an upload holds.
struct OpenBody {
  std::string unpacked;  // of a damaged stream what came out of it
  JsonOwner document;    // null where it is none
};

// The bodies that were looked at last, which a page asks for part by part. All operations may be
// called from any thread.
class BodyCache {
 public:
  // A request that is no PUT has a body as it was received.
  std::shared_ptr<const OpenBody> Open(const KeptRequest& request);

 private:
  static constexpr size_t kKept = 2;  // a difference takes two

  std::mutex mutex;  // held while a body is unpacked: one at a time takes enough memory
  std::deque<std::pair<uint64_t, std::shared_ptr<const OpenBody>>> newest;
};

}  // namespace ostrell
