#include "base/mapped_file_win.h"

namespace ostrell {

MappedFile::MappedFile(const wchar_t* path)
    : file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr)) {
  LARGE_INTEGER length{};
  if (!file || !GetFileSizeEx(file.Get(), &length)) {
    error = GetLastError();
    return;
  }
  mapping.Reset(CreateFileMappingW(file.Get(), nullptr, PAGE_READONLY,
                                   static_cast<DWORD>(length.HighPart), length.LowPart, nullptr));
  if (mapping) {
    view.Reset(static_cast<const std::byte*>(
        MapViewOfFile(mapping.Get(), FILE_MAP_READ, 0, 0, static_cast<size_t>(length.QuadPart))));
  }
  if (!view) {
    error = GetLastError();
    return;
  }
  size = static_cast<size_t>(length.QuadPart);
}

}  // namespace ostrell
