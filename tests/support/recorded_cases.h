#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ostrell {

// Recorded cases of a reader: what it was given and what has to come of it, one small file a case
// in tests/cases/READER/NAME.case. A fault that is found later adds a file; the fuzzers begin with
// the same inputs.
//
//   # What the case shows: any number of lines at the top.
//   input: text\twith C escapes: \n \r \t \0 \\ \xHH; blanks at its ends do not count
//   bytes.hex: 4D 44 4D 50  00
//   expect:
//     text of several lines as it stands, without escapes,
//     each line behind two blanks; the last one has no end
//
// A field that occurs several times is a list (`expect` twice is two results).
class RecordedCase {
 public:
  // Throws std::runtime_error for a file that cannot be read or is not of this form.
  explicit RecordedCase(const std::string& path);

  const std::string& Name() const { return name; }

  bool Has(const std::string& field) const { return fields.contains(field); }
  // The only value of a field; throws, which fails the test, when there is none or several.
  const std::string& operator[](const std::string& field) const;
  // All values of a field, in their order.
  std::vector<std::string> All(const std::string& field) const;
  // Of a number, decimal or 0x.
  int64_t Number(const std::string& field) const;

 private:
  std::string name;
  std::map<std::string, std::vector<std::string>> fields;
};

// Bytes from pairs of hexadecimal digits; blanks and line ends between them do not count.
std::string BytesOfHex(std::string digits);

// All cases of a reader, by name; throws when there is none.
std::vector<RecordedCase> CasesOf(const std::string& reader);

}  // namespace ostrell
