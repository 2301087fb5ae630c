# cmake -DOUTPUT=FILE.cpp -DFILES=a;b -P embed.cmake: the definition of PageFiles() for these files.
set(definitions "")
set(rows "")
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  string(MAKE_C_IDENTIFIER ${name} identifier)
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND definitions "constexpr char ${identifier}[] = {${bytes}};\n")
  string(APPEND rows "    {\"${name}\", {${identifier}, sizeof ${identifier}}},\n")
endforeach()
file(WRITE ${OUTPUT} "#include \"devkit/viewer/page_files.h\"

namespace ostrell {
namespace {

${definitions}
constexpr PageFile kFiles[] = {
${rows}};

}  // namespace

std::span<const PageFile> PageFiles() {
  return kFiles;
}

}  // namespace ostrell
")
