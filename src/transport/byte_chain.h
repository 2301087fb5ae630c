#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <memory>
#include <span>

namespace ostrell {

// A first-in-first-out list of byte chunks with a running total: report bodies and the server's
// answers. Nothing here throws, so that it can serve the callbacks of C libraries.
class ByteChain {
 public:
  static constexpr uint64_t kUnlimited = std::numeric_limits<uint64_t>::max();
  // A chain with a limit takes no more chunks than this, so that an answer that arrives byte by
  // byte cannot cost many times its size.
  static constexpr size_t kMaxChunks = 65536;

  // `maxBytes` bounds the unread bytes that the chain will hold.
  explicit ByteChain(uint64_t maxBytes = kUnlimited) : limit(maxBytes) {}

  // Copies the bytes into one new chunk of exactly that size. False, with the chain unchanged, when
  // memory or the limit does not allow it. No bytes: nothing is added, true.
  bool Append(std::span<const std::byte> bytes) noexcept;

  // Takes over a block of which the first `length` bytes are data, without copying. False as above;
  // the block is then freed.
  bool AppendOwned(std::unique_ptr<std::byte[]> block, uint64_t length) noexcept;

  // Copies at most `to.size()` bytes out of the oldest chunk, never across two chunks, and frees
  // the chunk once it is used up. Returns the count; 0 when the chain is empty.
  size_t Read(std::span<std::byte> to) noexcept;

  // Unread bytes in all chunks.
  uint64_t Total() const { return total; }

 private:
  struct Chunk {
    std::unique_ptr<std::byte[]> block;
    uint64_t readPosition;
    uint64_t length;
  };

  uint64_t limit;
  uint64_t total = 0;
  std::list<Chunk> chunks;  // oldest first
};

}  // namespace ostrell
