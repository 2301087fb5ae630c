#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "base/text.h"
#include "env/run.h"
#include "eventlog/apis.h"
#include "tests/support/fake_event_log.h"
#include "tests/support/fake_files.h"
#include "tests/support/fake_machine.h"
#include "tests/support/fake_policydb.h"
#include "tests/support/fake_settings_store.h"
#include "tests/support/fake_svclink.h"
#include "tests/support/outside_call.h"

namespace ostrell {

// A machine and a product in memory, on which jobs run; one at a time. Its paths are below
// "C:\\Corvane" and its event log is empty.
class FakeRun {
 public:
  static constexpr int64_t kNow = 1795565520;  // 2026-11-25 00:12:00 UTC

  FakeRun() {
    current = this;
    paths.install.wide = WidePathText(L"C:\\Corvane\\");
    paths.data.wide = WidePathText(L"C:\\Corvane\\data\\");
    paths.data.utf8 = PathText("C:\\Corvane\\data\\");
    files.entries[L"C:\\Corvane\\VERSION"].content = "6.0.3.27";
  }
  ~FakeRun() { current = nullptr; }
  FakeRun(const FakeRun&) = delete;
  FakeRun& operator=(const FakeRun&) = delete;

  // Refers to the members below; they may change afterwards.
  Run Get() const {
    return {.settings = settings,
            .now = now,
            .baseUrl = baseUrl.c_str(),
            .machineIdentity = machineIdentity.c_str(),
            .clientId = clientId.c_str(),
            .paths = paths,
            .policydb = policydbLibrary,
            .svclink = svclinkLibrary,
            .traceLog = traceLog,
            .files = files,
            .registry = registry,
            .system = facts,
            .clock = clock,
            .eventLog = eventLog};
  }

  int64_t now = kNow;
  std::string baseUrl = "https://127.0.0.1:1";  // refuses
  std::string machineIdentity = "0123456789ABCDEF0123456789ABCDEF00000000";
  std::string clientId = "0F8FAD5B-D9CB-469F-A165-70867728950E";
  ProductPaths paths;
  FakeSettingsStore store;
  Settings settings = store.Hold();
  FakePolicyDb policydb;
  FakeSvclink svclink;
  FakeFiles files;
  FakeRegistry registry;
  FakeFacts facts;
  FakeClock clock{kNow};
  FakeEventLog events;
  eventlog::EventLogApis eventLog{.modern = FakeEventLog::Modern,
                                  .classic = FakeEventLog::Classic,
                                  .clock = [] { return std::chrono::steady_clock::time_point(); }};

  // What was logged: "operation text".
  std::vector<std::string> messages;

 private:
  static inline FakeRun* current = nullptr;

  static void Log(const char* operation, int32_t line, int32_t level, const wchar_t* text) {
    const OutsideCall call(0);
    const char* const odd = line > 0 && level == 1 ? "" : "odd line or level ";
    current->messages.push_back(odd + std::string(operation) + " " + Utf8FromWide(text));
  }
  PolicyDb policydbLibrary = policydb.Library();
  Svclink svclinkLibrary = svclink.Library();
  TraceLog traceLog{TraceLogEntries{.write = Log}};
};

}  // namespace ostrell
