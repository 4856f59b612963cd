#include "base/standard_output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/exit_status.h"
#include "base/output_file.h"

namespace bgp_rehearse {

void print_out(std::string_view text)
{
    if (!write_all(STDOUT_FILENO, text.data(), text.size())) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("standard output: {}", std::strerror(errno)));
    }
}

void print_message(std::string_view text) noexcept
{
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace bgp_rehearse
