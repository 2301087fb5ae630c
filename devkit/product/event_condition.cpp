#include "devkit/product/event_condition.h"

#include <algorithm>

#include "devkit/product/text_cursor.h"
#include "devkit/product/xml_tokens.h"

namespace ostrell {
namespace {

constexpr int kDepthLimit = 32;
constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view kDigits = "0123456789";

enum class Operator { kEqual, kAtLeast, kAtMost };
using Number = std::optional<uint64_t> EventSystem::*;

bool Compare(uint64_t left, Operator comparison, uint64_t right) {
  switch (comparison) {
    case Operator::kEqual:
      return left == right;
    case Operator::kAtLeast:
      return left >= right;
    case Operator::kAtMost:
      return left <= right;
  }
  return false;
}

EventCondition NumberCondition(Number member, Operator comparison, uint64_t value) {
  return [=](const EventSystem& system) {
    const auto& found = system.*member;
    return found && Compare(*found, comparison, value);
  };
}

// The analyzer takes what a std::function holds for lost.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)

// A recursive-descent parser; each operation gives an empty condition for what it cannot parse.
class ConditionParser {
 public:
  explicit ConditionParser(std::string_view text) : rest(text) {}

  EventCondition ParseSelect() {
    if (!Take("*")) {
      return {};
    }
    EventCondition condition = [](const EventSystem&) { return true; };
    if (Take("[")) {
      if (!TakeWord("System") || !Take("[")) {
        return {};
      }
      condition = ParseAny();
      if (!Take("]") || !Take("]")) {
        return {};
      }
    }
    rest.TakeBlanks();
    return rest.AtEnd() ? condition : EventCondition();
  }

 private:
  EventCondition ParseAny() {
    auto terms = ParseList("or", [this] { return ParseEvery(); });
    if (terms.empty()) {
      return {};
    }
    return [terms = std::move(terms)](const EventSystem& system) {
      return std::any_of(terms.begin(), terms.end(),
                         [&](const auto& term) { return term(system); });
    };
  }

  EventCondition ParseEvery() {
    auto terms = ParseList("and", [this] { return ParseTerm(); });
    if (terms.empty()) {
      return {};
    }
    return [terms = std::move(terms)](const EventSystem& system) {
      return std::all_of(terms.begin(), terms.end(),
                         [&](const auto& term) { return term(system); });
    };
  }

  // Terms with `word` between two of them; none when one cannot be parsed.
  template <class ParseOne>
  std::vector<EventCondition> ParseList(std::string_view word, ParseOne&& parseOne) {
    std::vector<EventCondition> terms;
    do {
      EventCondition term = parseOne();
      if (!term) {
        return {};
      }
      terms.push_back(std::move(term));
    } while (TakeWord(word));
    return terms;
  }

  EventCondition ParseTerm() {
    if (!Take("(")) {
      return ParseComparison();
    }
    if (depth == kDepthLimit) {
      return {};
    }
    ++depth;
    EventCondition inner = ParseAny();
    --depth;
    return Take(")") ? inner : EventCondition();
  }

  EventCondition ParseComparison() {
    if (TakeWord("Provider")) {
      return TakeAttribute("Name") ? ParseProvider() : EventCondition();
    }
    if (TakeWord("TimeCreated")) {
      return TakeAttribute("SystemTime") ? ParseTime() : EventCondition();
    }
    if (TakeWord("EventID")) {
      return ParseNumber(&EventSystem::eventId);
    }
    return TakeWord("Level") ? ParseNumber(&EventSystem::level) : EventCondition();
  }

  EventCondition ParseProvider() {
    const auto name = Take("=") ? TakeQuoted() : std::nullopt;
    if (!name) {
      return {};
    }
    return
        [name = std::string(*name)](const EventSystem& system) { return system.provider == name; };
  }

  EventCondition ParseTime() {
    const auto comparison = TakeOperator();
    const auto ticks = TicksFromEventTime(TakeQuoted().value_or(""));
    return comparison && ticks ? NumberCondition(&EventSystem::timeCreated, *comparison, *ticks)
                               : EventCondition();
  }

  EventCondition ParseNumber(Number member) {
    const auto comparison = TakeOperator();
    rest.TakeBlanks();
    const auto value = DecimalNumber(rest.TakeAll(kDigits));
    return comparison && value ? NumberCondition(member, *comparison, *value) : EventCondition();
  }

  bool Take(std::string_view expected) {
    rest.TakeBlanks();
    return rest.Take(expected);
  }

  bool TakeWord(std::string_view word) {
    rest.TakeBlanks();
    return TextCursor(rest).TakeAll(kLetters) == word && rest.Take(word);
  }

  bool TakeAttribute(std::string_view name) { return Take("/") && Take("@") && TakeWord(name); }

  std::optional<Operator> TakeOperator() {
    if (Take(">=")) {
      return Operator::kAtLeast;
    }
    if (Take("<=")) {
      return Operator::kAtMost;
    }
    return Take("=") ? std::optional(Operator::kEqual) : std::nullopt;
  }

  std::optional<std::string_view> TakeQuoted() {
    if (!Take("'")) {
      return std::nullopt;
    }
    const std::string_view text = rest.TakeUntil("'");
    return rest.Take("'") ? std::optional(text) : std::nullopt;
  }

  TextCursor rest;
  int depth = 0;
};

}  // namespace

EventCondition ParseEventCondition(std::string_view xpath) {
  return ConditionParser(xpath).ParseSelect();
}

// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)

}  // namespace ostrell
