#include "devkit/report_server/answers.h"

#include "devkit/report_server/json_text.h"
#include "devkit/report_server/packed_record_writer.h"

namespace ostrell {
namespace {

constexpr size_t kGarbageBytes = 64;
constexpr size_t kBigAnswerBytes = 5 << 20;
// Readers of the record must skip an extension; what is in it means nothing.
constexpr std::string_view kRecordExtension = "extension";

std::string TicketUrl(const TicketPlace& place, ActiveFaults& faults) {
  if (faults.Acts(Fault::kFtpUrl)) {
    return "ftp://127.0.0.1/x";
  }
  if (faults.Acts(Fault::kFileUrl)) {
    return "file://" + (place.files / std::to_string(place.number)).string();
  }
  std::string url(place.origin);
  if (faults.Acts(Fault::kBareUrl)) {
    url.erase(0, std::string_view("https://").size());
  }
  return url.append(place.prefix).append("/put/").append(std::to_string(place.number));
}

JsonOwner TicketHeader(const TicketPlace& place, ActiveFaults& faults) {
  if (faults.Acts(Fault::kHeaderObject)) {
    return JsonOwner(json_object());
  }
  JsonOwner lines(json_array());
  if (faults.Acts(Fault::kEmptyHeader)) {
    return lines;
  }
  if (faults.Acts(Fault::kHeaderNumber)) {
    json_array_append_new(lines.Get(), json_integer(7));
    return lines;
  }
  const std::string ticketLine = "X-Ostrell-Ticket: " + std::to_string(place.number);
  json_array_append_new(lines.Get(), json_string("Content-Type: application/octet-stream"));
  json_array_append_new(lines.Get(), JsonString(ticketLine).Release());
  if (faults.Acts(Fault::kHeaderCrlf)) {
    json_array_append_new(lines.Get(), json_string("X-A: b\r\nX-Injected: yes"));
  }
  return lines;
}

// Bytes that begin neither a JSON document nor a record, zero and non-ASCII ones among them.
std::string Garbage() {
  std::string bytes;
  for (size_t i = 0; i < kGarbageBytes; ++i) {
    bytes += static_cast<char>(0xF1 + i * 45);
  }
  return bytes;
}

std::string Padded(std::string text) {
  text.resize(std::max(text.size(), kBigAnswerBytes), ' ');
  return text;
}

std::string RecordBlock(std::string_view instructions, ActiveFaults& faults) {
  if (faults.Acts(Fault::kNotJson)) {
    return PackRecord("this text is no JSON", kRecordExtension);
  }
  if (faults.Acts(Fault::kBadExtension)) {
    std::string block = PackRecord("{}", "");  // shorter than the extension that it announces
    block[kRecordExtensionOffset] = static_cast<char>(0xFF);
    return block;
  }
  if (faults.Acts(Fault::kBig)) {
    return PackRecord(Padded(std::string(instructions)), kRecordExtension);
  }
  std::string block = PackRecord(instructions, kRecordExtension);
  if (faults.Acts(Fault::kBadSize)) {
    const auto past = static_cast<uint32_t>(block.size() + 1);
    PutLittleEndian32(block, kRecordSizeOffset, RecordSizeWord(past));
  }
  if (faults.Acts(Fault::kShort)) {
    block.resize(9);
  }
  return block;
}

HttpAnswer RedirectTo(std::string_view place) {
  return {.status = 302, .location = std::string(place)};
}

}  // namespace

HttpAnswer TicketAnswer(const TicketPlace& place, ActiveFaults& faults) {
  const JsonOwner ticket(json_object());
  if (!faults.Acts(Fault::kNoUrl)) {
    json_object_set_new(ticket.Get(), "url", JsonString(TicketUrl(place, faults)).Release());
  }
  if (!faults.Acts(Fault::kNoHeader)) {
    json_object_set_new(ticket.Get(), "header", TicketHeader(place, faults).Release());
  }
  std::string body = CompactText(ticket);
  return {.body = faults.Acts(Fault::kBig) ? Padded(std::move(body)) : std::move(body)};
}

HttpAnswer RecordAnswer(std::string_view instructions, ActiveFaults& faults) {
  return {.body = RecordBlock(instructions, faults), .type = "application/octet-stream"};
}

HttpAnswer QuestionAnswer(bool known, ActiveFaults& faults) {
  std::string body = known ? "known\n" : "unknown\n";
  return {.status = known ? 200 : 404,
          .body = faults.Acts(Fault::kBig) ? Padded(std::move(body)) : std::move(body),
          .type = "text/plain"};
}

HttpAnswer WithFaultsOfGet(HttpAnswer answer, std::string_view sameWithoutFault,
                           ActiveFaults& faults) {
  if (faults.Acts(Fault::kRedirect)) {
    return RedirectTo(sameWithoutFault);
  }
  if (faults.Acts(Fault::kStatus404)) {
    answer.status = 404;
  }
  if (faults.Acts(Fault::kStatus500)) {
    answer.status = 500;
  }
  if (faults.Acts(Fault::kGarbage)) {
    answer.body = Garbage();
  }
  if (faults.Acts(Fault::kCut)) {
    answer.delivery = Delivery::kCut;
  }
  if (faults.Acts(Fault::kSlow)) {
    answer.delivery = Delivery::kSlow;
  }
  if (faults.Acts(Fault::kEndless)) {
    answer.delivery = Delivery::kEndless;
  }
  return answer;
}

HttpAnswer PutAnswer(std::string_view sameWithoutFault, ActiveFaults& faults) {
  if (faults.Acts(Fault::kPut302)) {
    return RedirectTo(sameWithoutFault);
  }
  HttpAnswer answer{.body = "{\"received\":true}"};
  if (faults.Acts(Fault::kPut404)) {
    answer.status = 404;
  }
  if (faults.Acts(Fault::kPut500)) {
    answer.status = 500;
  }
  if (faults.Acts(Fault::kPutCut)) {
    answer.delivery = Delivery::kCut;
  }
  if (faults.Acts(Fault::kPutEndless)) {
    answer.delivery = Delivery::kEndless;
  }
  return answer;
}

}  // namespace ostrell
