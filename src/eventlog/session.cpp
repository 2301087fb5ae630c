#include "eventlog/session.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "eventlog/render_record.h"
#include "eventlog/select_xpath.h"

namespace eventlog {
namespace {

constexpr uint32_t kInvalidHandle = 6;
constexpr uint32_t kInsufficientBuffer = 122;
constexpr uint32_t kRpcLogin = 1;
constexpr uint32_t kForwardAndTolerant = 0x1100;  // tolerates errors in the query's condition
constexpr uint32_t kNoTimeout = 0xFFFFFFFF;
constexpr size_t kBatch = 64;

// The vendor's EVT_RPC_LOGIN.
struct RpcLogin {
  const wchar_t* server;
  const wchar_t* user;
  const wchar_t* domain;
  const wchar_t* password;
  uint32_t flags;
};

// The next events, at most a batch; none at the end and on failure.
std::vector<EvtHandle> NextEvents(const EvtHandle& results, const EvtApi& api) {
  std::vector<EvtHandle> events;
  events.reserve(kBatch);  // before there are handles that a failure could lose
  std::array<void*, kBatch> handles{};
  uint32_t count = 0;
  if (!api.next(results.Get().value, kBatch, handles.data(), kNoTimeout, 0, &count)) {
    return events;
  }
  for (size_t i = 0; i < std::min<size_t>(count, kBatch); ++i) {
    events.emplace_back(EvtHandle::Handle{handles[i], &api});
  }
  return events;
}

// What is read of one query.
struct Query {
  const std::wstring& channel;
  void* context;  // of the rendering
  std::vector<const EventFilter*> inMemoryFilters;
  const EvtApi& api;
};

// The event as a record; nothing when it cannot be rendered or a filter keeps it back.
std::optional<EventRecord> Passing(const EvtHandle& event, const Query& query) {
  EventRecord record;
  record.channel = query.channel;
  if (RenderEventRecord(query.context, event.Get().value, record, query.api) &&
      std::ranges::all_of(query.inMemoryFilters,
                          [&record](const auto* filter) { return filter->Matches(record); })) {
    return record;
  }
  return std::nullopt;
}

ReadingEnd ReadResults(const EvtHandle& results, const Query& query, const TimeBudget& budget,
                       const RecordTaker& take) {
  while (!budget.IsSpent()) {
    auto events = NextEvents(results, query.api);
    if (events.empty()) {
      return ReadingEnd::kComplete;
    }
    for (EvtHandle& event : events) {
      auto record = Passing(event, query);
      if (record && !take(std::move(*record))) {
        return ReadingEnd::kStopped;
      }
      event.Reset();
    }
  }
  return ReadingEnd::kOutOfTime;
}

}  // namespace

EventLogSession::EventLogSession(const std::wstring& server, const EvtApi& functions)
    : api(functions) {
  if (server.empty()) {
    return;
  }
  RpcLogin login = {server.c_str(), nullptr, nullptr, nullptr, 0};
  session.Reset({api.openSession(kRpcLogin, &login, 0, 0), &api});
  isOpen = static_cast<bool>(session);
  if (!isOpen) {
    Fail(api.lastError());
  }
}

ReadingEnd EventLogSession::QueryEvents(const std::wstring& channel, const std::wstring& provider,
                                        const CompositeFilter& composite, const TimeBudget& budget,
                                        const RecordTaker& take) {
  if (!isOpen) {
    Fail(kInvalidHandle);
    return ReadingEnd::kComplete;
  }
  auto end = ReadingEnd::kComplete;
  if (!EnumerateChannels(budget, end).contains(channel)) {
    return end;
  }
  Query query = {channel, session.Get().value, {}, api};
  const auto document =
      BuildQueryDocument(channel, BuildSelectXPath(provider, composite, query.inMemoryFilters));
  if (!document) {
    Fail(kInsufficientBuffer);
    return ReadingEnd::kComplete;
  }
  const EvtHandle results(
      {api.query(query.context, nullptr, document->c_str(), kForwardAndTolerant), &api});
  if (!results) {
    Fail(api.lastError());
    return ReadingEnd::kComplete;
  }
  return ReadResults(results, query, budget, take);
}

std::set<std::wstring> EventLogSession::EnumerateChannels(const TimeBudget& budget,
                                                          ReadingEnd& end) const {
  std::set<std::wstring> channels;
  const EvtHandle enumeration({api.openChannelEnum(nullptr, 0), &api});
  std::array<wchar_t, 260> path{};
  uint32_t used = 0;
  for (size_t listed = 0;
       enumeration && api.nextChannelPath(enumeration.Get().value, path.size(), path.data(), &used);
       ++listed) {
    if (listed == kMaxChannels || budget.IsSpent()) {
      end = listed == kMaxChannels ? ReadingEnd::kTooManyChannels : ReadingEnd::kOutOfTime;
      break;
    }
    channels.emplace(path.begin(), std::ranges::find(path, L'\0'));
  }
  return channels;
}

}  // namespace eventlog
