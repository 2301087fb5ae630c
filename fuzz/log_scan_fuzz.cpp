#include <string>
#include <string_view>

#include "fuzz/fuzz_target.h"
#include "tests/support/plain_log_reading.h"
#include "unified/log_line.h"
#include "unified/log_scan.h"

// The first byte of the input is the size of a block less one, the second chooses the signature and
// how much of a line is kept, the rest is the log.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ostrell;
  constexpr std::string_view kSignatures[] = {"0 failed", "startservice:: 0x00000005", "ab", "a"};
  if (size < 2) {
    return 0;
  }
  const LogScanSizes sizes = {.block = size_t{data[0]} + 1,
                              .maxOfLine = size_t{data[1]} / 4 * 5 + 1};
  const std::string_view signature = kSignatures[data[1] % std::size(kSignatures)];
  const std::string file(reinterpret_cast<const char*>(data) + 2, size - 2);
  size_t bytesRead = 0;
  const LogReader read = [&](uint64_t offset, std::span<char> to) {
    const size_t count = ReadFromText(file, offset, to);
    bytesRead += count;
    return count;
  };
  const auto lines = MatchingLines(read, signature, sizes);
  Require(lines == PlainLogReading(file, signature, sizes.maxOfLine));
  // Read again is no more than what is kept of each line, with the rest of a block.
  size_t readAgain = 0;
  for (const LogLine& line : lines) {
    Require(!LogLineTime(line.text) || line.text.starts_with('['));
    Require(PeTimeMarker(line.text).value_or(1) != 0);
    readAgain += line.text.size() + 3 * sizes.block + signature.size();
  }
  Require(bytesRead <= file.size() + readAgain);
  return 0;
}
