// The first program's time stamp in a dump, read by us and by another reader from the closed file
// on, natively, to be timed against each other.
//
// Usage: dump_reading ours|llvm FILE COUNT     reads it so many times
//        dump_reading make real|hostile FILE   makes a dump
#include <fcntl.h>
#include <llvm/Object/Minidump.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/dump_bytes.h"
#include "unified/minidump.h"

namespace ostrell {
namespace {

uint32_t DumpByUs(const char* path) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  struct stat status {};
  fstat(file, &status);
  const auto size = static_cast<size_t>(status.st_size);
  const auto* const bytes =
      static_cast<const std::byte*>(mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0));
  close(file);
  const DumpReading reading =
      ReadMinidump({size, [bytes](uint64_t offset, std::span<std::byte> to) {
                      std::memcpy(to.data(), bytes + offset, to.size());
                      return true;
                    }});
  munmap(const_cast<std::byte*>(bytes), size);
  return reading.crashModuleTime.value_or(0);
}

uint32_t DumpByLlvm(const char* path) {
  auto buffer = llvm::MemoryBuffer::getFile(path, false, false);
  auto dump = llvm::object::MinidumpFile::create(buffer.get()->getMemBufferRef());
  auto modules = dump ? dump.get()->getModuleList() : dump.takeError();
  uint32_t time = 0;
  for (const auto& module : *modules) {
    auto name = dump.get()->getString(module.ModuleNameRVA);
    if (time == 0 && name && name->find(".exe") != std::string::npos) {
      time = module.TimeDateStamp;
    }
  }
  return time;
}

// 150 modules, the program the first; or 2 GiB of names of 128 KiB, of which those that fill the
// first 64 MiB are really there.
bool MakeDump(std::string_view kind, const char* path) {
  const bool isHostile = kind == "hostile";
  std::string text = "words 0 0x504d444d 0xa793 1 32\nwords 32 4 16204 64\n";
  text += isHostile ? "words 64 16384\nmodules 68 16384 5 0x200000 131072\n"
                    : "words 64 150\nmodules 68 150 5 20000 160\n";
  for (int i = 0; i < (isHostile ? 496 : 150); ++i) {
    const auto place = isHostile ? 0x200000 + 131072 * i : 20000 + 160 * i;
    text += "name " + std::to_string(place) + (isHostile ? " 65529 " : " 40 ") +
            (i == 0 && !isHostile ? ".exe" : ".dll") + "\n";
  }
  std::ofstream(path, std::ios::binary) << DumpOf(text);
  return !isHostile || truncate(path, off_t{2} << 30) == 0;
}

// Prints what it found last.
void ReadOften(std::string_view reader, const char* path, int count) {
  uint32_t time = 0;
  for (; count > 0; --count) {
    time = reader == "ours" ? DumpByUs(path) : DumpByLlvm(path);
  }
  std::printf("%u\n", time);
}

}  // namespace
}  // namespace ostrell

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs(
        "usage: dump_reading ours|llvm FILE COUNT\n       dump_reading make real|hostile FILE\n",
        stderr);
    return 2;
  }
  if (std::string_view(argv[1]) == "make") {
    return ostrell::MakeDump(argv[2], argv[3]) ? 0 : 1;
  }
  ostrell::ReadOften(argv[1], argv[2], std::atoi(argv[3]));
  return 0;
}
