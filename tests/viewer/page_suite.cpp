#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "devkit/viewer/viewer.h"
#include "tests/support/kept_uploads.h"
#include "tests/system/agent_run.h"
#include "tests/viewer/browser.h"

// What a person sees of the report server, in a real browser.

namespace ostrell {
namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kMain = "document.querySelector('#report').textContent";
const std::string kList = "document.querySelector('#list').textContent";

class PageTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (Browser::IsInstalled()) {
      browser = std::make_unique<Browser>();
    }
  }
  static void TearDownTestSuite() { browser.reset(); }

  void SetUp() override {
    if (!browser) {
      GTEST_SKIP() << "Debian's chromium with its chromium-driver is not installed";
    }
    Serve(server);
  }

  // The page of a server, from now on.
  void Serve(ReportServer& shown) {
    browser->Open("about:blank");
    viewer = std::make_unique<Viewer>(shown);
    std::string why;
    ASSERT_TRUE(viewer->Start(0, &why)) << why;
    browser->Show(1280, 900, false);
    browser->Open(viewer->Url());
    browser->WaitFor("document.querySelector('#state').textContent.includes('requests')");
  }
  void TearDown() override {
    if (browser) {
      EXPECT_EQ(browser->Complaints(), "");
      browser->Open("about:blank");
    }
    if (agents) {
      agents->server.Stop();
    }
    server.Stop();  // before the page, whose calls wait for changes
  }

  static void Follow(const std::string& hash) { browser->Run("location.hash = argument", hash); }
  static void ChooseTab(const std::string& name) {
    browser->Run(
        "[...document.querySelectorAll('[role=tab]')].find((tab) => tab.textContent === "
        "argument).click()",
        name);
  }
  static void Opened(const std::string& selector) {
    browser->Run("document.querySelectorAll(argument).forEach((each) => { each.open = true; })",
                 selector);
  }
  // Of all types, and their members.
  static void OpenItems() {
    Opened(".panel > details");
    browser->WaitFor("document.querySelector('.tree > li > details') !== null");
    Opened(".tree > li > details");
  }
  static std::string Main() { return browser->Text(kMain); }

  // What axe-core finds of the rules for keyboard, screen reader and contrast.
  static void ExpectAccessible(const char* where) {
    const std::string found = browser->Text(
        "(await axe.run(document, {runOnly: ['wcag2a', 'wcag2aa', 'wcag21aa']})).violations.map("
        "({id, nodes}) => `${id}: ${nodes.map(({html}) => html).join(' ')}`).join('\\n')");
    EXPECT_EQ(found, "") << where;
  }

  static inline std::unique_ptr<Browser> browser;
  ReportServer server{{.port = 0}};
  std::unique_ptr<AgentServer> agents;
  std::unique_ptr<Viewer> viewer;  // last: it uses the others
};

// All reports of the sample product, as they come in, and each view of them.
TEST_F(PageTest, RunOfTheProgram) {
  const SampleProduct product(SampleProduct::Due::kAll);
  agents = std::make_unique<AgentServer>();
  Serve(agents->server);
  EXPECT_THAT(browser->Text(kList), HasSubstr("Nothing has come in yet"));
  EXPECT_EQ(RunAgent().exitCode, 0);
  browser->WaitFor(kList + ".includes('rc7')");
  browser->WaitFor("document.querySelector('#state').textContent === '1 runs, 42 requests'");
  EXPECT_THAT(browser->Text(kList), HasSubstr("the server knows the sample"));
  browser->Run("(0, eval)(argument)", ReadText(OSTRELL_AXE));

  const int64_t number = agents->Requests("rc7").back().number;
  Follow("#/request/" + std::to_string(number));
  browser->WaitFor(kMain + ".includes('log_stats 5 items')");
  EXPECT_THAT(Main(), Not(HasSubstr("not in the inventory")));
  Opened(".panel > details");
  browser->WaitFor("document.querySelectorAll('.tree > li > details').length === 14");
  Opened(".tree > li > details");
  browser->WaitFor("document.querySelectorAll('.tree ul > li .entry').length > 14 * 14");
  EXPECT_THAT(Main(), HasSubstr("Tells which program crashed"));
  ExpectAccessible("values");
  ChooseTab("Request");
  browser->WaitFor(kMain + ".includes('regid')");
  ExpectAccessible("request");
  ChooseTab("JSON text");
  browser->WaitFor(kMain + ".includes('\"report_type\":\"syslog\"')");
  ExpectAccessible("text");

  Follow("#/request/" + std::to_string(agents->Requests("rc3").back().number));
  browser->WaitFor(kMain + ".includes('SHA-1')");
  browser->WaitFor("document.querySelector('pre.hex') !== null");
  ExpectAccessible("bytes");
  Follow("#/history");
  browser->WaitFor(kMain + ".includes('rc7 by type')");
  ExpectAccessible("history");
  Follow("#/search");
  browser->WaitFor("document.activeElement.type === 'search'");
  browser->Press("INVOICE.exe\uE007");
  browser->WaitFor(kMain + ".includes('searched all 42 requests')");
  EXPECT_THAT(Main(), HasSubstr("rc2"));
  ExpectAccessible("search");
  Follow("#/faults");
  browser->WaitFor(kMain + ".includes('put-endless')");
  ExpectAccessible("faults");
  browser->Show(400, 800, true);
  ExpectAccessible("narrow and dark");
}

// Bodies, names and queries that try to be more than text.
TEST_F(PageTest, NothingOfABodyRuns) {
  const std::string script =
      R"(</script><script>window.turned = 1</script><img src=x onerror=\"window.turned = 1\">)";
  const std::string item = R"([{"report_type":")" + script + R"(","<b>":")" + script +
                           R"(","name":"javascript:window.turned = 1"}])";
  KeptUpload{.report = "rc7", .packed = Packed(item), .query = {{"<i>", "<u>"}}}.AddTo(server);
  KeptUpload{.report = "rc3", .packed = Packed(script)}.AddTo(server);
  Follow("#/request/1");
  browser->WaitFor(kMain + ".includes('not in the inventory')");
  OpenItems();
  browser->WaitFor(kMain + ".includes('javascript:window.turned')");
  ChooseTab("Request");
  browser->WaitFor(kMain + ".includes('<u>')");
  EXPECT_EQ(browser->Text("String(document.querySelectorAll('b, i, u, img').length)"), "0");
  EXPECT_EQ(browser->Text("String(window.turned)"), "undefined");

  // What the page could be talked into is refused by the browser itself.
  EXPECT_THAT(
      browser->Text("(() => { try { document.body.innerHTML = '<img src=x>'; return 'ran'; } "
                    "catch (error) { return String(error); } })()"),
      HasSubstr("TrustedHTML"));
  browser->Run(
      "const script = document.createElement('script'); try { script.text = "
      "'window.turned = 1'; } catch {} document.body.append(script)");
  browser->Run(
      "const frame = document.createElement('iframe'); frame.src = "
      "'/api/requests/2/body'; document.body.append(frame)");
  EXPECT_EQ(browser->Text("String(window.turned)"), "undefined");
  EXPECT_THAT(browser->Complaints(), HasSubstr("Content Security Policy"));
}

TEST_F(PageTest, LargeAndDamagedBodies) {
  std::string items;
  for (int i = 0; i < 100000; ++i) {
    items += (i == 0 ? "" : ",") + std::string(R"({"report_type":"log_stats","name":"a.log"})");
  }
  const std::string packed = Packed(R"([{"report_type":"syslog","name":")" +
                                    std::string(size_t{50} << 20, 'x') + R"("}])");
  KeptUpload{.report = "rc7", .packed = Packed("[" + items + "]")}.AddTo(server);
  KeptUpload{.report = "rc7", .packed = packed}.AddTo(server);
  KeptUpload{.report = "rc7", .packed = packed.substr(0, 100)}.AddTo(server);
  Follow("#/request/1");
  browser->WaitFor(kMain + ".includes('log_stats 100,000 items')");
  Opened(".panel > details");
  browser->WaitFor(kMain + ".includes('100 more of 100,000')");
  Follow("#/request/2");
  browser->WaitFor(kMain + ".includes('syslog 1 items')");
  OpenItems();
  browser->WaitFor(kMain + ".includes('the JSON text has all of it')");
  ChooseTab("JSON text");
  browser->WaitFor(kMain + ".includes('more (65,536 of 52,428,836 bytes)')");
  Follow("#/request/3");
  browser->WaitFor(kMain + ".includes('This body is damaged')");
  EXPECT_THAT(browser->Text(kList), HasSubstr("stream damaged"));
}

TEST_F(PageTest, TenThousandReports) {
  const std::string packed = Packed("[]");
  for (int i = 0; i < 10000; ++i) {
    const std::string client = std::to_string(i / 25);
    KeptUpload{.report = "rc2", .packed = packed, .query = {{"regid", client}}}.AddTo(server);
  }
  browser->WaitFor("document.querySelector('#state').textContent === '400 runs, 10,000 requests'");
  EXPECT_EQ(browser->Text("String(document.querySelectorAll('.run').length)"), "400");
  browser->Run("document.querySelector('#clear').click()");
  browser->WaitFor("document.querySelector('#state').textContent === '0 runs, 0 requests'");
  EXPECT_THAT(browser->Text(kList), HasSubstr("Nothing has come in yet"));
}

TEST_F(PageTest, KeyboardFilterAndFaults) {
  for (const char* report : {"rc2", "rc5"}) {
    KeptUpload{.report = report, .packed = Packed("[]"), .query = {{"u", "M1"}}}.AddTo(server);
  }
  Follow("#/request/1");
  browser->WaitFor("document.querySelectorAll('[role=tab]').length === 4");
  browser->Run("document.querySelector('[role=tab]').focus()");
  browser->Press("\uE014");  // arrow right
  browser->WaitFor("document.activeElement.textContent === 'Request'");
  browser->WaitFor("document.activeElement.getAttribute('aria-selected') === 'true'");
  EXPECT_EQ(browser->Text("String(document.querySelectorAll('.run tbody tr').length)"), "2");
  browser->Run("document.querySelector('#filter-text').focus()");
  browser->Press("rc5");
  browser->WaitFor("document.querySelectorAll('.run tbody tr').length === 1");
  Follow("#/faults");
  browser->WaitFor("document.querySelectorAll('#report tbody tr').length > 20");
  browser->Run(
      "const row = [...document.querySelectorAll('#report tbody tr')].find((each) => "
      "each.textContent.includes('put-404')); row.querySelector('.times').value = 2; "
      "row.querySelector('.on').click()");
  browser->WaitFor(kMain + ".includes('0 of 0')");
  EXPECT_EQ(server.Faults().All().at(Fault::kPut404).how.times, 2U);
  browser->Run("document.querySelector('#report button').click()");
  browser->WaitFor("document.querySelectorAll('.on:checked').length === 0");
  EXPECT_TRUE(server.Faults().All().empty());
}

}  // namespace
}  // namespace ostrell
