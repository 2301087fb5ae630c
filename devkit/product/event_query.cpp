#include "devkit/product/event_query.h"

#include "devkit/product/xml_tokens.h"

namespace ostrell {
namespace {

bool IsStart(const XmlToken& token, const char* name) {
  return token.kind == XmlToken::Kind::kStart && token.text == name;
}

}  // namespace

std::optional<EventQuery> ParseEventQuery(std::string_view document) {
  // Three starts, the expression, and the ends, which stand in the starts' order.
  constexpr size_t kTokens = 7;
  const auto tokens = XmlTokens(document);
  if (!tokens || tokens->size() != kTokens) {
    return std::nullopt;
  }
  const XmlToken& list = (*tokens)[0];
  const XmlToken& query = (*tokens)[1];
  const XmlToken& select = (*tokens)[2];
  const XmlToken& expression = (*tokens)[3];
  if (!IsStart(list, "QueryList") || !IsStart(query, "Query") || !IsStart(select, "Select") ||
      expression.kind != XmlToken::Kind::kText || !list.attributes.empty() ||
      select.attributes.size() != 1 || !select.attributes.contains("Path")) {
    return std::nullopt;
  }
  const std::string& channel = select.attributes.at("Path");
  const std::map<std::string, std::string> agreed = {{"Id", "0"}, {"Path", channel}};
  if (query.attributes != agreed) {
    return std::nullopt;
  }
  return EventQuery{channel, ParseEventCondition(expression.text)};
}

}  // namespace ostrell
