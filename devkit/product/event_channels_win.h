#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "devkit/product/recorded_event.h"

namespace ostrell {

// The channels are the files "events\<channel>.xml" beside the program, read anew at every call.

// Their names in ascending order; none when there is no folder.
std::vector<std::wstring> EventChannelNames();

struct EventChannel {
  DWORD error;  // 0 or a Windows error code
  std::vector<RecordedEvent> events;
};

// The events of one channel in the file's order. ERROR_EVT_CHANNEL_NOT_FOUND for a name that is not
// exactly one of EventChannelNames(), ERROR_EVENTLOG_FILE_CORRUPT for a file that is not UTF-8 or
// not of the form of ParseRecordedEvents.
EventChannel LoadEventChannel(const std::wstring& name);

}  // namespace ostrell
