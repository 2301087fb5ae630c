#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

namespace ostrell {

// Fills `to` from the file's position and moves it on. False when the file ends before that or
// cannot be read: then `to` may be filled in part. Unlike a mapped page, a part of the disk that is
// gone ends nothing but the reading.
bool ReadExactly(HANDLE file, std::span<std::byte> to);

}  // namespace ostrell
