#include "reports/detection_kinds.h"

#include <gtest/gtest.h>

#include <string>

#include "reports/detection_records.h"

namespace ostrell {
namespace {

constexpr char kDetail[] =
    R"({"rid": "0f3a", "pathname": "C:\\a\\x.exe", "procname": "C:\\b\\y.exe",
        "recname": "Virus/A", "processes": {"master": {"pathname": "D:\\m.exe"}},
        "clsname": "phishing", "montype": 4, "actionid": 2, "action": 3, "res_path": "HKLM\\Run",
        "res_val": "v", "res_cmd": "cmd", "url": "http://h/p", "domain": "h", "detection": "Scan",
        "module": "fw", "outbound": 1, "blocked": 0, "protocol": 6, "icmp_type": 8, "icmp_code": 0,
        "laddr": "192.0.2.1", "raddr": "198.51.100.7", "name": "tool", "scan_mask": 3,
        "treatment": 65541, "result": -1, "mail_from": "a@example.test", "solid": 0})";

JsonOwner Record(json_int_t fid) {
  return JsonOwner(json_pack("{s:I, s:I, s:o}", "fid", fid, "ts", json_int_t{1700000000}, "detail",
                             json_loads(kDetail, 0, nullptr)));
}

// The fingerprints were computed by another program over the same bytes.
struct Expectation {
  uint32_t kind;
  uint32_t fingerprint;
  const char* fields;
};
constexpr char kDetectionFields[] = " rid pathname procname scan_mask treatment result ";
constexpr char kNetworkFields[] =
    " detection module procname outbound blocked protocol icmp_type icmp_code laddr raddr ";
constexpr Expectation kExpectations[] = {
    {1, 0xa2f173ea, kDetectionFields},
    {46, 0x100000ff, kDetectionFields},
    {2, 0xe0a5c5a9, " recname processes treatment "},
    {28, 0x0ca472b9, " recname processes treatment "},
    {3, 0xe2a6917e, " rid pathname procname treatment result "},
    {4, 0x8475561a, " rid pathname treatment result "},
    {41, 0x9300fb5e, " rid pathname treatment result "},
    {5, 0x70ea6920,
     " clsname recname montype actionid procname res_path res_val res_cmd treatment "},
    {49, 0x37396c10,
     " clsname recname montype action procname res_path res_val res_cmd treatment "},
    {15, 0x119fcdb2, " clsname procname url "},
    {17, 0xe3704afe, " rid pathname procname treatment "},
    {30, 0x04b5c3c4, kNetworkFields},
    {31, 0x79788efb, kNetworkFields},
    {47, 0x7138d7a6, kNetworkFields},
    {48, 0x32b39dd4, kNetworkFields},
    {53, 0x633ae256, kNetworkFields},
    {56, 0x6a3bf8ae, kNetworkFields},
    {50, 0x107049a9, " procname "},
    {64, 0x1b713e41, " procname "},
    {59, 0x29a51215, " rid recname procname pathname scan_mask treatment result "},
    {60, 0x3188ef47, " name clsname procname recname treatment "},
    {66, 0xe2e490b5, " name clsname procname recname "},
    {69, 0x8d8e7713, ""},
    {6, 0x042f80c0, ""},
    {0, 0x2144df1c, ""},
    {67, 0xa8e528cf, ""},
};

// Another value of the same type.
void Change(json_t* detail, const char* name) {
  json_t* const value = json_object_get(detail, name);
  if (json_is_integer(value)) {
    json_integer_set(value, json_integer_value(value) ^ 0x40);
  } else if (json_is_string(value)) {
    json_string_set(value, (std::string(json_string_value(value)) + "2").c_str());
  } else {
    Change(json_object_get(value, "master"), "pathname");
  }
}

TEST(RecordFingerprint, CountsTheFieldsOfTheKindAndNoOther) {
  for (const auto& [kind, fingerprint, fields] : kExpectations) {
    SCOPED_TRACE(kind);
    EXPECT_EQ(RecordFingerprint(Record(kind).Get()), fingerprint);
    const JsonOwner names(json_loads(kDetail, 0, nullptr));
    const char* name = nullptr;
    json_t* value = nullptr;
    json_object_foreach(names.Get(), name, value) {
      const JsonOwner record = Record(kind);
      Change(json_object_get(record.Get(), "detail"), name);
      const bool counts =
          std::string(fields).find(" " + std::string(name) + " ") != std::string::npos;
      EXPECT_EQ(RecordFingerprint(record.Get()) != fingerprint, counts) << name;
    }
  }
  for (const int32_t kind : kReportedKinds) {
    EXPECT_TRUE(std::any_of(std::begin(kExpectations), std::end(kExpectations),
                            [kind](const Expectation& row) { return int32_t(row.kind) == kind; }))
        << kind;
  }
}

uint32_t FingerprintOf(const char* text) {
  const JsonOwner record(json_loads(text, 0, nullptr));
  return RecordFingerprint(record.Get());
}

TEST(RecordFingerprint, OddValues) {
  const struct {
    const char* record;
    const char* same;
    bool isSame;
  } cases[] = {
      // Missing, or of another type: no text, and the number 0.
      {R"({"fid": 50, "detail": {"procname": 7}})", R"({"fid": 50, "detail": {}})", true},
      {R"({"fid": 50, "detail": {"procname": ""}})", R"({"fid": 50, "detail": 1})", true},
      {R"({"fid": 4, "detail": {"result": 0}})", R"({"fid": 4, "detail": {"result": "9"}})", true},
      {R"({"fid": 4, "detail": {"result": 1.5}})", R"({"fid": 4, "detail": {}})", true},
      // The low 32 bits count.
      {R"({"fid": 4294967346, "detail": {"procname": "a"}})",
       R"({"fid": 50, "detail": {"procname": "a"}})", true},
      {R"({"fid": 4, "detail": {"result": 4294967295}})", R"({"fid": 4, "detail": {"result": -1}})",
       true},
      // The mark of what was submitted belongs to the fingerprint.
      {R"({"fid": -2147483598, "detail": {}})", R"({"fid": 50, "detail": {}})", false},
      // A rogue product is told by its domain, everything else by its URL.
      {R"({"fid": 15, "detail": {"clsname": "rogue", "domain": "d", "url": "1"}})",
       R"({"fid": 15, "detail": {"clsname": "rogue", "domain": "d", "url": "2"}})", true},
      {R"({"fid": 15, "detail": {"clsname": "Rogue", "domain": "d", "url": "1"}})",
       R"({"fid": 15, "detail": {"clsname": "Rogue", "domain": "d", "url": "2"}})", false},
      // Without kind or detail there is nothing to tell.
      {R"({"fid": "50", "detail": {}})", R"({"fid": 50})", true},
  };
  for (const auto& [record, same, isSame] : cases) {
    EXPECT_EQ(FingerprintOf(record) == FingerprintOf(same), isSame) << record;
  }
  EXPECT_EQ(FingerprintOf("[]"), 0u);
  EXPECT_EQ(RecordFingerprint(nullptr), 0u);
}

}  // namespace
}  // namespace ostrell
