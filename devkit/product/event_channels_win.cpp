#include "devkit/product/event_channels_win.h"

#include <algorithm>
#include <filesystem>

#include "base/text.h"
#include "devkit/product/files_win.h"

namespace ostrell {
namespace {

std::wstring EventsFolder() {
  return PathBesideProgram(L"events").value_or(L"");
}

}  // namespace

std::vector<std::wstring> EventChannelNames() {
  std::vector<std::wstring> names;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(EventsFolder(), ignored)) {
    if (entry.path().extension() == L".xml") {
      names.push_back(entry.path().stem().wstring());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

EventChannel LoadEventChannel(const std::wstring& name) {
  const auto names = EventChannelNames();
  if (std::find(names.begin(), names.end(), name) == names.end()) {
    return {ERROR_EVT_CHANNEL_NOT_FOUND, {}};
  }
  const FileContent content = ReadWholeFile(EventsFolder() + L'\\' + name + L".xml");
  if (content.error != ERROR_SUCCESS) {
    return {content.error, {}};
  }
  auto events = ParseRecordedEvents(content.text);
  const bool isSound = events && (content.text.empty() || WideFromUtf8(content.text.c_str()));
  return isSound ? EventChannel{ERROR_SUCCESS, *std::move(events)}
                 : EventChannel{ERROR_EVENTLOG_FILE_CORRUPT, {}};
}

}  // namespace ostrell
