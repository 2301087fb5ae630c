#include <span>
#include <string_view>

#include "base/registry_text.h"
#include "fuzz/fuzz_target.h"

namespace {

using namespace ostrell;

// The unit at `index` of the value, whose end zeros follow.
wchar_t UnitAt(std::span<const uint8_t> value, size_t index) {
  const auto byteAt = [&](size_t i) { return i < value.size() ? value[i] : 0; };
  return static_cast<wchar_t>(byteAt(2 * index) + 256 * byteAt(2 * index + 1));
}

// The text's units are those at the beginning of the value, and the first zero follows.
bool IsTextOf(std::wstring_view text, std::span<const uint8_t> value) {
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'\0' || text[i] != UnitAt(value, i)) {
      return false;
    }
  }
  return text.size() <= (value.size() + 1) / 2 && UnitAt(value, text.size()) == L'\0';
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span value(data, size);
  const std::wstring text = TextUpToZero(std::as_bytes(value));
  const auto terminated = TerminatedText(std::as_bytes(value));
  Require(IsTextOf(text, value));
  Require(!terminated || *terminated == text);
  const bool endsWithZero =
      size == 0 || (size % 2 == 0 && data[size - 1] == 0 && data[size - 2] == 0);
  Require(terminated.has_value() == endsWithZero);
  return 0;
}
