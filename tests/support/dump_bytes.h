#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "unified/minidump.h"

namespace ostrell {

// For tests: a dump in memory. A read outside it throws.
inline DumpSource SourceOf(std::string_view dump) {
  return {dump.size(), [dump](uint64_t offset, std::span<std::byte> to) {
            std::ranges::copy(Slice(BytesOf(dump), offset, to.size()).value(), to.begin());
            return true;
          }};
}

// A dump as text, a piece a line:
//
//   words OFFSET WORD...                   of 32 bits
//   modules OFFSET COUNT TIME NAME APART   entries of a list, whose names begin so far apart
//   name OFFSET COUNT END                  its length, COUNT times "a", END and a zero
inline std::string DumpOf(const std::string& text) {
  std::string dump;
  const auto put = [&dump](size_t offset, uint64_t value, size_t size) {
    dump.resize(std::max(dump.size(), offset + size));
    for (size_t i = 0; i < size; ++i) {
      dump[offset + i] = static_cast<char>(value >> (8 * i));
    }
  };
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    fields.unsetf(std::ios::basefield);  // 0x begins a hexadecimal number
    std::string piece;
    size_t offset = 0;
    size_t count = 0;
    fields >> piece >> offset;
    if (piece == "words") {
      for (uint32_t word = 0; fields >> word; offset += 4) {
        put(offset, word, 4);
      }
    } else if (uint64_t time = 0, name = 0, apart = 0;
               piece == "modules" && fields >> count >> time >> name >> apart) {
      for (; count > 0; --count, offset += 108, name += apart) {
        put(offset + 16, time, 4);
        put(offset + 20, name, 4);
        put(offset + 104, 0, 4);
      }
    } else if (std::string end; piece == "name" && fields >> count >> end) {
      const std::string letters = std::string(count, 'a') + end;
      put(offset, 2 * letters.size(), 4);
      for (size_t i = 0; i <= letters.size(); ++i) {
        put(offset + 4 + 2 * i, static_cast<uint8_t>(letters.c_str()[i]), 2);
      }
    }
  }
  return dump;
}

}  // namespace ostrell
