// An upgrade library that makes prefix lists, and log lines, of names which no file of XML can hold or no path of the real
// library: control characters, bytes that are not UTF-8, 10,000 characters.
#include <string>

#include "conf_updt_log.h"
#include "confd_maapi.h"

extern "C" int update(int maapi, int thandle, int /*cdb*/)
{
    const std::string names[] = {"\033[31mred\a\b", "two\r\nlines\tand a tab", "delete\x7f",
                                 "<i>" + std::string(10000, 'K') + "</i>"};
    for (const std::string& name : names) {
        nzmw_log_debug(get_conf_updt_log_handle(), "Making prefix list %s\n", name.c_str());
        maapi_create(maapi, thandle, "/prefix-list{%s}", name.c_str());
    }
    nzmw_log_debug(get_conf_updt_log_handle(), "not UTF-8: \xff\xc3(\n");
    return 0;
}
