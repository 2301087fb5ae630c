#include "base/mapped_file_win.h"

#include <utility>

namespace ostrell {

MappedFile::MappedFile(const wchar_t* path)
    : file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr)) {
  LARGE_INTEGER length{};
  if (!file || !GetFileSizeEx(file.Get(), &length)) {
    error = GetLastError();
    return;
  }
  Map(static_cast<uint64_t>(length.QuadPart));
}

MappedFile::MappedFile(FileHandle opened, uint64_t length) : file(std::move(opened)) {
  Map(length);
}

// With its length given the mapping is refused where the file is shorter by now.
void MappedFile::Map(uint64_t length) {
  mapping.Reset(CreateFileMappingW(file.Get(), nullptr, PAGE_READONLY,
                                   static_cast<DWORD>(length >> 32), static_cast<DWORD>(length),
                                   nullptr));
  if (mapping) {
    view.Reset(static_cast<const std::byte*>(
        MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, static_cast<size_t>(length))));
  }
  if (!view) {
    error = GetLastError();
    return;
  }
  size = static_cast<size_t>(length);
}

}  // namespace ostrell
