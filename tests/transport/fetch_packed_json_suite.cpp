#include <gtest/gtest.h>

#include <string>

#include "tests/support/fake_svclink.h"
#include "tests/support/server_record.h"
#include "transport/fetch_packed_json.h"

// FetchPackedJson against a running report server. What answers that are none and a library
// that fails cost is seen in tests/cases/machine_information_job.

namespace ostrell {
namespace {

constexpr int32_t kUntouched = -1;

class FetchPackedJsonTest : public testing::Test {
 protected:
  JsonOwner Fetch(const FakeSvclink& svclink, std::string_view fault = {}) {
    status = kUntouched;
    JsonOwner json =
        FetchPackedJson(ReportUrlOf("rc1", token, fault).c_str(), &status, svclink.Library());
    EXPECT_EQ(svclink.live, 0) << "streams and records are released";
    return json;
  }

  const std::string token = FreshToken();
  int32_t status = kUntouched;
};

TEST_F(FetchPackedJsonTest, GoodAnswer) {
  const JsonOwner json = Fetch({});
  ASSERT_TRUE(json);
  EXPECT_TRUE(json_is_object(json_object_get(json.Get(), "samples")));
  EXPECT_EQ(json->refcount, 1u);
  EXPECT_EQ(status, 200);
  auto requests = RequestsWith("regid", token);
  ASSERT_EQ(StepsOf(requests), "GET 200");
  EXPECT_EQ(requests[0]["header names"], "Accept, Host");
}

TEST_F(FetchPackedJsonTest, StatusIsLeftToTheCaller) {
  FakeSvclink svclink;
  EXPECT_TRUE(Fetch(svclink, "status-404"));
  EXPECT_EQ(status, 404);
  svclink.odd["takeResult"] = 5;  // any that is not negative is success
  EXPECT_TRUE(FetchPackedJson(ReportUrlOf("rc1", token).c_str(), nullptr, svclink.Library()));
}

}  // namespace
}  // namespace ostrell
