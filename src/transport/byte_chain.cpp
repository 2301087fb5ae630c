#include "transport/byte_chain.h"

#include <algorithm>
#include <new>
#include <utility>

namespace ostrell {

bool ByteChain::Append(std::span<const std::byte> bytes) noexcept {
  // What the limit refuses is not allocated first.
  if (bytes.size() > limit - total) {
    return false;
  }
  std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[bytes.size()]);
  if (!block) {
    return false;
  }
  std::ranges::copy(bytes, block.get());
  return AppendOwned(std::move(block), bytes.size());
}

bool ByteChain::AppendOwned(std::unique_ptr<std::byte[]> block, uint64_t length) noexcept {
  if (length == 0) {
    return true;
  }
  const bool full = limit != kUnlimited && chunks.size() >= kMaxChunks;
  if (full || length > limit - total) {
    return false;
  }
  try {
    chunks.push_back({.block = std::move(block), .readPosition = 0, .length = length});
  } catch (const std::bad_alloc&) {
    return false;
  }
  total += length;
  return true;
}

size_t ByteChain::Read(std::span<std::byte> to) noexcept {
  if (chunks.empty()) {
    return 0;
  }
  Chunk& oldest = chunks.front();
  const auto count =
      static_cast<size_t>(std::min<uint64_t>(to.size(), oldest.length - oldest.readPosition));
  std::copy_n(oldest.block.get() + oldest.readPosition, count, to.data());
  oldest.readPosition += count;
  total -= count;
  if (oldest.readPosition == oldest.length) {
    chunks.pop_front();
  }
  return count;
}

}  // namespace ostrell
