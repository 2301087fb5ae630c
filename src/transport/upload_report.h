#pragma once

#include <cstdint>

#include "transport/byte_chain.h"

namespace ostrell {

// Sends a report: packs `body`, asks `url` for an upload ticket with a GET whose query value "o" is
// the digest of the packed body, and PUTs the packed body where the ticket says.
//
//   url           UTF-8, terminated; the ticket URL made from it is cut at 1023 bytes
//   body          may be empty; it is read in place, and only its packed form is held beside it
//   responseSink  receives what the server answers to the PUT; without one it is read and discarded
//   statusOut     receives the HTTP status of the PUT when the transfer completed
//
// Returns 1 when both transfers completed, whatever the server's status, and 0 otherwise: memory,
// compression, a failed or cut transfer, or an answer of more than 4 MiB or that is no ticket
// (upload_ticket.h): then nothing is sent. Nothing is retried. TLS peers are not verified, and no
// redirect is followed.
int32_t UploadReport(const char* url, const void* body, uint32_t bodyLength,
                     ByteChain* responseSink = nullptr, int32_t* statusOut = nullptr);

}  // namespace ostrell
