#include "fleet/plan/found.h"

#include "base/text_escape.h"

namespace bgp_rehearse {

std::string Found::rest_of_name(const FoundInput& input) const
{
    return unescaped_name(std::string_view(input.name).substr(places[input.place].shown.size()));
}

InputSource Found::source_of(const FoundInput& input) const
{
    const FoundPlace& place = places[input.place];
    if (place.kind == FoundPlace::Kind::Files) {
        return StoredFile{place.path + rest_of_name(input)};
    }
    if (place.kind == FoundPlace::Kind::Repository) {
        return RepositoryObject{place.path, place.objects.substr(input.index * place.object_size, place.object_size)};
    }
    return ArchiveMember{place.path, input.index, place.packed ? std::nullopt : std::optional(input.offset)};
}

}  // namespace bgp_rehearse
