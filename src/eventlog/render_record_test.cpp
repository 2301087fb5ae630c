#include "eventlog/render_record.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace eventlog {
namespace {

EventRecord Read(std::wstring_view xml) {
  EventRecord record;
  EXPECT_TRUE(EventRecordFromXml(xml, record));
  EXPECT_EQ(record.data, xml);
  return record;
}

// Rendered as the service does it, with the levels and names of the message repeated at the end.
TEST(EventRecordFromXml, ServiceControlManager) {
  const EventRecord record = Read(
      L"<Event xmlns='http://schemas.microsoft.com/win/2004/08/events/event'><System>"
      L"<Provider Name='Service Control Manager' Guid='{555908d1}' EventSourceName='SCM'/>"
      L"<EventID Qualifiers='49152'>7009</EventID><Version>0</Version><Level>2</Level>"
      L"<Keywords>0x8080000000000000</Keywords>"
      L"<TimeCreated SystemTime='2026-11-20T08:15:30.1234567Z'/>"
      L"<Execution ProcessID='716' ThreadID='4120'/><Channel>System</Channel>"
      L"<Computer>PC-17.example.test</Computer><Security/></System>"
      L"<EventData><Data Name='param1'>30000 &amp; more</Data></EventData>"
      L"<RenderingInfo Culture='en-US'><Level>Error</Level><Provider>SCM</Provider>"
      L"</RenderingInfo></Event>");
  EXPECT_EQ(record.eventId, 7009u);
  EXPECT_EQ(record.level, 2u);
  EXPECT_EQ(record.provider, L"Service Control Manager");
  EXPECT_EQ(record.computer, L"PC-17.example.test");
  EXPECT_EQ(record.processId, 0u);  // an attribute, and so not found
  EXPECT_EQ(record.threadId, 0u);
  const ostrell::SystemTime& time = record.timeCreated;
  EXPECT_EQ(time.year, 2026);
  EXPECT_EQ(time.month, 11);
  EXPECT_EQ(time.day, 20);
  EXPECT_EQ(time.hour, 8);
  EXPECT_EQ(time.minute, 15);
  EXPECT_EQ(time.second, 30);
  EXPECT_EQ(time.milliseconds, 0);
  EXPECT_EQ(time.dayOfWeek, 0);
}

TEST(EventRecordFromXml, FieldsByTheFirstOccurrence) {
  EXPECT_EQ(Read(L"<Level>4</Level><Level>1</Level>").level, 4u);
  EXPECT_EQ(Read(L"<Level>9</Level>").level, 0u);
  EXPECT_EQ(Read(L"<Level>-1</Level>").level, 0u);
  EXPECT_EQ(Read(L"<Level></Level><Level>3</Level>").level, 0u);  // empty
  EXPECT_EQ(Read(L"<Level>3").level, 0u);                         // no end
  EXPECT_EQ(Read(L"<x Level='1'>5</x></Level>").level, 5u);       // any tag behind the name
  EXPECT_EQ(Read(L"<EventID> 7 x</EventID>").eventId, 7u);
  EXPECT_EQ(Read(L"<EventID>4294967295</EventID>").eventId, 4294967295u);
  EXPECT_EQ(Read(L"<EventID>-1</EventID>").eventId, 4294967295u);
  EXPECT_EQ(Read(L"<ProcessID>18446744073709551615</ProcessID>").processId, ~uint64_t{0});
  EXPECT_EQ(Read(L"<ThreadID>5</ThreadID>").threadId, 5u);
  EXPECT_EQ(Read(L"<Provider Name=''/><Provider Name='x'/>").provider, L"");
  EXPECT_EQ(Read(L"<Provider Name=\"x\"/>").provider, L"");
  EXPECT_EQ(Read(L"<Computer a='1'>PC</Computer>").computer, L"");
  EXPECT_EQ(Read(L"no event at all").eventId, 0u);
  EventRecord untouched;
  EXPECT_FALSE(EventRecordFromXml(L"", untouched));
}

TEST(EventRecordFromXml, NumbersThatDoNotConvert) {
  for (const wchar_t* xml :
       {L"<EventID>x</EventID>", L"<EventID> </EventID>", L"<Level>two</Level>",
        L"<ProcessID>-</ProcessID>", L"<ThreadID>x</ThreadID>"}) {
    EventRecord record;
    EXPECT_THROW(EventRecordFromXml(xml, record), std::invalid_argument) << xml;
  }
  for (const wchar_t* xml :
       {L"<EventID>4294967296</EventID>", L"<EventID>99999999999999999999</EventID>",
        L"<EventID>-4294967296</EventID>", L"<Level>2147483648</Level>",
        L"<ProcessID>18446744073709551616</ProcessID>"}) {
    EventRecord record;
    EXPECT_THROW(EventRecordFromXml(xml, record), std::out_of_range) << xml;
  }
}

TEST(EventRecordFromXml, Times) {
  const struct {
    const wchar_t* value;
    uint16_t year, month, day, hour, minute, second;
  } cases[] = {
      {L"2026-11-20T08:15:30Z", 2026, 11, 20, 8, 15, 30},
      {L"2026-11-20T08:15:30.123Z", 2026, 11, 20, 8, 15, 30},
      {L"2026-11-20T08:15:30.123456789Z", 2026, 11, 20, 8, 15, 30},
      {L" 2026- 1-+2T 3:4:5", 2026, 1, 2, 3, 4, 5},
      {L"2026-11-20 08:15:30", 2026, 11, 20, 0, 0, 0},
      {L"2026-11-20T08:15", 2026, 11, 20, 8, 15, 0},
      {L"x", 0, 0, 0, 0, 0, 0},
      {L"65537-1-1T0:0:0", 1, 1, 1, 0, 0, 0},  // 16 bits hold no more
  };
  for (const auto& c : cases) {
    const ostrell::SystemTime time =
        Read(L"<TimeCreated SystemTime='" + std::wstring(c.value) + L"'/>").timeCreated;
    EXPECT_EQ(time.year, c.year) << c.value;
    EXPECT_EQ(time.month, c.month) << c.value;
    EXPECT_EQ(time.day, c.day) << c.value;
    EXPECT_EQ(time.hour, c.hour) << c.value;
    EXPECT_EQ(time.minute, c.minute) << c.value;
    EXPECT_EQ(time.second, c.second) << c.value;
  }
}

}  // namespace
}  // namespace eventlog
