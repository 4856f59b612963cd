#include "middleware/format.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace bgp_platform {

namespace {

// What nearly all lines of a log are made of: literal text, %s, %d and %u. It takes a quarter of vsnprintf's time.
class PlainFormat {
public:
    PlainFormat(char* buffer, std::size_t room, va_list args) noexcept
        : begin_(buffer), at_(buffer), end_(buffer + room)
    {
        va_copy(args_, args);
    }
    ~PlainFormat() { va_end(args_); }
    PlainFormat(const PlainFormat&) = delete;
    PlainFormat& operator=(const PlainFormat&) = delete;

    // False when the format has something else, or the text does not fit.
    bool print(const char* format) noexcept
    {
        for (;; format += 2) {
            const std::size_t literal = std::strcspn(format, "%");
            if (!add({format, literal})) {
                return false;
            }
            format += literal;
            if (*format == '\0') {
                return true;
            }
            if (!convert(format[1])) {
                return false;
            }
        }
    }
    std::size_t length() const noexcept { return static_cast<std::size_t>(at_ - begin_); }

private:
    bool convert(char conversion) noexcept
    {
        switch (conversion) {
            case 's': {
                const char* const text = va_arg(args_, const char*);
                return text != nullptr && add(text);
            }
            case 'd':
                return add_number(va_arg(args_, int));
            case 'u':
                return add_number(va_arg(args_, unsigned int));
            default:
                return false;
        }
    }

    bool add(std::string_view text) noexcept
    {
        if (text.size() > static_cast<std::size_t>(end_ - at_)) {
            return false;
        }
        at_ += text.copy(at_, text.size());
        return true;
    }

    template <typename Number>
    bool add_number(Number number) noexcept
    {
        const std::to_chars_result printed = std::to_chars(at_, end_, number);
        at_ = printed.ptr;
        return printed.ec == std::errc();
    }

    char* begin_;
    char* at_;
    char* end_;
    va_list args_;
};

}  // namespace

FormattedText::FormattedText(const char* format, va_list args)  // NOLINT(cppcoreguidelines-pro-type-member-init)
{
    PlainFormat plain(piece_.data(), piece_.size(), args);
    if (plain.print(format)) {
        length_ = plain.length();
        return;
    }
    va_list taken;
    va_copy(taken, args);
    const int length = std::vsnprintf(piece_.data(), piece_.size(), format, taken);
    va_end(taken);
    if (length < 0) {
        long_ = format;
        return;
    }
    length_ = static_cast<std::size_t>(length);
    if (length_ < piece_.size()) {
        return;
    }
    long_.resize(length_);
    va_copy(taken, args);
    std::vsnprintf(long_.data(), length_ + 1, format, taken);
    va_end(taken);
}

}  // namespace bgp_platform
