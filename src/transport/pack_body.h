#pragma once

#include <cstdint>
#include <string>

#include "transport/byte_chain.h"

namespace ostrell {

// Appends `body` to the chain as one zlib stream (RFC 1950; deflate level 6, the parameters of
// zlib's one-call compression). Where `digestOut` is given it receives the MD5 (RFC 1321) of the
// packed bytes as 32 upper-case hexadecimal digits. An empty body is packed too, into 8 bytes.
// Returns 1, or 0 when memory or zlib fails or the chain takes no more: chain and digest are then
// unchanged.
int32_t PackBody(ByteChain& chain, std::string* digestOut, const void* body, uint32_t bodyLength);

// The room in bytes that packing tries first: zlib's bound rounded up to a multiple of 1024. It
// wraps for bodies close to 4 GiB, which then do not pack.
uint32_t PackingRoom(uint32_t bodyLength);

}  // namespace ostrell
