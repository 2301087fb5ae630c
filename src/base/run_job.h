#pragma once

#include <exception>

namespace ostrell {

// Runs a job of a sequence. One that runs out of memory has failed like any other: what it threw
// ends here, and the next jobs run.
template <class Job, class... Args>
void RunJob(Job&& job, Args&&... args) {
  try {
    job(args...);
  } catch (const std::exception&) {
    return;
  }
}

}  // namespace ostrell
