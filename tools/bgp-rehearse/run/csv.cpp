#include "run/csv.h"

#include <algorithm>
#include <stdexcept>

namespace bgp_rehearse {

CsvReader::CsvReader(std::string_view text) : rest_(text)
{
    take("\xEF\xBB\xBF");
}

bool CsvReader::take(std::string_view expected)
{
    if (rest_.substr(0, expected.size()) != expected) {
        return false;
    }
    rest_.remove_prefix(expected.size());
    return true;
}

bool CsvReader::take_line_end()
{
    if (!take("\n") && !take("\r\n")) {
        return false;
    }
    ++next_line_;
    return true;
}

std::optional<CsvRecord> CsvReader::next()
{
    while (take_line_end()) {
    }
    line_ = next_line_;
    if (rest_.empty()) {
        return std::nullopt;
    }
    CsvRecord record;
    do {
        record.push_back(take("\"") ? quoted_field() : field());
    } while (take(","));
    if (!take_line_end() && !rest_.empty()) {
        throw std::invalid_argument("a quote must stand around a whole field, and twice within one");
    }
    return record;
}

std::string CsvReader::field()
{
    const std::string_view all = rest_.substr(0, rest_.find_first_of(",\"\n"));
    rest_.remove_prefix(all.size());
    const bool line_ends = !all.empty() && all.back() == '\r' && (rest_.empty() || rest_.front() == '\n');
    return std::string(all.substr(0, all.size() - (line_ends ? 1 : 0)));
}

// Behind the quote that opens it.
std::string CsvReader::quoted_field()
{
    std::string text;
    for (;;) {
        const std::size_t quote = rest_.find('"');
        if (quote == std::string_view::npos) {
            throw std::invalid_argument("a quote is not closed");
        }
        const std::string_view piece = rest_.substr(0, quote);
        next_line_ += static_cast<std::size_t>(std::count(piece.begin(), piece.end(), '\n'));
        text += piece;
        rest_.remove_prefix(quote + 1);
        if (!take("\"")) {
            return text;
        }
        text += '"';
    }
}

}  // namespace bgp_rehearse
