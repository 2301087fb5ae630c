#include <string>

#include "fuzz/fuzz_target.h"
#include "tests/support/plain_log_reading.h"
#include "unified/log_line.h"
#include "unified/log_scan.h"

namespace ostrell {

// The first byte of the input is the size of a block less one, the second chooses the signature and
// how much of a line is kept, the rest is the log.
void CheckInput(std::string_view input) {
  constexpr std::string_view kSignatures[] = {"0 failed", "startservice:: 0x00000005", "ab", "a"};
  const size_t blockLessOne = TakeByte(input);
  const size_t choice = TakeByte(input);
  const LogScanSizes sizes = {.block = blockLessOne + 1, .maxOfLine = choice / 4 * 5 + 1};
  const std::string_view signature = kSignatures[choice % std::size(kSignatures)];
  size_t bytesRead = 0;
  const LogReader read = [&](uint64_t offset, std::span<char> to) {
    const size_t count = ReadFromText(input, offset, to);
    bytesRead += count;
    return count;
  };
  const auto lines = MatchingLines(read, signature, sizes);
  Require(lines == PlainLogReading(std::string(input), signature, sizes.maxOfLine));
  // Read again is no more than what is kept of each line, with the rest of a block.
  size_t readAgain = 0;
  for (const LogLine& line : lines) {
    Require(!LogLineTime(line.text) || line.text.starts_with('['));
    Require(PeTimeMarker(line.text).value_or(1) != 0);
    readAgain += line.text.size() + 3 * sizes.block + signature.size();
  }
  Require(bytesRead <= input.size() + readAgain);
}

}  // namespace ostrell
