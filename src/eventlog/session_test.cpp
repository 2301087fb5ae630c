#include "eventlog/session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <stdexcept>

namespace eventlog {
namespace {

// An event log service in memory. Calls fail by their name's turn; every handle given out must come
// back once.
struct FakeService {
  std::vector<std::wstring> channels = {L"Application", L"System"};
  std::vector<std::wstring> events;  // as XML; an empty one cannot be rendered
  std::string failing;               // the call that fails
  bool rendersLess = false;          // less the second time than it announced
  uint32_t announced = 0;            // another size of a rendering than the true one
  bool succeedsAtEnd = false;        // the read past the last event gives none and succeeds

  bool isEndless = false;           // the first event comes again and again
  bool channelsAreEndless = false;  // and the first channel

  void* session = nullptr;
  std::wstring document;
  size_t nextChannel = 0;
  size_t nextEvent = 0;
  uint32_t largestBatch = 0;
  std::map<uintptr_t, int> closed;  // times by handle
  uintptr_t lastHandle = 0;
  std::map<uintptr_t, size_t> eventOf;

  void* Give(const char* call) {
    if (failing == call) {
      return nullptr;
    }
    closed[++lastHandle] = 0;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is a number
    return reinterpret_cast<void*>(lastHandle);
  }
  bool EveryHandleClosedOnce() const {
    return std::ranges::all_of(closed, [](const auto& entry) { return entry.second == 1; });
  }
};

FakeService* service = nullptr;

bool FakeNext(void*, uint32_t size, void** handles, uint32_t timeout, uint32_t,
              uint32_t* returned) {
  EXPECT_EQ(timeout, 0xFFFFFFFFu);
  service->largestBatch = std::max(service->largestBatch, size);
  *returned = 0;
  if (service->failing == "EvtNext" && service->nextEvent > 0) {
    return false;
  }
  while (*returned < size && service->nextEvent < service->events.size()) {
    handles[*returned] = service->Give("an event");
    service->eventOf[service->lastHandle] = service->nextEvent;
    service->nextEvent += service->isEndless ? 0 : 1;
    ++*returned;
  }
  return *returned > 0 || service->succeedsAtEnd;
}

bool FakeRender(void* context, void* event, uint32_t flags, uint32_t bytes, void* buffer,
                uint32_t* used, uint32_t*) {
  EXPECT_EQ(context, service->session);
  EXPECT_EQ(flags, 1u);
  const std::wstring& xml = service->events[service->eventOf[reinterpret_cast<uintptr_t>(event)]];
  *used = service->announced != 0 ? service->announced
                                  : static_cast<uint32_t>(xml.empty() ? 0 : 2 * xml.size() + 2);
  if (buffer == nullptr || service->failing == "EvtRender") {
    return false;
  }
  EXPECT_EQ(bytes, 2 * *used);
  const size_t length = service->rendersLess ? xml.size() / 2 : xml.size();
  std::copy_n(xml.c_str(), length, static_cast<wchar_t*>(buffer));
  return true;
}

const EvtApi kFake = {
    .openSession =
        [](uint32_t loginClass, void* login, uint32_t, uint32_t) {
          EXPECT_EQ(loginClass, 1u);
          const wchar_t* names[4];  // server, user, domain, password
          std::memcpy(names, login, sizeof(names));
          EXPECT_STREQ(names[0], L"server");
          EXPECT_EQ(std::count(names + 1, names + 4, nullptr), 3);
          return service->session = service->Give("EvtOpenSession");
        },
    .query =
        [](void* session, const wchar_t* path, const wchar_t* text, uint32_t flags) {
          EXPECT_EQ(session, service->session);
          EXPECT_EQ(path, nullptr);
          EXPECT_EQ(flags, 0x1100u);
          service->document = text;
          return service->Give("EvtQuery");
        },
    .next = FakeNext,
    .render = FakeRender,
    .close =
        [](void* handle) {
          ++service->closed.at(reinterpret_cast<uintptr_t>(handle));
          return true;
        },
    .openChannelEnum =
        [](void* session, uint32_t) {
          EXPECT_EQ(session, nullptr);  // channels of this computer
          service->nextChannel = 0;
          return service->Give("EvtOpenChannelEnum");
        },
    .nextChannelPath =
        [](void*, uint32_t size, wchar_t* buffer, uint32_t*) {
          if (service->nextChannel == service->channels.size()) {
            return false;
          }
          const std::wstring& channel = service->channels[service->nextChannel];
          service->nextChannel += service->channelsAreEndless ? 0 : 1;
          if (channel.size() >= size) {
            return false;
          }
          std::copy_n(channel.c_str(), channel.size() + 1, buffer);
          return true;
        },
    .lastError = [] { return uint32_t{5}; },
    .errorText = [](uint32_t code) { return L"error " + std::to_wstring(code); }};

std::wstring Event(int id) {
  return L"<EventID>" + std::to_wstring(id) + L"</EventID>";
}

class SessionTest : public testing::Test {
 protected:
  void SetUp() override { service = &fake; }
  void TearDown() override {
    EXPECT_TRUE(fake.EveryHandleClosedOnce());
    service = nullptr;
  }

  std::vector<EventRecord> Query(const std::wstring& server = L"") {
    EventLogSession session(server, kFake);
    std::vector<EventRecord> records;
    end = session.QueryEvents(L"System", L"P", filter, TimeBudget(clock), [&](EventRecord record) {
      records.push_back(std::move(record));
      return records.size() < maxTaken;
    });
    lastError = session.LastError();
    return records;
  }

  FakeService fake;
  CompositeFilter filter;
  TimeBudget::Clock clock = [] { return std::chrono::steady_clock::time_point(); };
  size_t maxTaken = 1000000;
  ReadingEnd end{};
  std::wstring lastError;
};

TEST_F(SessionTest, RecordsInTheOrderOfTheService) {
  for (int id = 1; id <= 150; ++id) {
    fake.events.push_back(Event(id));
  }
  fake.events[7].clear();  // cannot be rendered
  filter.Add(std::make_unique<CustomFilter>(
      [](const EventRecord& record) { return record.eventId % 2 == 0; }));
  const auto records = Query();
  ASSERT_EQ(records.size(), 74u);
  EXPECT_EQ(records[0].eventId, 2u);
  EXPECT_EQ(records[3].eventId, 10u);
  EXPECT_EQ(records[73].eventId, 150u);
  EXPECT_EQ(records[0].channel, L"System");
  EXPECT_EQ(fake.largestBatch, 64u);
  EXPECT_EQ(lastError, L"");
  EXPECT_NE(fake.document.find(L"*[System[(Provider/@Name='P')]]"), std::wstring::npos);
}

TEST_F(SessionTest, FailureAtAnyCall) {
  const struct {
    const char* call;
    const wchar_t* error;
    size_t records;
  } cases[] = {
      {"", L"", 70},         {"EvtOpenSession", L"error 6", 0}, {"EvtQuery", L"error 5", 0},
      {"EvtNext", L"", 64},  // at the second batch
      {"EvtRender", L"", 0}, {"EvtOpenChannelEnum", L"", 0}};
  for (const auto& c : cases) {
    fake = FakeService();
    fake.events.assign(70, Event(1));
    fake.failing = c.call;
    EXPECT_EQ(Query(L"server").size(), c.records) << c.call;
    EXPECT_EQ(lastError, c.error) << c.call;
    EXPECT_TRUE(fake.EveryHandleClosedOnce()) << c.call;
  }
}

TEST_F(SessionTest, BatchWithoutEventsIsTheEnd) {
  fake.events = {Event(1)};
  fake.succeedsAtEnd = true;
  EXPECT_EQ(Query().size(), 1u);
}

TEST_F(SessionTest, ThrowClosesEveryHandle) {
  for (int id = 1; id <= 70; ++id) {
    fake.events.push_back(Event(id));
  }
  fake.events[65] = L"<EventID>none</EventID>";
  EXPECT_THROW(Query(L"server"), std::invalid_argument);
  EXPECT_EQ(fake.closed.size(), 73u);  // session, channels, results, 70 events
}

TEST_F(SessionTest, ChannelsAreKnownByTheirExactNames) {
  fake.events = {Event(1)};
  fake.channels = {L"system", L"Systems"};
  EXPECT_TRUE(Query().empty());
  EXPECT_EQ(lastError, L"");
  fake.channels = {L"A", std::wstring(260, L'x'), L"System"};  // the long one ends the list
  EXPECT_TRUE(Query().empty());
  fake.channels = {std::wstring(259, L'x'), L"System"};
  EXPECT_EQ(Query().size(), 1u);
}

// A second passes each time the time is looked at, first when the reading begins.
TimeBudget::Clock SecondByLook() {
  return [looks = 0]() mutable {
    return std::chrono::steady_clock::time_point(std::chrono::seconds(looks++));
  };
}

TEST_F(SessionTest, ReadingEndsWhenItsTimeIsSpent) {
  fake.isEndless = true;
  fake.events = {Event(1)};
  clock = SecondByLook();
  // Two looks at the listing of two channels, 297 before a batch each, and one that ends it.
  EXPECT_EQ(Query().size(), 64u * 297);
  EXPECT_EQ(end, ReadingEnd::kOutOfTime);
  EXPECT_EQ(lastError, L"");
}

TEST_F(SessionTest, ReadingEndsWhenTheTakerSaysSo) {
  fake.isEndless = true;
  fake.events = {Event(1)};
  maxTaken = 100;
  EXPECT_EQ(Query().size(), 100u);
  EXPECT_EQ(end, ReadingEnd::kStopped);
}

TEST_F(SessionTest, ListOfChannelsEnds) {
  fake.events = {Event(1)};
  fake.channels = {L"Other"};
  fake.channelsAreEndless = true;
  EXPECT_TRUE(Query().empty());
  EXPECT_EQ(end, ReadingEnd::kTooManyChannels);
  clock = SecondByLook();
  EXPECT_TRUE(Query().empty());
  EXPECT_EQ(end, ReadingEnd::kOutOfTime);

  clock = [] { return std::chrono::steady_clock::time_point(); };
  fake.channelsAreEndless = false;
  fake.channels.assign(65535, L"Other");
  fake.channels.emplace_back(L"System");
  EXPECT_EQ(Query().size(), 1u);
  fake.nextEvent = 0;
  fake.channels.insert(fake.channels.begin(), L"Other");
  EXPECT_TRUE(Query().empty());
  EXPECT_EQ(end, ReadingEnd::kTooManyChannels);
  fake.channels.assign(65536, L"Other");
  Query();
  EXPECT_EQ(end, ReadingEnd::kComplete);
}

TEST_F(SessionTest, QueryThatDoesNotFitIsNotRun) {
  EventLogSession session(L"", kFake);
  session.QueryEvents(L"System", std::wstring(4000, L'p'), filter, TimeBudget(clock), {});
  EXPECT_EQ(session.LastError(), L"error 122");
  EXPECT_EQ(fake.document, L"");
}

TEST_F(SessionTest, RenderingOfAnotherSize) {
  fake.events = {Event(12345)};
  fake.rendersLess = true;
  EXPECT_EQ(Query().size(), 1u);  // a text cut short, in which nothing is found
  fake.rendersLess = false;
  fake.nextEvent = 0;
  fake.announced = (16u << 20) + 1;
  EXPECT_TRUE(Query().empty());
}

}  // namespace
}  // namespace eventlog
