#include "unified/event_fields.h"

#include "base/text.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

TEST(EventFields, RecordedCases) {
  ExpectRecorded("event_fields", [](const std::string& input, const auto&) {
    const std::wstring data = WideFromUtf8(input).value();
    const auto fields = ExtractApplicationFields(data);
    return (NamesProduct(data) ? "product: " : "") +
           Utf8FromWide(fields.name + L"|" + fields.timestamp);
  });
}

}  // namespace
}  // namespace ostrell
