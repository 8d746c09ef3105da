# Puts the page's style sheet and script into it, with their hashes for its content policy, and writes it as a
# C++ source: cmake -DPAGE=FOLDER -DOUT=FILE.cpp -P embed_page.cmake

# The SHA-256 of a text in base64.
function(base64_hash text out)
    string(SHA256 digits "${text}")
    set(letters "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    set(code "")
    # Three hexadecimal digits are two letters; 64 digits leave one, which with two zero bits is the last letter.
    foreach(at RANGE 0 60 3)
        string(SUBSTRING ${digits} ${at} 3 group)
        math(EXPR high "0x${group} >> 6")
        math(EXPR low "0x${group} & 63")
        string(SUBSTRING ${letters} ${high} 1 first)
        string(SUBSTRING ${letters} ${low} 1 second)
        string(APPEND code ${first}${second})
    endforeach()
    string(SUBSTRING ${digits} 63 1 group)
    math(EXPR last "0x${group} << 2")
    string(SUBSTRING ${letters} ${last} 1 first)
    set(${out} "${code}${first}=" PARENT_SCOPE)
endfunction()

# Brackets and semicolons would be read as lists otherwise.
file(READ ${PAGE}/page.html page)
file(READ ${PAGE}/page.css style)
file(READ ${PAGE}/page.js script)
base64_hash("${style}" style_hash)
base64_hash("${script}" script_hash)
foreach(part IN ITEMS STYLE_HASH SCRIPT_HASH STYLE SCRIPT)
    string(TOLOWER ${part} name)
    string(REPLACE "@${part}@" "${${name}}" page "${page}")
endforeach()
string(FIND "${page}" "@DATA@" at)
string(SUBSTRING "${page}" 0 ${at} head)
math(EXPR at "${at} + 6")
string(SUBSTRING "${page}" ${at} -1 tail)
file(WRITE ${OUT} "#include \"app/page_source.h\"

namespace app {

const char k_page_head[] = R\"page(${head})page\";
const char k_page_tail[] = R\"page(${tail})page\";

} // namespace app
")
