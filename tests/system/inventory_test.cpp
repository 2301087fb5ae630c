#include "devkit/inventory/inventory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "tests/system/agent_run.h"

// A run of all reports against the sample product, held against docs/data-inventory.json.

namespace ostrell {
namespace {

// Header lines that the local server's tickets name; nothing else may pass for one.
const std::set<std::string> kTicketLines = {"Content-Type", "X-Ostrell-Ticket"};

bool HasTypeOf(const InventoryEntry& entry, const json_t* value) {
  const auto type = TextMember(entry.row, "type");
  return type == (json_is_integer(value)  ? "integer"
                  : json_is_string(value) ? "text"
                  : json_is_object(value) ? "object"
                                          : "") ||
         type == "any";
}

class InventoryOfARun : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string why;
    auto parsed = Inventory::Parse(ReadText(OSTRELL_INVENTORY), &why);
    ASSERT_TRUE(parsed) << why;
    inventory = std::make_unique<Inventory>(*std::move(parsed));
    const SampleProduct product(SampleProduct::Due::kAll);
    const AgentServer server;
    EXPECT_EQ(RunAgent().exitCode, 0);
    for (const JsonOwner& line : server.server.Requests()) {
      TakeRequest(line.Get());
    }
    for (const char* report : {"rc2", "rc3", "rc4", "rc5", "rc7"}) {
      for (const std::string& body : server.Bodies(report)) {
        TakeBody(report, body);
      }
    }
  }
  static void TearDownTestSuite() { inventory.reset(); }

  static void Take(const std::string& place, const InventoryEntry* entry) {
    if (entry == nullptr) {
      lacking.insert(place);
    } else {
      seen.insert(entry);
    }
  }

  static void TakeRequest(json_t* line) {
    const std::string report(TextMember(line, "report").value_or("?"));
    json_t* const query = json_object_get(line, "query");
    const bool isUpload = TextMember(line, "method") == "PUT";
    const std::string request = isUpload                      ? "upload"
                                : json_object_get(query, "o") ? "ticket"
                                                              : "question";
    const char* name = nullptr;
    json_t* value = nullptr;
    json_object_foreach(json_object_get(line, "headers"), name, value) {
      const InventoryEntry* const entry = inventory->OfHeader(report, request, name);
      const bool isSound = entry && entry->isOpen == kTicketLines.contains(name);
      Take(report + " header " + name, isSound ? entry : nullptr);
    }
    json_object_foreach(query, name, value) {
      if (!isUpload) {  // whose query here is that of its ticket
        Take(report + " ?" + name, inventory->OfQuery(report, request, name));
        sent[report] += json_string_value(value) + std::string("\n");
      }
    }
  }

  static void TakeBody(const std::string& report, const std::string& body) {
    sent[report] += body + '\n';
    if (const InventoryEntry* const whole = inventory->OfBody(report, "upload", "body")) {
      seen.insert(whole);
      return;
    }
    const JsonOwner items(json_loads(body.c_str(), 0, nullptr));
    EXPECT_TRUE(json_is_array(items.Get())) << report;
    WalkBody(*inventory, report, items.Get(), [&](auto pointer, auto value, auto entry) {
      const bool isSound = entry != nullptr && HasTypeOf(*entry, value);
      Take(report + " " + std::string(pointer), isSound ? entry : nullptr);
    });
  }

  static inline std::unique_ptr<Inventory> inventory;
  static inline std::set<std::string> lacking;  // without an entry, or of another type
  static inline std::set<const InventoryEntry*> seen;
  static inline std::map<std::string, std::string> sent;  // bodies and query values, by report
};

TEST_F(InventoryOfARun, EveryValueHasAnEntry) {
  EXPECT_THAT(lacking, testing::IsEmpty());
  EXPECT_EQ(sent.size(), 6u);
}

TEST_F(InventoryOfARun, EveryEntryButTheRareWasSeen) {
  for (const InventoryEntry& entry : inventory->Entries()) {
    EXPECT_EQ(seen.contains(&entry), !entry.isRare)
        << entry.report << ' ' << entry.path << ' ' << entry.kind;
  }
}

TEST_F(InventoryOfARun, NothingLeavesThatNeverDoes) {
  std::string sources;
  for (const auto& file : std::filesystem::recursive_directory_iterator(OSTRELL_SAMPLE)) {
    sources += file.is_regular_file() ? ReadText(file.path()) + '\n' : "";
  }
  size_t markers = 0;
  for (const json_t* const never : Elements(json_object_get(inventory->Document(), "never"))) {
    for (const json_t* const element : Elements(json_object_get(never, "markers"))) {
      const std::string marker = json_string_value(element);
      EXPECT_TRUE(sources.find(marker) != std::string::npos) << marker << " is not in the sample";
      for (const json_t* const report : Elements(json_object_get(never, "reports"))) {
        const std::string& bodies = sent[json_string_value(report)];
        EXPECT_TRUE(!bodies.empty() && bodies.find(marker) == std::string::npos)
            << marker << " left with " << json_string_value(report);
      }
      ++markers;
    }
  }
  EXPECT_GE(markers, 8u);
}

}  // namespace
}  // namespace ostrell
