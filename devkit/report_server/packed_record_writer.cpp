#include "devkit/report_server/packed_record_writer.h"

namespace ostrell {

void PutLittleEndian32(std::string& block, size_t offset, uint32_t value) {
  for (size_t i = 0; i < sizeof value; ++i) {
    block[offset + i] = static_cast<char>(value >> (8 * i) & 0xFF);
  }
}

uint32_t RecordSizeWord(uint32_t length) {
  constexpr uint32_t kLongForm = 0xC0000000;
  return length < (1U << 26) ? length : kLongForm | length;
}

std::string PackRecord(std::string_view json, std::string_view extension) {
  extension = extension.substr(0, 255);
  const size_t length = kRecordHeaderSize + extension.size() + json.size();
  if (length >= (size_t{1} << 30)) {
    return {};
  }
  std::string block("OPKR");
  block.resize(kRecordHeaderSize);
  PutLittleEndian32(block, 4, kRecordKind);
  PutLittleEndian32(block, kRecordSizeOffset, RecordSizeWord(static_cast<uint32_t>(length)));
  block[kRecordExtensionOffset] = static_cast<char>(extension.size());
  return block.append(extension).append(json);
}

}  // namespace ostrell
