#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace ostrell {

// Finds the lines of a text log that contain a text, ASCII letters compared without regard to case.
//
// The bytes have the meaning of a text stream: CR LF is one line end, CR alone is part of the line,
// byte 0x1A ends the file (what stands before it on its line counts), a NUL is a character like any
// other, and the last line needs no end.
//
// The file is read once, in large blocks, and only a line that matches is put together; when it
// began before the bytes at hand it is read again from its start. So memory is a block and the
// longest matching line, of which no more is kept than its limit, whatever other lines there are.

// Reads up to `to.size()` bytes at `offset` and returns how many; 0 at the end or on failure, which
// ends the file there. It may give fewer than asked for.
using LogReader = std::function<size_t(uint64_t offset, std::span<char> to)>;

struct LogLine {
  std::string text;    // without the line's end
  bool isCut = false;  // more stands behind the text, perhaps the match as well

  bool operator==(const LogLine&) const = default;
};

// In bytes, each at least 1.
struct LogScanSizes {
  size_t block = size_t{1} << 16;
  size_t maxOfLine = size_t{16} << 20;  // what is kept of one
};

// Calls `onLine` with each matching line in file order, which lives until it returns. `signature`
// is in lower case and holds neither CR, LF nor 0x1A; an empty one matches nothing. The file may
// grow or shrink meanwhile: a line that no longer contains the signature when it is read again is
// left out.
void ScanLog(const LogReader& read, std::string_view signature,
             const std::function<void(const LogLine& line)>& onLine,
             const LogScanSizes& sizes = {});

}  // namespace ostrell
