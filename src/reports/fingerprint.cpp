#include "reports/fingerprint.h"

#include <algorithm>
#include <array>

#include "reports/detection_kinds.h"

namespace ostrell {
namespace {

using Type = FingerprintField::Type;

constexpr FingerprintField Text(const char* name) {
  return {name, Type::kText};
}
constexpr FingerprintField Integer(const char* name) {
  return {name, Type::kInteger};
}

// Unused places are kind 0, which has no fields, and fields without a name.
struct FingerprintRule {
  std::array<uint32_t, 6> kinds;
  std::array<FingerprintField, 10> fields;
};

// 49 reads "action" where 5 reads "actionid", and 66 leaves out the "treatment" of 60: both are
// meant.
constexpr FingerprintRule kFingerprintRules[] = {
    {{1, 46},
     {Text("rid"), Text("pathname"), Text("procname"), Integer("scan_mask"), Integer("treatment"),
      Integer("result")}},
    {{2, 28}, {Text("recname"), {"pathname", Type::kTextOfMaster}, Integer("treatment")}},
    {{3},
     {Text("rid"), Text("pathname"), Text("procname"), Integer("treatment"), Integer("result")}},
    {{4, 41}, {Text("rid"), Text("pathname"), Integer("treatment"), Integer("result")}},
    {{5},
     {Text("clsname"), Text("recname"), Integer("montype"), Integer("actionid"), Text("procname"),
      Text("res_path"), Text("res_val"), Text("res_cmd"), Integer("treatment")}},
    {{15},
     {Text("clsname"),
      Text("procname"),
      {"domain", Type::kTextOfRogue},
      {"url", Type::kTextOfOthers}}},
    {{17}, {Text("rid"), Text("pathname"), Text("procname"), Integer("treatment")}},
    {{30, 31, 47, 48, 53, 56},
     {Text("detection"), Text("module"), Text("procname"), Integer("outbound"), Integer("blocked"),
      Integer("protocol"), Integer("icmp_type"), Integer("icmp_code"), Text("laddr"),
      Text("raddr")}},
    {{49},
     {Text("clsname"), Text("recname"), Integer("montype"), Integer("action"), Text("procname"),
      Text("res_path"), Text("res_val"), Text("res_cmd"), Integer("treatment")}},
    {{50, 64}, {Text("procname")}},
    {{59},
     {Text("rid"), Text("recname"), Text("procname"), Text("pathname"), Integer("scan_mask"),
      Integer("treatment"), Integer("result")}},
    {{60},
     {Text("name"), Text("clsname"), Text("procname"), Text("recname"), Integer("treatment")}},
    {{66}, {Text("name"), Text("clsname"), Text("procname"), Text("recname")}},
};

bool IsUnused(const FingerprintField& field) {
  return field.name == nullptr;
}

uint32_t ChainInteger(uint32_t fingerprint, int32_t value) {
  char bytes[sizeof value];
  for (size_t i = 0; i < sizeof value; ++i) {
    bytes[i] = static_cast<char>(static_cast<uint32_t>(value) >> (8 * i));
  }
  return ChainFingerprint(fingerprint, {bytes, sizeof bytes});
}

uint32_t ChainText(uint32_t fingerprint, const json_t* value) {
  return json_is_string(value)
             ? ChainFingerprint(fingerprint, {json_string_value(value), json_string_length(value)})
             : fingerprint;
}

uint32_t ChainField(uint32_t fingerprint, const json_t* detail, const FingerprintField& field) {
  const json_t* const owner = field.type == Type::kTextOfMaster ? MasterProcess(detail) : detail;
  const json_t* const value = json_object_get(owner, field.name);
  if (field.type == Type::kInteger) {
    return ChainInteger(fingerprint, static_cast<int32_t>(json_integer_value(value)));
  }
  if (field.type == Type::kTextOfRogue || field.type == Type::kTextOfOthers) {
    const bool isRogue = TextMember(detail, "clsname") == "rogue";
    if (isRogue != (field.type == Type::kTextOfRogue)) {
      return fingerprint;
    }
  }
  return ChainText(fingerprint, value);
}

}  // namespace

std::span<const FingerprintField> FingerprintFields(uint32_t kind) {
  if (kind == 0) {
    return {};
  }
  for (const auto& [kinds, fields] : kFingerprintRules) {
    if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) {
      return {fields.begin(), std::find_if(fields.begin(), fields.end(), IsUnused)};
    }
  }
  return {};
}

uint32_t RecordFingerprint(const json_t* record) {
  const auto unpacked = UnpackRecord(record);
  if (!unpacked) {
    return 0;
  }
  uint32_t fingerprint = ChainInteger(0, unpacked->fid);
  for (const FingerprintField& field : FingerprintFields(KindOf(unpacked->fid))) {
    fingerprint = ChainField(fingerprint, unpacked->detail, field);
  }
  return fingerprint;
}

}  // namespace ostrell
