#include <algorithm>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "fuzz/fuzz_target.h"
#include "unified/minidump.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace ostrell;
  const auto dump = std::as_bytes(std::span(data, size));
  const DumpReading reading = ReadMinidump(dump);
  Require((reading.kind != DumpKind::kForeign) == TextOf(dump).starts_with("MDMP"));
  Require(reading.kind == DumpKind::kModules || !reading.crashModuleTime);

  // What stands around the dump in memory, and how it is aligned, makes no difference.
  std::vector<std::byte> surrounded(size + 65, std::byte{'.'});
  std::copy(dump.begin(), dump.end(), surrounded.begin() + 1);
  const DumpReading again = ReadMinidump(std::span(surrounded).subspan(1, size));
  Require(again.kind == reading.kind && again.crashModuleTime == reading.crashModuleTime);
  return 0;
}
