# Writes a C++ source that holds files as texts.
#   cmake -D OUT=SOURCE -D FILES=NAME=PATH;... -P embed.cmake
# Every file becomes `const std::string_view NAME`, declared in scan/report/pageFiles.h.
set(source "#include \"scan/report/pageFiles.h\"\n")
foreach(file IN LISTS FILES)
  string(REGEX MATCH "^([A-Z0-9_]+)=(.*)$" whole "${file}")
  set(name ${CMAKE_MATCH_1})
  file(READ "${CMAKE_MATCH_2}" bytes HEX)
  # As escapes, so that no byte of a file can end the text; a line for every 32 bytes.
  string(REGEX REPLACE "(................................................................)" "\\1\n"
         bytes "${bytes}")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" bytes "${bytes}")
  string(REPLACE "\n" "\"\n    \"" bytes "${bytes}")
  string(APPEND source "static constexpr char ${name}_BYTES[] =\n    \"${bytes}\";\n"
         "const std::string_view ${name}(${name}_BYTES, sizeof ${name}_BYTES - 1);\n")
endforeach()
file(WRITE "${OUT}" "${source}")
