#include "unified/event_logs_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <cwchar>

#include "base/calendar.h"
#include "tests/support/program_files_win.h"
#include "tests/support/recorded_events_win.h"
#include "unified/event_logs.h"

namespace ostrell {
namespace {

using testing::ElementsAre;

constexpr int64_t kStart = 1795565520 - 604800;
constexpr auto kManager = "Service Control Manager";

// 2026-11-20 08:15:30 UTC, as the unified report dates it.
std::string EventTime() {
  return std::to_string(LocalTimeSeconds(FileTimeFromTicks(TicksFromSeconds(1795162530))));
}

RecordedEventText Crash(const std::string& data) {
  return {.provider = "Application Error", .id = "1000", .data = data};
}

class EventLogsTest : public testing::Test {
 protected:
  void Record(const wchar_t* channel, const std::vector<RecordedEventText>& events) {
    std::string text;
    for (const RecordedEventText& event : events) {
      text += event.Text();
    }
    files.Write(std::wstring(L"events\\") + channel + L".xml", text);
  }

  ProgramFiles files;
};

TEST_F(EventLogsTest, ItemsOfBothChannels) {
  const std::string path = "<Data Name='AppPath'>C:\\VELMORA\\a.exe</Data>";
  Record(
      L"Application",
      {Crash("<Data Name='AppName'>a.exe</Data><Data Name='AppTimeStamp'>c4d265b0</Data>" + path),
       Crash("<Data Name='AppName'>other.exe</Data><Data Name='AppTimeStamp'>1</Data>"),
       Crash("<Data Name='AppName'>b.exe</Data>" + path),
       Crash("<Data>ProtSvc.exe</Data><Data>6.0</Data><Data>64d1b2c3</Data>"),
       {.provider = "Other", .id = "1000", .data = path},
       {.provider = "Application Error", .id = "1001", .data = path}});
  Record(L"System",
         {{.provider = kManager, .id = "7000", .data = "<Data Name='param1'>PROTSVC</Data>"},
          {.provider = kManager, .id = "7001", .data = "<Data Name='param1'>PROTSVC</Data>"},
          {.provider = kManager, .id = "7009", .data = "<Data Name='param2'>Velmora</Data>"},
          {.provider = kManager,
           .id = "7009",
           .data = "<Data Name='param2'>Velmora</Data>",
           .time = "2026-11-10T00:00:00Z"}});
  const std::string time = R"("timestamp":)" + EventTime();
  const std::string crash =
      R"({"report_type":"syslog","name":"Application Error",)" + time + R"(,"pattern":1000,)";
  const std::string manager = R"({"report_type":"syslog","name":"Service Control Manager",)" + time;
  // Without named elements the words of the XML text itself are taken.
  EXPECT_EQ(CompactText(collect_event_logs(kStart)),
            "[" + crash + R"("eventdata":"a.exe","exe-time":3302122928},)" + crash +
                R"("eventdata":"b.exe"},)" + crash + R"("eventdata":"<Event","exe-time":0},)" +
                manager + R"(,"pattern":7000},)" + manager + R"(,"pattern":7009}])");
  EXPECT_THAT(ProgramFiles::Messages(),
              ElementsAre("collect_event_logs Event log collection completed, found 5 matching "
                          "events within time range",
                          "collect_event_logs All events converted to JSON, 5 entries total"));
}

TEST_F(EventLogsTest, NumberThatDoesNotConvertCostsItsChannel) {
  const std::string name = "<Data Name='AppName'>velmora.exe</Data>";
  RecordedEventText damaged = Crash(name);
  damaged.level = "two";
  Record(L"Application", {Crash(name), damaged});
  Record(L"System", {{.provider = kManager, .id = "7000", .data = "<Data>protsvc</Data>"}});
  const JsonOwner items = collect_event_logs(kStart);
  ASSERT_EQ(json_array_size(items.Get()), 1u);
  EXPECT_EQ(json_integer_value(json_object_get(json_array_get(items.Get(), 0), "pattern")), 7000);
}

TEST_F(EventLogsTest, NothingKept) {
  EXPECT_FALSE(collect_event_logs(kStart));  // no channels
  EXPECT_THAT(ProgramFiles::Messages(),
              ElementsAre("collect_event_logs Event log collection completed, found 0 matching "
                          "events within time range",
                          "collect_event_logs No events to collect, return NULL"));
}

// Logs that never end, of events that name the product.
struct EndlessLog {
  static constexpr const wchar_t* kEvent =
      L"<Event><System><Provider Name='P'/><EventID>7000</EventID></System>protsvc</Event>";
  static inline char handle = 0;
  static inline const wchar_t* nextChannel = nullptr;

  static bool Next(void*, uint32_t size, void** handles, uint32_t, uint32_t, uint32_t* returned) {
    std::fill_n(handles, size, &handle);
    *returned = size;
    return true;
  }
  static bool Render(void*, void*, uint32_t, uint32_t, void* buffer, uint32_t* used, uint32_t*) {
    *used = static_cast<uint32_t>(sizeof(wchar_t) * (std::wcslen(kEvent) + 1));
    if (buffer != nullptr) {
      std::wcscpy(static_cast<wchar_t*>(buffer), kEvent);
    }
    return buffer != nullptr;
  }
  static bool NextChannel(void*, uint32_t, wchar_t* buffer, uint32_t*) {
    nextChannel = nextChannel == nullptr                             ? L"Application"
                  : std::wstring_view(nextChannel) == L"Application" ? L"System"
                                                                     : nullptr;
    return nextChannel != nullptr && std::wcscpy(buffer, nextChannel) != nullptr;
  }
  static bool ReadClassic(void*, uint32_t, uint32_t, void* buffer, uint32_t, uint32_t* read,
                          uint32_t*) {
    // Event 1000, created 1000 seconds after 1970, of the provider, with one string.
    static constexpr wchar_t kTexts[] = L"application ERROR\0PC\0velmora";
    constexpr uint32_t kLastText = sizeof(L"velmora");
    std::array<uint32_t, 14> fixed{};
    const auto bytes = static_cast<uint32_t>(sizeof(fixed) + sizeof(kTexts));
    fixed = {bytes, 0, 0, 1000, 0, 1000, 1 | 1 << 16, 0, 0, bytes - kLastText};
    std::memcpy(buffer, fixed.data(), sizeof(fixed));
    std::memcpy(static_cast<char*>(buffer) + sizeof(fixed), kTexts, sizeof(kTexts));
    *read = bytes;
    return true;
  }
  static void* Open() { return &handle; }
};

const eventlog::EvtApi kEndlessModern = {
    .openSession = nullptr,
    .query = [](void*, const wchar_t*, const wchar_t*, uint32_t) { return EndlessLog::Open(); },
    .next = EndlessLog::Next,
    .render = EndlessLog::Render,
    .close = [](void*) { return true; },
    .openChannelEnum = [](void*, uint32_t) { return EndlessLog::Open(); },
    .nextChannelPath = EndlessLog::NextChannel,
    .lastError = nullptr,
    .errorText = nullptr};
const eventlog::ClassicEventLogApi kEndlessClassic = {
    .open = [](const wchar_t*, const wchar_t*) { return EndlessLog::Open(); },
    .read = EndlessLog::ReadClassic,
    .close = [](void*) { return true; },
    .lastError = nullptr,
    .errorText = nullptr};

TEST_F(EventLogsTest, LogsWithoutEnd) {
  const auto stillness = [] { return std::chrono::steady_clock::time_point(); };
  std::vector<CollectedEvent> events;
  EXPECT_EQ(QueryProductEvents(true, 0, events, kEndlessModern, kEndlessClassic, stillness),
            2u * 65536);
  EXPECT_THAT(ProgramFiles::Messages(),
              ElementsAre("collect_event_logs Limit of channel Application: reading ended after "
                          "65536 events",
                          "collect_event_logs Limit of channel System: reading ended after 65536 "
                          "events"));

  // A second passes each time the time is looked at.
  const ProgramFiles fresh;
  const auto clock = [looks = 0]() mutable {
    return std::chrono::steady_clock::time_point(std::chrono::seconds(looks++));
  };
  events.clear();
  EXPECT_EQ(QueryProductEvents(false, 0, events, kEndlessModern, kEndlessClassic, clock), 299u);
  EXPECT_EQ(events[0].applicationName, L"");
  EXPECT_THAT(ProgramFiles::Messages(),
              ElementsAre("collect_event_logs Limit of channel Application: reading ended after "
                          "299 events and 300 seconds",
                          "collect_event_logs Limit of channel System: reading ended after 0 "
                          "events and 300 seconds"));
}

TEST(HasModernEventLog, FromVersionSix) {
  const auto api = [](LONG status, DWORD major) {
    SystemApi fake;
    fake.rtlGetVersion = [=](OSVERSIONINFOEXW* version) {
      EXPECT_EQ(version->dwOSVersionInfoSize, 284u);
      version->dwMajorVersion = major;
      return status;
    };
    return fake;
  };
  EXPECT_TRUE(HasModernEventLog(api(0, 6)));
  EXPECT_TRUE(HasModernEventLog(api(1, 10)));
  EXPECT_FALSE(HasModernEventLog(api(0, 5)));
  EXPECT_FALSE(HasModernEventLog(api(-1, 10)));
  EXPECT_FALSE(HasModernEventLog(SystemApi()));
}

}  // namespace
}  // namespace ostrell
