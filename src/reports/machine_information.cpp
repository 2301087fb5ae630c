#include "reports/machine_information.h"

#include <utility>

#include "base/calendar.h"
#include "env/customer_id.h"
#include "env/product_version.h"
#include "env/report_schedule.h"
#include "env/signature_version.h"
#include "reports/windowed_report.h"
#include "transport/fetch_packed_json.h"

namespace ostrell {
namespace {

constexpr int32_t kStatusOk = 200;

MachineInformation Gather(const Run& run, const ProductVersionText& version, int64_t gap) {
  const auto system = run.system.QueryOperatingSystem().value_or(OperatingSystem{});
  const auto kernel = run.system.ReadKernelVersion().value_or(KernelVersion{});
  return {.customerId = ReadCustomerId(run),
          .productVersion = version.View(),
          .signatureVersion = NewestSignatureVersion(run.paths.data.utf8.View(), run.svclink),
          .systemFamily = system.family,
          .processorClass = ProcessorClass(system.x64Processor, run.system.NativeMachine()),
          .secondsSinceLastReport = static_cast<uint64_t>(gap),
          .kernelMajor = kernel.major,
          .kernelMinor = kernel.minor,
          .kernelBuild = kernel.build,
          .kernelRevision = kernel.revision};
}

}  // namespace

void MachineInformationJob(const Run& run, JsonOwner& answer) {
  const int64_t last = ReadLastReportTime(run.settings, kMachineInformationTime.key);
  const int64_t gap = WrappingDifference(run.now, last);
  if (SendMachineInformation(run, gap, &answer) == 1 && AdvancesMachineInformationTime(gap)) {
    WriteLastReportTime(run.settings, kMachineInformationTime.key, run.now);
  }
}

int32_t SendMachineInformation(const Run& run, int64_t gap, JsonOwner* answer) {
  ProductVersionText version;
  if (ReadProductVersion(run, version) == 0) {
    return 0;
  }
  const auto url = MachineInformationUrl(OriginOf(run), Gather(run, version, gap));
  int32_t status = 0;
  JsonOwner json = FetchPackedJson(url.CStr(), &status, run.svclink);
  if (!json || status != kStatusOk) {
    return 0;
  }
  if (answer != nullptr) {
    *answer = std::move(json);
  }
  return 1;
}

}  // namespace ostrell
