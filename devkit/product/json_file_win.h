#pragma once

#include <windows.h>

#include <string>

#include "base/json.h"

namespace ostrell {

// A JSON object or array that lies in a file of its own, to be read and edited by hand.
struct JsonFile {
  DWORD error;      // 0 or a Windows error code; ERROR_INVALID_DATA for what is not JSON
  JsonOwner value;  // empty on failure
};

// A key that occurs twice in one object counts as damage: it is not clear which was meant.
JsonFile LoadJsonFile(const std::wstring& path);

// An array of objects that lies in a file: an empty one when there is no file; nothing when it
// holds something else, is damaged or cannot be read.
JsonOwner LoadObjectArray(const std::wstring& path);

// Writes a file beside it and puts that in its place, so that a reader finds the old content or the
// new one. The file's folder is made when it is missing, those above it are not. On failure
// returns false and the old file stays.
bool SaveJsonFile(const std::wstring& path, json_t* value);

}  // namespace ostrell
