// crash_dump PROGRAM ADDRESS DUMP: lets a program crash and writes the dump of it, as the product's
// crash handler would. What stands at ADDRESS, relative to the image and hexadecimal, is replaced
// by an instruction that no processor has; the program runs until it gets there. Exit code 0: there
// is a dump.
#include <windows.h>

#include <dbghelp.h>

#include <array>
#include <cstdint>
#include <cwchar>
#include <vector>

#include "base/handle_win.h"

namespace ostrell {
namespace {

constexpr DWORD kLongestWait = 60'000;  // milliseconds from one event of the program to the next
constexpr std::array<uint8_t, 2> kNoInstruction{0x0F, 0x0B};

struct Program {
  HANDLE process;
  DWORD id;
  uint64_t image;
};

void* At(uint64_t address) {
  return reinterpret_cast<void*>(address);  // NOLINT(performance-no-int-to-ptr): another process's
}

// Puts the CodeView record of an image, which holds its build id, at `to`; returns its length, at
// most `room`, and 0 when there is none.
uint32_t CopyIdentity(HANDLE process, uint64_t image, uint8_t* to, uint32_t room) {
  const auto read = [&](uint64_t address, void* into, size_t size) {
    return ReadProcessMemory(process, At(image + address), into, size, nullptr) != 0;
  };
  IMAGE_DOS_HEADER start{};
  IMAGE_NT_HEADERS64 headers{};
  IMAGE_DEBUG_DIRECTORY debug{};
  const auto& entry = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG];
  const bool isThere =
      read(0, &start, sizeof(start)) && read(start.e_lfanew, &headers, sizeof(headers)) &&
      entry.Size >= sizeof(debug) && read(entry.VirtualAddress, &debug, sizeof(debug)) &&
      debug.Type == IMAGE_DEBUG_TYPE_CODEVIEW && debug.SizeOfData <= room &&
      read(debug.AddressOfRawData, to, debug.SizeOfData);
  return isThere ? debug.SizeOfData : 0;
}

// Wine leaves the identities out of a dump's list of modules, where Windows enters them. They go
// behind the end of the dump.
bool EnterIdentities(HANDLE process, HANDLE dump) {
  constexpr uint32_t kRoom = 0x10000;
  const uint32_t end = GetFileSize(dump, nullptr);
  const KernelHandle mapping(
      CreateFileMappingW(dump, nullptr, PAGE_READWRITE, 0, end + kRoom, nullptr));
  auto* const view = static_cast<uint8_t*>(MapViewOfFile(mapping.Get(), FILE_MAP_WRITE, 0, 0, 0));
  void* stream = nullptr;
  if (view == nullptr ||
      !MiniDumpReadDumpStream(view, ModuleListStream, nullptr, &stream, nullptr)) {
    return false;
  }
  auto* const modules = static_cast<MINIDUMP_MODULE_LIST*>(stream);
  uint32_t used = 0;
  for (ULONG32 index = 0; index < modules->NumberOfModules; ++index) {
    MINIDUMP_MODULE& module = modules->Modules[index];
    const uint32_t size =
        CopyIdentity(process, module.BaseOfImage, view + end + used, kRoom - used);
    module.CvRecord = {size, end + used};
    used += size;
  }
  return UnmapViewOfFile(view) != 0;
}

bool WriteDump(const Program& program, const DEBUG_EVENT& event, const wchar_t* path) {
  const KernelHandle thread(OpenThread(THREAD_ALL_ACCESS, FALSE, event.dwThreadId));
  CONTEXT context{};
  context.ContextFlags = CONTEXT_ALL;
  GetThreadContext(thread.Get(), &context);
  EXCEPTION_RECORD record = event.u.Exception.ExceptionRecord;
  EXCEPTION_POINTERS pointers{&record, &context};
  MINIDUMP_EXCEPTION_INFORMATION exception{event.dwThreadId, &pointers, FALSE};
  const FileHandle file(CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  SymInitializeW(program.process, nullptr, FALSE);  // Wine stumbles over symbols that have no name
  return file &&
         MiniDumpWriteDump(program.process, program.id, file.Get(), MiniDumpNormal, &exception,
                           nullptr, nullptr) &&
         EnterIdentities(program.process, file.Get());
}

bool BreakAt(const Program& program, uint64_t address) {
  return WriteProcessMemory(program.process, At(program.image + address), kNoInstruction.data(),
                            kNoInstruction.size(), nullptr) != 0;
}

// Until the program crashes there, ends, or nothing happens any more.
bool DumpAtCrash(Program program, uint64_t address, const wchar_t* path) {
  DEBUG_EVENT event;
  while (WaitForDebugEvent(&event, kLongestWait)) {
    DWORD answer = DBG_CONTINUE;
    if (event.dwDebugEventCode == CREATE_PROCESS_DEBUG_EVENT) {
      const FileHandle image(event.u.CreateProcessInfo.hFile);
      program.image = reinterpret_cast<uint64_t>(event.u.CreateProcessInfo.lpBaseOfImage);
      if (!BreakAt(program, address)) {
        return false;
      }
    } else if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT) {
      const DWORD code = event.u.Exception.ExceptionRecord.ExceptionCode;
      if (code == STATUS_ILLEGAL_INSTRUCTION) {
        return WriteDump(program, event, path);
      }
      answer = code == STATUS_BREAKPOINT ? DBG_CONTINUE : DBG_EXCEPTION_NOT_HANDLED;
    } else if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT) {
      return false;
    }
    ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
  }
  return false;
}

bool Crash(wchar_t* program, const wchar_t* address, const wchar_t* path) {
  STARTUPINFOW startUp{};
  startUp.cb = sizeof(startUp);
  PROCESS_INFORMATION started;
  if (!CreateProcessW(program, nullptr, nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS, nullptr,
                      nullptr, &startUp, &started)) {
    return false;
  }
  const KernelHandle process(started.hProcess);
  const KernelHandle thread(started.hThread);
  const bool isWritten = DumpAtCrash({started.hProcess, started.dwProcessId, 0},
                                     std::wcstoull(address, nullptr, 16), path);
  TerminateProcess(process.Get(), 0);
  return isWritten;
}

}  // namespace
}  // namespace ostrell

int wmain(int argc, wchar_t** argv) {
  return argc == 4 && ostrell::Crash(argv[1], argv[2], argv[3]) ? 0 : 1;
}
