// The work behind the reports of records, pop-up rows and files, natively and one piece a run, to
// be timed against the same work done by libraries or other programs alone.
//
// Usage: report_data keep FILE      a JSON array of records: parse, keep and flatten, print
//        report_data print FILE     the same, parse and print alone
//        report_data popup DATABASE entries of the pop-up block database, printed
//        report_data rows DATABASE  all rows' details, parsed and printed by jansson alone
//        report_data pack FILE      compress and digest a body
//        report_data upload FILE    the same and send it to the server in OSTRELL_TEST_SERVER
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

#include "base/json.h"
#include "reports/detection_records.h"
#include "reports/popup_block_log.h"
#include "reports/record_query.h"
#include "store/record_store.h"
#include "store/schema.h"
#include "store/statement.h"
#include "transport/pack_body.h"
#include "transport/upload_report.h"

namespace ostrell {
namespace {

bool Write(const std::optional<std::string>& text) {
  return text && std::fwrite(text->data(), 1, text->size(), stdout) == text->size();
}

JsonOwner LoadArray(const char* path) {
  return JsonOwner(json_load_file(path, 0, nullptr));
}

std::optional<std::string> PopupBody(const char* path) {
  Connection database;
  if (OpenRecordStore(path, database) != 1 || EnsureSchema(database.Get()) != 1) {
    return {};
  }
  const JsonOwner all = RecordsInRange(0, std::numeric_limits<int64_t>::max());
  PopupEntries entries;
  FetchBlockItems(database, all.Get(),
                  [&entries](const BlockItem& item) { entries.Add(item.detail.Get()); });
  return entries.Take();
}

bool PrintRows(const char* path) {
  Connection database;
  if (sqlite3_open_v2(path, database.Receive(), SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    return false;
  }
  const Statement rows =
      Prepare(database.Get(), "SELECT id, ts, detail FROM BlockItemLog ORDER BY ts DESC");
  while (sqlite3_step(rows.Get()) == SQLITE_ROW) {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(rows.Get(), 2));
    const JsonText printed(json_dumps(JsonOwner(json_loads(text, 0, nullptr)).Get(), JSON_COMPACT));
    if (!printed || std::fputs(printed.Get(), stdout) < 0) {
      return false;
    }
  }
  return true;
}

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool Pack(const std::string& body) {
  ByteChain packed;
  std::string digest;
  return PackBody(packed, &digest, body.data(), static_cast<uint32_t>(body.size())) == 1;
}

bool Upload(const std::string& body) {
  const char* const server = std::getenv("OSTRELL_TEST_SERVER");
  const std::string url = std::string(server != nullptr ? server : "") + "/v8/rc2.php?u=0&regid=0";
  return UploadReport(url.c_str(), body.data(), static_cast<uint32_t>(body.size())) == 1;
}

bool DoWork(std::string_view work, const char* path) {
  if (work == "keep") {
    return Write(KeepDetectionRecords(LoadArray(path)));
  }
  if (work == "print") {
    return Write(CompactText(LoadArray(path)));
  }
  if (work == "popup") {
    return Write(PopupBody(path));
  }
  if (work == "rows") {
    return PrintRows(path);
  }
  return work == "pack" ? Pack(ReadFile(path)) : work == "upload" && Upload(ReadFile(path));
}

}  // namespace
}  // namespace ostrell

// NOLINTNEXTLINE(bugprone-exception-escape): what is thrown ends a tool like this.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: report_data keep|print|popup|rows|pack|upload FILE\n", stderr);
    return 2;
  }
  return ostrell::DoWork(argv[1], argv[2]) ? 0 : 1;
}
