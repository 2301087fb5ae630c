#include "eventlog/classic_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace eventlog {
namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::byte>;

void Put(Bytes& bytes, size_t offset, uint64_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) {
    bytes[offset + i] = static_cast<std::byte>(value >> (8 * i));
  }
}

void Append(Bytes& bytes, std::string_view text, bool isTerminated = true) {
  for (const char c : text) {
    bytes.push_back(static_cast<std::byte>(c));
    bytes.push_back(std::byte{0});
  }
  bytes.resize(bytes.size() + (isTerminated ? 2 : 0));
}

struct Record {
  uint32_t eventId = 1000;
  uint16_t type = 1;
  std::vector<const char*> strings = {"vguard.exe", "", "64d1b2c3"};

  Bytes Packed() const {
    Bytes bytes(56);
    Append(bytes, "Source");
    Append(bytes, "PC");
    Put(bytes, 36, bytes.size(), 4);
    for (const char* text : strings) {
      Append(bytes, text);
    }
    Put(bytes, 0, bytes.size(), 4);
    Put(bytes, 8, 77, 4);
    Put(bytes, 12, 1709247600, 4);  // 2024-02-29 23:00:00 UTC
    Put(bytes, 20, eventId, 4);
    Put(bytes, 24, type, 2);
    Put(bytes, 26, strings.size(), 2);
    return bytes;
  }
};

std::vector<EventRecord> Walk(const Bytes& bytes) {
  std::vector<EventRecord> records;
  WalkClassicRecords(bytes, L"Log", CompositeFilter(), records);
  return records;
}

TEST(ClassicRecords, EveryField) {
  const auto records = Walk(Record().Packed());
  ASSERT_EQ(records.size(), 1u);
  const EventRecord& record = records[0];
  EXPECT_EQ(record.eventId, 1000u);
  EXPECT_EQ(record.recordNumber, 77u);
  EXPECT_EQ(record.level, 2u);
  EXPECT_EQ(record.provider, L"Source");
  EXPECT_EQ(record.computer, L"PC");
  EXPECT_EQ(record.channel, L"Log");
  EXPECT_EQ(record.data, L"vguard.exe  64d1b2c3");
  EXPECT_EQ(record.timeCreated.month, 2);
  EXPECT_EQ(record.timeCreated.day, 29);
  EXPECT_EQ(record.timeCreated.hour, 23);
}

TEST(ClassicRecords, IdsAndLevels) {
  const std::pair<uint32_t, uint32_t> ids[] = {
      {0xC0000005, 5}, {0x3FFFFFFF, 0x3FFFFFFF}, {0x40000000, 0}, {0x80001B58, 7000}};
  for (const auto& [id, expected] : ids) {
    EXPECT_EQ(Walk(Record{.eventId = id}.Packed()).at(0).eventId, expected);
  }
  const std::pair<uint16_t, uint32_t> levels[] = {{0, 4}, {1, 2}, {2, 3},  {3, 0},
                                                  {4, 4}, {8, 4}, {16, 2}, {32, 0}};
  for (const auto& [type, expected] : levels) {
    EXPECT_EQ(Walk(Record{.type = type}.Packed()).at(0).level, expected) << type;
  }
}

TEST(ClassicRecords, DamageEndsTheWalk) {
  const Bytes sound = Record().Packed();
  const auto two = [&sound](const std::function<void(Bytes&)>& damage) {
    Bytes second = sound;
    damage(second);
    Bytes both = sound;
    both.insert(both.end(), second.begin(), second.end());
    return Walk(both);
  };
  EXPECT_EQ(two([](Bytes&) {}).size(), 2u);
  for (const uint32_t length : {0u, 4u, 55u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(two([length](Bytes& b) { Put(b, 0, length, 4); }).size(), 1u) << length;
  }
  EXPECT_EQ(two([](Bytes& b) { b.pop_back(); }).size(), 1u);
  EXPECT_EQ(two([](Bytes& b) { b.resize(3); }).size(), 1u);
  // An odd length is taken as it is; what follows then is no record.
  EXPECT_EQ(two([](Bytes& b) { Put(b, 0, b.size() - 1, 4); }).size(), 2u);
}

TEST(ClassicRecords, DamagedTexts) {
  const auto data = [](const std::function<void(Bytes&)>& damage) {
    Bytes bytes = Record().Packed();
    damage(bytes);
    Put(bytes, 0, bytes.size(), 4);
    return Walk(bytes).at(0);
  };
  EXPECT_EQ(data([](Bytes& b) { Put(b, 36, 0xFFFFFFFF, 4); }).data, L"");
  EXPECT_EQ(data([](Bytes& b) { Put(b, 36, b.size(), 4); }).data, L"");
  EXPECT_EQ(data([](Bytes& b) { Put(b, 26, 0xFFFF, 2); }).data, L"vguard.exe  64d1b2c3");
  EXPECT_EQ(data([](Bytes& b) { b.resize(b.size() - 2); }).data, L"vguard.exe  64d1b2c3");
  EXPECT_EQ(data([](Bytes& b) { b.resize(b.size() - 3); }).data, L"vguard.exe  64d1b2c");
  const EventRecord bare = data([](Bytes& b) {
    b.resize(56);
    Append(b, "Sou", false);
  });
  EXPECT_EQ(bare.provider, L"Sou");
  EXPECT_EQ(bare.computer, L"");
}

// A log in memory: each read gives the next answer.
struct Answer {
  Bytes records;
  uint32_t error = 0;  // not 0: the read fails
  uint32_t needed = 0;
};
struct FakeLog {
  std::vector<Answer> answers{};
  bool opens = true;
  std::wstring server{};
  size_t reads = 0;
  int closes = 0;
  std::vector<size_t> bufferSizes{};
};
FakeLog* fakeLog = nullptr;

const ClassicEventLogApi kFake = {
    .open = [](const wchar_t* server, const wchar_t* log) -> void* {
      EXPECT_EQ(server != nullptr ? server : std::wstring(), fakeLog->server);
      EXPECT_EQ(server == nullptr, fakeLog->server.empty());
      EXPECT_STREQ(log, L"Log");
      return fakeLog->opens ? fakeLog : nullptr;
    },
    .read =
        [](void*, uint32_t flags, uint32_t offset, void* buffer, uint32_t size, uint32_t* read,
           uint32_t* needed) {
          EXPECT_EQ(flags, 9u);
          EXPECT_EQ(offset, 0u);
          fakeLog->bufferSizes.push_back(size);
          const Answer& answer = fakeLog->answers.at(fakeLog->reads++);
          *needed = answer.needed;
          *read = static_cast<uint32_t>(answer.records.size());
          std::ranges::copy(answer.records, static_cast<std::byte*>(buffer));
          return answer.error == 0;
        },
    .close =
        [](void*) {
          ++fakeLog->closes;
          return true;
        },
    .lastError = [] { return fakeLog->opens ? fakeLog->answers[fakeLog->reads - 1].error : 2; },
    .errorText = [](uint32_t code) { return L"error " + std::to_wstring(code); }};

struct Reading {
  std::vector<uint32_t> ids;
  std::wstring error;
  int closes;
  ReadingEnd end;
};

Reading ReadAll(FakeLog& log, bool isOpen = true, size_t maxTaken = 100000) {
  fakeLog = &log;
  LegacyEventLogReader reader(log.server, isOpen, kFake);
  Reading reading;
  // A second passes each time the time is looked at.
  const TimeBudget budget([looks = 0]() mutable {
    return std::chrono::steady_clock::time_point(std::chrono::seconds(looks++));
  });
  reading.end =
      reader.ReadEvents(L"Log", EventIdFilter(1, 99), budget, [&](const EventRecord& record) {
        reading.ids.push_back(record.eventId);
        return reading.ids.size() < maxTaken;
      });
  reading.error = reader.LastError();
  reading.closes = log.closes;
  fakeLog = nullptr;
  return reading;
}

Bytes Records(std::initializer_list<uint32_t> ids) {
  Bytes bytes;
  for (const uint32_t id : ids) {
    const Bytes one = Record{.eventId = id}.Packed();
    bytes.insert(bytes.end(), one.begin(), one.end());
  }
  return bytes;
}

TEST(ClassicReader, KeepsTheOrderAndFilters) {
  FakeLog log{.answers = {{Records({9, 100, 8})}, {Records({7})}, {{}, 38}}};
  const Reading reading = ReadAll(log);
  EXPECT_THAT(reading.ids, ElementsAre(9, 8, 7));
  EXPECT_EQ(reading.error, L"");
  EXPECT_EQ(reading.closes, 1);
}

TEST(ClassicReader, LogWithoutEnd) {
  FakeLog log{.answers = std::vector<Answer>(1000, {Records({9, 8})})};
  const Reading reading = ReadAll(log);
  EXPECT_EQ(reading.end, ReadingEnd::kOutOfTime);
  EXPECT_EQ(reading.ids.size(), 2u * 299);  // one look before each read and one when it began
  EXPECT_EQ(reading.closes, 1);

  FakeLog again{.answers = std::vector<Answer>(1000, {Records({9, 8})})};
  EXPECT_THAT(ReadAll(again, true, 3).ids, ElementsAre(9, 8, 9));
  EXPECT_EQ(again.reads, 2u);
}

TEST(ClassicReader, EndsAndFailures) {
  FakeLog nothingRead{.answers = {{Records({5})}, {}}};
  EXPECT_THAT(ReadAll(nothingRead).ids, ElementsAre(5));

  FakeLog broken{.answers = {{Records({5})}, {{}, 87}}, .server = L"server"};
  Reading reading = ReadAll(broken);
  EXPECT_THAT(reading.ids, ElementsAre(5));
  EXPECT_EQ(reading.error, L"error 87");
  EXPECT_EQ(reading.closes, 1);

  FakeLog missing{.opens = false};
  reading = ReadAll(missing);
  EXPECT_EQ(reading.error, L"error 2");
  EXPECT_EQ(reading.closes, 0);
  EXPECT_EQ(ReadAll(missing, false).error, L"error 6");
}

TEST(ClassicReader, BufferGrowsOnDemandOnly) {
  FakeLog log{.answers = {{{}, 122, 70000}, {Records({5})}, {{}, 122, 0x80000}}};
  const Reading reading = ReadAll(log);
  EXPECT_THAT(reading.ids, ElementsAre(5));
  EXPECT_THAT(log.bufferSizes, ElementsAre(65536, 70000, 70000));
  EXPECT_EQ(reading.error, L"error 122");  // more than the system documents

  FakeLog again{.answers = {{{}, 122, 65536}}};  // would be asked for ever
  EXPECT_EQ(ReadAll(again).error, L"error 122");
}

}  // namespace
}  // namespace eventlog
