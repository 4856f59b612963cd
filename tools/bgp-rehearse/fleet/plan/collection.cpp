#include "fleet/plan/collection.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <tuple>
#include <utility>

#include "base/exit_status.h"

namespace bgp_rehearse {

namespace {

namespace fs = std::filesystem;

bool ends_with(std::string_view text, std::string_view end)
{
    return text.size() > end.size() && text.substr(text.size() - end.size()) == end;
}

bool is_named_as_xml(std::string_view path)
{
    std::string_view name = path.substr(path.find_last_of('/') + 1);
    for (const std::string_view packer : {".gz", ".xz", ".zst", ".bz2", ".lz4", ".lz", ".lzma", ".Z"}) {
        if (ends_with(name, packer)) {
            name.remove_suffix(packer.size());
            break;
        }
    }
    return ends_with(name, ".xml");
}

}  // namespace

std::string tidy_path(const std::string& path)
{
    std::string text = fs::path(path).lexically_normal();
    if (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

Collection::Collection(bool all_names, uint64_t max_bytes)
    : all_names_(all_names), max_bytes_(max_bytes), here_(fs::current_path())
{
}

bool Collection::wants(std::string_view name) const
{
    return all_names_ || is_named_as_xml(name);
}

std::string Collection::absolute(const std::string& path) const
{
    return tidy_path(path.front() == '/' ? path : here_ + "/" + path);
}

uint32_t Collection::add_place(FoundPlace place)
{
    found_.places.push_back(std::move(place));
    return static_cast<uint32_t>(found_.places.size() - 1);
}

bool Collection::enter(const std::string& path)
{
    return containers_.insert(fs::canonical(path)).second;
}

void Collection::pass_over(const std::string& why, std::size_t count)
{
    if (count > 0) {
        found_.passed_over[why] += count;
    }
}

void Collection::add_file(uint32_t place, std::string name, const std::string& path)
{
    FoundInput input;
    input.name = std::move(name);
    input.place = place;
    add(std::move(input), [&](const TakePiece& take) {
        StoredFileSource file(path);
        identities_.push_back({file.device(), file.inode(), found_.inputs.size()});
        if (file.bytes() > max_bytes_) {
            throw TooManyBytes(file.bytes(), max_bytes_);
        }
        read_all(&file, max_bytes_, take);
    });
}

void Collection::add(FoundInput input, const std::function<void(const TakePiece&)>& read)
{
    try {
        read([&](std::string_view piece) {
            hash_.add(piece);
            input.bytes += piece.size();
        });
        input.sha256 = hash_.digest();
    } catch (const TooManyBytes& error) {
        input.bytes = error.bytes();
        refuse_input(error.what(), &input);
    } catch (const InputError& error) {
        refuse_input(error.what(), &input);
    }
    found_.inputs.push_back(std::move(input));
    progress_.show([this] { return fmt::format("planning: {} inputs", found_.inputs.size()); });
}

void Collection::refuse_input(const std::string& why, FoundInput* input)
{
    hash_.digest();  // forgets what was read
    auto text = std::find(found_.refusals.begin(), found_.refusals.end(), why);
    if (text == found_.refusals.end()) {
        text = found_.refusals.insert(text, why);
    }
    input->refused = static_cast<uint32_t>(text - found_.refusals.begin()) + 1;
}

void Collection::drop_older(std::size_t first)
{
    const auto begin = found_.inputs.begin() + static_cast<std::ptrdiff_t>(first);
    std::sort(begin, found_.inputs.end(), [](const FoundInput& one, const FoundInput& other) {
        return std::tie(one.name, other.index) < std::tie(other.name, one.index);
    });
    const auto end = std::unique(begin, found_.inputs.end(),
                                 [](const FoundInput& one, const FoundInput& other) { return one.name == other.name; });
    pass_over("older version in an archive", static_cast<std::size_t>(found_.inputs.end() - end));
    found_.inputs.erase(end, found_.inputs.end());
}

// Links and paths that overlap lead to a file again; the names of a file with several (hard links) are files of their
// own. Where a file has its own name among those that lead to it, that one stays, else the first.
void Collection::drop_files_reached_twice()
{
    std::sort(identities_.begin(), identities_.end(), [](const Identity& one, const Identity& other) {
        return std::tie(one.device, one.inode) < std::tie(other.device, other.inode);
    });
    std::vector<std::size_t> dropped;
    for (Identities first = identities_.begin(); first != identities_.end();) {
        const Identities end = std::find_if(first, identities_.cend(), [&](const Identity& each) {
            return std::tie(each.device, each.inode) != std::tie(first->device, first->inode);
        });
        if (end - first > 1) {
            note_all_but_one(first, end, &dropped);
        }
        first = end;
    }
    pass_over(kReachedTwice, dropped.size());
    std::sort(dropped.begin(), dropped.end(), std::greater<>());
    for (const std::size_t input : dropped) {
        std::swap(found_.inputs[input], found_.inputs.back());
        found_.inputs.pop_back();
    }
}

void Collection::note_all_but_one(Identities first, Identities end, std::vector<std::size_t>* dropped) const
{
    // By their real paths: the file's own name first, then by name.
    std::vector<std::tuple<std::string, bool, std::string, std::size_t>> names;
    for (; first != end; ++first) {
        const FoundInput& input = found_.inputs[first->input];
        const std::string path = std::get<StoredFile>(found_.source_of(input)).path;
        std::error_code failed;
        const std::string real = fs::canonical(path, failed);
        names.emplace_back(real, path != real, input.name, first->input);
    }
    std::sort(names.begin(), names.end());
    for (std::size_t i = 1; i < names.size(); ++i) {
        if (std::get<0>(names[i]) == std::get<0>(names[i - 1])) {
            dropped->push_back(std::get<3>(names[i]));
        }
    }
}

void Collection::sort()
{
    std::vector<FoundInput>& inputs = found_.inputs;
    std::sort(inputs.begin(), inputs.end(),
              [](const FoundInput& one, const FoundInput& other) { return one.name < other.name; });
    // One of a file that cannot be opened, and has no identity.
    const auto end = std::unique(inputs.begin(), inputs.end(), [](const FoundInput& one, const FoundInput& other) {
        return one.name == other.name && one.refused != 0 && one.refused == other.refused;
    });
    pass_over(kReachedTwice, static_cast<std::size_t>(inputs.end() - end));
    inputs.erase(end, inputs.end());
    const auto twice =
        std::adjacent_find(inputs.begin(), inputs.end(),
                           [](const FoundInput& one, const FoundInput& other) { return one.name == other.name; });
    if (twice != inputs.end()) {
        throw CommandError(
            ExitStatus::BadInput,
            fmt::format("two inputs would have the name {}; rename one, or make a plan of each", twice->name));
    }
}

Found Collection::settled()
{
    progress_.clear();
    drop_files_reached_twice();
    sort();
    return std::move(found_);
}

}  // namespace bgp_rehearse
