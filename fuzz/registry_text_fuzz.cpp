#include "base/bytes.h"
#include "base/registry_text.h"
#include "fuzz/fuzz_target.h"

// Zeros follow the end of the value, so that an odd byte there is half a unit.
void ostrell::CheckInput(std::string_view input) {
  std::wstring plain;
  for (size_t i = 0; i < input.size(); i += 2) {
    const int high = i + 1 < input.size() ? static_cast<uint8_t>(input[i + 1]) : 0;
    plain += static_cast<wchar_t>(static_cast<uint8_t>(input[i]) + 256 * high);
  }
  plain.resize(plain.find(L'\0') != plain.npos ? plain.find(L'\0') : plain.size());
  Require(TextUpToZero(BytesOf(input)) == plain);
  using namespace std::string_view_literals;
  const bool isTerminated = input.empty() || (input.size() % 2 == 0 && input.ends_with("\0\0"sv));
  Require(TerminatedText(BytesOf(input)) == (isTerminated ? std::optional(plain) : std::nullopt));
}
