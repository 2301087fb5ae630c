#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ostrell {

// The report server keeps one copy of a sample and knows it by the SHA-1 of the file.

// A sample is sent only when its size in bytes lies in this range.
inline constexpr uint64_t kLeastSampleBytes = 1024;
inline constexpr uint64_t kMostSampleBytes = 5242880;

constexpr bool IsSampleSize(uint64_t size) {
  return size >= kLeastSampleBytes && size <= kMostSampleBytes;
}

enum class SampleSource : int32_t { kQuarantine = 1, kDisk = 2 };

// SHA-1 (FIPS 180-4) as 40 upper-case hexadecimal digits.
std::string SampleDigest(std::span<const std::byte> file);

// Asks whether the server has a sample. Returns 1 when it said so, with `known` set to 1 (status
// 200) or 0 (status 404); 0 for any other status and for a transfer that failed: `known` then keeps
// its value. `path` is UTF-8 and goes into the URL escaped; a URL of more than 4095 bytes is cut.
int32_t AskSampleKnown(const char* sha1Text, int32_t& known, std::string_view path,
                       SampleSource source);

// Uploads a sample. Returns UploadReport's result.
int32_t SendSample(const char* sha1Text, std::span<const std::byte> file);

}  // namespace ostrell
