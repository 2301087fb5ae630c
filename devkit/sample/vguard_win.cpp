// Stand-in for the product's guard program. It does one thing: it writes a crash dump of itself, as
// the product's crash handler does, to the file that it is given.
#include <windows.h>

#include <dbghelp.h>

#include "base/handle_win.h"

int wmain(int argc, wchar_t** argv) {
  if (argc != 2) {
    return 2;
  }
  const ostrell::FileHandle file(CreateFileW(argv[1], GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                             FILE_ATTRIBUTE_NORMAL, nullptr));
  const bool isWritten =
      file && MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file.Get(),
                                MiniDumpNormal, nullptr, nullptr, nullptr) != 0;
  return isWritten ? 0 : 1;
}
