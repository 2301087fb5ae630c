#include "base/files_win.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/handle_win.h"

namespace ostrell {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// A path may lead to a pipe: whoever serves it learns who asks, and may not act in our name.
constexpr DWORD kIdentificationOnly = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

struct UseFlags {
  DWORD share;
  DWORD flags;
};

UseFlags FlagsOf(FileUse use) {
  switch (use) {
    case FileUse::kShared:
      return {FILE_SHARE_READ | FILE_SHARE_WRITE, FILE_ATTRIBUTE_NORMAL};
    case FileUse::kLog:
      return {kShareAll, FILE_FLAG_SEQUENTIAL_SCAN};
    case FileUse::kForeign:
      return {kShareAll, FILE_ATTRIBUTE_NORMAL | kIdentificationOnly};
    case FileUse::kStable:
    case FileUse::kMapped:
      break;
  }
  return {FILE_SHARE_READ, FILE_ATTRIBUTE_NORMAL};
}

std::optional<uint64_t> SizeOf(const FileHandle& file) {
  LARGE_INTEGER size;
  return GetFileSizeEx(file.Get(), &size) ? std::optional(static_cast<uint64_t>(size.QuadPart))
                                          : std::nullopt;
}

class DiskFile : public OpenFile {
 public:
  explicit DiskFile(FileHandle opened) : file(std::move(opened)) {}

  std::optional<uint64_t> Size() const override { return SizeOf(file); }

  std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const override {
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD taken = 0;
    if (ReadFile(file.Get(), to.data(), static_cast<DWORD>(to.size()), &taken, &position)) {
      return taken;
    }
    return GetLastError() == ERROR_HANDLE_EOF ? std::optional<size_t>(0) : std::nullopt;
  }

 private:
  FileHandle file;
};

using MappedView = ClosedBy<const void*, &UnmapViewOfFile>;

class MappedFile : public OpenFile {
 public:
  // The mapping keeps the file, the view keeps the mapping.
  MappedFile(FileHandle opened, MappedView mapped, uint64_t length)
      : file(std::move(opened)), view(std::move(mapped)), size(length) {}

  std::optional<uint64_t> Size() const override { return size; }

  // The system copies on its own behalf: a page that cannot be brought in, because the disk fails
  // or the connection is cut, is an error. Touching it here would raise an exception.
  std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const override {
    if (offset >= size) {
      return 0;
    }
    const auto count = static_cast<size_t>(std::min<uint64_t>(to.size(), size - offset));
    const auto* const from = static_cast<const std::byte*>(view.Get()) + offset;
    return ReadProcessMemory(GetCurrentProcess(), from, to.data(), count, nullptr)
               ? std::optional(count)
               : std::nullopt;
  }

 private:
  FileHandle file;
  MappedView view;
  uint64_t size;
};

// What is open by its name, when that is a file on a disk. SECURITY_SQOS_PRESENT is also the bit
// FILE_FLAG_OPEN_NO_RECALL, which asks to leave the data of a cloud drive where it is: what turned
// out to be no pipe is opened again as any other program opens it.
FileHandle OnDisk(FileHandle named) {
  if (!named || GetFileType(named.Get()) != FILE_TYPE_DISK) {
    return {};
  }
  FileHandle file(ReOpenFile(named.Get(), GENERIC_READ, kShareAll, 0));
  return file ? std::move(file) : std::move(named);  // not every file system opens twice
}

std::unique_ptr<OpenFile> Map(FileHandle file) {
  const auto size = SizeOf(file);
  if (!size) {
    return nullptr;
  }
  const KernelHandle mapping(CreateFileMappingW(file.Get(), nullptr, PAGE_READONLY,
                                                static_cast<DWORD>(*size >> 32),
                                                static_cast<DWORD>(*size), nullptr));
  if (!mapping) {
    return nullptr;
  }
  MappedView view(MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, static_cast<size_t>(*size)));
  return view ? std::make_unique<MappedFile>(std::move(file), std::move(view), *size) : nullptr;
}

bool IsDirectory(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

struct FindHandleTraits {
  using Handle = HANDLE;
  static Handle Empty() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) noexcept { FindClose(handle); }
};

}  // namespace

std::optional<std::wstring> WindowsFiles::ProgramPath() const {
  std::array<wchar_t, MAX_PATH> path;
  // A path that had to be cut to fit, one that fills the buffer, leads to a folder above.
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
  return length > 0 && length < MAX_PATH ? std::optional(std::wstring(path.data(), length))
                                         : std::nullopt;
}

std::optional<FileStatus> WindowsFiles::Status(const std::wstring& path) const {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == 0) {
    return std::nullopt;
  }
  const FILETIME& time = data.ftLastWriteTime;
  return FileStatus{IsDirectory(data.dwFileAttributes),
                    uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime};
}

void WindowsFiles::List(const std::wstring& folder, const wchar_t* pattern,
                        const TakeEntry& take) const {
  WIN32_FIND_DATAW entry;
  const Owner<FindHandleTraits> listing(FindFirstFileExW(PathIn(folder, pattern).c_str(),
                                                         FindExInfoStandard, &entry,
                                                         FindExSearchNameMatch, nullptr, 0));
  for (bool isEntry = static_cast<bool>(listing); isEntry;
       isEntry = FindNextFileW(listing.Get(), &entry) != 0) {
    take(entry.cFileName, IsDirectory(entry.dwFileAttributes));
  }
}

std::unique_ptr<OpenFile> WindowsFiles::Open(const std::wstring& path, FileUse use,
                                             uint32_t* error) const {
  SetLastError(ERROR_SUCCESS);
  const UseFlags how = FlagsOf(use);
  const auto open = [&] {
    return FileHandle(CreateFileW(path.c_str(), GENERIC_READ, how.share, nullptr, OPEN_EXISTING,
                                  how.flags, nullptr));
  };
  FileHandle file;
  if (use == FileUse::kForeign) {
    const RealFileSystem real(redirection);
    file = OnDisk(open());
  } else {
    file = open();
  }
  std::unique_ptr<OpenFile> opened;
  if (file) {
    opened = use == FileUse::kMapped ? Map(std::move(file))
                                     : std::make_unique<DiskFile>(std::move(file));
  }
  if (!opened && error != nullptr) {
    *error = GetLastError();
  }
  return opened;
}

bool WindowsFiles::Delete(const std::wstring& path) const {
  return DeleteFileW(path.c_str()) != 0;
}

}  // namespace ostrell
