#include "tests/support/recorded_cases.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "base/hex.h"

namespace ostrell {
namespace {

char HexByte(std::string_view digits) {
  const int high = digits.empty() ? -1 : HexDigitValue(digits[0]);
  const int low = digits.size() < 2 ? -1 : HexDigitValue(digits[1]);
  if (high < 0 || low < 0) {
    throw std::runtime_error("no two hexadecimal digits: " + std::string(digits));
  }
  return static_cast<char>(high << 4 | low);
}

std::string WithoutEscapes(std::string_view text) {
  constexpr std::string_view kLetters = "nrt0\\";
  constexpr std::string_view kMeanings{"\n\r\t\0\\", 5};
  std::string result;
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      result += text[at];
      continue;
    }
    const char letter = ++at < text.size() ? text[at] : '\0';
    if (letter == 'x') {
      result += HexByte(text.substr(at + 1));
      at += 2;
    } else if (const size_t known = kLetters.find(letter); known != std::string_view::npos) {
      result += kMeanings[known];
    } else {
      throw std::runtime_error("unknown escape: " + std::string(text));
    }
  }
  return result;
}

std::string_view Trimmed(std::string_view text) {
  const size_t begin = std::min(text.find_first_not_of(' '), text.size());
  return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

}  // namespace

RecordedCase::RecordedCase(const std::string& path)
    : name(std::filesystem::path(path).stem().string()) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot read " + path);
  }
  std::string line;
  bool isRead = false;  // `line` is the first one behind a block already
  while (isRead || std::getline(file, line)) {
    isRead = false;
    if (line.empty() || line[0] == '#') {
      continue;
    }
    const size_t colon = line.find(':');
    if (colon == std::string::npos || line[0] == ' ') {
      throw std::runtime_error(std::string(path).append(": no field: ").append(line));
    }
    std::string field = line.substr(0, colon);
    std::string value(Trimmed(std::string_view(line).substr(colon + 1)));
    const bool isBlock = colon + 1 == line.size();
    while (isBlock && std::getline(file, line)) {
      if (!line.starts_with("  ")) {
        isRead = true;
        break;
      }
      value += (value.empty() ? "" : "\n") + line.substr(2);
    }
    if (field.ends_with(".hex")) {
      field.resize(field.size() - 4);
      value = BytesOfHex(value);
    } else if (!isBlock) {
      value = WithoutEscapes(value);
    }
    fields[field].push_back(value);
  }
}

const std::string& RecordedCase::operator[](const std::string& field) const {
  const auto found = fields.find(field);
  if (found == fields.end() || found->second.size() != 1) {
    throw std::runtime_error(name + ": not exactly one " + field);
  }
  return found->second.front();
}

std::vector<std::string> RecordedCase::All(const std::string& field) const {
  const auto found = fields.find(field);
  return found != fields.end() ? found->second : std::vector<std::string>();
}

int64_t RecordedCase::Number(const std::string& field) const {
  size_t end = 0;
  const std::string& text = (*this)[field];
  const int64_t number = std::stoll(text, &end, 0);
  if (end != text.size()) {
    throw std::runtime_error(name + ": no number: " + text);
  }
  return number;
}

std::string BytesOfHex(std::string digits) {
  std::erase_if(digits, [](char c) { return c == ' ' || c == '\n'; });
  std::string bytes;
  for (size_t at = 0; at < digits.size(); at += 2) {
    bytes += HexByte(std::string_view(digits).substr(at));
  }
  return bytes;
}

std::vector<RecordedCase> CasesOf(const std::string& reader) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(OSTRELL_CASES "/" + reader)) {
    paths.push_back(entry.path().string());
  }
  if (paths.empty()) {
    throw std::runtime_error("no cases of " + reader);
  }
  std::ranges::sort(paths);
  return {paths.begin(), paths.end()};
}

}  // namespace ostrell
