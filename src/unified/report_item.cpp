#include "unified/report_item.h"

#include "base/text.h"

namespace ostrell {

JsonOwner NewReportItem(const char* reportType, std::wstring_view name, int64_t timestamp) {
  JsonOwner item(json_object());
  json_object_set_new(item.Get(), "report_type", json_string(reportType));
  json_object_set_new(item.Get(), "name", json_string(Utf8FromWide(name).c_str()));
  json_object_set_new(item.Get(), "timestamp", json_integer(timestamp));
  return item;
}

}  // namespace ostrell
