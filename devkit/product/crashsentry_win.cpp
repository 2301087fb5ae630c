// Stand-in for the product's crash handler: notes in "crashsentry.txt" beside the program that it
// was installed, and with which argument. It handles no crash.

#include "devkit/product/files_win.h"
#include "devkit/product/guarded.h"

namespace ostrell {

// Returns 1 when the note was written.
extern "C" int32_t InstallCrashSentry(int32_t argument) {
  return Guarded(0, [&] {
    const auto path = PathBesideProgram(L"crashsentry.txt");
    if (!path) {
      return 0;
    }
    const FileHandle file(CreateFileW(path->c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && WriteOnce(file, "InstallCrashSentry(" + std::to_string(argument) + ")\n") ? 1
                                                                                             : 0;
  });
}

}  // namespace ostrell
