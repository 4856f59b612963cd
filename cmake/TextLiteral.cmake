# Sets OUTPUT to the text of a file as C++ string literals, one a line.
function(bgp_text_literal file output)
    file(READ "${file}" text)
    string(REPLACE "\\" "\\\\" text "${text}")
    string(REPLACE "\"" "\\\"" text "${text}")
    string(REPLACE "??" "?\\?" text "${text}")  # else the beginning of a trigraph
    string(REPLACE "\n" "\\n\"\n         \"" text "${text}")
    set(${output} "\"${text}\"" PARENT_SCOPE)
endfunction()
