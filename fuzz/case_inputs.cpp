// Writes what recorded cases (tests/support/recorded_cases.h) hand to their reader, a file an
// input, for a fuzzer to begin with. What is thrown ends it as a failure.
//
// Usage: case_inputs READER FOLDER
#include <fstream>

#include "tests/support/recorded_cases.h"

int main(int, char** argv) {
  const std::string folder = argv[2];
  for (const ostrell::RecordedCase& recorded : ostrell::CasesOf(argv[1])) {
    size_t number = 0;
    for (const std::string& input : recorded.All("input")) {
      std::ofstream(folder + "/" + recorded.Name() + "_" + std::to_string(number++),
                    std::ios::binary)
          << input;
    }
  }
  return 0;
}
