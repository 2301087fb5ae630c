// Runs a target where there is no fuzzer: on each file of the folders that are its arguments, on
// the inputs of each recorded case, and on every beginning of a short one. What is thrown ends it
// as a failure.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "tests/support/recorded_cases.h"

namespace {

std::vector<std::string> InputsOf(const std::filesystem::path& path) {
  if (path.extension() == ".case") {
    return ostrell::RecordedCase(path.string()).All("input");
  }
  std::ifstream file;
  file.exceptions(std::ios::failbit);
  file.open(path, std::ios::binary);
  return {std::string(std::istreambuf_iterator<char>(file), {})};
}

}  // namespace

int main(int argc, char** argv) {
  unsigned inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      for (const std::string& input : InputsOf(entry.path())) {
        const size_t shortest = input.size() <= 1024 ? 0 : input.size();
        for (size_t size = shortest; size <= input.size(); ++size, ++inputs) {
          // Of exactly that size, so that a sanitizer sees what is read beyond it.
          const std::vector<char> bytes(input.data(), input.data() + size);
          ostrell::CheckInput({bytes.data(), bytes.size()});
        }
      }
    }
  }
  std::printf("%u inputs\n", inputs);
  return inputs == 0 ? 1 : 0;
}
