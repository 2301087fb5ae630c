#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/print.h"
#include "base/text.h"
#include "eventlog/reading.h"
#include "tests/support/fake_event_log.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {

// For the recorded cases of either reader of an event log. Of a case it knows:
//
//   most: 3        the taker ends the reading at so many records
//   clock: passes  a second goes by at each look; else it stands
//   server: NAME   another computer
//   failing: CALL
//   endless: yes   see fake_event_log.h
//   text: 250      characters of each record's data
class EventReading {
 public:
  EventReading(const RecordedCase& of, const wchar_t* channelName)
      : recorded(of), channel(channelName) {
    log.failing = Field("failing");
    log.endless = recorded.Has("endless") ? channel : L"";
  }

  std::string Field(const char* field) const { return recorded.Has(field) ? recorded[field] : ""; }
  std::wstring Server() const { return WideFromUtf8(Field("server")).value(); }

  // What comes of `read(budget, taker)`: "3 records 9 8 9, stopped", of many records the first four
  // and the last one, and the reader's error.
  std::string Outcome(const auto& reader, const auto& read) const {
    std::vector<uint32_t> ids;
    const auto take = [&](const eventlog::EventRecord& record) {
      EXPECT_EQ(record.channel, channel);
      EXPECT_TRUE(!recorded.Has("text") || std::ssize(record.data) == recorded.Number("text"));
      ids.push_back(record.eventId);
      return !recorded.Has("most") || std::ssize(ids) < recorded.Number("most");
    };
    const auto stands = [] { return std::chrono::steady_clock::time_point(); };
    const eventlog::TimeBudget budget =
        recorded.Has("clock") ? eventlog::TimeBudget(SecondByLook()) : eventlog::TimeBudget(stands);
    const eventlog::ReadingEnd end = read(budget, take);
    std::string text = std::to_string(ids.size()) + " records";
    for (size_t i = 0; i < ids.size(); ++i) {
      text += i < 4 || i + 1 == ids.size() ? " " + std::to_string(ids[i]) : "";
    }
    constexpr const char* kEnds[] = {"complete", "stopped", "out of time", "too many channels"};
    const std::wstring error = (reader.LastError().empty() ? L"" : L", ") + reader.LastError();
    return text + ", " + kEnds[static_cast<size_t>(end)] + Utf8FromWide(error);
  }

  FakeEventLog log;

 private:
  const RecordedCase& recorded;
  const std::wstring channel;
};

}  // namespace ostrell
