#include "tests/jobs/recorded_machine.h"
#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

class RecordedJobs : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(All, RecordedJobs,
                         testing::Values("machine_information_job", "detection_log_job",
                                         "popup_block_job", "sample_job", "quarantine_job",
                                         "scan_statistics_job", "unified_report_job",
                                         "report_sequence", "dump_files", "log_stats",
                                         "event_logs"));

TEST_P(RecordedJobs, HaveTheirOutcome) {
  ExpectRecorded(GetParam(), [](const std::string& change, const RecordedCase& recorded) {
    return OutcomeOf(recorded.Has("machine") ? recorded["machine"] : "{}", change);
  });
}

}  // namespace
}  // namespace ostrell
