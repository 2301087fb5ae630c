#include "reports/detection_records.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>

#include "base/print.h"
#include "reports/fingerprint.h"
#include "reports/popup_block_log.h"
#include "reports/quarantine.h"
#include "reports/sample_pass.h"
#include "tests/support/recorded_cases.h"

// The readers of the records that the product's library hands over.

namespace ostrell {
namespace {

JsonOwner Load(const std::string& text) {
  return JsonOwner(json_loads(text.c_str(), 0, nullptr));
}

std::string TextOf(const json_t* value) {
  const JsonText text(json_dumps(value, JSON_COMPACT | JSON_ENCODE_ANY));
  return text ? text.Get() : "";
}

std::string PathOf(std::optional<std::string_view> path) {
  return std::string(path.value_or("-"));
}

std::string EntryOf(const json_t* record) {
  const auto entry = ReadQuarantineEntry(record);
  return entry ? Print("%lld %u %s %s %s %lld", entry->id, entry->kind, entry->sha1, entry->path,
                       entry->name, entry->time)
               : "-";
}

std::optional<std::string> PopupEntriesOf(const JsonOwner& rows) {
  PopupEntries entries;
  for (const json_t* const row : Elements(rows.Get())) {
    entries.Add(json_object_get(row, "detail"));
  }
  return entries.Take();
}

// What each field of a case expects of a record.
const std::map<std::string, std::function<std::string(json_t*)>> kReaders = {
    {"normalized",
     [](json_t* record) { return NormalizeRecord(record) ? TextOf(record) : "dropped"; }},
    {"flat", [](json_t* record) { return TextOf(FlattenRecord(record)); }},
    {"fingerprint", [](json_t* record) { return Print("%08x", RecordFingerprint(record)); }},
    {"popup_fingerprint",
     [](json_t* row) { return Print("%08x", PopupFingerprint(json_object_get(row, "detail"))); }},
    {"submitted_path", [](json_t* record) { return PathOf(SubmittedSamplePath(record)); }},
    {"network_path", [](json_t* record) { return PathOf(NetworkProgramPath(record)); }},
    {"false_positive_path", [](json_t* record) { return PathOf(FalsePositivePath(record)); }},
    {"quarantine_entry", EntryOf},
};
// And of all of them.
const std::map<std::string, std::optional<std::string> (*)(const JsonOwner&)> kListReaders = {
    {"kept", KeepDetectionRecords}, {"popup_entries", PopupEntriesOf}};

std::string ResultsOf(const JsonOwner& records, const std::function<std::string(json_t*)>& read) {
  std::string results;
  for (size_t i = 0; i < json_array_size(records.Get()); ++i) {
    results += (i == 0 ? "" : "\n") + read(json_array_get(records.Get(), i));
  }
  return results;
}

TEST(DetectionRecords, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("detection_records")) {
    SCOPED_TRACE(recorded.Name());
    bool isKnown = false;
    for (const auto& [field, read] : kReaders) {
      if (recorded.Has(field)) {
        EXPECT_EQ(ResultsOf(Load(recorded["input"]), read), recorded[field]);
        isKnown = true;
      }
    }
    for (const auto& [field, read] : kListReaders) {
      if (recorded.Has(field)) {
        EXPECT_EQ(read(Load(recorded["input"])).value_or(""), recorded[field]);
        isKnown = true;
      }
    }
    EXPECT_TRUE(isKnown);
  }
}

TEST(DetectionRecords, Nothing) {
  EXPECT_FALSE(NormalizeRecord(nullptr));
  EXPECT_EQ(RecordFingerprint(nullptr), 0u);
  EXPECT_FALSE(KeepDetectionRecords({}));
  EXPECT_FALSE(PopupEntriesOf({}));
  EXPECT_FALSE(ReadQuarantineEntry(nullptr));
}

TEST(DetectionRecords, DeepAndLongOnes) {
  const std::string deep = std::string(2000, '[') + std::string(2000, ']');
  const std::string name(10 << 20, 'n');
  const auto text = KeepDetectionRecords(
      Load(R"([{"fid": 50, "detail": {"x": )" + deep + R"(, "procname": ")" + name + R"("}}])"));
  EXPECT_TRUE(text == R"([{"fid":50,"x":)" + deep + R"(,"procname":")" + name +
                          R"(","procname_name":")" + name + R"("}])");
}

// What a library may hand over although no text holds it: nothing is sent then.
TEST(DetectionRecords, TextThatIsNotUtf8) {
  const JsonOwner records(json_pack("[{s:i, s:{s:s, s:o, s:o}}]", "fid", 48, "detail", "clsname",
                                    "c", "url", json_string_nocheck("http://\xFF/"), "procname",
                                    json_string_nocheck("\xFE\\\xFF")));
  EXPECT_FALSE(KeepDetectionRecords(records));
}

TEST(Fingerprints, HowManyAreRemembered) {
  EXPECT_EQ(kMaxFingerprints, 536870911u);
}

}  // namespace
}  // namespace ostrell
