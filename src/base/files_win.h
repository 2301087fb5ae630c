#pragma once

#include "base/files.h"
#include "base/redirection_win.h"

namespace ostrell {

// The files of this machine.
class WindowsFiles : public Files {
 public:
  explicit WindowsFiles(const RedirectionApi& functions = RedirectionApi::Loaded())
      : redirection(functions) {}

  std::optional<std::wstring> ProgramPath() const override;
  std::optional<FileStatus> Status(const std::wstring& path) const override;
  void List(const std::wstring& folder, const wchar_t* pattern,
            const TakeEntry& take) const override;
  std::unique_ptr<OpenFile> Open(const std::wstring& path, FileUse use,
                                 uint32_t* error = nullptr) const override;
  bool Delete(const std::wstring& path) const override;

 private:
  const RedirectionApi& redirection;
};

}  // namespace ostrell
