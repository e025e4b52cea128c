# Writes OUTPUT, a C++ file that holds the message files of FOLDER byte for byte:
#   cmake -DFOLDER=... -DLANGUAGES=it,en,... -DOUTPUT=... -P EmbedMessages.cmake
string(REPLACE "," ";" languages "${LANGUAGES}")
set(arrays "")
set(choices "")
foreach(language IN LISTS languages)
  file(READ "${FOLDER}/${language}.txt" bytes HEX)
  string(REGEX REPLACE "(................................................)" "\\1\n" bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "constexpr unsigned char k_${language}[] = {\n${bytes}0};\n")
  string(APPEND choices "    if (language == \"${language}\") {\n        return Text(k_${language}, sizeof k_${language} - 1);\n    }\n")
endforeach()
file(WRITE "${OUTPUT}" "// Made from resources/messages/ at build time: edit the text files there.
#include \"resources/MessageFiles.h\"

namespace resources {

namespace {

${arrays}
std::string_view Text(const unsigned char* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

} // namespace

std::string_view MessageFile(std::string_view language) {
${choices}    return {};
}

} // namespace resources
")
