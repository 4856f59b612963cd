#include "report/page.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

#include "base/output_file.h"
#include "base/wrap.h"
#include "report/piece.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kUsualColumns = 100;  // where a line ends at its right, when nothing is wrapped
constexpr std::size_t kBetween = 2;         // a text and what stands at the right

constexpr const char* kCodes[] = {"0", "1", "31", "32", "33"};

}  // namespace

std::string Page::painted(std::string_view text, Paint paint) const
{
    if (!look_.colour || paint == Paint::Plain || text.empty()) {
        return std::string(text);
    }
    return fmt::format("\033[{}m{}\033[0m", kCodes[static_cast<std::size_t>(paint)], text);
}

void Page::line(std::string_view text)
{
    out_.append(text) += '\n';
    flush();
}

void Page::add_at_right(std::size_t column, std::string_view text)
{
    const std::size_t width = look_.columns.value_or(kUsualColumns);
    const std::size_t length = columns_of(text);
    if (look_.columns && column + kBetween + length > width) {
        out_ += '\n';
        column = 0;
    }
    const std::size_t start = std::max(column + (column == 0 ? 0 : kBetween), width > length ? width - length : 0);
    out_.append(start - column, ' ').append(text);
}

void Page::line(const Line& line)
{
    const std::string text =
        std::string(line.indent, ' ') + painted(line.mark, line.paint) + painted(line.text, line.text_paint);
    const std::size_t start = out_.size();
    out_ += wrapped(text, look_.columns, line.hang);
    if (!line.at_right.empty()) {
        const std::size_t last = out_.find_last_of('\n') + 1;  // 0 where there is none
        add_at_right(columns_of(std::string_view(out_).substr(std::max(start, last))), line.at_right);
    }
    out_ += '\n';
    flush();
}

void Page::flush()
{
    if (out_.size() >= kPiece) {
        write();
    }
}

void Page::write()
{
    if (error_ == 0 && !write_all(file_, out_.data(), out_.size())) {
        error_ = errno;
    }
    out_.clear();
}

bool Page::finish()
{
    write();
    errno = error_;
    return error_ == 0;
}

}  // namespace bgp_rehearse
