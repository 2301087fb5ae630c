#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/policydb.h"

namespace ostrell {

// A quarantine kept in a folder: the entries in "list.json", an array of objects, and each held
// file beside it as "<id>.bin". Both are read at every call, so a change made by hand counts at
// once.
class QuarantineFolder final : public Quarantine {
 public:
  // `path` ends with a backslash; the folder may be missing.
  explicit QuarantineFolder(std::wstring path) : folder(std::move(path)) {}

  void Release() noexcept override { delete this; }
  void Reserved1() noexcept override {}
  void Reserved2() noexcept override {}
  void Reserved3() noexcept override {}
  void Reserved4() noexcept override {}
  void Reserved5() noexcept override {}
  void Reserved6() noexcept override {}
  void Reserved7() noexcept override {}
  void Reserved8() noexcept override {}
  // Writes the held file in pieces, and is 1 when the stream took all of them. 0 for an id without
  // a file; the stream then may hold a part of it.
  int32_t Restore(int64_t id, SvclinkObject* stream) noexcept override;
  void Reserved10() noexcept override {}
  void Reserved11() noexcept override {}
  void Reserved12() noexcept override {}
  // An empty array without a list; null for a damaged one.
  json_t* List() noexcept override;

 private:
  std::wstring folder;
};

}  // namespace ostrell
