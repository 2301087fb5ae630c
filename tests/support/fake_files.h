#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/files.h"
#include "base/text.h"
#include "tests/support/outside_call.h"

namespace ostrell {

// Files in memory. Relative names lie beside the program.
struct FakeFiles : Files {
  struct Entry {
    std::string content{};
    uint64_t lastWrite = 0;  // ticks
    bool isDirectory = false;
    bool isOpenForWriting = false;   // by somebody else, who shares it for reading and writing
    bool isHeld = false;             // by somebody else, who lets nobody delete it
    bool isOnDisk = true;            // else a pipe or a device
    std::optional<uint64_t> size{};  // what it says, when not its size; ~0: it does not tell
    std::optional<uint64_t> bad{};   // offset from which on nothing can be read
  };

  std::optional<std::wstring> program = L"C:\\Corvane\\bin\\ostrell.exe";
  mutable std::map<std::wstring, Entry> entries;  // by full path, in the order of a listing
  mutable std::vector<std::string> opened;        // as asked, UTF-8

  static constexpr uint64_t kUntold = ~uint64_t{0};

  Entry& At(const std::wstring& path) { return entries[Full(path)]; }

  std::optional<std::wstring> ProgramPath() const override {
    return OutsideCall(1).Fails() ? std::nullopt : program;
  }

  std::optional<FileStatus> Status(const std::wstring& path) const override {
    const OutsideCall call(1);
    const Entry* const entry = Find(path);
    return entry != nullptr && !call.Fails()
               ? std::optional(FileStatus{entry->isDirectory, entry->lastWrite})
               : std::nullopt;
  }

  void List(const std::wstring& folder, const wchar_t* pattern,
            const TakeEntry& take) const override {
    for (const auto& [name, isDirectory] : Listing(folder, pattern)) {
      take(name, isDirectory);
    }
  }

  std::unique_ptr<OpenFile> Open(const std::wstring& path, FileUse use,
                                 uint32_t* error) const override {
    const OutsideCall call(1);
    opened.push_back(Utf8FromWide(path));
    const Entry* const entry = Find(path);
    const bool isStable = use == FileUse::kStable || use == FileUse::kMapped;
    uint32_t code = 0;
    if (entry == nullptr) {
      code = 2;  // ERROR_FILE_NOT_FOUND
    } else if (entry->isDirectory || (use == FileUse::kForeign && !entry->isOnDisk)) {
      code = 5;  // ERROR_ACCESS_DENIED
    } else if (isStable && entry->isOpenForWriting) {
      code = 32;  // ERROR_SHARING_VIOLATION
    } else if (use == FileUse::kMapped && entry->content.empty()) {
      code = 1006;  // ERROR_FILE_INVALID
    } else if (call.Fails()) {
      code = 1117;  // ERROR_IO_DEVICE
    }
    if (error != nullptr) {
      *error = code;
    }
    return code == 0 ? std::make_unique<Opened>(*entry) : nullptr;
  }

  bool Delete(const std::wstring& path) const override {
    const OutsideCall call(1);
    const Entry* const entry = Find(path);
    return entry != nullptr && !entry->isHeld && !entry->isDirectory && !call.Fails() &&
           entries.erase(Full(path)) > 0;
  }

 private:
  // Name, and whether it is a folder; a listing that fails has none, or breaks off.
  std::vector<std::pair<std::wstring, bool>> Listing(const std::wstring& folder,
                                                     const wchar_t* pattern) const {
    const OutsideCall call(2);
    std::vector<std::pair<std::wstring, bool>> listing;
    const std::wstring ending = std::wstring(pattern).substr(1);
    const std::wstring prefix = PathIn(Full(folder), L"");
    for (const auto& [path, entry] : entries) {
      const std::wstring name =
          path.starts_with(prefix) ? path.substr(prefix.size()) : std::wstring();
      std::wstring lower = name;
      std::ranges::transform(lower, lower.begin(), LowerAscii<wchar_t>);
      // Short names have endings of three characters.
      if (!name.empty() && name.find(L'\\') == std::wstring::npos &&
          lower.find(ending) != std::wstring::npos) {
        listing.emplace_back(name, entry.isDirectory);
      }
    }
    const size_t listed = listing.size();
    listing.resize(call.Or(listed, {0, listed / 2}));
    return listing;
  }

  // What it was when it was opened.
  struct Opened : OpenFile {
    explicit Opened(Entry opened) : entry(std::move(opened)) {}
    std::optional<uint64_t> Size() const override {
      const OutsideCall call(3);
      const uint64_t whole = entry.size.value_or(entry.content.size());
      const uint64_t size = call.Or(whole, {kUntold, 0, uint64_t{1} << 62});
      return size == kUntold ? std::nullopt : std::optional(size);
    }
    std::optional<size_t> ReadAt(uint64_t offset, std::span<std::byte> to) const override {
      const OutsideCall call(3);
      if (offset + to.size() > entry.bad.value_or(~uint64_t{0} >> 1) || call.Way() == 1) {
        return std::nullopt;
      }
      const size_t room = call.Or(to.size(), {0, 0, to.size() / 2});
      return offset < entry.content.size()
                 ? entry.content.copy(reinterpret_cast<char*>(to.data()), room, offset)
                 : 0;
    }
    Entry entry;
  };

  std::wstring Full(std::wstring path) const {
    if (path.find(L':') == std::wstring::npos) {
      path = L"C:\\Corvane\\bin\\" + path;
    }
    for (size_t twice; (twice = path.find(L"\\\\")) != std::wstring::npos;) {
      path.erase(twice, 1);
    }
    constexpr std::wstring_view kUp = L"\\..";
    for (size_t up; (up = path.find(kUp)) != std::wstring::npos && up > 0;) {
      const size_t before = path.rfind(L'\\', up - 1);
      path.erase(before, up + kUp.size() - before);
    }
    return path;
  }

  const Entry* Find(const std::wstring& path) const {
    const auto found = entries.find(Full(path));
    return found != entries.end() ? &found->second : nullptr;
  }
};

}  // namespace ostrell
