#include "transport/pack_body.h"

#include <zlib.h>

#include <memory>
#include <new>
#include <span>
#include <utility>

#include "base/hex.h"
#include "base/md5.h"

namespace ostrell {
namespace {

constexpr uint32_t RoundUpTo1024(uint32_t bytes) {
  return (bytes + 1023) & ~uint32_t{1023};
}

struct PackedBlock {
  std::unique_ptr<std::byte[]> block;  // null when packing failed
  uint32_t length = 0;
};

PackedBlock Pack(const void* body, uint32_t bodyLength) {
  uint32_t room = PackingRoom(bodyLength);
  for (int attempt = 0; attempt < 2; ++attempt) {
    auto block = std::make_unique_for_overwrite<std::byte[]>(room);
    uLongf length = room;
    const int result = compress(reinterpret_cast<Bytef*>(block.get()), &length,
                                static_cast<const Bytef*>(body), bodyLength);
    if (result == Z_OK) {
      return {std::move(block), static_cast<uint32_t>(length)};
    }
    if (result != Z_BUF_ERROR) {
      break;
    }
    room = RoundUpTo1024(static_cast<uint32_t>(length));
  }
  return {};
}

}  // namespace

uint32_t PackingRoom(uint32_t bodyLength) {
  return RoundUpTo1024(bodyLength + (bodyLength >> 12) + (bodyLength >> 14) + (bodyLength >> 25) +
                       13);
}

int32_t PackBody(ByteChain& chain, std::string* digestOut, const void* body, uint32_t bodyLength) {
  try {
    PackedBlock packed = Pack(body, bodyLength);
    if (!packed.block) {
      return 0;
    }
    std::string digest;
    if (digestOut != nullptr) {
      digest = UpperHex(Md5::Of(std::span(packed.block.get(), packed.length)));
    }
    if (!chain.AppendOwned(std::move(packed.block), packed.length)) {
      return 0;
    }
    if (digestOut != nullptr) {
      *digestOut = std::move(digest);
    }
    return 1;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

}  // namespace ostrell
