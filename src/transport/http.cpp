#include "transport/http.h"

#define CURL_DISABLE_DEPRECATION  // CURLOPT_PUT
#include <curl/curl.h>

#include <limits>

#include "base/owner.h"

namespace ostrell {
namespace {

constexpr char kSchemes[] = "http,https";

using EasyHandle = ClosedBy<CURL*, &curl_easy_cleanup>;
using HeaderList = ClosedBy<curl_slist*, &curl_slist_free_all>;
using ParsedUrl = ClosedBy<CURLU*, &curl_url_cleanup>;
using CurlText = ClosedBy<char*, &curl_free>;

// Write callback: any other result than the block's length ends the transfer.
size_t GiveToSink(char* data, size_t size, size_t count, void* sink) noexcept {
  const std::span block(data, size * count);
  try {
    return (*static_cast<const BodySink*>(sink))(std::as_bytes(block)) ? block.size() : 0;
  } catch (...) {
    return 0;
  }
}

// Header callback, which gets the trailers of a body in chunks, too: any other result than the
// line's length ends the transfer. libcurl itself keeps trailers without a limit.
size_t CountHeaderLine(char*, size_t size, size_t count, void* left) noexcept {
  auto& bytesLeft = *static_cast<size_t*>(left);
  const size_t length = size * count;
  if (length > bytesLeft) {
    return 0;
  }
  bytesLeft -= length;
  return length;
}

// Read callback: 0 ends the body.
size_t TakeFromChain(char* to, size_t size, size_t count, void* chain) noexcept {
  return static_cast<ByteChain*>(chain)->Read(std::as_writable_bytes(std::span(to, size * count)));
}

BodySink AppendTo(ByteChain& chain) {
  return [&chain](std::span<const std::byte> block) { return chain.Append(block); };
}

// libcurl would make itself ready at the first transfer, and where that fails try again at the next
// one; the part that is ready by then it would not look at, and use what was never made.
bool IsLibraryReady() {
  static const bool isReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  return isReady;
}

// One transfer. An option that libcurl does not take makes it fail before anything is sent.
class Transfer {
 public:
  Transfer()
      : handle(IsLibraryReady() ? curl_easy_init() : nullptr),
        result(handle ? CURLE_OK : CURLE_FAILED_INIT) {}

  template <class Value>
  void Set(CURLoption option, Value value) {
    if (result == CURLE_OK) {
      result = curl_easy_setopt(handle.Get(), option, value);
    }
  }

  void SetLimitsAndUrl(TransferLimits limits, const char* url) {
    Set(CURLOPT_TIMEOUT, limits.total);
    Set(CURLOPT_CONNECTTIMEOUT, limits.connect);
    Set(CURLOPT_SSL_VERIFYPEER, 0L);
    Set(CURLOPT_SSL_VERIFYHOST, 0L);
    Set(CURLOPT_PROTOCOLS_STR, kSchemes);
    Set(CURLOPT_FOLLOWLOCATION, 0L);
    Set(CURLOPT_PROXY, "");  // else libcurl takes one from the environment
    Set(CURLOPT_URL, url);
    Set(CURLOPT_HEADERFUNCTION, &CountHeaderLine);
    Set(CURLOPT_HEADERDATA, static_cast<void*>(&headerBytesLeft));
  }

  // Without a write callback libcurl would print the body to the standard output.
  void SetSink(const BodySink& sink) {
    Set(CURLOPT_WRITEFUNCTION, &GiveToSink);
    Set(CURLOPT_WRITEDATA, static_cast<const void*>(&sink));
  }

  bool Perform(int32_t* statusOut) {
    if (result == CURLE_OK) {
      result = curl_easy_perform(handle.Get());
    }
    if (result == CURLE_OK && statusOut != nullptr) {
      long status = 0;
      curl_easy_getinfo(handle.Get(), CURLINFO_RESPONSE_CODE, &status);
      *statusOut = static_cast<int32_t>(status);
    }
    return result == CURLE_OK;
  }

 private:
  size_t headerBytesLeft = kMaxHeaderBytes;
  EasyHandle handle;
  CURLcode result;
};

// False when memory fails. No lines: an empty list, true.
bool BuildHeaderList(const std::vector<std::string>& lines, HeaderList& list) {
  curl_slist* last = nullptr;
  for (const std::string& line : lines) {
    // Appending at the last node: libcurl would search the end from the first one every time.
    curl_slist* const appended = curl_slist_append(last, line.c_str());
    if (appended == nullptr) {
      return false;
    }
    if (!list) {
      list.Reset(appended);
    }
    last = last == nullptr ? appended : last->next;
  }
  return true;
}

}  // namespace

bool HttpGet(const char* url, const BodySink& sink, int32_t* statusOut, TransferLimits limits) {
  Transfer transfer;
  transfer.SetLimitsAndUrl(limits, url);
  transfer.SetSink(sink);
  return transfer.Perform(statusOut);
}

int32_t GetToChain(const char* url, ByteChain& sink, int32_t* statusOut) {
  return HttpGet(url, AppendTo(sink), statusOut) ? 1 : 0;
}

bool HttpPut(const char* url, const std::vector<std::string>& headerLines, ByteChain& body,
             ByteChain* responseSink, int32_t* statusOut, TransferLimits limits) {
  HeaderList headers;
  if (!BuildHeaderList(headerLines, headers)) {
    return false;
  }
  const BodySink sink = responseSink != nullptr ? AppendTo(*responseSink) : DiscardBody;
  Transfer transfer;
  transfer.Set(CURLOPT_UPLOAD, 1L);
  transfer.Set(CURLOPT_PUT, 1L);
  transfer.SetLimitsAndUrl(limits, url);
  transfer.Set(CURLOPT_HTTPHEADER, headers.Get());
  transfer.Set(CURLOPT_READFUNCTION, &TakeFromChain);
  transfer.Set(CURLOPT_READDATA, &body);
  transfer.Set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(body.Total()));
  transfer.SetSink(sink);
  // A server may answer before it has the body, which then stays here.
  return transfer.Perform(statusOut) && body.Total() == 0;
}

std::optional<std::string> EscapeForUrl(std::string_view text) {
  if (text.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
    return std::nullopt;
  }
  // libcurl measures the text itself when it is told a length of 0.
  const CurlText escaped(
      curl_easy_escape(nullptr, text.empty() ? "" : text.data(), static_cast<int>(text.size())));
  return escaped ? std::optional<std::string>(escaped.Get()) : std::nullopt;
}

bool IsHttpUrl(const char* url) {
  const ParsedUrl parsed(curl_url());
  CurlText scheme;
  if (!parsed || curl_url_set(parsed.Get(), CURLUPART_URL, url, 0) != CURLUE_OK ||
      curl_url_get(parsed.Get(), CURLUPART_SCHEME, scheme.Receive(), 0) != CURLUE_OK) {
    return false;
  }
  const std::string_view name(scheme.Get());
  return name == "http" || name == "https";
}

}  // namespace ostrell
