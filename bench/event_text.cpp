// Events read from the XML that the service renders, by us and by another reader, to be timed
// against each other.
//
// Usage: event_text ours|pugixml|pugixml-utf8 COUNT    reads one event so many times
#include <pugixml.hpp>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "base/text.h"
#include "bench/sample_event.h"
#include "eventlog/render_record.h"
#include "unified/event_fields.h"

namespace ostrell {
namespace {

size_t EventByUs() {
  eventlog::EventRecord record;
  if (!eventlog::EventRecordFromXml(std::wstring(kSampleEvent), record) ||
      !NamesProduct(record.data)) {
    return 0;
  }
  return record.eventId + record.provider.size() + record.timeCreated.day +
         ExtractApplicationFields(record.data).name.size();
}

// Four fields, of which the product's words are part of one.
size_t EventByPugixml(const void* text, size_t bytes, pugi::xml_encoding encoding) {
  pugi::xml_document document;
  if (!document.load_buffer(text, bytes, pugi::parse_default, encoding)) {
    return 0;
  }
  const pugi::xml_node event = document.child("Event");
  const pugi::xml_node system = event.child("System");
  const pugi::xml_node name =
      event.child("EventData").find_child_by_attribute("Data", "Name", "AppName");
  return system.child("EventID").text().as_uint() +
         std::strlen(system.child("Provider").attribute("Name").value()) +
         std::strlen(system.child("TimeCreated").attribute("SystemTime").value()) +
         std::strlen(name.text().get());
}

size_t EventByOther(std::string_view reader) {
  static const std::string utf8 = Utf8FromWide(kSampleEvent);
  if (reader == "pugixml") {
    return EventByPugixml(kSampleEvent.data(), kSampleEvent.size() * sizeof(wchar_t),
                          pugi::encoding_wchar);
  }
  return reader == "pugixml-utf8" ? EventByPugixml(utf8.data(), utf8.size(), pugi::encoding_utf8)
                                  : 0;
}

}  // namespace
}  // namespace ostrell

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: event_text ours|pugixml|pugixml-utf8 COUNT\n", stderr);
    return 2;
  }
  const std::string_view reader = argv[1];
  bool isRead = true;
  for (int i = std::atoi(argv[2]); i > 0 && isRead; --i) {
    isRead = (reader == "ours" ? ostrell::EventByUs() : ostrell::EventByOther(reader)) != 0;
  }
  return isRead ? 0 : 1;
}
