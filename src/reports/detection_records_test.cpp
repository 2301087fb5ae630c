#include "reports/detection_records.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

JsonOwner Load(const std::string& text) {
  json_error_t error;
  JsonOwner value(json_loads(text.c_str(), JSON_DECODE_ANY, &error));
  EXPECT_TRUE(value) << error.text << " in " << text;
  return value;
}

// Compact, with sorted members.
std::string Text(const json_t* value) {
  const JsonText text(json_dumps(value, JSON_COMPACT | JSON_SORT_KEYS | JSON_ENCODE_ANY));
  return text ? text.Get() : "";
}

struct Rewriting {
  const char* from;
  const char* to;  // null: dropped
};

TEST(NormalizeRecord, ByKind) {
  const Rewriting cases[] = {
      {R"({"id": 1, "fid": 3, "ts": 5, "detail": {"id": 2}})",
       R"({"fid": 3, "ts": 5, "detail": {"id": 2}})"},
      // Not a record at all.
      {R"([1])", nullptr},
      {R"("text")", nullptr},
      {R"({"detail": {}})", nullptr},
      {R"({"fid": 3})", nullptr},
      {R"({"fid": 3.0, "detail": {}})", nullptr},
      // Any detail will do where nothing is needed of it.
      {R"({"fid": 3, "detail": "x"})", R"({"fid": 3, "detail": "x"})"},
      {R"({"fid": 41, "detail": 1})", R"({"fid": 41, "detail": 1})"},
      {R"({"fid": 15, "detail": []})", nullptr},
      // The master process speaks for the record, also where it replaces itself.
      {R"({"fid": 2, "detail": {"pathname": "own", "a": 1}})", nullptr},
      {R"({"fid": 28, "detail": {"processes": {"other": {}}}})", nullptr},
      {R"({"fid": 2, "detail": {"pathname": "own", "processes": {"master": {"pathname": "m"}}}})",
       R"({"fid": 2, "detail": {"pathname": "m", "processes": {"master": {"pathname": "m"}}}})"},
      {R"({"fid": 28, "detail": {"processes": {"master": {"processes": 1, "z": 2}}}})",
       R"({"fid": 28, "detail": {"processes": 1, "z": 2}})"},
      {R"({"fid": 2, "detail": {"processes": {"master": "m"}}})",
       R"({"fid": 2, "detail": {"processes": {"master": "m"}}})"},
      // The same kind when it was submitted, or carries more than 32 bits.
      {R"({"fid": -2147483646, "detail": {}})", nullptr},
      {R"({"fid": 4294967298, "detail": {}})", nullptr},
      // Private members of a mail.
      {R"({"fid": 41, "detail": {"mail_from": 1, "mail_to": 1, "mail_cc": 1, "mail_bcc": 1,
           "mail_subject": 1, "pathname": 1, "mail_size": 1}})",
       R"({"fid": 41, "detail": {"mail_size": 1}})"},
      {R"({"fid": 15, "detail": {"url": "http://h/p"}})", nullptr},
      {R"({"fid": 15, "detail": {"clsname": "c", "url": "http://h:8/p://x/", "domain": "old"}})",
       R"({"fid": 15, "detail": {"clsname": "c", "url": "http://h:8/p://x/", "domain": "h:8"}})"},
      {R"({"fid": 15, "detail": {"clsname": "c", "url": 1, "domain": "old"}})",
       R"({"fid": 15, "detail": {"clsname": "c", "url": 1, "domain": "old"}})"},
      {R"({"fid": 46, "detail": {"pathname": "a/b"}})", nullptr},
      {R"({"fid": 46, "detail": {"pathname": "/b", "rid": "r"}})",
       R"({"fid": 46, "detail": {"pathname": "/b", "rid": "r", "domain": ""}})"},
      {R"({"fid": 46, "detail": {"recname": "n"}})", R"({"fid": 46, "detail": {"recname": "n"}})"},
      {R"({"fid": 48, "detail": {"url": "plain"}})",
       R"({"fid": 48, "detail": {"url": "plain", "domain": "plain"}})"},
      {R"({"fid": 48, "detail": {"url": "x/y://z/w"}})",
       R"({"fid": 48, "detail": {"url": "x/y://z/w", "domain": "z"}})"},
  };
  for (const auto& [from, to] : cases) {
    const JsonOwner record = Load(from);
    EXPECT_EQ(NormalizeRecord(record.Get()), to != nullptr) << from;
    if (to != nullptr) {
      EXPECT_EQ(Text(record.Get()), Text(Load(to).Get()));
    }
  }
  EXPECT_FALSE(NormalizeRecord(nullptr));
}

TEST(FlattenRecord, OneLevel) {
  const Rewriting cases[] = {
      {R"({"fid": 3, "ts": 5, "detail": {"a": 1, "b": {"c": 2}}})",
       R"({"fid": 3, "ts_occur": 5, "a": 1, "b": {"c": 2}})"},
      // A member of the detail wins, and what follows is about it.
      {R"({"fid": 3, "ts": 5, "detail": {"fid": -2147483644, "ts": 9}})",
       R"({"fid": 4, "submit_record": 1, "ts_occur": 9})"},
      {R"({"fid": 3, "detail": {"detail": {"x": 1}, "a": 1}})", R"({"fid": 3, "a": 1})"},
      {R"({"fid": 3, "detail": [1]})", R"({"fid": 3})"},
      {R"({"fid": 3})", R"({"fid": 3})"},
      // Marks of what was submitted.
      {R"({"fid": -2147483647, "detail": {}})", R"({"fid": 1, "submit_record": 1})"},
      {R"({"fid": -1, "detail": {}})", R"({"fid": 2147483647, "submit_record": 1})"},
      {R"({"fid": 4294967295, "detail": {}})", R"({"fid": 2147483647, "submit_record": 1})"},
      {R"({"fid": 1, "detail": {"recname": "Virus/A!submit.B"}})",
       R"({"fid": 1, "recname": "Virus/A!submit.B", "submit_record": 1})"},
      {R"({"fid": 1, "detail": {"recname": "!Submit"}})", R"({"fid": 1, "recname": "!Submit"})"},
      {R"({"fid": -2147483647, "detail": {"recname": 1}})",
       R"({"fid": -2147483647, "recname": 1})"},
      {R"({"fid": "1", "detail": {"recname": "!submit"}})",
       R"({"fid": "1", "recname": "!submit"})"},
      {R"({"fid": 1, "detail": {"treatment": 65541}})", R"({"fid": 1, "treatment": 5})"},
      {R"({"fid": 1, "detail": {"treatment": -1}})", R"({"fid": 1, "treatment": 65535})"},
      {R"({"fid": 1, "detail": {"treatment": "5", "ts": 1.5}})",
       R"({"fid": 1, "treatment": "5", "ts": 1.5})"},
      {R"({"fid": 1, "ts": 9223372036854775807, "detail": {"ts_occur": 1}})",
       R"({"fid": 1, "ts_occur": 9223372036854775807})"},
      {R"({"fid": 1, "detail": {"procname": "C:\\a\\b.exe", "p_procname": "b.exe",
           "pathname": "C:\\a\\", "prot_procname": "\\", "res_path": "a/b"}})",
       R"({"fid": 1, "procname": "C:\\a\\b.exe", "procname_name": "b.exe", "p_procname": "b.exe",
           "p_procname_name": "b.exe", "pathname": "C:\\a\\", "pathname_name": "C:\\a\\",
           "prot_procname": "\\", "prot_procname_name": "\\", "res_path": "a/b",
           "res_path_name": "a/b"})"},
      {R"({"fid": 1, "detail": {"procname": 1, "res_path": ""}})",
       R"({"fid": 1, "procname": 1, "res_path": "", "res_path_name": ""})"},
  };
  for (const auto& [from, to] : cases) {
    const JsonOwner record = Load(from);
    EXPECT_EQ(FlattenRecord(record.Get()), record.Get());
    EXPECT_EQ(Text(record.Get()), Text(Load(to).Get())) << from;
  }
}

TEST(KeepDetectionRecords, FirstOfEachEventStays) {
  // The fingerprint of the last one is that of the first: its process was searched for.
  const JsonOwner records = Load(R"([
      {"id": 9, "fid": 50, "ts": 9, "detail": {"procname": "C:\\b\\y.exe"}}, 7,
      {"id": 8, "fid": 30, "ts": 8, "detail": {"procname": "p"}},
      {"id": 7, "fid": 30, "ts": 7, "detail": {"procname": "p"}},
      {"id": 6, "fid": 2, "ts": 6, "detail": {}},
      {"id": 5, "fid": -2147483618, "ts": 5, "detail": {"procname": "p"}},
      {"id": 4, "fid": -2147483598, "ts": 4, "detail": {"procname": "C:\\b\\nbt9acd9.exe"}}])");
  const JsonOwner kept = KeepDetectionRecords(records);
  EXPECT_EQ(Text(kept.Get()), Text(Load(R"([
      {"fid": 50, "ts_occur": 9, "procname": "C:\\b\\y.exe", "procname_name": "y.exe"},
      {"fid": 30, "ts_occur": 8, "procname": "p", "procname_name": "p"},
      {"fid": 30, "ts_occur": 5, "procname": "p", "procname_name": "p", "submit_record": 1}])")
                                       .Get()));
  EXPECT_FALSE(KeepDetectionRecords(Load("[1, {}]")));
  EXPECT_FALSE(KeepDetectionRecords(Load("[]")));
  EXPECT_FALSE(KeepDetectionRecords({}));
}

TEST(KeepDetectionRecords, DeepAndLongOnes) {
  const std::string deep = std::string(2000, '[') + std::string(2000, ']');
  const std::string name(10 << 20, 'n');
  const JsonOwner records =
      Load(R"([{"fid": 50, "detail": {"x": )" + deep + R"(, "procname": ")" + name + R"("}}])");
  const std::string text = Text(KeepDetectionRecords(records).Get());
  EXPECT_TRUE(text == R"([{"fid":50,"procname":")" + name + R"(","procname_name":")" + name +
                          R"(","x":)" + deep + "}]");
}

// What a library may hand over although no text holds it: it is carried, and does not print.
TEST(KeepDetectionRecords, TextThatIsNotUtf8) {
  const JsonOwner records(json_pack("[{s:i, s:{s:s, s:o, s:o}}]", "fid", 48, "detail", "clsname",
                                    "c", "url", json_string_nocheck("http://\xFF/"), "procname",
                                    json_string_nocheck("\xFE\\\xFF")));
  const JsonOwner kept = KeepDetectionRecords(records);
  ASSERT_EQ(json_array_size(kept.Get()), 1u);
  EXPECT_EQ(CompactText(kept), "");
}

}  // namespace
}  // namespace ostrell
