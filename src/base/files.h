#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace ostrell {

// How jobs touch files. Paths are wide, absolute or relative to the current directory. Files belong
// to others, who may change, cut or delete them at any time.

// Who else may use a file while it is open here, and how it is read.
enum class FileUse {
  kStable,   // others may read it; one that someone has open for writing does not open
  kShared,   // others may write, too
  kLog,      // others may write, rename and delete; it is read once from front to back
  kForeign,  // as kLog, by a name that anybody may have chosen: only what lies on a disk opens. In
             // a 32-bit process the name means what it means to all others
  kMapped,   // as kStable, mapped into memory, so that nobody can cut it; an empty file cannot be
};

// A file that is open for reading; closed when it is destroyed.
class OpenFile {
 public:
  OpenFile() = default;
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  virtual ~OpenFile() = default;

  // In bytes; nothing when it cannot be told.
  virtual std::optional<uint64_t> Size() const = 0;

  // Copies what there is at `offset`, at most `to.size()` bytes, and returns the count: 0 at the
  // end. Nothing when that part of the file cannot be read.
  virtual std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const = 0;
};

// Fills `to` from `offset` on. False when the file ends before that or cannot be read: then `to`
// may be filled in part.
bool ReadExactly(const OpenFile& file, uint64_t offset, std::span<std::byte> to);

struct FileStatus {
  bool isDirectory;
  uint64_t lastWrite;  // ticks (calendar.h), UTC
};

class Files {
 public:
  Files() = default;
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;
  virtual ~Files() = default;

  // The full path of the running program; nothing when it is unknown or has 260 characters or more.
  virtual std::optional<std::wstring> ProgramPath() const = 0;

  // Nothing when there is no such file or folder, or it does not tell.
  virtual std::optional<FileStatus> Status(const std::wstring& path) const = 0;

  // Gives `take` the entries of a folder whose long or short name matches `pattern` (the system's
  // wildcards), in the system's order, "." and ".." included; none of a folder that cannot be
  // listed.
  using TakeEntry = std::function<void(const std::wstring& name, bool isDirectory)>;
  virtual void List(const std::wstring& folder, const wchar_t* pattern,
                    const TakeEntry& take) const = 0;

  // Null on failure, with the system's code in `error`, unless that is null.
  virtual std::unique_ptr<OpenFile> Open(const std::wstring& path, FileUse use,
                                         uint32_t* error = nullptr) const = 0;

  // False when the file is still there.
  virtual bool Delete(const std::wstring& path) const = 0;
};

// The path of an entry of a folder, which may end in a backslash.
std::wstring PathIn(const std::wstring& folder, const std::wstring& name);

}  // namespace ostrell
