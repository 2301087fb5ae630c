#include "unified/log_matches.h"

#include "unified/log_line.h"

namespace ostrell {

LogMatchCount CollectLogMatches(const LogReader& read, std::string_view signature, int64_t tmStart,
                                std::vector<LogMatch>& matches) {
  LogMatchCount count;
  size_t bytes = 0;
  ScanLog(read, signature, [&](const LogLine& line) {
    const auto time = LogLineTime(line.text);
    if (!time || *time < tmStart) {
      return;
    }
    if (count.leftOut > 0 || static_cast<size_t>(count.kept) == kMaxLogMatches ||
        line.text.size() > kMaxLogMatchBytes - bytes) {
      ++count.leftOut;
      return;
    }
    bytes += line.text.size();
    matches.push_back({*time, line.text});
    ++count.kept;
    count.cut += line.isCut ? 1 : 0;
  });
  return count;
}

}  // namespace ostrell
