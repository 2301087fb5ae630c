#pragma once

#include <cstdint>

namespace ostrell {

// Notices that jansson was refused memory while this object lives. Else it could go unseen: where
// the parser's buffer cannot grow, bytes of a text are dropped, and a member that cannot be made is
// missing from its object.
//
// Meanwhile jansson allocates through this, from the same memory as ever: values live on, and the
// closed libraries may make and release theirs at the same time. A refusal of theirs counts, too.
class JsonMemoryWatch {
 public:
  JsonMemoryWatch();
  ~JsonMemoryWatch();
  JsonMemoryWatch(const JsonMemoryWatch&) = delete;
  JsonMemoryWatch& operator=(const JsonMemoryWatch&) = delete;

  bool WasRefused() const;

 private:
  const uint64_t before;
};

}  // namespace ostrell
