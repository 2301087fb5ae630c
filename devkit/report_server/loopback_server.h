#pragma once

#include <httplib.h>

#include <string>
#include <thread>

namespace ostrell {

// What the servers of this kit have in common: they listen on 127.0.0.1 only, on threads of their
// own.

// To be called before ListenOnLoopback. Two servers never share a port, and no answer waits for the
// acknowledgement of its headers, which takes 40 ms.
void PrepareForLoopback(httplib::Server& server, size_t workerThreads);

// Listens, in the thread that `accepting` becomes, once this returns. Port 0 takes a free one. The
// port; -1, with one line of text in `why`, when it is taken.
int ListenOnLoopback(httplib::Server& server, int port, std::thread& accepting, std::string* why);

// Ends answers that are under way at their next block and waits for the threads. Nothing happens
// when the server does not run.
void StopListening(httplib::Server& server, std::thread& accepting);

}  // namespace ostrell
