// confd_strerror: the codes by name.
#include <string>

#include "confd_lib.h"

namespace {

const char* text_of(int code)
{
    switch (code) {
        case CONFD_OK:
            return "no error";
        case CONFD_ERR_NOEXISTS:
            return "item does not exist";
        case CONFD_ERR_ALREADY_EXISTS:
            return "item already exists";
        case CONFD_ERR_ACCESS_DENIED:
            return "access denied";
        case CONFD_ERR_NOT_WRITABLE:
            return "item is not writable";
        case CONFD_ERR_BADTYPE:
            return "bad type";
        case CONFD_ERR_NOTCREATABLE:
            return "item is not creatable";
        case CONFD_ERR_NOTDELETABLE:
            return "item is not deletable";
        case CONFD_ERR_BADPATH:
            return "bad path";
        case CONFD_ERR_LOCKED:
            return "locked";
        case CONFD_ERR_INUSE:
            return "in use";
        case CONFD_ERR_NOTSET:
            return "mandatory item is not set";
        case CONFD_ERR_BADSTATE:
            return "bad state";
        case CONFD_ERR_INTERNAL:
            return "internal error";
        case CONFD_ERR_EXTERNAL:
            return "external error";
        case CONFD_ERR_MALLOC:
            return "out of memory";
        case CONFD_ERR_PROTOUSAGE:
            return "call not allowed here";
        case CONFD_ERR_NOSESSION:
            return "no session";
        case CONFD_ERR_OS:
            return "system error";
        case CONFD_ERR_UNAVAILABLE:
            return "not available";
        case CONFD_ERR_EOF:
            return "connection closed";
        case CONFD_ERR_NOTMOVABLE:
            return "item is not movable";
        case CONFD_ERR_TIMEOUT:
            return "time is up";
        case CONFD_ERR_NOTRANS:
            return "no such transaction";
        default:
            return nullptr;
    }
}

}  // namespace

char* confd_strerror(int code)
{
    if (const char* const text = text_of(code)) {
        return const_cast<char*>(text);  // the interface's type; programs only read it
    }
    static std::string unknown;
    unknown = "unknown error " + std::to_string(code);
    return unknown.data();
}
