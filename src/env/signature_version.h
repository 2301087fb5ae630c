#pragma once

#include <cstdint>
#include <string_view>

#include "platform/svclink.h"

namespace ostrell {

// The newest version among the five signature files under "sigdb" of the data path (UTF-8, ending
// with a backslash); 0 when none can be read.
//
// A file whose version does not fall below the newest so far is read a second time, and what that
// second reading gives counts: a file that reads once and then fails resets the newest to 0.
uint64_t NewestSignatureVersion(std::string_view dataPath, const Svclink& svclink);

}  // namespace ostrell
