#include "unified/log_scan.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <vector>

#include "base/probe.h"
#include "base/text.h"

namespace ostrell {
namespace {

constexpr char kEndOfFile = 0x1A;
constexpr size_t kVector = Probe<char>::kPlaces;
constexpr size_t kStride = 4 * kVector;

bool EqualFolded(char fromText, char fromSignature) {
  return LowerAscii(fromText) == fromSignature;
}

class LogScan {
 public:
  LogScan(const LogReader& reader, std::string_view wanted, const LogScanSizes& sizes)
      : read(reader),
        signature(wanted),
        blockSize(sizes.block),
        maxOfLine(sizes.maxOfLine),
        first(wanted.front(), LetterCase::kIgnored),
        last(wanted.back(), LetterCase::kIgnored),
        endOfFile(kEndOfFile, LetterCase::kKept),
        lineFeed('\n', LetterCase::kKept),
        bytes(signature.size() + blockSize + kStride) {}

  // Goes to the next occurrence of the signature; false when the file has no more.
  bool FindMatch() {
    while (!atEnd) {
      const size_t stop = FindStop();
      if (const auto lineEnd = LastLineEnd(position, stop)) {
        lineStart = offset + *lineEnd + 1;
      }
      position = stop;
      if (stop < PlaceCount()) {
        atEnd = bytes[stop] == kEndOfFile;
        return !atEnd;
      }
      atEnd = !ReadOn(size - stop);
    }
    return false;
  }

  // The line at hand, whose end the scan goes on behind; null when it has lost its match.
  const LogLine* TakeLine() {
    const uint64_t begin = lineStart;
    const uint64_t match = offset + position;
    const bool isReadAgain = begin < offset;
    line.text.clear();
    if (isReadAgain) {  // as much as was read of it
      line.text.reserve(static_cast<size_t>(std::min<uint64_t>(offset + size - begin, maxOfLine)));
    }
    GoTo(begin);
    const uint64_t length = ReadLine(line.text, match) - begin;
    line.text.resize(static_cast<size_t>(std::min<uint64_t>(line.text.size(), length)));
    line.isCut = length > line.text.size();
    const bool isMatchKept = match + signature.size() <= begin + line.text.size();
    if (!isReadAgain || (line.isCut && !isMatchKept) || Contains(line.text)) {
      return &line;
    }
    return nullptr;
  }

 private:
  std::string_view Text() const { return {bytes.data(), size}; }

  // How many places there are at which the whole signature can stand.
  size_t PlaceCount() const { return size < signature.size() ? 0 : size - signature.size() + 1; }

  bool Contains(std::string_view text) const {
    return std::search(text.begin(), text.end(), signature.begin(), signature.end(), EqualFolded) !=
           text.end();
  }

  // The last line feed in [begin, end) of the bytes.
  std::optional<size_t> LastLineEnd(size_t begin, size_t end) const {
    for (; end - begin >= kVector; end -= kVector) {
      const auto hits =
          static_cast<uint32_t>(_mm_movemask_epi8(lineFeed.Find(bytes.data() + end - kVector)));
      if (hits != 0) {
        return end - kVector + std::bit_width(hits) - 1;
      }
    }
    const size_t found = Text().substr(begin, end - begin).rfind('\n');
    return found == std::string_view::npos ? std::nullopt : std::optional(begin + found);
  }

  void GoTo(uint64_t place) {
    if (place < offset || place > offset + size) {
      offset = place;
      size = 0;
    }
    position = static_cast<size_t>(place - offset);
  }

  // Reads from the position to the line's end and keeps what the limit allows. What stands between
  // that and the match is passed over. Returns where the text of the line ends.
  uint64_t ReadLine(std::string& text, uint64_t match) {
    bool endsInReturn = false;
    while (!atEnd) {
      const std::string_view rest = Text().substr(position);
      const size_t lineEnd = rest.find('\n');
      const size_t fileEnd = rest.substr(0, lineEnd).find(kEndOfFile);
      const std::string_view part = rest.substr(0, std::min(lineEnd, fileEnd));
      text.append(part.substr(0, maxOfLine - text.size()));
      position += part.size();
      endsInReturn = part.empty() ? endsInReturn : part.back() == '\r';
      atEnd = fileEnd != std::string_view::npos;
      if (!atEnd && lineEnd != std::string_view::npos) {
        const uint64_t end = offset + position;
        lineStart = end + 1;
        ++position;
        return endsInReturn ? end - 1 : end;
      }
      if (!atEnd) {
        GoTo(text.size() == maxOfLine ? std::max(match, offset + position) : offset + position);
        atEnd = !ReadOn(0);
      }
    }
    return offset + position;
  }

  // Reads the next block behind the last `kept` bytes. False at the end of the file.
  bool ReadOn(size_t kept) {
    std::memmove(bytes.data(), bytes.data() + size - kept, kept);
    offset += size - kept;
    position = 0;
    size = kept + read(offset + kept, std::span(bytes).subspan(kept, blockSize));
    return size > kept;
  }

  // The first place from the position on with a match or the end-of-file byte, or behind all.
  // Vectors reach past the bytes that were read, into the rest of the buffer.
  size_t FindStop() const {
    const size_t count = PlaceCount();
    for (size_t i = position; i < count; i += kStride) {
      const char* const text = bytes.data() + i;
      __m128i hits[4];
      for (size_t lane = 0; lane < 4; ++lane) {
        hits[lane] = Hits(text + lane * kVector);
      }
      const __m128i any =
          _mm_or_si128(_mm_or_si128(hits[0], hits[1]), _mm_or_si128(hits[2], hits[3]));
      if (_mm_movemask_epi8(any) == 0) {
        continue;
      }
      uint64_t mask = 0;
      for (size_t lane = 0; lane < 4; ++lane) {
        mask |= static_cast<uint64_t>(_mm_movemask_epi8(hits[lane])) << (lane * kVector);
      }
      for (; mask != 0; mask &= mask - 1) {
        const size_t place = i + static_cast<size_t>(std::countr_zero(mask));
        if (place >= count || bytes[place] == kEndOfFile || MatchesAt(place)) {
          return std::min(place, count);
        }
      }
    }
    return std::max(position, count);
  }

  __m128i Hits(const char* text) const {
    const __m128i match = _mm_and_si128(first.Find(text), last.Find(text + signature.size() - 1));
    return _mm_or_si128(match, endOfFile.Find(text));
  }

  bool MatchesAt(size_t place) const {
    const std::string_view there = Text().substr(place, signature.size());
    return std::equal(there.begin(), there.end(), signature.begin(), EqualFolded);
  }

  const LogReader& read;
  const std::string_view signature;
  const size_t blockSize;
  const size_t maxOfLine;
  const Probe<char> first;
  const Probe<char> last;
  const Probe<char> endOfFile;
  const Probe<char> lineFeed;
  std::vector<char> bytes;  // what was read, then room for vectors that reach past it
  size_t size = 0;          // of what was read
  uint64_t offset = 0;      // of the first byte in the file
  size_t position = 0;      // where the scan goes on in the bytes
  uint64_t lineStart = 0;   // of the line at the position, in the file
  bool atEnd = false;
  LogLine line;
};

}  // namespace

void ScanLog(const LogReader& read, std::string_view signature,
             const std::function<void(const LogLine& line)>& onLine, const LogScanSizes& sizes) {
  if (signature.empty()) {
    return;
  }
  LogScan scan(read, signature, sizes);
  while (scan.FindMatch()) {
    if (const LogLine* const line = scan.TakeLine()) {
      onLine(*line);
    }
  }
}

}  // namespace ostrell
