#pragma once

#include <cstdint>

#include "base/files.h"
#include "base/registry.h"
#include "env/product_paths.h"
#include "env/report_clock.h"
#include "env/settings.h"
#include "machine/system_facts.h"
#include "platform/policydb.h"
#include "platform/svclink.h"
#include "platform/tracelog.h"

namespace eventlog {
struct EventLogApis;  // eventlog/apis.h
}

namespace ostrell {

// One run of the report jobs: all that they know and all through which they touch the machine, but
// for the report server. The driver fills one and hands it to each job; whoever runs a job with
// another installation, clock or server fills another. Everything outlives the run; texts are
// terminated.
struct Run {
  const Settings& settings;
  int64_t now;  // of ReportClock, once for the whole run: every job measures and records with it

  const char* baseUrl;          // scheme and host of the report server, without a path
  const char* machineIdentity;  // query key "u"
  const char* clientId;         // query key "regid"
  const ProductPaths& paths;

  const PolicyDb& policydb;
  const Svclink& svclink;
  const TraceLog& traceLog;

  const Files& files;
  const Registry& registry;
  const SystemFacts& system;
  const Clock& clock;
  const eventlog::EventLogApis& eventLog;
};

}  // namespace ostrell
