#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "base/json.h"

namespace ostrell {

// The compact text of an array (RFC 8259, UTF-8), written element by element: no element needs to
// live on, and the text is held once.
class JsonArrayText {
 public:
  // No array that is longer, in bytes.
  static constexpr size_t kMaxBytes = std::numeric_limits<uint32_t>::max();

  // Appends an array or object, which is not kept. One that cannot be written (null, a scalar, text
  // that is not UTF-8, no memory) spoils the whole.
  void Add(const json_t* element) noexcept;

  // The array, which leaves this object empty. Nothing when it has no element, one of them could
  // not be written, or it is longer than kMaxBytes.
  std::optional<std::string> Take() noexcept;

 private:
  bool Append(const json_t* element);

  std::string text;     // without the closing bracket
  std::string scratch;  // where an element is written first
  bool isWhole = true;
};

}  // namespace ostrell
