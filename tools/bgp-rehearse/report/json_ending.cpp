#include "report/json_ending.h"

#include <string>

#include "base/file_piece.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kSchema = 2;

std::string beginning(const Ending& ending)
{
    JsonWriter json(-1);
    begin_document(ending, &json);
    return json.written_so_far();
}

}  // namespace

void begin_document(const Ending& ending, JsonWriter* json)
{
    json->begin('{', JsonWriter::Lines).name("schema").number(kSchema).name("version").text(BGP_REHEARSE_VERSION);
    json->name("exit_status").signed_number(ending.status).name("error").text_or_null(ending.error);
}

bool replace_ending(const Ending& written, const Ending& ending, int file)
{
    return replace_in_file(file, 0, beginning(written).size(), beginning(ending));
}

}  // namespace bgp_rehearse
