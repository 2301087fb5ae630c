// A crash handler that lets the program's own imports fail: it is the first library that is loaded,
// and puts itself between the shipped program and what that calls. No other library's imports are
// touched. Works in a process where "faults.txt" lies beside the program, which it reads:
//
//   MODE NAME NUMBER            once, lasting, end: the NUMBERth call of NAME fails, and in the
//   second
//                               all later ones, too; in the third the process ends instead. count:
//                               none does
//   NAME RESULT ERROR [stacks]  for each import that can fail: what it returns, and the system's
//                               error. "stacks": calls count once for each distinct stack
//
// When the process exits, "calls.txt" beside the program holds "NAME COUNT" for each import that
// can fail, and the name alone for every other.

#include <windows.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Import {
  std::string name{};
  uintptr_t original = 0;
  bool canFail = false;
  bool countsStacks = false;
  intptr_t result = 0;
  DWORD error = 0;
  int64_t calls = 0;
};

std::vector<Import> imports;
std::set<uint64_t> stacks;
SRWLOCK lock = SRWLOCK_INIT;
std::string mode;
std::string failingName;
int64_t failingCall = 0;
uintptr_t programBase = 0;
uintptr_t programEnd = 0;

std::wstring Beside(const wchar_t* name) {
  std::array<wchar_t, MAX_PATH> path{};
  GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
  std::wstring text(path.data());
  return text.substr(0, text.rfind(L'\\') + 1) + name;
}

// Of the program's own frames.
uint64_t StackOf(const Import& import) {
  std::array<void*, 48> frames{};
  const USHORT count = RtlCaptureStackBackTrace(0, frames.size(), frames.data(), nullptr);
  uint64_t hash = reinterpret_cast<uintptr_t>(&import);
  for (USHORT i = 0; i < count; ++i) {
    const auto frame = reinterpret_cast<uintptr_t>(frames[i]);
    hash = frame >= programBase && frame < programEnd ? (hash ^ frame) * 0x100000001B3 : hash;
  }
  return hash;
}

bool Fails(Import& import) {
  if (!import.countsStacks || stacks.insert(StackOf(import)).second) {
    ++import.calls;
  } else if (mode != "lasting") {
    return false;
  }
  return import.name == failingName &&
         (import.calls == failingCall || (mode == "lasting" && import.calls > failingCall));
}

}  // namespace

extern "C" {

intptr_t failedResult = 0;
void ReturnFailure();
void EnterImport();

// Where a call of an import goes on.
uintptr_t TargetOf(uint32_t index) {
  const DWORD before = GetLastError();
  AcquireSRWLockExclusive(&lock);
  Import& import = imports[index];
  const bool fails = import.canFail && Fails(import);
  if (fails && mode == "end") {
    TerminateProcess(GetCurrentProcess(), 0);
  }
  failedResult = fails ? import.result : failedResult;
  ReleaseSRWLockExclusive(&lock);
  SetLastError(fails ? import.error : before);
  return fails ? reinterpret_cast<uintptr_t>(&ReturnFailure) : import.original;
}

// Each import has a stub that comes here with its index in r11. The arguments stay as they are.
asm(R"(
	.text
	.seh_proc EnterImport
EnterImport:
	subq $0x88, %rsp
	.seh_stackalloc 0x88
	.seh_endprologue
	movups %xmm0, 0x20(%rsp)
	movups %xmm1, 0x30(%rsp)
	movups %xmm2, 0x40(%rsp)
	movups %xmm3, 0x50(%rsp)
	movq %rcx, 0x60(%rsp)
	movq %rdx, 0x68(%rsp)
	movq %r8, 0x70(%rsp)
	movq %r9, 0x78(%rsp)
	movl %r11d, %ecx
	call TargetOf
	movups 0x20(%rsp), %xmm0
	movups 0x30(%rsp), %xmm1
	movups 0x40(%rsp), %xmm2
	movups 0x50(%rsp), %xmm3
	movq 0x60(%rsp), %rcx
	movq 0x68(%rsp), %rdx
	movq 0x70(%rsp), %r8
	movq 0x78(%rsp), %r9
	addq $0x88, %rsp
	jmp *%rax
	.seh_endproc
ReturnFailure:
	movq failedResult(%rip), %rax
	ret
)");
}

namespace {

// mov r11d, index; jmp to EnterImport.
constexpr size_t kStubSize = 24;

void WriteStub(uint8_t* stub, uint32_t index) {
  constexpr std::array<uint8_t, 2> kMove = {0x41, 0xBB};
  constexpr std::array<uint8_t, 6> kJump = {0xFF, 0x25, 0, 0, 0, 0};
  const auto target = reinterpret_cast<uintptr_t>(&EnterImport);
  std::memcpy(stub, kMove.data(), kMove.size());
  std::memcpy(stub + 2, &index, sizeof(index));
  std::memcpy(stub + 6, kJump.data(), kJump.size());
  std::memcpy(stub + 12, &target, sizeof(target));
}

// Calls `take` with the name and the place of each function that the program imports by name.
template <class Take>
void ForEachImport(uint8_t* base, const Take& take) {
  const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(
      base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
  programBase = reinterpret_cast<uintptr_t>(base);
  programEnd = programBase + headers->OptionalHeader.SizeOfImage;
  const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
      base + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
  for (; library->Name != 0; ++library) {
    const auto* name =
        reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
    auto* place = reinterpret_cast<uintptr_t*>(base + library->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++place) {
      take(reinterpret_cast<const char*>(base + name->u1.AddressOfData + sizeof(WORD)), place);
    }
  }
}

void ReadFaults(std::istream& file, std::map<std::string, Import>& table) {
  std::string line;
  std::getline(file, line);
  std::istringstream(line) >> mode >> failingName >> failingCall;
  while (std::getline(file, line)) {
    Import import;
    std::string counted;
    std::istringstream(line) >> import.name >> import.result >> import.error >> counted;
    import.canFail = true;
    import.countsStacks = counted == "stacks";
    table[import.name] = import;
  }
}

void Intercept() {
  std::ifstream file(Beside(L"faults.txt").c_str());
  if (!file) {
    return;
  }
  std::map<std::string, Import> table;
  ReadFaults(file, table);
  auto* const base = reinterpret_cast<uint8_t*>(GetModuleHandleW(nullptr));
  std::vector<uintptr_t*> places;
  ForEachImport(base, [&](const char* name, uintptr_t* place) {
    const auto found = table.find(name);
    imports.push_back(found != table.end() ? found->second : Import{.name = name});
    imports.back().original = *place;
    places.push_back(place);
  });
  auto* const stubs = static_cast<uint8_t*>(VirtualAlloc(
      nullptr, imports.size() * kStubSize, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
  for (uint32_t i = 0; i < imports.size(); ++i) {
    WriteStub(stubs + i * kStubSize, i);
    DWORD before = 0;
    if (imports[i].canFail &&
        VirtualProtect(places[i], sizeof(uintptr_t), PAGE_READWRITE, &before) != 0) {
      *places[i] = reinterpret_cast<uintptr_t>(stubs + i * kStubSize);
      VirtualProtect(places[i], sizeof(uintptr_t), before, &before);
    }
  }
}

}  // namespace

extern "C" __declspec(dllexport) int32_t InstallCrashSentry(int32_t) {
  Intercept();
  return 1;
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_DETACH && !imports.empty()) {
    std::ofstream calls(Beside(L"calls.txt").c_str(), std::ios::binary);
    for (const Import& import : imports) {
      calls << import.name;
      if (import.canFail) {
        calls << ' ' << import.calls;
      }
      calls << '\n';
    }
  }
  return TRUE;
}
