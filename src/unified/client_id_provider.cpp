#include "unified/client_id_provider.h"

#include "env/customer_id.h"
#include "env/report_settings.h"
#include "env/signature_version.h"

namespace ostrell {

const char* DefaultClientIdProvider::MachineId() {
  return run.machineIdentity;
}

const char* DefaultClientIdProvider::ClientId() {
  return run.clientId;
}

uint32_t DefaultClientIdProvider::CustomerId() {
  return ReadCustomerId(run);
}

uint32_t DefaultClientIdProvider::SystemCode(int32_t /*ignored*/) {
  const auto system = run.system.QueryOperatingSystem();
  return system ? system->family : 0;
}

uint32_t DefaultClientIdProvider::ProcessorClass(int32_t /*ignored*/) {
  const auto system = run.system.QueryOperatingSystem();
  return ostrell::ProcessorClass(system && system->x64Processor, run.system.NativeMachine());
}

const char* DefaultClientIdProvider::ProductVersion() {
  if (ReadProductVersion(run, version) == 0) {
    version = {};
  }
  return version.CStr();
}

uint64_t DefaultClientIdProvider::SignatureVersion() {
  return NewestSignatureVersion(run.paths.data.utf8.View(), run.svclink);
}

bool DefaultClientIdProvider::KernelVersion(uint32_t* major, uint32_t* minor, uint32_t* build,
                                            uint32_t* revision) {
  const auto kernel = run.system.ReadKernelVersion();
  if (!kernel) {
    return false;
  }
  *major = kernel->major;
  *minor = kernel->minor;
  *build = kernel->build;
  *revision = kernel->revision;
  return true;
}

const char* DefaultClientIdProvider::ReportBaseUrl() {
  if (!reportBaseUrl) {
    const std::string link = ReadReportLink(run.registry);
    reportBaseUrl = link.empty() ? std::string(run.baseUrl) + "/v8" : link;
  }
  return reportBaseUrl->c_str();
}

}  // namespace ostrell
