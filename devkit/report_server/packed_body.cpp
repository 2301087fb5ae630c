#include "devkit/report_server/packed_body.h"

#include <openssl/evp.h>
#include <zlib.h>

#include <array>
#include <limits>
#include <memory>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/json.h"
#include "base/owner.h"

namespace ostrell {
namespace {

struct InflateTraits {
  using Handle = z_stream*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle stream) noexcept { inflateEnd(stream); }
};

// OpenSSL's MD5, not the project's own: the server is an independent check of the sender.
std::string Md5Hex(std::string_view bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_md5(), nullptr) != 1) {
    return {};
  }
  return UpperHex(std::as_bytes(std::span(digest.data(), length)));
}

}  // namespace

bool UnpackBody(std::string_view packed, std::string& unpacked) {
  if (packed.size() > std::numeric_limits<uInt>::max()) {
    return false;
  }
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) {
    return false;
  }
  const Owner<InflateTraits> ended(&stream);
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  std::array<char, 65536> block;
  int result = Z_OK;
  while (result == Z_OK && unpacked.size() <= kMaxUnpackedBytes) {
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = static_cast<uInt>(block.size());
    result = inflate(&stream, Z_NO_FLUSH);
    unpacked.append(block.data(), block.size() - stream.avail_out);
  }
  return result == Z_STREAM_END && stream.avail_in == 0 && unpacked.size() <= kMaxUnpackedBytes;
}

PackedBodyCheck CheckPackedBody(std::string_view body, const ExpectedBody& expected) {
  PackedBodyCheck check;
  check.digestMatches = Md5Hex(body) == expected.digest;
  check.isZlib = UnpackBody(body, check.unpacked);
  if (expected.isJson) {
    const JsonOwner document(json_loadb(check.unpacked.data(), check.unpacked.size(), 0, nullptr));
    check.isJson = static_cast<bool>(document);
    if (json_is_array(document.Get())) {
      check.items = json_array_size(document.Get());
    }
  }
  return check;
}

}  // namespace ostrell
