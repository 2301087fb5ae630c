#include "base/redirection_win.h"

#include "base/system_function_win.h"

namespace ostrell {

const RedirectionApi& RedirectionApi::Loaded() {
  static const RedirectionApi found = {SystemFunction<decltype(Wow64DisableWow64FsRedirection)>(
                                           L"kernel32", "Wow64DisableWow64FsRedirection"),
                                       SystemFunction<decltype(Wow64RevertWow64FsRedirection)>(
                                           L"kernel32", "Wow64RevertWow64FsRedirection")};
  return found;
}

RealFileSystem::RealFileSystem(const RedirectionApi& functions)
    : api(functions), isSwitched(api.disable && api.revert && api.disable(&before)) {}

RealFileSystem::~RealFileSystem() {
  if (isSwitched) {
    api.revert(before);
  }
}

}  // namespace ostrell
