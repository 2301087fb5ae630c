#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "transport/byte_chain.h"

namespace ostrell {

// The one place that owns a libcurl handle. Transfers speak http and https only, follow no
// redirect, go through no proxy and do not verify TLS peers, as the report server's certificates
// are its own. Nothing of the environment has a say. A transfer completed when the whole answer
// arrived, whatever its status; a refused connection, a time-out and an answer cut short are
// failures. Only memory for text and functions can make these throw.

// Whole-transfer and connect time-outs in seconds.
struct TransferLimits {
  long total;
  long connect;
};
inline constexpr TransferLimits kAnswerLimits{.total = 60, .connect = 20};
inline constexpr TransferLimits kUploadLimits{.total = 900, .connect = 20};

// The most that is kept in memory of an answer.
inline constexpr uint64_t kMaxAnswerBytes = uint64_t{4} * 1024 * 1024;

// The most that the header lines of an answer may have, status lines and trailers included; more
// ends the transfer as failed. As in later versions of libcurl.
inline constexpr size_t kMaxHeaderBytes = size_t{300} * 1024;

// Receives the body block by block, at most 16 KiB each; false, or an exception, ends the transfer
// as failed.
using BodySink = std::function<bool(std::span<const std::byte>)>;

// The sink of an answer that nobody reads.
inline bool DiscardBody(std::span<const std::byte>) {
  return true;
}

// A GET whose body goes to `sink`. True when the transfer completed; only then `statusOut`, when
// given, receives the HTTP status.
bool HttpGet(const char* url, const BodySink& sink, int32_t* statusOut,
             TransferLimits limits = kAnswerLimits);

// A GET whose body is appended to `sink`, whose limit ends the transfer as failed; what arrived
// until then stays in it. Returns 1 or 0.
int32_t GetToChain(const char* url, ByteChain& sink, int32_t* statusOut);

// A PUT of all that `body` holds, which is used up, with the header lines as they stand. The
// server's answer goes to `responseSink`, as with GetToChain; without one it is read and discarded,
// bounded in time but not in size. Result and status as HttpGet's, but false, too, when the server
// answered before it had taken the whole body.
bool HttpPut(const char* url, const std::vector<std::string>& headerLines, ByteChain& body,
             ByteChain* responseSink, int32_t* statusOut, TransferLimits limits = kUploadLimits);

// `text` escaped for a URL: all but ASCII letters, digits, "-", ".", "_" and "~" as "%HH"; nothing
// when there is no memory or the text has 2 GiB or more.
std::optional<std::string> EscapeForUrl(std::string_view text);

// True when libcurl reads `url` as a URL of one of the two schemes spelled out in it.
bool IsHttpUrl(const char* url);

}  // namespace ostrell
