#pragma once

namespace ostrell {

// Deletes the file at a terminated UTF-8 path. What is missing, open elsewhere or of a path that is
// not UTF-8 is left as it is, without a word.
void DeleteFileAt(const char* path);

}  // namespace ostrell
