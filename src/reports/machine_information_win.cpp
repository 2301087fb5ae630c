#include <utility>

#include "base/arithmetic.h"
#include "env/client_identity.h"
#include "env/customer_id.h"
#include "env/product_paths.h"
#include "env/product_version.h"
#include "env/report_schedule.h"
#include "env/signature_version.h"
#include "machine/system_facts.h"
#include "reports/machine_information.h"
#include "transport/fetch_packed_json.h"
#include "transport/report_url.h"

namespace ostrell {
namespace {

constexpr int32_t kStatusOk = 200;

ReportUrl<> MachineInformationUrl(const ProductVersionText& version, int64_t gap) {
  const auto system = QueryOperatingSystem().value_or(OperatingSystem{});
  const auto kernel = ReadKernelVersion().value_or(KernelVersion{});
  const auto signatures =
      NewestSignatureVersion(GetProductPaths().data.utf8.CStr(), Svclink::Loaded());
  return ReportUrl<>::Print(kMachineInformationUrl, ReportServerBaseUrl(), MachineIdentity().CStr(),
                            ReadCustomerId(), version.CStr(), signatures, system.family,
                            ProcessorClass(system.x64Processor, NativeMachine()),
                            static_cast<uint64_t>(gap), kernel.major, kernel.minor, kernel.build,
                            kernel.revision, ClientId().CStr());
}

}  // namespace

void MachineInformationJob(const Settings& settings, int64_t now, JsonOwner& answer) {
  const int64_t last = ReadLastReportTime(settings, kMachineInformationTime.key);
  const int64_t gap = WrappingDifference(now, last);
  if (SendMachineInformation(gap, &answer) == 1 && AdvancesMachineInformationTime(gap)) {
    WriteLastReportTime(settings, kMachineInformationTime.key, now);
  }
}

int32_t SendMachineInformation(int64_t gap, JsonOwner* answer) {
  ProductVersionText version;
  if (ReadProductVersion(version) == 0) {
    return 0;
  }
  const auto url = MachineInformationUrl(version, gap);
  int32_t status = 0;
  JsonOwner json = FetchPackedJson(url.CStr(), &status, Svclink::Loaded());
  if (!json || status != kStatusOk) {
    return 0;
  }
  if (answer != nullptr) {
    *answer = std::move(json);
  }
  return 1;
}

}  // namespace ostrell
