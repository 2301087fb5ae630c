#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/json.h"
#include "devkit/product/record_query_evaluation.h"
#include "platform/policydb.h"
#include "tests/support/outside_call.h"

namespace ostrell {

// A policy database in memory; one at a time. Counts the objects it gave out.
class FakePolicyDb {
 public:
  FakePolicyDb() { current = this; }
  ~FakePolicyDb() { current = nullptr; }
  FakePolicyDb(const FakePolicyDb&) = delete;
  FakePolicyDb& operator=(const FakePolicyDb&) = delete;

  std::map<int32_t, std::string> documents;  // JSON text by number; 0 are the detection records
  std::optional<std::string> quarantine;     // JSON text of its list; nothing: does not open
  std::map<int64_t, std::string> held;       // content of the quarantined files
  int32_t restoreResult = 1;

  std::vector<std::string> queries;  // descriptors of the record queries
  std::vector<int64_t> restored;     // ids
  std::string dataPath;              // that a document was opened under last
  int live = 0;

  PolicyDb Library() const { return PolicyDb({OpenDocument, OpenQuarantine, nullptr}); }

 private:
  static inline FakePolicyDb* current = nullptr;

  static json_t* Parse(const std::string& text) { return json_loads(text.c_str(), 0, nullptr); }

  // What a library answers that knows better: a new reference or null.
  static json_t* Answer(const OutsideCall& call, const std::function<json_t*()>& good) {
    switch (call.Way()) {
      case 0:
        return good();
      case 1:
        return nullptr;
      case 2:
        return json_null();
      default:
        return Parse(R"([7, null, "x", [], {"ts": "x", "fid": {}, "detail": 7}])");
    }
  }

  struct Document final : PolicyDocument {
    std::string text;
    void Reserved0() override {}
    void Reserved1() override {}
    void Release() override {
      const OutsideCall call(0);
      --current->live;
      delete this;
    }
    void Reserved3() override {}
    json_t* Json() override {
      const OutsideCall call(3);
      return Answer(call, [this] { return Parse(text); });
    }
    void Reserved5() override {}
    void Reserved6() override {}
    json_t* Query(json_t* descriptor) override {
      const OutsideCall call(3);
      const JsonText asked(json_dumps(descriptor, JSON_COMPACT));
      current->queries.emplace_back(asked ? asked.Get() : "");
      const JsonOwner records(Parse(text));
      return Answer(call, [&] { return EvaluateRecordQuery(records.Get(), descriptor).Release(); });
    }
  };

  struct Held final : Quarantine {
    void Release() override {
      const OutsideCall call(0);
      --current->live;
      delete this;
    }
    void Reserved1() override {}
    void Reserved2() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    int32_t Restore(int64_t id, SvclinkObject* stream) override {
      const OutsideCall call(2);
      current->restored.push_back(id);
      const std::string& content = current->held[id];
      if (!call.Fails()) {
        stream->write(stream, content.data(), static_cast<uint32_t>(content.size()));
      }
      return call.Or(current->restoreResult, {0, 1});
    }
    void Reserved10() override {}
    void Reserved11() override {}
    void Reserved12() override {}
    json_t* List() override {
      const OutsideCall call(3);
      return Answer(call, [] { return Parse(*current->quarantine); });
    }
  };

  static PolicyDocument* OpenDocument(int32_t number, const char* path) {
    const OutsideCall call(1);
    current->dataPath = path;
    const auto found = current->documents.find(number);
    if (found == current->documents.end() || call.Fails()) {
      return nullptr;
    }
    ++current->live;
    auto* const document = new Document();
    document->text = found->second;
    return document;
  }

  static Quarantine* OpenQuarantine() {
    const OutsideCall call(1);
    if (!current->quarantine || call.Fails()) {
      return nullptr;
    }
    ++current->live;
    return new Held();
  }
};

}  // namespace ostrell
