// Runs a target once on each input of the folders that are its arguments, where there is no fuzzer:
// on each file, and on the inputs of each recorded case.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "tests/support/recorded_cases.h"

namespace {

// Of exactly the input's size, so that a sanitizer sees what is read beyond it.
void Run(const std::vector<char>& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

// Returns how many inputs the file holds.
size_t Replay(const std::filesystem::path& path) {
  if (path.extension() == ".case") {
    const auto inputs = ostrell::RecordedCase(path.string()).All("input");
    for (const std::string& input : inputs) {
      Run({input.begin(), input.end()});
    }
    return inputs.size();
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::filesystem::filesystem_error("cannot open", path, {});
  }
  Run({std::istreambuf_iterator<char>(file), {}});
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  size_t inputs = 0;
  try {
    for (int i = 1; i < argc; ++i) {
      for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
        inputs += Replay(entry.path());
      }
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  std::printf("%u inputs\n", static_cast<unsigned>(inputs));
  return inputs == 0 ? 1 : 0;
}
