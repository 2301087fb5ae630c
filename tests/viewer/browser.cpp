#include "tests/viewer/browser.h"

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace ostrell {
namespace {

// No sandbox: tests may run as root, in a container.
constexpr auto kCapabilities = R"({"capabilities": {"alwaysMatch": {"browserName": "chrome",
  "timeouts": {"script": 60000},
  "goog:loggingPrefs": {"browser": "ALL"}, "goog:chromeOptions": {"args": ["--headless=new",
  "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-proxy-server"]}}}})";

}  // namespace

bool Browser::IsInstalled() {
  return std::system("command -v chromium chromedriver >/dev/null") == 0;
}

// The driver takes a free port and says which.
Browser::Browser() : driver(popen("exec chromedriver --port=0", "r")) {
  constexpr std::string_view kSays = "started successfully on port ";
  std::array<char, 256> line{};
  while (url.empty() && std::fgets(line.data(), line.size(), driver) != nullptr) {
    const std::string_view text(line.data());
    if (const size_t at = text.find(kSays); at != std::string_view::npos) {
      url = "http://127.0.0.1:" + std::to_string(std::atoi(text.data() + at + kSays.size()));
    }
  }
  const JsonOwner made = Call("POST", "/session", JsonOwner(json_loads(kCapabilities, 0, nullptr)));
  session = TextMember(made.Get(), "sessionId").value_or("");
}

Browser::~Browser() {
  httplib::Client client(url);
  client.Delete("/session/" + session);
  client.Get("/shutdown");
  pclose(driver);
}

void Browser::Open(const std::string& page) {
  CallSession("POST", "/url", JsonOwner(json_pack("{s:s}", "url", page.c_str())));
}

void Browser::Show(int width, int height, bool isDark) {
  CallSession("POST", "/window/rect",
              JsonOwner(json_pack("{s:i, s:i}", "width", width, "height", height)));
  CallSession("POST", "/goog/cdp/execute",
              JsonOwner(json_pack("{s:s, s:{s:[{s:s, s:s}]}}", "cmd", "Emulation.setEmulatedMedia",
                                  "params", "features", "name", "prefers-color-scheme", "value",
                                  isDark ? "dark" : "light")));
}

JsonOwner Browser::Run(const std::string& body, const std::string& argument) {
  const std::string script =
      "const argument = arguments[0], done = arguments[1];"
      "(async () => {" +
      body + "})().then(done, (error) => done(`failed: ${error}`));";
  return CallSession(
      "POST", "/execute/async",
      JsonOwner(json_pack("{s:s, s:[s]}", "script", script.c_str(), "args", argument.c_str())));
}

std::string Browser::Text(const std::string& expression) {
  const JsonOwner value = Run("return " + expression);
  return json_is_string(value.Get())
             ? std::string(json_string_value(value.Get()), json_string_length(value.Get()))
             : "";
}

void Browser::WaitFor(const std::string& expression) {
  const JsonOwner isTrue =
      Run("const end = performance.now() + 30000; while (!(" + expression +
          ")) { if (performance.now() > end) return false; "
          "await new Promise((resolve) => setTimeout(resolve, 10)); } return true");
  if (!json_is_true(isTrue.Get())) {
    throw std::runtime_error(expression + " did not come true");
  }
}

void Browser::Press(const std::string& keys) {
  const JsonOwner focused = CallSession("GET", "/element/active");
  const char* name = nullptr;
  json_t* element = nullptr;
  json_object_foreach(focused.Get(), name, element) {
    CallSession("POST", std::string("/element/") + json_string_value(element) + "/value",
                JsonOwner(json_pack("{s:s}", "text", keys.c_str())));
  }
}

std::string Browser::Complaints() {
  const JsonOwner lines =
      CallSession("POST", "/se/log", JsonOwner(json_pack("{s:s}", "type", "browser")));
  std::string text;
  for (const json_t* const line : Elements(lines.Get())) {
    text.append(TextMember(line, "message").value_or("")).append("\n");
  }
  return text;
}

JsonOwner Browser::CallSession(const std::string& method, const std::string& path,
                               const JsonOwner& body) {
  return Call(method, "/session/" + session + path, body);
}

JsonOwner Browser::Call(const std::string& method, const std::string& path, const JsonOwner& body) {
  httplib::Client client(url);
  client.set_read_timeout(std::chrono::minutes(2));
  httplib::Request request;
  request.method = method;
  request.path = path;
  request.headers = {{"Content-Type", "application/json"}};
  request.body = body ? CompactText(body) : "";
  const httplib::Result answer = client.send(request);
  if (!answer || answer->status != 200) {
    throw std::runtime_error(path + ": " + (answer ? answer->body : "no answer"));
  }
  const std::string& text = answer->body;
  const JsonOwner value(json_loadb(text.data(), text.size(), JSON_ALLOW_NUL, nullptr));
  return JsonOwner(json_incref(json_object_get(value.Get(), "value")));
}

}  // namespace ostrell
