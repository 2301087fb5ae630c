#include "unified/unified_report.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "base/calendar.h"
#include "base/json_array_text.h"
#include "base/json_memory.h"
#include "env/report_schedule.h"
#include "env/report_settings.h"
#include "transport/report_url.h"
#include "transport/upload_report.h"
#include "unified/dump_files.h"
#include "unified/event_logs.h"
#include "unified/log_stats.h"

namespace ostrell {
namespace {

constexpr auto kOperation = "post_unified_report";

// In the order of the report; each takes the start of the period.
constexpr std::array kCollectors = {&collect_dump_files, &collect_log_stats, &collect_event_logs};

int64_t LastReport(const Run& run) {
  return ReadLastReportTime(run.settings, kUnifiedReportTime.key);
}

// What one collector finds. One that runs out of memory finds nothing, and the others still report.
JsonOwner Collect(JsonOwner (*collector)(const Run&, int64_t), const Run& run, int64_t tmStart) {
  try {
    const JsonMemoryWatch memory;
    JsonOwner items = collector(run, tmStart);
    return memory.WasRefused() ? JsonOwner() : std::move(items);
  } catch (const std::exception&) {
    return {};
  }
}

// All collectors run before the first result is merged.
void AppendCollected(const Run& run, int64_t tmStart, json_t* unified) {
  std::array<JsonOwner, kCollectors.size()> collected;
  std::ranges::transform(kCollectors, collected.begin(),
                         [&](auto collector) { return Collect(collector, run, tmStart); });
  for (JsonOwner& items : collected) {
    json_array_extend(unified, items.Get());
    items.Reset();
  }
}

ReportUrl<> UrlOf(IClientIdProvider& provider) {
  const ReportOrigin origin{.baseUrl = provider.ReportBaseUrl(),
                            .machineIdentity = provider.MachineId(),
                            .clientId = provider.ClientId()};
  return UnifiedReportUrl(origin, static_cast<int32_t>(provider.CustomerId()),
                          provider.SystemCode(0), provider.ProcessorClass(0));
}

std::optional<std::string> TextOf(JsonOwner items) {
  JsonArrayText text;
  for (const json_t* const item : Elements(items.Get())) {
    text.Add(item);
  }
  return text.Take();
}

// Adds what is common to all items and uploads the array, which is released before. Returns the
// upload's result, 0 on any failure.
int32_t Send(const Run& run, JsonOwner unified, IClientIdProvider& provider) {
  const size_t count = json_array_size(unified.Get());
  const JsonMemoryWatch memory;
  add_common_fields_to_unified_array(run, unified.Get(), provider,
                                     WrappingDifference(run.now, LastReport(run)));
  const auto body = TextOf(std::move(unified));
  if (!body || memory.WasRefused()) {
    TraceLogger(run.traceLog, kOperation)(L"json_dumps failed for unified report array");
    return 0;
  }
  const int32_t result =
      UploadReport(UrlOf(provider).CStr(), body->data(), static_cast<uint32_t>(body->size()));
  TraceLogger(run.traceLog, kOperation)(L"Unified report completed: %u items, result=%d", count,
                                        result);
  return result;
}

}  // namespace

bool post_unified_report(const Run& run, IClientIdProvider& provider) {
  const int64_t last = LastReport(run);
  const int64_t interval = ReadMinReportInterval(run.registry);
  TraceLogger(run.traceLog, kOperation)(L"Unified report minimum interval: %lld seconds", interval);
  const int64_t start = std::max(WrappingDifference(run.now, kLookBack), last);
  TraceLogger(run.traceLog, kOperation)(
      L"Start unified reporting: tm_now=%lld, earliest_last_report=%lld, tm_start=%lld", run.now,
      last, start);
  cleanup_old_dump_files(run, run.now);

  if (!IsDue({kUnifiedReportTime.key, kUnifiedReportTime.test, interval}, {last, start}, run.now)) {
    TraceLogger(run.traceLog, kOperation)(
        L"Time interval not exceeded (%lld < %lld), skip unified reporting",
        WrappingDifference(run.now, last), interval);
    return false;
  }
  JsonOwner unified(json_array());
  if (!unified) {
    TraceLogger(run.traceLog, kOperation)(L"Failed to create unified JSON array, exit");
    return false;
  }
  AppendCollected(run, start, unified.Get());
  const size_t count = json_array_size(unified.Get());
  if (count == 0) {
    TraceLogger(run.traceLog, kOperation)(L"No items to report in unified report, exit");
    return false;
  }
  TraceLogger(run.traceLog, kOperation)(L"Collected %u total items for unified reporting", count);
  if (Send(run, std::move(unified), provider) == 0) {
    return false;
  }
  WriteLastReportTime(run.settings, kUnifiedReportTime.key, run.now);
  return true;
}

void add_common_fields_to_unified_array(const Run& run, json_t* array, IClientIdProvider& provider,
                                        int64_t secondsSinceLastReport) {
  const size_t count = json_array_size(array);
  if (count == 0) {
    return;
  }
  uint32_t major = 0;
  uint32_t minor = 0;
  uint32_t build = 0;
  uint32_t revision = 0;
  const char* const machineId = provider.MachineId();
  const auto customerId = static_cast<int32_t>(provider.CustomerId());
  JsonOwner fields(json_object());
  const auto set = [&fields](const char* key, json_t* value) {
    json_object_set_new(fields.Get(), key, value);
  };
  set("u", json_string(machineId));
  set("c", json_integer(customerId));
  set("v", json_string(provider.ProductVersion()));
  set("d", json_integer(static_cast<json_int_t>(provider.SignatureVersion())));
  set("s", json_integer(provider.SystemCode(0)));
  set("x", json_integer(provider.ProcessorClass(0)));
  provider.KernelVersion(&major, &minor, &build, &revision);
  set("ma", json_integer(major));
  set("mi", json_integer(minor));
  set("bu", json_integer(build));
  set("re", json_integer(revision));
  set("r", json_integer(secondsSinceLastReport));

  for (json_t* const item : Elements(array)) {
    json_object_update(item, fields.Get());
  }
  TraceLogger(run.traceLog, "add_common_fields_to_unified_array")(
      L"Added common fields to all %u items", count);
}

}  // namespace ostrell
