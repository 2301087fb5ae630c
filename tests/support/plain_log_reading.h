#pragma once

#include <algorithm>
#include <cstring>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "unified/log_scan.h"

namespace ostrell {

// For tests: the scan as one would write it without regard to speed and memory, line by line.

inline std::vector<LogLine> PlainLogReading(std::string file, std::string_view signature,
                                            size_t maxOfLine) {
  file.resize(std::min(file.find('\x1A'), file.size()));
  for (size_t end = file.find("\r\n"); end != std::string::npos; end = file.find("\r\n", end)) {
    file.erase(end, 1);
  }
  std::vector<LogLine> lines;
  std::istringstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    std::string lower = line;
    std::transform(lower.begin(), lower.end(), lower.begin(), &LowerAscii<char>);
    if (lower.find(signature) != std::string::npos) {
      lines.push_back({line.substr(0, maxOfLine), line.size() > maxOfLine});
    }
  }
  return lines;
}

// Reads of a file that is held in memory.
inline size_t ReadFromText(std::string_view file, uint64_t offset, std::span<char> to) {
  if (offset >= file.size()) {
    return 0;
  }
  const std::string_view part = file.substr(static_cast<size_t>(offset), to.size());
  std::memcpy(to.data(), part.data(), part.size());
  return part.size();
}

inline LogReader ReaderOf(std::string_view file) {
  return [file](uint64_t offset, std::span<char> to) { return ReadFromText(file, offset, to); };
}

inline std::vector<LogLine> MatchingLines(const LogReader& read, std::string_view signature,
                                          const LogScanSizes& sizes) {
  std::vector<LogLine> lines;
  ScanLog(
      read, signature, [&lines](const LogLine& line) { lines.push_back(line); }, sizes);
  return lines;
}

}  // namespace ostrell
