#pragma once

#include <windows.h>

#include <functional>

namespace ostrell {

// Windows x64 shows a 32-bit process another system directory. These functions switch that off and
// on again; they are empty where the system lacks them. Tests put their own in place.
struct RedirectionApi {
  std::function<decltype(Wow64DisableWow64FsRedirection)> disable;
  std::function<decltype(Wow64RevertWow64FsRedirection)> revert;

  // The running system's.
  static const RedirectionApi& Loaded();
};

// As long as it lives, the calling thread sees the file system as it is, unless the system lacks
// the functions or refuses. `functions` outlives it.
class RealFileSystem {
 public:
  explicit RealFileSystem(const RedirectionApi& functions);
  ~RealFileSystem();
  RealFileSystem(const RealFileSystem&) = delete;
  RealFileSystem& operator=(const RealFileSystem&) = delete;

 private:
  const RedirectionApi& api;
  void* before = nullptr;
  bool isSwitched;
};

}  // namespace ostrell
