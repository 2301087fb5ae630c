#include "devkit/product/quarantine_folder_win.h"

#include <string_view>

#include "devkit/product/files_win.h"
#include "devkit/product/guarded.h"
#include "devkit/product/json_file_win.h"
#include "platform/svclink.h"

namespace ostrell {
namespace {

bool WriteInPieces(SvclinkObject* stream, std::string_view bytes) {
  constexpr size_t kPiece = size_t{64} << 10;
  if (stream == nullptr || stream->write == nullptr) {
    return false;
  }
  while (!bytes.empty()) {
    const std::string_view piece = bytes.substr(0, kPiece);
    const auto count = static_cast<uint32_t>(piece.size());
    if (stream->write(stream, piece.data(), count) != static_cast<int32_t>(count)) {
      return false;
    }
    bytes.remove_prefix(count);
  }
  return true;
}

}  // namespace

int32_t QuarantineFolder::Restore(int64_t id, SvclinkObject* stream) noexcept {
  return Guarded(0, [&] {
    const FileContent held = ReadWholeFile(folder + std::to_wstring(id) + L".bin");
    return held.error == ERROR_SUCCESS && WriteInPieces(stream, held.text) ? 1 : 0;
  });
}

json_t* QuarantineFolder::List() noexcept {
  return Guarded<json_t*>(nullptr,
                          [&] { return LoadObjectArray(folder + L"list.json").Release(); });
}

}  // namespace ostrell
