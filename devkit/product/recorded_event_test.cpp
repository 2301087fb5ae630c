#include "devkit/product/recorded_event.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ostrell {
namespace {

using testing::Optional;

// 1704067200 seconds from 1970 to 2024, 11644473600 from 1601 to 1970.
constexpr uint64_t kStartOf2024 = 133485408000000000;

TEST(RecordedEventTest, Times) {
  const struct {
    const char* text;
    std::optional<uint64_t> ticks;
  } kCases[] = {
      {"2024-01-01T00:00:00Z", kStartOf2024},
      {"2024-01-01T00:00:00.1Z", kStartOf2024 + 1000000},
      {"2024-01-01T00:00:00.1234567Z", kStartOf2024 + 1234567},
      {"2024-01-01T00:00:00.123456799Z", kStartOf2024 + 1234567},
      {"2023-12-31T23:59:59.9999999Z", kStartOf2024 - 1},
      {"1601-01-01T00:00:00Z", 0},
      {"2023-02-29T00:00:00Z", std::nullopt},
      {"2024-01-01T00:00:00.1234567890Z", std::nullopt},
      {"2024-01-01T00:00:00.-1Z", std::nullopt},
      {"2024-01-01T00:00:00", std::nullopt},
      {"2024-01-01 00:00:00Z", std::nullopt},
      {"2024-01- 1T00:00:00Z", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [text, ticks] : kCases) {
    EXPECT_EQ(TicksFromEventTime(text), ticks) << text;
  }
}

TEST(RecordedEventTest, LinesOfABlockAreOneRendering) {
  const auto events = ParseRecordedEvents(
      "\xef\xbb\xbf\r\n"
      "<Event xmlns='urn:events'>\r\n"
      "  <System>\r\n"
      "    <Provider EventSourceName='Other' Name='R&amp;D'/>\r\n"
      "    <EventID Qualifiers='49152'>7009</EventID>\r\n"
      "    <Level>2</Level>\r\n"
      "    <TimeCreated SystemTime='2024-01-01T00:00:00.000Z'/>\r\n"
      "  </System>\r\n"
      "  <RenderingInfo Culture='en-US'><Level>4</Level><EventID>5</EventID></RenderingInfo>\r\n"
      "</Event>\r\n"
      " \r\n\r\n"
      "<Event><System/></Event>");
  ASSERT_THAT(events, Optional(testing::SizeIs(2)));
  const RecordedEvent& first = events->front();
  EXPECT_EQ(first.xml,
            "<Event xmlns='urn:events'><System><Provider EventSourceName='Other' Name='R&amp;D'/>"
            "<EventID Qualifiers='49152'>7009</EventID><Level>2</Level>"
            "<TimeCreated SystemTime='2024-01-01T00:00:00.000Z'/></System>"
            "<RenderingInfo Culture='en-US'><Level>4</Level><EventID>5</EventID></RenderingInfo>"
            "</Event>");
  EXPECT_EQ(first.system.provider, "R&D");
  EXPECT_THAT(first.system.eventId, Optional(7009U));
  EXPECT_THAT(first.system.level, Optional(2U));
  EXPECT_THAT(first.system.timeCreated, Optional(kStartOf2024));
}

TEST(RecordedEventTest, WhatIsNotOfItsFormHasNoValue) {
  const auto events = ParseRecordedEvents(
      "<Event><System><Provider Guid='{1}'/><EventID>0x10</EventID><Level>-1</Level>"
      "<TimeCreated SystemTime='yesterday'/></System></Event>\n\n<Event><System></System></Event>");
  ASSERT_THAT(events, Optional(testing::SizeIs(2)));
  for (const RecordedEvent& event : *events) {
    EXPECT_FALSE(event.system.provider);
    EXPECT_FALSE(event.system.eventId);
    EXPECT_FALSE(event.system.level);
    EXPECT_FALSE(event.system.timeCreated);
  }
}

TEST(RecordedEventTest, OneDamagedEventDamagesTheFile) {
  EXPECT_THAT(ParseRecordedEvents("\n \r\n"), Optional(testing::IsEmpty()));
  for (const std::string damage : {
           "<Event/>",
           "<System/>",
           "<Event><System/>",
           "<Event><System></Event></System>",
           "<Event><System/></Event><Event><System/></Event>",
           "<Events><Event><System/></Event></Events>",
           "<Event><EventData/></Event>",
           "<!-- --><Event><System/></Event>",
           "<Event\nxmlns='urn:events'><System/></Event>",
       }) {
    EXPECT_FALSE(ParseRecordedEvents("<Event><System/></Event>\n\n" + damage)) << damage;
  }
}

}  // namespace
}  // namespace ostrell
