#include "reports/popup_block_log.h"
#include "tests/jobs/job_run.h"

namespace ostrell {
namespace {

// A database that is missing is made for the product's service.
TEST(PopupBlockJob, SendsNothingWithoutEntries) {
  const PopupDatabase database;
  for (int round = 0; round < 2; ++round) {
    JobRun run;
    run.paths.databases[24] = PathText(database.path);
    PopupBlockJob(run.Get());
    EXPECT_EQ(run.Received(), Steps());
    EXPECT_EQ(run.Recorded(), Times());
    EXPECT_EQ(std::filesystem::exists(database.path), round == 0);
    std::filesystem::remove_all(database.folder);  // then it cannot be made
  }
}

}  // namespace
}  // namespace ostrell
