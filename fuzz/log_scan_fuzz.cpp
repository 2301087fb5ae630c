#include <string>
#include <string_view>

#include "fuzz/fuzz_target.h"
#include "unified/log_line.h"
#include "unified/log_scan.h"
#include "unified/plain_log_reading.h"

// The first byte of the input is the size of a block less one, the second chooses the signature,
// the rest is the log.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ostrell;
  constexpr std::string_view kSignatures[] = {"0 failed", "startservice:: 0x00000005", "ab", "a"};
  if (size < 2) {
    return 0;
  }
  const size_t blockSize = size_t{data[0]} + 1;
  const std::string_view signature = kSignatures[data[1] % std::size(kSignatures)];
  const std::string file(reinterpret_cast<const char*>(data) + 2, size - 2);
  const LogReader read = [&file](uint64_t offset, std::span<char> to) {
    return ReadFromText(file, offset, to);
  };
  const auto lines = MatchingLines(read, signature, blockSize);
  Require(lines == PlainLogReading(file, signature));
  for (const std::string& line : lines) {
    Require(!LogLineTime(line) || line.starts_with('['));
    Require(PeTimeMarker(line).value_or(1) != 0);
  }
  return 0;
}
