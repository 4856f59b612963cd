#include "fleet/plan/input_reader.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "base/sha256.h"
#include "fleet/plan/archive.h"
#include "fleet/plan/repository.h"
#include "fleet/plan/stored_file.h"
#include "xml/load_errors.h"
#include "xml/look.h"
#include "xml/source.h"
#include "xml/unpacked.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::xml::PeekedSource;

constexpr char kChanged[] = "it has changed since the plan was made; make a new plan";

std::string all_of(ArchiveReader* archive, uint64_t max_bytes)
{
    std::string bytes;
    archive->read(max_bytes, [&](std::string_view piece) { bytes += piece; });
    return bytes;
}

// A member of an archive that is not compressed, read alone.
std::string member_at(const ArchiveMember& member, uint64_t max_bytes)
{
    ArchiveReader archive(member.archive, member.offset);
    if (!archive.next()) {
        throw InputError(kChanged);
    }
    return all_of(&archive, max_bytes);
}

// An archive that is read from its beginning to its end.
class OpenArchive {
public:
    explicit OpenArchive(std::string path) : path_(std::move(path)) {}

    const std::string& path() const noexcept { return path_; }

    // What stands behind a damage stays unreadable, and is not looked for again.
    std::string read(std::size_t index, uint64_t max_bytes)
    {
        if (damage_ && index >= next_) {
            throw InputError(*damage_);
        }
        if (!archive_ || index < next_) {
            archive_ = std::make_unique<ArchiveReader>(path_);
            next_ = 0;
        }
        go_to(index);
        return all_of(archive_.get(), max_bytes);
    }

private:
    void go_to(std::size_t index)
    {
        try {
            for (bool found = false; !found; ++next_) {
                const std::optional<ArchiveEntry> entry = archive_->next();
                if (!entry) {
                    throw InputError(kChanged);
                }
                found = entry->index == index;
            }
        } catch (const InputError& error) {
            damage_ = error.what();
            throw;
        }
    }

    std::string path_;
    std::unique_ptr<ArchiveReader> archive_;
    std::size_t next_ = 0;  // the entry that comes next
    std::optional<std::string> damage_;
};

// A source of at most so many bytes.
std::string content_of(PeekedSource* source, const std::string& name, uint64_t max_bytes)
{
    try {
        std::string content;
        read_all(source, max_bytes, [&](std::string_view piece) { content += piece; });
        return content;
    } catch (const InputError& error) {
        throw bgp_platform::xml::LoadError(name + ": " + error.what());
    }
}

}  // namespace

struct InputReader::Opened {
    std::optional<OpenArchive> archive;
    std::optional<ObjectReader> objects;
    std::string repository;  // that the objects are of

    std::string read(const StoredFile& file, uint64_t max_bytes) const
    {
        StoredFileSource source(file.path);
        std::string bytes;
        bytes.reserve(std::min(source.bytes(), max_bytes));
        read_all(&source, max_bytes, [&](std::string_view piece) { bytes += piece; });
        return bytes;
    }

    std::string read(const ArchiveMember& member, uint64_t max_bytes)
    {
        if (member.offset) {
            return member_at(member, max_bytes);
        }
        if (!archive || archive->path() != member.archive) {
            archive.emplace(member.archive);
        }
        return archive->read(member.index, max_bytes);
    }

    std::string read(const RepositoryObject& object, uint64_t max_bytes)
    {
        if (!objects || repository != object.repository) {
            objects.emplace(object.repository);
            repository = object.repository;
        }
        try {
            return objects->read(object.object, max_bytes);
        } catch (const InputError&) {
            objects.reset();  // its process may be gone
            throw;
        }
    }
};

InputReader::InputReader(uint64_t max_bytes) : max_bytes_(max_bytes), opened_(std::make_unique<Opened>()) {}

InputReader::~InputReader() = default;

std::string InputReader::read(const PlannedInput& input)
{
    if (input.sha256.empty()) {
        throw InputError(input.refused);
    }
    std::string bytes = std::visit([&](const auto& source) { return opened_->read(source, max_bytes_); }, input.source);
    if (sha256_of(bytes) != input.sha256) {
        throw InputError(kChanged);
    }
    return bytes;
}

std::string unpacked_configuration(std::string bytes, const std::string& name, uint64_t max_bytes)
{
    using namespace bgp_platform::xml;
    const std::string_view head = std::string_view(bytes).substr(0, PeekedSource::kHead);
    if (!is_gzip(head) && !may_be_packed(head)) {
        return bytes;
    }
    auto source = std::make_unique<PeekedSource>(std::make_unique<TextSource>(bytes));
    if (is_gzip(head)) {
        source = std::make_unique<PeekedSource>(gunzipped(std::move(source), name));
    }
    if (may_be_packed(source->head())) {
        source = std::make_unique<PeekedSource>(unpacked(std::move(source), name));
    }
    return content_of(source.get(), name, max_bytes);
}

}  // namespace bgp_rehearse
