// What a JSON document begins with: how the command ends, which may become known only when the document is written.
#pragma once

#include "report/json_writer.h"
#include "report/model.h"

namespace bgp_rehearse {

// Opens the document. All that another ending makes different stands here.
void begin_document(const Ending& ending, JsonWriter* json);

// Gives a document that was written with one ending another one, which came later. False,
// with errno set, when that could not be written; the file is one to read and write.
[[nodiscard]] bool replace_ending(const Ending& written, const Ending& ending, int file);

}  // namespace bgp_rehearse
