#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "env/product_version.h"
#include "env/run.h"

namespace ostrell {

// Where the unified report takes the client fields from; operations in slot order. Text is UTF-8
// and lives as long as the provider; the product version's text changes with the next call.
class IClientIdProvider {
 public:
  virtual const char* MachineId() = 0;
  virtual const char* ClientId() = 0;
  virtual uint32_t CustomerId() = 0;
  virtual uint32_t SystemCode(int32_t ignored) = 0;
  virtual uint32_t ProcessorClass(int32_t ignored) = 0;
  virtual const char* ProductVersion() = 0;  // empty when the text is invalid
  virtual uint64_t SignatureVersion() = 0;
  // False when the kernel's version cannot be read; the outputs are then untouched.
  virtual bool KernelVersion(uint32_t* major, uint32_t* minor, uint32_t* build,
                             uint32_t* revision) = 0;
  // "ReportLink", or else the report server base URL followed by "/v8"; found on the first call.
  virtual const char* ReportBaseUrl() = 0;
  virtual ~IClientIdProvider() = default;
};

// Asks the machine and the product through the run, which outlives it.
class DefaultClientIdProvider : public IClientIdProvider {
 public:
  explicit DefaultClientIdProvider(const Run& reportRun) : run(reportRun) {}

  const char* MachineId() override;
  const char* ClientId() override;
  uint32_t CustomerId() override;
  uint32_t SystemCode(int32_t ignored) override;
  uint32_t ProcessorClass(int32_t ignored) override;
  const char* ProductVersion() override;
  uint64_t SignatureVersion() override;
  bool KernelVersion(uint32_t* major, uint32_t* minor, uint32_t* build,
                     uint32_t* revision) override;
  const char* ReportBaseUrl() override;

 private:
  const Run& run;
  ProductVersionText version;
  std::optional<std::string> reportBaseUrl;
};

}  // namespace ostrell
