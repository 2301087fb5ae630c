#pragma once

#include <functional>
#include <string>

namespace ostrell {

// Follows a report server by the address of its page: a line of text for each request that it has
// in memory, and for each that comes in, until `take` returns false or the server answers no more.
// False when it never answered.
bool FollowRequests(const std::string& pageUrl,
                    const std::function<bool(const std::string& line)>& take);

}  // namespace ostrell
