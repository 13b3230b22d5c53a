# Run as a script: writes a C++ source that contains the bytes of files.
#
#     cmake -DOUTPUT=FILE -DFOLDER=FOLDER "-DFILES=a.html;b.css" -P embed.cmake
#
# The source defines findPageFile() as tools/panelwall/web/pageFiles.h declares it.
set(arrays "")
set(entries "")
set(number 0)
foreach(file IN LISTS FILES)
    file(READ ${FOLDER}/${file} bytes HEX)
    string(LENGTH "${bytes}" length)
    math(EXPR length "${length} / 2")
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND arrays "static const char file${number}[] = {${bytes} 0};\n")
    get_filename_component(extension ${file} LAST_EXT)
    string(SUBSTRING ${extension} 1 -1 extension)
    if(extension STREQUAL html)
        set(type "text/html; charset=utf-8")
    elseif(extension STREQUAL css)
        set(type "text/css; charset=utf-8")
    elseif(extension STREQUAL js)
        set(type "text/javascript; charset=utf-8")
    elseif(extension STREQUAL svg)
        set(type "image/svg+xml")
    else()
        message(FATAL_ERROR "${file}: no content type is known for it")
    endif()
    set(path ${file})
    if(path STREQUAL index.html)
        set(path "")
    endif()
    string(APPEND entries "    {\"${path}\", \"${type}\", {file${number}, ${length}}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "// Made by cmake/embed.cmake.
#include \"tools/panelwall/web/pageFiles.h\"

namespace panelwall {

${arrays}
static const PageFile files[] = {
${entries}};

const PageFile *findPageFile(std::string_view path) {
    for (const PageFile &file : files)
        if (file.path == path)
            return &file;
    return nullptr;
}

} // namespace panelwall
")
