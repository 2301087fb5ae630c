// The log scan alone, over a real file. Usage: scan_log SIGNATURE FILE
//
// SIGNATURE is in lower case. Prints the number of lines that match.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "unified/log_scan.h"

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: scan_log SIGNATURE FILE\n", stderr);
    return 2;
  }
  const int file = open(argv[2], O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    std::perror(argv[2]);
    return 1;
  }
  size_t lines = 0;
  ostrell::ScanLog(
      [file](uint64_t offset, std::span<char> to) {
        const ssize_t count = pread(file, to.data(), to.size(), static_cast<off_t>(offset));
        return count < 0 ? size_t{0} : static_cast<size_t>(count);
      },
      argv[1], [&lines](const ostrell::LogLine&) { ++lines; });
  std::printf("%zu\n", lines);
  return 0;
}
