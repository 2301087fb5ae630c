#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "env/run.h"

namespace ostrell {

// The report server keeps one copy of a sample and knows it by the SHA-1 of the file.

// A sample is sent only when its size in bytes lies in this range.
inline constexpr uint64_t kMinSampleBytes = 1024;
inline constexpr uint64_t kMaxSampleBytes = 5242880;

constexpr bool IsSampleSize(uint64_t size) {
  return size >= kMinSampleBytes && size <= kMaxSampleBytes;
}

enum class SampleSource : int32_t { kQuarantine = 1, kDisk = 2 };

// SHA-1 (FIPS 180-4) as 40 upper-case hexadecimal digits.
std::string SampleDigest(std::span<const std::byte> file);

enum class SampleAnswer {
  kKnown,     // status 200
  kUnknown,   // status 404
  kNoAnswer,  // any other status, a transfer that failed, or no memory
};

// Asks whether the server has a sample. `path` is UTF-8 and goes into the URL escaped; a URL of
// more than 4095 bytes is cut.
SampleAnswer AskSampleKnown(const Run& run, std::string_view sha1Text, std::string_view path,
                            SampleSource source);

// Uploads a sample. False when it did not arrive (UploadReport).
bool SendSample(const Run& run, std::string_view sha1Text, std::span<const std::byte> file);

}  // namespace ostrell
