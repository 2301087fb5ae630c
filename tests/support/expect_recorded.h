#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recorded_cases.h"

namespace ostrell {

// Of every case of a reader: `outcome` of each `input` has to be the `expect` beside it.
template <class Outcome>
void ExpectRecorded(const std::string& reader, const Outcome& outcome) {
  for (const RecordedCase& recorded : CasesOf(reader)) {
    const auto inputs = recorded.All("input");
    const auto expected = recorded.All("expect");
    EXPECT_EQ(inputs.size(), expected.size()) << recorded.Name();
    for (size_t i = 0; i < inputs.size(); ++i) {
      EXPECT_EQ(outcome(inputs[i], recorded), expected.at(i))
          << recorded.Name() << ": " << inputs[i];
    }
  }
}

}  // namespace ostrell
