#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace ostrell {

// The version of a signature file, which is text of two lines:
//
//   OSTRELL-SIGNATURES 1
//   version = 20261101001
//
// The version is an unsigned 64-bit decimal number. Lines end with LF or CR LF, blanks at their
// ends do not count, and further lines are ignored. Nothing for any other text.
std::optional<uint64_t> SignatureFileVersion(std::string_view text);

}  // namespace ostrell
