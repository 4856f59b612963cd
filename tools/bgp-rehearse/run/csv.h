// Tables as text, after RFC 4180: records of fields between commas, a field in quotes where it holds a comma, a quote
// (doubled) or the end of a line. Lines end in LF or CR LF; empty ones, and a byte order mark, are passed over.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

using CsvRecord = std::vector<std::string>;

class CsvReader {
public:
    explicit CsvReader(std::string_view text);

    // Throws std::invalid_argument for a quote where none may be.
    std::optional<CsvRecord> next();

    std::size_t line() const noexcept { return line_; }  // that the record read last begins in

private:
    bool take(std::string_view expected);
    bool take_line_end();
    std::string field();
    std::string quoted_field();

    std::string_view rest_;
    std::size_t line_ = 0;
    std::size_t next_line_ = 1;
};

}  // namespace bgp_rehearse
