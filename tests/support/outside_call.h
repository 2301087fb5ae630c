#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

namespace ostrell {

// Which outside call fails, and how.
struct OutsideCallPlan {
  int64_t call = 0;                 // its number, from 1; 0: none fails
  int way = 1;                      // the way in which it does, from 1
  bool isLasting = false;           // and every call behind it in its first way
  std::function<void()> instead{};  // what is done at that call, which then does not fail
};

// The calls that leave the agent, as the fakes see them: counted, so that a test can let any one of
// them fail. A fake holds an OutsideCall for as long as it works, and what it allocates or calls
// meanwhile is its own affair and not counted.
class OutsideCall {
 public:
  // Counts from now on; nothing was counted before. Forgets what was counted.
  static void Begin(OutsideCallPlan next = {}) {
    plan = std::move(next);
    waysOfCalls.clear();
    isCounting = true;
  }
  static void End() { isCounting = false; }

  // Of the calls since Begin(), in how many ways each can fail.
  static const std::vector<int>& Ways() { return waysOfCalls; }

  // True where what is called or allocated is the agent's.
  static bool IsAgents() { return isCounting && depth == 0; }

  // A call that fails in `ways` ways; 0 for one that cannot.
  explicit OutsideCall(int ways) {
    if (depth++ > 0 || !isCounting) {
      return;
    }
    waysOfCalls.push_back(ways);
    const auto number = static_cast<int64_t>(waysOfCalls.size());
    if (number == plan.call && plan.instead) {
      plan.instead();
    } else if (number == plan.call || (plan.isLasting && plan.call > 0 && number > plan.call)) {
      way = ways == 0 ? 0 : number == plan.call ? plan.way : 1;
    }
  }
  ~OutsideCall() { --depth; }
  OutsideCall(const OutsideCall&) = delete;
  OutsideCall& operator=(const OutsideCall&) = delete;

  bool Fails() const { return way > 0; }
  // 0 when the call does not fail.
  int Way() const { return way; }
  // What the call answers: `good`, or what belongs to the way in which it fails.
  template <class Value>
  Value Or(Value good, std::initializer_list<std::type_identity_t<Value>> failures) const {
    return way > 0 ? failures.begin()[way - 1] : good;
  }

 private:
  static inline OutsideCallPlan plan;
  static inline std::vector<int> waysOfCalls;
  static inline bool isCounting = false;
  static inline int depth = 0;

  int way = 0;
};

}  // namespace ostrell
