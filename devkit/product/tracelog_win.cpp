// Stand-in for the product's logging library: appends each message to "tracelog.txt" beside the
// program as one line of UTF-8, "operation:line level text".

#include <algorithm>

#include "base/print.h"
#include "base/text.h"
#include "devkit/product/files_win.h"
#include "devkit/product/guarded.h"

namespace ostrell {
namespace {

// Line breaks in the text become spaces, so that a line is a message.
std::string Line(const char* operation, int32_t line, int32_t level, const wchar_t* text) {
  std::string message = Utf8FromWide(text);
  std::ranges::replace_if(
      message, [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return Print("%s:%d %d %s\n", operation, line, level, message);
}

// Every message opens the file anew: it can be read, moved or deleted at any time.
bool Append(std::string_view line) {
  const auto path = PathBesideProgram(L"tracelog.txt");
  if (!path) {
    return false;
  }
  const FileHandle file(CreateFileW(path->c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file && WriteOnce(file, line);
}

}  // namespace

// A message that cannot be written is lost, as is one without operation or text.
extern "C" void TraceLogWrite(const char* operation, int32_t line, int32_t level,
                              const wchar_t* text) {
  Guarded(false, [&] {
    return operation != nullptr && text != nullptr && Append(Line(operation, line, level, text));
  });
}

}  // namespace ostrell
