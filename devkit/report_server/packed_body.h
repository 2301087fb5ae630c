#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ostrell {

// What the body of a PUT should be.
struct ExpectedBody {
  std::string_view digest;  // MD5 of the body as 32 upper-case hexadecimal digits
  bool isJson;              // what it unpacks to is a JSON document
};

// What it is.
struct PackedBodyCheck {
  bool digestMatches = false;
  bool isZlib = false;          // one zlib stream from the first byte to the last
  std::string unpacked;         // of a damaged stream: what came out before the damage
  std::optional<bool> isJson;   // nothing where no JSON is expected
  std::optional<size_t> items;  // the length, where the document is an array
};

// The most that a body unpacks to; a stream that holds more counts as damaged.
inline constexpr size_t kMaxUnpackedBytes = size_t{512} << 20;

// True when `packed` is one whole zlib stream; `unpacked` receives what came out in any case.
bool UnpackBody(std::string_view packed, std::string& unpacked);

PackedBodyCheck CheckPackedBody(std::string_view body, const ExpectedBody& expected);

}  // namespace ostrell
