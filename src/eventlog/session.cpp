#include "eventlog/session.h"

#include <algorithm>
#include <array>
#include <utility>

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

std::vector<EventRecord> EventLogSession::QueryEvents(const std::wstring& channel,
                                                      const std::wstring& provider,
                                                      const CompositeFilter& composite) {
  if (!isOpen) {
    Fail(kInvalidHandle);
    return {};
  }
  if (!EnumerateChannels().contains(channel)) {
    return {};
  }
  std::vector<const EventFilter*> inMemoryFilters;
  const auto document =
      BuildQueryDocument(channel, BuildSelectXPath(provider, composite, inMemoryFilters));
  if (!document) {
    Fail(kInsufficientBuffer);
    return {};
  }
  void* const context = session.Get().value;
  const EvtHandle results(
      {api.query(context, nullptr, document->c_str(), kForwardAndTolerant), &api});
  if (!results) {
    Fail(api.lastError());
    return {};
  }
  std::vector<EventRecord> records;
  for (auto events = NextEvents(results, api); !events.empty(); events = NextEvents(results, api)) {
    for (EvtHandle& event : events) {
      EventRecord record;
      record.channel = channel;
      if (RenderEventRecord(context, event.Get().value, record, api) &&
          std::ranges::all_of(inMemoryFilters,
                              [&record](const auto* filter) { return filter->Matches(record); })) {
        records.push_back(std::move(record));
      }
      event.Reset();
    }
  }
  return records;
}

std::set<std::wstring> EventLogSession::EnumerateChannels() const {
  std::set<std::wstring> channels;
  const EvtHandle enumeration({api.openChannelEnum(nullptr, 0), &api});
  std::array<wchar_t, 260> path{};
  uint32_t used = 0;
  while (enumeration &&
         api.nextChannelPath(enumeration.Get().value, path.size(), path.data(), &used)) {
    channels.emplace(path.begin(), std::ranges::find(path, L'\0'));
  }
  return channels;
}

}  // namespace eventlog
