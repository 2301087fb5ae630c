#include "unified/program_folder.h"

namespace ostrell {

std::optional<std::wstring> FindProgramFolder(const Run& run, const char* operation,
                                              const FolderMessages& messages) {
  const auto program = run.files.ProgramPath();
  if (!program) {
    TraceLogger(run.traceLog, operation)(L"%s", messages.noPath);
    return std::nullopt;
  }
  const size_t slash = program->rfind(L'\\');
  if (slash == std::wstring::npos) {
    TraceLogger(run.traceLog, operation)(L"%s", messages.noFolder);
    return std::nullopt;
  }
  return program->substr(0, slash);
}

}  // namespace ostrell
