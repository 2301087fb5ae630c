#include "reports/detection_records.h"

#include <string_view>

#include "base/json_array_text.h"
#include "reports/detection_kinds.h"
#include "reports/fingerprint.h"

namespace ostrell {
namespace {

// Merges the members of `from` into `to`. One of them may replace the one that holds `from`.
void Merge(json_t* to, json_t* from) {
  const JsonOwner kept(json_incref(from));
  json_object_update(to, kept.Get());
}

// The host of a URL, or what stands in its place: from behind the first "://", or else from the
// beginning, to the first "/".
std::string_view HostOf(std::string_view url) {
  constexpr std::string_view kSchemeEnd = "://";
  const size_t scheme = url.find(kSchemeEnd);
  if (scheme != std::string_view::npos) {
    url.remove_prefix(scheme + kSchemeEnd.size());
  }
  return url.substr(0, url.find('/'));
}

void DeriveDomain(json_t* detail, const char* source) {
  if (const auto url = TextMember(detail, source)) {
    const std::string_view host = HostOf(*url);
    json_object_set_new(detail, "domain", json_stringn(host.data(), host.size()));
  }
}

void DeleteMailMembers(json_t* detail) {
  for (const char* name :
       {"mail_from", "mail_to", "mail_cc", "mail_bcc", "mail_subject", "pathname"}) {
    json_object_del(detail, name);
  }
}

bool HasMember(const json_t* object, const char* name) {
  return json_object_get(object, name) != nullptr;
}

void MarkSubmitted(json_t* record) {
  const auto fid = IntegerMember(record, "fid");
  const auto name = TextMember(record, "recname");
  if (!fid || (!name && HasMember(record, "recname"))) {
    return;
  }
  if (*fid < 0) {
    json_object_set_new(record, "fid", json_integer(KindOf(*fid)));
  }
  if (*fid < 0 || (name && name->find("!submit") != std::string_view::npos)) {
    json_object_set_new(record, "submit_record", json_integer(1));
  }
}

void ShortenTreatmentAndTime(json_t* record) {
  if (const auto treatment = IntegerMember(record, "treatment")) {
    json_object_set_new(record, "treatment", json_integer(*treatment & 0xFFFF));
  }
  if (const auto time = Integer64Member(record, "ts")) {
    json_object_set_new(record, "ts_occur", json_integer(*time));
    json_object_del(record, "ts");
  }
}

// The text behind the last backslash; all of it when there is none or it is the last character.
std::string_view BaseName(std::string_view path) {
  const size_t slash = path.rfind('\\');
  return slash == std::string_view::npos || slash + 1 == path.size() ? path
                                                                     : path.substr(slash + 1);
}

void AddBaseNames(json_t* record) {
  constexpr struct {
    const char* path;
    const char* name;
  } kPaths[] = {{"procname", "procname_name"},
                {"p_procname", "p_procname_name"},
                {"pathname", "pathname_name"},
                {"prot_procname", "prot_procname_name"},
                {"res_path", "res_path_name"}};
  for (const auto& [path, name] : kPaths) {
    if (const auto text = TextMember(record, path)) {
      const std::string_view base = BaseName(*text);
      json_object_set_new(record, name, json_stringn(base.data(), base.size()));
    }
  }
}

}  // namespace

bool NormalizeRecord(json_t* record) {
  json_object_del(record, "id");
  const auto unpacked = UnpackRecord(record);
  if (!unpacked) {
    return false;
  }
  json_t* const detail = unpacked->detail;
  switch (KindOf(unpacked->fid)) {
    case 2:
    case 28:
      if (json_t* const master = MasterProcess(detail)) {
        Merge(detail, master);
        return true;
      }
      return false;
    case 15:
      DeriveDomain(detail, "url");
      return HasMember(detail, "clsname");
    case 41:
      DeleteMailMembers(detail);
      return true;
    case 46:
      DeriveDomain(detail, "pathname");
      return HasMember(detail, "rid") || HasMember(detail, "recname");
    case 48:
      DeriveDomain(detail, "url");
      return true;
    default:
      return true;
  }
}

json_t* FlattenRecord(json_t* record) {
  Merge(record, json_object_get(record, "detail"));
  json_object_del(record, "detail");
  MarkSubmitted(record);
  ShortenTreatmentAndTime(record);
  AddBaseNames(record);
  return record;
}

std::optional<std::string> KeepDetectionRecords(const JsonOwner& records) {
  JsonArrayText kept;
  MetFingerprints met;
  for (json_t* const record : Elements(records.Get())) {
    if (NormalizeRecord(record) && met.IsNew(RecordFingerprint(record))) {
      kept.Add(FlattenRecord(record));
    }
  }
  return kept.Take();
}

}  // namespace ostrell
