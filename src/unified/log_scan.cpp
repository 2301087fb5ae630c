#include "unified/log_scan.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

#include "base/text.h"

namespace ostrell {
namespace {

constexpr char kEndOfFile = 0x1A;
constexpr size_t kVector = sizeof(__m128i);
constexpr size_t kStride = 4 * kVector;

// One byte of the signature, sought at sixteen places at once.
class Probe {
 public:
  explicit Probe(char wanted)
      : wantedBytes(_mm_set1_epi8(wanted)),
        caseBits(_mm_set1_epi8(wanted >= 'a' && wanted <= 'z' ? 'a' ^ 'A' : 0)) {}

  // All ones in each byte that holds the wanted character.
  __m128i Find(const char* text) const {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    return _mm_cmpeq_epi8(_mm_or_si128(bytes, caseBits), wantedBytes);
  }

 private:
  __m128i wantedBytes;
  __m128i caseBits;
};

bool EqualFolded(char fromText, char fromSignature) {
  return LowerAscii(fromText) == fromSignature;
}

class LogScan {
 public:
  LogScan(const LogReader& reader, std::string_view wanted, size_t blockLength)
      : read(reader),
        signature(wanted),
        blockSize(blockLength),
        first(wanted.front()),
        last(wanted.back()),
        endOfFile(kEndOfFile),
        bytes(signature.size() + blockSize + kStride) {}

  // Goes to the next occurrence of the signature; false when the file has no more.
  bool FindMatch() {
    while (!atEnd) {
      const size_t stop = FindStop();
      const size_t lineEnd = Text().substr(0, stop).rfind('\n');
      if (lineEnd != std::string_view::npos) {
        lineStart = offset + lineEnd + 1;
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

  // The line at hand, whose end the scan goes on behind.
  std::string TakeLine() {
    std::string line;
    if (lineStart < offset) {
      line.reserve(static_cast<size_t>(offset + size - lineStart));  // as much as was read of it
      offset = lineStart;
      size = 0;
    }
    position = static_cast<size_t>(lineStart - offset);
    while (!atEnd) {
      const std::string_view rest = Text().substr(position);
      const size_t lineEnd = rest.find('\n');
      const size_t fileEnd = rest.substr(0, lineEnd).find(kEndOfFile);
      line.append(rest.substr(0, std::min(lineEnd, fileEnd)));
      if (fileEnd == std::string_view::npos && lineEnd != std::string_view::npos) {
        position += lineEnd + 1;
        lineStart = offset + position;
        if (line.ends_with('\r')) {
          line.pop_back();
        }
        return line;
      }
      atEnd = fileEnd != std::string_view::npos || !ReadOn(0);
    }
    return line;
  }

  bool Contains(std::string_view line) const {
    return std::search(line.begin(), line.end(), signature.begin(), signature.end(), EqualFolded) !=
           line.end();
  }

 private:
  std::string_view Text() const { return {bytes.data(), size}; }

  // How many places there are at which the whole signature can stand.
  size_t PlaceCount() const { return size < signature.size() ? 0 : size - signature.size() + 1; }

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
  const Probe first;
  const Probe last;
  const Probe endOfFile;
  std::vector<char> bytes;  // what was read, then room for vectors that reach past it
  size_t size = 0;          // of what was read
  uint64_t offset = 0;      // of the first byte in the file
  size_t position = 0;      // where the scan goes on in the bytes
  uint64_t lineStart = 0;   // of the line at the position, in the file
  bool atEnd = false;
};

}  // namespace

void ScanLog(const LogReader& read, std::string_view signature,
             const std::function<void(std::string line)>& onLine, size_t blockSize) {
  if (signature.empty()) {
    return;
  }
  LogScan scan(read, signature, blockSize);
  while (scan.FindMatch()) {
    std::string line = scan.TakeLine();
    if (scan.Contains(line)) {
      onLine(std::move(line));
    }
  }
}

}  // namespace ostrell
