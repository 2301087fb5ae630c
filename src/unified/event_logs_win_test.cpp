#include "unified/event_logs_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/calendar.h"
#include "unified/event_logs.h"
#include "unified/program_files_win.h"
#include "unified/recorded_events_win.h"

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
