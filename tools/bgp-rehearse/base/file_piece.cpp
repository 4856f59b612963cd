#include "base/file_piece.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace bgp_rehearse {

namespace {

constexpr std::size_t kPiece = 1 << 16;

bool write_at(int file, std::string_view text, std::size_t place)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t size = pwrite(file, text.data() + done, text.size() - done, static_cast<off_t>(place + done));
        if (size < 0) {
            return false;
        }
        done += static_cast<std::size_t>(size);
    }
    return true;
}

bool copy_piece(int file, std::size_t from, std::size_t to, std::size_t size)
{
    std::string piece(size, '\0');
    return pread(file, piece.data(), size, static_cast<off_t>(from)) == static_cast<ssize_t>(size) &&
           write_at(file, piece, to);
}

// Moves all from a place on to another place further on, the last piece first.
bool move_on(int file, std::size_t from, std::size_t to, std::size_t end)
{
    while (end > from) {
        const std::size_t start = std::max(from, end - std::min(end, kPiece));
        if (!copy_piece(file, start, start + to - from, end - start)) {
            return false;
        }
        end = start;
    }
    return true;
}

// The same to a place before it, the first piece first; the file ends there.
bool move_back(int file, std::size_t from, std::size_t to, std::size_t end)
{
    for (; from < end; from += kPiece, to += kPiece) {
        if (!copy_piece(file, from, to, std::min(kPiece, end - from))) {
            return false;
        }
    }
    return ftruncate(file, static_cast<off_t>(to - (from - end))) == 0;
}

}  // namespace

bool replace_in_file(int file, std::size_t place, std::size_t size, std::string_view text)
{
    const auto end = static_cast<std::size_t>(lseek(file, 0, SEEK_END));
    const std::size_t from = place + size;
    const std::size_t to = place + text.size();
    return (from == to || (from < to ? move_on(file, from, to, end) : move_back(file, from, to, end))) &&
           write_at(file, text, place);
}

}  // namespace bgp_rehearse
