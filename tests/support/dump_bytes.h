#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "unified/minidump.h"

namespace ostrell {

// For tests: a dump in memory. A read outside it throws.
inline DumpSource SourceOf(std::span<const std::byte> dump) {
  return {dump.size(), [dump](uint64_t offset, std::span<std::byte> to) {
            const auto from = Slice(dump, offset, to.size());
            std::ranges::copy(from.value(), to.begin());
            return true;
          }};
}

// A minidump made piece by piece, so that a case can damage any of them.
class DumpBytes {
 public:
  DumpBytes& Put32(size_t offset, uint64_t value) {
    bytes.resize(std::max(bytes.size(), offset + 4));
    for (size_t i = 0; i < 4; ++i) {
      bytes[offset + i] = static_cast<std::byte>(value >> (8 * i));
    }
    return *this;
  }
  DumpBytes& Header(uint64_t streams, uint64_t directory) {
    return Put32(0, 0x504D444D).Put32(8, streams).Put32(12, directory);
  }
  DumpBytes& Stream(size_t entry, uint64_t type, uint64_t rva) {
    return Put32(entry, type).Put32(entry + 4, 0).Put32(entry + 8, rva);
  }
  DumpBytes& Module(size_t entry, uint64_t time, uint64_t nameRva) {
    bytes.resize(std::max(bytes.size(), entry + 108));
    return Put32(entry + 16, time).Put32(entry + 20, nameRva);
  }
  DumpBytes& Name(size_t offset, std::string_view text) {
    Put32(offset, text.size() * 2);
    for (const char c : text) {
      bytes.push_back(static_cast<std::byte>(c));
      bytes.push_back(std::byte{0});
    }
    bytes.resize(bytes.size() + 2);
    return *this;
  }

  std::vector<std::byte> bytes;
};

// Names, aligned to two bytes only, lie before the list; the program is the second module; the list
// is the third stream.
inline DumpBytes WellFormedDump() {
  DumpBytes dump;
  dump.Header(3, 32).Stream(32, 0, 0).Stream(44, 9, 0xFFFFFFFF).Stream(56, 4, 200);
  dump.Name(70, "C:\\bin\\ntdll.dll").Name(130, "C:\\bin\\vguard.exe");
  dump.Put32(200, 2).Module(204, 1, 70).Module(312, 0x90ABCDEF, 130);
  return dump;
}

}  // namespace ostrell
