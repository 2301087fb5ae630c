#include "unified/log_line.h"

#include <cctype>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace ostrell {
namespace {

constexpr std::string_view kPeTimeMarker = "<pe-time:";

// Reads a text from its beginning as scanf does; once something is missing all is.
class Scanner {
 public:
  explicit Scanner(const char* text) : rest(text) {}

  // %d with a width, which counts the sign: blanks before it do not count.
  int Number(int width) {
    SkipBlanks();
    const bool isNegative = *rest == '-';
    const char* const end = rest + width;
    rest += isNegative || *rest == '+' ? 1 : 0;
    int number = 0;
    const char* const digits = rest;
    for (; rest < end && *rest >= '0' && *rest <= '9'; ++rest) {
      number = 10 * number + (*rest - '0');
    }
    isMissing = isMissing || rest == digits;
    return isNegative ? -number : number;
  }
  void Literal(char expected) { Take(*rest == expected); }
  void AnyCharacter() { Take(*rest != '\0'); }
  void SkipBlanks() {
    while (std::isspace(static_cast<unsigned char>(*rest)) != 0) {
      ++rest;
    }
  }

  bool IsMissing() const { return isMissing; }

 private:
  void Take(bool isThere) {
    isMissing = isMissing || !isThere;
    rest += isMissing ? 0 : 1;
  }

  const char* rest;
  bool isMissing = false;
};

}  // namespace

std::optional<int64_t> LogLineTime(const std::string& line) {
  // "[%04d%c%02d%c%02d %02d:%02d:%02d". The compiler's own sscanf allocates, and does not look
  // whether it got anything.
  std::tm time{};
  Scanner scanner(line.c_str());
  scanner.Literal('[');
  time.tm_year = scanner.Number(4) - 1900;
  scanner.AnyCharacter();
  time.tm_mon = scanner.Number(2) - 1;
  scanner.AnyCharacter();
  time.tm_mday = scanner.Number(2);
  time.tm_hour = scanner.Number(2);
  scanner.Literal(':');
  time.tm_min = scanner.Number(2);
  scanner.Literal(':');
  time.tm_sec = scanner.Number(2);
  if (scanner.IsMissing()) {
    return std::nullopt;
  }
  time.tm_isdst = -1;
  return std::mktime(&time);
}

std::optional<int64_t> PeTimeMarker(const std::string& line) {
  const size_t marker = line.find(kPeTimeMarker);
  if (marker == std::string::npos) {
    return std::nullopt;
  }
  const size_t begin = marker + kPeTimeMarker.size();
  if (line.find('>', begin) == std::string::npos) {
    return std::nullopt;
  }
  // The bracket is no part of a number, so reading ends there at the latest. Without a number the
  // result is 0, too.
  const int64_t time = std::strtoll(line.c_str() + begin, nullptr, 10);
  return time == 0 ? std::nullopt : std::optional(time);
}

}  // namespace ostrell
