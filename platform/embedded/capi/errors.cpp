// confd_errno, confd_lasterr and confd_strerror.
#include "capi/errors.h"

#include <cstdio>
#include <string>

#include "confd_lib.h"
#include "registry.h"

int confd_errno = CONFD_OK;

namespace {

// The text of the last error; the API hands out a pointer to it.
class LastError {
public:
    // One for the process, which outlives every static object that may still call the API. A thread that is refused has
    // one of its own.
    static LastError& instance() noexcept
    {
        if (!bgp_platform::Registry::instance().admits_this_thread()) {
            thread_local LastError of_the_refused;
            return of_the_refused;
        }
        alignas(LastError) static unsigned char memory[sizeof(LastError)];
        static auto* const error = new (memory) LastError;
        return *error;
    }

    void say(std::string_view function, int code, std::string_view path, std::string_view detail) noexcept
    {
        try {
            text_.assign(function).append(": ").append(confd_strerror(code));
            for (const std::string_view part : {path, detail}) {
                if (!part.empty()) {
                    text_.append(": ").append(part);
                }
            }
            shown_ = text_.data();
        } catch (const std::exception&) {
            std::snprintf(short_, sizeof short_, "%.*s: %s", static_cast<int>(function.size()), function.data(),
                          confd_strerror(code));
            shown_ = short_;
        }
    }

    char* text() const noexcept { return shown_; }

private:
    LastError() = default;

    std::string text_;
    char short_[128] = "";  // where there is no memory for the whole
    char* shown_ = short_;
};

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
    static char unknown[32];
    std::snprintf(unknown, sizeof unknown, "unknown error %d", code);
    return unknown;
}

char* confd_lasterr(void)
{
    return LastError::instance().text();
}

int bgp_platform::capi::fail_call(std::string_view function, int code, std::string_view path,
                                  std::string_view detail) noexcept
{
    confd_errno = code;
    LastError::instance().say(function, code, path, detail);
    return CONFD_ERR;
}
