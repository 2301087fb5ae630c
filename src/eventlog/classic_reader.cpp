#include "eventlog/classic_reader.h"

#include <utility>

#include "base/bytes.h"

namespace eventlog {
namespace {

using ostrell::ReadLittleEndian;
using Bytes = std::span<const std::byte>;

constexpr uint32_t kInvalidHandle = 6;
constexpr uint32_t kEndOfFile = 38;
constexpr uint32_t kInsufficientBuffer = 122;
constexpr uint32_t kSequentialBackwards = 9;
constexpr size_t kFirstBuffer = 65536;
constexpr size_t kMaxBuffer = 0x7FFFF;

constexpr size_t kFixedPart = 56;
constexpr uint32_t kFirstQualifiedId = 0x40000000;  // severity and facility stand in the high half

// The text at `offset`, which then lies behind its terminator.
std::wstring TakeText(Bytes record, size_t& offset) {
  std::wstring text;
  for (; const auto unit = ReadLittleEndian<uint16_t>(record, offset); offset += sizeof(*unit)) {
    if (*unit == 0) {
      offset += sizeof(*unit);
      return text;
    }
    text.push_back(static_cast<wchar_t>(*unit));
  }
  offset = record.size();
  return text;
}

uint32_t LevelOfType(uint16_t type) {
  switch (type) {
    case 0:  // success
    case 4:  // information
    case 8:  // audit success
      return 4;
    case 1:   // error
    case 16:  // audit failure
      return 2;
    case 2:  // warning
      return 3;
    default:
      return 0;
  }
}

std::wstring JoinedStrings(Bytes record, uint16_t count, size_t offset) {
  std::wstring joined;
  for (uint32_t i = 0; i < count && offset < record.size(); ++i) {
    if (!joined.empty()) {
      joined += L' ';
    }
    joined += TakeText(record, offset);
  }
  return joined;
}

// `bytes` holds at least the fixed part.
EventRecord Convert(Bytes bytes, const std::wstring& logName) {
  const auto dword = [bytes](size_t offset) { return *ReadLittleEndian<uint32_t>(bytes, offset); };
  const auto word = [bytes](size_t offset) { return *ReadLittleEndian<uint16_t>(bytes, offset); };
  EventRecord record;
  record.channel = logName;
  record.recordNumber = dword(8);
  record.timeCreated = *ostrell::SystemTimeFromTicks(ostrell::TicksFromSeconds(dword(12)));
  record.eventId = dword(20) >= kFirstQualifiedId ? dword(20) & 0xFFFF : dword(20);
  record.level = LevelOfType(word(24));
  size_t names = kFixedPart;
  record.provider = TakeText(bytes, names);
  record.computer = TakeText(bytes, names);
  record.data = JoinedStrings(bytes, word(26), dword(36));
  return record;
}

}  // namespace

void WalkClassicRecords(Bytes bytes, const std::wstring& logName, const EventFilter& filter,
                        std::vector<EventRecord>& records) {
  while (const auto length = ReadLittleEndian<uint32_t>(bytes, 0)) {
    const auto packed = ostrell::Slice(bytes, 0, *length);
    if (!packed || packed->size() < kFixedPart) {
      return;
    }
    EventRecord record = Convert(*packed, logName);
    if (filter.Matches(record)) {
      records.push_back(std::move(record));
    }
    bytes = bytes.subspan(packed->size());
  }
}

LegacyEventLogReader::LegacyEventLogReader(std::wstring serverName, bool open,
                                           const ClassicEventLogApi& functions)
    : server(std::move(serverName)), isOpen(open), api(functions) {}

ReadingEnd LegacyEventLogReader::ReadEvents(const std::wstring& logName, const EventFilter& filter,
                                            const TimeBudget& budget, const RecordTaker& take) {
  if (!isOpen) {
    Fail(kInvalidHandle);
    return ReadingEnd::kComplete;
  }
  const ClassicLog log(
      {api.open(server.empty() ? nullptr : server.c_str(), logName.c_str()), &api});
  if (!log) {
    Fail(api.lastError());
    return ReadingEnd::kComplete;
  }
  std::vector<std::byte> buffer(kFirstBuffer);
  while (!budget.IsSpent()) {
    const auto filled = ReadOn(log, buffer);
    if (!filled) {
      return ReadingEnd::kComplete;
    }
    std::vector<EventRecord> records;
    WalkClassicRecords(*filled, logName, filter, records);
    for (EventRecord& record : records) {
      if (!take(std::move(record))) {
        return ReadingEnd::kStopped;
      }
    }
  }
  return ReadingEnd::kOutOfTime;
}

std::optional<Bytes> LegacyEventLogReader::ReadOn(const ClassicLog& log,
                                                  std::vector<std::byte>& buffer) {
  while (true) {
    uint32_t read = 0;
    uint32_t needed = 0;
    if (api.read(log.Get().value, kSequentialBackwards, 0, buffer.data(),
                 static_cast<uint32_t>(buffer.size()), &read, &needed)) {
      return read == 0 ? std::nullopt : ostrell::Slice(buffer, 0, read);
    }
    const uint32_t code = api.lastError();
    if (code != kInsufficientBuffer || needed <= buffer.size() || needed > kMaxBuffer) {
      if (code != kEndOfFile) {
        Fail(code);
      }
      return std::nullopt;
    }
    buffer.resize(needed);
  }
}

}  // namespace eventlog
