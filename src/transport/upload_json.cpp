#include "transport/upload_json.h"

#include <cstring>
#include <limits>

#include "transport/upload_report.h"

namespace ostrell {

std::optional<int32_t> UploadJson(const char* url, JsonOwner value) {
  const JsonText text(json_dumps(value.Get(), JSON_COMPACT));
  value.Reset();
  const size_t length = text ? std::strlen(text.Get()) : 0;
  if (length == 0 || length > std::numeric_limits<uint32_t>::max()) {
    return std::nullopt;
  }
  return UploadReport(url, text.Get(), static_cast<uint32_t>(length));
}

}  // namespace ostrell
