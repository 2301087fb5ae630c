// The yardstick of the whole run: a program that makes one HTTPS GET with the agent's libcurl and
// options, and nothing else. Usage: lone_get URL
#include <curl/curl.h>

#include <cstdio>

namespace {

size_t Discard(char*, size_t size, size_t count, void*) {
  return size * count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: lone_get URL\n", stderr);
    return 2;
  }
  CURL* const curl = curl_easy_init();
  curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 0L);
  curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &Discard);
  curl_easy_setopt(curl, CURLOPT_URL, argv[1]);
  const CURLcode result = curl_easy_perform(curl);
  curl_easy_cleanup(curl);
  return result == CURLE_OK ? 0 : 1;
}
