# SPDX-FileCopyrightText: 2026 The stanag-overlay authors
# SPDX-License-Identifier: Apache-2.0
# Writes a unit that holds the bytes of the page's files:
#   cmake -D OUTPUT=page_files.cpp -D FOLDER=page -D "FILES=index.html;app.js" -P embed_page.cmake
set(type_html "text/html; charset=utf-8")
set(type_css "text/css; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_svg "image/svg+xml")

set(arrays "")
set(rows "")
set(number 0)
foreach(name IN LISTS FILES)
    string(REGEX REPLACE ".*\\." "" ending "${name}")
    if(NOT DEFINED type_${ending})
        message(FATAL_ERROR "${name}: nobody knows the media type of such files")
    endif()
    file(READ "${FOLDER}/${name}" bytes HEX)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND arrays "constexpr char kFile${number}[] = {${bytes}'\\0'};\n")
    string(APPEND rows "        {\"${name}\", \"${type_${ending}}\", {kFile${number}, sizeof kFile${number} - 1}},\n")
    math(EXPR number "${number} + 1")
endforeach()

file(WRITE "${OUTPUT}" "// Made from the files of the page by embed_page.cmake.
#include \"editor/page_files.h\"

namespace editor {
namespace {

${arrays}
}  // namespace

std::vector<PageFile> const& pageFiles()
{
    static std::vector<PageFile> const files{
${rows}    };
    return files;
}

}  // namespace editor
")
