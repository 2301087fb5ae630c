#include "transport/report_url.h"

namespace ostrell {

const char* ReportServerBaseUrl() {
  return OSTRELL_REPORT_SERVER;
}

}  // namespace ostrell
