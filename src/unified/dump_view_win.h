#pragma once

#include <cstddef>
#include <span>

#include "unified/minidump.h"

namespace ostrell {

// A dump that is mapped into this process, for as long as the view lives. A page of it that cannot
// be brought in, because the disk fails or the connection is cut, is a read that fails: touching it
// would raise an exception.
DumpSource SourceOfView(std::span<const std::byte> view);

}  // namespace ostrell
