// Writes what recorded cases (tests/support/recorded_cases.h) hand to their reader, a file an
// input, for a fuzzer to begin with.
//
// Usage: case_inputs READER FOLDER
#include <cstdio>
#include <exception>
#include <fstream>

#include "tests/support/recorded_cases.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: case_inputs READER FOLDER\n", stderr);
    return 2;
  }
  try {
    for (const ostrell::RecordedCase& recorded : ostrell::CasesOf(argv[1])) {
      size_t number = 0;
      for (const std::string& input : recorded.All("input")) {
        const std::string path =
            std::string(argv[2]) + "/" + recorded.Name() + "_" + std::to_string(number++);
        std::ofstream(path, std::ios::binary) << input;
      }
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
