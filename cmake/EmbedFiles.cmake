# Turns files into a C++ source in which each is a text:
#   cmake -DOUTPUT=SOURCE.cpp -DHEADER=INCLUDE -DNAMESPACE=NAME -DTEXTS=name=file,name=file... -P EmbedFiles.cmake
# HEADER declares every name as "extern const std::string_view name;" in the namespace.
set(source "// Made by EmbedFiles.cmake.\n#include \"${HEADER}\"\n\nnamespace ${NAMESPACE} {\n\n")
string(REPLACE "," ";" texts "${TEXTS}")
foreach(text IN LISTS texts)
    string(REGEX MATCH "^([^=]+)=(.+)$" matched "${text}")
    set(name ${CMAKE_MATCH_1})
    file(READ "${CMAKE_MATCH_2}" content)
    string(APPEND source "const std::string_view ${name} = R\"embedded(" "${content}" ")embedded\";\n\n")
endforeach()
string(APPEND source "}  // namespace ${NAMESPACE}\n")
file(WRITE "${OUTPUT}" "${source}")
