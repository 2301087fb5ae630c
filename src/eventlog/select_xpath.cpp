#include "eventlog/select_xpath.h"

#include "base/print.h"

namespace eventlog {
namespace {

// The text of a filter of the builder's own class; false when it is of another class or gives none.
using FragmentBuilder = bool (*)(const EventFilter& filter, std::wstring& fragment);

// A bound that is no calendar time gives zeros.
std::wstring Stamp(uint64_t ticks) {
  const ostrell::SystemTime utc =
      ostrell::SystemTimeFromTicks(ticks).value_or(ostrell::SystemTime{});
  return ostrell::Print(L"%04d-%02d-%02dT%02d:%02d:%02d.000000Z", utc.year, utc.month, utc.day,
                        utc.hour, utc.minute, utc.second);
}

bool BuildTimeRange(const EventFilter& filter, std::wstring& fragment) {
  const auto* range = dynamic_cast<const TimeRangeFilter*>(&filter);
  if (range == nullptr) {
    return false;
  }
  if (range->hasFrom) {
    fragment += L" TimeCreated/@SystemTime &gt;= '" + Stamp(range->from) + L"'";
  }
  if (range->hasTo) {
    fragment += L" and TimeCreated/@SystemTime &lt;= '" + Stamp(range->to) + L"'";
  }
  return !fragment.empty();
}

bool BuildEventId(const EventFilter& filter, std::wstring& fragment) {
  const auto* id = dynamic_cast<const EventIdFilter*>(&filter);
  if (id == nullptr) {
    return false;
  }
  if (id->useList && !id->ids.empty()) {
    for (const uint32_t one : id->ids) {
      fragment += (fragment.empty() ? L"EventID=" : L" or EventID=") + std::to_wstring(one);
    }
    return true;
  }
  if (id->minId != 0) {
    fragment += L" EventID &gt;= " + std::to_wstring(id->minId);
  }
  if (id->maxId != 0) {
    fragment += L" and EventID &lt;= " + std::to_wstring(id->maxId);
  }
  return !fragment.empty();
}

bool BuildLevel(const EventFilter& filter, std::wstring& fragment) {
  const auto* level = dynamic_cast<const LevelFilter*>(&filter);
  if (level == nullptr) {
    return false;
  }
  for (const uint32_t one : level->levels) {
    if (one != 0) {
      fragment += (fragment.empty() ? L"Level=" : L" or Level=") + std::to_wstring(one);
    }
  }
  return !fragment.empty();
}

constexpr FragmentBuilder kFragmentBuilders[] = {BuildTimeRange, BuildEventId, BuildLevel, nullptr};

// Empty when no builder can express the filter.
std::wstring FragmentOf(const EventFilter& filter) {
  for (const FragmentBuilder* builder = kFragmentBuilders; *builder != nullptr; ++builder) {
    std::wstring fragment;
    if ((*builder)(filter, fragment)) {
      return fragment;
    }
  }
  return {};
}

}  // namespace

std::wstring BuildSelectXPath(const std::wstring& provider, const CompositeFilter& composite,
                              std::vector<const EventFilter*>& inMemoryFilters) {
  std::wstring condition;
  if (!provider.empty()) {
    condition = L"(Provider/@Name='" + provider + L"')";
  }
  for (const auto& child : composite.children) {
    const std::wstring fragment = FragmentOf(*child);
    if (fragment.empty()) {
      inMemoryFilters.push_back(child.get());
    } else {
      condition += (condition.empty() ? L"(" : L" and (") + fragment + L")";
    }
  }
  return condition;
}

std::optional<std::wstring> BuildQueryDocument(const std::wstring& channel,
                                               const std::wstring& condition) {
  constexpr size_t kSize = 4096;
  const std::wstring select = condition.empty() ? L"" : L"[System[" + condition + L"]]";
  std::wstring document = ostrell::Print(
      L"\n<QueryList>\n  <Query Id=\"0\" Path=\"%s\">\n    <Select Path=\"%s\">*%s</Select>\n"
      L"  </Query>\n</QueryList>\n",
      channel, channel, select);
  return document.size() < kSize ? std::optional(std::move(document)) : std::nullopt;
}

}  // namespace eventlog
