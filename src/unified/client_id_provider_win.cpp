#include <string>

#include "env/client_identity.h"
#include "env/customer_id.h"
#include "env/product_paths.h"
#include "env/product_version.h"
#include "env/report_settings.h"
#include "env/signature_version.h"
#include "machine/system_facts.h"
#include "transport/report_url.h"
#include "unified/client_id_provider.h"

namespace ostrell {

const char* DefaultClientIdProvider::MachineId() {
  return MachineIdentity().CStr();
}

const char* DefaultClientIdProvider::ClientId() {
  return ostrell::ClientId().CStr();
}

uint32_t DefaultClientIdProvider::CustomerId() {
  return ReadCustomerId();
}

uint32_t DefaultClientIdProvider::SystemCode(int32_t /*ignored*/) {
  const auto system = QueryOperatingSystem();
  return system ? system->family : 0;
}

uint32_t DefaultClientIdProvider::ProcessorClass(int32_t /*ignored*/) {
  const auto system = QueryOperatingSystem();
  return ostrell::ProcessorClass(system && system->x64Processor, NativeMachine());
}

const char* DefaultClientIdProvider::ProductVersion() {
  static ProductVersionText text;
  ProductVersionText read;
  text = ReadProductVersion(read) != 0 ? read : ProductVersionText();
  return text.CStr();
}

uint64_t DefaultClientIdProvider::SignatureVersion() {
  return NewestSignatureVersion(GetProductPaths().data.utf8.CStr(), Svclink::Loaded());
}

bool DefaultClientIdProvider::KernelVersion(uint32_t* major, uint32_t* minor, uint32_t* build,
                                            uint32_t* revision) {
  const auto version = ReadKernelVersion();
  if (!version) {
    return false;
  }
  *major = version->major;
  *minor = version->minor;
  *build = version->build;
  *revision = version->revision;
  return true;
}

const char* DefaultClientIdProvider::ReportBaseUrl() {
  static const std::string url = [] {
    std::string link = ReadReportLink();
    return link.empty() ? std::string(ReportServerBaseUrl()) + "/v8" : link;
  }();
  return url.c_str();
}

}  // namespace ostrell
