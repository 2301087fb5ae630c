#pragma once

#include <cstdint>
#include <optional>

#include "base/json.h"

namespace ostrell {

// Sends an array or object as the compact text of a report, and releases it before the transfer.
// The result is UploadReport's; nothing when the text cannot be made (no value, no memory, text
// that is not UTF-8) or has 4 GiB or more: then nothing is sent.
std::optional<int32_t> UploadJson(const char* url, JsonOwner value);

}  // namespace ostrell
