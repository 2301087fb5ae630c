#include "devkit/viewer/body_cache.h"

#include <algorithm>

#include "devkit/report_server/packed_body.h"

namespace ostrell {

std::shared_ptr<const OpenBody> BodyCache::Open(const KeptRequest& request) {
  using Entry = decltype(newest)::value_type;
  const std::scoped_lock lock(mutex);
  const auto found = std::ranges::find(newest, request.number, &Entry::first);
  if (found != newest.end()) {
    return found->second;
  }
  while (newest.size() >= kKept) {
    newest.pop_front();
  }
  auto body = std::make_shared<OpenBody>();
  if (request.isPut) {
    UnpackBody(request.received, body->unpacked);
    const std::string& text = body->unpacked;
    body->document.Reset(json_loadb(text.data(), text.size(), JSON_ALLOW_NUL, nullptr));
  } else {
    body->unpacked = request.received;
  }
  newest.emplace_back(request.number, body);
  return body;
}

}  // namespace ostrell
