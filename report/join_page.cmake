# Joins the activity report's page, style, script and d3 into one file that reads no other, and into
# a C++ source that holds it: the program puts the figures between its two halves.
#   cmake -DHTML=.. -DSTYLE=.. -DSCRIPTS=a.js;b.js -DD3=a.js;b.js -DD3_LICENCE=.. -DPAGE=.. -DSOURCE=..
#     -P join_page.cmake
cmake_minimum_required(VERSION 3.25)

# The digest of a text as a content security policy writes it. CMake knows digests in hexadecimal
# only, so six hexadecimal digits become four of base 64.
function(policy_digest text result)
  string(SHA256 hex "${text}")
  set(alphabet ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  set(digest "")
  foreach(at RANGE 0 60 6)
    string(SUBSTRING "${hex}00" ${at} 6 six)
    foreach(shift 18 12 6 0)
      math(EXPR digit "(0x${six} >> ${shift}) & 63")
      string(SUBSTRING ${alphabet} ${digit} 1 letter)
      string(APPEND digest ${letter})
    endforeach()
  endforeach()
  string(SUBSTRING ${digest} 0 43 digest)
  set(${result} "'sha256-${digest}='" PARENT_SCOPE)
endfunction()

function(join_files result)
  set(joined "")
  foreach(file IN LISTS ARGN)
    file(READ ${file} part)
    string(APPEND joined "${part}")
  endforeach()
  set(${result} "${joined}" PARENT_SCOPE)
endfunction()

# What stands in an element must not end it.
function(check_inside element text)
  string(TOLOWER "${text}" lower)
  if(lower MATCHES "</${element}" OR lower MATCHES "<!--")
    message(FATAL_ERROR "the report's ${element} holds a mark that ends it")
  endif()
endfunction()

file(READ ${HTML} page)
file(READ ${STYLE} style)
join_files(script ${SCRIPTS})
join_files(d3 ${D3})
file(READ ${D3_LICENCE} licence)
string(PREPEND d3 "/*\n${licence}*/\n")

check_inside(style "${style}")
check_inside(script "${script}")
check_inside(script "${d3}")
policy_digest("${style}" style_digest)
policy_digest("${script}" script_digest)
policy_digest("${d3}" d3_digest)

# Nothing may be loaded, sent or embedded; only the scripts and the style written here are taken.
set(policy "default-src 'none'; script-src ${d3_digest} ${script_digest}; style-src ${style_digest}")
string(APPEND policy "; base-uri 'none'; form-action 'none'")
string(REPLACE "@POLICY@" "${policy}" page "${page}")
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")
string(REPLACE "@D3@" "${d3}" page "${page}")
file(WRITE ${PAGE} "${page}")

string(FIND "${page}" "@DATA@" at)
string(FIND "${page}" "@DATA@" last REVERSE)
if(at EQUAL -1 OR NOT at EQUAL last)
  message(FATAL_ERROR "the report's page must have one place for its figures")
endif()
string(SUBSTRING "${page}" 0 ${at} before)
math(EXPR at "${at} + 6")
string(SUBSTRING "${page}" ${at} -1 after)
if(page MATCHES "\\)page\"")
  message(FATAL_ERROR "the report's page holds the mark that ends a raw string")
endif()
file(WRITE ${SOURCE} "// Made from the folder report: the activity report's page.
#include \"report/report_page.h\"

// Compilers need only support short literals; those that this is built with take long ones.
#pragma GCC diagnostic ignored \"-Woverlength-strings\"

namespace orsa::kesncd {

ReportPage GetReportPage() {
  static constexpr char before[] = R\"page(${before})page\";
  static constexpr char after[] = R\"page(${after})page\";
  return {{before, sizeof before - 1}, {after, sizeof after - 1}};
}

}  // namespace orsa::kesncd
")
