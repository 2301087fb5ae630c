#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "devkit/product/event_query.h"
#include "eventlog/apis.h"

namespace ostrell {

// An event log in memory, behind either interface; one at a time. The modern one evaluates the
// query that it is handed.
class FakeEventLog {
 public:
  FakeEventLog() { current = this; }
  ~FakeEventLog() { current = nullptr; }
  FakeEventLog(const FakeEventLog&) = delete;
  FakeEventLog& operator=(const FakeEventLog&) = delete;

  struct ClassicRecord {
    std::wstring provider;
    uint32_t eventId;
    uint32_t time;  // seconds since 1970
    std::wstring text;
  };

  std::map<std::wstring, std::string> modern;  // recorded_event.h's text, by channel
  std::map<std::wstring, std::vector<ClassicRecord>> classic;
  bool isEndless = false;            // the first event or record of a channel comes again and again
  std::vector<std::string> queries;  // texts
  int open = 0;                      // handles not yet closed

  static const eventlog::EvtApi& Modern() {
    static const eventlog::EvtApi api = {
        .openSession = [](uint32_t, void*, uint32_t, uint32_t) -> void* { return nullptr; },
        .query = Query,
        .next = Next,
        .render = Render,
        .close = Close,
        .openChannelEnum = [](void*, uint32_t) { return Give({.channels = Names()}); },
        .nextChannelPath = NextChannel,
        .lastError = [] { return uint32_t{6}; },
        .errorText = [](uint32_t) { return std::wstring(); }};
    return api;
  }

  static const eventlog::ClassicEventLogApi& Classic() {
    static const eventlog::ClassicEventLogApi api = {
        .open = [](const wchar_t*,
                   const wchar_t* log) { return Give({.records = current->classic[log]}); },
        .read = ReadClassic,
        .close = Close,
        .lastError = [] { return uint32_t{38}; },  // ERROR_HANDLE_EOF
        .errorText = [](uint32_t) { return std::wstring(); }};
    return api;
  }

 private:
  struct Handle {
    std::vector<std::wstring> channels{};
    std::vector<std::wstring> events{};
    std::vector<ClassicRecord> records{};
    size_t next = 0;
  };

  static inline FakeEventLog* current = nullptr;

  static Handle& At(void* handle) { return *static_cast<Handle*>(handle); }
  static void* Give(Handle handle) {
    ++current->open;
    return new Handle(std::move(handle));
  }
  static bool Close(void* handle) {
    --current->open;
    delete &At(handle);
    return true;
  }
  // Moves on unless the log has no end.
  static size_t Advance(Handle& handle) { return current->isEndless ? 0 : handle.next++; }

  static std::vector<std::wstring> Names() {
    std::vector<std::wstring> names;
    for (const auto& [name, events] : current->modern) {
      names.push_back(name);
    }
    return names;
  }
  static bool NextChannel(void* channels, uint32_t characters, wchar_t* buffer, uint32_t*) {
    Handle& handle = At(channels);
    if (handle.next == handle.channels.size() ||
        handle.channels[handle.next].size() >= characters) {
      return false;
    }
    const std::wstring& name = handle.channels[handle.next++];
    std::copy_n(name.c_str(), name.size() + 1, buffer);
    return true;
  }

  static void* Query(void*, const wchar_t* path, const wchar_t* text, uint32_t) {
    current->queries.push_back(Utf8FromWide(text));
    const auto query = ParseEventQuery(current->queries.back());
    const auto events = ParseRecordedEvents(
        current->modern[path != nullptr ? path : WideFromUtf8(query->channel).value()]);
    std::vector<std::wstring> selected;
    for (const RecordedEvent& event : events.value()) {
      if (query.value().condition(event.system)) {
        selected.push_back(WideFromUtf8(event.xml).value());
      }
    }
    return Give({.events = std::move(selected)});
  }
  static bool Next(void* results, uint32_t size, void** events, uint32_t, uint32_t,
                   uint32_t* returned) {
    Handle& handle = At(results);
    for (*returned = 0; *returned < size && handle.next < handle.events.size(); ++*returned) {
      events[*returned] = Give({.events = {handle.events[Advance(handle)]}});
    }
    return *returned > 0;
  }
  static bool Render(void*, void* event, uint32_t, uint32_t, void* buffer, uint32_t* used,
                     uint32_t*) {
    const std::wstring& xml = At(event).events.front();
    *used = static_cast<uint32_t>(2 * xml.size() + 2);
    if (buffer != nullptr) {
      std::copy_n(xml.c_str(), xml.size() + 1, static_cast<wchar_t*>(buffer));
    }
    return buffer != nullptr;
  }

  static void AppendUtf16(std::string& bytes, std::wstring_view text) {
    for (const wchar_t unit : std::wstring(text) + L'\0') {
      bytes += static_cast<char>(unit);
      bytes += static_cast<char>(unit >> 8);
    }
  }
  // One record a call.
  static bool ReadClassic(void* log, uint32_t, uint32_t, void* buffer, uint32_t size,
                          uint32_t* read, uint32_t*) {
    Handle& handle = At(log);
    if (handle.next == handle.records.size()) {
      return false;
    }
    const ClassicRecord& record = handle.records[Advance(handle)];
    std::string texts;
    AppendUtf16(texts, record.provider);
    AppendUtf16(texts, L"PC");
    std::array<uint32_t, 14> fixed{};
    const auto string = static_cast<uint32_t>(sizeof(fixed) + texts.size());
    AppendUtf16(texts, record.text);
    const auto length = static_cast<uint32_t>(sizeof(fixed) + texts.size());
    fixed = {length, 0, 0, record.time, record.time, record.eventId, 1 | 1 << 16, 0, 0, string};
    if (length > size) {
      return false;
    }
    std::memcpy(buffer, fixed.data(), sizeof(fixed));
    std::memcpy(static_cast<char*>(buffer) + sizeof(fixed), texts.data(), texts.size());
    *read = length;
    return true;
  }
};

}  // namespace ostrell
