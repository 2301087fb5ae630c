#pragma once

#include <cstdio>
#include <string>

#include "base/json.h"

namespace ostrell {

// Debian's chromium without a window, driven through its chromedriver by the W3C's WebDriver
// protocol. A call that fails throws, which fails the test.
class Browser {
 public:
  // Whether both programs are there.
  static bool IsInstalled();

  Browser();
  ~Browser();
  Browser(const Browser&) = delete;
  Browser(Browser&&) = delete;
  Browser& operator=(const Browser&) = delete;
  Browser& operator=(Browser&&) = delete;

  void Open(const std::string& url);
  // As the user sees it: the window's size in pixels, the colour scheme that the system prefers.
  void Show(int width, int height, bool isDark);

  // The value of a function's body, which may await and sees `argument` as "argument".
  JsonOwner Run(const std::string& body, const std::string& argument = "");
  // Of an expression; empty where it is no text.
  std::string Text(const std::string& expression);
  // Returns when the expression is true; gives up after half a minute.
  void WaitFor(const std::string& expression);

  // Keys as a user presses them, U+E000 to U+E05D for those without a character.
  void Press(const std::string& keys);
  // What the browser's console says, a line each.
  std::string Complaints();

 private:
  JsonOwner Call(const std::string& method, const std::string& path, const JsonOwner& body = {});
  JsonOwner CallSession(const std::string& method, const std::string& path,
                        const JsonOwner& body = {});

  FILE* driver;
  std::string url;
  std::string session;
};

}  // namespace ostrell
