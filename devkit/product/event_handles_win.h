#pragma once

#include <windows.h>

#include <winevt.h>

#include <cstddef>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace ostrell {

// What handles stand for.
struct EventSession {};
struct ChannelEnumeration {
  std::vector<std::wstring> names;
  size_t next = 0;
};
struct EventResults {
  std::vector<std::wstring> events;  // rendered
  size_t next = 0;
};
struct RenderedEvent {
  std::wstring xml;
};
using EventObject = std::variant<EventSession, ChannelEnumeration, EventResults, RenderedEvent>;

// The open handles. A handle is a number that is never given out again, not an address: one that is
// closed, foreign, null or of another kind is not found. Not for several threads at once.
class EventHandles {
 public:
  EVT_HANDLE Add(EventObject object) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    const EVT_HANDLE handle = reinterpret_cast<EVT_HANDLE>(next);
    objects.emplace(handle, std::move(object));
    next += kStep;
    return handle;
  }

  // Null when `handle` is no open handle of that kind.
  template <class Kind>
  Kind* Find(EVT_HANDLE handle) {
    const auto found = objects.find(handle);
    return found == objects.end() ? nullptr : std::get_if<Kind>(&found->second);
  }

  // False when `handle` is not open.
  bool Close(EVT_HANDLE handle) { return objects.erase(handle) != 0; }

  // Where a session may be named, null stands for the local computer.
  bool IsSession(EVT_HANDLE handle) {
    return handle == nullptr || Find<EventSession>(handle) != nullptr;
  }

 private:
  static constexpr uintptr_t kStep = 4;

  std::map<EVT_HANDLE, EventObject> objects;
  uintptr_t next = kStep;
};

}  // namespace ostrell
