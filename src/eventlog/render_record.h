#pragma once

#include <string>

#include "eventlog/apis.h"
#include "eventlog/event_record.h"

namespace eventlog {

// Turns an event into XML, as the service renders it, and that into a record.

// Cuts the record's fields out of the XML by substring search: each finds the first occurrence of
// its name anywhere in the text, so an element of that name ("EventID"), an attribute ("Provider
// Name='") or a tag ("<Computer>"). A field that is missing, empty or has no end keeps its value;
// what TimeCreated holds is read as far as it is a time, its fraction left out. False, and nothing
// set, for an empty text.
//
// Throws std::invalid_argument or std::out_of_range for a number of an element that does not
// convert: EventID (32 bits), Level, ProcessID, ThreadID.
bool EventRecordFromXml(std::wstring xml, EventRecord& record);

// The event as XML; empty on failure, which an event of more than 16 MiB of text is, too.
std::wstring RenderEventXml(void* context, void* event, const EvtApi& api);

// Both. `session` is the context of the rendering, null for the local computer.
bool RenderEventRecord(void* session, void* event, EventRecord& record, const EvtApi& api);

}  // namespace eventlog
