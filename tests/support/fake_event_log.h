#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/print.h"
#include "base/text.h"
#include "devkit/product/event_query.h"
#include "devkit/product/recorded_event.h"
#include "eventlog/apis.h"
#include "tests/support/outside_call.h"

namespace ostrell {

// Passes a second each time it is looked at.
inline eventlog::TimeBudget::Clock SecondByLook() {
  return [looks = 0]() mutable {
    return std::chrono::steady_clock::time_point(std::chrono::seconds(looks++));
  };
}

// An event as the event service renders it.
struct RecordedEventText {
  std::string provider;
  std::string id;
  std::string data{};  // inside of EventData
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

// An event log in memory, behind either interface; one at a time. The modern one evaluates the
// query that it is handed. Every handle has to be closed.
class FakeEventLog {
 public:
  FakeEventLog() { current = this; }
  ~FakeEventLog() {
    EXPECT_EQ(open, 0);
    current = nullptr;
  }
  FakeEventLog(const FakeEventLog&) = delete;
  FakeEventLog& operator=(const FakeEventLog&) = delete;

  struct ClassicRecord {
    std::wstring provider{};
    uint32_t eventId = 0;
    uint32_t time = 0;  // seconds since 1970
    std::wstring text{};
  };
  // What one read gives: records, or else a failure and the size of the buffer that it asks for.
  struct ClassicRead {
    std::vector<ClassicRecord> records{};
    uint32_t error = 0;
    uint32_t needed = 0;
  };

  std::map<std::wstring, std::string> modern;  // recorded_event.h's text, by channel
  std::vector<std::wstring> channels;          // as listed, where these are not `modern`'s
  std::map<std::wstring, std::vector<ClassicRead>> classic;  // ended by what is missing
  std::wstring endless;        // the channel whose first event or read comes again and again
  std::string failing;         // the call that fails, EvtNext at its second batch
  std::wstring unrendered;     // events that hold it are rendered as nothing
  bool rendersLess = false;    // half of what it announced
  uint32_t announced = 0;      // another size of a rendering than the true one
  bool succeedsAtEnd = false;  // the batch behind the last one is empty and no failure

  std::vector<std::string> queries;   // texts
  std::vector<uint32_t> bufferSizes;  // of classic reads
  std::wstring server;                // of the classic log opened last
  int opened = 0;                     // handles
  int open = 0;                       // of these, not yet closed

  static const eventlog::EvtApi& Modern() {
    static const eventlog::EvtApi api = {
        OpenSession, Query,        Next,        Render,
        Close,       OpenChannels, NextChannel, [] { return uint32_t{5}; },
        ErrorText};
    return api;
  }

  static const eventlog::ClassicEventLogApi& Classic() {
    static const eventlog::ClassicEventLogApi api = {OpenClassic, ReadClassic, Close,
                                                     [] { return current->error; }, ErrorText};
    return api;
  }

 private:
  struct Handle {
    std::vector<std::wstring> texts{};  // names of channels, events
    std::vector<ClassicRead> reads{};
    bool isEndless = false;
    size_t next = 0;
    size_t Advance() { return isEndless ? 0 : next++; }
  };

  static inline FakeEventLog* current = nullptr;
  void* session = nullptr;
  uint32_t error = 0;  // of the classic interface

  static std::wstring ErrorText(uint32_t code) { return L"error " + std::to_wstring(code); }
  static Handle& At(void* handle) { return *static_cast<Handle*>(handle); }
  static void* Give(const OutsideCall& outside, const char* call, Handle handle) {
    if (current->failing == call || outside.Fails()) {
      return nullptr;
    }
    ++current->opened;
    ++current->open;
    return new Handle(std::move(handle));
  }
  static bool Close(void* handle) {
    const OutsideCall call(0);
    --current->open;
    delete &At(handle);
    return true;
  }

  static void* OpenSession(uint32_t loginClass, void* login, uint32_t, uint32_t) {
    const OutsideCall call(1);
    const wchar_t* names[4];  // server, user, domain, password
    std::memcpy(names, login, sizeof(names));
    EXPECT_EQ(loginClass, 1u);
    EXPECT_STREQ(names[0], L"server");
    EXPECT_EQ(std::count(names + 1, names + 4, nullptr), 3);
    return current->session = Give(call, "EvtOpenSession", {});
  }
  static void* OpenChannels(void* session, uint32_t) {
    const OutsideCall call(1);
    EXPECT_EQ(session, nullptr);  // channels of this computer
    std::vector<std::wstring> names = current->channels;
    for (const auto& [name, events] : current->modern) {
      if (current->channels.empty()) {
        names.push_back(name);
      }
    }
    return Give(call, "EvtOpenChannelEnum", {.texts = std::move(names)});
  }
  static bool NextChannel(void* channels, uint32_t characters, wchar_t* buffer, uint32_t*) {
    const OutsideCall call(1);
    Handle& handle = At(channels);
    if (handle.next == handle.texts.size() || handle.texts[handle.next].size() >= characters ||
        call.Fails()) {
      return false;
    }
    const std::wstring& name = handle.texts[handle.next++];
    std::copy_n(name.c_str(), name.size() + 1, buffer);
    return true;
  }

  static void* Query(void* session, const wchar_t* path, const wchar_t* text, uint32_t flags) {
    const OutsideCall call(1);
    EXPECT_EQ(session, current->session);
    EXPECT_EQ(path, nullptr);
    EXPECT_EQ(flags, 0x1100u);
    current->queries.push_back(Utf8FromWide(text));
    const auto query = ParseEventQuery(current->queries.back());
    const std::wstring channel = WideFromUtf8(query.value().channel).value();
    Handle results{.isEndless = channel == current->endless};
    const auto events = ParseRecordedEvents(current->modern[channel]);
    for (const RecordedEvent& event : events.value()) {
      if (query->condition(event.system)) {
        results.texts.push_back(WideFromUtf8(event.xml).value());
      }
    }
    return Give(call, "EvtQuery", std::move(results));
  }
  static bool Next(void* results, uint32_t size, void** events, uint32_t timeout, uint32_t,
                   uint32_t* returned) {
    const OutsideCall call(2);
    EXPECT_EQ(timeout, 0xFFFFFFFFu);
    Handle& handle = At(results);
    *returned = 0;
    if ((current->failing == "EvtNext" && handle.next > 0) || call.Fails()) {
      return call.Or(false, {false, true});  // the other way: none, and no failure
    }
    while (*returned < size && handle.next < handle.texts.size()) {
      events[(*returned)++] = Give(call, "an event", {.texts = {handle.texts[handle.Advance()]}});
    }
    return *returned > 0 || current->succeedsAtEnd;
  }
  static bool Render(void* context, void* event, uint32_t flags, uint32_t bytes, void* buffer,
                     uint32_t* used, uint32_t*) {
    const OutsideCall call(3);
    EXPECT_EQ(context, current->session);
    EXPECT_EQ(flags, 1u);
    const std::wstring& xml = At(event).texts.front();
    const bool isRendered =
        current->unrendered.empty() || xml.find(current->unrendered) == std::wstring::npos;
    *used = current->announced != 0 ? current->announced
                                    : static_cast<uint32_t>(isRendered ? 2 * xml.size() + 2 : 0);
    *used = call.Or(*used, {*used, 0, 0xFFFFFFFE});
    if (buffer == nullptr || current->failing == "EvtRender" || call.Fails()) {
      return false;
    }
    EXPECT_EQ(bytes, 2 * *used);
    std::copy_n(xml.c_str(), xml.size() / (current->rendersLess ? 2 : 1),
                static_cast<wchar_t*>(buffer));
    return true;
  }

  static void* OpenClassic(const wchar_t* server, const wchar_t* log) {
    const OutsideCall call(1);
    current->server = server != nullptr ? server : L"(none)";
    current->error = 2;  // ERROR_FILE_NOT_FOUND
    return Give(call, "OpenEventLog",
                {.reads = current->classic[log], .isEndless = current->endless == log});
  }
  static bool ReadClassic(void* log, uint32_t flags, uint32_t offset, void* buffer, uint32_t size,
                          uint32_t* read, uint32_t* needed) {
    const OutsideCall call(2);
    EXPECT_EQ(flags, 9u);
    EXPECT_EQ(offset, 0u);
    current->bufferSizes.push_back(size);
    Handle& handle = At(log);
    if (call.Fails()) {
      current->error = call.Or(0u, {5, 122});  // access denied, buffer too small
      *needed = 0xFFFFFFFF;
      return false;
    }
    if (handle.next == handle.reads.size()) {
      current->error = 38;  // ERROR_HANDLE_EOF
      return false;
    }
    const ClassicRead& answer = handle.reads[handle.Advance()];
    std::string bytes;
    for (const ClassicRecord& record : answer.records) {
      bytes += Packed(record);
    }
    EXPECT_LE(bytes.size(), size);
    std::memcpy(buffer, bytes.data(), bytes.size());
    *read = static_cast<uint32_t>(bytes.size());
    *needed = answer.needed;
    current->error = answer.error;
    return answer.error == 0;
  }

  static std::string Packed(const ClassicRecord& record) {
    std::array<uint32_t, 14> fixed{};
    std::string texts;
    for (const std::wstring& text : {record.provider, std::wstring(L"PC"), record.text}) {
      fixed[9] = static_cast<uint32_t>(sizeof(fixed) + texts.size());  // of the last one, a string
      for (const wchar_t unit : text + L'\0') {
        texts += static_cast<char>(unit);
        texts += static_cast<char>(unit >> 8);
      }
    }
    fixed[0] = static_cast<uint32_t>(sizeof(fixed) + texts.size());
    fixed[3] = record.time;
    fixed[5] = record.eventId;
    fixed[6] = 1 | 1 << 16;  // an error, one string
    return std::string(reinterpret_cast<const char*>(fixed.data()), sizeof(fixed)) + texts;
  }
};

}  // namespace ostrell
