#pragma once

#include <string>

#include "base/print.h"

namespace ostrell {

// For tests: an event as the event service renders it, one that the stand-in of that service takes.
struct RecordedEventText {
  std::string provider;
  std::string id;
  std::string data;  // inside of EventData
  std::string time = "2026-11-20T08:15:30.123Z";
  std::string level = "2";

  std::string Text() const {
    return Print(
        "<Event xmlns='urn:e'><System><Provider Name='%s' Guid='{0}'/>"
        "<EventID Qualifiers='49152'>%s</EventID><Level>%s</Level>"
        "<TimeCreated SystemTime='%s'/><Execution ProcessID='7' ThreadID='8'/>"
        "<Computer>PC</Computer></System><EventData>%s</EventData></Event>\n\n",
        provider, id, level, time, data);
  }
};

}  // namespace ostrell
