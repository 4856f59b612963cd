#include "report/json_ending.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace bgp_rehearse {

namespace {

constexpr std::size_t kSchema = 2;
constexpr std::size_t kPiece = 1 << 16;

std::string beginning(const Ending& ending)
{
    JsonWriter json(-1);
    begin_document(ending, &json);
    return json.written_so_far();
}

bool write_at(int file, const std::string& text, off_t place)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t size = pwrite(file, text.data() + done, text.size() - done, place + static_cast<off_t>(done));
        if (size < 0) {
            return false;
        }
        done += static_cast<std::size_t>(size);
    }
    return true;
}

// Moves all from a place on to another place further on, the last part first.
bool move_on(int file, off_t from, off_t to)
{
    std::string piece;
    for (off_t end = lseek(file, 0, SEEK_END); end > from;) {
        const off_t start = std::max(from, end - static_cast<off_t>(kPiece));
        piece.resize(static_cast<std::size_t>(end - start));
        if (pread(file, piece.data(), piece.size(), start) != end - start ||
            !write_at(file, piece, start + to - from)) {
            return false;
        }
        end = start;
    }
    return true;
}

}  // namespace

void begin_document(const Ending& ending, JsonWriter* json)
{
    json->begin('{', JsonWriter::Lines).name("schema").number(kSchema).name("version").text(BGP_REHEARSE_VERSION);
    json->name("exit_status").signed_number(ending.status).name("error").text_or_null(ending.error);
}

bool replace_ending(const Ending& written, const Ending& ending, int file)
{
    const auto old_size = beginning(written).size();
    std::string now = beginning(ending);
    if (now.size() < old_size) {
        now.append(old_size - now.size(), ' ');
    }
    return (now.size() == old_size || move_on(file, static_cast<off_t>(old_size), static_cast<off_t>(now.size()))) &&
           write_at(file, now, 0);
}

}  // namespace bgp_rehearse
