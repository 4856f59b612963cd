#include "fleet/plan/packed_inputs.h"

#include <fmt/format.h>

#include <optional>
#include <string_view>
#include <utility>

#include "base/refuse.h"
#include "fleet/plan/archive.h"
#include "fleet/plan/repository.h"

namespace bgp_rehearse {

namespace {

// Without the "./" that a packer of the folder it stood in puts before each name.
std::string_view member_name(std::string_view name)
{
    while (name.size() > 2 && name.substr(0, 2) == "./") {
        name.remove_prefix(2);
    }
    return name;
}

std::unique_ptr<ArchiveReader> opened_archive(const std::string& path)
{
    try {
        auto archive = std::make_unique<ArchiveReader>(path);
        return archive->has_entries() ? std::move(archive) : nullptr;
    } catch (const InputError&) {
        return nullptr;  // a file like any other, which a worker will refuse
    }
}

void take_member(const ArchiveEntry& entry, uint32_t place, ArchiveReader* archive, Collection* collection)
{
    if (entry.kind == ArchiveEntry::Kind::Folder) {
        return;
    }
    if (!collection->wants(entry.name)) {
        return collection->pass_over(kOtherName);
    }
    if (entry.kind != ArchiveEntry::Kind::File) {
        return collection->pass_over(entry.kind == ArchiveEntry::Kind::Link ? "link in an archive" : kSpecial);
    }
    FoundInput input;
    input.name = collection->place(place).shown + escaped_name(member_name(entry.name));
    input.place = place;
    input.index = entry.index;
    input.offset = entry.offset.value_or(0);
    collection->add(std::move(input), [&](const TakePiece& take) { archive->read(collection->max_bytes(), take); });
}

void take_object(const RepositoryFile& file, uint32_t place, ObjectReader* objects, Collection* collection)
{
    FoundPlace& repository = collection->place(place);
    repository.object_size = file.object.size();
    FoundInput input;
    input.name = repository.shown + escaped_name(file.path);
    input.place = place;
    input.index = repository.objects.size() / repository.object_size;
    repository.objects += file.object;
    collection->add(std::move(input), [&](const TakePiece& take) {
        if (file.bytes > collection->max_bytes()) {
            throw TooManyBytes(file.bytes, collection->max_bytes());
        }
        take(objects->read(file.object, collection->max_bytes()));
    });
}

}  // namespace

bool collect_archive(const std::string& path, Collection* collection)
{
    const std::unique_ptr<ArchiveReader> archive = opened_archive(path);
    if (!archive) {
        return false;
    }
    if (!collection->enter(path)) {
        collection->pass_over(kReachedTwice);
        return true;
    }
    FoundPlace place;
    place.kind = FoundPlace::Kind::Archive;
    place.shown = escaped_name(tidy_path(path)) + "!";
    place.path = collection->absolute(path);
    place.packed = !archive->has_offsets();
    const uint32_t number = collection->add_place(std::move(place));
    const std::size_t first = collection->size();
    try {
        while (const std::optional<ArchiveEntry> entry = archive->next()) {
            take_member(*entry, number, archive.get(), collection);
        }
    } catch (const InputError& error) {
        refuse(path, fmt::format("{}, behind {} files; no plan is made", error.what(), collection->size() - first));
    }
    collection->drop_older(first);
    return true;
}

void collect_repository(const std::string& path, Collection* collection)
{
    if (!collection->enter(path)) {
        return collection->pass_over(kReachedTwice);
    }
    FoundPlace place;
    place.kind = FoundPlace::Kind::Repository;
    place.shown = escaped_name(tidy_path(path)) + ":";
    place.path = collection->absolute(path);
    const uint32_t number = collection->add_place(std::move(place));
    try {
        ObjectReader objects(path);
        each_file_of(path, [&](const RepositoryFile& file) {
            if (file.kind != RepositoryFile::Kind::File) {
                collection->pass_over(file.kind == RepositoryFile::Kind::Link ? "link in a repository" : "submodule");
            } else if (!collection->wants(file.path)) {
                collection->pass_over(kOtherName);
            } else {
                take_object(file, number, &objects, collection);
            }
        });
    } catch (const InputError& error) {
        refuse(path, fmt::format("{}; no plan is made", error.what()));
    }
}

}  // namespace bgp_rehearse
