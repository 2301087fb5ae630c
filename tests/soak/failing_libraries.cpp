#include "tests/soak/failing_libraries.h"

#define CURL_DISABLE_TYPECHECK
#include <curl/curl.h>
#include <jansson.h>
#include <zlib.h>

#include <cstdarg>
#include <cstdlib>
#include <map>
#include <new>
#include <string>

#include "tests/support/outside_call.h"

#undef curl_easy_setopt

namespace ostrell {
namespace {

int64_t allocations = 0;
int64_t failingAllocation = 0;
bool allLaterFail = false;

// Null where the allocation is to fail.
void* Allocate(size_t size) {
  if (OutsideCall::IsAgents()) {
    ++allocations;
    if (failingAllocation > 0 &&
        (allocations == failingAllocation || (allLaterFail && allocations > failingAllocation))) {
      return nullptr;
    }
  }
  return std::malloc(size);
}

[[maybe_unused]] const bool kIsJanssonCounted = [] {
  json_set_alloc_funcs(Allocate, std::free);
  return true;
}();

// The address of a transfer, and whether it sends a body.
struct Request {
  std::string url{};
  bool isPut = false;
};
std::map<CURL*, Request> requests;

// Where the report server misbehaves at this request.
std::string FaultyUrl(const Request& request, const char* fault) {
  const size_t path = request.url.find('/', request.url.find("//") + 2);
  return request.url.substr(0, path) + "/fault/" + (request.isPut ? "put-" : "") + fault +
         request.url.substr(path);
}

}  // namespace

void Allocations::Begin(int64_t failing, bool isLasting) {
  allocations = 0;
  failingAllocation = failing;
  allLaterFail = isLasting;
}
int64_t Allocations::Count() {
  return allocations;
}

}  // namespace ostrell

using ostrell::OutsideCall;

void* operator new(size_t size) {
  void* const memory = ostrell::Allocate(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}
void* operator new[](size_t size) {
  return operator new(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return ostrell::Allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return ostrell::Allocate(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  std::free(memory);
}

// The linker's names for what it wraps.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

CURL* __real_curl_easy_init();
CURL* __wrap_curl_easy_init() {
  const OutsideCall call(1);
  CURL* const handle = call.Fails() ? nullptr : __real_curl_easy_init();
  ostrell::requests[handle] = {};
  return handle;
}

CURLcode __real_curl_easy_setopt(CURL* handle, int option, ...);
CURLcode __wrap_curl_easy_setopt(CURL* handle, int option, ...) {
  const OutsideCall call(1);
  va_list arguments;
  va_start(arguments, option);
  void* const value = va_arg(arguments, void*);  // numbers are as wide
  va_end(arguments);
  if (call.Fails()) {
    return CURLE_OUT_OF_MEMORY;
  }
  if (option == CURLOPT_URL) {
    ostrell::requests[handle].url = static_cast<const char*>(value);
  } else if (option == CURLOPT_UPLOAD) {
    ostrell::requests[handle].isPut = true;
  }
  return __real_curl_easy_setopt(handle, option, value);
}

// The agent's callbacks run inside: what they allocate is counted.
CURLcode __real_curl_easy_perform(CURL* handle);
CURLcode __wrap_curl_easy_perform(CURL* handle) {
  {
    const OutsideCall call(4);
    if (call.Way() == 1) {
      return CURLE_COULDNT_CONNECT;
    }
    const ostrell::Request& request = ostrell::requests[handle];
    if (call.Fails()) {
      // Garbage in the answer to a PUT is nothing to the agent.
      const char* const fault = call.Or(
          "", {"", "cut", request.isPut ? "500" : "status-500", request.isPut ? "302" : "garbage"});
      __real_curl_easy_setopt(handle, CURLOPT_URL, FaultyUrl(request, fault).c_str());
    }
  }
  return __real_curl_easy_perform(handle);
}

curl_slist* __real_curl_slist_append(curl_slist* list, const char* text);
curl_slist* __wrap_curl_slist_append(curl_slist* list, const char* text) {
  const OutsideCall call(1);
  return call.Fails() ? nullptr : __real_curl_slist_append(list, text);
}

char* __real_curl_easy_escape(CURL* handle, const char* text, int length);
char* __wrap_curl_easy_escape(CURL* handle, const char* text, int length) {
  const OutsideCall call(1);
  return call.Fails() ? nullptr : __real_curl_easy_escape(handle, text, length);
}

CURLU* __real_curl_url();
CURLU* __wrap_curl_url() {
  const OutsideCall call(1);
  return call.Fails() ? nullptr : __real_curl_url();
}

int __real_compress(Bytef* to, uLongf* room, const Bytef* from, uLong size);
int __wrap_compress(Bytef* to, uLongf* room, const Bytef* from, uLong size) {
  const OutsideCall call(2);
  return call.Fails() ? call.Or(Z_OK, {Z_MEM_ERROR, Z_BUF_ERROR})
                      : __real_compress(to, room, from, size);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
