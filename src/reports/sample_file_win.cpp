#include "reports/sample_file_win.h"

#include <windows.h>

#include <utility>

#include "base/handle_win.h"
#include "base/read_file_win.h"
#include "base/text_win.h"
#include "env/product_paths.h"
#include "reports/sample_upload.h"

namespace ostrell {
namespace {

// As long as it lives, the calling thread sees the file system as it is: a 32-bit process on 64-bit
// Windows is shown another system directory.
class RealFileSystem {
 public:
  RealFileSystem() : isSwitched(KernelApi().disable != nullptr && KernelApi().disable(&before)) {}
  ~RealFileSystem() {
    if (isSwitched && KernelApi().revert != nullptr) {
      KernelApi().revert(before);
    }
  }
  RealFileSystem(const RealFileSystem&) = delete;
  RealFileSystem& operator=(const RealFileSystem&) = delete;

 private:
  struct Api {
    decltype(&Wow64DisableWow64FsRedirection) disable;
    decltype(&Wow64RevertWow64FsRedirection) revert;
  };
  static const Api& KernelApi();

  void* before = nullptr;
  bool isSwitched;
};

template <class Function>
Function KernelEntry(const char* name) {
  const FARPROC entry = GetProcAddress(GetModuleHandleW(L"kernel32"), name);
  return reinterpret_cast<Function>(reinterpret_cast<void*>(entry));
}

// Looked up once: not every Windows has them.
const RealFileSystem::Api& RealFileSystem::KernelApi() {
  static const Api found = {KernelEntry<decltype(Api::disable)>("Wow64DisableWow64FsRedirection"),
                            KernelEntry<decltype(Api::revert)>("Wow64RevertWow64FsRedirection")};
  return found;
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

FileHandle OpenByName(const wchar_t* path) {
  // A path may lead to a pipe: whoever serves it learns who asks, and may not act in our name.
  constexpr DWORD kIdentificationOnly = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
  const RealFileSystem real;
  return FileHandle(CreateFileW(path, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL | kIdentificationOnly, nullptr));
}

// A file on a disk, or nothing. SECURITY_SQOS_PRESENT is also the bit FILE_FLAG_OPEN_NO_RECALL,
// which asks to leave the data of a cloud drive where it is: what turned out to be no pipe is
// opened again as any other program opens it.
FileHandle OpenShared(const wchar_t* path) {
  FileHandle named = OpenByName(path);
  if (!named || GetFileType(named.Get()) != FILE_TYPE_DISK) {
    return {};
  }
  FileHandle file(ReOpenFile(named.Get(), GENERIC_READ, kShareAll, 0));
  return file ? std::move(file) : std::move(named);  // not every file system opens twice
}

}  // namespace

SampleFile::SampleFile(const char* path) {
  const auto widePath = WideFromUtf8(path);
  if (!widePath || widePath->size() >= kPathSize) {
    return;
  }
  const FileHandle file = OpenShared(widePath->c_str());
  LARGE_INTEGER size{};
  if (!file || !GetFileSizeEx(file.Get(), &size)) {
    return;
  }
  const auto length = static_cast<uint64_t>(size.QuadPart);
  if (!IsSampleSize(length)) {
    state = State::kWrongSize;
    return;
  }
  content = AllocateBytes(static_cast<size_t>(length));
  if (content && ReadExactly(file.Get(), *content)) {
    state = State::kReadable;
  }
}

}  // namespace ostrell
