// Runs a target once on each file of the folders that are its arguments, where there is no fuzzer.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_target.h"

namespace {

void Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::filesystem::filesystem_error("cannot open", path, {});
  }
  // Of exactly the input's size, so that a sanitizer sees what is read beyond it.
  const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  size_t inputs = 0;
  try {
    for (int i = 1; i < argc; ++i) {
      for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
        Replay(entry.path());
        ++inputs;
      }
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  std::printf("%u inputs\n", static_cast<unsigned>(inputs));
  return inputs == 0 ? 1 : 0;
}
