#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "devkit/report_server/faults.h"
#include "devkit/report_server/http_exchange.h"

namespace ostrell {

// The answers of the report server, right or wrong as the faults of the request say.

// Where a ticket leads: "https://127.0.0.1:18443" and, behind a "/fault/NAME" request, that prefix;
// by Fault::kFileUrl to the file in the folder `files` that is named like the ticket's number.
struct TicketPlace {
  std::string_view origin;
  std::string_view prefix;
  uint64_t number;
  std::filesystem::path files;
};
HttpAnswer TicketAnswer(const TicketPlace& place, ActiveFaults& faults);

// The packed record that holds the instructions document.
HttpAnswer RecordAnswer(std::string_view instructions, ActiveFaults& faults);

// The answer to the question whether a sample is known: its status says it.
HttpAnswer QuestionAnswer(bool known, ActiveFaults& faults);

// The faults that any GET of a report can have. `sameWithoutFault` is where a redirect leads.
HttpAnswer WithFaultsOfGet(HttpAnswer answer, std::string_view sameWithoutFault,
                           ActiveFaults& faults);

// The answer to a PUT of a ticket that was given out.
HttpAnswer PutAnswer(std::string_view sameWithoutFault, ActiveFaults& faults);

}  // namespace ostrell
