#include "devkit/viewer/viewer.h"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>

#include "base/bytes.h"
#include "base/hex.h"
#include "base/print.h"
#include "base/sha1.h"
#include "devkit/report_server/json_text.h"
#include "devkit/report_server/loopback_server.h"
#include "devkit/report_server/whole_number.h"
#include "devkit/viewer/body_cache.h"
#include "devkit/viewer/body_difference.h"
#include "devkit/viewer/body_search.h"
#include "devkit/viewer/body_view.h"
#include "devkit/viewer/fault_switch_json.h"
#include "devkit/viewer/page_files.h"
#include "devkit/viewer/request_guard.h"

namespace ostrell {
namespace {

using httplib::Request;
using httplib::Response;

constexpr size_t kWorkerThreads = 16;
constexpr auto kLongestWait = std::chrono::milliseconds(5000);
constexpr size_t kMostChildren = 1000;
constexpr size_t kTextBlock = size_t{64} << 10;
constexpr size_t kHexBlock = size_t{4} << 10;
constexpr size_t kMaxChangeBytes = size_t{1} << 20;  // of a call that changes something

constexpr auto kBinary = "application/octet-stream";

const char* TypeOfFile(std::string_view name) {
  return name.ends_with(".js")     ? "text/javascript; charset=utf-8"
         : name.ends_with(".css")  ? "text/css; charset=utf-8"
         : name.ends_with(".json") ? kJson
         : name.ends_with(".svg")  ? "image/svg+xml"
                                   : "text/html; charset=utf-8";
}

// Empty for a file that the page does not have.
std::string_view ContentOf(std::string_view name) {
  const auto files = PageFiles();
  const auto found = std::ranges::find(files, name, &PageFile::name);
  return found != files.end() ? found->content : std::string_view();
}

uint64_t NumberParameter(const Request& request, const char* name, uint64_t otherwise = 0) {
  return WholeNumber<uint64_t>(request.get_param_value(name)).value_or(otherwise);
}

// What the library is given as a whole text it would compress for a browser, for more than a second
// where it is long.
void Send(Response& response, std::string text, const char* type) {
  const size_t size = text.size();
  if (size == 0) {
    response.set_content("", type);  // the library has no provider of nothing
    return;
  }
  response.set_content_provider(
      size, type, [text = std::move(text)](size_t from, size_t count, httplib::DataSink& sink) {
        return sink.write(text.data() + from, count);
      });
}

void SendJson(Response& response, const JsonOwner& value) {
  Send(response, CompactText(value), kJson);
}

void SendAttachment(Response& response, const std::string& bytes, const std::string& name) {
  response.headers.erase("Content-Security-Policy");
  response.set_header("Content-Security-Policy", "default-src 'none'; sandbox");
  response.set_header("Content-Disposition", "attachment; filename=\"" + name + "\"");
  Send(response, bytes, kBinary);
}

JsonOwner Parsed(std::string_view text) {
  return JsonOwner(json_loadb(text.data(), text.size(), JSON_ALLOW_NUL, nullptr));
}

// "question", "ticket" or "upload", as the inventory tells them apart.
const char* RequestKindOf(const KeptRequest& request, const json_t* line) {
  return request.isPut                                                     ? "upload"
         : json_object_get(json_object_get(line, "query"), "o") != nullptr ? "ticket"
                                                                           : "question";
}

}  // namespace

struct Viewer::Server : httplib::Server {
  Server(ReportServer& shown, Inventory described)
      : reports(shown), inventory(std::move(described)) {
    PrepareForLoopback(*this, kWorkerThreads);
    set_payload_max_length(kMaxChangeBytes);
    set_keep_alive_timeout(1);  // in seconds; a stop waits for connections that are kept
    set_pre_routing_handler([this](const Request& request, Response& response) {
      return LetIn(request, port, response) ? HandlerResponse::Unhandled : HandlerResponse::Handled;
    });
    Route();
  }

  void Route() {
    Get("/", [](const Request&, Response& response) { SendFile("index.html", response); });
    Get(R"(/page/([a-z_]+\.[a-z]+))", [](const Request& request, Response& response) {
      SendFile(request.matches[1].str(), response);
    });
    Get("/api/changes", Call(&Server::Changes));
    Get("/api/inventory",
        [](const Request&, Response& response) { SendFile("data-inventory.json", response); });
    Get(R"(/api/requests/(\d+))", CallFor(&Server::DescribeRequest));
    Get(R"(/api/requests/(\d+)/part)", CallFor(&Server::SendPart));
    Get(R"(/api/requests/(\d+)/sections)", CallFor(&Server::SendSections));
    Get(R"(/api/requests/(\d+)/text)", CallFor(&Server::SendText));
    Get(R"(/api/requests/(\d+)/bytes)", CallFor(&Server::SendBytes));
    Get(R"(/api/requests/(\d+)/find)", CallFor(&Server::Find));
    Get(R"(/api/requests/(\d+)/packed)", CallFor(&Server::SendPacked));
    Get(R"(/api/requests/(\d+)/body)", CallFor(&Server::SendBody));
    Get("/api/difference", Call(&Server::SendDifference));
    Get("/api/faults", Call(&Server::SendFaults));
    Put(R"(/api/faults/([a-z0-9-]+))", Call(&Server::SetFault));
    Delete(R"(/api/faults/([a-z0-9-]+))", Call(&Server::RemoveFault));
    Delete("/api/faults", Call(&Server::ClearFaults));
    Delete("/api/requests", Call(&Server::ClearRequests));
    Put(R"(/api/runs/(\d+|newest)/not_sent)", Call(&Server::SetNotSent));
  }

  using Method = void (Server::*)(const Request&, Response&);
  Handler Call(Method method) {
    return [this, method](const Request& request, Response& response) {
      (this->*method)(request, response);
    };
  }

  // Of calls whose path names a request.
  using RequestMethod = void (Server::*)(const KeptRequest&, const Request&, Response&);
  Handler CallFor(RequestMethod method) {
    return [this, method](const Request& request, Response& response) {
      const auto number = WholeNumber<uint64_t>(request.matches[1].str());
      const KeptRequestPtr kept = number ? reports.Log().Find(*number) : nullptr;
      if (kept) {
        (this->*method)(*kept, request, response);
      } else {
        Refuse(response, 404, "no such request is kept");
      }
    };
  }

  static void SendFile(std::string_view name, Response& response) {
    if (const std::string_view content = ContentOf(name); !content.empty()) {
      Send(response, std::string(content), TypeOfFile(name));
    } else {
      Refuse(response, 404, "no such file");
    }
  }

  void Changes(const Request& request, Response& response) {
    const auto wait = std::chrono::milliseconds(std::min<uint64_t>(
        NumberParameter(request, "wait", kLongestWait.count()), kLongestWait.count()));
    Send(response, reports.Changes(NumberParameter(request, "after"), wait), kJson);
  }

  JsonOwner DescribeValues(const KeptRequest& request, const json_t* line, const char* member) {
    const std::string_view kind = RequestKindOf(request, line);
    const bool isQuery = std::string_view(member) == "query";
    JsonOwner rows(json_array());
    const char* name = nullptr;
    json_t* value = nullptr;
    json_object_foreach(json_object_get(line, member), name, value) {
      const InventoryEntry* const entry = isQuery ? inventory.OfQuery(request.report, kind, name)
                                                  : inventory.OfHeader(request.report, kind, name);
      json_array_append_new(
          rows.Get(),
          json_pack(
              "{s:o, s:O, s:o}", "key", JsonString(name).Release(), "value", value, "entry",
              entry != nullptr ? json_integer(entry - inventory.Entries().data()) : json_null()));
    }
    return rows;
  }

  void DescribeRequest(const KeptRequest& kept, const Request&, Response& response) {
    const JsonOwner line = Parsed(kept.line);
    const InventoryEntry* const whole =
        inventory.OfBody(kept.report, RequestKindOf(kept, line.Get()), "body");
    SendJson(
        response,
        JsonOwner(json_pack(
            "{s:O, s:I, s:I, s:s, s:o, s:o, s:o}", "line", line.Get(), "run", json_int_t(kept.run),
            "time", json_int_t{kept.time}, "kind", RequestKindOf(kept, line.Get()), "query",
            DescribeValues(kept, line.Get(), "query").Release(), "headers",
            DescribeValues(kept, line.Get(), "headers").Release(), "body_entry",
            whole != nullptr ? json_integer(whole - inventory.Entries().data()) : json_null())));
  }

  void SendPart(const KeptRequest& kept, const Request& request, Response& response) {
    const std::string at = request.get_param_value("at");
    const std::string section = request.get_param_value("section");
    const auto body = bodies.Open(kept);
    const JsonOwner part = DescribePart(
        inventory, kept.report, body->document.Get(),
        {.at = at,
         .section = section,
         .from = NumberParameter(request, "from"),
         .count = std::min<size_t>(NumberParameter(request, "count", 100), kMostChildren)});
    if (part) {
      SendJson(response, part);
    } else {
      Refuse(response, 404, "no such value");
    }
  }

  void SendSections(const KeptRequest& kept, const Request&, Response& response) {
    SendJson(response, DescribeSections(inventory, kept.report, bodies.Open(kept)->document.Get()));
  }

  // A block of the unpacked text, whole characters: {"size", "next", "text"}.
  void SendText(const KeptRequest& kept, const Request& request, Response& response) {
    const auto body = bodies.Open(kept);
    const std::string_view text = body->unpacked;
    const size_t from = std::min<size_t>(NumberParameter(request, "from"), text.size());
    size_t end = std::min(from + kTextBlock, text.size());
    while (end < text.size() && end > from && (text[end] & 0xC0) == 0x80) {
      --end;
    }
    SendJson(response, JsonOwner(json_pack("{s:I, s:I, s:o}", "size", json_int_t(text.size()),
                                           "next", json_int_t(end), "text",
                                           JsonString(text.substr(from, end - from)).Release())));
  }

  // A block of the unpacked bytes: {"size", "sha1", "from", "hex"}.
  void SendBytes(const KeptRequest& kept, const Request& request, Response& response) {
    const auto body = bodies.Open(kept);
    const auto all = std::as_bytes(std::span(body->unpacked));
    const size_t from = std::min<size_t>(NumberParameter(request, "from"), all.size());
    const auto block = all.subspan(from, std::min(kHexBlock, all.size() - from));
    SendJson(response, JsonOwner(json_pack("{s:I, s:s, s:I, s:s}", "size", json_int_t(all.size()),
                                           "sha1", UpperHex(Sha1::Of(all)).c_str(), "from",
                                           json_int_t(from), "hex", UpperHex(block).c_str())));
  }

  // {"request": places in the line of the request, "body": places in its body}.
  void Find(const KeptRequest& kept, const Request& request, Response& response) {
    const std::string text = request.get_param_value("text");
    const auto body = bodies.Open(kept);
    const JsonOwner line = Parsed(kept.line);
    JsonOwner inBody = body->document ? FindInDocument(body->document.Get(), text)
                                      : FindInBytes(body->unpacked, text);
    SendJson(response, JsonOwner(json_pack("{s:o, s:o}", "request",
                                           FindInDocument(line.Get(), text).Release(), "body",
                                           inBody.Release())));
  }

  void SendPacked(const KeptRequest& kept, const Request&, Response& response) {
    SendAttachment(response, kept.received, Print("%04u.packed", kept.number));
  }

  void SendBody(const KeptRequest& kept, const Request&, Response& response) {
    SendAttachment(response, bodies.Open(kept)->unpacked, Print("%04u.body", kept.number));
  }

  // {"query": DescribeMemberDifference of the queries, "body": that of the bodies, or of their
  // bytes}.
  void SendDifference(const Request& request, Response& response) {
    const KeptRequestPtr older = reports.Log().Find(NumberParameter(request, "older"));
    const KeptRequestPtr newer = reports.Log().Find(NumberParameter(request, "newer"));
    if (!older || !newer) {
      Refuse(response, 404, "no such request is kept");
      return;
    }
    const JsonOwner olderLine = Parsed(older->line);
    const JsonOwner newerLine = Parsed(newer->line);
    JsonOwner ofQuery = DescribeMemberDifference(json_object_get(olderLine.Get(), "query"),
                                                 json_object_get(newerLine.Get(), "query"));
    const auto olderBody = bodies.Open(*older);
    const auto newerBody = bodies.Open(*newer);
    JsonOwner ofBody =
        olderBody->document && newerBody->document
            ? DescribeBodyDifference(olderBody->document.Get(), newerBody->document.Get())
            : DescribeByteDifference(olderBody->unpacked, newerBody->unpacked);
    SendJson(response, JsonOwner(json_pack("{s:o, s:o}", "query", ofQuery.Release(), "body",
                                           ofBody.Release())));
  }

  void SendFaults(const Request&, Response& response) {
    const auto states = reports.Faults().All();
    JsonOwner rows(json_array());
    for (const FaultEntry& fault : AllFaults()) {
      const auto found = states.find(fault.fault);
      const auto* const state = found != states.end() ? &found->second : nullptr;
      json_array_append_new(rows.Get(), DescribeSwitch(fault, state).Release());
    }
    SendJson(response, rows);
  }

  void SetFault(const Request& request, Response& response) {
    const auto fault = FaultNamed(request.matches[1].str());
    const auto how = SwitchOf(Parsed(request.body).Get());
    if (!fault || !how) {
      Refuse(response, fault ? 400 : 404, fault ? "no switch" : "no such fault");
      return;
    }
    reports.Faults().Set(*fault, *how);
    SendFaults(request, response);
  }

  void RemoveFault(const Request& request, Response& response) {
    if (const auto fault = FaultNamed(request.matches[1].str())) {
      reports.Faults().Remove(*fault);
    }
    SendFaults(request, response);
  }

  void ClearFaults(const Request& request, Response& response) {
    reports.Faults().Clear();
    SendFaults(request, response);
  }

  void ClearRequests(const Request&, Response& response) {
    reports.Log().Clear();
    response.set_content("{}", kJson);
  }

  void SetNotSent(const Request& request, Response& response) {
    const std::string named = request.matches[1].str();
    const auto run = named == "newest" ? reports.Log().NewestRun() : WholeNumber<uint64_t>(named);
    JsonOwner rows = Parsed(request.body);
    if (!json_is_array(rows.Get())) {
      Refuse(response, 400, "no list");
    } else if (!run || !reports.Log().SetNotSent(*run, std::move(rows))) {
      Refuse(response, 404, "no such run is kept");
    } else {
      response.set_content("{}", kJson);
    }
  }

  ReportServer& reports;
  const Inventory inventory;
  BodyCache bodies;
  int port = 0;
  std::thread accepting;
};

Viewer::Viewer(ReportServer& shown) : reports(shown) {}

Viewer::~Viewer() {
  Stop();
}

bool Viewer::Start(int port, std::string* why) {
  auto inventory = Inventory::Parse(ContentOf("data-inventory.json"), why);
  if (!inventory) {
    return false;
  }
  server = std::make_unique<Server>(reports, std::move(*inventory));
  server->port = ListenOnLoopback(*server, port, server->accepting, why);
  return server->port >= 0;
}

void Viewer::Stop() {
  if (server) {
    StopListening(*server, server->accepting);
  }
}

std::string Viewer::Url() const {
  return server && server->port > 0 ? Print("http://127.0.0.1:%d", server->port) : "";
}

}  // namespace ostrell
