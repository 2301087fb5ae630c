#pragma once

#include <cstdint>

namespace ostrell {

// Below the libraries that the agent is linked with, for a program that is linked with the wraps of
// this folder's CMakeLists.txt. Each of these is an OutsideCall:
//
//   curl_easy_init, curl_easy_setopt, curl_slist_append, curl_easy_escape, curl_url   give nothing
//   curl_easy_perform   not connected; or the local report server misbehaves at this request: the
//                       answer is cut, has status 500, is garbage
//   compress            no memory, no room
//
// SQLite's files and memory fail in record_store_test.cpp.

// The agent's own allocations, by operator new and by jansson, while OutsideCall counts.
class Allocations {
 public:
  // Counts from now on; that of this number (0: none) fails, and those behind it where it lasts.
  static void Begin(int64_t failing, bool isLasting);
  static int64_t Count();
};

}  // namespace ostrell
