#pragma once

#include <string>
#include <string_view>

namespace ostrell {

// What the text of an event says; both forms of it occur: the event as XML, and its insertion
// strings joined by blanks.

// True when the text names the product ("velmora") or its protection service ("protsvc"), ASCII
// letters in any case.
bool NamesProduct(std::wstring_view data);

// Of an application error: the crashed program's name and its link time in hexadecimal. Each may be
// empty.
struct ApplicationFields {
  std::wstring name;
  std::wstring timestamp;
};

// With named data elements the values of AppName and AppTimeStamp, up to the next "</Data". Without
// an AppName the text is read as words between blanks: the first is the name, the third the time
// stamp, and a word counts only when a blank ends it, but for the third, which may end the text.
ApplicationFields ExtractApplicationFields(std::wstring_view data);

}  // namespace ostrell
